#include "Platform/Interface/DocumentController.h"

#include "Platform/Foundation/EventBoundary.h"
#include "Platform/Foundation/LocalizedString.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Platform/Interface/Application.h"
#include "Platform/Interface/DocumentFile_p.h"
#include "Platform/Interface/DocumentPanels.h"
#include "Platform/Interface/WindowController.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace platform {

namespace {

Q_LOGGING_CATEGORY(documentLog, "platform.document")

const QString recentDocumentsKey = QStringLiteral("NSRecentDocuments");

DocumentController *sharedController = nullptr;

QString couldNotBeOpened(const QString &path)
{
    return localizedString("The file “%1” could not be opened.").arg(QFileInfo(path).fileName());
}

// The first ones that are accepted, which is asked of no more than are looked at: the defaults may hold anything.
template <class Accept>
QStringList storedRecentPaths(const Accept &accept)
{
    constexpr qsizetype maximumLookedAt = 10 * DocumentController::MaximumRecentCount;
    QStringList paths;
    const QVariantList stored = UserDefaults::standard().array(recentDocumentsKey).mid(0, maximumLookedAt);
    for (const QVariant &value : stored) {
        const QString path = value.toString();
        if (QDir::isAbsolutePath(path) && !paths.contains(path) && accept(path))
            paths.append(path);
        if (paths.size() == DocumentController::MaximumRecentCount)
            break;
    }
    return paths;
}

} // namespace

DocumentController::DocumentController(QObject *parent)
    : QObject(parent)
{
    if (!sharedController)
        sharedController = this;
    NotificationCenter::defaultCenter().addObserver(
        this,
        [this](const Notification &notification) {
            if (Document *const document = documentForWindow(notification.object<QWidget>()))
                use(document);
        },
        NSWindowDidBecomeMainNotification);
}

DocumentController::~DocumentController()
{
    const QList<Document *> documents = std::exchange(m_documents, {});
    m_byUse.clear();
    for (Document *const document : documents) {
        document->disconnect(this);
        delete document;
    }
    if (sharedController == this)
        sharedController = nullptr;
}

DocumentController *DocumentController::shared()
{
    return sharedController;
}

// --- types

void DocumentController::registerType(DocumentType type)
{
    ZR_ASSERT_PARAMETER(this, !type.name.isEmpty() && type.makeDocument);
    const auto sameName = [&](const DocumentType &other) { return other.name == type.name; };
    const auto found = std::find_if(m_types.begin(), m_types.end(), sameName);
    if (found == m_types.end())
        m_types.append(std::move(type));
    else
        *found = std::move(type);
}

const DocumentType *DocumentController::typeWithName(const QString &name) const
{
    const auto hasName = [&](const DocumentType &type) { return type.name == name; };
    const auto found = std::find_if(m_types.cbegin(), m_types.cend(), hasName);
    return found == m_types.cend() ? nullptr : &*found;
}

const DocumentType *DocumentController::typeOfPath(const QString &path) const
{
    const QString fileName = QFileInfo(path).fileName();
    const auto hasExtension = [&](const DocumentType &type) {
        return !type.fileExtension.isEmpty() && fileName.endsWith(u'.' + type.fileExtension, Qt::CaseInsensitive);
    };
    const auto found = std::find_if(m_types.cbegin(), m_types.cend(), hasExtension);
    return found == m_types.cend() ? nullptr : &*found;
}

// --- making and opening

Document *DocumentController::newDocument(const QString &typeName)
{
    const DocumentType *const type =
        typeName.isEmpty() ? (m_types.isEmpty() ? nullptr : &m_types.first()) : typeWithName(typeName);
    ZR_ASSERT_PARAMETER(this, type);
    std::unique_ptr<Document> document = make(*type);
    return document ? present(std::move(document), localizedString("A new document could not be made.")) : nullptr;
}

std::unique_ptr<Document> DocumentController::make(const DocumentType &type)
{
    std::unique_ptr<Document> document;
    callGuarded(documentLog(), QStringLiteral("making a document"), [&] { document = type.makeDocument(); });
    if (document)
        document->setFileType(type.name);
    else
        fail(localizedString("A new document could not be made."),
             localizedString("There was an error in the program."));
    return document;
}

Document *DocumentController::openDocument(const QString &path)
{
    if (const QPointer<Document> document = documentForPath(path)) {
        document->showWindows();
        if (document)
            use(document);
        if (document)
            noteRecentPath(QString(document->path()));
        return document;
    }
    const DocumentType *const type = typeOfPath(path);
    if (!type) {
        fail(couldNotBeOpened(path), localizedString("Files of this kind cannot be opened here."));
        return nullptr;
    }
    std::unique_ptr<Document> document = make(*type);
    if (!document)
        return nullptr;
    if (const auto failure = document->readFromFile(path, type->name)) {
        fail(couldNotBeOpened(path), *failure);
        return nullptr;
    }
    const QString absolutePath = document->path();
    Document *const opened = present(std::move(document), couldNotBeOpened(path));
    if (opened)
        noteRecentPath(absolutePath);
    return opened;
}

