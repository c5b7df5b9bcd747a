#include "Platform/Media/Plane_p.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace platform {
namespace {

constexpr int fractionBits = 14;
constexpr double lobes = 3;

/// The Lanczos kernel (Duchon: "Lanczos Filtering in One and Two Dimensions", 1979).
double kernel(double x)
{
    if (std::abs(x) < 1e-8)
        return 1;
    if (std::abs(x) >= lobes)
        return 0;
    const double angle = std::numbers::pi * x;
    return lobes * std::sin(angle) * std::sin(angle / lobes) / (angle * angle);
}

/// For each sample of a row of the target: which samples of the source make it up, and by how much.
struct Weights {
    int taps = 0;
    std::vector<int> first;
    std::vector<qint16> weights; // in fixed point, as many as taps for each sample; they add up to 1
};

/// @param count samples of the source
/// @param extent how many of them are the picture
Weights weightsFor(int count, double extent, int targetCount)
{
    const double step = extent / targetCount;
    const double width = std::max(step, 1.0); // of a lobe
    Weights result;
    result.taps = std::min(count, int(std::ceil(lobes * width * 2)) + 1);
    std::vector<double> exact(size_t(result.taps), 0.0);
    for (int target = 0; target < targetCount; ++target) {
        const double centre = (target + 0.5) * step;
        const int first = std::clamp(int(std::floor(centre - lobes * width)), 0, count - result.taps);
        double sum = 0;
        for (int tap = 0; tap < result.taps; ++tap)
            sum += exact[size_t(tap)] = kernel((first + tap + 0.5 - centre) / width);
        // What rounding leaves over goes to the largest weight, so that an even area stays as it is.
        int left = 1 << fractionBits;
        for (double &weight : exact) {
            weight = std::round(weight / sum * (1 << fractionBits));
            left -= int(weight);
        }
        *std::max_element(exact.begin(), exact.end()) += left;
        result.first.push_back(first);
        result.weights.insert(result.weights.end(), exact.begin(), exact.end());
    }
    return result;
}

/// Reduces the height. Works on whole rows at a time, which compilers turn into vector instructions.
Plane resampledInHeight(const Plane &source, double extent, int height)
{
    const Weights weights = weightsFor(source.height, extent, height);
    Plane result(source.width, height);
    std::vector<qint32> sums(size_t(source.width), 0);
    for (int y = 0; y < height; ++y) {
        std::fill(sums.begin(), sums.end(), 1 << (fractionBits - 1));
        qint32 *const sum = sums.data();
        for (int tap = 0; tap < weights.taps; ++tap) {
            const qint16 weight = weights.weights[size_t(y) * size_t(weights.taps) + size_t(tap)];
            if (weight == 0)
                continue;
            const uchar *const row = source.row(weights.first[size_t(y)] + tap);
            for (int x = 0; x < source.width; ++x)
                sum[x] += qint16(row[x]) * weight;
        }
        uchar *const row = result.row(y);
        for (int x = 0; x < source.width; ++x)
            row[x] = uchar(std::clamp(sum[x] >> fractionBits, 0, 255));
    }
    return result;
}

Plane transposed(const Plane &source)
{
    constexpr int block = 16; // both sides of which stay in the processor's nearest memory
    Plane result(source.height, source.width);
    for (int top = 0; top < source.height; top += block) {
        const int bottom = std::min(source.height, top + block);
        for (int left = 0; left < source.width; left += block) {
            const int right = std::min(source.width, left + block);
            for (int x = left; x < right; ++x) {
                for (int y = top; y < bottom; ++y)
                    result.row(x)[y] = source.row(y)[x];
            }
        }
    }
    return result;
}

void mirrorRows(Plane &plane)
{
    for (int y = 0; y < plane.height; ++y)
        std::reverse(plane.row(y), plane.row(y) + plane.width);
}

void flip(Plane &plane)
{
    for (int y = 0; y < plane.height / 2; ++y)
        std::swap_ranges(plane.row(y), plane.row(y) + plane.width, plane.row(plane.height - 1 - y));
}

} // namespace

Plane resampled(const Plane &source, const QSizeF &extent, const QSize &target, int orientation)
{
    const Plane lower = resampledInHeight(source, extent.height(), target.height());
    Plane result = resampledInHeight(transposed(lower), extent.width(), target.width());
    // What is there now is mirrored along its diagonal, which is orientation 5.
    if (!swapsSides(orientation))
        result = transposed(result);
    if (orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7)
        mirrorRows(result);
    if (orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8)
        flip(result);
    return result;
}

} // namespace platform
