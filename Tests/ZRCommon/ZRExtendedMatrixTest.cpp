#include "ZRCommon/ZRExtendedMatrix.h"

#include "Platform/Interface/DragRunner.h"
#include "Support/IndexSets.h"
#include "Support/ShownGrid.h"

#include <QPainter>

namespace {

using platform::ArrayController;
using platform::Cell;
using platform::KeyAction;
using platform::ObjectPointer;
using Bounds = ZRExtendedMatrix::CellBounds;
using Indexes = QList<qint64>;

struct ExtendedMatrix : testing::Test, testSupport::ShownItems {
    int doubleActions = 0;

    ExtendedMatrix()
    {
        QObject::connect(grid, &ZRExtendedMatrix::doubleAction, [this] { ++doubleActions; });
        platform::setDragRunner([this](platform::Drag &drag) {
            runs.push_back({drag.image, drag.hotSpot, selected(), drag.source == grid});
            return Qt::CopyAction;
        });
    }
    ~ExtendedMatrix() override { platform::setDragRunner({}); }

    struct Run {
        QImage image;
        QPoint hotSpot;
        Indexes selected;
        bool isFromGrid;
    };
    std::vector<Run> runs;

    Indexes selected() const
    {
        Indexes indexes;
        for (const Cell *const cell : grid->selectedCells())
            indexes.append(cell->index());
        return indexes;
    }
    void select(const Indexes &indexes)
    {
        grid->matrixDeselectAllCells();
        for (const qint64 index : indexes)
            grid->matrixSetSelectionFrom(index, index, index, true);
    }
    void press(const QPointF &place, Qt::KeyboardModifiers modifiers = {})
    {
        send(QEvent::MouseButtonPress, place, modifiers);
    }
    void release(const QPointF &place, Qt::KeyboardModifiers modifiers = {})
    {
        send(QEvent::MouseButtonRelease, place, modifiers);
    }
    void drag(const QPointF &place) { send(QEvent::MouseMove, place); }
    void click(const QPointF &place, Qt::KeyboardModifiers modifiers = {})
    {
        time += 10'000;
        press(place, modifiers);
        release(place, modifiers);
    }
};

} // namespace

TEST_F(ExtendedMatrix, TakesAsManyColumnsAsFitTheVisibleWidth)
{
    const auto needed = [&](int width, qint64 count) {
        scrollView.resize(width, 100);
        scrollView.setDocumentView(new ZRExtendedMatrix); // with the width of now
        auto &fresh = static_cast<ZRExtendedMatrix &>(*scrollView.documentView());
        fresh.setCellSize(QSizeF(100, 50));
        fresh.setIntercellSpacing(QSizeF(30, 30)); // which does not count
        const auto result = fresh.getRowsNeeded(count);
        return QPair<int, int>(result.columns, result.rows);
    };
    EXPECT_EQ(needed(330, 7), qMakePair(3, 3));
    EXPECT_EQ(needed(330, 6), qMakePair(3, 2));
    EXPECT_EQ(needed(330, 0), qMakePair(3, 0));
    EXPECT_EQ(needed(60, 5), qMakePair(1, 5)) << "narrower than a cell";
    EXPECT_EQ(needed(300, 3), qMakePair(3, 1));
    EXPECT_EQ(needed(299, 3), qMakePair(2, 2));
}

TEST_F(ExtendedMatrix, HasOneColumnWithoutAScrollView)
{
    ZRExtendedMatrix alone;
    alone.setCellSize(QSizeF(100, 50));
    EXPECT_EQ(alone.getRowsNeeded(7).columns, 1);
    EXPECT_EQ(alone.getRowsNeeded(7).rows, 7);
    EXPECT_EQ(alone.getRowsNeeded(0).rows, 0);
    alone.setCellSize(QSizeF(0, 0));
    EXPECT_EQ(alone.getRowsNeeded(7).columns, 1);
    alone.sizeToCells();
    alone.setFrame(QRectF(0, 0, 500, 500));
    EXPECT_EQ(alone.numberOfColumns(), 1) << "and flows when its width changes";
}

TEST_F(ExtendedMatrix, UsedCellsHaveAnObject)
{
    fill(6, 1);
    EXPECT_EQ(grid->numberOfCells(), 12);
    EXPECT_EQ(grid->usedCellsCount(), 6);
    ASSERT_EQ(grid->usedCells().size(), 6u);
    EXPECT_EQ(grid->usedCells()[5], grid->cells()[5].get());
    grid->cells()[2]->setRepresentedObject(nullptr);
    EXPECT_EQ(grid->usedCells()[2], grid->cells()[3].get());
}

