#include "Platform/Media/JpegDcDecoder_p.h"

#include "Platform/Media/ImageSource.h"
#include "Platform/Media/JpegBitReader_p.h"

#include <algorithm>

namespace platform {
namespace {

/// More than this many scans no encoder writes; each may cost the time of a whole decoding.
constexpr int maximumScans = 100;
/// A unit of coding holds at most this many blocks (T.81, B.2.3); the bit reader relies on it.
constexpr int maximumBlocksInUnit = 10;

Error malformed(const char *reason, qint64 offset = -1)
{
    return {ErrorCode::Malformed, QString::fromLatin1(reason), offset, {}};
}

Error unknown(const char *reason)
{
    return {ErrorCode::UnknownFormat, QString::fromLatin1(reason), -1, {}};
}

int byteAt(QByteArrayView bytes, qsizetype index)
{
    return quint8(bytes[index]);
}

int wordAt(QByteArrayView bytes, qsizetype index)
{
    return byteAt(bytes, index) << 8 | byteAt(bytes, index + 1);
}

int divideUp(int number, int divisor)
{
    return (number + divisor - 1) / divisor;
}

} // namespace

JpegDcDecoder::JpegDcDecoder(const ImageInput &input)
    : m_input(input)
    , m_segments(input)
{ }

JpegDcDecoder::~JpegDcDecoder() = default;

Result<JpegEighth> JpegDcDecoder::decode()
{
    int scans = 0;
    while (const auto segment = m_segments.next()) {
        if (segment->marker == StartOfScan && ++scans > maximumScans)
            return unknown("it has too many scans");
        if (std::optional<Error> error = readSegment(*segment))
            return *std::move(error);
        if (isComplete())
            return std::move(m_picture);
    }
    return malformed("the picture is not all there");
}

bool JpegDcDecoder::isComplete() const
{
    return !m_components.empty()
        && std::all_of(m_components.begin(), m_components.end(), [](const auto &each) { return each.isDecoded; });
}

std::optional<Error> JpegDcDecoder::readSegment(const JpegSegment &segment)
{
    // Metadata may be large and is of no use here.
    if (segment.marker >= FirstApplicationData || segment.length == 0)
        return std::nullopt;
    const QByteArray content = m_segments.content(segment);
    if (content.size() < segment.length)
        return malformed("the file ends early", segment.offset);
    if (segment.startsFrame())
        return readFrame(segment, content);
    switch (segment.marker) {
    case QuantizationTables:
        return readQuantization(content);
    case HuffmanTables:
        return readHuffman(content);
    case RestartInterval:
        m_restartInterval = content.size() >= 2 ? wordAt(content, 0) : 0;
        return std::nullopt;
    case StartOfScan:
        return decodeScan(segment, content);
    default:
        return std::nullopt;
    }
}

std::optional<Error> JpegDcDecoder::readQuantization(QByteArrayView content)
{
    while (!content.isEmpty()) {
        const int table = byteAt(content, 0) & 0xF;
        const bool isWide = byteAt(content, 0) >> 4 != 0;
        const qsizetype length = isWide ? 128 : 64;
        if (table >= int(m_quantizers.size()) || content.size() < 1 + length)
            return malformed("a quantization table is damaged");
        m_quantizers[size_t(table)] = isWide ? wordAt(content, 1) : byteAt(content, 1);
        content = content.sliced(1 + length);
    }
    return std::nullopt;
}

std::optional<Error> JpegDcDecoder::readHuffman(QByteArrayView content)
{
    constexpr qsizetype headLength = 17;
    while (content.size() >= headLength) {
        const int kind = byteAt(content, 0) >> 4, table = byteAt(content, 0) & 0xF;
        qsizetype symbols = 0;
        for (qsizetype length = 1; length <= 16; ++length)
            symbols += byteAt(content, length);
        if (kind > 1 || table >= int(m_dcTables.size()) || symbols > 256 || content.size() < headLength + symbols)
            return malformed("a Huffman table is damaged");
        auto &place = (kind == 0 ? m_dcTables : m_acTables)[size_t(table)];
        if (!place)
            place = std::make_unique<JpegHuffmanTable>();
        if (!place->setCodes(content.sliced(1, 16), content.sliced(headLength, symbols)))
            return malformed("a Huffman table is damaged");
        content = content.sliced(headLength + symbols);
    }
    return std::nullopt;
}

std::optional<Error> JpegDcDecoder::readFrame(const JpegSegment &segment, QByteArrayView content)
{
    if (!m_components.empty())
        return unknown("it holds several frames");
    if (segment.marker > StartOfProgressiveFrame)
        return unknown("it is coded in a way that is rarely used");
    m_isProgressive = segment.marker == StartOfProgressiveFrame;
    if (content.size() < 6)
        return malformed("the head of the picture is damaged", segment.offset);
    const int height = wordAt(content, 1), width = wordAt(content, 3), count = byteAt(content, 5);
    if (byteAt(content, 0) != 8 || height == 0 || (count != 1 && count != 3))
        return unknown("it is of a kind that is rarely used");
    if (width == 0 || content.size() < 6 + 3 * count)
        return malformed("the head of the picture is damaged", segment.offset);
    if (qint64(width) * height > ImageSource::maximumPixels)
        return Error{ErrorCode::TooLarge, QStringLiteral("the picture has too many pixels"), segment.offset, {}};

    m_picture.size = QSize(width, height);
    for (int i = 0; i < count; ++i) {
        const qsizetype place = 6 + 3 * i;
        JpegEighth::Component component;
        component.horizontalSampling = byteAt(content, place + 1) >> 4;
        component.verticalSampling = byteAt(content, place + 1) & 0xF;
        const int quantization = byteAt(content, place + 2);
        const auto isFactor = [](int factor) { return factor >= 1 && factor <= 4; };
        if (!isFactor(component.horizontalSampling) || !isFactor(component.verticalSampling)
            || quantization >= int(m_quantizers.size()))
            return malformed("the head of the picture is damaged", segment.offset);
        m_maximumHorizontal = std::max(m_maximumHorizontal, component.horizontalSampling);
        m_maximumVertical = std::max(m_maximumVertical, component.verticalSampling);
        m_picture.components.push_back(std::move(component));
        m_components.push_back({uchar(content[place]), quantization});
    }
    const int columns = divideUp(width, 8 * m_maximumHorizontal), rows = divideUp(height, 8 * m_maximumVertical);
    for (JpegEighth::Component &component : m_picture.components) {
        component.plane = Plane(columns * component.horizontalSampling, rows * component.verticalSampling, 128);
        component.extent = QSizeF(width * component.horizontalSampling / (8.0 * m_maximumHorizontal),
                                  height * component.verticalSampling / (8.0 * m_maximumVertical));
    }
    return std::nullopt;
}

Result<JpegDcDecoder::Scan> JpegDcDecoder::readScan(QByteArrayView content)
{
    const int count = byteAt(content, 0);
    if (m_components.empty() || count < 1 || count > int(m_components.size()) || content.size() < 4 + 2 * count)
        return malformed("the head of a scan is damaged");
    const int firstCoefficient = byteAt(content, 1 + 2 * count);
    const int precision = byteAt(content, 3 + 2 * count);
    const int shift = m_isProgressive ? precision & 0xF : 0; // successive approximation, T.81 G.1.1.1.1
    Scan scan;
    scan.isWanted = !m_isProgressive || (firstCoefficient == 0 && precision >> 4 == 0);
    int blocks = 0;
    for (int i = 0; i < count && scan.isWanted; ++i) {
        const auto identifier = uchar(content[1 + 2 * i]);
        const auto found = std::find_if(m_components.begin(), m_components.end(),
                                        [&](const Component &each) { return each.identifier == identifier; });
        const int tables = byteAt(content, 2 + 2 * i);
        if (found == m_components.end() || tables >> 4 > 3 || (tables & 0xF) > 3 || shift > 13)
            return malformed("the head of a scan is damaged");
        ScanComponent component;
        component.index = size_t(found - m_components.begin());
        const auto &dc = m_dcTables[size_t(tables >> 4)], &ac = m_acTables[size_t(tables & 0xF)];
        if (!dc || dc->isEmpty() || (!m_isProgressive && (!ac || ac->isEmpty())))
            return malformed("a Huffman table is missing");
        component.dc = dc.get();
        if (!m_isProgressive) {
            ac->prepareRuns();
            component.ac = ac.get();
        }
        const int quantizer = m_quantizers[size_t(found->quantization)];
        component.factor = quantizer << shift;
        // For the bits that later scans bring stands the mean of all that they may be. Then an eighth, rounded, around
        // the middle of the range.
        component.offset = quantizer * ((1 << shift) - 1) / 2 + 4 + 8 * 128;
        scan.components.push_back(component);
        const JpegEighth::Component &shape = m_picture.components[component.index];
        blocks += shape.horizontalSampling * shape.verticalSampling;
    }
    if (count > 1 && blocks > maximumBlocksInUnit)
        return unknown("its units are larger than allowed");
    return scan;
}

std::optional<Error> JpegDcDecoder::decodeScan(const JpegSegment &segment, QByteArrayView content)
{
    Result<Scan> read = readScan(content);
    if (!read)
        return read.error();
    Scan scan = std::move(read).value();
    if (!scan.isWanted) {
        m_segments.skipScan();
        return std::nullopt;
    }
    JpegBitReader reader(m_input);
    reader.start(segment.offset + segment.length);
    if (std::optional<Error> error = m_isProgressive ? decodeUnits<true>(scan, reader) : decodeAllUnits(scan, reader))
        return error;
    for (const ScanComponent &component : scan.components)
        m_components[component.index].isDecoded = true;
    if (!isComplete()) {
        reader.skipToMarker();
        m_segments.seek(reader.markerOffset());
    }
    return std::nullopt;
}

template <bool isProgressive>
Q_ALWAYS_INLINE std::optional<Error> JpegDcDecoder::decodeUnits(Scan &scan, JpegBitReader &reader)
{
    const QSize size = m_picture.size;
    int columns = divideUp(size.width(), 8 * m_maximumHorizontal);
    int rows = divideUp(size.height(), 8 * m_maximumVertical);
    if (scan.components.size() == 1) { // its blocks come one by one, and only those that the picture reaches into
        const JpegEighth::Component &shape = m_picture.components[scan.components[0].index];
        columns = divideUp(divideUp(size.width() * shape.horizontalSampling, m_maximumHorizontal), 8);
        rows = divideUp(divideUp(size.height() * shape.verticalSampling, m_maximumVertical), 8);
    }
    int untilRestart = m_restartInterval;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            if (m_restartInterval > 0 && untilRestart-- == 0) {
                if (!restart(scan, reader))
                    return endEarly(scan, row, rows);
                untilRestart = m_restartInterval - 1;
            }
            if (!reader.prepare() || !decodeUnit<isProgressive>(scan, reader, column, row))
                return endEarly(scan, row, rows);
        }
    }
    return std::nullopt;
}

