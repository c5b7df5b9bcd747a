#include "SongList.h"

#include "StoryboardSelection.h"

#include "Platform/Interface/DragRunner.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <QDragEnterEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>
#include <utility>

namespace {

/// Titles are shortened to the list's width rather than scrolled to.
class TitleDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        return QSize(0, QStyledItemDelegate::sizeHint(option, index).height());
    }
};

} // namespace

SongList::SongList(QWidget *parent)
    : QListView(parent)
{
    setItemDelegate(new TitleDelegate(this));
    setDragEnabled(true);
    setAcceptDrops(true);
    setUniformItemSizes(true);
    setAccessibleName(ZRLocalizedString("Songs"));
}

int SongList::insertionIndexAt(const QPoint &point) const
{
    const QModelIndex index = indexAt(QPoint(viewport()->width() / 2, point.y()));
    if (!index.isValid())
        return point.y() < 0 ? 0 : model()->rowCount();
    return index.row() + (point.y() > visualRect(index).center().y() ? 1 : 0);
}

void SongList::startDrag(Qt::DropActions)
{
    std::unique_ptr<QMimeData> carried;
    Q_EMIT dragBegan(carried);
    // Never to move: that would take the files away from where they are.
    if (carried)
        platform::runDrag({std::move(carried), QImage(), QPoint(), Qt::CopyAction, this});
}

void SongList::setInsertionIndex(std::optional<int> index)
{
    if (std::exchange(m_insertionIndex, index) != index)
        viewport()->update();
}

void SongList::dragEnterEvent(QDragEnterEvent *event)
{
    if (StoryboardSelection::canTake(*event->mimeData()))
        event->acceptProposedAction();
}

void SongList::dragMoveEvent(QDragMoveEvent *event)
{
    if (!StoryboardSelection::canTake(*event->mimeData()))
        return;
    setInsertionIndex(insertionIndexAt(event->position().toPoint()));
    event->acceptProposedAction();
}

void SongList::dragLeaveEvent(QDragLeaveEvent *)
{
    setInsertionIndex(std::nullopt);
}

void SongList::dropEvent(QDropEvent *event)
{
    setInsertionIndex(std::nullopt);
    if (!StoryboardSelection::canTake(*event->mimeData()))
        return;
    event->acceptProposedAction();
    Q_EMIT dropped(event->mimeData(), insertionIndexAt(event->position().toPoint()), event->source() == this);
}

void SongList::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    QPainter painter(viewport());
    if (model() && model()->rowCount() == 0) {
        painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
        constexpr int margin = 12;
        painter.drawText(viewport()->rect().adjusted(margin, margin, -margin, -margin),
                         Qt::AlignCenter | Qt::TextWordWrap, ZRLocalizedString("Drop songs here."));
    }
    if (!m_insertionIndex)
        return;
    const QModelIndex behind = model()->index(*m_insertionIndex, 0);
    const QModelIndex before = model()->index(*m_insertionIndex - 1, 0);
    const int y = behind.isValid() ? visualRect(behind).top() : before.isValid() ? visualRect(before).bottom() + 1 : 0;
    painter.fillRect(QRect(0, std::max(0, y - 1), viewport()->width(), 2), palette().color(QPalette::Highlight));
}
