#include "Platform/Foundation/ValueObjects.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <limits>

namespace platform {

namespace {

constexpr double twoToThe63 = 9223372036854775808.0;

bool isWhole(double value)
{
    return value >= -twoToThe63 && value < twoToThe63 && value == std::trunc(value);
}

} // namespace

Number::Number(quint64 value)
{
    if (value <= quint64(std::numeric_limits<qint64>::max()))
        m_value = qint64(value);
    else
        m_value = value;
}

Number::Number(double value)
    : m_isReal(true)
{
    if (isWhole(value))
        m_value = qint64(value);
    else if (value >= twoToThe63 && value < 2 * twoToThe63)
        m_value = quint64(value);
    else
        m_value = value;
}

qint64 Number::toInteger() const
{
    if (const auto *whole = std::get_if<qint64>(&m_value))
        return *whole;
    if (std::holds_alternative<quint64>(m_value))
        return std::numeric_limits<qint64>::max();
    const double real = std::get<double>(m_value);
    if (std::isnan(real))
        return 0;
    if (real >= twoToThe63)
        return std::numeric_limits<qint64>::max();
    return real < -twoToThe63 ? std::numeric_limits<qint64>::min() : qint64(real);
}

quint64 Number::toUnsigned() const
{
    if (const auto *large = std::get_if<quint64>(&m_value))
        return *large;
    if (toReal() >= 2 * twoToThe63)
        return std::numeric_limits<quint64>::max();
    return quint64(std::max(toInteger(), qint64(0)));
}

double Number::toReal() const
{
    return std::visit([](auto value) { return double(value); }, m_value);
}

bool Number::isEqual(const Object &other) const
{
    const auto *number = dynamic_cast<const Number *>(&other);
    if (!number)
        return false;
    const auto *real = std::get_if<double>(&m_value);
    const auto *otherReal = std::get_if<double>(&number->m_value);
    if (real && otherReal && std::isnan(*real) && std::isnan(*otherReal))
        return true;
    return m_value == number->m_value;
}

size_t Number::hash() const
{
    if (const auto *whole = std::get_if<qint64>(&m_value))
        return qHash(*whole);
    if (const auto *large = std::get_if<quint64>(&m_value))
        return qHash(*large);
    const double real = std::get<double>(m_value);
    return std::isnan(real) ? 0 : qHash(real);
}

bool Null::isEqual(const Object &other) const
{
    return dynamic_cast<const Null *>(&other);
}

bool String::isEqual(const Object &other) const
{
    const auto *string = dynamic_cast<const String *>(&other);
    return string && string->m_value == m_value;
}

size_t String::hash() const
{
    return qHash(m_value);
}

bool Array::isEqual(const Object &other) const
{
    const auto *array = dynamic_cast<const Array *>(&other);
    const auto equal = [](const ObjectPointer &a, const ObjectPointer &b) { return areEqual(a.get(), b.get()); };
    return array
        && std::equal(m_objects.cbegin(), m_objects.cend(), array->m_objects.cbegin(), array->m_objects.cend(), equal);
}

size_t Array::hash() const
{
    size_t result = size_t(m_objects.size());
    for (const ObjectPointer &object : m_objects)
        result = qHashMulti(result, object ? object->hash() : 0);
    return result;
}

bool WrappedQObject::isEqual(const Object &other) const
{
    if (this == &other)
        return true;
    const auto *wrapper = dynamic_cast<const WrappedQObject *>(&other);
    return wrapper && m_object && m_object == wrapper->m_object;
}

size_t WrappedQObject::hash() const
{
    return qHash(m_address);
}

} // namespace platform
