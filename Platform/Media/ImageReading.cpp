#include "Platform/Media/ImageReading_p.h"

#include <QPixelFormat>
#include <QTransform>

#include <algorithm>

namespace platform {

bool isWithinLimits(const QImageReader &reader, qint64 pixelsBefore, qint64 maximumPixels)
{
    const QSize size = reader.size();
    if (!size.isValid())
        return true;
    if (size.isEmpty() || pixelsBefore + pixelsOf(size) > maximumPixels)
        return false;
    const qint64 limit = qint64(QImageReader::allocationLimit()) * 1024 * 1024;
    const int bitsPerPixel = std::max(32, int(QImage::toPixelFormat(reader.imageFormat()).bitsPerPixel()));
    return limit <= 0 || pixelsOf(size) * bitsPerPixel / 8 <= limit;
}

QImage upright(const QImage &image, QImageIOHandler::Transformations transformation)
{
    QImage result = image.mirrored(transformation.testFlag(QImageIOHandler::TransformationMirror),
                                   transformation.testFlag(QImageIOHandler::TransformationFlip));
    if (transformation.testFlag(QImageIOHandler::TransformationRotate90))
        result = result.transformed(QTransform().rotate(90));
    return result;
}

} // namespace platform
