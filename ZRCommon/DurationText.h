#pragma once

#include <QString>

/// The duration of a song as the music tab shows it, such as "01:02:05": two digits or more each of hours (only if
/// there are any), minutes and seconds. An hour begins after 3600 seconds and a minute after 60, deliberately: exactly
/// one hour is "59:60", exactly one minute "00:60". `ZRStringFormatting::formattedTime` has "1:00:00" and "1:00" there.
/// Any thread.
/// @param duration whole seconds; what is below 0 counts as 0
QString hoursAndMinutesForDuration(qint64 duration);
