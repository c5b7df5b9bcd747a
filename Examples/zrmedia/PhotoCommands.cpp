#include "Commands.h"
#include "Messages.h"
#include "Output.h"
#include "Support.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/TextFolding.h"
#include "ZRCommon/iPhotoAlbumReader.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <iterator>
#include <memory>

namespace {

using ThumbnailList = iPhotoAlbumReader::ThumbnailList;

constexpr QLatin1String databaseName{"AlbumData.xml"};

/// A reader whose database is read, or why there is none. The argument is the library folder, or the database under
/// whatever name in it.
std::shared_ptr<iPhotoAlbumReader> loadedReader(const Arguments &arguments, Timings &timings, Failure &failure)
{
    const QFileInfo given(arguments.file);
    const QString database = given.isDir() ? QDir(arguments.file).filePath(databaseName) : arguments.file;
    // The folder is named from the root, and with it the photos in it.
    const QString folder = given.isDir() ? QDir(arguments.file).absolutePath() : given.absolutePath();
    fetchFile(database, arguments, timings);
    const auto reader = std::make_shared<iPhotoAlbumReader>(database, folder);
    Timings::measured(timings.parsing, [&] {
        waitForNotification(ZRIPhotoAlbumChangedNotification, reader.get(), [&] { reader->albumNames(); });
        return true;
    });
    if (const auto error = reader->readError())
        failure = described(*error);
    return reader;
}

/// The photos of the album with the text sought. The reader refuses to search an album that lists a photo that the
/// database does not have; what can be found there is found by the titles of the others.
ThumbnailList matchingPhotos(iPhotoAlbumReader &reader, const Arguments &arguments, const ThumbnailList &photos)
{
    try {
        return reader.imageThumbnailsInAlbum(arguments.collection, arguments.search);
    } catch (const platform::InternalInconsistency &) {
        say(arguments.file + QStringLiteral(": ")
            + ZRLocalizedString("the album lists a photo that is not in the database"));
    }
    const QByteArray sought = platform::TextFolding::folded(QStringView(arguments.search));
    ThumbnailList found;
    std::copy_if(photos.cbegin(), photos.cend(), std::back_inserter(found), [&](const auto &photo) {
        return platform::TextFolding::folded(QStringView(photo->title())).contains(sought);
    });
    return found;
}

} // namespace

Failure runAlbums(const Arguments &arguments, Output &output, Timings &timings)
{
    Failure failure;
    const auto reader = loadedReader(arguments, timings, failure);
    if (!failure)
        writeNames(Timings::measured(timings.listing, [&] { return reader->albumNames(); }), output);
    return failure;
}

Failure runPhotos(const Arguments &arguments, Output &output, Timings &timings)
{
    Failure failure;
    const auto reader = loadedReader(arguments, timings, failure);
    if (failure)
        return failure;
    // The reader searches while it lists. It keeps the records that the first listing makes, so that the time of the
    // second is that of the search.
    auto photos =
        Timings::measured(timings.listing, [&] { return reader->imageThumbnailsInAlbum(arguments.collection); });
    if (photos.isEmpty() && !reader->albumNames().contains(arguments.collection))
        return unknownName(arguments, ZRLocalizedString("no album is called \"%1\"; there are: %2"),
                           reader->albumNames());
    if (!arguments.search.isEmpty())
        photos = Timings::measured(timings.searching, [&] { return matchingPhotos(*reader, arguments, photos); });
    writePhotos(photos, output);
    return {};
}
