#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QAccessibleWidget>

#include <unordered_map>

namespace platform {

class Matrix;

/// A matrix as a screen reader sees it: a table whose cells have a name, a place and a state, and can be selected and
/// opened.
class MatrixAccessible : public QAccessibleWidget, public QAccessibleTableInterface
{
public:
    explicit MatrixAccessible(Matrix &matrix);
    ~MatrixAccessible() override;

    /// Has matrices found. Done once, by the first matrix.
    static void install();
    /// Tells of a changed selection, if anybody listens.
    static void selectionChanged(Matrix &matrix);
    /// Tells of other cells, or cells in other places, if anybody listens.
    static void cellsChanged(Matrix &matrix);
    /// Tells that a cell says something else.
    static void nameChanged(Matrix &matrix, int index);

    void *interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::Role role() const override { return QAccessible::Table; }
    int childCount() const override;
    QAccessibleInterface *child(int index) const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QAccessibleInterface *childAt(int x, int y) const override;
    QAccessibleInterface *focusChild() const override;

    QAccessibleInterface *caption() const override { return nullptr; }
    QAccessibleInterface *summary() const override { return nullptr; }
    QAccessibleInterface *cellAt(int row, int column) const override;
    int selectedCellCount() const override;
    QList<QAccessibleInterface *> selectedCells() const override;
    QString columnDescription(int) const override { return QString(); }
    QString rowDescription(int) const override { return QString(); }
    int selectedColumnCount() const override { return 0; }
    int selectedRowCount() const override { return 0; }
    int columnCount() const override;
    int rowCount() const override;
    QList<int> selectedColumns() const override { return {}; }
    QList<int> selectedRows() const override { return {}; }
    bool isColumnSelected(int) const override { return false; }
    bool isRowSelected(int) const override { return false; }
    bool selectRow(int) override { return false; }
    bool selectColumn(int) override { return false; }
    bool unselectRow(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent *) override { }

private:
    Matrix &matrix() const;
    int currentIndex() const;

    mutable std::unordered_map<int, QAccessible::Id> m_children; // that were asked for
};

} // namespace platform
