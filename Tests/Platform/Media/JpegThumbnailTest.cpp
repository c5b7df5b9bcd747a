#include "Platform/Media/JpegThumbnail_p.h"

#include "Platform/Media/Plane_p.h"
#include "Support/JpegSamples.h"
#include "Support/TestSupport.h"

#include <QColorSpace>
#include <QDir>
#include <QtEndian>

#include <cmath>
#include <random>

namespace {

using namespace platform;
using testSupport::jpeg;
using testSupport::JpegOptions;
using testSupport::paintedPicture;

Result<QByteArray> thumbnail(const QByteArray &bytes, int size = 240, int orientation = 1)
{
    const ImageInput input{QByteArrayView(bytes)};
    return jpegThumbnail(input, size, orientation);
}

QImage decodedThumbnail(const QByteArray &bytes, int size = 240, int orientation = 1)
{
    const auto made = thumbnail(bytes, size, orientation);
    EXPECT_TRUE(bool(made)) << (made ? "" : qPrintable(made.error().toString()));
    return made ? QImage::fromData(made.value()) : QImage();
}

TEST(JpegThumbnail, FitsItsLongerSideAndKeepsTheProportions)
{
    EXPECT_EQ(thumbnailSize(QSize(3000, 2000), 240), QSize(240, 160));
    EXPECT_EQ(thumbnailSize(QSize(2000, 3000), 240), QSize(160, 240));
    EXPECT_EQ(thumbnailSize(QSize(4928, 3264), 240), QSize(240, 159));
    EXPECT_EQ(thumbnailSize(QSize(240, 180), 240), QSize(240, 180));
    EXPECT_EQ(thumbnailSize(QSize(100, 20), 240), QSize(100, 20)); // never enlarged
    EXPECT_EQ(thumbnailSize(QSize(60'000, 10), 240), QSize(240, 1));
    EXPECT_EQ(thumbnailSize(QSize(65'500, 65'500), 65'000), QSize(65'000, 65'000));
}

TEST(JpegThumbnail, LooksLikeThePictureInEveryWayOfDecoding)
{
    const std::pair<const char *, JpegOptions> cases[] = {
        {"4:2:0", {}},
        {"4:4:4", {.horizontalSampling = 1, .verticalSampling = 1}},
        {"4:1:1", {.horizontalSampling = 4, .verticalSampling = 1}},
        {"progressive", {.isProgressive = true}},
        {"arithmetic", {.isArithmetic = true}},
        {"red, green and blue", {.horizontalSampling = 1, .verticalSampling = 1, .colors = JCS_RGB}},
        {"inks", {.horizontalSampling = 1, .verticalSampling = 1, .colors = JCS_CMYK}},
        {"inks as luma and differences", {.colors = JCS_YCCK}},
    };
    for (const QSize size : {QSize(2001, 1503), QSize(700, 525), QSize(160, 120)}) {
        const QImage picture = paintedPicture(size.width(), size.height());
        const QSize small = thumbnailSize(size, 240);
        const QImage expected = picture.scaled(small, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        for (const auto &[what, options] : cases) {
            const QImage made = decodedThumbnail(jpeg(picture, options));
            ASSERT_EQ(made.size(), small) << what;
            EXPECT_LT(testSupport::meanDifference(made, expected), 12) << what << " " << size.width();
        }
    }
}

TEST(JpegThumbnail, IsAsSharpAsAReductionOfTheWholePicture)
{
    for (const int width : {4000, 2000, 1900, 970, 700, 490}) { // for either way of decoding
        Plane shades(width, width / 2);
        for (int y = 0; y < shades.height; ++y) { // about as fine as the thumbnail can show
            for (int x = 0; x < width; ++x)
                shades.row(y)[x] = uchar(128 + 60 * std::sin(x * 500.0 / width) + 60 * std::sin(y * 430.0 / width));
        }
        const QImage picture(shades.bytes.data(), width, shades.height, width, QImage::Format_Grayscale8);
        const QImage made = decodedThumbnail(jpeg(picture, {.quality = 97}));
        const Plane reduced = resampled(shades, QSizeF(picture.size()), made.size());
        const QImage expected(reduced.bytes.data(), reduced.width, reduced.height, reduced.width,
                              QImage::Format_Grayscale8);
        EXPECT_LT(testSupport::meanDifference(made, expected), 3.2) << width;
    }
}

TEST(JpegThumbnail, InksCountFromNoneUnlessAMarkerSaysOtherwise)
{
    const QByteArray inverted = jpeg(paintedPicture(300, 200), {.colors = JCS_CMYK});
    const qsizetype marker = inverted.indexOf("\xFF\xEE");
    ASSERT_GT(marker, 0);
    constexpr qsizetype markerLength = 16;
    const QImage made = decodedThumbnail(QByteArray(inverted).remove(marker, markerLength));
    for (int y = 0; y < made.height(); y += 10) {
        for (int x = 0; x < made.width(); x += 10)
            EXPECT_LT(qGray(made.pixel(x, y)), 10); // all of the black ink
    }
}

TEST(JpegThumbnail, OfAGreyPictureIsGrey)
{
    for (const int width : {2400, 300}) {
        const QImage made = decodedThumbnail(jpeg(paintedPicture(width, width / 2), {.colors = JCS_GRAYSCALE}));
        EXPECT_EQ(made.size(), QSize(240, 120));
        EXPECT_EQ(made.format(), QImage::Format_Grayscale8);
    }
}

TEST(JpegThumbnail, StandsUprightInEveryOrientation)
{
    for (const int width : {2400, 600}) {
        QImage picture(width, width / 2, QImage::Format_RGB888);
        picture.fill(Qt::black);
        for (int y = 0; y < width / 8; ++y) {
            for (int x = 0; x < width / 8; ++x)
                picture.setPixelColor(x, y, Qt::red); // the corner that tells them apart
            for (int x = width - width / 8; x < width; ++x)
                picture.setPixelColor(x, y, Qt::green);
        }
        const QByteArray bytes = jpeg(picture, {.horizontalSampling = 1, .verticalSampling = 1});
        // Where red and green come to lie: 0 upper left, 1 upper right, 2 lower left, 3 lower right.
        const int red[] = {0, 1, 3, 2, 0, 1, 3, 2}, green[] = {1, 0, 2, 3, 2, 3, 1, 0};
        for (int orientation = 1; orientation <= 8; ++orientation) {
            const QImage made = decodedThumbnail(bytes, 240, orientation);
            ASSERT_EQ(made.size(), orientation < 5 ? QSize(240, 120) : QSize(120, 240)) << orientation;
            const QPoint corners[] = {
                {5, 5}, {made.width() - 6, 5}, {5, made.height() - 6}, {made.width() - 6, made.height() - 6}};
            for (int corner = 0; corner < 4; ++corner) {
                const QColor colour = made.pixelColor(corners[corner]);
                EXPECT_EQ(colour.red() > 200, corner == red[orientation - 1]) << orientation << " " << corner;
                EXPECT_EQ(colour.green() > 200, corner == green[orientation - 1]) << orientation << " " << corner;
            }
        }
    }
}

TEST(JpegThumbnail, ConvertsTheColoursOfAProfileAndDropsIt)
{
    for (const int width : {2400, 300}) {
        QImage picture(width, width / 2, QImage::Format_RGB888);
        picture.fill(QColor(100, 200, 50));
        const QByteArray profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
        const auto made = thumbnail(jpeg(picture, {.profile = profile}));
        ASSERT_TRUE(bool(made));
        EXPECT_FALSE(made.value().contains("ICC_PROFILE"));
        QImage expected = picture.convertToFormat(QImage::Format_RGB32);
        expected.setColorSpace(QColorSpace::AdobeRgb);
        expected.convertToColorSpace(QColorSpace::SRgb);
        const QColor colour = QImage::fromData(made.value()).pixelColor(100, 50), wanted = expected.pixelColor(0, 0);
        EXPECT_NEAR(colour.red(), wanted.red(), 5);
        EXPECT_NEAR(colour.green(), wanted.green(), 5);
        EXPECT_NEAR(colour.blue(), wanted.blue(), 5);
    }
}

TEST(JpegThumbnail, TakesAProfileInPartsAndPassesADamagedOneOver)
{
    QImage picture(2400, 16, QImage::Format_RGB888);
    picture.fill(QColor(100, 200, 50));
    const QByteArray profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    const QByteArray plain = jpeg(picture);
    const auto part = [](int number, const QByteArray &content) -> QByteArray {
        const qsizetype length = content.size() + 16;
        return QByteArray("\xFF\xE2") + char(length >> 8) + char(length & 0xFF) + QByteArray("ICC_PROFILE\0", 12)
            + char(number) + char(2) + content;
    };
    QByteArray inParts = plain; // the second first
    inParts.insert(2, part(2, profile.mid(200)) + part(1, profile.first(200)));
    EXPECT_EQ(thumbnail(inParts).value(), thumbnail(jpeg(picture, {.profile = profile})).value());
    QByteArray damaged = plain;
    damaged.insert(2, part(1, profile.first(200)));
    EXPECT_LT(testSupport::meanDifference(decodedThumbnail(damaged), decodedThumbnail(plain)), 2);
    QByteArray empty = plain;
    empty.insert(2, part(1, QByteArray()));
    EXPECT_EQ(thumbnail(empty).value(), thumbnail(plain).value());
}

TEST(JpegThumbnail, HoldsNoMetadataOfThePicture)
{
    QByteArray bytes = jpeg(paintedPicture(2400, 100));
    bytes.insert(2,
                 QByteArray("\xFF\xFE\x00\x08secret", 10)
                     + QByteArray("\xFF\xE1\x00\x0A"
                                  "Exif\0\0II",
                                  12));
    const auto made = thumbnail(bytes);
    ASSERT_TRUE(bool(made));
    EXPECT_FALSE(made.value().contains("secret"));
    EXPECT_FALSE(made.value().contains("Exif"));
}

TEST(JpegThumbnail, RefusesWhatItCannotShow)
{
    const QImage picture = paintedPicture(100, 100);
    const QByteArray good = jpeg(picture);
    EXPECT_EQ(thumbnail(QByteArray()).error().code, ErrorCode::Malformed);
    EXPECT_EQ(thumbnail("\xFF\xD8").error().code, ErrorCode::Malformed);
    EXPECT_EQ(thumbnail(good.first(good.indexOf("\xFF\xC0")) + "\xFF\xD9").error().code, ErrorCode::Malformed)
        << "tables only";
    for (const auto &[place, value] : {std::pair(4, 12), std::pair(1, 0xC3)}) {
        QByteArray bytes = good;
        bytes[good.indexOf("\xFF\xC0") + place] = char(value);
        const auto made = thumbnail(bytes);
        ASSERT_FALSE(bool(made));
        EXPECT_EQ(made.error().code, ErrorCode::UnknownFormat) << qPrintable(made.error().reason);
        EXPECT_TRUE(made.error().reason.startsWith(QLatin1String("the JPEG data cannot be decoded: ")));
    }
    for (const bool isProgressive : {false, true}) {
        QByteArray bomb = jpeg(picture, {.isProgressive = isProgressive});
        const qsizetype frame = bomb.indexOf(isProgressive ? "\xFF\xC2" : "\xFF\xC0");
        bomb.replace(frame + 5, 4, QByteArray("\xFF\xDC\xFF\xDC", 4)); // 65,500 each
        EXPECT_EQ(thumbnail(bomb).error().code, ErrorCode::TooLarge);
    }
}

TEST(JpegThumbnail, ShowsWhatThereIsOfAPictureThatIsCutOff)
{
    for (const int width : {2400, 500}) {
        const QByteArray good = jpeg(paintedPicture(width, width));
        const QImage whole = decodedThumbnail(good);
        for (const int percent : {40, 70, 90}) {
            const QImage part = decodedThumbnail(good.first(good.size() * percent / 100));
            ASSERT_EQ(part.size(), whole.size());
            const QRect upper(0, 0, whole.width(), whole.height() / 4);
            EXPECT_LT(testSupport::meanDifference(part.copy(upper), whole.copy(upper)), 3);
        }
    }
}

TEST(JpegThumbnail, GivesUpOnEndlessScans)
{
    QByteArray bytes = jpeg(paintedPicture(64, 64), {.isProgressive = true, .colors = JCS_GRAYSCALE});
    const qsizetype end = bytes.lastIndexOf("\xFF\xD9");
    const QByteArray refinement("\xFF\xDA\x00\x08\x01\x01\x00\x00\x00\x10\x00", 11);
    bytes.insert(end, refinement.repeated(3000));
    const auto made = thumbnail(bytes);
    ASSERT_FALSE(bool(made));
    EXPECT_EQ(made.error().code, ErrorCode::Malformed);
}

TEST(JpegThumbnail, TakesFewerScansOfLargePictures)
{
    const auto withScans = [](const QSize &size, int scans) {
        QByteArray bytes = jpeg(paintedPicture(64, 64), {.isProgressive = true, .colors = JCS_GRAYSCALE});
        const qsizetype place = bytes.indexOf("\xFF\xC2") + 5;
        const ushort sides[] = {ushort(size.height()), ushort(size.width())};
        for (qsizetype i = 0; i < 2; ++i)
            qToBigEndian(sides[i], bytes.data() + place + 2 * i);
        const QByteArray refinement("\xFF\xDA\x00\x08\x01\x01\x00\x00\x00\x10\x00", 11);
        return bytes.insert(bytes.lastIndexOf("\xFF\xD9"), refinement.repeated(scans));
    };
    EXPECT_TRUE(bool(thumbnail(withScans({1000, 900}, 300))));
    EXPECT_TRUE(bool(thumbnail(withScans({9000, 8000}, 20))));
    EXPECT_FALSE(bool(thumbnail(withScans({9000, 8000}, 100))));
}

TEST(JpegThumbnail, StandsDamageOfEveryKind)
{
    std::mt19937 random(12);
    const QByteArray profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    for (const JpegOptions &options : {JpegOptions{.profile = profile}, JpegOptions{.isProgressive = true},
                                       JpegOptions{.colors = JCS_YCCK}, JpegOptions{.isArithmetic = true}}) {
        const QByteArray good = jpeg(paintedPicture(90, 60), options);
        for (int round = 0; round < 400; ++round) {
            QByteArray bytes = good;
            for (auto flips = 1 + random() % 4; flips > 0; --flips) {
                const auto place = qsizetype(random() % size_t(bytes.size()));
                bytes[place] = char(bytes[place] ^ (1 << random() % 8));
            }
            static_cast<void>(thumbnail(bytes, round % 2 ? 240 : 10));
        }
        for (qsizetype size = 0; size < good.size(); size += 37)
            static_cast<void>(thumbnail(good.first(size), 10));
    }
}

TEST(JpegThumbnail, TakesTheFilesOfOtherPrograms)
{
    ZR_REQUIRE_SAMPLE_DATA();
    // What neither the decoder nor anybody's eyes could make a picture of.
    const QStringList refused = {QStringLiteral("ser_jpg_12-bit.jpg"),
                                 QStringLiteral("ser_jpg_12-bit-progressive.jpg")};
    const QDir folder(testSupport::sampleFile(QStringLiteral("images/jpeg")));
    int count = 0;
    for (const QString &name : folder.entryList({QStringLiteral("*.jpg")}, QDir::Files)) {
        const auto made = thumbnail(testSupport::readFile(folder.filePath(name)));
        if (name == QLatin1String("pil_junk_jpeg_header.jpg"))
            continue; // begins with junk: whether that is a JPEG is for others to say
        EXPECT_EQ(bool(made), !refused.contains(name)) << qPrintable(name);
        ++count;
    }
    EXPECT_GT(count, 15);
}

} // namespace
