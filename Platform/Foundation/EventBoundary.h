#pragma once

#include <QLoggingCategory>
#include <QString>

#include <utility>

namespace platform {

/// Logs the exception that is being handled as a warning: "what: exception text". To be called in a catch
/// block.
void logCurrentException(const QLoggingCategory &category, const QString &what);

/// Makes a call from which no exception comes out: it is logged as a warning, with `what` saying what was
/// called. An exception must never pass through Qt's event dispatch or leave a thread, so everything that
/// starts there goes through here. Any thread.
/// @return whether the call returned by itself.
template <class Call>
bool callGuarded(const QLoggingCategory &category, const QString &what, Call &&call)
{
    try {
        std::forward<Call>(call)();
        return true;
    } catch (...) {
        logCurrentException(category, what);
        return false;
    }
}

} // namespace platform
