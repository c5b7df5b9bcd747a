#pragma once

#include <QAbstractScrollArea>
#include <QPointF>
#include <QRectF>

namespace platform {

class View;

/// Shows a part of a view, its document, which may be as large as one likes: the document's widget stays as large as
/// the part that shows, and the document is drawn from there. Qt's own scroll area moves a widget of the document's
/// size, which ends at 16,777,215 pixels.
///
/// The document must fill every pixel that it is asked to draw: nothing is erased beforehand.
///
/// The document takes the width of what shows: when that changes, its frame is set to the new width, from which it lays
/// itself out. The height is its own.
///
/// The main thread only.
class ScrollView : public QAbstractScrollArea
{
    Q_OBJECT

public:
    explicit ScrollView(QWidget *parent = nullptr);
    ~ScrollView() override;

    View *documentView() const { return m_document; }
    /// Takes the view as its document, out of another scroll view if need be; null for none. The viewport becomes its
    /// parent, which owns it. The document before is deleted at once: not to be called from one of its handlers.
    void setDocumentView(View *document);

    /// Size of the area in which the document shows.
    QSizeF contentSize() const;
    /// What shows, in the document's own coordinates; null without a document. It reaches beyond a document that is
    /// smaller than the area.
    QRectF documentVisibleRect() const;

    /// Brings a point of the document to the upper left corner, or as near to it as the document reaches.
    void scrollToPoint(const QPointF &point);
    /// Scrolls as little as needed for the rectangle to show; of one that is too large its beginning.
    void scrollRectToVisible(const QRectF &rect);

Q_SIGNALS:
    /// Another part of the document shows, or its size has changed.
    void visibleRectChanged();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    friend class View;
    class Axis;
    void documentFrameChanged();
    void fitDocument();
    void adjustScrollBars();
    QPointF farthestOrigin() const;
    void moveTo(QPointF origin);

    View *m_document = nullptr;
    QPointF m_pointsToAStep{1, 1}; // a scroll bar counts in int
    bool m_isFitting = false;
    bool m_isMoving = false;
};

} // namespace platform