TEST_F(ExtendedMatrix, FlowsAndKeepsItsSelection)
{
    fill(7);
    ASSERT_EQ(grid->numberOfColumns(), 4);
    select({2, 5});
    const Cell *const second = grid->cells()[2].get();
    scrollView.resize(330, 300);
    EXPECT_EQ(grid->numberOfColumns(), 3);
    EXPECT_EQ(grid->numberOfRows(), 3);
    EXPECT_EQ(selected(), Indexes({2, 5}));
    EXPECT_EQ(grid->cells()[2].get(), second);
    EXPECT_EQ(grid->viewFrame().size(), QSizeF(330, 300)) << "it covers what shows";
    scrollView.resize(330, 120);
    EXPECT_EQ(grid->viewFrame().size(), QSizeF(330, 150)) << "and all of its cells";
}

TEST_F(ExtendedMatrix, RenewsNothingWhileTheColumnsStay)
{
    fill(7, 3); // more rows than needed, which alone is no reason
    select({1});
    scrollView.resize(480, 200);
    EXPECT_EQ(grid->numberOfColumns(), 4);
    EXPECT_EQ(grid->numberOfRows(), 5);
    EXPECT_EQ(grid->viewFrame().width(), 480);
    EXPECT_EQ(selected(), Indexes({1}));
}

TEST_F(ExtendedMatrix, FlowsWhenItsWidthChangesAndNotOtherwise)
{
    fill(7);
    grid->setCellSize(QSizeF(200, 50));
    grid->setFrame(QRectF(0, 0, grid->viewFrame().width(), 500));
    EXPECT_EQ(grid->numberOfColumns(), 4);
    scrollView.resize(431, 300);
    EXPECT_EQ(grid->numberOfColumns(), 2);
}

TEST_F(ExtendedMatrix, ASubclassMayTurnTheFlowOff)
{
    struct Still : ZRExtendedMatrix {
        bool usesAvailableWidthToLayoutCells() const override { return false; }
    };
    auto *const still = new Still;
    scrollView.setDocumentView(still);
    still->setCellSize(QSizeF(100, 50));
    still->renewRows(2, 4);
    scrollView.resize(150, 100);
    EXPECT_EQ(still->numberOfColumns(), 4);
    EXPECT_EQ(still->viewFrame().width(), 150) << "the frame is set and nothing else";
}

TEST_F(ExtendedMatrix, BoundsOfTheSelectionAreThoseOfHighlightedCells)
{
    fill(12);
    EXPECT_EQ(grid->selectedCellBounds(), (Bounds{3, 4, 0, 0})) << "of none";
    select({1, 6});
    EXPECT_EQ(grid->selectedCellBounds(), (Bounds{0, 1, 1, 2}));
    select({3, 4});
    EXPECT_EQ(grid->selectedCellBounds(), (Bounds{0, 0, 1, 3})) << "a range over the end of a row";
    grid->matrixDeselectAllCells();
    grid->cells()[9]->setHighlighted(true);
    EXPECT_EQ(grid->selectedCellBounds(), (Bounds{2, 1, 2, 1})) << "highlighted, not selected";
    grid->cells()[9]->setHighlighted(false);
    grid->cells()[9]->setSelected(true);
    EXPECT_EQ(grid->selectedCellBounds(), (Bounds{3, 4, 0, 0}));
}

TEST_F(ExtendedMatrix, BoundsAgreeWithVisitingEveryCell)
{
    fill(40);
    for (uint seed = 0; seed < 300; ++seed) {
        grid->matrixDeselectAllCells();
        for (uint k = 0; k <= seed % 7; ++k)
            grid->setSelectionFrom((seed * 7 + k * 13) % 40, (seed * 7 + k * 13) % 40 + seed % 3, 0, true);
        Bounds expected{grid->numberOfRows(), grid->numberOfColumns(), 0, 0};
        for (const auto &cell : grid->cells()) {
            if (!cell->isHighlighted())
                continue;
            const auto place = grid->placeOfCell(*cell);
            expected = {std::min(expected.minRow, place.row), std::min(expected.minColumn, place.column),
                        std::max(expected.maxRow, place.row), std::max(expected.maxColumn, place.column)};
        }
        ASSERT_EQ(grid->selectedCellBounds(), expected) << seed;
    }
}

