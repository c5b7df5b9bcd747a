#include "ZRCommon/ZRFileManagerExtensions.h"

#include "Support/FolderTest.h"

#include <QDir>
#include <QFileInfo>

using ZRFileManagerExtensions::mkdirsAtPath;
using ZRFileManagerExtensions::pathResolved;

namespace {

struct ZRFileManagerExtensionsTest : testSupport::FolderTest {
    bool isFolder(const char *name) const { return QFileInfo(in(name)).isDir(); }
};

TEST_F(ZRFileManagerExtensionsTest, MakesAFolderAndAllThatIsMissingAboveIt)
{
    EXPECT_TRUE(mkdirsAtPath(in("a/b/c/d")));
    EXPECT_TRUE(isFolder("a/b/c/d"));
    EXPECT_TRUE(mkdirsAtPath(in("a/b/x/y/")));
    EXPECT_TRUE(isFolder("a/b/x/y"));
    EXPECT_TRUE(mkdirsAtPath(in("a//m///n")));
    EXPECT_TRUE(isFolder("a/m/n"));
    EXPECT_TRUE(mkdirsAtPath(in("p/./q/../r")));
    EXPECT_TRUE(isFolder("p/r"));
}

TEST_F(ZRFileManagerExtensionsTest, GivesEveryNewLevelTheAttributesAndLeavesOldOnesAlone)
{
    const auto ownerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
    ASSERT_TRUE(mkdirsAtPath(in("old")));
    const auto before = QFile::permissions(in("old"));
    ASSERT_TRUE(mkdirsAtPath(in("old/new/newer"), {ownerOnly}));
    EXPECT_EQ(QFile::permissions(in("old")), before);
    for (const char *name : {"old/new", "old/new/newer"})
        EXPECT_FALSE(QFile::permissions(in(name)) & (QFileDevice::ReadGroup | QFileDevice::ReadOther)) << name;
}

TEST_F(ZRFileManagerExtensionsTest, AnExistingPathAnswersWhetherItIsAFolder)
{
    testSupport::writeFile(in("file"), "x");
    link("file", "toFile");
    link(".", "toFolder");
    EXPECT_TRUE(mkdirsAtPath(folder));
    EXPECT_TRUE(mkdirsAtPath(QStringLiteral("/")));
    EXPECT_TRUE(mkdirsAtPath(in("toFolder")));
    EXPECT_FALSE(mkdirsAtPath(in("file")));
    EXPECT_FALSE(mkdirsAtPath(in("toFile")));
}

TEST_F(ZRFileManagerExtensionsTest, AFileInTheWayAnswersNoAndNothingIsMadeUnderIt)
{
    testSupport::writeFile(in("a"), "x");
    EXPECT_FALSE(mkdirsAtPath(in("a/b/c")));
    EXPECT_EQ(testSupport::readFile(in("a")), "x");
    EXPECT_EQ(QDir(folder).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList(QStringLiteral("a")));
}

TEST_F(ZRFileManagerExtensionsTest, AFailureLeavesTheLevelsMadeBeforeIt)
{
    const QString tooLong = QString(300, u'x');
    EXPECT_FALSE(mkdirsAtPath(in("a/b/") + tooLong + QStringLiteral("/c")));
    EXPECT_TRUE(isFolder("a/b"));
}

TEST_F(ZRFileManagerExtensionsTest, ADanglingLinkInTheWayAnswersNo)
{
    link("missing", "dangling");
    EXPECT_FALSE(mkdirsAtPath(in("dangling")));
    EXPECT_FALSE(mkdirsAtPath(in("dangling/a")));
    EXPECT_FALSE(isFolder("missing"));
}

TEST_F(ZRFileManagerExtensionsTest, MakesRelativePathsInTheCurrentFolderAndNothingForTheEmptyPath)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder));
    EXPECT_TRUE(mkdirsAtPath(QStringLiteral("here/there")));
    EXPECT_FALSE(mkdirsAtPath(QString()));
    QDir::setCurrent(before);
    EXPECT_TRUE(isFolder("here/there"));
}

TEST_F(ZRFileManagerExtensionsTest, ResolvesAliasesToTheEndOfTheChain)
{
    testSupport::writeFile(in("real/photo.jpg"), "x");
    link("real/photo.jpg", "one");
    link("one", "two");
    link("real", "folder");
    EXPECT_EQ(pathResolved(in("one")), in("real/photo.jpg"));
    EXPECT_EQ(pathResolved(in("two")), in("real/photo.jpg"));
    EXPECT_EQ(pathResolved(in("folder")), in("real"));
    EXPECT_EQ(pathResolved(in("folder/")), in("real"));
}

TEST_F(ZRFileManagerExtensionsTest, EveryOtherPathComesBackUnchanged)
{
    testSupport::writeFile(in("real/photo.jpg"), "x");
    link("real", "folder");
    link("missing", "dangling");
    link("loop", "loop");
    for (const QString &path :
         {in("real/photo.jpg"), in("folder/photo.jpg"), in("nothing"), in("dangling"), in("loop"), in("real/"),
          in("real/../real"), QStringLiteral("/"), QStringLiteral("photo.jpg"), QString()})
        EXPECT_EQ(pathResolved(path), path);
}

} // namespace
