#pragma once

#include "Platform/Foundation/IndexSet.h"
#include "Platform/Foundation/Object.h"

#include <QByteArray>
#include <QDateTime>
#include <QMarginsF>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QUrl>
#include <QUuid>

#include <utility>
#include <variant>

/// @file
/// Data, dates, URLs, UUIDs, index sets and geometry as objects. All are immutable and compare by value; any thread may
/// read them at the same time.

namespace platform {

/// Bytes.
class Data : public Object
{
    ZR_OBJECT(Data, platform::Object)
public:
    explicit Data(QByteArray bytes)
        : m_bytes(std::move(bytes))
    { }
    const QByteArray &bytes() const { return m_bytes; }

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    QByteArray m_bytes;
};

/// A moment.
class Date : public Object
{
    ZR_OBJECT(Date, platform::Object)
public:
    /// Seconds since 2001-01-01T00:00:00Z.
    explicit Date(double referenceSeconds)
        : m_referenceSeconds(referenceSeconds)
    { }
    /// The date must be valid.
    explicit Date(const QDateTime &date);

    double referenceSeconds() const { return m_referenceSeconds; }
    /// In UTC, to the millisecond; invalid beyond what a QDateTime can hold.
    QDateTime toDateTime() const;

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    double m_referenceSeconds;
};

/// A URL, relative to a base if there is one. Equal to a URL with the same text and an equal base.
class Url : public Object
{
    ZR_OBJECT(Url, platform::Object)
public:
    explicit Url(const QUrl &url);
    /// @param text the URL as it is written, or the part that is resolved against the base
    explicit Url(QString text, std::shared_ptr<Url> base = {})
        : m_text(std::move(text))
        , m_base(std::move(base))
    { }

    const QString &text() const { return m_text; }
    const std::shared_ptr<Url> &base() const { return m_base; }
    /// The whole URL. Linear in the number of bases.
    QUrl toUrl() const;

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    QString m_text;
    std::shared_ptr<Url> m_base;
};

/// A universally unique identifier.
class Uuid : public Object
{
    ZR_OBJECT(Uuid, platform::Object)
public:
    explicit Uuid(const QUuid &uuid)
        : m_uuid(uuid)
    { }
    const QUuid &uuid() const { return m_uuid; }

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    QUuid m_uuid;
};

/// A set of indexes.
class Indexes : public Object
{
    ZR_OBJECT(Indexes, platform::Object)
public:
    explicit Indexes(IndexSet indexes)
        : m_indexes(std::move(indexes))
    { }
    const IndexSet &indexes() const { return m_indexes; }

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    IndexSet m_indexes;
};

/// A point, size, rectangle, margins or range.
class Geometry : public Object
{
    ZR_OBJECT(Geometry, platform::Object)
public:
    using Value = std::variant<QPointF, QSizeF, QRectF, QMarginsF, IndexRange>;

    explicit Geometry(Value value)
        : m_value(std::move(value))
    { }
    const Value &value() const { return m_value; }
    /// The value if it is of this type; null otherwise.
    template <class T>
    const T *valueOfType() const
    {
        return std::get_if<T>(&m_value);
    }

    /// By exact numbers; not-a-number equals itself.
    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    Value m_value;
};

} // namespace platform
