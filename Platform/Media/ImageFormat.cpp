#include "Platform/Media/ImageFormat_p.h"

#include <QtEndian>

#include <algorithm>

namespace platform {
namespace {

/// Bytes that stand at a place in every file of a format.
struct Signature {
    ImageFormat format;
    qsizetype offset;
    QByteArrayView bytes;
};

template <size_t N>
constexpr QByteArrayView literal(const char (&bytes)[N])
{
    return QByteArrayView(bytes, qsizetype(N) - 1); // unlike its constructors, goes on behind a zero
}

const Signature signatures[] = {
    {ImageFormat::Jpeg, 0, literal("\xFF\xD8\xFF")},
    {ImageFormat::Png, 0, literal("\x89PNG\r\n\x1A\n")},
    {ImageFormat::Gif, 0, literal("GIF87a")},
    {ImageFormat::Gif, 0, literal("GIF89a")},
    {ImageFormat::CameraRaw, 8, literal("CR\2\0")}, // CR2, a TIFF file
    {ImageFormat::CameraRaw, 6, literal("HEAPCCDR")}, // CRW
    {ImageFormat::CameraRaw, 8, literal("IIII")}, // IIQ, likewise
    {ImageFormat::CameraRaw, 8, literal("MMMM")},
    {ImageFormat::CameraRaw, 0, literal("IIU\0")}, // RW2
    {ImageFormat::CameraRaw, 0, literal("IIRO")}, // ORF
    {ImageFormat::CameraRaw, 0, literal("IIRS")},
    {ImageFormat::CameraRaw, 0, literal("MMOR")},
    {ImageFormat::CameraRaw, 0, literal("FUJIFILMCCD-RAW")}, // RAF
    {ImageFormat::CameraRaw, 0, literal("FOVb")}, // X3F
    {ImageFormat::CameraRaw, 0, literal("\0MRM")}, // MRW
    {ImageFormat::Tiff, 0, literal("II*\0")},
    {ImageFormat::Tiff, 0, literal("MM\0*")},
    {ImageFormat::Tiff, 0, literal("II+\0\x08\0\0\0")}, // with offsets of 8 bytes
    {ImageFormat::Tiff, 0, literal("MM\0+\0\x08\0\0")},
    {ImageFormat::MacIcon, 0, literal("icns")},
    {ImageFormat::Jpeg2000, 0, literal("\0\0\0\x0CjP  \r\n\x87\n")},
    {ImageFormat::Jpeg2000, 0, literal("\xFF\x4F\xFF\x51")}, // without a container
    {ImageFormat::JpegXl, 0, literal("\0\0\0\x0CJXL \r\n\x87\n")},
    {ImageFormat::JpegXl, 0, literal("\xFF\x0A")},
    {ImageFormat::Photoshop, 0, literal("8BPS\0\1")},
    {ImageFormat::Photoshop, 0, literal("8BPS\0\2")},
};

bool stands(QByteArrayView begin, qsizetype offset, QByteArrayView bytes)
{
    return begin.size() >= offset + bytes.size() && begin.sliced(offset, bytes.size()) == bytes;
}

bool isOneOf(QByteArrayView bytes, std::initializer_list<QByteArrayView> values)
{
    return std::find(values.begin(), values.end(), bytes) != values.end();
}

quint16 littleWord(QByteArrayView bytes, qsizetype offset)
{
    return qFromLittleEndian<quint16>(bytes.data() + offset);
}

/// The brands of ISO base media files (ISO/IEC 14496-12, 4.3): the major one, then those that it is compatible with.
ImageFormat formatOfBrands(QByteArrayView begin)
{
    if (!stands(begin, 4, "ftyp"))
        return ImageFormat::Unknown;
    const qsizetype boxSize = qsizetype(std::min<quint32>(qFromBigEndian<quint32>(begin.data()), 32));
    const qsizetype end = std::min(begin.size(), boxSize);
    for (qsizetype place = 8; place + 4 <= end; place += place == 8 ? 8 : 4) { // between them stands a version
        const QByteArrayView brand = begin.sliced(place, 4);
        if (brand == "crx ")
            return ImageFormat::CameraRaw;
        if (isOneOf(brand, {"heic", "heix", "heim", "heis", "hevc", "hevx", "mif1", "mif2", "msf1", "avif", "avis"}))
            return ImageFormat::Heif;
    }
    return ImageFormat::Unknown;
}

// "BM" may begin a text: the size of the header behind the file header tells.
bool isBmp(QByteArrayView begin)
{
    if (begin.size() < 26 || !begin.startsWith("BM"))
        return false;
    const auto headerSize = qFromLittleEndian<quint32>(begin.data() + 14);
    return headerSize == 12 || headerSize == 16 || (headerSize >= 40 && headerSize <= 124);
}

// Reserved word, kind, number of pictures, then the first entry, whose reserved byte is 0 as well.
bool isIcon(QByteArrayView begin, qint64 fileSize)
{
    constexpr qint64 headerSize = 6, entrySize = 16;
    if (begin.size() < headerSize + entrySize || littleWord(begin, 0) != 0)
        return false;
    const int kind = littleWord(begin, 2), count = littleWord(begin, 4);
    const auto offset = qFromLittleEndian<quint32>(begin.data() + 18);
    return (kind == 1 || kind == 2) && count > 0 && headerSize + count * entrySize <= fileSize
        && (begin[9] == 0 || uchar(begin[9]) == 255) && offset >= headerSize + count * entrySize && offset < fileSize;
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool isPortableAnyMap(QByteArrayView begin)
{
    if (begin.size() < 7 || begin[0] != 'P' || begin[1] < '1' || begin[1] > '6'
        || !(isSpace(begin[2]) || begin[2] == '#'))
        return false;
    // A width follows, behind white space and comments.
    qsizetype place = 2;
    for (bool isComment = false; place < begin.size(); ++place) {
        if (begin[place] == '#')
            isComment = true;
        else if (begin[place] == '\n')
            isComment = false;
        else if (!isComment && !isSpace(begin[place]))
            break;
    }
    return place < begin.size() && begin[place] >= '0' && begin[place] <= '9';
}

/// The header as Truevision describes it (TGA File Format 2.0).
bool isTarga(QByteArrayView begin, qint64 fileSize)
{
    constexpr qint64 headerSize = 18;
    if (begin.size() < headerSize)
        return false;
    const int mapKind = uchar(begin[1]), kind = uchar(begin[2]) & ~8, depth = uchar(begin[16]);
    const bool isCompressed = uchar(begin[2]) & 8;
    const int mapLength = littleWord(begin, 5), mapDepth = uchar(begin[7]);
    const qint64 pixels = qint64(littleWord(begin, 12)) * littleWord(begin, 14);
    if (kind < 1 || kind > 3 || pixels == 0 || (uchar(begin[17]) & 0xC0) != 0)
        return false;
    if (kind == 1       ? mapKind != 1 || depth != 8
            : kind == 2 ? depth != 15 && depth != 16 && depth != 24 && depth != 32
                        : depth != 8 && depth != 16)
        return false;
    if (mapKind == 0
            ? littleWord(begin, 3) != 0 || mapLength != 0 || mapDepth != 0
            : mapKind != 1 || mapLength == 0 || (mapDepth != 15 && mapDepth != 16 && mapDepth != 24 && mapDepth != 32))
        return false;
    // A packet of a compressed picture holds 128 pixels at most.
    const qint64 pixelSize = (depth + 7) / 8;
    const qint64 data = isCompressed ? (pixels + 127) / 128 * (pixelSize + 1) : pixels * pixelSize;
    return headerSize + uchar(begin[0]) + mapLength * ((mapDepth + 7) / 8) + data <= fileSize;
}

// The first element decides; a declaration, a document type and comments may come before it.
bool isSvg(QByteArrayView begin)
{
    if (begin.startsWith("\xEF\xBB\xBF"))
        begin = begin.sliced(3);
    if (!begin.trimmed().startsWith('<'))
        return false;
    constexpr QByteArrayView comment = "<!--", endOfComment = "-->", element = "<svg";
    qsizetype place = begin.indexOf('<');
    while (place >= 0 && place + 1 < begin.size()) {
        const QByteArrayView rest = begin.sliced(place);
        if (rest.startsWith(comment))
            place = begin.indexOf(endOfComment, place);
        else if (rest[1] != '?' && rest[1] != '!')
            return rest.startsWith(element) && rest.size() > element.size()
                && (isSpace(rest[element.size()]) || rest[element.size()] == '>' || rest[element.size()] == '/');
        if (place >= 0)
            place = begin.indexOf('<', place + 1);
    }
    return false;
}

} // namespace

ImageFormat imageFormatOf(QByteArrayView begin, qint64 fileSize)
{
    for (const Signature &signature : signatures) {
        const bool isInTiff = signature.format == ImageFormat::CameraRaw && signature.offset == 8;
        if (stands(begin, signature.offset, signature.bytes)
            && (!isInTiff || stands(begin, 0, literal("II*\0")) || stands(begin, 0, literal("MM\0*"))))
            return signature.format;
    }
    if (stands(begin, 0, "RIFF") && stands(begin, 8, "WEBP"))
        return ImageFormat::WebP;
    if (const ImageFormat format = formatOfBrands(begin); format != ImageFormat::Unknown)
        return format;
    if (isBmp(begin))
        return ImageFormat::Bmp;
    if (isIcon(begin, fileSize))
        return ImageFormat::Icon;
    if (isPortableAnyMap(begin))
        return ImageFormat::PortableAnyMap;
    if (isTarga(begin, fileSize))
        return ImageFormat::Targa;
    return isSvg(begin) ? ImageFormat::Svg : ImageFormat::Unknown;
}

QString nameOf(ImageFormat format)
{
    switch (format) {
    case ImageFormat::Unknown:
        break;
    case ImageFormat::Jpeg:
        return QStringLiteral("JPEG");
    case ImageFormat::Png:
        return QStringLiteral("PNG");
    case ImageFormat::Gif:
        return QStringLiteral("GIF");
    case ImageFormat::Tiff:
        return QStringLiteral("TIFF");
    case ImageFormat::WebP:
        return QStringLiteral("WebP");
    case ImageFormat::Bmp:
        return QStringLiteral("BMP");
    case ImageFormat::Icon:
        return QStringLiteral("icon");
    case ImageFormat::MacIcon:
        return QStringLiteral("ICNS");
    case ImageFormat::Heif:
        return QStringLiteral("HEIF");
    case ImageFormat::CameraRaw:
        return QStringLiteral("camera raw");
    case ImageFormat::PortableAnyMap:
        return QStringLiteral("PNM");
    case ImageFormat::Targa:
        return QStringLiteral("TGA");
    case ImageFormat::Svg:
        return QStringLiteral("SVG");
    case ImageFormat::Jpeg2000:
        return QStringLiteral("JPEG 2000");
    case ImageFormat::JpegXl:
        return QStringLiteral("JPEG XL");
    case ImageFormat::Photoshop:
        return QStringLiteral("Photoshop");
    }
    return QStringLiteral("unknown");
}

} // namespace platform
