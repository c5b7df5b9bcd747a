#include "Pictures.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>

namespace {

constexpr double pi = std::numbers::pi;

/// The colours of a time of day, from the top of the sky to the nearest ground.
struct Light {
    QColor zenith, sky, horizon, sun, near;
};

const Light dawn{0x3b4a78, 0xc98a9b, 0xfbd9b0, 0xfff3d6, 0x1f2440};
const Light noon{0x2f77b8, 0x8fc1e3, 0xe6f1f4, 0xffffff, 0x24493d};
const Light golden{0x49617f, 0xe9a15b, 0xffdf9e, 0xfff6dc, 0x3a2417};
const Light dusk{0x1d1b4a, 0x8a3f78, 0xf28f6b, 0xffd9a8, 0x140f2b};
const Light night{0x050b1e, 0x10234a, 0x35578a, 0xf3f1df, 0x040813};
const Light winter{0x7f95ad, 0xbccbd8, 0xf3f4f3, 0xffffff, 0x37475a};
const Light storm{0x2b333c, 0x5d6a72, 0xb7bdb6, 0xd9dcd2, 0x161c21};

QColor mixed(const QColor &a, const QColor &b, double share)
{
    const auto mix = [share](int x, int y) { return int(std::lround(x + (y - x) * share)); };
    return QColor(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()));
}

QColor faded(QColor colour, double opacity)
{
    colour.setAlphaF(float(opacity));
    return colour;
}

// A line of hills: octaves of smooth noise, each half as high as the one before. Values from about -1 to 1.
class Hills
{
public:
    Hills(quint32 seed, double waves, int octaves)
        : m_waves(waves)
        , m_octaves(octaves)
    {
        Random random(seed);
        for (double &value : m_values)
            value = random.between(-1, 1);
    }
    // `x` from 0 to 1 over the picture's width.
    double at(double x) const
    {
        double sum = 0;
        double height = 0.6;
        double waves = m_waves;
        for (int octave = 0; octave < m_octaves; ++octave, height *= 0.48, waves *= 2.07)
            sum += height * noise(x * waves + octave * 17.3);
        return sum;
    }

private:
    double noise(double x) const
    {
        const double whole = std::floor(x);
        const double part = x - whole;
        const double blend = part * part * (3 - 2 * part);
        const auto value = [this](double index) { return m_values[size_t(index) % m_values.size()]; };
        return value(whole) + (value(whole + 1) - value(whole)) * blend;
    }
    std::array<double, 256> m_values;
    double m_waves;
    int m_octaves;
};

QPainterPath hillPath(const QSizeF &size, const Hills &hills, double baseline, double amplitude, double bottom)
{
    QPainterPath path(QPointF(0, bottom));
    for (double x = 0; x <= size.width() + 2; x += 2)
        path.lineTo(x, baseline - amplitude * hills.at(x / size.width()));
    path.lineTo(size.width(), bottom);
    path.closeSubpath();
    return path;
}

void drawSky(QPainter &painter, const QSizeF &size, const Light &light, double horizon)
{
    QLinearGradient gradient(0, 0, 0, horizon);
    gradient.setColorAt(0, light.zenith);
    gradient.setColorAt(0.6, light.sky);
    gradient.setColorAt(1, light.horizon);
    painter.fillRect(QRectF(QPointF(), size), gradient);
}

void drawStars(QPainter &painter, const QSizeF &size, quint32 seed, double horizon)
{
    Random random(seed);
    for (int star = 0; star < 420; ++star) {
        const double height = random.between(0, 1);
        const QPointF place(random.between(0, size.width()), horizon * height);
        const double radius = random.below(12) == 0 ? random.between(1.3, 2) : random.between(0.4, 1.1);
        painter.setBrush(QColor(255, 250, 235, int(random.between(70, 255) * (1 - 0.7 * height))));
        painter.drawEllipse(place, radius, radius);
    }
}

