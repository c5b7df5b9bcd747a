#pragma once

#include <optional>

class QKeyEvent;

namespace platform {

/// What a key asks a view to do.
enum class KeyAction {
    moveForward,
    moveBackward,
    moveUp,
    moveDown,
    moveLeft,
    moveRight,
    pageUp,
    pageDown,
    scrollPageUp,
    scrollPageDown,
    scrollToBeginningOfDocument,
    scrollToEndOfDocument,
    insertNewline,
    insertTab,
    insertBacktab,
    deleteBackward,
    deleteForward,
    cancelOperation,
    selectAll,
};

/// What a key is bound to, in the one table of the framework; nothing for every other key. Keys of the number pad count
/// as those that they double. Modifiers must be exactly those below; Command is Control, but on macOS the key of that
/// name.
///
/// | Key | Action |
/// |---|---|
/// | arrow keys | moveLeft, moveRight, moveUp, moveDown |
/// | Control+F, Control+B, Control+N, Control+P (macOS) | moveForward, moveBackward, moveDown, moveUp |
/// | Page Up, Page Down | pageUp, pageDown; on macOS scrollPageUp, scrollPageDown |
/// | Home, End | scrollToBeginningOfDocument, scrollToEndOfDocument |
/// | Return, Enter | insertNewline |
/// | Tab, Shift+Tab | insertTab, insertBacktab |
/// | Backspace, Delete | deleteBackward, deleteForward |
/// | Escape | cancelOperation |
/// | Command+A | selectAll |
std::optional<KeyAction> keyActionFor(const QKeyEvent &event);

} // namespace platform
