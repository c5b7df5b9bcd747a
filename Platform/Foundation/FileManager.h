#pragma once

#include <QFileDevice>
#include <QString>

#include <optional>

namespace platform {

/// What a new folder is given beside its name.
struct FileAttributes {
    /// Who may do what with it, exactly, whatever the process's file mode mask says. Without a value the system's
    /// defaults hold.
    std::optional<QFileDevice::Permissions> permissions;
};

/// Files and folders by path. Nothing here blocks on what a file holds, and a path that no file system can hold (an
/// empty one, one with a null character) simply names nothing. Relative paths count from the current folder.
///
/// Thread safety: any thread. Every answer is about a moment: another process may change it before it is used.
namespace FileManager {

/// Whether there is anything at the path: a file, a folder, a pipe, a device. Links are followed, so that a link
/// whose target is missing does not exist.
bool fileExists(const QString &path);

/// Whether there is a folder, or a link to one, at the path.
bool isFolder(const QString &path);

/// Makes one folder, whose parent must be there.
/// @return whether this call made it: false when something stands there already. Attributes that the file system
/// cannot keep are dropped.
bool createDirectory(const QString &path, const FileAttributes &attributes = {});

/// Where a link leads: the target's absolute path, all chains of links followed. A link is a symbolic link; the
/// last component of the path decides, and a slash at its end does not count.
/// @return nothing when the path names no link, and when the link leads nowhere: its target is missing, cannot be
/// reached, or the chain comes back to itself.
std::optional<QString> resolvedLink(const QString &path);

/// The user's home folder: the environment's HOME where it is set, without a slash at its end.
QString homeFolder();

} // namespace FileManager
} // namespace platform
