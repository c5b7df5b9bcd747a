#pragma once

#include "Platform/Foundation/Result.h"
#include "ZRCommon/iTunesSortingForZR.h"
#include "ZRCommon/SongList.h"
#include "ZRCommon/ZRSongSearch.h"
#include "ZRFoundation/ZRProcessObserver.h"

#include <QStringList>

#include <memory>
#include <optional>

class LibraryReaderWorkUnit;
struct MediaDatabase;

/// Posted on the default notification centre, on the main thread, when an `iTunesLibraryReader` has taken the result of
/// reading its library, also when that could not be read. The object is the reader.
inline const QString ZRITunesLibraryChangedNotification = QStringLiteral("ZRITunesLibraryChangedNotification");

/// Reads the music library "iTunes Music Library.xml", a property list: its playlists, their songs, and the songs that
/// match a search. It never writes.
///
/// The first question for playlists or songs starts reading the file, once and for all, on the one worker of the
/// process server "library_reader_server", and is answered as for an empty library, as are all questions until the file
/// is read. Then "ZRITunesLibraryChangedNotification" is posted. A file that is missing or cannot be read leaves the
/// library empty for good: it is deliberately not tried again, and `readError` tells why. The file is not watched: a
/// changed library is seen by a new reader.
///
/// A question that cannot start the reading, since there is no application object or no thread to be had, is answered
/// as for an empty library and leaves the reader as it was: it is not reading, nothing will be posted, and the next
/// question tries again. The same holds for reading that the end of the application object cuts short.
///
/// Of the library these keys are used; other keys, and values of other types than these, are passed over as if they
/// were absent:
///
///     Playlists: array of dictionaries     the playlists, in the order in which they are shown
///         Name: string
///         Playlist Items: array of dictionaries
///             Track ID: integer            its decimal text is the key into Tracks; a real without a fraction counts
///             too
///     Tracks: dictionary of dictionaries   the songs; see `LibraryReaderWorkUnit::shouldIncludeSongEntry`
///
/// A property list that has content, but neither playlists nor tracks, is none of a music library: it is taken for a
/// file that cannot be read.
///
/// Songs are the library's own track dictionaries, handed out without a copy; each keeps the library in memory.
///
/// Made with std::make_shared, since the work in the background refers to it: a question to a reader that no
/// std::shared_ptr holds, and that would start the reading, fails as an internal inconsistency. When the reader dies
/// while the work is under way, the result is dropped. All operations, and its end, are on the main thread.
class iTunesLibraryReader : public ZRProcessObserver, public std::enable_shared_from_this<iTunesLibraryReader>
{
public:
    using SongList = ::SongList;

    /// A new reader of the user's own library: "iTunes Music Library.xml" in the folder "iTunes" in the folder "Music"
    /// of the home folder, each of the two folders with aliases and links resolved. When there is no file, the same in
    /// the folder "Documents", whether it exists or not.
    static std::shared_ptr<iTunesLibraryReader> iTunesDefaultLibraryReader();

    /// Keeps the path of the library file. Nothing is read yet.
    explicit iTunesLibraryReader(const QString &libraryPath);
    ~iTunesLibraryReader() override;

    const QString &libraryPath() const { return m_library_path; }

    /// The names of the playlists, in file order. A playlist without a name is left out.
    QStringList playlistNames();
    /// The first playlist of exactly this name; null when there is none.
    platform::PropertyListValue playlistInfoForName(const QString &name);
    /// The songs of the first playlist of exactly this name, in playlist order; none when there is no such playlist. A
    /// song that is listed twice comes twice; missing and excluded tracks are left out. Linear in the playlist.
    SongList songsInPlaylist(const QString &name);
    /// The songs of the list that match, in its order: see `ZRSongSearch`. The list may be any. Searching the same list
    /// again, as while the user types, costs a fraction of the first time: a list counts as the same as long as it is
    /// an unchanged copy of the one given last.
    SongList songsMatchingString(const SongList &songs, const QString &string);

    /// The songs of the list in another order: see `iTunesSortingForZR::sorted`, which gives the same. The list may be
    /// any. Songs of this library are sorted in a fraction of the time, once their order is known: the worker finds it
    /// out after the notification, in about half the time that reading the library took.
    SongList songsSorted(const SongList &songs, iTunesSortingForZR::Column column, Qt::SortOrder order);

    /// Whether the file is being read: true from the question that starts it until just before the notification.
    bool isReading() const { return m_is_reading; }
    /// Why the library is empty, when it could not be read.
    std::optional<platform::Error> readError() const;

private:
    friend class LibraryReaderWorkUnit;

    std::shared_ptr<const MediaDatabase> libraryDataDictionary();
    void workUnitDidLoadDictionary(LibraryReaderWorkUnit *workUnit);
    void processServerDidEnd(ZRProcessServer &server) override;

    QString m_library_path;
    std::shared_ptr<const MediaDatabase> m_library_data_dict; // null until first needed, then empty until it is read
    std::shared_ptr<LibraryReaderWorkUnit> m_library_reader_work_unit; // stays for as long as the reader
    bool m_is_reading = false;
    std::unique_ptr<ZRSongSearch> m_search; // of the list searched last
};
