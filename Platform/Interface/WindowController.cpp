#include "Platform/Interface/WindowController.h"

#include "Platform/Foundation/EventBoundary.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Platform/Interface/Document.h"
#include "Platform/Interface/InterfaceFile.h"
#include "Platform/Interface/WindowFrame_p.h"

#include <QEvent>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScopeGuard>
#include <QScreen>
#include <QTimerEvent>

#include <utility>

namespace platform {

namespace {

Q_LOGGING_CATEGORY(windows, "platform.windows")

constexpr int frameDelay = 300; // milliseconds of rest before a frame is stored
constexpr int cascadeStep = 24; // pixels; about a title bar

QPointer<QWidget> windowShownLast;

QString frameKey(const QString &name)
{
    return QStringLiteral("NSWindow Frame ") + name;
}

QList<QRect> screenRects()
{
    QList<QRect> rects;
    for (const QScreen *const screen : QGuiApplication::screens()) // the primary one first
        rects.append(screen->availableGeometry());
    return rects;
}

} // namespace

WindowController::WindowController(const QString &interfaceFileName)
    : m_interfaceFileName(interfaceFileName)
{ }

WindowController::~WindowController()
{
    if (m_document)
        m_document->forgetWindowController(*this);
    if (!m_window)
        return;
    if (m_frameTimer.isActive())
        saveFrame();
    m_window->removeEventFilter(this);
    delete m_window;
}

// --- the window

QWidget *WindowController::window()
{
    if (!m_isLoaded)
        loadWindow();
    return m_window;
}

std::unique_ptr<QWidget> WindowController::makeWindow()
{
    auto loaded = InterfaceFile::load(m_interfaceFileName);
    if (!loaded)
        raiseFailure(ZR_FAILURE_SOURCE, this, loaded.error().toString());
    return std::move(loaded).value();
}

void WindowController::loadWindow()
{
    m_isLoaded = true; // so that whoever asks meanwhile gets no second one
    try {
        m_window = makeWindow().release();
        ZR_ASSERT(this, m_window, "the window was not made");
        m_window->setAttribute(Qt::WA_DeleteOnClose, false); // it goes with this controller
        m_window->installEventFilter(this);
        updateTitle();
        restoreFrame();
        windowDidLoad();
    } catch (...) {
        delete m_window;
        m_isLoaded = false;
        throw;
    }
}

QWidget *WindowController::findOutlet(const QString &objectName)
{
    QWidget *const root = window();
    return root && root->objectName() != objectName ? root->findChild<QWidget *>(objectName) : root;
}

void WindowController::raiseMissingOutlet(const QString &objectName) const
{
    raiseFailure(ZR_FAILURE_SOURCE, this,
                 QStringLiteral("the window has no widget \"%1\" of the class that is asked for").arg(objectName));
}

void WindowController::showWindow()
{
    QWidget *const shown = window();
    if (!shown)
        return;
    if (!shown->isVisible() && m_shouldCascade && !m_hasStoredFrame)
        cascade();
    windowShownLast = shown;
    shown->setWindowState(shown->windowState() & ~Qt::WindowMinimized);
    shown->show();
    shown->raise();
    shown->activateWindow();
}

void WindowController::cascade()
{
    if (!windowShownLast || windowShownLast == m_window || !windowShownLast->isVisible())
        return;
    const QRect screen = windowShownLast->screen()->availableGeometry();
    QRect frame(windowShownLast->pos() + QPoint(cascadeStep, cascadeStep), m_window->size());
    if (!screen.contains(frame))
        frame.moveTopLeft(screen.topLeft());
    m_window->move(frame.topLeft());
}

bool WindowController::close()
{
    return !isWindowVisible() || (!m_isClosing && m_window->close());
}

void WindowController::closeWithDocument()
{
    if (!isWindowVisible())
        return;
    const QPointer<QWidget> closing = m_window;
    // A window that is being closed already goes by itself; one that refuses is not asked.
    if (!m_isClosing && !closing->close() && closing)
        closing->hide();
}

// --- the document

void WindowController::setDocument(Document *document)
{
    if (m_document)
        m_document->disconnect(this);
    m_document = document;
    if (m_document) {
        connect(m_document, &Document::displayNameChanged, this, &WindowController::updateTitle);
        connect(m_document, &Document::editedChanged, this, &WindowController::updateTitle);
    }
    updateTitle();
}

void WindowController::updateTitle()
{
    if (!m_window || !m_document)
        return;
    QString title = windowTitleForDocumentDisplayName(m_document->displayName());
    title.replace(QLatin1String("[*]"), QLatin1String("[*][*]")); // a mark in the name is not Qt's
    m_window->setWindowTitle(title + QLatin1String("[*]"));
    m_window->setWindowModified(m_document->isEdited());
    m_window->setWindowFilePath(m_document->path());
}

UndoManager *WindowController::windowWillReturnUndoManager()
{
    return m_document ? &m_document->undoManager() : nullptr;
}

// --- what happens to the window

bool WindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window)
        return false;
    switch (event->type()) {
    case QEvent::Close:
        if (!callGuarded(windows(), QStringLiteral("closing a window"), [&] { handleClose(*event); }))
            event->ignore();
        return true;
    case QEvent::WindowActivate:
        callGuarded(windows(), QStringLiteral("a window that becomes key"), [this] { becomeKey(); });
        return false;
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::WindowStateChange:
        frameDidChange();
        return false;
    case QEvent::Hide:
        if (m_frameTimer.isActive())
            saveFrame();
        return false;
    default:
        return false;
    }
}

