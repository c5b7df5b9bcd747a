#include "Commands.h"
#include "ContactSheet.h"
#include "Interruption.h"
#include "JsonWriter.h"
#include "Messages.h"
#include "Output.h"
#include "Progress.h"
#include "StandardDescriptors.h"
#include "Support.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Media/Image.h"
#include "ZRCommon/ZRImageCatalog.h"
#include "ZRCommon/ZRLocalizedString.h"
#include "ZRFoundation/ZRProcessObserver.h"
#include "ZRFoundation/ZRProcessServer.h"

#include <QBuffer>
#include <QCollator>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QImageWriter>
#include <QLocale>
#include <QPainter>
#include <QSaveFile>

#include <algorithm>
#include <memory>

namespace {

using ThumbnailList = ZRImageCatalogFolder::ThumbnailList;

/// Lists a folder's photos on a worker, as a host with windows does, after its cache is brought up to date.
class FolderListingUnit : public ZRWorkUnit
{
public:
    explicit FolderListingUnit(const Arguments &arguments)
        : m_arguments(arguments)
        , m_folder(QDir::cleanPath(QDir(arguments.file).absolutePath()), &ZRImageCatalog::sharedImageCatalog())
    {
        // The shared catalog and the settings of its cache belong to the main thread until they are made.
        m_update.cancelFlag = this;
    }

    void processWithServer(ZRProcessServer &) override
    {
        m_failure = withoutExceptions(m_arguments, [this]() -> Failure {
            try {
                list();
            } catch (const platform::InternalInconsistency &) {
                // All that a cache with a damaged index says; it is never thrown away without being asked.
                return m_arguments.file + QStringLiteral(": ")
                    + ZRLocalizedString("the index of its thumbnails is damaged; delete the folder \"%1\" in it")
                          .arg(ZRCacheFolderName);
            }
            return {};
        });
    }

    // To be asked once it is processed.
    const Failure &failure() const { return m_failure; }
    const ThumbnailList &photos() const { return m_photos; }
    const ZRImageCacheUpdate &update() const { return m_update; }
    const Timings &timings() const { return m_timings; }
    const ZRImageCatalogFolder &folder() const { return m_folder; }

private:
    void list()
    {
        std::optional<Progress> progress;
        QElapsedTimer clock;
        clock.start();
        double updated = 0;
        m_update.didProgress = [&](const ZRImageCacheUpdate &update) {
            if (!progress)
                progress.emplace(ZRLocalizedString("Making thumbnails"), ZRLocalizedString("photos"), update.total);
            progress->setDone(update.done);
            updated = double(clock.nsecsElapsed()) / 1e9;
        };
        m_photos = m_folder.imageThumbnailsThatMatchSearchString(m_arguments.search, m_update);
        m_timings.reading = updated;
        auto &rest = m_arguments.search.isEmpty() ? m_timings.listing : m_timings.searching;
        rest = double(clock.nsecsElapsed()) / 1e9 - updated;
    }

