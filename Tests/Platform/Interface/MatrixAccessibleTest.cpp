// What a screen reader is told of the cells of a matrix that is on the screen, and scrolled.

#include "Platform/Interface/Matrix.h"
#include "Platform/Interface/ScrollView.h"
#include "Support/TestSupport.h"

#include <QAccessible>
#include <QTest>

namespace {

using platform::Matrix;
struct MatrixAccessible : testing::Test {
    platform::ScrollView scrollView;
    Matrix &matrix = *new Matrix; // the scroll view's

    MatrixAccessible()
    {
        scrollView.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scrollView.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        matrix.setCellSize(QSizeF(40, 30));
        matrix.setIntercellSpacing(QSizeF(0, 0));
        matrix.renewRows(100, 2);
        scrollView.resize(100, 90);
        scrollView.setDocumentView(&matrix);
        matrix.sizeToCells();
        scrollView.show();
        scrollView.activateWindow();
        matrix.setFocus();
        EXPECT_TRUE(testSupport::waitUntil([this] { return matrix.hasFocus(); }));
    }
    QAccessibleInterface &table() { return *QAccessible::queryAccessibleInterface(&matrix); }
};

} // namespace

TEST_F(MatrixAccessible, KnowsTheSelectionAndTheCellThatHasTheKeyboard)
{
    EXPECT_EQ(table().focusChild(), nullptr);
    matrix.selectCellAtRow(1, 1);
    EXPECT_EQ(table().focusChild(), table().child(3));
    EXPECT_TRUE(table().child(3)->state().focused);
    EXPECT_FALSE(table().child(2)->state().focused);
    EXPECT_TRUE(table().child(2)->state().focusable);
    matrix.setSelectionFrom(0, 4, 0, true);
    EXPECT_EQ(table().tableInterface()->selectedCellCount(), 5);
}

TEST_F(MatrixAccessible, KnowsWhereTheCellsAreOnTheScreen)
{
    EXPECT_FALSE(table().child(5)->state().offscreen);
    EXPECT_TRUE(table().child(6)->state().offscreen);
    scrollView.scrollToPoint(QPointF(0, 300));
    EXPECT_TRUE(table().child(5)->state().offscreen);
    EXPECT_FALSE(table().child(20)->state().offscreen);
    const QPoint corner = scrollView.viewport()->mapToGlobal(QPoint(0, 0));
    EXPECT_EQ(table().child(21)->rect(), QRect(corner + QPoint(40, 0), QSize(40, 30)));
    EXPECT_EQ(table().childAt(corner.x() + 60, corner.y() + 35), table().child(23));
}

TEST_F(MatrixAccessible, TheCellsGoWithTheirMatrix)
{
    const QAccessible::Id id = QAccessible::uniqueId(table().child(3));
    EXPECT_TRUE(QAccessible::accessibleInterface(id));
    scrollView.setDocumentView(nullptr);
    EXPECT_FALSE(QAccessible::accessibleInterface(id));
}
