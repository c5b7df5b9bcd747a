#include "Platform/Foundation/KeyedArchive/KeyedArchiveReader_p.h"

#include "Platform/Foundation/ContainerObjects.h"
#include "Platform/Foundation/DataObjects.h"
#include "Platform/Foundation/ValueObjects.h"

#include <QHash>

#include <algorithm>
#include <limits>

namespace platform {

namespace {

constexpr qint64 formatVersion = 100'000;

// What walking a text or data costs, in values.
quint64 weightOfBytes(qsizetype size)
{
    return 1 + quint64(size) / 64;
}

[[noreturn]] void raise(ErrorCode code, const QString &reason)
{
    throw InvalidArchive(Error{code, reason, -1, {}});
}

PropertyListView required(const PropertyListValue &list, const char *key, PropertyListType type)
{
    const PropertyListView value = list.PropertyListView::value(key);
    if (value.type() != type)
        raise(ErrorCode::Malformed, QStringLiteral("no keyed archive: %1 is missing").arg(QLatin1String(key)));
    return value;
}

} // namespace

/// Everything between the beginning and the end of one record: how deep it stands, what its parts come to, and that
/// nothing is read any more once one has failed.
class KeyedArchiveReader::Nesting
{
public:
    Nesting(KeyedArchiveReader &reader, quint64 place)
        : m_reader(reader)
        , m_outerCurrent(reader.m_current)
        , m_outerPlace(std::exchange(reader.m_place, place))
        , m_outerHeight(std::exchange(reader.m_height, 0))
        , m_outerWeight(std::exchange(reader.m_weight, 0))
    {
        ++reader.m_depth;
    }
    Nesting(const Nesting &) = delete;
    Nesting &operator=(const Nesting &) = delete;
    ~Nesting()
    {
        --m_reader.m_depth;
        m_reader.m_current = m_outerCurrent;
        m_reader.m_place = m_outerPlace;
        m_reader.m_height = m_outerHeight;
        m_reader.m_weight = m_outerWeight;
        if (m_isDone)
            m_reader.countPart(m_weight, m_height);
        else
            m_reader.m_hasFailed = true;
    }