void drawSun(QPainter &painter, const QPointF &centre, double radius, const QColor &colour)
{
    QRadialGradient glow(centre, radius * 9);
    glow.setColorAt(0, faded(colour, 0.75));
    glow.setColorAt(0.12, faded(colour, 0.38));
    glow.setColorAt(0.45, faded(colour, 0.1));
    glow.setColorAt(1, faded(colour, 0));
    painter.setBrush(glow);
    painter.drawEllipse(centre, radius * 9, radius * 9);
    painter.setBrush(colour);
    painter.drawEllipse(centre, radius, radius);
}

// Flat-bottomed heaps of soft discs, drifting in rows that thin out towards the horizon.
void drawClouds(QPainter &painter, const QSizeF &size, quint32 seed, const QColor &colour, double horizon)
{
    Random random(seed);
    for (int cloud = 0; cloud < 10; ++cloud) {
        const double nearness = random.between(0.25, 1);
        const QPointF place(random.between(-0.1, 1.1) * size.width(), horizon * (1.02 - nearness * 0.85));
        const double width = size.width() * 0.17 * nearness;
        for (int disc = 0; disc < 64; ++disc) {
            const double offset = random.between(-1, 1);
            const double radius = width * random.between(0.12, 0.3) * (1.15 - std::abs(offset));
            const QPointF centre(place.x() + offset * width, place.y() - radius * random.between(0.1, 0.55));
            QRadialGradient soft(centre, radius);
            soft.setColorAt(0, faded(colour, 0.2));
            soft.setColorAt(1, faded(colour, 0));
            painter.setBrush(soft);
            painter.drawEllipse(centre, radius * 1.6, radius);
        }
    }
}

/// Ranges of hills one behind the other, paler with distance, each with mist at its foot.
void drawRanges(QPainter &painter, const QSizeF &size, const Light &light, quint32 seed, int ranges, double top,
                double bottom, double roughness)
{
    for (int range = 0; range < ranges; ++range) {
        const double nearness = double(range + 1) / ranges;
        const QColor haze = mixed(light.horizon, light.sky, 0.35);
        const QColor colour = mixed(haze, light.near, std::pow(nearness, 1.25));
        const double baseline = size.height() * (top + (bottom - top) * std::pow(nearness, 1.2));
        const double amplitude = size.height() * (0.15 - 0.05 * nearness);
        const Hills hills(seed + quint32(range) * 31, 2.2 + range * 0.8, 3 + int(roughness * 4));
        QLinearGradient fill(0, baseline - amplitude, 0, baseline + size.height() * 0.24);
        fill.setColorAt(0, colour);
        fill.setColorAt(1, mixed(colour, haze, range + 1 == ranges ? 0.0 : 0.6));
        painter.fillPath(hillPath(size, hills, baseline, amplitude, size.height()), fill);
    }
}

void drawSea(QPainter &painter, const QSizeF &size, const Light &light, quint32 seed, double horizon, double sunX)
{
    QLinearGradient water(0, horizon, 0, size.height());
    water.setColorAt(0, mixed(light.horizon, light.sky, 0.55));
    water.setColorAt(0.35, mixed(light.sky, light.zenith, 0.6));
    water.setColorAt(1, mixed(light.zenith, light.near, 0.55));
    painter.fillRect(QRectF(0, horizon, size.width(), size.height() - horizon), water);
    Random random(seed);
    for (int wave = 0; wave < 2600; ++wave) {
        const double nearness = std::pow(random.between(0, 1), 1.7);
        const double y = horizon + 1 + (size.height() - horizon) * nearness;
        const double length = 6 + 90 * nearness * random.between(0.3, 1);
        // Below the sun the water glitters, in a path that widens towards the viewer.
        const bool glitters = random.below(3) == 0;
        const double spread = size.width() * (0.025 + 0.13 * nearness);
        const double x = glitters ? sunX + spread * (random.between(-1, 1) + random.between(-1, 1)) / 1.2
                                  : random.between(-0.05, 1.05) * size.width();
        const QColor colour = glitters ? faded(light.sun, random.between(0.25, 0.8))
                                       : faded(random.below(2) == 0 ? light.near : light.horizon, 0.1);
        painter.setBrush(colour);
        painter.drawEllipse(QPointF(x, y), length / 2, 0.5 + 1.9 * nearness);
    }
}

