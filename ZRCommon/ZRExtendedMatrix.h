#pragma once

#include "Platform/Foundation/IndexSet.h"
#include "Platform/Interface/KeyBindings.h"
#include "Platform/Interface/Matrix.h"

#include <QImage>
#include <QMimeData>
#include <QPointer>
#include <QTextCharFormat>
#include <QVariantMap>

#include <memory>

namespace platform {
class ArrayController;
}

/// A grid that lives in a `platform::ScrollView`, flows its cells into as many columns as fit the visible width, keeps
/// its selection across that, moves a selection of one cell by the keyboard, drags its cells out, and can hand its
/// selection over to an array controller.
///
/// A cell is used when it has a represented object. A grid is usually renewed with more cells than there are items. The
/// blanks at its end count neither as photos nor in a selection that is saved; but they can be selected, by a click, a
/// key or with all cells, so that `selectedIndexes` holds them. Blanks must stand at the end.
///
/// The selection is changed when the mouse button goes up: a click selects the cell there alone, with the command key
/// it is added (never taken away, also with Shift), with Shift all from the last selected one to it are; a click beside
/// the cells selects nothing. A double click sends the double action. A press on a cell that is drawn further than 10
/// points begins a drag, if a subclass allows it.
///
/// While it is bound, what the person and the operations below select goes to the controller, and the grid shows what
/// that then tells. The operations of `platform::Matrix` and those of a cell change the grid alone; after `renewRows`
/// the host has the controller tell its selection again.
///
/// The main thread only.
class ZRExtendedMatrix : public platform::Matrix
{
    Q_OBJECT

public:
    explicit ZRExtendedMatrix(QWidget *parent = nullptr);
    ~ZRExtendedMatrix() override;

    // Layout

    /// Whether the cells flow with the width. They do; a subclass may turn it off.
    virtual bool usesAvailableWidthToLayoutCells() const { return true; }
    /// The cells that have a represented object, in their order.
    std::vector<platform::Cell *> usedCells() const;
    /// Costs nothing.
    qint64 usedCellsCount() const { return numberOfUsedCells(); }
    struct RowsAndColumns {
        int rows = 0;
        int columns = 1;
    };
    /// As many columns as fit the visible width (spacing between the cells is not counted), one at least, and the rows
    /// that so many cells then need.
    RowsAndColumns getRowsNeeded(qint64 cellCount) const;
    /// Lays the grid out anew when another number of columns is needed. The same cells stay selected, and nothing is
    /// told of that; but a bound controller's selection is emptied and set again. The cell that showed first still
    /// does.
    void possiblyAdjustNumberRowsAndColumns();
    /// Sizes to the cells, and at least to what shows of the scroll view's document.
    void sizeToCells() override;
    void setFrame(const QRectF &frame) override;

    // Selection. What changes it asks the controller instead while the grid is bound to one.

    void matrixDeselectAllCells();
    /// A cell without an object, and a place that is not there, select nothing while the grid is bound.
    void matrixSelectCellAtRow(int row, int column);
    /// Adds the cells between two indexes. While the grid is bound, objects of that range are added, as far as there
    /// are any, and the other two are passed over.
    void matrixSetSelectionFrom(qint64 from, qint64 to, qint64 anchor, bool highlight);
    void selectAll() override;
    void selectCell(const platform::Cell &cell) override;
    void toggleCell(const platform::Cell &cell) override;
    struct CellBounds {
        int minRow;
        int minColumn;
        int maxRow;
        int maxColumn;
        friend bool operator==(const CellBounds &a, const CellBounds &b)
        {
            return a.minRow == b.minRow && a.minColumn == b.minColumn && a.maxRow == b.maxRow
                && a.maxColumn == b.maxColumn;
        }
    };
    /// The rows and columns in which cells are highlighted. With none, the minima are the numbers of rows and columns,
    /// and the maxima 0.
    CellBounds selectedCellBounds() const;
    /// "count": the number of used cells; "indexes": the places among the used cells of those that are selected.
    QVariantMap saveSelection() const;
    /// Selects what was saved when there are as many used cells as then, and nothing otherwise.
    void restoreSelection(const QVariantMap &selection);

