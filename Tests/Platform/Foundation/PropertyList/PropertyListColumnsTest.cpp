#include "Platform/Foundation/PropertyList/PropertyListColumns.h"

#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <random>

#include <gtest/gtest.h>

namespace {

using namespace platform;

PropertyListValue parsed(const QByteArray &xml)
{
    auto result = PropertyList::parse(xml);
    EXPECT_TRUE(bool(result)) << xml.constData();
    return result.valueOr({});
}

QList<PropertyListValue> elementsOf(const PropertyListValue &array)
{
    QList<PropertyListValue> elements;
    for (const PropertyListView element : array.elements())
        elements.append(PropertyListValue(element));
    return elements;
}

constexpr const char *keys[] = {"Name", "Artist", "missing", "tags"};

void expectSameAsLookups(const QList<PropertyListValue> &dictionaries)
{
    qsizetype next = 0;
    PropertyListColumns columns(keys);
    columns.visit(dictionaries, [&](std::span<const PropertyListView> values) {
        ASSERT_EQ(values.size(), std::size(keys));
        const PropertyListView &dictionary = dictionaries[next++];
        for (size_t column = 0; column < std::size(keys); ++column)
            EXPECT_EQ(values[column].identity(), dictionary.value(QUtf8StringView(keys[column])).identity())
                << next << " " << column;
    });
    EXPECT_EQ(next, dictionaries.size());
    for (const PropertyListValue &dictionary : dictionaries) {
        const auto values = columns.values(dictionary);
        ASSERT_EQ(values.size(), std::size(keys));
        EXPECT_EQ(values[0].identity(), PropertyListView(dictionary).value(QUtf8StringView(keys[0])).identity());
    }
}

QByteArray randomDictionaries(quint32 seed, bool manyKeys)
{
    std::mt19937 random(seed);
    const QByteArray pieces[] = {"<key>Name</key><string>n</string>",
                                 "<key>Artist</key><string>a &amp; b</string>",
                                 "<key>Name</key><string>" + QByteArray(66'000, 'n') + "</string>",
                                 "<key>tags</key><array><dict><key>Name</key><true/></dict></array>",
                                 "<key>other</key><dict><key>Artist</key><string>inner</string></dict>",
                                 "<key>17</key><integer>1</integer>",
                                 "<key>Na&#109;e</key><string>escaped key</string>"};
    QByteArray xml("<array>");
    for (int i = 0; i < 500; ++i) {
        xml += "<dict>";
        for (auto n = random() % 6; n > 0; --n)
            xml += pieces[random() % 20 == 0 ? random() % std::size(pieces) : random() % 2];
        for (int key = 0; manyKeys && key < 20; ++key)
            xml += "<key>k" + QByteArray::number(i * 20 + key) + "</key><true/>";
        xml += "</dict>";
    }
    return xml + "</array>";
}

TEST(PropertyListColumns, AnswersWhatLookupsAnswer)
{
    for (quint32 seed = 0; seed < 5; ++seed)
        expectSameAsLookups(elementsOf(parsed(randomDictionaries(seed, seed % 2))));
}

TEST(PropertyListColumns, TakesDictionariesOfSeveralDocumentsAndThingsThatAreNone)
{
    const auto one =
        elementsOf(parsed("<array><dict><key>Name</key><string>1</string></dict><string>x</string></array>"));
    const auto two = elementsOf(parsed(
        "<array><dict><key>x</key><true/><key>Artist</key><true/><key>Name</key><string>2</string></dict></array>"));
    expectSameAsLookups({one[0], two[0], one[1], PropertyListValue(), one[0], two[0], two[0]});
    expectSameAsLookups({});
}

TEST(PropertyListColumns, KeepsNothingOfTheDocumentBefore)
{
    // The numbers that "Name" and "Artist" have in the one belong to other keys in the other.
    const PropertyListValue one =
        parsed("<dict><key>Name</key><string>1</string><key>Artist</key><string>2</string></dict>");
    const PropertyListValue two = parsed("<dict><key>x</key><string>3</string><key>y</key><string>4</string></dict>");
    const PropertyListValue three = parsed("<dict><key>Artist</key><string>5</string><key>Name</key><string>6</string>"
                                           "<key>x</key><string>7</string></dict>");
    expectSameAsLookups({one, two, one, three, two, three});
}

TEST(PropertyListColumns, StaysWithinItsDictionary)
{
    // Of all lengths around that of a step of eight, followed by what stands under the same keys in the outer one.
    QList<PropertyListValue> dictionaries;
    for (int entries = 0; entries < 20; ++entries) {
        QByteArray inner;
        for (int i = 0; i < entries; ++i)
            inner += "<key>k" + QByteArray::number(i) + "</key><true/>";
        const PropertyListValue outer = parsed(
            "<dict><key>inner</key><dict>" + inner + "</dict>"
            + QByteArray("<key>Name</key><string>outer</string><key>Artist</key><string>outer</string>").repeated(5)
            + "</dict>");
        dictionaries += {outer.value(u"inner"), outer};
    }
    expectSameAsLookups(dictionaries);
}

TEST(PropertyListColumns, FindsKeysBehindManyOthersWithRoomInTheTableOfTheDocumentAndWithout)
{
    for (const int count : {300, 5000}) {
        QByteArray others;
        for (int i = 0; i < count; ++i)
            others += "<key>k" + QByteArray::number(i) + "</key><true/>";
        const PropertyListValue list =
            parsed("<array><dict>" + others
                   + "</dict><dict><key>Name</key><string>1</string><key>tags</key><dict>"
                     "<key>Artist</key><string>inner</string></dict><key>k0</key><true/></dict><dict>"
                   + QByteArray("<key>k1</key><true/>").repeated(12) + "<key>Artist</key><string>2</string>"
                   + QByteArray("<key>k2</key><true/>").repeated(12)
                   + "</dict><dict><key>k2</key><array><true/></array></dict></array>");
        const auto dictionaries = elementsOf(list);
        expectSameAsLookups(dictionaries);
        EXPECT_EQ(PropertyListColumns(keys).values(dictionaries[1])[0].toString(), u"1");
    }
}

TEST(PropertyListColumns, TakesLongTextsAndContainersAtAnyPlaceAmongShortOnes)
{
    // A length that would, taken for a row, be one of a short text under the first key.
    const QByteArray longText = "<string>" + QByteArray(0x1'0002, 'x') + "</string>";
    QByteArray xml("<array>");
    for (const QByteArray &odd : {longText, QByteArray("<dict><key>Name</key><true/></dict>"),
                                  QByteArray("<array><string>Name</string></array>"), QByteArray("<dict/>")}) {
        for (int place = 0; place < 18; ++place) {
            xml += "<dict>";
            for (int i = 0; i < 18; ++i) {
                const QByteArray key = i % 3 == 0 ? "Name" : i % 3 == 1 ? "Artist" : "other";
                xml += "<key>" + key + "</key>" + (i == place ? odd : QByteArray("<string>short</string>"));
            }
            xml += "</dict>";
        }
    }
    expectSameAsLookups(elementsOf(parsed(xml + "</array>")));
}

TEST(PropertyListValue, SelectsByPositionAcrossDocumentsAndCountsTheHandles)
{
    QList<PropertyListValue> selected;
    {
        const QList<PropertyListValue> values{parsed("<string>a</string>"), parsed("<string>b</string>"),
                                              PropertyListValue()};
        const quint32 positions[] = {1, 1, 0, 2, 2, 1};
        selected = PropertyListValue::select(values, positions);
    }
    QStringList texts;
    for (const PropertyListView &value : selected)
        texts.append(value.isNull() ? QStringLiteral("null") : value.toString());
    EXPECT_EQ(texts.join(QLatin1Char(' ')), u"b b a null null b");
    EXPECT_TRUE(PropertyListValue::select({}, {}).isEmpty());
}

TEST(PropertyListView, TellsRepeatedValuesFromEqualOnes)
{
    const PropertyListValue array = parsed("<array><true/><true/></array>");
    EXPECT_EQ(array.at(0), array.at(1));
    EXPECT_NE(array.at(0).identity(), array.at(1).identity());
    EXPECT_EQ(array.at(0).identity(), array.at(0).identity());
    EXPECT_EQ(PropertyListView().identity(), nullptr);
    EXPECT_TRUE(array.sharesDocumentWith(array.at(1)));
    EXPECT_FALSE(array.sharesDocumentWith(parsed("<true/>")));
}

} // namespace