void drawBoat(QPainter &painter, const QPointF &place, double height, const QColor &hull, const QColor &sail)
{
    const auto at = [&](double x, double y) { return place + QPointF(x, y) * height; };
    painter.setBrush(sail);
    painter.drawPolygon(QPolygonF{at(0.02, -1), at(0.02, -0.16), at(0.42, -0.16)});
    painter.setBrush(mixed(sail, hull, 0.25));
    painter.drawPolygon(QPolygonF{at(-0.03, -0.88), at(-0.03, -0.16), at(-0.3, -0.16)});
    painter.setBrush(hull);
    painter.drawPolygon(QPolygonF{at(-0.38, -0.11), at(0.46, -0.11), at(0.34, 0.02), at(-0.28, 0.02)});
    painter.setBrush(faded(sail, 0.22));
    for (int ripple = 0; ripple < 7; ++ripple)
        painter.drawEllipse(at(0.03 * (ripple % 2), 0.08 + ripple * 0.07), (0.34 - ripple * 0.035) * height, 1.4);
}

void drawPine(QPainter &painter, const QPointF &foot, double height, Random &random)
{
    constexpr int tiers = 9;
    painter.drawRect(QRectF(foot.x() - height * 0.015, foot.y() - height * 0.2, height * 0.03, height * 0.2));
    for (int tier = 0; tier < tiers; ++tier) {
        const double share = double(tier) / tiers;
        const double left = height * 0.19 * (1 - share) * random.between(0.8, 1.1);
        const double right = height * 0.19 * (1 - share) * random.between(0.8, 1.1);
        const double hem = foot.y() - height * (0.07 + 0.8 * share);
        painter.drawPolygon(QPolygonF{QPointF(foot.x() - left, hem), QPointF(foot.x(), hem - height * 0.03),
                                      QPointF(foot.x() + right, hem), QPointF(foot.x(), hem - height * 0.2)});
    }
}

void drawForest(QPainter &painter, const QSizeF &size, const Light &light, quint32 seed)
{
    drawSky(painter, size, light, size.height() * 0.8);
    drawSun(painter, QPointF(size.width() * 0.62, size.height() * 0.3), size.height() * 0.035, light.sun);
    Random random(seed);
    constexpr int rows = 6;
    for (int row = 0; row < rows; ++row) {
        const double nearness = double(row + 1) / rows;
        const QColor colour = mixed(mixed(light.horizon, light.sky, 0.3), light.near, std::pow(nearness, 1.1));
        const double ground = size.height() * (0.5 + 0.62 * std::pow(nearness, 1.4));
        const Hills hills(seed + quint32(row), 1.6, 3);
        painter.fillPath(hillPath(size, hills, ground, size.height() * 0.06, size.height()), colour);
        painter.setBrush(colour);
        const double spacing = size.width() * (0.018 + 0.05 * nearness);
        for (double x = -spacing; x < size.width() + spacing; x += spacing * random.between(0.5, 1.4)) {
            const double foot = ground - size.height() * 0.06 * hills.at(std::clamp(x / size.width(), 0.0, 1.0));
            drawPine(painter, QPointF(x, foot + 6),
                     size.height() * (0.1 + 0.42 * nearness * nearness) * random.between(0.65, 1.15), random);
        }
        QLinearGradient mist(0, ground - size.height() * 0.22, 0, ground + size.height() * 0.1);
        mist.setColorAt(0, faded(light.horizon, 0));
        mist.setColorAt(1, faded(light.horizon, row + 1 == rows ? 0 : 0.5));
        painter.fillRect(QRectF(QPointF(), size), mist);
    }
}

