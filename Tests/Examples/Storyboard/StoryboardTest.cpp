#include "Platform/Interface/ScrollView.h"
#include "Storyboard/PhotoFolderLoader.h"
#include "Storyboard/PhotoFolderWindow.h"
#include "Storyboard/PhotoWindow.h"
#include "Support/FolderTest.h"
#include "Support/ImageSamples.h"
#include "Support/PictureDistance.h"
#include "ZRCommon/ZRPhotoMatrix.h"

#include <QAccessible>
#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QProcess>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>

namespace {

const QString samples = QStringLiteral(ZR_SAMPLE_LIBRARY "/iPhoto Library/Originals/2006/Summer");

struct Outcome {
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

Outcome run(const QStringList &arguments, const char *scale = "1")
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::fromLatin1(scale));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(ZR_BIN_DIR "/storyboard"), arguments);
    EXPECT_TRUE(process.waitForFinished(240'000)) << qPrintable(process.errorString());
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

/// The kept ones have half the size.
void compareScreenshots(const QString &folder, double mean, double share)
{
    const QDir kept(QStringLiteral(ZR_SOURCE_DIR "/Tests/Examples/Storyboard/References"));
    const QStringList names = kept.entryList({"*.png"}, QDir::Files, QDir::Name);
    EXPECT_EQ(QDir(folder).entryList({"*.png"}, QDir::Files, QDir::Name), names);
    EXPECT_EQ(names.size(), 15);
    for (const QString &name : names) {
        const QImage reference(kept.filePath(name)), screenshot(folder + QLatin1Char('/') + name);
        ASSERT_FALSE(screenshot.isNull()) << qPrintable(name);
        const auto distance = testSupport::distance(reference, screenshot, reference.size());
        EXPECT_LE(distance.mean, mean) << qPrintable(name);
        EXPECT_LE(distance.share, share) << qPrintable(name);
    }
}

struct Storyboard : testSupport::FolderTest {
    Storyboard()
    {
        QCoreApplication::setOrganizationName("Tests");
        QCoreApplication::setApplicationName("Storyboard");
    }
    /// A folder with so many small photos.
    QString folderOf(int count, const char *name = "Photos") const
    {
        QImage image(40, 30, QImage::Format_RGB32);
        for (int i = 1; i <= count; ++i) {
            image.fill(QColor::fromHsv(i * 37 % 360, 200, 200));
            testSupport::writeFile(in(name) + QStringLiteral("/Photo %1.png").arg(i),
                                   testSupport::encoded(image, "png"));
        }
        return in(name);
    }
    static void open(PhotoFolderWindow &window, const QString &folder)
    {
        window.openFolder(folder);
        ASSERT_TRUE(testSupport::waitUntil([&] { return !window.isOpening(); }));
    }
};

} // namespace

TEST_F(Storyboard, WalksThroughItsMainJob)
{
    const Outcome result = run({"--walkthrough", in("shots"), "--photos", samples});
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    EXPECT_TRUE(result.output.contains("Everything is as it should be.")) << result.output.constData();
    compareScreenshots(in("shots"), 1, 0.002);
}

TEST_F(Storyboard, WalksThroughItOnAScreenOfDoubleResolution)
{
    const Outcome result = run({"--walkthrough", in("shots"), "--photos", samples}, "2");
    EXPECT_EQ(result.status, 0) << result.errors.constData();
    EXPECT_EQ(QImage(in("shots/03-selection.png")).size(), QSize(1800, 1280));
    compareScreenshots(in("shots"), 4, 0.03);
}

TEST_F(Storyboard, AWalkthroughThatGoesWrongSaysWhere)
{
    const Outcome few = run({"--walkthrough", in("shots"), "--photos", folderOf(3)});
    EXPECT_EQ(few.status, 1);
    EXPECT_TRUE(few.errors.contains("expected: 12 photos or more")) << few.errors.constData();
    testSupport::writeFile(in("file"), "");
    const Outcome nowhere = run({"--walkthrough", in("file/shots"), "--photos", samples});
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_TRUE(nowhere.errors.contains("expected: a folder")) << nowhere.errors.constData();
}

TEST_F(Storyboard, ShowsPhotosInTheOrderOfTheirTitlesAsPeopleCount)
{
    PhotoFolderWindow window;
    window.show();
    open(window, folderOf(11));
    EXPECT_EQ(window.countText(), "11 photos");
    const auto titleOf = [&](qint64 index) {
        return std::dynamic_pointer_cast<ZRImageThumbnail>(window.grid().cellAtIndex(index)->representedObject())
            ->title();
    };
    EXPECT_EQ(titleOf(0), "Photo 1");
    EXPECT_EQ(titleOf(1), "Photo 2");
    EXPECT_EQ(titleOf(10), "Photo 11");
}

TEST_F(Storyboard, SaysWhyAFolderCannotBeOpened)
{
    PhotoFolderWindow window;
    window.show();
    open(window, in("nowhere"));
    EXPECT_EQ(window.statusText(),
              QStringLiteral("“%1” could not be opened. There is no such folder.").arg(in("nowhere")));
    EXPECT_EQ(window.folderPath(), QString());
    const QString photos = folderOf(2);
    testSupport::writeFile(photos + "/ZR.imageCache/ImageData.plist",
                           "<plist><dict><key>Image Data</key><true/></dict></plist>");
    open(window, photos);
    EXPECT_TRUE(window.statusText().contains("could not be opened")) << qPrintable(window.statusText());
    EXPECT_EQ(window.countText(), QString());
}

TEST_F(Storyboard, AnEmptyFolderHasNoPhotos)
{
    PhotoFolderWindow window;
    window.show();
    QDir().mkpath(in("Empty"));
    open(window, in("Empty"));
    EXPECT_EQ(window.countText(), "0 photos");
    EXPECT_FALSE(window.grid().isVisible());
    open(window, folderOf(2));
    EXPECT_TRUE(window.grid().isVisible());
}

TEST_F(Storyboard, KeepsWhatItShowsWhenOpeningIsCancelled)
{
    PhotoFolderWindow window;
    window.show();
    open(window, folderOf(2));
    window.openFolder(folderOf(30, "Others"));
    window.cancelOpening();
    ASSERT_TRUE(testSupport::waitUntil([&] { return !window.isOpening(); }));
    EXPECT_TRUE(window.statusText().startsWith("Opening “Others” was cancelled.")) << qPrintable(window.statusText());
    EXPECT_EQ(window.countText(), "2 photos");
    EXPECT_EQ(window.folderPath(), in("Photos"));
}

TEST_F(Storyboard, ShowsPhotosWhileTheirThumbnailsAreMade)
{
    constexpr int count = 50;
    QImage image(1000, 800, QImage::Format_RGB32);
    image.fill(Qt::red);
    const QByteArray bytes = testSupport::encoded(image, "png");
    for (int i = 0; i < count; ++i)
        testSupport::writeFile(in("Many") + QStringLiteral("/Photo %1.png").arg(i), bytes);
    PhotoFolderWindow window;
    window.show();
    open(window, folderOf(2));
    window.openFolder(in("Many"));
    ASSERT_TRUE(testSupport::waitUntil([&] { return window.folderPath() == in("Many"); }));
    EXPECT_TRUE(window.isOpening());
    EXPECT_GT(window.grid().photoCount(), 0);
    EXPECT_LT(window.grid().photoCount(), count);
    window.grid().matrixSelectCellAtRow(0, 0);
    const QStringList selected = window.grid().pathsForSelectedImages();
    ASSERT_TRUE(testSupport::waitUntil([&] { return !window.isOpening(); }));
    EXPECT_EQ(window.grid().photoCount(), count);
    EXPECT_EQ(window.grid().pathsForSelectedImages(), selected);

    // The next time they are there at once, and are not added to what shows.
    QFile::remove(in("Many/Photo 5.png"));
    testSupport::writeFile(in("Many/Photo 100.png"), bytes);
    open(window, in("Many"));
    EXPECT_EQ(window.grid().photoCount(), count);
}

TEST_F(Storyboard, ShowsPhotosThatHaveThumbnailsBeforeTheOthers)
{
    const QString photos = folderOf(3);
    PhotoFolderLoader loader;
    loader.load(photos);
    ASSERT_TRUE(testSupport::waitUntil([&] { return !loader.isLoading(); }));
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::red);
    testSupport::writeFile(photos + "/New.png", testSupport::encoded(image, "png"));
    QSignalSpy finds(&loader, &PhotoFolderLoader::didFind);
    loader.load(photos);
    ASSERT_TRUE(testSupport::waitUntil([&] { return !loader.isLoading(); }));
    ASSERT_GE(finds.size(), 1);
    EXPECT_EQ(finds[0][0].toString(), photos);
    EXPECT_GE(finds[0][1].value<ZRImageCatalogFolder::ThumbnailList>().size(), 3);
}