// The innermost loop: nearly all of the time of a thumbnail is spent here.
template <bool isProgressive>
Q_ALWAYS_INLINE bool JpegDcDecoder::decodeBlock(ScanComponent &component, JpegBits &bits)
{
    constexpr int lookUpBits = JpegHuffmanTable::lookUpBits;
    const auto symbolOf = [&](const JpegHuffmanTable &table) {
        const auto symbol = table.symbol(bits.peek(lookUpBits));
        return Q_LIKELY(symbol.length != 0) ? symbol : table.longSymbol(bits.peek(16));
    };

    bits.refill();
    const auto difference = symbolOf(*component.dc);
    if (Q_UNLIKELY(difference.length == 0 || difference.value > 11))
        return false;
    bits.skip(difference.length);
    // A number of so many bits; those that begin with a zero stand for negative ones (T.81, F.2.2.1).
    const int value = int(bits.take(difference.value));
    const bool isNegative = difference.value > 0 && value >> (difference.value - 1) == 0;
    component.predictor = qint16(component.predictor + value - (isNegative ? (1 << difference.value) - 1 : 0));
    if constexpr (isProgressive)
        return true;

    constexpr quint32 end = 64, lengthMask = (1 << JpegHuffmanTable::lengthBits) - 1;
    const JpegHuffmanTable &table = *component.ac;
    for (quint32 index = 1;;) {
        bits.refill();
        quint32 run = 0;
        const auto passRun = [&] {
            run = table.run(bits.peek(lookUpBits));
            index += run >> JpegHuffmanTable::lengthBits;
            if (Q_UNLIKELY(index >= end))
                return false;
            bits.skip(int(run & lengthMask));
            return true;
        };
        if (Q_LIKELY(passRun() && passRun() && passRun())) // as many as a refill is sure to be enough for
            continue;
        if (Q_LIKELY(index - JpegHuffmanTable::EndOfBlock < end || index == end)) {
            bits.skip(int(run & lengthMask));
            return true;
        }
        // The run goes on into the next block, or its first code is a long one: that code by itself.
        index -= run >> JpegHuffmanTable::lengthBits;
        bits.refill();
        const auto symbol = symbolOf(table);
        if (symbol.length == 0)
            return false;
        bits.skip(symbol.length + (symbol.value & 0xF));
        if ((symbol.value & 0xF) == 0 && symbol.value >> 4 != 15)
            return true;
        index += quint32(symbol.value >> 4) + 1;
        if (index >= end)
            return true;
    }
}

