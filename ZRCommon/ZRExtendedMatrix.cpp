#include "ZRCommon/ZRExtendedMatrix.h"

#include "Platform/Interface/ArrayController.h"
#include "Platform/Interface/DragRunner.h"
#include "Platform/Interface/ScrollView.h"
#include "ZRCommon/ScaledImages_p.h"

#include <QKeyEvent>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <unordered_set>

using platform::Cell;
using platform::CommandKeyMask;
using platform::IndexSet;
using platform::KeyAction;
using platform::MouseEvent;
using platform::ObjectPointer;
using platform::ShiftKeyMask;

namespace {

const QString selectionBinding = QStringLiteral("matrixSelectedObjects");

using ObjectList = QList<ObjectPointer>;

struct HashOfObject {
    size_t operator()(const platform::Object *object) const { return object->hash(); }
};
struct EqualObjects {
    bool operator()(const platform::Object *a, const platform::Object *b) const { return platform::areEqual(a, b); }
};

QTextCharFormat whiteBold(int pixelSize)
{
    QFont font;
    font.setBold(true);
    font.setPixelSize(pixelSize);
    QTextCharFormat format;
    format.setFont(font);
    format.setForeground(Qt::white);
    return format;
}

} // namespace

ZRExtendedMatrix::ZRExtendedMatrix(QWidget *parent)
    : Matrix(parent)
{ }

ZRExtendedMatrix::~ZRExtendedMatrix() = default;

std::vector<Cell *> ZRExtendedMatrix::usedCells() const
{
    std::vector<Cell *> used;
    used.reserve(size_t(usedCellsCount()));
    for (const auto &cell : cells()) {
        if (cell->representedObject())
            used.push_back(cell.get());
    }
    return used;
}

double ZRExtendedMatrix::visibleWidth() const
{
    const platform::ScrollView *const scrollView = enclosingScrollView();
    return scrollView ? scrollView->documentVisibleRect().width() : 0;
}

ZRExtendedMatrix::RowsAndColumns ZRExtendedMatrix::getRowsNeeded(qint64 cellCount) const
{
    constexpr float most = 100'000; // more than any screen shows; cells must be made for them
    const float columns = float(visibleWidth()) / float(cellSize().width());
    RowsAndColumns needed;
    // Cells without a width give no number.
    needed.columns = columns >= 1 && std::isfinite(columns) ? int(std::min(columns, most)) : 1;
    needed.rows = int((cellCount + needed.columns - 1) / needed.columns);
    return needed;
}

// The cells noted are reselected at once: by themselves each would cost as much as all.
void ZRExtendedMatrix::selectAgain(const IndexSet &indexes)
{
    const QPointer<ZRExtendedMatrix> grid(this);
    matrixDeselectAllCells(); // a controller that has this selection already would tell nothing
    if (!grid)
        return;
    if (!m_observed_object_for_matrix_selection)
        return setSelectedIndexes(indexes);
    const ObjectList arranged = m_observed_object_for_matrix_selection->arrangedObjects();
    ObjectList objects;
    for (const platform::IndexRange &range : indexes.ranges()) {
        for (qint64 index = range.location; index < std::min<qint64>(range.end(), arranged.size()); ++index)
            objects.append(arranged[index]);
    }
    m_observed_object_for_matrix_selection->setSelectedObjects(objects);
}

/// What shows first, so that it shows first again when the cells stand elsewhere.
ZRExtendedMatrix::ShownPlace ZRExtendedMatrix::shownPlace() const
{
    const double rowHeight = cellSize().height() + intercellSpacing().height();
    const double top = enclosingScrollView() ? enclosingScrollView()->documentVisibleRect().top() : 0;
    if (!(top > 0 && rowHeight > 0))
        return {};
    // Nobody has scrolled since: from each flow to the next the first cell of a row would drift to the start.
    if (top == m_shownTop)
        return m_shown;
    const double row = std::floor(top / rowHeight);
    return {qint64(row) * numberOfColumns(), top / rowHeight - row};
}

void ZRExtendedMatrix::showPlace(const ShownPlace &place)
{
    platform::ScrollView *const scrollView = enclosingScrollView();
    if (!scrollView || place.index <= 0 || numberOfColumns() == 0)
        return;
    const double rowHeight = cellSize().height() + intercellSpacing().height();
    const double top = (double(place.index / numberOfColumns()) + place.fraction) * rowHeight;
    scrollView->scrollToPoint(QPointF(scrollView->documentVisibleRect().x(), top));
    m_shown = place;
    m_shownTop = scrollView->documentVisibleRect().top();
}

