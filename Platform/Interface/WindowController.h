#pragma once

#include "Platform/Foundation/AssertionHandler.h"

#include <QBasicTimer>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QString>
#include <QWidget>

#include <memory>

namespace platform {

class Document;
class UndoManager;

/// Controls one window, usually of a document, which then owns the controller. The window is made at the first demand:
/// from an interface file, or by a subclass that overrides `makeWindow`.
///
/// **Closing.** When the window is about to be closed, whoever asks for it, the document is asked first if this is its
/// last window; then the window itself (its closeEvent). When both agree, `windowWillClose` is called while the window
/// still shows, and the document drops this controller; with the last one it closes.
///
/// **Frames.** Under an autosave name the frame of the window is kept in `UserDefaults::standard`, as text under
/// "NSWindow Frame NAME": place of the frame, size of the content, in device-independent pixels, and whether it is
/// maximised. It is stored soon after the window was moved or resized, and when it goes. When the name is set, the
/// window gets the stored frame: one that no longer lies on the screens, or is larger than its screen, is brought onto
/// one; what is no frame is ignored. Any number of windows may share a name: each begins where the last one was left.
///
/// **Title.** A window with a document has the document's name as its title, Qt's mark of changes behind it
/// (`QWidget::isWindowModified`), and its path (`QWidget::windowFilePath`).
///
/// **Destroying.** The subclass goes first, with its members. The window goes last, after its frame was stored, and so
/// outlives members that its widgets use, such as a model. What the widgets tell while they go still reaches slots of
/// the subclass, unless its destructor disconnects them. Where the document's destructor destroys the controller,
/// `document()` is null, and the document's subclass is gone already; see `Document`.
///
/// What the overridden messages throw while an event is handled is logged in "platform.windows". Main thread.
class WindowController : public QObject
{
    Q_OBJECT

public:
    /// @param interfaceFileName the name of the window's interface file; see `InterfaceFile`
    explicit WindowController(const QString &interfaceFileName = {});
    /// Destroys the window as well. A document loses the controller.
    ~WindowController() override;

    const QString &interfaceFileName() const { return m_interfaceFileName; }
    /// The document that owns this controller; null for none.
    Document *document() const { return m_document; }

    /// The window, which is made at the first call. When it cannot be made, `platform::InternalInconsistency` is raised
    /// with the reason. Null while it is being made, and after somebody else has destroyed it.
    QWidget *window();
    bool isWindowLoaded() const { return m_isLoaded; }
    /// Whether the window is on the screen, or minimised.
    bool isWindowVisible() const { return m_window && m_window->isVisible(); }
    /// The widget of the window with this object name; raises `platform::InternalInconsistency` when there is none of
    /// this class.
    template <class Widget>
    Widget &outlet(const QString &objectName)
    {
        QWidget *const widget = findOutlet(objectName);
        auto *const found = dynamic_cast<Widget *>(widget);
        if (!found)
            raiseMissingOutlet(objectName);
        return *found;
    }

    /// Shows the window and brings it to the front.
    void showWindow();
    /// Closes the window as if the person had done it.
    /// @return whether it was closed; a window that was never made counts as closed
    bool close();

    /// Whether a window without a stored frame is placed a little below and to the right of the one shown last; so it
    /// is at first.
    void setShouldCascadeWindows(bool shouldCascade) { m_shouldCascade = shouldCascade; }
    bool shouldCascadeWindows() const { return m_shouldCascade; }
    /// Keeps the frame of the window under the name, and sets the frame that was kept. An empty name ends that.
    void setWindowFrameAutosaveName(const QString &name);
    const QString &windowFrameAutosaveName() const { return m_frameName; }

    /// The document's content changed: for subclasses to refresh the window. Called by documents that announce changes,
    /// whether the window is loaded or not: an override asks `isWindowLoaded` before it refreshes anything.
    virtual void documentChanged() { }

    /// The undo manager for the window: the document's; null without one. When the window becomes key and this one's
    /// stack is in a QUndoGroup, it becomes the active one there.
    virtual UndoManager *windowWillReturnUndoManager();

protected:
    /// Makes the window: here, from the interface file.
    virtual std::unique_ptr<QWidget> makeWindow();
    /// Called once, when the window has been made and has its title, before it is shown.
    virtual void windowDidLoad() { }
    /// The window takes the keys now.
    virtual void windowDidBecomeKey() { }
    /// The window has agreed to be closed.
    virtual void windowWillClose() { }
    /// The title for a window of a document of that name: here the name.
    virtual QString windowTitleForDocumentDisplayName(const QString &displayName) { return displayName; }

    bool eventFilter(QObject *watched, QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    friend class Document;

    void setDocument(Document *document);
    void loadWindow();
    void updateTitle();
    void cascade();
    void closeWithDocument();
    void handleClose(QEvent &event);
    void becomeKey();
    void restoreFrame();
    void frameDidChange();
    void saveFrame();
    QWidget *findOutlet(const QString &objectName);
    [[noreturn]] void raiseMissingOutlet(const QString &objectName) const;

    QString m_interfaceFileName;
    Document *m_document = nullptr;
    QPointer<QWidget> m_window;
    QString m_frameName;
    QRect m_frame; // stored last, of a maximised window as it was before
    QBasicTimer m_frameTimer; // runs while the frame is to be stored
    bool m_isLoaded = false;
    bool m_shouldCascade = true;
    bool m_hasStoredFrame = false;
    bool m_isClosing = false;
};

} // namespace platform
