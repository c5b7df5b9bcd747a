#pragma once

#include "ZRCommon/SongList.h"

#include <QByteArray>
#include <QStringView>

#include <memory>
#include <vector>

/// Searches one list of songs again and again, as the user types.
///
/// A song matches when the text occurs, without regard to case (canonical composition, then simple case
/// folding), anywhere within its "Album", its "Artist", its "Genre" or its "Name". What is absent or no
/// string never matches. The empty text occurs in no text and matches no song.
///
/// Making it folds the texts of all songs once; neighbours that share album, artist and genre, as the songs of an album
/// do, share these folded texts too. A search is one pass over them; while the user narrows the text down, so that it
/// contains the one searched before, only the earlier hits are looked at once they are few.
///
/// One object belongs to one thread at a time.
class ZRSongSearch
{
public:
    explicit ZRSongSearch(const SongList &songs);
    ZRSongSearch(ZRSongSearch &&) noexcept;
    ZRSongSearch &operator=(ZRSongSearch &&) noexcept;
    ~ZRSongSearch();

    const SongList &songs() const { return m_songs; }
    /// The songs that match, in the order of the list. A song that the list holds twice comes twice.
    SongList songsMatchingString(QStringView string);

private:
    class Part;

    SongList m_songs;
    std::vector<quint32> m_sharingStarts; // of neighbours that share texts, and the end of the list
    std::unique_ptr<Part> m_sharedTexts; // of the first of each of them
    std::unique_ptr<Part> m_ownTexts; // of each song
    QByteArray m_needle; // folded text of the last search
};
