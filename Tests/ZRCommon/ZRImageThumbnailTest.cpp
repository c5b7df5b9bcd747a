#include "ZRCommon/ZRImageThumbnail.h"

#include "Support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include <thread>

#include <unistd.h>

namespace {

struct ZRImageThumbnailTest : testing::Test {
    const QString folder = QDir(testSupport::homePath()).canonicalPath();
    const QString thumbnail = folder + QStringLiteral("/thumbnail.png");
    const QString photo = folder + QStringLiteral("/photo.jpg");

    void writeThumbnail(int dotsPerInch = 144) const
    {
        QImage image(240, 180, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        image.setDotsPerMeterX(qRound(dotsPerInch / 0.0254));
        image.setDotsPerMeterY(qRound(dotsPerInch / 0.0254));
        ASSERT_TRUE(image.save(thumbnail));
    }
};

TEST_F(ZRImageThumbnailTest, KeepsTitleAndDate)
{
    const QDateTime date(QDate(2004, 5, 6), QTime(7, 8, 9), Qt::UTC);
    const ZRImageThumbnail record(thumbnail, photo, QStringLiteral("A day out"), date);
    EXPECT_EQ(record.title(), QStringLiteral("A day out"));
    EXPECT_EQ(record.creationDate(), date);
    EXPECT_EQ(record.imagePath(), photo);
}

TEST_F(ZRImageThumbnailTest, HasAnEmptyTitleAndNoDateWhenNoneAreGiven)
{
    const ZRImageThumbnail record(thumbnail, photo);
    EXPECT_EQ(record.title(), QString());
    EXPECT_FALSE(record.creationDate().isValid());
    EXPECT_EQ(record.imagePath(), photo);
}

TEST_F(ZRImageThumbnailTest, HandsOutTheTargetOfAnAlias)
{
    testSupport::writeFile(photo, "x");
    ASSERT_EQ(symlink("photo.jpg", qPrintable(folder + QStringLiteral("/first"))), 0);
    ASSERT_EQ(symlink("first", qPrintable(folder + QStringLiteral("/second"))), 0);
    const ZRImageThumbnail record(thumbnail, folder + QStringLiteral("/second"));
    EXPECT_EQ(record.imagePath(), photo);
    ASSERT_TRUE(QFile::remove(photo));
    EXPECT_EQ(record.imagePath(), photo) << "resolved when it was made";
}

TEST_F(ZRImageThumbnailTest, AMissingImagePathIsKeptAsGiven)
{
    EXPECT_EQ(ZRImageThumbnail(thumbnail, QStringLiteral("no/such/../photo")).imagePath(),
              QStringLiteral("no/such/../photo"));
    EXPECT_EQ(ZRImageThumbnail(QString(), QString()).imagePath(), QString());
}

TEST_F(ZRImageThumbnailTest, KeepsTheThumbnailPathAsGivenAndFollowsItOnlyWhenItIsRead)
{
    const QString alias = folder + QStringLiteral("/alias");
    ASSERT_EQ(symlink("thumbnail.png", qPrintable(alias)), 0);
    writeThumbnail();
    ZRImageThumbnail record(alias, photo);
    EXPECT_TRUE(record.imageToDisplay());
    record.unloadImage();
    ASSERT_TRUE(QFile::remove(alias)); // and not what it stands for
    EXPECT_FALSE(record.imageToDisplay());
}

TEST_F(ZRImageThumbnailTest, DisplaysNothingUntilTheFileIsThere)
{
    ZRImageThumbnail record(thumbnail, photo);
    EXPECT_EQ(record.imageToDisplay(), ZRImageThumbnail::notLoadedImage());
    EXPECT_EQ(record.imageToDisplay(), nullptr);
    writeThumbnail();
    EXPECT_NE(record.imageToDisplay(), nullptr) << "a failed read is not remembered";
}

TEST_F(ZRImageThumbnailTest, DisplaysNothingForAFileThatIsNoPicture)
{
    ZRImageThumbnail record(thumbnail, photo);
    testSupport::writeFile(thumbnail, "this is no picture");
    EXPECT_EQ(record.imageToDisplay(), nullptr);
    EXPECT_EQ(ZRImageThumbnail(folder, photo).imageToDisplay(), nullptr);
    EXPECT_EQ(ZRImageThumbnail(QString(), photo).imageToDisplay(), nullptr);
}

TEST_F(ZRImageThumbnailTest, LaysAThumbnailOutByItsPixelsWhateverItsResolution)
{
    for (const int dotsPerInch : {36, 72, 96, 144, 300}) {
        writeThumbnail(dotsPerInch);
        ZRImageThumbnail record(thumbnail, photo);
        const std::shared_ptr<platform::Image> image = record.imageToDisplay();
        ASSERT_TRUE(image);
        EXPECT_EQ(image->size(), QSizeF(240, 180)) << dotsPerInch;
        EXPECT_EQ(image->cacheMode(), platform::Image::CacheMode::Always);
        EXPECT_EQ(image->isDataRetained(), dotsPerInch != 72) << dotsPerInch;
    }
}

TEST_F(ZRImageThumbnailTest, KeepsAPictureOnceLoadedAndReadsItAgainAfterUnloading)
{
    writeThumbnail();
    ZRImageThumbnail record(thumbnail, photo);
    record.loadImage();
    ASSERT_TRUE(QFile::remove(thumbnail));
    const std::shared_ptr<platform::Image> first = record.imageToDisplay();
    ASSERT_TRUE(first);
    record.loadImage();
    EXPECT_EQ(record.imageToDisplay(), first);
    record.unloadImage();
    EXPECT_EQ(record.imageToDisplay(), nullptr);
    writeThumbnail();
    ASSERT_TRUE(record.imageToDisplay());
    EXPECT_NE(record.imageToDisplay(), first);
    EXPECT_EQ(first->size(), QSizeF(240, 180)) << "who holds a picture keeps it";
}

TEST_F(ZRImageThumbnailTest, IsAModelObjectThatEqualsOnlyItself)
{
    const platform::ObjectPointer record = std::make_shared<ZRImageThumbnail>(thumbnail, photo);
    EXPECT_TRUE(record->isKindOfClass(ZRImageThumbnail::staticClass()));
    EXPECT_TRUE(record->isEqual(*record));
    EXPECT_FALSE(record->isEqual(ZRImageThumbnail(thumbnail, photo)));
}

TEST_F(ZRImageThumbnailTest, MayBeMadeOnAWorkerAndHandedOver)
{
    writeThumbnail();
    std::shared_ptr<ZRImageThumbnail> record;
    std::thread([&] {
        record = std::make_shared<ZRImageThumbnail>(thumbnail, photo, QStringLiteral("t"), QDateTime());
    }).join();
    EXPECT_TRUE(record->imageToDisplay());
}

} // namespace
