#include "ZRCommon/iTunesLibraryReader.h"

#include "ReaderTestSupport.h"
#include "SongTestSupport.h"
#include "Support/TestSupport.h"
#include "ZRCommon/SongRanks_p.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace {

using platform::PropertyListType;
using platform::PropertyListValue;
using platform::PropertyListView;
using testSupport::names;

const QString fileName = testSupport::LibraryReading::fileName();

QVariantMap track(const char *name, const QVariantMap &more = {})
{
    QVariantMap map{{QStringLiteral("Name"), QString::fromUtf8(name)}};
    map.insert(more);
    return map;
}

QVariantMap playlist(const char *name, const QVariantList &trackIds)
{
    QVariantList items;
    for (const QVariant &id : trackIds)
        items.append(QVariantMap{{QStringLiteral("Track ID"), id}});
    return {{QStringLiteral("Name"), QString::fromUtf8(name)}, {QStringLiteral("Playlist Items"), items}};
}

QByteArray library(const QVariant &tracks, const QVariant &playlists)
{
    const QVariantMap root{{QStringLiteral("Tracks"), tracks}, {QStringLiteral("Playlists"), playlists}};
    return platform::PropertyList::writeXml(root).valueOr({});
}

QByteArray smallLibrary()
{
    return library(QVariantMap{{QStringLiteral("1"), track("one")}, {QStringLiteral("2"), track("two")}},
                   QVariantList{playlist("Library", {1, 2}), playlist("Favourites", {2, 1, 2})});
}

struct ITunesLibraryReader : testSupport::ReaderTest<testSupport::LibraryReading> {
    ITunesLibraryReader()
        : ReaderTest(testSupport::homePath())
    { }
};

std::shared_ptr<testSupport::BlockingUnit> blockReading()
{
    return testSupport::BlockingUnit::start(testSupport::readingServer<testSupport::LibraryReading>());
}

TEST_F(ITunesLibraryReader, ReadsNothingUntilItIsAsked)
{
    testSupport::writeFile(m_path, smallLibrary());
    const auto reader = std::make_shared<iTunesLibraryReader>(m_path);
    EXPECT_FALSE(reader->isReading());
    EXPECT_EQ(reader->libraryPath(), m_path);
}

TEST_F(ITunesLibraryReader, AnswersAsAnEmptyLibraryUntilTheNotification)
{
    testSupport::writeFile(m_path, smallLibrary());
    const auto block = blockReading();
    const auto reader = std::make_shared<iTunesLibraryReader>(m_path);
    EXPECT_TRUE(reader->songsInPlaylist(QStringLiteral("Library")).isEmpty());
    EXPECT_TRUE(reader->isReading());
    EXPECT_TRUE(reader->playlistNames().isEmpty());
    EXPECT_TRUE(reader->playlistInfoForName(QStringLiteral("Library")).isNull());
    EXPECT_FALSE(reader->readError());
    block->release();
    EXPECT_TRUE(waitForNotification(1));
    EXPECT_FALSE(reader->isReading());
    EXPECT_EQ(reader->playlistNames(), QStringList({QStringLiteral("Library"), QStringLiteral("Favourites")}));
}

TEST_F(ITunesLibraryReader, ListsPlaylistsInFileOrderAndReadsOnce)
{
    const auto reader = readerOf(smallLibrary());
    EXPECT_EQ(reader->playlistNames(), QStringList({QStringLiteral("Library"), QStringLiteral("Favourites")}));
    testSupport::writeFile(m_path, library(QVariantMap(), QVariantList()));
    EXPECT_EQ(reader->playlistNames().size(), 2);
    EXPECT_FALSE(reader->isReading());
    EXPECT_EQ(m_notifications.count(), 1);
}

TEST_F(ITunesLibraryReader, StartsReadingOnAnyOfTheQuestions)
{
    testSupport::writeFile(m_path, smallLibrary());
    const auto byPlaylist = std::make_shared<iTunesLibraryReader>(m_path);
    EXPECT_TRUE(byPlaylist->playlistInfoForName(QStringLiteral("Library")).isNull());
    const auto bySongs = std::make_shared<iTunesLibraryReader>(m_path);
    EXPECT_TRUE(bySongs->songsInPlaylist(QStringLiteral("Library")).isEmpty());
    EXPECT_TRUE(byPlaylist->isReading() && bySongs->isReading());
    EXPECT_TRUE(waitForNotification(2));
}