    const Arguments &m_arguments;
    const ZRImageCatalogFolder m_folder;
    ZRImageCacheUpdate m_update;
    ThumbnailList m_photos;
    Timings m_timings;
    Failure m_failure;
};

/// Ends an event loop when the units of a server have ended.
class EndOfUnit : public ZRProcessObserver
{
public:
    explicit EndOfUnit(QEventLoop &loop)
        : m_loop(loop)
    { }
    void processServerDidEndWorkUnit(ZRProcessServer &, ZRWorkUnit &) override { m_loop.quit(); }

private:
    QEventLoop &m_loop;
};

Failure unusableFolder(const QString &path)
{
    const QFileInfo folder(path);
    QString reason;
    if (!folder.exists())
        reason = ZRLocalizedString("there is no such folder");
    else if (!folder.isDir())
        reason = ZRLocalizedString("it is not a folder");
    else if (!folder.isReadable() || !folder.isExecutable())
        reason = ZRLocalizedString("the folder cannot be opened for reading");
    else
        return {};
    return path + QStringLiteral(": ") + reason;
}

void sayWhatWasDone(const Arguments &arguments, const ZRImageCacheUpdate &update)
{
    if (arguments.isVerbose) {
        for (const platform::Error &error : update.refused)
            say(described(error));
    }
    say(ZRLocalizedString("thumbnails: %1 made, %2 kept, %3 dropped, %4 refused")
            .arg(update.made)
            .arg(update.kept)
            .arg(update.dropped)
            .arg(update.refused.size()));
}

/// The photos of the folder, once its cache is up to date; tells what was done for it.
std::shared_ptr<FolderListingUnit> listed(const Arguments &arguments, Timings &timings, Failure &failure)
{
    failure = unusableFolder(arguments.file);
    if (failure)
        return nullptr;
    const auto unit = std::make_shared<FolderListingUnit>(arguments);
    Interruption::cancels(unit);
    QEventLoop loop;
    const auto observer = std::make_shared<EndOfUnit>(loop);
    ZRProcessServer &server = ZRProcessServer::processServerWithName(QStringLiteral("thumbnail_loader"), 1);
    server.addProcessObserver(observer);
    {
        const QuietStandardError quiet;
        if (server.addWorkUnit(unit))
            loop.exec();
    }
    timings = unit->timings();
    failure = unit->failure();
    if (failure)
        return unit;
    sayWhatWasDone(arguments, unit->update());
    if (Interruption::hasHappened())
        failure = ZRLocalizedString("interrupted; the thumbnails made so far are kept");
    else if (!ZRImageCatalog::sharedImageCatalog().imageCache().hasCacheForCatalogFolder(unit->folder()))
        failure =
            arguments.file + QStringLiteral(": ") + ZRLocalizedString("the index of its thumbnails cannot be written");
    return unit;
}

QImage pictureOf(ZRImageThumbnail &photo)
{
    const std::shared_ptr<platform::Image> image = photo.imageToDisplay();
    photo.unloadImage();
    return image && !image->representations().empty() ? image->representations().front().bitmap : QImage();
}

/// By title, as a person would file them.
void sortByTitle(ThumbnailList &photos)
{
    // Without a language, texts would be compared as computers do.
    const QLocale locale;
    QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    collator.setNumericMode(true);
    std::stable_sort(photos.begin(), photos.end(),
                     [&](const auto &a, const auto &b) { return collator.compare(a->title(), b->title()) < 0; });
}

/// The sheet; a null image when the memory does not suffice, and when it was cancelled.
QImage drawn(const ContactSheet &sheet, const ThumbnailList &photos, const QString &folderName, Progress &progress)
{
    QImage image = sheet.blank(folderName,
                               photos.size() == 1 ? ZRLocalizedString("1 photo")
                                                  : ZRLocalizedString("%1 photos").arg(photos.size()));
    if (image.isNull())
        return image;
    QPainter painter(&image);
    for (qsizetype i = 0; i < photos.size(); ++i) {
        if (Interruption::hasHappened())
            return {};
        sheet.draw(painter, i, pictureOf(*photos[i]), photos[i]->title());
        progress.setDone(photos.size() + i + 1);
    }
    return image;
}

/// Replaces the file whole.
Failure written(const QImage &image, const QString &path)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(image))
        return path + QStringLiteral(": ") + ZRLocalizedString("not enough memory");
    // From here on the file is written, or is not, within a moment.
    if (Interruption::hasHappened())
        return ZRLocalizedString("interrupted; no sheet was written");
    // Whatever else stands there would be replaced as well, a device among it.
    if (const QFileInfo existing(path); existing.exists() && !existing.isFile())
        return described({platform::ErrorCode::NotARegularFile, QStringLiteral("it is not a regular file"), -1, path});
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return path + QStringLiteral(": ") + file.errorString();
    return {};
}

} // namespace

Failure runFolder(const Arguments &arguments, Output &output, Timings &timings)
{
    Failure failure;
    const auto unit = listed(arguments, timings, failure);
    if (!failure)
        writePhotos(unit->photos(), output);
    return failure;
}

Failure runSheet(const Arguments &arguments, Output &output, Timings &timings)
{
    Failure failure;
    const auto unit = listed(arguments, timings, failure);
    if (failure)
        return failure;
    ThumbnailList photos = unit->photos();
    if (photos.isEmpty())
        return arguments.file + QStringLiteral(": ") + ZRLocalizedString("the folder holds no photos");
    sortByTitle(photos);
    // Each picture is read for its size and again to be drawn: no more than one is in memory.
    std::optional<Progress> progress(std::in_place, ZRLocalizedString("Drawing"), ZRLocalizedString("photos"),
                                     photos.size() * 2, 2);
    QList<QSize> sizes;
    for (const auto &photo : std::as_const(photos)) {
        if (Interruption::hasHappened())
            return ZRLocalizedString("interrupted; no sheet was written");
        sizes.append(pictureOf(*photo).size());
        progress->setDone(sizes.size());
    }
    const auto sheet = ContactSheet::laidOut(sizes, arguments.width);
    if (!sheet)
        return arguments.file + QStringLiteral(": ")
            + ZRLocalizedString("the folder holds more photos than fit on a sheet of this width");
    const QImage image = drawn(*sheet, photos, unit->folder().name(), *progress);
    progress.reset();
    if (Interruption::hasHappened())
        return ZRLocalizedString("interrupted; no sheet was written");
    if (image.isNull())
        return arguments.file + QStringLiteral(": ") + ZRLocalizedString("not enough memory");
    failure = written(image, arguments.output);
    if (failure)
        return failure;
    JsonWriter json(output, 0);
    json.string(arguments.output);
    json.finish();
    return {};
}
