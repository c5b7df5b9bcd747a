#include "Platform/Foundation/DataObjects.h"

#include <QHash>

#include <array>
#include <cmath>

namespace platform {

namespace {

constexpr qint64 referenceEpoch = 978'307'200; // 2001-01-01T00:00:00Z in seconds since 1970

// The type and its numbers, with which geometry is compared exactly. (QPointF and its like compare fuzzily.)
using Numbers = std::array<double, 4>;

Numbers numbersOf(const QPointF &point)
{
    return {point.x(), point.y()};
}
Numbers numbersOf(const QSizeF &size)
{
    return {size.width(), size.height()};
}
Numbers numbersOf(const QRectF &rect)
{
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}
Numbers numbersOf(const QMarginsF &margins)
{
    return {margins.left(), margins.top(), margins.right(), margins.bottom()};
}

bool sameNumber(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

bool same(const IndexRange &a, const IndexRange &b)
{
    return a == b;
}
template <class T>
bool same(const T &a, const T &b)
{
    const Numbers ofA = numbersOf(a);
    const Numbers ofB = numbersOf(b);
    return std::equal(ofA.cbegin(), ofA.cend(), ofB.cbegin(), sameNumber);
}

size_t hashOf(const IndexRange &range)
{
    return qHashMulti(0, range.location, range.length);
}
template <class T>
size_t hashOf(const T &value)
{
    size_t result = 0;
    for (const double number : numbersOf(value))
        result = qHashMulti(result, std::isnan(number) ? 0 : number);
    return result;
}

} // namespace

bool Data::isEqual(const Object &other) const
{
    const auto *data = dynamic_cast<const Data *>(&other);
    return data && data->m_bytes == m_bytes;
}

size_t Data::hash() const
{
    return qHash(m_bytes);
}

Date::Date(const QDateTime &date)
    : m_referenceSeconds(double(date.toMSecsSinceEpoch() - referenceEpoch * 1000) / 1000)
{ }

QDateTime Date::toDateTime() const
{
    constexpr double bound = 9.2e18; // a little less than what 64 bits hold
    const double milliseconds = std::round((m_referenceSeconds + double(referenceEpoch)) * 1000);
    if (!(std::abs(milliseconds) < bound))
        return {};
    return QDateTime::fromMSecsSinceEpoch(qint64(milliseconds), Qt::UTC);
}

bool Date::isEqual(const Object &other) const
{
    const auto *date = dynamic_cast<const Date *>(&other);
    return date && sameNumber(date->m_referenceSeconds, m_referenceSeconds);
}

size_t Date::hash() const
{
    return std::isnan(m_referenceSeconds) ? 0 : qHash(m_referenceSeconds);
}

Url::Url(const QUrl &url)
    : m_text(url.toString(QUrl::FullyEncoded))
{ }

QUrl Url::toUrl() const
{
    QList<const Url *> chain;
    for (const Url *url = this; url; url = url->m_base.get())
        chain.prepend(url);
    QUrl result;
    for (const Url *url : std::as_const(chain)) {
        const QUrl part(url->m_text);
        result = result.isEmpty() ? part : result.resolved(part);
    }
    return result;
}

bool Url::isEqual(const Object &other) const
{
    const auto *url = dynamic_cast<const Url *>(&other);
    return url && url->m_text == m_text && areEqual(url->m_base.get(), m_base.get());
}

size_t Url::hash() const
{
    return qHashMulti(m_base ? m_base->hash() : 0, m_text);
}

bool Uuid::isEqual(const Object &other) const
{
    const auto *uuid = dynamic_cast<const Uuid *>(&other);
    return uuid && uuid->m_uuid == m_uuid;
}

size_t Uuid::hash() const
{
    return qHash(m_uuid);
}

bool Indexes::isEqual(const Object &other) const
{
    const auto *indexes = dynamic_cast<const Indexes *>(&other);
    return indexes && indexes->m_indexes == m_indexes;
}

size_t Indexes::hash() const
{
    size_t result = 0;
    for (const IndexRange &range : m_indexes.ranges())
        result = qHashMulti(result, range.location, range.length);
    return result;
}

bool Geometry::isEqual(const Object &other) const
{
    const auto *geometry = dynamic_cast<const Geometry *>(&other);
    if (!geometry || geometry->m_value.index() != m_value.index())
        return false;
    return std::visit(
        [geometry](const auto &value) {
            return same(value, std::get<std::decay_t<decltype(value)>>(geometry->m_value));
        },
        m_value);
}

size_t Geometry::hash() const
{
    return std::visit([](const auto &value) { return hashOf(value); }, m_value);
}

} // namespace platform
