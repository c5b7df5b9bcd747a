#include "ZRCommon/ZRDocument.h"

#include "Platform/Foundation/EventBoundary.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Interface/WindowController.h"

#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(documents, "zrcommon.document")

} // namespace

ZRDocument::ZRDocument(const QString &documentType, int32_t currentVersion, int32_t earliestReadVersion,
                       int32_t earliestWriteVersion, QObject *parent)
    : platform::Document(parent)
    , m_document_type(documentType)
    , m_current_version(currentVersion)
    , m_earliest_read_version(earliestReadVersion)
    , m_earliest_write_version(earliestWriteVersion)
{
    setFileType(documentType);
}

ZRDocument::~ZRDocument() = default;

void ZRDocument::beginChanges()
{
    if (m_change_level == 0)
        m_change_flagged = false;
    ++m_change_level;
}

void ZRDocument::endChanges()
{
    --m_change_level;
    if (m_change_level == 0 && m_change_flagged)
        sendDocumentChanged();
}

void ZRDocument::documentDidChange()
{
    documentChanged();
}

void ZRDocument::documentChanged()
{
    m_change_flagged = true;
}

void ZRDocument::addObserver(ZRDocumentObserver *observer)
{
    m_observer_list.addObserver(observer);
}

void ZRDocument::removeObserver(ZRDocumentObserver *observer)
{
    m_observer_list.removeObserver(observer);
}

void ZRDocument::sendDocumentChanged()
{
    const QPointer<ZRDocument> alive = this;
    const auto &controllers = windowControllers();
    const QList<QPointer<platform::WindowController>> told(controllers.cbegin(), controllers.cend());
    for (const QPointer<platform::WindowController> &controller : told) {
        if (controller && controller->document() == this) // not removed meanwhile
            controller->documentChanged();
        if (!alive)
            return;
    }
    platform::NotificationCenter::defaultCenter().postNotification(ZRDocumentDidChangeNotification, this);
    if (alive)
        m_observer_list.makeObjectsPerformSelector(&ZRDocumentObserver::documentDidChange, *this);
}

std::optional<QByteArray> ZRDocument::dataRepresentationOfType(const QString &type)
{
    if (type != m_document_type)
        return std::nullopt;
    const QPointer<ZRDocument> alive = this;
    undoManager().removeAllActions();
    if (!alive)
        return std::nullopt;
    platform::KeyedArchiver archiver;
    archiver.setOutputFormat(platform::KeyedArchiver::XmlFormat);
    archiver.encodeInt32(m_current_version, "current-version");
    archiver.encodeInt32(m_earliest_read_version, "read-version");
    archiver.encodeInt32(m_earliest_write_version, "write-version");
    encodeWithKeyedArchiver(archiver);
    auto archive = archiver.finishEncoding();
    if (archive)
        return std::move(archive).value();
    qCWarning(documents).noquote() << "archiving a document:" << archive.error().toString();
    return std::nullopt;
}

bool ZRDocument::loadDataRepresentation(const QByteArray &data, const QString &ofType)
{
    if (ofType != m_document_type)
        return false;
    {
        platform::KeyedUnarchiver unarchiver(data);
        decodeFromKeyedUnarchiver(unarchiver);
        unarchiver.finishDecoding();
    }
    const QPointer<ZRDocument> alive = this;
    undoManager().removeAllActions();
    if (!alive)
        return true;
    // What the person sees now is the file, whatever becomes of the announcement.
    platform::callGuarded(documents(), QStringLiteral("announcing a document that was read"),
                          [this] { sendDocumentChanged(); });
    return true;
}

void ZRDocument::encodeWithKeyedArchiver(platform::KeyedArchiver &) { }

void ZRDocument::decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &) { }
