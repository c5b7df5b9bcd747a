#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"
#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"

#include <QtEndian>

#include <algorithm>

namespace platform {

namespace {

qsizetype unitSize(TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Utf16LittleEndian:
    case TextEncoding::Utf16BigEndian:
        return 2;
    case TextEncoding::Utf32LittleEndian:
    case TextEncoding::Utf32BigEndian:
        return 4;
    default:
        return 1;
    }
}

char32_t unitAt(const char *bytes, TextEncoding encoding)
{
    // The characters that windows-1252 has where ISO 8859-1 has control characters. Where both have none, the
    // number stays.
    static constexpr char16_t Windows1252[32] = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                                                 0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
    switch (encoding) {
    case TextEncoding::Utf16LittleEndian:
        return qFromLittleEndian<quint16>(bytes);
    case TextEncoding::Utf16BigEndian:
        return qFromBigEndian<quint16>(bytes);
    case TextEncoding::Utf32LittleEndian:
        return qFromLittleEndian<quint32>(bytes);
    case TextEncoding::Utf32BigEndian:
        return qFromBigEndian<quint32>(bytes);
    case TextEncoding::Windows1252:
        if ((*bytes & 0xE0) == 0x80)
            return Windows1252[*bytes & 0x1F];
        break;
    default:
        break;
    }
    return static_cast<unsigned char>(*bytes);
}

Error malformed(const char *reason, qsizetype offset)
{
    return {ErrorCode::Malformed, QString::fromLatin1(reason), offset, {}};
}

bool isHighSurrogate(char32_t unit)
{
    return (unit & 0xFFFFFC00) == 0xD800;
}

bool isLowSurrogate(char32_t unit)
{
    return (unit & 0xFFFFFC00) == 0xDC00;
}

/// The value of a pseudo-attribute of the XML declaration, and where it stands.
struct DeclaredName {
    QByteArray name;
    qsizetype offset = 0;
};

DeclaredName declaredEncoding(QByteArrayView text)
{
    // An XML declaration is never long.
    const QByteArrayView head = text.first(qMin(text.size(), qsizetype(1024)));
    const auto first = std::find_if_not(head.begin(), head.end(), PropertyListScalars::isSpace);
    const qsizetype start = first - head.begin();
    const QByteArrayView declaration = head.sliced(start);
    const qsizetype end = declaration.indexOf("?>");
    const qsizetype keyword = declaration.indexOf("encoding");
    if (!declaration.startsWith("<?xml") || keyword < 0 || end < keyword)
        return {};
    qsizetype place = keyword + 8;
    while (place < end && (PropertyListScalars::isSpace(declaration[place]) || declaration[place] == '='))
        ++place;
    const char quote = declaration[place];
    if (quote != '"' && quote != '\'')
        return {};
    const qsizetype nameEnd = declaration.indexOf(QByteArrayView(&quote, 1), place + 1);
    if (nameEnd < 0 || nameEnd > end)
        return {};
    return {declaration.sliced(place + 1, nameEnd - place - 1).toByteArray().toLower(), start + place + 1};
}

} // namespace

