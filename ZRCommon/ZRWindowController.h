#pragma once

#include "Platform/Interface/WindowController.h"

#include <QString>

#include <memory>

class ZRSelection;

/// The base class of document window controllers: holds the selection of its window, and is told of the document's
/// changes (`documentChanged`, which does nothing here). All windows share one stored frame, "Document Window", and
/// are not cascaded.
///
/// A subclass overrides `documentChanged`, which comes for each change of the document, also before the window is
/// loaded, and once more when it has been (`windowDidLoad`). There it shows the content, and has the item sets of its
/// selection let go of items that the document has lost, `validateItems`: nothing else does. See `ZRSelection`.
///
/// Main thread.
class ZRWindowController : public platform::WindowController
{
    Q_OBJECT

public:
    explicit ZRWindowController(const QString &windowInterfaceFileName = {});
    ~ZRWindowController() override;

    /// The selection of the window; null until the subclass has set one.
    ZRSelection *selection() const { return m_selection.get(); }
    /// Takes over a selection. The one before is destroyed afterwards.
    void setSelection(std::unique_ptr<ZRSelection> selection);

    /// Replaces what is selected by what is selected in the other selection, in one change. Where there is a document,
    /// the call that takes this back is registered with its undo manager: an action by itself, or a part of the open
    /// group. The document counts as edited by that, until the action is undone or the document saved. To select
    /// without an action, call `copyFrom` of the selection. Without a selection nothing happens.
    void copySelectionFrom(const ZRSelection &selection);

protected:
    /// Turns cascading off, sets the name of the frame, and calls `documentChanged` once, in this order. A subclass
    /// that overrides it finds its outlets first, then calls this.
    void windowDidLoad() override;

private:
    std::unique_ptr<ZRSelection> m_selection;
};
