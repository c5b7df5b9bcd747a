#pragma once

#include "Platform/Interface/MouseEvent.h"

#include <QPointF>
#include <QRectF>
#include <QWidget>

class QPainter;

namespace platform {

class ScrollView;

/// The base of the framework's own views. It has a frame of its own, which may be larger than any widget: as the
/// document of a `ScrollView` the widget stays as large as what shows of it, and the frame says how large the document
/// is. By itself, the frame is the widget's.
///
/// A view's own coordinates begin at the upper left corner of its frame and run downwards; they are what `drawRect`,
/// the mouse and all rectangles below are in. Extents are doubles, exact up to 2^53 points.
///
/// An exception that leaves a handler of an event, drawing among them, is logged, and the view lives on.
///
/// The main thread only.
class View : public QWidget
{
    Q_OBJECT

public:
    explicit View(QWidget *parent = nullptr);

    /// Place and size within the parent widget, in points, which are Qt's logical pixels. Of a scroll view's document
    /// only the size counts.
    QRectF viewFrame() const { return m_frame; }
    /// Called as well when a layout or a person moves or resizes the widget, and whenever its scroll view has another
    /// size. A subclass that lays something out does it here.
    virtual void setFrame(const QRectF &frame);
    /// Changes the size without `setFrame`, so that a subclass may call it while it lays something out. The widget, or
    /// the scroll bars, follow.
    void setFrameSize(const QSizeF &size);
    /// The view's own coordinates: its size at (0, 0).
    QRectF viewBounds() const { return QRectF(QPointF(), m_frame.size()); }

    /// The scroll view whose document this is; null when there is none.
    ScrollView *enclosingScrollView() const { return m_scrollView; }
    /// What shows of the view.
    QRectF visibleRect() const;
    /// Scrolls as little as needed for the rectangle to show.
    void scrollRectToVisible(const QRectF &rect);

    QPointF fromWidget(const QPointF &point) const { return point + m_origin; }
    QPointF toWidget(const QPointF &point) const { return point - m_origin; }
    QRectF toWidget(const QRectF &rect) const { return rect.translated(-m_origin); }

    /// Has the view, or what shows of the rectangle, drawn anew at the next occasion.
    void setNeedsDisplay() { update(); }
    void setNeedsDisplay(const QRectF &rect);

    /// Whether the view gets the keyboard by a click or the Tab key. Not, unless a subclass says so. Asked once, before
    /// it shows first.
    virtual bool acceptsFirstResponder() const { return false; }
    /// Whether keys go to this view now: it has the keyboard, and its window is the active one.
    bool isFirstResponder() const { return hasFocus(); }

protected:
    /// Draws what is in the rectangle, or more. The painter stands in the view's own coordinates.
    virtual void drawRect(QPainter &painter, const QRectF &dirty);
    /// The left button. By default the event is left to the parent.
    /// @return whether the view has taken it
    virtual bool mouseDown(const MouseEvent &event);
    virtual bool mouseDragged(const MouseEvent &event);
    virtual bool mouseUp(const MouseEvent &event);

    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    friend class ScrollView;
    void frameChangedTo(const QRectF &frame);
    void countClick(const QMouseEvent &event);
    MouseEvent mouseEventOf(const QMouseEvent &event) const;

    QRectF m_frame;
    QPointF m_origin; // of what shows, in the view's own coordinates
    ScrollView *m_scrollView = nullptr;
    bool m_isSettingGeometry = false;
    int m_clickCount = 0;
    quint64 m_lastPress = 0; // in the event's milliseconds
    QPointF m_lastPressPlace; // on the screen
};

} // namespace platform