// One dune with the light from its left: the whole in light, and a shadow to the right of an edge that winds
// down from the crest.
void drawDune(QPainter &painter, const QPointF &foot, const QSizeF &extent, double bottom, const QColor &lit,
              const QColor &shaded)
{
    const double left = foot.x() - extent.width() * 0.62;
    const double right = foot.x() + extent.width() * 0.38;
    const double width = extent.width();
    const double base = foot.y();
    const QPointF crest(foot.x(), base - extent.height());
    QPainterPath lee(crest);
    lee.cubicTo(foot.x() + width * 0.08, base - extent.height() * 0.62, foot.x() + width * 0.2, base, right, base);
    QPainterPath body(QPointF(left, base));
    body.cubicTo(foot.x() - width * 0.36, base, foot.x() - width * 0.12, base - extent.height() * 0.86, crest.x(),
                 crest.y());
    body.connectPath(lee);
    body.closeSubpath();
    QLinearGradient sand(left, base, crest.x(), crest.y());
    sand.setColorAt(0, mixed(lit, shaded, 0.3));
    sand.setColorAt(1, lit);
    painter.fillPath(body, sand);
    QPainterPath shadow(crest);
    shadow.cubicTo(foot.x() + width * 0.03, base - extent.height() * 0.68, foot.x() - width * 0.11,
                   base - extent.height() * 0.35, foot.x() + width * 0.02, base);
    shadow.lineTo(right, base);
    shadow.connectPath(lee.toReversed());
    QLinearGradient dark(0, crest.y(), 0, base);
    dark.setColorAt(0, shaded);
    dark.setColorAt(1, mixed(shaded, lit, 0.4));
    painter.fillPath(shadow, dark);
    QLinearGradient plain(0, base, 0, bottom);
    plain.setColorAt(0, mixed(lit, shaded, 0.3));
    plain.setColorAt(1, mixed(lit, shaded, 0.05));
    painter.fillRect(QRectF(0, base - 0.5, 4000, bottom - base), plain);
}

void drawDunes(QPainter &painter, const QSizeF &size, const Light &light, quint32 seed)
{
    drawSky(painter, size, light, size.height() * 0.55);
    drawSun(painter, QPointF(size.width() * 0.17, size.height() * 0.2), size.height() * 0.04, light.sun);
    Random random(seed);
    const QColor haze = mixed(light.horizon, light.sky, 0.4);
    constexpr int dunes = 8;
    const std::array<double, dunes> places{0.15, 0.62, 0.95, 0.36, 0.8, 0.1, 0.7, 0.28};
    for (int dune = 0; dune < dunes; ++dune) {
        const double nearness = double(dune + 1) / dunes;
        const double base = size.height() * (0.53 + 0.4 * std::pow(nearness, 1.6));
        const QSizeF extent(size.width() * (0.42 + 0.85 * nearness) * random.between(0.9, 1.1),
                            size.height() * (0.07 + 0.25 * nearness) * random.between(0.85, 1.1));
        drawDune(painter, QPointF(places[size_t(dune)] * size.width(), base), extent, size.height(),
                 mixed(haze, QColor(0xf2b36b), 0.3 + 0.7 * nearness),
                 mixed(haze, QColor(0x7d3f26), 0.3 + 0.7 * nearness));
    }
}

void drawTown(QPainter &painter, const QSizeF &size, const Light &light, quint32 seed, double shore)
{
    Random random(seed);
    constexpr int rows = 3;
    for (int row = 0; row < rows; ++row) {
        const double nearness = double(row + 1) / rows;
        const QColor wall = mixed(mixed(light.horizon, light.sky, 0.6), light.near, 0.3 + 0.6 * nearness);
        double x = -20;
        while (x < size.width()) {
            const double width = size.width() * random.between(0.025, 0.07);
            const double height = size.height() * random.between(0.08, 0.34) * (1.25 - 0.45 * nearness);
            const QRectF house(x, shore - height, width, height);
            painter.fillRect(house, wall);
            const double pane = 5;
            for (double wx = house.left() + 5; wx + pane < house.right() - 3; wx += 10) {
                for (double wy = house.top() + 7; wy + pane < shore - 6; wy += 13) {
                    if (random.below(100) < 38)
                        painter.fillRect(QRectF(wx, wy, pane, pane + 2),
                                         faded(random.below(4) == 0 ? QColor(0xfff3cf) : QColor(0xffc466),
                                               random.between(0.35, 0.95)));
                }
            }
            x += width * random.between(0.85, 1.5);
        }
    }
}

