#include "Platform/Interface/Cell.h"

#include "Platform/Interface/Matrix.h"

#include <QPainter>

namespace platform {

namespace {

QPalette::ColorGroup highlightGroup(const View &view)
{
    return view.isFirstResponder() && view.isActiveWindow() ? QPalette::Active : QPalette::Inactive;
}

} // namespace

std::unique_ptr<Cell> Cell::clone() const
{
    return std::unique_ptr<Cell>(new Cell(*this));
}

void Cell::setRepresentedObject(const ObjectPointer &object)
{
    const bool wasUsed = m_represented_object != nullptr;
    m_represented_object = object;
    if (m_matrix)
        m_matrix->objectOfCellChanged(*this, wasUsed);
}

bool Cell::isSelected() const
{
    return m_matrix ? m_matrix->selectedIndexes().contains(m_index) : m_isSelected;
}

void Cell::setSelected(bool isSelected)
{
    if (m_matrix)
        m_matrix->setCellSelected(*this, isSelected);
    else
        m_isSelected = isSelected;
}

bool Cell::isHighlighted() const
{
    return m_matrix ? m_matrix->highlightedIndexes().contains(m_index) : m_isHighlighted;
}

void Cell::setHighlighted(bool isHighlighted)
{
    if (m_matrix)
        m_matrix->setCellHighlighted(*this, isHighlighted);
    else
        m_isHighlighted = isHighlighted;
}

void Cell::drawWithFrame(QPainter &painter, const QRectF &frame, const View &view)
{
    drawInteriorWithFrame(painter, frame, view);
}

void Cell::drawInteriorWithFrame(QPainter &painter, const QRectF &frame, const View &view)
{
    if (isHighlighted())
        painter.fillRect(frame, highlightColorWithFrame(frame, view));
}

QColor Cell::highlightColorWithFrame(const QRectF &, const View &view) const
{
    return view.palette().color(highlightGroup(view), QPalette::Highlight);
}

QColor Cell::highlightedTextColor(const View &view) const
{
    return view.palette().color(highlightGroup(view), QPalette::HighlightedText);
}

} // namespace platform
