#include "SlideGrid.h"

#include "SlidePictures.h"
#include "StoryboardSelection.h"
#include "Texts.h"

#include "ZRCommon/ZRLocalizedString.h"

#include <QDragEnterEvent>
#include <QLocale>
#include <QPainter>

#include <algorithm>
#include <cmath>

void SlideCell::setRepresentedObject(const platform::ObjectPointer &object)
{
    ZRPhotoCell::setRepresentedObject(object);
    if (const auto *const slide = dynamic_cast<const Slide *>(object.get())) {
        const QString seconds = QLocale().toString(slide->settings().seconds, 'g', 4);
        setPhotoTitle(ZRLocalizedString("%1 – %2 s").arg(isolated(slide->settings().title), seconds));
    }
}

QString SlideCell::accessibleName() const
{
    const auto *const slide = dynamic_cast<const Slide *>(representedObject().get());
    const bool isMissing = slide && SlidePictures::shared().isMissing(slide->photoPath());
    return isMissing ? ZRLocalizedString("%1, the photo is missing").arg(photoTitle()) : photoTitle();
}

QImage SlideCell::pictureToDraw(const platform::View &) const
{
    const auto *const slide = dynamic_cast<const Slide *>(representedObject().get());
    if (!slide)
        return QImage();
    const QImage picture = SlidePictures::shared().picture(slide->photoPath());
    if (picture.isNull() && SlidePictures::shared().isMissing(slide->photoPath()))
        return SlidePictures::missingPicture();
    const double angle = slide->settings().angle;
    if (picture.isNull() || angle == 0)
        return picture;
    if (m_turnedKey != picture.cacheKey() || m_turnedAngle != angle) {
        m_turned = picture.transformed(QTransform().rotate(angle), Qt::SmoothTransformation);
        m_turnedKey = picture.cacheKey();
        m_turnedAngle = angle;
    }
    return m_turned;
}

SlideGrid::SlideGrid(QWidget *parent)
    : ZRExtendedMatrix(parent)
{
    setPrototype(std::make_unique<SlideCell>());
    setCellSize(QSizeF(146, 121));
    setIntercellSpacing(QSizeF(4, 4));
    setAcceptDrops(true);
    setAccessibleName(ZRLocalizedString("Slides"));
    connect(&SlidePictures::shared(), &SlidePictures::didLoad, this, &SlideGrid::redrawPhoto);
}

void SlideGrid::setSlides(const ItemList<Slide>::Items &slides)
{
    m_slides = slides;
    const auto needed = getRowsNeeded(slides.size());
    renewRows(needed.rows, needed.columns);
    for (qint64 i = 0; i < numberOfCells(); ++i)
        cellAtIndex(i)->setRepresentedObject(i < slides.size() ? slides[i] : nullptr);
    sizeToCells();
    setNeedsDisplay();
}

void SlideGrid::revealSelection()
{
    if (const qint64 index = selectedIndexes().firstIndex(); index < m_slides.size())
        scrollRectToVisible(cellFrameAtRow(int(index / numberOfColumns()), int(index % numberOfColumns())));
}

std::unique_ptr<QMimeData> SlideGrid::pasteboardForDrag()
{
    std::unique_ptr<QMimeData> carried;
    Q_EMIT dragBegan(carried);
    return carried;
}

void SlideGrid::redrawPhoto(const QString &path)
{
    // Those that show are few.
    const QRectF visible = visibleRect();
    const auto first = placeAtPoint(visible.topLeft() + QPointF(1, 1));
    for (qint64 i = first ? qint64(first->row) * numberOfColumns() : 0; i < m_slides.size(); ++i) {
        const QRectF frame = cellFrameAtRow(int(i / numberOfColumns()), int(i % numberOfColumns()));
        if (frame.top() > visible.bottom())
            break;
        if (m_slides[i]->photoPath() == path)
            setNeedsDisplay(frame);
    }
}

qsizetype SlideGrid::insertionIndexAt(const QPointF &point) const
{
    const double rowHeight = cellSize().height() + intercellSpacing().height();
    const double columnWidth = cellSize().width() + intercellSpacing().width();
    const auto row = qsizetype(std::max(0.0, std::floor(point.y() / rowHeight)));
    const auto column = qsizetype(std::clamp(std::round(point.x() / columnWidth), 0.0, double(numberOfColumns())));
    return std::min(row * numberOfColumns() + column, m_slides.size());
}

QRectF SlideGrid::insertionMark(qsizetype index) const
{
    constexpr double width = 4;
    const int columns = std::max(1, numberOfColumns());
    // Behind the last one of a row rather than in front of the first one of the next.
    const bool isBehind = index > 0 && index == m_slides.size();
    if (m_slides.isEmpty())
        return QRectF(0, 0, width, cellSize().height());
    const qsizetype place = isBehind ? index - 1 : index;
    const QRectF frame = cellFrameAtRow(int(place / columns), int(place % columns));
    const double x = isBehind ? frame.right() : frame.left() - width;
    return QRectF(std::max(0.0, x), frame.top(), width, frame.height());
}

void SlideGrid::setInsertionIndex(std::optional<qsizetype> index)
{
    for (const auto &each : {m_insertionIndex, index}) {
        if (each && m_insertionIndex != index)
            setNeedsDisplay(insertionMark(*each));
    }
    m_insertionIndex = index;
}

void SlideGrid::drawRect(QPainter &painter, const QRectF &dirty)
{
    ZRExtendedMatrix::drawRect(painter, dirty);
    if (m_slides.isEmpty()) {
        painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
        constexpr int margin = 24;
        painter.drawText(visibleRect().adjusted(margin, margin, -margin, -margin), Qt::AlignCenter | Qt::TextWordWrap,
                         ZRLocalizedString("Drop photos here, or add them with Slides > Add Photos…"));
    }
    if (m_insertionIndex)
        painter.fillRect(insertionMark(*m_insertionIndex), palette().color(QPalette::Highlight));
}

void SlideGrid::dragEnterEvent(QDragEnterEvent *event)
{
    if (StoryboardSelection::canTake(*event->mimeData()))
        event->acceptProposedAction();
}

void SlideGrid::dragMoveEvent(QDragMoveEvent *event)
{
    if (!StoryboardSelection::canTake(*event->mimeData()))
        return;
    setInsertionIndex(insertionIndexAt(fromWidget(event->position())));
    event->acceptProposedAction();
}

void SlideGrid::dragLeaveEvent(QDragLeaveEvent *)
{
    setInsertionIndex(std::nullopt);
}

void SlideGrid::dropEvent(QDropEvent *event)
{
    setInsertionIndex(std::nullopt);
    if (!StoryboardSelection::canTake(*event->mimeData()))
        return;
    event->acceptProposedAction();
    Q_EMIT dropped(event->mimeData(), insertionIndexAt(fromWidget(event->position())), event->source() == this);
}
