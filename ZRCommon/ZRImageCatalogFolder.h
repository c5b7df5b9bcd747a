#pragma once

#include "Platform/Foundation/PropertyList/PropertyListValue.h"
#include "ZRCommon/ZRImageCache.h"
#include "ZRCommon/ZRImageThumbnail.h"

#include <QList>
#include <QString>

#include <memory>

class ZRImageCatalog;
class ZRWorkUnit;

/// A folder of photos that the user added to the media browser. Its photos are listed from the cache of thumbnails in
/// it, see `ZRImageCache`.
///
/// **Listing the photos writes into their folder**: the first listing makes a folder "ZR.imageCache" in it, and later
/// ones bring that up to date. Where it cannot be made, listing raises `ZRImageCacheCouldNotCreateFolderException`.
///
/// Thread safety: immutable; any thread. The catalog must outlive it.
class ZRImageCatalogFolder
{
public:
    using ThumbnailList = QList<std::shared_ptr<ZRImageThumbnail>>;

    static std::shared_ptr<ZRImageCatalogFolder> catalogFolderWithPath(const QString &path,
                                                                       ZRImageCatalog *imageCatalog);

    /// @param folderPath absolute; whether there is a folder is not looked at
    /// @param imageCatalog the catalog that it belongs to, which is not owned; a failed assertion when there is none
    ZRImageCatalogFolder(const QString &folderPath, ZRImageCatalog *imageCatalog);

    /// The last component of the path, always.
    QString name() const;
    /// Does nothing, on purpose: a folder's name always follows its path.
    void setName(const QString &name);
    const QString &folderPath() const { return m_folder_path; }

    /// The photos whose caption contains the text, in the order of the index. The cache is brought up to date first, so
    /// that files which were added or removed show up; photos that were cached already are not opened. Each listing
    /// makes new records. A folder that does not exist lists no photos.
    ///
    /// Raises what bringing the cache up to date raises.
    /// @param searchString looked for without regard to case (canonical composition, then simple case folding); empty
    /// matches everything. A caption is a file's name without its extension
    /// @param cancelFlag polled before each photo, and while the cache is brought up to date; once it is set the photos
    /// gathered so far are returned, which the caller should throw away. May be null
    ThumbnailList imageThumbnailsThatMatchSearchString(const QString &searchString,
                                                       const ZRWorkUnit *cancelFlag = nullptr) const;
    /// The same, for those who want to follow how the cache is brought up to date; see there for cancelling.
    ThumbnailList imageThumbnailsThatMatchSearchString(const QString &searchString, ZRImageCacheUpdate &update) const;

protected:
    /// The search rule for one entry of the index. Fails for a null entry.
    /// @param foldedString the text to be found, folded (`platform::TextFolding`); empty matches everything
    bool photoDictMatchesString(const platform::PropertyListView &photoDict, const QByteArray &foldedString) const;

private:
    QString m_folder_path;
    ZRImageCatalog *m_nonretained_image_catalog;
};
