#include "ZRCommon/ZRImageCatalog.h"

#include "Platform/Foundation/UserDefaults.h"

#include <algorithm>

using platform::UserDefaults;

namespace {

const QString foldersKey = QStringLiteral("PhotoLibraryCustomCatalogFolders");

QStringList savedPaths()
{
    QStringList paths;
    const QVariantList values = UserDefaults::standard().array(foldersKey);
    for (const QVariant &path : values)
        paths.append(path.toString());
    return paths;
}

void savePaths(const QStringList &paths)
{
    UserDefaults::standard().set(foldersKey, QVariant(paths));
    UserDefaults::standard().synchronize();
}

} // namespace

ZRImageCatalog &ZRImageCatalog::sharedImageCatalog()
{
    static auto *const catalog = new ZRImageCatalog; // outlives every thread that may still list a folder
    return *catalog;
}

ZRImageCatalog::ZRImageCatalog(std::unique_ptr<ZRImageCache> imageCache)
    : m_image_cache(std::move(imageCache))
{ }

ZRImageCatalog::FolderList ZRImageCatalog::catalogFolders()
{
    if (!m_image_catalog_folders)
        loadCatalogFolders();
    return *m_image_catalog_folders;
}

void ZRImageCatalog::loadCatalogFolders()
{
    m_image_catalog_folders.emplace();
    createCatalogFoldersForPaths(savedPaths());
}

std::shared_ptr<ZRImageCatalogFolder> ZRImageCatalog::catalogFolderWithName(const QString &name)
{
    const FolderList folders = catalogFolders();
    const auto found =
        std::find_if(folders.cbegin(), folders.cend(), [&](const auto &folder) { return folder->name() == name; });
    return found == folders.cend() ? nullptr : *found;
}

ZRImageCatalog::ThumbnailList ZRImageCatalog::imageThumbnailsForCatalogFolder(const ZRImageCatalogFolder &folder,
                                                                              const QString &searchString,
                                                                              const ZRWorkUnit *cancelFlag) const
{
    return folder.imageThumbnailsThatMatchSearchString(searchString, cancelFlag);
}

ZRImageCatalog::FolderList ZRImageCatalog::addToCatalogedFolders(const QStringList &paths)
{
    const FolderList added = createCatalogFoldersForPaths(paths);
    QStringList saved = savedPaths();
    for (const auto &folder : added) {
        saved.append(folder->folderPath());
        m_image_cache->createOrUpdateCacheForCatalogFolder(*folder);
    }
    savePaths(saved);
    return added;
}

ZRImageCatalog::FolderList ZRImageCatalog::createCatalogFoldersForPaths(const QStringList &paths)
{
    FolderList created;
    for (const QString &path : paths)
        created.append(ZRImageCatalogFolder::catalogFolderWithPath(path, this));
    if (!m_image_catalog_folders)
        m_image_catalog_folders.emplace();
    m_image_catalog_folders->append(created);
    return created;
}

void ZRImageCatalog::removeFromCatalogedFolders(const std::shared_ptr<ZRImageCatalogFolder> &folder)
{
    QStringList saved = savedPaths();
    saved.removeAll(folder->folderPath());
    if (m_image_catalog_folders)
        m_image_catalog_folders->removeOne(folder);
    savePaths(saved);
}