template <bool isProgressive>
Q_ALWAYS_INLINE bool JpegDcDecoder::decodeUnit(Scan &scan, JpegBitReader &reader, int column, int row)
{
    const bool isInterleaved = scan.components.size() > 1;
    JpegBits bits = reader.bits();
    for (ScanComponent &component : scan.components) {
        JpegEighth::Component &shape = m_picture.components[component.index];
        const int across = isInterleaved ? shape.horizontalSampling : 1;
        const int down = isInterleaved ? shape.verticalSampling : 1;
        for (int y = row * down; y < (row + 1) * down; ++y) {
            uchar *const samples = shape.plane.row(y) + column * across;
            for (int x = 0; x < across; ++x) {
                if (!decodeBlock<isProgressive>(component, bits))
                    return false;
                const qint64 mean = (qint64(component.predictor) * component.factor + component.offset) >> 3;
                samples[x] = uchar(std::clamp<qint64>(mean, 0, 255));
            }
        }
    }
    reader.setBits(bits);
    return true;
}

#if defined(Q_PROCESSOR_X86_64) && defined(Q_CC_GNU)

// Shifts by a count that is not known go in one step there, and the loop consists of them.
__attribute__((target("bmi,bmi2"))) std::optional<Error> JpegDcDecoder::decodeAllUnitsBmi2(Scan &scan,
                                                                                           JpegBitReader &reader)
{
    return decodeUnits<false>(scan, reader);
}

