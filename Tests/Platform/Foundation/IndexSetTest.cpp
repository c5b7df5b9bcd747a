#include "Platform/Foundation/IndexSet.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Support/IndexSets.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <random>
#include <set>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using platform::IndexRange;
using platform::IndexSet;
using platform::InternalInconsistency;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testSupport::indexes;

constexpr qint64 farLength = 0x7fffffff;

std::vector<qint64> listed(const IndexSet &set)
{
    return std::vector<qint64>(set.begin(), set.end());
}

IndexSet everySecond(qint64 count)
{
    IndexSet result;
    for (qint64 i = 0; i < count; ++i)
        result.addIndex(2 * i);
    return result;
}

TEST(IndexSet, IsEmptyAtFirst)
{
    const IndexSet set;
    EXPECT_TRUE(set.isEmpty());
    EXPECT_EQ(set.count(), 0);
    EXPECT_THAT(set.ranges(), IsEmpty());
    EXPECT_EQ(set.begin(), set.end());
    EXPECT_FALSE(set.contains(0));
}

TEST(IndexSet, AnswersNotFoundForTheFirstAndLastIndexOfNone)
{
    EXPECT_EQ(IndexSet::NotFound, 0x7fffffff);
    EXPECT_EQ(IndexSet().firstIndex(), IndexSet::NotFound);
    EXPECT_EQ(IndexSet().lastIndex(), IndexSet::NotFound);
}

TEST(IndexSet, KnowsItsFirstAndLastIndex)
{
    const IndexSet set = indexes({7, 3, 12});
    EXPECT_EQ(set.firstIndex(), 3);
    EXPECT_EQ(set.lastIndex(), 12);
    EXPECT_EQ(set.count(), 3);
}

TEST(IndexSet, ListsItsIndexesInAscendingOrder)
{
    EXPECT_THAT(listed(indexes({9, 1, 2, 5, 4})), ElementsAre(1, 2, 4, 5, 9));
}

TEST(IndexSet, IteratesInBothWaysOfStepping)
{
    const IndexSet set = indexes({1, 2, 8});
    auto position = set.begin();
    EXPECT_EQ(*position++, 1);
    EXPECT_EQ(*position, 2);
    EXPECT_EQ(*++position, 8);
    EXPECT_EQ(++position, set.end());
}

TEST(IndexSet, KeepsNeighboursAsOneRange)
{
    EXPECT_THAT(indexes({4, 5}).ranges(), ElementsAre(IndexRange{4, 2}));
    EXPECT_THAT(indexes({5, 4}).ranges(), ElementsAre(IndexRange{4, 2}));
    EXPECT_THAT(indexes({4, 6, 5}).ranges(), ElementsAre(IndexRange{4, 3}));
    EXPECT_THAT(indexes({4, 6}).ranges(), ElementsAre(IndexRange{4, 1}, IndexRange{6, 1}));
}

TEST(IndexSet, HoldsARangeFarBeyondAnyContentAsOneEntry)
{
    const IndexSet set(IndexRange{5, farLength});
    EXPECT_THAT(set.ranges(), ElementsAre(IndexRange{5, farLength}));
    EXPECT_EQ(set.count(), farLength);
    EXPECT_EQ(set.lastIndex(), 5 + qint64(farLength) - 1);
    EXPECT_TRUE(set.contains(0x80000000LL));
    EXPECT_FALSE(set.contains(4));
}

TEST(IndexSet, ReachesToTheHighestIndex)
{
    IndexSet set(IndexRange{0, IndexSet::MaximumIndex + 1});
    EXPECT_TRUE(set.contains(IndexSet::MaximumIndex));
    EXPECT_EQ(set.lastIndex(), IndexSet::MaximumIndex);
    set.removeIndex(7);
    EXPECT_EQ(set.count(), IndexSet::MaximumIndex);
    set.addRange({7, IndexSet::MaximumIndex - 6});
    EXPECT_EQ(set, IndexSet(IndexRange{0, IndexSet::MaximumIndex + 1}));
    EXPECT_EQ(set.subtract(IndexSet(IndexRange{3, IndexSet::MaximumIndex - 2})), IndexSet(IndexRange{0, 3}));
}

TEST(IndexSet, AddingARangeSwallowsWhatItCoversAndTouches)
{
    IndexSet set = indexes({1, 4, 6, 9, 20});
    set.addRange({5, 4});
    EXPECT_THAT(set.ranges(), ElementsAre(IndexRange{1, 1}, IndexRange{4, 6}, IndexRange{20, 1}));
    set.addRange({5, 2});
    EXPECT_THAT(set.ranges(), ElementsAre(IndexRange{1, 1}, IndexRange{4, 6}, IndexRange{20, 1}));
    set.addRange({0, 100});
    EXPECT_THAT(set.ranges(), ElementsAre(IndexRange{0, 100}));
}

TEST(IndexSet, AnEmptyRangeAddsAndRemovesNothing)
{
    IndexSet set = indexes({3, 4});
    set.addRange({0, 0});
    set.addRange({90, 0});
    set.removeRange({3, 0});
    set.removeRange({4, -1});
    EXPECT_EQ(set, indexes({3, 4}));
    EXPECT_TRUE(IndexSet(IndexRange{0, 0}).isEmpty());
}

