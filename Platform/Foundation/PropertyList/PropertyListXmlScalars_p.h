#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It belongs to the XML property-list reader, and may change
//  from version to version.
//

#include <QByteArrayView>

#include <bit>
#include <cstring>

/// Checks of scalars that only the reader needs: base64, and the commonest forms of integers and dates so
/// quickly that checking costs next to nothing. Whatever the quick checks refuse may still be valid;
/// `PropertyListScalars` knows.
namespace platform::PropertyListXmlScalars {

/// Base64 with white space anywhere. The "=" at the end may be missing, but not be wrong.
bool isBase64(QByteArrayView text);

namespace Detail {
inline quint64 loadEight(const char *bytes)
{
    quint64 eight;
    std::memcpy(&eight, bytes, 8);
    return eight;
}

/// Whether all bytes are at most as far above those of a pattern as the limits (up to 0x7F) say.
constexpr bool areWithin(quint64 eight, quint64 pattern, quint64 limits)
{
    constexpr quint64 HighBits = 0x8080808080808080;
    const quint64 difference = eight ^ pattern; // of digits and '0': the number; of equal bytes: 0
    return ((difference | (difference + (0x7F7F7F7F7F7F7F7F - limits))) & HighBits) == 0;
}

/// Eight bytes of a string literal and how far above them the text may be: nine where a '0' stands.
struct Pattern {
    quint64 bytes = 0;
    quint64 limits = 0;
    explicit constexpr Pattern(const char (&text)[9])
    {
        for (int i = 0; i < 8; ++i) {
            const int shift = 8 * (std::endian::native == std::endian::little ? i : 7 - i);
            bytes |= quint64(quint8(text[i])) << shift;
            limits |= quint64(text[i] == '0' ? 9 : 0) << shift;
        }
    }
};

inline bool fits(const char *text, const Pattern &pattern)
{
    return areWithin(loadEight(text), pattern.bytes, pattern.limits);
}
} // namespace Detail

/// One to sixteen decimal digits. The eight bytes before them must be readable.
inline bool isShortNumber(const char *text, qsizetype length)
{
    using namespace Detail;
    constexpr Pattern Digits("00000000");
    if (length > 8)
        return length <= 16 && fits(text, Digits) && fits(text + length - 8, Digits);
    if (length < 1 || std::endian::native != std::endian::little)
        return false;
    const int surplus = int(8 - length) * 8; // bits of what stands before the digits
    const quint64 eight = loadEight(text + length - 8) >> surplus << surplus;
    return areWithin(eight ^ (surplus == 0 ? 0 : Digits.bytes & ((quint64(1) << surplus) - 1)), Digits.bytes,
                     Digits.limits);
}

/// "2024-01-31T20:43:14Z".
inline bool isUsualDate(const char *text, qsizetype length)
{
    using namespace Detail;
    constexpr Pattern Front("0000-00-"), Middle("00T00:00"), Back("00:00:00");
    return length == 20 && fits(text, Front) && fits(text + 8, Middle) && fits(text + 11, Back) && text[19] == 'Z';
}

} // namespace platform::PropertyListXmlScalars
