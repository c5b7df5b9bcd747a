#include "ZRCommon/iTunesSortingForZR.h"

#include "SongTestSupport.h"

#include <algorithm>
#include <random>

namespace {

using namespace iTunesSortingForZR;
using platform::PropertyListValue;
using platform::PropertyListView;
using testSupport::names;
using testSupport::songs;

using Comparison = std::weak_ordering (*)(const PropertyListView &, const PropertyListView &);
struct Case {
    Column column;
    Qt::SortOrder order;
    Comparison comparison;
};
constexpr Case cases[] = {{Column::Song, Qt::AscendingOrder, zrCompareSongAscending},
                          {Column::Song, Qt::DescendingOrder, zrCompareSongDescending},
                          {Column::Artist, Qt::AscendingOrder, zrCompareArtistAscending},
                          {Column::Artist, Qt::DescendingOrder, zrCompareArtistDescending},
                          {Column::Time, Qt::AscendingOrder, zrCompareTimeAscending},
                          {Column::Time, Qt::DescendingOrder, zrCompareTimeDescending}};

QVariantMap song(const char *name, const char *artist = nullptr, const QVariant &time = {})
{
    QVariantMap map{{QStringLiteral("Name"), QString::fromUtf8(name)}};
    if (artist)
        map.insert(QStringLiteral("Artist"), QString::fromUtf8(artist));
    if (time.isValid())
        map.insert(QStringLiteral("Total Time"), time);
    return map;
}

void expectAllCasesAgree(const SongList &list)
{
    for (const Case &test : cases) {
        SongList expected = list;
        std::stable_sort(expected.begin(), expected.end(), [&](const PropertyListValue &a, const PropertyListValue &b) {
            return test.comparison(a, b) < 0;
        });
        ASSERT_EQ(testSupport::identities(sorted(list, test.column, test.order)), testSupport::identities(expected))
            << int(test.column) << test.order;
    }
}

TEST(iTunesSortingForZR, ComparesNamesWithoutRegardToCase)
{
    const SongList list =
        songs({song("abc"), song("ABC"), song("abd"), song("Z"), song("\xC3\x84"), song("A\xCC\x88")});
    EXPECT_TRUE(zrCompareSongAscending(list[0], list[1]) == 0);
    EXPECT_TRUE(zrCompareSongAscending(list[1], list[2]) < 0);
    EXPECT_TRUE(zrCompareSongAscending(list[3], list[2]) > 0);
    EXPECT_TRUE(zrCompareSongAscending(list[4], list[5]) == 0); // composed or not
    EXPECT_TRUE(zrCompareSongAscending(list[4], list[3]) > 0); // by code point
}

TEST(iTunesSortingForZR, ComparesArtistsAndTimes)
{
    const SongList list = songs({song("", "b", 1000), song("", "A", 999), song("", "a", 999)});
    EXPECT_TRUE(zrCompareArtistAscending(list[0], list[1]) > 0);
    EXPECT_TRUE(zrCompareArtistAscending(list[1], list[2]) == 0);
    EXPECT_TRUE(zrCompareTimeAscending(list[1], list[0]) < 0);
    EXPECT_TRUE(zrCompareTimeAscending(list[1], list[2]) == 0);
}

TEST(iTunesSortingForZR, NegatesEachAscendingComparisonForTheDescendingOne)
{
    const SongList list = songs({song("a", "b", 3), song("b", "a", 2), song("A", "B", 3)});
    const std::pair<Comparison, Comparison> pairs[] = {{zrCompareSongAscending, zrCompareSongDescending},
                                                       {zrCompareArtistAscending, zrCompareArtistDescending},
                                                       {zrCompareTimeAscending, zrCompareTimeDescending}};
    for (const auto &[ascending, descending] : pairs) {
        for (const auto &a : list) {
            for (const auto &b : list)
                EXPECT_TRUE(descending(a, b) == (0 <=> ascending(a, b)));
        }
    }
}

TEST(iTunesSortingForZR, TakesAbsentTextsForEmptyAndAbsentTimesForZero)
{
    const SongList list =
        songs({QVariantMap(), song("", "", 0),
               QVariantMap{{QStringLiteral("Name"), 7}, {QStringLiteral("Total Time"), QStringLiteral("8")}},
               song("a", "a", -1)});
    for (const Case &test : cases) {
        EXPECT_TRUE(test.comparison(list[0], list[1]) == 0);
        EXPECT_TRUE(test.comparison(list[0], list[2]) == 0);
        EXPECT_TRUE(test.comparison(PropertyListView(), list[0]) == 0);
    }
    EXPECT_TRUE(zrCompareSongAscending(list[0], list[3]) < 0);
    EXPECT_TRUE(zrCompareTimeAscending(list[0], list[3]) > 0);
}

TEST(iTunesSortingForZR, KeepsTiesInTheirOrderInBothDirections)
{
    const SongList list = songs({song("b1", "x"), song("a1", "X"), song("b2", "y"), song("a2", "x")});
    EXPECT_EQ(names(sorted(list, Column::Artist, Qt::AscendingOrder)), u"b1 a1 a2 b2");
    EXPECT_EQ(names(sorted(list, Column::Artist, Qt::DescendingOrder)), u"b2 b1 a1 a2");
    EXPECT_EQ(names(sorted(list, Column::Time, Qt::DescendingOrder)), u"b1 a1 b2 a2");
}

TEST(iTunesSortingForZR, SortsListsAsTheComparisonsSay)
{
    std::mt19937 random(8);
    const char *words[] = {"",
                           "a",
                           "A",
                           "the",
                           "The moon",
                           "the moon and",
                           "the moon and the sun",
                           "THE MOON AND THE STARS",
                           "\xC3\xA9t\xC3\xA9",
                           "e\xCC\x81t\xC3\xA9",
                           "\xE6\x84\x9B",
                           "\xF0\x9F\x8E\xB5",
                           "\xEF\xBC\xA1",
                           "z"};
    for (int round = 0; round < 20; ++round) {
        QVariantList dictionaries;
        for (auto n = random() % (round < 18 ? 60 : 3000); n > 0; --n) {
            QVariantMap map;
            if (random() % 8)
                map = song(words[random() % std::size(words)], words[random() % std::size(words)],
                           qlonglong(random() % 50));
            if (random() % 10 == 0)
                map.insert(QStringLiteral("Total Time"), double(random() % 5000) / 100);
            if (random() % 10 == 0)
                map.insert(QStringLiteral("Total Time"), qulonglong(-1) - random() % 9);
            dictionaries.append(map);
        }
        SongList list = songs(dictionaries);
        if (round % 3 == 0)
            list += songs({song("the moon", "a", 7)}) + SongList{PropertyListValue()} + list.mid(0, 10);
        expectAllCasesAgree(list);
    }
}

TEST(iTunesSortingForZR, SortsSongsThatAreRepeatedWithoutFoldingEachAgain)
{
    const QByteArray longName(200'000, 'm');
    const SongList once = songs(
        {song("n"), song((longName + 'b').constData()), song((longName + 'A').constData()), song("N"), song("l")});
    SongList list;
    for (int i = 0; i < 20'000; ++i)
        list += once;
    const SongList ascending = sorted(list, Column::Song, Qt::AscendingOrder);
    ASSERT_EQ(ascending.size(), list.size());
    const int expected[] = {4, 2, 1};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(ascending[i * 20'000].identity(), once[expected[i]].identity());
        EXPECT_EQ(ascending[i * 20'000 + 19'999].identity(), once[expected[i]].identity());
    }
    for (int i = 60'000; i < 100'000; ++i) // n and N compare as the same and keep their order
        ASSERT_EQ(ascending[i].identity(), once[i % 2 ? 3 : 0].identity()) << i;
    const SongList descending = sorted(list, Column::Song, Qt::DescendingOrder);
    EXPECT_EQ(descending[0].identity(), once[0].identity());
    EXPECT_EQ(descending[1].identity(), once[3].identity());
    EXPECT_EQ(descending.last().identity(), once[4].identity());
}

} // namespace