TEST_F(Storyboard, KeepsTheSelectionWhenTheFolderIsReadAgain)
{
    PhotoFolderWindow window;
    window.show();
    open(window, folderOf(3));
    window.grid().matrixSelectCellAtRow(0, 2);
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::red);
    testSupport::writeFile(in("Photos/Photo 0.png"), testSupport::encoded(image, "png"));
    open(window, in("Photos"));
    EXPECT_EQ(window.countText(), "4 photos");
    EXPECT_EQ(window.grid().pathsForSelectedImages(), QStringList(in("Photos/Photo 3.png")));
    EXPECT_EQ(window.selectionText(), "1 selected");
}

TEST_F(Storyboard, OpensTheFolderThatWasChosenLast)
{
    const QString first = folderOf(30, "First"), second = folderOf(2, "Second");
    PhotoFolderWindow window;
    window.show();
    window.openFolder(first);
    window.openFolder(second);
    ASSERT_TRUE(testSupport::waitUntil([&] { return !window.isOpening(); }));
    EXPECT_EQ(window.folderPath(), second);
    PhotoFolderWindow next;
    next.openLastFolder();
    ASSERT_TRUE(testSupport::waitUntil([&] { return !next.isOpening(); }));
    EXPECT_EQ(next.folderPath(), second);
}

