#include "Platform/Media/JpegSegments_p.h"

#include <cstring>

namespace platform {

bool JpegSegment::startsFrame() const
{
    // Among these numbers lie three that are something else.
    return marker >= StartOfBaselineFrame && marker <= LastStartOfFrame && marker != HuffmanTables && marker != 0xC8
        && marker != ArithmeticConditioning;
}

// Where the next marker's second byte is, -1 at the end of the file. In a scan a zero behind 0xFF makes that a byte of
// data, and restart markers belong to the data, too.
qint64 JpegSegments::findMarker(bool isInScan) const
{
    char buffer[16 * 1024];
    bool isPrefixed = false;
    for (qint64 offset = m_offset;;) {
        // Headers mostly follow each other at once.
        const qint64 count = m_input.read(offset, buffer, isInScan || offset > m_offset ? qint64(sizeof buffer) : 4);
        if (count <= 0)
            return -1;
        for (qint64 i = 0; i < count; ++i) {
            const auto byte = uchar(buffer[i]);
            if (byte == 0xFF) {
                isPrefixed = true;
            } else if (isPrefixed) {
                isPrefixed = false;
                if (byte != 0 && !(isInScan && byte >= FirstRestart && byte <= LastRestart))
                    return offset + i;
            } else {
                const void *const prefix = std::memchr(buffer + i, 0xFF, size_t(count - i));
                i = prefix ? static_cast<const char *>(prefix) - buffer - 1 : count;
            }
        }
        offset += count;
    }
}

std::optional<JpegSegment> JpegSegments::next()
{
    for (;;) {
        const qint64 place = findMarker(false);
        uchar head[3];
        if (place < 0 || m_input.read(place, reinterpret_cast<char *>(head), 3) < 1)
            return std::nullopt;
        JpegSegment segment;
        segment.marker = head[0];
        m_offset = place + 1;
        if (segment.marker == EndOfImage)
            return std::nullopt;
        if (segment.marker == 0x01 || (segment.marker >= FirstRestart && segment.marker <= StartOfImage))
            continue; // these stand alone
        const int length = head[1] << 8 | head[2];
        if (length < 2 || place + 3 > m_input.size())
            return std::nullopt;
        segment.offset = place + 3;
        segment.length = length - 2;
        m_offset = segment.offset + segment.length;
        return segment;
    }
}

void JpegSegments::skipScan()
{
    const qint64 place = findMarker(true);
    m_offset = place < 0 ? m_input.size() : place - 1;
}

} // namespace platform
