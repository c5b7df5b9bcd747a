#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QByteArrayView>
#include <Qt>

#include <span>
#include <vector>

/// Sorting by keys without moving what is sorted: each function answers the positions of its keys in sorted
/// order. Equal keys stay in the order in which they were given, in a descending order too. Any thread.
namespace platform::StableOrder {

/// Positions in the order of the numbers.
std::vector<quint32> ofNumbers(std::span<const qint64> numbers, Qt::SortOrder order);

/// Positions in the order of the texts' bytes, unsigned; a text stands after its own beginnings. Texts hold
/// no byte 0xFF, as UTF-8 never does. Compares eight bytes at a time (radix sort from the most significant
/// word), so that the cost grows with the bytes by which the texts differ, at worst with all their bytes.
std::vector<quint32> ofTexts(std::span<const QByteArrayView> texts, Qt::SortOrder order);

/// Numbers that compare as the texts do: for each text how many of them stand before it in that order. Equal texts have
/// equal ranks. Costs what `ofTexts` costs.
std::vector<qint64> ranksOfTexts(std::span<const QByteArrayView> texts);

} // namespace platform::StableOrder
