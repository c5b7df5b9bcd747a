#include "Likeness.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace benchmarkSupport {
namespace {

/// One channel of a picture.
struct Plane {
    int width, height;
    std::vector<double> values;

    Plane(int planeWidth, int planeHeight)
        : width(planeWidth)
        , height(planeHeight)
        , values(size_t(planeWidth) * size_t(planeHeight))
    { }
    double &at(int x, int y) { return values[size_t(y) * size_t(width) + size_t(x)]; }
    double at(int x, int y) const { return values[size_t(y) * size_t(width) + size_t(x)]; }
    Plane transposed() const
    {
        Plane result(height, width);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                result.at(y, x) = at(x, y);
        }
        return result;
    }
};

double lanczos(double x)
{
    constexpr double lobes = 3;
    if (std::abs(x) < 1e-9)
        return 1;
    if (std::abs(x) >= lobes)
        return 0;
    const double angle = std::numbers::pi * x;
    return lobes * std::sin(angle) * std::sin(angle / lobes) / (angle * angle);
}

Plane reducedInWidth(const Plane &plane, int width)
{
    Plane result(width, plane.height);
    const double step = double(plane.width) / width;
    for (int x = 0; x < width; ++x) {
        const double centre = (x + 0.5) * step;
        const int first = std::max(0, int(std::floor(centre - 3 * step)));
        const int last = std::min(plane.width - 1, int(std::ceil(centre + 3 * step)));
        std::vector<double> weights;
        double sum = 0;
        for (int i = first; i <= last; ++i)
            sum += weights.emplace_back(lanczos((i + 0.5 - centre) / step));
        for (int y = 0; y < plane.height; ++y) {
            double value = 0;
            for (int i = first; i <= last; ++i)
                value += plane.at(i, y) * weights[size_t(i - first)];
            result.at(x, y) = value / sum;
        }
    }
    return result;
}

Plane luma(const QImage &picture)
{
    const QImage image = picture.convertToFormat(QImage::Format_RGB888);
    Plane plane(image.width(), image.height());
    for (int y = 0; y < image.height(); ++y) {
        const uchar *line = image.constScanLine(y);
        for (int x = 0; x < image.width(); ++x)
            plane.at(x, y) = 0.299 * line[3 * x] + 0.587 * line[3 * x + 1] + 0.114 * line[3 * x + 2];
    }
    return plane;
}

Plane blurredInWidth(const Plane &plane)
{
    constexpr int radius = 5;
    constexpr double sigma = 1.5;
    std::array<double, 2 * radius + 1> weights;
    double sum = 0;
    for (int i = -radius; i <= radius; ++i)
        sum += weights[size_t(i + radius)] = std::exp(-i * i / (2 * sigma * sigma));
    Plane result(plane.width, plane.height);
    for (int y = 0; y < plane.height; ++y) {
        for (int x = 0; x < plane.width; ++x) {
            for (int i = -radius; i <= radius; ++i)
                result.at(x, y) +=
                    weights[size_t(i + radius)] / sum * plane.at(std::clamp(x + i, 0, plane.width - 1), y);
        }
    }
    return result;
}

Plane blurredProduct(const Plane &a, const Plane &b)
{
    Plane product(a.width, a.height);
    std::transform(a.values.begin(), a.values.end(), b.values.begin(), product.values.begin(), std::multiplies<>());
    return blurredInWidth(blurredInWidth(product).transposed()).transposed();
}

} // namespace

QImage lanczosReduced(const QImage &picture, const QSize &size)
{
    const QImage image = picture.convertToFormat(QImage::Format_RGB888);
    QImage result(size, QImage::Format_RGB888);
    for (int channel = 0; channel < 3; ++channel) {
        Plane plane(image.width(), image.height());
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                plane.at(x, y) = image.constScanLine(y)[3 * x + channel];
        }
        plane = reducedInWidth(reducedInWidth(plane, size.width()).transposed(), size.height()).transposed();
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x)
                result.scanLine(y)[3 * x + channel] = uchar(std::clamp(std::lround(plane.at(x, y)), 0L, 255L));
        }
    }
    return result;
}

double structuralSimilarity(const QImage &picture, const QImage &other)
{
    constexpr double c1 = 0.01 * 255 * 0.01 * 255, c2 = 0.03 * 255 * 0.03 * 255;
    const Plane a = luma(picture), b = luma(other);
    Plane ones(a.width, a.height);
    std::fill(ones.values.begin(), ones.values.end(), 1);
    const Plane meanA = blurredProduct(a, ones), meanB = blurredProduct(b, ones);
    const Plane aa = blurredProduct(a, a), bb = blurredProduct(b, b), ab = blurredProduct(a, b);
    double sum = 0;
    for (size_t i = 0; i < a.values.size(); ++i) {
        const double ma = meanA.values[i], mb = meanB.values[i];
        const double varianceA = aa.values[i] - ma * ma, varianceB = bb.values[i] - mb * mb;
        const double covariance = ab.values[i] - ma * mb;
        sum += (2 * ma * mb + c1) * (2 * covariance + c2) / ((ma * ma + mb * mb + c1) * (varianceA + varianceB + c2));
    }
    return sum / double(a.values.size());
}

} // namespace benchmarkSupport
