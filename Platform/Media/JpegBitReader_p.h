#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include "Platform/Media/ImageInput_p.h"

#include <QtEndian>

#include <memory>

namespace platform {

/// A place in prepared data. A small value, so that the innermost loops can keep it in registers.
class JpegBits
{
public:
    /// Makes sure that 56 bits can be looked at and taken.
    void refill()
    {
        m_window |= qFromBigEndian<quint64>(m_next) >> m_count;
        m_next += (63 - m_count) >> 3;
        m_count |= 56;
    }
    quint32 peek(int count) const { return quint32(m_window >> (64 - count)); }
    /// The next bits as a number, up to 16; none gives 0.
    quint32 take(int count)
    {
        const auto value = quint32((m_window >> 1) >> (63 - count));
        skip(count);
        return value;
    }
    void skip(int count)
    {
        m_window <<= count;
        m_count -= count;
    }

private:
    friend class JpegBitReader;
    const uchar *m_next = nullptr; // byte to be taken up by the next refill
    quint64 m_window = 0; // the next bits at the top
    int m_count = 0; // how many of them are valid
};

/// Reads the bits of entropy-coded JPEG data out of a file, block by block and without the zeros that are stuffed in
/// behind bytes 0xFF. At a marker the data ends: what is read behind that is zeros, up to the next `prepare`.
class JpegBitReader
{
public:
    /// The most bytes that may be read between two calls of `prepare`.
    static constexpr qsizetype preparedBytes = 4096;

    explicit JpegBitReader(const ImageInput &input);

    /// Begins at a place in the file.
    void start(qint64 offset);
    /// Sees to it that enough bytes are there.
    /// @return false when more was read than there is
    bool prepare() { return m_bits.m_next < m_refillAt || fill(); }
    /// Passes over what is left of the data, up to the marker that ends it.
    void skipToMarker();
    /// That marker, and where it stands (its first byte); 0, and the end of the file, where there is none. Only after
    /// `skipToMarker`.
    uchar marker() const { return m_rawEnd - m_raw >= 2 ? m_raw[1] : 0; }
    qint64 markerOffset() const { return m_rawOffset + (m_raw - rawBegin()); }

    /// The place reached in the data. A decoder takes it out, reads with it and puts it back.
    JpegBits bits() const { return m_bits; }
    void setBits(JpegBits bits) { m_bits = bits; }

private:
    static constexpr qsizetype rawSize = 64 * 1024;
    static constexpr qsizetype dataSize = 32 * 1024;

    const uchar *rawBegin() const { return m_memory.get(); }
    bool fill();
    bool readRaw();
    void copyData(uchar *to, uchar *end);

    const ImageInput &m_input;
    std::unique_ptr<uchar[]> m_memory; // raw bytes, then data, then zeros behind it
    uchar *m_data;
    qint64 m_rawOffset = 0; // of the raw bytes in the file
    const uchar *m_raw; // up to where they were used
    const uchar *m_rawEnd;
    bool m_atMarker = false;
    const uchar *m_dataEnd;
    const uchar *m_refillAt; // from here on prepare has to look
    JpegBits m_bits;
};

} // namespace platform