// Turns what is above the shore over into the water, squeezed and broken by ripples.
void drawReflection(QPainter &painter, const QSizeF &size, const Light &light, double shore, quint32 seed)
{
    const auto *image = dynamic_cast<QImage *>(painter.device());
    const QImage above = image->copy(0, 0, int(size.width()), int(shore)).mirrored();
    Random random(seed);
    const double depth = size.height() - shore;
    for (int y = 0; y < int(depth); ++y) {
        const double distance = y / depth;
        const double sway = 5 * distance * std::sin(y * (0.45 - 0.25 * distance)) + random.between(-1, 1);
        const int source = std::min(above.height() - 1, int(y * 1.12));
        painter.drawImage(QPointF(sway, shore + y), above, QRectF(0, source, above.width(), 1));
    }
    QLinearGradient water(0, shore, 0, size.height());
    water.setColorAt(0, faded(mixed(light.sky, light.near, 0.4), 0.18));
    water.setColorAt(1, faded(light.near, 0.72));
    painter.fillRect(QRectF(0, shore, size.width(), depth), water);
    painter.setBrush(faded(light.horizon, 0.16));
    for (int ripple = 0; ripple < 160; ++ripple) {
        const double nearness = random.between(0, 1);
        painter.drawEllipse(QPointF(random.between(0, size.width()), shore + depth * nearness * nearness),
                            8 + 60 * nearness, 0.4 + nearness);
    }
}

using Draw = std::function<void(QPainter &, const QSizeF &)>;

Draw mountains(const Light &light, quint32 seed, QPointF sun, double roughness)
{
    return [=](QPainter &painter, const QSizeF &size) {
        drawSky(painter, size, light, size.height() * 0.72);
        if (light.zenith == night.zenith)
            drawStars(painter, size, seed, size.height() * 0.7);
        else if (light.zenith != dawn.zenith)
            drawClouds(painter, size, seed, mixed(light.horizon, light.sun, 0.5), size.height() * 0.5);
        drawSun(painter, QPointF(sun.x() * size.width(), sun.y() * size.height()), size.height() * 0.035, light.sun);
        drawRanges(painter, size, light, seed, 6, 0.42, 0.93, roughness);
    };
}

Draw coast(const Light &light, quint32 seed, double sunX, double sunY, bool boat)
{
    return [=](QPainter &painter, const QSizeF &size) {
        const double horizon = size.height() * 0.56;
        drawSky(painter, size, light, horizon);
        drawClouds(painter, size, seed, mixed(light.horizon, light.sun, 0.4), horizon);
        drawSun(painter, QPointF(sunX * size.width(), sunY * size.height()), size.height() * 0.038, light.sun);
        painter.save();
        painter.setClipRect(QRectF(0, 0, size.width(), horizon));
        const Hills headland(seed, 1.4, 5);
        painter.fillPath(hillPath(size, headland, horizon + size.height() * 0.012, size.height() * 0.11, horizon),
                         mixed(light.horizon, light.near, 0.55));
        painter.restore();
        drawSea(painter, size, light, seed, horizon, sunX * size.width());
        if (boat)
            drawBoat(painter, QPointF(size.width() * 0.3, size.height() * 0.7), size.height() * 0.2, light.near,
                     mixed(light.sun, light.horizon, 0.25));
    };
}

