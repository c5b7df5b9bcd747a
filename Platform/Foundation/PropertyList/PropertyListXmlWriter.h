#pragma once

#include "Platform/Foundation/Result.h"

#include <QAnyStringView>
#include <QByteArray>

#include <optional>
#include <vector>

namespace platform {

/// Writes a property list in the XML form value by value, depth first, into one growing piece of memory. For lists
/// that would only be built as a QVariant to be written: archives, large libraries.
///
///     PropertyListXmlWriter writer;
///     writer.beginDictionary();
///     writer.key("Tracks");
///     writer.beginArray();
///     writer.string(title);
///     writer.end();
///     writer.end();
///     const auto bytes = writer.finish();
///
/// In a dictionary each value follows its key; keys are written in the order given (`PropertyList::writeXml` sorts them
/// by code unit). `begin…` and `end` pair up, and one value stands at the root: it is the caller's duty, and `finish`
/// asserts the latter two. What depends on the data is checked, and after the first error further calls do nothing.
///
/// Thread safety: none; any thread.
class PropertyListXmlWriter
{
public:
    PropertyListXmlWriter();

    void beginDictionary() { begin(Container::Dictionary); }
    void beginArray() { begin(Container::Array); }
    void end();

    void key(QAnyStringView key);
    void string(QAnyStringView string);
    void integer(qint64 number);
    void unsignedInteger(quint64 number);
    /// Written with as many digits as it takes to read the same number back, at most 17.
    void real(double number);
    void boolean(bool value);
    /// Seconds since 2001-01-01T00:00:00Z; the form has no room for their fraction, which is cut off downwards. The
    /// year must be between -9999 and 9999.
    void date(double referenceSeconds);
    void data(QByteArrayView bytes);
    /// A dictionary whose one key is "CF$UID".
    void uid(quint64 number);

    bool hasFailed() const { return m_error.has_value(); }
    /// Records that the value that stands next cannot be written, as `Malformed`: the reason is given, followed by
    /// " in " and the keys and indexes that lead there, joined by slashes.
    void fail(const QString &reason);

    /// The whole list, with a line feed at the end. Errors: `Malformed` for a character that XML cannot hold (control
    /// characters, halves of surrogate pairs, U+FFFE, U+FFFF) and for dates out of range, `TooDeep` for more than 512
    /// containers within one another. The writer is empty afterwards.
    Result<QByteArray> finish();

private:
    enum class Container : quint8 { Dictionary, Array };
    struct Open {
        Container kind;
        qsizetype entries = 0;
        qsizetype key = 0; // where the last key stands in the output, escaped
        qsizetype keyLength = 0;
    };

    enum class Place : quint8 { NextValue, BegunValue, Key };

    bool isRoomForContainer();
    void begin(Container container);
    bool beginEntry();
    void openParent();
    void indent(qsizetype more = 0);
    void raw(QByteArrayView text);
    void scalar(QByteArrayView opening, QByteArrayView text, QByteArrayView closing);
    bool escaped(QAnyStringView text);
    bool escaped(QStringView text);
    void failAt(const QString &reason, Place place);
    QString path(Place place) const;

    QByteArray m_output;
    std::vector<Open> m_open;
    qsizetype m_rootValues = 0;
    std::optional<Error> m_error;
};

} // namespace platform
