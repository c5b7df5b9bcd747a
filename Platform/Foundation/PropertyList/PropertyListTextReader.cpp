#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"
#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListTapeBuilder_p.h"
#include "Platform/Foundation/PropertyList/Utf8Validator_p.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <optional>
#include <vector>

namespace platform {

using namespace PropertyListTape;

namespace {

// What octal escapes from 0200 on stand for: the upper half of the NeXT encoding, from the table
// https://www.unicode.org/Public/MAPPINGS/VENDORS/NEXT/NEXTSTEP.TXT.
constexpr char16_t NextEncoding[128] = {
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7, 0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC,
    0x00CD, 0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9, 0x00DA, 0x00DB,
    0x00DC, 0x00DD, 0x00DE, 0x00B5, 0x00D7, 0x00F7, 0x00A9, 0x00A1, 0x00A2, 0x00A3, 0x2044, 0x00A5, 0x0192,
    0x00A7, 0x00A4, 0x2019, 0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x00AE, 0x2013, 0x2020, 0x2021,
    0x00B7, 0x00A6, 0x00B6, 0x2022, 0x201A, 0x201E, 0x201D, 0x00BB, 0x2026, 0x2030, 0x00AC, 0x00BF, 0x00B9,
    0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD,
    0x02DB, 0x02C7, 0x2014, 0x00B1, 0x00BC, 0x00BD, 0x00BE, 0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5,
    0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00C6, 0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1,
    0x0141, 0x00D8, 0x0152, 0x00BA, 0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB,
    0x0131, 0x00FC, 0x00FD, 0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF, 0xFFFD, 0xFFFD};

constexpr bool isSpace(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

// What a string may consist of without quotes.
constexpr bool isWordCharacter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
        || (character >= '0' && character <= '9') || character == '_' || character == '$' || character == '/'
        || character == ':' || character == '.' || character == '-' || character == '+' || quint8(character) >= 0x80;
}

constexpr int hexDigit(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    const char lower = char(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

constexpr bool isOctalDigit(char character)
{
    return character >= '0' && character <= '7';
}

class TextReader
{
public:
    explicit TextReader(QByteArrayView text)
        : m_text(text)
        , m_builder(text)
    { }

    Result<PropertyListValue> read()
    {
        const qsizetype validLength = validUtf8Length(m_text);
        if (validLength != m_text.size())
            fail(validLength, QStringLiteral("text is not UTF-8"));
        else if (readRoot())
            readContainers();
        if (!m_error && skipSpace() && m_at != m_text.size())
            fail(m_at, somethingFollows());
        if (m_error)
            return *m_error;
        return m_builder.finish();
    }

private:
    using Piece = PropertyListTapeBuilder::Piece;

    static QString somethingFollows() { return QStringLiteral("something follows the list"); }

    bool fail(qsizetype offset, const QString &reason)
    {
        if (!m_error)
            m_error = Error{ErrorCode::Malformed, reason, offset, {}};
        return false;
    }

    bool takeBuilderError()
    {
        if (m_builder.error() && !m_error) {
            m_error = m_builder.error();
            m_error->byteOffset = m_at;
        }
        return !m_error;
    }

    bool atEnd() const { return m_at >= m_text.size(); }
    bool isNext(char character) const { return !atEnd() && m_text[m_at] == character; }
    bool isNext(QByteArrayView text) const { return m_text.sliced(m_at).startsWith(text); }
    bool take(char character)
    {
        const bool found = isNext(character);
        m_at += found;
        return found;
    }

    // Passes white space and comments.
    bool skipSpace()
    {
        for (;;) {
            while (!atEnd() && isSpace(m_text[m_at]))
                ++m_at;
            if (isNext("//")) {
                const auto *end = std::find_if(m_text.begin() + m_at, m_text.end(),
                                               [](char character) { return character == '\n' || character == '\r'; });
                m_at = end - m_text.begin();
            } else if (isNext("/*")) {
                const qsizetype end = m_text.indexOf("*/", m_at + 2);
                if (end < 0)
                    return fail(m_at, QStringLiteral("comment without an end"));
                m_at = end + 2;
            } else {
                return true;
            }
        }
    }

    // A string at the root is the whole list, or the first key of a list of strings, which has no braces.
    bool readRoot()
    {
        if (takeLoneWords())
            return takeBuilderError();
        if (!skipSpace())
            return false;
        if (atEnd())
            return fail(m_at, QStringLiteral("no list in the text"));
        if (isNext('{') || isNext('(') || isNext('<'))
            return readValue();
        if (!canBeginString())
            return fail(m_at, QString::fromLatin1(NoPropertyList));
        const bool isWord = isWordCharacter(m_text[m_at]);
        const qsizetype start = m_at;
        const auto string = readString(String);
        if (!string || !skipSpace())
            return false;
        if (atEnd()) {
            m_builder.value(*string);
            return takeBuilderError();
        }
        // Words behind words are a text of another kind.
        if (!isNext('=') && !isNext(';'))
            return fail(m_at, isWord ? QString::fromLatin1(NoPropertyList) : somethingFollows());
        m_at = start;
        m_rootHasBraces = false;
        m_open.push_back(Dictionary);
        m_builder.beginDictionary();
        return true;
    }

    // A single line of words without quotes is one string, with the spaces between them: "2015-01-02 13:10:00
    // +0200".
    bool takeLoneWords()
    {
        const auto isSpaceCharacter = [](char character) { return isSpace(character); };
        const auto *first = std::find_if_not(m_text.begin(), m_text.end(), isSpaceCharacter);
        const auto *last = m_text.end();
        while (last != first && isSpace(last[-1]))
            --last;
        const auto isWordOrBlank = [](char character) { return isWordCharacter(character) || character == ' '; };
        if (first == last || !std::all_of(first, last, isWordOrBlank) || QByteArrayView(first, last).startsWith("//"))
            return false;
        m_builder.value(m_builder.sourcePiece(String, first - m_text.begin(), last - first));
        m_at = m_text.size();
        return true;
    }

    void readContainers()
    {
        while (!m_error && !m_open.empty() && skipSpace()) {
            const bool inDictionary = m_open.back() == Dictionary;
            if (takeClosing()) {
                m_open.pop_back();
                m_builder.end();
                readSeparator();
            } else if (atEnd()) {
                fail(m_at,
                     inDictionary ? QStringLiteral("dictionary without an end")
                                  : QStringLiteral("array without an end"));
            } else if (!inDictionary || readKey()) {
                readValue();
            }
        }
    }

    bool endsWithText() const { return m_open.size() == 1 && !m_rootHasBraces; }

    bool isClosingNext() const { return endsWithText() ? atEnd() : isNext(m_open.back() == Dictionary ? '}' : ')'); }

    bool takeClosing()
    {
        const bool closes = isClosingNext();
        if (closes && !endsWithText())
            ++m_at;
        return closes;
    }

    // Behind a value; the last one of a container may go without.
    bool readSeparator()
    {
        if (!takeBuilderError() || m_open.empty())
            return false;
        if (!skipSpace())
            return false;
        const bool inDictionary = m_open.back() == Dictionary;
        if (take(inDictionary ? ';' : ',') || isClosingNext())
            return true;
        return fail(m_at,
                    inDictionary ? QStringLiteral("expected ; or } behind a value")
                                 : QStringLiteral("expected , or ) behind an element"));
    }

    // Whether a value follows: "key;" alone stands for a string that is its own key.
    bool readKey()
    {
        const qsizetype start = m_at;
        auto string = readString(Key);
        if (!string)
            return false;
        m_builder.key(*string);
        if (!takeBuilderError() || !skipSpace())
            return false;
        if (isNext(';')) {
            m_at = start;
            return true;
        }
        if (!take('='))
            return fail(m_at, QStringLiteral("expected = behind a key"));
        return skipSpace();
    }

    bool readValue()
    {
        if (take('{')) {
            m_open.push_back(Dictionary);
            m_builder.beginDictionary();
            return takeBuilderError();
        }
        if (take('(')) {
            m_open.push_back(Array);
            m_builder.beginArray();
            return takeBuilderError();
        }
        if (isNext('<')) {
            if (!readAngles())
                return false;
        } else if (const auto string = readString(String)) {
            m_builder.value(*string);
        } else {
            return false;
        }
        return readSeparator() || (m_open.empty() && !m_error);
    }

    // Strings

    bool canBeginString() const
    {
        return !atEnd() && (isWordCharacter(m_text[m_at]) || m_text[m_at] == '"' || m_text[m_at] == '\'');
    }

    std::optional<Piece> readString(Kind kind)
    {
        if (!canBeginString()) {
            fail(m_at, QStringLiteral("expected a value"));
            return std::nullopt;
        }
        if (!isWordCharacter(m_text[m_at]))
            return readQuoted(kind);
        const qsizetype start = m_at;
        while (!atEnd() && isWordCharacter(m_text[m_at]))
            ++m_at;
        return m_builder.sourcePiece(kind, start, m_at - start);
    }

    std::optional<Piece> readQuoted(Kind kind)
    {
        const qsizetype opening = m_at;
        const char quote = m_text[m_at++];
        QByteArray rewritten;
        qsizetype start = m_at;
        bool hasEscapes = false;
        while (!atEnd() && m_text[m_at] != quote) {
            if (m_text[m_at] != '\\') {
                ++m_at;
                continue;
            }
            hasEscapes = true;
            rewritten.append(m_text.data() + start, m_at - start);
            if (!readEscape(rewritten))
                return std::nullopt;
            start = m_at;
        }
        const qsizetype end = m_at;
        if (!take(quote)) {
            fail(opening, QStringLiteral("string without an end"));
            return std::nullopt;
        }
        if (!hasEscapes)
            return m_builder.sourcePiece(kind, start, end - start);
        rewritten.append(m_text.data() + start, end - start);
        return m_builder.appendPiece(kind, rewritten);
    }

    bool readEscape(QByteArray &string)
    {
        static constexpr char Letters[] = "abfnrtv\"'\\\n";
        static constexpr char Characters[] = "\a\b\f\n\r\t\v\"'\\\n";
        const qsizetype start = m_at++;
        const char letter = atEnd() ? '\0' : m_text[m_at];
        if (isOctalDigit(letter)) {
            unsigned number = 0;
            for (int digits = 0; digits < 3 && !atEnd() && isOctalDigit(m_text[m_at]); ++digits)
                number = number * 8 + unsigned(m_text[m_at++] - '0');
            number &= 0xFF;
            PropertyListScalars::appendUtf8(string, number < 0x80 ? number : NextEncoding[number - 0x80]);
            return true;
        }
        if (letter == 'U' || letter == 'u') {
            m_at = start;
            return readUnicodeEscape(string);
        }
        const char *found = letter ? std::strchr(Letters, letter) : nullptr;
        if (!found)
            return fail(start, QStringLiteral("unknown escape in a string"));
        string += Characters[found - Letters];
        ++m_at;
        return true;
    }

    // "\U" and one to four hexadecimal digits.
    std::optional<char16_t> takeUnicodeEscape()
    {
        if (!isNext("\\U") && !isNext("\\u"))
            return std::nullopt;
        qsizetype at = m_at + 2;
        unsigned number = 0;
        for (; at < m_text.size() && at < m_at + 6 && hexDigit(m_text[at]) >= 0; ++at)
            number = number * 16 + unsigned(hexDigit(m_text[at]));
        if (at == m_at + 2)
            return std::nullopt;
        m_at = at;
        return char16_t(number);
    }

    // Two escapes may be the halves of a surrogate pair. A half that stands alone becomes U+FFFD.
    bool readUnicodeEscape(QByteArray &string)
    {
        const auto unit = takeUnicodeEscape();
        if (!unit)
            return fail(m_at, QStringLiteral("unicode escape without digits"));
        if (QChar::isHighSurrogate(*unit)) {
            const qsizetype behindHigh = m_at;
            const auto low = takeUnicodeEscape();
            if (low && QChar::isLowSurrogate(*low)) {
                PropertyListScalars::appendUtf8(string, QChar::surrogateToUcs4(*unit, *low));
                return true;
            }
            m_at = behindHigh;
        }
        PropertyListScalars::appendUtf8(string, *unit);
        return true;
    }

    // Data and typed values

    bool readAngles()
    {
        const qsizetype opening = m_at++;
        const qsizetype closing = m_text.indexOf('>', m_at);
        if (closing < 0)
            return fail(opening, QStringLiteral("data without an end"));
        const QByteArrayView content = m_text.sliced(m_at, closing - m_at);
        if (content.startsWith("*"))
            return readTyped(content.sliced(1), closing);
        if (content.startsWith("["))
            return readBase64(content, closing);
        QByteArray data;
        int high = -1;
        for (; m_at < closing; ++m_at) {
            if (isSpace(m_text[m_at]))
                continue;
            const int digit = hexDigit(m_text[m_at]);
            if (digit < 0)
                return fail(m_at, QStringLiteral("data holds something else than hexadecimal digits"));
            if (high >= 0)
                data += char(high << 4 | digit);
            high = high >= 0 ? -1 : digit;
        }
        if (high >= 0)
            return fail(opening, QStringLiteral("data of half a byte"));
        m_builder.value(m_builder.appendPiece(RawData, data));
        m_at = closing + 1;
        return true;
    }

    // "<[YWJj]>"
    bool readBase64(QByteArrayView content, qsizetype closing)
    {
        QByteArray digits;
        for (const char character : content.sliced(1)) {
            if (!isSpace(character))
                digits += character;
        }
        const bool hasBracket = digits.endsWith(']');
        if (hasBracket)
            digits.chop(1);
        const auto data = QByteArray::fromBase64Encoding(digits, QByteArray::AbortOnBase64DecodingErrors);
        if (!hasBracket || !data)
            return fail(m_at, QStringLiteral("data is not Base64"));
        m_builder.value(m_builder.appendPiece(RawData, data.decoded));
        m_at = closing + 1;
        return true;
    }

    // "<*I5>", "<*R1.5>", "<*BY>", "<*D2003-05-12 12:00:00 +0200>"
    bool readTyped(QByteArrayView content, qsizetype closing)
    {
        const char type = content.isEmpty() ? '\0' : content.front();
        const qsizetype length = std::max<qsizetype>(content.size() - 1, 0);
        const qsizetype start = closing - length;
        const QByteArrayView rest = m_builder.textOf(m_builder.sourcePiece(String, start, length));
        if (type == 'I' && PropertyListScalars::parseInteger(rest)) {
            m_builder.value(m_builder.sourcePiece(Integer, start, rest.size()));
        } else if (type == 'R' && PropertyListScalars::parseReal(rest)) {
            m_builder.value(m_builder.sourcePiece(Real, start, rest.size()));
        } else if (type == 'B' && (rest == "Y" || rest == "N")) {
            m_builder.boolean(rest == "Y");
        } else if (const auto date = parseDateWithZone(rest); type == 'D' && date) {
            m_builder.date(double(*date));
        } else {
            return fail(m_at, QStringLiteral("typed value of unknown type or content"));
        }
        m_at = closing + 1;
        return true;
    }

    static std::optional<qint64> parseDateWithZone(QByteArrayView text)
    {
        constexpr qsizetype TimeLength = 19; // "2003-05-12 12:00:00"
        constexpr qsizetype ZoneLength = 6; // " +0200"
        if (text.size() != TimeLength + ZoneLength)
            return std::nullopt;
        QByteArray time = text.first(TimeLength).toByteArray() + 'Z';
        time[10] = time[10] == ' ' ? 'T' : '\0';
        const auto seconds = PropertyListScalars::parseDate(time);
        const QByteArrayView zone = text.sliced(TimeLength);
        const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
        if (!seconds || zone[0] != ' ' || (zone[1] != '+' && zone[1] != '-')
            || !std::all_of(zone.begin() + 2, zone.end(), isDigit))
            return std::nullopt;
        const int hours = (zone[2] - '0') * 10 + zone[3] - '0';
        const int minutes = (zone[4] - '0') * 10 + zone[5] - '0';
        const qint64 east = hours * 3600 + minutes * 60;
        return *seconds + (zone[1] == '+' ? -east : east);
    }

    QByteArrayView m_text;
    qsizetype m_at = 0;
    PropertyListTapeBuilder m_builder;
    std::vector<Kind> m_open;
    bool m_rootHasBraces = true;
    std::optional<Error> m_error;
};

// Adds a value of a JSON text; whether a property list can hold it. The depth is bounded by the builder's
// limit.
bool addJson(PropertyListTapeBuilder &builder, const QJsonValue &value)
{
    const auto addText = [&builder](Kind kind, const QString &text) {
        return builder.appendPiece(kind, text.toUtf8());
    };
    switch (value.type()) {
    case QJsonValue::Object: {
        builder.beginDictionary();
        const QJsonObject object = value.toObject();
        for (auto entry = object.begin(); entry != object.end() && !builder.error(); ++entry) {
            builder.key(addText(Key, entry.key()));
            if (!addJson(builder, entry.value()))
                return false;
        }
        builder.end();
        return !builder.error();
    }
    case QJsonValue::Array:
        builder.beginArray();
        for (const QJsonValue element : value.toArray()) {
            if (!addJson(builder, element))
                return false;
        }
        builder.end();
        return !builder.error();
    case QJsonValue::String:
        builder.value(addText(String, value.toString()));
        return true;
    case QJsonValue::Bool:
        builder.boolean(value.toBool());
        return true;
    case QJsonValue::Double: {
        const QVariant number = value.toVariant();
        const qint64 integer = number.toLongLong();
        if (number.typeId() == QMetaType::LongLong)
            builder.integer(integer < 0 ? 0 - quint64(integer) : quint64(integer), integer < 0);
        else
            builder.real(number.toDouble());
        return true;
    }
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        break;
    }
    return false;
}

// The JSON reader of QtCore 6.4 ends the program where it runs out of memory at some places, so that it has to be
// known before that there is enough: it takes up to 65 bytes for each byte of text such as "[[[[1]]]]".
void requireMemoryForJson(qsizetype size)
{
    constexpr qsizetype BytesPerByte = 80;
    const QByteArray memory(BytesPerByte * size, Qt::Uninitialized); // throws
}

std::optional<PropertyListValue> parseJson(QByteArrayView text)
{
    requireMemoryForJson(text.size());
    const auto document = QJsonDocument::fromJson(QByteArray::fromRawData(text.data(), text.size()));
    if (document.isNull())
        return std::nullopt;
    PropertyListTapeBuilder builder{QByteArrayView()};
    const QJsonValue root = document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
    if (!addJson(builder, root))
        return std::nullopt;
    const auto value = builder.finish();
    return value ? std::optional(value.value()) : std::nullopt;
}

} // namespace

std::optional<Error> textPropertyListHeadError(QByteArrayView head)
{
    constexpr qsizetype MaximumCharacterSize = 4;
    const auto *first = std::find_if_not(head.begin(), head.end(), isSpace);
    const QByteArrayView content = head.sliced(first - head.begin());
    const bool isText = validUtf8Length(content.first(qMin<qsizetype>(content.size(), MaximumCharacterSize))) > 0;
    // An array of JSON is the only one with brackets.
    if (content.isEmpty() || (isText && (isWordCharacter(*first) || QByteArrayView("{([<\"'/").contains(*first))))
        return std::nullopt;
    return Error{ErrorCode::Malformed, QString::fromLatin1(NoPropertyList), first - head.begin(), {}};
}

Result<PropertyListValue> parseTextPropertyList(QByteArrayView utf8)
{
    if (auto error = textPropertyListHeadError(utf8))
        return *error;
    auto result = TextReader(utf8).read();
    const QByteArrayView content = utf8.trimmed();
    if (!result && (content.startsWith('{') || content.startsWith('['))) {
        if (auto value = parseJson(utf8))
            return *value;
    }
    return result;
}

} // namespace platform
