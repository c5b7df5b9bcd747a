#include "ZRCommon/ZRImageCache.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/PropertyList/PropertyListColumns.h"
#include "Platform/Foundation/UserDefaults.h"
#include "ZRCommon/ThumbnailPrefetch_p.h"
#include "ZRCommon/ZRImageCatalogFolder.h"
#include "ZRCommon/ZRLocalizedString.h"
#include "ZRFoundation/ZRWorkUnit.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string_view>
#include <utility>

using platform::Error;
using platform::ErrorCode;
using platform::PropertyListValue;
using platform::PropertyListView;
using platform::UserDefaults;
using platform::FileManager::FolderEntry;

namespace fs = std::filesystem;

namespace {

const QString imageDataKey = QStringLiteral("Image Data");
const QString captionKey = QStringLiteral("Caption");
const QString imagePathKey = QStringLiteral("ImagePath");
const QString thumbPathKey = QStringLiteral("ThumbPath");

/// Begins the names of files that are being written. Whoever was killed leaves one behind.
const QString unfinishedPrefix = QStringLiteral(".unfinished-");
constexpr std::chrono::minutes unfinishedFor{10};

QString joined(const QString &folder, const QString &name)
{
    return folder.endsWith(u'/') ? QString(folder + name) : QString(folder + u'/' + name);
}

QString cacheFolderOf(const QString &folderPath)
{
    return joined(folderPath, ZRCacheFolderName);
}

QString indexOf(const QString &folderPath)
{
    return joined(cacheFolderOf(folderPath), ZRCacheFilename);
}

/// A file's name, apart. A dot at its start begins no extension.
struct NameParts {
    QString stem;
    QString extension; ///< With its dot.

    explicit NameParts(const QString &name)
    {
        const qsizetype dot = name.lastIndexOf(u'.');
        stem = dot > 0 ? name.first(dot) : name;
        extension = dot > 0 ? name.sliced(dot) : QString();
    }
};

QByteArrayView lastComponent(QByteArrayView path)
{
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    return path.sliced(path.lastIndexOf('/') + 1);
}

using FileName = std::optional<QByteArrayView>;

/// The names of the entries' files as they stand in the index; nothing for what has no path.
std::vector<FileName> fileNamesOf(const PropertyListValue &imageData)
{
    static const char *const keys[] = {"ImagePath"};
    platform::PropertyListColumns columns(keys);
    std::vector<FileName> names;
    names.reserve(size_t(imageData.count()));
    for (const PropertyListView entry : imageData.elements()) {
        const auto path = columns.values(entry)[0].plainUtf8();
        names.push_back(path ? FileName(lastComponent(*path)) : std::nullopt);
    }
    return names;
}

/// How the files of a folder and the entries of its index differ.
struct Difference {
    std::vector<QByteArray> unknown; ///< Names of files without an entry.
    std::vector<bool> isKept; ///< For each entry.
};

/// A file's name as a key. Qt's own hash of bytes takes ten times as long for a few of them.
struct NameKey {
    QByteArrayView bytes;
    friend bool operator==(const NameKey &a, const NameKey &b) { return a.bytes == b.bytes; }
    friend size_t qHash(const NameKey &key, size_t seed)
    {
        return std::hash<std::string_view>()({key.bytes.data(), size_t(key.bytes.size())}) ^ seed;
    }
};

Difference differenceOf(const PropertyListValue &imageData, const std::vector<FolderEntry> &listing)
{
    // Entries mostly stand in the order of the folder, in which they were made, those that were added later behind
    // them: as far as that goes names are compared where they stand, and none is looked up.
    const std::vector<FileName> names = fileNamesOf(imageData);
    size_t inOrder = 0;
    std::vector<QByteArray> others;
    for (const FolderEntry &file : listing) {
        if (inOrder < names.size() && names[inOrder] == QByteArrayView(file.name))
            ++inOrder;
        else
            others.push_back(file.name);
    }

    QHash<NameKey, size_t> known; // by several entries of a name the last one
    known.reserve(qsizetype(names.size() - inOrder));
    for (size_t i = inOrder; i < names.size(); ++i) {
        if (names[i])
            known.insert({*names[i]}, i);
    }
    Difference difference{{}, std::vector<bool>(names.size(), true)};
    for (const QByteArray &name : others) {
        if (!known.remove({name}))
            difference.unknown.push_back(name);
    }
    if (known.isEmpty())
        return difference;
    // What is left has no file, or one that an earlier entry stands for as well.
    QSet<NameKey> present;
    present.reserve(qsizetype(listing.size()));
    for (const FolderEntry &file : listing)
        present.insert({file.name});
    for (size_t i = inOrder; i < names.size(); ++i) {
        if (!names[i] || present.contains({*names[i]}))
            continue;
        const size_t last = known.value({*names[i]});
        difference.isKept[i] = last != i && !(imageData.at(qsizetype(last)) == imageData.at(qsizetype(i)));
    }
    return difference;
}

QSet<QByteArray> linksIn(const std::vector<FolderEntry> &listing)
{
    QSet<QByteArray> links;
    for (const FolderEntry &file : listing) {
        if (file.mayBeLink)
            links.insert(file.name);
    }
    return links;
}

/// Replaces a file whole: by another one that is written beside it. Cheaper than QSaveFile, which waits for the disk:
/// a thumbnail can be made again.
bool replaceFile(const QString &path, const QByteArray &bytes)
{
    static std::atomic<quint32> number = 0;
    const QString begin =
        joined(QFileInfo(path).path(), unfinishedPrefix) + QString::number(QCoreApplication::applicationPid()) + u'-';
    QFile file;
    do // a program of the same number may have been killed, or run on another computer
        file.setFileName(begin + QString::number(++number));
    while (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered) && file.exists());
    if (!file.isOpen())
        return false;
    const bool isWritten = file.write(bytes) == bytes.size();
    file.close();
    std::error_code error;
    if (isWritten && file.error() == QFileDevice::NoError)
        fs::rename(QFile::encodeName(file.fileName()).toStdString(), QFile::encodeName(path).toStdString(), error);
    if (!isWritten || file.error() != QFileDevice::NoError || error) {
        file.remove();
        return false;
    }
    return true;
}

