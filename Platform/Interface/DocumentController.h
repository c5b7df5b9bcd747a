#pragma once

#include "Platform/Interface/Document.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class QWidget;

namespace platform {

/// A kind of document that a host can make and open.
struct DocumentType {
    QString name; ///< What the hooks of a document are asked for, such as "Storyboard". Also shown.
    QString fileExtension; ///< Without the point; compared without case.
    std::function<std::unique_ptr<Document>()> makeDocument;

    /// As file panels take it: "Storyboard (*.storyboard)".
    QString nameFilter() const { return QStringLiteral("%1 (*.%2)").arg(name, fileExtension); }
};

/// Knows the open documents of a program: makes, opens, saves and closes them, and owns them. A program has one.
///
/// The **current document** is the one of the main window. While another window is main, such as a panel, and while
/// there is no main window, it stays the one that was current last; when that closes, the one before it. The main
/// window is followed through the notifications of `platform::Application`; under another application object the
/// document opened or made last is the current one.
///
/// The **recent files** are kept in `UserDefaults::standard` under "NSRecentDocuments": the ten that were opened or
/// saved last, the last one first.
///
/// A document that closes leaves `documents` at once and is destroyed in the next turn of the event loop. Documents
/// that are still open when the controller is destroyed are destroyed with it, windows and all, and nothing is asked:
/// the application object must outlive the controller, and the host calls `closeAll` before it quits. Nothing here
/// follows the end of the session; a host that wants to be asked then calls `closeAll` from
/// `QGuiApplication::commitDataRequest`. Main thread.
class DocumentController : public QObject
{
    Q_OBJECT

public:
    /// How many recent files are remembered.
    static constexpr int MaximumRecentCount = 10;

    explicit DocumentController(QObject *parent = nullptr);
    ~DocumentController() override;

    /// The controller of this program, the one made first; null while there is none.
    static DocumentController *shared();

    /// Registers a kind of document. The first one is what `newDocument` makes. One of the same name is replaced.
    void registerType(DocumentType type);
    const QList<DocumentType> &types() const { return m_types; }
    /// The type of the name; null when there is none.
    const DocumentType *typeWithName(const QString &name) const;
    /// The type of the path's file extension; null when there is none.
    const DocumentType *typeOfPath(const QString &path) const;

    /// Makes a document of the type, or of the first one, with its windows, and shows them.
    /// @return null when that failed, which was told
    Document *newDocument(const QString &typeName = {});
    /// Opens a file and shows its windows. One that is open already is only shown.
    /// @return null when that failed, which was told
    Document *openDocument(const QString &path);
    /// Asks which files to open, and opens them.
    void openDocuments();
    /// Takes over a document that was made elsewhere. Windows are neither made nor shown, and its type is left alone.
    Document *addDocument(std::unique_ptr<Document> document);

    /// In the order in which they were opened.
    const QList<Document *> &documents() const { return m_documents; }
    /// The open document of the file, also by another path to it; null when it is not open.
    Document *documentForPath(const QString &path) const;
    /// The document that a window belongs to; null for none.
    Document *documentForWindow(const QWidget *window) const;
    Document *currentDocument() const { return m_byUse.isEmpty() ? nullptr : m_byUse.first(); }
    bool hasEditedDocuments() const;

    /// Saves every document that is edited.
    /// @return whether all were; the first that was not ends it
    bool saveAll();
    /// Asks of every edited document whether to save it, the current one first, and saves; when none was cancelled,
    /// closes all. To be called before a program quits.
    /// @return whether all were closed. When one was cancelled, all stay open.
    bool closeAll();

    /// The recent files that are still there. Of what the defaults hold the first hundred are looked at.
    QStringList recentPaths() const;
    void noteRecentPath(const QString &path);
    void clearRecentPaths();

Q_SIGNALS:
    /// One more, or one less.
    void documentsChanged();
    void currentDocumentChanged(platform::Document *document);
    void recentPathsChanged();

private:
    std::unique_ptr<Document> make(const DocumentType &type);
    Document *present(std::unique_ptr<Document> document, const QString &failureMessage);
    void use(Document *document);
    void forget(Document *document);
    void fail(const QString &message, const QString &explanation);

    QList<DocumentType> m_types;
    QList<Document *> m_documents;
    QList<Document *> m_byUse; // the current one first
};

} // namespace platform
