#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "ZRCommon/MediaDatabase_p.h"
#include "ZRFoundation/ZRWorkUnit.h"

#include <memory>

class iPhotoAlbumReader;

/// Reads an album database for an `iPhotoAlbumReader` in the background and hands it to the reader on the main thread.
class AlbumReaderWorkUnit : public ZRWorkUnit
{
public:
    /// @param albumReader told when the database is read; not owned, and not told when it has died by then
    /// @param albumPath the database file
    AlbumReaderWorkUnit(std::weak_ptr<iPhotoAlbumReader> albumReader, const QString &albumPath);

    /// Reads the file and has `workUnitDidLoadDictionary` called on the reader, whatever comes of the reading. Does
    /// nothing when cancelled. Called by the server, on its worker thread.
    void processWithServer(ZRProcessServer &server) noexcept override;

    /// The database, whose index finds by its image key each photo that is a dictionary. Null before the unit was
    /// processed. It is set on the worker thread: on the main thread it may be asked for from the reader's notification
    /// on.
    const std::shared_ptr<const MediaDatabase> &dictionary() const { return m_dictionary; }

private:
    std::weak_ptr<iPhotoAlbumReader> m_album_reader;
    QString m_album_path;
    std::shared_ptr<const MediaDatabase> m_dictionary;
};