TEST_F(ExtendedMatrix, MovesOneCellBesideTheSelection)
{
    fill(12); // four columns, three rows
    const auto after = [&](const Indexes &from, KeyAction move) {
        select(from);
        grid->performKeyAction(move);
        return selected();
    };
    EXPECT_EQ(after({5}, KeyAction::moveRight), Indexes({6}));
    EXPECT_EQ(after({5}, KeyAction::moveLeft), Indexes({4}));
    EXPECT_EQ(after({5}, KeyAction::moveUp), Indexes({1}));
    EXPECT_EQ(after({5}, KeyAction::moveDown), Indexes({9}));
    // At the edges.
    EXPECT_EQ(after({7}, KeyAction::moveRight), Indexes({7}));
    EXPECT_EQ(after({4}, KeyAction::moveLeft), Indexes({4}));
    EXPECT_EQ(after({1}, KeyAction::moveUp), Indexes({1}));
    EXPECT_EQ(after({9}, KeyAction::moveDown), Indexes({9}));
    // From several, each from its own corner.
    EXPECT_EQ(after({1, 6}, KeyAction::moveRight), Indexes({7}));
    EXPECT_EQ(after({1, 6}, KeyAction::moveLeft), Indexes({0}));
    EXPECT_EQ(after({5, 10}, KeyAction::moveUp), Indexes({1}));
    EXPECT_EQ(after({1, 6}, KeyAction::moveDown), Indexes({10}));
    // In reading order.
    EXPECT_EQ(after({5}, KeyAction::moveForward), Indexes({6}));
    EXPECT_EQ(after({3}, KeyAction::moveForward), Indexes({4}));
    EXPECT_EQ(after({11}, KeyAction::moveForward), Indexes({11}));
    EXPECT_EQ(after({4}, KeyAction::moveBackward), Indexes({3}));
    EXPECT_EQ(after({6}, KeyAction::moveBackward), Indexes({5}));
    EXPECT_EQ(after({0}, KeyAction::moveBackward), Indexes({0}));
}

TEST_F(ExtendedMatrix, MovesFromNothingAsFromItsStartingBounds)
{
    fill(12);
    const auto after = [&](KeyAction move) {
        grid->matrixDeselectAllCells();
        grid->performKeyAction(move);
        return selected();
    };
    EXPECT_EQ(after(KeyAction::moveRight), Indexes({1}));
    EXPECT_EQ(after(KeyAction::moveForward), Indexes({1}));
    EXPECT_EQ(after(KeyAction::moveDown), Indexes({4}));
    EXPECT_EQ(after(KeyAction::moveLeft), Indexes()) << "a row behind the last";
    EXPECT_EQ(after(KeyAction::moveUp), Indexes()) << "a column behind the last";
    EXPECT_EQ(after(KeyAction::moveBackward), Indexes());
}

TEST_F(ExtendedMatrix, MovesOntoBlanks)
{
    fill(6, 1);
    select({5});
    grid->moveRight();
    EXPECT_EQ(selected(), Indexes({6}));
    grid->moveDown();
    EXPECT_EQ(selected(), Indexes({10}));
}

TEST_F(ExtendedMatrix, KeysMoveAndOpenAndPagesDoNothing)
{
    fill(12);
    select({5});
    key(Qt::Key_Right);
    EXPECT_EQ(selected(), Indexes({6}));
    key(Qt::Key_Down);
    key(Qt::Key_Left);
    key(Qt::Key_Up);
    EXPECT_EQ(selected(), Indexes({5}));
    key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(selected(), Indexes({5})) << "there is no extension by key";
    for (const int page : {Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End})
        key(page);
    EXPECT_EQ(selected(), Indexes({5}));
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 0);
    key(Qt::Key_Return);
    key(Qt::Key_Enter);
    EXPECT_EQ(doubleActions, 2);
    key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selected().size(), 12);
    EXPECT_TRUE(grid->performKeyAction(KeyAction::moveBackward));
    EXPECT_TRUE(grid->performKeyAction(KeyAction::moveForward));
    EXPECT_FALSE(grid->performKeyAction(KeyAction::deleteForward));
}

TEST_F(ExtendedMatrix, AMoveScrollsItsCellIntoView)
{
    scrollView.resize(430, 100);
    fill(40);
    select({4});
    grid->moveDown();
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 50);
}

