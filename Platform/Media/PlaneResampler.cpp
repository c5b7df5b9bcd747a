#include "Platform/Media/Plane_p.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <type_traits>

namespace platform {
namespace {

constexpr int weightBits = 14; // behind the point
constexpr int betweenBits = 6; // of samples between the two passes
constexpr double lobes = 3;

/// The Lanczos kernel (Duchon: "Lanczos Filtering in One and Two Dimensions", 1979).
double kernel(double x)
{
    if (std::abs(x) < 1e-8)
        return 1;
    if (std::abs(x) >= lobes)
        return 0;
    // The sine of three times an angle follows from that of the angle.
    static_assert(lobes == 3);
    const double angle = std::numbers::pi / lobes * x, sine = std::sin(angle);
    return (3 - 4 * sine * sine) * sine * sine / (lobes * angle * angle);
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
    // The samples are the means of their areas, as decoders hand them out: softer than the picture, which a second
    // difference takes back (the first terms of the inverse of a mean over one sample). A picture that keeps its size
    // keeps its samples.
    const double correction = step > 1 ? 1.0 / 24 : 0;
    Weights result;
    result.taps = std::min(count, int(std::ceil(lobes * width * 2)) + 1);
    std::vector<double> exact(size_t(result.taps), 0.0);
    std::vector<double> kernels(size_t(result.taps) + 2, 0.0); // with those on both sides
    for (int target = 0; target < targetCount; ++target) {
        const double centre = (target + 0.5) * step;
        const int first = std::clamp(int(std::floor(centre - lobes * width)), 0, count - result.taps);
        double sum = 0;
        for (size_t i = 0; i < kernels.size(); ++i)
            kernels[i] = kernel((first + double(i) - 0.5 - centre) / width);
        for (size_t tap = 0; tap < exact.size(); ++tap) {
            const double before = kernels[tap], here = kernels[tap + 1], behind = kernels[tap + 2];
            sum += exact[tap] = here + (2 * here - before - behind) * correction;
        }
        // What rounding leaves over goes to the largest weight, so that an even area stays as it is.
        int left = 1 << weightBits;
        for (double &each : exact) {
            each = std::round(each / sum * (1 << weightBits));
            left -= int(each);
        }
        *std::max_element(exact.begin(), exact.end()) += left;
        result.first.push_back(first);
        result.weights.insert(result.weights.end(), exact.begin(), exact.end());
    }
    return result;
}

/// The samples of a picture while it is worked on.
template <class Sample>
struct Samples {
    int width, height;
    std::vector<Sample> values;

    Samples(int w, int h)
        : width(w)
        , height(h)
        , values(size_t(w) * size_t(h))
    { }
    Sample *row(int y) { return values.data() + size_t(y) * size_t(width); }
    const Sample *row(int y) const { return values.data() + size_t(y) * size_t(width); }
};

/// Changes the height. Works on whole rows at a time, which compilers turn into vector instructions.
/// @tparam shift how many bits the sums have behind the point beyond those of the result
template <int shift, class Result, class Source>
void resampleInHeight(const Source &source, double extent, Result &result)
{
    using Sample = std::remove_reference_t<decltype(*result.row(0))>;
    constexpr int least = std::numeric_limits<Sample>::min(), most = std::numeric_limits<Sample>::max();
    const Weights weights = weightsFor(source.height, extent, result.height);
    std::vector<qint32> sums(size_t(source.width), 0);
    for (int y = 0; y < result.height; ++y) {
        std::fill(sums.begin(), sums.end(), 1 << (shift - 1));
        qint32 *const sum = sums.data();
        for (int tap = 0; tap < weights.taps; ++tap) {
            const qint16 weight = weights.weights[size_t(y) * size_t(weights.taps) + size_t(tap)];
            if (weight == 0)
                continue;
            const auto *const row = source.row(weights.first[size_t(y)] + tap);
            for (int x = 0; x < source.width; ++x)
                sum[x] += qint16(row[x]) * weight;
        }
        auto *const row = result.row(y);
        for (int x = 0; x < source.width; ++x)
            row[x] = Sample(std::clamp(sum[x] >> shift, least, most));
    }
}

template <class Picture>
Picture transposed(const Picture &source)
{
    constexpr int block = 16; // both sides of which stay in the processor's nearest memory
    Picture result(source.height, source.width);
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
    Samples<qint16> lower(source.width, target.height());
    resampleInHeight<weightBits - betweenBits>(source, extent.height(), lower);
    Plane result(target.height(), target.width());
    resampleInHeight<weightBits + betweenBits>(transposed(lower), extent.width(), result);
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
