#include "Platform/Media/Image.h"

#include "Support/ImageSamples.h"
#include "Support/TestSupport.h"

#include <QBuffer>
#include <QDir>
#include <QImageReader>
#include <QImageWriter>
#include <QLoggingCategory>
#include <QtEndian>

#include <sys/stat.h>

using platform::Image;
using testSupport::encoded;
using testSupport::withoutPngChunk;

namespace {

constexpr int notStated = 0;

QImage drawn(int width, int height, int dotsPerMeter = notStated)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 255 / width, y * 255 / height, (x * y) % 256));
    }
    if (dotsPerMeter != notStated) {
        image.setDotsPerMeterX(dotsPerMeter);
        image.setDotsPerMeterY(dotsPerMeter);
    }
    return image;
}

// JPEG with a density unit of none ("aspect ratio only") in its first segment.
QByteArray jpegWithoutResolution(const QImage &image)
{
    QByteArray jpeg = encoded(image, "jpeg");
    EXPECT_EQ(jpeg.mid(6, 4), "JFIF");
    jpeg[13] = 0;
    jpeg[15] = jpeg[17] = 1;
    jpeg[14] = jpeg[16] = 0;
    return jpeg;
}

// JPEG whose EXIF block asks for an orientation, 1 to 8.
QByteArray jpegWithOrientation(const QImage &image, char orientation)
{
    const QByteArray exif = QByteArray("Exif\0\0MM\0\x2A\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0", 25) + orientation
        + QByteArray("\0\0\0\0\0\0", 6);
    QByteArray length(2, '\0');
    qToBigEndian<quint16>(quint16(exif.size() + 2), length.data());
    return encoded(image, "jpeg").insert(2, "\xFF\xE1" + length + exif);
}

// An icon file that holds several PNG pictures.
QByteArray icon(const QList<QByteArray> &pngs)
{
    QByteArray header("\0\0\x01\0", 4);
    QByteArray number(2, '\0');
    qToLittleEndian<quint16>(quint16(pngs.size()), number.data());
    header += number;
    QByteArray body;
    for (const QByteArray &png : pngs) {
        QByteArray entry(16, '\0');
        entry[0] = png[19]; // width and height of pictures smaller than 256 pixels
        entry[1] = png[23];
        entry[4] = 1;
        entry[6] = 32;
        qToLittleEndian<quint32>(quint32(png.size()), entry.data() + 8);
        qToLittleEndian<quint32>(quint32(6 + 16 * pngs.size() + body.size()), entry.data() + 12);
        header += entry;
        body += png;
    }
    return header + body;
}

// TIFF file of several grey pages, each of a size, a resolution in pixels per inch and a shade of its own.
struct TiffPage {
    quint16 width, height, dotsPerInch;
    uchar shade;
};

void appendLittleEndian(QByteArray &bytes, quint32 number, int size)
{
    for (int i = 0; i < size; ++i)
        bytes += char(number >> (8 * i));
}

QByteArray tiff(const QList<TiffPage> &pages)
{
    constexpr quint32 shortType = 3, longType = 4, rationalType = 5;
    QByteArray file("II*\0", 4);
    qsizetype link = file.size(); // where the place of the next page's directory goes
    file += QByteArray(4, '\0');
    for (const TiffPage &page : pages) {
        const auto strip = quint32(file.size());
        const quint32 stripSize = page.width * page.height;
        file += QByteArray(stripSize, char(page.shade));
        const auto resolution = quint32(file.size());
        appendLittleEndian(file, page.dotsPerInch, 4);
        appendLittleEndian(file, 1, 4);
        qToLittleEndian<quint32>(quint32(file.size()), file.data() + link);
        const struct {
            quint32 tag, type, value;
        } entries[] = {{256, longType, page.width},
                       {257, longType, page.height},
                       {258, shortType, 8},
                       {259, shortType, 1},
                       {262, shortType, 1},
                       {273, longType, strip},
                       {277, shortType, 1},
                       {278, longType, page.height},
                       {279, longType, stripSize},
                       {282, rationalType, resolution},
                       {283, rationalType, resolution},
                       {296, shortType, 2}};
        appendLittleEndian(file, quint32(std::size(entries)), 2);
        for (const auto &entry : entries) {
            appendLittleEndian(file, entry.tag, 2);
            appendLittleEndian(file, entry.type, 2);
            appendLittleEndian(file, 1, 4);
            appendLittleEndian(file, entry.value, 4);
        }
        link = file.size();
        file += QByteArray(4, '\0');
    }
    return file;
}