TEST(IndexSet, RemovingFromTheMiddleLeavesBothEnds)
{
    IndexSet set(IndexRange{2, 8});
    set.removeRange({4, 3});
    EXPECT_THAT(set.ranges(), ElementsAre(IndexRange{2, 2}, IndexRange{7, 3}));
    set.removeRange({3, 5});
    EXPECT_THAT(set.ranges(), ElementsAre(IndexRange{2, 1}, IndexRange{8, 2}));
    set.removeIndex(2);
    EXPECT_THAT(set.ranges(), ElementsAre(IndexRange{8, 2}));
}

TEST(IndexSet, RemovingWhatIsNotThereDoesNothing)
{
    IndexSet set = indexes({3, 9});
    set.removeIndex(-1);
    set.removeIndex(4);
    set.removeRange({4, 5});
    set.removeRange({10, farLength});
    set.removeRange({-4, 2});
    EXPECT_EQ(set, indexes({3, 9}));
}

TEST(IndexSet, RemovingARangeThatReachesOutsideRemovesTheRest)
{
    IndexSet set = indexes({0, 3, 9});
    set.removeRange({-4, 5});
    EXPECT_EQ(set, indexes({3, 9}));
    set.removeRange({4, std::numeric_limits<qint64>::max()});
    EXPECT_EQ(set, indexes({3}));
}

TEST(IndexSet, NegativeIndexesAreInNoSet)
{
    EXPECT_FALSE(IndexSet(IndexRange{0, 10}).contains(-1));
    EXPECT_FALSE(IndexSet(IndexRange{0, 10}).contains(std::numeric_limits<qint64>::min()));
}

TEST(IndexSet, RefusesIndexesThatCannotBe)
{
    IndexSet set = indexes({3});
    EXPECT_THROW(set.addIndex(-1), InternalInconsistency);
    EXPECT_THROW(set.addRange({2, -1}), InternalInconsistency);
    EXPECT_THROW(set.addRange({2, IndexSet::MaximumIndex}), InternalInconsistency);
    EXPECT_THROW(set.addIndex(std::numeric_limits<qint64>::max()), InternalInconsistency);
    EXPECT_THROW(set.insertSpace(-1, 2), InternalInconsistency);
    EXPECT_THROW(set.insertSpace(1, -2), InternalInconsistency);
    EXPECT_THROW(set.removeSpace(-1, 2), InternalInconsistency);
    EXPECT_THROW(set.removeSpace(1, -2), InternalInconsistency);
    EXPECT_EQ(set, indexes({3}));
}

TEST(IndexSet, CombinesWithAnotherSet)
{
    const IndexSet a = indexes({0, 1, 2, 3, 8, 9, 20});
    const IndexSet b = indexes({2, 3, 4, 10, 20, 30});
    EXPECT_EQ(IndexSet(a).unite(b), indexes({0, 1, 2, 3, 4, 8, 9, 10, 20, 30}));
    EXPECT_EQ(IndexSet(a).subtract(b), indexes({0, 1, 8, 9}));
    EXPECT_EQ(IndexSet(a).intersect(b), indexes({2, 3, 20}));
}

TEST(IndexSet, CombinesWithItselfAndWithNothing)
{
    const IndexSet set = indexes({2, 3, 7});
    IndexSet same = set;
    EXPECT_EQ(same.unite(same), set);
    EXPECT_EQ(same.intersect(same), set);
    EXPECT_TRUE(same.subtract(same).isEmpty());
    EXPECT_EQ(IndexSet().unite(set), set);
    EXPECT_EQ(IndexSet(set).subtract(IndexSet()), set);
    EXPECT_TRUE(IndexSet(set).intersect(IndexSet()).isEmpty());
}

TEST(IndexSet, InsertedRowsSplitTheRangeAroundThem)
{
    IndexSet set = indexes({3, 4, 5});
    set.insertSpace(4, 2);
    EXPECT_EQ(set, indexes({3, 6, 7}));
}

TEST(IndexSet, InsertedRowsMoveOnlyWhatStandsBehindThem)
{
    IndexSet set = indexes({3, 4, 8});
    set.insertSpace(5, 2);
    EXPECT_EQ(set, indexes({3, 4, 10}));
    set.insertSpace(0, 1);
    EXPECT_EQ(set, indexes({4, 5, 11}));
    set.insertSpace(12, 5);
    set.insertSpace(4, 0);
    EXPECT_EQ(set, indexes({4, 5, 11}));
}

TEST(IndexSet, RemovedRowsLeaveAndTheOthersCloseUp)
{
    IndexSet set = indexes({3, 4, 6});
    set.removeSpace(4, 2);
    EXPECT_THAT(set.ranges(), ElementsAre(IndexRange{3, 2}));
    set.removeSpace(0, 2);
    EXPECT_THAT(set.ranges(), ElementsAre(IndexRange{1, 2}));
    set.removeSpace(1, 0);
    set.removeSpace(3, 8);
    EXPECT_THAT(set.ranges(), ElementsAre(IndexRange{1, 2}));
}

