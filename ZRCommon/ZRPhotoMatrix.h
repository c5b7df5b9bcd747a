#pragma once

#include "ZRCommon/ZRExtendedMatrix.h"
#include "ZRCommon/ZRImageThumbnail.h"

#include <QStringList>
#include <QTimer>

#include <chrono>
#include <memory>
#include <set>
#include <vector>

/// A name for hosts that post the selection of a photo grid, which the framework does not do: the grid's own signal is
/// `selectionChanged`.
inline const QString ZRPhotoMatrixDidChangeSelection = QStringLiteral("ZRPhotoMatrixDidChangeSelection");

/// The grid of thumbnails in the media browser: `ZRPhotoCell`s that show `ZRImageThumbnail`s, in a size that a slider
/// of the host sets. Photos are dragged out as files.
///
/// Pictures are read from their files while the cells that show are drawn, for at most `loadingTime` a paint; the other
/// cells draw what they have, and another paint soon goes on. Pictures far from what shows are let go.
///
/// A grid stands in a scroll view and has a cell for each photo; those left over in the last row are blanks:
///
///     auto *const grid = new ZRPhotoMatrix;
///     scrollView->setDocumentView(grid);
///     grid->setPrototype(std::make_unique<MyPhotoCell>()); // only where a ZRPhotoCell does not do
///     grid->setCellSizeForImageSize(QSizeF(114, 0));
///
///     void showPhotos(const ZRImageCatalogFolder::ThumbnailList &photos)
///     {
///         const auto needed = grid->getRowsNeeded(photos.size()); // for the width that shows
///         grid->renewRows(needed.rows, needed.columns);
///         for (qint64 i = 0; i < grid->numberOfCells(); ++i)
///             grid->cellAtIndex(i)->setRepresentedObject(i < photos.size() ? photos[i] : nullptr);
///         grid->sizeToCells();
///     }
///
/// `selectionChanged` then tells of the selection, and `selectedImageThumbnails` gives it. Where several views show one
/// selection, a `platform::ArrayController` holds the photos. There is one binding, "matrixSelectedObjects"; it is made
/// once, and after `renewRows` the controller tells its selection again:
///
///     grid->bind(QStringLiteral("matrixSelectedObjects"), &controller, QStringLiteral("selectedObjects"));
///     ...
///     controller.setContent({photos.cbegin(), photos.cend()}); // first in showPhotos
///     ...
///     Q_EMIT controller.selectedObjectsChanged(); // last in showPhotos
///
/// The main thread only.
class ZRPhotoMatrix : public ZRExtendedMatrix
{
    Q_OBJECT

public:
    /// After so many milliseconds of reading a paint begins no further picture; the one begun last is read to its end.
    static constexpr int loadingTime = 8;

    /// Cells of 120 by 90 with 1 by 1 between them, no background.
    explicit ZRPhotoMatrix(QWidget *parent = nullptr);
    ~ZRPhotoMatrix() override;

    bool allowDraggingOut() const override { return true; }
    /// The files of the selected photos.
    std::unique_ptr<QMimeData> pasteboardForDrag() override;
    /// Lays the grid out for thumbnails of the size's width, kept within 88 to 240 points; its height is passed over.
    /// The cells become 6 points wider than the thumbnails, and 16 points higher than 3/4 of the thumbnails' width.
    void setCellSizeForImageSize(const QSizeF &size);
    /// The records of the selected cells, in their order.
    QList<std::shared_ptr<ZRImageThumbnail>> selectedImageThumbnails() const;
    /// The paths of the selected photos that have one.
    QStringList pathsForSelectedImages() const { return imageFilenamesForSelectedCells(); }
    qint64 photoCount() const { return usedCellsCount(); }

    void renewRows(int rows, int columns) override;

    /// The picture of the record of a cell that is being drawn; null when there is none, and when it is not read yet
    /// and there is no time left in this paint. Internal: for `ZRPhotoCell`.
    std::shared_ptr<platform::Image> pictureToDraw(const platform::Cell &cell) const;

protected:
    void drawRect(QPainter &painter, const QRectF &dirty) override;

private:
    /// A record whose picture was asked for here.
    struct Asked {
        qint64 index; // of its cell
        std::weak_ptr<ZRImageThumbnail> thumbnail;
    };
    QStringList imageFilenamesForSelectedCells() const;
    std::shared_ptr<ZRImageThumbnail> imageThumbnailAtPoint(const QPointF &point) const;
    void letFarPicturesGo();

    mutable std::vector<Asked> m_asked;
    /// Records that have no picture; not asked again while near. Their addresses alone may be those of others later.
    mutable std::set<std::weak_ptr<const ZRImageThumbnail>, std::owner_less<>> m_refused;
    mutable std::chrono::steady_clock::duration m_timeSpentReading{}; // in this paint
    mutable bool m_isPainting = false;
    mutable bool m_hasRunOutOfTime = false;
    QRectF m_unfinished; // where pictures are still missing
    QTimer m_goOn;
};
