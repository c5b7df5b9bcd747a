#pragma once

#include "Support/JpegSamples.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageWriter>
#include <QPainter>
#include <QtEndian>

#include <libdeflate.h>

/// Picture files for tests, made byte by byte where no library writes what is needed.
namespace testSupport {

enum class ByteOrder { Little, Big };

inline QByteArray number(quint64 value, int size, ByteOrder order = ByteOrder::Big)
{
    QByteArray bytes;
    for (; bytes.size() < size; value = bytes.size() < 8 ? value >> 8 : 0)
        order == ByteOrder::Big ? bytes.prepend(char(value)) : bytes.append(char(value));
    return bytes;
}

/// A picture in a format that Qt writes.
inline QByteArray encoded(const QImage &image, const char *format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(QImageWriter(&buffer, format).write(image)) << format;
    return bytes;
}

/// Four areas of one colour each: red, green (above), blue, yellow (below).
inline QImage quarters(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.fillRect(0, 0, width / 2, height / 2, Qt::red);
    painter.fillRect(width / 2, 0, width - width / 2, height / 2, Qt::green);
    painter.fillRect(0, height / 2, width / 2, height - height / 2, Qt::blue);
    painter.fillRect(width / 2, height / 2, width - width / 2, height - height / 2, Qt::yellow);
    return image;
}

/// Which corners have the colours of `quarters`, as letters from the upper left one, row by row: "RGBY" when upright.
inline std::string cornersOf(const QImage &image)
{
    const int x = image.width() / 6, y = image.height() / 6;
    const QPoint places[] = {{x, y},
                             {image.width() - 1 - x, y},
                             {x, image.height() - 1 - y},
                             {image.width() - 1 - x, image.height() - 1 - y}};
    std::string letters;
    for (const QPoint place : places) {
        const QColor color = image.pixelColor(place);
        const bool red = color.red() > 128, green = color.green() > 128, blue = color.blue() > 128;
        letters += red && green && !blue ? 'Y' : red && !green ? 'R' : green && !blue ? 'G' : blue ? 'B' : '?';
    }
    return letters;
}

/// The picture as a camera stores it that is to be turned as the orientation says.
inline QImage storedFor(int orientation, const QImage &upright)
{
    const QImage turned[] = {upright,
                             upright.mirrored(true, false),
                             upright.mirrored(true, true),
                             upright.mirrored(false, true),
                             upright.transformed(QTransform().rotate(90)).mirrored(true, false),
                             upright.transformed(QTransform().rotate(-90)),
                             upright.transformed(QTransform().rotate(90)).mirrored(false, true),
                             upright.transformed(QTransform().rotate(90))};
    return turned[orientation - 1];
}

struct TiffValue {
    quint16 tag;
    quint16 type;
    quint32 count;
    quint32 value; ///< Or offset.
};

/// A directory without anything around it.
inline QByteArray tiffDirectory(const QList<TiffValue> &values, quint32 next = 0, ByteOrder order = ByteOrder::Big)
{
    QByteArray bytes = number(quint64(values.size()), 2, order);
    for (const TiffValue &value : values) {
        bytes += number(value.tag, 2, order) + number(value.type, 2, order) + number(value.count, 4, order);
        if (value.type == 3 && value.count == 1)
            bytes += number(value.value, 2, order) + number(0, 2);
        else
            bytes += number(value.value, 4, order);
    }
    return bytes + number(next, 4, order);
}

inline QByteArray tiffHead(ByteOrder order = ByteOrder::Big, quint32 firstDirectory = 8)
{
    return (order == ByteOrder::Big ? "MM" : "II") + number(42, 2, order) + number(firstDirectory, 4, order);
}

inline constexpr quint16 shortType = 3, longType = 4, undefinedType = 7;

/// What an EXIF segment holds behind its name: an orientation, and a thumbnail where one is given.
inline QByteArray exifStructure(int orientation, const QByteArray &thumbnail = {}, ByteOrder order = ByteOrder::Big)
{
    constexpr quint32 second = 8 + 2 + 12 + 4, data = second + 2 + 24 + 4;
    QByteArray bytes = tiffHead(order)
        + tiffDirectory({{0x112, shortType, 1, quint32(orientation)}}, thumbnail.isEmpty() ? 0 : second, order);
    if (!thumbnail.isEmpty())
        bytes += tiffDirectory({{0x201, longType, 1, data}, {0x202, longType, 1, quint32(thumbnail.size())}}, 0, order)
            + thumbnail;
    return bytes;
}

inline QByteArray jpegSegment(int marker, const QByteArray &content)
{
    return QByteArray("\xFF") + char(marker) + number(quint64(content.size() + 2), 2) + content;
}

/// Puts a segment in front of all others.
inline QByteArray withSegment(QByteArray jpegFile, int marker, const QByteArray &content)
{
    return jpegFile.insert(2, jpegSegment(marker, content));
}

inline QByteArray withExif(const QByteArray &jpegFile, const QByteArray &structure)
{
    return withSegment(jpegFile, 0xE1, QByteArray("Exif\0\0", 6) + structure);
}

/// A multi-picture file (CIPA DC-007): the photo, and behind it other pictures of the kinds given.
inline QByteArray multiPicture(const QByteArray &photo, const QList<std::pair<quint32, QByteArray>> &others)
{
    const auto entriesAt = quint32(8 + 2 + 12 + 4), count = quint32(others.size() + 1);
    const QByteArray head =
        QByteArray("MPF\0", 4) + tiffHead() + tiffDirectory({{0xB002, undefinedType, 16 * count, entriesAt}});
    const qsizetype segmentSize = 4 + head.size() + 16 * qsizetype(count);
    quint32 place = quint32(photo.size() + segmentSize - 10); // from behind "MPF" and its zero
    QByteArray entries = number(0x030000, 4) + number(quint64(photo.size()), 4) + number(0, 8);
    QByteArray pictures;
    for (const auto &[kind, picture] : others) {
        entries += number(kind, 4) + number(quint64(picture.size()), 4) + number(place, 4) + number(0, 4);
        place += quint32(picture.size());
        pictures += picture;
    }
    return withSegment(photo, 0xE2, head + entries) + pictures;
}

inline QByteArray pngChunk(const QByteArray &type, const QByteArray &content)
{
    const QByteArray checked = type + content;
    const quint32 checksum = libdeflate_crc32(0, checked.constData(), size_t(checked.size()));
    return number(quint64(content.size()), 4) + checked + number(checksum, 4);
}

inline const QByteArray pngSignature("\x89PNG\r\n\x1A\n");

inline QByteArray pngHeader(quint32 width, quint32 height, int depth, int colorType)
{
    return pngChunk("IHDR", number(width, 4) + number(height, 4) + char(depth) + char(colorType) + number(0, 3));
}

/// Puts a chunk behind the header of a PNG file.
inline QByteArray withPngChunk(QByteArray png, const QByteArray &type, const QByteArray &content)
{
    return png.insert(33, pngChunk(type, content));
}

/// A PNG file without its first chunk of a type, if it has one.
inline QByteArray withoutPngChunk(QByteArray png, const char *type)
{
    const qsizetype place = png.indexOf(type) - 4;
    return place > 0 ? png.remove(place, qFromBigEndian<quint32>(png.constData() + place) + 12) : png;
}

/// A PNG file without what it says about its colours.
inline QByteArray withoutPngColors(QByteArray png)
{
    for (const char *type : {"iCCP", "sRGB", "gAMA", "cHRM"})
        png = withoutPngChunk(png, type);
    return png;
}

inline QByteArray zlibPacked(const QByteArray &bytes)
{
    return qCompress(bytes).sliced(4); // without Qt's length
}

/// A WebP file in the extended form: the chunks of a plain one between those given.
inline QByteArray extendedWebp(const QByteArray &plain, const QSize &size, const QByteArray &exif,
                               const QByteArray &profile)
{
    const auto chunk = [](const QByteArray &name, const QByteArray &content) -> QByteArray {
        return name + number(quint64(content.size()), 4, ByteOrder::Little) + content
            + QByteArray(content.size() % 2, '\0');
    };
    const char flags = char((profile.isEmpty() ? 0 : 0x20) | (exif.isEmpty() ? 0 : 0x08));
    QByteArray chunks =
        chunk("VP8X",
              QByteArray(1, flags) + number(0, 3) + number(quint64(size.width() - 1), 3, ByteOrder::Little)
                  + number(quint64(size.height() - 1), 3, ByteOrder::Little));
    if (!profile.isEmpty())
        chunks += chunk("ICCP", profile);
    chunks += plain.sliced(12);
    if (!exif.isEmpty())
        chunks += chunk("EXIF", exif);
    return "RIFF" + number(quint64(chunks.size() + 4), 4, ByteOrder::Little) + "WEBP" + chunks;
}

} // namespace testSupport
