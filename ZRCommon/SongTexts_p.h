#pragma once

//
//  W A R N I N G
//  This file is not part of the public interface. It is what searching and sorting songs have in common, and
//  may change from version to version.
//

#include "Platform/Foundation/PropertyList/PropertyListColumns.h"
#include "ZRCommon/SongList.h"

#include <QByteArray>

#include <span>
#include <vector>

/// Some texts of each song of a list, folded for comparing without regard to case (see
/// `platform::TextFolding`) and laid one behind the other in one block of memory.
///
/// The block consists of records. As a rule each song has one, which holds all its texts in the order of
/// their keys, each followed by a separator that occurs in no folded text. Where songs or texts are repeated
/// so often that this would take more memory than their library, each text has one record, however often it
/// is repeated.
class SongTexts
{
public:
    static constexpr char Separator = '\xFF';

    /// Folds the texts under the keys (UTF-8). What is absent or no string counts as empty.
    SongTexts(const SongList &songs, std::span<const char *const> keys);

    size_t recordCount() const { return m_starts.size() - 1; }
    /// The block, with `SubstringSearch::Padding` readable bytes behind the last record.
    const char *block() const { return m_bytes.constData(); }
    /// Where each record starts in the block, and where the last one ends.
    std::span<const size_t> starts() const { return m_starts; }
    QByteArrayView record(size_t record) const
    {
        return QByteArrayView(m_bytes).sliced(qsizetype(m_starts[record]),
                                              qsizetype(m_starts[record + 1] - m_starts[record]));
    }

    /// Empty when record and song number are the same. Otherwise the records of each song's texts in turn, as
    /// many for each song as there are keys.
    const std::vector<quint32> &recordsOfTexts() const { return m_recordsOfTexts; }

private:
    bool foldSongs(const SongList &songs, platform::PropertyListColumns &columns, qsizetype libraries);
    void foldDistinctTexts(const SongList &songs, platform::PropertyListColumns &columns, qsizetype libraries);
    void appendText(const platform::PropertyListView &text);
    void endRecord() { m_starts.push_back(size_t(m_bytes.size())); }

    QByteArray m_bytes;
    std::vector<size_t> m_starts{0};
    std::vector<quint32> m_recordsOfTexts;
};
