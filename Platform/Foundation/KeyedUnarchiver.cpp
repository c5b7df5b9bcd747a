#include "Platform/Foundation/KeyedUnarchiver.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/ContainerObjects.h"
#include "Platform/Foundation/DataObjects.h"
#include "Platform/Foundation/KeyedArchive/GeometryText_p.h"
#include "Platform/Foundation/KeyedArchive/KeyedArchiveReader_p.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/ValueObjects.h"

#include <cmath>
#include <limits>
#include <optional>

namespace platform {

namespace {

PropertyListValue listOf(QByteArrayView bytes)
{
    auto list = PropertyList::parse(bytes);
    if (!list)
        throw InvalidArchive(list.error());
    return std::move(list).value();
}

std::optional<qint64> wholeNumber(const PropertyListView &number)
{
    constexpr double bound = 9223372036854775808.0;
    switch (number.type()) {
    case PropertyListType::Boolean:
        return number.toBoolean() ? 1 : 0;
    case PropertyListType::Integer: {
        const bool isTooLarge = number.toUnsigned() > quint64(std::numeric_limits<qint64>::max());
        return isTooLarge ? std::nullopt : std::optional(number.toInteger());
    }
    default: {
        const double real = number.toReal();
        const bool isWhole = real == std::trunc(real) && real >= -bound && real < bound;
        return isWhole ? std::optional(qint64(real)) : std::nullopt;
    }
    }
}

} // namespace

KeyedUnarchiver::KeyedUnarchiver(QByteArrayView bytes, const ArchiveClasses &classes)
    : KeyedUnarchiver(listOf(bytes), classes)
{ }

KeyedUnarchiver::KeyedUnarchiver(const PropertyListValue &list, const ArchiveClasses &classes,
                                 UnknownClasses unknownClasses)
    : m_reader(std::make_unique<KeyedArchiveReader>(*this, list, classes, unknownClasses))
{ }

KeyedUnarchiver::~KeyedUnarchiver() = default;

PropertyListView KeyedUnarchiver::value(QAnyStringView key) const
{
    ZR_ASSERT(this, !m_isFinished, "decoding has finished");
    m_reader->requireGood();
    return m_reader->current().value(key);
}

PropertyListView KeyedUnarchiver::number(QAnyStringView key) const
{
    return m_reader->number(value(key));
}

void KeyedUnarchiver::raiseWrongType(QAnyStringView key) const
{
    m_reader->fail(QStringLiteral("the value under \"%1\" is of another type").arg(key.toString()));
}

bool KeyedUnarchiver::containsValueForKey(QAnyStringView key) const
{
    return !value(key).isNull();
}

bool KeyedUnarchiver::decodeBool(QAnyStringView key)
{
    return number(key).toBoolean();
}

qint32 KeyedUnarchiver::decodeInt32(QAnyStringView key)
{
    const qint64 whole = decodeInt64(key);
    if (whole < std::numeric_limits<qint32>::min() || whole > std::numeric_limits<qint32>::max())
        raiseWrongType(key);
    return qint32(whole);
}

qint64 KeyedUnarchiver::decodeInt64(QAnyStringView key)
{
    const PropertyListView number = this->number(key);
    if (number.isNull())
        return 0;
    const auto whole = wholeNumber(number);
    if (!whole)
        raiseWrongType(key);
    return *whole;
}

double KeyedUnarchiver::decodeDouble(QAnyStringView key)
{
    const PropertyListView number = this->number(key);
    return number.type() == PropertyListType::Boolean ? double(number.toBoolean()) : number.toReal();
}

QString KeyedUnarchiver::decodeString(QAnyStringView key)
{
    return m_reader->text(value(key));
}

QByteArray KeyedUnarchiver::decodeData(QAnyStringView key)
{
    return m_reader->data(value(key));
}

QDateTime KeyedUnarchiver::decodeDateTime(QAnyStringView key)
{
    const auto date = decodeObjectOfClass<Date>(key);
    return date ? date->toDateTime() : QDateTime();
}

QUrl KeyedUnarchiver::decodeUrl(QAnyStringView key)
{
    const auto url = decodeObjectOfClass<Url>(key);
    return url ? url->toUrl() : QUrl();
}

QUuid KeyedUnarchiver::decodeUuid(QAnyStringView key)
{
    const auto uuid = decodeObjectOfClass<Uuid>(key);
    return uuid ? uuid->uuid() : QUuid();
}

template <class T>
T KeyedUnarchiver::decodeGeometry(QAnyStringView key, std::optional<T> (*parse)(const QString &), const T &absent)
{
    const PropertyListView value = this->value(key);
    const PropertyListView content = m_reader->resolved(value);
    if (content.isNull())
        return absent;
    if (content.isString()) {
        const auto result = parse(m_reader->text(value));
        if (!result)
            raiseWrongType(key);
        return *result;
    }
    const auto geometry = decodeObjectOfClass<Geometry>(key);
    const T *result = geometry ? geometry->valueOfType<T>() : nullptr;
    if (!result)
        raiseWrongType(key);
    return *result;
}

QPointF KeyedUnarchiver::decodePoint(QAnyStringView key)
{
    return decodeGeometry(key, GeometryText::toPoint, QPointF());
}

QSizeF KeyedUnarchiver::decodeSize(QAnyStringView key)
{
    return decodeGeometry(key, GeometryText::toSize, QSizeF(0, 0)); // Qt's own default is -1 by -1
}

QRectF KeyedUnarchiver::decodeRect(QAnyStringView key)
{
    return decodeGeometry(key, GeometryText::toRect, QRectF());
}

ObjectPointer KeyedUnarchiver::decodeObject(QAnyStringView key)
{
    return m_reader->object(value(key));
}

QList<ObjectPointer> KeyedUnarchiver::decodeObjects(QAnyStringView key)
{
    const ObjectPointer object = decodeObject(key);
    if (!object)
        return {};
    if (const auto *array = dynamic_cast<const Array *>(object.get()))
        return array->objects();
    if (const auto *set = dynamic_cast<const Set *>(object.get()))
        return set->objects();
    if (const auto *set = dynamic_cast<const OrderedSet *>(object.get()))
        return set->objects();
    raiseWrongType(key);
}

QStringList KeyedUnarchiver::decodeStrings(QAnyStringView key)
{
    QStringList texts;
    for (const auto &text : decodeObjectsOfClass<String>(key))
        texts.append(text->value());
    return texts;
}

void KeyedUnarchiver::finishDecoding()
{
    m_isFinished = true;
}

} // namespace platform
