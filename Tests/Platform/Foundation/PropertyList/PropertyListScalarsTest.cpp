#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace platform;
using namespace platform::PropertyListScalars;

namespace {

// Seven bytes must stand before an integer's text; digits there must not matter.
std::optional<IntegerNumber> parsePadded(const QByteArray &text)
{
    const QByteArray padded = "9999999" + text + "9999999";
    return parseInteger(QByteArrayView(padded).sliced(7, text.size()));
}

void expectInteger(const QByteArray &text, quint64 magnitude, bool negative = false)
{
    const auto number = parsePadded(text);
    ASSERT_TRUE(number) << text.constData();
    EXPECT_EQ(number->magnitude, magnitude) << text.constData();
    EXPECT_EQ(number->negative, negative) << text.constData();
}

TEST(PropertyListScalars, ReadsIntegersOfEveryLength)
{
    quint64 number = 0;
    QByteArray text;
    for (int length = 1; length <= 19; ++length) {
        number = number * 10 + quint64(length % 10);
        text += char('0' + length % 10);
        expectInteger(text, number);
        expectInteger("-" + text, number, true);
        expectInteger("000" + text, number);
    }
}

TEST(PropertyListScalars, ReadsTheSmallestAndLargestIntegers)
{
    expectInteger("18446744073709551615", ~quint64(0));
    expectInteger("9223372036854775808", quint64(1) << 63);
    expectInteger("-9223372036854775808", quint64(1) << 63, true);
    expectInteger("-0x8000000000000000", quint64(1) << 63, true);
    expectInteger("0xFFFFffffFFFFffff", ~quint64(0));
    EXPECT_FALSE(parsePadded("18446744073709551616"));
    EXPECT_FALSE(parsePadded("-9223372036854775809"));
    EXPECT_FALSE(parsePadded("0x10000000000000000"));
}

TEST(PropertyListScalars, TakesWhiteSpaceAroundAnIntegerAndItsSign)
{
    expectInteger(" +\t42", 42);
    expectInteger("\t-   99", 99, true);
    expectInteger("\n -\t0xFACE \r\n", 0xFACE, true);
}

TEST(PropertyListScalars, ZeroIsNotNegative)
{
    expectInteger("-0", 0);
    expectInteger("+0", 0);
}

TEST(PropertyListScalars, RefusesWhatIsNoInteger)
{
    for (const char *text : {"", " ", "-", "+-1", "--1", "0x", "0xG", "1.5", "1e3", "12a", "a12", "1234567x",
                             "123456789x", "1 2", "/1", ":1", "1\xC2\xB2"})
        EXPECT_FALSE(parsePadded(text)) << text;
}

TEST(PropertyListScalars, ReadsReals)
{
    const std::pair<const char *, double> cases[] = {{"1.5", 1.5},
                                                     {"2", 2},
                                                     {"  -3.14", -3.14},
                                                     {"1.000000000000000000000001", 1},
                                                     {"31415.9e-4", 3.14159},
                                                     {"+.5", .5},
                                                     {"- 1E+2 ", -100},
                                                     {"1e999", HUGE_VAL},
                                                     {"-1e999", -HUGE_VAL},
                                                     {"1e-999", 0},
                                                     {"-iNf", -HUGE_VAL},
                                                     {"infInItY", HUGE_VAL},
                                                     {"+infinity", HUGE_VAL}};
    for (const auto &[text, expected] : cases) {
        const auto number = parseReal(text);
        ASSERT_TRUE(number) << text;
        EXPECT_DOUBLE_EQ(*number, expected) << text;
    }
    for (const char *text : {"nAn", "NAN", "-nan"})
        EXPECT_TRUE(std::isnan(parseReal(text).value())) << text;
    for (const char *text : {"", "-", "--1", "+-1", "1.5x", "0x10", "nan(1)", "infinit", "1e", "e5", "1,5"})
        EXPECT_FALSE(parseReal(text)) << text;
}

TEST(PropertyListScalars, ReadsDates)
{
    const std::pair<const char *, qint64> cases[] = {
        {"2001-01-01T00:00:00Z", 0},
        {" 2001-01-01T00:00:01Z\n", 1},
        {"1970-01-01T00:00:00Z", -978307200},
        {"2024-01-31T20:43:14Z", 728426594},
        {"2024-02-29T00:00:00Z", 730857600},
        {"0000-01-02T00:00:00Z", -63145612800},
        {"-0001-12-31T23:59:59Z", -63145699201},
        {"1582-10-04T00:00:00Z", -13197686400},
        {"1582-10-15T00:00:00Z", -13197600000},
        {"1500-02-29T00:00:00Z", -15804201600},
        {"12001-01-01T00:00:00Z", 315569520000},
    };
    for (const auto &[text, seconds] : cases)
        EXPECT_EQ(parseDate(text), seconds) << text;
}

TEST(PropertyListScalars, CarriesFieldsOfADateOn)
{
    const std::pair<const char *, const char *> cases[] = {
        {"2024-01-32T20:43:14Z", "2024-02-01T20:43:14Z"}, {"2023-02-29T00:00:00Z", "2023-03-01T00:00:00Z"},
        {"2023-13-01T00:00:00Z", "2024-01-01T00:00:00Z"}, {"2023-00-01T00:00:00Z", "2022-12-01T00:00:00Z"},
        {"2023-01-00T00:00:00Z", "2022-12-31T00:00:00Z"}, {"2023-12-31T24:00:60Z", "2024-01-01T00:01:00Z"},
        {"2023-99-99T99:99:99Z", "2031-06-11T04:40:39Z"}};
    for (const auto &[odd, usual] : cases) {
        ASSERT_TRUE(parseDate(odd)) << odd;
        EXPECT_EQ(parseDate(odd), parseDate(usual)) << odd;
    }
}

TEST(PropertyListScalars, RefusesWhatIsNoDate)
{
    for (const char *text :
         {"", "2024", "2024-01-31", "2024-01-31T20:43:14", "2024-01-31 20:43:14Z", "24-01-31T20:43:14Z",
          "2024-1-31T20:43:14Z", "2024-01-31T20:43:14z", "2024-01-31T20:43:1xZ", "2024/01/31T20:43:14Z",
          "12345678901-01-31T20:43:14Z", "20a4-01-31T20:43:14Z", "2024-01-31T20:43:14+0200"})
        EXPECT_FALSE(parseDate(text)) << text;
}

TEST(PropertyListScalars, CivilDatesAndDaysAreInverse)
{
    EXPECT_EQ(daysFromCivil({1970, 1, 1}), 0);
    EXPECT_EQ(daysFromCivil({2000, 2, 29}), 11016);
    EXPECT_EQ(daysFromCivil({1582, 10, 15}) - daysFromCivil({1582, 10, 4}), 1);
    for (qint64 days = -800'000; days < 800'000; days += 37) {
        const auto [year, month, day] = civilFromDays(days);
        EXPECT_EQ(daysFromCivil({year, month, day}), days);
        EXPECT_TRUE(month >= 1 && month <= 12 && day >= 1 && day <= 31) << days;
    }
}

TEST(PropertyListScalars, KnowsCanonicalNumbers)
{
    EXPECT_EQ(parseCanonicalNumber("0"), 0u);
    EXPECT_EQ(parseCanonicalNumber("17"), 17u);
    EXPECT_EQ(parseCanonicalNumber("4294967295"), 4294967295u);
    for (const char *text : {"", "01", "+1", "-1", "4294967296", "12345678901", "1a", " 1"})
        EXPECT_FALSE(parseCanonicalNumber(text)) << text;
}

TEST(PropertyListScalars, WritesCharactersInUtf8)
{
    QByteArray text;
    for (const char32_t character : {U'a', U'\x7F', U'\x80', U'\x7FF', U'\x800', U'\xFFFF', U'\x10000', U'\x10FFFF'})
        appendUtf8(text, character);
    EXPECT_EQ(text, "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
    for (const char32_t character : {char32_t(0xD800), char32_t(0xDFFF), char32_t(0x110000)}) {
        QByteArray replaced;
        appendUtf8(replaced, character);
        EXPECT_EQ(replaced, "\xEF\xBF\xBD");
    }
}

} // namespace
