#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It belongs to the XML property-list reader, and may change
//  from version to version.
//

#include <QtGlobal>

namespace platform::PropertyListXmlText {

/// What became of a text: where it ends now, or what is wrong with it.
struct Unescaped {
    char *last = nullptr;
    const char *errorPlace = nullptr; ///< Null if all is well.
    const char *reason = nullptr;
};

/// Turns the content of an element into plain text, in place, for it never gets longer: the five named
/// references and character references are replaced, CDATA sections opened, comments and processing
/// instructions left out, and line ends made line feeds. Every piece of markup in the content must be
/// complete, as it is once the closing tag was found. Errors: a reference that XML does not define, or one to
/// a character that is none.
Unescaped unescapeInPlace(char *first, const char *last);

} // namespace platform::PropertyListXmlText
