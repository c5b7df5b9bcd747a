#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It belongs to the keyed archives, and may change from version to
//  version.
//

#include "Platform/Foundation/ArchivedObject.h"
#include "Platform/Foundation/KeyedUnarchiver.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <unordered_map>
#include <vector>

namespace platform {

class KeyedArchiveReader;

/// How an object of one of the platform's classes is made from its record. May throw `InvalidArchive`.
using ArchiveDecoder = ObjectPointer (*)(KeyedArchiveReader &reader, const PropertyListView &record);

/// The decoder of a class of the platform, or null.
ArchiveDecoder archiveDecoderForClass(const QString &name, KeyedUnarchiver::UnknownClasses unknownClasses);

/// Makes the objects of an archive from their records, which are the elements of "$objects".
class KeyedArchiveReader
{
public:
    KeyedArchiveReader(KeyedUnarchiver &unarchiver, const PropertyListValue &list, const ArchiveClasses &classes,
                       KeyedUnarchiver::UnknownClasses unknownClasses);
    ~KeyedArchiveReader();

    /// What "$top" holds.
    const PropertyListView &top() const { return m_top; }
    /// The record whose keys are read just now: "$top", or that of the innermost host object.
    PropertyListView &current() { return m_current; }

    /// The value itself, or the record that it refers to; a null view for a reference to null.
    PropertyListView resolved(const PropertyListView &value) const;
    /// The object that the value refers to, or the value as an object.
    ObjectPointer object(const PropertyListView &value);
    /// The objects of an array, one by one, each of which may be null.
    QList<ObjectPointer> objects(const PropertyListView &array);
    /// The entries of a dictionary as they stand, without "$class".
    QList<ArchivedObject::Entry> entries(const PropertyListView &dictionary);
    /// The text that the value is or refers to; a null text for null.
    QString text(const PropertyListView &value);
    /// The bytes that the value is or refers to.
    QByteArray data(const PropertyListView &value);
    /// The number that the value is or refers to; a null view for null.
    PropertyListView number(const PropertyListView &value) const;

    /// Reports what is wrong with the archive.
    [[noreturn]] void fail(const QString &reason) const;
    /// Raises what is wrong with the archive if anything was.
    void requireGood() const;

    /// Counts values that are compared with each other. Structures that share their parts can be far larger than
    /// their file when they are walked; none such is taken into a set or as a key.
    void requireComparable(quint64 weight);
    /// Counts bytes that a record's own text or data takes in memory. Records can share theirs, and so come to far more
    /// than their file; that is refused as too large.
    void requireBounded(quint64 bytes);
    /// The number of values that the objects taken from the current record have when they are walked.
    quint64 weightOfParts() const { return m_weight; }

private:
    /// An element of "$objects".
    struct Slot {
        enum State : quint8 { Untouched, TextSeen, InProgress, Ready };
        ObjectPointer object;
        quint32 weight = 1; // values that walking the object visits, with those that are met again; saturates
        quint16 height = 0; // objects that nest in it
        State state = Untouched;
    };
    /// A class record once it was understood.
    struct ResolvedClass {
        QString name;
        QStringList names;
        const ArchiveClasses::Entry *hostClass = nullptr;
        ArchiveDecoder decoder = nullptr;
    };
    class Nesting;

    quint64 checkedNumber(const PropertyListView &reference) const;
    ObjectPointer objectAt(quint64 number);
    ObjectPointer scalarObject(const PropertyListView &value);
    ObjectPointer containerObject(const PropertyListView &value);
    ObjectPointer recordObject(quint64 number, const PropertyListView &record);
    ObjectPointer hostObject(Slot &slot, const ArchiveClasses::Entry &hostClass, const PropertyListView &record);
    ObjectPointer unknownObject(Slot &slot, const ResolvedClass &resolvedClass, const PropertyListView &record);
    const ResolvedClass &classOf(const PropertyListView &record);
    ResolvedClass readClass(quint64 number) const;
    void countPart(quint64 weight, int height);

    KeyedUnarchiver &m_unarchiver;
    const ArchiveClasses &m_classes;
    const KeyedUnarchiver::UnknownClasses m_unknownClasses;
    PropertyListValue m_list; // keeps all handles valid
    PropertyListView m_top;
    PropertyListView m_current;
    PropertyListKey m_classKey;
    std::vector<PropertyListView> m_records;
    std::vector<Slot> m_slots; // as many as records
    std::unordered_map<quint64, ResolvedClass> m_resolvedClasses; // by the number of their record
    quint64 m_lastClassNumber = 0;
    const ResolvedClass *m_lastClass = nullptr;
    std::vector<std::shared_ptr<ArchivedObject>> m_keptObjects;

    quint64 m_place = 0; // of the record that is decoded, for messages
    int m_depth = 0;
    int m_height = 0; // of the parts of the current record
    quint64 m_weight = 0; // of the same
    quint64 m_compared = 0; // weights that went into sets and keys
    quint64 m_expanded = 0; // bytes of texts and data that records have each for itself
    bool m_hasCircle = false; // among objects that keep themselves alive
    bool m_hasFailed = false;
};

} // namespace platform
