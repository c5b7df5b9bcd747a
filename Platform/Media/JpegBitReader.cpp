#include "Platform/Media/JpegBitReader_p.h"

#include <algorithm>
#include <cstring>

namespace platform {

// Behind the data lie zeros for whatever is read between two calls of `prepare`, and for one refill more.
constexpr qsizetype zerosSize = JpegBitReader::preparedBytes + 64;

JpegBitReader::JpegBitReader(const ImageInput &input)
    : m_input(input)
    , m_memory(new uchar[rawSize + dataSize + zerosSize])
    , m_data(m_memory.get() + rawSize)
    , m_raw(m_memory.get())
    , m_rawEnd(m_raw)
    , m_dataEnd(m_data)
    , m_refillAt(m_data)
{
    m_bits.m_next = m_data;
}

void JpegBitReader::start(qint64 offset)
{
    // What was read of the file already is mostly still there: restart intervals are short.
    const qint64 place = offset - m_rawOffset;
    if (place >= 0 && place <= m_rawEnd - rawBegin()) {
        m_raw = rawBegin() + place;
    } else {
        m_rawOffset = offset;
        m_raw = m_rawEnd = rawBegin();
    }
    m_atMarker = false;
    m_bits = JpegBits();
    m_bits.m_next = m_dataEnd = m_refillAt = m_data;
    fill();
}

// Reads on in the file, keeping the bytes that were not used yet.
bool JpegBitReader::readRaw()
{
    const qsizetype kept = m_rawEnd - m_raw;
    m_rawOffset += m_raw - rawBegin();
    std::memmove(m_memory.get(), m_raw, size_t(kept));
    const qint64 count =
        m_input.read(m_rawOffset + kept, reinterpret_cast<char *>(m_memory.get()) + kept, rawSize - kept);
    m_raw = rawBegin();
    m_rawEnd = m_raw + kept + count;
    return count > 0;
}

bool JpegBitReader::fill()
{
    // The bits that were taken up but not used are not counted as read.
    if (m_bits.m_next - (m_bits.m_count >> 3) > m_dataEnd)
        return false;
    if (m_atMarker)
        return true;
    const qsizetype kept = m_dataEnd - m_bits.m_next;
    std::memmove(m_data, m_bits.m_next, size_t(kept));
    m_bits.m_next = m_data;
    copyData(m_data + kept, m_data + dataSize);
    std::memset(const_cast<uchar *>(m_dataEnd), 0, size_t(zerosSize));
    m_refillAt = m_atMarker ? m_dataEnd : m_dataEnd - preparedBytes;
    return true;
}

void JpegBitReader::copyData(uchar *to, uchar *end)
{
    while (to < end && !m_atMarker) {
        if (m_rawEnd - m_raw < 2 && !readRaw() && m_rawEnd == m_raw) {
            m_atMarker = true;
            break;
        }
        const auto most = size_t(std::min(m_rawEnd - m_raw, end - to));
        const auto *prefix = static_cast<const uchar *>(std::memchr(m_raw, 0xFF, most));
        const size_t plain = prefix ? size_t(prefix - m_raw) : most;
        std::memcpy(to, m_raw, plain);
        to += plain;
        m_raw += plain;
        if (!prefix)
            continue;
        if (m_rawEnd - m_raw < 2 && !readRaw()) {
            m_atMarker = true; // 0xFF is the last byte of the file
        } else if (m_raw[1] != 0) {
            m_atMarker = true;
        } else {
            *to++ = 0xFF;
            m_raw += 2;
        }
    }
    m_dataEnd = to;
}

void JpegBitReader::skipToMarker()
{
    while (!m_atMarker) {
        m_bits = JpegBits();
        m_bits.m_next = m_dataEnd;
        fill();
    }
    // A marker may be preceded by any number of bytes 0xFF.
    while (marker() == 0xFF) {
        ++m_raw;
        if (m_rawEnd - m_raw < 2)
            readRaw();
    }
}

} // namespace platform
