#pragma once

#include "Commands.h"

#include "Platform/Foundation/NotificationCenter.h"
#include "ZRCommon/ZRImageThumbnail.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <functional>
#include <memory>

/// What the commands share.

/// Runs a command. An exception on its way becomes its failure: memory that is short is met with any large file.
Failure withoutExceptions(const Arguments &arguments, const std::function<Failure()> &command);

/// The failure of a file whose name, as the system hands it over, is not UTF-8, in which names of files are kept from
/// there on. Holds for all files that are named in the call.
/// @param rawWords the words behind the program's name
Failure undecodableFile(const Arguments &arguments, const QList<QByteArray> &rawWords);

/// Brings a file's bytes into the system's cache, telling how far it is, so that the parser behind it does not wait
/// for the disk. Only done when somebody watches or wants the time; a file that cannot be read is left to the parser
/// to judge.
void fetchFile(const QString &path, const Arguments &arguments, Timings &timings);

/// Runs the event loop until the notification is posted about the object.
/// @param start what makes it come; called when the observer stands
void waitForNotification(const QString &name, const platform::NotificationObject &object,
                         const std::function<void()> &start);

/// `text` with the name asked for in place of %1 and those that there are, shortened, in place of %2, behind the file.
QString unknownName(const Arguments &arguments, const QString &text, const QStringList &names);

/// Writes the names as an array, one to a line.
void writeNames(const QStringList &names, Output &output);

/// Writes the photos as an array of objects, one to a line.
void writePhotos(const QList<std::shared_ptr<ZRImageThumbnail>> &photos, Output &output);
