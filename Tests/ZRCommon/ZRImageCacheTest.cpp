#include "ZRCommon/ZRImageCache.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Support/TestSupport.h"
#include "ZRCommon/ImageCacheTestSupport.h"
#include "ZRFoundation/ZRWorkUnit.h"

#include <QThread>

#include <algorithm>
#include <fcntl.h>
#include <random>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace {

using platform::PropertyListValue;
using platform::PropertyListView;
using testSupport::photoName;
using testSupport::PickyCache;
using testSupport::picture;
using testSupport::readFile;
using testSupport::writeFile;

using ZRImageCacheTest = testSupport::ImageCacheTest;

TEST_F(ZRImageCacheTest, HasPublishedNames)
{
    EXPECT_EQ(ZRCacheFolderName, u"ZR.imageCache");
    EXPECT_EQ(ZRCacheFilename, u"ImageData.plist");
    EXPECT_EQ(ZRImageCacheCouldNotCreateFolderException(QString()).name(),
              u"ZRImageCacheCouldNotCreateFolderException");
    EXPECT_EQ(ZRImageCacheExistsException(QString()).name(), u"ZRImageCacheExistsException");
}

TEST_F(ZRImageCacheTest, KeepsThumbnailsOfThePicturesAndAnIndex)
{
    put("a.jpg");
    put("b.png", picture(30, 20, "png"));
    put("notes.txt", "notes");
    put(".DS_Store", picture(30, 20)); // even if it were a picture
    EXPECT_FALSE(cache.hasCacheForCatalogFolder(catalogFolder));
    update();
    EXPECT_TRUE(cache.hasCacheForCatalogFolder(catalogFolder));
    EXPECT_EQ(
        namesInCache(),
        QStringList({QStringLiteral("ImageData.plist"), QStringLiteral("a_thumb.jpg"), QStringLiteral("b_thumb.png")}));
    for (const char *name : {"a_thumb.jpg", "b_thumb.png"}) // JPEG data whatever the name says
        EXPECT_EQ(thumbnailSize(name), QSize(30, 20)) << name;
    EXPECT_EQ(sortedCaptions(), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    const PropertyListValue entries = cache.photoInformationForCatalogFolder(catalogFolder);
    for (const PropertyListView entry : entries.elements()) {
        const QString name = entry.value(u"Caption").toString() == u"a" ? QStringLiteral("a") : QStringLiteral("b");
        const QString extension = name == u"a" ? QStringLiteral(".jpg") : QStringLiteral(".png");
        EXPECT_EQ(entry.count(), 3);
        EXPECT_EQ(entry.value(u"ImagePath").toString(), photos + u'/' + name + extension);
        EXPECT_EQ(entry.value(u"ThumbPath").toString(),
                  cacheFolder + u'/' + name + QStringLiteral("_thumb") + extension);
    }
}

TEST_F(ZRImageCacheTest, WritesItsIndexAsAPropertyListWithAVersion)
{
    put("a.jpg");
    update();
    const QByteArray xml = readFile(index);
    EXPECT_TRUE(xml.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    EXPECT_TRUE(xml.contains("<key>Version</key>\n\t<real>1</real>"));
    const auto read = platform::PropertyList::read(index);
    ASSERT_TRUE(bool(read));
    EXPECT_EQ(read.value().value(u"Version").type(), platform::PropertyListType::Real);
    EXPECT_EQ(read.value().value(u"Image Data").count(), 1);
    EXPECT_EQ(read.value().count(), 2);
}

TEST_F(ZRImageCacheTest, AddsAndDropsWhatChangedAndLeavesThumbnails)
{
    put("a.jpg");
    put("b.jpg");
    update();
    put("c.jpg");
    QFile::remove(photos + QStringLiteral("/a.jpg"));
    update();
    EXPECT_EQ(captions(), QStringList({QStringLiteral("b"), QStringLiteral("c")}));
    EXPECT_TRUE(QFile::exists(cacheFolder + QStringLiteral("/a_thumb.jpg")));
}

TEST_F(ZRImageCacheTest, LeavesTheIndexAloneWhenNothingChanged)
{
    put("a.jpg");
    put("notes.txt", "notes");
    update();
    // A property list of the same content in other words would be written in the usual ones.
    writeFile(index, readFile(index) + "<!-- untouched -->\n");
    update();
    EXPECT_TRUE(readFile(index).endsWith("<!-- untouched -->\n"));
    put("b.jpg");
    update();
    EXPECT_FALSE(readFile(index).contains("untouched"));
}

TEST_F(ZRImageCacheTest, KeepsWhatItDoesNotKnowOfTheIndex)
{
    put("a.jpg");
    put("b.jpg");
    update();
    QVariantMap list = platform::PropertyList::read(index).value().toVariant().toMap();
    list.insert(QStringLiteral("Version"), QStringLiteral("whatever"));
    list.insert(QStringLiteral("Mine"), 7);
    QVariantList entries = list.value(QStringLiteral("Image Data")).toList();
    QVariantMap first = entries[0].toMap();
    first.insert(QStringLiteral("Rating"), 5);
    entries[0] = first;
    entries.append(QStringLiteral("no entry"));
    entries.append(QVariantMap{{QStringLiteral("Caption"), QStringLiteral("no path")}});
    list.insert(QStringLiteral("Image Data"), entries);
    ASSERT_FALSE(platform::PropertyList::writeXmlFile(index, list));
    put("c.jpg");
    update();
    const auto read = platform::PropertyList::read(index);
    ASSERT_TRUE(bool(read));
    EXPECT_EQ(read.value().value(u"Version").toString(), u"whatever");
    EXPECT_EQ(read.value().value(u"Mine").toInteger(), 7);
    const PropertyListValue kept = read.value().value(u"Image Data");
    EXPECT_EQ(kept.count(), 5);
    EXPECT_EQ(kept.at(0).value(u"Rating").toInteger(), 5);
    EXPECT_EQ(kept.at(2).toString(), u"no entry");
    EXPECT_EQ(kept.at(4).value(u"Caption").toString(), u"c");
}

TEST_F(ZRImageCacheTest, ComparesNamesAlone)
{
    put("a.jpg", picture(30, 20));
    update();
    put("a.jpg", picture(60, 40)); // another picture of the same name keeps the thumbnail
    update();
    EXPECT_EQ(thumbnailSize("a_thumb.jpg"), QSize(30, 20));
    const QString moved = in("moved"); // and a folder that was moved its paths
    ASSERT_TRUE(QDir().rename(photos, moved));
    const ZRImageCatalogFolder there(moved, &catalog);
    cache.createOrUpdateCacheForCatalogFolder(there);
    EXPECT_EQ(cache.photoInformationForCatalogFolder(there).at(0).value(u"ImagePath").toString(),
              photos + QStringLiteral("/a.jpg"));
}

TEST_F(ZRImageCacheTest, DropsEveryEntryOfAFileThatIsGone)
{
    put("a.jpg");
    update();
    QVariantMap list = platform::PropertyList::read(index).value().toVariant().toMap();
    QVariantList entries = list.value(QStringLiteral("Image Data")).toList();
    list.insert(QStringLiteral("Image Data"), entries + entries);
    ASSERT_FALSE(platform::PropertyList::writeXmlFile(index, list));
    QFile::remove(photos + QStringLiteral("/a.jpg"));
    update();
    EXPECT_TRUE(captions().isEmpty());
}

TEST_F(ZRImageCacheTest, CountsAnewForEachUpdate)
{
    put("a.jpg");
    put("notes.txt", "no picture");
    ZRImageCacheUpdate followed;
    int calls = 0;
    followed.didProgress = [&](const ZRImageCacheUpdate &) { ++calls; };
    update(&followed);
    const int callsBefore = calls;
    update(&followed);
    EXPECT_EQ(followed.made, 0);
    EXPECT_EQ(followed.kept, 1);
    EXPECT_EQ(followed.refused.size(), 1);
    EXPECT_GT(calls, callsBefore);
}

TEST_F(ZRImageCacheTest, FindsItsEntriesInWhateverOrder)
{
    for (int i = 0; i < 12; ++i)
        put(photoName(i).constData());
    update();
    QVariantMap list = platform::PropertyList::read(index).value().toVariant().toMap();
    for (int round = 0; round < 20; ++round) {
        QVariantList entries = list.value(QStringLiteral("Image Data")).toList();
        std::shuffle(entries.begin(), entries.end(), std::mt19937(uint(round)));
        // Some entries twice, one without a path, one file without an entry, one entry without a file.
        entries.removeFirst();
        entries.append(entries.mid(round % 5, 2));
        entries.insert(round % 4, QVariantMap{{QStringLiteral("Caption"), QStringLiteral("no path")}});
        QVariantMap gone = entries.last().toMap();
        gone.insert(QStringLiteral("ImagePath"), QStringLiteral("/nowhere/gone.jpg"));
        entries.insert(round % 7, gone);
        QVariantMap shuffled = list;
        shuffled.insert(QStringLiteral("Image Data"), entries);
        ASSERT_FALSE(platform::PropertyList::writeXmlFile(index, shuffled));
        ZRImageCacheUpdate followed;
        update(&followed);
        EXPECT_EQ(followed.made, 1) << round;
        EXPECT_EQ(followed.kept, entries.size() - 1) << round;
        EXPECT_EQ(followed.dropped, 1) << round;
        EXPECT_EQ(captions().size(), entries.size()) << round;
        for (int i = 0; i < 12; ++i)
            EXPECT_TRUE(captions().contains(QStringLiteral("photo%1").arg(i))) << round;
    }
}

TEST_F(ZRImageCacheTest, OfDifferentEntriesOfAFileThatIsGoneDropsTheLastFirst)
{
    put("a.jpg");
    update();
    QVariantMap list = platform::PropertyList::read(index).value().toVariant().toMap();
    QVariantList entries = list.value(QStringLiteral("Image Data")).toList();
    QVariantMap other = entries[0].toMap();
    other.insert(QStringLiteral("Caption"), QStringLiteral("other"));
    entries.append(other);
    list.insert(QStringLiteral("Image Data"), entries);
    ASSERT_FALSE(platform::PropertyList::writeXmlFile(index, list));
    update();
    EXPECT_EQ(captions(), QStringList({QStringLiteral("a"), QStringLiteral("other")}));
    QFile::remove(photos + QStringLiteral("/a.jpg"));
    update();
    EXPECT_EQ(captions(), QStringList(QStringLiteral("a")));
    update();
    EXPECT_TRUE(captions().isEmpty());
}

TEST_F(ZRImageCacheTest, LimitsTheLongerSideToTheLargerOfTheSettings)
{
    put("wide.png", picture(3000, 2000, "png"));
    put("tall.jpg", picture(2000, 3000));
    put("small.jpg", picture(50, 40));
    update();
    EXPECT_EQ(thumbnailSize("wide_thumb.png"), QSize(240, 160));
    EXPECT_EQ(thumbnailSize("tall_thumb.jpg"), QSize(160, 240));
    EXPECT_EQ(thumbnailSize("small_thumb.jpg"), QSize(50, 40));
    platform::UserDefaults::standard().set(QStringLiteral("ImageCacheMaxScaleWidth"), 100);
    platform::UserDefaults::standard().set(QStringLiteral("ImageCacheMaxScaleHeight"), 300);
    put("later.jpg", picture(3000, 1500));
    update();
    EXPECT_EQ(thumbnailSize("later_thumb.jpg"), QSize(300, 150));
    platform::UserDefaults::standard().remove(QStringLiteral("ImageCacheMaxScaleWidth"));
    platform::UserDefaults::standard().remove(QStringLiteral("ImageCacheMaxScaleHeight"));
}

TEST_F(ZRImageCacheTest, RegistersItsSettings)
{
    EXPECT_EQ(ZRImageCache::maxScaleWidth(), 240);
    EXPECT_EQ(ZRImageCache::maxScaleHeight(), 180);
    EXPECT_DOUBLE_EQ(ZRImageCache::maxScaleQuality(), 0.75);
    EXPECT_EQ(platform::UserDefaults::standard().object(QStringLiteral("ImageCacheMaxScaleWidth")).typeId(),
              QMetaType::QString);
}

TEST_F(ZRImageCacheTest, AppliesTheQualityToNothing)
{
    put("a.jpg", picture(600, 400));
    platform::UserDefaults::standard().set(QStringLiteral("ImageCacheScaleQuality"), 0.01);
    update();
    put("b.jpg", picture(600, 400));
    platform::UserDefaults::standard().remove(QStringLiteral("ImageCacheScaleQuality"));
    update();
    EXPECT_EQ(readFile(cacheFolder + QStringLiteral("/a_thumb.jpg")),
              readFile(cacheFolder + QStringLiteral("/b_thumb.jpg")));
}

TEST_F(ZRImageCacheTest, NamesThumbnailsAfterTheWholeNameOfThePicture)
{
    for (const char *name : {"plain", "two.parts.jpg", ".hidden", ".hidden.jpg", "trailing.", "UPPER.JPG",
                             "s p a c e.jpg", "\xC3\xA9t\xC3\xA9.jpg", "100%.jpg", "%1.jpg", "a&b<c>.jpg"})
        put(name);
    update();
    for (const char *name : {"plain_thumb", "two.parts_thumb.jpg", ".hidden_thumb", ".hidden_thumb.jpg",
                             "trailing_thumb.", "UPPER_thumb.JPG", "s p a c e_thumb.jpg", "\xC3\xA9t\xC3\xA9_thumb.jpg",
                             "100%_thumb.jpg", "%1_thumb.jpg", "a&b<c>_thumb.jpg"})
        EXPECT_EQ(thumbnailSize(name), QSize(30, 20)) << name;
    EXPECT_EQ(captions().size(), 11);
    EXPECT_TRUE(captions().contains(QStringLiteral("two.parts")));
    EXPECT_TRUE(captions().contains(QStringLiteral("%1")));
}

TEST_F(ZRImageCacheTest, OffersEverythingElseToTheDecoderAndSaysWhatWasRefused)
{
    put("good.jpg");
    put("subfolder/inside.jpg");
    put("empty.jpg", QByteArray());
    put("broken.jpg", picture(400, 300).first(300));
    ASSERT_EQ(mkfifo((photos + QStringLiteral("/fifo.jpg")).toUtf8().constData(), 0600), 0);
    ASSERT_EQ(symlink("/dev/zero", (photos + QStringLiteral("/device.jpg")).toUtf8().constData()), 0);
    ASSERT_EQ(symlink("missing", (photos + QStringLiteral("/dangling.jpg")).toUtf8().constData()), 0);
    ASSERT_EQ(symlink("good.jpg", (photos + QStringLiteral("/link.jpg")).toUtf8().constData()), 0);
    const int socketDescriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray socketPath = (photos + QStringLiteral("/s")).toUtf8();
    if (size_t(socketPath.size()) < sizeof address.sun_path) {
        std::copy(socketPath.begin(), socketPath.end(), address.sun_path);
        ASSERT_EQ(::bind(socketDescriptor, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    }
    writeFile(photos + QStringLiteral("/x"), "x");
    ASSERT_EQ(::rename((photos + QStringLiteral("/x")).toUtf8().constData(),
                       QByteArray(photos.toUtf8() + "/\xFF.jpg").constData()),
              0);

    ZRImageCacheUpdate followed;
    update(&followed);
    ::close(socketDescriptor);
    ::unlink(QByteArray(photos.toUtf8() + "/\xFF.jpg").constData()); // Qt cannot name it
    EXPECT_EQ(sortedCaptions(), QStringList({QStringLiteral("good"), QStringLiteral("link")}));
    EXPECT_EQ(followed.made, 2);
    EXPECT_GE(followed.refused.size(), 7);
    QStringList names;
    for (const platform::Error &error : std::as_const(followed.refused)) {
        EXPECT_FALSE(error.reason.isEmpty());
        names.append(QFileInfo(error.path).fileName());
    }
    for (const char *name : {"subfolder", "empty.jpg", "broken.jpg", "fifo.jpg", "device.jpg", "dangling.jpg"})
        EXPECT_TRUE(names.contains(QString::fromUtf8(name))) << name;
    EXPECT_FALSE(QFile::exists(photos + QStringLiteral("/subfolder/ZR.imageCache")));
}

TEST_F(ZRImageCacheTest, RefusesNamesThatItsIndexCannotHold)
{
    put("a.jpg");
    put("tab\tand\rreturn.jpg");
    put("bell\a.jpg");
    put("none\xEF\xBF\xBF.jpg"); // U+FFFF
    ZRImageCacheUpdate followed;
    update(&followed);
    EXPECT_EQ(sortedCaptions(), QStringList({QStringLiteral("a"), QStringLiteral("tab\tand\rreturn")}));
    ASSERT_EQ(followed.refused.size(), 2);
    EXPECT_EQ(followed.refused[0].code, platform::ErrorCode::UnsupportedEncoding);
    EXPECT_EQ(namesInCache().size(), 3);
    put("b.jpg"); // the others do not keep the index from being written again
    update();
    EXPECT_EQ(captions().size(), 3);
}

TEST_F(ZRImageCacheTest, ReportsEachNameThatIsNotUtf8)
{
    const QByteArray names[] = {photos.toUtf8() + "/\xFE.jpg", photos.toUtf8() + "/\xFF.jpg"};
    for (const QByteArray &name : names)
        ::close(::open(name.constData(), O_CREAT | O_WRONLY, 0600));
    ZRImageCacheUpdate followed;
    update(&followed);
    for (const QByteArray &name : names)
        ::unlink(name.constData()); // Qt cannot name them
    EXPECT_EQ(followed.refused.size(), 2);
}

TEST_F(ZRImageCacheTest, TriesWhatWasRefusedAgainAtEveryUpdate)
{
    put("later.jpg", "not yet");
    update();
    EXPECT_TRUE(captions().isEmpty());
    put("later.jpg");
    update();
    EXPECT_EQ(captions(), QStringList(QStringLiteral("later")));
}

TEST_F(ZRImageCacheTest, RefusesToCreateWhatIsThere)
{
    update();
    try {
        cache.createCacheForCatalogFolder(catalogFolder);
        FAIL();
    } catch (const platform::InternalInconsistency &failure) {
        EXPECT_EQ(failure.description(), u"Shouldn't call this method when cache alread exists");
        EXPECT_EQ(failure.file(), u"ZRImageCache");
        EXPECT_EQ(failure.line(), 71);
    }
}

TEST_F(ZRImageCacheTest, RaisesForAnIndexWithoutAListOfEntries)
{
    for (const char *content :
         {"", "damaged", "<plist><dict/></plist>",
          "<plist><dict><key>Image Data</key><string>a</string></dict></plist>", "<plist><array/></plist>"}) {
        writeFile(index, content);
        try {
            update();
            FAIL() << content;
        } catch (const platform::InternalInconsistency &failure) {
            EXPECT_EQ(failure.description(), u"image_data is expected to be mutable");
            EXPECT_EQ(failure.file(), u"ZRImageCache");
            EXPECT_EQ(failure.line(), 121);
        }
        EXPECT_EQ(readFile(index), content) << "nothing is written";
        EXPECT_TRUE(cache.photoInformationForCatalogFolder(catalogFolder).isNull());
    }
}

TEST_F(ZRImageCacheTest, RaisesWhenItsFolderCannotBeMade)
{
    const ZRImageCatalogFolder missing(in("missing/holiday"), &catalog);
    try {
        cache.createOrUpdateCacheForCatalogFolder(missing);
        FAIL();
    } catch (const ZRImageCacheCouldNotCreateFolderException &failure) {
        EXPECT_EQ(failure.reason(), u"Could not create the image cache folder at 'holiday'");
        EXPECT_STREQ(failure.what(), "Could not create the image cache folder at 'holiday'");
    }
}

TEST_F(ZRImageCacheTest, UsesWhateverStandsInPlaceOfItsFolder)
{
    put("a.jpg");
    writeFile(cacheFolder, "a file"); // in which nothing can be written
    ZRImageCacheUpdate followed;
    update(&followed);
    EXPECT_FALSE(cache.hasCacheForCatalogFolder(catalogFolder));
    EXPECT_TRUE(captions().isEmpty());
    ASSERT_EQ(followed.refused.size(), 1);
    EXPECT_EQ(followed.refused[0].reason, u"its thumbnail cannot be written");
    EXPECT_EQ(readFile(cacheFolder), "a file");

    QFile::remove(cacheFolder);
    QDir().mkpath(in("elsewhere"));
    ASSERT_EQ(symlink(in("elsewhere").toUtf8().constData(), cacheFolder.toUtf8().constData()), 0);
    update();
    EXPECT_TRUE(QFile::exists(in("elsewhere/a_thumb.jpg")));
}

TEST_F(ZRImageCacheTest, LeavesOthersFilesInItsFolderAlone)
{
    writeFile(cacheFolder + QStringLiteral("/mine.txt"), "mine");
    writeFile(cacheFolder + QStringLiteral("/.unfinished-1-1"), "of a moment ago");
    put("a.jpg");
    update();
    EXPECT_EQ(readFile(cacheFolder + QStringLiteral("/mine.txt")), "mine");
    EXPECT_TRUE(QFile::exists(cacheFolder + QStringLiteral("/.unfinished-1-1")));
}

TEST_F(ZRImageCacheTest, RemovesWhatKilledProgramsLeft)
{
    put(".unfinished-sketch.jpg");
    put("a.jpg");
    update();
    const QStringList left = {cacheFolder + QStringLiteral("/.unfinished-1-1"), index + QStringLiteral(".xYzXyZ")};
    const QStringList kept = {cacheFolder + QStringLiteral("/.unfinished-sketch_thumb.jpg"), index};
    const QStringList copies = {index + QStringLiteral(".backup"), index + QStringLiteral(".Old")};
    for (const QString &path : left + copies)
        writeFile(path, "half of it");
    const timespec longAgo[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    for (const QString &path : left + kept + copies)
        ASSERT_EQ(utimensat(AT_FDCWD, path.toUtf8().constData(), longAgo, 0), 0) << path.toStdString();
    put("b.jpg");
    update();
    for (const QString &path : left)
        EXPECT_FALSE(QFile::exists(path)) << path.toStdString();
    for (const QString &path : kept + copies)
        EXPECT_TRUE(QFile::exists(path)) << path.toStdString();
}

TEST_F(ZRImageCacheTest, PassesOverNamesThatKilledProgramsOfTheSameNumberLeft)
{
    const QString begin = cacheFolder + QStringLiteral("/.unfinished-%1-").arg(getpid());
    for (int i = 0; i < 3000; ++i)
        writeFile(begin + QString::number(i), "half a thumb");
    put("a.jpg");
    update();
    EXPECT_EQ(captions(), QStringList(QStringLiteral("a")));
}

TEST_F(ZRImageCacheTest, TellsHowFarItIs)
{
    put("a.jpg");
    put("b.jpg");
    put("notes.txt", "notes");
    ZRImageCacheUpdate followed;
    std::vector<std::pair<qsizetype, qsizetype>> steps;
    followed.didProgress = [&](const ZRImageCacheUpdate &now) { steps.emplace_back(now.done, now.total); };
    update(&followed);
    EXPECT_EQ(steps, (std::vector<std::pair<qsizetype, qsizetype>>{{0, 3}, {1, 3}, {2, 3}, {3, 3}}));
    EXPECT_EQ(followed.made, 2);
    ASSERT_EQ(followed.entries.size(), 2);
    EXPECT_EQ(followed.entries[0].toMap().value("ImagePath").toString().right(4), ".jpg");
    EXPECT_FALSE(followed.entries[1].toMap().value("ThumbPath").toString().isEmpty());
    EXPECT_EQ(followed.kept, 0);
    QFile::remove(photos + QStringLiteral("/a.jpg"));
    ZRImageCacheUpdate next;
    update(&next);
    EXPECT_EQ(next.kept, 1);
    EXPECT_EQ(next.dropped, 1);
    EXPECT_EQ(next.made, 0);
    EXPECT_EQ(next.refused.size(), 1);
    EXPECT_FALSE(next.wasCancelled);
}

struct Cancel : ZRWorkUnit {
    void processWithServer(ZRProcessServer &) override { }
};

TEST_F(ZRImageCacheTest, GoesOnNextTimeWhereItWasCancelled)
{
    for (int i = 0; i < 10; ++i)
        put(photoName(int(i)).constData());
    Cancel cancel;
    ZRImageCacheUpdate followed;
    followed.cancelFlag = &cancel;
    followed.didProgress = [&](const ZRImageCacheUpdate &now) { cancel.setCancelFlag(now.made == 4); };
    update(&followed);
    EXPECT_TRUE(followed.wasCancelled);
    EXPECT_EQ(captions().size(), 4);
    ZRImageCacheUpdate next;
    update(&next);
    EXPECT_EQ(next.made, 6);
    EXPECT_EQ(captions().size(), 10);
}

TEST_F(ZRImageCacheTest, CallsTheOverridesOfHostsForEachFileInOrder)
{
    auto owned = std::make_unique<PickyCache>();
    PickyCache &picky = *owned;
    ZRImageCatalog other(std::move(owned));
    const ZRImageCatalogFolder hosts(photos, &other);
    for (const char *name : {"a.jpg", "private.jpg", "refused.jpg", "b.jpg", "c.jpg"})
        put(name);
    const auto thread = QThread::currentThread();
    picky.beforeSaving = [&](const QString &) { EXPECT_EQ(QThread::currentThread(), thread); };
    picky.createCacheForCatalogFolder(hosts);
    EXPECT_EQ(picky.offered.size(), 4);
    EXPECT_FALSE(picky.offered.contains(QStringLiteral("private.jpg")));
    EXPECT_EQ(sortedCaptions(), QStringList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}));
    QStringList listed; // the order of the index is that of the calls
    const QStringList captionsInOrder = captions();
    for (const QString &name : std::as_const(picky.offered)) {
        if (name != u"refused.jpg")
            listed.append(name.chopped(4));
    }
    EXPECT_EQ(captionsInOrder, listed);
}

TEST_F(ZRImageCacheTest, MakesThumbnailsForHostsOutsideOfAnUpdate)
{
    struct OpenCache : ZRImageCache {
        using ZRImageCache::createThumbEntryForImageFilename;
    };
    auto owned = std::make_unique<OpenCache>();
    OpenCache &open = *owned;
    ZRImageCatalog other(std::move(owned));
    put("a.jpg");
    put("notes.txt", "notes");
    auto followed = std::make_unique<ZRImageCacheUpdate>();
    open.createCacheForCatalogFolder(ZRImageCatalogFolder(photos, &other), followed.get());
    EXPECT_EQ(followed->refused.size(), 1);
    put("b.jpg");
    put("more notes.txt", "notes");
    EXPECT_FALSE(open.createThumbEntryForImageFilename(QStringLiteral("more notes.txt"), photos));
    EXPECT_EQ(followed->refused.size(), 1) << "the update is over";
    const auto entry = open.createThumbEntryForImageFilename(QStringLiteral("b.jpg"), photos);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->value(QStringLiteral("Caption")).toString(), u"b");
    EXPECT_EQ(thumbnailSize("b_thumb.jpg"), QSize(30, 20));
}

TEST_F(ZRImageCacheTest, PassesExceptionsOnAndWritesNoIndex)
{
    auto owned = std::make_unique<PickyCache>();
    PickyCache &picky = *owned;
    ZRImageCatalog other(std::move(owned));
    const ZRImageCatalogFolder hosts(photos, &other);
    for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
        put(name);
    picky.beforeSaving = [&](const QString &) {
        if (picky.offered.size() == 2)
            throw std::runtime_error("of the host");
    };
    EXPECT_THROW(picky.createCacheForCatalogFolder(hosts), std::runtime_error);
    EXPECT_FALSE(picky.hasCacheForCatalogFolder(hosts));
    picky.beforeSaving = [](const QString &) {};
    picky.createCacheForCatalogFolder(hosts);
    EXPECT_EQ(captions().size(), 3);
}

} // namespace
