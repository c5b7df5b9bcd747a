#include "ZRCommon/iPhotoAlbumReader.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/TextFolding.h"
#include "ZRCommon/AlbumReaderWorkUnit_p.h"
#include "ZRCommon/MediaDatabase_p.h"
#include "ZRCommon/PhotoSearch_p.h"
#include "ZRCommon/ZRImageThumbnail.h"
#include "ZRFoundation/ZRProcessServer.h"

#include <QDateTime>

using platform::PropertyListType;
using platform::PropertyListValue;
using platform::PropertyListView;

namespace {

const QString databaseFileName = QStringLiteral("AlbumData.xml");
const QString libraryFolderName = QStringLiteral("iPhoto Library");

/// Joins with exactly one slash in between, and none at the end.
QString joinedPath(const QString &folder, const QString &path)
{
    qsizetype first = 0, end = path.size();
    while (first < end && path[first] == QLatin1Char('/'))
        ++first;
    while (end > first && path[end - 1] == QLatin1Char('/'))
        --end;
    if (first == end)
        return folder;
    const bool needsSlash = !folder.isEmpty() && !folder.endsWith(QLatin1Char('/'));
    return folder + (needsSlash ? QStringLiteral("/") : QString()) + path.mid(first, end - first);
}

/// The folder that holds the file; empty for a name alone.
QString folderOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return path.left(slash == 0 ? 1 : std::max<qsizetype>(slash, 0));
}

/// The key that an element of a list of keys stands for.
std::optional<QByteArray> imageKeyOf(const PropertyListView &element)
{
    if (element.isString())
        return element.toUtf8();
    if (element.type() == PropertyListType::Integer)
        return element.toVariant().toString().toUtf8();
    return std::nullopt;
}

PropertyListView albumInfoForAlbumName(const MediaDatabase &database, const QString &name)
{
    const PropertyListView albums = database.dictionary.value(u"List of Albums");
    for (const PropertyListView album : albums.elements()) {
        const PropertyListView itsName = album.value(u"AlbumName");
        if (itsName.isString() && itsName.toString() == name)
            return album;
    }
    return {};
}

bool isPhoto(const PropertyListView &photoDict)
{
    const PropertyListView mediaType = photoDict.value(u"MediaType");
    return mediaType.isNull() || mediaType.toUtf8() == "Image";
}

} // namespace

std::shared_ptr<iPhotoAlbumReader> iPhotoAlbumReader::iPhotoDefaultAlbumReader()
{
    return std::make_shared<iPhotoAlbumReader>(platform::FileManager::homeFolder() + QStringLiteral("/Pictures/")
                                               + libraryFolderName + QLatin1Char('/') + databaseFileName);
}

iPhotoAlbumReader::iPhotoAlbumReader(const QString &albumDataPath)
{
    if (albumDataPath.endsWith(databaseFileName)) {
        m_album_path = albumDataPath;
        m_album_path_minus_xml_filename = folderOf(albumDataPath);
    } else {
        m_album_path = joinedPath(albumDataPath, databaseFileName);
        m_album_path_minus_xml_filename = albumDataPath;
    }
}

iPhotoAlbumReader::iPhotoAlbumReader(const QString &databasePath, const QString &libraryFolder)
    : m_album_path(databasePath)
    , m_album_path_minus_xml_filename(libraryFolder)
{ }

iPhotoAlbumReader::~iPhotoAlbumReader()
{
    if (m_album_reader_work_unit)
        m_album_reader_work_unit->setCancelFlag(true);
}

QStringList iPhotoAlbumReader::albumNames()
{
    QStringList names;
    const auto database = albumDataDictionary();
    const PropertyListView albums = database->dictionary.value(u"List of Albums");
    for (const PropertyListView album : albums.elements()) {
        const PropertyListView name = album.value(u"AlbumName");
        if (name.isString())
            names.append(name.toString());
    }
    return names;
}

