#include "Platform/Foundation/PropertyList/PropertyListIndex.h"

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

TEST(PropertyListIndex, FindsWhatTheDictionaryFinds)
{
    std::mt19937 random(1);
    QByteArray xml("<dict>");
    for (int i = 0; i < 6000; ++i) { // more keys than a document's key table holds, some of them twice
        const auto number = QByteArray::number(random() % 4000);
        xml += "<key>" + (random() % 3 ? number : "key &amp; " + number) + "</key><integer>" + QByteArray::number(i)
            + "</integer>";
    }
    const PropertyListValue dictionary = parsed(xml + "</dict>");
    const PropertyListIndex index(dictionary);
    for (int i = 0; i < 4100; ++i) {
        ASSERT_EQ(index.value(i), PropertyListView(dictionary).value(QString::number(i))) << i;
        const QString key = QStringLiteral("key & %1").arg(i);
        ASSERT_EQ(index.value(key), PropertyListView(dictionary).value(key)) << i;
    }
}

TEST(PropertyListIndex, TakesOnlyTheCanonicalDecimalTextForTheNumber)
{
    const PropertyListValue dictionary =
        parsed("<dict><key>007</key><string>agent</string><key>7</key><string>seven</string>"
               "<key>+8</key><string>plus</string><key>-9</key><string>minus</string>"
               "<key>4294967295</key><string>last of 32 bits</string>"
               "<key>4294967296</key><string>more</string></dict>");
    const PropertyListIndex index(dictionary);
    EXPECT_EQ(index.value(7).toString(), u"seven");
    EXPECT_EQ(index.value(u"7").toString(), u"seven");
    EXPECT_EQ(index.value(u"007").toString(), u"agent");
    EXPECT_TRUE(index.value(8).isNull());
    EXPECT_EQ(index.value(u"+8").toString(), u"plus");
    EXPECT_EQ(index.value(-9).toString(), u"minus");
    EXPECT_EQ(index.value(4294967295).toString(), u"last of 32 bits");
    EXPECT_EQ(index.value(4294967296).toString(), u"more");
    EXPECT_TRUE(index.value(0).isNull());
}

TEST(PropertyListIndex, FindsEscapedLongAndEmptyKeys)
{
    const QByteArray longKey(70'000, 'x');
    const PropertyListValue dictionary =
        parsed("<dict><key>a&amp;b</key><string>1</string><key>" + longKey
               + "</key><string>2</string><key></key><string>3</string><key>&#49;7</key><string>4</string></dict>");
    const PropertyListIndex index(dictionary);
    EXPECT_EQ(index.value(u"a&b").toString(), u"1");
    EXPECT_EQ(index.value(QUtf8StringView(longKey)).toString(), u"2");
    EXPECT_EQ(index.value(u"").toString(), u"3");
    EXPECT_EQ(index.value(17).toString(), u"4");
}

TEST(PropertyListIndex, AnswersTheLastOfSeveralEntriesOfOneKey)
{
    const PropertyListValue dictionary =
        parsed("<dict><key>1</key><string>first</string><key>a</key><string>first</string>"
               "<key>a</key><string>last</string><key>&#49;</key><string>last</string></dict>");
    const PropertyListIndex index(dictionary);
    EXPECT_EQ(index.value(1).toString(), u"last");
    EXPECT_EQ(index.value(u"a").toString(), u"last");
}

TEST(PropertyListIndex, LeavesOutWhatIsNotAcceptedAlsoWhenAnEarlierEntryWas)
{
    const PropertyListValue dictionary = parsed("<dict><key>1</key><true/><key>1</key><false/><key>2</key><false/>"
                                                "<key>2</key><true/><key>a</key><true/><key>a</key><false/></dict>");
    const PropertyListIndex index(dictionary, [](const PropertyListView &value) { return value.toBoolean(); });
    EXPECT_TRUE(index.value(1).isNull());
    EXPECT_TRUE(index.value(2).toBoolean());
    EXPECT_TRUE(index.value(u"a").isNull());
}

TEST(PropertyListIndex, OfNoDictionaryFindsNothing)
{
    const PropertyListValue array = parsed("<array><string>x</string></array>");
    for (const PropertyListIndex &index :
         {PropertyListIndex(), PropertyListIndex(array), PropertyListIndex(PropertyListView()),
          PropertyListIndex(parsed("<dict/>"))}) {
        EXPECT_TRUE(index.value(0).isNull());
        EXPECT_TRUE(index.value(-1).isNull());
        EXPECT_TRUE(index.value(u"x").isNull());
    }
}

} // namespace
