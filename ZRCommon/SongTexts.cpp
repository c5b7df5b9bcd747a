#include "ZRCommon/SongTexts_p.h"

#include "Platform/Foundation/SubstringSearch_p.h"
#include "Platform/Foundation/TextFolding.h"

#include <QHashFunctions>

#include <unordered_map>

using platform::PropertyListColumns;
using platform::PropertyListValue;
using platform::PropertyListView;

namespace {

/// Bytes of the libraries that the songs come from.
qsizetype memoryOf(const SongList &songs)
{
    qsizetype bytes = 0;
    PropertyListView last;
    for (const PropertyListValue &song : songs) {
        if (!song.sharesDocumentWith(last))
            bytes += song.memoryUse();
        last = song;
    }
    return bytes;
}

/// What makes two texts one: the bytes that they stand in.
using TextIdentity = std::pair<const void *, qsizetype>;

struct TextIdentityHash {
    size_t operator()(const TextIdentity &identity) const { return qHash(identity, QHashSeed::globalSeed()); }
};

TextIdentity identityOf(const PropertyListView &text)
{
    const auto bytes = text.plainUtf8();
    return bytes ? TextIdentity(bytes->data(), bytes->size()) : TextIdentity(nullptr, 0);
}

} // namespace

SongTexts::SongTexts(const SongList &songs, std::span<const char *const> keys)
{
    m_starts.reserve(size_t(songs.size()) + 1);
    const qsizetype libraries = memoryOf(songs);
    PropertyListColumns columns(keys);
    if (!foldSongs(songs, columns, libraries)) {
        m_bytes.clear();
        m_starts.assign(1, 0);
        foldDistinctTexts(songs, columns, libraries);
    }
    m_bytes.append(platform::SubstringSearch::Padding, '\0');
}

/// @return false when the texts took more than the libraries, which can only be when they are repeated.
bool SongTexts::foldSongs(const SongList &songs, PropertyListColumns &columns, qsizetype libraries)
{
    columns.visit(songs, [&](std::span<const PropertyListView> texts) {
        if (m_bytes.size() > libraries)
            return;
        for (const PropertyListView &text : texts)
            appendText(text);
        endRecord();
    });
    return m_bytes.size() <= libraries;
}

void SongTexts::foldDistinctTexts(const SongList &songs, PropertyListColumns &columns, qsizetype libraries)
{
    std::unordered_map<TextIdentity, quint32, TextIdentityHash> records;
    m_recordsOfTexts.reserve(size_t(songs.size() * columns.count()));
    columns.visit(songs, [&](std::span<const PropertyListView> texts) {
        for (const PropertyListView &text : texts) {
            const auto [known, isNew] = records.try_emplace(identityOf(text), quint32(recordCount()));
            m_recordsOfTexts.push_back(known->second);
            if (!isNew)
                continue;
            // Folding makes no text more than half as long again. Only in a file that was made to overlap its texts can
            // all of them together be longer than this; the rest then count as empty.
            appendText(m_bytes.size() < 2 * libraries ? text : PropertyListView());
            endRecord();
        }
    });
}

void SongTexts::appendText(const PropertyListView &text)
{
    if (const auto bytes = text.plainUtf8())
        platform::TextFolding::appendFolded(m_bytes, *bytes);
    m_bytes.append(Separator);
}
