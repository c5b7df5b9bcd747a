#include "Platform/Foundation/TextFolding.h"

#include <QChar>
#include <QString>
#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace platform {
namespace {

/// Writes one code point as UTF-8, surrogates too.
char *writeCodePoint(char *out, char32_t c)
{
    if (c < 0x80) {
        *out++ = char(c);
    } else if (c < 0x800) {
        *out++ = char(0xC0 | c >> 6);
        *out++ = char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        *out++ = char(0xE0 | c >> 12);
        *out++ = char(0x80 | (c >> 6 & 0x3F));
        *out++ = char(0x80 | (c & 0x3F));
    } else {
        *out++ = char(0xF0 | c >> 18);
        *out++ = char(0x80 | (c >> 12 & 0x3F));
        *out++ = char(0x80 | (c >> 6 & 0x3F));
        *out++ = char(0x80 | (c & 0x3F));
    }
    return out;
}

/// Folds eight bytes of ASCII at once. Answers whether all of them were ASCII; what it writes otherwise is no
/// use.
bool foldEightAscii(const char *in, char *out)
{
    constexpr quint64 every = 0x0101'0101'0101'0101;
    quint64 bytes = 0;
    std::memcpy(&bytes, in, 8);
    const quint64 low = bytes & (every * 0x7F);
    const quint64 fromA = low + every * (0x80 - 'A'); // the top bit of each byte that is 'A' or more
    const quint64 aboveZ = low + every * (0x7F - 'Z'); // of each that is more than 'Z'
    const quint64 upper = (fromA ^ aboveZ) & every * 0x80;
    const quint64 lower = bytes + (upper >> 2);
    std::memcpy(out, &lower, 8);
    return (bytes & every * 0x80) == 0;
}

bool foldAscii(const char *in, qsizetype size, char *out)
{
    if (size >= 8) {
        for (qsizetype i = 0; i + 8 < size; i += 8) {
            if (!foldEightAscii(in + i, out + i))
                return false;
        }
        return foldEightAscii(in + size - 8, out + size - 8);
    }
    for (qsizetype i = 0; i < size; ++i) {
        const auto c = quint8(in[i]);
        if (c >= 0x80)
            return false;
        out[i] = char(c + (quint8(c - 'A') < 26 ? 'a' - 'A' : 0));
    }
    return true;
}

/// Code points that canonical composition leaves as they are whatever stands before and behind them:
/// combining class 0, no change by themselves, and never the later part of a composition.
struct StableRange {
    char32_t first, last;
    bool hasCase;
};
constexpr StableRange stableRanges[] = {{0x0000, 0x02FF, true}, // Latin
                                        {0x0388, 0x0482, true}, // Greek, Cyrillic
                                        {0x048A, 0x0590, true}, // Cyrillic, Armenian
                                        {0x05D0, 0x060F, false}, // Hebrew letters
                                        {0x061B, 0x064A, false}, // Arabic letters
                                        {0x1E00, 0x1EFF, true}, // Latin with marks
                                        {0x2002, 0x20CF, false}, // punctuation, currency
                                        {0x2C60, 0x2C7F, true}, // Latin
                                        {0x3000, 0x3029, false}, // East Asian punctuation
                                        {0x3030, 0x3098, false}, // kana
                                        {0x309B, 0x4DBF, false}, // kana, ideographs
                                        {0x4E00, 0xA63F, false}, // ideographs
                                        {0xAC00, 0xD7A3, false}, // Hangul syllables
                                        {0xFE00, 0xFE0F, false}, // variation selectors
                                        {0xFF01, 0xFFE6, true}, // full and half width
                                        {0x1F000, 0x1FAFF, false}}; // pictographs

const StableRange *stableRange(char32_t c)
{
    const auto endsBefore = [](const StableRange &range, char32_t wanted) { return range.last < wanted; };
    const auto *found = std::lower_bound(std::begin(stableRanges), std::end(stableRanges), c, endsBefore);
    return found != std::end(stableRanges) && found->first <= c ? found : nullptr;
}

/// Folding of the code points that make up nearly all text with case.
constexpr char32_t cachedFolds = 0x600;
const std::array<char16_t, cachedFolds> &foldCache()
{
    static const auto cache = [] {
        std::array<char16_t, cachedFolds> folds;
        for (char32_t c = 0; c < cachedFolds; ++c)
            folds[c] = char16_t(QChar::toCaseFolded(c));
        return folds;
    }();
    return cache;
}

/// Reads one well-formed code point at `in`, which advances; anything else answers an unstable one.
char32_t readCodePoint(const char *&in, const char *end)
{
    constexpr char32_t malformed = 0xFFFD;
    const auto byte = [&](int i) { return char32_t(quint8(in[i])); };
    const auto continues = [&](int i) { return (byte(i) & 0xC0) == 0x80; };
    const char32_t lead = byte(0);
    char32_t c = malformed;
    int length = 1;
    if (lead < 0x80) {
        c = lead;
    } else if (lead >= 0xC2 && lead < 0xE0 && end - in >= 2 && continues(1)) {
        c = (lead & 0x1F) << 6 | (byte(1) & 0x3F);
        length = 2;
    } else if (lead >= 0xE0 && lead < 0xF0 && end - in >= 3 && continues(1) && continues(2)) {
        c = (lead & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
        c = c < 0x800 ? malformed : c;
        length = 3;
    } else if (lead >= 0xF0 && lead < 0xF5 && end - in >= 4 && continues(1) && continues(2) && continues(3)) {
        c = (lead & 0x07) << 18 | (byte(1) & 0x3F) << 12 | (byte(2) & 0x3F) << 6 | (byte(3) & 0x3F);
        c = c < 0x10000 ? malformed : c;
        length = 4;
    }
    in += length;
    return c;
}

/// Folds text that consists of stable code points only.
/// @return the end of what was written, or nullptr when other ones occur.
char *foldStable(const char *in, const char *end, char *out)
{
    const auto &cache = foldCache();
    const StableRange *range = stableRanges;
    while (in < end) {
        const char *start = in;
        const char32_t c = readCodePoint(in, end);
        if (c < range->first || c > range->last) {
            range = stableRange(c);
            if (!range)
                return nullptr;
        }
        if (!range->hasCase)
            out = std::copy(start, in, out);
        else
            out = writeCodePoint(out, c < cachedFolds ? char32_t(cache[c]) : QChar::toCaseFolded(c));
    }
    return out;
}

/// The definition, for all other text.
void appendFoldedGenerally(QByteArray &arena, const QString &text)
{
    const QString composed = text.normalized(QString::NormalizationForm_C);
    const qsizetype start = arena.size();
    arena.resize(start + composed.size() * 3);
    char *out = arena.data() + start;
    for (qsizetype i = 0; i < composed.size(); ++i) {
        char32_t c = composed[i].unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < composed.size() && composed[i + 1].isLowSurrogate()) {
            ++i;
            c = QChar::surrogateToUcs4(char16_t(c), composed[i].unicode());
        }
        out = writeCodePoint(out, QChar::toCaseFolded(c));
    }
    arena.truncate(out - arena.constData());
}

} // namespace

void TextFolding::appendFolded(QByteArray &arena, QByteArrayView utf8)
{
    const qsizetype start = arena.size();
    arena.resize(start + utf8.size());
    if (foldAscii(utf8.data(), utf8.size(), arena.data() + start))
        return;
    arena.resize(start + utf8.size() * 2); // no folding more than doubles a code point's bytes
    if (const char *end = foldStable(utf8.begin(), utf8.end(), arena.data() + start)) {
        arena.truncate(end - arena.constData());
        return;
    }
    arena.truncate(start);
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    appendFoldedGenerally(arena, decoder.decode(utf8));
}

QByteArray TextFolding::folded(QByteArrayView utf8)
{
    QByteArray text;
    appendFolded(text, utf8);
    return text;
}

QByteArray TextFolding::folded(QStringView text)
{
    QByteArray result;
    appendFoldedGenerally(result, text.toString());
    return result;
}

bool TextFolding::equalsFolded(QByteArrayView utf8, QByteArrayView foldedText)
{
    return folded(utf8) == foldedText;
}

} // namespace platform
