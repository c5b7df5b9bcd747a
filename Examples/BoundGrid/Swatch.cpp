#include "Swatch.h"

#include "Platform/Interface/View.h"

#include <QGuiApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <tuple>
#include <vector>

namespace {

const Swatch *swatchOf(const platform::ObjectPointer &object)
{
    return dynamic_cast<const Swatch *>(object.get());
}

/// @param text the colour of the text beside it, with a trace of which it is edged: white could not be seen on white
void drawSwatch(QPainter &painter, const QRectF &area, const QColor &color, QColor text)
{
    text.setAlpha(60);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(text);
    painter.setBrush(color);
    painter.drawRoundedRect(area.adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
}

QIcon iconOf(const QColor &color)
{
    constexpr double sharpest = 3; // of the pixel ratios of screens
    QPixmap pixmap(QSize(20, 14) * sharpest);
    pixmap.setDevicePixelRatio(sharpest);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    drawSwatch(painter, QRectF(0, 0, 20, 14), color, QGuiApplication::palette().color(QPalette::Text));
    painter.end();
    QIcon icon(pixmap);
    icon.addPixmap(pixmap, QIcon::Selected); // otherwise a selected one is tinted
    return icon;
}

} // namespace

QList<platform::ObjectPointer> namedSwatches()
{
    std::vector<std::shared_ptr<Swatch>> swatches;
    for (const QString &name : QColor::colorNames()) {
        if (name != QLatin1String("transparent"))
            swatches.push_back(std::make_shared<Swatch>(name));
    }
    // Families of a twelfth of the circle, each from light to dark. A grey has the hue -1.
    const auto place = [](const QColor &color) {
        return std::tuple((color.hslHue() + 30) / 30, -color.lightness(), color.rgb());
    };
    std::stable_sort(swatches.begin(), swatches.end(),
                     [&](const auto &a, const auto &b) { return place(a->color) < place(b->color); });
    const auto same = [](const auto &a, const auto &b) { return a->color == b->color; }; // "gray" and "grey"
    return {swatches.begin(), std::unique(swatches.begin(), swatches.end(), same)};
}

QVariant SwatchController::data(const QModelIndex &index, int role) const
{
    if (role != Qt::DecorationRole)
        return ArrayController::data(index, role);
    const Swatch *const swatch = swatchOf(data(index, ObjectRole).value<platform::ObjectPointer>());
    return swatch ? iconOf(swatch->color) : QVariant();
}

QString SwatchController::displayText(const platform::Object &object) const
{
    return static_cast<const Swatch &>(object).name;
}

void SwatchCell::drawInteriorWithFrame(QPainter &painter, const QRectF &frame, const platform::View &view)
{
    const Swatch *const swatch = swatchOf(representedObject());
    if (!swatch)
        return;
    const QPalette &palette = view.palette();
    constexpr double margin = 6;
    const double textHeight = painter.fontMetrics().height();
    if (isHighlighted()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(highlightColorWithFrame(frame, view));
        painter.drawRoundedRect(frame, margin, margin);
    }
    drawSwatch(painter, frame.adjusted(margin, margin, -margin, -margin - textHeight), swatch->color,
               palette.color(QPalette::Text));

    painter.setPen(isHighlighted() ? highlightedTextColor(view) : palette.color(QPalette::Text));
    const QRectF line = frame.adjusted(margin, frame.height() - margin / 2 - textHeight, -margin, -margin / 2);
    painter.drawText(line, Qt::AlignCenter,
                     painter.fontMetrics().elidedText(swatch->name, Qt::ElideRight, int(line.width())));
}

QString SwatchCell::accessibleName() const
{
    const Swatch *const swatch = swatchOf(representedObject());
    return swatch ? swatch->name : QString();
}
