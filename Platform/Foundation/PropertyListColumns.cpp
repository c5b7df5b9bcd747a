#include "Platform/Foundation/PropertyListColumns.h"
#include "Platform/Foundation/PropertyListTape_p.h"

#include <algorithm>

namespace platform {

using namespace PropertyListTape;

namespace {

/// How many dictionaries ahead memory is asked for, and how much of each.
constexpr size_t dictionariesAhead = 6;
constexpr size_t rowsAhead = 32;

void fetch([[maybe_unused]] const void *memory)
{
#if defined(__GNUC__)
    __builtin_prefetch(memory);
#endif
}

bool isShortScalar(PropertyListRow row)
{
    return !isContainer(row) && !isKey(row) && keyOf(row) != InlineKey && lengthOf(row) < Saturated;
}

void fetchRows(const PropertyListRow *rows)
{
    constexpr size_t rowsPerLine = 64 / sizeof(PropertyListRow);
    for (size_t row = 0; row < rowsAhead; row += rowsPerLine)
        fetch(rows + row);
}

} // namespace

PropertyListColumns::PropertyListColumns(std::span<const char *const> keys)
    : m_keys(keys.begin(), keys.end())
{
    Q_ASSERT(count() <= MaximumKeys);
}

void PropertyListColumns::fetchText(const PropertyListView &value)
{
    if (!value.isNull() && !isContainer(value.m_document->rows[value.m_row]))
        fetch(value.m_document->text + offsetOf(value.m_document->rows[value.m_row]));
}

void PropertyListColumns::prepare(const PropertyListView &dictionary)
{
    m_document = dictionary.m_document;
    m_prepared.clear();
    m_columnOfKey.fill(0);
    for (const char *key : m_keys) {
        m_prepared.push_back(dictionary.key(QUtf8StringView(key)));
        if (m_prepared.back().m_number != NoKey)
            m_columnOfKey[m_prepared.back().m_number] = quint8(m_prepared.size());
    }
}

void PropertyListColumns::lookUpBlock(std::span<const PropertyListValue> dictionaries, PropertyListView *values)
{
    for (size_t i = 0; i < dictionaries.size(); ++i, values += m_keys.size()) {
        if (i + dictionariesAhead < dictionaries.size()) {
            const PropertyListView &later = dictionaries[i + dictionariesAhead];
            if (later.m_document)
                fetchRows(later.m_document->rows + later.m_row);
        }
        lookUp(dictionaries[i], values);
        for (size_t column = 0; column < m_keys.size(); ++column)
            fetchText(values[column]);
    }
}

std::span<const PropertyListView> PropertyListColumns::values(const PropertyListView &dictionary)
{
    lookUp(dictionary, m_values.data());
    return std::span<const PropertyListView>(m_values).first(m_keys.size());
}

void PropertyListColumns::lookUp(const PropertyListView &dictionary, PropertyListView *values)
{
    std::fill_n(values, m_keys.size(), PropertyListView());
    if (!dictionary.isDictionary())
        return;
    if (dictionary.m_document != m_document)
        prepare(dictionary);
    if (lookUpInterned(dictionary, values))
        return;
    for (size_t column = 0; column < m_prepared.size(); ++column)
        values[column] = dictionary.value(m_prepared[column]);
}

// Answers false for a dictionary whose keys are not all in the document's table.
bool PropertyListColumns::lookUpInterned(const PropertyListView &dictionary, PropertyListView *values) const
{
    const PropertyListRow *const rows = m_document->rows;
    const quint32 end = dictionary.m_row + offsetOf(rows[dictionary.m_row]);
    const auto note = [&](PropertyListRow content, quint32 row) {
        if (const quint8 column = m_columnOfKey[keyOf(content)])
            values[column - 1] = PropertyListView(m_document, row);
    };
    quint32 row = dictionary.m_row + 1;
    while (row < end) {
        PropertyListRow content = rows[row];
        // Nearly all rows are short scalars. A loop of their own lets the processor read ahead in them, where computing
        // each step would make it wait for the row before.
        for (; isShortScalar(content); content = rows[row]) {
            note(content, row);
            if (++row == end)
                return true;
        }
        if (keyOf(content) == InlineKey || isKey(content))
            return false;
        note(content, row);
        row += isContainer(content) ? offsetOf(content) : 2;
    }
    return true;
}

} // namespace platform
