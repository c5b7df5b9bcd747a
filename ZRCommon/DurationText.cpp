#include "ZRCommon/DurationText.h"

#include <algorithm>

namespace {

QString twoDigits(qint64 number)
{
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

/// Takes units off the seconds for as long as more than one unit is left.
qint64 takeUnits(qint64 &seconds, qint64 unit)
{
    const qint64 units = std::max<qint64>(seconds - 1, 0) / unit;
    seconds -= units * unit;
    return units;
}

} // namespace

QString hoursAndMinutesForDuration(qint64 duration)
{
    qint64 seconds = std::max<qint64>(duration, 0);
    const qint64 hours = takeUnits(seconds, 3600);
    const qint64 minutes = takeUnits(seconds, 60);
    const QString text = twoDigits(minutes) + QLatin1Char(':') + twoDigits(seconds);
    return hours > 0 ? twoDigits(hours) + QLatin1Char(':') + text : text;
}
