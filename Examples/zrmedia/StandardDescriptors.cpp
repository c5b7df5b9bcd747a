#include "StandardDescriptors.h"

#include <QtGlobal>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#endif

void reserveStandardDescriptors()
{
#ifdef Q_OS_UNIX
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        // Opened for the direction that nobody uses, so that the loss of output is still noticed. The lowest free
        // number, which the system gives, is this one.
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF)
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
#endif
}