TEST_F(ExtendedMatrix, SavesAndRestoresPlacesAmongTheUsedCells)
{
    fill(10);
    grid->cells()[1]->setRepresentedObject(nullptr); // a blank in the middle
    select({0, 1, 4, 9});
    const QVariantMap saved = grid->saveSelection();
    EXPECT_EQ(saved.keys(), QStringList({"count", "indexes"}));
    EXPECT_EQ(saved["count"].toInt(), 9);
    EXPECT_EQ(saved["indexes"].toList(), QVariantList({0, 3, 8})) << "blanks do not count";
    grid->matrixDeselectAllCells();
    grid->restoreSelection(saved);
    EXPECT_EQ(selected(), Indexes({0, 3, 8})) << "places among the used cells are taken as indexes";
    grid->cells()[4]->setRepresentedObject(nullptr);
    grid->restoreSelection(saved);
    EXPECT_TRUE(selected().isEmpty()) << "there are fewer used cells than then";
    EXPECT_EQ(grid->saveSelection()["indexes"].toList(), QVariantList());
    grid->restoreSelection({});
    EXPECT_TRUE(selected().isEmpty());
    grid->restoreSelection({{"count", 8}, {"indexes", QVariantList({2, -5, 400, "x"})}});
    EXPECT_EQ(selected(), Indexes({0, 2}));
}

TEST_F(ExtendedMatrix, SelectsWhenTheButtonGoesUp)
{
    fill(10);
    press(middleOf(1, 1));
    EXPECT_TRUE(selected().isEmpty()) << "never at the press";
    EXPECT_EQ(grid->mouseDownPoint(), middleOf(1, 1));
    release(middleOf(1, 1));
    EXPECT_EQ(selected(), Indexes({5}));
    click(middleOf(0, 2));
    EXPECT_EQ(selected(), Indexes({2}));
    click(QPoint(415, 10));
    EXPECT_TRUE(selected().isEmpty()) << "beside the cells";
}

