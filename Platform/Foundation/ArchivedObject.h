#pragma once

#include "Platform/Foundation/KeyedCoding.h"
#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/PropertyList/PropertyListValue.h"
#include "Platform/Foundation/Result.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

namespace platform {

class KeyedUnarchiver;

/// An object of an archive whose class is not known here: its class's name, and its keys with their values. Numbers and
/// truth values are `Number` and `Boolean`, null is null, everything else an object as `KeyedUnarchiver` makes it.
/// Compared by identity. Belongs to one thread at a time.
///
/// Where unknown classes are kept (`KeyedUnarchiver::UnknownClasses::Keep`), an object comes so when its class is not
/// registered and not in the table of ValueObjects.h. URLs, UUIDs, index sets and geometry (NSURL, NSUUID, NSIndexSet
/// and NSValue) stand in the table and come so all the same; NSColor does unless it is registered. Texts, arrays, sets,
/// dictionaries, data, dates and NSNull come as the table says. In `ArchiveContents` no class is registered.
class ArchivedObject : public Object
{
    ZR_OBJECT(ArchivedObject, platform::Object)
public:
    struct Entry {
        QString key;
        ObjectPointer value;
    };

    /// @param classNames the class and its superclasses, the nearest first
    explicit ArchivedObject(QString className, QStringList classNames)
        : m_className(std::move(className))
        , m_classNames(std::move(classNames))
    { }

    const QString &className() const { return m_className; }
    const QStringList &classNames() const { return m_classNames; }
    /// In the order of the archive, without "$class". Each key is there once, with its last value.
    const QList<Entry> &entries() const { return m_entries; }
    void setEntries(QList<Entry> entries) { m_entries = std::move(entries); }
    /// The value under the key; null where there is none. Linear in the number of keys.
    ObjectPointer value(const QString &key) const;

private:
    QString m_className;
    QStringList m_classNames;
    QList<Entry> m_entries;
};

/// A whole archive, read without knowing its classes: for tools that show archives.
///
///     if (const auto contents = ArchiveContents::read(path))
///         show(contents.value().top());
///
/// Objects that hold each other in a circle stay whole as long as the contents or a copy of them; then they are
/// emptied.
class ArchiveContents
{
public:
    /// Reads an archive from a file, XML or binary. Errors: those of `PropertyList::read`, and `Malformed` and
    /// `TooDeep` for what makes no archive. Nothing is thrown.
    static Result<ArchiveContents> read(const QString &path);
    /// The same from memory.
    static Result<ArchiveContents> parse(QByteArrayView bytes);

    /// The keys of "$top" and what they hold. Has no class.
    const ArchivedObject &top() const { return *m_top; }

private:
    static Result<ArchiveContents> decoded(const Result<PropertyListValue> &list);

    std::shared_ptr<KeyedUnarchiver> m_unarchiver; // outlives m_top: it empties what stands in a circle
    std::shared_ptr<const ArchivedObject> m_top;
};

} // namespace platform
