#include "ZRCommon/ZRWindowController.h"

#include "Platform/Interface/Document.h"
#include "Platform/Interface/UndoManager.h"
#include "ZRCommon/ZRSelection.h"

#include <utility>

ZRWindowController::ZRWindowController(const QString &windowInterfaceFileName)
    : platform::WindowController(windowInterfaceFileName)
{ }

ZRWindowController::~ZRWindowController() = default;

void ZRWindowController::setSelection(std::unique_ptr<ZRSelection> selection)
{
    // The former one goes last: its end finds the new one in place.
    const std::unique_ptr<ZRSelection> former = std::exchange(m_selection, std::move(selection));
}

void ZRWindowController::windowDidLoad()
{
    setShouldCascadeWindows(false);
    setWindowFrameAutosaveName(QStringLiteral("Document Window"));
    platform::WindowController::windowDidLoad();
    documentChanged();
}

void ZRWindowController::copySelectionFrom(const ZRSelection &selection)
{
    if (!m_selection)
        return;
    if (document()) {
        const std::shared_ptr<const ZRSelection> before = m_selection->clone();
        document()->undoManager().registerUndo(this, [this, before] { copySelectionFrom(*before); });
    }
    m_selection->copyFrom(selection);
}
