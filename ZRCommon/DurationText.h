#pragma once

#include <QString>

/// The duration of a song as the music tab shows it, such as "01:02:05": two digits or more each of hours (only if
/// there are any), minutes and seconds. An hour begins behind 3600 seconds and a minute behind 60, deliberately:
/// exactly one hour is "59:60", exactly one minute "00:60".
/// Any thread.
/// @param duration whole seconds; what is below 0 counts as 0
QString hoursAndMinutesForDuration(qint64 duration);
