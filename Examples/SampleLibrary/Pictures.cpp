#include "Pictures.h"

#include <QPainter>
#include <QRadialGradient>

#include <algorithm>

namespace {

void addVignette(QPainter &painter, const QSizeF &size)
{
    QRadialGradient gradient(size.width() / 2, size.height() / 2, std::hypot(size.width(), size.height()) / 2);
    gradient.setColorAt(0.55, QColor(0, 0, 0, 0));
    gradient.setColorAt(1, QColor(0, 0, 0, 90));
    painter.fillRect(QRectF(QPointF(), size), gradient);
}

// The same amount on all three channels, as film has it.
void addGrain(QImage &image)
{
    constexpr int strength = 9;
    quint32 state = 0x9E3779B9;
    for (int y = 0; y < image.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            state = state * 1664525 + 1013904223;
            const int change = int((state >> 16) % strength) - strength / 2;
            const auto moved = [change](int channel) { return std::clamp(channel + change, 0, 255); };
            row[x] = qRgb(moved(qRed(row[x])), moved(qGreen(row[x])), moved(qBlue(row[x])));
        }
    }
}

} // namespace

QImage drawPicture(const Picture &picture)
{
    QImage image(picture.size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setPen(Qt::NoPen);
    painter.save();
    picture.draw(painter, picture.size);
    painter.restore();
    if (picture.isPhoto)
        addVignette(painter, picture.size);
    painter.end();
    if (picture.isPhoto)
        addGrain(image);
    return image;
}
