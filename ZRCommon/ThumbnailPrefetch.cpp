#include "ZRCommon/ThumbnailPrefetch_p.h"

#include "Platform/Media/ImageSource.h"

#include <algorithm>
#include <new>
#include <system_error>

namespace {

/// How many thumbnails are ready at most, or being made.
constexpr size_t ahead = 16;
/// More threads than this only take memory from each other.
constexpr int maximumWorkers = 7;

} // namespace

platform::Result<QByteArray> platform::thumbnailOfFile(const QString &imagePath, int maximumPixelSize)
{
    const auto failed = [&](const char *reason) {
        return Error{ErrorCode::Malformed, QString::fromLatin1(reason), -1, imagePath};
    };
    try {
        const Result<ImageSource> source = ImageSource::open(imagePath);
        Result<QByteArray> thumbnail =
            source ? source.value().jpegThumbnail(maximumPixelSize) : Result<QByteArray>(source.error());
        if (thumbnail || !thumbnail.error().path.isEmpty())
            return thumbnail;
        Error error = thumbnail.error();
        error.path = imagePath;
        return error;
    } catch (const std::bad_alloc &) {
        return failed("there is not enough memory to decode it");
    } catch (...) {
        return failed("its decoder failed"); // one picture must not end all others
    }
}

ThumbnailPrefetch::ThumbnailPrefetch(const QStringList &imagePaths, int maximumPixelSize, int workers)
    : m_paths(imagePaths)
    , m_maximumPixelSize(maximumPixelSize)
    , m_thumbnails(size_t(imagePaths.size()))
{
    m_places.reserve(m_paths.size());
    for (qsizetype place = 0; place < m_paths.size(); ++place)
        m_places.insert(m_paths[place], size_t(place));
    // A picture alone is made by the one who asks for it.
    const int count = std::min({workers, maximumWorkers, int(m_paths.size()) - 1});
    try {
        for (int i = 0; i < count; ++i)
            m_workers.emplace_back([this] { work(); });
    } catch (const std::system_error &) {
        // There are no more threads to be had: it goes on with these.
    }
}

ThumbnailPrefetch::~ThumbnailPrefetch()
{
    const std::lock_guard lock(m_mutex);
    m_isEnding = true;
    m_changed.notify_all();
}

std::optional<size_t> ThumbnailPrefetch::placeOf(const QString &imagePath) const
{
    const auto found = m_places.constFind(imagePath);
    return found != m_places.cend() && *found >= m_first ? std::optional(*found) : std::nullopt;
}

std::optional<size_t> ThumbnailPrefetch::nextToMake() const
{
    const size_t next = std::max(m_next, m_first);
    return next < std::min(m_thumbnails.size(), m_first + ahead) ? std::optional(next) : std::nullopt;
}

void ThumbnailPrefetch::make(size_t place, std::unique_lock<std::mutex> &lock)
{
    m_next = place + 1;
    lock.unlock();
    platform::Result<QByteArray> thumbnail = platform::thumbnailOfFile(m_paths[qsizetype(place)], m_maximumPixelSize);
    lock.lock();
    if (place >= m_first)
        m_thumbnails[place].emplace(std::move(thumbnail));
    m_changed.notify_all();
}

void ThumbnailPrefetch::work()
{
    std::unique_lock lock(m_mutex);
    while (!m_isEnding) {
        if (const auto place = nextToMake())
            make(*place, lock);
        else
            m_changed.wait(lock);
    }
}

std::optional<platform::Result<QByteArray>> ThumbnailPrefetch::take(const QString &imagePath, int maximumPixelSize)
{
    std::unique_lock lock(m_mutex);
    const auto place = placeOf(imagePath);
    if (!place || maximumPixelSize != m_maximumPixelSize)
        return std::nullopt;
    m_first = *place;
    while (!m_thumbnails[*place]) {
        if (const auto next = nextToMake())
            make(*next, lock);
        else
            m_changed.wait(lock);
    }
    Thumbnail thumbnail = std::exchange(m_thumbnails[*place], std::nullopt);
    m_first = *place + 1;
    m_changed.notify_all();
    return thumbnail;
}

void ThumbnailPrefetch::passOver(const QString &imagePath)
{
    const std::lock_guard lock(m_mutex);
    if (const auto place = placeOf(imagePath)) {
        for (; m_first <= *place; ++m_first)
            m_thumbnails[m_first].reset();
        m_changed.notify_all();
    }
}