Draw lake(const Light &light, quint32 seed)
{
    return [=](QPainter &painter, const QSizeF &size) {
        const double shore = size.height() * 0.58;
        drawSky(painter, size, light, shore);
        drawClouds(painter, size, seed, mixed(light.horizon, light.sun, 0.5), shore * 0.8);
        painter.save();
        painter.setClipRect(QRectF(0, 0, size.width(), shore));
        drawRanges(painter, size, light, seed, 4, 0.33, 0.6, 0.8);
        painter.restore();
        drawReflection(painter, size, light, shore, seed);
    };
}

Draw town(const Light &light, quint32 seed)
{
    return [=](QPainter &painter, const QSizeF &size) {
        const double shore = size.height() * 0.66;
        drawSky(painter, size, light, shore);
        if (light.zenith == night.zenith)
            drawStars(painter, size, seed, shore);
        drawSun(painter, QPointF(size.width() * 0.72, size.height() * 0.2), size.height() * 0.04, light.sun);
        drawTown(painter, size, light, seed, shore);
        drawReflection(painter, size, light, shore, seed);
    };
}

} // namespace

QList<Picture> landscapes()
{
    constexpr QSize wide(1440, 960);
    constexpr QSize tall(960, 1440);
    constexpr QSize panorama(1920, 800);
    const auto photo = [](const char *caption, const char *file, QSize size, Draw draw, int orientation = 1) {
        return Picture{QString::fromUtf8(caption), QString::fromUtf8(file), size, std::move(draw), true, orientation};
    };
    return {
        photo("First light over the Karwendel", "IMG_0101.JPG", wide, mountains(dawn, 11, {0.32, 0.42}, 0.6)),
        photo("IMG_0102.JPG", "IMG_0102.JPG", wide, mountains(noon, 29, {0.8, 0.14}, 0.9)),
        photo("Evening, looking west", "IMG_0103.JPG", wide, mountains(golden, 47, {0.64, 0.36}, 0.4)),
        photo("The long ridge", "IMG_0104.JPG", panorama, mountains(dusk, 5, {0.25, 0.5}, 0.7)),
        photo("Night above the hut", "IMG_0105.JPG", wide, mountains(night, 83, {0.75, 0.2}, 0.8)),
        photo("New snow", "IMG_0106.jpg", wide, mountains(winter, 61, {0.5, 0.18}, 0.9)),
        photo("Gorge, morning", "IMG_0107.JPG", tall, mountains(dawn, 97, {0.6, 0.36}, 0.9), 6),
        photo("Regatta at noon", "IMG_0110.JPG", wide, coast(noon, 3, 0.7, 0.16, true)),
        photo("Sunset, Lofoten", "IMG_0111.JPG", wide, coast(dusk, 21, 0.62, 0.5, false)),
        photo("Heading home", "IMG_0112.JPG", wide, coast(golden, 34, 0.55, 0.4, true)),
        photo("Before the storm", "IMG_0113.JPG", panorama, coast(storm, 55, 0.4, 0.2, true)),
        photo("Beach.JPG", "IMG_0114.JPG", tall, coast(dawn, 72, 0.5, 0.44, false), 8),
        photo("Königssee", "IMG_0120.JPG", wide, lake(noon, 13)),
        photo("Mirror lake at dusk", "IMG_0121.JPG", wide, lake(dusk, 40), 3),
        photo("Forest in the fog", "IMG_0130.JPG", wide,
              [](QPainter &painter, const QSizeF &size) { drawForest(painter, size, winter, 8); }),
        photo(
            "Last sun in the pines", "IMG_0131.JPG", tall,
            [](QPainter &painter, const QSizeF &size) { drawForest(painter, size, golden, 19); }, 5),
        photo("Dunes near Merzouga", "IMG_0140.JPG", wide,
              [](QPainter &painter, const QSizeF &size) { drawDunes(painter, size, golden, 4); }),
        photo("Harbour lights", "IMG_0150.tif", wide, town(night, 16)),
        photo("東京の夕暮れ", "IMG_0151.JPG", wide, town(dusk, 27)),
    };
}
