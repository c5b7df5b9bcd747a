#include "Platform/Media/ReaderThumbnail_p.h"

#include "Platform/Media/BitmapThumbnail_p.h"
#include "Platform/Media/ImageMetadata_p.h"
#include "Platform/Media/ImageReading_p.h"
#include "Platform/Media/JpegThumbnail_p.h"
#include "Platform/Media/LargePictureTurn_p.h"
#include "Platform/Media/PngFile_p.h"

#include <QtEndian>

#include <algorithm>

namespace platform {
namespace {

/// Bytes of pixels, which is also what Qt's decoders are allowed.
constexpr int maximumMegabytes = 512;

// Qt's own limit of 128 MB refuses photos of 32 megapixels. It is a plain variable of the whole process: to change it
// while decoders run on other threads would be a race, so it is done when the library is loaded. A host that sets a
// limit of its own keeps that.
const bool isLimitRaised = [] {
    constexpr int usualMegabytes = 128;
    if (QImageReader::allocationLimit() == usualMegabytes)
        QImageReader::setAllocationLimit(maximumMegabytes);
    return true;
}();

QByteArray formatNameOf(ImageFormat format)
{
    switch (format) {
    case ImageFormat::Png:
        return "png";
    case ImageFormat::Gif:
        return "gif";
    case ImageFormat::Tiff:
        return "tiff";
    case ImageFormat::WebP:
        return "webp";
    case ImageFormat::Bmp:
        return "bmp";
    case ImageFormat::Icon:
        return "ico";
    case ImageFormat::MacIcon:
        return "png"; // the only kind that is read
    case ImageFormat::PortableAnyMap:
        return "ppm";
    case ImageFormat::Targa:
        return "tga";
    case ImageFormat::Svg:
        return "svg";
    case ImageFormat::Jpeg2000:
        return "jp2";
    case ImageFormat::JpegXl:
        return "jxl";
    case ImageFormat::Photoshop:
        return "psd";
    case ImageFormat::Unknown:
    case ImageFormat::Jpeg:
    case ImageFormat::Heif:
    case ImageFormat::CameraRaw:
        break;
    }
    return {};
}

// Plug-ins are looked up on every call, which takes longer than decoding a small picture.
bool isSupported(const QByteArray &formatName)
{
    static const QList<QByteArray> formats = QImageReader::supportedImageFormats();
    return formats.contains(formatName);
}

/// A file as it is handed to the decoder, and what was taken from it.
struct Prepared {
    QByteArray bytes;
    QByteArray profile;
    int orientation = 1;
};

// Decoders would look into the profile themselves, and write to the log when it is damaged or of a kind that they do
// not know. It is renamed to something that they pass over.
void hideWebpProfile(QByteArray &bytes, const ByteRange &profile)
{
    constexpr qint64 headSize = 8;
    bytes[profile.offset - headSize] = 'i'; // for ICCP; what is not known is ignored
}

void hideTiffProfiles(QByteArray &bytes)
{
    constexpr quint16 imageResources = 34377, byteType = 1; // whose content only their maker knows
    constexpr int mostEntries = 1024;
    for (int i = 0; i < mostEntries; ++i) {
        const ImageInput input{QByteArrayView(bytes)};
        const auto structure = TiffStructure::at(input);
        if (!structure)
            return;
        const TiffStructure::Directory directory = structure->directory(structure->firstDirectory());
        const TiffEntry *const entry = TiffStructure::entry(directory, ProfileTag);
        if (!entry)
            return;
        structure->writeWord(bytes, entry->offset, imageResources);
        structure->writeWord(bytes, entry->offset + 2, byteType);
        // Entries are to be in the order of their tags.
        const qint64 size = structure->entrySize();
        for (qint64 place = entry->offset; place - size >= directory.firstEntry; place -= size) {
            if (structure->word(place - size) <= imageResources)
                break;
            std::swap_ranges(bytes.begin() + place, bytes.begin() + place + size, bytes.begin() + place - size);
        }
    }
}

// The smallest of the icons in the PNG format that is large enough, or else the largest. An ICNS file is a list of
// icons, each with its type and its length in front of it. Qt's decoder, which knows older kinds too, complains in the
// log about what is damaged.
QByteArray pngOfMacIcon(const QByteArray &bytes, int minimumPixelSize)
{
    constexpr qsizetype headSize = 8, widthPlace = 16;
    constexpr QByteArrayView signature("\x89PNG\r\n\x1A\n");
    QByteArray best;
    quint32 bestWidth = 0;
    for (qsizetype place = headSize; place + headSize <= bytes.size();) {
        const qsizetype length = qsizetype(qFromBigEndian<quint32>(bytes.constData() + place + 4));
        if (length < headSize || length > bytes.size() - place)
            break;
        const QByteArray icon = bytes.mid(place + headSize, length - headSize);
        if (icon.startsWith(signature) && icon.size() >= widthPlace + 4) {
            const auto width = qFromBigEndian<quint32>(icon.constData() + widthPlace);
            const bool isBestEnough = bestWidth >= quint32(minimumPixelSize);
            if (isBestEnough ? width >= quint32(minimumPixelSize) && width < bestWidth : width > bestWidth) {
                best = icon;
                bestWidth = width;
            }
        }
        place += length;
    }
    return best;
}

// Qt's decoder takes no pictures but those in plain true colour, and asks for the footer that came with version 2.
// About all others it complains in the log.
Result<Prepared> preparedTarga(QByteArray bytes)
{
    constexpr char trueColor = 2;
    constexpr QByteArrayView depths = "\x10\x18\x20";
    constexpr QByteArrayView footer("\0\0\0\0\0\0\0\0TRUEVISION-XFILE.\0", 26);
    if (bytes.size() < 18 || bytes[2] != trueColor || !depths.contains(bytes[16]))
        return noDecoder(ImageFormat::Targa);
    return Prepared{bytes + footer, {}, 1};
}

// A palette of more colours than pixels can name makes Qt's decoder complain about each.
void limitPaletteOfBmp(QByteArray &bytes)
{
    constexpr qsizetype depthPlace = 28, colorsPlace = 46, headerSizePlace = 14;
    constexpr quint32 sizeOfHeaderWithColors = 40;
    if (bytes.size() < colorsPlace + 4
        || qFromLittleEndian<quint32>(bytes.constData() + headerSizePlace) < sizeOfHeaderWithColors)
        return;
    const int depth = qFromLittleEndian<quint16>(bytes.constData() + depthPlace);
    const auto colors = qFromLittleEndian<quint32>(bytes.constData() + colorsPlace);
    if (depth <= 8 && colors > 1u << depth)
        qToLittleEndian<quint32>(1u << depth, bytes.data() + colorsPlace);
}

Result<Prepared> prepared(QByteArray bytes, ImageFormat format)
{
    if (format == ImageFormat::Bmp)
        limitPaletteOfBmp(bytes);
    if (format == ImageFormat::Targa)
        return preparedTarga(std::move(bytes));
    if (format == ImageFormat::Png) {
        const Result<PngFile> png = PngFile::read(bytes);
        if (!png)
            return png.error();
        if (pixelsOf(png.value().size) > maximumDecodedPixels)
            return tooManyPixels(png.value().size);
        return Prepared{png.value().picture, png.value().profile, png.value().orientation};
    }
    Prepared result;
    if (format == ImageFormat::WebP || format == ImageFormat::Tiff) {
        const ImageInput input{QByteArrayView(bytes)};
        const ImageMetadata metadata = format == ImageFormat::WebP ? webpMetadata(input) : tiffMetadata(input);
        result.orientation = metadata.orientation;
        for (const ByteRange &part : metadata.profile)
            result.profile += input.read(part.offset, part.length);
        if (format == ImageFormat::Tiff)
            hideTiffProfiles(bytes);
        else if (!metadata.profile.empty())
            hideWebpProfile(bytes, metadata.profile[0]);
    }
    result.bytes = std::move(bytes);
    return result;
}

// A few bytes may promise pixels up to the limit, most of which were never drawn, and each of which takes its time. The
// densest packing of a picture that is worth a thumbnail is that of PNG, which has at most 8,256 pixels in a byte.
bool isOutOfProportion(const QSize &size, qint64 fileSize)
{
    constexpr qint64 harmlessPixels = 16 * 1024 * 1024, maximumPixelsPerByte = 20'000;
    return pixelsOf(size) > harmlessPixels && pixelsOf(size) / maximumPixelsPerByte > fileSize;
}

// Sides beyond the limit that JPEG has, too, would take long to reduce.
bool isPermitted(const QSize &size, QImage::Format format)
{
    constexpr int maximumSide = 65'535;
    return std::max(size.width(), size.height()) <= maximumSide
        && isWithinLimits(size, format, 0, maximumDecodedPixels);
}

Result<QImage> decoded(QByteArray bytes, ImageFormat format, int maximumPixelSize)
{
    QuietBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, formatNameOf(format));
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(false);
    const QSize size = decodedSize(reader, bytes);
    if (size.isValid() && !size.isEmpty() && !isPermitted(size, reader.imageFormat()))
        return tooManyPixels(size);
    if (format != ImageFormat::Svg && isOutOfProportion(size, bytes.size()))
        return Error{ErrorCode::Malformed, QStringLiteral("the file is too small for so many pixels"), -1, {}};
    if (format == ImageFormat::Svg && size.isValid())
        reader.setScaledSize(thumbnailSize(size, maximumPixelSize));
    const LargePictureTurn turn(4 * pixelsOf(size));
    const QImage image = reader.read();
    if (image.isNull())
        return Error{ErrorCode::Malformed, QStringLiteral("the %1 data cannot be decoded").arg(nameOf(format)), -1, {}};
    return image;
}

} // namespace