TEST_F(ITunesLibraryReader, ListsSongsInPlaylistOrderWithRepetitions)
{
    const auto reader = readerOf(smallLibrary());
    const SongList songs = reader->songsInPlaylist(QStringLiteral("Favourites"));
    EXPECT_EQ(names(songs), u"two one two");
    EXPECT_EQ(songs[0].identity(), songs[2].identity()); // the library's own dictionaries
}

TEST_F(ITunesLibraryReader, KnowsNoSongsOfAnUnknownPlaylist)
{
    const auto reader = readerOf(smallLibrary());
    for (const QString &name : {QStringLiteral("library"), QStringLiteral("Librar"), QString()}) {
        EXPECT_TRUE(reader->songsInPlaylist(name).isEmpty());
        EXPECT_TRUE(reader->playlistInfoForName(name).isNull());
    }
}

TEST_F(ITunesLibraryReader, TakesTheFirstOfSeveralPlaylistsOfOneName)
{
    const auto reader =
        readerOf(library(QVariantMap{{QStringLiteral("1"), track("one")}, {QStringLiteral("2"), track("two")}},
                         QVariantList{playlist("Mix", {1}), playlist("Mix", {2})}));
    EXPECT_EQ(reader->playlistNames().size(), 2);
    EXPECT_EQ(names(reader->songsInPlaylist(QStringLiteral("Mix"))), u"one");
    EXPECT_EQ(reader->playlistInfoForName(QStringLiteral("Mix")).value(u"Playlist Items").count(), 1);
}

TEST_F(ITunesLibraryReader, TellsPlaylistNamesApartByEveryCharacter)
{
    const auto reader = readerOf(library(QVariantMap{{QStringLiteral("1"), track("one")}},
                                         QVariantList{playlist("R&B <\xC3\xA9>", {1}), playlist("e\xCC\x81", {1})}));
    EXPECT_EQ(reader->songsInPlaylist(QStringLiteral("R&B <\u00E9>")).size(), 1);
    EXPECT_EQ(reader->songsInPlaylist(QStringLiteral("\u00E9")).size(), 0);
    EXPECT_EQ(reader->songsInPlaylist(QStringLiteral("e\u0301")).size(), 1);
}

TEST_F(ITunesLibraryReader, LeavesOutPodcastsAndMoviesWhateverTheirCase)
{
    const QVariantMap tracks{
        {QStringLiteral("1"), track("podcast", {{QStringLiteral("Genre"), QStringLiteral("Podcast")}})},
        {QStringLiteral("2"), track("PODCAST", {{QStringLiteral("Genre"), QStringLiteral("PODCAST")}})},
        {QStringLiteral("3"),
         track("podcast-movie",
               {{QStringLiteral("Genre"), QStringLiteral("podcast")},
                {QStringLiteral("Kind"), QStringLiteral("MPEG audio file")}})},
        {QStringLiteral("4"), track("movie", {{QStringLiteral("Kind"), QStringLiteral("QuickTime movie file")}})},
        {QStringLiteral("5"),
         track("MOVIE",
               {{QStringLiteral("Kind"), QStringLiteral("QUICKTIME MOVIE FILE")},
                {QStringLiteral("Genre"), QStringLiteral("Rock")}})},
        {QStringLiteral("6"), track("no-kind", {{QStringLiteral("Genre"), QStringLiteral("Rock")}})},
        {QStringLiteral("7"), track("kind", {{QStringLiteral("Kind"), QStringLiteral("MPEG audio file")}})},
        {QStringLiteral("8"),
         track("protected", {{QStringLiteral("Kind"), QStringLiteral("Protected AAC audio file")}})},
        {QStringLiteral("9"), track("podcasts", {{QStringLiteral("Genre"), QStringLiteral("Podcasts")}})},
        {QStringLiteral("10"),
         track("swapped",
               {{QStringLiteral("Genre"), QStringLiteral("QuickTime movie file")},
                {QStringLiteral("Kind"), QStringLiteral("Podcast")}})}};
    const auto reader = readerOf(library(tracks, QVariantList{playlist("All", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10})}));
    EXPECT_EQ(names(reader->songsInPlaylist(QStringLiteral("All"))), u"no-kind kind protected podcasts swapped");
}

