#include "ZRCommon/iPhotoAlbumReader.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/TextFolding.h"
#include "ReaderTestSupport.h"
#include "Support/TestSupport.h"
#include "ZRCommon/ZRImageThumbnail.h"
#include "ZRFoundation/ZRProcessServer.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QVariant>

#include <atomic>
#include <thread>

namespace {

using platform::PropertyListView;

struct CancelledUnit : ZRWorkUnit {
    void processWithServer(ZRProcessServer &) override { }
};

QVariantMap photo(const QString &caption, const QVariantMap &more = {})
{
    QVariantMap map{{QStringLiteral("Caption"), caption},
                    {QStringLiteral("MediaType"), QStringLiteral("Image")},
                    {QStringLiteral("ThumbPath"), QString(QStringLiteral("/thumbs/") + caption)},
                    {QStringLiteral("ImagePath"), QString(QStringLiteral("/images/") + caption)}};
    map.insert(more);
    return map;
}

QVariantMap album(const QString &name, const QVariantList &keys)
{
    return {{QStringLiteral("AlbumName"), name}, {QStringLiteral("KeyList"), keys}};
}

QByteArray database(const QVariant &photos, const QVariant &albums)
{
    const QVariantMap root{{QStringLiteral("Master Image List"), photos}, {QStringLiteral("List of Albums"), albums}};
    return platform::PropertyList::writeXml(root).valueOr({});
}

QByteArray smallDatabase()
{
    const QVariantMap photos{{QStringLiteral("1"), photo(QStringLiteral("Beach.JPG"))},
                             {QStringLiteral("2"), photo(QStringLiteral("Forest"))}};
    return database(photos,
                    QVariantList{album(QStringLiteral("Library"), {QStringLiteral("1"), QStringLiteral("2")}),
                                 album(QStringLiteral("Sea"), {QStringLiteral("1")})});
}

QString titles(const iPhotoAlbumReader::ThumbnailList &thumbnails)
{
    QStringList texts;
    for (const auto &thumbnail : thumbnails)
        texts.append(thumbnail->title());
    return texts.join(QLatin1Char(' '));
}

struct IPhotoAlbumReader : testSupport::ReaderTest<testSupport::AlbumReading> {
    IPhotoAlbumReader()
        : ReaderTest(testSupport::homePath() + QStringLiteral("/iPhoto Library"))
    { }
    /// The photos of one album.
    iPhotoAlbumReader::ThumbnailList listed(const QVariantMap &photos, const QVariantList &keys,
                                            const QString &search = {})
    {
        return readerOf(database(photos, QVariantList{album(QStringLiteral("A"), keys)}))
            ->imageThumbnailsInAlbum(QStringLiteral("A"), search);
    }
};

TEST_F(IPhotoAlbumReader, TakesTheDatabaseOrTheFolderThatHoldsIt)
{
    const auto pathFor = [](const char *path) {
        return std::make_shared<iPhotoAlbumReader>(QString::fromUtf8(path))->albumPath();
    };
    EXPECT_EQ(pathFor("/x/iPhoto Library/AlbumData.xml"), u"/x/iPhoto Library/AlbumData.xml");
    EXPECT_EQ(pathFor("/x/iPhoto Library"), u"/x/iPhoto Library/AlbumData.xml");
    EXPECT_EQ(pathFor("/x/iPhoto Library/"), u"/x/iPhoto Library/AlbumData.xml");
    EXPECT_EQ(pathFor("/x/albumdata.xml"), u"/x/albumdata.xml/AlbumData.xml");
    EXPECT_EQ(pathFor("/x/My AlbumData.xml"), u"/x/My AlbumData.xml");
    EXPECT_EQ(pathFor("/"), u"/AlbumData.xml");
    EXPECT_EQ(pathFor(""), u"AlbumData.xml");
}

TEST_F(IPhotoAlbumReader, TakesADatabaseOfAnyNameWithItsLibraryFolder)
{
    const QString path = testSupport::homePath() + QStringLiteral("/saved albums.plist");
    testSupport::writeFile(
        path,
        database(QVariantMap{{QStringLiteral("1"),
                              photo(QStringLiteral("a"),
                                    {{QStringLiteral("ImagePath"), QStringLiteral("/old/iPhoto Library/x.jpg")}})}},
                 QVariantList{album(QStringLiteral("A"), {QStringLiteral("1")})}));
    const auto reader = read(std::make_shared<iPhotoAlbumReader>(path, QStringLiteral("/volume/photos")));
    EXPECT_EQ(reader->albumPath(), path);
    const auto thumbnails = reader->imageThumbnailsInAlbum(QStringLiteral("A"));
    ASSERT_EQ(thumbnails.size(), 1);
    EXPECT_EQ(thumbnails[0]->imagePath(), u"/volume/photos/x.jpg");
    // Neither is looked at for the name of a database.
    EXPECT_EQ(std::make_shared<iPhotoAlbumReader>(m_path, QString())->albumPath(), m_path);
}

TEST_F(IPhotoAlbumReader, FindsTheUsersDatabaseInThePicturesFolder)
{
    EXPECT_EQ(iPhotoAlbumReader::iPhotoDefaultAlbumReader()->albumPath(),
              testSupport::homePath() + QStringLiteral("/Pictures/iPhoto Library/AlbumData.xml"));
}

TEST_F(IPhotoAlbumReader, ReadsNothingUntilItIsAskedAndThenOnce)
{
    testSupport::writeFile(m_path, smallDatabase());
    EXPECT_FALSE(std::make_shared<iPhotoAlbumReader>(m_path)->isReading());
    const auto reader = readerOf(m_folder);
    EXPECT_EQ(reader->albumNames(), QStringList({QStringLiteral("Library"), QStringLiteral("Sea")}));
    testSupport::writeFile(m_path, database(QVariantMap(), QVariantList()));
    EXPECT_EQ(reader->albumNames().size(), 2);
    EXPECT_EQ(m_notifications.count(), 1);
}

TEST_F(IPhotoAlbumReader, StartsReadingWhenPhotosAreAskedForFirst)
{
    testSupport::writeFile(m_path, smallDatabase());
    const auto reader = std::make_shared<iPhotoAlbumReader>(m_path);
    EXPECT_TRUE(reader->imageThumbnailsInAlbum(QStringLiteral("Library")).isEmpty());
    EXPECT_TRUE(reader->isReading());
    ASSERT_TRUE(waitForNotification(1));
    EXPECT_EQ(titles(reader->imageThumbnailsInAlbum(QStringLiteral("Library"))), u"Beach Forest");
}

TEST_F(IPhotoAlbumReader, ListsPhotosInAlbumOrderWithRepetitions)
{
    const auto thumbnails =
        listed({{QStringLiteral("7"), photo(QStringLiteral("seven"))},
                {QStringLiteral("08"), photo(QStringLiteral("eight"))},
                {QStringLiteral("x&y"), photo(QStringLiteral("xy"))}},
               {QStringLiteral("x&y"), QStringLiteral("08"), QStringLiteral("7"), QStringLiteral("08")});
    EXPECT_EQ(titles(thumbnails), u"xy eight seven eight");
    EXPECT_EQ(thumbnails[1], thumbnails[3]);
    EXPECT_EQ(thumbnails[2]->imagePath(), u"/images/seven");
    EXPECT_FALSE(thumbnails[2]->creationDate().isValid());
}

TEST_F(IPhotoAlbumReader, GivesOneRecordForAPhotoOfSeveralAlbums)
{
    const auto reader = readerOf(smallDatabase());
    EXPECT_EQ(reader->imageThumbnailsInAlbum(QStringLiteral("Library"))[0],
              reader->imageThumbnailsInAlbum(QStringLiteral("Sea"), QStringLiteral("b"))[0]);
}

TEST_F(IPhotoAlbumReader, KnowsNoPhotosOfAnUnknownAlbumAndTakesTheFirstOfOneName)
{
    const auto reader = readerOf(database(QVariantMap{{QStringLiteral("1"), photo(QStringLiteral("one"))},
                                                      {QStringLiteral("2"), photo(QStringLiteral("two"))}},
                                          QVariantList{album(QStringLiteral("Mix"), {QStringLiteral("1")}),
                                                       album(QStringLiteral("Mix"), {QStringLiteral("2")})}));
    EXPECT_EQ(reader->albumNames().size(), 2);
    EXPECT_EQ(titles(reader->imageThumbnailsInAlbum(QStringLiteral("Mix"))), u"one");
    for (const QString &name : {QStringLiteral("mix"), QStringLiteral("Mi"), QString()})
        EXPECT_TRUE(reader->imageThumbnailsInAlbum(name).isEmpty());
}

TEST_F(IPhotoAlbumReader, LeavesOutWhatIsNoImage)
{
    QVariantMap plain = photo(QStringLiteral("plain"));
    plain.remove(QStringLiteral("MediaType"));
    const QVariantMap photos{
        {QStringLiteral("1"), photo(QStringLiteral("movie"), {{QStringLiteral("MediaType"), QStringLiteral("Movie")}})},
        {QStringLiteral("2"), plain},
        {QStringLiteral("3"), photo(QStringLiteral("lower"), {{QStringLiteral("MediaType"), QStringLiteral("image")}})},
        {QStringLiteral("4"), photo(QStringLiteral("number"), {{QStringLiteral("MediaType"), 1}})},
        {QStringLiteral("5"), photo(QStringLiteral("image"))}};
    EXPECT_EQ(titles(listed(photos,
                            {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4"),
                             QStringLiteral("5")})),
              QStringLiteral("plain image"));
}

TEST_F(IPhotoAlbumReader, RemovesOnlyAnUpperCaseExtensionFromTheTitle)
{
    QVariantMap untitled = photo(QString());
    untitled.remove(QStringLiteral("Caption"));
    const QVariantMap photos{{QStringLiteral("1"), photo(QStringLiteral("IMG_0001.JPG"))},
                             {QStringLiteral("2"), photo(QStringLiteral("IMG_0001.jpg"))},
                             {QStringLiteral("3"), photo(QStringLiteral("a.JPG.JPG"))},
                             {QStringLiteral("4"), untitled}};
    const auto thumbnails =
        listed(photos, {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4")});
    EXPECT_EQ(titles(thumbnails), u"IMG_0001 IMG_0001.jpg a.JPG ");
}

TEST_F(IPhotoAlbumReader, SearchesTheCaptionAsItStandsWhateverItsCase)
{
    const QVariantMap photos{{QStringLiteral("1"), photo(QStringLiteral("Beach.JPG"))},
                             {QStringLiteral("2"), photo(QStringLiteral("\u00C9t\u00E9"))},
                             {QStringLiteral("3"), QVariantMap()},
                             {QStringLiteral("4"), photo(QStringLiteral("x"), {{QStringLiteral("Caption"), 7}})}};
    const QVariantList keys{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4")};
    EXPECT_EQ(listed(photos, keys).size(), 4);
    EXPECT_EQ(titles(listed(photos, keys, QStringLiteral("JPG"))), u"Beach");
    EXPECT_EQ(titles(listed(photos, keys, QStringLiteral("jpg"))), u"Beach");
    EXPECT_EQ(titles(listed(photos, keys, QStringLiteral("beach"))), u"Beach");
    EXPECT_EQ(titles(listed(photos, keys, QStringLiteral("E\u0301T"))), u"\u00C9t\u00E9");
    EXPECT_EQ(listed(photos, keys, QStringLiteral("7")).size(), 0);
}

TEST_F(IPhotoAlbumReader, FindsTheFilesOfALibraryThatWasMoved)
{
    const QString old = QStringLiteral("/Users/a/Pictures/iPhoto Library");
    const QString there = testSupport::homePath() + QStringLiteral("/iPhoto Library old/there.jpg");
    testSupport::writeFile(there, "x");
    const auto imagePath = [&](const QString &path) {
        return listed({{QStringLiteral("1"), photo(QStringLiteral("a"), {{QStringLiteral("ImagePath"), path}})}},
                      {QStringLiteral("1")})
            .value(0)
            ->imagePath();
    };
    EXPECT_EQ(imagePath(old + QStringLiteral("/Data/2005/x.jpg")), m_folder + QStringLiteral("/Data/2005/x.jpg"));
    EXPECT_EQ(imagePath(old), m_folder);
    EXPECT_EQ(imagePath(old + QStringLiteral("//Data/x/")), m_folder + QStringLiteral("/Data/x"));
    EXPECT_EQ(imagePath(QStringLiteral("iPhoto Library/x.jpg")), m_folder + QStringLiteral("/x.jpg"));
    EXPECT_EQ(imagePath(old + QStringLiteral("/iPhoto Library/x.jpg")),
              m_folder + QStringLiteral("/iPhoto Library/x.jpg")); // the first
    EXPECT_EQ(imagePath(there), there); // is there
    EXPECT_EQ(imagePath(QStringLiteral("/gone/x.jpg")), u"/gone/x.jpg");
    EXPECT_EQ(imagePath(QStringLiteral("/Users/a/iphoto library/x.jpg")), u"/Users/a/iphoto library/x.jpg");
    EXPECT_EQ(imagePath(QString()), QString());
}

TEST_F(IPhotoAlbumReader, FindsTheThumbnailsOfALibraryThatWasMoved)
{
    QImage picture(8, 6, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QDir().mkpath(m_folder + QStringLiteral("/Data"));
    ASSERT_TRUE(picture.save(m_folder + QStringLiteral("/Data/x.png")));
    const auto thumbnails =
        listed({{QStringLiteral("1"),
                 photo(QStringLiteral("a"),
                       {{QStringLiteral("ThumbPath"), QStringLiteral("/old/iPhoto Library/Data/x.png")}})}},
               {QStringLiteral("1")});
    ASSERT_EQ(thumbnails.size(), 1);
    EXPECT_TRUE(thumbnails[0]->imageToDisplay());
}

TEST_F(IPhotoAlbumReader, StopsAtOnceWhenItIsCancelled)
{
    const auto reader = readerOf(smallDatabase());
    CancelledUnit unit;
    EXPECT_EQ(reader->imageThumbnailsInAlbum(QStringLiteral("Library"), {}, &unit).size(), 2);
    unit.setCancelFlag(true);
    EXPECT_TRUE(reader->imageThumbnailsInAlbum(QStringLiteral("Library"), {}, &unit).isEmpty());
}

TEST_F(IPhotoAlbumReader, StopsBetweenKeysWhenItIsCancelledFromAnotherThread)
{
    QVariantMap photos;
    QVariantList keys;
    for (int i = 0; i < 20'000; ++i) {
        photos.insert(QString::number(i), photo(QString::number(i)));
        keys.append(QString::number(i));
    }
    const auto reader = readerOf(database(photos, QVariantList{album(QStringLiteral("A"), keys)}));
    const QDeadlineTimer deadline(10'000);
    qsizetype count = 0;
    while ((count == 0 || count == keys.size()) && !deadline.hasExpired()) {
        CancelledUnit unit;
        std::atomic<bool> listing = false;
        std::thread canceller([&] {
            while (!listing)
                std::this_thread::yield();
            unit.setCancelFlag(true);
        });
        listing = true;
        count = reader->imageThumbnailsInAlbum(QStringLiteral("A"), QStringLiteral("1"), &unit).size();
        canceller.join();
    }
    EXPECT_GT(count, 0);
    EXPECT_LT(count, keys.size());
}

TEST_F(IPhotoAlbumReader, ListsPhotosOnAWorkerWhileTheMainThreadTakesTheDatabase)
{
    testSupport::writeFile(m_path, smallDatabase());
    for (int round = 0; round < 20; ++round) {
        const int before = m_notifications.count();
        const auto reader = std::make_shared<iPhotoAlbumReader>(m_path);
        std::atomic<bool> done = false;
        std::thread worker([&] {
            while (reader->imageThumbnailsInAlbum(QStringLiteral("Library"), QStringLiteral("e")).size() != 2)
                std::this_thread::yield();
            done = true;
        });
        EXPECT_TRUE(testSupport::waitUntil([&] { return done && m_notifications.count() > before; }));
        worker.join();
    }
}

TEST_F(IPhotoAlbumReader, GivesAnEmptyRecordForAKeyWithoutAPhotoAndFailsToSearchIt)
{
    const auto reader =
        readerOf(database(QVariantMap(), QVariantList{album(QStringLiteral("A"), {QStringLiteral("1")})}));
    const auto thumbnails = reader->imageThumbnailsInAlbum(QStringLiteral("A"));
    ASSERT_EQ(thumbnails.size(), 1);
    EXPECT_EQ(thumbnails[0]->title(), QString());
    EXPECT_EQ(thumbnails[0]->imagePath(), QString());
    try {
        reader->imageThumbnailsInAlbum(QStringLiteral("A"), QStringLiteral("x"));
        FAIL();
    } catch (const platform::InternalInconsistency &failure) {
        EXPECT_EQ(failure.description(), u"Invalid parameter not satisfying: photo_dict != NULL");
        EXPECT_EQ(failure.file(), u"iPhotoAlbumReader");
        EXPECT_EQ(failure.line(), 274);
    }
}

struct OpenReader : iPhotoAlbumReader {
    using iPhotoAlbumReader::iPhotoAlbumReader;
    using iPhotoAlbumReader::photoDictMatchesString;
};

TEST_F(IPhotoAlbumReader, FailsToMatchNoPhotoEvenWithTheEmptyText)
{
    const OpenReader reader(m_path);
    EXPECT_THROW(reader.photoDictMatchesString(PropertyListView(), QByteArray()), platform::InternalInconsistency);
    const auto photoDict =
        platform::PropertyList::parse("<dict><key>Caption</key><string>Sea &#38; sun</string></dict>");
    EXPECT_TRUE(reader.photoDictMatchesString(photoDict.value(), QByteArray()));
    EXPECT_TRUE(reader.photoDictMatchesString(photoDict.value(), "a & s"));
    EXPECT_FALSE(reader.photoDictMatchesString(photoDict.value(), "moon"));
}

TEST_F(IPhotoAlbumReader, PassesOverWhatIsOfTheWrongType)
{
    EXPECT_TRUE(readerOf(database(QVariantMap(), QStringLiteral("x")))->albumNames().isEmpty());
    const auto reader = readerOf(database(
        QVariantMap{{QStringLiteral("12"), photo(QStringLiteral("twelve"))},
                    {QStringLiteral("s"), QStringLiteral("no dictionary")}},
        QVariantList{QVariantMap{{QStringLiteral("AlbumName"), 7}, {QStringLiteral("KeyList"), QVariantList{12}}},
                     QStringLiteral("x"), QVariantMap(),
                     QVariantMap{{QStringLiteral("AlbumName"), QStringLiteral("no keys")}},
                     QVariantMap{{QStringLiteral("AlbumName"), QStringLiteral("text")},
                                 {QStringLiteral("KeyList"), QStringLiteral("12")}},
                     album(QStringLiteral("good"), {12, 12.5, QVariantMap(), true, QStringLiteral("12")})}));
    EXPECT_EQ(reader->albumNames().join(QLatin1Char(',')), u"no keys,text,good");
    EXPECT_TRUE(reader->imageThumbnailsInAlbum(QStringLiteral("no keys")).isEmpty());
    EXPECT_TRUE(reader->imageThumbnailsInAlbum(QStringLiteral("text")).isEmpty());
    EXPECT_TRUE(reader->imageThumbnailsInAlbum(QString()).isEmpty()) << "an album without a name has not an empty one";
    EXPECT_EQ(titles(reader->imageThumbnailsInAlbum(QStringLiteral("good"))),
              QStringLiteral("twelve twelve")); // an integer stands for its text
}

TEST_F(IPhotoAlbumReader, TakesAPhotoThatIsNoDictionaryForAnAbsentOne)
{
    const auto reader = readerOf(database(QVariantMap{{QStringLiteral("s"), QStringLiteral("no dictionary")},
                                                      {QStringLiteral("a"), QVariantList{QVariantMap()}}},
                                          QVariantList{album(QStringLiteral("text"), {QStringLiteral("s")}),
                                                       album(QStringLiteral("array"), {QStringLiteral("a")}),
                                                       album(QStringLiteral("absent"), {QStringLiteral("x")})}));
    for (const QString &name : reader->albumNames()) {
        const auto thumbnails = reader->imageThumbnailsInAlbum(name);
        ASSERT_EQ(thumbnails.size(), 1) << qPrintable(name);
        EXPECT_EQ(thumbnails[0]->title() + thumbnails[0]->imagePath(), QString());
        EXPECT_THROW(reader->imageThumbnailsInAlbum(name, QStringLiteral("x")), platform::InternalInconsistency);
    }
}

TEST_F(IPhotoAlbumReader, IsEmptyForGoodWhenTheFileCannotBeRead)
{
    const auto reader = readerOf(m_path);
    EXPECT_EQ(reader->readError()->code, platform::ErrorCode::NotFound);
    testSupport::writeFile(m_path, smallDatabase());
    EXPECT_TRUE(reader->albumNames().isEmpty());
    EXPECT_TRUE(reader->imageThumbnailsInAlbum(QStringLiteral("Library")).isEmpty());
    EXPECT_FALSE(reader->isReading());
    EXPECT_EQ(m_notifications.count(), 1);
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("<array/>"), smallDatabase().chopped(30), QByteArray("bplist00")}) {
        const auto other = readerOf(bytes);
        EXPECT_TRUE(other->albumNames().isEmpty());
        ASSERT_TRUE(other->readError());
        EXPECT_EQ(other->readError()->path, m_path);
    }
}

TEST_F(IPhotoAlbumReader, KeepsItsRecordsAndPhotosWhenTheFileIsCutShort)
{
    const auto reader = readerOf(smallDatabase());
    const auto first = reader->imageThumbnailsInAlbum(QStringLiteral("Sea"));
    ASSERT_TRUE(QFile::resize(m_path, 10));
    const auto all = reader->imageThumbnailsInAlbum(QStringLiteral("Library"), QStringLiteral("e"));
    EXPECT_EQ(titles(all), u"Beach Forest");
    EXPECT_EQ(all[0], first[0]);
}

TEST_F(IPhotoAlbumReader, IsNotToldWhenItDiesWhileItsDatabaseIsRead)
{
    testSupport::writeFile(m_path, smallDatabase());
    std::make_shared<iPhotoAlbumReader>(m_path)->albumNames();
    const auto next = readerOf(m_path);
    EXPECT_EQ(m_notifications.count(), 1);
    EXPECT_EQ(next->albumNames().size(), 2);
}

TEST_F(IPhotoAlbumReader, ReadsTheDatabasesThatOtherProgramsWrote)
{
    ZR_REQUIRE_SAMPLE_DATA();
    const auto readerOfSample = [&](const char *file) {
        const QString path = testSupport::sampleFile(QStringLiteral("iphoto/") + QString::fromUtf8(file));
        return read(std::make_shared<iPhotoAlbumReader>(path, m_folder));
    };
    const auto albumsOf = [&](const char *file) {
        const auto reader = readerOfSample(file);
        return reader->readError() ? -1 : int(reader->albumNames().size());
    };
    EXPECT_EQ(albumsOf("AlbumData-5.0.4-1image.xml"), 4);
    EXPECT_EQ(albumsOf("AlbumData-minimal-rolls-only.xml"), 0);
    EXPECT_EQ(albumsOf("chromium-cases/bad-mismatched-tag.xml"), -1);
    EXPECT_EQ(albumsOf("chromium-cases/empty-dict-no-xml-decl.xml"), 0);
    EXPECT_EQ(albumsOf("chromium-cases/min-1photo-string-dates.xml"), 0);

    const auto reader = readerOfSample("AlbumData-5.0.4-1image.xml");
    qsizetype most = 0;
    for (const QString &name : reader->albumNames())
        most = std::max(most, reader->imageThumbnailsInAlbum(name).size());
    EXPECT_EQ(most, 1);
}

} // namespace
