#include "ZRCommon/ZRPhotoCell.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Interface/Matrix.h"
#include "Platform/Media/Image.h"
#include "ZRCommon/ScaledImages_p.h"
#include "ZRCommon/ZRFitRect.h"
#include "ZRCommon/ZRImageThumbnail.h"
#include "ZRCommon/ZRPhotoMatrix.h"

#include <QCache>
#include <QFontMetrics>
#include <QPainter>

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

/// The text of a title, shortened to what shows of it.
QString shortened(const QString &title, const QRectF &frame)
{
    const int width = int(frame.width()) - 2 * ZRPhotoCell::titleXOffset;
    return QFontMetrics(titleFont()).elidedText(title.simplified(), Qt::ElideMiddle, width);
}

/// Images that are made of pictures and titles and drawn again and again, found by all that decides what they look
/// like, so that they need not be told when something changes: another look is another image. Those that were drawn
/// last are kept.
template <class Look>
class DrawnImages
{
public:
    /// @param limit in bytes
    explicit DrawnImages(qsizetype limit)
        : m_images(limit)
    { }

    template <class Make>
    QImage image(const Look &look, Make make)
    {
        if (const QImage *const known = m_images.object(look))
            return *known;
        auto image = std::make_unique<QImage>(make());
        const QImage made = *image;
        m_images.insert(look, image.release(), made.sizeInBytes());
        return made;
    }

private:
    QCache<Look, QImage> m_images;
};

constexpr int badgeTop = 6; // above the picture's area

/// What shows on two large screens.
constexpr qsizetype pictureLimit = 64 * 1024 * 1024, titleLimit = pictureLimit / 4;

struct PictureLook {
    qint64 picture; // its key
    QSize size; // in pixels
    double pixelRatio;

    friend bool operator==(const PictureLook &, const PictureLook &) = default;
    friend size_t qHash(const PictureLook &look, size_t seed = 0)
    {
        return qHashMulti(seed, look.picture, look.size.width(), look.size.height());
    }
};

/// A picture of exactly a size in pixels. One that has it already is taken as it is.
QImage fitted(const QImage &picture, const QSize &size, double pixelRatio)
{
    if (picture.size() == size && picture.devicePixelRatio() == pixelRatio)
        return picture;
    static DrawnImages<PictureLook> pictures(pictureLimit);
    return pictures.image({picture.cacheKey(), size, pixelRatio}, [&] {
        QImage image = picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        image.setDevicePixelRatio(pixelRatio);
        return image;
    });
}

struct TitleLook {
    QString title;
    QRgb background;
    QRgb text;
    QSize size; // in pixels
    double pixelRatio;

    friend bool operator==(const TitleLook &, const TitleLook &) = default;
    friend size_t qHash(const TitleLook &look, size_t seed = 0)
    {
        return qHashMulti(seed, look.title, look.background, look.size.width(), look.size.height());
    }
};

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
    if (platform::Matrix *const grid = matrix())
        grid->cellChanged(*this, badgeTop - topMargin); // the badge begins above the cell
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
    static const ScaledImages badges(QStringLiteral("CurrentDocBadge"));
    return badges.image(devicePixelRatio);
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
    const QColor text = highlighted ? highlightedTextColor(view) : QColor(Qt::black);
    const QTransform device = painter.deviceTransform();
    const auto pixels = pixelsOfFrame(device, frame);
    const double ratio = pixels ? device.m11() : painter.device()->devicePixelRatioF();
    const QRectF exact = pixels ? QRectF((QPointF(pixels->topLeft()) - QPointF(device.dx(), device.dy())) / ratio,
                                         QSizeF(pixels->size()) / ratio)
                                : frame;
    const QRectF strip = titleStrip(exact, ratio);
    const bool isKept = pixels && background.alpha() == 255 && !m_photo_title.isEmpty() && strip.height() > 0;
    // Also below the picture: to fill around it takes longer.
    painter.fillRect(isKept ? QRectF(exact.topLeft(), strip.topRight()) : exact, background);
    if (isKept)
        drawTitleImage(painter, exact, strip, ratio, background, text);
    else
        drawTitle(painter, exact, text);
    drawPicture(painter, exact, ratio, pictureToDraw(view));
    if (m_used_in_current_document) {
        // Its lower edge is named.
        const QRectF area = pictureArea(exact);
        painter.drawImage(QPointF(area.x() - sideMargin, area.y() - badgeTop), imageInCurrentDocumentImage(ratio));
    }
}

void ZRPhotoCell::drawPicture(QPainter &painter, const QRectF &frame, double ratio, const QImage &picture) const
{
    if (picture.isNull())
        return;
    const QRectF place = ZRFitRect(pictureArea(frame), float(picture.width()) / float(picture.height()));
    const QPointF offset = (place.topLeft() - frame.topLeft()) * ratio;
    painter.drawImage(frame.topLeft() + QPointF(std::round(offset.x()), std::round(offset.y())) / ratio,
                      fitted(picture, (place.size() * ratio).toSize().expandedTo(QSize(1, 1)), ratio));
}

QRectF ZRPhotoCell::titleArea(const QRectF &frame) const
{
    const QRectF area = pictureArea(frame);
    return QRectF(frame.x() + titleXOffset, area.y() - topMargin + area.height() + titleYOffset + 1, frame.width(),
                  titleHeight);
}

/// The rows from the title's on, in whole pixels.
QRectF ZRPhotoCell::titleStrip(const QRectF &frame, double ratio) const
{
    const double top = std::round((titleArea(frame).y() - frame.y()) * ratio) / ratio;
    return frame.adjusted(0, std::max(top, 0.0), 0, 0);
}

// To lay a line of text out takes many times as long as to copy it.
void ZRPhotoCell::drawTitleImage(QPainter &painter, const QRectF &frame, const QRectF &strip, double ratio,
                                 const QColor &background, const QColor &text) const
{
    const QSize size = (strip.size() * ratio).toSize();
    static DrawnImages<TitleLook> titles(titleLimit);
    const QImage image = titles.image({m_photo_title, background.rgba(), text.rgba(), size, ratio}, [&] {
        QImage drawn(size, QImage::Format_RGB32);
        drawn.setDevicePixelRatio(ratio);
        drawn.fill(background);
        QPainter imagePainter(&drawn);
        drawTitle(imagePainter, frame.translated(-strip.topLeft()), text);
        return drawn;
    });
    painter.drawImage(strip.topLeft(), image);
}

void ZRPhotoCell::drawTitle(QPainter &painter, const QRectF &frame, const QColor &color) const
{
    const QRectF area = titleArea(frame);
    const QFontMetricsF metrics(titleFont());
    painter.setFont(titleFont());
    painter.setPen(color);
    painter.drawText(
        QPointF(area.x(), area.y() + std::floor((area.height() - metrics.height()) / 2) + metrics.ascent()),
        shortened(m_photo_title, frame));
}

QImage ZRPhotoCell::pictureToDraw(const platform::View &view) const
{
    const auto *const grid = dynamic_cast<const ZRPhotoMatrix *>(&view);
    const auto record = std::dynamic_pointer_cast<ZRImageThumbnail>(representedObject());
    const auto image = grid ? grid->pictureToDraw(*this) : record ? record->imageToDisplay() : nullptr;
    return image && !image->representations().empty() ? image->representations().front().bitmap : QImage();
}
