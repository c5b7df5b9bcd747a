#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlWriter.h"

#include <QSaveFile>

#include <algorithm>
#include <optional>

namespace platform {

namespace {

void writeValue(PropertyListXmlWriter &writer, const QVariant &value);

// A QMap of strings is sorted by code unit, as the form wants it.
void writeMap(PropertyListXmlWriter &writer, const QVariantMap &map)
{
    writer.beginDictionary();
    for (auto entry = map.cbegin(); entry != map.cend() && !writer.hasFailed(); ++entry) {
        writer.key(entry.key());
        writeValue(writer, entry.value());
    }
    writer.end();
}

void writeHash(PropertyListXmlWriter &writer, const QVariantHash &hash)
{
    QStringList keys = hash.keys();
    std::sort(keys.begin(), keys.end());
    writer.beginDictionary();
    for (const QString &key : std::as_const(keys)) {
        writer.key(key);
        writeValue(writer, hash.value(key));
    }
    writer.end();
}

void writeList(PropertyListXmlWriter &writer, const QVariantList &list)
{
    writer.beginArray();
    for (const QVariant &element : list)
        writeValue(writer, element);
    writer.end();
}

void writeStrings(PropertyListXmlWriter &writer, const QStringList &strings)
{
    writer.beginArray();
    for (const QString &string : strings)
        writer.string(string);
    writer.end();
}

void writeDate(PropertyListXmlWriter &writer, const QDateTime &date)
{
    if (date.isValid())
        writer.date(double(date.toMSecsSinceEpoch()) / 1000 - double(PropertyListScalars::ReferenceEpoch));
    else
        writer.fail(QStringLiteral("invalid date"));
}

// Recurses at most as deep as the writer allows containers to stand within one another.
void writeValue(PropertyListXmlWriter &writer, const QVariant &value)
{
    if (writer.hasFailed())
        return;
    switch (value.typeId()) {
    case QMetaType::QVariantMap:
        return writeMap(writer, value.toMap());
    case QMetaType::QVariantHash:
        return writeHash(writer, value.toHash());
    case QMetaType::QVariantList:
        return writeList(writer, value.toList());
    case QMetaType::QStringList:
        return writeStrings(writer, value.toStringList());
    case QMetaType::QString:
        return writer.string(*static_cast<const QString *>(value.constData()));
    case QMetaType::QByteArray:
        return writer.data(*static_cast<const QByteArray *>(value.constData()));
    case QMetaType::QDateTime:
        return writeDate(writer, value.toDateTime());
    case QMetaType::Bool:
        return writer.boolean(value.toBool());
    case QMetaType::Double:
    case QMetaType::Float:
        return writer.real(value.toDouble());
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return writer.integer(value.toLongLong());
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return writer.unsignedInteger(value.toULongLong());
    default:
        break;
    }
    if (value.metaType() == QMetaType::fromType<PropertyListUid>())
        return writer.uid(value.value<PropertyListUid>().number);
    const char *name = value.isValid() ? value.metaType().name() : "nothing";
    writer.fail(QStringLiteral("%1 is no type of a property list").arg(QLatin1String(name)));
}

} // namespace

Result<QByteArray> PropertyList::writeXml(const QVariant &root)
{
    PropertyListXmlWriter writer;
    writeValue(writer, root);
    return writer.finish();
}

std::optional<Error> PropertyList::writeXmlFile(const QString &path, const QVariant &root)
{
    auto bytes = writeXml(root);
    if (!bytes) {
        Error error = bytes.error();
        error.path = path;
        return error;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes.value()) != bytes.value().size() || !file.commit())
        return Error{ErrorCode::NotWritable, file.errorString(), -1, path};
    return std::nullopt;
}

} // namespace platform
