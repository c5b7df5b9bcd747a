#include "ZRCommon/ZRSelection.h"

#include "SelectionTestSupport.h"
#include "Support/CountingNumber.h"
#include "Support/IndexSets.h"

// What operations cost for a host whose items know their places, counted in what is asked of its code.

namespace {

using testSupport::CountingNumber;
using testSupport::countingNumbers;

/// The item set of a host whose answers take constant time.
class NumberSet : public ZRSelectionItemSet
{
public:
    explicit NumberSet(const QList<platform::ObjectPointer> &numbers)
        : m_numbers(numbers)
    { }
    std::unique_ptr<ZRSelectionItemSet> clone() const override { return std::make_unique<NumberSet>(*this); }
    const platform::ObjectClass *itemClass() const override { return &CountingNumber::staticClass(); }
    quint32 absoluteItemCount() const override
    {
        ++queries;
        return quint32(m_numbers.size());
    }
    quint32 absoluteIndexOfItem(const platform::ObjectPointer &item) const override
    {
        ++queries;
        const auto value = quint32(static_cast<const CountingNumber &>(*item).value());
        return value < m_numbers.size() ? value : NotFound;
    }
    platform::ObjectPointer itemAtAbsoluteIndex(quint32 index) const override
    {
        ++queries;
        return m_numbers.value(index);
    }

    inline static qint64 queries = 0;

private:
    const QList<platform::ObjectPointer> &m_numbers;
};

class SelectionCost : public testing::TestWithParam<int>
{
protected:
    SelectionCost()
    {
        selection.selectionItemSets().push_back(std::make_unique<NumberSet>(numbers));
        selection.addKind<testSupport::Slide>(slides);
        selection.addObserver(&observer);
        selection.addItem(numbers[0]);
    }
    int count() const { return GetParam(); }
    ZRSelectionItemSet &set() { return *selection.selectionItemSets()[0]; }

    /// Counts what a call asks for, for each item: questions about places, and hashing and comparing.
    void expectCost(double mostQueries, double mostComparisons, const std::function<void()> &call)
    {
        observer.count = 0;
        NumberSet::queries = CountingNumber::calls = 0;
        call();
        EXPECT_LE(double(NumberSet::queries), mostQueries * count() + 8);
        EXPECT_LE(double(CountingNumber::calls), mostComparisons * count() + 8);
    }

    QList<platform::ObjectPointer> numbers = countingNumbers(GetParam());
    testSupport::Items slides;
    testSupport::HostSelection selection;
    testSupport::NotingObserver observer;
};

} // namespace

TEST_P(SelectionCost, OfSelectingAllIsLinear)
{
    expectCost(1, 2, [&] { selection.selectAll(); });
    EXPECT_EQ(observer.count, 1);
    EXPECT_EQ(set().selectedItemCount(), quint32(count()));
}

TEST_P(SelectionCost, OfExtendingIsLinearInBothDirections)
{
    expectCost(1, 2, [&] { selection.extendSelectionToItem(numbers.last()); });
    EXPECT_EQ(observer.count, 1);
    EXPECT_EQ(set().selectedItemCount(), quint32(count()));

    selection.setSingleSelectedItem(numbers.last());
    expectCost(1, 2, [&] { selection.adjustItemSelection(numbers.first(), true, false); });
    EXPECT_EQ(set().selectedItemCount(), quint32(count()));
    EXPECT_EQ(set().firstItem(), numbers.last());
}

TEST_P(SelectionCost, OfExtendingIsThatOfTheRunAlone)
{
    selection.setSingleSelectedItem(numbers[count() / 2]);
    expectCost(0, 0.05, [&] { selection.extendSelectionToItem(numbers[count() / 2 + 5]); });
    EXPECT_EQ(set().selectedItemCount(), 6u);
}

TEST_P(SelectionCost, OfSortingIsLinear)
{
    selection.selectAll();
    expectCost(1, 2, [&] { EXPECT_EQ(set().sortedItems(), numbers); });
    selection.removeAllSelections();
    selection.addItem(numbers.last());
    expectCost(1, 2, [&] { EXPECT_EQ(set().sortedItems().size(), 1); });
}

TEST_P(SelectionCost, OfTheSelectedRangeIsLinearInTheSelectedItems)
{
    selection.selectAll();
    expectCost(1, 0, [&] { EXPECT_EQ(set().selectedItemRange(), (platform::IndexRange{0, count()})); });
    selection.setSingleSelectedItem(numbers.last());
    expectCost(0, 0, [&] { EXPECT_EQ(set().selectedItemRange(), (platform::IndexRange{count() - 1, 1})); });
}

TEST_P(SelectionCost, OfValidatingIsLinearInTheSelectedItems)
{
    selection.selectAll();
    expectCost(1, 0, [&] { set().validateItems(); });
    EXPECT_EQ(set().selectedItemCount(), quint32(count()));
    numbers.clear(); // all have left
    expectCost(1, 4, [&] { set().validateItems(); });
    EXPECT_EQ(set().selectedItemCount(), 0u);
}

TEST_P(SelectionCost, OfMovingAndOfDeletingIsLinearInTheSelectedItems)
{
    selection.selectAll();
    selection.removeItem(numbers.last());
    selection.removeItem(numbers.first());
    const auto before = selection.clone();
    expectCost(1, 2, [&] { set().moveForward(); });
    EXPECT_EQ(set().singleSelectedItem(), numbers.last());
    selection.copyFrom(*before);
    expectCost(1, 2, [&] { set().moveBackward(); });
    EXPECT_EQ(set().singleSelectedItem(), numbers.first());
    selection.copyFrom(*before);
    expectCost(2, 2, [&] { set().aboutToClear(); });
    EXPECT_EQ(set().singleSelectedItem(), numbers.last());
}

TEST_P(SelectionCost, OfCopyingAndTakingOverHashesNothing)
{
    selection.selectAll();
    std::unique_ptr<ZRSelection> copy;
    expectCost(0, 0, [&] { copy = selection.clone(); });
    expectCost(0, 0, [&] { selection.copyFrom(*copy); });
    expectCost(0, 0, [&] { EXPECT_EQ(set().selectedItems().size(), size_t(count())); });
    expectCost(0, 2, [&] { EXPECT_TRUE(set().isEqual(*copy->selectionItemSets()[0])); });
}

TEST_P(SelectionCost, OfAClickAndOfAddingIsConstantWhateverIsSelected)
{
    selection.selectAll();
    expectCost(0, 0, [&] { selection.removeItem(numbers.last()); });
    expectCost(0, 0, [&] { selection.toggleSelectionOfItem(numbers.last()); });
    expectCost(0, 0, [&] { selection.adjustItemSelection(numbers.first(), false, false); });
    EXPECT_EQ(set().selectedItemCount(), 1u);
    expectCost(0, 0, [&] { selection.addItem(numbers.last()); });
}

INSTANTIATE_TEST_SUITE_P(Counts, SelectionCost, testing::Values(1'000, 100'000));
