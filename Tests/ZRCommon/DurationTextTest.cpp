#include "ZRCommon/DurationText.h"

#include <gtest/gtest.h>

namespace {

// The rule as it is defined, unit by unit.
QString slowly(qint64 seconds)
{
    int hours = 0, minutes = 0, rest = 0;
    while (seconds > 0) {
        if (seconds > 3600) {
            seconds -= 3600;
            ++hours;
        } else if (seconds > 60) {
            seconds -= 60;
            ++minutes;
        } else {
            rest = int(seconds);
            break;
        }
    }
    const auto text = [](int number) { return QString::number(number).rightJustified(2, QLatin1Char('0')); };
    QStringList parts{text(minutes), text(rest)};
    if (hours > 0)
        parts.prepend(text(hours));
    return parts.join(QLatin1Char(':'));
}

TEST(DurationText, ShowsHoursMinutesAndSeconds)
{
    EXPECT_EQ(hoursAndMinutesForDuration(3725), u"01:02:05");
    EXPECT_EQ(hoursAndMinutesForDuration(65), u"01:05");
    EXPECT_EQ(hoursAndMinutesForDuration(0), u"00:00");
    EXPECT_EQ(hoursAndMinutesForDuration(-5), u"00:00");
}

TEST(DurationText, BeginsAnHourOrMinuteOnlyBehindTheFullOne)
{
    EXPECT_EQ(hoursAndMinutesForDuration(3600), u"59:60");
    EXPECT_EQ(hoursAndMinutesForDuration(60), u"00:60");
    EXPECT_EQ(hoursAndMinutesForDuration(3601), u"01:00:01");
    EXPECT_EQ(hoursAndMinutesForDuration(7200), u"01:59:60");
}

TEST(DurationText, AgreesWithTheRuleForEverySecondOfTwelveHours)
{
    for (qint64 seconds = -1; seconds < 12 * 3600; ++seconds)
        ASSERT_EQ(hoursAndMinutesForDuration(seconds), slowly(seconds)) << seconds;
    EXPECT_EQ(hoursAndMinutesForDuration(400'000), slowly(400'000)); // three digits of hours
}

TEST(DurationText, IsQuickForDurationsThatNoSongHas)
{
    EXPECT_EQ(hoursAndMinutesForDuration(9'223'372'036'854'775'807), u"2562047788015215:30:07");
}

} // namespace
