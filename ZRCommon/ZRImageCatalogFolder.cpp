#include "ZRCommon/ZRImageCatalogFolder.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/PropertyList/PropertyListColumns.h"
#include "Platform/Foundation/TextFolding.h"
#include "ZRCommon/PhotoSearch_p.h"
#include "ZRCommon/ZRImageCatalog.h"
#include "ZRFoundation/ZRWorkUnit.h"

using platform::PropertyListValue;
using platform::PropertyListView;

std::shared_ptr<ZRImageCatalogFolder> ZRImageCatalogFolder::catalogFolderWithPath(const QString &path,
                                                                                  ZRImageCatalog *imageCatalog)
{
    return std::make_shared<ZRImageCatalogFolder>(path, imageCatalog);
}

ZRImageCatalogFolder::ZRImageCatalogFolder(const QString &folderPath, ZRImageCatalog *imageCatalog)
    : m_folder_path(folderPath)
    , m_nonretained_image_catalog(imageCatalog)
{
    if (!imageCatalog)
        platform::raiseFailure({Q_FUNC_INFO, "ZRImageCatalogFolder", 34}, this,
                               QStringLiteral("Image catalog argument cannot be null."));
}

QString ZRImageCatalogFolder::name() const
{
    qsizetype end = m_folder_path.size();
    while (end > 1 && m_folder_path[end - 1] == u'/')
        --end;
    if (end == 1)
        return m_folder_path.first(1); // the root has no other name
    const QStringView path = QStringView(m_folder_path).first(end);
    return path.sliced(path.lastIndexOf(u'/') + 1).toString();
}

namespace {

/// Whether a path names something in the folder, whose path ends with a slash, that is none of the links there.
bool isNoLink(const PropertyListView &path, const QByteArray &folder, const QSet<QByteArray> &links)
{
    const auto bytes = path.plainUtf8();
    if (!bytes || !bytes->startsWith(folder))
        return false;
    const QByteArrayView name = bytes->sliced(folder.size());
    return !name.isEmpty() && !name.contains('/') && (links.isEmpty() || !links.contains(name.toByteArray()));
}

} // namespace

void ZRImageCatalogFolder::setName(const QString &) { }

ZRImageCatalogFolder::ThumbnailList
ZRImageCatalogFolder::imageThumbnailsThatMatchSearchString(const QString &searchString,
                                                           const ZRWorkUnit *cancelFlag) const
{
    ZRImageCacheUpdate update;
    update.cancelFlag = cancelFlag;
    return imageThumbnailsThatMatchSearchString(searchString, update);
}

ZRImageCatalogFolder::ThumbnailList
ZRImageCatalogFolder::imageThumbnailsThatMatchSearchString(const QString &searchString,
                                                           ZRImageCacheUpdate &update) const
{
    ThumbnailList thumbnails;
    if (!platform::FileManager::fileExists(m_folder_path))
        return thumbnails;
    ZRImageCache &cache = m_nonretained_image_catalog->imageCache();
    cache.createOrUpdateCacheForCatalogFolder(*this, &update);
    const PropertyListValue photos = cache.photoInformationForCatalogFolder(*this);
    const QByteArray foldedString = platform::TextFolding::folded(QStringView(searchString));
    thumbnails.reserve(searchString.isEmpty() ? photos.count() : 0);
    const QByteArray folder =
        m_folder_path.endsWith(u'/') ? m_folder_path.toUtf8() : QByteArray(m_folder_path.toUtf8() + '/');
    static const char *const keys[] = {"ImagePath", "ThumbPath", "Caption"};
    platform::PropertyListColumns columns(keys);
    for (const PropertyListView photoDict : photos.elements()) {
        if (update.cancelFlag && update.cancelFlag->cancelFlag())
            break;
        if (!foldedString.isEmpty() && !photoDictMatchesString(photoDict, foldedString))
            continue;
        const auto values = columns.values(photoDict);
        const PropertyListView image = values[0];
        const QString thumbPath = values[1].toString();
        const QString title = values[2].toString();
        if (update.links && isNoLink(image, folder, *update.links))
            thumbnails.append(std::make_shared<ZRImageThumbnail>(
                thumbPath, image.toString(), ZRImageThumbnail::ImagePath::IsResolved, title, QDateTime()));
        else
            thumbnails.append(std::make_shared<ZRImageThumbnail>(thumbPath, image.toString(), title, QDateTime()));
    }
    return thumbnails;
}

bool ZRImageCatalogFolder::photoDictMatchesString(const PropertyListView &photoDict,
                                                  const QByteArray &foldedString) const
{
    if (photoDict.isNull())
        platform::raiseInvalidParameter({Q_FUNC_INFO, "ZRImageCatalogFolder", 118}, this, "photo_dict != NULL");
    return photoMatchesString(photoDict, foldedString);
}
