#pragma once

#include "Commands.h"

#include <QList>
#include <QStringList>

#include <functional>

namespace platform {
class NotificationObject;
}

/// What the commands share.

/// Brings a file's bytes into the system's cache, telling how far it is, so that the parser behind it does not wait
/// for the disk. Only done when somebody watches or wants the time; a file that cannot be read is left to the parser
/// to judge.
void fetchFile(const Arguments &arguments, Timings &timings);

/// Runs the event loop until the notification is posted about the object.
/// @param start what makes it come; called when the observer stands
void waitForNotification(const QString &name, const platform::NotificationObject &object,
                         const std::function<void()> &start);

/// "no playlist is called "x"; there are "a", "b" and 17 more" behind the file's name.
QString unknownName(const Arguments &arguments, const char *english, const QStringList &names);

/// Writes the names as an array, one to a line.
void writeNames(const QStringList &names, Output &output);