struct ImageTest : testing::Test {
    const QString path = testSupport::homePath() + QStringLiteral("/picture");

    // Decoders say in the log how a file is damaged.
    ImageTest() { QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio*=false")); }
    ~ImageTest() override { QLoggingCategory::setFilterRules(QString()); }

    std::shared_ptr<Image> read(const QByteArray &bytes) const
    {
        QFile::remove(path); // some file systems wait for the disk when a file is written over
        testSupport::writeFile(path, bytes);
        return Image::contentsOfFile(path);
    }
    QSizeF sizeOf(const QByteArray &bytes) const
    {
        const std::shared_ptr<Image> image = read(bytes);
        return image ? image->size() : QSizeF();
    }
};

TEST_F(ImageTest, HoldsWhatItWasMadeOf)
{
    Image empty;
    EXPECT_EQ(empty.size(), QSizeF(0, 0));
    EXPECT_TRUE(empty.representations().empty());
    EXPECT_EQ(empty.cacheMode(), Image::CacheMode::Default);
    EXPECT_FALSE(empty.isDataRetained());
    const Image image(drawn(30, 20));
    EXPECT_EQ(image.size(), QSizeF(30, 20));
    ASSERT_EQ(image.representations().size(), 1u);
    EXPECT_TRUE(image.representations()[0].isBitmap());
    EXPECT_EQ(image.representations()[0].pixelSize, QSize(30, 20));
    EXPECT_FALSE(platform::ImageRepresentation().isBitmap());
    EXPECT_FALSE(platform::ImageRepresentation().pixelSize.isValid());
}

TEST_F(ImageTest, ReadsPicturesWhateverTheirNameSays)
{
    for (const char *format : {"png", "jpeg", "bmp", "ppm"}) {
        const std::shared_ptr<Image> image = read(encoded(drawn(24, 18), format));
        ASSERT_TRUE(image) << format;
        ASSERT_EQ(image->representations().size(), 1u) << format;
        EXPECT_EQ(image->representations()[0].pixelSize, QSize(24, 18)) << format;
    }
    const QString misnamed = testSupport::homePath() + QStringLiteral("/picture.jpg");
    testSupport::writeFile(misnamed, encoded(drawn(24, 18), "png"));
    const std::shared_ptr<Image> image = Image::contentsOfFile(misnamed);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->representations()[0].bitmap, drawn(24, 18));
}

TEST_F(ImageTest, TheLogicalSizeFollowsTheResolutionOfTheFile)
{
    const struct {
        int dotsPerMeter;
        QSizeF size;
    } rows[] = {{2835, {240, 180}}, {5669, {120, 90}}, {3780, {180, 135}}, {3779, {180, 135}}, {11811, {57.6, 43.2}}};
    for (const auto &row : rows) {
        for (const char *format : {"png", "bmp", "jpeg", "tiff"}) {
            if (!QImageWriter::supportedImageFormats().contains(format))
                continue; // TIFF needs a plug-in
            const QSizeF size = sizeOf(encoded(drawn(240, 180, row.dotsPerMeter), format));
            EXPECT_DOUBLE_EQ(size.width(), row.size.width()) << format << row.dotsPerMeter;
            EXPECT_DOUBLE_EQ(size.height(), row.size.height()) << format << row.dotsPerMeter;
        }
    }
}

TEST_F(ImageTest, AFileThatStatesNoResolutionIsLaidOutByItsPixels)
{
    EXPECT_EQ(sizeOf(withoutPngChunk(encoded(drawn(240, 180), "png"), "pHYs")), QSizeF(240, 180));
    EXPECT_EQ(sizeOf(jpegWithoutResolution(drawn(240, 180))), QSizeF(240, 180));
    EXPECT_EQ(sizeOf(encoded(drawn(240, 180), "ppm")), QSizeF(240, 180));
}

