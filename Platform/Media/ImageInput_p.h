#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/RegularFile_p.h"

#include <QByteArray>

#include <variant>

namespace platform {

/// The bytes of a picture for those who decode it: a file, read piece by piece as it is asked for, or memory. A file
/// may change, shrink or vanish meanwhile; what is gone then reads as the end.
///
/// Thread safety: may be read on several threads at once.
class ImageInput
{
public:
    explicit ImageInput(RegularFile file)
        : m_source(std::move(file))
    { }
    /// Borrows the bytes.
    explicit ImageInput(QByteArrayView bytes)
        : m_source(bytes)
    { }

    /// In bytes, as it was when the file was opened.
    qint64 size() const;
    /// Reads as many bytes as are there, up to the maximum, into memory of the caller's.
    /// @return how many; fewer than the maximum only at the end or when the system refuses
    qint64 read(qint64 offset, char *bytes, qint64 maximum) const;
    /// The same into a new array.
    QByteArray read(qint64 offset, qint64 maximum) const;

private:
    std::variant<RegularFile, QByteArrayView> m_source;
};

} // namespace platform
