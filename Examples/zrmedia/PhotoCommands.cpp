#include "Commands.h"
#include "JsonWriter.h"
#include "Output.h"
#include "Progress.h"
#include "Support.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "ZRCommon/iPhotoAlbumReader.h"
#include "ZRCommon/ZRImageThumbnail.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace {

/// The photo library of a call. The reader takes a path that does not end in "AlbumData.xml" for a folder; on the
/// command line a database may bear any name, and then stands, for the reader, as a link of the right name in a folder
/// of its own.
class PhotoLibrary
{
public:
    /// Reads the database.
    PhotoLibrary(const Arguments &arguments, Timings &timings)
        : m_folder(QFileInfo(arguments.file).absolutePath())
    {
        QString path = arguments.file;
        if (QFileInfo(path).isFile() && !path.endsWith(databaseName)) {
            m_stand.emplace();
            path = m_stand->filePath(databaseName);
            QFile::link(QFileInfo(arguments.file).absoluteFilePath(), path);
        }
        fetchFile(arguments, timings);
        m_reader = std::make_shared<iPhotoAlbumReader>(path);
        Timings::measured(timings.parsing, [&] {
            waitForNotification(ZRIPhotoAlbumChangedNotification, m_reader.get(), [&] { m_reader->albumNames(); });
            return true;
        });
        auto error = m_reader->readError();
        if (error && m_stand)
            error->path = arguments.file;
        if (error)
            m_failure = error->toString();
    }

    /// Why there are no photos.
    const Failure &failure() const { return m_failure; }
    iPhotoAlbumReader &reader() { return *m_reader; }
    /// The path as it is with the library in its own folder, from the root.
    QString path(const QString &given) const
    {
        const QString stand = m_stand ? m_stand->path() + QLatin1Char('/') : QString();
        if (m_stand && given.startsWith(stand))
            return m_folder + QLatin1Char('/') + given.sliced(stand.size());
        return given.isEmpty() ? given : QFileInfo(given).absoluteFilePath();
    }

private:
    static constexpr QLatin1String databaseName{"AlbumData.xml"};
    QString m_folder;
    std::optional<QTemporaryDir> m_stand;
    std::shared_ptr<iPhotoAlbumReader> m_reader;
    Failure m_failure;
};

void writeDate(const QDateTime &date, JsonWriter &json)
{
    if (date.isValid())
        json.string(date.toUTC().toString(Qt::ISODate));
    else
        json.null();
}

void writePhotos(const PhotoLibrary &library, const iPhotoAlbumReader::ThumbnailList &photos, Output &output)
{
    Progress progress(ZRLocalizedString("Writing"), ZRLocalizedString("photos"), photos.size());
    JsonWriter json(output, 1);
    json.beginArray();
    qint64 done = 0;
    for (const auto &photo : photos) {
        if (output.hasFailed())
            break;
        json.beginObject();
        json.key("title");
        json.string(photo->title());
        json.key("imagePath");
        json.string(library.path(photo->imagePath()));
        json.key("creationDate");
        writeDate(photo->creationDate(), json);
        json.endObject();
        progress.setDone(++done);
    }
    json.endArray();
    json.finish();
}

} // namespace

Failure runAlbums(const Arguments &arguments, Output &output, Timings &timings)
{
    PhotoLibrary library(arguments, timings);
    if (!library.failure())
        writeNames(Timings::measured(timings.listing, [&] { return library.reader().albumNames(); }), output);
    return library.failure();
}

Failure runPhotos(const Arguments &arguments, Output &output, Timings &timings)
{
    PhotoLibrary library(arguments, timings);
    if (library.failure())
        return library.failure();
    iPhotoAlbumReader &reader = library.reader();
    // The reader searches while it lists. It keeps the records that the first listing makes, so that the time of the
    // second is that of the search.
    auto photos =
        Timings::measured(timings.listing, [&] { return reader.imageThumbnailsInAlbum(arguments.collection); });
    if (photos.isEmpty() && !reader.albumNames().contains(arguments.collection))
        return unknownName(arguments, ZRLocalizedString("no album is called \"%1\"; there are: %2"),
                           reader.albumNames());
    try {
        if (!arguments.search.isEmpty())
            photos = Timings::measured(timings.searching, [&] {
                return reader.imageThumbnailsInAlbum(arguments.collection, arguments.search);
            });
    } catch (const platform::InternalInconsistency &) {
        return arguments.file + QStringLiteral(": ") + ZRLocalizedString("the album lists a photo that is not there");
    }
    writePhotos(library, photos, output);
    return {};
}
