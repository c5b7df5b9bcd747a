#include "Platform/Interface/Matrix.h"

#include "Platform/Interface/ScrollView.h"
#include "Support/TestSupport.h"

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QPainter>
#include <QScrollBar>
#include <QTest>

#include <functional>
#include <stdexcept>

namespace {

using platform::Cell;
using platform::IndexSet;
using platform::Matrix;
using Place = Matrix::Place;

struct Item : platform::Object { };

/// Notes where it was drawn.
class NotingCell : public Cell
{
public:
    struct Drawing {
        quint32 index;
        QRectF frame;
    };
    explicit NotingCell(std::vector<Drawing> &drawings)
        : m_drawings(drawings)
    { }
    std::unique_ptr<Cell> clone() const override { return std::make_unique<NotingCell>(m_drawings); }
    void drawWithFrame(QPainter &painter, const QRectF &frame, const platform::View &view) override
    {
        m_drawings.push_back({index(), frame});
        if (throws)
            throw std::runtime_error("no ink");
        Cell::drawWithFrame(painter, frame, view);
    }
    QString accessibleName() const override { return QStringLiteral("cell %1").arg(index()); }
    bool throws = false;

private:
    std::vector<Drawing> &m_drawings;
};

struct MatrixTest : testing::Test {
    Matrix matrix;
    int selectionChanges = 0;
    std::vector<NotingCell::Drawing> drawings;

    MatrixTest()
    {
        matrix.setCellSize(QSizeF(40, 30));
        matrix.setIntercellSpacing(QSizeF(2, 1));
        QObject::connect(&matrix, &Matrix::selectionChanged, [this] { ++selectionChanges; });
    }
    std::vector<quint32> selected() const
    {
        std::vector<quint32> indexes;
        for (const Cell *const cell : matrix.selectedCells())
            indexes.push_back(cell->index());
        return indexes;
    }
    std::set<quint32> drawn() const
    {
        std::set<quint32> indexes;
        for (const auto &drawing : drawings)
            indexes.insert(drawing.index);
        return indexes;
    }
};

using Indexes = std::vector<quint32>;

} // namespace

TEST_F(MatrixTest, BeginsWithoutCells)
{
    EXPECT_EQ(matrix.numberOfRows(), 0);
    EXPECT_EQ(matrix.numberOfColumns(), 0);
    EXPECT_TRUE(matrix.cells().empty());
    EXPECT_FALSE(matrix.placeAtPoint(QPointF(0, 0)));
    EXPECT_EQ(matrix.cellAtRow(0, 0), nullptr);
    EXPECT_EQ(matrix.selectedRow(), -1);
    EXPECT_EQ(matrix.selectedColumn(), -1);
    matrix.selectAll();
    matrix.selectCellAtRow(0, 0);
    matrix.setSelectionFrom(0, 5, 0, true);
    EXPECT_TRUE(matrix.selectedCells().empty());
    EXPECT_EQ(selectionChanges, 0);
}

TEST_F(MatrixTest, KeepsItsCellsInOrderWhenItIsRenewed)
{
    matrix.renewRows(2, 3);
    ASSERT_EQ(matrix.cells().size(), 6u);
    std::vector<const Cell *> cells;
    for (const auto &cell : matrix.cells())
        cells.push_back(cell.get());
    matrix.renewRows(3, 4);
    ASSERT_EQ(matrix.cells().size(), 12u);
    for (size_t i = 0; i < cells.size(); ++i)
        EXPECT_EQ(matrix.cells()[i].get(), cells[i]);
    EXPECT_EQ(matrix.placeOfCell(*cells[5]), (Place{1, 1}));
    EXPECT_EQ(matrix.cellAtRow(1, 1), cells[5]);
    EXPECT_EQ(cells[5]->index(), 5u);
    EXPECT_EQ(cells[5]->matrix(), &matrix);
    matrix.renewRows(1, 2);
    EXPECT_EQ(matrix.cells().size(), 2u);
    EXPECT_EQ(matrix.cells()[1].get(), cells[1]);
    matrix.renewRows(-1, 5);
    EXPECT_TRUE(matrix.cells().empty());
    EXPECT_EQ(matrix.numberOfRows(), 0);
    EXPECT_EQ(matrix.numberOfColumns(), 5);
}

