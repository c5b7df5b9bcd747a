#include "PhotoFolderLoader.h"

#include "ZRCommon/ZRImageCatalog.h"
#include "ZRCommon/ZRLocalizedString.h"
#include "ZRFoundation/ZRProcessServer.h"

#include <QCollator>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QPointer>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <utility>
#include <vector>

class PhotoFolderLoader::Unit : public ZRWorkUnit
{
public:
    Unit(PhotoFolderLoader *owner, const QString &path, ZRImageCatalog &catalog)
        : folderPath(path)
        , m_owner(owner)
        , m_catalog(catalog)
    { }

    void processWithServer(ZRProcessServer &server) override
    {
        try {
            list(server);
        } catch (const std::exception &exception) {
            failure = QString::fromUtf8(exception.what());
        }
        server.performSelectorOnObject(m_owner, &PhotoFolderLoader::unitDidEnd, this);
    }

    const QString folderPath;
    // Written by the worker before the delivery that tells of it.
    ZRImageCatalogFolder::ThumbnailList photos;
    qsizetype made = 0;
    qsizetype refused = 0;
    QString failure;
    // Read while the worker goes on.
    std::atomic<qsizetype> done = 0;
    std::atomic<qsizetype> total = 0;
    ZRImageCatalogFolder::ThumbnailList takeFound()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_found, {});
    }

private:
    void find(const QVariantList &entries)
    {
        const std::lock_guard lock(m_mutex);
        for (const QVariant &each : entries) {
            const QVariantMap entry = each.toMap();
            m_found.append(std::make_shared<ZRImageThumbnail>(
                entry[QStringLiteral("ThumbPath")].toString(), entry[QStringLiteral("ImagePath")].toString(),
                entry[QStringLiteral("Caption")].toString(), QDateTime()));
        }
    }
    void list(ZRProcessServer &server)
    {
        if (!QFileInfo(folderPath).isDir()) {
            failure = ZRLocalizedString("There is no such folder.");
            return;
        }
        constexpr int pause = 50; // milliseconds between two messages
        QElapsedTimer sinceMessage;
        const ZRImageCatalogFolder folder(folderPath, &m_catalog);
        qsizetype told = 0;
        ZRImageCacheUpdate update;
        update.cancelFlag = this;
        update.didProgress = [&](const ZRImageCacheUpdate &state) {
            done = state.done;
            total = state.total;
            if (state.total == 0 || (sinceMessage.isValid() && !sinceMessage.hasExpired(pause)))
                return;
            if (!sinceMessage.isValid() && state.kept > 0)
                find(m_catalog.imageCache().photoInformationForCatalogFolder(folder).toVariant().toList());
            find(state.entries.mid(std::exchange(told, state.entries.size())));
            sinceMessage.start();
            server.performSelectorOnObject(m_owner, &PhotoFolderLoader::unitDidProgress, this);
        };
        photos = folder.imageThumbnailsThatMatchSearchString(QString(), update);
        made = update.made;
        refused = std::count_if(update.refused.cbegin(), update.refused.cend(), isCalledPhoto);
        sortByTitle();
    }
    /// Whether a file that is none is worth a word.
    static bool isCalledPhoto(const platform::Error &error)
    {
        const QMimeType type = QMimeDatabase().mimeTypeForFile(error.path, QMimeDatabase::MatchExtension);
        return type.name().startsWith(QLatin1String("image/"));
    }
    /// As people count: "IMG_9" before "IMG_10". The order of a folder's cache is that of the file system.
    void sortByTitle()
    {
        // The locale of programs has no order of its own.
        const QLocale locale;
        QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
        collator.setNumericMode(true);
        collator.setCaseSensitivity(Qt::CaseInsensitive);
        std::vector<std::pair<QCollatorSortKey, std::shared_ptr<ZRImageThumbnail>>> keyed;
        keyed.reserve(size_t(photos.size()));
        for (auto &photo : photos)
            keyed.emplace_back(collator.sortKey(photo->title()), std::move(photo));
        std::stable_sort(keyed.begin(), keyed.end(),
                         [](const auto &a, const auto &b) { return a.first.compare(b.first) < 0; });
        for (qsizetype i = 0; i < photos.size(); ++i)
            photos[i] = std::move(keyed[size_t(i)].second);
    }

    QPointer<PhotoFolderLoader> m_owner;
    ZRImageCatalog &m_catalog;
    std::mutex m_mutex;
    ZRImageCatalogFolder::ThumbnailList m_found;
};

PhotoFolderLoader::~PhotoFolderLoader()
{
    cancel();
}

QString PhotoFolderLoader::folderPath() const
{
    return m_unit ? m_unit->folderPath : QString();
}

void PhotoFolderLoader::load(const QString &folderPath)
{
    cancel();
    m_unit = std::make_shared<Unit>(this, folderPath, ZRImageCatalog::sharedImageCatalog());
    ZRProcessServer &server = ZRProcessServer::processServerWithName(QStringLiteral("thumbnail_loader"), 1);
    if (server.addWorkUnit(m_unit))
        return;
    m_unit.reset();
    Q_EMIT didFail(folderPath, ZRLocalizedString("Nothing can be loaded in the background."));
}

void PhotoFolderLoader::cancel()
{
    if (m_unit)
        m_unit->setCancelFlag(true);
}

void PhotoFolderLoader::unitDidProgress(const Unit *unit)
{
    if (unit != m_unit.get() || unit->cancelFlag())
        return;
    const std::shared_ptr<Unit> running = m_unit; // which whoever is told may overtake
    Q_EMIT didProgress(running->done, running->total);
    const auto photos = running->takeFound();
    if (!photos.isEmpty() && running == m_unit)
        Q_EMIT didFind(running->folderPath, photos);
}

void PhotoFolderLoader::unitDidEnd(const Unit *unit)
{
    if (unit != m_unit.get())
        return; // overtaken by another
    const std::shared_ptr<Unit> ended = std::exchange(m_unit, nullptr);
    if (ended->cancelFlag())
        Q_EMIT didCancel(ended->folderPath, ended->made);
    else if (!ended->failure.isEmpty())
        Q_EMIT didFail(ended->folderPath, ended->failure);
    else
        Q_EMIT didLoad(ended->folderPath, ended->photos, ended->refused);
}
