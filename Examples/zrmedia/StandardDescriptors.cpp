#include "StandardDescriptors.h"

#include <QtGlobal>

#include <algorithm>
#include <atomic>
#include <cstdio>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#else
#include <io.h>
#endif

#ifdef Q_OS_UNIX

namespace {

std::atomic<int> errorDescriptor = STDERR_FILENO;

} // namespace

void reserveStandardDescriptors()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        // Opened for the direction that nobody uses, so that the loss of output is still noticed. The lowest free
        // number, which the system gives, is this one.
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF)
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

bool standardErrorIsTerminal()
{
    return isatty(errorDescriptor);
}

bool standardOutputIsTerminal()
{
    return isatty(STDOUT_FILENO);
}

void writeToStandardError(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t count = write(errorDescriptor, bytes.data(), size_t(bytes.size()));
        if (count < 0 && errno != EINTR)
            return;
        bytes = bytes.sliced(std::max<ssize_t>(count, 0));
    }
}

QuietStandardError::QuietStandardError()
{
    const int kept = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (kept >= 0 && nothing >= 0) {
        std::fflush(stderr);
        errorDescriptor = kept;
        dup2(nothing, STDERR_FILENO);
    } else if (kept >= 0) {
        close(kept);
    }
    if (nothing >= 0)
        close(nothing);
}

QuietStandardError::~QuietStandardError()
{
    const int kept = errorDescriptor;
    if (kept == STDERR_FILENO)
        return;
    std::fflush(stderr);
    dup2(kept, STDERR_FILENO);
    errorDescriptor = STDERR_FILENO;
    close(kept);
}

#else

void reserveStandardDescriptors() { }

bool standardErrorIsTerminal()
{
    return _isatty(_fileno(stderr));
}

bool standardOutputIsTerminal()
{
    return _isatty(_fileno(stdout));
}

void writeToStandardError(QByteArrayView bytes)
{
    std::fwrite(bytes.data(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

QuietStandardError::QuietStandardError() = default;
QuietStandardError::~QuietStandardError() = default;

#endif
