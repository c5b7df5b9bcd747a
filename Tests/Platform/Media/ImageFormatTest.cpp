#include "Platform/Media/ImageFormat_p.h"

#include "Support/ImageSamples.h"
#include "Support/TestSupport.h"

using namespace platform;
using namespace testSupport;

namespace {

ImageFormat formatOf(const QByteArray &file)
{
    return imageFormatOf(QByteArrayView(file).first(std::min<qsizetype>(file.size(), formatBlockSize)), file.size());
}

QByteArray padded(const char *begin, qsizetype length)
{
    return QByteArray(begin, length).leftJustified(64, '\0');
}

QByteArray brands(const QByteArray &list)
{
    return number(quint64(list.size() + 12), 4) + "ftyp" + list.first(4) + number(0, 4) + list.sliced(4);
}

// Id length, kind of map, kind, map (5 bytes), origin, size, depth, descriptor.
QByteArray targa(int kind, int width, int height, int depth, qsizetype dataSize)
{
    return number(0, 2) + char(kind) + number(0, 9) + number(quint64(width), 2, ByteOrder::Little)
        + number(quint64(height), 2, ByteOrder::Little) + char(depth) + '\0' + QByteArray(dataSize, '\x7F');
}

} // namespace

TEST(ImageFormatTest, TellsTheFormatsThatQtWrites)
{
    const std::pair<const char *, ImageFormat> rows[] = {
        {"png", ImageFormat::Png},   {"bmp", ImageFormat::Bmp},     {"ppm", ImageFormat::PortableAnyMap},
        {"jpeg", ImageFormat::Jpeg}, {"tiff", ImageFormat::Tiff},   {"webp", ImageFormat::WebP},
        {"ico", ImageFormat::Icon},  {"icns", ImageFormat::MacIcon}};
    for (const auto &[name, format] : rows) {
        if (!QImageWriter::supportedImageFormats().contains(name))
            continue; // needs a plug-in
        EXPECT_EQ(formatOf(encoded(quarters(16, 16), name)), format) << name;
    }
}

TEST(ImageFormatTest, TellsFormatsByTheirFirstBytes)
{
    const struct {
        QByteArray file;
        ImageFormat format;
    } rows[] = {
        {padded("\xFF\xD8\xFF\xE1", 4), ImageFormat::Jpeg},
        {padded("GIF87a", 6), ImageFormat::Gif},
        {padded("GIF89a", 6), ImageFormat::Gif},
        {padded("II*\0\x08\0\0\0", 8), ImageFormat::Tiff},
        {padded("MM\0*\0\0\0\x08", 8), ImageFormat::Tiff},
        {padded("II+\0\x08\0\0\0\x10", 9), ImageFormat::Tiff},
        {padded("MM\0+\0\x08\0\0", 8), ImageFormat::Tiff},
        {padded("II*\0\x10\0\0\0CR\2\0", 12), ImageFormat::CameraRaw},
        {padded("II*\0\x08\0\0\0IIII", 12), ImageFormat::CameraRaw},
        {padded("MM\0*\0\0\0\x08MMMM", 12), ImageFormat::CameraRaw},
        {padded("II\x1A\0\0\0HEAPCCDR", 14), ImageFormat::CameraRaw},
        {padded("IIU\0\x18\0\0\0", 8), ImageFormat::CameraRaw},
        {padded("IIRO\x08\0\0\0", 8), ImageFormat::CameraRaw},
        {padded("IIRS\x08\0\0\0", 8), ImageFormat::CameraRaw},
        {padded("MMOR\0\0\0\x08", 8), ImageFormat::CameraRaw},
        {padded("FUJIFILMCCD-RAW 0201", 20), ImageFormat::CameraRaw},
        {padded("FOVb", 4), ImageFormat::CameraRaw},
        {padded("\0MRM", 4), ImageFormat::CameraRaw},
        {brands("crx isom"), ImageFormat::CameraRaw},
        {brands("heicmif1"), ImageFormat::Heif},
        {brands("avif"), ImageFormat::Heif},
        {brands("isomheic"), ImageFormat::Heif},
        {padded("\0\0\0\x0CjP  \r\n\x87\n", 12), ImageFormat::Jpeg2000},
        {padded("\xFF\x4F\xFF\x51", 4), ImageFormat::Jpeg2000},
        {padded("\0\0\0\x0CJXL \r\n\x87\n", 12), ImageFormat::JpegXl},
        {padded("\xFF\x0A", 2), ImageFormat::JpegXl},
        {padded("8BPS\0\1", 6), ImageFormat::Photoshop},
        {padded("RIFF\x10\0\0\0WEBP", 12), ImageFormat::WebP},
        {"P1 1 1 0", ImageFormat::PortableAnyMap},
        {"P6\n# made by hand\n12 1 255\n", ImageFormat::PortableAnyMap},
        {"<svg xmlns=\"http://www.w3.org/2000/svg\"/>", ImageFormat::Svg},
        {"\xEF\xBB\xBF <svg>", ImageFormat::Svg},
        {"<?xml version=\"1.0\"?><!-- <b> --><!DOCTYPE svg [<!ENTITY a \"b\">]>\n<svg width=\"3\">", ImageFormat::Svg},
        {targa(2, 4, 4, 24, 48), ImageFormat::Targa},
        {targa(3, 4, 4, 8, 16), ImageFormat::Targa},
        {targa(10, 4, 4, 32, 5), ImageFormat::Targa},
    };
    for (const auto &row : rows)
        EXPECT_EQ(formatOf(row.file), row.format) << row.file.left(24).toHex(' ').constData();
}

