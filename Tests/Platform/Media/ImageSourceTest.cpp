#include "Platform/Media/ImageSource.h"

#include "Support/ImageSamples.h"
#include "Support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <random>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace platform;
using namespace testSupport;

namespace {

constexpr int limit = 240;

struct Outcome {
    QImage picture;
    QByteArray jpeg;
    std::optional<Error> error;
};

Outcome outcome(const Result<ImageSource> &source, int maximumPixelSize = limit)
{
    if (!source)
        return {{}, {}, source.error()};
    const auto jpeg = source.value().jpegThumbnail(maximumPixelSize);
    if (!jpeg)
        return {{}, {}, jpeg.error()};
    return {QImage::fromData(jpeg.value(), "jpeg"), jpeg.value(), std::nullopt};
}

Outcome thumbnail(const QByteArray &file, int maximumPixelSize = limit)
{
    return outcome(ImageSource::fromBytes(file), maximumPixelSize);
}

Outcome thumbnailOfFile(const QString &path)
{
    return outcome(ImageSource::open(path));
}

QString failureOf(const QByteArray &file)
{
    const Outcome result = thumbnail(file);
    return result.error ? result.error->toString() : QStringLiteral("no failure");
}

QString inHome(const char *name)
{
    return homePath() + QLatin1Char('/') + QLatin1String(name);
}

bool isWritten(const char *format)
{
    return QImageWriter::supportedImageFormats().contains(format);
}

QByteArray pngBomb(quint32 side)
{
    return pngSignature + pngHeader(side, side, 1, 0) + pngChunk("IDAT", zlibPacked(QByteArray(1'000'000, '\0')))
        + pngChunk("IEND", {});
}

// What may come of any file at all.
void expectPictureOrReason(const Outcome &result, const std::string &what)
{
    if (result.error) {
        EXPECT_FALSE(result.error->reason.isEmpty()) << what;
        return;
    }
    ASSERT_FALSE(result.picture.isNull()) << what;
    EXPECT_LE(std::max(result.picture.width(), result.picture.height()), limit) << what;
    EXPECT_FALSE(result.jpeg.contains("ICC_PROFILE") || result.jpeg.contains("Exif")) << what;
}

} // namespace

TEST(ImageSourceTest, OpensOnlyRegularFilesAndNeverBlocks)
{
    const auto codeOf = [](const QString &path) { return ImageSource::open(path).error().code; };
    const QString pipe = inHome("pipe"), socketPath = inHome("socket");
    ASSERT_EQ(::mkfifo(pipe.toLocal8Bit(), 0600), 0);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, socketPath.toLocal8Bit(), sizeof address.sun_path);
    ASSERT_EQ(::bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    EXPECT_EQ(codeOf(pipe), ErrorCode::NotARegularFile);
    EXPECT_EQ(codeOf(socketPath), ErrorCode::NotARegularFile);
    EXPECT_EQ(codeOf(homePath()), ErrorCode::NotARegularFile);
    for (const char *device : {"/dev/null", "/dev/zero"})
        EXPECT_EQ(codeOf(QLatin1String(device)), ErrorCode::NotARegularFile) << device;
    EXPECT_EQ(codeOf(inHome("nothing")), ErrorCode::NotFound);
    ::close(descriptor);
}

TEST(ImageSourceTest, AFileThatMayNotBeReadSaysSo)
{
    const QString path = inHome("secret.png");
    writeFile(path, encoded(quarters(9, 9), "png"));
    QFile::setPermissions(path, {});
    if (::geteuid() == 0)
        GTEST_SKIP() << "root reads everything";
    EXPECT_EQ(ImageSource::open(path).error().code, ErrorCode::NotReadable);
}

TEST(ImageSourceTest, WhatBeginsLikeNoPictureIsNotOpened)
{
    const QString path = inHome("notes.jpg");
    writeFile(path, "It is not the name that counts.");
    const auto source = ImageSource::open(path);
    ASSERT_FALSE(source);
    EXPECT_EQ(source.error().code, ErrorCode::UnknownFormat);
    EXPECT_EQ(source.error().toString(), path + QStringLiteral(": it begins like no picture"));
    writeFile(path, "");
    EXPECT_EQ(ImageSource::open(path).error().toString(), path + QStringLiteral(": the file is empty"));
}