TEST_F(ImageTest, BothDirectionsHaveAResolutionOfTheirOwn)
{
    QImage image = drawn(240, 180, 2835);
    image.setDotsPerMeterY(5669);
    EXPECT_EQ(sizeOf(encoded(image, "png")), QSizeF(240, 90));
}

TEST_F(ImageTest, TurnsPhotosUprightAsTheirOrientationAsks)
{
    QImage image(32, 16, QImage::Format_RGB32);
    image.fill(Qt::white);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            image.setPixel(x, y, qRgb(0, 0, 0)); // the upper left corner
    image.setDotsPerMeterX(5669);
    image.setDotsPerMeterY(2835);
    for (char orientation = 1; orientation <= 8; ++orientation) {
        const QByteArray jpeg = jpegWithOrientation(image, orientation);
        const std::shared_ptr<Image> result = read(jpeg);
        ASSERT_TRUE(result);
        const QImage bitmap = result->representations()[0].bitmap;
        EXPECT_EQ(result->size(), orientation > 4 ? QSizeF(16, 16).transposed() : QSizeF(16, 16));
        EXPECT_EQ(bitmap.size(), orientation > 4 ? QSize(16, 32) : QSize(32, 16)) << int(orientation);
        QBuffer buffer;
        buffer.setData(jpeg);
        buffer.open(QIODevice::ReadOnly);
        QImageReader reader(&buffer);
        reader.setAutoTransform(true);
        EXPECT_EQ(bitmap, reader.read()) << int(orientation);
    }
}

TEST_F(ImageTest, EveryPictureOfAnIconIsARepresentation)
{
    const std::shared_ptr<Image> image =
        read(icon({encoded(drawn(16, 16), "png"), encoded(drawn(48, 32), "png"), encoded(drawn(32, 32), "png")}));
    ASSERT_TRUE(image);
    ASSERT_EQ(image->representations().size(), 3u);
    EXPECT_EQ(image->representations()[0].pixelSize, QSize(16, 16));
    EXPECT_EQ(image->representations()[1].pixelSize, QSize(48, 32));
    EXPECT_EQ(image->representations()[2].pixelSize, QSize(32, 32));
}

TEST_F(ImageTest, EveryPageIsARepresentationAndTheFirstHasTheLogicalSize)
{
    if (!QImageReader::supportedImageFormats().contains("tiff"))
        GTEST_SKIP() << "needs Qt's plug-in for TIFF";
    const QList<TiffPage> pages{{24, 18, 144, 40}, {30, 20, 72, 120}, {8, 50, 300, 200}};
    const std::shared_ptr<Image> image = read(tiff(pages));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(12, 9));
    ASSERT_EQ(image->representations().size(), 3u);
    for (int i = 0; i < 3; ++i) {
        const platform::ImageRepresentation &representation = image->representations()[size_t(i)];
        EXPECT_EQ(representation.pixelSize, QSize(pages[i].width, pages[i].height)) << i;
        EXPECT_EQ(qGray(representation.bitmap.pixel(3, 3)), int(pages[i].shade)) << i;
    }
    EXPECT_EQ(read(tiff(QList<TiffPage>(Image::maximumPages + 5, {2, 2, 72, 0})))->representations().size(),
              size_t(Image::maximumPages));
    // What is left of a file whose second page is damaged is its first.
    QByteArray damaged = tiff(pages);
    const auto firstDirectory = qFromLittleEndian<quint32>(damaged.constData() + 4);
    damaged.truncate(firstDirectory + 2 + 12 * 12 + 4);
    const std::shared_ptr<Image> first = read(damaged);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->representations().size(), 1u);
}

TEST_F(ImageTest, PagesBeyondTheLimitAreLeftOut)
{
    const QByteArray png = encoded(drawn(2, 2), "png");
    const std::shared_ptr<Image> image = read(icon(QList<QByteArray>(Image::maximumPages + 5, png)));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->representations().size(), size_t(Image::maximumPages));
}

