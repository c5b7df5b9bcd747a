#include "Platform/Interface/Application.h"

#include "Platform/Foundation/EventBoundary.h"
#include "Platform/Foundation/NotificationCenter.h"

#include <QInputEvent>
#include <QLoggingCategory>
#include <QScopedValueRollback>
#include <QThread>

#include <utility>

namespace platform {

namespace {

Q_LOGGING_CATEGORY(applications, "platform.application")

bool isAboutWindows(QEvent::Type type)
{
    return type == QEvent::WindowActivate || type == QEvent::WindowDeactivate || type == QEvent::Hide
        || type == QEvent::Close;
}

} // namespace

Application::Application(int &argumentCount, char **arguments)
    : QApplication(argumentCount, arguments)
{ }

Application::~Application() = default;

Application *Application::shared()
{
    return qobject_cast<Application *>(QCoreApplication::instance());
}

bool Application::notify(QObject *receiver, QEvent *event)
{
    const auto handle = [&] {
        try {
            return QApplication::notify(receiver, event);
        } catch (...) {
            logCurrentException(applications(), QStringLiteral("handling event %1").arg(int(event->type())));
            return true;
        }
    };
    if (QThread::currentThread() != thread())
        return handle();
    if (event->isInputEvent()) {
        const QScopedValueRollback guard(m_currentEvent, static_cast<const QInputEvent *>(event));
        return handle();
    }
    if (!isAboutWindows(event->type()))
        return handle();
    const QPointer<QWidget> window = qobject_cast<QWidget *>(receiver);
    const bool isHandled = handle();
    if (window && window->isWindow())
        callGuarded(applications(), QStringLiteral("following windows"), [&] { windowHandled(*window, *event); });
    return isHandled;
}

void Application::windowHandled(QWidget &window, const QEvent &event)
{
    switch (event.type()) {
    case QEvent::WindowActivate:
        if (window.windowType() == Qt::Window)
            setMainWindow(&window);
        break;
    case QEvent::WindowDeactivate: // for a window of this application, or for none
        if (!activeWindow())
            setMainWindow(nullptr);
        break;
    case QEvent::Hide:
        if (&window == m_mainWindow)
            setMainWindow(nullptr);
        break;
    case QEvent::Close:
        if (event.isAccepted())
            NotificationCenter::defaultCenter().postNotification(NSWindowWillCloseNotification, &window);
        break;
    default:
        break;
    }
}

void Application::setMainWindow(QWidget *window)
{
    if (window == m_mainWindow)
        return;
    const QPointer<QWidget> next = window;
    if (QWidget *const former = std::exchange(m_mainWindow, nullptr))
        NotificationCenter::defaultCenter().postNotification(NSWindowDidResignMainNotification, former);
    // Whoever was told may have closed the next one, or made another one main.
    if (!next || m_mainWindow || !next->isVisible())
        return;
    m_mainWindow = next;
    NotificationCenter::defaultCenter().postNotification(NSWindowDidBecomeMainNotification, next.data());
}

} // namespace platform
