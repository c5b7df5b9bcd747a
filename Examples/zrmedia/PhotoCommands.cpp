#include "Commands.h"
#include "JsonWriter.h"
#include "Output.h"
#include "Progress.h"
#include "Support.h"

#include "ZRCommon/iPhotoAlbumReader.h"
#include "ZRCommon/ZRLocalizedString.h"

namespace {

/// A reader whose database is parsed, or why there is none.
std::shared_ptr<iPhotoAlbumReader> loadedReader(const Arguments &arguments, Timings &timings, Failure &failure)
{
    fetchFile(arguments, timings);
    const auto reader = std::make_shared<iPhotoAlbumReader>(arguments.file);
    Timings::measured(timings.parsing, [&] {
        waitForNotification(ZRIPhotoAlbumChangedNotification, reader.get(), [&] { reader->albumNames(); });
        return true;
    });
    if (const auto error = reader->readError())
        failure = error->toString();
    return reader;
}

void writeDate(const QDateTime &date, JsonWriter &json)
{
    if (date.isValid())
        json.string(date.toUTC().toString(Qt::ISODate));
    else
        json.null();
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
    const auto listed = [&](const QString &search) {
        return reader->imageThumbnailsInAlbum(arguments.collection, search, nullptr);
    };
    // The reader searches while it lists. The records are made by the first listing and kept, so that the second one's
    // time is that of the search.
    auto photos = Timings::measured(timings.listing, [&] { return listed(QString()); });
    if (photos.isEmpty() && !reader->albumNames().contains(arguments.collection))
        return unknownName(arguments, ZRLocalizedString("no album is called \"%1\"; there are: %2"),
                           reader->albumNames());
    if (!arguments.search.isEmpty())
        photos = Timings::measured(timings.searching, [&] { return listed(arguments.search); });

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
        json.string(photo->imagePath());
        json.key("creationDate");
        writeDate(photo->creationDate(), json);
        json.endObject();
        progress.setDone(++done);
    }
    json.endArray();
    json.finish();
    return {};
}
