#pragma once

#include <QAnyStringView>
#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariant>

#include <iterator>
#include <optional>
#include <span>
#include <utility>

/// @file
/// The values of a property list that has been read: light handles into an immutable document, which is a private copy
/// of the file's text and 8 bytes for every value. Strings, numbers, dates and data are decoded when they are asked
/// for. Every scalar is checked while reading, so that decoding cannot fail: a wrong type gives the default, never an
/// error.
///
/// Thread safety: documents are immutable. Handles may be copied, read and destroyed on any thread at the same time;
/// one handle object, like a QString, belongs to one thread at a time.

namespace platform {

class PropertyListDocument;
class PropertyListValue;

/// What a property list can hold.
enum class PropertyListType : quint8 {
    Null, ///< No value: a lookup found nothing, or a handle was default-constructed.
    Dictionary,
    Array,
    String,
    Integer, ///< From -2^63 to 2^64-1.
    Real,
    Boolean,
    Date,
    Data,
    UID, ///< A reference number in a keyed archive: an XML dictionary whose one key is "CF$UID", or a binary UID.
};

/// A key looked up once, for finding it in many dictionaries of one document without comparing text.
/// Made by `PropertyListView::key`.
class PropertyListKey
{
public:
    PropertyListKey() = default;

private:
    friend class PropertyListView;
    friend class PropertyListColumns;
    quint32 m_number = 0xFFE; // in the document's key table; 0xFFE: not there
    std::optional<quint32> m_decimal; // the number that the text is the decimal form of
    QByteArray m_text; // UTF-8, for keys that stand in their dictionary
};

/// A borrowed handle to one value of a document, 16 bytes, trivially copyable. Valid only while a `PropertyListValue`
/// of the same document lives, as a QStringView is only valid with its QString.
class PropertyListView
{
public:
    PropertyListView() = default;

    PropertyListType type() const;
    bool isNull() const { return !m_document; }
    bool isDictionary() const { return type() == PropertyListType::Dictionary; }
    bool isArray() const { return type() == PropertyListType::Array; }
    bool isString() const { return type() == PropertyListType::String; }

    // Scalars. Each answers its default when the value is absent or of another type.

    /// The string; empty for anything else.
    QString toString() const;
    /// The string as UTF-8, copied; empty for anything else.
    QByteArray toUtf8() const;
    /// The same without a copy, valid as long as the document; nothing for anything else.
    std::optional<QByteArrayView> plainUtf8() const;
    /// Length of `toUtf8` in bytes, known without touching the text; 0 for anything else.
    qsizetype storedLength() const;
    /// The integer, or a real cut towards zero. An integer above 2^63-1 answers the default; see `toUnsigned`.
    qint64 toInteger(qint64 fallback = 0) const;
    /// The integer; negative ones answer the default.
    quint64 toUnsigned(quint64 fallback = 0) const;
    /// The real, or the integer as a real.
    double toReal(double fallback = 0) const;
    /// The boolean; an integer or real counts as true when it is not 0.
    bool toBoolean(bool fallback = false) const;
    /// The date in UTC, to the millisecond; invalid for anything else and beyond what a QDateTime can hold. Dates that
    /// the calendar lacks (a 32nd day) are carried on into the next month, and dates before 1582-10-15 are taken from
    /// the Julian calendar, as the formats' own readers do. (QDateTime itself shows such dates in the Gregorian one.)
    QDateTime toDateTime() const;
    /// The date in seconds since 2001-01-01T00:00:00Z, the formats' own epoch; nothing for anything else.
    std::optional<double> toReferenceSeconds() const;
    /// The data's bytes; empty for anything else.
    QByteArray toData() const;
    /// The reference number; 0 for anything else.
    quint64 toUid() const;

    /// The value and all it holds as Qt's types: QVariantMap, QVariantList, QString, qlonglong (qulonglong above
    /// 2^63-1), double, bool, QDateTime, QByteArray, PropertyListUid. Copies everything.
    QVariant toVariant() const;

    // Containers

    /// Number of entries, 0 for scalars. Constant for fewer than 65,535 entries, linear otherwise. A key that a
    /// dictionary holds twice counts twice.
    qsizetype count() const;
    bool isEmpty() const { return count() == 0; }
    /// The value under the key; null when there is none or this is no dictionary. Of a key that occurs twice the last
    /// one counts. Linear in the dictionary's entries, without touching text: for many lookups in one large
    /// dictionary make a `PropertyListIndex`, for the same key in many dictionaries a `PropertyListKey`.
    PropertyListView value(QAnyStringView key) const;
    PropertyListView value(const PropertyListKey &key) const;
    bool contains(QAnyStringView key) const { return !value(key).isNull(); }
    /// The key prepared for lookups in this document's dictionaries. It must not be used with another document.
    PropertyListKey key(QAnyStringView text) const;
    /// The element of an array; null outside it. Linear in the index: walk arrays with `elements`.
    PropertyListView at(qsizetype index) const;

    class ElementIterator;
    class EntryIterator;
    template <class Iterator>
    struct Range {
        Iterator first, last;
        Iterator begin() const { return first; }
        Iterator end() const { return last; }
    };
    /// The elements of an array in order; nothing for other types.
    Range<ElementIterator> elements() const;
    /// The entries of a dictionary in document order; nothing for other types.
    Range<EntryIterator> entries() const;

