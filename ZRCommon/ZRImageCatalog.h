#pragma once

#include "ZRCommon/ZRImageCache.h"
#include "ZRCommon/ZRImageCatalogFolder.h"

#include <QList>
#include <QStringList>

#include <memory>

/// The folders of photos that the user added to the media browser, in the order in which they were added. There is one
/// catalog for the application; the folders are kept in its user defaults, under "PhotoLibraryCustomCatalogFolders", an
/// array of absolute paths.
///
/// Folders are not looked at until they are listed: one that does not exist stays in the catalog. One that is added
/// twice is there twice.
///
/// The folders saved are read by the first call of `catalogFolders` that finds no list yet. A program that adds a
/// folder before that has a list of what it added only, until it is started again; nothing that was saved is lost.
///
/// Threads: the main thread, but for `imageThumbnailsForCatalogFolder` and `imageCache`, which belong to any. The
/// catalog must outlive its folders, which others may share; the shared catalog does.
class ZRImageCatalog
{
public:
    using FolderList = QList<std::shared_ptr<ZRImageCatalogFolder>>;
    using ThumbnailList = ZRImageCatalogFolder::ThumbnailList;

    /// The catalog of the application, made at the first call and kept to the end of the process.
    static ZRImageCatalog &sharedImageCatalog();

    /// For hosts and tests that want a cache builder of their own. Every catalog reads and writes the same setting: a
    /// host has one.
    explicit ZRImageCatalog(std::unique_ptr<ZRImageCache> imageCache = std::make_unique<ZRImageCache>());
    ZRImageCatalog(const ZRImageCatalog &) = delete;
    ZRImageCatalog &operator=(const ZRImageCatalog &) = delete;

    FolderList catalogFolders();
    /// The first folder of exactly this name; null when there is none.
    std::shared_ptr<ZRImageCatalogFolder> catalogFolderWithName(const QString &name);
    /// As `ZRImageCatalogFolder::imageThumbnailsThatMatchSearchString`.
    ThumbnailList imageThumbnailsForCatalogFolder(const ZRImageCatalogFolder &folder, const QString &searchString = {},
                                                  const ZRWorkUnit *cancelFlag = nullptr) const;
    /// Adds folders at the end, builds or updates the cache of each at once, which may take long, and saves the paths
    /// at once. Raises what building a cache raises; the folders are then in the list, but not saved.
    /// @return the new folders
    FolderList addToCatalogedFolders(const QStringList &paths);
    /// Takes a folder out, and every saved path that is the same, and saves that at once. The cache in the folder
    /// stays.
    void removeFromCatalogedFolders(const std::shared_ptr<ZRImageCatalogFolder> &folder);

    ZRImageCache &imageCache() const { return *m_image_cache; }

private:
    void loadCatalogFolders();
    FolderList createCatalogFoldersForPaths(const QStringList &paths);

    std::optional<FolderList> m_image_catalog_folders; // nothing until first needed
    std::unique_ptr<ZRImageCache> m_image_cache;
};
