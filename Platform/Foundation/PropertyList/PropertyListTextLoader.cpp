#include "Platform/Foundation/PropertyList/PropertyListTextLoader_p.h"

#include <cstdlib>
#include <cstring>
#include <system_error>

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#endif

namespace platform {

using PropertyListTape::Padding;

namespace {

// Bytes between two announcements of progress: small enough that the parser follows closely.
constexpr qsizetype ChunkSize = 256 * 1024;

// A large buffer is asked for in huge pages, which saves the kernel most of its work for memory that is
// touched for the first time.
char *allocateText(size_t size)
{
#ifdef Q_OS_LINUX
    constexpr size_t HugePage = 2 * 1024 * 1024;
    if (size >= 4 * HugePage) {
        void *memory = std::aligned_alloc(HugePage, (size + HugePage - 1) / HugePage * HugePage);
        if (memory)
            madvise(memory, size, MADV_HUGEPAGE);
        return static_cast<char *>(memory);
    }
#endif
    return static_cast<char *>(std::malloc(size));
}

} // namespace

bool PropertyListTextLoader::allocate(qint64 size)
{
    m_expectedSize = size;
    m_buffer.reset(allocateText(size_t(size) + 2 * Padding));
    if (m_buffer)
        std::memset(m_buffer.get(), 0, Padding);
    return m_buffer != nullptr;
}

auto PropertyListTextLoader::open(const QString &path, qint64 threadSize) -> Result<Pointer>
{
    auto file = RegularFile::open(path);
    if (!file)
        return file.error();
    const qint64 size = file.value().size();
    if (size > PropertyListTape::MaximumTextSize)
        return Error{ErrorCode::TooLarge, QStringLiteral("the file is larger than 4 GiB"), -1, {}};
    Pointer loader(new PropertyListTextLoader);
    if (!loader->allocate(size))
        return Error{ErrorCode::TooLarge, QStringLiteral("not enough memory for the file"), -1, {}};
    loader->m_file = std::move(file).value();
    if (size < threadSize || !loader->startThread())
        loader->load();
    return loader;
}

auto PropertyListTextLoader::copy(QByteArrayView bytes) -> Result<Pointer>
{
    if (bytes.size() > PropertyListTape::MaximumTextSize)
        return Error{ErrorCode::TooLarge, QStringLiteral("the text is larger than 4 GiB"), -1, {}};
    Pointer loader(new PropertyListTextLoader);
    if (!loader->allocate(bytes.size()))
        return Error{ErrorCode::TooLarge, QStringLiteral("not enough memory for the text"), -1, {}};
    if (!bytes.isEmpty())
        std::memcpy(loader->text(), bytes.data(), size_t(bytes.size()));
    loader->publish(bytes.size(), Progress::Complete);
    return loader;
}

PropertyListTextLoader::~PropertyListTextLoader()
{
    m_cancelled = true;
    if (m_thread.joinable())
        m_thread.join();
}

bool PropertyListTextLoader::startThread()
{
    try {
        m_thread = std::thread([this] { load(); });
        return true;
    } catch (const std::system_error &) { // too many threads, or no room for another one's stack
        return false;
    }
}

void PropertyListTextLoader::load()
{
    qsizetype size = 0;
    qint64 count = 0;
    while (size < m_expectedSize && !m_cancelled) {
        count = m_file.read(text() + size, qMin(ChunkSize, m_expectedSize - size));
        if (count <= 0)
            break;
        size += qsizetype(count);
        if (size < m_expectedSize)
            publish(size, Progress::More);
    }
    publish(size, count < 0 ? Progress::Failed : Progress::Complete);
}

void PropertyListTextLoader::publish(qsizetype bytes, Progress progress)
{
    if (progress != Progress::More)
        std::memset(text() + bytes, 0, Padding);
    {
        const std::lock_guard lock(m_mutex);
        m_available = bytes;
        m_state = progress;
    }
    m_published.notify_one();
}

qsizetype PropertyListTextLoader::waitFor(qsizetype bytes)
{
    std::unique_lock lock(m_mutex);
    m_published.wait(lock, [&] { return m_state != Progress::More || m_available >= bytes; });
    return m_available;
}

std::optional<Error> PropertyListTextLoader::readError()
{
    const std::lock_guard lock(m_mutex);
    if (m_state != Progress::Failed)
        return std::nullopt;
    return Error{ErrorCode::NotReadable, QStringLiteral("the file cannot be read to its end"), -1, {}};
}

PropertyListDocument::TextBuffer PropertyListTextLoader::takeBuffer()
{
    waitForAll();
    return std::move(m_buffer);
}

} // namespace platform
