#pragma once

#include "Platform/Foundation/IndexSet.h"
#include "Platform/Interface/Cell.h"
#include "Platform/Interface/View.h"

#include <QPointer>
#include <QSizeF>

#include <memory>
#include <optional>
#include <vector>

namespace platform {

/// A grid of cells of one size, row by row: the cell at row r and column c has index r * numberOfColumns + c. Any
/// number of cells may be selected, also none.
///
/// The selected cells are what the host acts on: `selectionChanged` tells of them. The highlighted ones are what is
/// drawn as selected. The operations of the matrix set both; only a cell's own setters set one alone. Both are sets of
/// ranges of indexes: to select a million cells costs as much as to select one. Drawing and finding a cell cost the
/// same however many cells there are.
///
/// The main thread only.
class Matrix : public View
{
    Q_OBJECT

public:
    struct Place {
        int row = -1;
        int column = -1;
        friend bool operator==(const Place &a, const Place &b) { return a.row == b.row && a.column == b.column; }
    };

    explicit Matrix(QWidget *parent = nullptr);
    ~Matrix() override;

    /// What new cells are copies of.
    const Cell &prototype() const { return *m_prototype; }
    /// A failed assertion when there is none.
    void setPrototype(std::unique_ptr<Cell> prototype);

    int numberOfRows() const { return m_numberOfRows; }
    int numberOfColumns() const { return m_numberOfColumns; }
    qint64 numberOfCells() const { return qint64(m_cells.size()); }
    /// Of each cell, 100 by 17 at first; and what is left free between two cells, 1 by 1 at first. Neither lays
    /// anything out by itself: `sizeToCells` does.
    QSizeF cellSize() const { return m_cellSize; }
    void setCellSize(const QSizeF &size);
    QSizeF intercellSpacing() const { return m_intercellSpacing; }
    void setIntercellSpacing(const QSizeF &spacing);
    /// Whether the view's base colour stands behind the cells; it does, at first. Otherwise, what is behind the view:
    /// of the scroll view, if there is one.
    bool drawsBackground() const { return m_drawsBackground; }
    void setDrawsBackground(bool drawsBackground);

    /// Has the grid so many rows and columns. The cells stay, in their order, as far as there is room for them; those
    /// that are missing are copies of the prototype, those that are too many go. Nothing is selected or highlighted
    /// afterwards. Negative numbers count as 0, and the product is limited to 2^31 - 1 cells.
    virtual void renewRows(int rows, int columns);
    /// Of all cells, with the spacing between them.
    QSizeF sizeOfCells() const;
    /// Makes the frame as large as the cells.
    virtual void sizeToCells();

    /// Row by row. The matrix owns them; a pointer is good until a `renewRows` that leaves the cell no room.
    const std::vector<std::unique_ptr<Cell>> &cells() const { return m_cells; }
    /// Null outside the grid.
    Cell *cellAtIndex(qint64 index) const;
    Cell *cellAtRow(int row, int column) const;
    /// (-1, -1) for a cell of another matrix or of none.
    Place placeOfCell(const Cell &cell) const;
    /// The place whose cell has the point within it; nothing between the cells and outside the grid.
    std::optional<Place> placeAtPoint(const QPointF &point) const;
    /// Of any place, also of one that has no cell.
    QRectF cellFrameAtRow(int row, int column) const;
    /// How many cells have a represented object. Costs nothing.
    qint64 numberOfUsedCells() const { return m_numberOfUsedCells; }

