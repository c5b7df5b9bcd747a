#pragma once

#include "Platform/Foundation/Object.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <utility>
#include <variant>

/// @file
/// Plain values as objects, for where an object is asked for. All are immutable and compare by value. Further ones:
/// ContainerObjects.h (sets, dictionaries) and DataObjects.h (data, dates, URLs, UUIDs, geometry).
///
/// In a keyed archive they stand as follows. Of several forms all are read, and the first is written.
///
///     In the archive                           Here
///     -----------------------------------------------------------------------------------------
///     object 0, the text "$null"               a null pointer
///     a number                                 Number      ValueObjects.h
///     a truth value                            Boolean     ValueObjects.h
///     a text; NSString, NSMutableString        String      ValueObjects.h
///     NSNull                                   Null        ValueObjects.h
///     NSArray, NSMutableArray                  Array       ValueObjects.h
///     NSSet, NSMutableSet                      Set         ContainerObjects.h
///     NSOrderedSet, NSMutableOrderedSet        OrderedSet  ContainerObjects.h
///     NSDictionary, NSMutableDictionary        Dictionary  ContainerObjects.h
///     data; NSData, NSMutableData              Data        DataObjects.h
///     NSDate; a date                           Date        DataObjects.h
///     NSURL                                    Url         DataObjects.h
///     NSUUID                                   Uuid        DataObjects.h
///     NSIndexSet, NSMutableIndexSet            Indexes     DataObjects.h
///     NSValue                                  Geometry    DataObjects.h
///     NSColor                                  Color       Platform/Media/Color.h, once it is registered
///
/// An array or dictionary that stands in place is read as an `Array` or `Dictionary`. All other classes are those that
/// the host registered (KeyedCoding.h).

namespace platform {

/// A whole number from -2^63 to 2^64-1 or a real one. A whole number equals the real one of exactly the same value;
/// not-a-number equals itself.
class Number : public Object
{
    ZR_OBJECT(Number, platform::Object)
public:
    explicit Number(qint64 value)
        : m_value(value)
    { }
    explicit Number(int value)
        : Number(qint64(value))
    { }
    explicit Number(quint64 value);
    /// A real number without a fraction is the same as the whole one.
    explicit Number(double value);

    /// The number, a real one cut towards zero and to the type's range; 0 for not-a-number.
    qint64 toInteger() const;
    /// The same for the unsigned range.
    quint64 toUnsigned() const;
    double toReal() const;
    /// Whether the number was given as a real one, which tells how it is written. Does not count for equality.
    bool isReal() const { return m_isReal; }

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    std::variant<qint64, quint64, double> m_value; // the first of the types that has the value
    bool m_isReal = false;
};

/// A truth value. Equal to the number 1 or 0.
class Boolean : public Number
{
    ZR_OBJECT(Boolean, platform::Number)
public:
    explicit Boolean(bool value)
        : Number(value ? 1 : 0)
    { }
    bool value() const { return toInteger() != 0; }
};

/// Nothing, where an object must stand: an element of an array, say. Equal to its like.
class Null : public Object
{
    ZR_OBJECT(Null, platform::Object)
public:
    bool isEqual(const Object &other) const override;
    size_t hash() const override { return 0; }
};

/// A text.
class String : public Object
{
    ZR_OBJECT(String, platform::Object)
public:
    explicit String(QString value)
        : m_value(std::move(value))
    { }
    const QString &value() const { return m_value; }

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    QString m_value;
};

/// Objects in order. Equal to an array with equal objects in the same order.
class Array : public Object
{
    ZR_OBJECT(Array, platform::Object)
public:
    explicit Array(QList<ObjectPointer> objects)
        : m_objects(std::move(objects))
    { }
    const QList<ObjectPointer> &objects() const { return m_objects; }

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    QList<ObjectPointer> m_objects;
};

/// A QObject that takes part as a model object, such as a document that an inspector shows. Not owned. Equal
/// to another wrapper of the same QObject, and to none but itself once that has died. Main thread.
class WrappedQObject : public Object
{
    ZR_OBJECT(WrappedQObject, platform::Object)
public:
    explicit WrappedQObject(QObject *object)
        : m_object(object)
        , m_address(object)
    { }
    /// Null once it has died.
    QObject *object() const { return m_object; }

    bool isEqual(const Object &other) const override;
    size_t hash() const override;

private:
    QPointer<QObject> m_object;
    const void *m_address; // keeps the hash when the object dies
};

} // namespace platform