TEST(ImageSourceTest, NamesMayHoldAnyCharacters)
{
    for (const QString &name : {QStringLiteral("a b\n%1.png"), QString::fromUtf8("Ä\u0301\u202E.jpg"),
                                QStringLiteral("-"), QStringLiteral("*?[x]")}) {
        const QString path = homePath() + QLatin1Char('/') + name;
        writeFile(path, encoded(quarters(9, 9), "png"));
        EXPECT_EQ(thumbnailOfFile(path).picture.size(), QSize(9, 9)) << name.toStdString();
    }
}

TEST(ImageSourceTest, TheLongerSideIsAtMostTheLimit)
{
    for (const char *format : {"png", "jpeg", "bmp", "tiff", "webp", "ppm"}) {
        if (!isWritten(format))
            continue;
        EXPECT_EQ(thumbnail(encoded(quarters(300, 200), format)).picture.size(), QSize(240, 160)) << format;
        EXPECT_EQ(thumbnail(encoded(quarters(200, 300), format)).picture.size(), QSize(160, 240)) << format;
        EXPECT_EQ(thumbnail(encoded(quarters(1000, 2), format)).picture.size(), QSize(240, 1)) << format;
        EXPECT_EQ(cornersOf(thumbnail(encoded(quarters(300, 200), format)).picture), "RGBY") << format;
    }
}

TEST(ImageSourceTest, SmallPicturesAreNotMadeLarger)
{
    const QImage small = quarters(12, 10);
    const QImage picture = thumbnail(encoded(small, "png")).picture;
    EXPECT_EQ(picture.size(), small.size());
    EXPECT_EQ(thumbnail(encoded(small, "png"), 0).picture.size(), QSize(1, 1)); // no limit is below a pixel
}

TEST(ImageSourceTest, TheNameOfTheFormatInAFileNameIsIgnored)
{
    const QString path = inHome("picture.tiff");
    writeFile(path, encoded(quarters(30, 20), "png"));
    EXPECT_EQ(cornersOf(thumbnailOfFile(path).picture), "RGBY");
}

