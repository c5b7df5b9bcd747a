#include "BoundGridWindow.h"

#include "Platform/Interface/ScrollView.h"
#include "ZRCommon/ZRExtendedMatrix.h"

#include <QListView>
#include <QSplitter>
#include <QStatusBar>

BoundGridWindow::BoundGridWindow()
    : m_list(new QListView)
    , m_grid(new ZRExtendedMatrix)
{
    m_controller.setContent(namedSwatches());
    makeViews();

    // The grid: cell i shows the arranged object i, and its selection is bound to the controller's.
    const auto swatches = m_controller.arrangedObjects();
    const auto needed = m_grid->getRowsNeeded(swatches.size());
    m_grid->renewRows(needed.rows, needed.columns);
    for (qsizetype i = 0; i < swatches.size(); ++i)
        m_grid->cellAtIndex(i)->setRepresentedObject(swatches[i]);
    m_grid->sizeToCells();
    m_grid->bind(QStringLiteral("matrixSelectedObjects"), &m_controller, QStringLiteral("selectedObjects"));

    // The list: the controller is its model, and the two selections follow each other.
    m_list->setModel(&m_controller);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &BoundGridWindow::takeSelectionOfList);
    connect(&m_controller, &SwatchController::selectionIndexesChanged, this, &BoundGridWindow::showSelection);
    m_controller.setSelectionIndex(0);
}

BoundGridWindow::~BoundGridWindow()
{
    delete takeCentralWidget(); // the views, which look at the controller
}

void BoundGridWindow::makeViews()
{
    setWindowTitle(QStringLiteral("Bound Grid"));
    m_list->setAccessibleName(QStringLiteral("Colors"));
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_grid->setAccessibleName(QStringLiteral("Swatches"));
    m_grid->setPrototype(std::make_unique<SwatchCell>());
    m_grid->setCellSize(QSizeF(122, 76));
    m_grid->setIntercellSpacing(QSizeF(2, 2));

    auto *const scrollView = new platform::ScrollView;
    scrollView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    scrollView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrollView->setDocumentView(m_grid);
    auto *const splitter = new QSplitter;
    splitter->addWidget(m_list);
    splitter->addWidget(scrollView);
    splitter->setStretchFactor(1, 1);
    setCentralWidget(splitter);
    resize(720, 480);
    splitter->setSizes({200, 520});
}

platform::IndexSet BoundGridWindow::rowsSelectedInList() const
{
    platform::IndexSet rows;
    for (const QItemSelectionRange &range : m_list->selectionModel()->selection())
        rows.addRange({range.top(), range.height()});
    return rows;
}

void BoundGridWindow::takeSelectionOfList()
{
    const platform::IndexSet rows = rowsSelectedInList();
    if (rows == m_controller.selectionIndexes())
        return; // the list shows what was selected elsewhere
    m_controller.setSelectionIndexes(rows);
    const int row = m_list->currentIndex().row();
    m_grid->scrollRectToVisible(
        m_grid->cellFrameAtRow(row / m_grid->numberOfColumns(), row % m_grid->numberOfColumns()));
}

void BoundGridWindow::showSelection()
{
    const platform::IndexSet selected = m_controller.selectionIndexes();
    statusBar()->showMessage(
        QStringLiteral("%1 of %2 colors selected").arg(selected.count()).arg(m_controller.rowCount()));
    if (selected == rowsSelectedInList())
        return; // it was selected there
    QItemSelection selection;
    for (const platform::IndexRange &range : selected.ranges())
        selection.select(m_controller.index(int(range.location)), m_controller.index(int(range.end() - 1)));
    m_list->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (!selected.isEmpty())
        m_list->selectionModel()->setCurrentIndex(m_controller.index(int(*selected.begin())),
                                                  QItemSelectionModel::NoUpdate);
}
