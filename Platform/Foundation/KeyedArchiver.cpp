#include "Platform/Foundation/KeyedArchiver.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/DataObjects.h"
#include "Platform/Foundation/KeyedArchive/GeometryText_p.h"
#include "Platform/Foundation/KeyedArchive/KeyedArchiveWriter_p.h"
#include "Platform/Foundation/ValueObjects.h"

namespace platform {

KeyedArchiver::KeyedArchiver(const ArchiveClasses &classes)
    : m_writer(std::make_unique<KeyedArchiveWriter>(*this, classes))
{ }

KeyedArchiver::~KeyedArchiver() = default;

void KeyedArchiver::setOutputFormat(int format)
{
    ZR_ASSERT_PARAMETER(this, format == XmlFormat);
}

KeyedArchiveWriter &KeyedArchiver::writerForKey(QAnyStringView key) const
{
    const bool isReserved = key.visit([](auto text) { return !text.isEmpty() && text.front() == QLatin1Char('$'); });
    ZR_ASSERT(this, !isReserved, "keys that begin with $ are the archive's own");
    ZR_ASSERT(this, m_writer->isEncoding(), "encoding has finished");
    return *m_writer;
}

void KeyedArchiver::encodeBool(bool value, QAnyStringView key)
{
    writerForKey(key).encode(value, key);
}

void KeyedArchiver::encodeInt32(qint32 value, QAnyStringView key)
{
    writerForKey(key).encode(qint64(value), key);
}

void KeyedArchiver::encodeInt64(qint64 value, QAnyStringView key)
{
    writerForKey(key).encode(value, key);
}

void KeyedArchiver::encodeDouble(double value, QAnyStringView key)
{
    writerForKey(key).encode(value, key);
}

void KeyedArchiver::encodeBytes(const QByteArray &bytes, QAnyStringView key)
{
    writerForKey(key).encode(bytes, key);
}

void KeyedArchiver::encodeObject(const ObjectPointer &object, QAnyStringView key)
{
    KeyedArchiveWriter &writer = writerForKey(key);
    writer.encode(writer.reference(object), key);
}

void KeyedArchiver::encodeNew(const ObjectPointer &object, QAnyStringView key)
{
    KeyedArchiveWriter &writer = writerForKey(key);
    writer.encode(object ? writer.referenceToNew(object) : ArchiveReference(), key);
}

void KeyedArchiver::encode(const QString &text, QAnyStringView key)
{
    KeyedArchiveWriter &writer = writerForKey(key);
    writer.encode(writer.reference(text), key);
}

void KeyedArchiver::encode(const QByteArray &data, QAnyStringView key)
{
    encodeNew(data.isNull() ? nullptr : std::make_shared<Data>(data), key);
}

void KeyedArchiver::encode(const QDateTime &date, QAnyStringView key)
{
    encodeNew(date.isValid() ? std::make_shared<Date>(date) : nullptr, key);
}

void KeyedArchiver::encode(const QUrl &url, QAnyStringView key)
{
    encodeNew(url.isEmpty() ? nullptr : std::make_shared<Url>(url), key);
}

void KeyedArchiver::encode(const QUuid &uuid, QAnyStringView key)
{
    encodeNew(uuid.isNull() ? nullptr : std::make_shared<Uuid>(uuid), key);
}

void KeyedArchiver::encode(const QPointF &point, QAnyStringView key)
{
    encode(GeometryText::toString(point), key);
}

void KeyedArchiver::encode(const QSizeF &size, QAnyStringView key)
{
    encode(GeometryText::toString(size), key);
}

void KeyedArchiver::encode(const QRectF &rect, QAnyStringView key)
{
    encode(GeometryText::toString(rect), key);
}

void KeyedArchiver::encode(const QStringList &texts, QAnyStringView key)
{
    QList<ObjectPointer> objects;
    objects.reserve(texts.size());
    for (const QString &text : texts)
        objects.append(std::make_shared<String>(text));
    encode(objects, key);
}

void KeyedArchiver::encode(const QList<ObjectPointer> &objects, QAnyStringView key)
{
    encodeNew(std::make_shared<Array>(objects), key);
}

Result<QByteArray> KeyedArchiver::finishEncoding()
{
    ZR_ASSERT(this, !m_writer->isFinished(), "encoding has finished");
    return m_writer->finish();
}

} // namespace platform