TEST_F(MatrixTest, CountsItsUsedCells)
{
    matrix.renewRows(2, 3);
    const auto item = std::make_shared<Item>();
    for (int i : {0, 1, 4})
        matrix.cells()[size_t(i)]->setRepresentedObject(item);
    EXPECT_EQ(matrix.numberOfUsedCells(), 3);
    matrix.cells()[1]->setRepresentedObject(std::make_shared<Item>());
    EXPECT_EQ(matrix.numberOfUsedCells(), 3);
    matrix.cells()[1]->setRepresentedObject(nullptr);
    EXPECT_EQ(matrix.numberOfUsedCells(), 2);
    matrix.renewRows(1, 3);
    EXPECT_EQ(matrix.numberOfUsedCells(), 1);
}

TEST_F(MatrixTest, NewCellsAreCopiesOfThePrototype)
{
    auto prototype = std::make_unique<Cell>();
    prototype->setRepresentedObject(std::make_shared<Item>());
    prototype->setSelected(true);
    EXPECT_TRUE(prototype->isSelected());
    matrix.setPrototype(std::move(prototype));
    matrix.renewRows(1, 2);
    EXPECT_EQ(matrix.cells()[0]->representedObject(), matrix.prototype().representedObject());
    EXPECT_FALSE(matrix.cells()[0]->isSelected());
    EXPECT_EQ(matrix.numberOfUsedCells(), 2);
}

TEST_F(MatrixTest, FindsCellsByPointAndPlace)
{
    matrix.renewRows(3, 2);
    EXPECT_EQ(matrix.cellFrameAtRow(2, 1), QRectF(42, 62, 40, 30));
    EXPECT_EQ(matrix.placeAtPoint(QPointF(0, 0)), (Place{0, 0}));
    EXPECT_EQ(matrix.placeAtPoint(QPointF(39.9, 29.9)), (Place{0, 0}));
    EXPECT_FALSE(matrix.placeAtPoint(QPointF(40, 10))) << "between two cells";
    EXPECT_FALSE(matrix.placeAtPoint(QPointF(10, 30))) << "between two rows";
    EXPECT_EQ(matrix.placeAtPoint(QPointF(42, 62)), (Place{2, 1}));
    EXPECT_FALSE(matrix.placeAtPoint(QPointF(84, 10)));
    EXPECT_FALSE(matrix.placeAtPoint(QPointF(10, 93)));
    EXPECT_FALSE(matrix.placeAtPoint(QPointF(-1, 10)));
    EXPECT_FALSE(matrix.placeAtPoint(QPointF(qQNaN(), 10)));
    EXPECT_EQ(matrix.cellAtRow(3, 0), nullptr);
    EXPECT_EQ(matrix.cellAtRow(0, 2), nullptr);
    EXPECT_EQ(matrix.cellAtRow(-1, 0), nullptr);
    EXPECT_EQ(matrix.cellAtIndex(6), nullptr);
    matrix.setCellSize(QSizeF(0, 0));
    matrix.setIntercellSpacing(QSizeF(0, 0));
    EXPECT_FALSE(matrix.placeAtPoint(QPointF(0, 0)));
}

TEST_F(MatrixTest, IsSizedToItsCells)
{
    matrix.renewRows(3, 2);
    matrix.sizeToCells();
    EXPECT_EQ(matrix.viewFrame().size(), QSizeF(82, 92));
    matrix.renewRows(0, 0);
    matrix.sizeToCells();
    EXPECT_EQ(matrix.viewFrame().size(), QSizeF(0, 0));
}

