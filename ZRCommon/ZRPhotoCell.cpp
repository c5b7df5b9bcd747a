#include "ZRCommon/ZRPhotoCell.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Interface/Matrix.h"
#include "Platform/Media/Image.h"
#include "ZRCommon/ZRFitRect.h"
#include "ZRCommon/ZRImageThumbnail.h"
#include "ZRCommon/ZRPhotoMatrix.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

std::unique_ptr<platform::Cell> ZRPhotoCell::clone() const
{
    return std::make_unique<ZRPhotoCell>();
}

void ZRPhotoCell::setRepresentedObject(const platform::ObjectPointer &thumbnail)
{
    if (!thumbnail) {
        m_photo_title.clear();
        m_used_in_current_document = false;
    } else if (const auto *const record = dynamic_cast<const ZRImageThumbnail *>(thumbnail.get())) {
        m_photo_title = record->title();
    }
    Cell::setRepresentedObject(thumbnail);
}

void ZRPhotoCell::redraw()
{
    if (platform::Matrix *const grid = matrix()) {
        const auto place = grid->placeOfCell(*this);
        grid->setNeedsDisplay(grid->cellFrameAtRow(place.row, place.column));
    }
}

void ZRPhotoCell::setPhotoTitle(const QString &title)
{
    m_photo_title = title;
    redraw();
}

void ZRPhotoCell::setUsedInCurrentDocument(bool isUsed)
{
    m_used_in_current_document = isUsed;
    redraw();
}

QImage ZRPhotoCell::imageInCurrentDocumentImage(qreal devicePixelRatio)
{
    const int scale = std::clamp(int(std::ceil(devicePixelRatio)), 1, 3);
    QImage image(scale == 1 ? QStringLiteral(":/ZRCommon/images/CurrentDocBadge.png")
                            : QStringLiteral(":/ZRCommon/images/CurrentDocBadge@%1x.png").arg(scale));
    image.setDevicePixelRatio(scale);
    return image;
}

void ZRPhotoCell::drawWithFrame(QPainter &painter, const QRectF &frame, const platform::View &view)
{
    if (representedObject())
        drawInteriorWithFrame(painter, frame, view);
}

QRectF ZRPhotoCell::pictureArea(const QRectF &frame) const
{
    return QRectF(frame.x() + sideMargin, frame.y() + topMargin, frame.width() - 2 * sideMargin,
                  frame.height() - titleHeight - titleGap);
}

void ZRPhotoCell::drawInteriorWithFrame(QPainter &painter, const QRectF &frame, const platform::View &view)
{
    if (!representedObject())
        platform::raiseFailure({Q_FUNC_INFO, "ZRPhotoCell", 172}, this,
                               QStringLiteral("represented object should not be NULL"));
    painter.fillRect(frame, Qt::white);
    Cell::drawInteriorWithFrame(painter, frame, view);

    const QRectF area = pictureArea(frame);
    const QImage picture = pictureToDraw(view);
    if (!picture.isNull())
        painter.drawImage(ZRFitRect(area, float(picture.width()) / float(picture.height())), picture);
    if (m_used_in_current_document) {
        const QImage badge = imageInCurrentDocumentImage(view.devicePixelRatioF());
        // Its lower edge is named.
        if (!badge.isNull())
            painter.drawImage(QPointF(area.x() - 3, area.y() - 6), badge);
    }
    drawTitle(painter, frame, view);
}

QImage ZRPhotoCell::pictureToDraw(const platform::View &view) const
{
    const auto *const grid = dynamic_cast<const ZRPhotoMatrix *>(&view);
    const auto record = std::dynamic_pointer_cast<ZRImageThumbnail>(representedObject());
    const auto image = grid ? grid->pictureToDraw(*this) : record ? record->imageToDisplay() : nullptr;
    return image && !image->representations().empty() ? image->representations().front().bitmap : QImage();
}

void ZRPhotoCell::drawTitle(QPainter &painter, const QRectF &frame, const platform::View &view) const
{
    if (m_photo_title.isEmpty())
        return;
    const QRectF area = pictureArea(frame);
    const QRectF title(frame.x() + titleXOffset, area.y() - topMargin + area.height() + titleYOffset + 1, frame.width(),
                       titleHeight);
    static const QFont font = [] {
        QFont label;
        label.setPixelSize(10);
        return label;
    }();
    const QPalette &palette = view.palette();
    painter.setFont(font);
    painter.setPen(isHighlighted() ? palette.color(QPalette::HighlightedText) : QColor(Qt::black));
    painter.drawText(
        title, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
        painter.fontMetrics().elidedText(m_photo_title, Qt::ElideMiddle, int(frame.width()) - 2 * titleXOffset));
}
