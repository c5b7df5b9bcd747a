#include "Platform/Media/Plane_p.h"

#include <random>

#include <gtest/gtest.h>

namespace {

using platform::Plane;
using platform::resampled;

Plane randomPlane(int width, int height, quint32 seed = 3)
{
    std::mt19937 random(seed);
    Plane plane(width, height);
    for (uchar &sample : plane.bytes)
        sample = uchar(random());
    return plane;
}

/// Rows of letters, a character for each sample.
Plane plane(const std::vector<std::string> &rows)
{
    Plane result(int(rows[0].size()), int(rows.size()));
    for (int y = 0; y < result.height; ++y)
        std::copy(rows[size_t(y)].begin(), rows[size_t(y)].end(), result.row(y));
    return result;
}

std::vector<std::string> letters(const Plane &plane)
{
    std::vector<std::string> rows;
    for (int y = 0; y < plane.height; ++y)
        rows.emplace_back(plane.row(y), plane.row(y) + plane.width);
    return rows;
}

TEST(PlaneResampler, LeavesAnEvenAreaEvenAtEverySize)
{
    for (const int value : {0, 1, 128, 254, 255}) {
        const Plane source(61, 47, uchar(value));
        for (const QSize target : {QSize(61, 47), QSize(30, 20), QSize(1, 1), QSize(7, 47), QSize(90, 100)}) {
            const Plane result = resampled(source, QSizeF(60.5, 46.25), target);
            ASSERT_EQ(QSize(result.width, result.height), target);
            for (const uchar sample : result.bytes)
                ASSERT_EQ(sample, value);
        }
    }
}

TEST(PlaneResampler, KeepsEverySampleOfAPictureThatKeepsItsSize)
{
    Plane source(37, 23);
    for (size_t i = 0; i < source.bytes.size(); ++i)
        source.bytes[i] = uchar(i * i * 31 % 251);
    EXPECT_EQ(resampled(source, QSizeF(37, 23), QSize(37, 23)).bytes, source.bytes);
}

TEST(PlaneResampler, TakesNothingFromBehindTheExtent)
{
    // What fills the source up is far behind the picture, so that no kernel of a sample in it reaches there.
    Plane source(100, 100, 255);
    for (int y = 0; y < 80; ++y)
        std::fill_n(source.row(y), 80, uchar(10));
    const Plane result = resampled(source, QSizeF(60, 60), QSize(10, 10));
    for (const uchar sample : result.bytes)
        EXPECT_EQ(sample, 10);
}

TEST(PlaneResampler, TurnsThePictureAsEachOrientationSays)
{
    const Plane source = plane({"@@PPPPPP", "@@PPPPPP", "``pppppp", "``pppppp"});
    const QSizeF extent(8, 4);
    // Corners of an upright picture: where @, P, ` and p come to lie.
    const struct {
        int orientation;
        const char *corners; // upper left, upper right, lower left, lower right
    } cases[] = {{1, "@P`p"}, {2, "P@p`"}, {3, "p`P@"}, {4, "`p@P"},
                 {5, "@`Pp"}, {6, "`@pP"}, {7, "pP`@"}, {8, "Pp@`"}};
    for (const auto &test : cases) {
        const Plane result = resampled(source, extent, QSize(8, 4), test.orientation);
        const bool isTall = test.orientation >= 5;
        ASSERT_EQ(QSize(result.width, result.height), isTall ? QSize(4, 8) : QSize(8, 4));
        const auto rows = letters(result);
        const auto near = [](char a, char b) { return std::abs(a - b) <= 4; };
        EXPECT_TRUE(near(rows.front().front(), test.corners[0]) && near(rows.front().back(), test.corners[1])
                    && near(rows.back().front(), test.corners[2]) && near(rows.back().back(), test.corners[3]))
            << test.orientation << " " << rows.front() << " " << rows.back();
    }
}

TEST(PlaneResampler, TurnsOddSizesWithoutLosingARow)
{
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const Plane upright = resampled(randomPlane(37, 23), QSizeF(37, 23), QSize(13, 7));
        const Plane turned = resampled(randomPlane(37, 23), QSizeF(37, 23), QSize(13, 7), orientation);
        for (int y = 0; y < 7; ++y) {
            for (int x = 0; x < 13; ++x) {
                const int mirroredX = 12 - x, flippedY = 6 - y;
                const QPoint place[] = {{x, y}, {mirroredX, y}, {mirroredX, flippedY}, {x, flippedY},
                                        {y, x}, {flippedY, x},  {flippedY, mirroredX}, {y, mirroredX}};
                const QPoint at = place[orientation - 1];
                ASSERT_EQ(turned.row(at.y())[at.x()], upright.row(y)[x]) << orientation << " " << x << " " << y;
            }
        }
    }
}

TEST(PlaneResampler, KeepsBrightnessAndClampsOvershoot)
{
    Plane source(64, 64);
    for (int y = 0; y < 64; ++y)
        std::fill_n(source.row(y) + 32, 32, uchar(255)); // a hard edge
    const Plane result = resampled(source, QSizeF(64, 64), QSize(16, 16));
    double mean = 0;
    for (const uchar sample : result.bytes)
        mean += sample / 256.0;
    EXPECT_NEAR(mean, 127.5, 1);
    EXPECT_EQ(result.row(8)[0], 0);
    EXPECT_EQ(result.row(8)[15], 255);
}

} // namespace
