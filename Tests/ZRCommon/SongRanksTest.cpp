#include "ZRCommon/SongRanks_p.h"

#include "SongTestSupport.h"

#include <random>

namespace {

using iTunesSortingForZR::Column;
using platform::PropertyListValue;
using platform::PropertyListView;
using testSupport::song;

QString randomText(std::mt19937 &random)
{
    static const QString words[] = {QString(),
                                    QStringLiteral("a"),
                                    QStringLiteral("A"),
                                    QStringLiteral("the moon"),
                                    QStringLiteral("The Moon and the Stars"),
                                    QStringLiteral("été")};
    return words[random() % std::size(words)] + QString(int(random() % 3), QLatin1Char('x'));
}

// Songs of all sizes, from empty ones to such that take more than a block for themselves.
QVariantMap randomSong(std::mt19937 &random)
{
    QVariantMap map;
    if (random() % 4)
        map = song(randomText(random), randomText(random));
    if (random() % 20 == 0) {
        for (int i = 0; i < 200; ++i)
            map.insert(QStringLiteral("key %1").arg(i), i);
    }
    return map;
}

PropertyListValue tracks(const QVariantList &songs)
{
    QVariantMap table;
    for (qsizetype i = 0; i < songs.size(); ++i)
        table.insert(QString::number(i), songs[i]);
    return testSupport::propertyList(table);
}

SongRanks ranked(const PropertyListValue &tracks)
{
    SongRanks ranks(tracks);
    for (const Column column : {Column::Song, Column::Artist})
        ranks.add(column);
    return ranks;
}

SongList songsOf(const PropertyListValue &tracks)
{
    SongList songs;
    for (const auto &entry : tracks.entries())
        songs.append(PropertyListValue(entry.value()));
    return songs;
}

TEST(SongRanks, OrderSongsAsSortingThemDoes)
{
    std::mt19937 random(21);
    for (const int count : {1, 2, 40, 700}) {
        QVariantList dictionaries;
        for (int i = 0; i < count; ++i)
            dictionaries.append(randomSong(random));
        const PropertyListValue table = tracks(dictionaries);
        const SongRanks ranks = ranked(table);
        SongList list = songsOf(table);
        std::shuffle(list.begin(), list.end(), random);
        list += list.mid(0, count / 3);
        for (const Column column : {Column::Song, Column::Artist}) {
            for (const auto order : {Qt::AscendingOrder, Qt::DescendingOrder}) {
                const auto positions = ranks.order(list, column, order);
                ASSERT_TRUE(positions);
                ASSERT_EQ(testSupport::identities(PropertyListValue::select(list, *positions)),
                          testSupport::identities(iTunesSortingForZR::sorted(list, column, order)))
                    << count << int(column) << order;
            }
        }
    }
}

TEST(SongRanks, GiveEqualRanksToWhatComparesAsTheSame)
{
    const SongList songs = testSupport::songs({song(QStringLiteral("b")), song(QStringLiteral("A")),
                                               song(QStringLiteral("B")), song(QStringLiteral("a")), QVariantMap()});
    EXPECT_EQ(ranksByText(songs, "Name"), (std::vector<qint64>{3, 1, 3, 1, 0}));
}

TEST(SongRanks, KnowOnlyTheSongsOfTheirLibrary)
{
    const PropertyListValue library = testSupport::propertyList(
        QVariantMap{{QStringLiteral("A"), QVariantMap{{QStringLiteral("inner"), song(QStringLiteral("before"))}}},
                    {QStringLiteral("Tracks"),
                     QVariantMap{{QStringLiteral("1"), song(QStringLiteral("one"))},
                                 {QStringLiteral("2"), QStringLiteral("no song")},
                                 {QStringLiteral("3"), song(QStringLiteral("three"))}}},
                    {QStringLiteral("Z"), song(QStringLiteral("behind"))}});
    const PropertyListValue table = library.value(u"Tracks");
    const SongRanks ranks = ranked(table);
    const auto knows = [&](const PropertyListValue &value) {
        return ranks.order({table.value(u"1"), value}, Column::Song, Qt::AscendingOrder).has_value();
    };
    EXPECT_TRUE(knows(table.value(u"3")));
    EXPECT_FALSE(knows(table.value(u"2")));
    EXPECT_FALSE(knows(table.value(u"1").value(u"Name")));
    EXPECT_FALSE(knows(library.value(u"A").value(u"inner")));
    EXPECT_FALSE(knows(library.value(u"Z")));
    EXPECT_FALSE(knows(PropertyListValue()));
    EXPECT_FALSE(knows(testSupport::songs({song(QStringLiteral("one"))}).first()));
}

TEST(SongRanks, DoNotKnowWhatStandsBeforeOrBehindTheirSongsHoweverFar)
{
    const QVariantList values(500, song(QStringLiteral("other")));
    const PropertyListValue library = testSupport::propertyList(
        QVariantMap{{QStringLiteral("A"), values},
                    {QStringLiteral("Tracks"), QVariantMap{{QStringLiteral("1"), song(QStringLiteral("one"))}}},
                    {QStringLiteral("Z"), values}});
    const SongRanks ranks = ranked(library.value(u"Tracks"));
    for (const QString &key : {QStringLiteral("A"), QStringLiteral("Z")}) {
        const PropertyListValue array = library.value(key);
        for (const PropertyListView value : array.elements())
            ASSERT_FALSE(ranks.order({PropertyListValue(value)}, Column::Song, Qt::AscendingOrder));
    }
}

TEST(SongRanks, KnowOnlyTheColumnsThatWereAdded)
{
    const PropertyListValue table = tracks({song(QStringLiteral("one"), QStringLiteral("x"))});
    SongRanks ranks(table);
    EXPECT_FALSE(ranks.order(songsOf(table), Column::Song, Qt::AscendingOrder));
    ranks.add(Column::Song);
    ranks.add(Column::Time);
    EXPECT_TRUE(ranks.order(songsOf(table), Column::Song, Qt::AscendingOrder));
    EXPECT_FALSE(ranks.order(songsOf(table), Column::Artist, Qt::AscendingOrder));
    EXPECT_FALSE(ranks.order(songsOf(table), Column::Time, Qt::AscendingOrder));
}

TEST(SongRanks, OfAnEmptyLibraryKnowNothing)
{
    for (const PropertyListValue &table : {tracks({}), PropertyListValue()}) {
        const SongRanks ranks = ranked(table);
        EXPECT_FALSE(ranks.order(testSupport::songs({song(QStringLiteral("one"))}), Column::Song, Qt::AscendingOrder));
    }
}

} // namespace
