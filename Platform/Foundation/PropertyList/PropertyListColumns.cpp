#include "Platform/Foundation/PropertyList/PropertyListColumns.h"
#include "Platform/Foundation/InstructionSet_p.h"
#include "Platform/Foundation/Prefetch_p.h"
#include "Platform/Foundation/PropertyList/PropertyListTape_p.h"

#include <algorithm>
#include <bit>

#if ZR_HAS_AVX2
#include <immintrin.h>
#endif

namespace platform {

using namespace PropertyListTape;

namespace {

/// How many dictionaries ahead memory is asked for, and how much of each.
constexpr size_t dictionariesAhead = 6;
constexpr size_t rowsAhead = 32;

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

#if ZR_HAS_AVX2

// Eight rows at a time, while all of them are short scalars. Notes those that stand under one of the keys.
template <class Note>
ZR_AVX2 quint32 passShortScalarsWithAvx2(const PropertyListRow *table, quint32 row, quint32 end,
                                         std::span<const quint32> wantedKeys, const Note &note)
{
    const auto *rows = reinterpret_cast<const float *>(table);
    const __m256i firstScalar = _mm256_set1_epi32(String);
    const __m256i lastScalar = _mm256_set1_epi32(UID);
    const __m256i saturated = _mm256_set1_epi32(int(Saturated << 16));
    for (; row + 8 <= end; row += 8) {
        // The lower halves of the rows: kind, key and length.
        const __m256 four = _mm256_loadu_ps(rows + 2 * size_t(row));
        const __m256 nextFour = _mm256_loadu_ps(rows + 2 * size_t(row) + 8);
        const __m256i halves =
            _mm256_permute4x64_epi64(_mm256_castps_si256(_mm256_shuffle_ps(four, nextFour, 0x88)), 0xD8);
        const __m256i kinds = _mm256_and_si256(halves, _mm256_set1_epi32(0xF));
        const __m256i isNoScalar =
            _mm256_or_si256(_mm256_cmpgt_epi32(firstScalar, kinds), _mm256_cmpgt_epi32(kinds, lastScalar));
        const __m256i isLong = _mm256_cmpeq_epi32(_mm256_max_epu32(halves, saturated), halves);
        if (!_mm256_testz_si256(_mm256_or_si256(isNoScalar, isLong), _mm256_set1_epi32(-1)))
            return row;
        const __m256i keys = _mm256_and_si256(halves, _mm256_set1_epi32(0xFFF0));
        __m256i isWanted = _mm256_setzero_si256();
        for (const quint32 wanted : wantedKeys)
            isWanted = _mm256_or_si256(isWanted, _mm256_cmpeq_epi32(keys, _mm256_set1_epi32(int(wanted << 4))));
        for (auto found = quint32(_mm256_movemask_ps(_mm256_castsi256_ps(isWanted))); found; found &= found - 1)
            note(row + quint32(std::countr_zero(found)));
    }
    return row;
}

#endif

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
    m_wantedKeys.clear();
    for (const char *key : m_keys) {
        m_prepared.push_back(dictionary.key(QUtf8StringView(key)));
        const quint32 number = m_prepared.back().m_number;
        if (number == NoKey)
            continue;
        m_columnOfKey[number] = quint8(m_prepared.size());
        m_wantedKeys.push_back(number);
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
    quint32 row = dictionary.m_row + 1;
    while (row < end) {
        row = passShortScalars(row, end, values);
        if (row == end)
            return true;
        const PropertyListRow content = rows[row];
        if (keyOf(content) == InlineKey || isKey(content))
            return false;
        note(row, values);
        row += isContainer(content) ? offsetOf(content) : 2;
    }
    return true;
}

void PropertyListColumns::note(quint32 row, PropertyListView *values) const
{
    if (const quint8 column = m_columnOfKey[keyOf(m_document->rows[row])])
        values[column - 1] = PropertyListView(m_document, row);
}

// Nearly all rows are short scalars: they are passed over in a loop of their own, which need not find out from each row
// where the next one is. Answers the first row that is none.
quint32 PropertyListColumns::passShortScalars(quint32 row, quint32 end, PropertyListView *values) const
{
#if ZR_HAS_AVX2
    if (bestInstructionSet() == InstructionSet::Avx2)
        row = passShortScalarsWithAvx2(m_document->rows, row, end, m_wantedKeys,
                                       [&](quint32 found) { note(found, values); });
#endif
    for (; row < end && isShortScalar(m_document->rows[row]); ++row)
        note(row, values);
    return row;
}

} // namespace platform
