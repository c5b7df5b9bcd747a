#include "ZRCommon/iTunesLibraryReader.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/FileManager.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "ZRCommon/LibraryReaderWorkUnit_p.h"
#include "ZRCommon/MediaDatabase_p.h"
#include "ZRCommon/SongRanks_p.h"
#include "ZRCommon/ZRFileManagerExtensions.h"
#include "ZRFoundation/ZRProcessServer.h"

#include <limits>

using platform::PropertyListKey;
using platform::PropertyListType;
using platform::PropertyListValue;
using platform::PropertyListView;

namespace {

const QString libraryFileName = QStringLiteral("iTunes Music Library.xml");

/// The track under the decimal text of the number; null for what is no whole number.
PropertyListView trackFor(const PropertyListView &trackId, const platform::PropertyListIndex &tracks)
{
    const bool isWholeReal =
        trackId.type() == PropertyListType::Real && double(trackId.toInteger()) == trackId.toReal();
    if (trackId.type() != PropertyListType::Integer && !isWholeReal)
        return {};
    constexpr quint64 maximum = std::numeric_limits<qint64>::max();
    if (const quint64 large = trackId.toUnsigned(); large > maximum)
        return tracks.value(QString::number(large));
    return tracks.value(trackId.toInteger());
}

} // namespace

std::shared_ptr<iTunesLibraryReader> iTunesLibraryReader::iTunesDefaultLibraryReader()
{
    using ZRFileManagerExtensions::pathResolved;
    const QString home = platform::FileManager::homeFolder();
    const QString music = pathResolved(home + QStringLiteral("/Music"));
    QString path = pathResolved(music + QStringLiteral("/iTunes")) + QLatin1Char('/') + libraryFileName;
    if (!platform::FileManager::fileExists(path))
        path = home + QStringLiteral("/Documents/iTunes/") + libraryFileName;
    return std::make_shared<iTunesLibraryReader>(path);
}

iTunesLibraryReader::iTunesLibraryReader(const QString &libraryPath)
    : m_library_path(libraryPath)
{ }

iTunesLibraryReader::~iTunesLibraryReader()
{
    if (m_library_reader_work_unit)
        m_library_reader_work_unit->setCancelFlag(true);
}

QStringList iTunesLibraryReader::playlistNames()
{
    QStringList names;
    const PropertyListValue playlists = libraryDataDictionary()->dictionary.value(u"Playlists");
    for (const PropertyListView playlist : playlists.elements()) {
        const PropertyListView name = playlist.value(u"Name");
        if (name.isString())
            names.append(name.toString());
    }
    return names;
}

PropertyListValue iTunesLibraryReader::playlistInfoForName(const QString &name)
{
    const PropertyListValue playlists = libraryDataDictionary()->dictionary.value(u"Playlists");
    for (const PropertyListView playlist : playlists.elements()) {
        const PropertyListView itsName = playlist.value(u"Name");
        if (itsName.isString() && itsName.toString() == name)
            return PropertyListValue(playlist);
    }
    return {};
}

iTunesLibraryReader::SongList iTunesLibraryReader::songsInPlaylist(const QString &name)
{
    SongList songs;
    const auto database = libraryDataDictionary();
    const PropertyListValue items = playlistInfoForName(name).value(u"Playlist Items");
    const PropertyListKey trackId = items.key(u"Track ID");
    songs.reserve(items.count());
    for (const PropertyListView item : items.elements()) {
        const PropertyListView track = trackFor(item.value(trackId), database->items);
        if (!track.isNull())
            songs.append(PropertyListValue(track));
    }
    return songs;
}

iTunesLibraryReader::SongList iTunesLibraryReader::songsMatchingString(const SongList &songs, const QString &string)
{
    if (!m_search || !m_search->songs().isSharedWith(songs))
        m_search = std::make_unique<ZRSongSearch>(songs);
    return m_search->songsMatchingString(string);
}

iTunesLibraryReader::SongList iTunesLibraryReader::songsSorted(const SongList &songs, iTunesSortingForZR::Column column,
                                                               Qt::SortOrder order)
{
    const auto ranks = m_library_reader_work_unit ? m_library_reader_work_unit->songRanks() : nullptr;
    if (const auto positions = ranks ? ranks->order(songs, column, order) : std::nullopt)
        return PropertyListValue::select(songs, *positions);
    return iTunesSortingForZR::sorted(songs, column, order);
}

std::optional<platform::Error> iTunesLibraryReader::readError() const
{
    return m_library_data_dict ? m_library_data_dict->error : std::nullopt;
}

std::shared_ptr<const MediaDatabase> iTunesLibraryReader::libraryDataDictionary()
{
    if (m_library_data_dict)
        return m_library_data_dict;
    const auto self = weak_from_this().lock();
    ZR_ASSERT(this, self, "make readers with std::make_shared");
    auto placeholder = std::make_shared<const MediaDatabase>();
    auto workUnit = std::make_shared<LibraryReaderWorkUnit>(self, m_library_path);
    ZRProcessServer &server = ZRProcessServer::processServerWithName(QStringLiteral("library_reader_server"), 1);
    server.addProcessObserver(self);
    if (server.addWorkUnit(workUnit)) {
        m_library_data_dict = placeholder;
        m_library_reader_work_unit = std::move(workUnit);
        m_is_reading = true;
    }
    return placeholder;
}

void iTunesLibraryReader::workUnitDidLoadDictionary(LibraryReaderWorkUnit *workUnit)
{
    m_library_data_dict = workUnit->dictionary();
    m_is_reading = false;
    platform::NotificationCenter::defaultCenter().postNotification(ZRITunesLibraryChangedNotification, this);
}

// The result will not come any more.
void iTunesLibraryReader::processServerDidEnd(ZRProcessServer &)
{
    if (!m_is_reading)
        return;
    m_library_data_dict.reset();
    m_library_reader_work_unit.reset();
    m_is_reading = false;
}
