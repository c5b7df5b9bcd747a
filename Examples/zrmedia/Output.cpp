#include "Output.h"

#include <cerrno>
#include <cstring>

Output::Output(std::FILE *stream)
    : m_stream(stream)
{
    m_buffer.reserve(blockSize);
}

bool Output::flush()
{
    writeBlock();
    if (!m_error && std::fflush(m_stream) != 0)
        m_error = errno;
    return !m_error;
}

QString Output::failure() const
{
    return m_error ? QString::fromLocal8Bit(std::strerror(m_error)) : QString();
}

void Output::writeBlock()
{
    if (!m_error && std::fwrite(m_buffer.constData(), 1, size_t(m_buffer.size()), m_stream) != size_t(m_buffer.size()))
        m_error = errno;
    m_buffer.resize(0);
}
