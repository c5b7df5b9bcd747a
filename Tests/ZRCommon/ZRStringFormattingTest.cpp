#include "ZRCommon/ZRStringFormatting.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>

using ZRStringFormatting::formattedSeconds;
using ZRStringFormatting::formattedTime;
using ZRStringFormatting::userDisplayablePathname;

namespace {

TEST(ZRStringFormatting, WritesTimesAsMinutesAndSecondsAndWithHoursFromOneHourOn)
{
    const struct {
        float seconds;
        const char *text;
    } rows[] = {{0, "0:00"},     {5, "0:05"},       {65, "1:05"},      {599, "9:59"},       {600, "10:00"},
                {3599, "59:59"}, {3600, "1:00:00"}, {3725, "1:02:05"}, {36000, "10:00:00"}, {359999, "99:59:59"},
                {-0.0f, "0:00"}, {0.4f, "0:00"},    {0.5f, "0:01"},    {1.5f, "0:02"},      {2.5f, "0:03"}};
    for (const auto &row : rows)
        EXPECT_EQ(formattedTime(row.seconds).toStdString(), row.text) << row.seconds;
}

TEST(ZRStringFormatting, DoesNotCarryRoundedSecondsOver)
{
    EXPECT_EQ(formattedTime(59.6f), QStringLiteral("0:60"));
    EXPECT_EQ(formattedTime(59.4f), QStringLiteral("0:59"));
    EXPECT_EQ(formattedTime(119.5f), QStringLiteral("1:60"));
    EXPECT_EQ(formattedTime(3599.6f), QStringLiteral("59:60"));
    EXPECT_EQ(formattedTime(7199.5f), QStringLiteral("1:59:60"));
}

TEST(ZRStringFormatting, WritesZeroForTimesThatAreNone)
{
    EXPECT_EQ(formattedTime(-1), QStringLiteral("0:00"));
    EXPECT_EQ(formattedTime(-0.001f), QStringLiteral("0:00"));
    EXPECT_EQ(formattedTime(std::nanf("")), QStringLiteral("0:00"));
    EXPECT_EQ(formattedTime(-std::numeric_limits<float>::infinity()), QStringLiteral("0:00"));
}

TEST(ZRStringFormatting, CalculatesInSinglePrecision)
{
    // 16,777,217 seconds do not exist in single precision: the nearest time is a second earlier.
    EXPECT_EQ(formattedTime(16777217.0f), QStringLiteral("4660:20:16"));
    // The hours come out rounded up, so that a negative rest remains.
    EXPECT_EQ(formattedTime(471913184.0f), QStringLiteral("131087:00:-32"));
}

TEST(ZRStringFormatting, StaysAtTheLargestNumberOfHours)
{
    EXPECT_EQ(formattedTime(std::numeric_limits<float>::infinity()), QStringLiteral("2147483647:00:00"));
    EXPECT_EQ(formattedTime(std::numeric_limits<float>::max()), QStringLiteral("2147483647:00:00"));
    EXPECT_TRUE(formattedTime(7.7e12f).startsWith(QStringLiteral("21388")));
}

TEST(ZRStringFormatting, WritesSecondsWithOneDecimal)
{
    EXPECT_EQ(formattedSeconds(2.5f), QStringLiteral("2.5s"));
    EXPECT_EQ(formattedSeconds(0), QStringLiteral("0.0s"));
    EXPECT_EQ(formattedSeconds(-1.25f), QStringLiteral("-1.2s")) << "ties go to the even digit, as in printf";
    EXPECT_EQ(formattedSeconds(0.75f), QStringLiteral("0.8s"));
    EXPECT_EQ(formattedSeconds(12345.67f), QStringLiteral("12345.7s"));
    EXPECT_EQ(formattedSeconds(std::numeric_limits<float>::max()).size(), 42);
}

TEST(ZRStringFormatting, UsesAPointInEveryLocale)
{
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    const QLocale localeBefore;
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(formattedSeconds(2.5f), QStringLiteral("2.5s"));
    QLocale::setDefault(localeBefore);
    std::setlocale(LC_NUMERIC, before.c_str());
}

TEST(ZRStringFormatting, TakesTheFolderOfVolumesOffAPath)
{
    EXPECT_EQ(userDisplayablePathname(QStringLiteral("/Volumes/Disk/a")), QStringLiteral("Disk/a"));
    EXPECT_EQ(userDisplayablePathname(QStringLiteral("/Volumes/")), QString());
    for (const char *path : {"/Users/me/a", "/Volumes", "/volumes/Disk", "Volumes/Disk", "/x/Volumes/Disk", ""})
        EXPECT_EQ(userDisplayablePathname(QString::fromUtf8(path)), QString::fromUtf8(path));
}

TEST(ZRStringFormatting, FormatsTheFirstTimeWithTooManyHoursAsTheMostHours)
{
    EXPECT_EQ(ZRStringFormatting::formattedTime(2147483648.0f * 3600.0f), u"2147483647:00:00");
}

} // namespace
