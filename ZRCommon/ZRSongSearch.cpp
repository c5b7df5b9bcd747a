#include "ZRCommon/ZRSongSearch.h"

#include "Platform/Foundation/SubstringSearch.h"
#include "Platform/Foundation/TextFolding.h"
#include "ZRCommon/SongTexts_p.h"

using platform::SubstringSearch::find;

namespace {

constexpr const char *searchedKeys[] = {"Album", "Artist", "Genre", "Name"};

/// Looking at a single record costs about as much as passing over this many of them.
constexpr size_t recordsPassedPerRecordVisited = 4;

/// The record that the place in the block belongs to, which is `record` or a later one.
size_t recordAt(const SongTexts &texts, size_t place, size_t record)
{
    size_t step = 1;
    for (; record + step < texts.recordCount() && texts.start(record + step) <= place; step *= 2)
        record += step;
    for (; step > 0; step /= 2) {
        if (record + step < texts.recordCount() && texts.start(record + step) <= place)
            record += step;
    }
    return record;
}

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
        m_hits = recordsContaining(needle);
    m_needle = needle;
    return songsOfHits();
}

std::vector<quint32> ZRSongSearch::recordsContaining(QByteArrayView needle) const
{
    std::vector<quint32> records;
    const QByteArrayView all = m_texts->all();
    size_t record = 0;
    for (const char *place = all.begin(); (place = find(place, all.end(), needle)) != all.end(); ++record) {
        record = recordAt(*m_texts, size_t(place - all.begin()), record);
        records.push_back(quint32(record));
        place = all.begin() + m_texts->start(record + 1);
    }
    return records;
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
    SongList matching;
    const std::vector<quint32> &recordsOfTexts = m_texts->recordsOfTexts();
    if (recordsOfTexts.empty()) {
        matching.reserve(qsizetype(m_hits.size()));
        for (const quint32 hit : m_hits)
            matching.append(m_songs[hit]);
        return matching;
    }
    std::vector<bool> isHit(m_texts->recordCount());
    for (const quint32 hit : m_hits)
        isHit[hit] = true;
    for (size_t song = 0; song < size_t(m_songs.size()); ++song) {
        const auto first = recordsOfTexts.begin() + qptrdiff(song * std::size(searchedKeys));
        if (std::any_of(first, first + std::size(searchedKeys), [&](quint32 record) { return isHit[record]; }))
            matching.append(m_songs[qsizetype(song)]);
    }
    return matching;
}
