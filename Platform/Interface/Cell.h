#pragma once

#include "Platform/Foundation/Object.h"

#include <QColor>
#include <QRectF>
#include <QString>

#include <memory>

class QPainter;

namespace platform {

class Matrix;
class View;

/// One of the many like things that a `Matrix` shows: small, without a widget of its own. It shows its represented
/// object; what it looks like is up to subclasses.
///
/// Whether a cell is selected or highlighted is kept by its matrix, in ranges; a cell that is in none keeps it itself.
///
/// Thread safety: the main thread only.
class Cell
{
public:
    Cell() = default;
    virtual ~Cell() = default;
    Cell &operator=(const Cell &) = delete;

    /// A new cell like this one, in no matrix, neither selected nor highlighted. It is up to the class whether it shows
    /// the same object; the base class's does. Every subclass overrides it.
    virtual std::unique_ptr<Cell> clone() const;

    const ObjectPointer &representedObject() const { return m_represented_object; }
    /// What the cell shows; null for nothing: the cell is a blank then. Subclasses that override it call the base
    /// class's.
    virtual void setRepresentedObject(const ObjectPointer &object);

    /// The matrix that the cell is in, and the cell's place in its `cells`; null and 0 when it is in none.
    Matrix *matrix() const { return m_matrix; }
    quint32 index() const { return m_index; }

    bool isSelected() const;
    void setSelected(bool isSelected);
    bool isHighlighted() const;
    void setHighlighted(bool isHighlighted);

    /// Draws the cell, by default its interior. The painter's coordinates run downwards.
    /// @param frame the cell's, in the view's coordinates
    virtual void drawWithFrame(QPainter &painter, const QRectF &frame, const View &view);
    /// Draws what is within the cell's border. The base class fills a highlighted cell with its highlight colour.
    virtual void drawInteriorWithFrame(QPainter &painter, const QRectF &frame, const View &view);
    /// The palette's highlight: of the active window while the view has the keyboard, otherwise of inactive ones.
    virtual QColor highlightColorWithFrame(const QRectF &frame, const View &view) const;
    /// What the palette has for text on that colour.
    QColor highlightedTextColor(const View &view) const;

    /// Whether drawing fills the whole frame, so that nothing need be drawn below. Not, unless a class says so.
    virtual bool isOpaque() const { return false; }
    /// What a screen reader says of the cell; empty by default.
    virtual QString accessibleName() const { return QString(); }

protected:
    /// For `clone`: the represented object alone.
    Cell(const Cell &other)
        : m_represented_object(other.m_represented_object)
    { }

private:
    friend class Matrix;

    ObjectPointer m_represented_object;
    Matrix *m_matrix = nullptr;
    quint32 m_index = 0;
    bool m_isSelected = false; // of a cell that is in no matrix
    bool m_isHighlighted = false;
};

} // namespace platform
