#include "PropertyListXmlDocuments.h"

#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"

#include <gmock/gmock.h>

#include <limits>

using namespace platform;
using testSupport::parseXmlEveryWay;

namespace {

PropertyListValue parsed(const QByteArray &text)
{
    auto result = parseXmlEveryWay(text);
    EXPECT_FALSE(result.error) << text.constData() << "\n" << qPrintable(result.error->toString());
    return result.document ? PropertyListDocument::handOver(std::move(result.document)) : PropertyListValue();
}

// "offset reason", or "" where the text was taken.
QByteArray errorOf(const QByteArray &text)
{
    const auto result = parseXmlEveryWay(text);
    return result.error ? QByteArray::number(result.error->byteOffset) + ' ' + result.error->reason.toUtf8()
                        : QByteArray();
}

QByteArray inDictionary(const QByteArray &entries)
{
    return "<plist version=\"1.0\"><dict>" + entries + "</dict></plist>";
}

// MARK: Structure

TEST(PropertyListXmlParser, ReadsAUsualList)
{
    const auto list =
        parsed("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//A//DTD PLIST 1.0//EN\" \"http://a.b/PropertyList-1.0.dtd\">\n"
               "<plist version=\"1.0\">\n<dict>\n\t<key>Name</key><string>Blue &#38; Green</string>\n"
               "\t<key>Count</key><integer>17</integer>\n\t<key>Date</key><date>2024-01-31T20:43:14Z</date>\n"
               "\t<key>On</key><true/>\n\t<key>Off</key><false/>\n\t<key>Ratio</key><real>1.5</real>\n"
               "\t<key>Data</key><data>\n\tQUJD\n\t</data>\n\t<key>Tracks</key>\n\t<dict>\n"
               "\t\t<key>1234</key>\n\t\t<dict>\n\t\t\t<key>Name</key><string>A</string>\n\t\t</dict>\n\t</dict>\n"
               "\t<key>List</key>\n\t<array>\n\t\t<integer>1</integer>\n\t\t<string>b</string>\n\t</array>\n"
               "</dict>\n</plist>\n");
    EXPECT_EQ(list.count(), 9);
    EXPECT_EQ(list.value(u"Name").toString(), u"Blue & Green");
    EXPECT_EQ(list.value(u"Count").toInteger(), 17);
    EXPECT_EQ(list.value(u"Date").toReferenceSeconds(), 728426594);
    EXPECT_TRUE(list.value(u"On").toBoolean());
    EXPECT_EQ(list.value(u"Off").type(), PropertyListType::Boolean);
    EXPECT_FALSE(list.value(u"Off").toBoolean(true));
    EXPECT_EQ(list.value(u"Ratio").toReal(), 1.5);
    EXPECT_EQ(list.value(u"Data").toData(), "ABC");
    EXPECT_EQ(list.value(u"Tracks").value(u"1234").value(u"Name").toString(), u"A");
    EXPECT_EQ(list.value(u"List").count(), 2);
    EXPECT_EQ(list.value(u"List").at(1).toString(), u"b");
}

TEST(PropertyListXmlParser, TakesListsWithoutDeclarationDoctypeOrPlistElement)
{
    EXPECT_EQ(parsed("<dict><key>a</key><integer>1</integer></dict>").value(u"a").toInteger(), 1);
    EXPECT_EQ(parsed("<array><true/></array>").count(), 1);
    EXPECT_EQ(parsed("<string>hello</string>").toString(), u"hello");
    EXPECT_EQ(parsed(" \r\n<plist><integer>5</integer></plist> ").toInteger(), 5);
    EXPECT_EQ(parsed("<?xml version='1.0'?><!-- a --><true/>").type(), PropertyListType::Boolean);
}

TEST(PropertyListXmlParser, AnEmptyPlistElementHoldsNothing)
{
    EXPECT_TRUE(parsed("<plist></plist>").isNull());
    EXPECT_TRUE(parsed("<plist version='1.0'/>").isNull());
    EXPECT_TRUE(parsed("<plist><!-- nothing --></plist>").isNull());
}

TEST(PropertyListXmlParser, EmptyElementsAreEmptyValues)
{
    const auto list =
        parsed("<array><dict/><array/><string/><data/><true/><false/><dict></dict><string></string></array>");
    ASSERT_EQ(list.count(), 8);
    EXPECT_TRUE(list.at(0).isDictionary());
    EXPECT_TRUE(list.at(1).isArray());
    EXPECT_TRUE(list.at(2).isString());
    EXPECT_EQ(list.at(3).type(), PropertyListType::Data);
    EXPECT_EQ(list.at(7).toString(), u"");
    EXPECT_EQ(parsed(inDictionary("<key/><dict/>")).value(u"").type(), PropertyListType::Dictionary);
}

TEST(PropertyListXmlParser, PassesCommentsInstructionsAndAttributesEverywhere)
{
    const auto list = parsed(
        "<!-- a --><?b ?><plist version=\"1.0\" x='?>'><!-- <dict> --><dict a=\"b\"><?c <key> ?><key k='1>0'>n"
        "<!-- inside --></key ><!-- between --><string\n>te<?d?>xt</string\t><!----></dict\r\n></plist ><!-- end -->");
    EXPECT_EQ(list.value(u"n").toString(), u"text");
}

TEST(PropertyListXmlParser, TakesDocumentTypesWithAnInternalSubset)
{
    EXPECT_EQ(parsed("<!DOCTYPE plist [ <!ELEMENT z (#PCDATA)> <!ATTLIST z v CDATA \"1>0]>\"> <!-- ]> ' --> <?p ]> ?> "
                     "<!NOTATION n SYSTEM '[>'> ] ><true/>")
                  .type(),
              PropertyListType::Boolean);
    EXPECT_EQ(parsed("<!DOCTYPE plist SYSTEM 'a>b[c'><true/>").type(), PropertyListType::Boolean);
}

TEST(PropertyListXmlParser, RefusesEntityDeclarationsWhereTheyStand)
{
    EXPECT_EQ(errorOf("<!DOCTYPE plist [<!ENTITY a \"b\">]><string>&a;</string>"),
              "17 entity declarations are not taken");
    EXPECT_EQ(errorOf("<!DOCTYPE plist [ <!ENTITY % p SYSTEM 'x'> ]><true/>"), "18 entity declarations are not taken");
    EXPECT_EQ(errorOf("<!DOCTYPE plist [ <!ELEMENT z ANY> %p; ]><true/>"), "35 entity references are not taken here");
    EXPECT_EQ(errorOf("<!ENTITY a 'b'><true/>"), "0 entity declarations are not taken");
}

TEST(PropertyListXmlParser, AnEntityBombIsRefusedBeforeItGoesOff)
{
    QByteArray bomb = "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY lol \"lol\">";
    for (int i = 1; i < 10; ++i)
        bomb += "<!ENTITY lol" + QByteArray::number(i) + " \"" + QByteArray("&lol;").repeated(10) + "\">";
    EXPECT_EQ(errorOf(bomb + "]><plist><string>&lol9;</string></plist>"), "38 entity declarations are not taken");
}

struct Refusal {
    const char *text;
    const char *error;
};

class RefusedXml : public testing::TestWithParam<Refusal>
{ };

TEST_P(RefusedXml, IsRefusedWithPlaceAndReason)
{
    EXPECT_EQ(errorOf(GetParam().text), GetParam().error) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Structure, RefusedXml,
    testing::Values(Refusal{"", "0 the text holds no list"}, Refusal{" <!-- a --> ", "12 the text holds no list"},
                    Refusal{"<dict></array>", "6 closing tag does not match"},
                    Refusal{"<array></dict>", "7 closing tag does not match"},
                    Refusal{"<string>a</key>", "9 closing tag does not match"},
                    Refusal{"<dict/></dict>", "7 closing tag does not match"},
                    Refusal{"<plist><true/></plis>", "14 closing tag does not match"},
                    Refusal{"</plist>", "0 closing tag does not match"},
                    Refusal{"<array>a</array>", "7 text between elements"},
                    Refusal{"<array>&#32;</array>", "7 text between elements"},
                    Refusal{"<array><![CDATA[ ]]></array>", "7 text between elements"},
                    Refusal{"x<true/>", "0 text between elements"},
                    Refusal{"<dict><key>a</key>b<true/></dict>", "18 text between elements"},
                    Refusal{"<dict><key>a</key></dict>", "18 key without a value"},
                    Refusal{"<dict><key>a</key><key>b</key><true/></dict>", "18 key without a value"},
                    Refusal{"<dict><true/></dict>", "6 value without a key"},
                    Refusal{"<dict><dict/></dict>", "6 value without a key"},
                    Refusal{"<dict><string>a</string></dict>", "6 value without a key"},
                    Refusal{"<array><key>a</key></array>", "7 key outside a dictionary"},
                    Refusal{"<key>a</key>", "0 key outside a dictionary"},
                    Refusal{"<plist><true/><false/></plist>", "14 more than one value outside all containers"},
                    Refusal{"<dict/><dict/>", "7 more than one value outside all containers"},
                    Refusal{"<plist><true/></plist><true/>", "22 value behind the end of the list"},
                    Refusal{"<plist></plist><true/>", "15 value behind the end of the list"},
                    Refusal{"<plist><true/></plist>x", "22 text between elements"},
                    Refusal{"<plist><plist><true/></plist></plist>",
                            "7 a plist element stands only once, around the list"},
                    Refusal{"<plist/><plist/>", "8 a plist element stands only once, around the list"},
                    Refusal{"<true/><plist></plist>", "7 a plist element stands only once, around the list"},
                    Refusal{"<q/>", "0 this is no property list"}, Refusal{"<Dict/>", "0 this is no property list"},
                    Refusal{"<dicty/>", "0 this is no property list"},
                    Refusal{"<!DOCTYPE html><html></html>", "15 this is no property list"},
                    Refusal{"<plist><q/></plist>", "7 unknown element"}, Refusal{"<true/><q/>", "7 unknown element"},
                    Refusal{"<array><int>1</int></array>", "7 unknown element"}));

INSTANTIATE_TEST_SUITE_P(
    Markup, RefusedXml,
    testing::Values(
        Refusal{"<array", "6 the text ends before the list does"},
        Refusal{"<array>", "7 the text ends before the list does"},
        Refusal{"<plist><true/>", "14 the text ends before the list does"},
        Refusal{"<string>abc", "11 the text ends before the list does"},
        Refusal{"<string>abc<", "12 the text ends before the list does"},
        Refusal{"<true/", "6 the text ends before the list does"},
        Refusal{"<true a", "7 the text ends before the list does"},
        Refusal{"<true a=", "8 the text ends before the list does"},
        Refusal{"<array></array", "14 the text ends before the list does"},
        Refusal{"<", "1 the text ends before the list does"}, Refusal{"<!-- a", "0 comment without an end"},
        Refusal{"<string><!-- a</string>", "8 comment without an end"},
        Refusal{"<?xml <true/>", "0 processing instruction without an end"},
        Refusal{"<string><![CDATA[a</string>", "8 CDATA section without an end"},
        Refusal{"<string>a<true/></string>", "9 element inside a text"},
        Refusal{"<string>128<string>", "11 element inside a text"},
        Refusal{"<true a='b/>", "8 quotation mark without its counterpart"},
        Refusal{"<true a=b/>", "6 attribute without quotation marks"},
        Refusal{"<true a/>", "6 attribute without a value"},
        Refusal{"<true a='<'/>", "9 unexpected character in a tag"},
        Refusal{"<true/ >", "5 unexpected character in a tag"}, Refusal{"< true/>", "1 unexpected character in a tag"},
        Refusal{"<array></array x>", "15 unexpected character in a tag"},
        Refusal{"<true a='1'b='2'/>", "11 unexpected character in a tag"},
        Refusal{"<!FOO><true/>", "0 unknown declaration"},
        Refusal{"<!DOCTYPEplist><true/>", "0 document type without a name"},
        Refusal{"<!DOCTYPE plist <true/>", "0 document type without an end"},
        Refusal{"<!DOCTYPE plist [ <!ELEMENT", "18 declaration without an end"},
        Refusal{"<!DOCTYPE plist [ <!ELEMENT a <true/>", "18 declaration without an end"},
        Refusal{"<!DOCTYPE plist [ x ]><true/>", "18 the document type holds something that is no declaration"},
        Refusal{"<!DOCTYPE plist [ ", "16 document type without an end"},
        Refusal{"<!DOCTYPE a><!DOCTYPE b><true/>", "12 a document type stands only once, before the list"},
        Refusal{"<true/><!DOCTYPE a>", "7 a document type stands only once, before the list"},
        Refusal{"<plist><!DOCTYPE a><true/></plist>", "7 a document type stands only once, before the list"}));

INSTANTIATE_TEST_SUITE_P(
    Scalars, RefusedXml,
    testing::Values(Refusal{"<integer>42xy</integer>", "9 not an integer, or beyond 64 bits"},
                    Refusal{"<integer/>", "10 not an integer, or beyond 64 bits"},
                    Refusal{"<integer></integer>", "9 not an integer, or beyond 64 bits"},
                    Refusal{"<integer>-</integer>", "9 not an integer, or beyond 64 bits"},
                    Refusal{"<integer>1.5</integer>", "9 not an integer, or beyond 64 bits"},
                    Refusal{"<integer>18446744073709551616</integer>", "9 not an integer, or beyond 64 bits"},
                    Refusal{"<integer>-9223372036854775809</integer>", "9 not an integer, or beyond 64 bits"},
                    Refusal{"<integer>0x</integer>", "9 not an integer, or beyond 64 bits"},
                    Refusal{"<integer>0xG</integer>", "9 not an integer, or beyond 64 bits"},
                    Refusal{"<real/>", "7 not a number"}, Refusal{"<real>1,5</real>", "6 not a number"},
                    Refusal{"<real>nano</real>", "6 not a number"}, Refusal{"<real>0x10</real>", "6 not a number"},
                    Refusal{"<real>--1</real>", "6 not a number"}, Refusal{"<date/>", "7 not a date"},
                    Refusal{"<date>2024-01-31</date>", "6 not a date"},
                    Refusal{"<date>2024-01-31T20:43:14</date>", "6 not a date"},
                    Refusal{"<date>2024-01-31T20:43:1aZ</date>", "6 not a date"},
                    Refusal{"<date>2024/01/31T20:43:14Z</date>", "6 not a date"},
                    Refusal{"<data>QUJ*</data>", "6 not base64"}, Refusal{"<data>QUJDR</data>", "6 not base64"},
                    Refusal{"<data>QQ=</data>", "6 not base64"}, Refusal{"<data>QQ==QQ==</data>", "6 not base64"},
                    Refusal{"<data>====</data>", "6 not base64"},
                    Refusal{"<true>a</true>", "6 text inside a boolean"}));

INSTANTIATE_TEST_SUITE_P(
    References, RefusedXml,
    testing::Values(Refusal{"<string>a&b;</string>", "9 reference to an entity that is not defined"},
                    Refusal{"<string>&nbsp;</string>", "8 reference to an entity that is not defined"},
                    Refusal{"<string>&</string>", "8 reference to an entity that is not defined"},
                    Refusal{"<string>a & b</string>", "10 reference to an entity that is not defined"},
                    Refusal{"<string>&#;</string>", "8 character reference without a number or semicolon"},
                    Refusal{"<string>&#x;</string>", "8 character reference without a number or semicolon"},
                    Refusal{"<string>&#65</string>", "8 character reference without a number or semicolon"},
                    Refusal{"<string>&#X41;</string>", "8 character reference without a number or semicolon"},
                    Refusal{"<string>&#0;</string>", "8 reference to a character that does not exist"},
                    Refusal{"<string>&#xD800;</string>", "8 reference to a character that does not exist"},
                    Refusal{"<string>&#57343;</string>", "8 reference to a character that does not exist"},
                    Refusal{"<string>&#x110000;</string>", "8 reference to a character that does not exist"},
                    Refusal{"<string>&#4294967361;</string>", "8 reference to a character that does not exist"},
                    Refusal{"<string>&#99999999999999999999999;</string>",
                            "8 reference to a character that does not exist"},
                    Refusal{"<dict><key>a&b</key><true/></dict>", "12 reference to an entity that is not defined"}));

TEST(PropertyListXmlParser, RefusesAllOfItInsideAUsualListToo)
{
    const QByteArray rows = QByteArray("<key>Name</key><string>A</string>\n").repeated(30);
    for (const char *row :
         {"<key>a</key><integer>42xy</integer>", "<key>a</key><string>&no;</string>", "<key>a</key><key>b</key><true/>",
          "<key>a</key><string>b</integer>", "<key>a</key>b<true/>", "<key>a</key></dict>", "<true/>",
          "<key>a</key><date>2024-01-31T20:43:1aZ</date>", "b<key>a</key><true/>", "<key>a&no;b</key><true/>"}) {
        EXPECT_NE(errorOf("<dict>" + rows + row + rows + "</dict>"), "") << row;
        EXPECT_NE(errorOf("<dict>" + rows + row + "</dict>"), "") << row;
    }
}

// MARK: Scalars

TEST(PropertyListXmlParser, TakesIntegersOfAllForms)
{
    const auto list =
        parsed("<array><integer> 42\n</integer><integer>-99</integer><integer> - 0xFACE</integer><integer>+7</integer>"
               "<integer>9223372036854775807</integer><integer>-9223372036854775808</integer>"
               "<integer>18446744073709551615</integer><integer>0000000000000000000000001</integer>"
               "<integer><!-- a -->1<![CDATA[2]]>&#51;</integer></array>");
    ASSERT_EQ(list.count(), 9);
    EXPECT_EQ(list.at(0).toInteger(), 42);
    EXPECT_EQ(list.at(1).toInteger(), -99);
    EXPECT_EQ(list.at(2).toInteger(), -0xFACE);
    EXPECT_EQ(list.at(3).toInteger(), 7);
    EXPECT_EQ(list.at(4).toInteger(), std::numeric_limits<qint64>::max());
    EXPECT_EQ(list.at(5).toInteger(), std::numeric_limits<qint64>::min());
    EXPECT_EQ(list.at(6).toUnsigned(), std::numeric_limits<quint64>::max());
    EXPECT_EQ(list.at(7).toInteger(), 1);
    EXPECT_EQ(list.at(8).toInteger(), 123);
}

TEST(PropertyListXmlParser, ReferencesBecomeCharacters)
{
    EXPECT_EQ(parsed("<string>&amp;&lt;&gt;&quot;&apos;&#65;&#x42;&#x20ac;&#128663;</string>").toString(),
              QString::fromUcs4(U"&<>\"'AB\u20AC\U0001F697"));
    EXPECT_EQ(parsed("<string>&#38;amp;</string>").toString(), u"&amp;");
    EXPECT_EQ(parsed(inDictionary("<key>this &amp; that</key><true/>")).value(u"this & that").toBoolean(), true);
}

TEST(PropertyListXmlParser, AFewOrManyReferencesInAStringMakeNoDifference)
{
    for (int count : {1, 2, 5, 9, 100, 20000}) {
        const QByteArray rows = "<key>a</key><string>x" + QByteArray("&#38;").repeated(count) + "</string>";
        const auto list = parsed(inDictionary(rows.repeated(3)));
        EXPECT_EQ(list.value(u"a").toUtf8(), "x" + QByteArray("&").repeated(count)) << count;
    }
}

TEST(PropertyListXmlParser, StringsHoldPlainTextOnceRead)
{
    const auto list =
        parsed("<array><string>a&amp;b</string><string>a<![CDATA[&]]>b</string><string>a\r\nb</string></array>");
    ASSERT_TRUE(list.at(0).plainUtf8());
    EXPECT_EQ(*list.at(0).plainUtf8(), "a&b");
    EXPECT_EQ(*list.at(1).plainUtf8(), "a&b");
    EXPECT_EQ(*list.at(2).plainUtf8(), "a\nb");
}

TEST(PropertyListXmlParser, LineEndsBecomeLineFeeds)
{
    const auto list = parsed("<dict>\r\n<key>a\rb</key>\r\n<string>1\r\n2\r3\n4\r</string>\r\n"
                             "<key>c</key><string><![CDATA[\r\n]]>&#13;</string>\r</dict>\r\n");
    EXPECT_EQ(list.value(u"a\nb").toString(), u"1\n2\n3\n4\n");
    EXPECT_EQ(list.value(u"c").toString(), u"\n\r"); // a carriage return that is asked for stays one
}

TEST(PropertyListXmlParser, NumbersAsKeysAreFoundAsText)
{
    const auto list = parsed(inDictionary("<key>0</key><string>a</string><key>4294967295</key><string>b</string>"
                                          "<key>4294967296</key><string>c</string><key>007</key><string>d</string>"
                                          "<key>&#49;2</key><string>e</string><key>-1</key><string>f</string>"));
    EXPECT_EQ(list.value(u"0").toString(), u"a");
    EXPECT_EQ(list.value(u"4294967295").toString(), u"b");
    EXPECT_EQ(list.value(u"4294967296").toString(), u"c");
    EXPECT_EQ(list.value(u"007").toString(), u"d");
    EXPECT_EQ(list.value(u"12").toString(), u"e");
    EXPECT_EQ(list.value(u"-1").toString(), u"f");
    EXPECT_TRUE(list.value(u"7").isNull());
}

TEST(PropertyListXmlParser, KeysThatAreAlikeAreToldApart)
{
    QByteArray rows;
    QList<QByteArray> names;
    for (const char *middle : {"", "x", "y", "xx", "xy", "a longer middle part", "a langer middle part"}) {
        for (const char *end : {"", "8 bytes!", "8 bytes?"})
            names += QByteArray("Position") + middle + end;
    }
    for (int pass = 0; pass < 3; ++pass) {
        for (qsizetype i = 0; i < names.size(); ++i)
            rows += "<key>" + names[i] + "</key><integer>" + QByteArray::number(i) + "</integer>\n";
    }
    const auto list = parsed(inDictionary(rows));
    EXPECT_EQ(list.count(), names.size() * 3);
    for (qsizetype i = 0; i < names.size(); ++i)
        EXPECT_EQ(list.value(QUtf8StringView(names[i])).toInteger(-1), i) << names[i].constData();
}

TEST(PropertyListXmlParser, MoreKeysThanTheTableHoldsAreKept)
{
    QByteArray rows;
    for (int pass = 0; pass < 2; ++pass) {
        for (int i = 0; i < 6000; ++i)
            rows +=
                "<key>Key number " + QByteArray::number(i) + "</key><integer>" + QByteArray::number(i) + "</integer>\n";
    }
    const auto list = parsed(inDictionary(rows));
    EXPECT_EQ(list.count(), 12000);
    for (const int i : {0, 1, 4093, 4094, 4095, 5999})
        EXPECT_EQ(list.value(QStringLiteral("Key number %1").arg(i)).toInteger(-1), i);
}

TEST(PropertyListXmlParser, LongTextIsKeptWhole)
{
    for (const qsizetype length : {65533, 65534, 65535, 65536, 200000}) {
        const QByteArray text(length, 'x');
        const auto list =
            parsed(inDictionary("<key>a</key><string>" + text + "</string><key>" + text + "</key><string>b</string>"
                                + "<key>c</key><string>&amp;" + text + "</string>"));
        EXPECT_EQ(list.value(u"a").toUtf8(), text) << length;
        EXPECT_EQ(list.value(QUtf8StringView(text)).toString(), u"b") << length;
        EXPECT_EQ(list.value(u"c").toUtf8(), '&' + text) << length;
    }
}

// MARK: Reference numbers

TEST(PropertyListXmlParser, ADictionaryOfOnlyAUidIsAReferenceNumber)
{
    const auto uid = [](const char *integer) {
        return parsed(QByteArray("<dict><key>CF$UID</key><integer>") + integer + "</integer></dict>");
    };
    EXPECT_EQ(uid("1").type(), PropertyListType::UID);
    EXPECT_EQ(uid("1").toUid(), 1u);
    EXPECT_EQ(uid(" 0x10 ").toUid(), 16u);
    EXPECT_EQ(uid("0xFFFFFFFFFFFFFFFF").toUid(), std::numeric_limits<quint64>::max());
    EXPECT_EQ(uid("+ 0007").toUid(), 7u);
    EXPECT_EQ(uid("-1").type(), PropertyListType::Dictionary);
}

TEST(PropertyListXmlParser, OtherDictionariesWithAUidStayDictionaries)
{
    for (const char *entries :
         {"<key>CF$UID</key><string>1</string>", "<key>CF$UID</key><integer>1</integer><key>a</key><true/>",
          "<key>CF$UI</key><integer>1</integer>", "<key>CF$UID</key><dict/>",
          "<key>CF$UID</key><integer>1</integer><key>CF$UID</key><integer>1</integer>"})
        EXPECT_EQ(parsed(inDictionary(entries)).type(), PropertyListType::Dictionary) << entries;
}

TEST(PropertyListXmlParser, ReferenceNumbersStandAmongOtherValues)
{
    QByteArray rows;
    for (int i = 0; i < 50; ++i)
        rows += "<key>" + QByteArray::number(i) + "</key>\n\t<dict>\n\t<key>CF$UID</key>\n\t<integer>"
            + QByteArray::number(i) + "</integer>\n\t</dict>\n";
    const auto list = parsed(inDictionary(rows + "<key>last</key><string>x</string>"));
    EXPECT_EQ(list.count(), 51);
    EXPECT_EQ(list.value(u"49").toUid(), 49u);
    EXPECT_EQ(list.value(u"last").toString(), u"x");
}

TEST(PropertyListXmlParser, AUidWhoseKeyFoundNoRoomInTheTableIsOne)
{
    QByteArray rows;
    for (int i = 0; i < 5000; ++i)
        rows += "<key>k" + QByteArray::number(i) + "</key><true/>";
    const auto list = parsed(inDictionary(rows + "<key>u</key><dict><key>CF$UID</key><integer>3</integer></dict>"));
    EXPECT_EQ(list.value(u"u").toUid(), 3u);
}

// MARK: Limits

TEST(PropertyListXmlParser, ContainersNest512DeepAndNoDeeper)
{
    const auto nested = [](int depth) -> QByteArray {
        return QByteArray("<array>").repeated(depth) + "<true/>" + QByteArray("</array>").repeated(depth);
    };
    EXPECT_EQ(parsed(nested(512)).count(), 1);
    const auto result = parseXmlEveryWay(nested(513));
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->code, ErrorCode::TooDeep);
    EXPECT_EQ(result.error->byteOffset, 512 * 7);
    const auto dictionaries = parseXmlEveryWay(QByteArray("<dict>\n<key>a</key>\n").repeated(100000));
    ASSERT_TRUE(dictionaries.error);
    EXPECT_EQ(dictionaries.error->code, ErrorCode::TooDeep);
}

