#pragma once

#include "Swatch.h"

#include <QMainWindow>

class QListView;
class ZRExtendedMatrix;
namespace platform {
class ScrollView;
}

/// Colours in a list and in a grid. Both show the objects of one controller and select through it, so that what is
/// selected in either is selected in both, and comes into view there.
///
/// The grid is bound to the controller. A list of Qt has a selection of its own instead, which this class keeps equal
/// to the controller's.
class BoundGridWindow : public QMainWindow
{
    Q_OBJECT

public:
    BoundGridWindow();
    ~BoundGridWindow() override;

    SwatchController &controller() { return m_controller; }
    QListView &list() const { return *m_list; }
    ZRExtendedMatrix &grid() const { return *m_grid; }

private:
    void makeViews();
    platform::IndexSet rowsSelectedInList() const;
    void takeSelectionOfList();
    void showSelection();

    SwatchController m_controller;
    QListView *m_list = nullptr;
    ZRExtendedMatrix *m_grid = nullptr;
};
