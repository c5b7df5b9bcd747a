#include "ZRCommon/LibraryReaderWorkUnit_p.h"

#include "Platform/Foundation/PropertyList/PropertyListColumns.h"
#include "Platform/Foundation/TextFolding.h"
#include "ZRCommon/iTunesLibraryReader.h"
#include "ZRCommon/SongRanks_p.h"
#include "ZRFoundation/ZRProcessServer.h"

using platform::PropertyListView;

namespace {

constexpr MediaDatabase::Kind musicLibrary{QLatin1String("Playlists"), QLatin1String("Tracks"),
                                           QLatin1String("it holds neither playlists nor tracks")};

/// A text to be told from others without regard to case.
struct FoldedWord {
    QByteArrayView folded;
    /// Bytes of the longest text that folds to it: s and k are also what the long s (two bytes) and the kelvin sign
    /// (three) fold to.
    qsizetype maximumLength;

    /// Mostly decided by the length alone, which is known without the text.
    bool equals(const PropertyListView &text) const
    {
        const qsizetype length = text.storedLength();
        return length >= folded.size() && length <= maximumLength
            && platform::TextFolding::equalsFolded(*text.plainUtf8(), folded);
    }
};

bool includes(const PropertyListView &genre, const PropertyListView &kind)
{
    static constexpr FoldedWord podcast{"podcast", 8};
    static constexpr FoldedWord movie{"quicktime movie file", 22};
    return !podcast.equals(genre) && !movie.equals(kind);
}

} // namespace

LibraryReaderWorkUnit::LibraryReaderWorkUnit(std::weak_ptr<iTunesLibraryReader> libraryReader,
                                             const QString &libraryPath)
    : m_library_reader(std::move(libraryReader))
    , m_library_path(libraryPath)
{ }

void LibraryReaderWorkUnit::processWithServer(ZRProcessServer &server)
{
    if (cancelFlag())
        return;
    m_dictionary = MediaDatabase::guarded(m_library_path, [this] {
        const char *const keys[] = {"Genre", "Kind"};
        platform::PropertyListColumns columns(keys);
        return MediaDatabase::read(m_library_path, musicLibrary, [&](const PropertyListView &song) {
            const auto values = columns.values(song);
            return song.isDictionary() && includes(values[0], values[1]);
        });
    });
    server.performSelectorOnObject(m_library_reader, &iTunesLibraryReader::workUnitDidLoadDictionary, this);
    rankSongs();
}

// Sorting manages without the ranks, only more slowly, so that whatever keeps them from being made is for the server's
// log alone.
void LibraryReaderWorkUnit::rankSongs()
{
    auto ranks = std::make_shared<SongRanks>(m_dictionary->dictionary.value(u"Tracks"));
    for (const auto column : {iTunesSortingForZR::Column::Song, iTunesSortingForZR::Column::Artist}) {
        if (cancelFlag())
            return;
        ranks->add(column);
    }
    const std::lock_guard lock(m_ranksMutex);
    m_ranks = std::move(ranks);
}

std::shared_ptr<const SongRanks> LibraryReaderWorkUnit::songRanks() const
{
    const std::lock_guard lock(m_ranksMutex);
    return m_ranks;
}

bool LibraryReaderWorkUnit::shouldIncludeSongEntry(const PropertyListView &song)
{
    return includes(song.value(u"Genre"), song.value(u"Kind"));
}
