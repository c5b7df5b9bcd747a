#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"

#include <QtEndian>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>

namespace platform::PropertyListScalars {

namespace {

QByteArrayView trimmed(QByteArrayView text)
{
    const char *first = text.begin();
    const char *last = text.end();
    while (first != last && isSpace(*first))
        ++first;
    while (last != first && isSpace(last[-1]))
        --last;
    return QByteArrayView(first, last);
}

// Takes the sign, and the white space behind it, off a trimmed text.
bool takeSign(QByteArrayView &text)
{
    if (text.isEmpty() || (text.front() != '-' && text.front() != '+'))
        return false;
    const bool negative = text.front() == '-';
    text = trimmed(text.sliced(1));
    return negative;
}

// Eight digits at once, the first in the lowest byte: pairs of digits, of pairs and of fours are joined by
// one multiplication each. Daniel Lemire, "Quickly parsing eight digits",
// https://lemire.me/blog/2018/10/03/quickly-parsing-eight-digits/.
quint32 joinEightDigits(quint64 digits)
{
    digits -= 0x3030303030303030;
    digits = digits * 10 + (digits >> 8);
    return quint32(((digits & 0x000000FF000000FF) * 0x000F424000000064
                    + ((digits >> 16) & 0x000000FF000000FF) * 0x0000271000000001)
                   >> 32);
}

bool areEightDigits(quint64 bytes)
{
    return ((bytes & 0xF0F0F0F0F0F0F0F0) | (((bytes + 0x0606060606060606) & 0xF0F0F0F0F0F0F0F0) >> 4))
        == 0x3333333333333333;
}

// One to eight digits. Reads eight bytes that end with the last digit and makes those before the first one
// zeros.
std::optional<quint32> parseUpToEightDigits(const char *digits, qsizetype length)
{
    quint64 bytes = qFromLittleEndian<quint64>(digits + length - 8);
    const int surplus = int(8 - length) * 8;
    if (surplus > 0)
        bytes = (bytes >> surplus << surplus) | (0x3030303030303030 & ((quint64(1) << surplus) - 1));
    if (!areEightDigits(bytes))
        return std::nullopt;
    return joinEightDigits(bytes);
}

std::optional<quint64> parseDigits(QByteArrayView digits, int base)
{
    quint64 number = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), number, base);
    if (error != std::errc() || end != digits.end())
        return std::nullopt;
    return number;
}

// Days from the first of March of the year 0 to 1970-01-01.
constexpr qint64 GregorianEpoch = 719468;
constexpr qint64 JulianEpoch = 719470;

constexpr qint64 floorDivided(qint64 number, qint64 divisor)
{
    return (number >= 0 ? number : number - divisor + 1) / divisor;
}

std::optional<int> parseTwoDigits(const char *text)
{
    const unsigned tens = unsigned(text[0] - '0');
    const unsigned ones = unsigned(text[1] - '0');
    if (tens > 9 || ones > 9)
        return std::nullopt;
    return int(tens * 10 + ones);
}

// What becomes of a number that no double can hold.
double infinityOrZero(QByteArrayView text)
{
    std::istringstream stream(std::string(text.data(), std::size_t(text.size())));
    stream.imbue(std::locale::classic());
    double number = 0;
    stream >> number; // the largest double for what is too large
    return number > 1 ? std::numeric_limits<double>::infinity() : 0;
}

} // namespace

std::optional<IntegerNumber> parseInteger(QByteArrayView text)
{
    // Nearly all integers are a few plain digits.
    if (!text.isEmpty() && text.size() <= 8) {
        if (const auto number = parseUpToEightDigits(text.data(), text.size()))
            return IntegerNumber{*number, false};
    } else if (!text.isEmpty() && text.size() <= 16) {
        const auto high = parseUpToEightDigits(text.data(), text.size() - 8);
        const auto low = parseUpToEightDigits(text.data() + text.size() - 8, 8);
        if (high && low)
            return IntegerNumber{quint64(*high) * 100'000'000 + *low, false};
    }

    text = trimmed(text);
    const bool negative = takeSign(text);
    const bool hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] | 0x20) == 'x';
    const auto magnitude = hexadecimal ? parseDigits(text.sliced(2), 16) : parseDigits(text, 10);
    if (!magnitude || (negative && *magnitude > quint64(1) << 63))
        return std::nullopt;
    return IntegerNumber{*magnitude, negative && *magnitude != 0};
}

std::optional<double> parseReal(QByteArrayView text)
{
    text = trimmed(text);
    const bool negative = takeSign(text);
    // A second sign, and the "nan(…)" that std::from_chars takes, are no numbers here.
    if (text.isEmpty() || text.front() == '-' || text.back() == ')')
        return std::nullopt;
    double number = 0;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), number);
    if (end != text.end() || error == std::errc::invalid_argument)
        return std::nullopt;
    if (error == std::errc::result_out_of_range)
        number = infinityOrZero(text);
    return negative ? -number : number;
}