TEST_F(MatrixTest, SelectsOneCellAlone)
{
    matrix.renewRows(3, 4);
    matrix.selectCellAtRow(1, 2);
    EXPECT_EQ(selected(), Indexes({6}));
    EXPECT_TRUE(matrix.cells()[6]->isSelected());
    EXPECT_TRUE(matrix.cells()[6]->isHighlighted());
    EXPECT_EQ(matrix.selectedRow(), 1);
    EXPECT_EQ(matrix.selectedColumn(), 2);
    matrix.selectCellAtRow(0, 0);
    EXPECT_EQ(selected(), Indexes({0}));
    matrix.selectCellAtRow(7, 0);
    EXPECT_EQ(selected(), Indexes({0})) << "a place that is not there changes nothing";
    matrix.selectCellAtRow(0, 0);
    EXPECT_EQ(selectionChanges, 2) << "the same selection again is no change";
    matrix.selectCellAtRow(-1, 2);
    EXPECT_TRUE(selected().empty());
    EXPECT_EQ(matrix.selectedRow(), -1);
    EXPECT_EQ(selectionChanges, 3);
}

TEST_F(MatrixTest, AddsAndTakesAwayRanges)
{
    matrix.renewRows(3, 4);
    matrix.setSelectionFrom(5, 2, 2, true);
    EXPECT_EQ(selected(), Indexes({2, 3, 4, 5}));
    EXPECT_EQ(matrix.selectedRow(), 0);
    EXPECT_EQ(matrix.selectedColumn(), 2);
    matrix.setSelectionFrom(9, 9, 9, true);
    EXPECT_EQ(selected(), Indexes({2, 3, 4, 5, 9}));
    matrix.setSelectionFrom(3, 4, 3, false);
    EXPECT_EQ(selected(), Indexes({2, 5, 9}));
    matrix.setSelectionFrom(-5, 0, -5, true);
    EXPECT_EQ(selected(), Indexes({0, 2, 5, 9})) << "what lies outside is passed over";
    EXPECT_EQ(matrix.selectedColumn(), 3) << "an anchor outside changes nothing";
    matrix.setSelectionFrom(11, 400, 11, true);
    EXPECT_EQ(selected(), Indexes({0, 2, 5, 9, 11}));
    matrix.setSelectionFrom(12, 400, 12, true);
    matrix.setSelectionFrom(-9, -3, -3, true);
    EXPECT_EQ(selected().size(), 5u);
    EXPECT_EQ(selectionChanges, 5);
}

TEST_F(MatrixTest, HasNoPlaceToExtendFromWhileNothingIsSelected)
{
    matrix.renewRows(3, 4);
    matrix.setSelectionFrom(40, 50, 4, true);
    EXPECT_EQ(matrix.selectedRow(), -1);
    matrix.setSelectionFrom(3, 3, 3, false);
    EXPECT_EQ(matrix.selectedRow(), -1);
    matrix.selectCellAtRow(1, 2);
    matrix.selectAll();
    EXPECT_EQ(matrix.selectedRow(), 1);
    matrix.setSelectionFrom(0, 11, 3, false);
    EXPECT_EQ(matrix.selectedRow(), -1);
    EXPECT_EQ(matrix.selectedColumn(), -1);
}

TEST_F(MatrixTest, SelectsScatteredCellsInOneOperation)
{
    matrix.renewRows(3, 4);
    matrix.selectAll();
    IndexSet indexes;
    for (const qint64 index : {1, 6, 9, 400})
        indexes.addIndex(index);
    matrix.setSelectedIndexes(indexes);
    EXPECT_EQ(selected(), Indexes({1, 6, 9}));
    EXPECT_EQ(matrix.highlightedIndexes(), matrix.selectedIndexes());
    EXPECT_EQ(matrix.selectedRow(), 2);
    EXPECT_EQ(matrix.selectedColumn(), 1);
    EXPECT_EQ(selectionChanges, 2);
    matrix.setSelectedIndexes({});
    EXPECT_EQ(matrix.selectedRow(), -1);
}

