#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QByteArrayView>
#include <QtGlobal>

#include <array>

namespace platform {

/// A table of Huffman codes (ITU-T T.81, annexes C and F) made for a decoder that wants the first coefficient of each
/// block only and has to get past the others.
class JpegHuffmanTable
{
public:
    /// How many bits are looked up at once. Tables of this size stay in the processor's nearest memory.
    static constexpr int lookUpBits = 12;

    /// @param counts how many codes there are of each length from 1 to 16 bits
    /// @param symbols of the codes in their order, at most 256
    /// @return false when there are more codes of a length than that length allows
    bool setCodes(QByteArrayView counts, QByteArrayView symbols);
    bool isEmpty() const { return m_symbolCount == 0; }
    /// Makes what `run` looks up, unless that is done.
    void prepareRuns();

    /// The symbol whose code begins the bits, of which there are lookUpBits.
    struct Symbol {
        quint8 length; ///< Of the code in bits; 0 for a longer code, or none.
        quint8 value;
    };
    Symbol symbol(quint32 bits) const { return m_symbols[bits]; }
    /// The same for longer codes. Length 0: these bits begin no code.
    /// @param bits 16 of them
    Symbol longSymbol(quint32 bits) const;

    /// What several codes that follow each other, with the bits of their coefficients, come to: how many bits they take
    /// (in the lower six bits of the number, as many as a shift looks at), and how far they advance in the block (above
    /// these). To the latter EndOfBlock is added where the last of the codes ends the block, and it is NotTold where
    /// the first code already has to be looked at by itself. Known once `prepareRuns` was called.
    quint32 run(quint32 bits) const { return m_runs[bits]; }
    static constexpr quint32 EndOfBlock = 128;
    static constexpr quint32 NotTold = 256;
    static constexpr int lengthBits = 6;
    /// The most bits that a run takes: three of them are sure to fit into what the reader holds.
    static constexpr int longestRun = 18;

private:
    quint16 runAt(quint32 bits) const;

    std::array<Symbol, 1 << lookUpBits> m_symbols;
    std::array<quint16, 1 << lookUpBits> m_runs;
    std::array<qint32, 17> m_pastLastCode; // of each length, and one more than the last
    std::array<qint32, 17> m_firstSymbol; // what a code of the length lacks to be its symbol's index
    std::array<quint8, 256> m_values;
    int m_symbolCount = 0;
    bool m_hasRuns = false;
};

} // namespace platform
