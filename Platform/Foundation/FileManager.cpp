#include "Platform/Foundation/FileManager.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <dirent.h>
#endif

namespace platform::FileManager {

namespace {

// Qt warns about such names instead of just not finding them.
bool canBePath(const QString &path)
{
    return !path.isEmpty() && !path.contains(QChar(u'\0'));
}

// The system would follow a link in "link/" before looking at it.
QString withoutTrailingSlashes(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path;
}

} // namespace

bool fileExists(const QString &path)
{
    return canBePath(path) && QFileInfo::exists(path);
}

bool isFolder(const QString &path)
{
    return canBePath(path) && QFileInfo(path).isDir();
}

bool createDirectory(const QString &path, const FileAttributes &attributes)
{
    if (!canBePath(path))
        return false;
    if (!attributes.permissions)
        return QDir().mkdir(path);
    // Made with the permissions rather than changed to them, so that it is at no moment open to more users;
    // what the mode mask took away is then added.
    if (!QDir().mkdir(path, *attributes.permissions))
        return false;
    QFile::setPermissions(path, *attributes.permissions);
    return true;
}

std::optional<QString> resolvedLink(const QString &path)
{
    if (!canBePath(path))
        return std::nullopt;
    const QFileInfo info(withoutTrailingSlashes(path));
    // Of a chain that comes back to itself, the canonical path is a link of the chain; but that does not
    // exist.
    if (!info.isSymLink() || !info.exists())
        return std::nullopt;
    const QString target = info.canonicalFilePath();
    if (target.isEmpty())
        return std::nullopt;
    return target;
}

#ifdef Q_OS_UNIX

// The library's own iterators ask about each file, or put whole paths together, which takes several times as long.
std::optional<std::vector<FolderEntry>> entriesOfFolder(const QString &path)
{
    DIR *const folder = canBePath(path) ? opendir(QFile::encodeName(path).constData()) : nullptr;
    if (!folder)
        return std::nullopt;
    std::vector<FolderEntry> entries;
    errno = 0;
    while (const dirent *const entry = readdir(folder)) {
        const QByteArrayView name(entry->d_name);
        if (name != "." && name != "..")
            entries.push_back({name.toByteArray(), entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN});
    }
    const bool isComplete = errno == 0;
    closedir(folder);
    return isComplete ? std::optional(std::move(entries)) : std::nullopt;
}

#else

std::optional<std::vector<FolderEntry>> entriesOfFolder(const QString &path)
{
    if (!canBePath(path) || !QFileInfo(path).isDir() || !QFileInfo(path).isReadable())
        return std::nullopt;
    std::vector<FolderEntry> entries;
    for (QDirIterator place(path, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
         place.hasNext();) {
        place.next();
        entries.push_back({QFile::encodeName(place.fileName()), place.fileInfo().isSymLink()});
    }
    return entries;
}

#endif

QString homeFolder()
{
    return QDir::homePath();
}

} // namespace platform::FileManager
