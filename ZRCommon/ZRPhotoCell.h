#pragma once

#include "Platform/Interface/Cell.h"

#include <QImage>
#include <QString>

/// A cell of a photo grid: the thumbnail of a photo record (`ZRImageThumbnail`), fitted into the cell above its title,
/// with a badge where the current document uses the photo. A cell without a record draws nothing.
///
/// The main thread only.
class ZRPhotoCell : public platform::Cell
{
public:
    /// Around and below the picture, in points.
    static constexpr int sideMargin = 3;
    static constexpr int topMargin = 5;
    static constexpr int titleHeight = 12;
    static constexpr int titleGap = 4; ///< With the title's height, what the picture's area is lower than the cell.
    static constexpr int titleXOffset = 3;
    static constexpr int titleYOffset = 3; ///< The title begins at the height of the area, and this, and 1.

    ZRPhotoCell() = default;
    /// A new cell without a record, a title or a badge.
    std::unique_ptr<platform::Cell> clone() const override;

    bool acceptsFirstResponder() const { return true; }
    /// Takes the title of a `ZRImageThumbnail` as well; for another object the title stays. Null: the title is empty,
    /// and the badge gone.
    void setRepresentedObject(const platform::ObjectPointer &thumbnail) override;
    const QString &photoTitle() const { return m_photo_title; }
    void setPhotoTitle(const QString &title);
    bool isUsedInCurrentDocument() const { return m_used_in_current_document; }
    void setUsedInCurrentDocument(bool isUsed);

    void drawWithFrame(QPainter &painter, const QRectF &frame, const platform::View &view) override;
    /// Raises `platform::InternalInconsistency` without an object.
    void drawInteriorWithFrame(QPainter &painter, const QRectF &frame, const platform::View &view) override;
    bool isOpaque() const override { return representedObject() != nullptr; }
    QString accessibleName() const override { return m_photo_title; }

    /// The picture to be drawn now: that of the record, if it is there or may be read within this paint. For hosts
    /// whose pictures come from elsewhere. Null for none.
    virtual QImage pictureToDraw(const platform::View &view) const;

    /// The badge of photos that the current document uses, at the best of its sizes for a pixel ratio.
    static QImage imageInCurrentDocumentImage(qreal devicePixelRatio);

private:
    QRectF pictureArea(const QRectF &frame) const;
    QRectF titleArea(const QRectF &frame) const;
    void drawPicture(QPainter &painter, const QRectF &frame, double ratio, const QImage &picture) const;
    QRectF titleStrip(const QRectF &frame, double ratio) const;
    void drawTitleImage(QPainter &painter, const QRectF &frame, const QRectF &strip, double ratio,
                        const QColor &background, const QColor &text) const;
    void drawTitle(QPainter &painter, const QRectF &frame, const QColor &color) const;
    void redraw();

    QString m_photo_title;
    bool m_used_in_current_document = false;
};
