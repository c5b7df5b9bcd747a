#pragma once

#include <QApplication>
#include <QPointer>
#include <QString>
#include <QWidget>

class QInputEvent;

namespace platform {

/// What is posted of windows, through the default notification centre, with the window (a QWidget) as the object.
inline const QString NSWindowDidBecomeMainNotification = QStringLiteral("NSWindowDidBecomeMainNotification");
inline const QString NSWindowDidResignMainNotification = QStringLiteral("NSWindowDidResignMainNotification");
inline const QString NSWindowWillCloseNotification = QStringLiteral("NSWindowWillCloseNotification");

/// The application object of a host. It follows the main window, knows the event that is being handled, and lives on
/// when a handler raises: an exception that leaves one is logged in "platform.application" and the event counts as
/// handled.
///
/// The main window is the active window, unless that is a dialog, a tool window or a popup: the main window stays while
/// these are active. It is none while the application is not active, and after the window was hidden or closed. The
/// notifications are posted after the window itself has handled the event:
/// - became main, just after the former main window resigned;
/// - resigned main, also when the window is hidden, closed or destroyed, or the application is no longer active;
/// - will close, of any window that has agreed to be closed, while it still shows.
///
/// A host with an application object of its own is told none of this; the framework's views catch exceptions there.
///
/// The main thread, but for `notify`, which Qt calls on every thread.
class Application : public QApplication
{
    Q_OBJECT

public:
    Application(int &argumentCount, char **arguments);
    ~Application() override;

    /// The application object, if it is one of this class; null otherwise.
    static Application *shared();

    /// Null while there is none.
    QWidget *mainWindow() const { return m_mainWindow; }
    /// The innermost press, release, move or turn of the mouse, of a key, of a finger or of a pen that is being
    /// handled; null outside. Valid until its handler returns.
    const QInputEvent *currentEvent() const { return m_currentEvent; }

    bool notify(QObject *receiver, QEvent *event) override;

private:
    void windowHandled(QWidget &window, const QEvent &event);
    void setMainWindow(QWidget *window);

    QPointer<QWidget> m_mainWindow;
    const QInputEvent *m_currentEvent = nullptr;
};

} // namespace platform
