#pragma once

#include "Platform/Interface/UndoManager.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

namespace platform {

class WindowController;
namespace DocumentFile {
struct State;
}

/// A document: content that is kept in a file and shown in windows. A host's class overrides
/// `dataRepresentationOfType` and `loadDataRepresentation`, which turn the content into bytes and back, and
/// `makeWindowControllers`.
///
/// **Edited.** A document is edited when its content differs from what was saved or loaded last:
/// `undoManager().stack()` is not clean, or `setEdited(true)` was called since. Undoing everything back to the last
/// save makes it unedited, as long as the undo manager has all actions since then. A hook that empties it, as that of
/// `ZRDocument` does at every save and for every copy, leaves nothing to undo from before; after a copy, or a save that
/// failed, an edited document then stays edited until it is saved or reverted.
///
/// **Files.** A file is replaced whole: whoever reads it, at whatever moment the program ends, finds the old or the new
/// content. Its permissions stay, and a symbolic link is followed. Ending the program forcibly during a save may leave
/// a file with a random ending beside it. A save that fails leaves the file, and the document as it was, edited. Before
/// a file is overwritten that is gone, or is not as this document read or wrote it last (by its size and time), the
/// person is asked.
///
/// **Failures.** What the hooks throw is caught here and logged in "platform.document". Every failure is told to the
/// person through `DocumentPanels`, in whole sentences; the operations without a panel return the sentence.
///
/// **Closing.** A document closes when the window of its last window controller closes. It is destroyed by its owner:
/// the document controller does that in the next turn of the event loop; whoever owns one otherwise is told by
/// `closed`. The window controllers belong to the document.
///
/// **Destroying.** The subclass goes first, with its content. Then go the window controllers, the last one first, each
/// with its window; their `document()` is null by then. The undo manager goes last, with the calls that it holds. The
/// destructor of a window controller therefore asks the content for nothing. A document that has closed, and that a
/// document controller owns, loses its window controllers before it is destroyed itself.
///
/// Panels, windows and observers may destroy the document while an operation runs; it then returns without touching it.
/// Main thread.
class Document : public QObject
{
    Q_OBJECT

public:
    explicit Document(QObject *parent = nullptr);
    ~Document() override;

    /// The name of the type, as it was registered with the document controller; empty at first. The document controller
    /// sets it for what it makes and opens, and `readFromFile` to the type that was read. For a document that is made
    /// elsewhere the host does it, unless the document's class does.
    const QString &fileType() const { return m_fileType; }
    void setFileType(const QString &type) { m_fileType = type; }
    /// The file's absolute path; empty for a document that was never saved.
    const QString &path() const { return m_path; }
    /// The file's name; "Untitled", "Untitled 2" and so on, in the user's language, for one that was never saved: the
    /// lowest number that no other document has at the moment.
    QString displayName() const;

    UndoManager &undoManager() { return m_undoManager; }
    const UndoManager &undoManager() const { return m_undoManager; }

    bool isEdited() const { return m_isEdited; }
    /// Counts the document as edited until it is saved or reverted, or as unedited from here on.
    void setEdited(bool isEdited);

    /// In the order in which they were added.
    const QList<WindowController *> &windowControllers() const { return m_windowControllers; }
    /// Takes a window controller over, and makes this its document. It stands behind the others.
    void addWindowController(std::unique_ptr<WindowController> controller);
    /// Takes a window controller out; it loses its document and goes in the next turn of the event loop, with its
    /// window. One that is not in the list is left alone. The document stays open.
    void removeWindowController(WindowController *controller);
    /// Makes the window controllers that a new or opened document starts with. None here.
    virtual void makeWindowControllers() { }
    /// Shows all windows, the first one in front.
    void showWindows();

    /// Writes the content to the document's file; without one, as `saveAs`.
    /// @return whether it was saved: false when the person cancelled, and when it failed, which was told
    bool save();
    /// Asks for a place, writes the content there, and makes it the document's file.
    bool saveAs();
    /// Asks for a place and writes a copy there. The document keeps its file, and stays edited if it was.
    bool saveTo();
    /// Asks, if the document is edited, and reads the file again. Without a file nothing happens.
    /// @return whether it was read
    bool revert();
    /// Whether the document may be closed: asks whether to save when it is edited, and saves.
    /// @return false when the person cancelled, or saving did not come about
    bool canClose();
    /// Closes the document if it may be closed.
    bool close();
    /// Closes all windows, asking nothing, and emits `closed`.
    void closeWithoutAsking();
    bool isClosed() const { return m_isClosed; }

    /// Reads the content from a file, which becomes the document's; it is unedited then, and its undo manager empty.
    /// @return nothing if it worked; otherwise why not, in a sentence for the person: the document is as it was then,
    /// as far as its hook takes care
    std::optional<QString> readFromFile(const QString &path, const QString &type);
    /// Writes the content to a file. What the document knows of itself stays as it is.
    /// @return nothing if it worked; otherwise why not, in a sentence for the person
    std::optional<QString> writeToFile(const QString &path, const QString &type);

    /// The content as the bytes of a file of the type.
    /// @return nothing when it cannot be had; here always
    virtual std::optional<QByteArray> dataRepresentationOfType(const QString &type);
    /// Replaces the content by that of a file of the type. What fails should leave the document as it was.
    /// @return whether it did; here never
    virtual bool loadDataRepresentation(const QByteArray &data, const QString &ofType);

Q_SIGNALS:
    /// Another file, or another number of an untitled document.
    void displayNameChanged();
    void editedChanged(bool isEdited);
    /// Right after another file became the document's.
    void pathChanged(const QString &path);
    /// Once: the last window is closing, and nothing is asked any more. The document must live until the event loop
    /// turns.
    void closed();

protected:
    /// To be called in a hook that is about to fail: what the person is told instead of a general sentence.
    void setFailureReason(const QString &sentence) { m_failureReason = sentence; }

private:
    friend class WindowController;
    class UntitledNumber;

    bool isLastWindow(const WindowController &controller) const;

    void forgetWindowController(WindowController &controller) { m_windowControllers.removeOne(&controller); }
    bool windowShouldClose(const WindowController &controller);
    void windowDidClose(WindowController &controller);
    bool saveToFile(const QString &path);
    void presentSaveFailure(const QString &explanation);
    void rememberFile(const QString &path, const DocumentFile::State &state);
    bool confirmOverwriting();
    QString choosePath();
    void setPath(const QString &path);
    void updateEdited();
    template <class Hook>
    std::optional<QString> callHook(const QString &name, const QString &generalSentence, Hook hook);

    QString m_fileType;
    QString m_path;
    std::unique_ptr<DocumentFile::State> m_fileState; // as it was read or written last
    mutable std::unique_ptr<UntitledNumber> m_untitledNumber; // while it has one
    UndoManager m_undoManager;
    QList<WindowController *> m_windowControllers;
    QString m_failureReason;
    bool m_isEditedOtherwise = false; // than the undo manager knows
    bool m_isEdited = false;
    bool m_isAsking = false; // whether it may close
    bool m_isClosed = false;
};

} // namespace platform