    // Keyboard. A move selects one cell next to the highlighted ones and does nothing at the edge; forward and backward
    // go on in the next and former row. The cell may be a blank.

    bool acceptsFirstResponder() const override { return true; }
    /// Sends the double action.
    void insertNewline();
    void moveForward();
    void moveBackward();
    void moveUp();
    void moveDown();
    void moveLeft();
    void moveRight();
    /// Does what the key is bound to. The keys that turn pages do nothing, on purpose.
    /// @return whether the grid knows the action
    virtual bool performKeyAction(platform::KeyAction action);

    // Binding

    /// Binds "matrixSelectedObjects" to a controller's property that holds a `QList<ObjectPointer>` and tells of its
    /// changes, usually "selectedObjects". The host fills the cells: cell i must show the arranged object i. Nothing is
    /// shown before the controller tells of its selection next, and selecting always goes through its
    /// `setSelectedObjects` and `addSelectedObjects`. The controller is not owned; a grid whose controller was
    /// destroyed is unbound. An earlier binding must be undone first: it is still told of otherwise.
    /// @return false for any other binding, and for a property that is not there or tells nothing
    bool bind(const QString &binding, platform::ArrayController *controller, const QString &keyPath);
    /// Leaves the selection as it is.
    void unbind(const QString &binding);

    // Mouse and dragging

    /// Where the button was last pressed, in the grid's coordinates, rounded to single precision.
    QPointF mouseDownPoint() const { return QPointF(float(m_mouse_down_point.x()), float(m_mouse_down_point.y())); }
    /// Null on no cell.
    platform::Cell *cellAtPoint(const QPointF &point) const;
    /// Whether cells may be dragged out. Not, unless a subclass says so.
    virtual bool allowDraggingOut() const { return false; }
    /// What a drag carries; nothing here.
    virtual std::unique_ptr<QMimeData> pasteboardForDrag() { return nullptr; }
    /// Drags the cell where the button was pressed, with all selected ones if it is selected, and alone otherwise.
    /// Returns when the drag has ended, by which time the grid may be destroyed.
    void startDrag(const platform::MouseEvent &event);
    /// A picture of the cell at a point with a badge that counts the selected cells; null on no cell. As large as a
    /// cell, at the device's pixel ratio.
    QImage dragImageForImageAtPoint(const QPointF &point);

    /// How the count is written, in white and bold: of up to two digits in 14 pixels, of more in 11.
    static QTextCharFormat badgeDrawingStringAttributes();
    static QTextCharFormat smallerBadgeDrawingStringAttributes();
    /// The badge behind the count, at the best of its sizes for a pixel ratio.
    static QImage badgeImage(qreal devicePixelRatio);

protected:
    bool mouseDown(const platform::MouseEvent &event) override;
    bool mouseDragged(const platform::MouseEvent &event) override;
    bool mouseUp(const platform::MouseEvent &event) override;
    void keyPressEvent(QKeyEvent *event) override;

private Q_SLOTS:
    void observeSelectedObjects();

private:
    double visibleWidth() const;
    void selectTarget(int row, int column);
    void selectAgain(const platform::IndexSet &indexes);
    struct ShownPlace {
        qint64 index = 0; // of the first cell of the first row that shows
        double fraction = 0; // of that row which is above
    };
    ShownPlace shownPlace() const;
    void showPlace(const ShownPlace &place);
    static void drawBadge(QPainter &painter, double height, qint64 count);

    QString m_observed_key_path_for_matrix_selection;
    QPointer<platform::ArrayController> m_observed_object_for_matrix_selection;
    QPointF m_mouse_down_point;
    QMetaObject::Connection m_selectionObservation;
    ShownPlace m_shown; // when the cells flowed last
    double m_shownTop = 0; // where that was then
};
