#include "ZRCommon/iTunesSortingForZR.h"

#include "Platform/Foundation/PropertyList/PropertyListColumns.h"
#include "Platform/Foundation/StableOrder_p.h"
#include "Platform/Foundation/TextFolding.h"
#include "ZRCommon/SongRanks_p.h"

using platform::PropertyListView;

namespace {

std::weak_ordering compareTexts(const PropertyListView &song, const PropertyListView &other, QAnyStringView key)
{
    const QByteArray text = platform::TextFolding::folded(QByteArrayView(song.value(key).toUtf8()));
    const QByteArray otherText = platform::TextFolding::folded(QByteArrayView(other.value(key).toUtf8()));
    return text.compare(otherText) <=> 0;
}

qint64 timeOf(const PropertyListView &song)
{
    return song.value(u"Total Time").toInteger();
}

std::vector<quint32> orderByText(const SongList &songs, const char *key, Qt::SortOrder order)
{
    return platform::StableOrder::ofNumbers(ranksByText(songs, key), order);
}

std::vector<quint32> orderByTime(const SongList &songs, Qt::SortOrder order)
{
    const char *const keys[] = {"Total Time"};
    std::vector<qint64> times;
    times.reserve(size_t(songs.size()));
    platform::PropertyListColumns columns(keys);
    columns.visit(songs, [&](std::span<const PropertyListView> values) { times.push_back(values[0].toInteger()); });
    return platform::StableOrder::ofNumbers(times, order);
}

std::vector<quint32> orderOf(const SongList &songs, iTunesSortingForZR::Column column, Qt::SortOrder order)
{
    switch (column) {
    case iTunesSortingForZR::Column::Song:
        return orderByText(songs, "Name", order);
    case iTunesSortingForZR::Column::Artist:
        return orderByText(songs, "Artist", order);
    case iTunesSortingForZR::Column::Time:
        break;
    }
    return orderByTime(songs, order);
}

} // namespace

std::weak_ordering iTunesSortingForZR::zrCompareSongAscending(const PropertyListView &song,
                                                              const PropertyListView &other)
{
    return compareTexts(song, other, u"Name");
}

std::weak_ordering iTunesSortingForZR::zrCompareSongDescending(const PropertyListView &song,
                                                               const PropertyListView &other)
{
    return 0 <=> zrCompareSongAscending(song, other);
}

std::weak_ordering iTunesSortingForZR::zrCompareArtistAscending(const PropertyListView &song,
                                                                const PropertyListView &other)
{
    return compareTexts(song, other, u"Artist");
}

std::weak_ordering iTunesSortingForZR::zrCompareArtistDescending(const PropertyListView &song,
                                                                 const PropertyListView &other)
{
    return 0 <=> zrCompareArtistAscending(song, other);
}

std::weak_ordering iTunesSortingForZR::zrCompareTimeAscending(const PropertyListView &song,
                                                              const PropertyListView &other)
{
    return timeOf(song) <=> timeOf(other);
}

std::weak_ordering iTunesSortingForZR::zrCompareTimeDescending(const PropertyListView &song,
                                                               const PropertyListView &other)
{
    return 0 <=> zrCompareTimeAscending(song, other);
}

SongList iTunesSortingForZR::sorted(const SongList &songs, Column column, Qt::SortOrder order)
{
    return platform::PropertyListValue::select(songs, orderOf(songs, column, order));
}
