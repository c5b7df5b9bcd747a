#pragma once

#include "Platform/Foundation/KeyedCoding.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/PropertyList/PropertyListValue.h"
#include "Platform/Foundation/Result.h"

#include <QAnyStringView>
#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QUuid>

#include <memory>
#include <optional>

namespace platform {

class KeyedArchiveReader;

/// Reads what `KeyedArchiver` wrote, and the programs of the system whose form that is (see there): keyed archives as
/// XML or binary property lists. It needs the classes of the objects; `ArchiveContents` reads an archive without them.
///
///     KeyedUnarchiver unarchiver(bytes);
///     m_version = unarchiver.decodeInt32("current-version");
///     m_slides = unarchiver.decodeObjectsOfClass<Slide>("slides");
///     unarchiver.finishDecoding();
///
/// Asking. A key that is absent, or whose value is null, gives 0, false, null or an empty value; a value of another
/// type than was asked for raises `InvalidArchive`, and so does whatever cannot be read: an object of a class that is
/// not known, a reference to no object, objects nested deeper than `MaximumArchiveDepth`, an array, set or dictionary
/// that holds itself (directly, or as the first of a circle that is met). After an object could not be decoded nothing
/// can be read any more.
///
/// Objects come back as they were written: one that is referred to several times is one object, and circles through
/// host objects are allowed, since a host object is made before its keys are decoded. What the classes
/// of that system become is told by the table in ValueObjects.h; the mutable ones come back as their immutable
/// counterparts. Colours are read once `Color::registerClass` was called.
///
/// Cost: the property list is read once; an object is decoded when it is first asked for. Besides the list, a few words
/// for every object. The objects that were made are held until the unarchiver goes.
///
/// Thread safety: none; any thread.
class KeyedUnarchiver
{
public:
    /// What becomes of an object whose class is neither registered nor in the table of ValueObjects.h.
    enum class UnknownClasses {
        Refuse, ///< `InvalidArchive`.
        Keep, ///< An `ArchivedObject`, which says what else counts as unknown then.
    };

    /// Raises `InvalidArchive` for anything but an archive: a property list with "NSKeyedArchiver" under "$archiver".
    /// @param classes not owned; must stay, as for the archiver
    explicit KeyedUnarchiver(QByteArrayView bytes, const ArchiveClasses &classes = ArchiveClasses::shared());
    /// The same from a property list that has been read.
    explicit KeyedUnarchiver(const PropertyListValue &list, const ArchiveClasses &classes = ArchiveClasses::shared(),
                             UnknownClasses unknownClasses = UnknownClasses::Refuse);
    KeyedUnarchiver(const KeyedUnarchiver &) = delete;
    KeyedUnarchiver &operator=(const KeyedUnarchiver &) = delete;
    ~KeyedUnarchiver();

    bool containsValueForKey(QAnyStringView key) const;

    /// A number counts as true when it is not 0.
    bool decodeBool(QAnyStringView key);
    /// A whole number; one beyond the range raises `InvalidArchive`.
    qint32 decodeInt32(QAnyStringView key);
    qint64 decodeInt64(QAnyStringView key);
    double decodeDouble(QAnyStringView key);

    QString decodeString(QAnyStringView key);
    /// Bytes in place or data that is referred to.
    QByteArray decodeData(QAnyStringView key);
    /// In UTC, to the millisecond.
    QDateTime decodeDateTime(QAnyStringView key);
    /// A URL with a base is resolved against it.
    QUrl decodeUrl(QAnyStringView key);
    QUuid decodeUuid(QAnyStringView key);

    // From the strings in which they are written ("{1, 2}"), or from a value object.
    QPointF decodePoint(QAnyStringView key);
    QSizeF decodeSize(QAnyStringView key);
    QRectF decodeRect(QAnyStringView key);

    ObjectPointer decodeObject(QAnyStringView key);
    /// The object if it is of the C++ class or of one of its subclasses.
    template <class T>
    std::shared_ptr<T> decodeObjectOfClass(QAnyStringView key)
    {
        return checked<T>(decodeObject(key), key);
    }

    /// The elements of an array or set in order; nulls among them count.
    QList<ObjectPointer> decodeObjects(QAnyStringView key);
    /// The same when all are of the C++ class. Null among them raises `InvalidArchive`.
    template <class T>
    QList<std::shared_ptr<T>> decodeObjectsOfClass(QAnyStringView key)
    {
        const QList<ObjectPointer> objects = decodeObjects(key);
        QList<std::shared_ptr<T>> result;
        result.reserve(objects.size());
        for (const ObjectPointer &object : objects) {
            result.append(checked<T>(object, key));
            if (!object)
                raiseWrongType(key);
        }
        return result;
    }
    QStringList decodeStrings(QAnyStringView key);

    /// Nothing may be decoded afterwards. What was not asked for is not looked at.
    void finishDecoding();

private:
    friend class ArchiveContents;

    template <class T>
    std::shared_ptr<T> checked(const ObjectPointer &object, QAnyStringView key) const
    {
        auto result = std::dynamic_pointer_cast<T>(object);
        if (object && !result)
            raiseWrongType(key);
        return result;
    }
    [[noreturn]] void raiseWrongType(QAnyStringView key) const;
    PropertyListView value(QAnyStringView key) const;
    PropertyListView number(QAnyStringView key) const;
    template <class T>
    T decodeGeometry(QAnyStringView key, std::optional<T> (*parse)(const QString &), const T &absent);

    std::unique_ptr<KeyedArchiveReader> m_reader;
    bool m_isFinished = false;
};

} // namespace platform
