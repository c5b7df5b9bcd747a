#include "Platform/Foundation/PropertyList/PropertyListTapeBuilder_p.h"

#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"

#include <charconv>
#include <iterator>
#include <memory>

namespace platform {

using namespace PropertyListTape;

namespace {

const char Zeros[Padding] = {};

// A longer key is not interned: looking it up in the table costs time in its length, however often it is
// used.
constexpr qsizetype LongestInternedKey = 128;

} // namespace

PropertyListTapeBuilder::PropertyListTapeBuilder(QByteArrayView source, qsizetype maximumRows)
    : m_maximumRows(maximumRows)
{
    if (source.size() > MaximumTextSize) {
        fail(ErrorCode::TooLarge, QStringLiteral("larger than 4 GiB"));
        source = {};
    }
    m_sourceSize = source.size();
    m_text.reserve(2 * Padding + source.size() + source.size() / 4);
    m_text.append(Zeros, Padding);
    m_text.append(source.data(), source.size());
}

PropertyListTapeBuilder::PropertyListTapeBuilder(PropertyListDocument::TextBuffer source, qsizetype size)
    : m_text(std::move(source), Padding + size, 2 * Padding + size)
    , m_sourceSize(size)
{ }

void PropertyListTapeBuilder::fail(ErrorCode code, const QString &reason)
{
    if (!m_error)
        m_error = Error{code, reason, -1, {}};
}

PropertyListTapeBuilder::Piece PropertyListTapeBuilder::sourcePiece(Kind kind, qsizetype offset, qsizetype length) const
{
    return {kind, quint32(offset), length};
}

PropertyListTapeBuilder::Piece PropertyListTapeBuilder::appendPiece(Kind kind, QByteArrayView text)
{
    const qsizetype offset = m_text.size() - Padding;
    if (offset + text.size() > MaximumTextSize) {
        fail(ErrorCode::TooLarge, QStringLiteral("holds more than 4 GiB of text"));
        return {};
    }
    m_text.append(text.data(), text.size());
    return {kind, quint32(offset), text.size()};
}

QByteArrayView PropertyListTapeBuilder::textOf(const Piece &piece) const
{
    return QByteArrayView(m_text.data() + Padding + piece.offset, piece.length);
}

void PropertyListTapeBuilder::addRow(PropertyListRow row)
{
    if (m_rows.size() >= m_maximumRows)
        fail(ErrorCode::TooLarge, QStringLiteral("expands to more than %1 values").arg(m_maximumRows));
    if (!m_error)
        m_rows.append(row);
}

void PropertyListTapeBuilder::addText(const Piece &piece, quint32 key)
{
    addRow(makeRow(piece.kind, key, quint64(piece.length), piece.offset));
    if (piece.length >= Saturated)
        addRow(quint64(piece.length));
}

quint32 PropertyListTapeBuilder::takeKey()
{
    if (!m_open.empty())
        ++m_open.back().entries;
    return std::exchange(m_nextKey, NoKey);
}

void PropertyListTapeBuilder::begin(Kind kind)
{
    if (m_open.size() >= std::size_t(MaximumDepth)) {
        fail(ErrorCode::TooDeep,
             QStringLiteral("more than %1 dictionaries and arrays within one another").arg(MaximumDepth));
        return;
    }
    const quint32 key = takeKey();
    m_open.push_back({m_rows.size(), 0});
    addRow(makeRow(kind, key, 0, 0));
}

void PropertyListTapeBuilder::end()
{
    if (m_error)
        return;
    const auto [row, entries] = m_open.back();
    m_open.pop_back();
    PropertyListRow &container = m_rows.data()[row];
    container = makeRow(kindOf(container), keyOf(container), quint64(entries), quint64(m_rows.size() - row));
}

void PropertyListTapeBuilder::key(const Piece &piece)
{
    const QByteArrayView text = textOf(piece);
    if (const auto number = PropertyListScalars::parseCanonicalNumber(text)) {
        addRow(makeRow(NumberKey, NoKey, 0, *number));
        m_nextKey = InlineKey;
        return;
    }
    m_nextKey = text.size() <= LongestInternedKey ? m_keys.intern(text) : InlineKey;
    if (m_nextKey == InlineKey)
        addText(piece, NoKey);
}

void PropertyListTapeBuilder::value(const Piece &piece)
{
    addText(piece, takeKey());
}

void PropertyListTapeBuilder::boolean(bool value)
{
    addRow(makeRow(value ? True : False, takeKey(), 0, 0));
}

void PropertyListTapeBuilder::integer(quint64 magnitude, bool negative)
{
    char text[24] = "-";
    const char *end = std::to_chars(text + 1, std::end(text), magnitude).ptr;
    const char *begin = negative ? text : text + 1;
    appendNumber(Integer, QByteArrayView(begin, end));
}

void PropertyListTapeBuilder::number(Kind kind, double value)
{
    char text[32];
    const char *end = std::to_chars(text, std::end(text), value).ptr;
    appendNumber(kind, QByteArrayView(text, end));
}

void PropertyListTapeBuilder::appendNumber(Kind kind, QByteArrayView text)
{
    m_lastNumber = appendPiece(kind, text);
    value(m_lastNumber);
}

void PropertyListTapeBuilder::real(double value)
{
    number(Real, value);
}

void PropertyListTapeBuilder::date(double seconds)
{
    number(SecondsDate, seconds);
}

void PropertyListTapeBuilder::uid(quint64 number)
{
    char text[24];
    const char *end = std::to_chars(text, std::end(text), number).ptr;
    appendNumber(UID, QByteArrayView(text, end));
}

Result<PropertyListValue> PropertyListTapeBuilder::finish()
{
    if (m_error)
        return *m_error;
    auto document = std::make_unique<PropertyListDocument>();
    document->textSize = m_text.size() - Padding;
    m_text.append(Zeros, Padding);
    document->buffer = m_text.take();
    document->text = document->buffer.get() + Padding;
    document->rowCount = quint32(m_rows.size());
    document->rowBuffer = m_rows.take();
    document->rows = document->rowBuffer.get();
    document->keys = std::exchange(m_keys, {});
    return PropertyListDocument::handOver(std::move(document));
}

} // namespace platform
