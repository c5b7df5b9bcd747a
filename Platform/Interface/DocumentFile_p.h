#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QByteArray>
#include <QString>

#include <optional>
#include <utility>

namespace platform::DocumentFile {

/// By what it is seen that a file was replaced or changed.
struct State {
    bool exists = false;
    qint64 size = 0; ///< In bytes.
    qint64 modified = 0; ///< In the finest steps that the system tells.

    friend bool operator==(const State &a, const State &b)
    {
        return a.exists == b.exists && a.size == b.size && a.modified == b.modified;
    }
};
State stateOfFile(const QString &path);

/// Whether both paths lead to the same file, or would if there were one.
bool isSameFile(const QString &a, const QString &b);

/// The bytes of a regular file, or why they cannot be had, in a sentence for the person.
struct Content {
    QByteArray bytes;
    std::optional<QString> failure;
};
Content read(const QString &path);

/// Replaces a file whole, at the place that a symbolic link leads to. The bytes are on the disk when it returns.
/// @return nothing when it worked; otherwise why not, in a sentence for the person
std::optional<QString> replace(const QString &path, const QByteArray &bytes);

} // namespace platform::DocumentFile