void ZRExtendedMatrix::possiblyAdjustNumberRowsAndColumns()
{
    const RowsAndColumns needed = getRowsNeeded(usedCellsCount());
    if (needed.columns == numberOfColumns())
        return;
    const ShownPlace shown = shownPlace();
    const IndexSet selected = selectedIndexes();
    const QPointer<ZRExtendedMatrix> grid(this); // which whoever is told may destroy
    {
        const SelectionBatch batch(*this); // the same cells stay selected
        renewRows(needed.rows, needed.columns);
        selectAgain(selected);
    }
    if (!grid)
        return;
    sizeToCells();
    showPlace(shown);
    setNeedsDisplay();
}

void ZRExtendedMatrix::sizeToCells()
{
    const platform::ScrollView *const scrollView = enclosingScrollView();
    setFrameSize(scrollView ? sizeOfCells().expandedTo(scrollView->contentSize()) : sizeOfCells());
}

void ZRExtendedMatrix::setFrame(const QRectF &frame)
{
    const double oldWidth = viewFrame().width();
    Matrix::setFrame(frame);
    if (!usesAvailableWidthToLayoutCells())
        return;
    const QPointer<ZRExtendedMatrix> grid(this);
    if (frame.width() != oldWidth)
        possiblyAdjustNumberRowsAndColumns();
    if (grid)
        sizeToCells();
}

void ZRExtendedMatrix::matrixDeselectAllCells()
{
    if (m_observed_object_for_matrix_selection)
        m_observed_object_for_matrix_selection->setSelectedObjects({});
    else
        deselectAllCells();
}

void ZRExtendedMatrix::matrixSelectCellAtRow(int row, int column)
{
    if (!m_observed_object_for_matrix_selection)
        return selectCellAtRow(row, column);
    const Cell *const cell = cellAtRow(row, column);
    if (cell && cell->representedObject())
        m_observed_object_for_matrix_selection->setSelectedObjects({cell->representedObject()});
}

void ZRExtendedMatrix::matrixSetSelectionFrom(qint64 from, qint64 to, qint64 anchor, bool highlight)
{
    if (!m_observed_object_for_matrix_selection)
        return setSelectionFrom(from, to, anchor, highlight);
    const ObjectList arranged = m_observed_object_for_matrix_selection->arrangedObjects();
    const qint64 low = std::max<qint64>(std::min(from, to), 0);
    const qint64 high = std::min<qint64>(std::max(from, to), arranged.size() - 1);
    if (low <= high)
        m_observed_object_for_matrix_selection->addSelectedObjects(arranged.mid(low, high - low + 1));
}

void ZRExtendedMatrix::selectAll()
{
    if (m_observed_object_for_matrix_selection)
        m_observed_object_for_matrix_selection->setSelectedObjects(
            m_observed_object_for_matrix_selection->arrangedObjects());
    else
        Matrix::selectAll();
}

void ZRExtendedMatrix::selectCell(const Cell &cell)
{
    const Place place = placeOfCell(cell);
    matrixSelectCellAtRow(place.row, place.column);
}

void ZRExtendedMatrix::toggleCell(const Cell &cell)
{
    if (!m_observed_object_for_matrix_selection)
        Matrix::toggleCell(cell);
    else if (cell.representedObject() && cell.isSelected())
        m_observed_object_for_matrix_selection->removeSelectedObjects({cell.representedObject()});
    else if (cell.representedObject())
        m_observed_object_for_matrix_selection->addSelectedObjects({cell.representedObject()});
}

ZRExtendedMatrix::CellBounds ZRExtendedMatrix::selectedCellBounds() const
{
    CellBounds bounds{numberOfRows(), numberOfColumns(), 0, 0};
    for (const platform::IndexRange &range : highlightedIndexes().ranges()) {
        const qint64 last = range.end() - 1;
        const int firstRow = int(range.location / numberOfColumns()), lastRow = int(last / numberOfColumns());
        bounds.minRow = std::min(bounds.minRow, firstRow);
        bounds.maxRow = std::max(bounds.maxRow, lastRow);
        // A range that goes on in the next row reaches both edges.
        const bool isInOneRow = firstRow == lastRow;
        bounds.minColumn = std::min(bounds.minColumn, isInOneRow ? int(range.location % numberOfColumns()) : 0);
        bounds.maxColumn =
            std::max(bounds.maxColumn, isInOneRow ? int(last % numberOfColumns()) : numberOfColumns() - 1);
    }
    return bounds;
}

