#include "Platform/Media/HeifThumbnail_p.h"

#include "Support/ImageSamples.h"
#include "Support/TestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>

#include <random>

#include <dlfcn.h>

using namespace platform;
using namespace testSupport;

namespace {

constexpr int limit = 240;
constexpr char withoutPlugin[] = "ZR_TEST_WITHOUT_HEIF_PLUGIN"; // set for the second run of this program

Result<QByteArray> thumbnail(const QByteArray &file)
{
    return heifThumbnail(ImageInput(QByteArrayView(file)), limit);
}

QByteArray sample(const char *name)
{
    const QString path = sampleFile(QStringLiteral("images/webp-avif-heif/") + QLatin1String(name));
    return path.isEmpty() ? QByteArray() : readFile(path);
}

QImage pictureOf(const char *name)
{
    const auto result = thumbnail(sample(name));
    EXPECT_TRUE(result) << name << ": " << (result ? "" : result.error().toString().toStdString());
    return result ? QImage::fromData(result.value(), "jpeg") : QImage();
}

QByteArray container(const QByteArray &rest)
{
    return number(24, 4) + "ftypheic" + number(0, 4) + "mif1heic" + rest;
}

bool hasPlugin()
{
    const auto result = thumbnail(container({}));
    return !result && result.error().code != ErrorCode::UnknownFormat;
}

} // namespace

#define ZR_REQUIRE_PLUGIN()                                                                                            \
    if (!hasPlugin())                                                                                                  \
    GTEST_SKIP() << "the plug-in for HEIF has not been built"

TEST(HeifThumbnailTest, ReadsEveryDepthAndKindOfPixels)
{
    ZR_REQUIRE_SAMPLE_DATA();
    ZR_REQUIRE_PLUGIN();
    for (const char *name :
         {"heif_heif_L_8__128x128.heif", "heif_heif_L_10__128x128.heif", "heif_heif_LA_8__128x128.heif",
          "heif_heif_RGB_8__128x128.heif", "heif_heif_RGB_12__128x128.heif", "heif_heif_RGBA_10__128x128.heif",
          "pil_avif_hopper.heif", "pil_avif_hopper-missing-pixi.avif"})
        EXPECT_EQ(pictureOf(name).size(), QSize(128, 128)) << name;
    EXPECT_EQ(pictureOf("pil_avif_exif.avif").size(), QSize(240, 240));
    EXPECT_LE(meanDifference(pictureOf("heif_heif_L_8__128x128.heif"), pictureOf("heif_heif_L_10__128x128.heif")), 2);
}

TEST(HeifThumbnailTest, TransparentPartsAreWhite)
{
    ZR_REQUIRE_SAMPLE_DATA();
    ZR_REQUIRE_PLUGIN();
    const QImage picture = pictureOf("heif_heif_RGBA_10__128x128.heif");
    EXPECT_GE(qGray(picture.pixel(64, 125)), 240);
}

TEST(HeifThumbnailTest, TheStoredThumbnailIsUsedAndCarriesItsOwnRotation)
{
    ZR_REQUIRE_SAMPLE_DATA();
    ZR_REQUIRE_PLUGIN();
    // Of 200 megapixels, more than are decoded; EXIF would turn it once more.
    EXPECT_EQ(pictureOf("heif_heif_special_200MP.heic").size(), QSize(180, 240));
}

TEST(HeifThumbnailTest, TooLargePicturesWithoutAThumbnailAreRefused)
{
    ZR_REQUIRE_SAMPLE_DATA();
    ZR_REQUIRE_PLUGIN();
    QByteArray file = sample("heif_heif_special_200MP.heic");
    const qsizetype reference = file.indexOf("thmb"); // what makes an item a thumbnail of another
    ASSERT_GT(reference, 0);
    const auto result = thumbnail(file.replace(reference, 4, "cdsc"));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code, ErrorCode::TooLarge);
    EXPECT_EQ(result.error().reason, QStringLiteral("the picture has too many pixels (12240 x 16320)"));
}

TEST(HeifThumbnailTest, DamageGivesAPictureOrAReason)
{
    ZR_REQUIRE_PLUGIN();
    const auto empty = thumbnail(container({}));
    ASSERT_FALSE(empty);
    EXPECT_EQ(empty.error().code, ErrorCode::Malformed);
    EXPECT_TRUE(empty.error().reason.startsWith(QStringLiteral("the HEIF data cannot be decoded: ")));
    ZR_REQUIRE_SAMPLE_DATA();
    const QByteArray whole = sample("heif_heif_RGBA_8__29x100.heif");
    std::mt19937 random(37); // a fixed seed
    for (int round = 0; round < 100; ++round) {
        QByteArray file = whole;
        for (int flips = 0; flips < 2; ++flips)
            file[qsizetype(random() % size_t(file.size()))] = char(random());
        file.truncate(round % 2 ? file.size() : qsizetype(random() % size_t(file.size())));
        const auto result = thumbnail(file);
        EXPECT_TRUE(result ? !QImage::fromData(result.value(), "jpeg").isNull() : !result.error().reason.isEmpty());
    }
}

TEST(HeifThumbnailTest, WithoutThePluginThePicturesAreRefused)
{
    if (qEnvironmentVariableIsSet(withoutPlugin)) {
        const auto result = thumbnail(container({}));
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().code, ErrorCode::UnknownFormat);
        EXPECT_EQ(result.error().reason, QStringLiteral("no decoder for HEIF pictures is installed"));
        return;
    }
    // Run once more, with a copy of the library that has no plug-in beside it.
    Dl_info info;
    ASSERT_NE(::dladdr(reinterpret_cast<const void *>(&heifThumbnail), &info), 0);
    const QString library = QFile::decodeName(info.dli_fname);
    ASSERT_TRUE(QFile::copy(library, homePath() + QLatin1Char('/') + QFileInfo(library).fileName()));
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_LIBRARY_PATH"), homePath());
    environment.insert(QLatin1String(withoutPlugin), QStringLiteral("1"));
    program.setProcessEnvironment(environment);
    program.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--gtest_filter=HeifThumbnailTest.WithoutThePluginThePicturesAreRefused")});
    ASSERT_TRUE(program.waitForFinished(60'000));
    EXPECT_EQ(program.exitCode(), 0) << program.readAllStandardOutput().toStdString();
}