TEST(ImageSourceTest, TransparentPartsAreWhite)
{
    QImage image(40, 40, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter(&image).fillRect(0, 0, 20, 40, QColor(255, 0, 0, 128));
    for (const char *format : {"png", "webp", "tiff"}) {
        if (!isWritten(format))
            continue;
        const QImage picture = thumbnail(encoded(image, format)).picture;
        EXPECT_GE(qGray(picture.pixel(36, 20)), 252) << format;
        EXPECT_NEAR(qGreen(picture.pixel(4, 20)), 127, 6) << format;
        EXPECT_GE(qRed(picture.pixel(4, 20)), 248) << format;
    }
}

TEST(ImageSourceTest, EveryDepthOfPixelsIsRead)
{
    const QImage image = quarters(300, 200);
    for (const QImage::Format format : {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_Grayscale8,
                                        QImage::Format_Grayscale16, QImage::Format_RGBX64, QImage::Format_RGBA64}) {
        const QImage kind = image.convertToFormat(format, Qt::ThresholdDither);
        const QImage expected = kind.convertToFormat(QImage::Format_RGB32)
                                    .scaled(240, 160, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        EXPECT_LE(meanDifference(thumbnail(encoded(kind, "png")).picture, expected), 8) << format;
    }
}

TEST(ImageSourceTest, OrientationIsAppliedOnce)
{
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const QImage stored = storedFor(orientation, quarters(300, 200));
        const QByteArray exif = exifStructure(orientation);
        QList<QByteArray> files = {withExif(encoded(stored, "jpeg"), exif),
                                   withPngChunk(encoded(stored, "png"), "eXIf", exif)};
        if (isWritten("webp"))
            files += extendedWebp(encoded(stored, "webp"), stored.size(), exif, {});
        if (isWritten("tiff")) {
            QImageIOHandler::Transformations transformation;
            QByteArray tiff;
            QBuffer buffer(&tiff);
            buffer.open(QIODevice::WriteOnly);
            QImageWriter writer(&buffer, "tiff");
            constexpr int byOrientation[] = {0, 1, 3, 2, 6, 4, 5, 7};
            transformation = QImageIOHandler::Transformations(byOrientation[orientation - 1]);
            writer.setTransformation(transformation);
            ASSERT_TRUE(writer.write(stored));
            files += tiff;
        }
        for (const QByteArray &file : files) {
            const QImage picture = thumbnail(file).picture;
            EXPECT_EQ(picture.size(), QSize(240, 160)) << orientation << file.first(4).constData();
            EXPECT_EQ(cornersOf(picture), "RGBY") << orientation << file.first(4).constData();
        }
    }
}

TEST(ImageSourceTest, ColorsAreConvertedToSrgb)
{
    QImage plain(60, 40, QImage::Format_RGB888);
    plain.fill(QColor(100, 180, 60));
    QImage expected = plain;
    expected.setColorSpace(QColorSpace::AdobeRgb);
    const QImage tagged = expected;
    expected.convertToColorSpace(QColorSpace::SRgb);
    for (const char *format : {"png", "tiff", "jpeg"}) {
        if (!isWritten(format))
            continue;
        EXPECT_LE(greatestDifference(thumbnail(encoded(tagged, format)).picture, expected), 4) << format;
    }
    if (isWritten("webp")) {
        const QByteArray file =
            extendedWebp(encoded(plain, "webp"), plain.size(), {}, tagged.colorSpace().iccProfile());
        EXPECT_LE(greatestDifference(thumbnail(file).picture, expected), 14); // lossy
    }
}

TEST(ImageSourceTest, AGammaWithoutAProfileCounts)
{
    QImage plain(8, 8, QImage::Format_RGB888);
    plain.fill(QColor(128, 128, 128));
    const QByteArray linear = withPngChunk(withoutPngColors(encoded(plain, "png")), "gAMA", number(100'000, 4));
    EXPECT_NEAR(qGray(thumbnail(linear).picture.pixel(4, 4)), 188, 3);
}

TEST(ImageSourceTest, DamagedProfilesCountAsNoneAndLeaveTheLogAlone)
{
    QImage plain(60, 40, QImage::Format_RGB888);
    plain.fill(QColor(100, 180, 60));
    QByteArray profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    profile.replace(36, 4, "xxxx");
    QImage tagged = plain;
    tagged.setColorSpace(QColorSpace::AdobeRgb);
    QList<QByteArray> files = {
        withPngChunk(withoutPngColors(encoded(plain, "png")), "iCCP", QByteArray("p\0\0", 3) + zlibPacked(profile))};
    if (isWritten("webp"))
        files += extendedWebp(encoded(plain, "webp"), plain.size(), {}, profile);
    if (isWritten("tiff")) {
        QByteArray tiff = encoded(tagged, "tiff");
        const qsizetype place = tiff.indexOf("acsp");
        ASSERT_GT(place, 0);
        files += tiff.replace(place, 4, "xxxx");
    }
    for (const QByteArray &file : files)
        EXPECT_LE(greatestDifference(thumbnail(file).picture, plain), 8) << file.first(4).constData();
}

TEST(ImageSourceTest, OfMovingPicturesTheFirstFrameCounts)
{
    // Two frames of 2 by 2 pixels, the first red, the second blue.
    const QByteArray gif = QByteArray::fromHex("474946383961020002008000"
                                               "00ff00000000ff"
                                               "21f9040001000000"
                                               "2c0000000002000200000202"
                                               "845100"
                                               "21f9040001000000"
                                               "2c0000000002000200000202"
                                               "8c5300"
                                               "3b");
    const QImage picture = thumbnail(gif).picture;
    ASSERT_EQ(picture.size(), QSize(2, 2));
    EXPECT_GT(qRed(picture.pixel(0, 0)), 200);
}

TEST(ImageSourceTest, APictureOf200MegapixelsIsMadeSmall)
{
    QImage image(20'000, 10'000, QImage::Format_Grayscale8);
    image.fill(90);
    for (int y = 0; y < 5'000; ++y)
        std::memset(image.scanLine(y), 200, 10'000);
    const QByteArray jpeg = encoded(image, "jpg");
    image = {};
    const Result<QByteArray> made = ImageSource::fromBytes(jpeg).value().jpegThumbnail(240);
    ASSERT_TRUE(made) << qPrintable(made.error().toString());
    const QImage small = QImage::fromData(made.value());
    ASSERT_EQ(small.size(), QSize(240, 120));
    EXPECT_NEAR(small.pixelColor(60, 30).red(), 200, 2);
    EXPECT_NEAR(small.pixelColor(180, 90).red(), 90, 2);
}

TEST(ImageSourceTest, HeadersThatPromiseTooMuchAreRefusedBeforeMemoryIsTaken)
{
    EXPECT_EQ(failureOf(pngBomb(50'000)), QStringLiteral("the picture has too many pixels (50000 x 50000)"));
    EXPECT_EQ(thumbnail(pngBomb(0x7FFFFFFF)).error->code, ErrorCode::TooLarge);
    QByteArray bmp = encoded(quarters(8, 8), "bmp");
    bmp.replace(18, 8, number(60'000, 4, ByteOrder::Little).repeated(2));
    EXPECT_TRUE(thumbnail(bmp).error);
    const QByteArray wide = pngSignature + pngHeader(100'000, 1, 8, 0)
        + pngChunk("IDAT", zlibPacked(QByteArray(100'001, '\0'))) + pngChunk("IEND", {});
    EXPECT_EQ(failureOf(wide), QStringLiteral("the picture has too many pixels (100000 x 1)"));
    const QByteArray ppm = "P6 2000000000 2000000000 255\n123";
    EXPECT_TRUE(thumbnail(ppm).error);
    QByteArray gif = QByteArray::fromHex("474946383961ffffffff800000ff0000ffffff2c0000000002000200000202845100"
                                         "3b");
    expectPictureOrReason(thumbnail(gif), "gif");
    gif.replace(6, 4, number(0x2710, 2, ByteOrder::Little).repeated(2)); // 100 megapixels in some dozens of bytes
    EXPECT_EQ(failureOf(gif), QStringLiteral("the file is too small for so many pixels"));
    gif.replace(6, 4, QByteArray(4, '\xFF'));
    gif.replace(23, 4, QByteArray(4, '\xFF')); // the frame, too
    expectPictureOrReason(thumbnail(gif), "gif");
    if (isWritten("ico")) {
        QByteArray icon = encoded(quarters(8, 8), "ico");
        expectPictureOrReason(thumbnail(icon), "ico");
        for (const qsizetype place : {qsizetype(26), qsizetype(30)})
            icon.replace(place, 4, number(50'000, 4, ByteOrder::Little));
        expectPictureOrReason(thumbnail(icon), "ico");
    }
    if (isWritten("tiff")) {
        const QByteArray tiff = tiffHead()
            + tiffDirectory({{0x100, longType, 1, 3'000'000},
                             {0x101, longType, 1, 3'000'000},
                             {0x102, shortType, 1, 8},
                             {0x103, shortType, 1, 1},
                             {0x106, shortType, 1, 1},
                             {0x111, longType, 1, 8},
                             {0x116, longType, 1, 3'000'000},
                             {0x117, longType, 1, 100}});
        EXPECT_TRUE(thumbnail(tiff).error);
    }
}

TEST(ImageSourceTest, FilesThatWouldHaveToBeReadWholeAreLimitedInSize)
{
    const QByteArray begins[] = {encoded(quarters(8, 8), "png"), encoded(quarters(8, 8), "bmp"),
                                 QByteArray("IIRO\x08\0\0\0", 8), // camera raw
                                 QByteArray("\0\0\0\x14"
                                            "ftypheic\0\0\0\0mif1",
                                            20)};
    for (const QByteArray &begin : begins) {
        const QString path = QDir(homePath()).filePath(QStringLiteral("large"));
        writeFile(path, begin);
        ASSERT_TRUE(QFile::resize(path, 513 * 1024 * 1024)); // of which nothing is on the disk
        const Outcome result = thumbnailOfFile(path);
        QFile::remove(path);
        ASSERT_TRUE(result.error);
        EXPECT_TRUE(result.error->code == ErrorCode::TooLarge || result.error->code == ErrorCode::UnknownFormat);
        EXPECT_TRUE(result.error->reason == u"the file is too large" || begin.contains("heic"))
            << result.error->reason.toStdString(); // for which there may be no decoder
    }
}

TEST(ImageSourceTest, FormatsWithoutADecoderSayWhichIsMissing)
{
    const QByteArray jpegXl = QByteArray("\xFF\x0A").leftJustified(64, '\0');
    if (QImageReader::supportedImageFormats().contains("jxl"))
        GTEST_SKIP() << "this system reads JPEG XL";
    const Outcome result = thumbnail(jpegXl);
    EXPECT_EQ(result.error->code, ErrorCode::UnknownFormat);
    EXPECT_EQ(result.error->reason, QStringLiteral("no decoder for JPEG XL pictures is installed"));
}

TEST(ImageSourceTest, DrawingsAreReadWhereADecoderIsInstalledAndNeverExplode)
{
    QByteArray drawing = "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:x=\"http://www.w3.org/1999/xlink\"><defs>"
                         "<g id=\"a0\"><path d=\"M0 0h1\"/></g>";
    for (int i = 1; i < 30; ++i) {
        const QByteArray use = "<use x:href=\"#a" + QByteArray::number(i - 1) + "\"/>";
        drawing += "<g id=\"a" + QByteArray::number(i) + "\">" + use.repeated(10) + "</g>";
    }
    drawing += "</defs></svg>";
    if (QImageReader::supportedImageFormats().contains("svg"))
        GTEST_SKIP() << "the decoder of this system decides";
    EXPECT_EQ(failureOf(drawing), QStringLiteral("no decoder for SVG pictures is installed"));
}

TEST(ImageSourceTest, OldTargaFilesAreReadAndOthersLeaveTheLogAlone)
{
    QByteArray targa = QByteArray("\0\0\2\0\0\0\0\0\0\0\0\0\4\0\4\0\x18\x20", 18);
    targa += QByteArray("\0\0\xFF", 3).repeated(16);
    if (!QImageReader::supportedImageFormats().contains("tga"))
        GTEST_SKIP() << "needs the plug-in for TGA";
    const QImage picture = thumbnail(targa).picture;
    ASSERT_EQ(picture.size(), QSize(4, 4));
    EXPECT_GT(qRed(picture.pixel(2, 2)), 240);
    QByteArray grey = QByteArray("\0\0\3\0\0\0\0\0\0\0\0\0\4\0\4\0\x08\0", 18) + QByteArray(16, 'g');
    EXPECT_EQ(failureOf(grey), QStringLiteral("no decoder for TGA pictures is installed"));
}

TEST(ImageSourceTest, PalettesOfTooManyColorsLeaveTheLogAlone)
{
    QByteArray bmp = encoded(quarters(16, 16).convertToFormat(QImage::Format_Mono), "bmp");
    bmp.replace(46, 4, number(200, 4, ByteOrder::Little));
    expectPictureOrReason(thumbnail(bmp), "bmp");
}

TEST(ImageSourceTest, OfMacIconsTheSmallestThatIsLargeEnoughIsRead)
{
    const auto icon = [](const QByteArray &type, const QByteArray &content) -> QByteArray {
        return type + number(quint64(content.size() + 8), 4) + content;
    };
    const QByteArray icons = icon("ic10", encoded(quarters(1024, 1024), "png"))
        + icon("ic08", encoded(quarters(256, 256).mirrored(), "png")) + icon("ic07", encoded(quarters(64, 64), "png"));
    const QByteArray file = icon("icns", icons);
    EXPECT_EQ(cornersOf(thumbnail(file).picture), "BYRG");
    EXPECT_EQ(thumbnail(file, 2000).picture.width(), 1024);
    EXPECT_EQ(failureOf(icon("icns", icon("il32", "old"))),
              QStringLiteral("no decoder for ICNS pictures is installed"));
    for (qsizetype length = 8; length < 200; length += 7)
        expectPictureOrReason(thumbnail(file.first(length)), "icns");
}

TEST(ImageSourceTest, AFileThatShrinksOrVanishesIsAnError)
{
    for (const char *format : {"png", "jpeg"}) {
        const QString path = inHome("shrinking");
        writeFile(path, encoded(paintedPicture(400, 300), format));
        const auto shrinking = ImageSource::open(path);
        ASSERT_TRUE(shrinking);
        ASSERT_TRUE(QFile::resize(path, 40));
        expectPictureOrReason(outcome(shrinking), format);
        writeFile(path, encoded(paintedPicture(400, 300), format));
        const auto vanishing = ImageSource::open(path);
        ASSERT_TRUE(vanishing);
        QFile::remove(path);
        EXPECT_FALSE(outcome(vanishing).error) << format; // an open file stays
        writeFile(path, encoded(paintedPicture(400, 300), format));
        const auto emptied = ImageSource::open(path);
        ASSERT_TRUE(QFile::resize(path, 0));
        const Outcome result = outcome(emptied);
        ASSERT_TRUE(result.error) << format;
        EXPECT_EQ(result.error->path, path);
    }
}

TEST(ImageSourceTest, ASourceMayBeMovedAndAskedAgain)
{
    auto source = ImageSource::fromBytes(encoded(quarters(300, 200), "png"));
    ASSERT_TRUE(source);
    ImageSource moved = std::move(source).value();
    EXPECT_EQ(moved.jpegThumbnail(100).value(), moved.jpegThumbnail(100).value());
}

TEST(ImageSourceTest, TruncatedFilesGiveAPictureOrAReason)
{
    for (const char *format : {"png", "jpeg", "bmp", "tiff", "webp", "ppm", "ico"}) {
        if (!isWritten(format))
            continue;
        const QByteArray whole = encoded(paintedPicture(60, 40), format);
        for (qsizetype length = 0; length < whole.size(); length += 1 + whole.size() / 97)
            expectPictureOrReason(thumbnail(whole.first(length)), format);
    }
}

TEST(ImageSourceTest, DamagedFilesGiveAPictureOrAReason)
{
    std::mt19937 random(23); // a fixed seed
    for (const char *format : {"png", "jpeg", "bmp", "tiff", "webp", "ppm", "ico"}) {
        if (!isWritten(format))
            continue;
        const QByteArray whole = encoded(paintedPicture(60, 40), format);
        for (int round = 0; round < 150; ++round) {
            QByteArray file = whole;
            for (int flips = 0; flips < 3; ++flips)
                file[qsizetype(random() % size_t(round % 2 ? file.size() : std::min<qsizetype>(file.size(), 128)))] =
                    char(random());
            expectPictureOrReason(thumbnail(file), format + std::to_string(round));
        }
    }
}

// Every sample as its list says: a file that decodes gives a picture; others give a picture or a reason.
TEST(ImageSourceTest, ReadsTheSamplesAsExpected)
{
    ZR_REQUIRE_SAMPLE_DATA();
    const QJsonObject expected =
        QJsonDocument::fromJson(readFile(sampleFile(QStringLiteral("EXPECTED.json")))).object();
    // Promised to decode, but by no decoder of ours: 12 bits, JPEG 2000; and damage that is refused on purpose.
    const QStringList refused = {QStringLiteral("ser_jpg_12-bit.jpg"), QStringLiteral("ser_jpg_12-bit-progressive.jpg"),
                                 QStringLiteral("pil_12bit.cropped.tif"), QStringLiteral("small_jpeg2.jp2")};
    int pictures = 0;
    for (auto each = expected.begin(); each != expected.end(); ++each) {
        if (!each.key().startsWith(QLatin1String("images/")) || sampleFile(each.key()).isEmpty())
            continue;
        const Outcome result = thumbnailOfFile(sampleFile(each.key()));
        expectPictureOrReason(result, each.key().toStdString());
        const QString promise = each.value().toObject().value(QLatin1String("expected")).toString();
        const QString name = each.key().section(QLatin1Char('/'), -1);
        pictures += !result.error;
        if (!promise.startsWith(QLatin1String("decodes")) || promise.contains(QLatin1String("plug-in")))
            continue;
        EXPECT_EQ(result.error.has_value(), refused.contains(name))
            << each.key().toStdString() << (result.error ? qPrintable(result.error->toString()) : "");
    }
    EXPECT_GT(pictures, 300);
}

TEST(ImageSourceTest, TurnsTheSamplesUpright)
{
    ZR_REQUIRE_SAMPLE_DATA();
    const QImage upright = thumbnailOfFile(sampleFile(QStringLiteral("images/orientation/Landscape_1.jpg"))).picture;
    for (int orientation = 2; orientation <= 8; ++orientation) {
        const QString path = sampleFile(QStringLiteral("images/orientation/Landscape_%1.jpg").arg(orientation));
        EXPECT_LE(meanDifference(thumbnailOfFile(path).picture, upright), 4) << orientation; // each bears its number
    }
    EXPECT_EQ(thumbnailOfFile(sampleFile(QStringLiteral("images/png/ser_png_exif.png"))).picture.size(),
              QSize(200, 100));
    EXPECT_EQ(thumbnailOfFile(sampleFile(QStringLiteral("images/tiff/ser_tiff_orientation.tiff"))).picture.size(),
              QSize(180, 240));
}