QVariantMap ZRExtendedMatrix::saveSelection() const
{
    QVariantList indexes;
    qint64 place = 0;
    auto range = selectedIndexes().ranges().begin();
    const auto end = selectedIndexes().ranges().end();
    for (const auto &cell : cells()) {
        if (!cell->representedObject())
            continue;
        while (range != end && range->end() <= cell->index())
            ++range;
        if (range != end && range->location <= cell->index())
            indexes.append(place);
        ++place;
    }
    return {{QStringLiteral("count"), usedCellsCount()}, {QStringLiteral("indexes"), indexes}};
}

void ZRExtendedMatrix::restoreSelection(const QVariantMap &selection)
{
    if (selection.value(QStringLiteral("count")).toLongLong() != usedCellsCount())
        return matrixDeselectAllCells();
    IndexSet indexes;
    for (const QVariant &saved : selection.value(QStringLiteral("indexes")).toList()) {
        const qint64 index = saved.toLongLong();
        if (index >= 0 && index < numberOfCells())
            indexes.addIndex(index);
    }
    selectAgain(indexes);
}

void ZRExtendedMatrix::insertNewline()
{
    sendDoubleAction();
}

void ZRExtendedMatrix::selectTarget(int row, int column)
{
    if (row < 0 || column < 0)
        return;
    const QPointer<ZRExtendedMatrix> grid(this);
    matrixSelectCellAtRow(row, column);
    if (!grid || !cellAtRow(row, column))
        return;
    QRectF frame = cellFrameAtRow(row, column);
    // Where as many columns as fit are shown, some points of the last one may not: nothing moves aside for these.
    if (usesAvailableWidthToLayoutCells()) {
        frame.setLeft(visibleRect().left());
        frame.setWidth(1);
    }
    scrollRectToVisible(frame);
}

void ZRExtendedMatrix::moveRight()
{
    const CellBounds bounds = selectedCellBounds();
    if (bounds.maxColumn + 1 < numberOfColumns())
        selectTarget(bounds.maxRow, bounds.maxColumn + 1);
}

void ZRExtendedMatrix::moveDown()
{
    const CellBounds bounds = selectedCellBounds();
    if (bounds.maxRow + 1 < numberOfRows())
        selectTarget(bounds.maxRow + 1, bounds.maxColumn);
}

void ZRExtendedMatrix::moveLeft()
{
    const CellBounds bounds = selectedCellBounds();
    selectTarget(bounds.minRow, bounds.minColumn - 1);
}

void ZRExtendedMatrix::moveUp()
{
    const CellBounds bounds = selectedCellBounds();
    selectTarget(bounds.minRow - 1, bounds.minColumn);
}

void ZRExtendedMatrix::moveForward()
{
    const CellBounds bounds = selectedCellBounds();
    if (bounds.maxColumn + 1 < numberOfColumns())
        selectTarget(bounds.maxRow, bounds.maxColumn + 1);
    else if (bounds.maxRow + 1 < numberOfRows())
        selectTarget(bounds.maxRow + 1, 0);
}

void ZRExtendedMatrix::moveBackward()
{
    const CellBounds bounds = selectedCellBounds();
    if (bounds.minColumn > 0)
        selectTarget(bounds.minRow, bounds.minColumn - 1);
    else
        selectTarget(bounds.minRow - 1, numberOfColumns() - 1);
}

bool ZRExtendedMatrix::performKeyAction(KeyAction action)
{
    switch (action) {
    case KeyAction::moveForward:
        moveForward();
        return true;
    case KeyAction::moveBackward:
        moveBackward();
        return true;
    case KeyAction::moveUp:
        moveUp();
        return true;
    case KeyAction::moveDown:
        moveDown();
        return true;
    case KeyAction::moveLeft:
        moveLeft();
        return true;
    case KeyAction::moveRight:
        moveRight();
        return true;
    case KeyAction::insertNewline:
        insertNewline();
        return true;
    case KeyAction::selectAll:
        selectAll();
        return true;
    case KeyAction::pageUp:
    case KeyAction::pageDown:
    case KeyAction::scrollPageUp:
    case KeyAction::scrollPageDown:
    case KeyAction::scrollToBeginningOfDocument:
    case KeyAction::scrollToEndOfDocument:
        return true;
    default:
        return false;
    }
}

