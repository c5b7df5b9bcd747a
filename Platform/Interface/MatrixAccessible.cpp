#include "Platform/Interface/MatrixAccessible_p.h"

#include "Platform/Interface/Matrix.h"

#include <QPointer>

namespace platform {

namespace {

class CellAccessible : public QAccessibleInterface,
                       public QAccessibleTableCellInterface,
                       public QAccessibleActionInterface
{
public:
    CellAccessible(Matrix &matrix, int index)
        : m_matrix(&matrix)
        , m_index(index)
    { }

    int index() const { return m_index; }

    bool isValid() const override { return m_matrix && m_matrix->cellAtIndex(m_index); }
    QObject *object() const override { return nullptr; }
    QWindow *window() const override { return nullptr; }
    QAccessibleInterface *parent() const override { return QAccessible::queryAccessibleInterface(m_matrix); }
    QAccessibleInterface *child(int) const override { return nullptr; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::Cell; }

    QString text(QAccessible::Text kind) const override
    {
        return isValid() && kind == QAccessible::Name ? m_matrix->cellAtIndex(m_index)->accessibleName() : QString();
    }
    void setText(QAccessible::Text, const QString &) override { }

    QRect rect() const override
    {
        if (!isValid())
            return QRect();
        const QRect shown = m_matrix->toWidget(frame()).toAlignedRect();
        return QRect(m_matrix->mapToGlobal(shown.topLeft()), shown.size());
    }

    QAccessible::State state() const override
    {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        state.selectable = true;
        state.multiSelectable = true;
        state.focusable = true;
        state.selected = m_matrix->selectedIndexes().contains(m_index);
        state.focused = m_matrix->isFirstResponder() && m_matrix->selectedRow() == rowIndex()
            && m_matrix->selectedColumn() == columnIndex();
        state.offscreen = !m_matrix->visibleRect().intersects(frame());
        return state;
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TableCellInterface)
            return static_cast<QAccessibleTableCellInterface *>(this);
        if (type == QAccessible::ActionInterface)
            return static_cast<QAccessibleActionInterface *>(this);
        return nullptr;
    }

    bool isSelected() const override { return state().selected; }
    QList<QAccessibleInterface *> columnHeaderCells() const override { return {}; }
    QList<QAccessibleInterface *> rowHeaderCells() const override { return {}; }
    int columnIndex() const override { return isValid() ? m_index % m_matrix->numberOfColumns() : -1; }
    int rowIndex() const override { return isValid() ? m_index / m_matrix->numberOfColumns() : -1; }
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QAccessibleInterface *table() const override { return parent(); }

    QStringList actionNames() const override { return {pressAction(), toggleAction()}; }
    void doAction(const QString &name) override
    {
        if (!isValid())
            return;
        const QPointer<Matrix> matrix = m_matrix; // which goes with the matrix, and so does this
        if (name == toggleAction()) {
            matrix->toggleCell(*matrix->cellAtIndex(m_index));
        } else if (name == pressAction()) {
            matrix->selectCell(*matrix->cellAtIndex(m_index));
            if (matrix)
                matrix->sendDoubleAction();
        }
    }
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    QRectF frame() const { return m_matrix->cellFrameAtRow(rowIndex(), columnIndex()); }

    QPointer<Matrix> m_matrix;
    int m_index;
};

QAccessibleInterface *accessibleOf(const QString &, QObject *object)
{
    auto *const matrix = qobject_cast<Matrix *>(object);
    return matrix ? new MatrixAccessible(*matrix) : nullptr;
}

} // namespace

void MatrixAccessible::install()
{
    [[maybe_unused]] static const bool isInstalled = (QAccessible::installFactory(accessibleOf), true);
}

MatrixAccessible::MatrixAccessible(Matrix &matrix)
    : QAccessibleWidget(&matrix)
{ }

MatrixAccessible::~MatrixAccessible()
{
    for (const auto &[index, id] : m_children)
        QAccessible::deleteAccessibleInterface(id);
}

Matrix &MatrixAccessible::matrix() const
{
    return static_cast<Matrix &>(*widget());
}

int MatrixAccessible::currentIndex() const
{
    const Matrix &grid = matrix();
    return grid.selectedRow() < 0 ? -1 : grid.selectedRow() * grid.numberOfColumns() + grid.selectedColumn();
}

void MatrixAccessible::selectionChanged(Matrix &matrix)
{
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent selection(&matrix, QAccessible::SelectionWithin);
    QAccessible::updateAccessibility(&selection);
    if (matrix.selectedRow() < 0 || !matrix.isFirstResponder())
        return;
    QAccessibleEvent focus(&matrix, QAccessible::Focus);
    focus.setChild(matrix.selectedRow() * matrix.numberOfColumns() + matrix.selectedColumn());
    QAccessible::updateAccessibility(&focus);
}

void MatrixAccessible::cellsChanged(Matrix &matrix)
{
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent event(&matrix, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&event);
}

void MatrixAccessible::nameChanged(Matrix &matrix, int index)
{
    QAccessibleEvent event(&matrix, QAccessible::NameChanged);
    event.setChild(index);
    QAccessible::updateAccessibility(&event);
}

void *MatrixAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableInterface)
        return static_cast<QAccessibleTableInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

int MatrixAccessible::childCount() const
{
    return int(matrix().numberOfCells());
}

QAccessibleInterface *MatrixAccessible::child(int index) const
{
    if (!matrix().cellAtIndex(index))
        return nullptr;
    const auto known = m_children.find(index);
    if (known != m_children.end())
        return QAccessible::accessibleInterface(known->second);
    auto *const cell = new CellAccessible(matrix(), index);
    m_children.emplace(index, QAccessible::registerAccessibleInterface(cell));
    return cell;
}

int MatrixAccessible::indexOfChild(const QAccessibleInterface *child) const
{
    const auto *const cell = dynamic_cast<const CellAccessible *>(child);
    return cell && cell->isValid() ? cell->index() : -1;
}

QAccessibleInterface *MatrixAccessible::childAt(int x, int y) const
{
    const QPointF point = matrix().fromWidget(matrix().mapFromGlobal(QPointF(x, y)));
    const auto place = matrix().placeAtPoint(point);
    return place ? cellAt(place->row, place->column) : nullptr;
}

QAccessibleInterface *MatrixAccessible::focusChild() const
{
    return matrix().isFirstResponder() ? child(currentIndex()) : nullptr;
}

QAccessibleInterface *MatrixAccessible::cellAt(int row, int column) const
{
    const Cell *const cell = matrix().cellAtRow(row, column);
    return cell ? child(int(cell->index())) : nullptr;
}

int MatrixAccessible::selectedCellCount() const
{
    return int(matrix().selectedIndexes().count());
}

QList<QAccessibleInterface *> MatrixAccessible::selectedCells() const
{
    QList<QAccessibleInterface *> cells;
    for (const Cell *const cell : matrix().selectedCells())
        cells.append(child(int(cell->index())));
    return cells;
}

int MatrixAccessible::columnCount() const
{
    return matrix().numberOfColumns();
}

int MatrixAccessible::rowCount() const
{
    return matrix().numberOfRows();
}

} // namespace platform
