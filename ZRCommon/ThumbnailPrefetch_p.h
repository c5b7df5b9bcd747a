#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Foundation/Result.h"

#include <QByteArray>
#include <QHash>
#include <QStringList>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

/// Makes thumbnails of many pictures, in order and ahead of the one who asks for them, on all processors: the asking
/// thread decodes as well, instead of waiting. No more than a few are made ahead, so that memory stays small.
///
/// Belongs to one thread, which asks for some or all of the pictures, in order.
class ThumbnailPrefetch
{
public:
    /// @param imagePaths the pictures, each of them once
    /// @param maximumPixelSize of the longer side
    /// @param workers threads beside the asking one; by default one for each further processor
    ThumbnailPrefetch(const QStringList &imagePaths, int maximumPixelSize,
                      int workers = int(std::thread::hardware_concurrency()) - 1);
    ~ThumbnailPrefetch();
    ThumbnailPrefetch(const ThumbnailPrefetch &) = delete;
    ThumbnailPrefetch &operator=(const ThumbnailPrefetch &) = delete;

    /// The thumbnail, a JPEG, of a picture; nothing when it is none of those to come, or was to be of another size.
    /// Those before it are not made any more.
    std::optional<platform::Result<QByteArray>> take(const QString &imagePath, int maximumPixelSize);
    /// The picture, and those before it, will not be asked for (again).
    void passOver(const QString &imagePath);

private:
    using Thumbnail = std::optional<platform::Result<QByteArray>>;

    void work();
    std::optional<size_t> nextToMake() const;
    void make(size_t place, std::unique_lock<std::mutex> &lock);
    std::optional<size_t> placeOf(const QString &imagePath) const;

    const QStringList m_paths;
    QHash<QString, size_t> m_places; // of the paths, which are looked up twice for each picture
    const int m_maximumPixelSize;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Thumbnail> m_thumbnails;
    size_t m_first = 0; // the first that may still be asked for
    size_t m_next = 0; // the first that nobody has begun
    bool m_isEnding = false;
    std::vector<std::jthread> m_workers; // last, so that they end first
};

namespace platform {
/// The thumbnail of one picture file.
Result<QByteArray> thumbnailOfFile(const QString &imagePath, int maximumPixelSize);
} // namespace platform