void ZRExtendedMatrix::keyPressEvent(QKeyEvent *event)
{
    const auto action = platform::keyActionFor(*event);
    if (!action || !performKeyAction(*action))
        Matrix::keyPressEvent(event);
}

bool ZRExtendedMatrix::bind(const QString &binding, platform::ArrayController *controller, const QString &keyPath)
{
    if (binding != selectionBinding || !controller)
        return false;
    const QMetaObject &about = *controller->metaObject();
    const int property = about.indexOfProperty(keyPath.toUtf8().constData());
    if (property < 0 || !about.property(property).hasNotifySignal())
        return false;
    const int slot = metaObject()->indexOfSlot("observeSelectedObjects()");
    m_selectionObservation =
        connect(controller, about.property(property).notifySignal(), this, metaObject()->method(slot));
    m_observed_object_for_matrix_selection = controller;
    m_observed_key_path_for_matrix_selection = keyPath;
    return true;
}

void ZRExtendedMatrix::unbind(const QString &binding)
{
    if (binding != selectionBinding)
        return;
    disconnect(m_selectionObservation); // and nothing else that the host has connected
    m_observed_object_for_matrix_selection = nullptr;
    m_observed_key_path_for_matrix_selection.clear();
}

void ZRExtendedMatrix::observeSelectedObjects()
{
    if (!m_observed_object_for_matrix_selection)
        return;
    const QVariant value =
        m_observed_object_for_matrix_selection->property(m_observed_key_path_for_matrix_selection.toUtf8().constData());
    const auto objects = value.value<ObjectList>();
    std::unordered_set<const platform::Object *, HashOfObject, EqualObjects> selected;
    selected.reserve(size_t(objects.size()));
    for (const ObjectPointer &object : objects) {
        if (object)
            selected.insert(object.get());
    }
    IndexSet shown;
    for (const auto &cell : cells()) {
        if (!selected.empty() && cell->representedObject() && selected.contains(cell->representedObject().get()))
            shown.addIndex(cell->index());
    }
    // The base class's operation: showing the controller's selection must not change it.
    setSelectedIndexes(shown);
}

Cell *ZRExtendedMatrix::cellAtPoint(const QPointF &point) const
{
    const auto place = placeAtPoint(point);
    return place ? cellAtRow(place->row, place->column) : nullptr;
}

bool ZRExtendedMatrix::mouseDown(const MouseEvent &event)
{
    m_mouse_down_point = event.location;
    setFocus(Qt::MouseFocusReason); // whoever loses it may destroy the grid
    return true;
}

bool ZRExtendedMatrix::mouseDragged(const MouseEvent &event)
{
    constexpr float threshold = 10;
    const QPointF way = event.location - m_mouse_down_point;
    if (placeAtPoint(m_mouse_down_point) && float(std::hypot(way.x(), way.y())) > threshold)
        startDrag(event);
    return true;
}

bool ZRExtendedMatrix::mouseUp(const MouseEvent &event)
{
    if (event.clickCount == 2) {
        sendDoubleAction();
        return true;
    }
    const auto place = placeAtPoint(event.location);
    if (!place) {
        matrixDeselectAllCells();
        return true;
    }
    const qint64 index = qint64(numberOfColumns()) * place->row + place->column;
    if (event.contains(CommandKeyMask)) {
        matrixSetSelectionFrom(index, index, index, true);
    } else if (event.contains(ShiftKeyMask)) {
        // With nothing selected this lies before the first cell.
        const qint64 anchor = qint64(selectedRow()) * numberOfColumns() + selectedColumn();
        matrixSetSelectionFrom(anchor, index, anchor, true);
    } else {
        matrixSelectCellAtRow(place->row, place->column);
    }
    return true;
}

