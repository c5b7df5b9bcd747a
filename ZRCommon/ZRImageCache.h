#pragma once

#include "Platform/Foundation/PropertyList/PropertyListValue.h"
#include "Platform/Foundation/Result.h"

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QString>
#include <QVariant>

#include <exception>
#include <functional>
#include <optional>

class ZRImageCatalogFolder;
class ZRWorkUnit;

/// Name of the cache in its folder of photos, and of the index in the cache.
inline const QString ZRCacheFolderName = QStringLiteral("ZR.imageCache");
inline const QString ZRCacheFilename = QStringLiteral("ImageData.plist");

/// What is wrong with a cache, for the person who wanted to see the photos.
class ZRImageCacheException : public std::exception
{
public:
    ZRImageCacheException(const QString &name, const QString &reason)
        : m_name(name)
        , m_reason(reason)
        , m_what(reason.toUtf8())
    { }
    /// Name of the kind of exception, the same in every language.
    const QString &name() const { return m_name; }
    const QString &reason() const { return m_reason; }
    const char *what() const noexcept override { return m_what.constData(); }

private:
    QString m_name;
    QString m_reason;
    QByteArray m_what;
};

/// The folder of a cache cannot be made, for example on a volume that is read-only.
class ZRImageCacheCouldNotCreateFolderException : public ZRImageCacheException
{
public:
    explicit ZRImageCacheCouldNotCreateFolderException(const QString &reason)
        : ZRImageCacheException(QStringLiteral("ZRImageCacheCouldNotCreateFolderException"), reason)
    { }
};

/// There is a cache already. For hosts: the framework itself raises it nowhere.
class ZRImageCacheExistsException : public ZRImageCacheException
{
public:
    explicit ZRImageCacheExistsException(const QString &reason)
        : ZRImageCacheException(QStringLiteral("ZRImageCacheExistsException"), reason)
    { }
};

/// An update of a folder's cache, for those who want to follow it, to cancel it, or to know what came of it.
struct ZRImageCacheUpdate {
    /// Polled before each file; once it is set the rest of the folder is left for the next update. May be null.
    const ZRWorkUnit *cancelFlag = nullptr;
    /// Called, if it is set, on the updating thread, once all files are listed and after each of them.
    std::function<void(const ZRImageCacheUpdate &)> didProgress;

    qsizetype total = 0; ///< Files in the folder that may be pictures and are not in the index.
    qsizetype done = 0; ///< Of these, how many were tried.
    qsizetype made = 0; ///< Thumbnails that were made.
    qsizetype kept = 0; ///< Entries of the index whose files are still there.
    qsizetype dropped = 0; ///< Entries that were taken out, since their files are gone.
    QVariantList entries; ///< Those that were made, as the index will hold them: a host can show them already.
    QList<platform::Error> refused; ///< Files without an entry, and why: no pictures, damaged ones, odd names.
    bool wasCancelled = false;
    /// Names in the folder of what may be a link, nothing when the folder could not be listed. For listing its photos
    /// without asking the file system about each.
    std::optional<QSet<QByteArray>> links;
};

/// Keeps a small cache in each folder of photos that the user added: a folder "ZR.imageCache" with a thumbnail of each
/// picture and an index, so that a folder of large photos opens quickly after the first time. All state is on disk.
///
///     FOLDER/ZR.imageCache/ImageData.plist        the index, an XML property list
///     FOLDER/ZR.imageCache/sea_thumb.png          the thumbnail of FOLDER/sea.png: always a JPEG, whatever its name
///     says
///
/// The index is a dictionary: "Version" is 1.0 and never looked at; "Image Data" is an array with a dictionary for each
/// picture: "Caption" (the file's name without its extension), "ImagePath" and "ThumbPath" (absolute).
///
/// What is in a folder is told by names alone. A picture that was replaced by another of the same name keeps its old
/// thumbnail, and a folder that was moved keeps the paths of its old place, until the cache folder is deleted by hand.
/// What a decoder refuses is tried again at every update.
/// Files whose names are not UTF-8, or hold a character that XML has no room for, get no entry.
///
/// Settings, in the user defaults, read for each thumbnail: "ImageCacheMaxScaleWidth" (240) and
/// "ImageCacheMaxScaleHeight" (180), of which the larger limits the longer side in pixels, and
/// "ImageCacheScaleQuality" (0.75), which is applied to nothing.
///
/// Thumbnails and the index are replaced whole: whoever reads meanwhile, and whoever comes after the program was
/// killed, sees the old or the new one. Several programs may update one folder at the same time.
///
/// Hosts may override the protected operations. They are called on the updating thread, for one file after the other
/// in the order of the folder; only decoding is done ahead, on all processors.
///
/// Thread safety: any thread; several may update folders at the same time.
class ZRImageCache
{
public:
    ZRImageCache();
    ZRImageCache(const ZRImageCache &) = delete;
    ZRImageCache &operator=(const ZRImageCache &) = delete;
    virtual ~ZRImageCache() = default;

    /// Whether there is an index that may be read.
    bool hasCacheForCatalogFolder(const ZRImageCatalogFolder &folder) const;
    /// Updates the folder's cache, or creates it when there is none. May raise what these raise.
    void createOrUpdateCacheForCatalogFolder(const ZRImageCatalogFolder &folder, ZRImageCacheUpdate *update = nullptr);
    /// Builds the cache from nothing. An index that cannot be written is passed over in silence. An update that is
    /// cancelled writes an index of what it has made, from which the next one goes on; one that raises writes none.
    /// Raises `ZRImageCacheCouldNotCreateFolderException`; a failed assertion when there is a cache.
    void createCacheForCatalogFolder(const ZRImageCatalogFolder &folder, ZRImageCacheUpdate *update = nullptr);
    /// Brings the index up to date: adds thumbnails of new files at its end, takes out entries whose files are gone
    /// (their thumbnails stay); of different entries for one file the last goes first, the others at the next updates.
    /// Written only when something changed. When the folder cannot be listed all entries stay. A failed assertion when
    /// the index has no list of entries.
    void updateCacheForCatalogFolder(const ZRImageCatalogFolder &folder, ZRImageCacheUpdate *update = nullptr);
    /// The entries of the index, an array of dictionaries; null when it cannot be read. Opens no picture.
    platform::PropertyListValue photoInformationForCatalogFolder(const ZRImageCatalogFolder &folder) const;

    /// The settings.
    static int maxScaleWidth();
    static int maxScaleHeight();
    static double maxScaleQuality();

protected:
    /// An index without entries.
    virtual QVariantMap blankImageDataDict() const;
    /// Whether a file's name is passed over: ".DS_Store" and "ZR.imageCache" are.
    virtual bool shouldSkipFilename(const QString &name) const;
    /// Makes the thumbnail of a file and its entry for the index; nothing when the name is skipped or no thumbnail
    /// could be made.
    virtual std::optional<QVariantMap> createThumbEntryForImageFilename(const QString &name, const QString &folderPath);
    /// Writes a small JPEG of the picture, upright, its longer side at most the larger of the two settings; a thumbnail
    /// that the file holds is used where there is one.
    /// @return whether it was made and written
    virtual bool scaleAndSaveAsJPEG(const QString &imagePath, const QString &thumbPath);

private:
    class Session;

    QVariantList addEntries(const QString &folderPath, Session &session);
    static Session *&currentSession();
};
