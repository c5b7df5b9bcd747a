#include "Platform/Interface/KeyBindings.h"

#include <QKeyEvent>

#include <algorithm>
#include <iterator>

namespace platform {

namespace {

struct Binding {
    int key;
    Qt::KeyboardModifiers modifiers;
    KeyAction action;
};

#ifdef Q_OS_MACOS
// Qt calls the key of that name Meta there.
constexpr Qt::KeyboardModifier controlKey = Qt::MetaModifier;
#endif

const Binding bindings[] = {
    {Qt::Key_Left, {}, KeyAction::moveLeft},
    {Qt::Key_Right, {}, KeyAction::moveRight},
    {Qt::Key_Up, {}, KeyAction::moveUp},
    {Qt::Key_Down, {}, KeyAction::moveDown},
#ifdef Q_OS_MACOS
    {Qt::Key_F, controlKey, KeyAction::moveForward},
    {Qt::Key_B, controlKey, KeyAction::moveBackward},
    {Qt::Key_N, controlKey, KeyAction::moveDown},
    {Qt::Key_P, controlKey, KeyAction::moveUp},
    {Qt::Key_PageUp, {}, KeyAction::scrollPageUp},
    {Qt::Key_PageDown, {}, KeyAction::scrollPageDown},
#else
    {Qt::Key_PageUp, {}, KeyAction::pageUp},
    {Qt::Key_PageDown, {}, KeyAction::pageDown},
#endif
    {Qt::Key_Home, {}, KeyAction::scrollToBeginningOfDocument},
    {Qt::Key_End, {}, KeyAction::scrollToEndOfDocument},
    {Qt::Key_Return, {}, KeyAction::insertNewline},
    {Qt::Key_Enter, {}, KeyAction::insertNewline},
    {Qt::Key_Tab, {}, KeyAction::insertTab},
    {Qt::Key_Backtab, Qt::ShiftModifier, KeyAction::insertBacktab},
    {Qt::Key_Backspace, {}, KeyAction::deleteBackward},
    {Qt::Key_Delete, {}, KeyAction::deleteForward},
    {Qt::Key_Escape, {}, KeyAction::cancelOperation},
    {Qt::Key_A, Qt::ControlModifier, KeyAction::selectAll},
};

} // namespace

std::optional<KeyAction> keyActionFor(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const auto found = std::find_if(std::begin(bindings), std::end(bindings), [&](const Binding &binding) {
        return binding.key == event.key() && binding.modifiers == modifiers;
    });
    return found == std::end(bindings) ? std::nullopt : std::optional(found->action);
}

} // namespace platform
