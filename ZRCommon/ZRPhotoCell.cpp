#include "ZRCommon/ZRPhotoCell.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Interface/Matrix.h"
#include "Platform/Media/Image.h"
#include "ZRCommon/ZRFitRect.h"
#include "ZRCommon/ZRImageThumbnail.h"
#include "ZRCommon/ZRPhotoMatrix.h"

#include <QCache>
#include <QPainter>
#include <QStaticText>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

const QFont &titleFont()
{
    static const QFont font = [] {
        QFont label;
        label.setPixelSize(10);
        return label;
    }();
    return font;
}

/// A title shortened to a width and laid out. To lay a line out takes several times as long as to draw it, so that the
/// titles that were drawn last are kept.
const QStaticText &preparedTitle(const QString &title, int width)
{
    constexpr int kept = 4000;
    static QCache<QPair<QString, int>, QStaticText> titles(kept);
    if (const QStaticText *const known = titles.object({title, width}))
        return *known;
    auto text =
        std::make_unique<QStaticText>(QFontMetrics(titleFont()).elidedText(title.simplified(), Qt::ElideMiddle, width));
    text->setTextFormat(Qt::PlainText);
    text->setPerformanceHint(QStaticText::AggressiveCaching);
    text->prepare(QTransform(), titleFont());
    QStaticText *const prepared = text.release();
    titles.insert({title, width}, prepared);
    return *prepared;
}

/// Fills a frame but for a picture in it, the edges of which are left to no rounding.
void fillAround(QPainter &painter, const QRectF &frame, const QRectF &picture, const QColor &color)
{
    const QRectF inner = picture.adjusted(1, 1, -1, -1);
    if (inner.isEmpty() || color.alpha() < 255)
        return painter.fillRect(frame, color);
    painter.fillRect(QRectF(frame.topLeft(), QPointF(frame.right(), inner.top())), color);
    painter.fillRect(QRectF(QPointF(frame.left(), inner.bottom()), frame.bottomRight()), color);
    painter.fillRect(QRectF(QPointF(frame.left(), inner.top()), inner.bottomLeft()), color);
    painter.fillRect(QRectF(inner.topRight(), QPointF(frame.right(), inner.bottom())), color);
}

/// A picture that has the size of its place already, but for rounding, is copied: that takes a tenth of the time.
void drawPicture(QPainter &painter, const QRectF &place, const QImage &picture)
{
    const double ratio = painter.device()->devicePixelRatioF();
    if ((place.size() * ratio).toSize() == picture.size()) {
        QImage copied = picture;
        copied.setDevicePixelRatio(ratio);
        painter.drawImage(QPointF(std::round(place.x() * ratio) / ratio, std::round(place.y() * ratio) / ratio),
                          copied);
        return;
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, picture);
}

} // namespace

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
    const bool highlighted = isHighlighted();
    const QColor background = highlighted ? highlightColorWithFrame(frame, view) : QColor(Qt::white);
    const QRectF area = pictureArea(frame);
    const QImage picture = pictureToDraw(view);
    const QRectF place =
        picture.isNull() ? QRectF() : ZRFitRect(area, float(picture.width()) / float(picture.height()));
    fillAround(painter, frame, picture.hasAlphaChannel() ? QRectF() : place, background);
    if (!picture.isNull())
        drawPicture(painter, place, picture);
    if (m_used_in_current_document) {
        const QImage badge = imageInCurrentDocumentImage(view.devicePixelRatioF());
        // Its lower edge is named.
        if (!badge.isNull())
            painter.drawImage(QPointF(area.x() - 3, area.y() - 6), badge);
    }
    drawTitle(painter, frame, highlighted ? view.palette().color(QPalette::HighlightedText) : QColor(Qt::black));
}

QImage ZRPhotoCell::pictureToDraw(const platform::View &view) const
{
    const auto *const grid = dynamic_cast<const ZRPhotoMatrix *>(&view);
    const auto record = std::dynamic_pointer_cast<ZRImageThumbnail>(representedObject());
    const auto image = grid ? grid->pictureToDraw(*this) : record ? record->imageToDisplay() : nullptr;
    return image && !image->representations().empty() ? image->representations().front().bitmap : QImage();
}

void ZRPhotoCell::drawTitle(QPainter &painter, const QRectF &frame, const QColor &color) const
{
    if (m_photo_title.isEmpty())
        return;
    const QRectF area = pictureArea(frame);
    const QRectF title(frame.x() + titleXOffset, area.y() - topMargin + area.height() + titleYOffset + 1, frame.width(),
                       titleHeight);
    const QStaticText &text = preparedTitle(m_photo_title, int(frame.width()) - 2 * titleXOffset);
    painter.setFont(titleFont());
    painter.setPen(color);
    painter.drawStaticText(QPointF(title.x(), title.y() + std::floor((title.height() - text.size().height()) / 2)),
                           text);
}
