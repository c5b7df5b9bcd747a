#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It is the XML property-list reader, and may change from
//  version to version.
//

#include "Platform/Foundation/InstructionSet_p.h"
#include "Platform/Foundation/PropertyList/PropertyListKeyCache_p.h"
#include "Platform/Foundation/PropertyList/PropertyListRows_p.h"
#include "Platform/Foundation/PropertyList/PropertyListTape_p.h"
#include "Platform/Foundation/PropertyList/PropertyListXmlScanner_p.h"

#include <array>
#include <memory>
#include <optional>
#include <vector>

namespace platform {

/// Parses the XML form of a property list into a tape, in one pass over the text, which may still be
/// arriving.
///
/// The text is taken in blocks. Of each block the UTF-8 is checked and the places of '<' and '&' are listed;
/// the parser then jumps from one place to the next. Two ways lead on from a place, with the same results:
///
/// - the fast lane (PropertyListXmlFastLane.cpp) knows the rows that property lists are written in,
///   `<key>…</key><type>…</type>` and the elements of arrays, and compares whole tags at once;
/// - the general path (PropertyListXmlParser.cpp) knows everything else that XML allows.
///
/// Strings and keys are turned into plain text where they stand, so that the tape holds no escapes.
class PropertyListXmlParser : private PropertyListXmlScanner
{
public:
    PropertyListXmlParser(PropertyListTextLoader &loader, InstructionSet instructions);

    /// Parses the text from an offset on (that of the first byte behind a byte-order mark).
    /// @return the error, or nothing.
    std::optional<Error> parse(qsizetype from);

    /// Whether the list holds a value; "<plist></plist>" holds none.
    bool hasValue() const { return m_rows.count() > 0; }
    /// The finished document. It takes the loader's text.
    std::unique_ptr<PropertyListDocument> takeDocument();

private:
    enum class ContainerKind : quint8 { None, Dictionary, Array };
    /// A container that is still open.
    struct Frame {
        ContainerKind kind = ContainerKind::None;
        quint32 row = 0;
        quint32 count = 0;
    };
    enum class PlistElement { Missing, Open, Closed };
    struct FastLane;

    // The index of the markup
    bool parseBlocks();
    bool refillIndex();
    bool checkUtf8(const char *end, bool mayCutCharacter);
    bool isSpaceOnly(const char *first, const char *last);
    bool finish();

    // The fast lane
    bool runFastLane();
    quint32 numberOfNewKey(const char *key, qsizetype length);
    const char *unescapeString(const char *first, const char *last);

    // The general path: each operation takes a place at its markup and answers where to go on, or null
    const char *parseMarkup(const char *place);
    const char *parseDeclaration(const char *place);
    const char *parseOpeningTag(const char *place);
    const char *parseClosingTag(const char *place);
    const char *parsePlistTag(const Tag &tag, const char *place);
    const char *parseKey(const Tag &tag, const char *place);
    const char *parseContainer(const Tag &tag, const char *place);
    const char *parseScalar(const Tag &tag, const char *place);
    const char *addScalar(PropertyListTape::Kind kind, const Content &content);
    std::optional<Content> plainContent(const Tag &tag, bool mayHoldEscapes);

    // The tape
    bool beginValue(const char *place);
    quint32 takeKey();
    void addText(PropertyListTape::Kind kind, quint32 key, const char *first, const char *last);
    quint32 numberOfKey(const char *key, qsizetype length);
    bool openContainer(ContainerKind kind, quint32 key, const char *place);
    void closeContainer();
    PropertyListRow *makeUid(quint32 row);
    bool isUidEntry(quint32 row) const;

    const InstructionSet m_instructions;

    std::vector<quint32> m_index; // offsets of '<' and '&'
    qsizetype m_next = 0; // the first of them that was not dealt with
    qsizetype m_indexCount = 0;
    qsizetype m_indexed = 0; // offset up to which the text is listed
    qsizetype m_utf8Checked = 0; // offset up to which the text is known to be UTF-8
    bool m_indexComplete = false; // whether m_indexed is the end of the text
    bool m_hasCarriageReturns = false;
    const char *m_cursor; // everything before was dealt with

    PropertyListRows m_rows;
    PropertyListKeyTable m_keys;
    PropertyListKeyCache m_keyCache;
    quint32 m_uidKey = PropertyListTape::NoKey; // number of the key "CF$UID", once it occurred

    std::array<Frame, PropertyListTape::MaximumDepth + 1> m_frames; // the first one is no container
    int m_depth = 0;
    bool m_hasPendingKey = false;
    quint32 m_pendingKey = PropertyListTape::NoKey;
    bool m_rootSeen = false;
    bool m_documentTypeSeen = false;
    PlistElement m_plistElement = PlistElement::Missing;
};

} // namespace platform
