#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It declares the readers of the forms of property lists,
//  between which `PropertyList::read` and `PropertyList::parse` choose, and may change from version to
//  version.
//

#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/Result.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace platform {

class PropertyListTextLoader;

/// Reads the binary form. The bytes begin with "bplist"; the document takes them from the loader.
Result<PropertyListValue> parseBinaryPropertyList(PropertyListTextLoader &loader);
/// The same from bytes that are copied.
Result<PropertyListValue> parseBinaryPropertyList(QByteArrayView bytes);

/// The reason of the error of a text that begins as no list does.
inline constexpr char NoPropertyList[] = "this is no property list";

/// Reads the old-style text form, which includes lists of strings without braces. The text is UTF-8 without
/// byte-order mark; its validity is for this reader to check. Offsets of errors count bytes of the text
/// given.
Result<PropertyListValue> parseTextPropertyList(QByteArrayView utf8);
/// The error of `parseTextPropertyList` where the text's head shows already that it is no list.
std::optional<Error> textPropertyListHeadError(QByteArrayView head);

/// Reads the XML form. The text is UTF-8 without byte-order mark, or in the encoding that its XML declaration
/// names; it is copied. Offsets of errors count bytes of the text given.
Result<PropertyListValue> parseXmlPropertyList(QByteArrayView text);

/// The encodings of text that the readers know.
enum class TextEncoding {
    Utf8,
    Utf16LittleEndian,
    Utf16BigEndian,
    Utf32LittleEndian,
    Utf32BigEndian,
    Latin1, ///< ISO 8859-1.
    Windows1252, ///< ISO 8859-1 with further characters where that has control characters.
};

struct TextForm {
    TextEncoding encoding = TextEncoding::Utf8;
    qsizetype markLength = 0; ///< Bytes of the byte-order mark, 0 without one.
};

/// Recognises the Unicode forms by a byte-order mark, otherwise by the zero bytes around the text's first
/// characters.
TextForm detectTextForm(QByteArrayView bytes);
/// The same for an XML text: where its bytes leave it open, its declaration names the encoding. The head of
/// the text is enough. Error: `UnsupportedEncoding`, with the offset of the name.
Result<TextForm> detectXmlForm(QByteArrayView head);

/// The text without its byte-order mark as UTF-8. Error: `Malformed`, with the offset in the bytes given, for
/// a surrogate without its other half, a number that is no character, or a cut-off last character. Text that
/// is UTF-8 already is not checked.
Result<QByteArray> transcodeToUtf8(QByteArrayView bytes, TextForm form);

/// Where in the original bytes the character stands that begins at the given offset of the transcoded text.
qint64 offsetBeforeTranscoding(QByteArrayView utf8, qint64 offset, TextForm form);

} // namespace platform
