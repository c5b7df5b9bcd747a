#pragma once

#include "Platform/Foundation/PropertyList/PropertyListValue.h"
#include "Platform/Foundation/Result.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

/// Property lists: reading XML, binary and old-style text lists, and writing XML ones.
///
/// A list is read in one pass into an immutable document (see PropertyListValue.h); the file may change, shrink or
/// vanish afterwards.
///
/// Any thread.
namespace platform::PropertyList {

/// Reads a property list of any form from a file. Only regular files are opened, and opening never blocks. XML lists
/// are parsed while the file is still being read. What cannot begin a list is refused without reading on. Errors:
/// `NotFound`, `NotReadable`, `NotARegularFile`, `UnsupportedEncoding`, `Malformed` and `TooDeep` (512 containers
/// within one another), the latter three with the byte offset in the file, and `TooLarge`: more than 4 GiB, or 256 MiB
/// of old-style text or of text that is not UTF-8; a binary list whose containers or strings share so much that it
/// expands without measure (beyond 4,194,304 values and four for each reference in its containers, or strings that
/// overlap to twice the file's size); or not enough memory. Nothing is thrown.
///
/// Forms: XML (UTF-8 with or without byte-order mark, UTF-16 and UTF-32; with or without the XML declaration, DOCTYPE
/// and plist element; entity declarations are refused), binary ("bplist0"), and old-style text lists. Control
/// characters that XML cannot hold are taken as they stand, raw or as references, since the files of other programs
/// hold them; only the writers refuse them.
Result<PropertyListValue> read(const QString &path);

/// The same from memory. The bytes are copied.
Result<PropertyListValue> parse(QByteArrayView bytes);

/// Writes the XML form: tabs, keys sorted by code unit, the usual DOCTYPE, a line feed at the end. Takes what
/// `PropertyListView::toVariant` gives, and all integer types, float, QStringList and QVariantHash. Errors:
/// `Malformed` for a type that no property list can hold, an invalid date, or a string with a character that XML
/// cannot hold (the keys and indexes that lead to it are in `reason`), `TooDeep`. To write without building a QVariant
/// first see `PropertyListXmlWriter`.
Result<QByteArray> writeXml(const QVariant &root);

/// Writes the XML form to a file, whole or not at all. Further error: `NotWritable`.
/// @return the error, or nothing when the file stands.
std::optional<Error> writeXmlFile(const QString &path, const QVariant &root);

} // namespace platform::PropertyList
