#include "ZRCommon/ZRImageThumbnail.h"

#include "ZRCommon/ZRFileManagerExtensions.h"
#include "ZRCommon/ZRImagingExtensions.h"

ZRImageThumbnail::ZRImageThumbnail(const QString &thumbPath, const QString &imagePath, const QString &title,
                                   const QDateTime &creationDate)
    : ZRImageThumbnail(thumbPath, ZRFileManagerExtensions::pathResolved(imagePath), ImagePath::IsResolved, title,
                       creationDate)
{ }

ZRImageThumbnail::ZRImageThumbnail(const QString &thumbPath, const QString &imagePath, ImagePath, const QString &title,
                                   const QDateTime &creationDate)
    : m_thumb_path(thumbPath)
    , m_image_path(imagePath)
    , m_title(title)
    , m_creation_date(creationDate)
{ }

ZRImageThumbnail::ZRImageThumbnail(const QString &thumbPath, const QString &imagePath)
    : ZRImageThumbnail(thumbPath, imagePath, QString(), QDateTime())
{ }

std::shared_ptr<platform::Image> ZRImageThumbnail::imageToDisplay()
{
    loadImage();
    return m_thumb_image ? m_thumb_image : notLoadedImage();
}

void ZRImageThumbnail::loadImage()
{
    if (m_thumb_image)
        return;
    m_thumb_image = platform::Image::contentsOfFile(m_thumb_path);
    if (m_thumb_image)
        ZRImagingExtensions::fixSizeZR(*m_thumb_image);
}
