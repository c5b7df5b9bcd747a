#include "Platform/Media/HeifThumbnail_p.h"

#include "Platform/Media/BitmapThumbnail_p.h"
#include "Platform/Media/HeifPlugin/HeifDecoder_p.h"
#include "Platform/Media/ImageFormat_p.h"
#include "Platform/Media/LargePictureTurn_p.h"
#include "Platform/Media/ReaderThumbnail_p.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>

#ifdef Q_OS_UNIX
#include <dlfcn.h>
#endif

namespace platform {
namespace {

QString folderOfThisLibrary()
{
#ifdef Q_OS_UNIX
    Dl_info info;
    if (::dladdr(reinterpret_cast<const void *>(&folderOfThisLibrary), &info) != 0 && info.dli_fname)
        return QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath();
#endif
    return QCoreApplication::applicationDirPath();
}

const ZRHeifDecoder *loadedDecoder()
{
    // Stays loaded, as decoders may be at work until the process ends.
    QLibrary plugin(folderOfThisLibrary() + QStringLiteral("/zrcommon/ZRHeifPlugin"));
    const auto function = reinterpret_cast<ZRHeifDecoderFunction>(plugin.resolve(zrHeifDecoderFunction));
    const ZRHeifDecoder *const decoder = function ? function() : nullptr;
    return decoder && decoder->version == zrHeifDecoderVersion ? decoder : nullptr;
}

struct Picture : ZRHeifPicture {
    explicit Picture(const ZRHeifDecoder *decoder)
        : ZRHeifPicture()
        , m_decoder(decoder)
    { }
    ~Picture() { m_decoder->release(this); }
    Q_DISABLE_COPY_MOVE(Picture)

private:
    const ZRHeifDecoder *m_decoder;
};

Error failure(ZRHeifOutcome outcome, const Picture &picture)
{
    const QString reason = QString::fromUtf8(picture.reason);
    switch (outcome) {
    case ZRHeifTooLarge:
        return tooManyPixels({picture.width, picture.height});
    case ZRHeifUnsupported:
        return {ErrorCode::UnknownFormat,
                QStringLiteral("no decoder for this HEIF picture is installed: %1").arg(reason),
                -1,
                {}};
    default:
        return {ErrorCode::Malformed, QStringLiteral("the HEIF data cannot be decoded: %1").arg(reason), -1, {}};
    }
}

} // namespace

Result<QByteArray> heifThumbnail(const ImageInput &input, int maximumPixelSize)
{
    static const ZRHeifDecoder *const decoder = loadedDecoder();
    if (!decoder)
        return noDecoder(ImageFormat::Heif);
    if (input.size() > maximumReadFileSize)
        return Error{ErrorCode::TooLarge, QStringLiteral("the file is too large"), -1, {}};
    constexpr qint64 usualCompression = 32; // what a picture takes is not known before it is decoded
    const LargePictureTurn turn(usualCompression * input.size());
    const QByteArray bytes = input.read(0, input.size());
    Picture picture(decoder);
    picture.minimumPixelSize = maximumPixelSize;
    picture.maximumPixels = maximumDecodedPixels;
    const ZRHeifOutcome outcome =
        decoder->decode(reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size()), &picture);
    if (outcome != ZRHeifDecoded)
        return failure(outcome, picture);
    const QImage image(picture.pixels, picture.width, picture.height, qsizetype(picture.bytesPerLine),
                       picture.hasAlpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    return bitmapThumbnail(image, maximumPixelSize, 1, QByteArrayView(picture.profile, qsizetype(picture.profileSize)));
}

} // namespace platform
