#include "Platform/Foundation/KeyedArchive/GeometryText_p.h"
#include "Platform/Foundation/KeyedArchive/KeyedArchiveReader_p.h"

#include "Platform/Foundation/ContainerObjects.h"
#include "Platform/Foundation/DataObjects.h"
#include "Platform/Foundation/ValueObjects.h"

#include <QHash>

#include <algorithm>
#include <optional>
#include <utility>

namespace platform {

namespace {

using UnknownClasses = KeyedUnarchiver::UnknownClasses;

// Containers

// The values under "NS.object.0", "NS.object.1", …, as a few classes have them instead of an array.
QList<ObjectPointer> numberedObjects(KeyedArchiveReader &reader, const PropertyListView &record, QByteArrayView prefix)
{
    std::vector<std::pair<uint, PropertyListView>> values;
    for (const auto &entry : record.entries()) {
        const QByteArray key = entry.utf8Key();
        bool isNumber = false;
        const uint number = key.startsWith(prefix) ? key.mid(prefix.size()).toUInt(&isNumber) : 0;
        if (isNumber)
            values.emplace_back(number, entry.value());
    }
    std::sort(values.begin(), values.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    QList<ObjectPointer> objects;
    objects.reserve(qsizetype(values.size()));
    for (const auto &[number, value] : values) {
        if (qsizetype(number) != objects.size())
            reader.fail(QStringLiteral("element %1 is missing").arg(objects.size()));
        objects.append(reader.object(value));
    }
    return objects;
}

QList<ObjectPointer> elements(KeyedArchiveReader &reader, const PropertyListView &record, const char *arrayKey,
                              const char *numberedKey)
{
    const PropertyListView array = record.value(arrayKey);
    return array.isNull() ? numberedObjects(reader, record, numberedKey) : reader.objects(array);
}

ObjectPointer decodeArray(KeyedArchiveReader &reader, const PropertyListView &record)
{
    return std::make_shared<Array>(elements(reader, record, "NS.objects", "NS.object."));
}

template <class T>
ObjectPointer decodeSet(KeyedArchiveReader &reader, const PropertyListView &record)
{
    const QList<ObjectPointer> objects = elements(reader, record, "NS.objects", "NS.object.");
    reader.requireComparable(reader.weightOfParts());
    return std::make_shared<T>(objects);
}

ObjectPointer decodeDictionary(KeyedArchiveReader &reader, const PropertyListView &record)
{
    const QList<ObjectPointer> keys = elements(reader, record, "NS.keys", "NS.key.");
    reader.requireComparable(reader.weightOfParts());
    const QList<ObjectPointer> values = elements(reader, record, "NS.objects", "NS.object.");
    if (keys.size() != values.size())
        reader.fail(QStringLiteral("%1 keys for %2 values").arg(keys.size()).arg(values.size()));
    QList<Dictionary::Entry> entries;
    entries.reserve(keys.size());
    for (qsizetype i = 0; i < keys.size(); ++i) {
        if (!keys[i])
            reader.fail(QStringLiteral("a key is null"));
        entries.append({keys[i], values[i]});
    }
    return std::make_shared<Dictionary>(entries);
}

// Values

ObjectPointer decodeNull(KeyedArchiveReader &, const PropertyListView &)
{
    return std::make_shared<Null>();
}

ObjectPointer decodeString(KeyedArchiveReader &reader, const PropertyListView &record)
{
    const PropertyListView bytes = record.value("NS.bytes");
    if (!bytes.isNull()) {
        const QByteArray utf8 = reader.data(bytes);
        reader.requireBounded(sizeof(QChar) * quint64(utf8.size()));
        return std::make_shared<String>(QString::fromUtf8(utf8));
    }
    return std::make_shared<String>(reader.text(record.value("NS.string")));
}

ObjectPointer decodeData(KeyedArchiveReader &reader, const PropertyListView &record)
{
    const PropertyListView bytes = record.value("NS.bytes");
    return std::make_shared<Data>(reader.data(bytes.isNull() ? record.value("NS.data") : bytes));
}

ObjectPointer decodeDate(KeyedArchiveReader &reader, const PropertyListView &record)
{
    const PropertyListView seconds = reader.number(record.value("NS.time"));
    if (seconds.isNull())
        reader.fail(QStringLiteral("a date without a time"));
    return std::make_shared<Date>(seconds.toReal());
}

ObjectPointer decodeUrl(KeyedArchiveReader &reader, const PropertyListView &record)
{
    const PropertyListView text = record.value("NS.relative");
    if (reader.resolved(text).isNull())
        reader.fail(QStringLiteral("a URL without a text"));
    const ObjectPointer object = reader.object(record.value("NS.base"));
    const auto base = std::dynamic_pointer_cast<Url>(object);
    if (object && !base)
        reader.fail(QStringLiteral("the base of a URL is none"));
    return std::make_shared<Url>(reader.text(text), base);
}

ObjectPointer decodeUuid(KeyedArchiveReader &reader, const PropertyListView &record)
{
    const QByteArray bytes = reader.data(record.value("NS.uuidbytes"));
    if (bytes.size() != 16)
        reader.fail(QStringLiteral("a UUID of %1 bytes").arg(bytes.size()));
    return std::make_shared<Uuid>(QUuid::fromRfc4122(bytes));
}

// Index sets

std::optional<qint64> wholeNumber(const PropertyListView &number)
{
    if (number.type() != PropertyListType::Integer)
        return std::nullopt;
    const qint64 value = number.toInteger(-1);
    return value >= 0 ? std::optional(value) : std::nullopt;
}

// A number in groups of seven bits, the lowest first; the highest bit says that more follow.
std::optional<qint64> takeNumber(QByteArrayView &bytes)
{
    quint64 value = 0;
    for (int shift = 0; shift < 63 && !bytes.isEmpty(); shift += 7) {
        const auto byte = quint8(bytes.front());
        bytes = bytes.sliced(1);
        value |= quint64(byte & 0x7F) << shift;
        if (!(byte & 0x80))
            return qint64(value);
    }
    return std::nullopt;
}

// Ranges must ascend, as they do when they are written; merging any others could take forever.
void addRange(KeyedArchiveReader &reader, IndexSet &indexes, std::optional<qint64> location,
              std::optional<qint64> length)
{
    const qint64 free = indexes.isEmpty() ? 0 : indexes.lastIndex() + 1;
    if (!location || !length || *location < free || *length > IndexSet::MaximumIndex + 1 - *location)
        reader.fail(QStringLiteral("a range of an index set is wrong"));
    indexes.addRange({*location, *length});
}

ObjectPointer decodeIndexSet(KeyedArchiveReader &reader, const PropertyListView &record)
{
    IndexSet indexes;
    const PropertyListView count = reader.number(record.value("NSRangeCount"));
    if (wholeNumber(count) == 1) {
        addRange(reader, indexes, wholeNumber(reader.number(record.value("NSLocation"))),
                 wholeNumber(reader.number(record.value("NSLength"))));
    } else if (count.toInteger() != 0) {
        const QByteArray data = reader.data(record.value("NSRangeData"));
        // Two bytes and more are a range.
        reader.requireBounded(sizeof(IndexRange) / 2 * quint64(data.size()));
        QByteArrayView rest(data);
        qint64 ranges = 0;
        for (; !rest.isEmpty(); ++ranges) {
            const auto location = takeNumber(rest);
            addRange(reader, indexes, location, takeNumber(rest));
        }
        if (wholeNumber(count) != ranges)
            reader.fail(QStringLiteral("an index set with %1 ranges").arg(ranges));
    }
    return std::make_shared<Indexes>(indexes);
}

// Geometry

template <class T>
ObjectPointer geometry(KeyedArchiveReader &reader, const std::optional<T> &value)
{
    if (!value)
        reader.fail(QStringLiteral("a point, size or rectangle is wrong"));
    return std::make_shared<Geometry>(*value);
}

// A long text costs nothing to keep, but each record that refers to it reads it again.
QString geometryText(KeyedArchiveReader &reader, const PropertyListView &value)
{
    const QString text = reader.text(value);
    reader.requireBounded(sizeof(QChar) * quint64(text.size()));
    return text;
}

ObjectPointer decodeRange(KeyedArchiveReader &reader, const PropertyListView &record)
{
    const auto location = wholeNumber(reader.number(record.value("NS.rangeval.location")));
    const auto length = wholeNumber(reader.number(record.value("NS.rangeval.length")));
    if (!location || !length)
        reader.fail(QStringLiteral("a range is wrong"));
    return std::make_shared<Geometry>(IndexRange{*location, *length});
}

ObjectPointer decodeMargins(KeyedArchiveReader &reader, const PropertyListView &record)
{
    const auto edge = [&](const char *key) { return reader.number(record.value(key)).toReal(); };
    return std::make_shared<Geometry>(QMarginsF(edge("NS.edgeval.left"), edge("NS.edgeval.top"),
                                                edge("NS.edgeval.right"), edge("NS.edgeval.bottom")));
}

ObjectPointer decodeValue(KeyedArchiveReader &reader, const PropertyListView &record)
{
    switch (reader.number(record.value("NS.special")).toInteger()) {
    case 1:
        return geometry(reader, GeometryText::toPoint(geometryText(reader, record.value("NS.pointval"))));
    case 2:
        return geometry(reader, GeometryText::toSize(geometryText(reader, record.value("NS.sizeval"))));
    case 3:
        return geometry(reader, GeometryText::toRect(geometryText(reader, record.value("NS.rectval"))));
    case 4:
        return decodeRange(reader, record);
    case 12:
        return decodeMargins(reader, record);
    default:
        reader.fail(QStringLiteral("a value of an unknown kind"));
    }
}

struct Decoder {
    ArchiveDecoder decode;
    bool isKeptAsUnknown; // when unknown classes are kept
};

const QHash<QString, Decoder> &decoders()
{
    static const QHash<QString, Decoder> table{
        {QStringLiteral("NSArray"), {decodeArray, false}},
        {QStringLiteral("NSMutableArray"), {decodeArray, false}},
        {QStringLiteral("NSSet"), {decodeSet<Set>, false}},
        {QStringLiteral("NSMutableSet"), {decodeSet<Set>, false}},
        {QStringLiteral("NSOrderedSet"), {decodeSet<OrderedSet>, false}},
        {QStringLiteral("NSMutableOrderedSet"), {decodeSet<OrderedSet>, false}},
        {QStringLiteral("NSDictionary"), {decodeDictionary, false}},
        {QStringLiteral("NSMutableDictionary"), {decodeDictionary, false}},
        {QStringLiteral("NSNull"), {decodeNull, false}},
        {QStringLiteral("NSString"), {decodeString, false}},
        {QStringLiteral("NSMutableString"), {decodeString, false}},
        {QStringLiteral("NSData"), {decodeData, false}},
        {QStringLiteral("NSMutableData"), {decodeData, false}},
        {QStringLiteral("NSDate"), {decodeDate, false}},
        {QStringLiteral("NSURL"), {decodeUrl, true}},
        {QStringLiteral("NSUUID"), {decodeUuid, true}},
        {QStringLiteral("NSIndexSet"), {decodeIndexSet, true}},
        {QStringLiteral("NSMutableIndexSet"), {decodeIndexSet, true}},
        {QStringLiteral("NSValue"), {decodeValue, true}},
    };
    return table;
}

} // namespace

ArchiveDecoder archiveDecoderForClass(const QString &name, UnknownClasses unknownClasses)
{
    const auto decoder = decoders().constFind(name);
    if (decoder == decoders().cend() || (decoder->isKeptAsUnknown && unknownClasses == UnknownClasses::Keep))
        return nullptr;
    return decoder->decode;
}

} // namespace platform
