#include "Pictures.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace {

/// A wall, a table before it, and the light that falls on both from the upper left.
struct Room {
    QColor wall, table;
    double edge = 0.62; ///< Where the table's far edge lies, as a share of the height.
};

void drawRoom(QPainter &painter, const QSizeF &size, const Room &room)
{
    QRadialGradient wall(size.width() * 0.25, size.height() * 0.15, size.width() * 1.05);
    wall.setColorAt(0, room.wall.lighter(128));
    wall.setColorAt(0.5, room.wall);
    wall.setColorAt(1, room.wall.darker(165));
    painter.fillRect(QRectF(QPointF(), size), wall);
    const double edge = size.height() * room.edge;
    QLinearGradient shade(0, edge - size.height() * 0.1, 0, edge);
    shade.setColorAt(0, QColor(0, 0, 0, 0));
    shade.setColorAt(1, QColor(0, 0, 0, 60));
    painter.fillRect(QRectF(0, edge - size.height() * 0.1, size.width(), size.height() * 0.1), shade);
    QLinearGradient table(0, edge, size.width(), size.height());
    table.setColorAt(0, room.table.lighter(125));
    table.setColorAt(1, room.table.darker(140));
    painter.fillRect(QRectF(0, edge, size.width(), size.height() - edge), table);
    painter.fillRect(QRectF(0, edge, size.width(), 2), QColor(255, 255, 255, 60));
}

/// A soft shadow on the table, thrown to the right of what stands at the foot.
void drawShadow(QPainter &painter, const QPointF &foot, double width)
{
    painter.save();
    painter.translate(foot + QPointF(width * 0.24, 0));
    painter.scale(1, 0.2);
    QRadialGradient soft(QPointF(), width * 0.82);
    soft.setColorAt(0, QColor(20, 10, 5, 190));
    soft.setColorAt(0.55, QColor(20, 10, 5, 100));
    soft.setColorAt(1, QColor(20, 10, 5, 0));
    painter.setBrush(soft);
    painter.drawEllipse(QPointF(), width * 0.82, width * 0.82);
    painter.restore();
}

/// Fills a round body: light on its upper left, its own shadow on the lower right, a highlight.
void fillRound(QPainter &painter, const QPainterPath &body, const QColor &colour, double gloss)
{
    const QRectF box = body.boundingRect();
    const double radius = std::max(box.width(), box.height());
    QRadialGradient light(box.left() + box.width() * 0.34, box.top() + box.height() * 0.36, radius * 0.82);
    light.setColorAt(0, colour.lighter(138));
    light.setColorAt(0.4, colour);
    light.setColorAt(0.8, colour.darker(165));
    light.setColorAt(1, colour.darker(215));
    painter.fillPath(body, light);
    const QPointF spot(box.left() + box.width() * 0.32, box.top() + box.height() * 0.32);
    QRadialGradient highlight(spot, radius * 0.2);
    highlight.setColorAt(0, QColor(255, 255, 255, int(235 * gloss)));
    highlight.setColorAt(1, QColor(255, 255, 255, 0));
    painter.save();
    painter.setClipPath(body);
    painter.setBrush(highlight);
    painter.drawEllipse(spot, radius * 0.2, radius * 0.2);
    painter.restore();
}

/// A body turned on a lathe: half widths at heights from the foot (0) to the top (1).
using Profile = QList<QPointF>;

