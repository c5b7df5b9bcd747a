#include "JsonWriter.h"

#include "Output.h"

#include <QHash>
#include <QVarLengthArray>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

using platform::PropertyListType;
using platform::PropertyListView;

namespace {

/// Tells, while a dictionary's entries are walked a second time, which of them are overwritten by a later entry.
class OverwrittenEntries
{
public:
    explicit OverwrittenEntries(const PropertyListView &dictionary)
    {
        for (const auto &entry : dictionary.entries())
            m_keys.append(entry.utf8Key());
        // Comparing all with all beats hashing for the few keys of a song.
        if (m_keys.size() <= 40)
            return;
        m_last.reserve(m_keys.size());
        for (qsizetype i = 0; i < m_keys.size(); ++i)
            m_last.insert(m_keys[i], i);
    }
    const QByteArray &key(qsizetype entry) const { return m_keys[entry]; }
    bool contains(qsizetype entry) const
    {
        if (!m_last.isEmpty())
            return m_last.value(m_keys[entry]) != entry;
        return std::find(m_keys.cbegin() + entry + 1, m_keys.cend(), m_keys[entry]) != m_keys.cend();
    }

private:
    QVarLengthArray<QByteArray, 40> m_keys;
    QHash<QByteArray, qsizetype> m_last;
};

qint64 floorDivided(qint64 number, qint64 divisor)
{
    return number / divisor - (number % divisor < 0 ? 1 : 0);
}

struct CalendarDay {
    qint64 year;
    int month;
    int day;
};

// The day so many days after 0000-03-01 of the Gregorian calendar, after Howard Hinnant's "chrono-compatible low-level
// date algorithms": years begin in March, so that a leap day is the last of its year. The Julian calendar has the same
// shape with eras of four years and began two days earlier.
CalendarDay calendarDay(qint64 day)
{
    constexpr qint64 firstGregorianDay = 578'041; // 1582-10-15
    const bool isJulian = day < firstGregorianDay;
    const qint64 daysPerEra = isJulian ? 1'461 : 146'097;
    day += isJulian ? 2 : 0;
    const qint64 era = floorDivided(day, daysPerEra);
    const qint64 dayOfEra = day - era * daysPerEra;
    const qint64 yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    const qint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const qint64 month = (5 * dayOfYear + 2) / 153; // from March
    return {yearOfEra + era * (isJulian ? 4 : 400) + (month < 10 ? 0 : 1), int(month < 10 ? month + 3 : month - 9),
            int(dayOfYear - (153 * month + 2) / 5 + 1)};
}

bool needsEscape(char c)
{
    return uchar(c) < 0x20 || c == '"' || c == '\\';
}

} // namespace

JsonWriter::JsonWriter(Output &output, int linesToDepth)
    : m_output(output)
    , m_linesToDepth(linesToDepth)
{ }

void JsonWriter::key(QByteArrayView utf8)
{
    beginElement();
    quoted(utf8);
    raw(": ");
    m_followsKey = true;
}

void JsonWriter::value(const PropertyListView &value)
{
    switch (value.type()) {
    case PropertyListType::Null:
        null();
        break;
    case PropertyListType::Dictionary:
        dictionary(value);
        break;
    case PropertyListType::Array:
        beginArray();
        for (const PropertyListView &element : value.elements()) {
            if (m_output.hasFailed())
                break;
            this->value(element);
        }
        endArray();
        break;
    case PropertyListType::String:
        string(*value.plainUtf8());
        break;
    case PropertyListType::Integer:
        integer(value);
        break;
    case PropertyListType::Real:
        number(value.toReal());
        break;
    case PropertyListType::Boolean:
        boolean(value.toBoolean());
        break;
    case PropertyListType::Date:
        date(value.toReferenceSeconds().value_or(0));
        break;
    case PropertyListType::Data:
        data(value.toData());
        break;
    case PropertyListType::UID:
        beginElement();
        raw("{\"CF$UID\": ");
        raw(QByteArray::number(value.toUid()));
        raw("}");
        break;
    }
}

void JsonWriter::string(QByteArrayView utf8)
{
    beginElement();
    quoted(utf8);
}

void JsonWriter::string(QStringView text)
{
    string(text.toUtf8());
}

void JsonWriter::number(double real)
{
    beginElement();
    if (std::isnan(real)) {
        raw("\"NaN\"");
        return;
    }
    if (std::isinf(real)) {
        raw(real > 0 ? QByteArrayView("\"Infinity\"") : QByteArrayView("\"-Infinity\""));
        return;
    }
    char digits[32];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, real);
    const QByteArrayView text(digits, end - digits);
    raw(text);
    if (!text.contains('.') && !text.contains('e'))
        raw(".0");
}

