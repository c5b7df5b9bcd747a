#pragma once

#include "Platform/Interface/WindowController.h"

#include <QString>

#include <memory>

class ZRSelection;

/// The base class of document window controllers: holds the selection of its window, and is told of the document's
/// changes (`documentChanged`, which does nothing here). All windows share one stored frame, "Document Window", and
/// are not cascaded.
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

    /// Replaces what is selected by what is selected in the other selection, in one change, so that it can be undone.
    /// Without a document it cannot be undone; without a selection nothing happens.
    void copySelectionFrom(const ZRSelection &selection);

protected:
    /// Turns cascading off, sets the name of the frame, and calls `documentChanged` once, in this order. To be called
    /// first by a subclass that overrides it.
    void windowDidLoad() override;

private:
    std::unique_ptr<ZRSelection> m_selection;
};
