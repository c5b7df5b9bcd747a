#include "BoundGrid/BoundGridWindow.h"
#include "Platform/Interface/ScrollView.h"
#include "Support/IndexSets.h"
#include "Support/PictureDistance.h"
#include "Support/TestSupport.h"
#include "ZRCommon/ZRExtendedMatrix.h"

#include <QIcon>
#include <QListView>
#include <QStatusBar>
#include <QTest>

#include <set>

namespace {

using platform::IndexRange;
using platform::IndexSet;
using testSupport::indexes;

struct BoundGrid : testing::Test {
    BoundGridWindow window;
    QListView &list = window.list();
    ZRExtendedMatrix &grid = window.grid();

    BoundGrid()
    {
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    IndexSet selectedInList() const
    {
        IndexSet rows;
        for (const QModelIndex &index : list.selectionModel()->selectedIndexes())
            rows.addIndex(index.row());
        return rows;
    }
    /// All three know the same selection.
    void expectSelected(const IndexSet &expected)
    {
        EXPECT_EQ(window.controller().selectionIndexes(), expected);
        EXPECT_EQ(grid.selectedIndexes(), expected);
        EXPECT_EQ(grid.highlightedIndexes(), expected);
        EXPECT_EQ(selectedInList(), expected);
    }
    QRectF frameOf(int index) const
    {
        return grid.cellFrameAtRow(index / grid.numberOfColumns(), index % grid.numberOfColumns());
    }
    void clickInGrid(int index, Qt::KeyboardModifiers modifiers = {})
    {
        grid.scrollRectToVisible(frameOf(index));
        QTest::mouseClick(&grid, Qt::LeftButton, modifiers, grid.toWidget(frameOf(index)).center().toPoint());
    }
    void clickInList(int row, Qt::KeyboardModifiers modifiers = {})
    {
        const QModelIndex index = list.model()->index(row, 0);
        list.scrollTo(index);
        QTest::mouseClick(list.viewport(), Qt::LeftButton, modifiers, list.visualRect(index).center());
    }
};

} // namespace

TEST_F(BoundGrid, ShowsEveryNamedColorOnceInBoth)
{
    const auto swatches = window.controller().arrangedObjects();
    EXPECT_EQ(list.model()->rowCount(), swatches.size());
    EXPECT_EQ(grid.usedCellsCount(), swatches.size());
    std::set<QRgb> colors;
    for (qsizetype i = 0; i < swatches.size(); ++i) {
        const auto &swatch = dynamic_cast<const Swatch &>(*swatches[i]);
        EXPECT_TRUE(colors.insert(swatch.color.rgba()).second) << qPrintable(swatch.name);
        EXPECT_EQ(list.model()->index(int(i), 0).data().toString(), swatch.name);
        const auto icon = list.model()->index(int(i), 0).data(Qt::DecorationRole).value<QIcon>();
        for (const auto mode : {QIcon::Normal, QIcon::Selected})
            EXPECT_EQ(icon.pixmap(QSize(20, 14), mode).toImage().pixelColor(10, 7), swatch.color);
        EXPECT_EQ(grid.cellAtIndex(i)->accessibleName(), swatch.name);
    }
    EXPECT_EQ(colors.count(qRgba(0, 0, 0, 0)), 0u) << "there is nothing to see of that one";
    EXPECT_GT(colors.size(), 100u);
}

TEST_F(BoundGrid, BeginsWithTheFirstColorSelected)
{
    expectSelected(indexes({0}));
    EXPECT_EQ(window.statusBar()->currentMessage(),
              QStringLiteral("1 of %1 colors selected").arg(list.model()->rowCount()));
}

TEST_F(BoundGrid, WhatIsSelectedInTheGridIsSelectedInTheList)
{
    clickInGrid(7);
    expectSelected(indexes({7}));
    clickInGrid(9, Qt::ControlModifier);
    expectSelected(indexes({7, 9}));
    clickInGrid(12, Qt::ShiftModifier);
    expectSelected(indexes({7, 9, 10, 11, 12}));
    QTest::keyClick(&grid, Qt::Key_A, Qt::ControlModifier);
    expectSelected(IndexSet(IndexRange{0, list.model()->rowCount()}));
    clickInGrid(1);
    QTest::keyClick(&grid, Qt::Key_Right);
    expectSelected(indexes({2}));
    QTest::keyClick(&grid, Qt::Key_Down);
    expectSelected(indexes({2 + grid.numberOfColumns()}));
}

TEST_F(BoundGrid, WhatIsSelectedInTheListIsSelectedInTheGrid)
{
    clickInList(7);
    expectSelected(indexes({7}));
    clickInList(9, Qt::ControlModifier);
    expectSelected(indexes({7, 9}));
    clickInList(7, Qt::ControlModifier);
    expectSelected(indexes({9}));
    clickInList(12, Qt::ShiftModifier);
    EXPECT_TRUE(grid.selectedIndexes().contains(12));
    expectSelected(selectedInList());
    QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
    expectSelected(IndexSet(IndexRange{0, list.model()->rowCount()}));
    clickInList(3);
    QTest::keyClick(&list, Qt::Key_Down);
    expectSelected(indexes({4}));
    list.clearSelection();
    expectSelected({});
    EXPECT_TRUE(window.statusBar()->currentMessage().startsWith(QStringLiteral("0 of ")));
}

TEST_F(BoundGrid, TheHostSelectsInBoth)
{
    const IndexSet scattered = testSupport::everySecondOf(window.controller().rowCount());
    int changes = 0;
    QObject::connect(&grid, &ZRExtendedMatrix::selectionChanged, [&] { ++changes; });
    window.controller().setSelectionIndexes(scattered);
    expectSelected(scattered);
    EXPECT_EQ(changes, 1);
}

TEST_F(BoundGrid, WhatIsSelectedInOneComesIntoViewInTheOther)
{
    const int last = list.model()->rowCount() - 1;
    clickInList(last);
    EXPECT_TRUE(grid.visibleRect().contains(frameOf(last)));
    clickInGrid(0);
    EXPECT_TRUE(list.viewport()->rect().contains(list.visualRect(list.model()->index(0, 0))));
    clickInGrid(last);
    EXPECT_TRUE(list.viewport()->rect().contains(list.visualRect(list.model()->index(last, 0))));
}

TEST_F(BoundGrid, KeepsItsSelectionWhileItFlows)
{
    clickInGrid(5);
    clickInGrid(9, Qt::ControlModifier);
    const int columns = grid.numberOfColumns();
    window.resize(window.width() * 2, window.height());
    EXPECT_TRUE(testSupport::waitUntil([&] { return grid.numberOfColumns() > columns; }));
    expectSelected(indexes({5, 9}));
}

// The kept picture is of a screen of single resolution.
TEST_F(BoundGrid, LooksAsItShould)
{
    clickInGrid(9);
    clickInGrid(13, Qt::ControlModifier);
    clickInGrid(14, Qt::ControlModifier);
    const QImage reference(QStringLiteral(ZR_SOURCE_DIR "/Tests/Examples/BoundGrid/References/window.png"));
    ASSERT_EQ(reference.size(), window.size());
    for (const int ratio : {1, 2}) {
        QImage image(window.size() * ratio, QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        window.render(&image);
        const auto distance = testSupport::distance(reference, image, window.size());
        EXPECT_LE(distance.mean, ratio == 1 ? 1 : 4);
        EXPECT_LE(distance.share, ratio == 1 ? 0.002 : 0.03);
    }
}
