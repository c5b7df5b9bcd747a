#include "ZRCommon/ZRStringFormatting.h"

#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>

namespace ZRStringFormatting {

QString formattedTime(float seconds)
{
    if (!(seconds >= 0.0f))
        return QStringLiteral("0:00");
    const float exactHours = seconds / 3600.0f;
    // The smallest float that an int cannot hold.
    if (exactHours >= 2147483648.0f)
        return QString::asprintf("%d:%02d:%02d", std::numeric_limits<int>::max(), 0, 0);
    // Products are formed of integers, so that no compiler can fuse them with the subtraction and round once
    // less.
    const int hours = int(exactHours);
    seconds -= float(qint64(hours) * 3600);
    const int minutes = int(seconds / 60.0f);
    seconds -= float(minutes * 60);
    const int rest = int(std::lround(seconds));
    if (hours > 0)
        return QString::asprintf("%d:%02d:%02d", hours, minutes, rest);
    return QString::asprintf("%d:%02d", minutes, rest);
}

QString formattedSeconds(float seconds)
{
    // The longest float has 39 digits before the point. Unlike printf this knows no locale, and unlike
    // QString it rounds as printf does.
    char text[64];
    const std::to_chars_result result =
        std::to_chars(std::begin(text), std::end(text), double(seconds), std::chars_format::fixed, 1);
    return QString::fromLatin1(text, result.ptr - text) + u's';
}

QString userDisplayablePathname(const QString &path)
{
    const QString volumes = QStringLiteral("/Volumes/");
    return path.startsWith(volumes) ? path.sliced(volumes.size()) : path;
}

} // namespace ZRStringFormatting
