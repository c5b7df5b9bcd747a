#include "Platform/Foundation/RegularFile_p.h"

#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#else
#include <mutex>
#endif

namespace platform {

namespace {

Error failure(ErrorCode code)
{
    switch (code) {
    case ErrorCode::NotFound:
        return {code, QStringLiteral("there is no such file"), -1, {}};
    case ErrorCode::NotARegularFile:
        return {code, QStringLiteral("it is not a regular file"), -1, {}};
    default:
        return {code, QStringLiteral("the file cannot be opened for reading"), -1, {}};
    }
}

} // namespace

#ifdef Q_OS_UNIX

struct RegularFile::Handle {
    ~Handle() { ::close(descriptor); }
    int descriptor;
    qint64 size;
};

Result<RegularFile> RegularFile::open(const QString &path)
{
    if (path.contains(QChar(0))) // the system would take what stands before it for the path
        return failure(ErrorCode::NotFound);
    int descriptor;
    do
        descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            return failure(ErrorCode::NotFound);
        if (errno == ENXIO || errno == ENODEV) // sockets, devices without a driver
            return failure(ErrorCode::NotARegularFile);
        return failure(ErrorCode::NotReadable);
    }
    RegularFile file;
    file.m_handle.reset(new Handle{descriptor, 0});
    struct stat status;
    if (::fstat(descriptor, &status) != 0)
        return failure(ErrorCode::NotReadable);
    if (!S_ISREG(status.st_mode))
        return failure(ErrorCode::NotARegularFile);
    file.m_handle->size = status.st_size;
    return file;
}

qint64 RegularFile::size() const
{
    return m_handle->size;
}

qint64 RegularFile::read(char *bytes, qint64 maximum)
{
    ssize_t count;
    do
        count = ::read(m_handle->descriptor, bytes, size_t(maximum));
    while (count < 0 && errno == EINTR);
    return count;
}

qint64 RegularFile::readAt(qint64 offset, char *bytes, qint64 maximum) const
{
    ssize_t count;
    do
        count = ::pread(m_handle->descriptor, bytes, size_t(maximum), offset);
    while (count < 0 && errno == EINTR);
    return count;
}

#else

struct RegularFile::Handle {
    QFile file;
    qint64 size = 0;
    std::mutex position; // held while a reading at an offset moves the file's position away and back
};

Result<RegularFile> RegularFile::open(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return failure(ErrorCode::NotFound);
    if (!info.isFile())
        return failure(ErrorCode::NotARegularFile);
    RegularFile file;
    file.m_handle = std::make_unique<Handle>();
    file.m_handle->file.setFileName(path);
    if (!file.m_handle->file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return failure(ErrorCode::NotReadable);
    file.m_handle->size = file.m_handle->file.size();
    return file;
}

qint64 RegularFile::size() const
{
    return m_handle->size;
}

qint64 RegularFile::read(char *bytes, qint64 maximum)
{
    return m_handle->file.read(bytes, maximum);
}

qint64 RegularFile::readAt(qint64 offset, char *bytes, qint64 maximum) const
{
    const std::lock_guard lock(m_handle->position);
    const qint64 before = m_handle->file.pos();
    const qint64 count = m_handle->file.seek(offset) ? m_handle->file.read(bytes, maximum) : -1;
    m_handle->file.seek(before);
    return count;
}

#endif

RegularFile::RegularFile() = default;
RegularFile::RegularFile(RegularFile &&other) noexcept = default;
RegularFile &RegularFile::operator=(RegularFile &&other) noexcept = default;
RegularFile::~RegularFile() = default;

} // namespace platform
