#include "Platform/Media/RawThumbnail_p.h"

#include "Platform/Media/BitmapThumbnail_p.h"
#include "Platform/Media/ImageFormat_p.h"
#include "Platform/Media/JpegThumbnail_p.h"
#include "Platform/Media/LargePictureTurn_p.h"
#include "Platform/Media/ReaderThumbnail_p.h"

#include <memory>

#include <libraw/libraw.h>

namespace platform {
namespace {

Error failure(int code)
{
    if (code == LIBRAW_FILE_UNSUPPORTED)
        return {ErrorCode::UnknownFormat, QStringLiteral("the raw format of this camera is not known"), -1, {}};
    if (code == LIBRAW_NO_THUMBNAIL || code == LIBRAW_UNSUPPORTED_THUMBNAIL)
        return {ErrorCode::Malformed, QStringLiteral("the camera raw file holds no preview"), -1, {}};
    return {ErrorCode::Malformed,
            QStringLiteral("the preview of the camera raw file cannot be read: %1")
                .arg(QLatin1String(libraw_strerror(code))),
            -1,
            {}};
}

// By the ways to turn a picture that cameras know; anything else counts as upright.
int orientationOf(int flip)
{
    switch (flip) {
    case 3:
        return 3;
    case 5:
        return 8;
    case 6:
        return 6;
    default:
        return 1;
    }
}

QImage bitmapOf(const libraw_thumbnail_t &preview)
{
    const qint64 size = qint64(preview.twidth) * preview.theight * preview.tcolors;
    if (preview.tcolors != 3 || size <= 0 || size > qint64(preview.tlength))
        return {};
    return QImage(reinterpret_cast<const uchar *>(preview.thumb), preview.twidth, preview.theight, preview.twidth * 3,
                  QImage::Format_RGB888);
}

Result<QByteArray> previewOf(QByteArray bytes, int maximumPixelSize)
{
    const auto raw = std::make_unique<LibRaw>(LIBRAW_OPIONS_NO_DATAERR_CALLBACK); // too large for a stack
    int code = raw->open_buffer(bytes.data(), size_t(bytes.size()));
    if (code == LIBRAW_SUCCESS)
        code = raw->unpack_thumb();
    if (code != LIBRAW_SUCCESS)
        return failure(code);
    const libraw_thumbnail_t &preview = raw->imgdata.thumbnail;
    const int orientation = orientationOf(raw->imgdata.sizes.flip);
    if (preview.tformat == LIBRAW_THUMBNAIL_JPEG)
        return jpegThumbnail(ImageInput(QByteArrayView(preview.thumb, preview.tlength)), maximumPixelSize, orientation);
    if (preview.tformat == LIBRAW_THUMBNAIL_BITMAP) {
        if (const QImage bitmap = bitmapOf(preview); !bitmap.isNull())
            return bitmapThumbnail(bitmap, maximumPixelSize, orientation, {});
    }
    return failure(LIBRAW_UNSUPPORTED_THUMBNAIL);
}

} // namespace

Result<QByteArray> rawThumbnail(const ImageInput &input, int maximumPixelSize)
{
    if (input.size() > maximumReadFileSize)
        return Error{ErrorCode::TooLarge, QStringLiteral("the file is too large"), -1, {}};
    try {
        const LargePictureTurn turn(input.size());
        return previewOf(input.read(0, input.size()), maximumPixelSize);
    } catch (...) { // the library throws numbers and exceptions of its own
        return failure(LIBRAW_DATA_ERROR);
    }
}

} // namespace platform