QPainterPath turned(const QPointF &foot, double height, const Profile &profile)
{
    const double bulge = 0.09; // how much of an ellipse the round foot and rim show
    const auto side = [&](qsizetype index, double direction) {
        return foot + QPointF(direction * profile[index].x(), -profile[index].y()) * height;
    };
    QPainterPath path(side(0, -1));
    for (qsizetype i = 1; i < profile.size(); ++i) {
        const QPointF from = side(i - 1, -1);
        const QPointF to = side(i, -1);
        const double middle = (from.y() + to.y()) / 2;
        path.cubicTo(QPointF(from.x(), middle), QPointF(to.x(), middle), to);
    }
    const qsizetype top = profile.size() - 1;
    const double rim = profile[top].x() * height;
    path.cubicTo(side(top, -1) - QPointF(0, rim * bulge * 2), side(top, 1) - QPointF(0, rim * bulge * 2), side(top, 1));
    for (qsizetype i = top; i > 0; --i) {
        const QPointF from = side(i, 1);
        const QPointF to = side(i - 1, 1);
        const double middle = (from.y() + to.y()) / 2;
        path.cubicTo(QPointF(from.x(), middle), QPointF(to.x(), middle), to);
    }
    const double base = profile[0].x() * height;
    path.cubicTo(side(0, 1) + QPointF(0, base * bulge * 3), side(0, -1) + QPointF(0, base * bulge * 3), side(0, -1));
    return path;
}

void drawTurned(QPainter &painter, const QPointF &foot, double height, const Profile &profile, const QColor &colour,
                double gloss)
{
    const QPainterPath body = turned(foot, height, profile);
    const QRectF box = body.boundingRect();
    drawShadow(painter, foot, box.width());
    QLinearGradient light(box.left(), 0, box.right(), 0);
    light.setColorAt(0, colour.darker(118));
    light.setColorAt(0.26, colour.lighter(126));
    light.setColorAt(0.55, colour);
    light.setColorAt(0.9, colour.darker(200));
    light.setColorAt(1, colour.darker(165));
    painter.fillPath(body, light);
    if (gloss > 0) {
        painter.save();
        painter.setClipPath(body);
        QLinearGradient shine(box.left() + box.width() * 0.2, 0, box.left() + box.width() * 0.32, 0);
        shine.setColorAt(0, QColor(255, 255, 255, 0));
        shine.setColorAt(0.5, QColor(255, 255, 255, int(150 * gloss)));
        shine.setColorAt(1, QColor(255, 255, 255, 0));
        painter.fillRect(QRectF(box.left(), box.top() + box.height() * 0.08, box.width(), box.height() * 0.8), shine);
        painter.restore();
    }
    // The dark mouth of an open vessel.
    const double rim = profile.last().x() * height;
    painter.setBrush(colour.darker(260));
    painter.drawEllipse(foot - QPointF(0, profile.last().y() * height), rim * 0.93, rim * 0.13);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour.lighter(135), 2));
    painter.drawEllipse(foot - QPointF(0, profile.last().y() * height), rim * 0.96, rim * 0.15);
    painter.setPen(Qt::NoPen);
}

const Profile bottleProfile{{0.15, 0}, {0.16, 0.06}, {0.16, 0.5}, {0.15, 0.58}, {0.05, 0.74}, {0.045, 0.95}, {0.06, 1}};
const Profile tallBottle{{0.1, 0}, {0.11, 0.04}, {0.105, 0.55}, {0.09, 0.62}, {0.035, 0.74}, {0.03, 0.96}, {0.042, 1}};
const Profile jugProfile{{0.2, 0}, {0.3, 0.18}, {0.34, 0.42}, {0.24, 0.72}, {0.17, 0.86}, {0.22, 1}};
const Profile vaseProfile{{0.14, 0}, {0.2, 0.14}, {0.25, 0.42}, {0.15, 0.78}, {0.11, 0.9}, {0.16, 1}};
const Profile bowlProfile{{0.45, 0}, {0.5, 0.08}, {1.1, 0.55}, {1.35, 1}};
const Profile cupProfile{{0.3, 0}, {0.34, 0.08}, {0.52, 0.5}, {0.58, 1}};
const Profile boxProfile{{0.28, 0}, {0.28, 0.5}, {0.28, 1}};