iPhotoAlbumReader::ThumbnailList iPhotoAlbumReader::imageThumbnailsInAlbum(const QString &albumName,
                                                                           const QString &searchString,
                                                                           const ZRWorkUnit *cancelFlag)
{
    ThumbnailList thumbnails;
    const auto database = albumDataDictionary();
    const QByteArray foldedString = platform::TextFolding::folded(QStringView(searchString));
    const PropertyListView keyList = albumInfoForAlbumName(*database, albumName).value(u"KeyList");
    for (const PropertyListView element : keyList.elements()) {
        if (cancelFlag && cancelFlag->cancelFlag())
            break;
        const std::optional<QByteArray> key = imageKeyOf(element);
        if (!key)
            continue;
        auto thumbnail = m_image_thumbnails_by_key.value(*key);
        if (!thumbnail) {
            const PropertyListView photoDict = database->items.value(QUtf8StringView(*key));
            if (!isPhoto(photoDict))
                continue;
            thumbnail = thumbnailForPhoto(photoDict);
            m_image_thumbnails_by_key.insert(*key, thumbnail);
        }
        if (foldedString.isEmpty()
            || photoDictMatchesString(database->items.value(QUtf8StringView(*key)), foldedString))
            thumbnails.append(thumbnail);
    }
    return thumbnails;
}

bool iPhotoAlbumReader::photoDictMatchesString(const PropertyListView &photoDict, const QByteArray &foldedString) const
{
    if (photoDict.isNull())
        platform::raiseInvalidParameter({Q_FUNC_INFO, "iPhotoAlbumReader", 274}, this, "photo_dict != NULL");
    return photoMatchesString(photoDict, foldedString);
}

std::shared_ptr<ZRImageThumbnail> iPhotoAlbumReader::thumbnailForPhoto(const PropertyListView &photoDict) const
{
    QString title = photoDict.value(u"Caption").toString();
    if (title.endsWith(QLatin1String(".JPG")))
        title.chop(4);
    return std::make_shared<ZRImageThumbnail>(existingPath(photoDict.value(u"ThumbPath").toString()),
                                              existingPath(photoDict.value(u"ImagePath").toString()), title,
                                              QDateTime());
}

/// The path, or the place in this library that it stands for when there is nothing at it.
QString iPhotoAlbumReader::existingPath(const QString &path) const
{
    const qsizetype place = path.indexOf(libraryFolderName);
    if (place < 0 || platform::FileManager::fileExists(path))
        return path;
    return joinedPath(m_album_path_minus_xml_filename, path.mid(place + libraryFolderName.size()));
}

bool iPhotoAlbumReader::isReading() const
{
    const std::lock_guard lock(m_mutex);
    return m_is_reading;
}

std::optional<platform::Error> iPhotoAlbumReader::readError() const
{
    const std::lock_guard lock(m_mutex);
    return m_album_data_dict ? m_album_data_dict->error : std::nullopt;
}

std::shared_ptr<const MediaDatabase> iPhotoAlbumReader::albumDataDictionary()
{
    const std::lock_guard lock(m_mutex);
    if (m_album_data_dict)
        return m_album_data_dict;
    const auto self = weak_from_this().lock();
    ZR_ASSERT(this, self, "make readers with std::make_shared");
    auto placeholder = std::make_shared<const MediaDatabase>();
    auto workUnit = std::make_shared<AlbumReaderWorkUnit>(self, m_album_path);
    ZRProcessServer &server = ZRProcessServer::processServerWithName(QStringLiteral("album_reader_server"), 1);
    server.addProcessObserver(self);
    // The result waits for the lock.
    if (server.addWorkUnit(workUnit)) {
        m_album_data_dict = placeholder;
        m_album_reader_work_unit = std::move(workUnit);
        m_is_reading = true;
    }
    return placeholder;
}

void iPhotoAlbumReader::workUnitDidLoadDictionary(AlbumReaderWorkUnit *workUnit)
{
    {
        const std::lock_guard lock(m_mutex);
        m_album_data_dict = workUnit->dictionary();
        m_album_reader_work_unit.reset();
        m_is_reading = false;
    }
    platform::NotificationCenter::defaultCenter().postNotification(ZRIPhotoAlbumChangedNotification, this);
}

// The result will not come any more.
void iPhotoAlbumReader::processServerDidEnd(ZRProcessServer &)
{
    const std::lock_guard lock(m_mutex);
    if (!m_is_reading)
        return;
    m_album_data_dict.reset();
    m_album_reader_work_unit.reset();
    m_is_reading = false;
}
