#include "ZRCommon/ZRPhotoMatrix.h"

#include "Platform/Interface/DragRunner.h"
#include "ZRCommon/ZRPhotoCell.h"

#include <QScopedValueRollback>

#include <algorithm>
#include <utility>

using platform::Cell;

namespace {

std::shared_ptr<ZRImageThumbnail> thumbnailOf(const Cell &cell)
{
    return std::dynamic_pointer_cast<ZRImageThumbnail>(cell.representedObject());
}

} // namespace

ZRPhotoMatrix::ZRPhotoMatrix(QWidget *parent)
    : ZRExtendedMatrix(parent)
{
    setPrototype(std::make_unique<ZRPhotoCell>());
    setCellSize(QSizeF(120, 90));
    setIntercellSpacing(QSizeF(1, 1));
    setDrawsBackground(false);
    // What the person does comes in between.
    constexpr int pause = 4; // milliseconds
    m_goOn.setSingleShot(true);
    m_goOn.setInterval(pause);
    connect(&m_goOn, &QTimer::timeout, this, [this] { setNeedsDisplay(std::exchange(m_unfinished, QRectF())); });
}

ZRPhotoMatrix::~ZRPhotoMatrix() = default;

std::unique_ptr<QMimeData> ZRPhotoMatrix::pasteboardForDrag()
{
    return platform::fileNamesData(imageFilenamesForSelectedCells());
}

void ZRPhotoMatrix::setCellSizeForImageSize(const QSizeF &size)
{
    const double width = std::clamp(size.width(), 88.0, 240.0);
    setCellSize(QSizeF(width + 2 * ZRPhotoCell::sideMargin, width * 3 * 0.25 + 16));
    sizeToCells();
    possiblyAdjustNumberRowsAndColumns();
    setNeedsDisplay();
}

QList<std::shared_ptr<ZRImageThumbnail>> ZRPhotoMatrix::selectedImageThumbnails() const
{
    QList<std::shared_ptr<ZRImageThumbnail>> thumbnails;
    for (const Cell *const cell : selectedCells()) {
        if (auto thumbnail = thumbnailOf(*cell))
            thumbnails.append(std::move(thumbnail));
    }
    return thumbnails;
}

QStringList ZRPhotoMatrix::imageFilenamesForSelectedCells() const
{
    QStringList paths;
    for (const auto &thumbnail : selectedImageThumbnails()) {
        if (!thumbnail->imagePath().isEmpty())
            paths.append(thumbnail->imagePath());
    }
    return paths;
}

std::shared_ptr<ZRImageThumbnail> ZRPhotoMatrix::imageThumbnailAtPoint(const QPointF &point) const
{
    const Cell *const cell = cellAtPoint(point);
    return cell ? thumbnailOf(*cell) : nullptr;
}

void ZRPhotoMatrix::renewRows(int rows, int columns)
{
    m_refused.clear();
    ZRExtendedMatrix::renewRows(rows, columns);
}

std::shared_ptr<platform::Image> ZRPhotoMatrix::pictureToDraw(const Cell &cell) const
{
    const auto thumbnail = thumbnailOf(cell);
    if (!thumbnail || m_refused.contains(thumbnail))
        return nullptr;
    if (thumbnail->isImageLoaded())
        return thumbnail->imageToDisplay();
    // Reading alone counts: a paint that takes long to draw what it has would otherwise never get further.
    if (m_isPainting && m_timeSpentReading >= std::chrono::milliseconds(loadingTime)) {
        m_hasRunOutOfTime = true;
        return nullptr;
    }
    m_asked.push_back({cell.index(), thumbnail});
    const auto start = std::chrono::steady_clock::now();
    auto picture = thumbnail->imageToDisplay();
    m_timeSpentReading += std::chrono::steady_clock::now() - start;
    if (!picture)
        m_refused.insert(thumbnail);
    return picture;
}

void ZRPhotoMatrix::drawRect(QPainter &painter, const QRectF &dirty)
{
    m_hasRunOutOfTime = false;
    {
        const QScopedValueRollback guard(m_isPainting, true);
        m_timeSpentReading = {};
        ZRExtendedMatrix::drawRect(painter, dirty);
    }
    letFarPicturesGo();
    if (!m_hasRunOutOfTime)
        return;
    m_unfinished |= dirty;
    m_goOn.start();
}

void ZRPhotoMatrix::letFarPicturesGo()
{
    // A screen on both sides stays, so that scrolling to and fro reads nothing again.
    constexpr qint64 screensKept = 1, alwaysKept = 100;
    const PlaceRange places = placesInRect(visibleRect());
    const qint64 first = qint64(places.first.row) * numberOfColumns();
    const qint64 end = qint64(places.end.row) * numberOfColumns();
    const qint64 margin = std::max(alwaysKept, screensKept * (end - first));
    if (qint64(m_asked.size()) <= 2 * margin + (end - first))
        return;
    std::erase_if(m_asked, [&](const Asked &asked) {
        const Cell *const cell = cellAtIndex(asked.index);
        auto thumbnail = asked.thumbnail.lock();
        // One that another has taken the place of is found again when it is drawn elsewhere.
        const bool isNear = asked.index >= first - margin && asked.index < end + margin && thumbnail && cell
            && cell->representedObject() == thumbnail;
        if (isNear)
            return false;
        if (thumbnail) {
            thumbnail->unloadImage();
            m_refused.erase(std::weak_ptr<const ZRImageThumbnail>(thumbnail));
        }
        return true;
    });
}
