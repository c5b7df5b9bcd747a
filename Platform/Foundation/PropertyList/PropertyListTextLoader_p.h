#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It brings the text of property lists into memory, and may
//  change from version to version.
//

#include "Platform/Foundation/PropertyList/PropertyListTape_p.h"
#include "Platform/Foundation/RegularFile_p.h"
#include "Platform/Foundation/Result.h"

#include <QByteArrayView>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace platform {

/// A private copy of a text, padded with zeros as a document wants it, which may still be arriving from its
/// file.
///
/// Large files are read by a thread of the loader's own while their beginning is being parsed; where the system has
/// no thread left, opening reads them. The copy holds
/// what the file held when it was read, up to the size that it had when it was opened: what becomes of the
/// file afterwards is of no account.
///
/// Belongs to one thread. The destructor stops the reading.
class PropertyListTextLoader
{
public:
    using Pointer = std::unique_ptr<PropertyListTextLoader>;

    /// Files from this size on are read by a thread.
    static constexpr qint64 ThreadSize = 1 << 20;

    /// Opens a file and begins to read it. Errors: `NotFound`, `NotReadable`, `NotARegularFile`, `TooLarge`,
    /// without the path.
    static Result<Pointer> open(const QString &path, qint64 threadSize = ThreadSize);
    /// Copies the bytes. Error: `TooLarge`.
    static Result<Pointer> copy(QByteArrayView bytes);

    ~PropertyListTextLoader();

    /// Size that the text had at first. It may turn out shorter.
    qsizetype expectedSize() const { return m_expectedSize; }
    /// The text, of which `available` bytes may be read.
    char *text() const { return m_buffer.get() + PropertyListTape::Padding; }
    /// Waits until so many bytes are there, or the text ended before.
    /// @return how many are there. Fewer than asked for means that this is all.
    qsizetype waitFor(qsizetype bytes);
    /// Waits for all of it.
    /// @return its size.
    qsizetype waitForAll() { return waitFor(m_expectedSize + 1); }
    /// Does not wait.
    /// @return the error if the system refused to hand out the rest, as far as it was asked: `NotReadable`.
    std::optional<Error> readError();

    /// Hands the finished copy over.
    PropertyListDocument::TextBuffer takeBuffer();

private:
    PropertyListTextLoader() = default;
    bool allocate(qint64 size);
    bool startThread();
    void load();
    enum class Progress { More, Complete, Failed };
    void publish(qsizetype bytes, Progress progress);

    PropertyListDocument::TextBuffer m_buffer;
    qsizetype m_expectedSize = 0;
    RegularFile m_file;
    std::thread m_thread;
    std::atomic<bool> m_cancelled = false;

    std::mutex m_mutex; // guards all below
    std::condition_variable m_published;
    qsizetype m_available = 0;
    Progress m_state = Progress::More;
};

} // namespace platform
