#include "Platform/Foundation/PropertyList/PropertyListXmlScanner_p.h"

#include "Platform/Foundation/PropertyList/PropertyListScalars_p.h"

#include <cstring>

namespace platform {

using PropertyListScalars::isSpace;

namespace {

constexpr const char *UnfinishedText = "the text ends before the list does";

bool isNameCharacter(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '_'
        || byte == ':' || byte == '-' || byte == '.' || byte >= 0x80;
}

} // namespace

PropertyListXmlScanner::PropertyListXmlScanner(PropertyListTextLoader &loader)
    : m_loader(loader)
    , m_text(loader.text())
    , m_end(loader.text())
{ }

bool PropertyListXmlScanner::startsWith(const char *place, QByteArrayView start)
{
    return !isAtEnd(place + start.size() - 1) && QByteArrayView(place, start.size()) == start;
}

const char *PropertyListXmlScanner::find(const char *place, QByteArrayView bytes)
{
    while (!isAtEnd(place + bytes.size() - 1)) {
        const qsizetype found = QByteArrayView(place, m_end - place).indexOf(bytes);
        if (found >= 0)
            return place + found;
        place = m_end - bytes.size() + 1; // it may stand across the end of what is there
    }
    return nullptr;
}

const char *PropertyListXmlScanner::skipSpace(const char *place)
{
    while (isSpace(at(place)))
        ++place;
    return place;
}

const char *PropertyListXmlScanner::skipName(const char *place)
{
    while (isNameCharacter(at(place)))
        ++place;
    return place;
}

const char *PropertyListXmlScanner::skipComment(const char *place)
{
    const char *end = find(place + 4, "-->");
    return end ? end + 3 : fail("comment without an end", place);
}

const char *PropertyListXmlScanner::skipInstruction(const char *place)
{
    const char *end = find(place + 2, "?>");
    return end ? end + 2 : fail("processing instruction without an end", place);
}

const char *PropertyListXmlScanner::skipQuoted(const char *place)
{
    const char *end = find(place + 1, QByteArrayView(place, 1));
    return end ? end + 1 : fail("quotation mark without its counterpart", place);
}

// A declaration in a document type, from its "<!" on.
const char *PropertyListXmlScanner::skipDeclaration(const char *place)
{
    const char *const start = place;
    for (place += 2; !isAtEnd(place);) {
        if (*place == '>')
            return place + 1;
        if (*place == '<')
            break;
        if (*place != '"' && *place != '\'')
            ++place;
        else if (!(place = skipQuoted(place)))
            return nullptr;
    }
    return fail("declaration without an end", start);
}

const char *PropertyListXmlScanner::skipInternalSubset(const char *place)
{
    const char *const start = place;
    for (place = skipSpace(place + 1); place && !isAtEnd(place); place = place ? skipSpace(place) : nullptr) {
        if (*place == ']')
            return place + 1;
        if (startsWith(place, "<!ENTITY"))
            return fail("entity declarations are not taken", place);
        if (*place == '%')
            return fail("entity references are not taken here", place);
        if (startsWith(place, "<!--"))
            place = skipComment(place);
        else if (startsWith(place, "<?"))
            place = skipInstruction(place);
        else if (startsWith(place, "<!"))
            place = skipDeclaration(place);
        else
            return fail("the document type holds something that is no declaration", place);
    }
    return fail("document type without an end", start); // unless something in it failed before
}

const char *PropertyListXmlScanner::skipDocumentType(const char *place)
{
    const char *const start = place;
    place += 9; // "<!DOCTYPE"
    if (!isSpace(at(place)))
        return fail("document type without a name", start);
    while (place && !isAtEnd(place)) {
        switch (*place) {
        case '>':
            return place + 1;
        case '<':
            return fail("document type without an end", start);
        case '"':
        case '\'':
            place = skipQuoted(place);
            break;
        case '[':
            place = skipInternalSubset(place);
            break;
        default:
            ++place;
        }
    }
    return fail("document type without an end", start); // unless something in it failed before
}

// An attribute from its name on.
const char *PropertyListXmlScanner::skipAttribute(const char *place)
{
    const char *const start = place;
    place = skipName(place);
    if (place == start)
        return isAtEnd(place) ? failAtEnd(UnfinishedText) : fail("unexpected character in a tag", place);
    place = skipSpace(place);
    if (at(place) != '=')
        return isAtEnd(place) ? failAtEnd(UnfinishedText) : fail("attribute without a value", start);
    place = skipSpace(place + 1);
    if (at(place) != '"' && at(place) != '\'')
        return isAtEnd(place) ? failAtEnd(UnfinishedText) : fail("attribute without quotation marks", start);
    const char *end = skipQuoted(place);
    if (!end)
        return nullptr;
    if (const void *bracket = std::memchr(place, '<', size_t(end - place)))
        return fail("unexpected character in a tag", static_cast<const char *>(bracket));
    return end;
}

auto PropertyListXmlScanner::scanOpeningTag(const char *place) -> std::optional<Tag>
{
    Tag tag;
    const char *name = place + 1;
    place = skipName(name);
    tag.name = QByteArrayView(name, place - name);
    if (tag.name.isEmpty() && !isAtEnd(name))
        return fail("unexpected character in a tag", name);
    while (true) {
        const char *const before = place;
        place = skipSpace(place);
        if (at(place) == '>') {
            tag.next = place + 1;
            return tag;
        }
        if (startsWith(place, "/>")) {
            tag.isEmptyElement = true;
            tag.next = place + 2;
            return tag;
        }
        if (place == before) { // attributes stand apart from what is before them
            if (isAtEnd(place) || (*place == '/' && isAtEnd(place + 1)))
                return failAtEnd(UnfinishedText);
            return fail("unexpected character in a tag", place);
        }
        place = skipAttribute(place);
        if (!place)
            return std::nullopt;
    }
}

auto PropertyListXmlScanner::scanClosingTag(const char *place) -> std::optional<Tag>
{
    const char *name = place + 2;
    const char *nameEnd = skipName(name);
    place = skipSpace(nameEnd);
    if (at(place) == '>')
        return Tag{QByteArrayView(name, nameEnd - name), place + 1, false};
    if (isAtEnd(place))
        return failAtEnd(UnfinishedText);
    return fail("unexpected character in a tag", place);
}

auto PropertyListXmlScanner::scanContent(char *place, QByteArrayView elementName) -> std::optional<Content>
{
    Content content;
    content.first = place;
    const char *markup = place;
    while ((markup = find(markup, "<"))) {
        if (at(markup + 1) == '/') {
            const auto closing = scanClosingTag(markup);
            if (!closing)
                return std::nullopt;
            if (closing->name != elementName)
                return fail("closing tag does not match", markup);
            content.last = markup;
            content.next = closing->next;
            return content;
        }
        content.hasMarkup = true;
        if (startsWith(markup, "<!--")) {
            markup = skipComment(markup);
        } else if (startsWith(markup, "<![CDATA[")) {
            const char *end = find(markup + 9, "]]>");
            markup = end ? end + 3 : fail("CDATA section without an end", markup);
        } else if (startsWith(markup, "<?")) {
            markup = skipInstruction(markup);
        } else if (isAtEnd(markup + 1)) {
            break;
        } else {
            markup = fail("element inside a text", markup);
        }
        if (!markup)
            return std::nullopt;
    }
    return failAtEnd(UnfinishedText);
}

auto PropertyListXmlScanner::fail(const char *reason, const char *place, ErrorCode code) -> Failure
{
    if (!m_error)
        m_error = Error{code, QString::fromLatin1(reason), place - m_text, {}};
    return {};
}

auto PropertyListXmlScanner::failAtEnd(const char *reason) -> Failure
{
    return fail(reason, m_text + m_loader.waitForAll());
}

} // namespace platform