    const IndexSet &selectedIndexes() const { return m_selected; }
    const IndexSet &highlightedIndexes() const { return m_highlighted; }
    /// In the order of their indexes.
    std::vector<Cell *> selectedCells() const;
    /// The place from which a further selection extends, as the last operation of the matrix set it; -1 when nothing is
    /// selected or none was set. A cell's own setters leave it, unless nothing is selected any more.
    int selectedRow() const { return m_current.row; }
    int selectedColumn() const { return m_current.column; }
    /// Selects and highlights the cell alone. A row or column of -1 selects nothing; any other place that is not there
    /// changes nothing.
    virtual void selectCellAtRow(int row, int column);
    virtual void deselectAllCells();
    /// Adds the cells between two indexes, in whatever order, to those that are selected and highlighted, or takes them
    /// away from these. Indexes outside the grid are passed over.
    /// @param anchor becomes the place from which a further selection extends, if there is a cell
    /// @param highlight false to take the cells away
    virtual void setSelectionFrom(qint64 from, qint64 to, qint64 anchor, bool highlight);
    /// Selects and highlights the cells at these indexes and no others, however scattered they are, in one operation.
    /// Indexes outside the grid are passed over. A further selection extends from the last one.
    void setSelectedIndexes(const IndexSet &indexes);
    virtual void selectAll();
    /// To be called by a cell that looks otherwise, or is called otherwise: has it drawn again, and so many points
    /// above its frame, and tells assistive technology of its name if it shows.
    void cellChanged(const Cell &cell, double above = 0);

    /// What assistive technology asks for: to select a cell alone, and to add it or take it away. The cell must be in
    /// this matrix.
    virtual void selectCell(const Cell &cell);
    virtual void toggleCell(const Cell &cell);

    void sendAction() { Q_EMIT action(); }
    void sendDoubleAction() { Q_EMIT doubleAction(); }

Q_SIGNALS:
    /// Sent by hosts and subclasses through `sendAction`; the framework sends it nowhere.
    void action();
    /// A double click or the Return key, where a subclass takes them.
    void doubleAction();
    /// The selection is another one; told once, at the end of the operation that changed it. A slot may renew the
    /// matrix or destroy it. One that selects something else has those who are told later hear of the newer selection
    /// first.
    void selectionChanged();

protected:
    /// While one lives `selectionChanged` waits; it is told at the end, if the selection is another one by then than it
    /// was at the beginning.
    class SelectionBatch
    {
    public:
        explicit SelectionBatch(Matrix &matrix);
        SelectionBatch(const SelectionBatch &) = delete;
        SelectionBatch &operator=(const SelectionBatch &) = delete;
        ~SelectionBatch();

    private:
        const QPointer<Matrix> m_matrix;
        const IndexSet m_before;
    };

    void drawRect(QPainter &painter, const QRectF &dirty) override;
    /// Draws a cell that shows. An exception that leaves the cell is logged, and the others are drawn, by the painter
    /// begun anew.
    /// @return whether the cell drew itself to the end
    virtual bool drawCell(QPainter &painter, Cell &cell, const QRectF &frame);
    /// Rows and columns, first and behind the last, that are in a rectangle.
    struct PlaceRange {
        Place first;
        Place end;
    };
    PlaceRange placesInRect(const QRectF &rect) const;
    void drawBackground(QPainter &painter, const QRectF &dirty, const PlaceRange &places);
    void changeEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    friend class Cell;
    void objectOfCellChanged(const Cell &cell, bool wasUsed);
    void setCellSelected(const Cell &cell, bool isSelected);
    void setCellHighlighted(const Cell &cell, bool isHighlighted);
    bool hasPlace(int row, int column) const;
    void changeSelection(IndexSet selected, IndexSet highlighted);
    QSizeF stride() const { return m_cellSize + m_intercellSpacing; }

    std::unique_ptr<Cell> m_prototype;
    std::vector<std::unique_ptr<Cell>> m_cells;
    int m_numberOfRows = 0;
    int m_numberOfColumns = 0;
    QSizeF m_cellSize{100, 17};
    QSizeF m_intercellSpacing{1, 1};
    bool m_drawsBackground = true;
    qint64 m_numberOfUsedCells = 0;
    IndexSet m_selected;
    IndexSet m_highlighted;
    int m_selectionBatches = 0;
    Place m_current;
};

} // namespace platform
