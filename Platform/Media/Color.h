#pragma once

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedCoding.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/Object.h"

#include <QAnyStringView>
#include <QColor>

namespace platform {

/// A colour as an object, for keyed archives, where it stands under the name "NSColor": red, green, blue and alpha in
/// the calibrated RGB space. Read are calibrated and device RGB and grey. Unlike the other value classes it has to be
/// registered. Immutable once it was made or read; compares by value.
///
///     Color::registerClass(); // once, at start-up
///     encodeColor(archiver, m_background, "background");
///     m_background = decodeColor(unarchiver, "background");
///
/// Any thread.
class Color : public Object, public KeyedCoding
{
    ZR_OBJECT(Color, platform::Object)
public:
    /// Makes colours known to archives under the name "NSColor".
    static void registerClass(ArchiveClasses &classes = ArchiveClasses::shared());

    Color() = default;
    /// What is no RGB colour is converted to one.
    explicit Color(const QColor &color)
        : m_color(color.toRgb())
    { }
    const QColor &color() const { return m_color; }

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

    void encodeWithKeyedArchiver(KeyedArchiver &archiver) const override;
    /// Raises `InvalidArchive` for a colour in another space, such as one of inks or of a named list.
    void decodeFromKeyedUnarchiver(KeyedUnarchiver &unarchiver) override;

private:
    QColor m_color;
};

/// Writes a colour as an object; an invalid one as null.
void encodeColor(KeyedArchiver &archiver, const QColor &color, QAnyStringView key);
/// The colour under the key; an invalid one where there is none.
QColor decodeColor(KeyedUnarchiver &unarchiver, QAnyStringView key);

} // namespace platform
