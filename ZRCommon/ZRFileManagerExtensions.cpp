#include "ZRCommon/ZRFileManagerExtensions.h"

#include <QStringList>

namespace ZRFileManagerExtensions {

namespace {

QString withoutTrailingSlashes(QString path)
{
    while (path.endsWith(u'/'))
        path.chop(1);
    return path;
}

// "/a/b/" gives "/a", "/a" gives "/", "a" gives the empty string.
QString withoutLastComponent(const QString &path)
{
    const QString trimmed = withoutTrailingSlashes(path);
    const qsizetype slash = trimmed.lastIndexOf(u'/');
    if (slash < 0)
        return QString();
    const QString parent = withoutTrailingSlashes(trimmed.first(slash));
    return parent.isEmpty() ? QStringLiteral("/") : parent;
}

QStringList levelsFromTheTop(const QString &path)
{
    QStringList levels;
    for (QString level = path; !level.isEmpty() && level != u'/'; level = withoutLastComponent(level))
        levels.prepend(level);
    return levels;
}

} // namespace

bool mkdirsAtPath(const QString &path, const platform::FileAttributes &attributes)
{
    namespace FileManager = platform::FileManager;
    if (FileManager::fileExists(path))
        return FileManager::isFolder(path);
    const QStringList levels = levelsFromTheTop(path);
    for (const QString &level : levels) {
        if (!FileManager::fileExists(level)) {
            if (!FileManager::createDirectory(level, attributes))
                return false;
        } else if (!FileManager::isFolder(level)) {
            return false;
        }
    }
    return !levels.isEmpty();
}

QString pathResolved(const QString &path)
{
    return platform::FileManager::resolvedLink(path).value_or(path);
}

} // namespace ZRFileManagerExtensions