qint64 daysFromCivil(const CivilDate &date)
{
    const auto [civilYear, month, day] = date;
    const qint64 year = civilYear - (month <= 2); // years begin in March, so that the leap day is their last
    const qint64 dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const bool isJulian = std::tuple(civilYear, month, day) < std::tuple(1582, 10, 15);
    if (isJulian)
        return year * 365 + floorDivided(year, 4) + dayOfYear - JulianEpoch;
    const qint64 era = floorDivided(year, 400);
    const qint64 yearOfEra = year - era * 400;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - GregorianEpoch;
}

CivilDate civilFromDays(qint64 days)
{
    constexpr qint64 FirstGregorianDay = -141427; // 1582-10-15
    qint64 year = 0;
    qint64 dayOfYear = 0;
    if (days < FirstGregorianDay) {
        days += JulianEpoch;
        const qint64 era = floorDivided(days, 1461);
        const qint64 dayOfEra = days - era * 1461;
        const qint64 yearOfEra = (dayOfEra - dayOfEra / 1460) / 365;
        dayOfYear = dayOfEra - 365 * yearOfEra;
        year = yearOfEra + era * 4;
    } else {
        days += GregorianEpoch;
        const qint64 era = floorDivided(days, 146097);
        const qint64 dayOfEra = days - era * 146097;
        const qint64 yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
        dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
        year = yearOfEra + era * 400;
    }
    const int shiftedMonth = int((5 * dayOfYear + 2) / 153);
    const int month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
    return {year + (month <= 2), month, int(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1)};
}

std::optional<qint64> parseDate(QByteArrayView text)
{
    text = trimmed(text);
    const bool negative = takeSign(text);
    constexpr qsizetype RestLength = 16; // "-01-31T20:43:14Z"
    const qsizetype yearLength = text.size() - RestLength;
    if (yearLength < 4 || yearLength > 9)
        return std::nullopt;
    const auto year = parseDigits(text.first(yearLength), 10);
    const char *rest = text.data() + yearLength;
    if (!year || rest[0] != '-' || rest[3] != '-' || rest[6] != 'T' || rest[9] != ':' || rest[12] != ':'
        || rest[15] != 'Z')
        return std::nullopt;
    const auto month = parseTwoDigits(rest + 1);
    const auto day = parseTwoDigits(rest + 4);
    const auto hour = parseTwoDigits(rest + 7);
    const auto minute = parseTwoDigits(rest + 10);
    const auto second = parseTwoDigits(rest + 13);
    if (!month || !day || !hour || !minute || !second)
        return std::nullopt;
    const int monthsOn = *month + 11; // counted from one year before, so that month 00 is the December before
    const qint64 fullYear = (negative ? -qint64(*year) : qint64(*year)) - 1 + monthsOn / 12;
    const qint64 days = daysFromCivil({fullYear, monthsOn % 12 + 1, *day});
    return days * 86400 + *hour * 3600 + *minute * 60 + *second - ReferenceEpoch;
}

std::optional<quint32> parseCanonicalNumber(QByteArrayView text)
{
    if (text.isEmpty() || text.size() > 10 || (text.front() == '0' && text.size() > 1))
        return std::nullopt;
    quint64 number = 0;
    for (const char character : text) {
        const unsigned digit = unsigned(character - '0');
        if (digit > 9)
            return std::nullopt;
        number = number * 10 + digit;
    }
    if (number > std::numeric_limits<quint32>::max())
        return std::nullopt;
    return quint32(number);
}

char *writeUtf8(char *output, char32_t character)
{
    if (character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF))
        character = 0xFFFD;
    if (character < 0x80) {
        *output++ = char(character);
        return output;
    }
    if (character < 0x800) {
        *output++ = char(0xC0 | character >> 6);
    } else {
        if (character < 0x10000) {
            *output++ = char(0xE0 | character >> 12);
        } else {
            *output++ = char(0xF0 | character >> 18);
            *output++ = char(0x80 | (character >> 12 & 0x3F));
        }
        *output++ = char(0x80 | (character >> 6 & 0x3F));
    }
    *output++ = char(0x80 | (character & 0x3F));
    return output;
}

void appendUtf8(QByteArray &text, char32_t character)
{
    char bytes[4];
    text.append(bytes, writeUtf8(bytes, character) - bytes);
}

QByteArray utf8Of(QAnyStringView text)
{
    return text.visit([](auto view) {
        if constexpr (std::is_same_v<decltype(view), QUtf8StringView>)
            return QByteArray::fromRawData(reinterpret_cast<const char *>(view.data()), view.size());
        else
            return view.toString().toUtf8();
    });
}

} // namespace platform::PropertyListScalars
