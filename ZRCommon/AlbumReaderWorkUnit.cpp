#include "ZRCommon/AlbumReaderWorkUnit.h"

#include "ZRCommon/iPhotoAlbumReader.h"
#include "ZRFoundation/ZRProcessServer.h"

AlbumReaderWorkUnit::AlbumReaderWorkUnit(std::weak_ptr<iPhotoAlbumReader> albumReader, const QString &albumPath)
    : m_album_reader(std::move(albumReader))
    , m_album_path(albumPath)
{ }

void AlbumReaderWorkUnit::processWithServer(ZRProcessServer &server)
{
    if (cancelFlag())
        return;
    m_dictionary = MediaDatabase::read(m_album_path, u"Master Image List");
    server.performSelectorOnObject(m_album_reader, &iPhotoAlbumReader::workUnitDidLoadDictionary, this);
}