TEST(LibraryReaderWorkUnit, DecidesByGenreAndKindHoweverTheyAreSpelt)
{
    const auto included = [](const QByteArray &entries) {
        const auto list = platform::PropertyList::parse(QByteArray("<dict>" + entries + "</dict>"));
        EXPECT_TRUE(bool(list)) << entries.constData();
        return LibraryReaderWorkUnit::shouldIncludeSongEntry(list.value());
    };
    EXPECT_FALSE(included("<key>Genre</key><string>podca\xC5\xBFt</string>")); // long s
    EXPECT_FALSE(included("<key>Kind</key><string>Quic\xE2\x84\xAATime movie file</string>")); // kelvin sign
    EXPECT_FALSE(included("<key>Genre</key><string>&#80;odcast</string>"));
    EXPECT_FALSE(included("<key>Genre</key><string><![CDATA[Podcast]]></string>"));
    EXPECT_FALSE(included("<key>Kind</key><string>QuickTime&#32;movie file</string>"));
    EXPECT_FALSE(included("<key>&#71;enre</key><string>podcast</string>"));
    EXPECT_FALSE(included("<key>Genre</key><string>Rock</string><key>Genre</key><string>podcast</string>"));
    EXPECT_TRUE(included("<key>Genre</key><string>podcast</string><key>Genre</key><string>Rock</string>"));
    EXPECT_TRUE(included("<key>Genre</key><string>podcas&amp;</string>"));
    EXPECT_TRUE(included("<key>Genre</key><string>podcas\xCC\x81t</string>"));
    EXPECT_TRUE(included("<key>Genre</key><integer>7</integer><key>Kind</key><true/>"));
    EXPECT_TRUE(included(""));
}

TEST_F(ITunesLibraryReader, RanksItsSongsAfterItHasReadThem)
{
    testSupport::writeFile(m_path, smallLibrary());
    ZRProcessServer &server = testSupport::readingServer<testSupport::LibraryReading>();
    const auto unit = std::make_shared<LibraryReaderWorkUnit>(std::weak_ptr<iTunesLibraryReader>(), m_path);
    EXPECT_FALSE(unit->songRanks());
    server.addWorkUnit(unit);
    ASSERT_TRUE(testSupport::waitUntil([&] { return bool(unit->songRanks()); }));
    const PropertyListValue tracks = unit->dictionary()->dictionary.value(u"Tracks");
    for (const auto column : {iTunesSortingForZR::Column::Song, iTunesSortingForZR::Column::Artist})
        EXPECT_TRUE(unit->songRanks()->order({tracks.value(u"2")}, column, Qt::AscendingOrder));
}

TEST_F(ITunesLibraryReader, SkipsItemsThatNameNoTrack)
{
    const QByteArray xml(
        "<dict><key>Tracks</key><dict><key>5</key><dict><key>Name</key><string>five</string></dict>"
        "<key>007</key><dict><key>Name</key><string>agent</string></dict>"
        "<key>0</key><dict><key>Name</key><string>zero</string></dict>"
        "<key>-1</key><dict><key>Name</key><string>minus-one</string></dict>"
        "<key>8</key><string>no dictionary</string>"
        "<key>9</key><dict><key>Name</key><string>old-nine</string></dict>"
        "<key>9</key><dict><key>Name</key><string>nine</string></dict>"
        "<key>18446744073709551615</key><dict><key>Name</key><string>huge</string></dict></dict>"
        "<key>Playlists</key><array><dict><key>Name</key><string>Odd</string><key>Playlist Items</key><array>"
        "<dict><key>Track ID</key><integer>5</integer></dict>"
        "<dict><key>Track ID</key><real>5</real></dict>"
        "<dict><key>Track ID</key><real>5.5</real></dict>"
        "<dict><key>Track ID</key><string>5</string></dict>"
        "<dict><key>Track ID</key><true/></dict>"
        "<dict/>"
        "<string>5</string>"
        "<dict><key>Track ID</key><integer>7</integer></dict>"
        "<dict><key>Track ID</key><integer>8</integer></dict>"
        "<dict><key>Track ID</key><integer>-1</integer></dict>"
        "<dict><key>Track ID</key><integer>0x9</integer></dict>"
        "<dict><key>Track ID</key><integer>18446744073709551615</integer></dict>"
        "<dict><key>Track ID</key><integer>99</integer></dict>"
        "</array></dict></array></dict>");
    const auto reader = readerOf(xml);
    EXPECT_EQ(names(reader->songsInPlaylist(QStringLiteral("Odd"))).toStdString(), "five five minus-one nine huge");
}

