#include "Platform/Foundation/FileManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

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

QString homeFolder()
{
    return QDir::homePath();
}

} // namespace platform::FileManager
