#include "Platform/Media/ColorProfile_p.h"

#include "Support/JpegSamples.h"

#include <QColorSpace>

#include <lcms2.h>

namespace {

using namespace platform;

QByteArray saved(cmsHPROFILE profile)
{
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    QByteArray bytes(qsizetype(size), '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

QByteArray greyProfile(double gamma)
{
    cmsToneCurve *curve = cmsBuildGamma(nullptr, gamma);
    const QByteArray profile = saved(cmsCreateGrayProfile(cmsD50_xyY(), curve));
    cmsFreeToneCurve(curve);
    return profile;
}

QByteArray inkProfile()
{
    return saved(cmsCreateInkLimitingDeviceLink(cmsSigCmykData, 300)); // a link is no profile of a device
}

QImage filled(QImage::Format format, const QColor &colour)
{
    QImage image(4, 3, format);
    image.fill(colour);
    return image;
}

TEST(ColorProfile, ConvertsFromTheColoursOfTheProfile)
{
    QImage image = filled(QImage::Format_RGB888, QColor(100, 200, 50));
    QImage expected = filled(QImage::Format_RGB32, QColor(100, 200, 50));
    expected.setColorSpace(QColorSpace::AdobeRgb);
    expected.convertToColorSpace(QColorSpace::SRgb);
    EXPECT_TRUE(ColorProfile::convertToSrgb(image, QColorSpace(QColorSpace::AdobeRgb).iccProfile()));
    EXPECT_EQ(image.format(), QImage::Format_RGB888);
    EXPECT_LE(testSupport::greatestDifference(image, expected), 2);
    EXPECT_NE(image.pixel(0, 0), qRgb(100, 200, 50));
}

TEST(ColorProfile, LeavesColoursOfSrgbAsTheyAre)
{
    QImage image = testSupport::paintedPicture(40, 30);
    const QImage before = image;
    EXPECT_TRUE(ColorProfile::convertToSrgb(image, QColorSpace(QColorSpace::SRgb).iccProfile()));
    EXPECT_LE(testSupport::greatestDifference(image, before), 1);
}

TEST(ColorProfile, ConvertsGreyWithAProfileForGrey)
{
    QImage image = filled(QImage::Format_Grayscale8, QColor(128, 128, 128));
    EXPECT_TRUE(ColorProfile::convertToSrgb(image, greyProfile(1.0)));
    // Half of the light is 188 in sRGB.
    EXPECT_NEAR(qRed(image.pixel(1, 1)), 188, 2);
    EXPECT_NEAR(qBlue(image.pixel(1, 1)), 188, 2);
}

TEST(ColorProfile, ConvertsGreyWithAProfileForColours)
{
    QImage image = filled(QImage::Format_Grayscale8, QColor(128, 128, 128));
    EXPECT_TRUE(ColorProfile::convertToSrgb(image, QColorSpace(QColorSpace::SRgbLinear).iccProfile()));
    EXPECT_NEAR(qGreen(image.pixel(1, 1)), 188, 2);
}

TEST(ColorProfile, ChangesNothingWithoutAUsableProfile)
{
    const QByteArray good = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    for (const QByteArray &profile :
         {QByteArray(), QByteArray("no profile"), good.first(good.size() / 2), good.first(128), greyProfile(2.2)}) {
        QImage image = testSupport::paintedPicture(10, 10);
        EXPECT_FALSE(ColorProfile::convertToSrgb(image, profile)) << profile.size();
        EXPECT_EQ(image, testSupport::paintedPicture(10, 10));
    }
}

TEST(ColorProfile, RemembersNoProfileForAnother)
{
    for (int round = 0; round < 3; ++round) {
        QImage adobe = filled(QImage::Format_RGB888, QColor(100, 200, 50)), srgb = adobe;
        EXPECT_TRUE(ColorProfile::convertToSrgb(adobe, QColorSpace(QColorSpace::AdobeRgb).iccProfile()));
        EXPECT_TRUE(ColorProfile::convertToSrgb(srgb, QColorSpace(QColorSpace::SRgb).iccProfile()));
        EXPECT_NE(adobe.pixel(0, 0), srgb.pixel(0, 0));
    }
}

TEST(ColorProfile, MixesInksWithoutAProfile)
{
    QImage inks(3, 1, QImage::Format_RGB32);
    const uchar bytes[] = {255, 255, 255, 255, 0, 128, 255, 255, 200, 200, 200, 0};
    std::copy_n(bytes, sizeof bytes, inks.bits());
    for (const QByteArray &profile : {QByteArray(), QColorSpace(QColorSpace::SRgb).iccProfile(), inkProfile()}) {
        const QImage image = ColorProfile::fromInks(inks, profile);
        EXPECT_EQ(image.pixel(0, 0), qRgb(255, 255, 255));
        EXPECT_EQ(image.pixel(1, 0), qRgb(0, 128, 255));
        EXPECT_EQ(image.pixel(2, 0), qRgb(0, 0, 0));
    }
}

} // namespace
