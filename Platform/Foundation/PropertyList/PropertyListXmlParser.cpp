#include "Platform/Foundation/PropertyList/PropertyListXmlParser_p.h"

#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"
#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlIndex_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlScalars_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlText_p.h"
#include "Platform/Foundation/PropertyList/Utf8Validator_p.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <optional>

namespace platform {

using namespace PropertyListTape;
using PropertyListScalars::isSpace;

namespace {

// Text that is listed at a time: it and its list stay in the processor's cache.
constexpr qsizetype BlockSize = 8 * 1024;
// With fewer places than this ahead the index is refilled, so that a row's markup is seen whole.
constexpr qsizetype Lookahead = 8;

constexpr const char *NotEnoughMemory = "not enough memory for the list";
constexpr const char *UnfinishedText = "the text ends before the list does";

struct ScalarElement {
    QByteArrayView name;
    Kind kind;
};
constexpr ScalarElement ScalarElements[] = {{"string", String}, {"integer", Integer}, {"real", Real},  {"date", Date},
                                            {"data", Data},     {"true", True},       {"false", False}};

const char *reasonAgainst(Kind kind, QByteArrayView text)
{
    switch (kind) {
    case Integer:
        return PropertyListScalars::parseInteger(text) ? nullptr : "not an integer, or beyond 64 bits";
    case Real:
        return PropertyListScalars::parseReal(text) ? nullptr : "not a number";
    case Date:
        return PropertyListScalars::parseDate(text) ? nullptr : "not a date";
    case Data:
        return PropertyListXmlScalars::isBase64(text) ? nullptr : "not base64";
    case True:
    case False:
        return std::all_of(text.begin(), text.end(), isSpace) ? nullptr : "text inside a boolean";
    default:
        return nullptr;
    }
}

} // namespace

PropertyListXmlParser::PropertyListXmlParser(PropertyListTextLoader &loader, InstructionSet instructions)
    : PropertyListXmlScanner(loader)
    , m_instructions(instructions)
    , m_cursor(m_text)
{ }

std::optional<Error> PropertyListXmlParser::parse(qsizetype from)
{
    // What most lists need, in one piece: a library of songs has a row for every 50 bytes of text.
    m_rows.reserve(quint64(m_loader.expectedSize() / 45) + 16);
    m_index.resize(size_t(qMin(BlockSize, m_loader.expectedSize()) + Lookahead + PropertyListXmlIndex::Overwrite));
    m_cursor = m_text + from;
    m_indexed = m_utf8Checked = from;
    if (parseBlocks())
        finish();
    return error();
}

std::unique_ptr<PropertyListDocument> PropertyListXmlParser::takeDocument()
{
    auto document = std::make_unique<PropertyListDocument>();
    document->textSize = m_loader.waitForAll();
    document->buffer = m_loader.takeBuffer();
    document->text = m_text;
    document->rowCount = m_rows.count();
    document->rowBuffer = m_rows.take();
    document->rows = document->rowBuffer.get();
    document->keys = std::move(m_keys);
    return document;
}

// MARK: The index of the markup

bool PropertyListXmlParser::parseBlocks()
{
    while (true) {
        if (!refillIndex())
            return false;
        if (m_next == m_indexCount)
            return true;
        if (!runFastLane())
            return false;
        if (!m_indexComplete && m_indexCount - m_next < Lookahead)
            continue;
        if (m_next == m_indexCount)
            return true;
        const char *markup = m_text + m_index[size_t(m_next)];
        if (!isSpaceOnly(m_cursor, markup))
            return false;
        m_cursor = parseMarkup(markup);
        if (!m_cursor)
            return false;
        const auto cursor = quint64(offsetOf(m_cursor));
        while (m_next < m_indexCount && m_index[size_t(m_next)] < cursor)
            ++m_next;
    }
}

bool PropertyListXmlParser::refillIndex()
{
    while (!m_indexComplete && m_indexCount - m_next < Lookahead) {
        if (m_indexed < offsetOf(m_cursor)) { // the general path went on beyond the index
            m_indexed = offsetOf(m_cursor);
            m_next = m_indexCount;
        }
        std::copy(m_index.begin() + m_next, m_index.begin() + m_indexCount, m_index.begin());
        m_indexCount -= m_next;
        m_next = 0;
        // The fast lane and the index look a little beyond the block. Behind the end of the text there are
        // zeros.
        const qsizetype wanted = m_indexed + BlockSize;
        const qsizetype available = arrived(wanted + Padding);
        const qsizetype until = qMin(wanted, available);
        m_indexComplete = until == available;
        if (!checkUtf8(m_text + until, !m_indexComplete))
            return false;
        quint32 *const free = m_index.data() + m_indexCount;
        const auto found = PropertyListXmlIndex::find(m_text, quint32(m_indexed), quint32(until), free, m_instructions);
        m_indexCount += found.end - free;
        m_indexed = until;
        m_hasCarriageReturns |= found.carriageReturn;
    }
    // Every place in the index leads to at most one row.
    return m_rows.reserve(quint64(m_indexCount - m_next) + 8) || fail(NotEnoughMemory, m_cursor, ErrorCode::TooLarge);
}

bool PropertyListXmlParser::checkUtf8(const char *end, bool mayCutCharacter)
{
    const char *const start = m_text + m_utf8Checked;
    if (start >= end)
        return true;
    const qsizetype valid = validUtf8Length(QByteArrayView(start, end - start), m_instructions);
    m_utf8Checked += valid;
    // A character that the end cuts in two is left for the next time; if it is none, it will be too long
    // then.
    const qsizetype rest = end - start - valid;
    return rest == 0 || (mayCutCharacter && rest <= 3) || fail("not UTF-8", start + valid, ErrorCode::Malformed);
}

bool PropertyListXmlParser::isSpaceOnly(const char *first, const char *last)
{
    const char *text = std::find_if_not(first, last, isSpace);
    return text == last || fail("text between elements", text);
}

bool PropertyListXmlParser::finish()
{
    const char *end = m_text + m_loader.waitForAll();
    if (!isSpaceOnly(m_cursor, end))
        return false;
    if (m_depth > 0 || m_plistElement == PlistElement::Open)
        return fail(UnfinishedText, end);
    if (!m_rootSeen && m_plistElement == PlistElement::Missing)
        return fail("the text holds no list", end);
    return true;
}

// MARK: The general path

const char *PropertyListXmlParser::parseMarkup(const char *place)
{
    if (*place == '&')
        return fail("text between elements", place);
    switch (at(place + 1)) {
    case '!':
        return parseDeclaration(place);
    case '?':
        return skipInstruction(place);
    case '/':
        return parseClosingTag(place);
    default:
        return parseOpeningTag(place);
    }
}

const char *PropertyListXmlParser::parseDeclaration(const char *place)
{
    if (startsWith(place, "<!--"))
        return skipComment(place);
    if (startsWith(place, "<![CDATA["))
        return fail("text between elements", place);
    if (startsWith(place, "<!ENTITY"))
        return fail("entity declarations are not taken", place);
    if (!startsWith(place, "<!DOCTYPE"))
        return fail("unknown declaration", place);
    if (m_documentTypeSeen || m_rootSeen || m_plistElement != PlistElement::Missing)
        return fail("a document type stands only once, before the list", place);
    m_documentTypeSeen = true;
    return skipDocumentType(place);
}

const char *PropertyListXmlParser::parseOpeningTag(const char *place)
{
    const auto tag = scanOpeningTag(place);
    if (!tag)
        return nullptr;
    if (tag->name == "key")
        return parseKey(*tag, place);
    if (tag->name == "dict" || tag->name == "array")
        return parseContainer(*tag, place);
    if (tag->name == "plist")
        return parsePlistTag(*tag, place);
    return parseScalar(*tag, place);
}

const char *PropertyListXmlParser::parseClosingTag(const char *place)
{
    const auto tag = scanClosingTag(place);
    if (!tag)
        return nullptr;
    if (m_depth > 0) {
        const bool isDictionary = m_frames[size_t(m_depth)].kind == ContainerKind::Dictionary;
        if (tag->name != (isDictionary ? QByteArrayView("dict") : QByteArrayView("array")))
            return fail("closing tag does not match", place);
        if (m_hasPendingKey)
            return fail("key without a value", place);
        closeContainer();
        return tag->next;
    }
    if (m_plistElement != PlistElement::Open || tag->name != "plist")
        return fail("closing tag does not match", place);
    m_plistElement = PlistElement::Closed;
    return tag->next;
}

const char *PropertyListXmlParser::parsePlistTag(const Tag &tag, const char *place)
{
    if (m_plistElement != PlistElement::Missing || m_rootSeen)
        return fail("a plist element stands only once, around the list", place);
    m_plistElement = tag.isEmptyElement ? PlistElement::Closed : PlistElement::Open;
    return tag.next;
}

const char *PropertyListXmlParser::parseKey(const Tag &tag, const char *place)
{
    if (m_frames[size_t(m_depth)].kind != ContainerKind::Dictionary)
        return fail("key outside a dictionary", place);
    if (m_hasPendingKey)
        return fail("key without a value", place);
    const auto content = plainContent(tag, true);
    if (!content)
        return nullptr;
    const QByteArrayView text(content->first, content->last - content->first);
    if (const auto number = PropertyListScalars::parseCanonicalNumber(text)) {
        m_rows.append(makeRow(NumberKey, NoKey, 0, *number));
        m_pendingKey = InlineKey;
    } else {
        m_pendingKey = numberOfKey(text.data(), text.size());
        if (m_pendingKey == InlineKey)
            addText(Key, NoKey, content->first, content->last);
    }
    m_hasPendingKey = true;
    return content->next;
}

const char *PropertyListXmlParser::parseContainer(const Tag &tag, const char *place)
{
    const auto kind = tag.name == "dict" ? ContainerKind::Dictionary : ContainerKind::Array;
    if (!beginValue(place) || !openContainer(kind, takeKey(), place))
        return nullptr;
    if (tag.isEmptyElement)
        closeContainer();
    return tag.next;
}

const char *PropertyListXmlParser::parseScalar(const Tag &tag, const char *place)
{
    const auto *element = std::find_if(std::begin(ScalarElements), std::end(ScalarElements),
                                       [&tag](const ScalarElement &candidate) { return candidate.name == tag.name; });
    const bool isOutsideAll = m_depth == 0 && !m_rootSeen && m_plistElement == PlistElement::Missing;
    if (element == std::end(ScalarElements))
        return fail(isOutsideAll ? NoPropertyList : "unknown element", place);
    if (!beginValue(place))
        return nullptr;
    const auto content = plainContent(tag, element->kind == String);
    if (!content)
        return nullptr;
    return addScalar(element->kind, *content);
}

const char *PropertyListXmlParser::addScalar(Kind kind, const Content &content)
{
    const QByteArrayView text(content.first, content.last - content.first);
    if (const char *reason = reasonAgainst(kind, text))
        return fail(reason, content.first);
    if (kind == True || kind == False)
        m_rows.append(makeRow(kind, takeKey(), 0, quint64(offsetOf(content.first))));
    else
        addText(kind, takeKey(), content.first, content.last);
    return content.next;
}

// The content of an element without child elements, as plain text. Where carriage returns are white space
// anyway, they stay.
auto PropertyListXmlParser::plainContent(const Tag &tag, bool isText) -> std::optional<Content>
{
    char *const first = m_text + offsetOf(tag.next);
    if (tag.isEmptyElement)
        return Content{first, first, tag.next, false};
    auto content = scanContent(first, tag.name);
    if (!content)
        return std::nullopt;
    const auto holds = [&content](char character) {
        return std::memchr(content->first, character, size_t(content->last - content->first)) != nullptr;
    };
    if (!content->hasMarkup && !holds('&') && !(isText && holds('\r')))
        return content;
    // Once it was changed, the text cannot be checked any more.
    if (!checkUtf8(content->last, false))
        return std::nullopt;
    const auto unescaped = PropertyListXmlText::unescapeInPlace(content->first, content->last);
    if (unescaped.errorPlace)
        return fail(unescaped.reason, unescaped.errorPlace);
    content->last = unescaped.last;
    return content;
}

// MARK: The tape

bool PropertyListXmlParser::beginValue(const char *place)
{
    Frame &frame = m_frames[size_t(m_depth)];
    if (frame.kind == ContainerKind::Dictionary && !m_hasPendingKey)
        return fail("value without a key", place);
    if (frame.kind == ContainerKind::None) {
        if (m_plistElement == PlistElement::Closed)
            return fail("value behind the end of the list", place);
        if (m_rootSeen)
            return fail("more than one value outside all containers", place);
        m_rootSeen = true;
    }
    ++frame.count;
    return true;
}

quint32 PropertyListXmlParser::takeKey()
{
    m_hasPendingKey = false;
    return std::exchange(m_pendingKey, NoKey);
}

void PropertyListXmlParser::addText(Kind kind, quint32 key, const char *first, const char *last)
{
    const auto length = quint64(last - first);
    m_rows.append(makeRow(kind, key, length, quint64(offsetOf(first))));
    if (length >= Saturated)
        m_rows.append(length);
}

quint32 PropertyListXmlParser::numberOfKey(const char *key, qsizetype length)
{
    const quint32 number = m_keys.intern(QByteArrayView(key, length));
    if (number == InlineKey)
        return InlineKey;
    const QByteArray &name = m_keys.name(number);
    if (name == "CF$UID")
        m_uidKey = number;
    return number;
}

bool PropertyListXmlParser::openContainer(ContainerKind kind, quint32 key, const char *place)
{
    if (m_depth == MaximumDepth)
        return fail("more than 512 containers within one another", place, ErrorCode::TooDeep);
    m_frames[size_t(++m_depth)] = {kind, m_rows.count(), 0};
    m_rows.append(makeRow(kind == ContainerKind::Dictionary ? Dictionary : Array, key, 0, 0));
    return true;
}

void PropertyListXmlParser::closeContainer()
{
    const Frame frame = m_frames[size_t(m_depth--)];
    PropertyListRow &row = m_rows[frame.row];
    row = makeRow(kindOf(row), keyOf(row), frame.count, m_rows.count() - frame.row);
    if (frame.count == 1 && isUidEntry(frame.row + 1))
        m_rows.setEnd(makeUid(frame.row));
}

// Whether the rows of a dictionary's only entry are "CF$UID" and an integer.
bool PropertyListXmlParser::isUidEntry(quint32 row) const
{
    const PropertyListRow entry = m_rows[row];
    if (!isKey(entry))
        return kindOf(entry) == Integer && keyOf(entry) == m_uidKey && m_uidKey != NoKey;
    return kindOf(entry) == Key
        && QByteArrayView(m_text + PropertyListTape::offsetOf(entry), lengthOf(entry)) == "CF$UID"
        && kindOf(m_rows[row + 1]) == Integer;
}

// Turns the dictionary in the last rows into the reference number that it stands for. The number's digits
// take no more room than the element did.
// @return the end of the rows.
PropertyListRow *PropertyListXmlParser::makeUid(quint32 row)
{
    const quint32 last = isKey(m_rows[row + 1]) ? row + 2 : row + 1;
    const PropertyListRow integer = m_rows[last];
    const auto length = lengthOf(integer) < Saturated ? lengthOf(integer) : m_rows[last + 1];
    char *const text = m_text + PropertyListTape::offsetOf(integer);
    const auto number = PropertyListScalars::parseInteger(QByteArrayView(text, qsizetype(length)));
    if (number->negative)
        return &m_rows[last + (length < Saturated ? 1 : 2)];
    const QByteArray digits = QByteArray::number(number->magnitude);
    std::memcpy(text, digits.constData(), size_t(digits.size()));
    m_rows[row] = makeRow(UID, keyOf(m_rows[row]), quint64(digits.size()), quint64(offsetOf(text)));
    return &m_rows[row + 1];
}

} // namespace platform
