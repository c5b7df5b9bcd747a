#include "Platform/Media/StoredThumbnail_p.h"

#include "Platform/Media/JpegThumbnail_p.h"

#include <memory>

#include <turbojpeg.h>

namespace platform {
namespace {

/// Thumbnails of more bytes than this are none.
constexpr qint64 maximumThumbnailSize = 32 * 1024 * 1024;

struct DestroyHandle {
    void operator()(void *handle) const { tjDestroy(handle); }
};

// One for each thread, since making one costs as much as a small picture.
tjhandle transformer()
{
    thread_local const std::unique_ptr<void, DestroyHandle> handle(tjInitTransform());
    return handle.get();
}

const unsigned char *bytesOf(const QByteArray &jpeg)
{
    return reinterpret_cast<const unsigned char *>(jpeg.constData());
}

struct Header {
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colors = 0;
};

// Nothing for what is no JPEG, or holds nothing but tables.
std::optional<Header> headerOf(const QByteArray &jpeg)
{
    Header header;
    if (!transformer()
        || tjDecompressHeader3(transformer(), bytesOf(jpeg), ulong(jpeg.size()), &header.width, &header.height,
                               &header.subsampling, &header.colors)
            != 0
        || header.width <= 0 || header.height <= 0)
        return std::nullopt;
    return header;
}

/// Moves the blocks of a JPEG about and codes them anew.
struct Turned {
    QByteArray jpeg; ///< Empty when it cannot be done.
    bool isDamaged = false;
};

Turned turned(const QByteArray &jpeg, int orientation)
{
    // By EXIF's values of the orientation.
    constexpr int operations[] = {TJXOP_NONE,      TJXOP_HFLIP, TJXOP_ROT180,     TJXOP_VFLIP,
                                  TJXOP_TRANSPOSE, TJXOP_ROT90, TJXOP_TRANSVERSE, TJXOP_ROT270};
    tjtransform transform{};
    transform.op = operations[orientation - 1];
    transform.options = TJXOPT_COPYNONE | TJXOPT_PERFECT;
    unsigned char *bytes = nullptr;
    unsigned long size = 0;
    const int failed = tjTransform(transformer(), bytesOf(jpeg), ulong(jpeg.size()), 1, &bytes, &size, &transform,
                                   TJFLAG_LIMITSCANS); // each costs the time of a whole decoding
    Turned result;
    // What is damaged is coded all the same, with a warning.
    result.isDamaged = failed != 0 && tjGetErrorCode(transformer()) == TJERR_WARNING;
    if (failed == 0)
        result.jpeg = QByteArray(reinterpret_cast<const char *>(bytes), qsizetype(size));
    tjFree(bytes);
    return result;
}

// The photo's profile, put into the thumbnail, where it belongs if the thumbnail had been stored as a file.
QByteArray withProfile(QByteArray jpeg, const ImageInput &input, const std::vector<ByteRange> &profile)
{
    QByteArray segments;
    for (const ByteRange &part : profile) {
        const QByteArray content = input.read(part.offset, part.length);
        const qsizetype length = content.size() + 2;
        segments += QByteArrayView("\xFF\xE2");
        segments += char(length >> 8);
        segments += char(length & 0xFF);
        segments += content;
    }
    constexpr qsizetype startOfImage = 2;
    return jpeg.insert(startOfImage, segments);
}

std::optional<QByteArray> smallPicture(const ImageInput &input, const ByteRange &place, const ImageMetadata &photo,
                                       int maximumPixelSize)
{
    if (place.isEmpty() || place.length > maximumThumbnailSize)
        return std::nullopt;
    QByteArray jpeg = input.read(place.offset, place.length);
    const auto header = headerOf(jpeg);
    if (!header)
        return std::nullopt;
    const ImageMetadata own = jpegMetadata(ImageInput(jpeg));
    const int orientation = own.orientation != 1 ? own.orientation : photo.orientation;
    const bool isSmall = std::max(header->width, header->height) <= maximumPixelSize;
    const bool hasInks = header->colors == TJCS_CMYK || header->colors == TJCS_YCCK;
    if (isSmall && !hasInks && own.profile.empty() && photo.profile.empty()) {
        Turned result = turned(jpeg, orientation);
        if (!result.jpeg.isEmpty())
            return result.jpeg;
        if (result.isDamaged)
            return std::nullopt;
    }
    if (own.profile.empty())
        jpeg = withProfile(jpeg, input, photo.profile);
    const Result<QByteArray> decoded = jpegThumbnail(ImageInput(jpeg), maximumPixelSize, orientation);
    return decoded ? std::optional(decoded.value()) : std::nullopt;
}

} // namespace

std::optional<QByteArray> storedThumbnail(const ImageInput &input, const ImageMetadata &metadata, int maximumPixelSize)
{
    if (auto thumbnail = smallPicture(input, metadata.thumbnail, metadata, maximumPixelSize))
        return thumbnail;
    return smallPicture(input, metadata.preview, metadata, maximumPixelSize);
}

} // namespace platform
