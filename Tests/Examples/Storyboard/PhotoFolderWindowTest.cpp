#include "Storyboard/PhotoFolderWindow.h"
#include "Storyboard/PhotoWindow.h"
#include "Storyboard/Texts.h"

#include "Platform/Foundation/UserDefaults.h"
#include "Support/FolderTest.h"
#include "Support/ImageSamples.h"
#include "ZRCommon/ZRPhotoMatrix.h"

#include <QtTest/QTest>
#include <QtWidgets>

namespace {

struct PhotoFolders : testSupport::FolderTest {
    PhotoFolders() { platform::UserDefaults::standard().clear(); }
    QString folderOf(int count, const QString &name = QStringLiteral("Photos")) const
    {
        QImage image(40, 30, QImage::Format_RGB32);
        for (int i = 1; i <= count; ++i) {
            image.fill(QColor::fromHsv(i * 37 % 360, 200, 200));
            testSupport::writeFile(in(qPrintable(name)) + QStringLiteral("/Photo %1.png").arg(i),
                                   testSupport::encoded(image, "png"));
        }
        return in(qPrintable(name));
    }
    void open(const QString &place)
    {
        window.openFolder(place);
        ASSERT_TRUE(testSupport::waitUntil([&] { return !window.isOpening(); }));
    }
    QAction &action(const char *text)
    {
        for (QAction *const each : window.findChildren<QAction *>()) {
            if (each->text() == QString::fromUtf8(text))
                return *each;
        }
        throw std::runtime_error("no such action");
    }
    PhotoFolderWindow window;
};

} // namespace

TEST_F(PhotoFolders, GrowAndShrinkByCommands)
{
    const int before = window.sizeSlider().value();
    action("&Larger Photos").trigger();
    EXPECT_GT(window.sizeSlider().value(), before);
    action("&Smaller Photos").trigger();
    EXPECT_EQ(window.sizeSlider().value(), before);
}

TEST_F(PhotoFolders, AreOpenedWithAButtonToCancel)
{
    window.show();
    auto &cancel = *window.statusBar()->findChild<QToolButton *>();
    EXPECT_FALSE(cancel.isVisible());
    window.openFolder(folderOf(40));
    EXPECT_TRUE(cancel.isVisible());
    cancel.click();
    ASSERT_TRUE(testSupport::waitUntil([&] { return !window.isOpening(); }));
    EXPECT_TRUE(window.statusText().contains("was cancelled")) << qPrintable(window.statusText());
    EXPECT_FALSE(cancel.isVisible());
    EXPECT_FALSE(window.statusBar()->findChild<QProgressBar *>()->isVisible());
}

TEST_F(PhotoFolders, OfferWhatCanBeDoneWithWhatIsSelected)
{
    window.show();
    open(folderOf(3));
    EXPECT_FALSE(action("Show &Photo").isEnabled());
    EXPECT_FALSE(action("Add to &Storyboard").isEnabled());
    window.grid().selectCellAtRow(0, 1);
    EXPECT_TRUE(action("Show &Photo").isEnabled());
    EXPECT_TRUE(action("Add to &Storyboard").isEnabled());
    action("Select &Nothing").trigger();
    EXPECT_FALSE(action("Show &Photo").isEnabled());
}

TEST_F(PhotoFolders, SelectAllLeavesTheBlanksOut)
{
    window.show();
    open(folderOf(5));
    ASSERT_GT(window.grid().numberOfCells(), 5);
    action("Select &All").trigger();
    EXPECT_EQ(window.grid().selectedIndexes(), platform::IndexSet({0, 5}));
    EXPECT_EQ(window.selectionText(), "5 selected");
}

TEST_F(PhotoFolders, CountInWords)
{
    open(folderOf(1));
    EXPECT_EQ(window.countText(), "1 photo");
}

TEST_F(PhotoFolders, SayWhatCouldNotBeRead)
{
    const QString place = folderOf(2);
    testSupport::writeFile(place + QStringLiteral("/broken.jpg"), "no picture");
    testSupport::writeFile(place + QStringLiteral("/notes.txt"), "no picture, and not called so");
    open(place);
    EXPECT_EQ(window.countText(), "2 photos");
    EXPECT_EQ(window.statusText(), "1 file could not be read as a photo.");
}

TEST_F(PhotoFolders, OfLongNamesDoNotWidenTheWindow)
{
    window.show();
    const int width = window.minimumSizeHint().width();
    open(in(qPrintable(QString(200, u'x'))));
    EXPECT_TRUE(window.statusText().contains("could not be opened"));
    EXPECT_LE(window.minimumSizeHint().width(), std::max(width, 600));
    EXPECT_EQ(window.width(), 900);
    const auto labels = window.centralWidget()->findChildren<QLabel *>();
    EXPECT_TRUE(std::any_of(labels.cbegin(), labels.cend(), [](const QLabel *label) {
        return label->text().contains("could not be opened");
    })) << "where the photos would be";
    open(folderOf(1, QString(200, u'y')));
    EXPECT_LE(window.minimumSizeHint().width(), std::max(width, 600));
}

TEST_F(PhotoFolders, AreCalledByTheirNamesOrPaths)
{
    EXPECT_EQ(nameOfPath("/home/Photos"), "Photos");
    EXPECT_EQ(nameOfPath("/"), "/");
    open(folderOf(1) + QStringLiteral("/"));
    EXPECT_EQ(window.windowTitle(), "Photos – Storyboard");
}

TEST_F(PhotoFolders, KeepThePicturesThatShowWhenTheyAreAllThere)
{
    const QString place = folderOf(12);
    open(place);
    const auto &first = window.grid().cellAtIndex(0)->representedObject();
    ASSERT_TRUE(first);
    EXPECT_EQ(static_cast<const ZRImageThumbnail &>(*first).title(), "Photo 1");
    EXPECT_EQ(static_cast<const ZRImageThumbnail &>(*window.grid().cellAtIndex(11)->representedObject()).title(),
              "Photo 12");
}

TEST_F(PhotoFolders, APhotoShownLargeLetsTheThumbnailsGo)
{
    open(folderOf(3));
    ZRImageCatalogFolder::ThumbnailList photos;
    for (const auto &photo : window.grid().usedCells())
        photos.append(std::static_pointer_cast<ZRImageThumbnail>(photo->representedObject()));
    PhotoWindow large(photos, 0);
    large.show();
    QTest::keyClick(&large, Qt::Key_Right);
    EXPECT_EQ(large.index(), 1);
    for (const auto &photo : photos)
        EXPECT_FALSE(photo->isImageLoaded());
    QTest::mouseDClick(&large, Qt::LeftButton);
    EXPECT_FALSE(large.isVisible());
}
