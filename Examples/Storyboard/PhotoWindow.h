#pragma once

#include "ZRCommon/ZRImageCatalogFolder.h"

#include <QImage>
#include <QWidget>

#include <memory>

/// One photo, as large as the window. The arrow keys and the space bar go on to the others, Escape closes. The photo is
/// read in the background; until it is there its thumbnail stands for it.
class PhotoWindow : public QWidget
{
    Q_OBJECT

public:
    /// @param photos at least one
    PhotoWindow(const ZRImageCatalogFolder::ThumbnailList &photos, qsizetype index);
    ~PhotoWindow() override;

    qsizetype index() const { return m_index; }
    void showPhoto(qsizetype index);
    /// Whether the photo itself is shown, or cannot be.
    bool isComplete() const { return m_isComplete; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    class Unit;
    void unitDidRead(const Unit *unit);
    const ZRImageThumbnail &photo() const { return *m_photos[m_index]; }

    ZRImageCatalogFolder::ThumbnailList m_photos;
    qsizetype m_index = 0;
    QImage m_image; // the photo, or its thumbnail
    QImage m_scaled; // as it was drawn last
    bool m_isComplete = false;
    std::shared_ptr<Unit> m_unit;
};
