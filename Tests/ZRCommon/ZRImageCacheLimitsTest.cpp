// The cache under odd circumstances: files that vanish, programs that are killed, folders that are read-only or full.

#include "Support/TestSupport.h"
#include "ZRCommon/ImageCacheTestSupport.h"

#include <QDirIterator>
#include <QScopeGuard>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <poll.h>
#include <random>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using platform::PropertyListValue;
using platform::PropertyListView;
using testSupport::photoName;
using testSupport::PickyCache;
using testSupport::picture;
using testSupport::readFile;
using testSupport::writeFile;

using ZRImageCacheLimits = testSupport::ImageCacheTest;

/// Waits until the process ends, at most so long.
void waitForEnd(pid_t process, long microseconds)
{
    const int descriptor = int(::syscall(SYS_pidfd_open, process, 0));
    pollfd end{descriptor, POLLIN, 0};
    const timespec limit{0, microseconds * 1000};
    ::ppoll(&end, 1, &limit, nullptr);
    ::close(descriptor);
}

TEST_F(ZRImageCacheLimits, StandsFilesThatVanishAndChangeWhileTheyAreRead)
{
    auto owned = std::make_unique<PickyCache>();
    PickyCache &picky = *owned;
    ZRImageCatalog other(std::move(owned));
    const ZRImageCatalogFolder hosts(photos, &other);
    for (int i = 0; i < 60; ++i)
        put(photoName(int(i)).constData(), picture(900, 700));
    int round = 0;
    picky.beforeSaving = [&](const QString &path) {
        const QStringList names = QDir(photos).entryList(QDir::Files);
        const QString victim = photos + u'/' + names[(7 * ++round) % names.size()];
        if (round % 3 == 0)
            QFile::remove(victim);
        else if (round % 3 == 1)
            QFile(victim).resize(100);
        else if (victim != path)
            writeFile(victim, "something else");
    };
    picky.createCacheForCatalogFolder(hosts);
    const PropertyListValue entries = picky.photoInformationForCatalogFolder(hosts);
    for (const PropertyListView entry : entries.elements())
        EXPECT_FALSE(QImage::fromData(readFile(entry.value(u"ThumbPath").toString()), "jpg").isNull());
}