TextForm detectTextForm(QByteArrayView bytes)
{
    struct Mark {
        QByteArrayView bytes;
        TextEncoding encoding;
    };
    // The mark of UTF-32 begins like that of UTF-16.
    static const Mark marks[] = {{QByteArrayView("\xFF\xFE\0\0", 4), TextEncoding::Utf32LittleEndian},
                                 {QByteArrayView("\0\0\xFE\xFF", 4), TextEncoding::Utf32BigEndian},
                                 {QByteArrayView("\xFF\xFE", 2), TextEncoding::Utf16LittleEndian},
                                 {QByteArrayView("\xFE\xFF", 2), TextEncoding::Utf16BigEndian},
                                 {QByteArrayView("\xEF\xBB\xBF", 3), TextEncoding::Utf8}};
    for (const Mark &mark : marks) {
        if (bytes.startsWith(mark.bytes))
            return {mark.encoding, mark.bytes.size()};
    }
    // Lists begin with ASCII, of which the wider forms leave bytes of zero.
    quint32 zeros = 0;
    for (qsizetype i = 0; i < 4; ++i)
        zeros = zeros << 1 | (i < bytes.size() && bytes[i] == '\0');
    switch (zeros) {
    case 0b0111:
        return {TextEncoding::Utf32LittleEndian, 0};
    case 0b1110:
        return {TextEncoding::Utf32BigEndian, 0};
    case 0b0101:
    case 0b0100:
        return {TextEncoding::Utf16LittleEndian, 0};
    case 0b1010:
    case 0b1000:
        return {TextEncoding::Utf16BigEndian, 0};
    default:
        return {};
    }
}

Result<TextForm> detectXmlForm(QByteArrayView bytes)
{
    const TextForm form = detectTextForm(bytes);
    if (form.encoding != TextEncoding::Utf8)
        return form;
    const DeclaredName declared = declaredEncoding(bytes.sliced(form.markLength));
    const auto isOneOf = [&declared](std::initializer_list<QByteArrayView> names) {
        return std::find(names.begin(), names.end(), QByteArrayView(declared.name)) != names.end();
    };
    if (declared.name.isEmpty() || isOneOf({"utf-8", "utf8", "us-ascii", "ascii"}))
        return form;
    if (form.markLength == 0 && isOneOf({"iso-8859-1", "iso8859-1", "iso_8859-1", "latin1", "latin-1"}))
        return TextForm{TextEncoding::Latin1, 0};
    if (form.markLength == 0 && isOneOf({"windows-1252", "cp1252"}))
        return TextForm{TextEncoding::Windows1252, 0};
    const QString reason = QStringLiteral("the text names an encoding that is not known here or not its own");
    return Error{ErrorCode::UnsupportedEncoding, reason, form.markLength + declared.offset, {}};
}

Result<QByteArray> transcodeToUtf8(QByteArrayView bytes, TextForm form)
{
    if (form.encoding == TextEncoding::Utf8)
        return bytes.sliced(form.markLength).toByteArray();
    const qsizetype size = unitSize(form.encoding);
    QByteArray utf8;
    utf8.reserve(bytes.size() / size + bytes.size() / 16);
    for (qsizetype offset = form.markLength; offset < bytes.size();) {
        if (bytes.size() - offset < size)
            return malformed("the last character is cut off", offset);
        char32_t character = unitAt(bytes.data() + offset, form.encoding);
        qsizetype length = size;
        if (size == 2 && isHighSurrogate(character) && bytes.size() - offset >= 4) {
            const char32_t low = unitAt(bytes.data() + offset + 2, form.encoding);
            if (isLowSurrogate(low)) {
                character = 0x10000 + ((character & 0x3FF) << 10 | (low & 0x3FF));
                length = 4;
            }
        }
        if (isHighSurrogate(character) || isLowSurrogate(character))
            return malformed("surrogate without its other half", offset);
        if (character > 0x10FFFF)
            return malformed("a number that is no character", offset);
        PropertyListScalars::appendUtf8(utf8, character);
        offset += length;
    }
    return utf8;
}

qint64 offsetBeforeTranscoding(QByteArrayView utf8, qint64 offset, TextForm form)
{
    if (form.encoding == TextEncoding::Utf8)
        return form.markLength + offset;
    const qsizetype size = unitSize(form.encoding);
    qint64 original = form.markLength;
    for (const char byte : utf8.first(qMin(qsizetype(offset), utf8.size()))) {
        const bool isFourBytes = static_cast<unsigned char>(byte) >= 0xF0;
        if ((byte & 0xC0) != 0x80)
            original += size == 2 && isFourBytes ? 4 : size;
    }
    return original;
}

} // namespace platform
