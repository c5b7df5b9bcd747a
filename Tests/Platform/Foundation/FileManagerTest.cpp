#include "Platform/Foundation/FileManager.h"

#include "Support/FolderTest.h"

#include <QMap>

#include <fcntl.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace FileManager = platform::FileManager;

namespace {

struct FileManagerTest : testSupport::FolderTest {
    mode_t modeOf(const char *name) const
    {
        struct stat status = {};
        EXPECT_EQ(stat(in(name).toUtf8().constData(), &status), 0);
        return status.st_mode & 07777;
    }
};

TEST_F(FileManagerTest, AnythingAtAPathExists)
{
    testSupport::writeFile(in("file"), "x");
    ASSERT_EQ(mkfifo(in("pipe").toUtf8().constData(), 0600), 0);
    EXPECT_TRUE(FileManager::fileExists(in("file")));
    EXPECT_TRUE(FileManager::fileExists(in("pipe")));
    EXPECT_TRUE(FileManager::fileExists(folder));
    EXPECT_TRUE(FileManager::fileExists(QStringLiteral("/")));
    EXPECT_FALSE(FileManager::fileExists(in("nothing")));
    EXPECT_FALSE(FileManager::fileExists(in("file/under")));
}

TEST_F(FileManagerTest, ALinkExistsWhenItsTargetDoes)
{
    testSupport::writeFile(in("file"), "x");
    link("file", "good");
    link("missing", "dangling");
    link("loop", "loop");
    EXPECT_TRUE(FileManager::fileExists(in("good")));
    EXPECT_FALSE(FileManager::fileExists(in("dangling")));
    EXPECT_FALSE(FileManager::fileExists(in("loop")));
}

TEST_F(FileManagerTest, AFolderOrALinkToOneIsAFolder)
{
    testSupport::writeFile(in("file"), "x");
    link(".", "toFolder");
    link("file", "toFile");
    EXPECT_TRUE(FileManager::isFolder(folder));
    EXPECT_TRUE(FileManager::isFolder(in("toFolder")));
    EXPECT_FALSE(FileManager::isFolder(in("toFile")));
    EXPECT_FALSE(FileManager::isFolder(in("file")));
    EXPECT_FALSE(FileManager::isFolder(in("nothing")));
}

TEST_F(FileManagerTest, APathThatNoFileSystemHoldsNamesNothing)
{
    const QStringList paths = {QString(), folder + QChar(u'\0') + u'x', QString(100'000, u'x')};
    for (const QString &path : paths) {
        EXPECT_FALSE(FileManager::fileExists(path));
        EXPECT_FALSE(FileManager::isFolder(path));
        EXPECT_FALSE(FileManager::createDirectory(path));
        EXPECT_FALSE(FileManager::resolvedLink(path));
    }
}

TEST_F(FileManagerTest, MakesOneFolderAndSaysWhetherItDid)
{
    EXPECT_TRUE(FileManager::createDirectory(in("new")));
    EXPECT_TRUE(QFileInfo(in("new")).isDir());
    EXPECT_FALSE(FileManager::createDirectory(in("new"))) << "it is there already";
    EXPECT_FALSE(FileManager::createDirectory(in("missing/new"))) << "its parent is missing";
    EXPECT_TRUE(FileManager::createDirectory(in("slash/")));
    testSupport::writeFile(in("file"), "x");
    EXPECT_FALSE(FileManager::createDirectory(in("file")));
    EXPECT_FALSE(FileManager::createDirectory(in("file/under")));
}

TEST_F(FileManagerTest, GivesANewFolderExactlyThePermissionsAskedFor)
{
    const mode_t mask = umask(0077);
    EXPECT_TRUE(FileManager::createDirectory(in("plain")));
    const auto everybodyReads = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner
        | QFileDevice::ReadGroup | QFileDevice::ExeGroup | QFileDevice::ReadOther | QFileDevice::ExeOther;
    EXPECT_TRUE(FileManager::createDirectory(in("shared"), {everybodyReads}));
    umask(0);
    EXPECT_TRUE(FileManager::createDirectory(in("private"), {QFileDevice::ReadOwner | QFileDevice::ExeOwner}));
    umask(mask);
    EXPECT_EQ(modeOf("plain"), 0700u);
    EXPECT_EQ(modeOf("shared"), 0755u);
    EXPECT_EQ(modeOf("private"), 0500u);
}

TEST_F(FileManagerTest, FollowsChainsOfLinksToTheEnd)
{
    testSupport::writeFile(in("deep/file"), "x");
    link("deep/file", "first");
    link("first", "second");
    link("deep", "toFolder");
    link("toFolder/../first", "crooked");
    EXPECT_EQ(FileManager::resolvedLink(in("second")), in("deep/file"));
    EXPECT_EQ(FileManager::resolvedLink(in("crooked")), in("deep/file"));
    EXPECT_EQ(FileManager::resolvedLink(in("toFolder")), in("deep"));
    EXPECT_EQ(FileManager::resolvedLink(in("toFolder//")), in("deep"));
}

TEST_F(FileManagerTest, AnswersNothingForWhatIsNoLinkOrLeadsNowhere)
{
    testSupport::writeFile(in("deep/file"), "x");
    link("deep", "toFolder");
    link("missing", "dangling");
    link("b", "a");
    link("a", "b");
    EXPECT_FALSE(FileManager::resolvedLink(in("deep/file")));
    EXPECT_FALSE(FileManager::resolvedLink(in("toFolder/file"))) << "only the last component decides";
    EXPECT_FALSE(FileManager::resolvedLink(in("toFolder/.")));
    EXPECT_FALSE(FileManager::resolvedLink(in("nothing")));
    EXPECT_FALSE(FileManager::resolvedLink(in("dangling")));
    EXPECT_FALSE(FileManager::resolvedLink(in("a")));
    EXPECT_FALSE(FileManager::resolvedLink(QStringLiteral("/")));
}

TEST_F(FileManagerTest, ListsWhatIsInAFolderInBytes)
{
    QDir().mkpath(in("a/folder"));
    testSupport::writeFile(in("a/.hidden"), "x");
    testSupport::writeFile(in("a/plain"), "x");
    const QByteArray odd = in("a/").toUtf8() + "\xff";
    ASSERT_EQ(::close(::open(odd.constData(), O_CREAT | O_WRONLY, 0600)), 0);
    link("nowhere", "a/link");
    const auto entries = FileManager::entriesOfFolder(in("a"));
    ASSERT_TRUE(entries);
    QMap<QByteArray, bool> mayBeLink;
    for (const auto &entry : *entries)
        mayBeLink.insert(entry.name, entry.mayBeLink);
    EXPECT_EQ(mayBeLink.keys(), QList<QByteArray>({".hidden", "folder", "link", "plain", "\xff"}));
    EXPECT_TRUE(mayBeLink.value("link"));
    EXPECT_FALSE(mayBeLink.value("plain")) << "or listing photos asks the file system about each";
    EXPECT_EQ(entries->size(), 5u);
    EXPECT_TRUE(FileManager::entriesOfFolder(in("a/folder"))->empty());
    for (const QString &none : {in("missing"), in("a/plain"), QString(), in("a/link")})
        EXPECT_FALSE(FileManager::entriesOfFolder(none)) << qPrintable(none);
    ::unlink(odd.constData()); // Qt cannot name it
}

TEST_F(FileManagerTest, TheHomeFolderIsThatOfTheEnvironment)
{
    EXPECT_EQ(FileManager::homeFolder(), testSupport::homePath());
}

} // namespace