TEST_F(ZRImageCacheLimits, LeavesNothingHalfWrittenWhenItIsKilled)
{
    for (int i = 0; i < 12; ++i)
        put(photoName(int(i)).constData(), picture(320, 240));
    std::mt19937 random(99);
    int interrupted = 0;
    for (int round = 0; round < 200; ++round) {
        if (round % 10 == 0)
            QDir(cacheFolder).removeRecursively();
        else if (round % 2 == 0)
            QFile::remove(photos + QStringLiteral("/photo%1.jpg").arg(random() % 12));
        else
            put(photoName(int(random() % 12)).constData(), picture(320, 240));
        const pid_t child = fork();
        if (child == 0) {
            try {
                update();
            } catch (...) { }
            _exit(0);
        }
        waitForEnd(child, long(random() % 12'000));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        interrupted += WIFSIGNALED(status);

        if (!QFile::exists(index))
            continue;
        const auto read = platform::PropertyList::read(index);
        ASSERT_TRUE(bool(read)) << "an index is the old or the new one";
        const PropertyListValue entries = read.value().value(u"Image Data");
        ASSERT_TRUE(entries.isArray());
        for (const PropertyListView entry : entries.elements()) {
            const QByteArray thumbnail = readFile(entry.value(u"ThumbPath").toString());
            ASSERT_TRUE(thumbnail.endsWith("\xFF\xD9")) << "a thumbnail that is listed is whole";
        }
    }
    EXPECT_GT(interrupted, 0);
    update();
    EXPECT_EQ(captions().size(), QDir(photos).entryList(QDir::Files).size());
}

TEST_F(ZRImageCacheLimits, IsUpdatedBySeveralProgramsAtOnce)
{
    for (int i = 0; i < 30; ++i)
        put(photoName(int(i)).constData(), picture(320, 240));
    std::vector<pid_t> children;
    for (int i = 0; i < 4; ++i) {
        children.push_back(fork());
        if (children.back() == 0) {
            bool isDone = false;
            try {
                update();
                isDone = captions().size() == 30;
            } catch (...) { }
            _exit(isDone ? 0 : 1);
        }
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(captions().size(), 30);
    EXPECT_EQ(namesInCache().size(), 31);
}

TEST_F(ZRImageCacheLimits, StandsAFolderThatMayOnlyBeRead)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "asks for a child without rights, which only the superuser can make";
    }
    put("a.jpg");
    update();
    put("b.jpg");
    QDir().mkpath(in("fresh"));
    for (const QString &path : {photos, cacheFolder, in("fresh")})
        ASSERT_EQ(::chmod(path.toUtf8().constData(), 0555), 0);
    const pid_t child = fork();
    if (child == 0) {
        int result = 1;
        if (setgid(65534) == 0 && setuid(65534) == 0) {
            try {
                update(); // the new picture gets no thumbnail
                const bool isKept = captions() == QStringList(QStringLiteral("a"));
                cache.createOrUpdateCacheForCatalogFolder(ZRImageCatalogFolder(in("fresh"), &catalog));
                result = isKept ? 2 : 3;
            } catch (const ZRImageCacheCouldNotCreateFolderException &failure) {
                result = failure.reason() == u"Could not create the image cache folder at 'fresh'" ? 0 : 4;
            } catch (...) {
                result = 5;
            }
        }
        _exit(result);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    for (const QString &path : {photos, cacheFolder, in("fresh")})
        ::chmod(path.toUtf8().constData(), 0755);
}

TEST_F(ZRImageCacheLimits, KeepsItsEntriesWhenTheFolderCannotBeListed)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "asks for a child without rights, which only the superuser can make";
    }
    put("a.jpg");
    update();
    ASSERT_EQ(::chmod(photos.toUtf8().constData(), 0333), 0);
    for (const QString &path : {cacheFolder, index})
        ASSERT_EQ(::chmod(path.toUtf8().constData(), 0777), 0);
    const pid_t child = fork();
    if (child == 0) {
        int result = 1;
        if (setgid(65534) == 0 && setuid(65534) == 0) {
            ZRImageCacheUpdate followed;
            update(&followed);
            const bool isTold = followed.kept == 1 && followed.dropped == 0 && followed.refused.size() == 1
                && followed.refused[0].path == photos;
            result = captions() != QStringList(QStringLiteral("a")) ? 2 : isTold ? 0 : 3;
        }
        _exit(result);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    ::chmod(photos.toUtf8().constData(), 0755);
}

TEST_F(ZRImageCacheLimits, StandsAFullDisk)
{
    // A small disk of one's own, where the system lets us have one.
    if (::mount("tmpfs", photos.toUtf8().constData(), "tmpfs", 0, "size=256k") != 0) {
        GTEST_SKIP() << "no file system of its own can be mounted";
    }
    const auto unmounted = qScopeGuard([&] { ::umount2(photos.toUtf8().constData(), MNT_DETACH); });
    put("a.jpg");
    update();
    const QByteArray before = readFile(index);
    put("b.jpg");
    QFile filler(photos + QStringLiteral("/filler"));
    ASSERT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (filler.write(QByteArray(1024, 'x')) > 0) { }
    filler.close();
    ZRImageCacheUpdate followed;
    update(&followed);
    EXPECT_EQ(readFile(index), before);
    EXPECT_EQ(captions(), QStringList(QStringLiteral("a")));
    QFile::remove(filler.fileName());
    update();
    EXPECT_EQ(captions().size(), 2);
}

TEST_F(ZRImageCacheLimits, TakesTwentyThousandEntries)
{
    // Entries of an index whose files are there, and are never opened: they are no pictures.
    QVariantList entries;
    QDir().mkpath(cacheFolder);
    for (int i = 0; i < 20'000; ++i) {
        const QString name = QStringLiteral("photo%1").arg(i);
        QFile file(photos + u'/' + name + QStringLiteral(".jpg"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        entries.append(QVariantMap{
            {QStringLiteral("Caption"), name},
            {QStringLiteral("ImagePath"), file.fileName()},
            {QStringLiteral("ThumbPath"), QString(cacheFolder + u'/' + name + QStringLiteral("_thumb.jpg"))}});
    }
    ASSERT_FALSE(platform::PropertyList::writeXmlFile(
        index, QVariantMap{{QStringLiteral("Version"), 1.0}, {QStringLiteral("Image Data"), entries}}));
    ZRImageCacheUpdate followed;
    const auto listed = catalogFolder.imageThumbnailsThatMatchSearchString(QString(), followed);
    EXPECT_EQ(listed.size(), 20'000);
    EXPECT_EQ(followed.kept, 20'000);
    EXPECT_EQ(followed.total, 0);
    put("new.jpg");
    EXPECT_EQ(catalogFolder.imageThumbnailsThatMatchSearchString(QString()).size(), 20'001);
}

TEST_F(ZRImageCacheLimits, TakesAllSampleImagesAsOneFolder)
{
    ZR_REQUIRE_SAMPLE_DATA();
    QDirIterator files(testSupport::sampleFile(QStringLiteral("images")), QDir::Files, QDirIterator::Subdirectories);
    int count = 0;
    while (files.hasNext()) {
        QFile::copy(files.next(), photos + QStringLiteral("/%1-").arg(count++) + files.fileName());
    }
    EXPECT_GT(count, 400);
    ZRImageCacheUpdate followed;
    update(&followed);
    EXPECT_EQ(followed.made + followed.refused.size(), count);
    EXPECT_GT(followed.made, count / 2);
    const PropertyListValue entries = cache.photoInformationForCatalogFolder(catalogFolder);
    for (const PropertyListView entry : entries.elements()) {
        const QImage thumbnail = QImage::fromData(readFile(entry.value(u"ThumbPath").toString()), "jpg");
        ASSERT_FALSE(thumbnail.isNull()) << qPrintable(entry.value(u"ThumbPath").toString());
        EXPECT_LE(std::max(thumbnail.width(), thumbnail.height()), 240);
    }
}

} // namespace
