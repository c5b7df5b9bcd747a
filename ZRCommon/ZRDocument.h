#pragma once

#include "Platform/Interface/Document.h"
#include "ZRCommon/ZRDocumentObserver.h"
#include "ZRFoundation/ZRObserverList.h"

#include <QPointer>
#include <QString>

#include <cstdint>

namespace platform {
class KeyedArchiver;
class KeyedUnarchiver;
} // namespace platform

/// Posted to the default notification centre with the document as the object.
inline const QString ZRDocumentDidChangeNotification = QStringLiteral("ZRDocumentDidChangeNotification");

/// A document whose file is a keyed archive, and that announces many changes as one.
///
/// **Content.** A subclass overrides `encodeWithKeyedArchiver` and `decodeFromKeyedUnarchiver`, with keys of its own.
/// The archive holds the three versions under "current-version", "read-version" and "write-version" beside them. They
/// are written only: a file of any version is loaded, and what to do about versions is up to the subclass, which may
/// read them in `decodeFromKeyedUnarchiver`.
///
/// **Change batches.** Whoever changes the document does so in `performChanges`, or between `beginChanges` and
/// `endChanges`, and says `documentDidChange`. When the outermost batch ends and something changed, the document tells,
/// at once and in this order:
/// 1. every window controller, in their order: `documentChanged`;
/// 2. the default notification centre: `ZRDocumentDidChangeNotification`;
/// 3. every observer, in the order in which they were added: `documentDidChange`.
///
/// The flag of a change is cleared only when a batch begins at level 0. A change that is reported outside every batch
/// is therefore announced by nobody and forgotten by the next batch. An `endChanges` too many takes the level below 0,
/// and nothing is announced until one brings it to exactly 0.
///
/// To undo and redo, a host calls the undo manager in a batch as well, `performChanges([&] { undoManager().undo(); })`:
/// otherwise each registered call announces by itself.
///
/// Whoever is told may begin batches of its own, which are announced in full before the outer announcement goes on, may
/// add and remove window controllers (those that are removed are not told any more, those that are added are told of
/// the next change) and observers (see ZRObserverList), and may destroy the document: nobody else is told then. What a
/// window controller or observer throws ends the announcement and leaves `endChanges`.
///
/// Main thread.
class ZRDocument : public platform::Document
{
    Q_OBJECT

public:
    /// @param documentType the one type that this document reads and writes, compared exactly
    /// @param currentVersion the version of the format that is written
    /// @param earliestReadVersion the oldest version that can read what is written
    /// @param earliestWriteVersion the oldest version that may write over what is written
    ZRDocument(const QString &documentType, int32_t currentVersion, int32_t earliestReadVersion,
               int32_t earliestWriteVersion, QObject *parent = nullptr);
    ~ZRDocument() override;

    void beginChanges();
    void endChanges();
    /// Runs a body inside of a batch, which is closed on every path, and so needs no object whose destructor closes it:
    /// there an observer that throws would end the program. What the body throws goes on afterwards; where the
    /// announcement throws as well, what that has thrown. The body may destroy the document: nobody is told then.
    ///
    ///     story.performChanges([&] {
    ///         story.setTitle(title);
    ///         story.documentDidChange();
    ///     });
    template <class Body>
    void performChanges(Body body)
    {
        const QPointer<ZRDocument> alive = this;
        beginChanges();
        try {
            body();
        } catch (...) {
            if (alive)
                endChanges();
            throw;
        }
        if (alive)
            endChanges();
    }
    /// Says that the content changed, for the announcement at the end of the batch. It does not make the document
    /// edited: a call that is registered with the undo manager does, and so does `setEdited(true)`.
    void documentDidChange();

    /// Observers are not owned; one that dies is removed before. See ZRObserverList, also for adding one twice.
    void addObserver(ZRDocumentObserver *observer);
    void removeObserver(ZRDocumentObserver *observer);

    /// The archive, an XML property list. **Removes all actions of the undo manager** first: what was done up to then
    /// cannot be undone any more. This holds for every call, also for a copy and for a save that fails; a document that
    /// was edited then stays so until it is saved or reverted. A host that wants to keep undo across saves derives from
    /// `platform::Document` and writes its archive with `KeyedArchiver`.
    /// @return nothing when the type is another one, in which case no action is removed; when the archive cannot be
    /// written, which is logged in "zrcommon.document"; and when somebody who is told of the removal destroys the
    /// document
    std::optional<QByteArray> dataRepresentationOfType(const QString &type) override;
    /// Has the subclass decode the archive, removes all actions of the undo manager, and announces a change, whatever
    /// the level. What cannot be read as an archive raises what the unarchiver raises, before any of that. What a
    /// window controller or observer throws ends the announcement and is logged in "zrcommon.document": the document is
    /// what its file holds all the same.
    /// @return false when the type is another one
    bool loadDataRepresentation(const QByteArray &data, const QString &ofType) override;

    /// Writes the content into the archive. Nothing here.
    virtual void encodeWithKeyedArchiver(platform::KeyedArchiver &archiver);
    /// Reads the content from an archive. Nothing here.
    virtual void decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver);

private:
    void documentChanged();
    void sendDocumentChanged();

    QString m_document_type;
    int32_t m_current_version;
    int32_t m_earliest_read_version;
    int32_t m_earliest_write_version;
    int32_t m_change_level = 0;
    bool m_change_flagged = false;
    ZRObserverList<ZRDocumentObserver> m_observer_list;
};
