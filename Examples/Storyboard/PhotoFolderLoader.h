#pragma once

#include "ZRCommon/ZRImageCatalogFolder.h"

#include <QObject>
#include <QString>

#include <memory>

/// Lists the photos of a folder in the background, bringing its thumbnails up to date first, on the server that the
/// media browser uses as well ("thumbnail_loader"). One folder at a time: loading another one cancels the one before.
///
/// The main thread.
class PhotoFolderLoader : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    /// Cancels.
    ~PhotoFolderLoader() override;

    void load(const QString &folderPath);
    /// The folder that is being loaded is given up. What was made of its thumbnails is kept in it.
    void cancel();
    /// Also while something that was cancelled still ends.
    bool isLoading() const { return m_unit != nullptr; }
    QString folderPath() const;

Q_SIGNALS:
    /// So many of the photos that had no thumbnail yet were tried. Told some twenty times a second at most.
    void didProgress(qsizetype done, qsizetype total);
    /// Photos that are ready while the others are still being made: at first those that were in the folder's cache
    /// already. They come in the order of the folder, and all of them once more with `didLoad`.
    void didFind(const QString &folderPath, const ZRImageCatalogFolder::ThumbnailList &photos);
    /// Each load ends with one of these, unless another one was begun before.
    /// @param refused how many files that are called photos could not be read
    void didLoad(const QString &folderPath, const ZRImageCatalogFolder::ThumbnailList &photos, qsizetype refused);
    void didCancel(const QString &folderPath, qsizetype made);
    /// @param reason for a person to read
    void didFail(const QString &folderPath, const QString &reason);

private:
    class Unit;
    void unitDidProgress(const Unit *unit);
    void unitDidEnd(const Unit *unit);

    std::shared_ptr<Unit> m_unit;
};
