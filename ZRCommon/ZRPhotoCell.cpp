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
#include <optional>

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

/// A picture of exactly a size in pixels. One that has it already, but for rounding, is taken as it is.
QImage fitted(const QImage &picture, const QSize &size)
{
    return picture.size() == size ? picture : picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

/// All that decides what a cell looks like. The cells that were drawn last are kept as images by it, so that they need
/// not be told when something changes: another look is another image.
struct Look {
    qint64 picture; // the picture's key
    const QChar *title; // the characters' address: the image below holds the title, so that it stays theirs
    QRgb background;
    QRgb text;
    QSize size; // in pixels
    double pixelRatio;
    bool isUsedInCurrentDocument;

    friend bool operator==(const Look &a, const Look &b)
    {
        return a.picture == b.picture && a.background == b.background && a.text == b.text && a.size == b.size
            && a.pixelRatio == b.pixelRatio && a.isUsedInCurrentDocument == b.isUsedInCurrentDocument
            && a.title == b.title;
    }
    friend size_t qHash(const Look &look, size_t seed = 0)
    {
        return qHashMulti(seed, look.picture, look.title, look.background, look.size.width(), look.size.height());
    }
};

struct DrawnCell {
    QImage image;
    QString title;
};

/// Enough for what shows on two large screens.
QCache<Look, DrawnCell> &drawnCells()
{
    constexpr int kept = 64 * 1024 * 1024; // bytes
    static QCache<Look, DrawnCell> cells(kept);
    return cells;
}

/// Where a frame is on the device, in whole pixels: neighbours that touch still touch. Nothing where the painter turns
/// or distorts.
std::optional<QRect> pixelsOfFrame(const QTransform &device, const QRectF &frame)
{
    if (device.type() > QTransform::TxScale || device.m11() != device.m22() || !(device.m11() > 0))
        return std::nullopt;
    const QRectF exact = device.mapRect(frame);
    const QPoint first(int(std::lround(exact.left())), int(std::lround(exact.top())));
    const QPoint end(int(std::lround(exact.right())), int(std::lround(exact.bottom())));
    return first.x() < end.x() && first.y() < end.y() ? std::optional(QRect(first, end - QPoint(1, 1))) : std::nullopt;
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

// To copy a cell that was drawn before takes a quarter of the time of drawing it.
void ZRPhotoCell::drawInteriorWithFrame(QPainter &painter, const QRectF &frame, const platform::View &view)
{
    if (!representedObject())
        platform::raiseFailure({Q_FUNC_INFO, "ZRPhotoCell", 172}, this,
                               QStringLiteral("represented object should not be NULL"));
    const bool highlighted = isHighlighted();
    const QColor background = highlighted ? highlightColorWithFrame(frame, view) : QColor(Qt::white);
    const QColor text = highlighted ? view.palette().color(QPalette::HighlightedText) : QColor(Qt::black);
    const QImage picture = pictureToDraw(view);
    const QTransform device = painter.deviceTransform();
    const auto pixels = pixelsOfFrame(device, frame);
    if (picture.isNull() || !pixels || background.alpha() < 255)
        return drawLook(painter, frame, picture, background, text);
    const double ratio = device.m11();
    const Look look{
        picture.cacheKey(),        m_photo_title.constData(), background.rgba(), text.rgba(), pixels->size(), ratio,
        m_used_in_current_document};
    QImage image;
    if (const DrawnCell *const drawn = drawnCells().object(look)) {
        image = drawn->image;
    } else {
        image = QImage(pixels->size(), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        QPainter imagePainter(&image);
        drawLook(imagePainter, QRectF(QPointF(), QSizeF(pixels->size()) / ratio), picture, background, text);
        imagePainter.end();
        drawnCells().insert(look, new DrawnCell{image, m_photo_title}, image.sizeInBytes());
    }
    painter.drawImage((QPointF(pixels->topLeft()) - QPointF(device.dx(), device.dy())) / ratio, image);
}

void ZRPhotoCell::drawLook(QPainter &painter, const QRectF &frame, const QImage &picture, const QColor &background,
                           const QColor &text) const
{
    // Also below the picture: to fill around it takes longer.
    painter.fillRect(frame, background);
    const QRectF area = pictureArea(frame);
    const double ratio = painter.device()->devicePixelRatioF();
    if (!picture.isNull()) {
        const QRectF place = ZRFitRect(area, float(picture.width()) / float(picture.height()));
        QImage sized = fitted(picture, (place.size() * ratio).toSize().expandedTo(QSize(1, 1)));
        sized.setDevicePixelRatio(ratio);
        painter.drawImage(QPointF(std::round(place.x() * ratio), std::round(place.y() * ratio)) / ratio, sized);
    }
    if (m_used_in_current_document) {
        const QImage badge = imageInCurrentDocumentImage(ratio);
        // Its lower edge is named.
        if (!badge.isNull())
            painter.drawImage(QPointF(area.x() - 3, area.y() - 6), badge);
    }
    drawTitle(painter, frame, text);
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