/// Whether a file of the cache is one that is being written. A thumbnail that was finished tells by its name, whatever
/// that of its photo is. To the name of an index QSaveFile appends six letters by chance, large and small, unlike
/// people who keep a copy.
bool isUnfinished(const QByteArray &name)
{
    static const QByteArray thumbnail = unfinishedPrefix.toUtf8(), index = ZRCacheFilename.toUtf8() + '.';
    if (name.startsWith(thumbnail))
        return !name.contains("_thumb");
    const QByteArray appended = name.sliced(std::min(index.size(), name.size()));
    return name.startsWith(index) && appended.size() == 6 && appended != appended.toLower()
        && std::all_of(appended.begin(), appended.end(), [](char c) { return std::isalpha(uchar(c)) != 0; });
}

void removeWhatKilledOnesLeft(const QString &cacheFolder)
{
    const auto now = fs::file_time_type::clock::now();
    std::error_code error;
    const auto listing = platform::FileManager::entriesOfFolder(cacheFolder);
    for (const FolderEntry &file : listing.value_or(std::vector<FolderEntry>())) {
        const QByteArray &name = file.name;
        if (!isUnfinished(name))
            continue;
        const fs::path path(QFile::encodeName(joined(cacheFolder, QFile::decodeName(name))).toStdString());
        const auto written = fs::last_write_time(path, error);
        if (!error && now - written > unfinishedFor)
            fs::remove(path, error);
    }
}

Error notListed(const QString &folderPath)
{
    return {ErrorCode::NotReadable, QStringLiteral("the folder cannot be listed"), -1, folderPath};
}

int largerSetting()
{
    return std::max({ZRImageCache::maxScaleWidth(), ZRImageCache::maxScaleHeight(), 1});
}

} // namespace

/// What an update knows while it runs.
class ZRImageCache::Session
{
public:
    Session(ZRImageCacheUpdate *followed, std::vector<QByteArray> listing)
        : update(followed ? *followed : m_own)
        , names(std::move(listing))
        , m_outer(std::exchange(currentSession(), this))
    {
        // It may have followed another one before.
        ZRImageCacheUpdate fresh;
        fresh.cancelFlag = update.cancelFlag;
        fresh.didProgress = std::move(update.didProgress);
        update = std::move(fresh);
    }
    ~Session() { currentSession() = m_outer; }
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    void refuse(Error error)
    {
        if (update.refused.isEmpty() || update.refused.last().path != error.path)
            update.refused.append(std::move(error));
    }
    bool isCancelled()
    {
        update.wasCancelled = update.wasCancelled || (update.cancelFlag && update.cancelFlag->cancelFlag());
        return update.wasCancelled;
    }
    void progress() const
    {
        if (update.didProgress)
            update.didProgress(update);
    }

private:
    ZRImageCacheUpdate m_own;

public:
    ZRImageCacheUpdate &update;
    std::vector<QByteArray> names; // of files to be tried
    std::optional<ThumbnailPrefetch> prefetch;

private:
    Session *m_outer;
};

