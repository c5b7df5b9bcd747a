#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It belongs to the XML property-list reader, and may change
//  from version to version.
//

#include "Platform/Foundation/PropertyList/PropertyListTextLoader_p.h"
#include "Platform/Foundation/Result.h"

#include <QByteArrayView>

#include <optional>

namespace platform {

/// Finds the limits of all kinds of XML markup in a text that may still be arriving: tags with attributes,
/// comments, processing instructions, document types, and the content of elements that hold text.
///
/// The operations take the place where something begins and answer where it ends. On an error they keep it
/// and answer null. Only the first error counts.
class PropertyListXmlScanner
{
public:
    explicit PropertyListXmlScanner(PropertyListTextLoader &loader);

    const std::optional<Error> &error() const { return m_error; }

protected:
    struct Tag {
        QByteArrayView name;
        const char *next = nullptr; ///< Behind the tag.
        bool isEmptyElement = false;
    };
    /// What stands between an opening tag and its closing tag.
    struct Content {
        char *first = nullptr;
        const char *last = nullptr;
        const char *next = nullptr; ///< Behind the closing tag.
        bool hasMarkup = false; ///< Comments, CDATA sections or processing instructions.
    };

    /// Waits until so many bytes of the text are there, or all of it.
    /// @return how many are there.
    qsizetype arrived(qsizetype bytes)
    {
        if (m_end - m_text < bytes)
            m_end = m_text + m_loader.waitFor(bytes);
        return m_end - m_text;
    }
    /// The byte at the place, once it is there; 0 behind the end of the text.
    char at(const char *place) { return isAtEnd(place) ? '\0' : *place; }
    bool isAtEnd(const char *place) { return place >= m_end && arrived(place - m_text + 1) <= place - m_text; }
    bool startsWith(const char *place, QByteArrayView start);
    /// Where the bytes occur next, or null.
    const char *find(const char *place, QByteArrayView bytes);
    const char *skipSpace(const char *place);

    /// "<!--" to "-->".
    const char *skipComment(const char *place);
    /// "<?" to "?>".
    const char *skipInstruction(const char *place);
    /// "<!DOCTYPE" to its ">", with or without an internal subset. Entity declarations and references are
    /// refused.
    const char *skipDocumentType(const char *place);
    /// An opening tag or the tag of an empty element, with any attributes.
    std::optional<Tag> scanOpeningTag(const char *place);
    std::optional<Tag> scanClosingTag(const char *place);
    /// The content of an element without child elements, from behind its opening tag.
    std::optional<Content> scanContent(char *place, QByteArrayView elementName);

    /// What an operation that failed returns: null, false or nothing.
    struct Failure {
        operator const char *() const { return nullptr; }
        operator bool() const { return false; }
        template <class T>
        operator std::optional<T>() const
        {
            return std::nullopt;
        }
    };
    Failure fail(const char *reason, const char *place, ErrorCode code = ErrorCode::Malformed);
    Failure failAtEnd(const char *reason);

    qsizetype offsetOf(const char *place) const { return place - m_text; }

    PropertyListTextLoader &m_loader;
    char *m_text;
    const char *m_end; ///< Behind what has arrived, as far as this class looked.

private:
    const char *skipQuoted(const char *place);
    const char *skipInternalSubset(const char *place);
    const char *skipDeclaration(const char *place);
    const char *skipAttribute(const char *place);
    const char *skipName(const char *place);

    std::optional<Error> m_error;
};

} // namespace platform
