#include "Pictures.h"

#include <QFont>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

const QColor paper(0xf3ead8);
const QColor ink(0x1b1b1e);
const QColor vermilion(0xe4412b);
const QColor ultramarine(0x2438a6);
const QColor ochre(0xf0b128);
const QColor teal(0x0f7c78);

QFont poster(const char *family, double pixels, bool bold = true, double spacing = 100)
{
    QFont font(QString::fromUtf8(family));
    font.setPixelSize(std::max(1, int(std::lround(pixels))));
    font.setBold(bold);
    font.setLetterSpacing(QFont::PercentageSpacing, spacing);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

constexpr const char *sans = "DejaVu Sans";
constexpr const char *serif = "DejaVu Serif";

/// Letters as a shape whose own outline, not its font's line box, fills the given box's width.
QPainterPath lettersAcross(const QString &text, const char *family, const QPointF &topLeft, double width)
{
    QPainterPath path;
    path.addText(QPointF(), poster(family, 400), text);
    const QRectF box = path.boundingRect();
    const double scale = width / box.width();
    QTransform transform;
    transform.translate(topLeft.x(), topLeft.y());
    transform.scale(scale, scale);
    transform.translate(-box.left(), -box.top());
    return transform.map(path);
}

void write(QPainter &painter, const QPointF &baseline, const QString &text, const QColor &colour, double pixels,
           bool bold = false)
{
    painter.setFont(poster(sans, pixels, bold));
    painter.setPen(colour);
    painter.drawText(baseline, text);
    painter.setPen(Qt::NoPen);
}

/// The small print: lines set flush left below one another.
void writeLines(QPainter &painter, QPointF baseline, const QStringList &lines, const QColor &colour, double pixels)
{
    for (qsizetype i = 0; i < lines.size(); ++i) {
        write(painter, baseline, lines[i], colour, pixels, i == 0);
        baseline.ry() += pixels * 1.4;
    }
}

void sound(QPainter &painter, const QSizeF &size)
{
    painter.fillRect(QRectF(QPointF(), size), vermilion);
    const double u = size.width() / 100;
    const QPointF centre(u * 66, u * 52);
    for (int ring = 14; ring > 0; --ring) {
        painter.setBrush(ring % 2 == 0 ? paper : ring > 9 ? vermilion : ink);
        const double radius = u * 3.6 * ring;
        painter.drawPie(QRectF(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius), 90 * 16,
                        (ring % 3 == 0 ? 270 : 180) * 16);
    }
    painter.fillPath(lettersAcross(QStringLiteral("Klang"), sans, {u * 6, size.height() - u * 32}, u * 72), paper);
    writeLines(painter, {u * 6, u * 9},
               {QStringLiteral("Neue Musik"), QStringLiteral("Sechs Abende"), QStringLiteral("Halle 4")}, paper, u * 3);
}

void ampersand(QPainter &painter, const QSizeF &size)
{
    painter.fillRect(QRectF(QPointF(), size), paper);
    const double u = size.width() / 100;
    painter.fillPath(lettersAcross(QStringLiteral("&"), serif, {u * -6, u * 24}, u * 118), ultramarine);
    painter.setBrush(vermilion);
    painter.drawEllipse(QPointF(u * 80, u * 17), u * 9, u * 9);
    writeLines(painter, {u * 6, u * 10}, {QStringLiteral("Bread & Roses"), QStringLiteral("A reading")}, ink, u * 3.6);
}

void bauklotz(QPainter &painter, const QSizeF &size)
{
    painter.fillRect(QRectF(QPointF(), size), paper);
    const double side = size.width() / 6;
    Random random(12);
    const QList<QColor> colours{vermilion, ultramarine, ochre, ink, teal};
    for (int row = 0; row < 6; ++row) {
        for (int column = 0; column < 6; ++column) {
            const QRectF cell(column * side, row * side, side, side);
            painter.fillRect(cell, random.below(3) == 0 ? colours[random.below(5)] : paper);
            painter.setBrush(colours[random.below(5)]);
            const int corner = random.below(4);
            const QPointF pivot(cell.left() + (corner % 2) * side, cell.top() + (corner / 2) * side);
            painter.save();
            painter.setClipRect(cell);
            if (random.below(4) == 0)
                painter.drawEllipse(cell.center(), side * 0.33, side * 0.33);
            else
                painter.drawEllipse(pivot, side, side);
            painter.restore();
        }
    }
    const double below = 6 * side;
    painter.fillRect(QRectF(0, below, size.width(), size.height() - below), ink);
    painter.fillPath(lettersAcross(QStringLiteral("Form + Farbe"), sans, {side * 0.3, below + side * 0.32}, side * 4.7),
                     paper);
    write(painter, {side * 0.3, size.height() - side * 0.3}, QStringLiteral("Werkschau der Klasse Brandt"), ochre,
          side * 0.19);
}

void numerals(QPainter &painter, const QSizeF &size)
{
    painter.fillRect(QRectF(QPointF(), size), QColor(0xf7efdf));
    const double u = size.width() / 100;
    painter.setCompositionMode(QPainter::CompositionMode_Multiply);
    painter.fillPath(lettersAcross(QStringLiteral("19"), sans, {u * 5, u * 10}, u * 84), QColor(0xff5a4a));
    painter.fillPath(lettersAcross(QStringLiteral("67"), sans, {u * 13, u * 46}, u * 84), QColor(0x2aa6c9));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.fillRect(QRectF(u * 6, size.height() - u * 17, u * 88, u * 0.6), ink);
    writeLines(painter, {u * 6, size.height() - u * 10},
               {QStringLiteral("Graphic annual"), QStringLiteral("Overprints in two colours")}, ink, u * 3.2);
}

void coffee(QPainter &painter, const QSizeF &size)
{
    painter.fillRect(QRectF(QPointF(), size), QColor(0x2b1d16));
    const double u = size.width() / 100;
    const QPointF cup(u * 50, u * 60);
    painter.setBrush(QColor(0xd8b98c));
    painter.drawEllipse(cup, u * 40, u * 40);
    painter.setBrush(QColor(0xf6efe2));
    painter.drawEllipse(cup, u * 29, u * 29);
    painter.drawRoundedRect(QRectF(cup.x() + u * 25, cup.y() - u * 5, u * 20, u * 10), u * 5, u * 5);
    painter.setBrush(QColor(0x5b3520));
    painter.drawEllipse(cup, u * 24, u * 24);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0xc99a66), u * 1.5, Qt::SolidLine, Qt::RoundCap));
    QPainterPath swirl(cup);
    for (int step = 1; step < 260; ++step) {
        const double angle = step * 0.08;
        swirl.lineTo(cup + QPointF(std::cos(angle), std::sin(angle)) * u * 0.082 * step);
    }
    painter.drawPath(swirl);
    painter.setPen(Qt::NoPen);
    painter.fillPath(lettersAcross(QStringLiteral("café"), serif, {u * 8, u * 106}, u * 56), QColor(0xf6efe2));
    writeLines(painter, {u * 70, u * 118}, {QStringLiteral("ouvert"), QStringLiteral("dès 7 h")}, QColor(0xd8b98c),
               u * 4);
}

