#include "ZRCommon/ZRImageCatalog.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Support/FolderTest.h"
#include "ZRFoundation/ZRWorkUnit.h"

#include <QBuffer>
#include <QImage>
#include <QSettings>

namespace {

using platform::UserDefaults;

const QString foldersKey = QStringLiteral("PhotoLibraryCustomCatalogFolders");

class ZRImageCatalogTest : public testSupport::FolderTest
{
protected:
    ZRImageCatalog catalog;

    ~ZRImageCatalogTest() override { UserDefaults::standard().remove(foldersKey); }
    QString folderWith(const char *name, const QStringList &pictures = {}) const
    {
        QDir().mkpath(in(name));
        for (const QString &picture : pictures) {
            QImage image(20, 10, QImage::Format_RGB32);
            image.fill(Qt::blue);
            EXPECT_TRUE(image.save(in(name) + u'/' + picture, "jpg"));
        }
        return in(name);
    }
    static QStringList saved()
    {
        QStringList paths;
        for (const QVariant &path : UserDefaults::standard().array(foldersKey))
            paths.append(path.toString());
        return paths;
    }
    static QStringList titles(const ZRImageCatalog::ThumbnailList &list)
    {
        QStringList texts;
        for (const auto &each : list)
            texts.append(each->title());
        texts.sort();
        return texts;
    }
};

TEST_F(ZRImageCatalogTest, IsOneForTheApplication)
{
    EXPECT_EQ(&ZRImageCatalog::sharedImageCatalog(), &ZRImageCatalog::sharedImageCatalog());
}

TEST_F(ZRImageCatalogTest, BeginsEmptyAndSavesTheFirstFolder)
{
    EXPECT_TRUE(catalog.catalogFolders().isEmpty());
    EXPECT_FALSE(UserDefaults::standard().object(foldersKey).isValid());
    const QString path = folderWith("a");
    const auto added = catalog.addToCatalogedFolders({path});
    ASSERT_EQ(added.size(), 1);
    EXPECT_EQ(added[0]->folderPath(), path);
    EXPECT_EQ(catalog.catalogFolders(), added);
    EXPECT_EQ(saved(), QStringList(path));
    EXPECT_TRUE(catalog.imageCache().hasCacheForCatalogFolder(*added[0])) << "its cache is built at once";
}

TEST_F(ZRImageCatalogTest, WritesItsSettingToTheDiskAtOnce)
{
    const QString file = QSettings().fileName();
    const auto added = catalog.addToCatalogedFolders({folderWith("kept"), folderWith("taken out")});
    EXPECT_TRUE(testSupport::readFile(file).contains("taken out"));
    catalog.removeFromCatalogedFolders(added[1]);
    EXPECT_TRUE(testSupport::readFile(file).contains("kept"));
    EXPECT_FALSE(testSupport::readFile(file).contains("taken out"));
}

TEST_F(ZRImageCatalogTest, LoadsTheSavedFoldersInOrderOnTheFirstQuestion)
{
    const QStringList paths{in("b"), in("a"), in("b")}; // none of them is there, one comes twice
    UserDefaults::standard().set(foldersKey, QVariant(paths));
    QStringList loaded;
    for (const auto &each : catalog.catalogFolders())
        loaded.append(each->folderPath());
    EXPECT_EQ(loaded, paths);
    UserDefaults::standard().set(foldersKey, QVariant(QStringList()));
    EXPECT_EQ(catalog.catalogFolders().size(), 3);
}

TEST_F(ZRImageCatalogTest, HoldsOnlyWhatWasAddedWhenThatCameBeforeTheFirstQuestion)
{
    UserDefaults::standard().set(foldersKey, QVariant(QStringList(in("old"))));
    catalog.addToCatalogedFolders({folderWith("new")});
    ASSERT_EQ(catalog.catalogFolders().size(), 1);
    EXPECT_EQ(catalog.catalogFolders()[0]->folderPath(), in("new"));
    EXPECT_EQ(saved(), QStringList({in("old"), in("new")}));
}

TEST_F(ZRImageCatalogTest, TakesAFolderTwice)
{
    const QString path = folderWith("a");
    EXPECT_EQ(catalog.addToCatalogedFolders({path, path}).size(), 2);
    catalog.addToCatalogedFolders({path});
    EXPECT_EQ(catalog.catalogFolders().size(), 3);
    EXPECT_EQ(saved(), QStringList({path, path, path}));
}

TEST_F(ZRImageCatalogTest, RemovesOneFolderButEverySavedPathThatIsTheSame)
{
    const QString path = folderWith("a", {QStringLiteral("x.jpg")});
    const auto added = catalog.addToCatalogedFolders({path, folderWith("b"), path});
    catalog.removeFromCatalogedFolders(added[2]);
    EXPECT_EQ(catalog.catalogFolders(), (ZRImageCatalog::FolderList{added[0], added[1]}));
    EXPECT_EQ(saved(), QStringList(in("b")));
    EXPECT_TRUE(QFile::exists(path + QStringLiteral("/ZR.imageCache/ImageData.plist"))) << "the cache stays";
    const QDateTime written = QFileInfo(path + QStringLiteral("/ZR.imageCache/x_thumb.jpg")).lastModified();
    catalog.addToCatalogedFolders({path}); // and is used again
    EXPECT_EQ(QFileInfo(path + QStringLiteral("/ZR.imageCache/x_thumb.jpg")).lastModified(), written);
}

TEST_F(ZRImageCatalogTest, FindsTheFirstFolderOfAName)
{
    const auto added = catalog.addToCatalogedFolders({folderWith("one/Photos"), folderWith("two/Photos")});
    EXPECT_EQ(catalog.catalogFolderWithName(QStringLiteral("Photos")), added[0]);
    EXPECT_EQ(catalog.catalogFolderWithName(QStringLiteral("photos")), nullptr);
}

TEST_F(ZRImageCatalogTest, PassesOnThatACacheCannotBeBuilt)
{
    const QString good = folderWith("good");
    EXPECT_THROW(catalog.addToCatalogedFolders({good, in("missing/b")}), ZRImageCacheCouldNotCreateFolderException);
    EXPECT_EQ(catalog.catalogFolders().size(), 2);
    EXPECT_TRUE(saved().isEmpty());
}

TEST_F(ZRImageCatalogTest, ListsAFolder)
{
    const QString path = folderWith("a",
                                    {QStringLiteral("Beach.jpg"), QStringLiteral("hill.jpg"),
                                     QStringLiteral("my jpg.jpg"), QStringLiteral("\u00C9t\u00E9.jpg")});
    const ZRImageCatalogFolder photos(path, &catalog);
    const auto list = [&](const QString &text) {
        return titles(catalog.imageThumbnailsForCatalogFolder(photos, text));
    };
    EXPECT_EQ(list(QString()).size(), 4);
    EXPECT_EQ(list(QStringLiteral("beach")), QStringList(QStringLiteral("Beach")));
    EXPECT_EQ(list(QStringLiteral("EA")), QStringList(QStringLiteral("Beach")));
    EXPECT_EQ(list(QStringLiteral("E\u0301T")), QStringList(QStringLiteral("\u00C9t\u00E9")));
    EXPECT_EQ(list(QStringLiteral("jpg")), QStringList(QStringLiteral("my jpg"))) << "never the extension";
    EXPECT_TRUE(list(QStringLiteral("nothing")).isEmpty());
    const auto records = photos.imageThumbnailsThatMatchSearchString(QStringLiteral("Beach"));
    ASSERT_EQ(records.size(), 1);
    EXPECT_EQ(records[0]->imagePath(), path + QStringLiteral("/Beach.jpg"));
    EXPECT_FALSE(records[0]->creationDate().isValid());
    EXPECT_EQ(records[0]->imageToDisplay()->size(), QSizeF(20, 10));
    EXPECT_NE(photos.imageThumbnailsThatMatchSearchString(QStringLiteral("Beach"))[0], records[0])
        << "records are made anew";
    QFile::remove(path + QStringLiteral("/hill.jpg"));
    EXPECT_EQ(list(QString()).size(), 3) << "each listing brings the cache up to date";
}

TEST_F(ZRImageCatalogTest, HandsOutWhatALinkStandsFor)
{
    const QString elsewhere = folderWith("elsewhere", {QStringLiteral("deep.jpg")});
    const QString path = folderWith("a", {QStringLiteral("plain.jpg")});
    link("../elsewhere/deep.jpg", "a/link.jpg");
    // Photos of a folder that was moved here, whose paths are those of its old place, and of folders further down.
    link("elsewhere/deep.jpg", "old.jpg");
    link("../elsewhere/deep.jpg", "a/below");
    const ZRImageCatalogFolder photos(path, &catalog);
    const auto paths = [&](const ZRImageCatalogFolder &of) {
        QMap<QString, QString> byTitle;
        for (const auto &each : of.imageThumbnailsThatMatchSearchString(QString()))
            byTitle.insert(each->title(), each->imagePath());
        return byTitle;
    };
    const QString deep = elsewhere + QStringLiteral("/deep.jpg");
    const QMap<QString, QString> expected{{QStringLiteral("plain"), path + QStringLiteral("/plain.jpg")},
                                          {QStringLiteral("link"), deep},
                                          {QStringLiteral("below"), deep}};
    EXPECT_EQ(paths(photos), expected) << "when the cache is made";
    EXPECT_EQ(paths(photos), expected) << "when it is there";
    EXPECT_EQ(paths(ZRImageCatalogFolder(path + u'/', &catalog)), expected) << "with a slash at its end";

    const QString index = path + QStringLiteral("/ZR.imageCache/ImageData.plist");
    QVariantMap list = platform::PropertyList::read(index).value().toVariant().toMap();
    QVariantList entries = list.value(QStringLiteral("Image Data")).toList();
    for (QVariant &entry : entries) {
        QVariantMap map = entry.toMap();
        if (map.value(QStringLiteral("Caption")) == QStringLiteral("plain")) {
            link("elsewhere/deep.jpg", "plain.jpg");
            map.insert(QStringLiteral("ImagePath"), in("plain.jpg"));
        }
        entry = map;
    }
    list.insert(QStringLiteral("Image Data"), entries);
    ASSERT_FALSE(platform::PropertyList::writeXmlFile(index, list));
    EXPECT_EQ(paths(photos).value(QStringLiteral("plain")), deep) << "a link of the same name in the old place";
}

TEST_F(ZRImageCatalogTest, StopsListingWhenItIsCancelled)
{
    struct Cancel : ZRWorkUnit {
        void processWithServer(ZRProcessServer &) override { }
    } cancel;
    const ZRImageCatalogFolder photos(folderWith("a", {QStringLiteral("x.jpg"), QStringLiteral("y.jpg")}), &catalog);
    EXPECT_EQ(photos.imageThumbnailsThatMatchSearchString(QString(), &cancel).size(), 2);
    cancel.setCancelFlag(true);
    EXPECT_TRUE(photos.imageThumbnailsThatMatchSearchString(QString(), &cancel).isEmpty());
}

TEST_F(ZRImageCatalogTest, ListsNothingOfAFolderThatIsNotThere)
{
    const ZRImageCatalogFolder photos(in("missing"), &catalog);
    EXPECT_TRUE(photos.imageThumbnailsThatMatchSearchString(QString()).isEmpty());
    EXPECT_FALSE(QFile::exists(in("missing")));
}

TEST_F(ZRImageCatalogTest, NamesAFolderAfterItsPathAlways)
{
    for (const auto &[path, name] : {std::pair("/a/Photos", "Photos"), std::pair("/a/Photos/", "Photos"),
                                     std::pair("/", "/"), std::pair("plain", "plain")}) {
        ZRImageCatalogFolder photos(QString::fromUtf8(path), &catalog);
        EXPECT_EQ(photos.name(), QString::fromUtf8(name));
        photos.setName(QStringLiteral("other"));
        EXPECT_EQ(photos.name(), QString::fromUtf8(name));
    }
    EXPECT_EQ(ZRImageCatalogFolder(QString(), &catalog).name(), QString());
}

TEST_F(ZRImageCatalogTest, WantsACatalogForAFolder)
{
    try {
        ZRImageCatalogFolder(QStringLiteral("/a"), nullptr);
        FAIL();
    } catch (const platform::InternalInconsistency &failure) {
        EXPECT_EQ(failure.description(), u"Image catalog argument cannot be null.");
        EXPECT_EQ(failure.file(), u"ZRImageCatalogFolder");
        EXPECT_EQ(failure.line(), 34);
    }
}

TEST_F(ZRImageCatalogTest, WantsAnEntryToSearchIn)
{
    struct Folder : ZRImageCatalogFolder {
        using ZRImageCatalogFolder::photoDictMatchesString;
        using ZRImageCatalogFolder::ZRImageCatalogFolder;
    };
    try {
        Folder(QStringLiteral("/a"), &catalog).photoDictMatchesString({}, "text");
        FAIL();
    } catch (const platform::InternalInconsistency &failure) {
        EXPECT_EQ(failure.description(), u"Invalid parameter not satisfying: photo_dict != NULL");
        EXPECT_EQ(failure.file(), u"ZRImageCatalogFolder");
        EXPECT_EQ(failure.line(), 118);
    }
}

} // namespace
