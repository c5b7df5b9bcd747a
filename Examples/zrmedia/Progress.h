#pragma once

#include "StandardDescriptors.h"

#include <QElapsedTimer>
#include <QString>

/// A line on the terminal that tells how far a long task has come: how many of how many, how many per second, how long
/// it will take. It appears after a moment, so that short tasks show nothing, is written over ten times a second, and
/// is wiped away at the end. Without a terminal nothing is ever written.
class Progress
{
public:
    /// @param task what is done, such as "Reading"
    /// @param unit what is counted, such as "songs"; quantities are divided by `perUnit` for showing
    /// @param total 0 where it is not known
    Progress(const QString &task, const QString &unit, qint64 total, qint64 perUnit = 1);
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;
    ~Progress();

    /// For a task that writes to standard output: shows nothing when that is a terminal, where the line would stand in
    /// the middle of what is written.
    void hideBesideOutput() { m_isShown = m_isShown && !standardOutputIsTerminal(); }

    /// So much is done. Cheap: the clock is asked only now and then.
    void setDone(qint64 done)
    {
        if (m_isShown && done >= m_nextLook)
            look(done);
    }

    /// "Reading: 120 of 182 MB, 950 MB/s, 1 s left", with the parts left out that are not known yet.
    static QString text(const QString &task, const QString &unit, qint64 done, qint64 total, double seconds);

    /// Clears the terminal's line; may be called in a signal handler.
    static void wipeFromSignalHandler();

private:
    void look(qint64 done);

    QString m_task;
    QString m_unit;
    qint64 m_total;
    qint64 m_perUnit;
    qint64 m_nextLook = 0;
    qint64 m_lastShown = 0; // milliseconds since the start; 0: never
    bool m_isShown;
    QElapsedTimer m_clock;
};
