#include "Platform/Media/StoredThumbnail_p.h"

#include "Support/ImageSamples.h"
#include "Support/TestSupport.h"

#include <random>

using namespace platform;
using namespace testSupport;

namespace {

constexpr int limit = 240;

std::optional<QByteArray> storedIn(const QByteArray &file, int maximumPixelSize = limit)
{
    const ImageInput input{QByteArrayView(file)};
    return storedThumbnail(input, jpegMetadata(input), maximumPixelSize);
}

QByteArray photo()
{
    static const QByteArray file = jpeg(paintedPicture(640, 480));
    return file;
}

QByteArray photoWith(const QByteArray &thumbnail, int orientation = 1)
{
    return withExif(photo(), exifStructure(orientation, thumbnail));
}

JpegOptions sampled(int horizontal, int vertical)
{
    JpegOptions options;
    options.horizontalSampling = horizontal;
    options.verticalSampling = vertical;
    return options;
}

QImage decoded(const std::optional<QByteArray> &file)
{
    return file ? QImage::fromData(*file, "jpeg") : QImage();
}

bool hasNoMetadata(const QByteArray &file)
{
    return !file.contains("Exif") && !file.contains("ICC_PROFILE") && !file.contains("Adobe");
}

} // namespace

TEST(StoredThumbnailTest, AThumbnailIsUsedAsItStands)
{
    const QByteArray thumbnail = jpeg(quarters(160, 120));
    const auto stored = storedIn(photoWith(thumbnail));
    ASSERT_TRUE(stored);
    EXPECT_EQ(decoded(stored), QImage::fromData(thumbnail, "jpeg")); // not a pixel has changed
}

TEST(StoredThumbnailTest, OneAsLargeAsTheLimitIsNotMadeSmaller)
{
    const QByteArray thumbnail = jpeg(quarters(limit, 180));
    EXPECT_EQ(decoded(storedIn(photoWith(thumbnail))), QImage::fromData(thumbnail, "jpeg"));
}

TEST(StoredThumbnailTest, WholeBlocksAreTurnedWithoutALoss)
{
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const QByteArray thumbnail = jpeg(storedFor(orientation, quarters(160, 96)), sampled(1, 1));
        const QImage picture = decoded(storedIn(photoWith(thumbnail, orientation)));
        EXPECT_EQ(picture.size(), QSize(160, 96)) << orientation;
        EXPECT_EQ(cornersOf(picture), "RGBY") << orientation;
        EXPECT_LE(greatestDifference(storedFor(orientation, picture), QImage::fromData(thumbnail, "jpeg")), 1)
            << orientation;
    }
}

TEST(StoredThumbnailTest, BlocksThatAreNotWholeAreDecodedToBeTurned)
{
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const QByteArray thumbnail = jpeg(storedFor(orientation, quarters(150, 113)), sampled(2, 2));
        const QImage picture = decoded(storedIn(photoWith(thumbnail, orientation)));
        EXPECT_EQ(picture.size(), QSize(150, 113)) << orientation;
        EXPECT_EQ(cornersOf(picture), "RGBY") << orientation;
    }
}

TEST(StoredThumbnailTest, BlocksAtTheEdgeAreTurnedAsWell)
{
    QImage shades(150, 113, QImage::Format_RGB32);
    for (int y = 0; y < shades.height(); ++y) {
        for (int x = 0; x < shades.width(); ++x)
            shades.setPixelColor(x, y, QColor(x, 2 * y, 128));
    }
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const QByteArray thumbnail = jpeg(storedFor(orientation, shades));
        EXPECT_LT(greatestDifference(decoded(storedIn(photoWith(thumbnail, orientation))), shades), 20) << orientation;
    }
}

TEST(StoredThumbnailTest, NothingButThePictureIsPassedOn)
{
    const QByteArray thumbnail = withSegment(withExif(jpeg(quarters(160, 120)), exifStructure(1)), 0xFE, "a comment")
        + "and rubbish behind its end";
    const auto stored = storedIn(photoWith(thumbnail));
    ASSERT_TRUE(stored);
    EXPECT_TRUE(hasNoMetadata(*stored));
    EXPECT_FALSE(stored->contains("comment"));
    EXPECT_TRUE(stored->endsWith("\xFF\xD9"));
    EXPECT_FALSE(stored->contains("rubbish"));
}

TEST(StoredThumbnailTest, LargerOnesAreMadeSmall)
{
    const QImage picture = decoded(storedIn(photoWith(jpeg(quarters(400, 300)))));
    EXPECT_EQ(picture.size(), QSize(240, 180));
    EXPECT_EQ(cornersOf(picture), "RGBY");
    EXPECT_EQ(decoded(storedIn(photoWith(jpeg(quarters(160, 120))), 100)).size(), QSize(100, 75));
}

TEST(StoredThumbnailTest, AMultiPictureFileGivesItsLargeThumbnail)
{
    const QByteArray file = multiPicture(photo(), {{0x010002, jpeg(quarters(640, 480))}});
    const QImage picture = decoded(storedIn(file));
    EXPECT_EQ(picture.size(), QSize(240, 180));
    EXPECT_EQ(cornersOf(picture), "RGBY");
}