TEST_F(ITunesLibraryReader, PassesOverWhatIsOfTheWrongType)
{
    const auto namesOf = [&](const QVariant &tracks, const QVariant &playlists) {
        return readerOf(library(tracks, playlists))->playlistNames().join(QLatin1Char(','));
    };
    EXPECT_EQ(namesOf(QVariantMap(), QStringLiteral("none")), u"");
    EXPECT_EQ(namesOf(QVariantMap(), QVariantMap{{QStringLiteral("Name"), QStringLiteral("x")}}), u"");
    EXPECT_EQ(namesOf(QVariantMap(),
                      QVariantList{QStringLiteral("x"), 7, QVariantMap(), QVariantMap{{QStringLiteral("Name"), 7}},
                                   playlist("good", {})}),
              u"good");
    EXPECT_TRUE(readerOf(library(QVariantMap(), QVariantList{QVariantMap{{QStringLiteral("Name"), 7}}}))
                    ->playlistInfoForName(QString())
                    .isNull())
        << "a playlist without a name has not an empty one";

    const auto reader =
        readerOf(library(QVariantList{track("one")},
                         QVariantList{playlist("no tracks", {0, 1}),
                                      QVariantMap{{QStringLiteral("Name"), QStringLiteral("no items")},
                                                  {QStringLiteral("Playlist Items"), QStringLiteral("1")}},
                                      QVariantMap{{QStringLiteral("Name"), QStringLiteral("nothing")}}}));
    for (const QString &name : reader->playlistNames())
        EXPECT_TRUE(reader->songsInPlaylist(name).isEmpty()) << qPrintable(name);
}

TEST_F(ITunesLibraryReader, IsEmptyForGoodWhenTheFileIsMissing)
{
    const auto reader = readerOf(m_path);
    EXPECT_TRUE(reader->playlistNames().isEmpty());
    ASSERT_TRUE(reader->readError());
    EXPECT_EQ(reader->readError()->code, platform::ErrorCode::NotFound);
    EXPECT_EQ(reader->readError()->path, m_path);
    testSupport::writeFile(m_path, smallLibrary());
    EXPECT_TRUE(reader->playlistNames().isEmpty());
    EXPECT_TRUE(reader->songsInPlaylist(QStringLiteral("Library")).isEmpty());
    EXPECT_FALSE(reader->isReading());
    EXPECT_EQ(m_notifications.count(), 1);
}

TEST_F(ITunesLibraryReader, IsEmptyWhenTheFileIsMalformedOrNoDictionary)
{
    for (const QByteArray &bytes : {QByteArray(), QByteArray("<dict><key>Playlists</key>"),
                                    QByteArray("\x89PNG\r\n\x1A\n"), smallLibrary().chopped(20)}) {
        const auto reader = readerOf(bytes);
        EXPECT_TRUE(reader->playlistNames().isEmpty());
        ASSERT_TRUE(reader->readError()) << bytes.constData();
        EXPECT_EQ(reader->readError()->path, m_path);
    }
    const auto reader = readerOf(QByteArray("<array><string>x</string></array>"));
    EXPECT_TRUE(reader->playlistNames().isEmpty());
    ASSERT_TRUE(reader->readError());
    EXPECT_EQ(reader->readError()->toString(), m_path + QStringLiteral(": the property list is no dictionary"));
}

TEST_F(ITunesLibraryReader, IsEmptyWhenAFolderStandsInPlaceOfTheFile)
{
    QDir().mkpath(m_path);
    const auto reader = readerOf(m_path);
    EXPECT_TRUE(reader->playlistNames().isEmpty());
    EXPECT_TRUE(reader->readError());
}

TEST_F(ITunesLibraryReader, StandsEveryTruncationOfALibrary)
{
    const QByteArray whole = smallLibrary();
    for (qsizetype size = 0; size < whole.size(); size += 7) {
        const auto reader = readerOf(whole.first(size));
        EXPECT_TRUE(reader->playlistNames().isEmpty() || !reader->readError()) << size;
    }
}

