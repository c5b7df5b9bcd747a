#pragma once

#include "ItemList.h"
#include "Slide.h"

#include "ZRCommon/ZRExtendedMatrix.h"
#include "ZRCommon/ZRPhotoCell.h"

#include <optional>

/// A cell of a slide: the photo, turned as the slide says, above its title and how long it shows.
class SlideCell : public ZRPhotoCell
{
public:
    std::unique_ptr<platform::Cell> clone() const override { return std::make_unique<SlideCell>(); }
    void setRepresentedObject(const platform::ObjectPointer &slide) override;
    QString accessibleName() const override;
    QImage pictureToDraw(const platform::View &view) const override;

private:
    mutable qint64 m_turnedKey = 0; // of the picture that was turned
    mutable double m_turnedAngle = 0;
    mutable QImage m_turned;
};

/// The slides of a document in their order. Slides are dragged out, and slides and files are dropped in between.
class SlideGrid : public ZRExtendedMatrix
{
    Q_OBJECT

public:
    explicit SlideGrid(QWidget *parent = nullptr);

    /// Shows these slides, as they are now. Nothing is selected afterwards.
    void setSlides(const ItemList<Slide>::Items &slides);
    const ItemList<Slide>::Items &slides() const { return m_slides; }

    /// Scrolls to the first of the selected slides, if there are any.
    void revealSelection();

    bool allowDraggingOut() const override { return true; }
    std::unique_ptr<QMimeData> pasteboardForDrag() override;
    /// Where something that is let go at a point, in the grid's coordinates, is inserted.
    qsizetype insertionIndexAt(const QPointF &point) const;

Q_SIGNALS:
    /// For whoever knows what a drag carries.
    void dragBegan(std::unique_ptr<QMimeData> &data);
    /// Something was dropped in front of the slide at the index.
    void dropped(const QMimeData *data, qsizetype index, bool isFromHere);

protected:
    void drawRect(QPainter &painter, const QRectF &dirty) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void setInsertionIndex(std::optional<qsizetype> index);
    QRectF insertionMark(qsizetype index) const;
    void redrawPhoto(const QString &path);

    ItemList<Slide>::Items m_slides;
    std::optional<qsizetype> m_insertionIndex; // while something is dragged over the grid
};