TEST_F(ExtendedMatrix, CommandAddsAndShiftExtends)
{
    fill(12);
    click(middleOf(0, 1));
    click(middleOf(1, 2), Qt::ControlModifier);
    EXPECT_EQ(selected(), Indexes({1, 6}));
    click(middleOf(1, 2), Qt::ControlModifier);
    EXPECT_EQ(selected(), Indexes({1, 6})) << "a selected cell stays selected";
    click(middleOf(2, 0), Qt::ShiftModifier);
    EXPECT_EQ(selected(), Indexes({1, 6, 7, 8})) << "from the last selected one";
    click(middleOf(1, 0), Qt::ShiftModifier);
    EXPECT_EQ(selected(), Indexes({1, 4, 5, 6, 7, 8})) << "from the same one";
    click(middleOf(2, 3), Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(selected(), Indexes({1, 4, 5, 6, 7, 8, 11})) << "as with Command";
    click(middleOf(0, 3));
    EXPECT_EQ(selected(), Indexes({3}));
}

TEST_F(ExtendedMatrix, ShiftWithNothingSelectedExtendsFromBeforeTheFirst)
{
    fill(12);
    click(middleOf(0, 2), Qt::ShiftModifier);
    EXPECT_EQ(selected(), Indexes({0, 1, 2}));
    grid->bind("matrixSelectedObjects", &controller, "selectedObjects");
    grid->matrixDeselectAllCells();
    click(middleOf(0, 1), Qt::ShiftModifier);
    EXPECT_EQ(selected(), Indexes({0, 1})) << "and so it does for a controller";
    grid->unbind("matrixSelectedObjects");
}

TEST_F(ExtendedMatrix, ASecondClickSendsTheDoubleAction)
{
    fill(12);
    click(middleOf(0, 1));
    send(QEvent::MouseButtonDblClick, middleOf(0, 1), Qt::ControlModifier);
    EXPECT_EQ(doubleActions, 0);
    release(middleOf(0, 1), Qt::ControlModifier);
    EXPECT_EQ(doubleActions, 1);
    EXPECT_EQ(selected(), Indexes({1}));
    press(middleOf(0, 1)); // the third of a row is no second
    release(middleOf(0, 1));
    EXPECT_EQ(doubleActions, 1);
}

TEST_F(ExtendedMatrix, DragsFromMoreThanTenPointsOn)
{
    fill(12);
    press(QPoint(150, 25));
    drag(QPointF(160, 25));
    EXPECT_TRUE(runs.empty());
    drag(QPointF(160.1, 25));
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_EQ(runs[0].selected, Indexes({1})) << "an unselected cell is dragged alone";
    EXPECT_TRUE(runs[0].isFromGrid);
    drag(QPointF(150, 60));
    EXPECT_EQ(runs.size(), 2u) << "every further event asks again";
}

TEST_F(ExtendedMatrix, DragsTheSelectionOrTheCellAlone)
{
    fill(12);
    select({1, 2, 3});
    press(middleOf(0, 2));
    drag(middleOf(1, 3));
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_EQ(runs[0].selected, Indexes({1, 2, 3}));
    press(middleOf(2, 0));
    drag(middleOf(1, 0));
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_EQ(runs[1].selected, Indexes({8}));
}

TEST_F(ExtendedMatrix, DragsNothingFromBlanksAndBesideCells)
{
    fill(6, 1);
    press(middleOf(1, 3)); // a blank
    drag(middleOf(0, 0));
    press(QPoint(420, 10));
    drag(QPointF(10, 10));
    EXPECT_TRUE(runs.empty());
    grid->allowsDragging = false;
    press(middleOf(0, 0));
    drag(middleOf(1, 1));
    EXPECT_TRUE(runs.empty());
    EXPECT_TRUE(selected().isEmpty());
    grid->allowsDragging = true;
    grid->hasData = false;
    drag(middleOf(1, 1));
    EXPECT_TRUE(runs.empty());
    EXPECT_FALSE(ZRExtendedMatrix().allowDraggingOut());
    EXPECT_EQ(ZRExtendedMatrix().pasteboardForDrag(), nullptr);
}

TEST_F(ExtendedMatrix, TheDragImageStandsOnItsCell)
{
    fill(12);
    press(QPoint(130, 20));
    drag(QPointF(145, 40));
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_EQ(runs[0].image.deviceIndependentSize(), QSizeF(100, 50));
    EXPECT_EQ(runs[0].hotSpot, QPoint(30, 20));
    press(QPoint(130, 20));
    drag(QPointF(425, 20)); // the pointer is on no cell: no image, and yet a drag
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_TRUE(runs[1].image.isNull());
}

TEST_F(ExtendedMatrix, AGridMayBeDestroyedByItsDrag)
{
    fill(12);
    platform::setDragRunner([&](platform::Drag &) {
        scrollView.setDocumentView(nullptr);
        return Qt::MoveAction;
    });
    press(middleOf(0, 0));
    drag(middleOf(1, 1));
    EXPECT_EQ(scrollView.documentView(), nullptr);
}

TEST_F(ExtendedMatrix, TheDragImageShowsTheCellWithACount)
{
    struct BlueCell : Cell {
        std::unique_ptr<Cell> clone() const override { return std::make_unique<BlueCell>(); }
        void drawWithFrame(QPainter &painter, const QRectF &frame, const platform::View &) override
        {
            EXPECT_EQ(frame, QRectF(0, 0, 100, 50));
            painter.fillRect(frame, Qt::blue);
        }
    };
    grid->setPrototype(std::make_unique<BlueCell>());
    fill(12);
    EXPECT_TRUE(grid->dragImageForImageAtPoint(QPointF(425, 10)).isNull());
    grid->matrixSelectCellAtRow(0, 0);
    const QImage image = grid->dragImageForImageAtPoint(QPointF(350, 20));
    ASSERT_EQ(image.size(), QSize(100, 50));
    const QColor body = image.pixelColor(80, 10);
    EXPECT_NEAR(body.alphaF(), 0.75, 0.01);
    EXPECT_EQ(body.blue(), 255);
    EXPECT_EQ(image.pixelColor(0, 20), QColor(128, 128, 128));
    EXPECT_EQ(image.pixelColor(99, 49), QColor(128, 128, 128));
    // The badge: 5 points from the left, 15 from below.
    const QImage badge = ZRExtendedMatrix::badgeImage(1);
    ASSERT_EQ(badge.size(), QSize(29, 24));
    EXPECT_GT(image.pixelColor(10, 50 - 15 - 12).red(), 150);
    EXPECT_GT(image.pixelColor(5 + 14, 50 - 15 - 3).red(), 150);
    int lowest = badge.height() - 1; // row of it that is drawn to the full
    while (badge.pixelColor(14, lowest).alpha() < 200)
        --lowest;
    EXPECT_GT(image.pixelColor(5 + 14, 50 - 15 - badge.height() + lowest).red(), 150);
    EXPECT_LT(image.pixelColor(5 + 14, 50 - 15 + 2).red(), 90) << "below it";
    EXPECT_EQ(ZRExtendedMatrix::badgeImage(2).size(), QSize(58, 48));
    EXPECT_EQ(ZRExtendedMatrix::badgeImage(2).deviceIndependentSize(), QSizeF(29, 24));
    EXPECT_EQ(ZRExtendedMatrix::badgeImage(2.5).size(), QSize(87, 72));
    EXPECT_EQ(ZRExtendedMatrix::badgeImage(9).size(), QSize(87, 72));
}

TEST_F(ExtendedMatrix, TheCountIsPlacedByItsDigits)
{
    fill(900);
    // Where white begins: of the first column in which digits stand.
    const auto leftOfDigits = [&](int count) {
        grid->matrixDeselectAllCells();
        grid->matrixSetSelectionFrom(0, count - 1, 0, true);
        const QImage image = grid->dragImageForImageAtPoint(QPointF(10, 10));
        for (int x = 9; x < 40; ++x) { // within the badge's white edge
            for (int y = 21; y < 26; ++y) {
                const QColor color = image.pixelColor(x, y);
                if (color.red() > 235 && color.green() > 200 && color.blue() > 200)
                    return x;
            }
        }
        return -1;
    };
    EXPECT_NEAR(leftOfDigits(8), 15 + 1, 1);
    EXPECT_NEAR(leftOfDigits(9), 15 + 1, 1);
    EXPECT_NEAR(leftOfDigits(10), 10 + 3, 1); // a one begins further right
    EXPECT_NEAR(leftOfDigits(88), 10 + 1, 1);
    EXPECT_NEAR(leftOfDigits(99), 10 + 1, 1);
    EXPECT_NEAR(leftOfDigits(100), 8 + 2, 1);
    EXPECT_NEAR(leftOfDigits(888), 8 + 1, 1);
    for (const auto &[attributes, size] : {std::pair(ZRExtendedMatrix::badgeDrawingStringAttributes(), 14),
                                           std::pair(ZRExtendedMatrix::smallerBadgeDrawingStringAttributes(), 11)}) {
        EXPECT_EQ(attributes.foreground().color(), QColor(Qt::white));
        EXPECT_EQ(attributes.font().pixelSize(), size);
        EXPECT_TRUE(attributes.font().bold());
    }
}

TEST_F(ExtendedMatrix, TheBadgeCountsTheSelectedCells)
{
    fill(10); // and two blanks
    const auto image = [&] { return grid->dragImageForImageAtPoint(QPointF(250, 70)); };
    grid->matrixSetSelectionFrom(0, 6, 0, true);
    const QImage seven = image();
    grid->cellAtIndex(9)->setHighlighted(true);
    EXPECT_EQ(image(), seven) << "whatever else is highlighted";
    grid->matrixSetSelectionFrom(7, 7, 0, true);
    EXPECT_NE(image(), seven);
    grid->matrixDeselectAllCells();
    grid->matrixSetSelectionFrom(5, 11, 5, true);
    EXPECT_EQ(image(), seven) << "blanks among them";
}

TEST_F(ExtendedMatrix, ACellIsSelectedWhereTheButtonGoesUp)
{
    fill(12);
    grid->allowsDragging = false;
    press(middleOf(0, 0));
    drag(middleOf(1, 1));
    release(middleOf(1, 1));
    EXPECT_EQ(selected(), Indexes({5}));
}

TEST_F(ExtendedMatrix, TheBadgeIsAsWideAsItsCountNeeds)
{
    fill(10'000);
    const auto widthOfBadge = [&](int count) {
        grid->matrixDeselectAllCells();
        grid->matrixSetSelectionFrom(0, count - 1, 0, true);
        const QImage image = grid->dragImageForImageAtPoint(QPointF(10, 10));
        int width = 0;
        for (int x = 1; x < image.width() - 1; ++x)
            width += image.pixelColor(x, 50 - 15 - 4).red() > 150; // below the digits
        return width;
    };
    const int usual = widthOfBadge(1);
    EXPECT_GT(usual, 15);
    EXPECT_EQ(widthOfBadge(999), usual);
    EXPECT_GT(widthOfBadge(1000), usual + 3);
    EXPECT_GT(widthOfBadge(10'000), widthOfBadge(1000) + 4);
}

// Bound

TEST_F(ExtendedMatrix, BoundToAControllerEveryChangeGoesThere)
{
    fill(12);
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    grid->matrixSelectCellAtRow(1, 1);
    EXPECT_EQ(controller.selectedObjects(), QList<ObjectPointer>({grid->cells()[5]->representedObject()}));
    EXPECT_EQ(selected(), Indexes({5})) << "the grid shows what the controller tells";
    grid->matrixSetSelectionFrom(8, 6, 0, false);
    EXPECT_EQ(selected(), Indexes({5, 6, 7, 8})) << "the anchor and the highlight are passed over";
    grid->selectAll();
    EXPECT_EQ(controller.selectedObjects().size(), 12);
    EXPECT_EQ(selected().size(), 12);
    grid->matrixDeselectAllCells();
    EXPECT_TRUE(controller.selectedObjects().isEmpty());
    EXPECT_TRUE(selected().isEmpty());
    controller.setSelectedObjects({grid->cells()[3]->representedObject(), grid->cells()[9]->representedObject()});
    EXPECT_EQ(selected(), Indexes({3, 9}));
    grid->unbind("matrixSelectedObjects");
    controller.setSelectedObjects({});
    EXPECT_EQ(selected(), Indexes({3, 9}));
    grid->matrixDeselectAllCells();
    EXPECT_TRUE(selected().isEmpty());
}

TEST_F(ExtendedMatrix, BoundToAControllerBlanksAndPlacesOutsideSelectNothing)
{
    fill(6, 1);
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    grid->matrixSelectCellAtRow(0, 0);
    grid->matrixSelectCellAtRow(2, 3);
    grid->matrixSelectCellAtRow(9, 9);
    grid->matrixSelectCellAtRow(-1, 0);
    EXPECT_EQ(selected(), Indexes({0}));
    grid->matrixSetSelectionFrom(4, 50, 4, true);
    EXPECT_EQ(selected(), Indexes({0, 4, 5}));
    grid->matrixSetSelectionFrom(40, 50, 4, true);
    grid->matrixSetSelectionFrom(-9, -5, 4, true);
    EXPECT_EQ(selected(), Indexes({0, 4, 5}));
    grid->unbind("matrixSelectedObjects");
}

TEST_F(ExtendedMatrix, BindsThatPropertyAlone)
{
    EXPECT_FALSE(grid->bind("value", &controller, "selectedObjects"));
    EXPECT_FALSE(grid->bind("matrixSelectedObjects", &controller, "none"));
    EXPECT_FALSE(grid->bind("matrixSelectedObjects", &controller, "objectName.x"));
    EXPECT_FALSE(grid->bind("matrixSelectedObjects", nullptr, "selectedObjects"));
    grid->unbind("value");
    grid->unbind("matrixSelectedObjects");
    fill(4);
    grid->matrixSelectCellAtRow(0, 1);
    EXPECT_EQ(selected(), Indexes({1}));
}

TEST_F(ExtendedMatrix, KeysDoNotMoveTheCellsAside)
{
    grid->setIntercellSpacing(QSizeF(10, 10)); // the fourth column shows in part
    fill(40);
    ASSERT_EQ(grid->numberOfColumns(), 4);
    grid->matrixSelectCellAtRow(0, 2);
    grid->moveRight();
    EXPECT_EQ(selected(), Indexes({3}));
    EXPECT_EQ(scrollView.documentVisibleRect().x(), 0);
    for (int i = 0; i < 7; ++i)
        grid->moveDown();
    EXPECT_EQ(selected(), Indexes({31}));
    EXPECT_TRUE(scrollView.documentVisibleRect().contains(grid->cellFrameAtRow(7, 2)));
    EXPECT_EQ(scrollView.documentVisibleRect().x(), 0);
}

TEST_F(ExtendedMatrix, ThePageKeysDoNothingInALongGridEither)
{
    fill(400);
    scrollView.scrollToPoint(QPointF(0, 1000));
    grid->selectCellAtRow(22, 1);
    for (const int each : {Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End}) {
        key(each);
        EXPECT_EQ(scrollView.documentVisibleRect().y(), 1000) << each;
        EXPECT_EQ(selected(), Indexes({89})) << each;
    }
}

TEST_F(ExtendedMatrix, WhileItIsBoundTheMouseAsksTheController)
{
    fill(7);
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    controller.setSelectionIndex(2);
    const auto former = platform::setDragRunner([](platform::Drag &) { return Qt::IgnoreAction; });
    press(middleOf(1, 0));
    drag(middleOf(1, 1));
    release(middleOf(1, 1));
    platform::setDragRunner(former);
    EXPECT_EQ(controller.selectedObjects(), QList<ObjectPointer>({grid->cells()[5]->representedObject()}));
    controller.setSelectionIndex(2);
    press(middleOf(1, 0));
    drag(middleOf(1, 0) + QPointF(40, 0));
    EXPECT_EQ(controller.selectedObjects().size(), 1);
    click(QPointF(210, 290)); // below the cells
    EXPECT_TRUE(controller.selectedObjects().isEmpty());
    grid->unbind("matrixSelectedObjects");
}

TEST_F(ExtendedMatrix, SelectAllTakesTheBlanksWhileItIsNotBound)
{
    fill(6);
    grid->selectAll();
    EXPECT_EQ(grid->selectedIndexes().count(), 8);
}

TEST_F(ExtendedMatrix, UnbindingLeavesTheHostsOwnConnections)
{
    fill(7);
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    int told = 0;
    QObject::connect(&controller, &ArrayController::selectedObjectsChanged, grid, [&] { ++told; });
    grid->unbind("matrixSelectedObjects");
    controller.setSelectionIndex(2);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(selected(), Indexes({}));
}

TEST_F(ExtendedMatrix, WhatShowsFirstStillDoesWhenTheCellsFlow)
{
    fill(2000); // four in a row
    scrollView.scrollToPoint(QPointF(0, 100 * 50 + 20));
    scrollView.resize(230, 300); // two in a row
    EXPECT_EQ(grid->numberOfColumns(), 2);
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 200 * 50 + 20);
    scrollView.resize(430, 300);
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 100 * 50 + 20);
    scrollView.scrollToPoint(QPointF());
    scrollView.resize(230, 300);
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 0);
}

TEST_F(ExtendedMatrix, WhatShowsFirstDoesNotDriftWhenTheCellsFlowAgainAndAgain)
{
    fill(2000); // four in a row
    scrollView.scrollToPoint(QPointF(0, 100 * 50 + 20));
    for (int i = 0; i < 20; ++i) {
        for (const int width : {330, 230, 330, 430}) // three, two, three and four in a row
            scrollView.resize(width, 300);
    }
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 100 * 50 + 20);
    scrollView.scrollToPoint(QPointF(0, 50 * 50));
    scrollView.resize(230, 300);
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 100 * 50) << "from where it was scrolled to";
}