std::optional<Error> JpegDcDecoder::decodeAllUnits(Scan &scan, JpegBitReader &reader)
{
    static const bool hasBmi2 = __builtin_cpu_supports("bmi2");
    return hasBmi2 ? decodeAllUnitsBmi2(scan, reader) : decodeUnits<false>(scan, reader);
}

#else

std::optional<Error> JpegDcDecoder::decodeAllUnits(Scan &scan, JpegBitReader &reader)
{
    return decodeUnits<false>(scan, reader);
}

#endif

bool JpegDcDecoder::restart(Scan &scan, JpegBitReader &reader) const
{
    reader.skipToMarker();
    const uchar marker = reader.marker();
    if (marker < FirstRestart || marker > LastRestart)
        return false;
    reader.start(reader.markerOffset() + 2);
    for (ScanComponent &component : scan.components)
        component.predictor = 0;
    return true;
}

// A picture whose end is missing is shown as far as it goes, when that is at least half of it.
std::optional<Error> JpegDcDecoder::endEarly(const Scan &scan, int row, int rows)
{
    if (2 * row < rows)
        return malformed("less than half of the picture can be read");
    for (const ScanComponent &component : scan.components) {
        Plane &plane = m_picture.components[component.index].plane;
        const int first = row * plane.height / rows;
        for (int y = first; y < plane.height; ++y)
            std::copy_n(plane.row(first - 1), plane.width, plane.row(y));
    }
    return std::nullopt;
}

} // namespace platform
