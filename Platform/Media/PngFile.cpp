#include "Platform/Media/PngFile_p.h"

#include "Platform/Media/ImageMetadata_p.h"

#include <QtEndian>

#include <memory>
#include <optional>

#include <libdeflate.h>

namespace platform {
namespace {

constexpr qsizetype signatureSize = 8;
constexpr qsizetype headSize = 8; // length and type of a chunk
constexpr qsizetype checksumSize = 4;
constexpr qsizetype headerSize = 13; // of the content of the first chunk
constexpr qsizetype maximumColors = 256;
/// Profiles of printers have some megabytes.
constexpr qsizetype maximumProfileSize = 16 * 1024 * 1024;

struct Chunk {
    qsizetype offset = 0; // in the file
    QByteArrayView type;
    QByteArrayView content;
    QByteArrayView whole; // with head and checksum

    bool isCritical() const { return (uchar(type[0]) & 0x20) == 0; }
    bool isSound() const
    {
        const quint32 checksum = libdeflate_crc32(0, type.data(), size_t(type.size() + content.size()));
        return checksum == qFromBigEndian<quint32>(content.data() + content.size());
    }
};

Error malformed(qsizetype offset, const QString &reason)
{
    return {ErrorCode::Malformed, reason, offset, {}};
}

struct FreeDecompressor {
    void operator()(libdeflate_decompressor *decompressor) const { libdeflate_free_decompressor(decompressor); }
};

/// Kinds of pixels, in the header.
enum ColorType { Grey = 0, Colored = 2, Palette = 3, GreyAndAlpha = 4, ColoredAndAlpha = 6 };

bool isPossibleHeader(QByteArrayView content)
{
    constexpr quint32 maximumSide = 0x7FFFFFFF;
    if (content.size() != headerSize)
        return false;
    const auto width = qFromBigEndian<quint32>(content.data()), height = qFromBigEndian<quint32>(content.data() + 4);
    const int depth = content[8], colorType = content[9];
    const bool isBelowByte = depth == 1 || depth == 2 || depth == 4;
    const bool isDepthPossible = colorType == Grey ? isBelowByte || depth == 8 || depth == 16
        : colorType == Palette                     ? isBelowByte || depth == 8
        : colorType == Colored || colorType == GreyAndAlpha || colorType == ColoredAndAlpha ? depth == 8 || depth == 16
                                                                                            : false;
    // Behind these stand the methods of compression, filtering and interlacing.
    return width > 0 && width <= maximumSide && height > 0 && height <= maximumSide && isDepthPossible
        && content[10] == 0 && content[11] == 0 && (content[12] == 0 || content[12] == 1);
}

// The content of an iCCP chunk: a name, a zero, the method (0), and the profile in the zlib format.
QByteArray unpackedProfile(QByteArrayView content)
{
    const qsizetype name = content.indexOf('\0');
    if (name < 0 || name + 2 >= content.size() || content[name + 1] != 0)
        return {};
    const QByteArrayView packed = content.sliced(name + 2);
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
    // A profile states its size in its first four bytes, but these are packed, too: try until it fits.
    for (qsizetype size = 64 * 1024; decompressor && size <= maximumProfileSize; size *= 4) {
        QByteArray profile(size, Qt::Uninitialized);
        size_t length = 0;
        const auto outcome = libdeflate_zlib_decompress(decompressor.get(), packed.data(), size_t(packed.size()),
                                                        profile.data(), size_t(size), &length);
        if (outcome == LIBDEFLATE_SUCCESS) {
            profile.truncate(qsizetype(length));
            return profile;
        }
        if (outcome != LIBDEFLATE_INSUFFICIENT_SPACE)
            break;
    }
    return {};
}

// Four points of a chromaticity diagram in units of 1/100,000: white, red, green, blue. Qt complains about impossible
// ones.
bool arePossibleColors(QByteArrayView content)
{
    constexpr quint32 one = 100'000;
    if (content.size() != 32)
        return false;
    for (qsizetype place = 0; place < content.size(); place += 8) {
        const auto x = qFromBigEndian<quint32>(content.data() + place);
        const auto y = qFromBigEndian<quint32>(content.data() + place + 4);
        if (x > one || y == 0 || y > one || x + y > one)
            return false;
    }
    return true;
}

bool isPossibleGamma(QByteArrayView content)
{
    constexpr quint32 least = 10'000, most = 1'000'000; // in units of 1/100,000
    return content.size() == 4 && qFromBigEndian<quint32>(content.data()) >= least
        && qFromBigEndian<quint32>(content.data()) <= most;
}

class Reader
{
public:
    explicit Reader(QByteArrayView bytes)
        : m_bytes(bytes)
    {
        m_result.picture.reserve(bytes.size());
        m_result.picture += bytes.first(signatureSize);
    }

