// Grids under odd circumstances: much scattered selection, no size, hosts that destroy what tells them.

#include "Platform/Interface/DragRunner.h"
#include "Support/IndexSets.h"
#include "Support/ShownGrid.h"

#include <QAccessible>
#include <QScrollBar>

#include <stdexcept>

namespace {

using platform::ArrayController;
using platform::IndexSet;
using testSupport::everySecondOf;

struct ExtendedMatrixLimits : testing::Test, testSupport::ShownItems {
    void destroyGrid() { scrollView.setDocumentView(nullptr); }
};

} // namespace

TEST_F(ExtendedMatrixLimits, AScatteredSelectionIsShownAtOnce)
{
    constexpr int count = 20'000;
    fill(count);
    int changes = 0;
    QObject::connect(grid, &ZRExtendedMatrix::selectionChanged, [&] { ++changes; });
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    controller.setSelectionIndexes(everySecondOf(count));
    EXPECT_EQ(grid->selectedIndexes(), everySecondOf(count));
    EXPECT_EQ(grid->highlightedIndexes(), everySecondOf(count));
    EXPECT_LE(changes, 2);
    grid->unbind("matrixSelectedObjects");
}

TEST_F(ExtendedMatrixLimits, TheLastOfAMillionCellsAreDraggedAsTheFirst)
{
    scrollView.resize(230, 300);
    grid->renewRows(500'000, 2);
    const auto object = std::make_shared<platform::Object>();
    for (qint64 i = 999'900; i < 1'000'000; ++i)
        grid->cellAtIndex(i)->setRepresentedObject(object);
    grid->sizeToCells();
    QList<qint64> dragged;
    const auto former = platform::setDragRunner([&](platform::Drag &) {
        dragged.append(grid->selectedIndexes().firstIndex());
        return Qt::IgnoreAction;
    });
    QList<qint64> pressed;
    for (int row = 499'960; row < 499'990; ++row) {
        scrollView.scrollToPoint(QPointF(0, row * 50));
        for (const double y : {0.0, 1.0, 49.0}) {
            grid->deselectAllCells();
            send(QEvent::MouseButtonPress, QPointF(30, y));
            send(QEvent::MouseMove, QPointF(40, y)); // no further than ten points
            pressed.append(row * 2);
            send(QEvent::MouseMove, QPointF(41, y));
            send(QEvent::MouseButtonRelease, QPointF(41, y));
        }
    }
    platform::setDragRunner(former);
    EXPECT_EQ(dragged, pressed);
}

TEST_F(ExtendedMatrixLimits, AScatteredSelectionIsKeptAndRestoredAtOnce)
{
    constexpr int count = 20'000;
    fill(count);
    const QVariantMap nothing = grid->saveSelection();
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    controller.setSelectionIndexes(everySecondOf(count));
    const QVariantMap saved = grid->saveSelection();
    for (const bool isBound : {true, false}) {
        if (!isBound)
            grid->unbind("matrixSelectedObjects");
        int changes = 0, controllerChanges = 0;
        const auto counting = QObject::connect(grid, &ZRExtendedMatrix::selectionChanged, [&] { ++changes; });
        const auto countingThere =
            QObject::connect(&controller, &ArrayController::selectedObjectsChanged, [&] { ++controllerChanges; });
        scrollView.resize(isBound ? 330 : 430, 300);
        EXPECT_EQ(grid->selectedIndexes(), everySecondOf(count));
        EXPECT_LE(changes, 5);
        grid->restoreSelection(nothing);
        EXPECT_TRUE(grid->selectedIndexes().isEmpty());
        changes = 0;
        grid->restoreSelection(saved);
        EXPECT_EQ(grid->selectedIndexes(), everySecondOf(count));
        EXPECT_LE(changes, 2);
        EXPECT_LE(controllerChanges, 5);
        QObject::disconnect(counting);
        QObject::disconnect(countingThere);
    }
}

TEST_F(ExtendedMatrixLimits, CellsWithoutASizeStandInOneColumn)
{
    fill(7);
    for (const QSizeF size : {QSizeF(0, 0), QSizeF(-5, -5), QSizeF(qQNaN(), qQNaN()), QSizeF(qInf(), qInf())}) {
        grid->setCellSize(size);
        grid->possiblyAdjustNumberRowsAndColumns();
        EXPECT_EQ(grid->numberOfColumns(), 1);
        grid->sizeToCells();
        scrollView.grab();
        send(QEvent::MouseButtonPress, QPointF(5, 5));
        send(QEvent::MouseButtonRelease, QPointF(5, 5));
        grid->moveDown();
    }
    grid->setCellSize(QSizeF(1e-7, 10));
    EXPECT_LE(grid->getRowsNeeded(7).columns, 100'000);
}

TEST_F(ExtendedMatrixLimits, ScrollBarsThatComeAndGoDoNotMakeItFlowForEver)
{
    // In four columns the spacing makes it too wide, and with that bar too high; in three it needs neither.
    scrollView.setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    scrollView.setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    grid->setIntercellSpacing(QSizeF(1, 1));
    fill(6);
    scrollView.resize(400, 105);
    QCoreApplication::processEvents();
    EXPECT_EQ(grid->usedCellsCount(), 6);
    scrollView.resize(401, 106);
    QCoreApplication::processEvents();
}

TEST_F(ExtendedMatrixLimits, MayBeDestroyedByWhatItTells)
{
    const auto fresh = [&] {
        scrollView.setDocumentView(grid = new testSupport::DraggedMatrix);
        fill(12);
    };
    const auto destroy = [&] { destroyGrid(); };
    fresh();
    QObject::connect(grid, &ZRExtendedMatrix::doubleAction, destroy);
    key(Qt::Key_Return);
    EXPECT_FALSE(grid);
    fresh();
    QObject::connect(grid, &ZRExtendedMatrix::doubleAction, destroy);
    send(QEvent::MouseButtonPress, middleOf(0, 0));
    send(QEvent::MouseButtonRelease, middleOf(0, 0));
    send(QEvent::MouseButtonDblClick, middleOf(0, 0));
    send(QEvent::MouseButtonRelease, middleOf(0, 0));
    EXPECT_FALSE(grid);
    fresh();
    QObject::connect(grid, &ZRExtendedMatrix::selectionChanged, destroy);
    key(Qt::Key_Right);
    EXPECT_FALSE(grid);
    fresh();
    QObject::connect(grid, &ZRExtendedMatrix::selectionChanged, destroy);
    send(QEvent::MouseButtonPress, middleOf(0, 0));
    send(QEvent::MouseButtonRelease, middleOf(0, 0));
    EXPECT_FALSE(grid);
    fresh();
    QObject::connect(grid, &ZRExtendedMatrix::selectionChanged, destroy);
    send(QEvent::MouseButtonPress, middleOf(0, 0));
    send(QEvent::MouseMove, middleOf(1, 1));
    EXPECT_FALSE(grid);
    fresh();
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    grid->matrixSelectCellAtRow(0, 1);
    {
        const QObject context;
        QObject::connect(&controller, &ArrayController::selectedObjectsChanged, &context, destroy);
        scrollView.resize(330, 300); // empties the controller's selection and sets it again
        EXPECT_FALSE(grid);
    }
    scrollView.resize(430, 300);
    fresh();
    QObject::connect(grid, &ZRExtendedMatrix::doubleAction, [&] {
        destroyGrid();
        throw std::runtime_error("gone");
    });
    testSupport::expectWarning(QStringLiteral("gone"));
    key(Qt::Key_Return);
    EXPECT_FALSE(grid);
}

TEST_F(ExtendedMatrixLimits, TheControllerMayBeDestroyedByWhatItTells)
{
    fill(12);
    auto dying = std::make_unique<ArrayController>();
    dying->setContent(controller.content());
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", dying.get(), "selectedObjects"));
    QObject::connect(grid, &ZRExtendedMatrix::selectionChanged, [&] { dying.reset(); });
    grid->matrixSelectCellAtRow(1, 1);
    EXPECT_FALSE(dying);
    grid->matrixSelectCellAtRow(0, 0);
    EXPECT_EQ(grid->selectedIndexes(), IndexSet(0));
    grid->unbind("matrixSelectedObjects");
}

TEST_F(ExtendedMatrixLimits, AControllerMayChangeItsContentWhileItTells)
{
    fill(12);
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    bool isRenewing = false;
    QObject::connect(grid, &ZRExtendedMatrix::selectionChanged, [&] {
        if (std::exchange(isRenewing, true))
            return;
        grid->renewRows(1, 2);
        controller.setContent({});
    });
    grid->selectAll();
    EXPECT_EQ(grid->numberOfCells(), 2);
    EXPECT_TRUE(controller.selectedObjects().isEmpty());
    grid->unbind("matrixSelectedObjects");
}

TEST_F(ExtendedMatrixLimits, MayBeRenewedWhileItsSelectionChanges)
{
    fill(40);
    grid->matrixSetSelectionFrom(30, 39, 30, true);
    bool isRenewing = false;
    QObject::connect(grid, &ZRExtendedMatrix::selectionChanged, [&] {
        if (!std::exchange(isRenewing, true))
            grid->renewRows(1, 1);
    });
    scrollView.resize(330, 300);
    key(Qt::Key_Right);
    send(QEvent::MouseButtonPress, QPointF(10, 10));
    send(QEvent::MouseButtonRelease, QPointF(10, 10));
    EXPECT_LE(grid->selectedIndexes().count(), grid->numberOfCells());
}

TEST_F(ExtendedMatrixLimits, AScreenReaderSelectsThroughTheController)
{
    fill(12);
    QAccessibleInterface *const table = QAccessible::queryAccessibleInterface(grid);
    ASSERT_TRUE(table);
    const auto act = [&](int cell, const QString &action) { table->child(cell)->actionInterface()->doAction(action); };
    const QString toggle = QAccessibleActionInterface::toggleAction(),
                  press = QAccessibleActionInterface::pressAction();
    act(2, toggle);
    EXPECT_EQ(grid->highlightedIndexes(), IndexSet(2)) << "one sees it as well";
    act(2, toggle);
    EXPECT_TRUE(grid->highlightedIndexes().isEmpty());
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    act(3, toggle);
    act(5, toggle);
    EXPECT_EQ(controller.selectionIndexes().count(), 2);
    act(3, toggle);
    EXPECT_EQ(controller.selectionIndexes(), IndexSet(5));
    act(7, press);
    EXPECT_EQ(controller.selectionIndexes(), IndexSet(7));
    EXPECT_EQ(grid->selectedIndexes(), IndexSet(7));
    grid->unbind("matrixSelectedObjects");
    QObject::connect(grid, &ZRExtendedMatrix::selectionChanged, [&] { destroyGrid(); });
    act(1, press);
    EXPECT_FALSE(grid);
}

TEST_F(ExtendedMatrixLimits, APressGivesItTheKeyboard)
{
    fill(12);
    scrollView.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&scrollView));
    grid->clearFocus();
    EXPECT_FALSE(grid->isFirstResponder());
    send(QEvent::MouseButtonPress, QPointF(425, 5));
    EXPECT_TRUE(grid->isFirstResponder());
}

TEST_F(ExtendedMatrixLimits, ADragOffersToCopyAlone)
{
    fill(12);
    Qt::DropActions actions = Qt::IgnoreAction;
    platform::setDragRunner([&](platform::Drag &drag) {
        actions = drag.supportedActions;
        return Qt::IgnoreAction;
    });
    send(QEvent::MouseButtonPress, middleOf(0, 0));
    send(QEvent::MouseMove, middleOf(1, 1));
    platform::setDragRunner({});
    EXPECT_EQ(actions, Qt::CopyAction);
}

TEST_F(ExtendedMatrixLimits, TheMouseDownPointHasSinglePrecision)
{
    fill(12);
    send(QEvent::MouseButtonPress, QPointF(10.1, 20.7));
    EXPECT_EQ(grid->mouseDownPoint().x(), double(10.1F));
    EXPECT_EQ(grid->mouseDownPoint().y(), double(20.7F));
}

TEST_F(ExtendedMatrixLimits, ReadsThePropertyThatItIsBoundTo)
{
    fill(6);
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "arrangedObjects"));
    EXPECT_TRUE(grid->selectedIndexes().isEmpty()) << "nothing is told yet";
    controller.removeObject(grid->cells()[5]->representedObject());
    EXPECT_EQ(grid->selectedIndexes(), IndexSet(platform::IndexRange{0, 5}));
    grid->unbind("matrixSelectedObjects");
}
