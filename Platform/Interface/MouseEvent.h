#pragma once

#include <QPointF>
#include <QtGlobal>

class QMouseEvent;

namespace platform {

/// Keys that are held while something else happens, one bit for each. The command key is that of the system: Control,
/// but on macOS the key of that name.
enum ModifierFlag : quint32 {
    ShiftKeyMask = 0x20000,
    ControlKeyMask = 0x40000,
    AlternateKeyMask = 0x80000,
    CommandKeyMask = 0x100000,
};

/// The flags of Qt's modifiers: Shift is shift, Control command, Alt alternate and Meta control.
quint32 modifierFlagsOf(Qt::KeyboardModifiers modifiers);

/// A press, a move or a release of the left button as a view is told of it.
struct MouseEvent {
    QPointF location; ///< In the view's own coordinates.
    quint32 modifierFlags = 0; ///< `ModifierFlag`s.
    int clickCount = 0; ///< 1, and 2 and more for the further clicks of a quick row of them at one place.
    bool contains(ModifierFlag flag) const { return (modifierFlags & flag) != 0; }
};

} // namespace platform