TEST(StoredThumbnailTest, TheThumbnailOfExifComesFirst)
{
    const QByteArray both = withExif(multiPicture(photo(), {}), exifStructure(1, jpeg(quarters(160, 120))));
    EXPECT_EQ(decoded(storedIn(both)).size(), QSize(160, 120));
}

TEST(StoredThumbnailTest, ALargeThumbnailIsTurnedAsItSaysItself)
{
    const QByteArray own = withExif(jpeg(storedFor(6, quarters(640, 480))), exifStructure(6));
    EXPECT_EQ(cornersOf(decoded(storedIn(multiPicture(photo(), {{0x010001, own}})))), "RGBY");
}

TEST(StoredThumbnailTest, WhatIsNoWholePictureIsNotUsed)
{
    const QByteArray thumbnail = jpeg(paintedPicture(160, 120));
    const qsizetype scan = thumbnail.indexOf("\xFF\xDA");
    QByteArray endless = jpeg(paintedPicture(16, 16), {.isInterleaved = false});
    const qsizetype lastScan = endless.lastIndexOf("\xFF\xDA"), end = endless.lastIndexOf("\xFF\xD9");
    const QByteArray again = endless.mid(lastScan, end - lastScan);
    EXPECT_TRUE(storedIn(photoWith(QByteArray(endless).insert(end, again.repeated(100)))));
    endless.insert(end, again.repeated(1000)); // in a large file there might be millions
    const QByteArray notUsable[] = {
        {},
        endless,
        "\xFF\xD8",
        "\xFF\xD8\xFF\xD9",
        encoded(quarters(160, 120), "png"),
        thumbnail.first(scan), // tables and a frame, but no scan
        thumbnail.first(20), // not even these
        thumbnail.first(thumbnail.size() * 2 / 3),
        QByteArray(thumbnail).replace(scan + 40, 30, QByteArray(30, '\xFF')),
    };
    for (const QByteArray &each : notUsable)
        EXPECT_FALSE(storedIn(photoWith(each))) << each.size();
}

TEST(StoredThumbnailTest, ADamagedThumbnailGivesWayToALargeOne)
{
    const QByteArray damaged = jpeg(paintedPicture(160, 120)).first(1500);
    QByteArray file = withExif(photo(), exifStructure(1, damaged));
    file = multiPicture(file, {{0x010001, jpeg(quarters(320, 240))}});
    EXPECT_EQ(decoded(storedIn(file)).size(), QSize(240, 180));
}

TEST(StoredThumbnailTest, TheProfileOfThePhotoApplies)
{
    JpegOptions options;
    options.profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    QImage plain(160, 120, QImage::Format_RGB888);
    plain.fill(QColor(100, 180, 60));
    const QByteArray tagged = withExif(jpeg(paintedPicture(640, 480), options), exifStructure(1, jpeg(plain)));
    const auto stored = storedIn(tagged);
    ASSERT_TRUE(stored);
    EXPECT_TRUE(hasNoMetadata(*stored));
    QImage expected = plain;
    expected.setColorSpace(QColorSpace::AdobeRgb);
    expected.convertToColorSpace(QColorSpace::SRgb);
    EXPECT_LE(greatestDifference(decoded(stored), expected), 4);
}

TEST(StoredThumbnailTest, AThumbnailsOwnProfileTakesPrecedence)
{
    JpegOptions adobe, wide;
    adobe.profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    wide.profile = QColorSpace(QColorSpace::ProPhotoRgb).iccProfile();
    QImage plain(160, 120, QImage::Format_RGB888);
    plain.fill(QColor(100, 180, 60));
    const QByteArray file = withExif(jpeg(paintedPicture(640, 480), wide), exifStructure(1, jpeg(plain, adobe)));
    QImage expected = plain;
    expected.setColorSpace(QColorSpace::AdobeRgb);
    expected.convertToColorSpace(QColorSpace::SRgb);
    EXPECT_LE(greatestDifference(decoded(storedIn(file)), expected), 4);
}

TEST(StoredThumbnailTest, GreyAndProgressiveOnesAreTurned)
{
    JpegOptions grey, progressive;
    grey.colors = JCS_GRAYSCALE;
    progressive.isProgressive = true;
    for (const JpegOptions &options : {grey, progressive}) {
        const QImage picture = decoded(storedIn(photoWith(jpeg(storedFor(8, paintedPicture(160, 96)), options), 8)));
        EXPECT_EQ(picture.size(), QSize(160, 96));
    }
}

TEST(StoredThumbnailTest, OnesOfFourInksAreDecoded)
{
    JpegOptions inks;
    inks.colors = JCS_YCCK;
    const auto stored = storedIn(photoWith(jpeg(quarters(160, 120), inks)));
    ASSERT_TRUE(stored);
    EXPECT_EQ(cornersOf(decoded(stored)), "RGBY");
    EXPECT_TRUE(hasNoMetadata(*stored));
}

TEST(StoredThumbnailTest, WhateverIsDamagedTheResultIsAPictureOrNone)
{
    const QByteArray whole = photoWith(jpeg(paintedPicture(160, 120)), 6);
    std::mt19937 random(11); // a fixed seed
    for (int round = 0; round < 300; ++round) {
        QByteArray file = whole;
        for (int flips = 0; flips < 3; ++flips)
            file[qsizetype(random() % 4000)] = char(random());
        const auto stored = storedIn(file);
        EXPECT_TRUE(!stored || !decoded(stored).isNull()) << round;
    }
}
