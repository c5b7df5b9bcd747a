#include "Platform/Media/JpegHuffmanTable_p.h"

#include <algorithm>

namespace platform {

bool JpegHuffmanTable::setCodes(QByteArrayView counts, QByteArrayView symbols)
{
    m_symbols.fill({0, 0});
    m_symbolCount = int(symbols.size());
    std::copy(symbols.begin(), symbols.end(), m_values.begin());
    int code = 0, index = 0;
    for (int length = 1; length <= 16; ++length, code <<= 1) {
        m_firstSymbol[size_t(length)] = index - code;
        for (int left = quint8(counts[length - 1]); left > 0; --left, ++code, ++index) {
            if (index >= m_symbolCount || code >= 1 << length)
                return false;
            if (length > lookUpBits)
                continue;
            const auto first = m_symbols.begin() + (code << (lookUpBits - length));
            std::fill_n(first, 1 << (lookUpBits - length), Symbol{quint8(length), m_values[size_t(index)]});
        }
        m_pastLastCode[size_t(length)] = code;
    }
    m_hasRuns = false;
    return true;
}

void JpegHuffmanTable::prepareRuns()
{
    for (quint32 bits = 0; bits < m_runs.size() && !m_hasRuns; ++bits)
        m_runs[bits] = runAt(bits);
    m_hasRuns = true;
}

JpegHuffmanTable::Symbol JpegHuffmanTable::longSymbol(quint32 bits) const
{
    for (int length = lookUpBits + 1; length <= 16; ++length) {
        const auto code = qint32(bits >> (16 - length));
        const qint32 index = code + m_firstSymbol[size_t(length)];
        if (code < m_pastLastCode[size_t(length)])
            return index >= 0 && index < m_symbolCount ? Symbol{quint8(length), m_values[size_t(index)]} : Symbol{0, 0};
    }
    return {0, 0};
}

quint16 JpegHuffmanTable::runAt(quint32 bits) const
{
    constexpr quint32 lengthOfBlock = 64;
    int used = 0;
    quint32 advance = 0;
    bool ends = false, found = false;
    while (used < lookUpBits && !ends) {
        const Symbol next = symbol(bits << used & (m_runs.size() - 1));
        if (next.length == 0 || used + next.length > lookUpBits)
            break;
        const int zeros = next.value >> 4, coefficientBits = next.value & 0xF;
        // The bits of the last coefficient may lie behind what is looked up: they are only passed over.
        if (used + next.length + coefficientBits > longestRun)
            break;
        used += next.length + coefficientBits;
        found = true;
        if (coefficientBits > 0)
            advance += quint32(zeros) + 1;
        else if (zeros == 15)
            advance += 16;
        else
            ends = true;
    }
    if (!found || advance >= lengthOfBlock)
        return quint16(NotTold << lengthBits);
    return quint16((advance + (ends ? EndOfBlock : 0)) << lengthBits | quint32(used));
}

} // namespace platform
