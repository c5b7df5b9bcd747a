#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlParser_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlText_p.h"

#include <array>
#include <bit>
#include <cstring>
#include <string_view>

namespace platform {

using namespace PropertyListTape;
using PropertyListScalars::isSpace;
using PropertyListXmlScalars::Detail::loadEight;

namespace {

/// Up to sixteen bytes of a text to compare with, as two words whose surplus bytes are masked out.
struct Words {
    std::array<quint64, 2> bytes{};
    std::array<quint64, 2> mask{};

    constexpr Words() = default;
    explicit constexpr Words(std::string_view text)
    {
        std::array<char, 16> texts{}, masks{};
        for (size_t i = 0; i < text.size(); ++i) {
            texts[i] = text[i];
            masks[i] = char(0xFF);
        }
        bytes = std::bit_cast<std::array<quint64, 2>>(texts);
        mask = std::bit_cast<std::array<quint64, 2>>(masks);
    }
    /// 0 where the text begins with these bytes. An empty one fits everywhere.
    quint64 difference(const char *text) const
    {
        return ((loadEight(text) ^ bytes[0]) & mask[0]) | ((loadEight(text + 8) ^ bytes[1]) & mask[1]);
    }
    /// The same for up to eight bytes.
    bool fitsWord(quint64 eight) const { return ((eight ^ bytes[0]) & mask[0]) == 0; }
};

enum class Filling : quint8 { Text, None, Container };

/// How the element of a type looks.
struct alignas(64) Shape {
    Words opening;
    Words closing;
    quint8 openingLength = 0;
    quint8 closingLength = 0;
    Kind kind = String;
    Filling filling = Filling::Text;
};

/// The shapes of all types, found by the first four bytes of their names.
class Shapes
{
public:
    Shapes()
    {
        for (Shape &empty : m_shapes) // fits no tag
            empty.opening = Words(std::string_view("\0\0\0\0\0\0\0\0", 8));
        add("dict", Dictionary, Filling::Container);
        add("array", Array, Filling::Container);
        add("true", True, Filling::None);
        add("false", False, Filling::None);
        add("string", String, Filling::Text);
        add("integer", Integer, Filling::Text);
        add("real", Real, Filling::Text);
        add("date", Date, Filling::Text);
        add("data", Data, Filling::Text);
    }

    /// The only shape that the tag at the place can have.
    const Shape &at(const char *tag) const { return m_shapes[slotOf(tag + 1)]; }

private:
    // A multiplier for which the nine names have places of their own, found by trying.
    static size_t slotOf(const char *name)
    {
        quint8 four[4];
        std::memcpy(four, name, 4);
        const quint32 number = four[0] | four[1] << 8 | four[2] << 16 | quint32(four[3]) << 24;
        return (number * 0xC386BBC5u) >> 27;
    }

    void add(const QByteArray &name, Kind kind, Filling filling)
    {
        const QByteArray opening = '<' + name + (filling == Filling::None ? "/>" : ">");
        const QByteArray closing = filling == Filling::Text ? QByteArray("</" + name + '>') : QByteArray();
        Shape &shape = m_shapes[slotOf(name.constData())];
        Q_ASSERT(shape.openingLength == 0);
        shape = {Words(opening.toStdString()),
                 Words(closing.toStdString()),
                 quint8(opening.size()),
                 quint8(closing.size()),
                 kind,
                 filling};
    }

    std::array<Shape, 32> m_shapes;
};

const Shapes &shapes()
{
    static const Shapes all;
    return all;
}

constexpr Words KeyOpening("<key>");
constexpr Words KeyClosing("</key>");
constexpr Words DictionaryClosing("</dict>");
constexpr Words ArrayClosing("</array>");

} // namespace

/// The lane's position: copies of the parser's members that stay in registers while it runs.
struct PropertyListXmlParser::FastLane {
    PropertyListXmlParser &parser;
    const Shapes &shapes;
    const char *const text;
    PropertyListRow *const rows;
    const quint32 *const end; // of the places that are known
    const quint32 *place; // of the next markup
    const char *cursor;
    PropertyListRow *row;
    // The white space that was seen last between two rows: mostly the same as between the next two.
    qsizetype gapLength = 0;
    quint64 gapBytes = 0;
    quint64 gapMask = 0;