Error tooManyPixels(const QSize &size)
{
    const QString reason = QStringLiteral("the picture has too many pixels (%1 x %2)");
    return {ErrorCode::TooLarge, reason.arg(size.width()).arg(size.height()), -1, {}};
}

Error noDecoder(ImageFormat format)
{
    return {ErrorCode::UnknownFormat,
            QStringLiteral("no decoder for %1 pictures is installed").arg(nameOf(format)),
            -1,
            {}};
}

Result<QByteArray> readerThumbnail(const ImageInput &input, ImageFormat format, int maximumPixelSize)
{
    const QByteArray formatName = formatNameOf(format);
    if (formatName.isEmpty() || !isSupported(formatName))
        return noDecoder(format);
    if (input.size() > maximumReadFileSize)
        return Error{ErrorCode::TooLarge, QStringLiteral("the file is too large"), -1, {}};
    const LargePictureTurn turn(input.size());
    QByteArray bytes = input.read(0, input.size());
    if (format == ImageFormat::MacIcon) {
        bytes = pngOfMacIcon(bytes, maximumPixelSize);
        if (bytes.isEmpty())
            return noDecoder(format);
        format = ImageFormat::Png;
    }
    Result<Prepared> file = prepared(std::move(bytes), format);
    if (!file)
        return file.error();
    Prepared content = std::move(file).value();
    Result<QImage> image = decoded(std::move(content.bytes), format, maximumPixelSize);
    if (!image)
        return image.error();
    return bitmapThumbnail(std::move(image).value(), maximumPixelSize, content.orientation, content.profile);
}

} // namespace platform
