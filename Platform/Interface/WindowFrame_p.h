#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It may change from version to version.
//

#include <QList>
#include <QRect>
#include <QString>

#include <optional>

namespace platform {

/// The frame of a window as it is kept in the defaults: "x y width height", with " maximized" behind it.
struct WindowFrame {
    QRect rect; ///< Where the frame begins, and the size of what is in it; of a maximised window, as it was before.
    bool isMaximized = false;

    /// Nothing for a text that is no frame, or one beyond the coordinates that windows can have.
    static std::optional<WindowFrame> fromText(const QString &text);
    QString toText() const;
};

/// The frame itself when the screens cover all of it; otherwise moved and, where it is too large, shrunk onto the
/// screen of which it covers most; onto the first one when it covers none.
/// @param screens what windows may cover of each
QRect frameOnScreens(const QRect &frame, const QList<QRect> &screens);

} // namespace platform