// An override may well call operations of the base, whichever thread it updates on.
ZRImageCache::Session *&ZRImageCache::currentSession()
{
    thread_local Session *session = nullptr;
    return session;
}

ZRImageCache::ZRImageCache()
{
    static const bool isRegistered = [] {
        UserDefaults::standard().registerDefaults({{QStringLiteral("ImageCacheMaxScaleWidth"), QStringLiteral("240")},
                                                   {QStringLiteral("ImageCacheMaxScaleHeight"), QStringLiteral("180")},
                                                   {QStringLiteral("ImageCacheScaleQuality"), QStringLiteral("0.75")}});
        return true;
    }();
    Q_UNUSED(isRegistered);
}

int ZRImageCache::maxScaleWidth()
{
    return int(
        std::clamp<qint64>(UserDefaults::standard().integer(QStringLiteral("ImageCacheMaxScaleWidth")), 0, 65'500));
}

int ZRImageCache::maxScaleHeight()
{
    return int(
        std::clamp<qint64>(UserDefaults::standard().integer(QStringLiteral("ImageCacheMaxScaleHeight")), 0, 65'500));
}

double ZRImageCache::maxScaleQuality()
{
    return UserDefaults::standard().real(QStringLiteral("ImageCacheScaleQuality"));
}

bool ZRImageCache::hasCacheForCatalogFolder(const ZRImageCatalogFolder &folder) const
{
    const QFileInfo index(indexOf(folder.folderPath()));
    return index.exists() && index.isReadable();
}

void ZRImageCache::createOrUpdateCacheForCatalogFolder(const ZRImageCatalogFolder &folder, ZRImageCacheUpdate *update)
{
    if (hasCacheForCatalogFolder(folder))
        updateCacheForCatalogFolder(folder, update);
    else
        createCacheForCatalogFolder(folder, update);
}

void ZRImageCache::createCacheForCatalogFolder(const ZRImageCatalogFolder &folder, ZRImageCacheUpdate *update)
{
    if (hasCacheForCatalogFolder(folder))
        platform::raiseFailure({Q_FUNC_INFO, "ZRImageCache", 71}, this,
                               QStringLiteral("Shouldn't call this method when cache alread exists"));
    const QString cacheFolder = cacheFolderOf(folder.folderPath());
    if (!platform::FileManager::fileExists(cacheFolder) && !platform::FileManager::createDirectory(cacheFolder)
        && !platform::FileManager::fileExists(cacheFolder)) // another program may have been quicker
        throw ZRImageCacheCouldNotCreateFolderException(
            ZRLocalizedString("Could not create the image cache folder at '%1'").arg(folder.name()));

    const auto listing = platform::FileManager::entriesOfFolder(folder.folderPath());
    Session session(update, listing ? differenceOf({}, *listing).unknown : std::vector<QByteArray>());
    if (listing)
        session.update.links = linksIn(*listing);
    else
        session.refuse(notListed(folder.folderPath()));
    QVariantMap index = blankImageDataDict();
    index.insert(imageDataKey, index.value(imageDataKey).toList() + addEntries(folder.folderPath(), session));
    platform::PropertyList::writeXmlFile(indexOf(folder.folderPath()), index);
}

void ZRImageCache::updateCacheForCatalogFolder(const ZRImageCatalogFolder &folder, ZRImageCacheUpdate *update)
{
    const PropertyListValue index = platform::PropertyList::read(indexOf(folder.folderPath())).valueOr({});
    const PropertyListValue imageData = index.value(imageDataKey);
    if (!imageData.isArray())
        platform::raiseFailure({Q_FUNC_INFO, "ZRImageCache", 121}, this,
                               QStringLiteral("image_data is expected to be mutable"));

    const auto listing = platform::FileManager::entriesOfFolder(folder.folderPath());
    if (!listing) { // which does not say that its files are gone
        Session session(update, {});
        session.update.kept += imageData.count();
        session.refuse(notListed(folder.folderPath()));
        return;
    }
    Difference difference = differenceOf(imageData, *listing);
    Session session(update, std::move(difference.unknown));
    session.update.links = linksIn(*listing);
    const auto kept = std::count(difference.isKept.begin(), difference.isKept.end(), true);
    session.update.kept += kept;
    session.update.dropped += imageData.count() - kept;
    const QVariantList added = addEntries(folder.folderPath(), session);
    if (added.isEmpty() && session.update.dropped == 0)
        return;
    QVariantList entries;
    size_t place = 0;
    for (const PropertyListView entry : imageData.elements()) {
        if (difference.isKept[place++])
            entries.append(entry.toVariant());
    }
    QVariantMap changed = index.toVariant().toMap();
    changed.insert(imageDataKey, entries + added);
    platform::PropertyList::writeXmlFile(indexOf(folder.folderPath()), changed);
}

// Makes the entries of the session's names.
QVariantList ZRImageCache::addEntries(const QString &folderPath, Session &session)
{
    QStringList names, paths;
    for (const QByteArray &bytes : session.names) {
        const QString name = QString::fromUtf8(bytes);
        if (name.toUtf8() != bytes) // several such names may look the same
            session.update.refused.append({ErrorCode::UnsupportedEncoding, QStringLiteral("its name is not UTF-8"), -1,
                                           joined(folderPath, name)});
        else if (shouldSkipFilename(name))
            continue;
        else if (const QString path = joined(folderPath, name); !platform::PropertyList::writeXml(path)) {
            // One such path would keep the whole index from being written.
            session.refuse({ErrorCode::UnsupportedEncoding,
                            QStringLiteral("its path has a character that the index cannot hold"), -1, path});
        } else {
            names.append(name);
            paths.append(path);
        }
    }
    session.update.total = names.size();
    session.progress();
    if (names.isEmpty())
        return {};
    removeWhatKilledOnesLeft(cacheFolderOf(folderPath));
    session.prefetch.emplace(paths, largerSetting());

    for (qsizetype i = 0; i < names.size() && !session.isCancelled(); ++i) {
        if (auto entry = createThumbEntryForImageFilename(names[i], folderPath)) {
            session.update.entries.append(*std::move(entry));
            ++session.update.made;
        }
        session.prefetch->passOver(paths[i]);
        ++session.update.done;
        session.progress();
    }
    session.prefetch.reset();
    return session.update.entries;
}

PropertyListValue ZRImageCache::photoInformationForCatalogFolder(const ZRImageCatalogFolder &folder) const
{
    const PropertyListValue index = platform::PropertyList::read(indexOf(folder.folderPath())).valueOr({});
    const PropertyListValue imageData = index.value(imageDataKey);
    return imageData.isArray() ? imageData : PropertyListValue();
}

QVariantMap ZRImageCache::blankImageDataDict() const
{
    return {{QStringLiteral("Version"), 1.0}, {imageDataKey, QVariantList()}};
}

bool ZRImageCache::shouldSkipFilename(const QString &name) const
{
    return name == QLatin1String(".DS_Store") || name == ZRCacheFolderName;
}

std::optional<QVariantMap> ZRImageCache::createThumbEntryForImageFilename(const QString &name,
                                                                          const QString &folderPath)
{
    if (shouldSkipFilename(name))
        return std::nullopt;
    const NameParts parts(name);
    const QString imagePath = joined(folderPath, name);
    const QString thumbPath =
        joined(cacheFolderOf(folderPath), QStringLiteral("%1_thumb").arg(parts.stem) + parts.extension);
    if (!scaleAndSaveAsJPEG(imagePath, thumbPath))
        return std::nullopt;
    return QVariantMap{{captionKey, parts.stem}, {imagePathKey, imagePath}, {thumbPathKey, thumbPath}};
}

bool ZRImageCache::scaleAndSaveAsJPEG(const QString &imagePath, const QString &thumbPath)
{
    Session *const session = currentSession();
    const int size = largerSetting();
    std::optional<platform::Result<QByteArray>> thumbnail;
    if (session && session->prefetch)
        thumbnail = session->prefetch->take(imagePath, size);
    if (!thumbnail)
        thumbnail.emplace(platform::thumbnailOfFile(imagePath, size));
    std::optional<Error> error;
    if (!*thumbnail)
        error = thumbnail->error();
    else if (!replaceFile(thumbPath, thumbnail->value()))
        error = Error{ErrorCode::NotWritable, QStringLiteral("its thumbnail cannot be written"), -1, imagePath};
    if (error && session)
        session->refuse(*std::move(error));
    return !error;
}
