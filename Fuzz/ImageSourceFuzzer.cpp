#include "Platform/Media/ImageFormat_p.h"
#include "Platform/Media/ImageMetadata_p.h"
#include "Platform/Media/ImageSource.h"

#include <QImage>

#include <cstdio>
#include <cstdlib>

using namespace platform;

namespace {

constexpr int maximumPixelSize = 48;

void checkPlace(const ByteRange &place, qint64 size)
{
    if (!place.isEmpty() && (place.offset < 0 || place.offset > size || place.length > size - place.offset))
        qFatal("a place outside of the file");
}

void check(const ImageMetadata &metadata, qint64 size)
{
    if (metadata.orientation < 1 || metadata.orientation > 8)
        qFatal("an orientation that does not exist");
    checkPlace(metadata.thumbnail, size);
    checkPlace(metadata.preview, size);
    for (const ByteRange &part : metadata.profile)
        checkPlace(part, size);
}

void failOnWarning(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtWarningMsg || type == QtCriticalMsg || type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        std::abort();
    }
}

} // namespace

// Reads the bytes as each of the structures that are parsed here, whatever they begin with, then makes a thumbnail of
// them. Nothing may crash, write to the log, or give anything but a JPEG of the right size or an error.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, std::size_t size)
{
    static const QtMessageHandler previous = qInstallMessageHandler(failOnWarning);
    Q_UNUSED(previous);
    const QByteArray file = QByteArray::fromRawData(reinterpret_cast<const char *>(bytes), qsizetype(size));
    const ImageInput input{QByteArrayView(file)};
    check(jpegMetadata(input), input.size());
    check(webpMetadata(input), input.size());
    check(tiffMetadata(input), input.size());
    exifOrientation(input);
    isRawTiff(input);
    const Result<ImageSource> source = ImageSource::fromBytes(file);
    if (!source)
        return 0;
    const Result<QByteArray> thumbnail = source.value().jpegThumbnail(maximumPixelSize);
    if (!thumbnail) {
        if (thumbnail.error().reason.isEmpty() || thumbnail.error().byteOffset > qint64(size))
            qFatal("an error without a reason or beyond the end");
        return 0;
    }
    const QImage picture = QImage::fromData(thumbnail.value(), "jpeg");
    if (picture.isNull() || std::max(picture.width(), picture.height()) > maximumPixelSize)
        qFatal("the thumbnail is no picture, or too large");
    return 0;
}
