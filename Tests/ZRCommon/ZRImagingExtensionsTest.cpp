#include "ZRCommon/ZRImagingExtensions.h"

#include <gtest/gtest.h>

using platform::Image;
using platform::ImageRepresentation;
using ZRImagingExtensions::fixSizeZR;

namespace {

ImageRepresentation bitmap(int width, int height)
{
    return ImageRepresentation(QImage(width, height, QImage::Format_RGB32));
}

TEST(ZRImagingExtensions, GivesAnImageTheSizeOfItsPixelsAndLetsItRetainItsData)
{
    Image image(QImage(240, 180, QImage::Format_RGB32));
    image.setSize({120, 90});
    fixSizeZR(image);
    EXPECT_EQ(image.size(), QSizeF(240, 180));
    EXPECT_EQ(image.cacheMode(), Image::CacheMode::Always);
    EXPECT_TRUE(image.isDataRetained());
}

TEST(ZRImagingExtensions, LeavesAnImageOfTheRightSizeAloneButForItsCacheMode)
{
    Image image(QImage(240, 180, QImage::Format_RGB32));
    fixSizeZR(image);
    EXPECT_EQ(image.size(), QSizeF(240, 180));
    EXPECT_EQ(image.cacheMode(), Image::CacheMode::Always);
    EXPECT_FALSE(image.isDataRetained());
}

TEST(ZRImagingExtensions, OfSeveralBitmapsTheLastThatDiffersFromTheFirstSizeDecides)
{
    Image image;
    image.setSize({10, 10});
    image.addRepresentation(bitmap(20, 20));
    image.addRepresentation(bitmap(30, 30));
    image.addRepresentation(bitmap(10, 10)); // differs from what was set by now, but not from the first size
    fixSizeZR(image);
    EXPECT_EQ(image.size(), QSizeF(30, 30));
    EXPECT_TRUE(image.isDataRetained());
}

TEST(ZRImagingExtensions, ASmallerBitmapDecidesWhenItComesLast)
{
    Image image;
    image.setSize({25, 25});
    image.addRepresentation(bitmap(30, 30));
    image.addRepresentation(bitmap(20, 20));
    fixSizeZR(image);
    EXPECT_EQ(image.size(), QSizeF(20, 20));
}

TEST(ZRImagingExtensions, IgnoresRepresentationsThatAreNoBitmaps)
{
    Image image;
    image.setSize({25, 25});
    image.addRepresentation(ImageRepresentation());
    fixSizeZR(image);
    EXPECT_EQ(image.size(), QSizeF(25, 25));
    EXPECT_EQ(image.cacheMode(), Image::CacheMode::Always);
    EXPECT_FALSE(image.isDataRetained());
    image.addRepresentation(bitmap(30, 30));
    image.addRepresentation(ImageRepresentation());
    fixSizeZR(image);
    EXPECT_EQ(image.size(), QSizeF(30, 30));
}

TEST(ZRImagingExtensions, ComparesSizesExactly)
{
    Image image(QImage(30, 30, QImage::Format_RGB32));
    image.setSize({30.0000000000001, 30});
    fixSizeZR(image);
    EXPECT_EQ(image.size().width(), 30.0);
    EXPECT_TRUE(image.isDataRetained());
    Image higher(QImage(30, 30, QImage::Format_RGB32));
    higher.setSize({30, 31});
    fixSizeZR(higher);
    EXPECT_EQ(higher.size().height(), 30.0);
}

} // namespace
