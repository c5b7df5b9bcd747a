#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It is how the property-list readers hand a document to the value
//  handles, and may change from version to version.
//

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <unordered_map>

namespace platform {

/// A parsed property list is a flat tape of 8-byte rows in document order beside the text that they point into.
///
///     bits  0-3   kind
///     bits  4-15  key: index into the key table, `NoKey` outside dictionaries, `InlineKey` when the row before this
///                 one is a key row (`Key`, `NumberKey`)
///     bits 16-31  length of the scalar's text in bytes, or number of a container's entries; both stop at `Saturated`
///     bits 32-63  scalar: where its text starts; container: rows to just behind its last one, counted from itself;
///                 `NumberKey`: the number
///
/// A scalar or key whose length is `Saturated` is followed by one row that holds the real length as a plain number;
/// for a key, that row stands between the key row and the value's row.
/// Every scalar was checked while reading: decoding a row cannot fail.
using PropertyListRow = quint64;

namespace PropertyListTape {

enum Kind : quint8 {
    Dictionary,
    Array,
    String, ///< UTF-8, with references and the like replaced already.
    Integer, ///< As in XML: white space, sign, decimal or 0x digits; from -2^63 to 2^64-1.
    Real, ///< As in XML: white space, a number, or nan, inf, infinity with sign, any case.
    Date, ///< ISO 8601 text, "2024-01-31T20:43:14Z", as in XML.
    SecondsDate, ///< A real number in text: seconds since 2001-01-01T00:00:00Z.
    Data, ///< Base64 text with white space.
    RawData, ///< The bytes themselves.
    True,
    False,
    UID, ///< Decimal text (reference number in a keyed archive).
    Key, ///< UTF-8; belongs to the next row that is no length row.
    NumberKey, ///< A key that is the canonical decimal text of the number in bits 32-63; has no text.
};

constexpr quint32 NoKey = 0xFFE;
constexpr quint32 InlineKey = 0xFFF;
constexpr quint32 MaximumKeys = 0xFFE;
constexpr quint32 Saturated = 0xFFFF;
/// Containers within containers; deeper documents are refused, so that everybody else may recurse.
constexpr int MaximumDepth = 512;
/// Text offsets are 32 bits wide; a larger document is refused.
constexpr qint64 MaximumTextSize = 0xFFFF'0000;
/// Readable bytes (zeros) before and behind a document's text, so that a reader may look past its ends.
constexpr qsizetype Padding = 128;

constexpr PropertyListRow makeRow(Kind kind, quint32 key, quint64 length, quint64 offset)
{
    return quint64(kind) | quint64(key) << 4 | (length < Saturated ? length : Saturated) << 16 | offset << 32;
}
constexpr Kind kindOf(PropertyListRow row)
{
    return Kind(row & 0xF);
}
constexpr quint32 keyOf(PropertyListRow row)
{
    return quint32(row >> 4) & 0xFFF;
}
constexpr quint32 lengthOf(PropertyListRow row)
{
    return quint32(row >> 16) & 0xFFFF;
}
constexpr quint32 offsetOf(PropertyListRow row)
{
    return quint32(row >> 32);
}
constexpr bool isContainer(PropertyListRow row)
{
    return kindOf(row) <= Array;
}
constexpr bool isKey(PropertyListRow row)
{
    return kindOf(row) >= Key;
}

} // namespace PropertyListTape

/// The keys of a document that occur as plain text, each once.
class PropertyListKeyTable
{
public:
    /// The number of the key, entering it if there is room; `InlineKey` otherwise.
    quint32 intern(QByteArrayView key)
    {
        const auto found = m_numbers.find(viewOf(key));
        if (found != m_numbers.cend())
            return found->second;
        if (m_names.size() >= PropertyListTape::MaximumKeys)
            return PropertyListTape::InlineKey;
        m_names.append(key.toByteArray());
        m_numbers.emplace(viewOf(m_names.last()), quint32(m_names.size() - 1));
        return quint32(m_names.size() - 1);
    }
    /// The number of the key, or `NoKey` if it is not in the table.
    quint32 find(QByteArrayView key) const
    {
        const auto found = m_numbers.find(viewOf(key));
        return found != m_numbers.cend() ? found->second : PropertyListTape::NoKey;
    }
    const QByteArray &name(quint32 number) const { return m_names[qsizetype(number)]; }
    qsizetype size() const { return m_names.size(); }

private:
    static std::string_view viewOf(QByteArrayView key) { return {key.data(), size_t(key.size())}; }

    QList<QByteArray> m_names;
    // No QHash, which ends the program where there is no memory to grow. The views are of the names.
    std::unordered_map<std::string_view, quint32> m_numbers;
};

class PropertyListValue;

/// A parsed document: text, tape and keys. Immutable once a handle points to it; counted by its handles, from any
/// thread.
class PropertyListDocument
{
public:
    /// The root of a finished document, which belongs to its handles from now on.
    static PropertyListValue handOver(std::unique_ptr<PropertyListDocument> document);

    template <class T>
    struct Free {
        void operator()(T *memory) const { std::free(memory); }
    };
    using TextBuffer = std::unique_ptr<char, Free<char>>;
    using RowBuffer = std::unique_ptr<PropertyListRow, Free<PropertyListRow>>;

    TextBuffer buffer; ///< `Padding` zeros, the text, `Padding` zeros.
    const char *text = nullptr; ///< buffer + Padding
    qsizetype textSize = 0;
    RowBuffer rowBuffer;
    const PropertyListRow *rows = nullptr; ///< Row 0 is the root value.
    quint32 rowCount = 0;
    PropertyListKeyTable keys;

    mutable std::atomic<int> references = 0;
};

} // namespace platform
