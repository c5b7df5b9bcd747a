#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Media/Image.h"

#include <QDateTime>
#include <QString>

#include <memory>

/// The one record of a photo in the media browser, whatever source it comes from: a small thumbnail file that the
/// grid shows, the full image file that is handed out, a title and a creation date. The thumbnail picture is read
/// from its file when it is first displayed and kept from then on, so that an album of many photos costs one small
/// record for each until it is scrolled into view.
///
/// Shared by its source, which keeps it for reuse, and by all lists that hold it: a picture once loaded is loaded
/// for all. Paths, title and date never change.
///
/// Thread safety: a record may be made on any thread and handed over; it belongs to one thread at a time, and nothing
/// is locked. Pictures are meant to be loaded on the main thread, while drawing. That needs no window system: a
/// QCoreApplication is enough, and even that only for formats whose plug-ins Qt looks for beside the program.
class ZRImageThumbnail : public platform::Object
{
    ZR_OBJECT(ZRImageThumbnail, platform::Object)

public:
    /// Keeps the thumbnail path as given. The image path is passed through `ZRFileManagerExtensions::pathResolved`:
    /// what an alias or symbolic link stands for is handed out in its place; whether anything is there is not
    /// checked. An invalid date means that there is none.
    ZRImageThumbnail(const QString &thumbPath, const QString &imagePath, const QString &title,
                     const QDateTime &creationDate);
    /// The same for a source which knows that the image path names no link: it is kept as it is, and the file system
    /// is not asked.
    enum class ImagePath { IsResolved };
    ZRImageThumbnail(const QString &thumbPath, const QString &imagePath, ImagePath, const QString &title,
                     const QDateTime &creationDate);
    /// The first with an empty title and no date.
    ZRImageThumbnail(const QString &thumbPath, const QString &imagePath);

    /// The thumbnail picture, read from its file if it is not loaded yet. Its logical size is its size in pixels.
    /// @return `notLoadedImage`, a null pointer, when the file is missing or cannot be read. That is not remembered:
    /// the next call tries the file again.
    std::shared_ptr<platform::Image> imageToDisplay();

    const QString &title() const { return m_title; }
    /// Invalid when there is none.
    const QDateTime &creationDate() const { return m_creation_date; }
    /// The resolved path of the full image.
    const QString &imagePath() const { return m_image_path; }

    // Internal: for what draws thumbnails and wants to spread the loading or to free memory.

    /// What is displayed in place of a picture that cannot be loaded: no image at all, a null pointer.
    static std::shared_ptr<platform::Image> notLoadedImage() { return nullptr; }
    /// Whether a picture is loaded.
    bool isImageLoaded() const { return m_thumb_image != nullptr; }
    /// Reads the picture, unless one is loaded.
    void loadImage();
    /// Lets the picture go; the next `imageToDisplay` reads the file again. Who still holds the picture keeps it.
    void unloadImage() { m_thumb_image.reset(); }

private:
    QString m_thumb_path;
    QString m_image_path;
    std::shared_ptr<platform::Image> m_thumb_image; // null until the first display
    QString m_title;
    QDateTime m_creation_date;
};
