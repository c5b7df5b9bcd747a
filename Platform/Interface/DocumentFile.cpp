#include "Platform/Interface/DocumentFile_p.h"

#include "Platform/Foundation/LocalizedString.h"
#include "Platform/Foundation/RegularFile_p.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QStorageInfo>

#include <filesystem>
#include <system_error>

namespace platform::DocumentFile {

namespace {

constexpr qint64 maximumSize = qint64(1) << 31; // of what a QByteArray is filled with here

/// Where the links lead that stand at the path; the path itself when none does.
QString behindLinks(const QString &path)
{
    QFileInfo info(path);
    for (int links = 0; info.isSymLink() && links < 40; ++links)
        info.setFile(info.symLinkTarget());
    return info.absoluteFilePath();
}

QString canonicalPath(const QString &path)
{
    const QFileInfo info(behindLinks(path));
    const QString folder = info.dir().canonicalPath();
    return folder.isEmpty() ? QDir::cleanPath(info.absoluteFilePath()) : folder + u'/' + info.fileName();
}

QString sentence(const Error &error)
{
    switch (error.code) {
    case ErrorCode::NotFound:
        return localizedString("There is no such file any more.");
    case ErrorCode::NotARegularFile:
        return localizedString("This is not a file that can hold a document.");
    case ErrorCode::TooLarge:
        return localizedString("The file is too large.");
    default:
        return localizedString("You do not have permission to read the file.");
    }
}

/// The cause, as far as the system lets us find it out; its own words otherwise.
QString whyNotWritten(const QString &path, qint64 size, const QString &systemReason)
{
    const QFileInfo file(path);
    const QFileInfo folder(file.absolutePath());
    if (!folder.isDir())
        return localizedString("The folder “%1” does not exist.").arg(QDir::toNativeSeparators(folder.filePath()));
    if (file.isDir())
        return localizedString("There is a folder of that name.");
    if (file.exists() && !file.isFile())
        return localizedString("This is not a file that can hold a document.");
    const QStorageInfo storage(folder.filePath());
    if (storage.isReadOnly())
        return localizedString("The disk can only be read.");
    if (file.exists() && !file.isWritable())
        return localizedString("You do not have permission to change the file.");
    if (!folder.isWritable())
        return localizedString("You do not have permission to write into the folder “%1”.")
            .arg(QDir::toNativeSeparators(folder.filePath()));
    if (storage.bytesAvailable() >= 0 && storage.bytesAvailable() < size)
        return localizedString("There is not enough room on the disk.");
    return localizedString("The system reports: %1.").arg(systemReason);
}

} // namespace

State stateOfFile(const QString &path)
{
    const std::filesystem::path native = QFileInfo(path).filesystemAbsoluteFilePath();
    std::error_code error;
    const auto time = std::filesystem::last_write_time(native, error);
    if (error)
        return {};
    return {true, QFileInfo(path).size(), qint64(time.time_since_epoch().count())};
}

bool isSameFile(const QString &a, const QString &b)
{
    return !a.isEmpty() && !b.isEmpty() && canonicalPath(a) == canonicalPath(b);
}

Content read(const QString &path)
{
    auto opened = RegularFile::open(path);
    if (!opened)
        return {{}, sentence(opened.error())};
    RegularFile file = std::move(opened).value();
    if (file.size() >= maximumSize)
        return {{}, sentence({ErrorCode::TooLarge, {}, -1, {}})};
    QByteArray bytes;
    QByteArray block(qMin(file.size() + 1, qint64(1) << 20), Qt::Uninitialized);
    bytes.reserve(file.size());
    qint64 count = 0;
    while ((count = file.read(block.data(), block.size())) > 0 && bytes.size() < maximumSize)
        bytes.append(block.constData(), count);
    if (count < 0)
        return {{}, localizedString("The disk does not let the file be read.")};
    return {bytes, std::nullopt};
}

std::optional<QString> replace(const QString &path, const QByteArray &bytes)
{
    const QString target = behindLinks(path);
    QSaveFile file(target);
    const bool isReplaceable = !QFileInfo::exists(target) || QFileInfo(target).isFile(); // no pipe, no device
    if (!isReplaceable || !file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        const QString reason = file.errorString();
        file.cancelWriting(); // the room that it took counts again
        return whyNotWritten(target, bytes.size(), reason);
    }
    return std::nullopt;
}

} // namespace platform::DocumentFile
