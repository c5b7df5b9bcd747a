#pragma once

#include <QColor>
#include <QImage>

#include <algorithm>
#include <cstdlib>

namespace testSupport {

/// How far two pictures are from each other, as one sees them, which leaves small differences in how text is drawn out.
struct PictureDistance {
    double mean = 0; ///< Of the colour values, 0 to 255.
    double share = 0; ///< Of the pixels that are plainly different, 0 to 1.
};

/// @param size that both are reduced to
inline PictureDistance distance(const QImage &one, const QImage &other, const QSize &size)
{
    const auto reduced = [&](const QImage &image) {
        return image.convertToFormat(QImage::Format_RGB32)
            .scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    };
    const QImage a = reduced(one), b = reduced(other);
    qint64 sum = 0, different = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            const int red = std::abs(qRed(p) - qRed(q)), green = std::abs(qGreen(p) - qGreen(q)),
                      blue = std::abs(qBlue(p) - qBlue(q));
            sum += red + green + blue;
            different += std::max({red, green, blue}) > 40;
        }
    }
    const double pixels = double(size.width()) * size.height();
    return {double(sum) / (3 * pixels), double(different) / pixels};
}

} // namespace testSupport
