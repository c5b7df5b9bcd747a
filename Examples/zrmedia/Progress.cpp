#include "Progress.h"

#include "ZRCommon/ZRLocalizedString.h"

#include <QLocale>

#include <cmath>

namespace {

constexpr qint64 silentMilliseconds = 300;
constexpr qint64 intervalMilliseconds = 100;

void writeLine(const QByteArray &text)
{
    // Back to the start of the line, and clear it.
    writeToStandardError(QByteArray("\r\033[K" + text));
}

} // namespace

Progress::Progress(const QString &task, const QString &unit, qint64 total, qint64 perUnit)
    : m_task(task)
    , m_unit(unit)
    , m_total(total)
    , m_perUnit(perUnit)
    , m_isShown(standardErrorIsTerminal())
{
    m_clock.start();
}

Progress::~Progress()
{
    if (m_lastShown > 0)
        writeLine({});
}

QString Progress::text(const QString &task, const QString &unit, qint64 done, qint64 total, double seconds)
{
    const QLocale locale;
    QString text = total > 0
        ? ZRLocalizedString("%1: %2 of %3 %4").arg(task, locale.toString(done), locale.toString(total), unit)
        : QStringLiteral("%1: %2 %3").arg(task, locale.toString(done), unit);
    const double rate = seconds > 0 ? double(done) / seconds : 0;
    if (rate > 0)
        text += QStringLiteral(", %1 %2/s").arg(locale.toString(qint64(std::llround(rate))), unit);
    if (rate > 0 && total > done)
        text += ZRLocalizedString(", %1 s left").arg(locale.toString(qint64(std::ceil(double(total - done) / rate))));
    return text;
}

void Progress::wipeFromSignalHandler()
{
    writeToStandardError("\r\033[K");
}

void Progress::look(qint64 done)
{
    const qint64 now = m_clock.elapsed();
    // The next look comes after about a tenth of an interval's work.
    m_nextLook = done + std::max<qint64>(1, done / std::max<qint64>(1, now) * intervalMilliseconds / 10);
    if (now < silentMilliseconds || now - m_lastShown < intervalMilliseconds)
        return;
    m_lastShown = now;
    writeLine(text(m_task, m_unit, done / m_perUnit, m_total / m_perUnit, double(now) / 1000).toUtf8());
}
