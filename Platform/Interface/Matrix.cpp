#include "Platform/Interface/Matrix.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/EventBoundary.h"
#include "Platform/Interface/MatrixAccessible_p.h"
#include "Platform/Interface/ScrollView.h"

#include <QEvent>
#include <QLoggingCategory>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace platform {

namespace {

Q_LOGGING_CATEGORY(matrices, "platform.matrix")

} // namespace

Matrix::Matrix(QWidget *parent)
    : View(parent)
    , m_prototype(std::make_unique<Cell>())
{
    MatrixAccessible::install();
}

Matrix::~Matrix() = default;

void Matrix::setPrototype(std::unique_ptr<Cell> prototype)
{
    ZR_ASSERT_PARAMETER(this, prototype != nullptr);
    m_prototype = std::move(prototype);
}

void Matrix::setCellSize(const QSizeF &size)
{
    m_cellSize = size;
    setNeedsDisplay();
}

void Matrix::setIntercellSpacing(const QSizeF &spacing)
{
    m_intercellSpacing = spacing;
    setNeedsDisplay();
}

void Matrix::setDrawsBackground(bool drawsBackground)
{
    m_drawsBackground = drawsBackground;
    setNeedsDisplay();
}

void Matrix::renewRows(int rows, int columns)
{
    rows = std::max(rows, 0);
    columns = std::max(columns, 0);
    const qint64 wanted = std::min<qint64>(qint64(rows) * columns, std::numeric_limits<int>::max());
    if (columns > 0)
        rows = int(std::min<qint64>(rows, wanted / columns));
    const auto count = size_t(qint64(rows) * columns);
    for (size_t i = count; i < m_cells.size(); ++i)
        m_numberOfUsedCells -= m_cells[i]->representedObject() != nullptr;
    m_cells.reserve(count);
    m_cells.resize(std::min(count, m_cells.size()));
    while (m_cells.size() < count) {
        std::unique_ptr<Cell> cell = m_prototype->clone();
        cell->m_matrix = this;
        cell->m_index = quint32(m_cells.size());
        m_numberOfUsedCells += cell->representedObject() != nullptr;
        m_cells.push_back(std::move(cell));
    }
    m_numberOfRows = rows;
    m_numberOfColumns = columns;
    m_current = {};
    setNeedsDisplay();
    MatrixAccessible::cellsChanged(*this);
    changeSelection({}, {});
}

QSizeF Matrix::sizeOfCells() const
{
    const auto extent = [](int count, double length, double spacing) {
        return count > 0 ? count * length + (count - 1) * spacing : 0;
    };
    return QSizeF(extent(m_numberOfColumns, m_cellSize.width(), m_intercellSpacing.width()),
                  extent(m_numberOfRows, m_cellSize.height(), m_intercellSpacing.height()));
}

void Matrix::sizeToCells()
{
    setFrameSize(sizeOfCells());
}

bool Matrix::hasPlace(int row, int column) const
{
    return row >= 0 && row < m_numberOfRows && column >= 0 && column < m_numberOfColumns;
}

Cell *Matrix::cellAtIndex(qint64 index) const
{
    return index >= 0 && index < numberOfCells() ? m_cells[size_t(index)].get() : nullptr;
}

Cell *Matrix::cellAtRow(int row, int column) const
{
    return hasPlace(row, column) ? cellAtIndex(qint64(row) * m_numberOfColumns + column) : nullptr;
}

Matrix::Place Matrix::placeOfCell(const Cell &cell) const
{
    if (cell.m_matrix != this)
        return {};
    return {int(cell.m_index) / m_numberOfColumns, int(cell.m_index) % m_numberOfColumns};
}

std::optional<Matrix::Place> Matrix::placeAtPoint(const QPointF &point) const
{
    const QSizeF step = stride();
    if (!(point.x() >= 0 && point.y() >= 0 && step.width() > 0 && step.height() > 0))
        return std::nullopt;
    const double columns = point.x() / step.width(), rows = point.y() / step.height();
    if (!(columns < m_numberOfColumns && rows < m_numberOfRows))
        return std::nullopt;
    const int column = int(columns), row = int(rows); // rounded down: neither is below 0
    const bool isOnCell =
        point.x() - column * step.width() < m_cellSize.width() && point.y() - row * step.height() < m_cellSize.height();
    return isOnCell ? std::optional(Place{row, column}) : std::nullopt;
}

QRectF Matrix::cellFrameAtRow(int row, int column) const
{
    const QSizeF step = stride();
    return QRectF(QPointF(column * step.width(), row * step.height()), m_cellSize);
}

