#include "ZRCommon/SongRanks_p.h"

#include "Platform/Foundation/StableOrder_p.h"
#include "ZRCommon/SongTexts_p.h"

using platform::PropertyListValue;
using platform::PropertyListView;

std::vector<qint64> ranksByText(const SongList &songs, const char *key)
{
    const char *const keys[] = {key};
    const SongTexts texts(songs, keys);
    std::vector<QByteArrayView> records(texts.recordCount());
    for (size_t i = 0; i < records.size(); ++i)
        records[i] = texts.record(i).chopped(1); // the separator
    std::vector<qint64> ranks = platform::StableOrder::ranksOfTexts(records);
    if (texts.recordsOfTexts().empty())
        return ranks;

    // Repeated texts have one record.
    std::vector<qint64> ranksOfSongs;
    ranksOfSongs.reserve(texts.recordsOfTexts().size());
    for (const quint32 record : texts.recordsOfTexts())
        ranksOfSongs.push_back(ranks[record]);
    return ranksOfSongs;
}

SongRanks::SongRanks(const PropertyListValue &tracks)
{
    m_songs.reserve(tracks.count());
    for (const auto &entry : tracks.entries()) {
        if (entry.value().isDictionary())
            m_songs.append(PropertyListValue(entry.value()));
    }
    for (qsizetype i = 0; i < m_songs.size(); ++i)
        m_firstInBlock.resize(distanceTo(m_songs[i]) / BlockSize + 1, quint32(i));
}

void SongRanks::add(iTunesSortingForZR::Column column)
{
    switch (column) {
    case iTunesSortingForZR::Column::Song:
        m_ranks[size_t(column)] = ranksByText(m_songs, "Name");
        break;
    case iTunesSortingForZR::Column::Artist:
        m_ranks[size_t(column)] = ranksByText(m_songs, "Artist");
        break;
    case iTunesSortingForZR::Column::Time:
        break;
    }
}

std::optional<std::vector<quint32>> SongRanks::order(const SongList &songs, iTunesSortingForZR::Column column,
                                                     Qt::SortOrder order) const
{
    const std::vector<qint64> &ranks = m_ranks[size_t(column)];
    if (ranks.empty())
        return std::nullopt;
    std::vector<qint64> ranksOfSongs;
    ranksOfSongs.reserve(size_t(songs.size()));
    for (const PropertyListView &song : songs) {
        const std::optional<size_t> place = placeOf(song);
        if (!place)
            return std::nullopt;
        ranksOfSongs.push_back(ranks[*place]);
    }
    return platform::StableOrder::ofNumbers(ranksOfSongs, order);
}

// Bytes from the first song to another of the same library.
quint64 SongRanks::distanceTo(const PropertyListView &song) const
{
    return quint64(quintptr(song.identity()) - quintptr(m_songs.first().identity()));
}

std::optional<size_t> SongRanks::placeOf(const PropertyListView &song) const
{
    if (m_songs.isEmpty() || !song.sharesDocumentWith(m_songs.first()))
        return std::nullopt;
    const quint64 distance = distanceTo(song);
    if (distance / BlockSize >= m_firstInBlock.size()) // before the first song, or behind the last
        return std::nullopt;
    qsizetype place = m_firstInBlock[size_t(distance / BlockSize)];
    while (place < m_songs.size() && distanceTo(m_songs[place]) < distance)
        ++place;
    if (place == m_songs.size() || m_songs[place].identity() != song.identity())
        return std::nullopt;
    return size_t(place);
}