TEST_F(ImageTest, OfAMovingPictureOnlyTheFirstFrameIsRead)
{
    // Two frames of one pixel, red and blue.
    const QByteArray frame = QByteArray::fromHex("21f90400010000002c000000000100010000");
    const QByteArray gif = QByteArray::fromHex("47494638396101000100800000ff00000000ff") + frame
        + QByteArray::fromHex("02024401"
                              "00")
        + frame
        + QByteArray::fromHex("02024c01"
                              "00"
                              "3b");
    const std::shared_ptr<Image> image = read(gif);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), QSizeF(1, 1));
    ASSERT_EQ(image->representations().size(), 1u);
    EXPECT_EQ(image->representations()[0].bitmap.pixelColor(0, 0), QColor(Qt::red));
}

TEST_F(ImageTest, WhatIsNoRegularFileGivesNothingAtOnce)
{
    EXPECT_FALSE(Image::contentsOfFile(path));
    EXPECT_FALSE(Image::contentsOfFile(QString()));
    EXPECT_FALSE(Image::contentsOfFile(testSupport::homePath()));
    ASSERT_EQ(mkfifo(path.toUtf8().constData(), 0600), 0);
    EXPECT_FALSE(Image::contentsOfFile(path));
}

TEST_F(ImageTest, AnEmptyFileOrOneThatIsNoPictureGivesNothing)
{
    EXPECT_FALSE(read(QByteArray()));
    EXPECT_FALSE(read("this is no picture"));
    EXPECT_FALSE(read(QByteArray(10'000, '\xFF')));
    EXPECT_FALSE(read(QByteArray(10'000, '\0')));
}

TEST_F(ImageTest, AFileBeyondTheLimitIsNotRead)
{
    testSupport::writeFile(path, encoded(drawn(4, 4), "png"));
    ASSERT_TRUE(Image::contentsOfFile(path));
    ASSERT_TRUE(QFile::resize(path, Image::maximumFileSize + 1));
    EXPECT_FALSE(Image::contentsOfFile(path));
}

TEST_F(ImageTest, APictureThatWouldBeTooLargeIsRefusedByItsHeader)
{
    for (const quint32 side : {200'000u, 0x7FFFFFFFu, 20'000u}) {
        QByteArray png = encoded(drawn(4, 4), "png");
        qToBigEndian<quint32>(side, png.data() + 16);
        qToBigEndian<quint32>(side, png.data() + 20);
        // The checksum of the header chunk, so that it is refused for nothing but its size.
        quint32 crc = ~0u;
        for (qsizetype at = 12; at < 29; ++at) {
            crc ^= uchar(png[at]);
            for (int bit = 0; bit < 8; ++bit)
                crc = (crc >> 1) ^ (crc & 1 ? 0xEDB88320u : 0);
        }
        qToBigEndian<quint32>(~crc, png.data() + 29);
        EXPECT_FALSE(read(png)) << side;
    }
}

TEST_F(ImageTest, APictureCutOffAnywhereIsReadInPartOrNotAtAll)
{
    for (const char *format : {"png", "jpeg", "bmp"}) {
        const QByteArray whole = encoded(drawn(40, 30), format);
        for (qsizetype length = 0; length < whole.size(); ++length) {
            const std::shared_ptr<Image> image = read(whole.first(length));
            EXPECT_EQ(image ? image->representations()[0].pixelSize : QSize(40, 30), QSize(40, 30)) << format << length;
        }
    }
    const QByteArray png = encoded(drawn(40, 30), "png");
    EXPECT_FALSE(read(png.first(png.size() / 2)));
}

TEST_F(ImageTest, DamagedPicturesDoNoHarm)
{
    for (const char *format : {"png", "jpeg", "bmp"}) {
        const QByteArray whole = encoded(drawn(16, 12), format);
        for (qsizetype at = 0; at < whole.size(); ++at) {
            QByteArray damaged = whole;
            damaged[at] = char(damaged[at] ^ 0x55);
            read(damaged);
        }
    }
}

} // namespace
