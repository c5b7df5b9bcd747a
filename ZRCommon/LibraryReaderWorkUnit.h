#pragma once

#include "ZRCommon/MediaDatabase.h"
#include "ZRFoundation/ZRWorkUnit.h"

class iTunesLibraryReader;

/// Reads a music library for an `iTunesLibraryReader` in the background and hands it to the reader on the main thread.
class LibraryReaderWorkUnit : public ZRWorkUnit
{
public:
    /// @param libraryReader told when the library is read; not owned, and not told when it has died by then
    /// @param libraryPath the library file
    LibraryReaderWorkUnit(std::weak_ptr<iTunesLibraryReader> libraryReader, const QString &libraryPath);

    /// Reads the file and has `workUnitDidLoadDictionary` called on the reader, whatever comes of the reading. Does
    /// nothing when cancelled. Called by the server, on its worker thread.
    void processWithServer(ZRProcessServer &server) noexcept override;

    /// The library, whose index finds by its number each track dictionary that `shouldIncludeSongEntry` accepts. Null
    /// before the unit was processed. It is set on the worker thread: on the main thread it may be asked for from the
    /// reader's notification on.
    const std::shared_ptr<const MediaDatabase> &dictionary() const { return m_dictionary; }

    /// Whether a playlist shows the track. A "Genre" that equals "Podcast" without regard to case excludes it;
    /// otherwise a "Kind" that equals "QuickTime movie file" without regard to case does. What is no string equals
    /// neither. Any thread.
    static bool shouldIncludeSongEntry(const platform::PropertyListView &song);

private:
    std::weak_ptr<iTunesLibraryReader> m_library_reader;
    QString m_library_path;
    std::shared_ptr<const MediaDatabase> m_dictionary;
};
