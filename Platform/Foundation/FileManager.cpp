#include "Platform/Foundation/FileManager.h"

#include <QDir>
#include <QFileInfo>

#ifndef Q_OS_WIN
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
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

std::unique_ptr<QFile> openRegularFile(const QString &path)
{
    // Judged before opening, since opening a device may do something to it, and again after, since another
    // process may have put something else there.
    if (!canBePath(path) || !QFileInfo(path).isFile())
        return nullptr;
#ifdef Q_OS_WIN
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadOnly))
        return nullptr;
#else
    const int descriptor = open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    auto file = std::make_unique<QFile>();
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)
        || !file->open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        close(descriptor);
        return nullptr;
    }
#endif
    return file;
}

QString homeFolder()
{
    return QDir::homePath();
}

} // namespace platform::FileManager
