#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "ZRCommon/iTunesSortingForZR.h"
#include "ZRCommon/SongList.h"

#include <array>
#include <optional>
#include <vector>

/// Numbers that compare as the songs' texts under the key do, without regard to case; see `iTunesSortingForZR`.
std::vector<qint64> ranksByText(const SongList &songs, const char *key);

/// Where the songs of a library stand in its orders by name and by artist, so that lists of them can be sorted without
/// looking at a text again. Takes 28 bytes for each song of the library. Immutable once filled: any thread.
class SongRanks
{
public:
    /// @param tracks the library's table of songs
    explicit SongRanks(const platform::PropertyListValue &tracks);

    /// Ranks the songs in a column. Costs about as much as sorting the whole library. Does nothing for times, which are
    /// numbers as they are.
    void add(iTunesSortingForZR::Column column);

    /// Positions of the songs in sorted order. Nothing when a song is not of the library, or the column was not added.
    std::optional<std::vector<quint32>> order(const SongList &songs, iTunesSortingForZR::Column column,
                                              Qt::SortOrder order) const;

private:
    static constexpr size_t ColumnCount = 3;
    static constexpr quint64 BlockSize = 256; // bytes of the library's table of values, about one song's

    std::optional<size_t> placeOf(const platform::PropertyListView &song) const;
    quint64 distanceTo(const platform::PropertyListView &song) const;

    SongList m_songs; // in the order of the file, which is also that of their identities
    std::vector<quint32> m_firstInBlock; // the first song that begins in the block or behind it
    std::array<std::vector<qint64>, ColumnCount> m_ranks;
};
