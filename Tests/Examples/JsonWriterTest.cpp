#include "zrmedia/JsonWriter.h"
#include "zrmedia/Output.h"

#include "Platform/Foundation/PropertyList/PropertyList.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

namespace {

/// What is written by the function, read back from a temporary file.
QByteArray written(int linesToDepth, const std::function<void(JsonWriter &)> &write)
{
    std::FILE *file = std::tmpfile();
    Output output(file);
    JsonWriter json(output, linesToDepth);
    write(json);
    EXPECT_TRUE(output.flush());
    QByteArray bytes(std::ftell(file), '\0');
    std::rewind(file);
    EXPECT_EQ(std::fread(bytes.data(), 1, size_t(bytes.size()), file), size_t(bytes.size()));
    std::fclose(file);
    return bytes;
}

QByteArray jsonOf(const QByteArray &xml, int linesToDepth = 0)
{
    const auto list = platform::PropertyList::parse(QByteArray("<plist>" + xml + "</plist>"));
    EXPECT_TRUE(bool(list)) << (list ? "" : qPrintable(list.error().toString()));
    return list ? written(linesToDepth, [&](JsonWriter &json) { json.value(list.value()); }) : QByteArray();
}

QByteArray jsonOfReal(double real)
{
    return written(0, [real](JsonWriter &json) { json.number(real); });
}

} // namespace

TEST(JsonWriter, WritesTheScalarsOfAPropertyList)
{
    EXPECT_EQ(jsonOf("<string>Straße</string>"), "\"Straße\"");
    EXPECT_EQ(jsonOf("<true/>"), "true");
    EXPECT_EQ(jsonOf("<false/>"), "false");
    EXPECT_EQ(jsonOf("<data>AAEC</data>"), "\"AAEC\"");
    EXPECT_EQ(jsonOf("<data></data>"), "\"\"");
    EXPECT_EQ(jsonOf("<dict><key>CF$UID</key><integer>17</integer></dict>"), "{\"CF$UID\": 17}");
}

TEST(JsonWriter, WritesIntegersWholeOverTheirWholeRange)
{
    for (const QByteArray number :
         {"0", "-1", "-9223372036854775808", "9223372036854775807", "9223372036854775808", "18446744073709551615"})
        EXPECT_EQ(jsonOf("<integer>" + number + "</integer>"), number);
}

TEST(JsonWriter, ARealNeverLooksLikeAnInteger)
{
    EXPECT_EQ(jsonOfReal(0), "0.0");
    EXPECT_EQ(jsonOfReal(-0.0), "-0.0");
    EXPECT_EQ(jsonOfReal(5), "5.0");
    EXPECT_EQ(jsonOfReal(0.1), "0.1");
    EXPECT_EQ(jsonOfReal(1e300), "1e+300");
    EXPECT_EQ(jsonOfReal(5e-324), "5e-324");
    for (const double real : {1.0 / 3, 123456789012345678.0, std::numeric_limits<double>::max()})
        EXPECT_EQ(jsonOfReal(real).toDouble(), real);
}

TEST(JsonWriter, WritesWhatIsNoNumberAsAString)
{
    EXPECT_EQ(jsonOfReal(std::nan("")), "\"NaN\"");
    EXPECT_EQ(jsonOfReal(std::numeric_limits<double>::infinity()), "\"Infinity\"");
    EXPECT_EQ(jsonOfReal(-std::numeric_limits<double>::infinity()), "\"-Infinity\"");
}

namespace {

/// A binary list of one date.
platform::PropertyListValue dateList(double referenceSeconds)
{
    QByteArray list(
        "bplist00\x33\0\0\0\0\0\0\0\0\x08\0\0\0\0\0\0\1\1\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x11", 50);
    quint64 bits;
    memcpy(&bits, &referenceSeconds, sizeof bits);
    qToBigEndian(bits, list.data() + 9);
    const auto value = platform::PropertyList::parse(list);
    EXPECT_TRUE(bool(value)) << (value ? "" : qPrintable(value.error().toString()));
    return value.valueOr({});
}

} // namespace

TEST(JsonWriter, WritesDatesInUniversalTimeAsTheyStandInTheFile)
{
    for (const QByteArray date :
         {"2004-01-31T12:00:00Z", "2001-01-01T00:00:00Z", "1900-02-28T23:59:59Z", "0001-01-01T00:00:00Z",
          // from the day that the Gregorian calendar began on, and before it
          "1582-10-15T00:00:00Z", "1582-10-04T23:59:59Z", "1500-02-29T12:00:00Z", "0004-02-29T00:00:00Z",
          "0009-09-15T23:16:13Z"})
        EXPECT_EQ(jsonOf("<date>" + date + "</date>"), '"' + date + '"');
}

