#pragma once

#include <QString>

/// Durations and paths as a person reads them. Texts are the same in every locale. Any thread.
namespace ZRStringFormatting {

/// Seconds as minutes and seconds, "1:05", from one hour on with hours, "1:02:05". What is not 0 or more, not a
/// number included, gives "0:00".
///
/// The arithmetic is in single precision. Seconds are rounded, halves away from zero, after hours and minutes were
/// taken off, and are not carried over: 59.6 seconds give "0:60". Beyond 2,147,483,647 hours, infinity included, it
/// stays at that many hours.
QString formattedTime(float seconds);

/// Seconds with one decimal and an s: "2.5s".
QString formattedSeconds(float seconds);

/// The path as the user knows it: without the folder in which other volumes appear, "/Volumes/Disk/a" gives
/// "Disk/a". Other paths are unchanged.
QString userDisplayablePathname(const QString &path);

} // namespace ZRStringFormatting
