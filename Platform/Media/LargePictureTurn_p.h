#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QtGlobal>

#include <mutex>

namespace platform {

/// Pictures that take much memory are decoded one after the other, however many threads make thumbnails: a thread
/// waits here until the turn is its own, and keeps it as long as the object lives. Turns may be nested. The many small
/// pictures do not wait.
class LargePictureTurn
{
public:
    /// The most bytes, of a file or of what it is decoded to, that need no turn.
    static constexpr qint64 smallBytes = 128 * 1024 * 1024;

    explicit LargePictureTurn(qint64 bytes)
    {
        static std::recursive_mutex mutex;
        if (bytes > smallBytes)
            m_lock = std::unique_lock(mutex);
    }

private:
    std::unique_lock<std::recursive_mutex> m_lock;
};

} // namespace platform