TEST_F(Storyboard, AFolderThatIsOpenHasTheKeyboardAndMayBeReloaded)
{
    PhotoFolderWindow window;
    window.show();
    const auto actions = window.findChildren<QAction *>();
    const auto reload = std::find_if(actions.cbegin(), actions.cend(), [](const QAction *action) {
        return action->shortcuts() == QKeySequence::keyBindings(QKeySequence::Refresh);
    });
    ASSERT_NE(reload, actions.cend());
    EXPECT_FALSE((*reload)->isEnabled());
    open(window, folderOf(2));
    EXPECT_TRUE((*reload)->isEnabled());
    EXPECT_EQ(window.focusWidget(), &window.grid());
}

TEST_F(Storyboard, RemembersItsSizeAndThatOfThePhotos)
{
    {
        PhotoFolderWindow window;
        window.show();
        window.resize(700, 500);
        window.sizeSlider().setValue(200);
        window.close();
    }
    PhotoFolderWindow next;
    EXPECT_EQ(next.size(), QSize(700, 500));
    EXPECT_EQ(next.sizeSlider().value(), 200);
    EXPECT_EQ(next.grid().cellSize().width(), 206);
}

TEST_F(Storyboard, AnotherFolderBeginsAtItsTopAndTheSameOneStaysWhereItIs)
{
    PhotoFolderWindow window;
    window.show();
    window.sizeSlider().setValue(240);
    const QString first = folderOf(30), second = folderOf(30, "Others");
    open(window, first);
    platform::ScrollView &scrollView = *window.grid().enclosingScrollView();
    scrollView.scrollToPoint(QPointF(0, 300));
    open(window, first);
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 300);
    open(window, second);
    EXPECT_EQ(scrollView.documentVisibleRect().y(), 0);
}

