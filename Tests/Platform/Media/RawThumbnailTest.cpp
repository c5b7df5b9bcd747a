#include "Platform/Media/RawThumbnail_p.h"

#include "Platform/Media/ImageSource.h"

#include "Support/ImageSamples.h"
#include "Support/TestSupport.h"

#include <random>

using namespace platform;
using namespace testSupport;

namespace {

constexpr int limit = 240;
constexpr quint16 byteType = 1, textType = 2;

// A negative of a camera with a preview in its first directory and a sensor of 64 by 64 pixels in another (DNG 1.4).
QByteArray negative(const QByteArray &preview, const QSize &previewSize, int orientation, int compression = 7)
{
    constexpr int firstEntries = 15, secondEntries = 11, sensorSide = 64;
    constexpr quint32 second = 8 + 2 + 12 * firstEntries + 4, texts = second + 2 + 12 * secondEntries + 4;
    const QByteArray maker("Maker\0\0\0", 8), bits = number(8, 2).repeated(3);
    const quint32 bitsAt = texts + quint32(maker.size()), previewAt = bitsAt + 6;
    const quint32 sensorAt = previewAt + quint32(preview.size());
    constexpr quint32 sensorSize = sensorSide * sensorSide * 2;
    const QByteArray first = tiffDirectory({{0xFE, longType, 1, 1},
                                            {0x100, longType, 1, quint32(previewSize.width())},
                                            {0x101, longType, 1, quint32(previewSize.height())},
                                            {0x102, shortType, 3, bitsAt},
                                            {0x103, shortType, 1, quint32(compression)},
                                            {0x106, shortType, 1, compression == 7 ? 6u : 2u},
                                            {0x10F, textType, 8, texts},
                                            {0x110, textType, 8, texts},
                                            {0x111, longType, 1, previewAt},
                                            {0x112, shortType, 1, quint32(orientation)},
                                            {0x115, shortType, 1, 3},
                                            {0x116, longType, 1, quint32(previewSize.height())},
                                            {0x117, longType, 1, quint32(preview.size())},
                                            {0x14A, longType, 1, second},
                                            {0xC612, byteType, 4, 0x01040000}});
    const QByteArray sensor = tiffDirectory({{0xFE, longType, 1, 0},
                                             {0x100, longType, 1, sensorSide},
                                             {0x101, longType, 1, sensorSide},
                                             {0x102, shortType, 1, 16},
                                             {0x103, shortType, 1, 1},
                                             {0x106, shortType, 1, 32803},
                                             {0x111, longType, 1, sensorAt},
                                             {0x115, shortType, 1, 1},
                                             {0x117, longType, 1, sensorSize},
                                             {0x828D, shortType, 2, 0x00020002},
                                             {0x828E, byteType, 4, 0x00010102}});
    return tiffHead() + first + sensor + maker + bits + preview + QByteArray(sensorSize, 'r');
}

Result<QByteArray> thumbnail(const QByteArray &file)
{
    return rawThumbnail(ImageInput(QByteArrayView(file)), limit);
}

QByteArray rgbOf(const QImage &image)
{
    QByteArray bytes;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            bytes += QByteArray{} + char(qRed(image.pixel(x, y))) + char(qGreen(image.pixel(x, y)))
                + char(qBlue(image.pixel(x, y)));
    return bytes;
}

} // namespace

TEST(RawThumbnailTest, ThePreviewIsTurnedAsTheCameraWasHeld)
{
    for (const int orientation : {1, 3, 6, 8}) {
        const QImage stored = storedFor(orientation, quarters(480, 320));
        const auto result = thumbnail(negative(jpeg(stored), stored.size(), orientation));
        ASSERT_TRUE(result) << result.error().toString().toStdString();
        const QImage picture = QImage::fromData(result.value(), "jpeg");
        EXPECT_EQ(picture.size(), QSize(240, 160)) << orientation;
        EXPECT_EQ(cornersOf(picture), "RGBY") << orientation;
    }
}

TEST(RawThumbnailTest, PreviewsMayBeBitmaps)
{
    const QImage stored = storedFor(6, quarters(480, 320));
    const auto result = thumbnail(negative(rgbOf(stored), stored.size(), 6, 1));
    ASSERT_TRUE(result) << result.error().toString().toStdString();
    const QImage picture = QImage::fromData(result.value(), "jpeg");
    EXPECT_EQ(picture.size(), QSize(240, 160));
    EXPECT_EQ(cornersOf(picture), "RGBY");
}

TEST(RawThumbnailTest, AnImageSourceTellsNegativesFromOtherTiffFiles)
{
    const auto source = ImageSource::fromBytes(negative(jpeg(quarters(480, 320)), {480, 320}, 1));
    ASSERT_TRUE(source);
    const auto result = source.value().jpegThumbnail(limit);
    ASSERT_TRUE(result);
    EXPECT_EQ(QImage::fromData(result.value()).size(), QSize(240, 160));
}

TEST(RawThumbnailTest, WhatIsNoNegativeIsOfAnUnknownKind)
{
    const auto result = thumbnail(QByteArray("FUJIFILMCCD-RAW 0201FF129502").leftJustified(400, '\0'));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code, ErrorCode::UnknownFormat);
    EXPECT_EQ(result.error().reason, QStringLiteral("the raw format of this camera is not known"));
    EXPECT_FALSE(thumbnail({}));
}

TEST(RawThumbnailTest, DamageGivesAPictureOrAReason)
{
    const QByteArray whole = negative(jpeg(paintedPicture(480, 320)), {480, 320}, 6);
    std::mt19937 random(31); // a fixed seed
    for (int round = 0; round < 200; ++round) {
        QByteArray file = whole;
        for (int flips = 0; flips < 3; ++flips)
            file[qsizetype(random() % 600)] = char(random());
        file.truncate(round % 2 ? file.size() : qsizetype(random() % size_t(file.size())));
        const auto result = thumbnail(file);
        EXPECT_TRUE(result ? !QImage::fromData(result.value(), "jpeg").isNull() : !result.error().reason.isEmpty());
    }
}

TEST(RawThumbnailTest, ReadsTheSamples)
{
    ZR_REQUIRE_SAMPLE_DATA();
    const auto codeOf = [](const char *name) -> std::optional<ErrorCode> {
        const QByteArray file = readFile(sampleFile(QStringLiteral("images/exiftool-metadata/") + QLatin1String(name)));
        const auto result = thumbnail(file);
        return result ? std::nullopt : std::optional(result.error().code);
    };
    EXPECT_EQ(codeOf("Panasonic.rw2"), std::nullopt);
    // Their pictures have been cut away.
    EXPECT_EQ(codeOf("CanonRaw.cr3"), ErrorCode::Malformed);
    EXPECT_EQ(codeOf("Minolta.mrw"), ErrorCode::Malformed);
    EXPECT_EQ(codeOf("PhaseOne.iiq"), ErrorCode::Malformed);
}