void WindowController::becomeKey()
{
    const QPointer<WindowController> alive = this;
    if (UndoManager *const manager = windowWillReturnUndoManager())
        manager->stack().setActive();
    if (alive)
        windowDidBecomeKey();
}

void WindowController::handleClose(QEvent &event)
{
    event.ignore();
    if (m_isClosing) // while the document asks
        return;
    const QPointer<WindowController> alive = this;
    const QPointer<QWidget> closing = m_window;
    m_isClosing = true;
    const auto ended = qScopeGuard([&] {
        if (alive)
            m_isClosing = false;
    });
    if ((m_document && !m_document->windowShouldClose(*this)) || !alive || !closing)
        return;
    event.accept();
    QObject *const receiver = closing; // whose event() is public
    receiver->event(&event);
    if (!event.isAccepted() || !alive)
        return;
    if (m_frameTimer.isActive())
        saveFrame();
    windowWillClose();
    if (alive && m_document)
        m_document->windowDidClose(*this);
}

// --- the frame

void WindowController::setWindowFrameAutosaveName(const QString &name)
{
    if (m_frameTimer.isActive())
        saveFrame();
    m_frameName = name;
    restoreFrame();
}

void WindowController::restoreFrame()
{
    m_hasStoredFrame = false;
    if (!m_window || m_frameName.isEmpty())
        return;
    const auto frame = WindowFrame::fromText(UserDefaults::standard().string(frameKey(m_frameName)));
    if (!frame)
        return;
    m_hasStoredFrame = true;
    m_frame = frameOnScreens(frame->rect, screenRects());
    m_window->resize(m_frame.size());
    m_window->move(m_frame.topLeft());
    m_window->setWindowState(m_window->windowState().setFlag(Qt::WindowMaximized, frame->isMaximized));
}

void WindowController::frameDidChange()
{
    const Qt::WindowStates states = m_window->windowState();
    if (!m_frameName.isEmpty() && m_window->isVisible() && !(states & (Qt::WindowMinimized | Qt::WindowFullScreen)))
        m_frameTimer.start(frameDelay, this);
}

void WindowController::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_frameTimer.timerId())
        QObject::timerEvent(event);
    else
        saveFrame();
}

void WindowController::saveFrame()
{
    m_frameTimer.stop();
    if (!m_window)
        return;
    const bool isMaximized = m_window->isMaximized();
    if (!isMaximized)
        m_frame = QRect(m_window->pos(), m_window->size());
    else if (!m_frame.isValid())
        m_frame = m_window->normalGeometry();
    UserDefaults::standard().set(frameKey(m_frameName), WindowFrame{m_frame, isMaximized}.toText());
}

} // namespace platform