std::vector<Cell *> Matrix::selectedCells() const
{
    std::vector<Cell *> cells;
    cells.reserve(size_t(m_selected.count()));
    for (const IndexRange &range : m_selected.ranges()) {
        for (qint64 index = range.location; index < range.end(); ++index)
            cells.push_back(m_cells[size_t(index)].get());
    }
    return cells;
}

void Matrix::selectCellAtRow(int row, int column)
{
    if (row == -1 || column == -1)
        return deselectAllCells();
    if (!hasPlace(row, column))
        return;
    m_current = {row, column};
    IndexSet alone;
    alone.addIndex(qint64(row) * m_numberOfColumns + column);
    changeSelection(alone, alone);
}

void Matrix::deselectAllCells()
{
    m_current = {};
    changeSelection({}, {});
}

void Matrix::setSelectionFrom(qint64 from, qint64 to, qint64 anchor, bool highlight)
{
    const qint64 first = std::max<qint64>(std::min(from, to), 0);
    const qint64 last = std::min(std::max(from, to), numberOfCells() - 1);
    if (first > last)
        return;
    if (cellAtIndex(anchor) && (highlight || !m_selected.isEmpty()))
        m_current = {int(anchor / m_numberOfColumns), int(anchor % m_numberOfColumns)};
    IndexSet selected = m_selected, highlighted = m_highlighted;
    for (IndexSet *const set : {&selected, &highlighted}) {
        if (highlight)
            set->addRange({first, last - first + 1});
        else
            set->removeRange({first, last - first + 1});
    }
    changeSelection(std::move(selected), std::move(highlighted));
}

void Matrix::setSelectedIndexes(const IndexSet &indexes)
{
    IndexSet selected = indexes;
    selected.intersect(IndexSet(IndexRange{0, numberOfCells()}));
    m_current = {};
    if (!selected.isEmpty())
        m_current = {int(selected.lastIndex() / m_numberOfColumns), int(selected.lastIndex() % m_numberOfColumns)};
    changeSelection(selected, selected);
}

void Matrix::selectAll()
{
    setSelectionFrom(0, numberOfCells() - 1, m_current.row < 0 ? 0 : -1, true);
}

void Matrix::selectCell(const Cell &cell)
{
    const Place place = placeOfCell(cell);
    selectCellAtRow(place.row, place.column);
}

void Matrix::toggleCell(const Cell &cell)
{
    setSelectionFrom(cell.index(), cell.index(), cell.index(), !cell.isSelected());
}

void Matrix::changeSelection(IndexSet selected, IndexSet highlighted)
{
    const bool isOther = selected != m_selected;
    if (!isOther && highlighted == m_highlighted)
        return;
    m_selected = std::move(selected);
    m_highlighted = std::move(highlighted);
    if (m_selected.isEmpty())
        m_current = {};
    setNeedsDisplay();
    if (!isOther || m_selectionBatches > 0)
        return;
    MatrixAccessible::selectionChanged(*this);
    Q_EMIT selectionChanged();
}

Matrix::SelectionBatch::SelectionBatch(Matrix &matrix)
    : m_matrix(&matrix)
    , m_before(matrix.m_selected)
{
    ++matrix.m_selectionBatches;
}

Matrix::SelectionBatch::~SelectionBatch()
{
    if (!m_matrix || --m_matrix->m_selectionBatches > 0 || m_matrix->m_selected == m_before)
        return;
    callGuarded(matrices(), QStringLiteral("telling of a selection"), [this] {
        MatrixAccessible::selectionChanged(*m_matrix);
        Q_EMIT m_matrix->selectionChanged();
    });
}

void Matrix::setCellSelected(const Cell &cell, bool isSelected)
{
    IndexSet selected = m_selected;
    if (isSelected)
        selected.addIndex(cell.m_index);
    else
        selected.removeIndex(cell.m_index);
    changeSelection(std::move(selected), m_highlighted);
}

void Matrix::setCellHighlighted(const Cell &cell, bool isHighlighted)
{
    IndexSet highlighted = m_highlighted;
    if (isHighlighted)
        highlighted.addIndex(cell.m_index);
    else
        highlighted.removeIndex(cell.m_index);
    changeSelection(m_selected, std::move(highlighted));
}

void Matrix::objectOfCellChanged(const Cell &cell, bool wasUsed)
{
    m_numberOfUsedCells += int(cell.representedObject() != nullptr) - int(wasUsed);
    cellChanged(cell);
}

