#include "Platform/Interface/DragRunner.h"

#include <QDrag>
#include <QPixmap>
#include <QUrl>

#include <utility>

namespace platform {

namespace {

Qt::DropAction runByWindowSystem(Drag &drag)
{
    // Qt deletes it when the drag has ended, and the source if that goes before.
    auto *const running = new QDrag(drag.source);
    running->setMimeData(drag.data.release());
    if (!drag.image.isNull()) {
        running->setPixmap(QPixmap::fromImage(drag.image));
        running->setHotSpot(drag.hotSpot);
    }
    return running->exec(drag.supportedActions);
}

DragRunner &currentRunner()
{
    static DragRunner runner;
    return runner;
}

} // namespace

Qt::DropAction runDrag(Drag drag)
{
    if (!drag.data || !drag.source)
        return Qt::IgnoreAction;
    const DragRunner runner = currentRunner(); // which may replace itself
    return runner ? runner(drag) : runByWindowSystem(drag);
}

DragRunner setDragRunner(DragRunner runner)
{
    return std::exchange(currentRunner(), std::move(runner));
}

std::unique_ptr<QMimeData> fileNamesData(const QStringList &paths)
{
    auto data = std::make_unique<QMimeData>();
    QByteArray lines;
    for (const QString &path : paths)
        lines += QUrl::fromLocalFile(path).toEncoded() + "\r\n";
    // Through QMimeData::setUrls an empty list would be none at all.
    data->setData(QStringLiteral("text/uri-list"), lines);
    data->setText(paths.join(u'\n'));
    return data;
}

} // namespace platform
