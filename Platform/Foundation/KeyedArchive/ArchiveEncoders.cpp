#include "Platform/Foundation/KeyedArchive/GeometryText_p.h"
#include "Platform/Foundation/KeyedArchive/KeyedArchiveWriter_p.h"

#include "Platform/Foundation/ContainerObjects.h"
#include "Platform/Foundation/DataObjects.h"
#include "Platform/Foundation/ValueObjects.h"

#include <array>

namespace platform {

namespace {

// Values of property lists

void writeBoolean(KeyedArchiveWriter &writer, const Object &object)
{
    writer.output().boolean(static_cast<const Boolean &>(object).value());
}

void writeNumber(KeyedArchiveWriter &writer, const Object &object)
{
    const auto &number = static_cast<const Number &>(object);
    if (number.isReal())
        writer.output().real(number.toReal());
    else if (number.toReal() < 0)
        writer.output().integer(number.toInteger());
    else
        writer.output().unsignedInteger(number.toUnsigned());
}

void writeData(KeyedArchiveWriter &writer, const Object &object)
{
    writer.output().data(static_cast<const Data &>(object).bytes());
}

// Containers

void writeArray(KeyedArchiveWriter &writer, const Object &object)
{
    writer.encodeInPlace(static_cast<const Array &>(object).objects(), "NS.objects");
}

void writeSet(KeyedArchiveWriter &writer, const Object &object)
{
    writer.encodeInPlace(static_cast<const Set &>(object).objects(), "NS.objects");
}

void writeOrderedSet(KeyedArchiveWriter &writer, const Object &object)
{
    int number = 0;
    for (const ObjectPointer &element : static_cast<const OrderedSet &>(object).objects())
        writer.encode(writer.reference(element), QStringLiteral("NS.object.%1").arg(number++));
}

void writeDictionary(KeyedArchiveWriter &writer, const Object &object)
{
    QList<ObjectPointer> keys;
    QList<ObjectPointer> values;
    for (const Dictionary::Entry &entry : static_cast<const Dictionary &>(object).entries()) {
        keys.append(entry.key);
        values.append(entry.value);
    }
    writer.encodeInPlace(keys, "NS.keys");
    writer.encodeInPlace(values, "NS.objects");
}

// Other values

void writeNull(KeyedArchiveWriter &, const Object &) { }

void writeDate(KeyedArchiveWriter &writer, const Object &object)
{
    writer.encode(static_cast<const Date &>(object).referenceSeconds(), "NS.time");
}

void writeUrl(KeyedArchiveWriter &writer, const Object &object)
{
    const auto &url = static_cast<const Url &>(object);
    writer.encode(writer.reference(url.base()), "NS.base");
    writer.encode(writer.reference(url.text().isNull() ? QLatin1String("") : url.text()), "NS.relative");
}

void writeUuid(KeyedArchiveWriter &writer, const Object &object)
{
    writer.encode(static_cast<const Uuid &>(object).uuid().toRfc4122(), "NS.uuidbytes");
}

void appendNumber(QByteArray &bytes, quint64 number)
{
    for (; number >= 0x80; number >>= 7)
        bytes.append(char(number | 0x80));
    bytes.append(char(number));
}

void writeIndexes(KeyedArchiveWriter &writer, const Object &object)
{
    const QList<IndexRange> &ranges = static_cast<const Indexes &>(object).indexes().ranges();
    writer.encode(qint64(ranges.size()), "NSRangeCount");
    if (ranges.size() == 1) {
        writer.encode(ranges.first().location, "NSLocation");
        writer.encode(ranges.first().length, "NSLength");
    } else if (!ranges.isEmpty()) {
        QByteArray bytes;
        for (const IndexRange &range : ranges) {
            appendNumber(bytes, quint64(range.location));
            appendNumber(bytes, quint64(range.length));
        }
        writer.encode(writer.referenceToNew(std::make_shared<Data>(bytes)), "NSRangeData");
    }
}

void encodeGeometry(KeyedArchiveWriter &writer, const char *key, const QString &text, qint64 kind)
{
    writer.encode(writer.reference(text), key);
    writer.encode(kind, "NS.special");
}

void encode(KeyedArchiveWriter &writer, const QPointF &point)
{
    encodeGeometry(writer, "NS.pointval", GeometryText::toString(point), 1);
}
void encode(KeyedArchiveWriter &writer, const QSizeF &size)
{
    encodeGeometry(writer, "NS.sizeval", GeometryText::toString(size), 2);
}
void encode(KeyedArchiveWriter &writer, const QRectF &rect)
{
    encodeGeometry(writer, "NS.rectval", GeometryText::toString(rect), 3);
}
void encode(KeyedArchiveWriter &writer, const IndexRange &range)
{
    const auto number = [&](qint64 value) { return writer.referenceToNew(std::make_shared<Number>(value)); };
    writer.encode(number(range.length), "NS.rangeval.length");
    writer.encode(number(range.location), "NS.rangeval.location");
    writer.encode(qint64(4), "NS.special");
}
void encode(KeyedArchiveWriter &writer, const QMarginsF &margins)
{
    writer.encode(double(margins.bottom()), "NS.edgeval.bottom");
    writer.encode(double(margins.left()), "NS.edgeval.left");
    writer.encode(double(margins.right()), "NS.edgeval.right");
    writer.encode(double(margins.top()), "NS.edgeval.top");
    writer.encode(qint64(12), "NS.special");
}

void writeGeometry(KeyedArchiveWriter &writer, const Object &object)
{
    std::visit([&writer](const auto &value) { encode(writer, value); }, static_cast<const Geometry &>(object).value());
}

struct EncodedClass {
    const ObjectClass &objectClass;
    ArchiveEncoder encoder;
};

} // namespace

const ArchiveEncoder *archiveEncoderForObject(const Object &object)
{
    // A class before its superclass.
    static const std::array table{
        EncodedClass{Boolean::staticClass(), {nullptr, writeBoolean}},
        EncodedClass{Number::staticClass(), {nullptr, writeNumber}},
        EncodedClass{Data::staticClass(), {nullptr, writeData}},
        EncodedClass{Array::staticClass(), {"NSArray", writeArray}},
        EncodedClass{Dictionary::staticClass(), {"NSDictionary", writeDictionary}},
        EncodedClass{Set::staticClass(), {"NSSet", writeSet}},
        EncodedClass{OrderedSet::staticClass(), {"NSOrderedSet", writeOrderedSet}},
        EncodedClass{Date::staticClass(), {"NSDate", writeDate}},
        EncodedClass{Url::staticClass(), {"NSURL", writeUrl}},
        EncodedClass{Uuid::staticClass(), {"NSUUID", writeUuid}},
        EncodedClass{Null::staticClass(), {"NSNull", writeNull}},
        EncodedClass{Indexes::staticClass(), {"NSIndexSet", writeIndexes}},
        EncodedClass{Geometry::staticClass(), {"NSValue", writeGeometry}},
    };
    for (const EncodedClass &known : table) {
        if (object.isKindOfClass(known.objectClass))
            return &known.encoder;
    }
    return nullptr;
}

} // namespace platform
