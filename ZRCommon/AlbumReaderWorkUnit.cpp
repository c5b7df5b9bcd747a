#include "ZRCommon/AlbumReaderWorkUnit_p.h"

#include "ZRCommon/iPhotoAlbumReader.h"
#include "ZRFoundation/ZRProcessServer.h"

#include <memory>

namespace {

constexpr MediaDatabase::Kind albumDatabase{QLatin1String("List of Albums"), QLatin1String("Master Image List"),
                                            QLatin1String("it holds neither albums nor photos")};

} // namespace

AlbumReaderWorkUnit::AlbumReaderWorkUnit(std::weak_ptr<iPhotoAlbumReader> albumReader, const QString &albumPath)
    : m_album_reader(std::move(albumReader))
    , m_album_path(albumPath)
{ }

void AlbumReaderWorkUnit::processWithServer(ZRProcessServer &server) noexcept
{
    if (cancelFlag())
        return;
    m_dictionary = MediaDatabase::guarded(m_album_path, [this] {
        return MediaDatabase::read(m_album_path, albumDatabase,
                                   [](const platform::PropertyListView &photo) { return photo.isDictionary(); });
    });
    server.performSelectorOnObject(m_album_reader, &iPhotoAlbumReader::workUnitDidLoadDictionary, this);
}
