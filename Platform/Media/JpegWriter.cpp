#include "Platform/Media/JpegWriter.h"

#include "Platform/Media/JpegPlanes_p.h"

#include <QPainter>

#include <algorithm>
#include <memory>

#include <turbojpeg.h>

namespace platform {
namespace {

struct DestroyHandle {
    void operator()(void *handle) const { tjDestroy(handle); }
};

// One for each thread, since making one costs as much as a small picture.
tjhandle compressor()
{
    thread_local const std::unique_ptr<void, DestroyHandle> handle(tjInitCompress());
    return handle.get();
}

struct FreeBytes {
    void operator()(unsigned char *bytes) const { tjFree(bytes); }
};

// Has `compress(bytes, size)` write into memory that the library grows.
template <class Compress>
QByteArray compressed(const Compress &compress)
{
    unsigned char *bytes = nullptr;
    unsigned long size = 0;
    const bool isDone = compressor() && compress(&bytes, &size) == 0;
    const std::unique_ptr<unsigned char, FreeBytes> owner(bytes);
    return isDone ? QByteArray(reinterpret_cast<const char *>(bytes), qsizetype(size)) : QByteArray();
}

// The library reads the luma up to where that of whole samples of colour ends.
Plane evenSided(const Plane &plane)
{
    Plane result(plane.width + plane.width % 2, plane.height + plane.height % 2);
    for (int y = 0; y < result.height; ++y) {
        const uchar *const from = plane.row(std::min(y, plane.height - 1));
        std::copy_n(from, plane.width, result.row(y));
        result.row(y)[result.width - 1] = from[plane.width - 1];
    }
    return result;
}

// On white, three bytes or one byte for each pixel.
QImage flattened(const QImage &image)
{
    if (image.format() == QImage::Format_RGB888 || image.format() == QImage::Format_Grayscale8)
        return image;
    if (!image.hasAlphaChannel())
        return image.convertToFormat(image.isGrayscale() ? QImage::Format_Grayscale8 : QImage::Format_RGB888);
    QImage result(image.size(), QImage::Format_RGB32);
    if (result.isNull())
        return {};
    result.fill(Qt::white);
    QPainter(&result).drawImage(QRect(QPoint(), image.size()), image);
    return result.convertToFormat(QImage::Format_RGB888);
}

} // namespace

QByteArray JpegWriter::encoded(const QImage &image, int quality)
{
    const QImage picture = flattened(image);
    if (picture.isNull())
        return {};
    const bool isGrey = picture.format() == QImage::Format_Grayscale8;
    return compressed([&](unsigned char **bytes, unsigned long *size) {
        return tjCompress2(compressor(), picture.constBits(), picture.width(), int(picture.bytesPerLine()),
                           picture.height(), isGrey ? TJPF_GRAY : TJPF_RGB, bytes, size,
                           isGrey ? TJSAMP_GRAY : TJSAMP_420, quality, TJFLAG_ACCURATEDCT);
    });
}

QByteArray JpegWriter::encoded(const JpegPlanes &planes)
{
    const bool isGrey = planes.blue.isEmpty();
    const int width = planes.luma.width, height = planes.luma.height;
    const Plane luma = isGrey ? planes.luma : evenSided(planes.luma);
    const unsigned char *bytesOfPlanes[] = {luma.bytes.data(), planes.blue.bytes.data(), planes.red.bytes.data()};
    const int strides[] = {luma.width, planes.blue.width, planes.red.width};
    return compressed([&](unsigned char **bytes, unsigned long *size) {
        return tjCompressFromYUVPlanes(compressor(), bytesOfPlanes, width, strides, height,
                                       isGrey ? TJSAMP_GRAY : TJSAMP_420, bytes, size, defaultQuality,
                                       TJFLAG_ACCURATEDCT);
    });
}

} // namespace platform