TEST_F(MatrixTest, SelectsAMillionCellsAsOneRange)
{
    matrix.renewRows(1000, 1000);
    matrix.selectAll();
    EXPECT_EQ(matrix.selectedIndexes().ranges().size(), 1u);
    EXPECT_EQ(matrix.selectedIndexes().count(), 1'000'000);
    EXPECT_EQ(matrix.selectedRow(), 0);
    EXPECT_EQ(selectionChanges, 1);
    matrix.renewRows(500, 2000);
    EXPECT_TRUE(matrix.selectedIndexes().isEmpty()) << "renewing clears the selection";
    EXPECT_TRUE(matrix.highlightedIndexes().isEmpty());
    EXPECT_EQ(selectionChanges, 2);
}

TEST_F(MatrixTest, CellsWriteTheirStatesThrough)
{
    matrix.renewRows(2, 2);
    matrix.cells()[2]->setSelected(true);
    EXPECT_EQ(selected(), Indexes({2}));
    EXPECT_FALSE(matrix.cells()[2]->isHighlighted());
    matrix.cells()[3]->setHighlighted(true);
    EXPECT_TRUE(matrix.cells()[3]->isHighlighted());
    EXPECT_FALSE(matrix.cells()[3]->isSelected());
    EXPECT_EQ(selectionChanges, 1) << "highlighting is no selection";
    matrix.cells()[2]->setSelected(false);
    matrix.cells()[3]->setHighlighted(false);
    EXPECT_TRUE(matrix.highlightedIndexes().isEmpty());
    EXPECT_TRUE(selected().empty());
}

TEST_F(MatrixTest, SendsItsActions)
{
    int actions = 0, doubleActions = 0;
    QObject::connect(&matrix, &Matrix::action, [&] { ++actions; });
    QObject::connect(&matrix, &Matrix::doubleAction, [&] { ++doubleActions; });
    matrix.sendAction();
    matrix.sendDoubleAction();
    matrix.sendDoubleAction();
    EXPECT_EQ(actions, 1);
    EXPECT_EQ(doubleActions, 2);
}

TEST_F(MatrixTest, DrawsTheCellsThatShowAndNoOthers)
{
    auto *const grid = new Matrix;
    platform::ScrollView scrollView;
    scrollView.setDocumentView(grid);
    grid->setCellSize(QSizeF(40, 30));
    grid->setIntercellSpacing(QSizeF(2, 1));
    grid->setPrototype(std::make_unique<NotingCell>(drawings));
    grid->renewRows(1000, 5);
    scrollView.resize(100, 62);
    scrollView.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrollView.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grid->sizeToCells();
    scrollView.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&scrollView));
    grid->sizeToCells();
    drawings.clear();
    grid->repaint();
    EXPECT_EQ(drawn(), std::set<quint32>({0, 1, 2, 5, 6, 7}));
    scrollView.scrollToPoint(QPointF(50, 31 * 500 + 10));
    drawings.clear();
    grid->repaint();
    EXPECT_EQ(drawn(), std::set<quint32>({2501, 2502, 2503, 2506, 2507, 2508, 2511, 2512, 2513}));
    EXPECT_EQ(drawings.front().frame, grid->cellFrameAtRow(500, 1)) << "in the grid's own coordinates";
    drawings.clear();
    grid->repaint(QRect(0, 0, 5, 5));
    EXPECT_EQ(drawn(), std::set<quint32>({2501}));
}

TEST_F(MatrixTest, GoesOnDrawingWhenACellRaises)
{
    auto *const grid = new Matrix;
    platform::ScrollView scrollView;
    scrollView.setDocumentView(grid);
    grid->setCellSize(QSizeF(40, 30));
    grid->setPrototype(std::make_unique<NotingCell>(drawings));
    grid->renewRows(1, 3);
    static_cast<NotingCell &>(*grid->cells()[1]).throws = true;
    testSupport::expectWarning(QStringLiteral("drawing a cell: std::runtime_error: no ink"));
    scrollView.resize(200, 100);
    const QPixmap picture = scrollView.grab();
    EXPECT_EQ(drawn(), std::set<quint32>({0, 1, 2}));
    static_cast<NotingCell &>(*grid->cells()[1]).throws = false;
}