TEST_F(ExtendedMatrix, FlowsWhileItIsBound)
{
    fill(7);
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    controller.setSelectedObjects({grid->cells()[2]->representedObject(), grid->cells()[5]->representedObject()});
    scrollView.resize(330, 300);
    EXPECT_EQ(grid->numberOfColumns(), 3);
    EXPECT_EQ(selected(), Indexes({2, 5}));
    grid->unbind("matrixSelectedObjects");
}

TEST_F(ExtendedMatrix, OutlivesItsController)
{
    fill(7);
    {
        ArrayController dying;
        dying.setContent({grid->cells()[0]->representedObject()});
        ASSERT_TRUE(grid->bind("matrixSelectedObjects", &dying, "selectedObjects"));
        dying.setSelectedObjects({grid->cells()[0]->representedObject()});
    }
    grid->matrixSelectCellAtRow(0, 2);
    EXPECT_EQ(selected(), Indexes({2}));
    grid->unbind("matrixSelectedObjects");
}

TEST_F(ExtendedMatrix, EqualObjectsCountAsTheSame)
{
    struct Named : platform::Object {
        explicit Named(int number)
            : name(number)
        { }
        bool isEqual(const Object &other) const override
        {
            const auto *const named = dynamic_cast<const Named *>(&other);
            return named && named->name == name;
        }
        size_t hash() const override { return size_t(name); }
        int name;
    };
    grid->renewRows(1, 3);
    QList<ObjectPointer> content;
    for (const int name : {1, 2, 1}) {
        content.append(std::make_shared<Named>(name));
        grid->cells()[size_t(content.size() - 1)]->setRepresentedObject(std::make_shared<Named>(name));
    }
    controller.setContent(content);
    ASSERT_TRUE(grid->bind("matrixSelectedObjects", &controller, "selectedObjects"));
    controller.setSelectedObjects({content[0]});
    EXPECT_EQ(selected(), Indexes({0, 2}));
    grid->unbind("matrixSelectedObjects");
}