    /// Whether both belong to one document, so that a key prepared with one serves the other.
    bool sharesDocumentWith(const PropertyListView &other) const { return m_document == other.m_document; }
    /// The same for two handles to one place of one document, different for any other two; nullptr for null. For
    /// telling repeated values apart from equal ones, which `==` does not do, in constant time.
    const void *identity() const;

    /// Whether both hold equal values of equal types. Dictionaries are compared without regard to order. Integers
    /// compare by value, reals too (a NaN equals none), an integer never equals a real. Of a key that occurs twice the
    /// last one counts. Two null handles are equal. Linear in what the values hold.
    friend bool operator==(const PropertyListView &a, const PropertyListView &b) { return equal(a, b); }

protected:
    PropertyListView(const PropertyListDocument *document, quint32 row)
        : m_document(document)
        , m_row(row)
    { }
    static bool equal(const PropertyListView &a, const PropertyListView &b);

    const PropertyListDocument *m_document = nullptr;
    quint32 m_row = 0;

private:
    friend class PropertyListDocument;
    friend class PropertyListColumns;
    friend class PropertyListIndex;
    friend class PropertyListValue;
};

/// A handle to one value that keeps its document alive. As cheap to copy as a QString.
class PropertyListValue : public PropertyListView
{
public:
    PropertyListValue() = default;
    /// Keeps the document of a borrowed handle alive.
    explicit PropertyListValue(const PropertyListView &view);
    PropertyListValue(const PropertyListValue &other);
    PropertyListValue(PropertyListValue &&other) noexcept;
    PropertyListValue &operator=(const PropertyListValue &other);
    PropertyListValue &operator=(PropertyListValue &&other) noexcept;
    ~PropertyListValue();

    /// As in the view, but owning, so that lookups may be chained from a temporary.
    PropertyListValue value(QAnyStringView key) const { return PropertyListValue(PropertyListView::value(key)); }
    PropertyListValue value(const PropertyListKey &key) const
    {
        return PropertyListValue(PropertyListView::value(key));
    }
    PropertyListValue at(qsizetype index) const { return PropertyListValue(PropertyListView::at(index)); }

    /// As in the view. Not from a temporary, which would be gone with its document while a loop still walks.
    Range<ElementIterator> elements() const &;
    Range<ElementIterator> elements() const && = delete;
    Range<EntryIterator> entries() const &;
    Range<EntryIterator> entries() const && = delete;

    /// The values at the positions, in the order of the positions. Cheaper than copying one after the other, since
    /// neighbours that share a document are counted there at once.
    static QList<PropertyListValue> select(const QList<PropertyListValue> &values, std::span<const quint32> positions);

    /// Bytes that the whole document occupies: its text and 8 for every value.
    qsizetype memoryUse() const;
};

/// Walks an array: dereferences to the element.
class PropertyListView::ElementIterator
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = PropertyListView;
    using difference_type = qptrdiff;
    using pointer = void;
    using reference = PropertyListView;

    ElementIterator() = default;
    PropertyListView operator*() const { return PropertyListView(m_document, m_row); }
    ElementIterator &operator++();
    ElementIterator operator++(int) { return std::exchange(*this, std::next(*this)); }
    friend bool operator==(const ElementIterator &a, const ElementIterator &b) { return a.m_row == b.m_row; }

private:
    friend class PropertyListView;
    ElementIterator(const PropertyListDocument *document, quint32 row)
        : m_document(document)
        , m_row(row)
    { }

    const PropertyListDocument *m_document = nullptr;
    quint32 m_row = 0;
};

/// Walks a dictionary: dereferences to itself, with `key` and `value`. A copy stays at its entry.
class PropertyListView::EntryIterator
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = EntryIterator;
    using difference_type = qptrdiff;
    using pointer = void;
    using reference = const EntryIterator &;

    EntryIterator() = default;
    const EntryIterator &operator*() const { return *this; }
    EntryIterator &operator++();
    EntryIterator operator++(int) { return std::exchange(*this, std::next(*this)); }
    friend bool operator==(const EntryIterator &a, const EntryIterator &b) { return a.m_row == b.m_row; }

    QString key() const;
    /// The key as UTF-8. Borrows the document's bytes (QByteArray::fromRawData) and must not outlive it; copy it with
    /// `QByteArray::detach` or use `key` to keep it.
    QByteArray utf8Key() const;
    PropertyListView value() const { return PropertyListView(m_document, m_valueRow); }

private:
    friend class PropertyListView;
    friend class PropertyListIndex;
    EntryIterator(const PropertyListDocument *document, quint32 row);

    const PropertyListDocument *m_document = nullptr;
    quint32 m_row = 0; // of the key row, or of the value's where the key is interned
    quint32 m_valueRow = 0;
};

inline PropertyListView::Range<PropertyListView::ElementIterator> PropertyListValue::elements() const &
{
    return PropertyListView::elements();
}

inline PropertyListView::Range<PropertyListView::EntryIterator> PropertyListValue::entries() const &
{
    return PropertyListView::entries();
}

/// A reference number of a keyed archive, as it stands in a QVariant.
struct PropertyListUid {
    quint64 number = 0;
    friend bool operator==(const PropertyListUid &a, const PropertyListUid &b) { return a.number == b.number; }
};

} // namespace platform

Q_DECLARE_METATYPE(platform::PropertyListUid)
Q_DECLARE_TYPEINFO(platform::PropertyListValue, Q_RELOCATABLE_TYPE);
