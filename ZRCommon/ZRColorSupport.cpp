#include "ZRCommon/ZRColorSupport.h"

#include <QDataStream>
#include <QIODevice>
#include <QtEndian>

#include <cmath>

namespace ZRColorSupport {

namespace {

// The colour model in one byte, then alpha, three or four components and padding in two bytes each.
constexpr qsizetype archivedSize = 11;
constexpr quint16 noHue = 0xFFFF;
constexpr quint16 fullCircle = 36000; // hundredths of a degree

// The stream's own reader takes any bytes, and other operations of QColor then rely on what it has read.
bool isArchivedColor(const QByteArray &bytes)
{
    if (bytes.size() != archivedSize)
        return false;
    const quint16 hue = qFromBigEndian<quint16>(bytes.constData() + 3);
    switch (QColor::Spec(bytes[0])) {
    case QColor::Hsv:
    case QColor::Hsl:
        return hue < fullCircle || hue == noHue;
    case QColor::Rgb:
    case QColor::Cmyk:
    case QColor::ExtendedRgb:
        return true;
    case QColor::Invalid:
        break;
    }
    return false;
}

bool isFinite(const QColor &color)
{
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 0;
    color.getRgbF(&red, &green, &blue, &alpha);
    return std::isfinite(red) && std::isfinite(green) && std::isfinite(blue) && std::isfinite(alpha);
}

} // namespace

void setColorZR(platform::UserDefaults &defaults, const QColor &color, const QString &forKey)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    stream << color;
    defaults.set(forKey, bytes);
}

QColor colorForKeyZR(const platform::UserDefaults &defaults, const QString &key)
{
    const QByteArray bytes = defaults.data(key);
    if (!isArchivedColor(bytes))
        return QColor();
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_0);
    QColor color;
    stream >> color;
    return color.spec() != QColor::ExtendedRgb || isFinite(color) ? color : QColor();
}

} // namespace ZRColorSupport