TEST_F(MatrixTest, DrawsTheOthersInTheirPlacesWhateverACellLeavesOfThePainter)
{
    struct LeavingCell : platform::Cell {
        std::unique_ptr<platform::Cell> clone() const override { return std::make_unique<LeavingCell>(); }
        void drawWithFrame(QPainter &painter, const QRectF &frame, const platform::View &) override
        {
            if (index() == 0) {
                painter.setClipRect(QRectF(0, 0, 2, 2));
                painter.translate(7, 9);
                painter.setOpacity(0.5);
                throw std::runtime_error("no ink");
            }
            painter.fillRect(frame, Qt::red);
        }
    };
    auto *const grid = new Matrix;
    platform::ScrollView scrollView;
    scrollView.setDocumentView(grid);
    grid->setCellSize(QSizeF(40, 30));
    grid->setIntercellSpacing(QSizeF(0, 0));
    grid->setPrototype(std::make_unique<LeavingCell>());
    grid->renewRows(1, 2);
    grid->sizeToCells();
    testSupport::expectWarning(QStringLiteral("drawing a cell: std::runtime_error: no ink"));
    scrollView.resize(200, 100);
    const QImage picture = grid->grab(QRect(0, 0, 90, 40)).toImage();
    EXPECT_EQ(picture.pixelColor(41, 1), QColor(Qt::red));
    EXPECT_EQ(picture.pixelColor(79, 29), QColor(Qt::red));
    EXPECT_NE(picture.pixelColor(81, 1), QColor(Qt::red));
    EXPECT_NE(picture.pixelColor(60, 31), QColor(Qt::red));
}

TEST_F(MatrixTest, IsDrawnAnewWhenSomethingChanges)
{
    matrix.setPrototype(std::make_unique<NotingCell>(drawings));
    matrix.renewRows(2, 2);
    matrix.setFrame(QRectF(0, 0, 200, 100));
    matrix.show();
    matrix.activateWindow();
    matrix.setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&matrix));
    EXPECT_TRUE(testSupport::waitUntil([&] { return !drawings.empty(); }));
    const auto drawnAfter = [&](const std::function<void()> &change) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        drawings.clear();
        change();
        return testSupport::waitUntil([&] { return !drawings.empty(); });
    };
    EXPECT_TRUE(drawnAfter([&] { matrix.selectCellAtRow(0, 0); }));
    EXPECT_TRUE(drawnAfter([&] { matrix.deselectAllCells(); }));
    EXPECT_TRUE(drawnAfter([&] { matrix.cells()[3]->setRepresentedObject(std::make_shared<Item>()); }));
    EXPECT_TRUE(drawnAfter([&] { matrix.setCellSize(QSizeF(30, 30)); }));
    EXPECT_TRUE(drawnAfter([&] { matrix.renewRows(2, 3); }));
    EXPECT_TRUE(drawnAfter([&] { matrix.clearFocus(); }));
    EXPECT_TRUE(drawnAfter([&] { matrix.setFocus(); }));
}

TEST_F(MatrixTest, FillsWhatIsBesideAndBetweenItsCells)
{
    QPalette palette;
    palette.setColor(QPalette::Base, Qt::magenta);
    matrix.setPalette(palette);
    matrix.renewRows(2, 2);
    matrix.setFrame(QRectF(0, 0, 200, 100));
    QImage image(200, 100, QImage::Format_RGB32);
    image.fill(Qt::blue);
    matrix.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    for (const QPoint place :
         {QPoint(10, 10), QPoint(41, 10), QPoint(10, 30), QPoint(150, 10), QPoint(10, 90), QPoint(199, 99)})
        EXPECT_EQ(image.pixelColor(place), QColor(Qt::magenta)) << place.x() << " " << place.y();
}