void JsonWriter::integer(qint64 number)
{
    beginElement();
    raw(QByteArray::number(number));
}

void JsonWriter::unsignedInteger(quint64 number)
{
    beginElement();
    raw(QByteArray::number(number));
}

void JsonWriter::boolean(bool value)
{
    beginElement();
    raw(value ? QByteArrayView("true") : QByteArrayView("false"));
}

void JsonWriter::data(const QByteArray &bytes)
{
    beginElement();
    raw("\"");
    raw(bytes.toBase64());
    raw("\"");
}

void JsonWriter::null()
{
    beginElement();
    raw("null");
}

void JsonWriter::finish()
{
    raw("\n");
}

void JsonWriter::begin(char bracket)
{
    beginElement();
    m_levels.append({true, m_levels.size() < m_linesToDepth});
    raw(QByteArrayView(&bracket, 1));
}

void JsonWriter::end(char bracket)
{
    const Level level = m_levels.takeLast();
    if (level.hasLines && !level.isEmpty)
        newLine();
    raw(QByteArrayView(&bracket, 1));
}

void JsonWriter::beginElement()
{
    if (m_followsKey) {
        m_followsKey = false;
        return;
    }
    if (m_levels.isEmpty())
        return;
    Level &level = m_levels.last();
    if (!level.isEmpty)
        raw(level.hasLines ? QByteArrayView(",") : QByteArrayView(", "));
    level.isEmpty = false;
    if (level.hasLines)
        newLine();
}

void JsonWriter::newLine()
{
    raw("\n");
    for (qsizetype level = 0; level < m_levels.size(); ++level)
        raw("  ");
}

void JsonWriter::raw(QByteArrayView bytes)
{
    m_output.write(bytes);
}

void JsonWriter::quoted(QByteArrayView utf8)
{
    raw("\"");
    const char *plain = utf8.begin();
    for (const char *next = plain; next != utf8.end(); ++next) {
        if (!needsEscape(*next))
            continue;
        raw(QByteArrayView(plain, next));
        plain = next + 1;
        switch (*next) {
        case '"':
            raw("\\\"");
            break;
        case '\\':
            raw("\\\\");
            break;
        case '\n':
            raw("\\n");
            break;
        case '\r':
            raw("\\r");
            break;
        case '\t':
            raw("\\t");
            break;
        default: {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", unsigned(uchar(*next)));
            raw(QByteArrayView(escape, 6));
        }
        }
    }
    raw(QByteArrayView(plain, utf8.end()));
    raw("\"");
}

void JsonWriter::dictionary(const PropertyListView &value)
{
    beginObject();
    const OverwrittenEntries overwritten(value);
    qsizetype index = 0;
    for (const auto &entry : value.entries()) {
        if (m_output.hasFailed())
            break;
        if (!overwritten.contains(index)) {
            key(overwritten.key(index));
            this->value(entry.value());
        }
        ++index;
    }
    endObject();
}

void JsonWriter::integer(const PropertyListView &value)
{
    // Above the signed range only the unsigned reading answers.
    if (const qint64 number = value.toInteger())
        integer(number);
    else
        unsignedInteger(value.toUnsigned());
}

// Several hundred thousand dates stand in a large library, so that this is arithmetic and no QDateTime.
void JsonWriter::date(double referenceSeconds)
{
    constexpr double furthest = 3e14; // about ten million years, beyond which seconds lose their meaning
    if (!(std::abs(referenceSeconds) < furthest)) {
        null();
        return;
    }
    constexpr qint64 millisecondsPerDay = 86'400'000;
    constexpr qint64 referenceDay = 730'791; // 2001-01-01, counted from 0000-03-01
    const qint64 milliseconds = std::llround(referenceSeconds * 1000);
    const qint64 day = floorDivided(milliseconds, millisecondsPerDay);
    const qint64 rest = milliseconds - day * millisecondsPerDay;
    const CalendarDay date = calendarDay(day + referenceDay);
    const qint64 year = date.year;

    char text[64];
    // ISO 8601 wants a sign before years of other than four digits.
    const char *format =
        year >= 0 && year <= 9999 ? "\"%04lld-%02d-%02dT%02d:%02d:%02d" : "\"%+05lld-%02d-%02dT%02d:%02d:%02d";
    int length = std::snprintf(text, sizeof text, format, static_cast<long long>(year), date.month, date.day,
                               int(rest / 3'600'000), int(rest / 60'000 % 60), int(rest / 1000 % 60));
    if (rest % 1000 != 0)
        length += std::snprintf(text + length, sizeof text - size_t(length), ".%03d", int(rest % 1000));
    beginElement();
    raw(QByteArrayView(text, length));
    raw("Z\"");
}
