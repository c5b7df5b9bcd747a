#pragma once

#include <QByteArray>
#include <QFileDevice>
#include <QString>

#include <optional>
#include <vector>

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

/// Something in a folder.
struct FolderEntry {
    QByteArray name; ///< As the file system has it, which need not be UTF-8.
    bool mayBeLink; ///< False only for what is certainly no link.
};

/// What is in a folder, "." and ".." left out, in the order in which the file system tells it. Nothing in it is looked
/// at, so that a folder of many files is listed in the time of reading its names.
/// @return nothing when there is no such folder, and when it cannot be read to its end.
std::optional<std::vector<FolderEntry>> entriesOfFolder(const QString &path);

/// The user's home folder: the environment's HOME where it is set, without a slash at its end.
QString homeFolder();

} // namespace FileManager
} // namespace platform