TEST_F(MatrixTest, ReachesTheLastOfAMillionCellsInTwoColumns)
{
    auto *const grid = new Matrix;
    platform::ScrollView scrollView;
    scrollView.setDocumentView(grid);
    grid->setCellSize(QSizeF(120, 90));
    grid->setPrototype(std::make_unique<NotingCell>(drawings));
    grid->renewRows(500'000, 2);
    grid->sizeToCells();
    scrollView.resize(260, 400);
    scrollView.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&scrollView));
    EXPECT_GT(grid->viewFrame().height(), 16'777'215);
    EXPECT_EQ(grid->height(), scrollView.viewport()->height());
    scrollView.verticalScrollBar()->setValue(scrollView.verticalScrollBar()->maximum());
    drawings.clear();
    grid->repaint();
    EXPECT_TRUE(drawn().contains(999'999));
    const QRectF last = grid->cellFrameAtRow(499'999, 1);
    const QPointF middle = grid->toWidget(last).center();
    EXPECT_TRUE(QRectF(grid->rect()).contains(middle));
    EXPECT_EQ(grid->placeAtPoint(grid->fromWidget(middle)), (Place{499'999, 1}));
    EXPECT_EQ(grid->visibleRect().bottom(), grid->viewFrame().height());
    scrollView.verticalScrollBar()->setValue(0);
    drawings.clear();
    grid->repaint();
    EXPECT_TRUE(drawn().contains(0));
}

TEST_F(MatrixTest, IsATableForScreenReaders)
{
    matrix.setPrototype(std::make_unique<NotingCell>(drawings));
    matrix.renewRows(2, 3);
    matrix.setFrame(QRectF(0, 0, 200, 40));
    matrix.selectCellAtRow(1, 1);
    QAccessibleInterface *const table = QAccessible::queryAccessibleInterface(&matrix);
    ASSERT_TRUE(table);
    EXPECT_EQ(table->role(), QAccessible::Table);
    EXPECT_EQ(table->childCount(), 6);
    ASSERT_TRUE(table->tableInterface());
    EXPECT_EQ(table->tableInterface()->rowCount(), 2);
    EXPECT_EQ(table->tableInterface()->columnCount(), 3);
    QAccessibleInterface *const cell = table->child(4);
    ASSERT_TRUE(cell);
    EXPECT_EQ(cell, table->tableInterface()->cellAt(1, 1)) << "one object for each cell";
    EXPECT_EQ(cell->role(), QAccessible::Cell);
    EXPECT_EQ(cell->text(QAccessible::Name), "cell 4");
    EXPECT_EQ(cell->parent(), table);
    EXPECT_EQ(table->indexOfChild(cell), 4);
    EXPECT_TRUE(cell->state().selected);
    EXPECT_FALSE(table->child(0)->state().selected);
    EXPECT_EQ(cell->tableCellInterface()->rowIndex(), 1);
    EXPECT_EQ(cell->tableCellInterface()->columnIndex(), 1);
    EXPECT_EQ(table->tableInterface()->selectedCells(), QList<QAccessibleInterface *>({cell}));
    EXPECT_EQ(table->child(6), nullptr);
    const QRect frame = cell->rect();
    EXPECT_EQ(frame.size(), QSize(40, 30));
    EXPECT_EQ(table->childAt(frame.center().x(), frame.center().y()), cell);
    EXPECT_FALSE(table->child(1)->state().offscreen);

    table->child(2)->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(selected(), Indexes({2, 4}));
    int doubleActions = 0;
    QObject::connect(&matrix, &Matrix::doubleAction, [&] { ++doubleActions; });
    table->child(0)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(selected(), Indexes({0}));
    EXPECT_EQ(doubleActions, 1);

    matrix.renewRows(1, 1);
    EXPECT_FALSE(cell->isValid());
    EXPECT_TRUE(cell->state().invalid);
    EXPECT_EQ(cell->text(QAccessible::Name), "");
}