    Result<PngFile> read()
    {
        for (qsizetype place = signatureSize; !m_isAtEnd;) {
            const qsizetype left = m_bytes.size() - place - headSize - checksumSize;
            const quint32 length = left < 0 ? 0 : qFromBigEndian<quint32>(m_bytes.data() + place);
            if (left < qsizetype(length)) {
                if (m_hasData && (left < 0 || m_bytes[place + 4] != 'I'))
                    break; // the picture is there
                return malformed(m_bytes.size(), QStringLiteral("the PNG file is cut off"));
            }
            const qsizetype size = headSize + qsizetype(length) + checksumSize;
            if (const auto error = take({place, m_bytes.sliced(place + 4, 4), m_bytes.sliced(place + headSize, length),
                                         m_bytes.sliced(place, size)}))
                return *error;
            place += size;
        }
        return finished();
    }

private:
    std::optional<Error> take(const Chunk &chunk)
    {
        if (!chunk.isCritical()) {
            takeStatement(chunk);
            return std::nullopt;
        }
        if (!chunk.isSound())
            return malformed(chunk.offset, QStringLiteral("the checksum of a PNG chunk is wrong"));
        if (!isInPlace(chunk))
            return malformed(chunk.offset, QStringLiteral("a PNG chunk is not valid where it stands"));
        if (chunk.type == "IHDR") {
            m_header = chunk.content;
            m_result.size = QSize(qFromBigEndian<qint32>(m_header.data()), qFromBigEndian<qint32>(m_header.data() + 4));
        } else if (chunk.type == "PLTE") {
            m_colorCount = chunk.content.size() / 3;
        } else if (chunk.type == "IDAT" && !m_hasData) {
            m_hasData = true;
            m_result.picture += m_transparency;
        }
        m_isAtEnd = chunk.type == "IEND";
        if (!m_isAtEnd)
            m_result.picture += chunk.whole;
        return std::nullopt;
    }

    int colorType() const { return m_header.isEmpty() ? -1 : m_header[9]; }

    bool isInPlace(const Chunk &chunk) const
    {
        if (m_header.isEmpty() || chunk.type == "IHDR")
            return m_header.isEmpty() && chunk.type == "IHDR" && isPossibleHeader(chunk.content);
        if (chunk.type == "PLTE") {
            return !m_hasData && m_colorCount == 0 && (colorType() & Colored) != 0 && !chunk.content.isEmpty()
                && chunk.content.size() % 3 == 0 && chunk.content.size() <= maximumColors * 3;
        }
        if (chunk.type == "IDAT")
            return colorType() != Palette || m_colorCount > 0;
        return chunk.type == "IEND" && m_hasData;
    }

    bool isTransparencyInPlace(const Chunk &chunk) const
    {
        switch (colorType()) {
        case Grey:
            return chunk.content.size() == 2;
        case Colored:
            return chunk.content.size() == 6;
        case Palette:
            return !chunk.content.isEmpty() && chunk.content.size() <= m_colorCount;
        default:
            return false;
        }
    }

    void takeStatement(const Chunk &chunk)
    {
        if (chunk.type == "eXIf") {
            m_result.orientation = exifOrientation(ImageInput(chunk.content));
        } else if (m_hasData || !chunk.isSound()) {
            return;
        } else if (chunk.type == "iCCP" && m_result.profile.isEmpty()) {
            m_result.profile = unpackedProfile(chunk.content);
        } else if (chunk.type == "tRNS" && m_transparency.isEmpty() && isTransparencyInPlace(chunk)) {
            m_transparency = chunk.whole;
        } else if (chunk.type == "cHRM" && m_colors.isEmpty() && arePossibleColors(chunk.content)) {
            m_colors = chunk.whole.toByteArray();
        } else if (chunk.type == "gAMA" && m_gamma.isEmpty() && isPossibleGamma(chunk.content)) {
            m_gamma = chunk.whole.toByteArray();
        } else if (chunk.type == "sRGB") {
            m_isSrgb = true;
        }
    }

    // What stands about the colours goes behind the header, since it must precede a palette.
    PngFile finished()
    {
        constexpr qsizetype behindHeader = signatureSize + headSize + headerSize + checksumSize;
        if (m_result.profile.isEmpty() && !m_isSrgb && !m_gamma.isEmpty())
            m_result.picture.insert(behindHeader, m_gamma + m_colors);
        m_result.picture += QByteArrayView("\0\0\0\0IEND\xAE\x42\x60\x82", headSize + checksumSize);
        return std::move(m_result);
    }

    QByteArrayView m_bytes;
    PngFile m_result;
    QByteArrayView m_header, m_transparency;
    QByteArray m_colors, m_gamma;
    qsizetype m_colorCount = 0; // of the palette
    bool m_hasData = false, m_isAtEnd = false, m_isSrgb = false;
};

} // namespace

Result<PngFile> PngFile::read(QByteArrayView bytes)
{
    if (bytes.size() < signatureSize)
        return malformed(bytes.size(), QStringLiteral("the PNG file is cut off"));
    return Reader(bytes).read();
}

} // namespace platform