void Matrix::cellChanged(const Cell &cell, double above)
{
    const Place place = placeOfCell(cell);
    const QRectF frame = cellFrameAtRow(place.row, place.column);
    setNeedsDisplay(frame.adjusted(0, -above, 0, 0));
    if (QAccessible::isActive() && visibleRect().intersects(frame))
        MatrixAccessible::nameChanged(*this, int(cell.index()));
}

Matrix::PlaceRange Matrix::placesInRect(const QRectF &rect) const
{
    const QSizeF step = stride();
    if (rect.isEmpty() || !(step.width() > 0 && step.height() > 0))
        return {{0, 0}, {0, 0}};
    const auto place = [](double position, double length, int count) {
        return int(std::clamp(position / length, 0.0, double(count)));
    };
    const auto end = [](double position, double length, int count) {
        return int(std::clamp(std::ceil(position / length), 0.0, double(count)));
    };
    return {{place(rect.top(), step.height(), m_numberOfRows), place(rect.left(), step.width(), m_numberOfColumns)},
            {end(rect.bottom(), step.height(), m_numberOfRows), end(rect.right(), step.width(), m_numberOfColumns)}};
}

void Matrix::drawRect(QPainter &painter, const QRectF &dirty)
{
    const PlaceRange places = placesInRect(dirty);
    drawBackground(painter, dirty, places);
    const QTransform transform = painter.transform();
    const std::optional<QRegion> clip = painter.hasClipping() ? std::optional(painter.clipRegion()) : std::nullopt;
    for (int row = places.first.row; row < places.end.row; ++row) {
        for (int column = places.first.column; column < places.end.column; ++column) {
            Cell &cell = *m_cells[size_t(qint64(row) * m_numberOfColumns + column)];
            if (drawCell(painter, cell, cellFrameAtRow(row, column)))
                continue;
            // How the cell has left the painter, nobody knows. To keep its state for each would cost as much as a cell.
            QPaintDevice *const device = painter.device();
            painter.end();
            painter.begin(device);
            painter.setTransform(transform);
            if (clip)
                painter.setClipRegion(*clip);
        }
    }
}

// Every pixel is filled once: filling is half of what a cell costs. What opaque cells cover is left to them.
void Matrix::drawBackground(QPainter &painter, const QRectF &dirty, const PlaceRange &places)
{
    if (!m_drawsBackground && !enclosingScrollView())
        return;
    const QWidget &behind = m_drawsBackground ? *this : *parentWidget();
    const QColor color = behind.palette().color(m_drawsBackground ? QPalette::Base : parentWidget()->backgroundRole());
    const auto fill = [&](double left, double top, double right, double bottom) {
        const QRectF rect = QRectF(QPointF(left, top), QPointF(right, bottom)).intersected(dirty);
        if (!rect.isEmpty())
            painter.fillRect(rect, color);
    };
    const QSizeF step = stride();
    const double rowsEnd = places.end.row * step.height(), columnsEnd = places.end.column * step.width();
    fill(columnsEnd, dirty.top(), dirty.right(), dirty.bottom());
    fill(dirty.left(), rowsEnd, columnsEnd, dirty.bottom());
    for (int column = places.first.column; column < places.end.column; ++column)
        fill(column * step.width() + m_cellSize.width(), dirty.top(), (column + 1) * step.width(), rowsEnd);
    for (int row = places.first.row; row < places.end.row; ++row)
        fill(dirty.left(), row * step.height() + m_cellSize.height(), columnsEnd, (row + 1) * step.height());
    for (int row = places.first.row; row < places.end.row; ++row) {
        for (int column = places.first.column; column < places.end.column; ++column) {
            if (m_cells[size_t(qint64(row) * m_numberOfColumns + column)]->isOpaque())
                continue;
            const QRectF frame = cellFrameAtRow(row, column);
            fill(frame.left(), frame.top(), frame.right(), frame.bottom());
        }
    }
}

bool Matrix::drawCell(QPainter &painter, Cell &cell, const QRectF &frame)
{
    return callGuarded(matrices(), QStringLiteral("drawing a cell"),
                       [&] { cell.drawWithFrame(painter, frame, *this); });
}

// How selected cells look depends on whether the view has the keyboard.
void Matrix::changeEvent(QEvent *event)
{
    View::changeEvent(event);
    if (event->type() == QEvent::ActivationChange)
        setNeedsDisplay();
}

void Matrix::focusInEvent(QFocusEvent *)
{
    setNeedsDisplay();
}

void Matrix::focusOutEvent(QFocusEvent *)
{
    setNeedsDisplay();
}

} // namespace platform