TEST_F(ITunesLibraryReader, KeepsWhatItReadWhenTheFileIsCutShortReplacedOrRemoved)
{
    const auto reader = readerOf(smallLibrary());
    const SongList songs = reader->songsInPlaylist(QStringLiteral("Library"));
    ASSERT_TRUE(QFile::resize(m_path, 10));
    EXPECT_EQ(names(songs), u"one two");
    testSupport::writeFile(m_path, QByteArray(100'000, 'x'));
    EXPECT_EQ(names(reader->songsInPlaylist(QStringLiteral("Favourites"))), u"two one two");
    QFile::remove(m_path);
    EXPECT_EQ(names(reader->songsInPlaylist(QStringLiteral("Favourites"))), u"two one two");
}

TEST_F(ITunesLibraryReader, GivesOneOrTheOtherWhenTheFileChangesWhileItIsRead)
{
    QVariantMap tracks;
    QVariantList ids;
    for (int i = 0; i < 4000; ++i) {
        tracks.insert(QString::number(i), track("some song of a long enough name"));
        ids.append(i);
    }
    const QByteArray large = library(tracks, QVariantList{playlist("Library", ids)});
    for (int round = 0; round < 12; ++round) {
        testSupport::writeFile(m_path, large);
        const auto reader = std::make_shared<iTunesLibraryReader>(m_path);
        const int before = m_notifications.count();
        reader->playlistNames();
        if (round % 3 == 0)
            QFile::resize(m_path, large.size() / 2);
        else if (round % 3 == 1)
            testSupport::writeFile(m_path, smallLibrary());
        else
            QFile::remove(m_path);
        ASSERT_TRUE(waitForNotification(before + 1));
        const qsizetype count = reader->songsInPlaylist(QStringLiteral("Library")).size();
        if (reader->readError())
            EXPECT_EQ(count, 0);
        else
            EXPECT_TRUE(count == 4000 || count == 2) << count;
    }
}

TEST_F(ITunesLibraryReader, IsEmptyWhenItsFolderVanishesBeforeItIsRead)
{
    const QString folder = testSupport::homePath() + QStringLiteral("/volume");
    testSupport::writeFile(folder + QLatin1Char('/') + fileName, smallLibrary());
    const auto block = blockReading();
    const auto reader = std::make_shared<iTunesLibraryReader>(folder + QLatin1Char('/') + fileName);
    reader->playlistNames();
    ASSERT_TRUE(QDir(folder).removeRecursively());
    block->release();
    ASSERT_TRUE(waitForNotification(1));
    EXPECT_TRUE(reader->playlistNames().isEmpty());
    EXPECT_EQ(reader->readError()->code, platform::ErrorCode::NotFound);
}

TEST_F(ITunesLibraryReader, IsNotToldWhenItDiesWhileItsLibraryIsRead)
{
    testSupport::writeFile(m_path, smallLibrary());
    auto block = blockReading();
    auto doomed = std::make_shared<iTunesLibraryReader>(m_path);
    doomed->playlistNames();
    doomed.reset();
    const auto next = std::make_shared<iTunesLibraryReader>(m_path);
    next->playlistNames();
    block->release();
    ASSERT_TRUE(waitForNotification(1));
    EXPECT_EQ(m_notifications.count(), 1);
    EXPECT_EQ(m_notifications.lastSender(), next.get());
    EXPECT_EQ(next->playlistNames().size(), 2);
}

TEST_F(ITunesLibraryReader, LetsSongsOutliveIt)
{
    SongList songs;
    {
        auto reader = readerOf(smallLibrary());
        songs = reader->songsInPlaylist(QStringLiteral("Library"));
    }
    EXPECT_EQ(names(songs), u"one two");
}

TEST_F(ITunesLibraryReader, SearchesTheListItIsGiven)
{
    const auto reader = readerOf(library(
        QVariantMap{{QStringLiteral("1"), track("Help!", {{QStringLiteral("Artist"), QStringLiteral("The Beatles")}})},
                    {QStringLiteral("2"), track("Beat It")},
                    {QStringLiteral("3"), track("Other")}},
        QVariantList{playlist("Library", {3, 2, 1, 2})}));
    const SongList songs = reader->songsInPlaylist(QStringLiteral("Library"));
    EXPECT_EQ(names(reader->songsMatchingString(songs, QStringLiteral("beat"))),
              QStringLiteral("Beat It Help! Beat It"));
    EXPECT_EQ(names(reader->songsMatchingString(songs, QStringLiteral("BEATLES"))), u"Help!");
    EXPECT_TRUE(reader->songsMatchingString(songs, QString()).isEmpty());
    EXPECT_EQ(names(reader->songsMatchingString(songs.mid(0, 2), QStringLiteral("beat"))), u"Beat It");
    SongList changed = songs;
    changed.removeLast();
    EXPECT_EQ(names(reader->songsMatchingString(changed, QStringLiteral("beat"))), QStringLiteral("Beat It Help!"));
    EXPECT_EQ(names(reader->songsMatchingString(songs, QStringLiteral("beat"))),
              QStringLiteral("Beat It Help! Beat It"));
    SongList reordered = songs;
    reordered.swapItemsAt(1, 2);
    EXPECT_EQ(names(reader->songsMatchingString(reordered, QStringLiteral("beat"))),
              QStringLiteral("Help! Beat It Beat It"));
}

TEST_F(ITunesLibraryReader, SortsTheListItIsGivenWhetherItsOrderIsKnownOrNot)
{
    using iTunesSortingForZR::Column;
    EXPECT_EQ(names(iTunesLibraryReader(m_path).songsSorted(testSupport::songs({track("b"), track("A"), track("c")}),
                                                            Column::Song, Qt::DescendingOrder)),
              u"c b A");

    const auto reader = readerOf(
        library(QVariantMap{{QStringLiteral("1"), track("b", {{QStringLiteral("Artist"), QStringLiteral("x")}})},
                            {QStringLiteral("2"), track("A", {{QStringLiteral("Artist"), QStringLiteral("z")}})},
                            {QStringLiteral("3"), track("c", {{QStringLiteral("Artist"), QStringLiteral("Y")}})}},
                QVariantList{playlist("Library", {1, 2, 3, 1})}));
    const SongList songs = reader->songsInPlaylist(QStringLiteral("Library"));
    EXPECT_EQ(names(reader->songsSorted(songs, Column::Song, Qt::AscendingOrder)), u"A b b c");
    blockReading()->release(); // the one worker has ended what it had begun
    EXPECT_EQ(names(reader->songsSorted(songs, Column::Song, Qt::AscendingOrder)), u"A b b c");
    EXPECT_EQ(names(reader->songsSorted(songs, Column::Artist, Qt::DescendingOrder)), u"A c b b");
    EXPECT_EQ(names(reader->songsSorted(songs, Column::Time, Qt::DescendingOrder)), u"b A c b");
    const SongList foreign = testSupport::songs({track("d"), track("a")});
    EXPECT_EQ(names(reader->songsSorted(foreign + songs, Column::Song, Qt::AscendingOrder)), u"a A b b c d");
}

TEST_F(ITunesLibraryReader, FindsTheUsersLibraryInTheMusicFolder)
{
    const QString path = testSupport::homePath() + QStringLiteral("/Music/iTunes/") + fileName;
    testSupport::writeFile(path, smallLibrary());
    EXPECT_EQ(iTunesLibraryReader::iTunesDefaultLibraryReader()->libraryPath(), path);
}

TEST_F(ITunesLibraryReader, FollowsLinksToTheUsersLibrary)
{
    const QString elsewhere = testSupport::homePath() + QStringLiteral("/disk/songs");
    testSupport::writeFile(elsewhere + QStringLiteral("/real/") + fileName, smallLibrary());
    ASSERT_TRUE(QFile::link(elsewhere, testSupport::homePath() + QStringLiteral("/Music")));
    ASSERT_TRUE(QFile::link(elsewhere + QStringLiteral("/real"), elsewhere + QStringLiteral("/iTunes")));
    EXPECT_EQ(iTunesLibraryReader::iTunesDefaultLibraryReader()->libraryPath(),
              QFileInfo(elsewhere + QStringLiteral("/real/") + fileName).canonicalFilePath());
}

TEST_F(ITunesLibraryReader, FollowsALinkInPlaceOfTheMusicFolderAlone)
{
    const QString elsewhere = testSupport::homePath() + QStringLiteral("/disk/songs");
    testSupport::writeFile(elsewhere + QStringLiteral("/iTunes/") + fileName, smallLibrary());
    ASSERT_TRUE(QFile::link(elsewhere, testSupport::homePath() + QStringLiteral("/Music")));
    EXPECT_EQ(iTunesLibraryReader::iTunesDefaultLibraryReader()->libraryPath(),
              QFileInfo(elsewhere).canonicalFilePath() + QStringLiteral("/iTunes/") + fileName);
}

TEST_F(ITunesLibraryReader, FollowsALinkInPlaceOfTheFolderInTheMusicFolderAlone)
{
    const QString elsewhere = testSupport::homePath() + QStringLiteral("/disk/songs");
    testSupport::writeFile(elsewhere + QLatin1Char('/') + fileName, smallLibrary());
    ASSERT_TRUE(QDir().mkpath(testSupport::homePath() + QStringLiteral("/Music")));
    ASSERT_TRUE(QFile::link(elsewhere, testSupport::homePath() + QStringLiteral("/Music/iTunes")));
    EXPECT_EQ(iTunesLibraryReader::iTunesDefaultLibraryReader()->libraryPath(),
              QFileInfo(elsewhere).canonicalFilePath() + QLatin1Char('/') + fileName);
}

TEST_F(ITunesLibraryReader, FallsBackToTheDocumentsFolderWhetherThereIsALibraryOrNot)
{
    const auto reader = iTunesLibraryReader::iTunesDefaultLibraryReader();
    EXPECT_EQ(reader->libraryPath(), testSupport::homePath() + QStringLiteral("/Documents/iTunes/") + fileName);
    EXPECT_TRUE(reader->playlistNames().isEmpty());
    ASSERT_TRUE(waitForNotification(1));
    EXPECT_TRUE(reader->playlistNames().isEmpty());
}

TEST_F(ITunesLibraryReader, ReadsTheLibrariesThatOtherProgramsWrote)
{
    ZR_REQUIRE_SAMPLE_DATA();
    const auto expected =
        QJsonDocument::fromJson(testSupport::readFile(testSupport::sampleFile(QStringLiteral("EXPECTED.json"))))
            .object();
    int files = 0;
    for (auto entry = expected.begin(); entry != expected.end(); ++entry) {
        if (!entry.key().startsWith(QLatin1String("itunes/")))
            continue;
        ++files;
        SCOPED_TRACE(qPrintable(entry.key()));
        static const QRegularExpression counts(QStringLiteral("(\\d+) tracks, (\\d+) playlists"));
        const auto match = counts.match(entry.value().toObject().value(QStringLiteral("expected")).toString());
        ASSERT_TRUE(match.hasMatch());
        const QString path = testSupport::sampleFile(entry.key());
        const auto reader = readerOf(path);
        EXPECT_FALSE(reader->readError());
        EXPECT_EQ(reader->playlistNames().size(), match.captured(2).toInt());

        // Every song of every playlist against a walk without indexes.
        const PropertyListValue root = platform::PropertyList::read(path).value();
        EXPECT_EQ(root.value(u"Tracks").count(), match.captured(1).toInt());
        const QVariantMap tracks = root.value(u"Tracks").toVariant().toMap();
        for (const PropertyListView list : root.PropertyListView::value(u"Playlists").elements()) {
            if (reader->playlistInfoForName(list.value(u"Name").toString()) != list)
                continue; // an earlier one of the same name
            QVariantList songs;
            for (const PropertyListView item : list.value(u"Playlist Items").elements()) {
                const auto found = tracks.find(QString::number(item.value(u"Track ID").toInteger()));
                if (found == tracks.end()
                    || found->toMap()
                            .value(QStringLiteral("Genre"))
                            .toString()
                            .compare(QLatin1String("podcast"), Qt::CaseInsensitive)
                        == 0
                    || found->toMap()
                            .value(QStringLiteral("Kind"))
                            .toString()
                            .compare(QLatin1String("quicktime movie file"), Qt::CaseInsensitive)
                        == 0)
                    continue;
                songs.append(*found);
            }
            QVariantList listed;
            for (const PropertyListView &song : reader->songsInPlaylist(list.value(u"Name").toString()))
                listed.append(song.toVariant());
            EXPECT_EQ(listed, songs) << qPrintable(list.value(u"Name").toString());
        }
    }
    EXPECT_GE(files, 7);
}

} // namespace
