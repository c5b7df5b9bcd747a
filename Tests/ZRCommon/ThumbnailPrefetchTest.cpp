#include "ZRCommon/ThumbnailPrefetch_p.h"

#include "Support/FolderTest.h"
#include "Support/JpegSamples.h"

namespace {

class ThumbnailPrefetchTest : public testSupport::FolderTest
{
protected:
    QStringList paths;

    /// Pictures that are told apart by their widths, and one file that is none.
    ThumbnailPrefetchTest()
    {
        for (int i = 0; i < 40; ++i) {
            paths.append(in(QByteArray::number(i).constData()));
            testSupport::writeFile(paths.last(),
                                   i == 7 ? QByteArray("no picture")
                                          : testSupport::jpeg(testSupport::paintedPicture(20 + i, 10)));
        }
    }
    static int widthOf(const std::optional<platform::Result<QByteArray>> &thumbnail)
    {
        return thumbnail && *thumbnail ? QImage::fromData(thumbnail->value(), "jpg").width() : 0;
    }
};

TEST_F(ThumbnailPrefetchTest, GivesThePicturesInOrderHoweverManyWorkersThereAre)
{
    for (const int workers : {0, 1, 3, 20}) {
        ThumbnailPrefetch prefetch(paths, 100, workers);
        for (int i = 0; i < 40; ++i) {
            const auto thumbnail = prefetch.take(paths[i], 100);
            ASSERT_TRUE(thumbnail);
            EXPECT_EQ(widthOf(thumbnail), i == 7 ? 0 : 20 + i) << workers;
            if (i == 7) {
                EXPECT_EQ(thumbnail->error().path, paths[i]);
            }
        }
    }
}

TEST_F(ThumbnailPrefetchTest, GoesOnBehindPicturesThatNobodyAsksFor)
{
    ThumbnailPrefetch prefetch(paths, 100, 2);
    for (int i = 0; i < 30; ++i)
        prefetch.passOver(paths[i]);
    EXPECT_EQ(widthOf(prefetch.take(paths[35], 100)), 55);
    EXPECT_FALSE(prefetch.take(paths[34], 100)) << "it has passed";
    EXPECT_FALSE(prefetch.take(paths[35], 100)) << "it was taken";
    EXPECT_EQ(widthOf(prefetch.take(paths[39], 100)), 59);
}

TEST_F(ThumbnailPrefetchTest, KnowsOnlyItsPicturesAndItsSize)
{
    ThumbnailPrefetch prefetch(paths, 100, 1);
    EXPECT_FALSE(prefetch.take(in("elsewhere"), 100));
    EXPECT_FALSE(prefetch.take(paths[0], 99));
    EXPECT_EQ(widthOf(prefetch.take(paths[0], 100)), 20);
}

TEST_F(ThumbnailPrefetchTest, EndsWhenItIsLeftInTheMiddle)
{
    for (int round = 0; round < 20; ++round) {
        ThumbnailPrefetch prefetch(paths, 100, 3);
        if (round % 2) {
            EXPECT_EQ(widthOf(prefetch.take(paths[round / 2], 100)), round / 2 == 7 ? 0 : 20 + round / 2);
        }
    }
}

} // namespace
