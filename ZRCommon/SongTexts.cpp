#include "ZRCommon/SongTexts_p.h"

#include "Platform/Foundation/SubstringSearch.h"
#include "Platform/Foundation/TextFolding.h"

#include <QHashFunctions>

#include <unordered_map>

using platform::PropertyListKey;
using platform::PropertyListValue;
using platform::PropertyListView;

namespace {

/// Looks the same keys up in song after song.
class TextsOfSongs
{
public:
    explicit TextsOfSongs(std::span<const char *const> keys)
        : m_keys(keys)
    { }

    /// Calls `take(text)` for each key.
    template <class Take>
    void visit(const PropertyListValue &song, const Take &take)
    {
        if (!song.sharesDocumentWith(m_last) || m_prepared.empty())
            prepare(song);
        for (const PropertyListKey &key : m_prepared)
            take(static_cast<const PropertyListView &>(song).value(key));
    }

    /// Bytes of the libraries that the songs visited so far come from.
    qsizetype memoryUse() const { return m_memoryUse; }

private:
    void prepare(const PropertyListValue &song)
    {
        m_last = song;
        m_memoryUse += song.memoryUse();
        m_prepared.clear();
        for (const char *key : m_keys)
            m_prepared.push_back(song.key(QUtf8StringView(key)));
    }

    std::span<const char *const> m_keys;
    std::vector<PropertyListKey> m_prepared;
    PropertyListView m_last;
    qsizetype m_memoryUse = 0;
};

/// What makes two texts one: the bytes that they stand in, or their place in the library where those are
/// escaped.
using TextIdentity = std::pair<const void *, qsizetype>;
struct TextIdentityHash {
    size_t operator()(const TextIdentity &identity) const { return qHash(identity, QHashSeed::globalSeed()); }
};

TextIdentity identityOf(const PropertyListView &text)
{
    if (const auto plain = text.plainUtf8())
        return {plain->data(), plain->size()};
    return {text.isString() ? text.identity() : nullptr, -1};
}

} // namespace

SongTexts::SongTexts(const SongList &songs, std::span<const char *const> keys)
{
    m_starts.reserve(size_t(songs.size()) + 1);
    if (!foldSongs(songs, keys)) {
        m_bytes.clear();
        m_starts.assign(1, 0);
        foldDistinctTexts(songs, keys);
    }
    m_bytes.append(platform::SubstringSearch::Padding, '\0');
}

/// @return false as soon as the texts take more than their libraries, which can only be when they are
/// repeated.
bool SongTexts::foldSongs(const SongList &songs, std::span<const char *const> keys)
{
    TextsOfSongs texts(keys);
    for (const PropertyListValue &song : songs) {
        texts.visit(song, [this](const PropertyListView &text) { appendText(text); });
        if (m_bytes.size() > texts.memoryUse() + 0x10000)
            return false;
        endRecord();
    }
    return true;
}

void SongTexts::foldDistinctTexts(const SongList &songs, std::span<const char *const> keys)
{
    TextsOfSongs texts(keys);
    std::unordered_map<TextIdentity, quint32, TextIdentityHash> records;
    m_recordsOfTexts.reserve(size_t(songs.size()) * keys.size());
    for (const PropertyListValue &song : songs) {
        texts.visit(song, [&](const PropertyListView &text) {
            const auto newRecord = quint32(recordCount());
            const quint32 record = records.try_emplace(identityOf(text), newRecord).first->second;
            m_recordsOfTexts.push_back(record);
            if (record != newRecord)
                return;
            // Folding makes no text more than half as long again. Only in a file that was made to overlap its
            // texts can all of them together be longer than this; the rest then count as empty.
            if (m_bytes.size() < 2 * texts.memoryUse() + 0x10000)
                appendText(text);
            endRecord();
        });
    }
}

void SongTexts::appendText(const PropertyListView &text)
{
    if (const auto plain = text.plainUtf8())
        platform::TextFolding::appendFolded(m_bytes, *plain);
    else if (text.isString())
        platform::TextFolding::appendFolded(m_bytes, text.toUtf8());
    m_bytes.append(Separator);
}
