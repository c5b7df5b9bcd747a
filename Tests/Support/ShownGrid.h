#pragma once

#include "Platform/Interface/ArrayController.h"
#include "Platform/Interface/ScrollView.h"
#include "Support/TestSupport.h"
#include "ZRCommon/ZRExtendedMatrix.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QTest>

#include <memory>

namespace testSupport {

/// A grid in a scroll view that is on the screen, with the mouse and the keys of a person who uses it.
template <class Grid>
struct ShownGrid {
    platform::ScrollView scrollView;
    QPointer<Grid> grid = new Grid; // the scroll view's

    explicit ShownGrid(const QSize &size)
    {
        scrollView.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scrollView.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scrollView.resize(size);
        scrollView.setDocumentView(grid);
        scrollView.show(); // widgets that were never shown have no size
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&scrollView));
    }

    /// Shows the objects in as many columns as fit, with so many rows of blanks below them.
    template <class Objects>
    void showObjects(const Objects &objects, int extraRows = 0)
    {
        const auto needed = grid->getRowsNeeded(objects.size());
        grid->renewRows(needed.rows + extraRows, needed.columns);
        for (qsizetype i = 0; i < objects.size(); ++i)
            grid->cellAtIndex(i)->setRepresentedObject(objects[i]);
        grid->sizeToCells();
    }

    QPointF middleOf(int row, int column) const { return grid->toWidget(grid->cellFrameAtRow(row, column)).center(); }
    void send(QEvent::Type type, const QPointF &place, Qt::KeyboardModifiers modifiers = {})
    {
        QMouseEvent event(type, place, grid->mapToGlobal(place),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, modifiers);
        event.setTimestamp(time += 10);
        QCoreApplication::sendEvent(grid, &event);
    }
    void key(int key, Qt::KeyboardModifiers modifiers = {})
    {
        QKeyEvent event(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(grid, &event);
    }
    quint64 time = 1'000'000; // of the last event, in milliseconds
};

/// Cells of 100 by 50 without a gap, which may be dragged.
class DraggedMatrix : public ZRExtendedMatrix
{
public:
    DraggedMatrix()
    {
        setCellSize(QSizeF(100, 50));
        setIntercellSpacing(QSizeF(0, 0));
    }
    bool allowsDragging = true;
    bool hasData = true;
    bool allowDraggingOut() const override { return allowsDragging; }
    std::unique_ptr<QMimeData> pasteboardForDrag() override
    {
        return hasData ? std::make_unique<QMimeData>() : nullptr;
    }
};

/// Such cells, four in a row, of items that a controller holds as well.
struct ShownItems : ShownGrid<DraggedMatrix> {
    platform::ArrayController controller;

    ShownItems()
        : ShownGrid(QSize(430, 300))
    { }
    void fill(int count, int extraRows = 0)
    {
        QList<platform::ObjectPointer> items;
        for (int i = 0; i < count; ++i)
            items.append(std::make_shared<platform::Object>());
        showObjects(items, extraRows);
        controller.setContent(items);
    }
};

} // namespace testSupport