TEST(PropertyListXmlParser, TheTapeTakesEightBytesAValueAndNoMore)
{
    QByteArray rows;
    for (int i = 0; i < 20000; ++i)
        rows += "\t<key>Track ID</key><integer>" + QByteArray::number(i)
            + "</integer>\n\t<key>Name</key><string>A name</string>\n";
    const QByteArray text = inDictionary(rows);
    EXPECT_LE(parsed(text).memoryUse(), text.size() + 40001 * 8 + 1024);
}

TEST(PropertyListXmlParser, TextThatIsNotUtf8IsRefusedWhereItStands)
{
    for (const char *bad : {"\xFF", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80", "\xE2\x82"}) {
        EXPECT_EQ(errorOf(QByteArray("<string>ab") + bad + "c</string>"), "10 not UTF-8");
        EXPECT_EQ(errorOf(QByteArray("<string>&lt;") + bad + "</string>"), "12 not UTF-8");
        EXPECT_EQ(errorOf("<array><!-- " + QByteArray(100000, 'x') + bad + " --></array>"), "100012 not UTF-8");
    }
    EXPECT_EQ(errorOf("<string>abc</string>\xE2\x82"), "20 not UTF-8");
}

TEST(PropertyListXmlParser, ControlCharactersAreTakenAsTheyStand)
{
    for (const char *text : {"<string>a\x01z\x1F</string>", "<string>a&#1;z&#x1F;</string>"}) {
        const auto list = PropertyList::parse(text);
        ASSERT_TRUE(list) << qPrintable(list.error().toString());
        EXPECT_EQ(list.value().toUtf8(), "a\x01z\x1F");
        EXPECT_FALSE(PropertyList::writeXml(list.value().toVariant()));
    }
}

} // namespace
