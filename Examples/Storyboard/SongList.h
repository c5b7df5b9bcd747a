#pragma once

#include <QListView>

#include <memory>
#include <optional>

class QMimeData;

/// The songs of a document in their order. Songs are dragged to other places, and songs and files are dropped in
/// between.
class SongList : public QListView
{
    Q_OBJECT

public:
    explicit SongList(QWidget *parent = nullptr);

    /// Where something that is let go at a point, in the viewport's coordinates, is inserted.
    int insertionIndexAt(const QPoint &point) const;

Q_SIGNALS:
    /// For whoever knows what a drag carries.
    void dragBegan(std::unique_ptr<QMimeData> &data);
    /// Something was dropped in front of the song at the index.
    void dropped(const QMimeData *data, int index, bool isFromHere);

protected:
    void startDrag(Qt::DropActions actions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void setInsertionIndex(std::optional<int> index);

    std::optional<int> m_insertionIndex; // while something is dragged over the list
};
