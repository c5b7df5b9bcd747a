#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListTape_p.h"

#include <QHash>
#include <QTimeZone>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <memory>

namespace platform {

using namespace PropertyListTape;

namespace {

PropertyListType typeOf(PropertyListRow row)
{
    switch (kindOf(row)) {
    case Dictionary:
        return PropertyListType::Dictionary;
    case Array:
        return PropertyListType::Array;
    case String:
        return PropertyListType::String;
    case Integer:
        return PropertyListType::Integer;
    case Real:
        return PropertyListType::Real;
    case Date:
    case SecondsDate:
        return PropertyListType::Date;
    case Data:
    case RawData:
        return PropertyListType::Data;
    case True:
    case False:
        return PropertyListType::Boolean;
    case UID:
        return PropertyListType::UID;
    case Key:
    case NumberKey:
        break;
    }
    return PropertyListType::Null;
}

// Walking the tape

qsizetype textLength(const PropertyListDocument &document, quint32 row)
{
    const quint32 length = lengthOf(document.rows[row]);
    return length < Saturated ? qsizetype(length) : qsizetype(document.rows[row + 1]);
}

QByteArrayView textOf(const PropertyListDocument &document, quint32 row)
{
    return QByteArrayView(document.text + offsetOf(document.rows[row]), textLength(document, row));
}

// The row behind a key or scalar and its length row, or behind a container and all it holds.
quint32 rowBehind(const PropertyListDocument &document, quint32 row)
{
    const PropertyListRow content = document.rows[row];
    if (isContainer(content))
        return row + offsetOf(content);
    return row + (lengthOf(content) < Saturated ? 1 : 2);
}

// The row of an entry's value, given the entry's first row; the row itself at the end of the tape.
quint32 valueRowOf(const PropertyListDocument &document, quint32 row)
{
    return row < document.rowCount && isKey(document.rows[row]) ? rowBehind(document, row) : row;
}

// Keys and strings

QByteArray borrowed(QByteArrayView text)
{
    return QByteArray::fromRawData(text.data(), text.size());
}

QByteArray keyText(const PropertyListDocument &document, quint32 row, quint32 valueRow)
{
    const PropertyListRow content = document.rows[row];
    if (row == valueRow)
        return document.keys.name(keyOf(content));
    if (kindOf(content) == NumberKey)
        return QByteArray::number(offsetOf(content));
    return borrowed(textOf(document, row));
}

// QString::fromUtf8 takes a first U+FEFF for a byte-order mark and drops it, but here it is a character.
QString fromUtf8(QByteArrayView text)
{
    QString string = QString::fromUtf8(text);
    if (text.startsWith("\xEF\xBB\xBF"))
        string.prepend(QChar(0xFEFF));
    return string;
}

// Numbers and dates

PropertyListScalars::IntegerNumber integerOf(const PropertyListDocument &document, quint32 row)
{
    return PropertyListScalars::parseInteger(textOf(document, row)).value_or(PropertyListScalars::IntegerNumber());
}

double realOf(const PropertyListDocument &document, quint32 row)
{
    return PropertyListScalars::parseReal(textOf(document, row)).value_or(0);
}

constexpr double TwoToThe63 = 9223372036854775808.0;

} // namespace

// Documents

PropertyListValue PropertyListDocument::handOver(std::unique_ptr<PropertyListDocument> document)
{
    return PropertyListValue(PropertyListView(document.release(), 0));
}

PropertyListValue::PropertyListValue(const PropertyListView &view)
    : PropertyListView(view)
{
    if (m_document)
        m_document->references.fetch_add(1, std::memory_order_relaxed);
}

PropertyListValue::PropertyListValue(const PropertyListValue &other)
    : PropertyListValue(static_cast<const PropertyListView &>(other))
{ }

PropertyListValue::PropertyListValue(PropertyListValue &&other) noexcept
    : PropertyListView(std::exchange(static_cast<PropertyListView &>(other), PropertyListView()))
{ }

PropertyListValue &PropertyListValue::operator=(const PropertyListValue &other)
{
    return *this = PropertyListValue(other);
}

PropertyListValue &PropertyListValue::operator=(PropertyListValue &&other) noexcept
{
    std::swap(static_cast<PropertyListView &>(*this), static_cast<PropertyListView &>(other));
    return *this;
}

PropertyListValue::~PropertyListValue()
{
    if (m_document && m_document->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete m_document;
}

QList<PropertyListValue> PropertyListValue::select(const QList<PropertyListValue> &values,
                                                   std::span<const quint32> positions)
{
    QList<PropertyListValue> selected(qsizetype(positions.size()));
    const PropertyListDocument *document = nullptr;
    int uncounted = 0; // new handles to `document`
    const auto count = [&] {
        if (document)
            document->references.fetch_add(uncounted, std::memory_order_relaxed);
        uncounted = 0;
    };
    PropertyListValue *next = selected.data();
    for (const quint32 position : positions) {
        const PropertyListView &value = values[qsizetype(position)];
        if (value.m_document != document) {
            count();
            document = value.m_document;
        }
        static_cast<PropertyListView &>(*next++) = value;
        ++uncounted;
    }
    count();
    return selected;
}

qsizetype PropertyListValue::memoryUse() const
{
    if (!m_document)
        return 0;
    return m_document->textSize + qsizetype(m_document->rowCount) * qsizetype(sizeof(PropertyListRow));
}

// Scalars

PropertyListType PropertyListView::type() const
{
    return m_document ? typeOf(m_document->rows[m_row]) : PropertyListType::Null;
}

QString PropertyListView::toString() const
{
    return fromUtf8(plainUtf8().value_or(QByteArrayView()));
}

QByteArray PropertyListView::toUtf8() const
{
    return plainUtf8().value_or(QByteArrayView()).toByteArray();
}

std::optional<QByteArrayView> PropertyListView::plainUtf8() const
{
    if (type() != PropertyListType::String)
        return std::nullopt;
    return textOf(*m_document, m_row);
}

qsizetype PropertyListView::storedLength() const
{
    return type() == PropertyListType::String ? textLength(*m_document, m_row) : 0;
}

qint64 PropertyListView::toInteger(qint64 fallback) const
{
    switch (type()) {
    case PropertyListType::Integer: {
        const auto [magnitude, negative] = integerOf(*m_document, m_row);
        if (negative)
            return qint64(0 - magnitude);
        return magnitude <= quint64(std::numeric_limits<qint64>::max()) ? qint64(magnitude) : fallback;
    }
    case PropertyListType::Real: {
        const double real = realOf(*m_document, m_row);
        return real >= -TwoToThe63 && real < TwoToThe63 ? qint64(real) : fallback;
    }
    default:
        return fallback;
    }
}

quint64 PropertyListView::toUnsigned(quint64 fallback) const
{
    if (type() != PropertyListType::Integer)
        return fallback;
    const auto [magnitude, negative] = integerOf(*m_document, m_row);
    return negative ? fallback : magnitude;
}

double PropertyListView::toReal(double fallback) const
{
    switch (type()) {
    case PropertyListType::Integer: {
        const auto [magnitude, negative] = integerOf(*m_document, m_row);
        return negative ? -double(magnitude) : double(magnitude);
    }
    case PropertyListType::Real:
        return realOf(*m_document, m_row);
    default:
        return fallback;
    }
}

bool PropertyListView::toBoolean(bool fallback) const
{
    switch (type()) {
    case PropertyListType::Boolean:
        return kindOf(m_document->rows[m_row]) == True;
    case PropertyListType::Integer:
        return integerOf(*m_document, m_row).magnitude != 0;
    case PropertyListType::Real:
        return realOf(*m_document, m_row) != 0;
    default:
        return fallback;
    }
}

QDateTime PropertyListView::toDateTime() const
{
    const auto seconds = toReferenceSeconds();
    if (!seconds)
        return {};
    const double milliseconds = std::round((*seconds + double(PropertyListScalars::ReferenceEpoch)) * 1000);
    if (!(milliseconds >= -TwoToThe63 && milliseconds < TwoToThe63))
        return {};
    return QDateTime::fromMSecsSinceEpoch(qint64(milliseconds), Qt::UTC);
}

std::optional<double> PropertyListView::toReferenceSeconds() const
{
    if (type() != PropertyListType::Date)
        return std::nullopt;
    if (kindOf(m_document->rows[m_row]) == SecondsDate)
        return realOf(*m_document, m_row);
    return double(PropertyListScalars::parseDate(textOf(*m_document, m_row)).value_or(0));
}

QByteArray PropertyListView::toData() const
{
    if (type() != PropertyListType::Data)
        return {};
    const QByteArrayView text = textOf(*m_document, m_row);
    return kindOf(m_document->rows[m_row]) == RawData ? text.toByteArray() : QByteArray::fromBase64(borrowed(text));
}

quint64 PropertyListView::toUid() const
{
    return type() == PropertyListType::UID ? integerOf(*m_document, m_row).magnitude : 0;
}

QVariant PropertyListView::toVariant() const
{
    switch (type()) {
    case PropertyListType::Null:
        return {};
    case PropertyListType::Dictionary: {
        QVariantMap map;
        for (const auto &entry : entries())
            map.insert(entry.key(), entry.value().toVariant());
        return map;
    }
    case PropertyListType::Array: {
        QVariantList list;
        list.reserve(count());
        for (const PropertyListView element : elements())
            list.append(element.toVariant());
        return list;
    }
    case PropertyListType::String:
        return toString();
    case PropertyListType::Integer: {
        const auto [magnitude, negative] = integerOf(*m_document, m_row);
        if (!negative && magnitude > quint64(std::numeric_limits<qint64>::max()))
            return qulonglong(magnitude);
        return qlonglong(toInteger());
    }
    case PropertyListType::Real:
        return toReal();
    case PropertyListType::Boolean:
        return toBoolean();
    case PropertyListType::Date:
        return toDateTime();
    case PropertyListType::Data:
        return toData();
    case PropertyListType::UID:
        return QVariant::fromValue(PropertyListUid{toUid()});
    }
    return {};
}

// Containers

qsizetype PropertyListView::count() const
{
    if (!isDictionary() && !isArray())
        return 0;
    const PropertyListRow row = m_document->rows[m_row];
    if (lengthOf(row) < Saturated)
        return lengthOf(row);
    qsizetype entries = 0;
    const quint32 end = rowBehind(*m_document, m_row);
    for (quint32 next = m_row + 1; next < end; ++entries)
        next = rowBehind(*m_document, valueRowOf(*m_document, next));
    return entries;
}

PropertyListKey PropertyListView::key(QAnyStringView text) const
{
    PropertyListKey key;
    key.m_text = PropertyListScalars::utf8Of(text);
    key.m_text.detach(); // the caller's characters may go
    key.m_decimal = PropertyListScalars::parseCanonicalNumber(key.m_text);
    if (m_document)
        key.m_number = m_document->keys.find(key.m_text);
    return key;
}

PropertyListView PropertyListView::value(QAnyStringView key) const
{
    if (!isDictionary())
        return {};
    PropertyListKey lookup;
    lookup.m_text = PropertyListScalars::utf8Of(key);
    lookup.m_decimal = PropertyListScalars::parseCanonicalNumber(lookup.m_text);
    lookup.m_number = m_document->keys.find(lookup.m_text);
    return value(lookup);
}

PropertyListView PropertyListView::value(const PropertyListKey &key) const
{
    if (!isDictionary())
        return {};
    const PropertyListDocument &document = *m_document;
    const quint32 end = rowBehind(document, m_row);
    quint32 found = m_row;
    for (quint32 row = m_row + 1; row < end;) {
        const PropertyListRow content = document.rows[row];
        quint32 valueRow = row;
        bool matches = false;
        if (!isKey(content)) {
            matches = keyOf(content) == key.m_number;
        } else {
            valueRow = rowBehind(document, row);
            matches =
                kindOf(content) == NumberKey ? key.m_decimal == offsetOf(content) : textOf(document, row) == key.m_text;
        }
        if (matches)
            found = valueRow;
        row = rowBehind(document, valueRow);
    }
    return found == m_row ? PropertyListView() : PropertyListView(m_document, found);
}

PropertyListView PropertyListView::at(qsizetype index) const
{
    if (index < 0)
        return {};
    for (const PropertyListView element : elements()) {
        if (index-- == 0)
            return element;
    }
    return {};
}

PropertyListView::Range<PropertyListView::ElementIterator> PropertyListView::elements() const
{
    if (!isArray())
        return {};
    return {ElementIterator(m_document, m_row + 1), ElementIterator(m_document, rowBehind(*m_document, m_row))};
}

PropertyListView::Range<PropertyListView::EntryIterator> PropertyListView::entries() const
{
    if (!isDictionary())
        return {};
    return {EntryIterator(m_document, m_row + 1), EntryIterator(m_document, rowBehind(*m_document, m_row))};
}

PropertyListView::ElementIterator &PropertyListView::ElementIterator::operator++()
{
    m_row = rowBehind(*m_document, m_row);
    return *this;
}

PropertyListView::EntryIterator::EntryIterator(const PropertyListDocument *document, quint32 row)
    : m_document(document)
    , m_row(row)
    , m_valueRow(valueRowOf(*document, row))
{ }

PropertyListView::EntryIterator &PropertyListView::EntryIterator::operator++()
{
    m_row = rowBehind(*m_document, m_valueRow);
    m_valueRow = valueRowOf(*m_document, m_row);
    return *this;
}

QString PropertyListView::EntryIterator::key() const
{
    return fromUtf8(utf8Key());
}

QByteArray PropertyListView::EntryIterator::utf8Key() const
{
    return keyText(*m_document, m_row, m_valueRow);
}

// Identity and equality

const void *PropertyListView::identity() const
{
    return m_document ? m_document->rows + m_row : nullptr;
}

namespace {

QHash<QByteArray, PropertyListView> entriesByKey(const PropertyListView &dictionary)
{
    QHash<QByteArray, PropertyListView> values;
    values.reserve(dictionary.count());
    for (const auto &entry : dictionary.entries())
        values.insert(entry.utf8Key(), entry.value());
    return values;
}

bool equalArrays(const PropertyListView &a, const PropertyListView &b)
{
    const auto ofA = a.elements();
    const auto ofB = b.elements();
    return std::equal(ofA.begin(), ofA.end(), ofB.begin(), ofB.end());
}

} // namespace

bool PropertyListView::equal(const PropertyListView &a, const PropertyListView &b)
{
    if (a.type() != b.type())
        return false;
    switch (a.type()) {
    case PropertyListType::Null:
        return true;
    case PropertyListType::Dictionary:
        return entriesByKey(a) == entriesByKey(b);
    case PropertyListType::Array:
        return equalArrays(a, b);
    case PropertyListType::String:
        return *a.plainUtf8() == *b.plainUtf8();
    case PropertyListType::Integer:
    case PropertyListType::UID:
        return integerOf(*a.m_document, a.m_row) == integerOf(*b.m_document, b.m_row);
    case PropertyListType::Real:
        return a.toReal() == b.toReal();
    case PropertyListType::Boolean:
        return a.toBoolean() == b.toBoolean();
    case PropertyListType::Date:
        return a.toReferenceSeconds() == b.toReferenceSeconds();
    case PropertyListType::Data:
        return a.toData() == b.toData();
    }
    return false;
}

} // namespace platform
