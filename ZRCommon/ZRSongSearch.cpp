#include "ZRCommon/ZRSongSearch.h"

#include "Platform/Foundation/PropertyList/PropertyListColumns.h"
#include "Platform/Foundation/SubstringSearch_p.h"
#include "Platform/Foundation/TextFolding.h"
#include "ZRCommon/SongTexts_p.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

using platform::PropertyListValue;
using platform::PropertyListView;
using platform::SubstringSearch::find;
using platform::SubstringSearch::recordsContaining;

namespace {

constexpr std::array<const char *, 3> sharedKeys = {"Album", "Artist", "Genre"};
constexpr std::array<const char *, 1> ownKeys = {"Name"};

/// Looking at a single record costs about as much as passing over this many of them.
constexpr size_t recordsPassedPerRecordVisited = 4;

/// Where songs begin that have another album, artist or genre than the song before them, and the end of the list.
std::vector<quint32> startsOfSharing(const SongList &songs)
{
    std::vector<quint32> starts;
    std::array<std::optional<QByteArrayView>, sharedKeys.size()> texts, previous;
    quint32 song = 0;
    platform::PropertyListColumns columns(sharedKeys);
    columns.visit(songs, [&](std::span<const PropertyListView> values) {
        for (size_t i = 0; i < texts.size(); ++i)
            texts[i] = values[i].plainUtf8();
        if (song == 0 || texts != previous)
            starts.push_back(song);
        previous = texts;
        ++song;
    });
    starts.push_back(song);
    return starts;
}

SongList firstSongs(const SongList &songs, const std::vector<quint32> &starts)
{
    return PropertyListValue::select(songs, std::span(starts).first(starts.size() - 1));
}

} // namespace

/// Some texts of some songs, and which of them held the text searched last.
class ZRSongSearch::Part
{
public:
    Part(const SongList &songs, std::span<const char *const> keys)
        : m_texts(songs, keys)
        , m_songCount(quint32(songs.size()))
        , m_textsOfSong(keys.size())
    { }

    /// Positions of the songs that have a text with the needle in it, ascending.
    /// @param narrows whether the needle contains the one before
    std::vector<quint32> songsWith(QByteArrayView needle, bool narrows)
    {
        if (narrows && m_hits.size() < m_texts.recordCount() / recordsPassedPerRecordVisited)
            std::erase_if(m_hits, [&](quint32 hit) {
                const QByteArrayView record = m_texts.record(hit);
                return find(record.begin(), record.end(), needle) == record.end();
            });
        else
            m_hits = recordsContaining(m_texts.block(), m_texts.starts(), needle);
        return m_texts.recordsOfTexts().empty() ? m_hits : songsOfRepeatedTexts();
    }

private:
    std::vector<quint32> songsOfRepeatedTexts() const
    {
        std::vector<bool> isHit(m_texts.recordCount());
        for (const quint32 hit : m_hits)
            isHit[hit] = true;
        std::vector<quint32> positions;
        auto record = m_texts.recordsOfTexts().begin();
        for (quint32 song = 0; song < m_songCount; ++song) {
            const auto end = record + qptrdiff(m_textsOfSong);
            if (std::any_of(record, end, [&](quint32 text) { return isHit[text]; }))
                positions.push_back(song);
            record = end;
        }
        return positions;
    }

    SongTexts m_texts;
    quint32 m_songCount;
    size_t m_textsOfSong;
    std::vector<quint32> m_hits; // the records that hold the last needle, ascending
};

ZRSongSearch::ZRSongSearch(const SongList &songs)
    : m_songs(songs)
    , m_sharingStarts(startsOfSharing(songs))
    , m_sharedTexts(std::make_unique<Part>(firstSongs(songs, m_sharingStarts), sharedKeys))
    , m_ownTexts(std::make_unique<Part>(songs, ownKeys))
{ }

ZRSongSearch::ZRSongSearch(ZRSongSearch &&) noexcept = default;
ZRSongSearch &ZRSongSearch::operator=(ZRSongSearch &&) noexcept = default;
ZRSongSearch::~ZRSongSearch() = default;

SongList ZRSongSearch::songsMatchingString(QStringView string)
{
    const QByteArray needle = platform::TextFolding::folded(string);
    if (needle.isEmpty())
        return {};
    const bool narrows = !m_needle.isEmpty() && needle.contains(m_needle);
    const std::vector<quint32> sharers = m_sharedTexts->songsWith(needle, narrows);
    const std::vector<quint32> songs = m_ownTexts->songsWith(needle, narrows);
    m_needle = needle;

    std::vector<quint32> positions;
    positions.reserve(songs.size() + sharers.size());
    auto song = songs.begin();
    for (const quint32 sharer : sharers) {
        const quint32 first = m_sharingStarts[sharer], end = m_sharingStarts[sharer + 1];
        while (song != songs.end() && *song < first)
            positions.push_back(*song++);
        for (quint32 position = first; position < end; ++position)
            positions.push_back(position);
        while (song != songs.end() && *song < end)
            ++song;
    }
    positions.insert(positions.end(), song, songs.end());
    return PropertyListValue::select(m_songs, positions);
}