TEST(JsonWriter, AgreesWithTheCalendarOnEveryDayOfEightHundredYears)
{
    const QDate reference(2001, 1, 1);
    QByteArray expected = "[";
    const QByteArray json = written(0, [&](JsonWriter &writer) {
        writer.beginArray();
        for (QDate day(1600, 1, 1); day.year() < 2400; day = day.addDays(1)) {
            writer.value(dateList(double(reference.daysTo(day)) * 86'400 + 3'661));
            expected += (expected.size() > 1 ? ", \"" : "\"") + day.toString(Qt::ISODate).toLatin1() + "T01:01:01Z\"";
        }
        writer.endArray();
    });
    EXPECT_TRUE(json == expected + ']');
}

TEST(JsonWriter, WritesFractionsOfSecondsAndYearsOfFiveDigits)
{
    const auto dateOf = [](double seconds) {
        return written(0, [&](JsonWriter &json) { json.value(dateList(seconds)); });
    };
    EXPECT_EQ(dateOf(0.5), "\"2001-01-01T00:00:00.500Z\"");
    EXPECT_EQ(dateOf(-0.001), "\"2000-12-31T23:59:59.999Z\"");
    EXPECT_EQ(dateOf(253'370'764'800.0 - 978'307'200.0 + 31'536'000.0), "\"+10000-01-01T00:00:00Z\"");
    EXPECT_EQ(dateOf(-63'145'612'800.0), "\"0000-01-02T00:00:00Z\"");
    EXPECT_EQ(dateOf(-63'145'612'800.0 - 2 * 86'400), "\"-0001-12-31T00:00:00Z\"");
    EXPECT_EQ(dateOf(1e300), "null");
}

TEST(JsonWriter, EscapesWhatJsonCannotHoldInAString)
{
    EXPECT_EQ(jsonOf("<string>a\"b\\c&lt;/\t\n</string>"), "\"a\\\"b\\\\c</\\t\\n\"");
    EXPECT_EQ(written(0, [](JsonWriter &json) { json.string(QByteArrayView("\x01\x1f\r\x7f", 4)); }),
              "\"\\u0001\\u001f\\r\x7f\"");
    EXPECT_EQ(written(0, [](JsonWriter &json) { json.string(QByteArrayView("\"", 1)); }), "\"\\\"\"");
    EXPECT_EQ(written(0, [](JsonWriter &json) { json.string(u"雨の駅 \U0001F3B5"); }), "\"雨の駅 🎵\"");
}

TEST(JsonWriter, PutsElementsOnLinesDownToTheGivenDepth)
{
    const QByteArray xml = "<array><dict><key>a</key><array><integer>1</integer><integer>2</integer></array>"
                           "<key>b</key><string/></dict><dict/><array/></array>";
    EXPECT_EQ(jsonOf(xml, 0), "[{\"a\": [1, 2], \"b\": \"\"}, {}, []]");
    EXPECT_EQ(jsonOf(xml, 1), "[\n  {\"a\": [1, 2], \"b\": \"\"},\n  {},\n  []\n]");
    EXPECT_EQ(jsonOf(xml, INT_MAX),
              "[\n  {\n    \"a\": [\n      1,\n      2\n    ],\n    \"b\": \"\"\n  },\n  {},\n  []\n]");
}

TEST(JsonWriter, OfAKeyThatOccursTwiceWritesOnlyTheLast)
{
    EXPECT_EQ(jsonOf("<dict><key>a</key><integer>1</integer><key>b</key><integer>2</integer>"
                     "<key>a</key><integer>3</integer></dict>"),
              "{\"b\": 2, \"a\": 3}");
    QByteArray large;
    for (int i = 0; i < 1000; ++i)
        large += "<key>k" + QByteArray::number(i) + "</key><integer>0</integer>";
    const QByteArray json = jsonOf("<dict>" + large + "<key>k7</key><integer>1</integer></dict>");
    EXPECT_EQ(json.count("\"k7\""), 1);
    EXPECT_TRUE(json.endsWith("\"k999\": 0, \"k7\": 1}"));
}

TEST(JsonWriter, WritesAListAsDeepAsOneCanBe)
{
    const QByteArray json = jsonOf(QByteArray("<array>").repeated(500) + QByteArray("</array>").repeated(500));
    EXPECT_EQ(json, QByteArray("[").repeated(500) + QByteArray("]").repeated(500));
}

TEST(Output, NoticesAStreamThatTakesNoMore)
{
    std::FILE *full = std::fopen("/dev/full", "w");
    if (!full)
        GTEST_SKIP() << "needs /dev/full";
    Output output(full);
    EXPECT_FALSE(output.hasFailed());
    output.write("x");
    EXPECT_FALSE(output.flush());
    EXPECT_TRUE(output.hasFailed());
    EXPECT_FALSE(output.failure().isEmpty());
    EXPECT_FALSE(output.flush());
    std::fclose(full);
}

TEST(Output, PassesMoreThanABlockOn)
{
    const QByteArray line(1000, 'x');
    const QByteArray bytes = written(0, [&](JsonWriter &json) {
        json.beginArray();
        for (int i = 0; i < 2000; ++i)
            json.string(line);
        json.endArray();
    });
    EXPECT_EQ(bytes.size(), 2000 * 1002 + 1999 * 2 + 2);
}