    // Each answers whether the row is of the form that it knows; where it is not, nothing has happened.
    bool parseRow();
    bool parseEntry(const char *markup, quint64 word);
    bool parseValue(const quint32 *valuePlace, const char *value, quint32 key);
    bool parseText(const Shape &shape, const quint32 *closingPlace, const char *first, quint32 key);
    bool parseReferences(const Shape &shape, const quint32 *closingPlace, const char *first, quint32 key);
    bool isValid(Kind kind, const char *first, qsizetype length) const;
    bool passGap(const char *to);
    bool passKey(const char *key, qsizetype length, quint32 &number);
    bool open(Kind kind, quint32 key);
    void close();
    void addText(Kind kind, quint32 key, const char *first, qsizetype length);
};

// Runs as far as the rows are of the usual forms.
// @return false on an error.
bool PropertyListXmlParser::runFastLane()
{
    // Markup ahead of a place within a row; strings with more references than that are left to the general
    // path.
    constexpr qsizetype Ahead = 8;
    if (m_hasPendingKey || m_indexCount - m_next <= Ahead)
        return true;
    const quint32 *const end = m_index.data() + m_indexCount;
    const quint32 *const last = end - Ahead;
    FastLane lane{*this, shapes(), m_text, m_rows.begin(), end, m_index.data() + m_next, m_cursor, m_rows.end()};
    while (lane.place < last && lane.parseRow()) { }
    m_rows.setEnd(lane.row);
    m_cursor = lane.cursor;
    m_next = lane.place - m_index.data();
    return !error();
}

// One entry, element or closing tag.
// @return false where it is of another form; nothing has happened then.
Q_ALWAYS_INLINE bool PropertyListXmlParser::FastLane::parseRow()
{
    const char *const markup = text + *place;
    if (!passGap(markup))
        return false;
    const quint64 word = loadEight(markup);
    switch (parser.m_frames[size_t(parser.m_depth)].kind) {
    case ContainerKind::Dictionary:
        return parseEntry(markup, word);
    case ContainerKind::Array:
        if (!ArrayClosing.fitsWord(word))
            return parseValue(place, markup, NoKey);
        cursor = markup + 8;
        ++place;
        close();
        return true;
    case ContainerKind::None:
        break;
    }
    return false;
}

Q_ALWAYS_INLINE bool PropertyListXmlParser::FastLane::passGap(const char *to)
{
    const qsizetype length = to - cursor;
    if (Q_LIKELY(length == gapLength && ((loadEight(cursor) ^ gapBytes) & gapMask) == 0))
        return true;
    for (const char *character = cursor; character < to; ++character) {
        if (!isSpace(*character))
            return false;
    }
    if (length <= 8) {
        constexpr bool IsLittleEndian = std::endian::native == std::endian::little;
        const int surplus = length == 0 ? 0 : int(8 - length) * 8;
        gapLength = length;
        gapMask = length == 0 ? 0 : IsLittleEndian ? ~quint64(0) >> surplus : ~quint64(0) << surplus;
        gapBytes = loadEight(cursor) & gapMask;
    }
    return true;
}

// `<key>…</key>` and its value, or the dictionary's closing tag.
Q_ALWAYS_INLINE bool PropertyListXmlParser::FastLane::parseEntry(const char *markup, quint64 word)
{
    if (Q_UNLIKELY(!KeyOpening.fitsWord(word))) {
        if (!DictionaryClosing.fitsWord(word))
            return false;
        cursor = markup + 7;
        ++place;
        close();
        return true;
    }
    const char *const key = markup + 5;
    const char *const keyEnd = text + place[1];
    const char *const value = text + place[2];
    if (!KeyClosing.fitsWord(loadEight(keyEnd)))
        return false;
    for (const char *character = keyEnd + 6; character < value; ++character) {
        if (!isSpace(*character))
            return false;
    }
    PropertyListRow *const before = row;
    quint32 number = NoKey;
    if (passKey(key, keyEnd - key, number) && parseValue(place + 2, value, number))
        return true;
    row = before; // takes a key row back
    return false;
}

// The number of the key. A key that does not get one becomes a row.
Q_ALWAYS_INLINE bool PropertyListXmlParser::FastLane::passKey(const char *key, qsizetype length, quint32 &number)
{
    if (*key >= '0' && *key <= '9') {
        if (const auto decimal = PropertyListScalars::parseCanonicalNumber(QByteArrayView(key, length))) {
            *row++ = makeRow(NumberKey, NoKey, 0, *decimal);
            number = InlineKey;
            return true;
        }
    }
    number = parser.m_keyCache.find(key, length);
    if (Q_LIKELY(number != NoKey))
        return true;
    number = parser.numberOfNewKey(key, length);
    if (number == InlineKey)
        *row++ = makeRow(Key, NoKey, quint64(length), quint64(key - text));
    return number != NoKey;
}

Q_ALWAYS_INLINE bool PropertyListXmlParser::FastLane::parseValue(const quint32 *valuePlace, const char *value,
                                                                 quint32 key)
{
    const Shape &shape = shapes.at(value);
    if (Q_UNLIKELY(shape.opening.difference(value) != 0))
        return false;
    const char *const first = value + shape.openingLength;
    switch (shape.filling) {
    case Filling::Text:
        return parseText(shape, valuePlace + 1, first, key);
    case Filling::None:
        addText(shape.kind, key, first, 0);
        break;
    case Filling::Container:
        if (!open(shape.kind, key))
            return false;
        break;
    }
    cursor = first;
    place = valuePlace + 1;
    return true;
}

Q_ALWAYS_INLINE bool PropertyListXmlParser::FastLane::parseText(const Shape &shape, const quint32 *closingPlace,
                                                                const char *first, quint32 key)
{
    const char *const closing = text + *closingPlace;
    if (Q_UNLIKELY(shape.closing.difference(closing) != 0))
        return *closing == '&' && shape.kind == String && parseReferences(shape, closingPlace, first, key);
    const qsizetype length = closing - first;
    if (Q_UNLIKELY(length >= qsizetype(Saturated) || !isValid(shape.kind, first, length)))
        return false;
    addText(shape.kind, key, first, length);
    cursor = closing + shape.closingLength;
    place = closingPlace + 1;
    return true;
}

// A string with references.
Q_ALWAYS_INLINE bool PropertyListXmlParser::FastLane::parseReferences(const Shape &shape, const quint32 *closingPlace,
                                                                      const char *first, quint32 key)
{
    while (closingPlace < end && text[*closingPlace] == '&')
        ++closingPlace;
    const char *const closing = text + *closingPlace;
    if (closingPlace >= end || shape.closing.difference(closing) != 0 || closing - first >= qsizetype(Saturated))
        return false;
    const char *const last = parser.unescapeString(first, closing);
    if (!last)
        return false;
    addText(String, key, first, last - first);
    cursor = closing + shape.closingLength;
    place = closingPlace + 1;
    return true;
}

Q_ALWAYS_INLINE bool PropertyListXmlParser::FastLane::isValid(Kind kind, const char *first, qsizetype length) const
{
    using namespace PropertyListXmlScalars;
    switch (kind) {
    case String:
        return !parser.m_hasCarriageReturns || !std::memchr(first, '\r', size_t(length));
    case Integer:
        return isShortNumber(first, length);
    case Date:
        return isUsualDate(first, length);
    case Data:
        return isBase64(QByteArrayView(first, length));
    default:
        return false;
    }
}

Q_ALWAYS_INLINE void PropertyListXmlParser::FastLane::addText(Kind kind, quint32 key, const char *first,
                                                              qsizetype length)
{
    *row++ = makeRow(kind, key, quint64(length), quint64(first - text));
    ++parser.m_frames[size_t(parser.m_depth)].count;
}

Q_ALWAYS_INLINE bool PropertyListXmlParser::FastLane::open(Kind kind, quint32 key)
{
    if (Q_UNLIKELY(parser.m_depth == MaximumDepth))
        return false;
    ++parser.m_frames[size_t(parser.m_depth)].count;
    parser.m_frames[size_t(++parser.m_depth)] = {kind == Dictionary ? ContainerKind::Dictionary : ContainerKind::Array,
                                                 quint32(row - rows), 0};
    *row++ = makeRow(kind, key, 0, 0);
    return true;
}

Q_ALWAYS_INLINE void PropertyListXmlParser::FastLane::close()
{
    const Frame frame = parser.m_frames[size_t(parser.m_depth--)];
    const PropertyListRow container = rows[frame.row];
    rows[frame.row] = makeRow(kindOf(container), keyOf(container), frame.count, quint64(row - rows - frame.row));
    if (frame.count == 1 && parser.isUidEntry(frame.row + 1))
        row = parser.makeUid(frame.row);
}

// The number of a key that is not in the cache; `NoKey` if the key is for the general path.
Q_NEVER_INLINE quint32 PropertyListXmlParser::numberOfNewKey(const char *key, qsizetype length)
{
    if (length >= qsizetype(Saturated) || (m_hasCarriageReturns && std::memchr(key, '\r', size_t(length))))
        return NoKey;
    const quint32 number = numberOfKey(key, length);
    if (number != InlineKey)
        m_keyCache.enter(key, length, number, m_keys.name(number).constData());
    return number;
}

// @return where the string ends now, null on an error.
Q_NEVER_INLINE const char *PropertyListXmlParser::unescapeString(const char *first, const char *last)
{
    const auto unescaped = PropertyListXmlText::unescapeInPlace(m_text + offsetOf(first), last);
    if (unescaped.errorPlace)
        return fail(unescaped.reason, unescaped.errorPlace);
    return unescaped.last;
}

} // namespace platform
