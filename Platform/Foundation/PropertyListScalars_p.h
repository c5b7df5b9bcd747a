#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It reads the scalars of property lists from their text, and
//  may change from version to version.
//

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

/// The grammar of scalars, in one place: the readers check with these functions what the value handles decode
/// with them. The bytes that stand up to eight before and behind a text must be readable, as they are in a
/// document.
namespace platform::PropertyListScalars {

/// The space, tab, line feed and carriage return of XML.
constexpr bool isSpace(char character)
{
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

/// An integer from -2^63 to 2^64-1. Zero is not negative.
struct IntegerNumber {
    quint64 magnitude = 0;
    bool negative = false;
    friend bool operator==(const IntegerNumber &a, const IntegerNumber &b)
    {
        return a.magnitude == b.magnitude && a.negative == b.negative;
    }
};

/// Decimal digits, or hexadecimal ones behind 0x, with a sign before them; white space around and behind the
/// sign.
std::optional<IntegerNumber> parseInteger(QByteArrayView text);

/// A decimal number with an optional exponent, or nan, inf or infinity in any case; a sign before, white
/// space around and behind the sign. What is too large becomes infinite, what is too small becomes 0.
std::optional<double> parseReal(QByteArrayView text);

/// "2024-01-31T20:43:14Z" with white space around: a sign if any, four to nine digits of the year, two for
/// everything else. Fields beyond their range are carried on: the 32nd of January is the 1st of February.
/// @return seconds since 2001-01-01T00:00:00Z.
std::optional<qint64> parseDate(QByteArrayView text);

/// Seconds from 1970-01-01T00:00:00Z to 2001-01-01T00:00:00Z.
constexpr qint64 ReferenceEpoch = 978'307'200;

/// Days from 1970-01-01 to a date of the proleptic Gregorian calendar. The month is from 1 to 12; the day may
/// be any. Howard Hinnant's `days_from_civil`, https://howardhinnant.github.io/date_algorithms.html.
constexpr qint64 daysFromCivil(qint64 year, int month, qint64 day)
{
    year -= month <= 2;
    const qint64 era = (year >= 0 ? year : year - 399) / 400;
    const qint64 yearOfEra = year - era * 400;
    const qint64 dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const qint64 dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

/// A date of the proleptic Gregorian calendar.
struct CivilDate {
    qint64 year;
    int month;
    int day;
};

/// The reverse of `daysFromCivil`: Howard Hinnant's `civil_from_days`.
constexpr CivilDate civilFromDays(qint64 days)
{
    days += 719468;
    const qint64 era = (days >= 0 ? days : days - 146096) / 146097;
    const qint64 dayOfEra = days - era * 146097;
    const qint64 yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const qint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int shiftedMonth = int((5 * dayOfYear + 2) / 153);
    const int month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
    return {yearOfEra + era * 400 + (month <= 2), month, int(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1)};
}

/// The number that the text is the canonical decimal form of ("0", "17", but not "+1" or "01"), if it fits.
std::optional<quint32> parseCanonicalNumber(QByteArrayView text);

/// The character data of XML text in UTF-8: references replaced, CDATA sections opened, comments and
/// processing instructions left out, line ends made line feeds. What is no valid reference stays as it
/// stands.
QByteArray unescape(QByteArrayView text);

/// Writes a character in UTF-8, one to four bytes; U+FFFD for what is no Unicode scalar value.
/// @return just behind the bytes written.
char *writeUtf8(char *output, char32_t character);
void appendUtf8(QByteArray &text, char32_t character);

} // namespace platform::PropertyListScalars
