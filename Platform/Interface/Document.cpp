#include "Platform/Interface/Document.h"

#include "Platform/Foundation/EventBoundary.h"
#include "Platform/Foundation/LocalizedString.h"
#include "Platform/Interface/DocumentController.h"
#include "Platform/Interface/DocumentFile_p.h"
#include "Platform/Interface/DocumentPanels.h"
#include "Platform/Interface/WindowController.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>
#include <QScopeGuard>
#include <QSet>

#include <algorithm>
#include <utility>

namespace platform {

namespace {

Q_LOGGING_CATEGORY(documents, "platform.document")

} // namespace

/// The number of a document that was never saved, for as long as it has one.
class Document::UntitledNumber
{
public:
    UntitledNumber()
    {
        while (taken().contains(m_number))
            ++m_number;
        taken().insert(m_number);
    }
    UntitledNumber(const UntitledNumber &) = delete;
    UntitledNumber &operator=(const UntitledNumber &) = delete;
    ~UntitledNumber() { taken().remove(m_number); }

    operator int() const { return m_number; }

private:
    static QSet<int> &taken()
    {
        static QSet<int> numbers;
        return numbers;
    }

    int m_number = 1;
};

Document::Document(QObject *parent)
    : QObject(parent)
{
    connect(&m_undoManager.stack(), &QUndoStack::cleanChanged, this, &Document::updateEdited);
}

Document::~Document()
{
    // An undo stack tells of its end; the document is half gone by then.
    m_undoManager.stack().disconnect(this);
    while (!m_windowControllers.isEmpty()) {
        WindowController *const controller = m_windowControllers.takeLast();
        controller->setDocument(nullptr);
        delete controller;
    }
}

QString Document::displayName() const
{
    if (!m_path.isEmpty())
        return QFileInfo(m_path).fileName();
    if (!m_untitledNumber)
        m_untitledNumber = std::make_unique<UntitledNumber>();
    const int number = *m_untitledNumber;
    return number == 1 ? localizedString("Untitled") : localizedString("Untitled %1").arg(number);
}

void Document::setPath(const QString &path)
{
    if (path == m_path)
        return;
    m_path = path;
    m_untitledNumber.reset();
    const QPointer<Document> alive = this;
    Q_EMIT displayNameChanged();
    if (alive)
        Q_EMIT pathChanged(path);
}

void Document::setEdited(bool isEdited)
{
    m_isEditedOtherwise = isEdited;
    const QPointer<Document> alive = this;
    if (!isEdited)
        m_undoManager.setClean();
    if (alive)
        updateEdited();
}

void Document::updateEdited()
{
    const bool isEdited = m_isEditedOtherwise || !m_undoManager.isClean();
    if (std::exchange(m_isEdited, isEdited) != isEdited)
        Q_EMIT editedChanged(isEdited);
}

// --- windows

void Document::addWindowController(std::unique_ptr<WindowController> controller)
{
    ZR_ASSERT_PARAMETER(this, controller);
    controller->setParent(this); // which owns it from here on
    m_windowControllers.append(controller.get());
    controller.release()->setDocument(this);
}

void Document::removeWindowController(WindowController *controller)
{
    if (!m_windowControllers.removeOne(controller))
        return;
    controller->setDocument(nullptr);
    controller->deleteLater();
}

void Document::showWindows()
{
    QList<QPointer<WindowController>> controllers(m_windowControllers.cbegin(), m_windowControllers.cend());
    std::reverse(controllers.begin(), controllers.end());
    for (const QPointer<WindowController> &controller : std::as_const(controllers)) {
        if (controller)
            controller->showWindow();
    }
}

bool Document::isLastWindow(const WindowController &controller) const
{
    return std::all_of(m_windowControllers.cbegin(), m_windowControllers.cend(), [&](const WindowController *other) {
        return other == &controller || !other->isWindowVisible();
    });
}

bool Document::windowShouldClose(const WindowController &controller)
{
    return m_isClosed || !isLastWindow(controller) || canClose();
}

void Document::windowDidClose(WindowController &controller)
{
    if (m_isClosed)
        return;
    if (isLastWindow(controller))
        closeWithoutAsking();
    else
        removeWindowController(&controller);
}

bool Document::canClose()
{
    if (!m_isEdited)
        return true;
    if (m_isAsking)
        return false;
    const QPointer<Document> alive = this;
    m_isAsking = true;
    const auto hasAnswered = qScopeGuard([&] {
        if (alive)
            m_isAsking = false;
    });
    const auto answer = DocumentPanels::current().askWhetherToSave(*this);
    if (!alive)
        return false;
    return answer == DocumentPanels::SaveAnswer::Discard || (answer == DocumentPanels::SaveAnswer::Save && save());
}

bool Document::close()
{
    const QPointer<Document> alive = this;
    if (!canClose())
        return false;
    if (alive)
        closeWithoutAsking();
    return true;
}

void Document::closeWithoutAsking()
{
    if (std::exchange(m_isClosed, true))
        return;
    const QPointer<Document> alive = this;
    const QList<QPointer<WindowController>> controllers(m_windowControllers.cbegin(), m_windowControllers.cend());
    for (const QPointer<WindowController> &controller : controllers) {
        if (controller)
            controller->closeWithDocument();
        if (!alive)
            return;
        removeWindowController(controller);
    }
    m_untitledNumber.reset();
    Q_EMIT closed();
}

// --- files

QString Document::choosePath()
{
    const auto *const controller = DocumentController::shared();
    const DocumentType *const type = controller ? controller->typeWithName(m_fileType) : nullptr;
    const QString extension = type ? type->fileExtension : QString();
    QString suggestion = m_path;
    if (suggestion.isEmpty())
        suggestion = extension.isEmpty() ? displayName() : displayName() + u'.' + extension;
    const QPointer<Document> alive = this;
    const QString chosen =
        DocumentPanels::current().chooseFileToSave(*this, suggestion, type ? type->nameFilter() : QString(), extension);
    if (!alive || chosen.isEmpty())
        return {};
    const QString path = QFileInfo(chosen).absoluteFilePath();
    const Document *const other = controller ? controller->documentForPath(path) : nullptr;
    if (other && other != this) {
        presentSaveFailure(localizedString("The file “%1” is open at the moment.").arg(QFileInfo(path).fileName()));
        return {};
    }
    return path;
}

void Document::presentSaveFailure(const QString &explanation)
{
    DocumentPanels::current().presentError(
        this, localizedString("The document “%1” could not be saved.").arg(displayName()), explanation);
}

bool Document::confirmOverwriting()
{
    const DocumentFile::State now = DocumentFile::stateOfFile(m_path);
    if (!m_fileState || now == *m_fileState)
        return true;
    const QString button = localizedString("Save Anyway");
    if (now.exists)
        return DocumentPanels::current().confirm(
            *this, localizedString("The file “%1” was changed by another program.").arg(displayName()),
            localizedString("If you save, those changes will be lost."), button);
    return DocumentPanels::current().confirm(
        *this, localizedString("The file “%1” is not where it was.").arg(displayName()),
        localizedString("It was moved, renamed or deleted. If you save, it will be written to its old place again."),
        button);
}

bool Document::save()
{
    if (m_path.isEmpty())
        return saveAs();
    const QPointer<Document> alive = this;
    return confirmOverwriting() && alive && saveToFile(QString(m_path)); // which may go with the document
}

bool Document::saveAs()
{
    const QString path = choosePath();
    return !path.isEmpty() && saveToFile(path);
}

bool Document::saveTo()
{
    const QString path = choosePath();
    if (path.isEmpty())
        return false;
    if (DocumentFile::isSameFile(path, m_path))
        return saveToFile(QString(m_path)); // which may go with the document
    const QPointer<Document> alive = this;
    const auto failure = writeToFile(path, QString(m_fileType));
    if (failure && alive)
        presentSaveFailure(*failure);
    return !failure;
}

bool Document::saveToFile(const QString &path)
{
    const QPointer<Document> alive = this;
    const auto failure = writeToFile(path, QString(m_fileType));
    if (!alive)
        return !failure;
    if (failure) {
        presentSaveFailure(*failure);
        return false;
    }
    rememberFile(path, DocumentFile::stateOfFile(path));
    return true;
}

bool Document::revert()
{
    if (m_path.isEmpty())
        return false;
    const QPointer<Document> alive = this;
    if (m_isEdited
        && !DocumentPanels::current().confirm(
            *this, localizedString("Do you want to go back to the last saved version of “%1”?").arg(displayName()),
            localizedString("The changes that you made since will be lost."), localizedString("Revert")))
        return false;
    if (!alive)
        return false;
    const auto failure = readFromFile(QString(m_path), QString(m_fileType)); // which may go with the document
    if (failure && alive)
        DocumentPanels::current().presentError(
            this, localizedString("The document “%1” could not be read again.").arg(displayName()), *failure);
    return !failure;
}

/// What all successful reading and writing ends with: the document is what its file holds.
void Document::rememberFile(const QString &path, const DocumentFile::State &state)
{
    m_fileState = std::make_unique<DocumentFile::State>(state);
    const QPointer<Document> alive = this;
    setEdited(false);
    if (alive)
        setPath(path);
}

template <class Hook>
std::optional<QString> Document::callHook(const QString &name, const QString &generalSentence, Hook hook)
{
    m_failureReason.clear();
    bool isDone = false;
    const QPointer<Document> alive = this;
    callGuarded(documents(), name, [&] { isDone = hook(); });
    if (isDone)
        return std::nullopt;
    return alive && !m_failureReason.isEmpty() ? m_failureReason : generalSentence;
}

std::optional<QString> Document::readFromFile(const QString &path, const QString &type)
{
    const QString absolutePath = QFileInfo(path).absoluteFilePath();
    // Before it is read: what is written meanwhile is then seen as a change.
    const DocumentFile::State state = DocumentFile::stateOfFile(absolutePath);
    const DocumentFile::Content content = DocumentFile::read(absolutePath);
    if (content.failure)
        return content.failure;
    const QPointer<Document> alive = this;
    const auto failure = callHook(
        QStringLiteral("loading a document"),
        localizedString("The file is damaged, or was made by another program or by a newer version of this one."),
        [&] { return loadDataRepresentation(content.bytes, type); });
    if (failure || !alive)
        return failure;
    m_fileType = type;
    m_undoManager.removeAllActions();
    if (alive)
        rememberFile(absolutePath, state);
    return std::nullopt;
}

std::optional<QString> Document::writeToFile(const QString &path, const QString &type)
{
    std::optional<QByteArray> bytes;
    const auto failure = callHook(QStringLiteral("saving a document"),
                                  localizedString("Its content cannot be written in the form of this file."), [&] {
                                      bytes = dataRepresentationOfType(type);
                                      return bytes.has_value();
                                  });
    return failure ? failure : DocumentFile::replace(QFileInfo(path).absoluteFilePath(), *bytes);
}

std::optional<QByteArray> Document::dataRepresentationOfType(const QString &)
{
    return std::nullopt;
}

bool Document::loadDataRepresentation(const QByteArray &, const QString &)
{
    return false;
}

} // namespace platform