Document *DocumentController::present(std::unique_ptr<Document> document, const QString &failureMessage)
{
    const QPointer<Document> added = addDocument(std::move(document));
    const bool isPresented = callGuarded(documentLog(), QStringLiteral("showing a document"), [&] {
        if (added)
            added->makeWindowControllers();
        if (added)
            added->showWindows();
    });
    if (!isPresented) {
        if (added)
            added->closeWithoutAsking();
        fail(failureMessage, localizedString("Its window could not be made."));
        return nullptr;
    }
    return added && !added->isClosed() ? added.data() : nullptr;
}

void DocumentController::openDocuments()
{
    QStringList filters;
    for (const DocumentType &type : std::as_const(m_types))
        filters.append(type.nameFilter());
    const QPointer<DocumentController> alive = this;
    const QStringList paths = DocumentPanels::current().chooseFilesToOpen(filters);
    for (const QString &path : paths) {
        if (alive)
            openDocument(path);
    }
}

void DocumentController::fail(const QString &message, const QString &explanation)
{
    DocumentPanels::current().presentError(nullptr, message, explanation);
}

Document *DocumentController::addDocument(std::unique_ptr<Document> document)
{
    ZR_ASSERT_PARAMETER(this, document);
    document->setParent(this);
    Document *const added = document.release();
    m_documents.append(added);
    connect(added, &Document::closed, this, [this, added] {
        forget(added);
        added->deleteLater();
    });
    connect(added, &QObject::destroyed, this, [this, added] { forget(added); });
    connect(added, &Document::pathChanged, this, &DocumentController::noteRecentPath);
    const QPointer<Document> alive = added;
    Q_EMIT documentsChanged();
    if (alive)
        use(added);
    return alive;
}

void DocumentController::use(Document *document)
{
    if (currentDocument() == document || !m_documents.contains(document))
        return;
    m_byUse.removeOne(document);
    m_byUse.prepend(document);
    Q_EMIT currentDocumentChanged(document);
}

void DocumentController::forget(Document *document)
{
    if (!m_documents.removeOne(document))
        return;
    const bool wasCurrent = currentDocument() == document;
    m_byUse.removeOne(document);
    const QPointer<DocumentController> alive = this;
    Q_EMIT documentsChanged();
    if (wasCurrent && alive)
        Q_EMIT currentDocumentChanged(currentDocument());
}

// --- the open documents

Document *DocumentController::documentForPath(const QString &path) const
{
    const auto isOfFile = [&](const Document *document) { return DocumentFile::isSameFile(document->path(), path); };
    const auto found = std::find_if(m_documents.cbegin(), m_documents.cend(), isOfFile);
    return found == m_documents.cend() ? nullptr : *found;
}

Document *DocumentController::documentForWindow(const QWidget *window) const
{
    if (!window)
        return nullptr;
    for (Document *const document : m_documents) {
        for (WindowController *const controller : document->windowControllers()) {
            if (controller->isWindowLoaded() && controller->window() == window)
                return document;
        }
    }
    return nullptr;
}

bool DocumentController::hasEditedDocuments() const
{
    return std::any_of(m_documents.cbegin(), m_documents.cend(), [](const Document *d) { return d->isEdited(); });
}

bool DocumentController::saveAll()
{
    const QList<QPointer<Document>> documents(m_documents.cbegin(), m_documents.cend());
    return std::all_of(documents.cbegin(), documents.cend(), [](const QPointer<Document> &document) {
        return !document || !document->isEdited() || document->save();
    });
}

bool DocumentController::closeAll()
{
    const QPointer<DocumentController> alive = this;
    const QList<QPointer<Document>> documents(m_byUse.cbegin(), m_byUse.cend());
    for (const QPointer<Document> &document : documents) {
        if (!document || !document->isEdited())
            continue;
        document->showWindows(); // so that the person sees what is asked about
        if (document && !document->canClose())
            return false;
    }
    for (const QPointer<Document> &document : documents) {
        if (document)
            document->closeWithoutAsking();
    }
    return alive && m_documents.isEmpty();
}

// --- recent files

QStringList DocumentController::recentPaths() const
{
    return storedRecentPaths([](const QString &path) { return QFileInfo(path).isFile(); });
}

void DocumentController::noteRecentPath(const QString &path)
{
    if (path.isEmpty())
        return;
    const QString absolutePath = QFileInfo(path).absoluteFilePath();
    QStringList paths = storedRecentPaths([&](const QString &stored) { return stored != absolutePath; });
    paths.prepend(absolutePath);
    UserDefaults::standard().set(recentDocumentsKey, paths.mid(0, MaximumRecentCount));
    Q_EMIT recentPathsChanged();
}

void DocumentController::clearRecentPaths()
{
    UserDefaults::standard().remove(recentDocumentsKey);
    Q_EMIT recentPathsChanged();
}

} // namespace platform
