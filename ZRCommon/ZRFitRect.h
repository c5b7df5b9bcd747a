#pragma once

#include <QRectF>

/// The largest rectangle of an aspect ratio (width by height) within another one, in its middle.
inline QRectF ZRFitRect(const QRectF &rect, float aspectRatio)
{
    const double aspect = aspectRatio;
    if (rect.width() / rect.height() > aspect) {
        const double width = aspect * rect.height();
        return QRectF(rect.x() + (rect.width() - width) * 0.5, rect.y(), width, rect.height());
    }
    const double height = rect.width() / aspect;
    return QRectF(rect.x(), rect.y() + (rect.height() - height) * 0.5, rect.width(), height);
}
