#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It belongs to the keyed archives, and may change from version to
//  version.
//

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <optional>

/// The strings as which geometry stands in archives: "{1, 2.5}" and "{{1, 2}, {30, 40}}".
namespace platform::GeometryText {

QString toString(const QPointF &point);
QString toString(const QSizeF &size);
QString toString(const QRectF &rect);

// Blanks may stand everywhere. Nothing for any other text.
std::optional<QPointF> toPoint(const QString &text);
std::optional<QSizeF> toSize(const QString &text);
std::optional<QRectF> toRect(const QString &text);

} // namespace platform::GeometryText
