#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <cstdio>

/// Bytes on their way into a stream, gathered in blocks. A stream that takes no more (a full disk, a closed
/// descriptor) is noticed and remembered; what is written after that is dropped. The main thread only.
class Output
{
public:
    /// The stream is borrowed.
    explicit Output(std::FILE *stream);
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    void write(QByteArrayView bytes)
    {
        if (m_buffer.size() + bytes.size() > blockSize)
            writeBlock();
        m_buffer.append(bytes);
    }

    /// Hands everything to the stream.
    /// @return whether all that was written has arrived there.
    bool flush();
    /// Whether the stream has refused bytes. May turn true a block later than the bytes were written.
    bool hasFailed() const { return m_error != 0; }
    /// What the system said when it refused; empty while it has not.
    QString failure() const;

private:
    static constexpr qsizetype blockSize = 256 * 1024;
    void writeBlock();

    std::FILE *m_stream;
    QByteArray m_buffer;
    int m_error = 0;
};
