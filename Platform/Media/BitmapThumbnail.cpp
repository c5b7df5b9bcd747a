#include "Platform/Media/BitmapThumbnail_p.h"

#include "Platform/Media/ColorProfile_p.h"
#include "Platform/Media/ImageReading_p.h"
#include "Platform/Media/JpegThumbnail_p.h"
#include "Platform/Media/JpegWriter.h"
#include "Platform/Media/Plane_p.h"

#include <QColorSpace>

namespace platform {
namespace {

// One of the formats that `channel` knows.
QImage usual(QImage image)
{
    if (image.format() == QImage::Format_RGB888 || image.format() == QImage::Format_Grayscale8)
        return image;
    if (image.hasAlphaChannel())
        return std::move(image).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const bool isGrey = image.format() == QImage::Format_Grayscale16 || (image.depth() <= 8 && image.isGrayscale());
    return std::move(image).convertToFormat(isGrey ? QImage::Format_Grayscale8 : QImage::Format_RGB32);
}

// Red, green and blue count from 0.
Plane channel(const QImage &image, int index)
{
    Plane plane(image.width(), image.height());
    const bool isTransparent = image.format() == QImage::Format_ARGB32_Premultiplied;
    for (int y = 0; y < image.height(); ++y) {
        const uchar *const from = image.constScanLine(y);
        uchar *const to = plane.row(y);
        if (image.format() == QImage::Format_Grayscale8) {
            std::copy_n(from, image.width(), to);
        } else if (image.format() == QImage::Format_RGB888) {
            for (int x = 0; x < image.width(); ++x)
                to[x] = from[3 * x + index];
        } else {
            const auto *const pixels = reinterpret_cast<const QRgb *>(from);
            const int shift = 16 - 8 * index;
            for (int x = 0; x < image.width(); ++x)
                to[x] = uchar((pixels[x] >> shift & 0xFF) + (isTransparent ? 255 - qAlpha(pixels[x]) : 0));
        }
    }
    return plane;
}

QImage reduced(const QImage &image, const QSize &size)
{
    const bool isGrey = image.format() == QImage::Format_Grayscale8;
    const int channels = isGrey ? 1 : 3; // of the result
    QImage result(size, isGrey ? QImage::Format_Grayscale8 : QImage::Format_RGB888);
    for (int index = 0; index < channels && !result.isNull(); ++index) {
        const Plane plane = resampled(channel(image, index), image.size(), size);
        for (int y = 0; y < size.height(); ++y) {
            uchar *const to = result.scanLine(y);
            for (int x = 0; x < size.width(); ++x)
                to[x * channels + index] = plane.row(y)[x];
        }
    }
    return result;
}

QImageIOHandler::Transformations transformationOf(int orientation)
{
    constexpr QImageIOHandler::Transformation values[] = {QImageIOHandler::TransformationNone,
                                                          QImageIOHandler::TransformationMirror,
                                                          QImageIOHandler::TransformationRotate180,
                                                          QImageIOHandler::TransformationFlip,
                                                          QImageIOHandler::TransformationFlipAndRotate90,
                                                          QImageIOHandler::TransformationRotate90,
                                                          QImageIOHandler::TransformationMirrorAndRotate90,
                                                          QImageIOHandler::TransformationRotate270};
    return values[orientation - 1];
}

} // namespace

Result<QByteArray> bitmapThumbnail(QImage image, int maximumPixelSize, int orientation, QByteArrayView profile)
{
    const QSize size = thumbnailSize(image.size(), maximumPixelSize);
    const QColorSpace space = image.colorSpace();
    image = usual(std::move(image));
    QImage small = image.isNull() ? QImage() : upright(reduced(image, size), transformationOf(orientation));
    if (!profile.isEmpty()) {
        ColorProfile::convertToSrgb(small, profile);
    } else if (space.isValid() && space != QColorSpace(QColorSpace::SRgb)) {
        small = std::move(small).convertToFormat(QImage::Format_RGB888);
        small.setColorSpace(space);
        small.convertToColorSpace(QColorSpace::SRgb);
    }
    const QByteArray jpeg = JpegWriter::encoded(small);
    if (jpeg.isEmpty())
        return Error{ErrorCode::TooLarge, QStringLiteral("the picture does not fit into memory"), -1, {}};
    return jpeg;
}

} // namespace platform
