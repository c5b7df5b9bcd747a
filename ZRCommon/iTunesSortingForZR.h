#pragma once

#include "ZRCommon/SongList.h"

#include <Qt>

#include <compare>

/// Orders of songs (the track dictionaries of a music library).
///
/// Names and artists are compared without regard to case: by the code points of their folded texts (canonical
/// composition, then simple case folding; see `platform::TextFolding`). An absent one, or one that is no
/// string, counts as the empty text. Times are compared as whole milliseconds; an absent one counts as 0.
///
/// Any thread.
namespace iTunesSortingForZR {

// How a song stands to another: `less` is ascending, `equivalent` the same, `greater` descending. Each
// descending comparison is the negation of the ascending one.

std::weak_ordering zrCompareSongAscending(const platform::PropertyListView &song,
                                          const platform::PropertyListView &other);
std::weak_ordering zrCompareSongDescending(const platform::PropertyListView &song,
                                           const platform::PropertyListView &other);
std::weak_ordering zrCompareArtistAscending(const platform::PropertyListView &song,
                                            const platform::PropertyListView &other);
std::weak_ordering zrCompareArtistDescending(const platform::PropertyListView &song,
                                             const platform::PropertyListView &other);
std::weak_ordering zrCompareTimeAscending(const platform::PropertyListView &song,
                                          const platform::PropertyListView &other);
std::weak_ordering zrCompareTimeDescending(const platform::PropertyListView &song,
                                           const platform::PropertyListView &other);

/// What songs are sorted by.
enum class Column {
    Song, ///< "Name"
    Artist, ///< "Artist"
    Time, ///< "Total Time"
};

/// The songs in the order of the column's comparison. Songs that compare as the same keep their order, in a
/// descending sort too. Far cheaper than sorting with the comparisons, which fold both texts each time.
SongList sorted(const SongList &songs, Column column, Qt::SortOrder order);

} // namespace iTunesSortingForZR
