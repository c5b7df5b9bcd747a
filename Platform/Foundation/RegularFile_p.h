#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/Result.h"

#include <QString>

#include <memory>

namespace platform {

/// A regular file, open for reading. Opening never blocks and never reaches anything but a regular file: a
/// pipe, device, socket or folder at the path is refused.
class RegularFile
{
public:
    RegularFile();
    RegularFile(RegularFile &&other) noexcept;
    RegularFile &operator=(RegularFile &&other) noexcept;
    ~RegularFile();

    /// Errors: `NotFound`, `NotReadable`, `NotARegularFile`, without the path.
    static Result<RegularFile> open(const QString &path);

    /// Size when the file was opened, in bytes.
    qint64 size() const;
    /// Reads on from where the last reading ended.
    /// @return the number of bytes read, 0 at the end, -1 when the system refuses.
    qint64 read(char *bytes, qint64 maximum);
    /// Reads at the offset, without regard to where other readings ended. May be called on several threads at once.
    /// @return as `read`
    qint64 readAt(qint64 offset, char *bytes, qint64 maximum) const;

private:
    struct Handle;
    std::unique_ptr<Handle> m_handle;
};

} // namespace platform