TEST_F(Storyboard, ShowsTheNamesOfFoldersAsTheyAre)
{
    PhotoFolderWindow window;
    window.show();
    const QString name = QStringLiteral("<b>bold</b><img src=x>");
    window.openFolder(in("nowhere/") + name);
    const auto labels = window.findChildren<QLabel *>();
    for (const QLabel *const label : labels) {
        if (label->text().contains(name)) {
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
        }
    }
    ASSERT_TRUE(testSupport::waitUntil([&] { return !window.isOpening(); }));
    EXPECT_TRUE(std::any_of(labels.cbegin(), labels.cend(), [&](const auto *label) {
        return label->text().contains(name) && label->textFormat() == Qt::PlainText;
    }));
}

TEST_F(Storyboard, MayBeClosedResizedAndSentElsewhereWhileItOpens)
{
    const QString first = folderOf(30), second = folderOf(30, "Others");
    PhotoFolderWindow window;
    window.show();
    for (int round = 0; round < 20; ++round) {
        window.openFolder(round % 2 ? first : second);
        window.sizeSlider().setValue(88 + round * 7);
        QCoreApplication::processEvents();
    }
    window.close();
    ASSERT_TRUE(testSupport::waitUntil([&] { return !window.isOpening(); }));
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(window.statusText().contains("was cancelled")) << qPrintable(window.statusText());
}

TEST_F(Storyboard, MayBeDestroyedWhileItOpens)
{
    {
        PhotoFolderWindow window;
        window.openFolder(folderOf(30));
    }
    PhotoFolderLoader loader;
    QSignalSpy loads(&loader, &PhotoFolderLoader::didLoad);
    loader.load(in("Photos"));
    EXPECT_TRUE(testSupport::waitUntil([&] { return !loader.isLoading(); })) << "the server goes on";
    EXPECT_EQ(loads.size(), 1);
}

TEST_F(Storyboard, TellsAScreenReaderOfEveryPhoto)
{
    PhotoFolderWindow window;
    window.show();
    open(window, folderOf(3));
    window.grid().matrixSelectCellAtRow(0, 1);
    QAccessibleInterface *const grid = QAccessible::queryAccessibleInterface(&window.grid());
    ASSERT_TRUE(grid);
    EXPECT_EQ(grid->text(QAccessible::Name), "Photos");
    ASSERT_GE(grid->childCount(), 3);
    EXPECT_EQ(grid->child(1)->text(QAccessible::Name), "Photo 2");
    EXPECT_TRUE(grid->child(1)->state().selected);
    EXPECT_FALSE(grid->child(0)->state().selected);
}

TEST_F(Storyboard, APhotoWindowGoesThroughThePhotosAndStopsAtTheEnds)
{
    PhotoFolderWindow window;
    window.show();
    const QString photos = folderOf(2);
    testSupport::writeFile(photos + "/Photo 3.png", testSupport::encoded(testSupport::quarters(300, 200), "png"));
    open(window, photos);
    window.grid().matrixSelectCellAtRow(0, 2);
    window.grid().insertNewline();
    const QPointer<PhotoWindow> photo = window.photoWindow();
    ASSERT_TRUE(photo);
    ASSERT_TRUE(testSupport::waitUntil([&] { return photo->isComplete(); }));
    const QImage shown = photo->grab().toImage();
    EXPECT_EQ(shown.pixelColor(10, shown.height() / 2 - 50), QColor(Qt::red));
    EXPECT_EQ(photo->windowTitle(), "Photo 3");
    QTest::keyClick(photo, Qt::Key_Right);
    EXPECT_EQ(photo->index(), 2);
    QTest::keyClick(photo, Qt::Key_Home);
    EXPECT_EQ(photo->index(), 0);
    QTest::keyClick(photo, Qt::Key_Left);
    EXPECT_EQ(photo->index(), 0);
    QTest::keyClick(photo, Qt::Key_Space);
    EXPECT_EQ(photo->index(), 1);
    QFile::remove(folder + "/Photo 1.png");
    photo->showPhoto(0);
    EXPECT_TRUE(testSupport::waitUntil([&] { return photo->isComplete(); }));
    EXPECT_FALSE(photo->grab().isNull()) << "says that it cannot be shown";
    QTest::keyClick(photo, Qt::Key_Escape);
    EXPECT_TRUE(testSupport::waitUntil([&] { return !photo; }));
}
