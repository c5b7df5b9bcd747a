#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It builds documents for the property-list readers whose
//  text is not XML, and may change from version to version.
//

#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/PropertyList/PropertyListTape_p.h"

#include <QByteArrayView>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace platform {

/// A sequence in malloc's memory, so that it grows where it stands and can be given to a
/// `PropertyListDocument`.
template <class T>
class PropertyListBuffer
{
public:
    PropertyListBuffer() = default;
    /// Goes on in memory that holds so many items already, of the `capacity` that it has room for.
    PropertyListBuffer(std::unique_ptr<T, PropertyListDocument::Free<T>> memory, qsizetype size, qsizetype capacity)
        : m_memory(std::move(memory))
        , m_size(size)
        , m_capacity(capacity)
    { }

    qsizetype size() const { return m_size; }
    T *data() { return m_memory.get(); }
    const T *data() const { return m_memory.get(); }

    void append(const T *items, qsizetype count)
    {
        reserve(m_size + count);
        if (count > 0)
            std::memcpy(m_memory.get() + m_size, items, std::size_t(count) * sizeof(T));
        m_size += count;
    }
    void append(T item) { append(&item, 1); }
    void reserve(qsizetype capacity)
    {
        if (capacity > m_capacity)
            reallocate(std::max(capacity, m_capacity + m_capacity / 2));
    }
    std::unique_ptr<T, PropertyListDocument::Free<T>> take()
    {
        reallocate(std::max<qsizetype>(m_size, 1));
        m_size = m_capacity = 0;
        return std::move(m_memory);
    }

private:
    void reallocate(qsizetype capacity)
    {
        void *memory = std::realloc(m_memory.get(), std::size_t(capacity) * sizeof(T));
        Q_CHECK_PTR(memory);
        m_memory.release();
        m_memory.reset(static_cast<T *>(memory));
        m_capacity = capacity;
    }

    std::unique_ptr<T, PropertyListDocument::Free<T>> m_memory;
    qsizetype m_size = 0;
    qsizetype m_capacity = 0;
};

/// Builds a document value by value, depth first. Its text begins with what is read, so that values can be taken
/// from there; what has to be rewritten is appended behind.
///
/// Calls come in the order of a depth-first walk: in a dictionary one `key` before each value, one `end` for
/// each `begin…`, and exactly one value at the root. Nothing of that is checked, since it does not depend on
/// the input. What does are the limits on depth, values and text: behind the first one that is passed,
/// `error` tells it and further calls do nothing.
class PropertyListTapeBuilder
{
public:
    using Kind = PropertyListTape::Kind;

    /// The text of a string, number, date or data, for one value or for many.
    struct Piece {
        Kind kind = PropertyListTape::False;
        quint32 offset = 0;
        qsizetype length = 0;
    };

    static constexpr qsizetype MostRows = 0xFFFF'FFF0;

    /// Begins with a copy of the source.
    explicit PropertyListTapeBuilder(QByteArrayView source, qsizetype maximumRows = MostRows);
    /// Begins with the source itself, which stands padded as in a document.
    PropertyListTapeBuilder(PropertyListDocument::TextBuffer source, qsizetype size);

    /// Limit on rows: one for every value, and one more for each key that is not interned and each long text.
    void setMaximumRows(qsizetype rows) { m_maximumRows = std::min(rows, MostRows); }

    /// What is read. It moves whenever text is appended.
    QByteArrayView source() const { return QByteArrayView(m_text.data() + PropertyListTape::Padding, m_sourceSize); }

    /// The first limit that was passed.
    const std::optional<Error> &error() const { return m_error; }

    // Pieces of the source, given by their place in it, and pieces that are appended.
    Piece sourcePiece(Kind kind, qsizetype offset, qsizetype length) const;
    Piece appendPiece(Kind kind, QByteArrayView text);
    QByteArrayView textOf(const Piece &piece) const;

    void beginDictionary() { begin(PropertyListTape::Dictionary); }
    void beginArray() { begin(PropertyListTape::Array); }
    void end();

    /// The key of the next value: a piece of kind `Key`.
    void key(const Piece &piece);
    void value(const Piece &piece);
    void boolean(bool value);
    void integer(quint64 magnitude, bool negative);
    void real(double value);
    /// Seconds since 2001-01-01T00:00:00Z.
    void date(double seconds);
    void uid(quint64 number);
    /// The text of the value that was added last, if it is one that was appended for a number, date or reference
    /// number: for further values.
    const Piece &lastNumber() const { return m_lastNumber; }

    /// The finished document's root. The builder is empty afterwards.
    Result<PropertyListValue> finish();

private:
    struct Open {
        qsizetype row;
        qsizetype entries;
    };

    void begin(Kind kind);
    void number(Kind kind, double value);
    void appendNumber(Kind kind, QByteArrayView text);
    quint32 takeKey();
    void addRow(PropertyListRow row);
    void addText(const Piece &piece, quint32 key);
    void fail(ErrorCode code, const QString &reason);

    PropertyListBuffer<char> m_text; // with the padding before it
    PropertyListBuffer<PropertyListRow> m_rows;
    PropertyListKeyTable m_keys;
    std::vector<Open> m_open;
    qsizetype m_sourceSize;
    qsizetype m_maximumRows = MostRows;
    Piece m_lastNumber;
    quint32 m_nextKey = PropertyListTape::NoKey;
    std::optional<Error> m_error;
};

} // namespace platform
