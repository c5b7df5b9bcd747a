#pragma once

#include <QImage>
#include <QMimeData>
#include <QPoint>
#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>

namespace platform {

/// Something that is dragged out of a view.
struct Drag {
    std::unique_ptr<QMimeData> data;
    QImage image; ///< Under the pointer, in its own pixel ratio; null for none.
    QPoint hotSpot; ///< Of the pointer within the image.
    Qt::DropActions supportedActions = Qt::CopyAction;
    QPointer<QWidget> source;
};

/// How drags out of the framework's views run: takes over the mouse until the drag has ended.
/// @return what the receiver did; Qt::IgnoreAction for nothing
using DragRunner = std::function<Qt::DropAction(Drag &drag)>;

/// Runs a drag, through the window system or whoever has taken its place. The source may be destroyed meanwhile. A drag
/// without data or source ends at once. The main thread.
Qt::DropAction runDrag(Drag drag);

/// Puts another runner in place of the window system's, for tests, and for hosts that draw their own drags. An empty
/// one puts the window system's back.
/// @return the one before
DragRunner setDragRunner(DragRunner runner);

/// Files to be dragged or copied: their URLs, also when there are none, and their paths as text.
/// @param paths absolute
std::unique_ptr<QMimeData> fileNamesData(const QStringList &paths);

} // namespace platform
