// Draws the framework's own images, at 1, 2 and 3 pixels to a point:
//
//     draw_images FOLDER

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

namespace {

/// The pill behind the count of a drag: 29 by 24 points, on which digits stand from 3 points above its lower edge.
void drawPhotoDragCount(QPainter &painter)
{
    const QRectF pill(1.5, 1.5, 26, 20);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < 3; ++i) { // a soft shadow
        painter.setBrush(QColor(0, 0, 0, 28));
        painter.drawRoundedRect(pill.adjusted(-1, -0.5, 1, 1).translated(0, 0.6 * i), 11, 11);
    }
    QLinearGradient red(pill.topLeft(), pill.bottomLeft());
    red.setColorAt(0, QColor(0xf0, 0x50, 0x45));
    red.setColorAt(1, QColor(0xc8, 0x1e, 0x1e));
    painter.setPen(QPen(Qt::white, 1.6));
    painter.setBrush(red);
    painter.drawRoundedRect(pill, 10, 10);
}

/// A tick in a green disc, 18 by 18 points: the document has this photo.
void drawCurrentDocBadge(QPainter &painter)
{
    const QRectF disc(1.5, 1.5, 14, 14);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < 3; ++i) {
        painter.setBrush(QColor(0, 0, 0, 26));
        painter.drawEllipse(disc.adjusted(-0.8, -0.3, 0.8, 1).translated(0, 0.4 * i));
    }
    QLinearGradient green(disc.topLeft(), disc.bottomLeft());
    green.setColorAt(0, QColor(0x4c, 0xc2, 0x5b));
    green.setColorAt(1, QColor(0x1e, 0x8f, 0x3c));
    painter.setPen(QPen(Qt::white, 1.4));
    painter.setBrush(green);
    painter.drawEllipse(disc);
    QPainterPath tick(QPointF(5.2, 8.8));
    tick.lineTo(7.7, 11.2);
    tick.lineTo(12, 6.1);
    painter.setPen(QPen(Qt::white, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(tick);
}

bool draw(const QDir &folder, const char *name, const QSize &points, void (*drawing)(QPainter &))
{
    for (int scale = 1; scale <= 3; ++scale) {
        QImage image(points * scale, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        {
            QPainter painter(&image);
            painter.setRenderHint(QPainter::Antialiasing);
            painter.scale(scale, scale);
            drawing(painter);
        }
        const QString suffix = scale == 1 ? QString() : QStringLiteral("@%1x").arg(scale);
        if (!image.save(folder.filePath(QString(QLatin1String(name) + suffix + QStringLiteral(".png")))))
            return false;
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    if (argc != 2)
        return 2;
    const QDir folder(QFile::decodeName(argv[1]));
    const bool isDrawn = draw(folder, "PhotoDragCount", QSize(29, 24), drawPhotoDragCount)
        && draw(folder, "CurrentDocBadge", QSize(18, 18), drawCurrentDocBadge);
    return isDrawn ? 0 : 1;
}
