#include "Platform/Media/ImageReading_p.h"

#include <QPixelFormat>
#include <QtEndian>
#include <QTransform>

#include <algorithm>

namespace platform {

QSize decodedSize(const QImageReader &reader, QByteArrayView bytes)
{
    constexpr qsizetype canvasPlace = 6;
    const QSize size = reader.size();
    if (!bytes.startsWith("GIF8") || bytes.size() < canvasPlace + 4)
        return size;
    return size.expandedTo({qFromLittleEndian<quint16>(bytes.data() + canvasPlace),
                            qFromLittleEndian<quint16>(bytes.data() + canvasPlace + 2)});
}

bool isWithinLimits(const QSize &size, QImage::Format format, qint64 pixelsBefore, qint64 maximumPixels)
{
    if (!size.isValid())
        return true;
    if (size.isEmpty() || pixelsBefore + pixelsOf(size) > maximumPixels)
        return false;
    const qint64 limit = qint64(QImageReader::allocationLimit()) * 1024 * 1024;
    const int bitsPerPixel = std::max(32, int(QImage::toPixelFormat(format).bitsPerPixel()));
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
