#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It reads the scalars of property lists from their text, and
//  may change from version to version.
//

#include <QAnyStringView>
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
/// everything else. Fields beyond their range are carried on: the 32nd of January is the 1st of February. Dates before
/// 1582-10-15 are in the Julian calendar.
/// @return seconds since 2001-01-01T00:00:00Z.
std::optional<qint64> parseDate(QByteArrayView text);

/// Seconds from 1970-01-01T00:00:00Z to 2001-01-01T00:00:00Z.
constexpr qint64 ReferenceEpoch = 978'307'200;

/// A date of the calendar that the formats' dates are in: Julian until 1582-10-04, Gregorian from 1582-10-15.
struct CivilDate {
    qint64 year; ///< 0 is the year before 1.
    int month; ///< From 1 to 12.
    int day;
};

/// Days from 1970-01-01 to a date, whose day may be any. Cost: a dozen operations.
/// Howard Hinnant's `days_from_civil`, https://howardhinnant.github.io/date_algorithms.html, and the same for the
/// Julian calendar.
qint64 daysFromCivil(const CivilDate &date);

/// The reverse of `daysFromCivil`: Howard Hinnant's `civil_from_days`.
CivilDate civilFromDays(qint64 days);

/// The number that the text is the canonical decimal form of ("0", "17", but not "+1" or "01"), if it fits.
std::optional<quint32> parseCanonicalNumber(QByteArrayView text);

/// The text in UTF-8, without a copy where it is that already.
QByteArray utf8Of(QAnyStringView text);

/// Writes a character in UTF-8, one to four bytes; U+FFFD for what is no Unicode scalar value.
/// @return just behind the bytes written.
char *writeUtf8(char *output, char32_t character);
void appendUtf8(QByteArray &text, char32_t character);

} // namespace platform::PropertyListScalars
