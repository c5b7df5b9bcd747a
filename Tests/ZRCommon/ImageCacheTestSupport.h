#pragma once

#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Support/FolderTest.h"
#include "Support/ImageSamples.h"
#include "ZRCommon/ZRImageCatalog.h"

#include <QFileInfo>
#include <QImage>
#include <QImageReader>

#include <functional>

/// What the tests of the image cache share.
namespace testSupport {

inline QByteArray picture(int width, int height, const char *format = "jpg")
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor(120, 60, 200));
    return encoded(image, format);
}

inline QByteArray photoName(int number)
{
    return "photo" + QByteArray::number(number) + ".jpg";
}

/// A folder of photos, in a catalog of its own.
class ImageCacheTest : public FolderTest
{
protected:
    const QString photos = in("photos");
    ZRImageCatalog catalog;
    ZRImageCache &cache = catalog.imageCache();
    const ZRImageCatalogFolder catalogFolder{photos, &catalog};
    const QString cacheFolder = photos + QStringLiteral("/ZR.imageCache");
    const QString index = cacheFolder + QStringLiteral("/ImageData.plist");

    ImageCacheTest() { QDir().mkpath(photos); }
    void put(const char *name, const QByteArray &bytes = picture(30, 20)) const
    {
        writeFile(photos + u'/' + QString::fromUtf8(name), bytes);
    }
    void update(ZRImageCacheUpdate *followed = nullptr)
    {
        cache.createOrUpdateCacheForCatalogFolder(catalogFolder, followed);
    }
    QStringList captions() const
    {
        QStringList texts;
        const platform::PropertyListValue entries = cache.photoInformationForCatalogFolder(catalogFolder);
        for (const platform::PropertyListView entry : entries.elements())
            texts.append(entry.value(u"Caption").toString());
        return texts;
    }
    QStringList sortedCaptions() const
    {
        QStringList texts = captions();
        texts.sort();
        return texts;
    }
    QSize thumbnailSize(const char *name) const
    {
        QImageReader reader(cacheFolder + u'/' + QString::fromUtf8(name), "jpg");
        return reader.read().size();
    }
    QStringList namesInCache() const
    {
        return QDir(cacheFolder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
};

/// Notes what it is asked to make a thumbnail of, and refuses some of that.
class PickyCache : public ZRImageCache
{
public:
    QStringList offered;
    std::function<void(const QString &)> beforeSaving = [](const QString &) {};

protected:
    bool shouldSkipFilename(const QString &name) const override
    {
        return name.startsWith(QLatin1String("private")) || ZRImageCache::shouldSkipFilename(name);
    }
    bool scaleAndSaveAsJPEG(const QString &imagePath, const QString &thumbPath) override
    {
        offered.append(QFileInfo(imagePath).fileName());
        beforeSaving(imagePath);
        if (imagePath.endsWith(QLatin1String("refused.jpg")))
            return false;
        return ZRImageCache::scaleAndSaveAsJPEG(imagePath, thumbPath);
    }
};

} // namespace testSupport