TEST(ImageFormatTest, TakesNothingElseForAPicture)
{
    const QByteArray files[] = {
        "",
        "P",
        "BM",
        "Pictures of 2019\n",
        "P3 is a good camera",
        "BMW is a maker of cars and motorcycles in Munich, Bavaria",
        "<html><svg/></html>",
        "<!DOCTYPE html><html><body><svg width=\"3\"/></body></html>",
        "<?xml version=\"1.0\"?><plist><svg/></plist>",
        "<svgx/>",
        "<svg",
        "<!-- <svg > without an end",
        "GIF88a",
        "RIFF\1\2\3\4WAVE",
        brands("isommp42"),
        brands("qt  "),
        padded("\0\0\1\0\0\0", 6), // an icon file without icons
        padded("\0\0\1\0\1\0\x10\x10\0\7", 10), // or with a reserved byte set
        padded("\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0\4\0\0\0\0\x10\0\0", 22), // or one behind its end
        padded("\0\0\3\1\4\5", 6), // two bytes and a size are no proof of WBMP
        targa(2, 0, 4, 24, 48),
        targa(2, 4, 4, 23, 48),
        targa(2, 4, 4, 24, 47), // cut off
        targa(5, 4, 4, 24, 48),
        QByteArray("%PDF-1.7\n"),
        QByteArray("PK\3\4"),
        QByteArray("\x7F"
                   "ELF\2\1\1"),
        QByteArray(64, '\0'),
        QByteArray(64, '\xFF'),
        QStringLiteral("A\nB\nC\n").toUtf8(),
        QByteArray("A\0\n\0B\0\n\0C\0\n\0D\0\n\0E\0\n\0F\0\n\0G\0\n\0H\0\n\0", 32), // UTF-16
    };
    for (const QByteArray &file : files)
        EXPECT_EQ(formatOf(file), ImageFormat::Unknown) << file.constData();
}

TEST(ImageFormatTest, AFileThatEndsWithinItsSignatureIsNoPicture)
{
    const QByteArray png = encoded(quarters(8, 8), "png");
    for (qsizetype length = 0; length < 8; ++length)
        EXPECT_EQ(formatOf(png.first(length)), ImageFormat::Unknown) << length;
    EXPECT_EQ(formatOf(png.first(8)), ImageFormat::Png);
}

TEST(ImageFormatTest, EveryFormatHasAName)
{
    for (int format = int(ImageFormat::Unknown); format <= int(ImageFormat::Photoshop); ++format)
        EXPECT_FALSE(nameOf(ImageFormat(format)).isEmpty());
    EXPECT_EQ(nameOf(ImageFormat::Jpeg2000), QStringLiteral("JPEG 2000"));
}