void moon(QPainter &painter, const QSizeF &size)
{
    painter.fillRect(QRectF(QPointF(), size), QColor(0x10152e));
    const double u = size.width() / 100;
    const QPointF centre(u * 50, u * 52);
    const double radius = u * 38;
    painter.setBrush(QColor(0xf4e7c1));
    const double pitch = u * 2.1;
    for (int row = -24; row <= 24; ++row) {
        for (int column = -24; column <= 24; ++column) {
            const QPointF offset((column + (row % 2 == 0 ? 0 : 0.5)) * pitch, row * pitch * 0.87);
            const double distance = std::hypot(offset.x(), offset.y()) / radius;
            if (distance > 1)
                continue;
            const double light = std::clamp(0.62 - (offset.x() * 0.75 + offset.y() * 0.5) / radius * 0.75, 0.05, 1.0)
                * std::sqrt(1.02 - distance * distance);
            painter.drawEllipse(centre + offset, pitch * 0.56 * light, pitch * 0.56 * light);
        }
    }
    painter.fillPath(lettersAcross(QStringLiteral("MOON"), sans, {u * 8, size.height() - u * 32}, u * 84),
                     QColor(0xf4e7c1));
    write(painter, {u * 8, size.height() - u * 5}, QStringLiteral("Open nights at the observatory"), QColor(0x8d9ac9),
          u * 3.2);
}

