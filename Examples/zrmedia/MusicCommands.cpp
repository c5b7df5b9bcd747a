#include "Commands.h"
#include "JsonWriter.h"
#include "Messages.h"
#include "Output.h"
#include "Progress.h"
#include "Support.h"

#include "ZRCommon/iTunesLibraryReader.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <memory>

namespace {

/// A reader whose library is parsed, or why there is none.
std::shared_ptr<iTunesLibraryReader> loadedReader(const Arguments &arguments, Timings &timings, Failure &failure)
{
    fetchFile(arguments.file, arguments, timings);
    const auto reader = std::make_shared<iTunesLibraryReader>(arguments.file);
    Timings::measured(timings.parsing, [&] {
        waitForNotification(ZRITunesLibraryChangedNotification, reader.get(), [&] { reader->playlistNames(); });
        return true;
    });
    if (const auto error = reader->readError())
        failure = described(*error);
    return reader;
}

void writeSongs(const SongList &songs, Output &output)
{
    Progress progress(ZRLocalizedString("Writing"), ZRLocalizedString("songs"), songs.size());
    progress.hideBesideOutput();
    JsonWriter json(output, 1);
    json.beginArray();
    qint64 done = 0;
    for (const platform::PropertyListValue &song : songs) {
        if (output.hasFailed())
            break;
        json.value(song);
        progress.setDone(++done);
    }
    json.endArray();
    json.finish();
}

} // namespace

Failure runPlaylists(const Arguments &arguments, Output &output, Timings &timings)
{
    Failure failure;
    const auto reader = loadedReader(arguments, timings, failure);
    if (!failure)
        writeNames(Timings::measured(timings.listing, [&] { return reader->playlistNames(); }), output);
    return failure;
}

Failure runSongs(const Arguments &arguments, Output &output, Timings &timings)
{
    Failure failure;
    const auto reader = loadedReader(arguments, timings, failure);
    if (failure)
        return failure;
    SongList songs = Timings::measured(timings.listing, [&] { return reader->songsInPlaylist(arguments.collection); });
    if (songs.isEmpty() && !reader->playlistNames().contains(arguments.collection))
        return unknownName(arguments, ZRLocalizedString("no playlist is called \"%1\"; there are: %2"),
                           reader->playlistNames());
    // Whatever sits in front of the reader asks for a search only when there is a text.
    if (!arguments.search.isEmpty())
        songs =
            Timings::measured(timings.searching, [&] { return reader->songsMatchingString(songs, arguments.search); });
    if (arguments.sortColumn) {
        const auto order = arguments.isDescending ? Qt::DescendingOrder : Qt::AscendingOrder;
        songs = Timings::measured(timings.sorting,
                                  [&] { return reader->songsSorted(songs, *arguments.sortColumn, order); });
    }
    writeSongs(songs, output);
    return {};
}
