#include "Platform/Foundation/StableOrder_p.h"

#include <QByteArray>

#include <algorithm>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

namespace {

using namespace platform;

// Compares signed and by length as the standard library does, which for QByteArray means unsigned bytes.
template <class Key>
std::vector<quint32> slowly(const std::vector<Key> &keys, Qt::SortOrder order)
{
    std::vector<quint32> positions(keys.size());
    std::iota(positions.begin(), positions.end(), 0U);
    std::stable_sort(positions.begin(), positions.end(), [&](quint32 a, quint32 b) {
        return order == Qt::AscendingOrder ? keys[a] < keys[b] : keys[b] < keys[a];
    });
    return positions;
}

std::vector<quint32> orderOf(const std::vector<QByteArray> &texts, Qt::SortOrder order)
{
    const std::vector<QByteArrayView> views(texts.begin(), texts.end());
    return StableOrder::ofTexts(views, order);
}

TEST(StableOrder, OfNumbersAgreesWithAStableSort)
{
    std::mt19937_64 random(5);
    for (const size_t count : {0, 1, 2, 17, 1023, 1024, 5000}) {
        for (const int shift : {0, 20, 50, 61}) {
            std::vector<qint64> numbers(count);
            for (qint64 &number : numbers)
                number = qint64(random()) >> shift;
            for (const auto order : {Qt::AscendingOrder, Qt::DescendingOrder})
                ASSERT_EQ(StableOrder::ofNumbers(numbers, order), slowly(numbers, order)) << count << " " << shift;
        }
    }
}

TEST(StableOrder, OfTextsAgreesWithAStableSort)
{
    std::mt19937 random(6);
    for (const size_t count : {0, 1, 2, 17, 1023, 1024, 6000}) {
        for (const int letters : {1, 2, 26, 0xF4}) {
            std::vector<QByteArray> texts(count);
            for (QByteArray &text : texts) {
                for (auto i = random() % 30; i > 0; --i)
                    text += char(random() % quint32(letters));
            }
            for (const auto order : {Qt::AscendingOrder, Qt::DescendingOrder})
                ASSERT_EQ(orderOf(texts, order), slowly(texts, order)) << count << " " << letters;
        }
    }
}

TEST(StableOrder, RanksTextsByHowManyStandBefore)
{
    const std::vector<QByteArrayView> texts{"b", "a", QByteArrayView(), "b", "c", "", "a"};
    EXPECT_EQ(StableOrder::ranksOfTexts(texts), (std::vector<qint64>{4, 2, 0, 4, 6, 0, 2}));
    EXPECT_TRUE(StableOrder::ranksOfTexts({}).empty());
}

TEST(StableOrder, PutsATextBehindItsOwnBeginningsAndTellsZerosFromTheEnd)
{
    const std::vector<QByteArray> texts{"abcdefghi", QByteArray("abcdefgh\0", 9), "abcdefgh", "abcdefg",
                                        "",          QByteArray("\0", 1)};
    EXPECT_EQ(orderOf(texts, Qt::AscendingOrder), (std::vector<quint32>{4, 5, 3, 2, 1, 0}));
    EXPECT_EQ(orderOf(texts, Qt::DescendingOrder), (std::vector<quint32>{0, 1, 2, 3, 5, 4}));
}

TEST(StableOrder, KeepsTiesInTheirOrderBothWays)
{
    const std::vector<QByteArray> texts{"b", "a", "b", "a"};
    EXPECT_EQ(orderOf(texts, Qt::AscendingOrder), (std::vector<quint32>{1, 3, 0, 2}));
    EXPECT_EQ(orderOf(texts, Qt::DescendingOrder), (std::vector<quint32>{0, 2, 1, 3}));
}

TEST(StableOrder, TakesLongEqualBeginningsWithoutDeepRecursion)
{
    std::vector<QByteArray> texts(3, QByteArray(4'000'000, 'x'));
    texts[0] += 'c';
    texts[2] += 'b';
    EXPECT_EQ(orderOf(texts, Qt::AscendingOrder), (std::vector<quint32>{1, 2, 0}));
}

} // namespace
