#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "ZRCommon/MediaDatabase_p.h"
#include "ZRFoundation/ZRWorkUnit.h"

#include <memory>
#include <mutex>

class iTunesLibraryReader;
class SongRanks;

/// Reads a music library for an `iTunesLibraryReader` in the background and hands it to the reader on the main thread.
class LibraryReaderWorkUnit : public ZRWorkUnit
{
public:
    /// @param libraryReader told when the library is read; not owned, and not told when it has died by then
    /// @param libraryPath the library file
    LibraryReaderWorkUnit(std::weak_ptr<iTunesLibraryReader> libraryReader, const QString &libraryPath);

    /// Reads the file and has `workUnitDidLoadDictionary` called on the reader, whatever comes of the reading; then
    /// ranks the songs. Does nothing when cancelled, and stops before the next column to be ranked. Called by the
    /// server, on its worker thread.
    void processWithServer(ZRProcessServer &server) override;

    /// The library, whose index finds by its number each track dictionary that `shouldIncludeSongEntry` accepts. Null
    /// before the unit was processed. It is set on the worker thread: on the main thread it may be asked for from the
    /// reader's notification on.
    const std::shared_ptr<const MediaDatabase> &dictionary() const { return m_dictionary; }

    /// The order of the library's songs by name and artist. Null until the unit has found that out, which it does after
    /// it has handed the library over. Any thread.
    std::shared_ptr<const SongRanks> songRanks() const;

    /// Whether a playlist shows the track. A "Genre" that equals "Podcast" without regard to case excludes it;
    /// otherwise a "Kind" that equals "QuickTime movie file" without regard to case does. What is no string equals
    /// neither. Any thread.
    static bool shouldIncludeSongEntry(const platform::PropertyListView &song);

private:
    void rankSongs();

    std::weak_ptr<iTunesLibraryReader> m_library_reader;
    QString m_library_path;
    std::shared_ptr<const MediaDatabase> m_dictionary;
    mutable std::mutex m_ranksMutex;
    std::shared_ptr<const SongRanks> m_ranks;
};
