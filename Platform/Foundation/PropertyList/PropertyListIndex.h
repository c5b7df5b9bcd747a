#pragma once

#include "Platform/Foundation/PropertyList/PropertyListValue.h"

#include <functional>
#include <vector>

namespace platform {

/// Finds entries of one large dictionary in constant time. Building it is linear in the entries; it takes 12 bytes for
/// each key that is a decimal number, 48 for others. Keeps nothing alive: the document must outlive it. Immutable: any
/// thread.
class PropertyListIndex
{
public:
    PropertyListIndex() = default;
    explicit PropertyListIndex(const PropertyListView &dictionary);
    /// Finds only the values that are accepted. Of a key that occurs twice the last value decides.
    PropertyListIndex(const PropertyListView &dictionary, const std::function<bool(const PropertyListView &)> &accept);

    /// The value under the key, of several the last; null when there is none.
    PropertyListView value(QAnyStringView key) const;
    /// The value under the decimal text of the number. Faster than asking with the text.
    PropertyListView value(qint64 number) const;

private:
    struct NumberSlot {
        quint32 number = 0;
        quint32 valueRow = 0; // 0 for an empty slot, since row 0 is the root
    };
    struct TextSlot {
        quint32 hash = 0;
        quint32 valueRow = 0;
        QByteArray key; // borrowed from the document unless it is escaped there
    };
    static constexpr quint32 Rejected = 0xFFFF'FFFF; // in place of a value's row

    size_t slotOf(quint32 number) const;
    size_t slotOf(quint32 hash, const QByteArray &key) const;
    PropertyListView valueAt(quint32 row) const;

    const PropertyListDocument *m_document = nullptr;
    std::vector<NumberSlot> m_numbers; // keys that are the decimal text of a number
    std::vector<TextSlot> m_texts; // all others
};

} // namespace platform
