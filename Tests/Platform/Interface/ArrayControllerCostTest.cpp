#include "Platform/Interface/ArrayController.h"

#include "Support/CountingNumber.h"
#include "Support/IndexSets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using platform::ArrayController;
using testing::Lt;

using platform::ObjectPointer;
using testSupport::CountingNumber;
using testSupport::countingNumbers;
using Objects = QList<ObjectPointer>;

class ArrayControllerCost : public testing::TestWithParam<int>
{
protected:
    /// The calls that an operation made for each object.
    template <class Operation>
    double callsPerObject(Operation operation)
    {
        ArrayController controller;
        controller.setContent(countingNumbers(GetParam()));
        controller.setSelectionIndexes(testSupport::everySecondOf(GetParam()));
        CountingNumber::calls = 0;
        operation(controller);
        return double(CountingNumber::calls) / GetParam();
    }
};

TEST_P(ArrayControllerCost, OfSelectingEqualObjectsIsLinear)
{
    const Objects twins = countingNumbers(GetParam());
    EXPECT_THAT(callsPerObject([&](auto &controller) { controller.setSelectedObjects(twins); }), Lt(5));
    EXPECT_THAT(callsPerObject([&](auto &controller) { controller.addSelectedObjects(twins); }), Lt(5));
    EXPECT_THAT(callsPerObject([&](auto &controller) { controller.removeSelectedObjects(twins); }), Lt(5));
}

TEST_P(ArrayControllerCost, OfSelectingAllNeedsNoComparison)
{
    const auto selectAll = [](auto &controller) { controller.setSelectedObjects(controller.arrangedObjects()); };
    EXPECT_EQ(callsPerObject(selectAll), 0);
}

TEST_P(ArrayControllerCost, OfChangingTheContentIsLinear)
{
    const Objects twins = countingNumbers(GetParam());
    const Objects reversed(twins.crbegin(), twins.crend());
    EXPECT_THAT(callsPerObject([&](auto &controller) { controller.setContent(reversed); }), Lt(5));
    EXPECT_THAT(callsPerObject([&](auto &controller) { controller.removeObjects(reversed.first(twins.size() - 1)); }),
                Lt(5));
    EXPECT_THAT(callsPerObject([&](auto &controller) { controller.moveObjects(reversed, 0); }), Lt(5));
    const auto removeSelected = [](auto &controller) {
        controller.removeObjectsAtArrangedIndexes(controller.selectionIndexes());
        EXPECT_EQ(controller.rowCount(), GetParam() / 2);
    };
    EXPECT_EQ(callsPerObject(removeSelected), 0);
}

TEST_P(ArrayControllerCost, OfChangingOneEndIsNothingForTheOthers)
{
    const auto takeFromFrontToBack = [](auto &controller) {
        for (int i = 0; i < GetParam(); ++i) {
            const ObjectPointer first = controller.arrangedObjects().constFirst();
            controller.setSelectionIndex(5);
            controller.removeObjectAtArrangedIndex(0);
            controller.addObject(first);
        }
    };
    EXPECT_EQ(callsPerObject(takeFromFrontToBack), 0);
}

INSTANTIATE_TEST_SUITE_P(Of, ArrayControllerCost, testing::Values(1000, 100'000));

} // namespace
