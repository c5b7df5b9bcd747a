#include "ZRCommon/LibraryReaderWorkUnit.h"

#include "Platform/Foundation/TextFolding.h"
#include "ZRCommon/iTunesLibraryReader.h"
#include "ZRFoundation/ZRProcessServer.h"

using platform::PropertyListView;

namespace {

/// A text to be told from others without regard to case.
struct FoldedWord {
    QByteArrayView folded;
    /// Bytes of the longest text that folds to it: s and k are also what the long s (two bytes) and the kelvin sign
    /// (three) fold to.
    qsizetype maximumLength;

    /// Mostly decided by the length alone, which is known without the text.
    bool equals(const PropertyListView &text) const
    {
        if (text.storedLength() < folded.size())
            return false;
        const auto plain = text.plainUtf8();
        if (plain && plain->size() > maximumLength)
            return false;
        return platform::TextFolding::equalsFolded(plain ? *plain : QByteArrayView(text.toUtf8()), folded);
    }
};

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
    m_dictionary = MediaDatabase::read(m_library_path, u"Tracks", shouldIncludeSongEntry);
    server.performSelectorOnObject(m_library_reader, &iTunesLibraryReader::workUnitDidLoadDictionary, this);
}

bool LibraryReaderWorkUnit::shouldIncludeSongEntry(const PropertyListView &song)
{
    static constexpr FoldedWord podcast{"podcast", 8};
    static constexpr FoldedWord movie{"quicktime movie file", 22};
    return !podcast.equals(song.value(u"Genre")) && !movie.equals(song.value(u"Kind"));
}
