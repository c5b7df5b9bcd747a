#include "ZRCommon/ZRExtendedMatrix.h"

#include "Support/CountingNumber.h"
#include "Support/IndexSets.h"
#include "Support/ShownGrid.h"

namespace {

using platform::ArrayController;
using platform::IndexSet;
using testSupport::CountingNumber;
using testSupport::countingNumbers;

/// A grid of many cells, every second of which is selected.
class ExtendedMatrixCost : public testing::TestWithParam<int>, protected testSupport::ShownGrid<ZRExtendedMatrix>
{
protected:
    ExtendedMatrixCost()
        : ShownGrid(QSize(1000, 600))
    {
        scrollView.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        grid->setCellSize(QSizeF(100, 50));
        const auto numbers = countingNumbers(count());
        controller.setContent(numbers);
        showObjects(numbers);
        QObject::connect(grid, &ZRExtendedMatrix::selectionChanged, [this] { ++announcements; });
        QObject::connect(&controller, &ArrayController::selectedObjectsChanged, [this] { ++controllerAnnouncements; });
    }
    int count() const { return GetParam(); }
    qint64 selectedCount() const { return count() / 2; }
    void expectEvenSelected() const
    {
        EXPECT_EQ(grid->selectedIndexes(), even);
        EXPECT_EQ(qint64(grid->selectedCells().size()), selectedCount());
        EXPECT_EQ(grid->selectedCells().back(), grid->cellAtIndex(count() - 2));
    }

    ArrayController controller;
    const IndexSet even = testSupport::everySecondOf(count());
    int announcements = 0;
    int controllerAnnouncements = 0;
};

} // namespace

// Each change of the selection costs as much as there are ranges, so that the number of changes tells the rest.

TEST_P(ExtendedMatrixCost, OfSavingAndRestoringTheSelectionIsThatOfOneChange)
{
    grid->setSelectedIndexes(even);
    const QVariantMap saved = grid->saveSelection();
    EXPECT_EQ(saved["count"].toLongLong(), count());
    EXPECT_EQ(saved["indexes"].toList().size(), selectedCount());
    grid->deselectAllCells();
    announcements = 0;
    grid->restoreSelection(saved);
    EXPECT_EQ(announcements, 1);
    expectEvenSelected();
}

TEST_P(ExtendedMatrixCost, OfAFlowIsThatOfOneChangeOfWhichNothingIsTold)
{
    grid->setSelectedIndexes(even);
    announcements = 0;
    const int columns = grid->numberOfColumns();
    scrollView.resize(700, 600);
    EXPECT_LT(grid->numberOfColumns(), columns);
    EXPECT_EQ(announcements, 0);
    expectEvenSelected();
}

TEST_P(ExtendedMatrixCost, OfShowingAControllersSelectionIsLinear)
{
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    CountingNumber::calls = 0;
    controller.setSelectionIndexes(even);
    EXPECT_EQ(announcements, 1);
    EXPECT_LT(double(CountingNumber::calls) / count(), 5);
    expectEvenSelected();
    grid->unbind("matrixSelectedObjects");
}

TEST_P(ExtendedMatrixCost, OfRestoringThroughAControllerIsLinear)
{
    grid->setSelectedIndexes(even);
    const QVariantMap saved = grid->saveSelection();
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    announcements = controllerAnnouncements = 0;
    CountingNumber::calls = 0;
    grid->restoreSelection(saved);
    EXPECT_LE(controllerAnnouncements, 2);
    EXPECT_LE(announcements, 2);
    EXPECT_LT(double(CountingNumber::calls) / count(), 10);
    expectEvenSelected();
    grid->unbind("matrixSelectedObjects");
}

INSTANTIATE_TEST_SUITE_P(Counts, ExtendedMatrixCost, testing::Values(1'000, 100'000));
