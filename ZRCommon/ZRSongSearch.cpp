#include "ZRCommon/ZRSongSearch.h"

#include "Platform/Foundation/SubstringSearch.h"
#include "Platform/Foundation/TextFolding.h"
#include "ZRCommon/SongTexts_p.h"

using platform::PropertyListValue;
using platform::SubstringSearch::find;
using platform::SubstringSearch::recordsContaining;

namespace {

constexpr const char *searchedKeys[] = {"Album", "Artist", "Genre", "Name"};

/// Looking at a single record costs about as much as passing over this many of them.
constexpr size_t recordsPassedPerRecordVisited = 4;

} // namespace

ZRSongSearch::ZRSongSearch(const SongList &songs)
    : m_songs(songs)
    , m_texts(std::make_unique<SongTexts>(songs, searchedKeys))
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
    if (narrows && m_hits.size() < m_texts->recordCount() / recordsPassedPerRecordVisited)
        m_hits = hitsContaining(needle);
    else
        m_hits = recordsContaining(m_texts->block(), m_texts->starts(), needle);
    m_needle = needle;
    return songsOfHits();
}

std::vector<quint32> ZRSongSearch::hitsContaining(QByteArrayView needle) const
{
    std::vector<quint32> records;
    for (const quint32 hit : m_hits) {
        const QByteArrayView record = m_texts->record(hit);
        if (find(record.begin(), record.end(), needle) != record.end())
            records.push_back(hit);
    }
    return records;
}

SongList ZRSongSearch::songsOfHits() const
{
    const std::vector<quint32> &recordsOfTexts = m_texts->recordsOfTexts();
    if (recordsOfTexts.empty())
        return PropertyListValue::select(m_songs, m_hits);

    std::vector<bool> isHit(m_texts->recordCount());
    for (const quint32 hit : m_hits)
        isHit[hit] = true;
    std::vector<quint32> positions;
    auto record = recordsOfTexts.begin();
    for (quint32 song = 0; song < quint32(m_songs.size()); ++song) {
        const auto end = record + std::size(searchedKeys);
        if (std::any_of(record, end, [&](quint32 text) { return isHit[text]; }))
            positions.push_back(song);
        record = end;
    }
    return PropertyListValue::select(m_songs, positions);
}