void drawStem(QPainter &painter, const QPointF &from, const QPointF &to, double width)
{
    painter.setPen(QPen(QColor(0x4a3320), width, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(from, to);
    painter.setPen(Qt::NoPen);
}

void drawLeaf(QPainter &painter, const QPointF &from, const QPointF &to, const QColor &colour)
{
    const QPointF along = to - from;
    const QPointF across(-along.y() * 0.35, along.x() * 0.35);
    QPainterPath leaf(from);
    leaf.quadTo(from + along * 0.45 + across, to);
    leaf.quadTo(from + along * 0.55 - across, from);
    QLinearGradient light(from, to);
    light.setColorAt(0, colour.darker(150));
    light.setColorAt(1, colour.lighter(130));
    painter.fillPath(leaf, light);
    painter.setPen(QPen(colour.lighter(160), 1.5));
    painter.drawLine(from, from + along * 0.85);
    painter.setPen(Qt::NoPen);
}

void drawApple(QPainter &painter, const QPointF &foot, double radius, const QColor &colour)
{
    drawShadow(painter, foot, radius * 1.8);
    const QPointF c = foot - QPointF(0, radius * 0.92);
    QPainterPath body(c + QPointF(0, -radius * 0.78));
    body.cubicTo(c + QPointF(radius * 0.5, -radius * 1.15), c + QPointF(radius * 1.2, -radius * 0.75),
                 c + QPointF(radius * 1.02, radius * 0.05));
    body.cubicTo(c + QPointF(radius * 0.92, radius * 0.7), c + QPointF(radius * 0.45, radius * 1.05),
                 c + QPointF(0, radius * 0.9));
    body.cubicTo(c + QPointF(-radius * 0.45, radius * 1.05), c + QPointF(-radius * 0.92, radius * 0.7),
                 c + QPointF(-radius * 1.02, radius * 0.05));
    body.cubicTo(c + QPointF(-radius * 1.2, -radius * 0.75), c + QPointF(-radius * 0.5, -radius * 1.15),
                 c + QPointF(0, -radius * 0.78));
    fillRound(painter, body, colour, 0.6);
    drawStem(painter, c + QPointF(0, -radius * 0.72), c + QPointF(radius * 0.14, -radius * 1.18), radius * 0.08);
    drawLeaf(painter, c + QPointF(radius * 0.08, -radius * 1), c + QPointF(radius * 0.72, -radius * 1.22),
             QColor(0x5c8a34));
}

void drawPear(QPainter &painter, const QPointF &foot, double radius, const QColor &colour)
{
    drawShadow(painter, foot, radius * 1.7);
    const auto at = [&](double x, double y) { return foot + QPointF(x, -y) * radius; };
    QPainterPath body(at(0, 2.75));
    body.cubicTo(at(0.42, 2.75), at(0.44, 2.2), at(0.58, 1.72));
    body.cubicTo(at(0.76, 1.3), at(1.08, 1.12), at(1.02, 0.66));
    body.cubicTo(at(0.96, 0.16), at(0.5, -0.04), at(0, 0));
    body.cubicTo(at(-0.5, -0.04), at(-0.96, 0.16), at(-1.02, 0.66));
    body.cubicTo(at(-1.08, 1.12), at(-0.76, 1.3), at(-0.58, 1.72));
    body.cubicTo(at(-0.44, 2.2), at(-0.42, 2.75), at(0, 2.75));
    fillRound(painter, body, colour, 0.45);
    drawStem(painter, at(0, 2.7), at(0.18, 3.2), radius * 0.09);
}

void drawRoundFruit(QPainter &painter, const QPointF &foot, const QSizeF &radius, const QColor &colour, double gloss)
{
    drawShadow(painter, foot, radius.width() * 1.8);
    QPainterPath body;
    body.addEllipse(foot - QPointF(0, radius.height() * 0.95), radius.width(), radius.height());
    fillRound(painter, body, colour, gloss);
}

void drawLemon(QPainter &painter, const QPointF &foot, double radius)
{
    drawShadow(painter, foot, radius * 2.2);
    const QPointF c = foot - QPointF(0, radius * 0.8);
    QPainterPath body(c + QPointF(-radius * 1.38, -radius * 0.06));
    body.cubicTo(c + QPointF(-radius * 0.9, -radius * 1.02), c + QPointF(radius * 0.7, -radius * 1.08),
                 c + QPointF(radius * 1.4, 0));
    body.cubicTo(c + QPointF(radius * 0.75, radius * 1.05), c + QPointF(-radius * 0.85, radius * 1.05),
                 c + QPointF(-radius * 1.38, -radius * 0.06));
    fillRound(painter, body, QColor(0xf2cc35), 0.5);
}

void drawTulips(QPainter &painter, const QPointF &mouth, double height, quint32 seed, const QList<QColor> &colours)
{
    Random random(seed);
    for (qsizetype i = 0; i < colours.size(); ++i) {
        const double lean = (double(i) / double(colours.size() - 1) - 0.5) * 1.5 + random.between(-0.1, 0.1);
        const QPointF head = mouth + QPointF(lean * height * 0.62, -height * random.between(0.62, 1));
        QPainterPath stem(mouth);
        stem.quadTo(mouth + QPointF(lean * height * 0.1, -height * 0.5), head);
        painter.strokePath(stem, QPen(QColor(0x55803a), height * 0.02, Qt::SolidLine, Qt::RoundCap));
        drawLeaf(painter, mouth + QPointF(lean * height * 0.06, -height * 0.02),
                 mouth + QPointF(lean * height * 0.75, -height * random.between(0.3, 0.55)), QColor(0x4f7d3c));
        const double r = height * 0.1;
        painter.save();
        painter.translate(head);
        painter.rotate(lean * 26);
        for (const double side : {-0.62, 0.62, 0.0}) {
            QPainterPath petal(QPointF(side * r * 0.3, r * 0.9));
            petal.cubicTo(QPointF(side * r - r * 0.85, r * 0.6), QPointF(side * r - r * 0.6, -r * 0.9),
                          QPointF(side * r * 1.15, -r * 1.35));
            petal.cubicTo(QPointF(side * r + r * 0.6, -r * 0.9), QPointF(side * r + r * 0.85, r * 0.6),
                          QPointF(side * r * 0.3, r * 0.9));
            fillRound(painter, petal, side == 0 ? colours[i].lighter(112) : colours[i].darker(115), 0.15);
        }
        painter.restore();
    }
}

void drawBook(QPainter &painter, const QRectF &box, const QColor &cover)
{
    drawShadow(painter, QPointF(box.center().x(), box.bottom()), box.width());
    QLinearGradient light(box.topLeft(), box.topRight());
    light.setColorAt(0, cover.lighter(120));
    light.setColorAt(1, cover.darker(150));
    painter.setBrush(light);
    painter.drawRoundedRect(box, 4, 4);
    painter.fillRect(box.adjusted(box.width() * 0.06, box.height() * 0.14, 3, -box.height() * 0.14),
                     QColor(0xe8dcc0).darker(105));
    painter.setBrush(light);
    painter.drawRoundedRect(QRectF(box.left(), box.top(), box.width() * 0.075, box.height()), 4, 4);
    painter.setPen(QPen(QColor(120, 100, 70, 90), 1));
    for (double y = box.top() + box.height() * 0.22; y < box.bottom() - box.height() * 0.18; y += 4)
        painter.drawLine(QPointF(box.left() + box.width() * 0.09, y), QPointF(box.right() + 2, y));
    painter.setPen(Qt::NoPen);
}

/// Places on the table in shares of the picture: x, and y below the table's edge.
class Table
{
public:
    Table(QPainter &painter, const QSizeF &size, const Room &room)
        : m_size(size)
    {
        drawRoom(painter, size, room);
    }
    QPointF at(double x, double y) const { return QPointF(x * m_size.width(), y * m_size.height()); }
    double unit() const { return m_size.height(); }

private:
    QSizeF m_size;
};

const Room grey{0xb9b2a6, 0xa08a74};
const Room green{0x7d8c74, 0x6d4a30};
const Room blue{0x5b7388, 0xd8cdbb};
const Room red{0x8e3b2e, 0x3c2419};
const Room dark{0x3a3431, 0x4d3422};
const Room cream{0xe4d9c3, 0xb98e62};

void bottles(QPainter &painter, const QSizeF &size)
{
    const Table table(painter, size, grey);
    drawTurned(painter, table.at(0.3, 0.74), table.unit() * 0.52, tallBottle, QColor(0xe9e3d4), 0.1);
    drawTurned(painter, table.at(0.62, 0.73), table.unit() * 0.45, bottleProfile, QColor(0x7c8f9e), 0.3);
    drawTurned(painter, table.at(0.44, 0.76), table.unit() * 0.34, jugProfile, QColor(0xf2ece0), 0.2);
    drawTurned(painter, table.at(0.74, 0.78), table.unit() * 0.2, boxProfile, QColor(0xc88d5a), 0);
    drawTurned(painter, table.at(0.57, 0.83), table.unit() * 0.14, cupProfile, QColor(0xd9c9a8), 0.2);
}

void pears(QPainter &painter, const QSizeF &size)
{
    const Table table(painter, size, green);
    drawPear(painter, table.at(0.34, 0.78), table.unit() * 0.115, QColor(0xb9b03a));
    drawPear(painter, table.at(0.52, 0.83), table.unit() * 0.125, QColor(0xc9a93c));
    drawPear(painter, table.at(0.7, 0.79), table.unit() * 0.11, QColor(0xa4a945));
}

void apples(QPainter &painter, const QSizeF &size)
{
    const Table table(painter, size, dark);
    drawApple(painter, table.at(0.56, 0.74), table.unit() * 0.13, QColor(0x9fae3b));
    drawApple(painter, table.at(0.36, 0.8), table.unit() * 0.145, QColor(0xb3261e));
    drawApple(painter, table.at(0.68, 0.86), table.unit() * 0.135, QColor(0xc2402a));
}

void oranges(QPainter &painter, const QSizeF &size)
{
    const Table table(painter, size, blue);
    const double u = table.unit();
    const QPointF foot = table.at(0.5, 0.84);
    for (const auto &[x, y] : {std::pair(-0.17, 0.27), std::pair(0.16, 0.27), std::pair(0.0, 0.3),
                               std::pair(-0.08, 0.4), std::pair(0.09, 0.39)}) {
        QPainterPath orange;
        orange.addEllipse(foot + QPointF(x, -y) * u, u * 0.105, u * 0.105);
        fillRound(painter, orange, QColor(0xe8821e), 0.4);
    }
    drawTurned(painter, foot, u * 0.23, {{0.45, 0}, {0.5, 0.08}, {1.1, 0.55}, {1.35, 1}}, QColor(0xf3efe6), 0.25);
    painter.setClipRect(QRectF(0, 0, size.width(), foot.y() - u * 0.232));
    for (const auto &[x, y] : {std::pair(-0.19, 0.25), std::pair(0.18, 0.26), std::pair(-0.01, 0.27)}) {
        QPainterPath orange;
        orange.addEllipse(foot + QPointF(x, -y) * u, u * 0.105, u * 0.1);
        fillRound(painter, orange, QColor(0xee8d27), 0.4);
    }
    painter.setClipping(false);
    drawRoundFruit(painter, table.at(0.84, 0.9), QSizeF(u * 0.105, u * 0.1), QColor(0xe67f1a), 0.4);
}

void tulips(QPainter &painter, const QSizeF &size)
{
    const Table table(painter, size, cream);
    const double height = table.unit() * 0.34;
    const QPointF foot = table.at(0.5, 0.84);
    drawTulips(painter, foot - QPointF(0, height * 0.98), table.unit() * 0.4, 5,
               {0xd9412f, 0xe8a02e, 0xc92a4b, 0xf0d9c8, 0xe0562e, 0x9c2a56});
    drawTurned(painter, foot, height, vaseProfile, QColor(0x5f8fa3), 0.5);
}

void lemons(QPainter &painter, const QSizeF &size)
{
    const Table table(painter, size, {0x2f5d6b, 0xe7e0d2});
    drawTurned(painter, table.at(0.66, 0.75), table.unit() * 0.46, jugProfile, QColor(0xf5f4ee), 0.5);
    drawLemon(painter, table.at(0.3, 0.8), table.unit() * 0.085);
    drawLemon(painter, table.at(0.47, 0.87), table.unit() * 0.09);
}

void breakfast(QPainter &painter, const QSizeF &size)
{
    const Table table(painter, size, {0xd9b48f, 0xf1ebe0});
    drawTurned(painter, table.at(0.64, 0.75), table.unit() * 0.4, vaseProfile, QColor(0x34577a), 0.6);
    drawTurned(painter, table.at(0.32, 0.82), table.unit() * 0.17, cupProfile, QColor(0xfbfaf6), 0.3);
    painter.setBrush(QColor(0x5a3620));
    const double rim = table.unit() * 0.17 * 0.58;
    painter.drawEllipse(table.at(0.32, 0.82) - QPointF(0, table.unit() * 0.166), rim * 0.84, rim * 0.1);
    drawApple(painter, table.at(0.83, 0.87), table.unit() * 0.095, QColor(0xc4352a));
}

void books(QPainter &painter, const QSizeF &size)
{
    const Table table(painter, size, red);
    const double u = table.unit();
    const auto shelf = [&](double x, double foot, double width, double height) {
        return QRectF(x * size.width(), foot * u - height * u, width * size.width(), height * u);
    };
    drawBook(painter, shelf(0.22, 0.86, 0.46, 0.09), QColor(0x2d4f66));
    drawBook(painter, shelf(0.25, 0.772, 0.42, 0.07), QColor(0xb5832f));
    drawBook(painter, shelf(0.23, 0.704, 0.4, 0.06), QColor(0x44613f));
    drawApple(painter, QPointF(0.45 * size.width(), 0.65 * u), u * 0.1, QColor(0xa8b03c));
    drawTurned(painter, table.at(0.81, 0.84), u * 0.5, tallBottle, QColor(0x20382c), 0.7);
}

void plums(QPainter &painter, const QSizeF &size)
{
    const Table table(painter, size, {0xa9a48e, 0x54606a});
    const double u = table.unit();
    const std::array places{std::pair(0.28, 0.76), std::pair(0.44, 0.74), std::pair(0.6, 0.77),
                            std::pair(0.36, 0.85), std::pair(0.53, 0.87), std::pair(0.74, 0.88)};
    for (const auto &[x, y] : places)
        drawRoundFruit(painter, table.at(x, y), QSizeF(u * 0.085, u * 0.095), QColor(0x4a2a5c), 0.35);
    drawLeaf(painter, table.at(0.6, 0.6), table.at(0.75, 0.54), QColor(0x5f8540));
}

} // namespace

QList<Picture> stillLifes()
{
    constexpr QSize wide(1440, 1080);
    constexpr QSize tall(1080, 1350);
    const auto photo = [](const char *caption, const char *file, QSize size, auto draw, int orientation = 1) {
        return Picture{QString::fromUtf8(caption), QString::fromUtf8(file), size, draw, true, orientation};
    };
    return {
        photo("Five vessels", "DSC_2001.JPG", wide, bottles),
        photo("Three pears", "DSC_2002.JPG", wide, pears),
        photo("Apples from the garden", "DSC_2003.JPG", wide, apples),
        photo("Bowl of oranges", "DSC_2004.webp", wide, oranges),
        photo("Tulips in May", "DSC_2005.JPG", tall, tulips, 6),
        photo("Lemons & jug", "DSC_2006.JPG", wide, lemons),
        photo("Petit déjeuner", "DSC_2007.JPG", wide, breakfast),
        photo("DSC_2008.JPG", "DSC_2008.JPG", wide, books),
        photo("Zwetschgen", "DSC_2009.JPG", wide, plums, 3),
    };
}