    /// Objects that were there already may nest deeper than the record stands. Their destruction recurses all the same.
    void requireDepth() const
    {
        if (std::max(m_reader.m_depth, m_reader.m_height + 1) > MaximumArchiveDepth)
            raise(ErrorCode::TooDeep,
                  QStringLiteral("more than %1 objects within one another").arg(MaximumArchiveDepth));
    }
    void done(ObjectPointer object, Slot *slot, bool isComparedByIdentity)
    {
        requireDepth();
        m_height = m_reader.m_height + 1;
        m_weight = isComparedByIdentity ? 1 : m_reader.m_weight + 1;
        m_isDone = true;
        if (!slot)
            return;
        slot->object = std::move(object);
        slot->height = quint16(m_height);
        slot->weight = quint32(std::min<quint64>(m_weight, std::numeric_limits<quint32>::max()));
        slot->state = Slot::Ready;
    }

private:
    KeyedArchiveReader &m_reader;
    PropertyListView m_outerCurrent;
    quint64 m_outerPlace;
    int m_outerHeight;
    quint64 m_outerWeight;
    int m_height = 0;
    quint64 m_weight = 0;
    bool m_isDone = false;
};

KeyedArchiveReader::KeyedArchiveReader(KeyedUnarchiver &unarchiver, const PropertyListValue &list,
                                       const ArchiveClasses &classes, KeyedUnarchiver::UnknownClasses unknownClasses)
    : m_unarchiver(unarchiver)
    , m_classes(classes)
    , m_unknownClasses(unknownClasses)
    , m_list(list)
{
    const PropertyListView archiver = required(list, "$archiver", PropertyListType::String);
    if (*archiver.plainUtf8() != "NSKeyedArchiver")
        raise(ErrorCode::Malformed, QStringLiteral("another archiver wrote it: %1").arg(archiver.toString()));
    const PropertyListView version = required(list, "$version", PropertyListType::Integer);
    if (version.toInteger() != formatVersion)
        raise(ErrorCode::Malformed, QStringLiteral("unknown version of keyed archives"));
    m_top = required(list, "$top", PropertyListType::Dictionary);
    const PropertyListView records = required(list, "$objects", PropertyListType::Array);
    m_current = m_top;
    m_classKey = m_top.key("$class");
    m_records.reserve(size_t(records.count()));
    for (const PropertyListView record : records.elements())
        m_records.push_back(record);
    m_slots.resize(m_records.size());
}

// Kept objects own each other; a circle of them would never go.
KeyedArchiveReader::~KeyedArchiveReader()
{
    if (!m_hasCircle)
        return;
    for (const auto &object : m_keptObjects)
        object->setEntries({});
}

void KeyedArchiveReader::fail(const QString &reason) const
{
    raise(ErrorCode::Malformed, m_place == 0 ? reason : QStringLiteral("object %1: %2").arg(m_place).arg(reason));
}

void KeyedArchiveReader::requireGood() const
{
    if (m_hasFailed)
        raise(ErrorCode::Malformed, QStringLiteral("reading has failed before"));
}

void KeyedArchiveReader::requireComparable(quint64 weight)
{
    constexpr quint64 bound = 4'194'304;
    m_compared += weight;
    if (m_compared > bound + 4 * m_records.size())
        fail(QStringLiteral("sets and keys expand without measure"));
}

void KeyedArchiveReader::requireBounded(quint64 bytes)
{
    constexpr quint64 free = 64 * 1024 * 1024;
    constexpr quint64 factor = 16; // the ranges of an index set take eight times their data
    if (m_depth == 0) // what stands in "$top" may be asked for again and again
        return;
    m_expanded += bytes;
    if (m_expanded > free + factor * quint64(m_list.memoryUse()))
        raise(ErrorCode::TooLarge, QStringLiteral("object %1: texts and data expand without measure").arg(m_place));
}

void KeyedArchiveReader::countPart(quint64 weight, int height)
{
    constexpr quint64 saturation = std::numeric_limits<quint32>::max();
    m_weight = std::min(m_weight + weight, saturation);
    m_height = std::max(m_height, height);
}

// References

quint64 KeyedArchiveReader::checkedNumber(const PropertyListView &reference) const
{
    const quint64 number = reference.toUid();
    if (number != 0 && number >= m_records.size())
        fail(QStringLiteral("reference to object %1 of %2").arg(number).arg(m_records.size()));
    return number;
}

PropertyListView KeyedArchiveReader::resolved(const PropertyListView &value) const
{
    if (value.type() != PropertyListType::UID)
        return value;
    const quint64 number = checkedNumber(value);
    return number == 0 ? PropertyListView() : m_records[number];
}

PropertyListView KeyedArchiveReader::number(const PropertyListView &value) const
{
    const PropertyListView number = resolved(value);
    switch (number.type()) {
    case PropertyListType::Null:
    case PropertyListType::Integer:
    case PropertyListType::Real:
    case PropertyListType::Boolean:
        return number;
    default:
        fail(QStringLiteral("a number was expected"));
    }
}

// A text that is referred to a second time is kept, so that it is not there as often as it is referred to.
QString KeyedArchiveReader::text(const PropertyListView &value)
{
    const PropertyListView content = resolved(value);
    if (content.isNull())
        return {};
    m_weight += weightOfBytes(content.storedLength());
    if (content.isString()) {
        if (value.type() != PropertyListType::UID) {
            requireBounded(sizeof(QChar) * quint64(content.storedLength()));
            return content.toString();
        }
        Slot &slot = m_slots[value.toUid()];
        if (slot.state == Slot::Untouched) {
            slot.state = Slot::TextSeen;
            return content.toString();
        }
    }
    const auto string = std::dynamic_pointer_cast<String>(object(value));
    if (!string)
        fail(QStringLiteral("a text was expected"));
    return string->value();
}

QByteArray KeyedArchiveReader::data(const PropertyListView &value)
{
    const PropertyListView content = resolved(value);
    if (content.isNull())
        return {};
    const auto data = std::dynamic_pointer_cast<Data>(object(value));
    if (!data)
        fail(QStringLiteral("data was expected"));
    return data->bytes();
}

ObjectPointer KeyedArchiveReader::object(const PropertyListView &value)
{
    switch (value.type()) {
    case PropertyListType::Null:
        return {};
    case PropertyListType::UID:
        return objectAt(checkedNumber(value));
    case PropertyListType::Array:
    case PropertyListType::Dictionary:
        return containerObject(value);
    default:
        countPart(weightOfBytes(value.storedLength()), 0);
        return scalarObject(value);
    }
}

QList<ObjectPointer> KeyedArchiveReader::objects(const PropertyListView &array)
{
    if (!array.isArray())
        fail(QStringLiteral("an array was expected"));
    QList<ObjectPointer> objects;
    objects.reserve(array.count());
    for (const PropertyListView element : array.elements())
        objects.append(object(element));
    return objects;
}

ObjectPointer KeyedArchiveReader::objectAt(quint64 number)
{
    if (number == 0) {
        countPart(1, 0);
        return {};
    }
    Slot &slot = m_slots[number];
    switch (slot.state) {
    case Slot::Ready:
        countPart(slot.weight, slot.height);
        return slot.object;
    case Slot::InProgress:
        if (!slot.object)
            fail(QStringLiteral("object %1 holds itself").arg(number));
        m_hasCircle = true;
        countPart(1, 0);
        return slot.object;
    case Slot::Untouched:
    case Slot::TextSeen:
        break;
    }
    const PropertyListView record = m_records[number];
    if (record.isDictionary())
        return recordObject(number, record);
    if (record.isArray() || record.type() == PropertyListType::UID)
        fail(QStringLiteral("object %1 is none").arg(number));
    slot.object = scalarObject(record);
    slot.state = Slot::Ready;
    slot.weight = quint32(weightOfBytes(record.storedLength()));
    countPart(slot.weight, 0);
    return slot.object;
}

// Values

ObjectPointer KeyedArchiveReader::scalarObject(const PropertyListView &value)
{
    switch (value.type()) {
    case PropertyListType::String:
        requireBounded(sizeof(QChar) * quint64(value.storedLength()));
        return std::make_shared<String>(value.toString());
    case PropertyListType::Integer: {
        const quint64 magnitude = value.toUnsigned();
        return magnitude != 0 ? std::make_shared<Number>(magnitude) : std::make_shared<Number>(value.toInteger());
    }
    case PropertyListType::Real:
        return std::make_shared<Number>(value.toReal());
    case PropertyListType::Boolean:
        return std::make_shared<Boolean>(value.toBoolean());
    case PropertyListType::Date:
        return std::make_shared<Date>(*value.toReferenceSeconds());
    case PropertyListType::Data: {
        auto data = std::make_shared<Data>(value.toData());
        requireBounded(quint64(data->bytes().size()));
        countPart(weightOfBytes(data->bytes().size()), 0);
        return data;
    }
    default:
        fail(QStringLiteral("an object was expected"));
    }
}

// A container that stands in place, as some classes of other programs have it.
ObjectPointer KeyedArchiveReader::containerObject(const PropertyListView &value)
{
    Nesting nesting(*this, m_place);
    nesting.requireDepth();
    ObjectPointer container;
    if (value.isArray()) {
        container = std::make_shared<Array>(objects(value));
    } else if (value.contains("CF$UID")) {
        fail(QStringLiteral("a reference is none"));
    } else {
        QList<Dictionary::Entry> entries;
        for (const auto &entry : value.entries())
            entries.append({std::make_shared<String>(entry.key()), object(entry.value())});
        container = std::make_shared<Dictionary>(entries);
    }
    nesting.done(container, nullptr, false);
    return container;
}

// Records

ObjectPointer KeyedArchiveReader::recordObject(quint64 number, const PropertyListView &record)
{
    Slot &slot = m_slots[number];
    Nesting nesting(*this, number);
    nesting.requireDepth();
    const ResolvedClass &resolvedClass = classOf(record);
    slot.state = Slot::InProgress;
    ObjectPointer object;
    if (resolvedClass.hostClass)
        object = hostObject(slot, *resolvedClass.hostClass, record);
    else if (resolvedClass.decoder)
        object = resolvedClass.decoder(*this, record);
    else
        object = unknownObject(slot, resolvedClass, record);
    nesting.done(object, &slot, !resolvedClass.decoder);
    return object;
}

ObjectPointer KeyedArchiveReader::hostObject(Slot &slot, const ArchiveClasses::Entry &hostClass,
                                             const PropertyListView &record)
{
    ObjectPointer object = hostClass.make();
    if (!object)
        fail(QStringLiteral("no object of class %1 was made").arg(hostClass.name));
    slot.object = object;
    m_current = record;
    hostClass.asCoding(*object).decodeFromKeyedUnarchiver(m_unarchiver);
    return object;
}

ObjectPointer KeyedArchiveReader::unknownObject(Slot &slot, const ResolvedClass &resolvedClass,
                                                const PropertyListView &record)
{
    if (m_unknownClasses == KeyedUnarchiver::UnknownClasses::Refuse)
        fail(QStringLiteral("unknown class: %1").arg(resolvedClass.name));
    auto object = std::make_shared<ArchivedObject>(resolvedClass.name, resolvedClass.names);
    m_keptObjects.push_back(object);
    slot.object = object;
    object->setEntries(entries(record));
    return object;
}

// Of a key that occurs twice the last value counts, as it does for who asks for it.
QList<ArchivedObject::Entry> KeyedArchiveReader::entries(const PropertyListView &dictionary)
{
    QHash<QString, qsizetype> places;
    QList<ArchivedObject::Entry> entries;
    for (const auto &entry : dictionary.entries()) {
        const QString key = entry.key();
        if (key == QLatin1String("$class"))
            continue;
        const ObjectPointer value = object(entry.value());
        const auto known = places.constFind(key);
        if (known != places.cend()) {
            entries[*known].value = value;
            continue;
        }
        places.insert(key, entries.size());
        entries.append({key, value});
    }
    return entries;
}

const KeyedArchiveReader::ResolvedClass &KeyedArchiveReader::classOf(const PropertyListView &record)
{
    const PropertyListView reference = record.value(m_classKey);
    if (reference.type() != PropertyListType::UID)
        fail(QStringLiteral("no reference to a class"));
    const quint64 number = checkedNumber(reference);
    if (m_lastClass && number == m_lastClassNumber)
        return *m_lastClass;
    auto known = m_resolvedClasses.find(number);
    if (known == m_resolvedClasses.cend())
        known = m_resolvedClasses.emplace(number, readClass(number)).first;
    m_lastClassNumber = number;
    m_lastClass = &known->second;
    return known->second;
}

KeyedArchiveReader::ResolvedClass KeyedArchiveReader::readClass(quint64 number) const
{
    const PropertyListView record = number == 0 ? PropertyListView() : m_records[number];
    const PropertyListView name = record.value("$classname");
    if (!record.isDictionary() || !name.isString() || name.storedLength() == 0)
        fail(QStringLiteral("object %1 is no class").arg(number));
    ResolvedClass result;
    result.name = name.toString();
    const PropertyListView names = record.value("$classes");
    if (!names.isNull() && !names.isArray())
        fail(QStringLiteral("the superclasses of %1 are no list").arg(result.name));
    for (const PropertyListView superclass : names.elements()) {
        if (!superclass.isString())
            fail(QStringLiteral("the superclasses of %1 are no names").arg(result.name));
        result.names.append(superclass.toString());
    }
    result.hostClass = m_classes.classNamed(result.name);
    if (!result.hostClass)
        result.decoder = archiveDecoderForClass(result.name, m_unknownClasses);
    return result;
}

} // namespace platform
