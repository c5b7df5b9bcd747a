#include "Platform/Media/Color.h"

#include <QHash>
#include <QVarLengthArray>

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

enum ColorSpace { CalibratedRgb = 1, DeviceRgb = 2, CalibratedWhite = 3, DeviceWhite = 4 };

[[noreturn]] void fail(const QString &reason)
{
    throw InvalidArchive(Error{ErrorCode::Malformed, reason, -1, {}});
}

// The platform's form of components: numbers and blanks, ended by a zero byte.
using Components = QVarLengthArray<float, 4>;

Components componentsOf(QByteArray text, qsizetype count)
{
    if (text.endsWith('\0'))
        text.chop(1);
    Components components;
    for (const QByteArray &word : text.simplified().split(' ')) {
        bool isNumber = false;
        const float number = word.toFloat(&isNumber);
        if (!isNumber || !std::isfinite(number) || components.size() > count)
            fail(QStringLiteral("the components of a colour are wrong"));
        components.append(std::clamp(number, 0.0F, 1.0F));
    }
    if (components.size() == count)
        components.append(1);
    if (components.size() != count + 1)
        fail(QStringLiteral("the components of a colour are wrong"));
    return components;
}

} // namespace

void Color::registerClass(ArchiveClasses &classes)
{
    classes.registerClass<Color>(QStringLiteral("NSColor"));
}

bool Color::isEqual(const Object &other) const
{
    const auto *color = dynamic_cast<const Color *>(&other);
    return color && color->m_color == m_color;
}

size_t Color::hash() const
{
    return qHash(quint64(m_color.rgba64()));
}

void Color::encodeWithKeyedArchiver(KeyedArchiver &archiver) const
{
    const auto digits = [](float component) { return QByteArray::number(double(component), 'g', 6); };
    QByteArray text = digits(m_color.redF()) + ' ' + digits(m_color.greenF()) + ' ' + digits(m_color.blueF());
    if (m_color.rgba64().alpha() != 0xFFFF)
        text += ' ' + digits(m_color.alphaF());
    archiver.encodeInt32(CalibratedRgb, "NSColorSpace");
    archiver.encodeBytes(text.append('\0'), "NSRGB");
}

void Color::decodeFromKeyedUnarchiver(KeyedUnarchiver &unarchiver)
{
    switch (unarchiver.decodeInt32("NSColorSpace")) {
    case CalibratedRgb:
    case DeviceRgb: {
        const Components rgba = componentsOf(unarchiver.decodeData("NSRGB"), 3);
        m_color = QColor::fromRgbF(rgba[0], rgba[1], rgba[2], rgba[3]);
        break;
    }
    case CalibratedWhite:
    case DeviceWhite: {
        const Components white = componentsOf(unarchiver.decodeData("NSWhite"), 1);
        m_color = QColor::fromRgbF(white[0], white[0], white[0], white[1]);
        break;
    }
    default:
        fail(QStringLiteral("a colour in a space that is not known"));
    }
}

void encodeColor(KeyedArchiver &archiver, const QColor &color, QAnyStringView key)
{
    archiver.encodeObject(color.isValid() ? std::make_shared<Color>(color) : nullptr, key);
}

QColor decodeColor(KeyedUnarchiver &unarchiver, QAnyStringView key)
{
    const auto color = unarchiver.decodeObjectOfClass<Color>(key);
    return color ? color->color() : QColor();
}

} // namespace platform
