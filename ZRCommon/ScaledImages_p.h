#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QImage>
#include <QString>

#include <algorithm>
#include <array>
#include <cmath>

/// An image of the framework's resources, drawn for screens of one, two and three pixels a point.
class ScaledImages
{
public:
    /// @param name of the resource, without its suffix; images that are not there are null
    explicit ScaledImages(const QString &name)
    {
        for (int scale = 1; scale <= mostPixels; ++scale) {
            const QString suffix = scale == 1 ? QString() : QStringLiteral("@%1x").arg(scale);
            QImage &image = m_images[size_t(scale - 1)];
            image = QImage(QStringLiteral(":/ZRCommon/images/%1%2.png").arg(name, suffix));
            image.setDevicePixelRatio(scale);
        }
    }

    /// The one with pixels enough for a ratio.
    const QImage &image(qreal devicePixelRatio) const
    {
        return m_images[size_t(std::clamp(int(std::ceil(devicePixelRatio)), 1, mostPixels) - 1)];
    }

private:
    static constexpr int mostPixels = 3;
    std::array<QImage, mostPixels> m_images;
};
