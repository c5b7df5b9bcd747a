#pragma once

#include "Platform/Foundation/PropertyList/PropertyListValue.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace platform {

/// Looks the same few keys up in dictionary after dictionary, as for a table with a column for each key. Several times
/// faster than asking each dictionary for each key: every dictionary is passed over once, while the memory of the next
/// ones is already on its way.
///
///     PropertyListColumns columns({"Name", "Artist"});
///     columns.visit(songs, [&](std::span<const PropertyListView> values) { add(values[0], values[1]); });
///
/// One object belongs to one thread at a time.
class PropertyListColumns
{
public:
    /// The most keys that can be looked up at once.
    static constexpr qsizetype MaximumKeys = 8;

    /// @param keys in UTF-8, at most `MaximumKeys`; the texts must outlive the object
    explicit PropertyListColumns(std::span<const char *const> keys);

    qsizetype count() const { return qsizetype(m_keys.size()); }

    /// Calls `take(values)` for each dictionary in order, with one value for each key: what `PropertyListView::value`
    /// would answer. The dictionaries may come from different documents; anything else among them gives null values.
    template <class Take>
    void visit(std::span<const PropertyListValue> dictionaries, const Take &take)
    {
        std::array<PropertyListView, BlockSize * MaximumKeys> values;
        while (!dictionaries.empty()) {
            const auto block = dictionaries.first(std::min(BlockSize, dictionaries.size()));
            lookUpBlock(block, values.data());
            for (size_t i = 0; i < block.size(); ++i)
                take(std::span<const PropertyListView>(values.data() + i * m_keys.size(), m_keys.size()));
            dictionaries = dictionaries.subspan(block.size());
        }
    }

    /// The values of one dictionary. They stay until the next call.
    std::span<const PropertyListView> values(const PropertyListView &dictionary);

private:
    static constexpr size_t BlockSize = 32;

    void lookUpBlock(std::span<const PropertyListValue> dictionaries, PropertyListView *values);
    void lookUp(const PropertyListView &dictionary, PropertyListView *values);
    bool lookUpInterned(const PropertyListView &dictionary, PropertyListView *values) const;
    quint32 passShortScalars(quint32 row, quint32 end, PropertyListView *values) const;
    void note(quint32 row, PropertyListView *values) const;
    static void fetchText(const PropertyListView &value);
    void prepare(const PropertyListView &dictionary);

    std::vector<const char *> m_keys;
    std::array<PropertyListView, MaximumKeys> m_values; // of the dictionary asked for alone
    const PropertyListDocument *m_document = nullptr; // that the following are prepared for
    std::vector<PropertyListKey> m_prepared;
    std::vector<quint32> m_wantedKeys; // numbers of the interned ones
    std::array<quint8, 0x1000> m_columnOfKey{}; // by the number of an interned key: column + 1, or 0
};

} // namespace platform
