#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"
#include "Support/PropertyListSamples.h"

#include <gtest/gtest.h>

using namespace platform;

namespace {

PropertyListValue parsed(const QByteArray &text)
{
    const auto list = parseTextPropertyList(text);
    EXPECT_TRUE(list) << text.constData() << ": " << (list ? "" : qPrintable(list.error().toString()));
    return list.valueOr(PropertyListValue());
}

void expectRefusal(const QByteArray &text, const char *reason, qint64 offset, ErrorCode code = ErrorCode::Malformed)
{
    const auto list = parseTextPropertyList(text);
    ASSERT_FALSE(list) << text.constData();
    EXPECT_EQ(list.error().code, code) << text.constData();
    EXPECT_EQ(list.error().reason.toStdString(), reason) << text.constData();
    EXPECT_EQ(list.error().byteOffset, offset) << text.constData();
}

TEST(PropertyListText, ReadsDictionariesArraysStringsAndData)
{
    const auto list = parsed("{ \"test key\" = value;\n"
                             "  testData = <feed fACe>;\n"
                             "  \"nested array\" = (a, 'b c', (d), {}); }");
    ASSERT_EQ(list.count(), 3);
    EXPECT_EQ(list.value("test key").toString(), QStringLiteral("value"));
    EXPECT_EQ(list.value("testData").toData(), QByteArray::fromHex("feedface"));
    const auto array = list.value("nested array");
    ASSERT_EQ(array.count(), 4);
    EXPECT_EQ(array.at(1).toString(), QStringLiteral("b c"));
    EXPECT_EQ(array.at(2).at(0).toString(), QStringLiteral("d"));
    EXPECT_TRUE(array.at(3).isDictionary());
}

TEST(PropertyListText, EmptyContainersAndDataAreRead)
{
    EXPECT_TRUE(parsed("{}").isDictionary());
    EXPECT_TRUE(parsed(" ( ) ").isArray());
    EXPECT_EQ(parsed("<>").type(), PropertyListType::Data);
    EXPECT_EQ(parsed("\"\"").type(), PropertyListType::String);
}

TEST(PropertyListText, TheLastSeparatorMayBeMissingOrThere)
{
    EXPECT_EQ(parsed("{a=1;b=2}").count(), 2);
    EXPECT_EQ(parsed("{a=1;b=2;}").count(), 2);
    EXPECT_EQ(parsed("(a,b)").count(), 2);
    EXPECT_EQ(parsed("(a,b,)").count(), 2);
    EXPECT_EQ(parsed("a=1;b=2").count(), 2);
}

TEST(PropertyListText, NumbersAndTruthValuesStayStrings)
{
    for (const char *text : {"1", "-1", "9223372036854775808", "1.32", "true", "NO", "http://a.b/c-d_e$f", "+5"}) {
        EXPECT_EQ(parsed(text).toString(), QLatin1String(text));
        EXPECT_EQ(parsed("(" + QByteArray(text) + ")").at(0).toString(), QLatin1String(text));
    }
}

TEST(PropertyListText, ALineOfWordsIsOneString)
{
    EXPECT_EQ(parsed("\n2015-01-02 13:10:00 +0200\n").toString(), QStringLiteral("2015-01-02 13:10:00 +0200"));
    expectRefusal("two\nlines", "this is no property list", 4);
}

TEST(PropertyListText, AStringsFileHasNoBraces)
{
    const auto list = parsed("// Titles\nstring1 = /*Test*/ \"Good morning\";  // Test\n"
                             "string2 = \"Good afternoon\" /*Test// */;\nstring3;\n\"four\";\n");
    ASSERT_EQ(list.count(), 4);
    EXPECT_EQ(list.value("string1").toString(), QStringLiteral("Good morning"));
    EXPECT_EQ(list.value("string2").toString(), QStringLiteral("Good afternoon"));
    EXPECT_EQ(list.value("string3").toString(), QStringLiteral("string3"));
    EXPECT_EQ(list.value("four").toString(), QStringLiteral("four"));
    EXPECT_EQ(parsed("a = { b; c = (d); };").value("a").value("b").toString(), QStringLiteral("b"));
    expectRefusal("a = 1; }", "expected a value", 7);
}

TEST(PropertyListText, CommentsStandAnywhereBetween)
{
    EXPECT_EQ(parsed("/* a */ ( // b\r x /**/ , /* ) */ y // c\n )//").count(), 2);
    EXPECT_EQ(parsed("(a/b//c\n)").at(0).toString(), QStringLiteral("a/b//c")); // slashes belong to a word
}

TEST(PropertyListText, EscapesStandForCharacters)
{
    const auto list = parsed("('\\a', '\\b', '\\f', '\\n', '\\r', '\\t', '\\v', '\\\"', '\\\\n', \"\\'\", 'a\\\nb')");
    const char *expected[] = {"\a", "\b", "\f", "\n", "\r", "\t", "\v", "\"", "\\n", "'", "a\nb"};
    ASSERT_EQ(list.count(), 11);
    qsizetype at = 0;
    for (const char *string : expected)
        EXPECT_EQ(list.at(at++).toUtf8(), string);
}

TEST(PropertyListText, OctalEscapesAreInTheNextEncoding)
{
    EXPECT_EQ(parsed("'\\1014'").toUtf8(), "A4");
    EXPECT_EQ(parsed("'\\0'").toUtf8(), QByteArray("\0", 1));
    EXPECT_EQ(parsed("'\\201\\344\\373\\375'").toString(), QStringLiteral("Àîßÿ"));
    EXPECT_EQ(parsed("'\\256'").toString(), QString(QChar(0xFB01)));
    EXPECT_EQ(parsed("'\\376\\377'").toString(), QStringLiteral("\uFFFD\uFFFD"));
    EXPECT_EQ(parsed("'\\501'").toUtf8(), "A"); // only eight bits count
}

TEST(PropertyListText, UnicodeEscapesHaveOneToFourDigits)
{
    EXPECT_EQ(parsed("'\\U1z\\U12z\\U123z\\U1234\\U00415'").toString(),
              QStringLiteral("\u0001z\u0012z\u0123z\u1234A5"));
    EXPECT_EQ(parsed("'\\u5e78'").toString(), QStringLiteral("\u5e78"));
    EXPECT_EQ(parsed("'\\UD83D\\UDE98'").toUtf8(), "\xF0\x9F\x9A\x98");
}

TEST(PropertyListText, HalvesOfSurrogatePairsAreReplaced)
{
    EXPECT_EQ(parsed("'\\UD83D'").toString(), QStringLiteral("\uFFFD"));
    EXPECT_EQ(parsed("'\\UD83D\\U41'").toString(), QStringLiteral("\uFFFDA"));
    EXPECT_EQ(parsed("'\\UDE98x'").toString(), QStringLiteral("\uFFFDx"));
}

TEST(PropertyListText, TypedValuesHaveTypes)
{
    const auto list = parsed("(<*I87>, <*I-5>, <*R3.5>, <*BY>, <*BN>, <*D2011-11-28 09:21:30 +0000>, "
                             "<*D2003-05-12 12:00:00 +0230>, <*D2003-05-12 12:00:00 -0230>, <[YWJj]>, <[ YW\nI= ]>)");
    EXPECT_EQ(list.at(0).toInteger(), 87);
    EXPECT_EQ(list.at(1).toInteger(), -5);
    EXPECT_EQ(list.at(2).toReal(), 3.5);
    EXPECT_TRUE(list.at(3).toBoolean());
    EXPECT_FALSE(list.at(4).toBoolean(true));
    EXPECT_EQ(list.at(5).toDateTime(), QDateTime(QDate(2011, 11, 28), QTime(9, 21, 30), Qt::UTC));
    EXPECT_EQ(list.at(6).toDateTime(), QDateTime(QDate(2003, 5, 12), QTime(9, 30), Qt::UTC));
    EXPECT_EQ(list.at(7).toDateTime(), QDateTime(QDate(2003, 5, 12), QTime(14, 30), Qt::UTC));
    EXPECT_EQ(list.at(8).toData(), "abc");
    EXPECT_EQ(list.at(9).toData(), "ab");
}

TEST(PropertyListText, TypedValuesOfTheWrongContentAreRefused)
{
    for (const char *text :
         {"(<*I>)", "(<*Ix>)", "(<*R1.5.2>)", "(<*BX>)", "(<*B>)", "(<*>)", "(<*Z1>)", "(<*D2011-11-28>)",
          "(<*D2011-11-28T09:21:30 +0000>)", "(<*D2011-11-28 09:21:30 *0000>)", "(<*D2011-11-28 09:21:30 +00x0>)"})
        expectRefusal(text, "typed value of unknown type or content", 2);
    for (const char *text : {"(<[YWJj>)", "(<[YW!j]>)", "(<[]YWJj>)"})
        expectRefusal(text, "data is not Base64", 2);
}

TEST(PropertyListText, JsonIsReadWithItsTypes)
{
    const auto list = parsed("{\"large\":9223372036854775807, \"small\":-9223372036854775808,\"real\":1.5,"
                             "\"list\":[true,\"x\\/y\",{}]}");
    EXPECT_EQ(list.value("large").toInteger(), std::numeric_limits<qint64>::max());
    EXPECT_EQ(list.value("small").toInteger(), std::numeric_limits<qint64>::min());
    EXPECT_EQ(list.value("real").toReal(), 1.5);
    EXPECT_TRUE(list.value("list").at(0).toBoolean());
    EXPECT_EQ(list.value("list").at(1).toString(), QStringLiteral("x/y"));
    EXPECT_TRUE(list.value("list").at(2).isDictionary());
    EXPECT_TRUE(parsed("[]").isArray());
    expectRefusal("{\"a\":null}", "expected = behind a key", 4);
    expectRefusal("[null]", "this is no property list", 0);
    expectRefusal(QByteArray(600, '[') + QByteArray(600, ']'), "this is no property list", 0);
}

TEST(PropertyListText, ErrorsTellWhereAndWhy)
{
    expectRefusal("", "no list in the text", 0);
    expectRefusal(" /* a */\n", "no list in the text", 9);
    expectRefusal("/* a", "comment without an end", 0);
    expectRefusal("(a) b", "something follows the list", 4);
    expectRefusal("\"a\" b", "something follows the list", 4);
    expectRefusal("(a", "expected , or ) behind an element", 2);
    expectRefusal("(a,", "array without an end", 3);
    expectRefusal("{", "dictionary without an end", 1);
    expectRefusal("{a=b;", "dictionary without an end", 5);
    expectRefusal("{a", "expected = behind a key", 2);
    expectRefusal("{a=", "expected a value", 3);
    expectRefusal("{a=b c=d}", "expected ; or } behind a value", 5);
    expectRefusal("{(a)=b;}", "expected a value", 1);
    expectRefusal("(a b)", "expected , or ) behind an element", 3);
    expectRefusal("(a,,b)", "expected a value", 3);
    expectRefusal("(a}", "expected , or ) behind an element", 2);
    expectRefusal("('a", "string without an end", 1);
    expectRefusal("('a\\", "unknown escape in a string", 3);
    expectRefusal("('Worl\\d')", "unknown escape in a string", 6);
    expectRefusal("('\\Ux')", "unicode escape without digits", 2);
    expectRefusal("(<00", "data without an end", 1);
    expectRefusal("(<0x>)", "data holds something else than hexadecimal digits", 3);
    expectRefusal("(<00 1>)", "data of half a byte", 1);
    expectRefusal("(a\xFF)", "text is not UTF-8", 2);
    expectRefusal(QByteArray("(a\0)", 4), "expected , or ) behind an element", 2);
}

TEST(PropertyListText, ATextOfAnotherKindIsToldFromADamagedList)
{
    expectRefusal("\x7F", "this is no property list", 0);
    expectRefusal("# A heading\n\nText.", "this is no property list", 0);
    expectRefusal("\x89PNG\r\n\x1A\n", "this is no property list", 0);
    expectRefusal("\xFF\xD8\xFF", "this is no property list", 0);
    expectRefusal("/* C */\n#import <a.h>", "this is no property list", 8);
    expectRefusal("/* C */ int x;", "this is no property list", 12);
    expectRefusal("A heading\n\nText.", "this is no property list", 2);
    expectRefusal("a,b\n", "this is no property list", 1);
}

TEST(PropertyListText, DepthIsBounded)
{
    EXPECT_TRUE(parseTextPropertyList(QByteArray(QByteArray(512, '(') + QByteArray(512, ')'))));
    for (const char *opening : {"(", "{a="}) {
        const auto list = parseTextPropertyList(QByteArray(opening).repeated(100'000));
        ASSERT_FALSE(list);
        EXPECT_EQ(list.error().code, ErrorCode::TooDeep);
        EXPECT_EQ(list.error().byteOffset, 512 * qint64(qstrlen(opening)) + 1);
    }
}

const char RichList[] = "{ 'a\\U41' = (b, \"c\\101\", <00 ff>, <*I5>, <*D2011-11-28 09:21:30 +0000>, <[YWJj]>);\n"
                        "/* x */ gr\xC3\xBCn = { d; e = {}; }; // end\n }";

TEST(PropertyListText, TruncationAtEveryByteIsRefused)
{
    const QByteArray whole(RichList);
    ASSERT_TRUE(parseTextPropertyList(whole));
    for (qsizetype length = 0; length < whole.size(); ++length) {
        const QByteArray cut(whole.constData(), length);
        const auto list = parseTextPropertyList(cut);
        ASSERT_FALSE(list) << length;
        EXPECT_GE(list.error().byteOffset, 0) << length;
        EXPECT_LE(list.error().byteOffset, length) << length;
    }
}

TEST(PropertyListText, EveryFlippedBitGivesAListOrAnErrorWithItsPlace)
{
    const QByteArray whole(RichList);
    for (qsizetype bit = 0; bit < whole.size() * 8; ++bit) {
        QByteArray flipped = whole;
        flipped[bit / 8] = char(flipped[bit / 8] ^ (1 << bit % 8));
        const auto list = parseTextPropertyList(flipped);
        if (list)
            list.value().toVariant();
        else
            EXPECT_GE(list.error().byteOffset, 0) << bit;
    }
}

TEST(PropertyListText, SampleFilesAreReadOrRefusedAsTheyShould)
{
    ZR_REQUIRE_SAMPLE_DATA();
    int count = 0;
    for (const PropertyListSample &sample : propertyListSamples(QRegularExpression(QStringLiteral("^(ASCII|other)")))) {
        // This one is C source, the program that wrote the lists beside it, and not a list in any form.
        if (sample.name.endsWith(QLatin1String("ReferencePlists.m")))
            continue;
        QByteArrayView text(sample.bytes);
        if (text.startsWith("\xEF\xBB\xBF"))
            text = text.sliced(3);
        const auto list = parseTextPropertyList(text);
        if (sample.isJudged) {
            EXPECT_EQ(bool(list), sample.isValid)
                << qPrintable(sample.name) << (list ? "" : qPrintable(QLatin1String(": ") + list.error().toString()));
        }
        ++count;
    }
    EXPECT_EQ(count, 43);
}

TEST(PropertyListText, EscapesOfSampleFilesGiveWhatTheirBinaryFormsHold)
{
    ZR_REQUIRE_SAMPLE_DATA();
    for (const char *kind : {"octal", "unicode"}) {
        const auto path = QStringLiteral("plists/swift-foundation/test_oldStylePlist_getSlashedChars_%1%2.plist")
                              .arg(QLatin1String(kind));
        const auto read = [&](const char *suffix) {
            return testSupport::readFile(testSupport::sampleFile(path.arg(QLatin1String(suffix))));
        };
        const auto list = parsed(read(""));
        const auto expected = parseBinaryPropertyList(read("_expected")).value();
        ASSERT_EQ(list.count(), expected.count());
        auto other = expected.elements().begin();
        for (const PropertyListView element : list.elements())
            ASSERT_EQ(element.toUtf8().toHex(), (*other++).toUtf8().toHex()) << kind;
    }
}

TEST(PropertyListText, SampleFilesHoldWhatTheirTextSays)
{
    ZR_REQUIRE_SAMPLE_DATA();
    const auto read = [](const char *name) {
        return parsed(testSupport::readFile(testSupport::sampleFile(QLatin1String("plists/") + QLatin1String(name))));
    };
    const auto typed = read("dd-plist/test1-ascii-gnustep.plist");
    EXPECT_EQ(typed.value("key&B").toString(), QStringLiteral("value&B"));
    EXPECT_EQ(typed.value("date").type(), PropertyListType::Date);
    EXPECT_EQ(typed.value("data").toData(), QByteArray::fromHex("000000041041082082"));
    EXPECT_EQ(typed.value("array").at(3).toReal(), 3.14159);
    EXPECT_EQ(read("dd-plist/test1-ascii-multiline-handling.plist").value("key&B").toString(),
              QStringLiteral("Multi\n\t   line\n\t   string"));
    EXPECT_EQ(read("mac-propertylist/64bit-json.plist").value("max_64_bit_signed_int").toInteger(),
              std::numeric_limits<qint64>::max());
    EXPECT_GT(read("rust-plist/netnewswire.pbxproj").value("objects").count(), 1000);
}

} // namespace