void regatta(QPainter &painter, const QSizeF &size)
{
    painter.fillRect(QRectF(QPointF(), size), QColor(0xbfe0e2));
    const double u = size.width() / 100;
    painter.setBrush(ochre);
    painter.drawEllipse(QPointF(u * 74, u * 28), u * 14, u * 14);
    const auto sail = [&](double x, double foot, double height, const QColor &colour) {
        painter.setBrush(colour);
        painter.drawPolygon(QPolygonF{QPointF(x, foot), QPointF(x, foot - height), QPointF(x + height * 0.5, foot)});
        painter.setBrush(colour.darker(125));
        painter.drawPolygon(
            QPolygonF{QPointF(x - u, foot), QPointF(x - u, foot - height * 0.85), QPointF(x - height * 0.3, foot)});
    };
    sail(u * 30, u * 88, u * 62, vermilion);
    sail(u * 66, u * 88, u * 42, paper);
    sail(u * 88, u * 88, u * 28, ultramarine);
    for (int wave = 0; wave < 9; ++wave) {
        QPainterPath path(QPointF(0, size.height()));
        for (double x = 0; x <= size.width() + 4; x += 4)
            path.lineTo(x, u * (84 + wave * 6.5) + u * 2.2 * std::sin(x / (u * 5.5) + wave * 1.9));
        path.lineTo(size.width(), size.height());
        painter.fillPath(path, QColor::fromHsv(190 + wave * 4, 120 + wave * 13, 205 - wave * 17));
    }
    painter.fillPath(lettersAcross(QStringLiteral("REGATTA"), sans, {u * 7, size.height() - u * 22}, u * 86), paper);
}

void stripes(QPainter &painter, const QSizeF &size)
{
    painter.fillRect(QRectF(QPointF(), size), ochre);
    const double u = size.width() / 100;
    painter.save();
    painter.translate(u * 50, u * 50);
    painter.rotate(-32);
    for (int stripe = 0; stripe < 12; ++stripe)
        painter.fillRect(QRectF(u * -90, u * (-60 + stripe * 9.5), u * 180, u * (0.6 + stripe * 0.62)), ink);
    painter.fillRect(QRectF(u * -90, u * -13, u * 180, u * 25), vermilion);
    painter.fillPath(lettersAcross(QStringLiteral("SWING"), sans, {u * -40, u * -9}, u * 64), paper);
    writeLines(painter, {u * 29, u * -4},
               {QStringLiteral("Orchestra"), QStringLiteral("Molinari"), QStringLiteral("Sat, 21:00")}, paper, u * 2.9);
    painter.restore();
}

} // namespace

QList<Picture> posters()
{
    constexpr QSize sheet(1050, 1400);
    constexpr QSize square(1200, 1200);
    const auto poster = [](const char *caption, const char *file, QSize size, auto draw) {
        return Picture{QString::fromUtf8(caption), QString::fromUtf8(file), size, draw, false, 1};
    };
    return {
        poster("Klang – Neue Musik", "Klang.png", sheet, sound),
        poster("Bread & Roses", "Ampersand.png", sheet, ampersand),
        poster("Form + Farbe", "Form und Farbe.webp", {1200, 1500}, bauklotz),
        poster("1967", "1967.tif", {1200, 1400}, numerals),
        poster("Café", "Café.png", {1050, 1450}, coffee),
        poster("Moon", "Moon.bmp", {900, 1200}, moon),
        poster("Regatta poster", "Regatta.JPG", sheet, regatta),
        poster("Swing", "Swing.png", square, stripes),
    };
}
