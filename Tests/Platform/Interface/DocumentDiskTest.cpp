// Documents on disks that are full, cannot be written, or do not give what they hold, and files that others change.

#include "Support/DocumentTest.h"

#include <QDir>
#include <QFileInfo>
#include <QScopeGuard>

#include <filesystem>

#ifdef Q_OS_LINUX
#include <sys/mount.h>
#endif

namespace {

using documentTest::TextDocument;
const QString textType = QStringLiteral("Text");

struct DocumentDisk : documentTest::Test {
    TextDocument document;
};

} // namespace

#ifdef Q_OS_LINUX
TEST_F(DocumentDisk, TellsInWordsThatItIsFullOrCanOnlyBeRead)
{
    const QString place = path("disk");
    ASSERT_TRUE(QDir().mkdir(place));
    const QByteArray name = QFile::encodeName(place);
    if (::mount("tmpfs", name.constData(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "a small disk may not be mounted here";
    const auto unmount = qScopeGuard([&] { ::umount(name.constData()); });
    person->place = path("disk/a.text");
    document.setText(QString(1'000'000, u'x'));
    EXPECT_FALSE(document.saveAs());
    EXPECT_TRUE(asked.last().endsWith(QStringLiteral("| There is not enough room on the disk.")))
        << qPrintable(asked.last());
    EXPECT_TRUE(QDir(place).isEmpty(QDir::Files | QDir::Hidden)) << "nothing is left there";

    document.setText(QStringLiteral("short"));
    EXPECT_TRUE(document.saveAs());
    ASSERT_EQ(::mount(nullptr, name.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    EXPECT_FALSE(document.save());
    EXPECT_TRUE(asked.last().endsWith(QStringLiteral("| The disk can only be read."))) << qPrintable(asked.last());
    person->place = path("disk/b.text");
    EXPECT_FALSE(document.saveAs());
    EXPECT_TRUE(asked.last().endsWith(QStringLiteral("| The disk can only be read."))) << qPrintable(asked.last());
    EXPECT_EQ(document.path(), path("disk/a.text"));
}

TEST_F(DocumentDisk, TellsInWordsThatItDoesNotGiveTheFile)
{
    document.text = QStringLiteral("before");
    EXPECT_EQ(document.readFromFile(QStringLiteral("/proc/self/mem"), textType),
              QStringLiteral("The disk does not let the file be read."));
    EXPECT_EQ(document.text, QStringLiteral("before"));
}
#endif

TEST_F(DocumentDisk, AFileThatFillsTheMemoryIsRefused)
{
    QFile file(madeFile("large.text", "a"));
    ASSERT_TRUE(file.resize(qint64(1) << 31)); // which takes no room
    EXPECT_EQ(document.readFromFile(file.fileName(), textType), QStringLiteral("The file is too large."));
}

TEST_F(DocumentDisk, AChangeThatKeepsTheTimeIsSeen)
{
    const QString file = madeFile("a.text", "old");
    ASSERT_FALSE(document.readFromFile(file, textType));
    const std::filesystem::path native(QFile::encodeName(file).toStdString());
    const auto time = std::filesystem::last_write_time(native);
    madeFile("a.text", "longer");
    std::filesystem::last_write_time(native, time);
    EXPECT_FALSE(document.save());
    EXPECT_TRUE(asked.last().contains(QStringLiteral("was changed by another program"))) << qPrintable(asked.last());
}

TEST_F(DocumentDisk, WhatIsWrittenWhileItIsReadIsAChange)
{
    struct SlowDocument : TextDocument {
        std::function<void()> meanwhile;
        bool loadDataRepresentation(const QByteArray &data, const QString &ofType) override
        {
            meanwhile();
            return TextDocument::loadDataRepresentation(data, ofType);
        }
    } slow;
    const QString file = madeFile("a.text", "old");
    slow.meanwhile = [&] { madeFile("a.text", "written meanwhile"); };
    ASSERT_FALSE(slow.readFromFile(file, textType));
    EXPECT_EQ(slow.text, QStringLiteral("old"));
    EXPECT_FALSE(slow.save());
    EXPECT_TRUE(asked.last().contains(QStringLiteral("was changed by another program"))) << qPrintable(asked.last());
}

TEST_F(DocumentDisk, ReadingTakesTheTypeOverAndTellsOfThePathOnceItIsUnedited)
{
    document.setFileType(QStringLiteral("Other"));
    document.setEdited(true);
    bool wasEdited = true;
    QObject::connect(&document, &platform::Document::pathChanged, &document, [&] { wasEdited = document.isEdited(); });
    ASSERT_FALSE(document.readFromFile(madeFile("a.text", "new"), textType));
    EXPECT_EQ(document.fileType(), textType);
    EXPECT_FALSE(wasEdited);
}
