#include "Platform/Media/JpegHuffmanTable_p.h"

#include <QByteArray>

#include <memory>
#include <random>

#include <gtest/gtest.h>

namespace {

using platform::JpegHuffmanTable;

constexpr int lookUpBits = JpegHuffmanTable::lookUpBits;

/// What codes there are: for each symbol its length.
struct Codes {
    QByteArray counts = QByteArray(16, '\0');
    QByteArray symbols;
    std::vector<std::pair<quint32, int>> codes; // code and length, in the order of the symbols

    /// @param lengths ascending
    explicit Codes(const std::vector<std::pair<int, int>> &lengthsAndSymbols)
    {
        quint32 code = 0;
        int last = lengthsAndSymbols.front().first;
        for (const auto &[length, symbol] : lengthsAndSymbols) {
            code <<= length - last;
            last = length;
            codes.emplace_back(code++, length);
            counts[length - 1] = char(counts[length - 1] + 1);
            symbols.append(char(symbol));
        }
    }
    std::unique_ptr<JpegHuffmanTable> table() const
    {
        auto result = std::make_unique<JpegHuffmanTable>();
        EXPECT_TRUE(result->setCodes(counts, symbols));
        result->prepareRuns();
        return result;
    }
    /// The code's bits at the top of so many.
    quint32 bits(size_t index, int width) const { return codes[index].first << (width - codes[index].second); }
};

const Codes someCodes({{2, 0x01}, {2, 0x00}, {3, 0x12}, {4, 0xF0}, {8, 0x05}, {13, 0x0A}, {16, 0x33}});

TEST(JpegHuffmanTable, FindsShortAndLongCodes)
{
    const auto table = someCodes.table();
    for (size_t i = 0; i < someCodes.codes.size(); ++i) {
        const int length = someCodes.codes[i].second;
        const auto found = length <= lookUpBits ? table->symbol(someCodes.bits(i, lookUpBits))
                                                : table->longSymbol(someCodes.bits(i, 16));
        EXPECT_EQ(found.length, length) << i;
        EXPECT_EQ(found.value, quint8(someCodes.symbols[qsizetype(i)])) << i;
    }
    EXPECT_EQ(table->symbol(someCodes.bits(5, 16) >> (16 - lookUpBits)).length, 0); // too long to be looked up
    EXPECT_EQ(table->longSymbol(0xFFFF).length, 0); // no code
}

TEST(JpegHuffmanTable, RefusesMoreCodesThanALengthAllows)
{
    JpegHuffmanTable table;
    QByteArray counts(16, '\0');
    counts[0] = 3;
    EXPECT_FALSE(table.setCodes(counts, QByteArray(3, 'x')));
    counts[0] = 1;
    counts[1] = 3;
    EXPECT_FALSE(table.setCodes(counts, QByteArray(4, 'x')));
    counts[1] = 2;
    EXPECT_TRUE(table.setCodes(counts, QByteArray(3, 'x')));
    EXPECT_FALSE(table.setCodes(counts, QByteArray(2, 'x'))); // fewer symbols than codes
    EXPECT_FALSE(table.setCodes(QByteArray(16, '\xFF'), QByteArray(256, 'x')));
}

TEST(JpegHuffmanTable, IsEmptyWithoutCodes)
{
    JpegHuffmanTable table;
    EXPECT_TRUE(table.isEmpty());
    EXPECT_TRUE(table.setCodes(QByteArray(16, '\0'), QByteArray()));
    EXPECT_TRUE(table.isEmpty());
}

TEST(JpegHuffmanTable, SumsUpRunsOfCodes)
{
    const auto table = someCodes.table();
    const auto run = [&](quint32 bits) {
        const quint32 found = table->run(bits);
        return std::pair(found >> JpegHuffmanTable::lengthBits, found & ((1U << JpegHuffmanTable::lengthBits) - 1));
    };
    // 00x four times: four coefficients of one bit each.
    EXPECT_EQ(run(0), (std::pair<quint32, quint32>(4, 12)));
    // 01: the end of the block, after which nothing is summed up.
    EXPECT_EQ(run(0b0100'0000'0000), (std::pair<quint32, quint32>(JpegHuffmanTable::EndOfBlock, 2)));
    // 00x, then the end.
    EXPECT_EQ(run(0b0000'1000'0000), (std::pair<quint32, quint32>(JpegHuffmanTable::EndOfBlock + 1, 5)));
    // 1010: sixteen zeros, three times.
    EXPECT_EQ(run(0b1010'1010'1010), (std::pair<quint32, quint32>(48, 12)));
    // 100xx: a zero and a coefficient of two bits, twice; the rest begins no whole code.
    EXPECT_EQ(run(0b1000'0100'0010), (std::pair<quint32, quint32>(4, 10)));
    // A code of eight bits whose coefficient's bits lie behind the looked up ones.
    EXPECT_EQ(run(someCodes.bits(4, lookUpBits)), (std::pair<quint32, quint32>(1, 13)));
    // A code that is longer than what is looked up.
    EXPECT_EQ(run(someCodes.bits(5, 16) >> (16 - lookUpBits)).first, quint32(JpegHuffmanTable::NotTold));
}

} // namespace