void ZRExtendedMatrix::startDrag(const MouseEvent &event)
{
    if (!allowDraggingOut())
        return;
    const auto place = placeAtPoint(m_mouse_down_point);
    const Cell *const cell = place ? cellAtRow(place->row, place->column) : nullptr;
    if (!cell || !cell->representedObject())
        return;
    if (!cell->isSelected()) {
        const QPointer<ZRExtendedMatrix> grid(this);
        matrixDeselectAllCells();
        if (grid)
            matrixSelectCellAtRow(place->row, place->column);
        if (!grid)
            return;
    }
    platform::Drag drag;
    drag.image = dragImageForImageAtPoint(event.location);
    drag.data = pasteboardForDrag();
    drag.source = this;
    drag.supportedActions = Qt::CopyAction;
    // The picture stands on its cell, moved as far as the pointer was.
    const QSizeF imageSize = drag.image.isNull() ? QSizeF() : drag.image.deviceIndependentSize();
    const QRectF frame = cellFrameAtRow(place->row, place->column);
    const QPointF corner(frame.x() + (cellSize().width() - imageSize.width()) * 0.5,
                         frame.y() + (cellSize().height() - imageSize.height()) * 0.5);
    drag.hotSpot = (m_mouse_down_point - corner).toPoint();
    if (drag.data)
        platform::runDrag(std::move(drag));
}

QTextCharFormat ZRExtendedMatrix::badgeDrawingStringAttributes()
{
    static const QTextCharFormat attributes = whiteBold(14);
    return attributes;
}

QTextCharFormat ZRExtendedMatrix::smallerBadgeDrawingStringAttributes()
{
    static const QTextCharFormat attributes = whiteBold(11);
    return attributes;
}

QImage ZRExtendedMatrix::badgeImage(qreal devicePixelRatio)
{
    static const ScaledImages badges(QStringLiteral("PhotoDragCount"));
    return badges.image(devicePixelRatio);
}

QImage ZRExtendedMatrix::dragImageForImageAtPoint(const QPointF &point)
{
    const auto place = placeAtPoint(point);
    Cell *const cell = place ? cellAtRow(place->row, place->column) : nullptr;
    if (!cell)
        return QImage();
    const qreal ratio = devicePixelRatioF();
    const auto transparent = [&] {
        QImage image((cellSize() * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::transparent);
        return image;
    };
    QImage work = transparent(), result = transparent();
    {
        QPainter painter(&work);
        cell->drawWithFrame(painter, QRectF(QPointF(), cellFrameAtRow(place->row, place->column).size()), *this);
    }
    QPainter painter(&result);
    painter.setOpacity(0.75);
    painter.drawImage(QPointF(), work);
    painter.setOpacity(1);
    const QColor gray(128, 128, 128);
    const double width = cellSize().width(), height = cellSize().height();
    for (const QRectF &edge : {QRectF(0, 0, width, 1), QRectF(0, height - 1, width, 1), QRectF(0, 1, 1, height - 2),
                               QRectF(width - 1, 1, 1, height - 2)})
        painter.fillRect(edge, gray);
    drawBadge(painter, height, selectedIndexes().count());
    return result;
}

// Places count from the lower left corner.
void ZRExtendedMatrix::drawBadge(QPainter &painter, double height, qint64 count)
{
    const QTextCharFormat attributes =
        count > 99 ? smallerBadgeDrawingStringAttributes() : badgeDrawingStringAttributes();
    painter.setFont(attributes.font());
    painter.setPen(attributes.foreground().color());
    const int x = (count > 9 ? 10 : 15) - (count > 99 ? 2 : 0);
    const QString text = QString::number(count);
    const QImage badge = badgeImage(painter.device()->devicePixelRatioF());
    if (!badge.isNull()) {
        // Its middle is stretched below a number of more digits than it has room for.
        const QSizeF size = badge.deviceIndependentSize();
        const double left = 5, top = height - 15 - size.height(), half = std::floor(size.width() / 2);
        const double end = x + painter.fontMetrics().horizontalAdvance(text) + (x - left);
        const double extra = count > 999 ? std::max(0.0, end - left - size.width()) : 0;
        const auto draw = [&](double fromX, double fromWidth, double toX, double toWidth) {
            const double scale = badge.devicePixelRatio();
            painter.drawImage(QRectF(left + toX, top, toWidth, size.height()), badge,
                              QRectF(fromX * scale, 0, fromWidth * scale, badge.height()));
        };
        draw(0, half, 0, half);
        draw(half, 1, half, extra + 1);
        draw(half + 1, size.width() - half - 1, half + extra + 1, size.width() - half - 1);
    }
    painter.drawText(QPointF(x, height - 18 - painter.fontMetrics().descent()), text);
}