TEST(IndexSet, DropsWhatInsertedRowsPushPastTheHighestIndex)
{
    IndexSet set(IndexRange{IndexSet::MaximumIndex - 3, 4});
    set.insertSpace(0, 2);
    EXPECT_THAT(set.ranges(), ElementsAre(IndexRange{IndexSet::MaximumIndex - 1, 2}));
    set.insertSpace(7, std::numeric_limits<qint64>::max());
    EXPECT_TRUE(set.isEmpty());
}

TEST(IndexSet, RemovedRowsMayReachPastTheHighestIndex)
{
    IndexSet set = indexes({2, 9});
    set.removeSpace(5, std::numeric_limits<qint64>::max());
    EXPECT_EQ(set, indexes({2}));
}

TEST(IndexSet, ACopyIsOfItsOwn)
{
    const IndexSet set = indexes({1, 5});
    IndexSet copy = set;
    EXPECT_EQ(copy.ranges().constData(), set.ranges().constData()) << "a copy costs no memory";
    copy.removeIndex(5);
    EXPECT_EQ(set, indexes({1, 5}));
    EXPECT_NE(copy, set);
}

TEST(IndexSet, BuildsAMillionIndexesInAscendingOrderAtOnce)
{
    EXPECT_EQ(everySecond(1'000'000).ranges().size(), 1'000'000);
}

/// The same set twice: as tested, and as the standard library keeps one.
class TwinSets
{
public:
    explicit TwinSets(quint32 seed)
        : m_random(seed)
    { }

    void step()
    {
        const qint64 a = number(200);
        const qint64 b = number(12);
        switch (number(8)) {
        case 0:
            add({a, 1});
            break;
        case 1:
            add({a, b});
            break;
        case 2:
            remove({a, 1});
            break;
        case 3:
            remove({a, b});
            break;
        case 4:
            combine();
            break;
        case 5:
            insertSpace(a, b);
            break;
        case 6:
            removeSpace(a, b);
            break;
        default:
            removeSpace(number(4), 30);
            break; // keeps the sets from running away
        }
    }

    void compare()
    {
        ASSERT_THAT(listed(m_tested), ElementsAreArray(m_expected));
        ASSERT_EQ(m_tested.count(), qint64(m_expected.size()));
        ASSERT_EQ(m_tested.firstIndex(), m_expected.empty() ? IndexSet::NotFound : *m_expected.begin());
        ASSERT_EQ(m_tested.lastIndex(), m_expected.empty() ? IndexSet::NotFound : *m_expected.rbegin());
        const qint64 probe = number(220);
        ASSERT_EQ(m_tested.contains(probe), m_expected.contains(probe));
        qint64 reached = -1;
        for (const IndexRange &range : m_tested.ranges()) {
            ASSERT_GT(range.length, 0);
            ASSERT_GT(range.location, reached) << "ranges overlap or touch";
            reached = range.end();
        }
    }

private:
    qint64 number(qint64 limit) { return std::uniform_int_distribution<qint64>(0, limit - 1)(m_random); }

    void add(const IndexRange &range)
    {
        m_tested.addRange(range);
        for (qint64 i = range.location; i < range.end(); ++i)
            m_expected.insert(i);
    }
    void remove(const IndexRange &range)
    {
        m_tested.removeRange(range);
        for (qint64 i = range.location; i < range.end(); ++i)
            m_expected.erase(i);
    }
    void combine()
    {
        TwinSets other(m_random());
        for (int i = 0; i < 8; ++i)
            other.add({other.number(200), other.number(30)});
        std::set<qint64> result;
        const auto into = std::inserter(result, result.end());
        const auto &[a, b] = std::tie(m_expected, other.m_expected);
        switch (number(3)) {
        case 0:
            m_tested.unite(other.m_tested);
            std::set_union(a.begin(), a.end(), b.begin(), b.end(), into);
            break;
        case 1:
            m_tested.subtract(other.m_tested);
            std::set_difference(a.begin(), a.end(), b.begin(), b.end(), into);
            break;
        default:
            m_tested.intersect(other.m_tested);
            std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), into);
        }
        m_expected = result;
    }
    void insertSpace(qint64 at, qint64 count)
    {
        m_tested.insertSpace(at, count);
        std::set<qint64> result;
        for (const qint64 index : m_expected)
            result.insert(index < at ? index : index + count);
        m_expected = result;
    }
    void removeSpace(qint64 at, qint64 count)
    {
        m_tested.removeSpace(at, count);
        std::set<qint64> result;
        for (const qint64 index : m_expected) {
            if (index < at || index >= at + count)
                result.insert(index < at ? index : index - count);
        }
        m_expected = result;
    }

    std::mt19937 m_random;
    IndexSet m_tested;
    std::set<qint64> m_expected;
};

TEST(IndexSet, AgreesWithTheStandardSetThroughAHundredThousandRandomSteps)
{
    TwinSets sets(20240611);
    for (int i = 0; i < 100'000; ++i) {
        sets.step();
        ASSERT_NO_FATAL_FAILURE(sets.compare()) << "after step " << i;
    }
}

} // namespace
