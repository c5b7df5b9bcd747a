#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/PropertyList/PropertyListTextLoader_p.h"
#include "PropertyListXmlDocuments.h"
#include "Support/TestSupport.h"

#include <QFile>
#include <QScopeGuard>

#include <cstring>

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace platform;

namespace {

QString filePath(const QString &name)
{
    return testSupport::homePath() + QLatin1Char('/') + name;
}

// A list of so many tracks, each 100 bytes or so.
QByteArray library(int tracks)
{
    QByteArray text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n\t<key>Tracks</key>\n\t<dict>\n";
    for (int i = 0; i < tracks; ++i) {
        const QByteArray number = QByteArray::number(i);
        text += "\t\t<key>" + number + "</key>\n\t\t<dict>\n\t\t\t<key>Track ID</key><integer>" + number
            + "</integer>\n\t\t\t<key>Name</key><string>Caf\xC3\xA9 &#38; Bar " + number + "</string>\n\t\t</dict>\n";
    }
    return text + "\t</dict>\n</dict>\n</plist>\n";
}

void expectLibrary(const Result<PropertyListValue> &list, int tracks)
{
    ASSERT_TRUE(list) << qPrintable(list.error().toString());
    const PropertyListView found = list.value().PropertyListView::value(u"Tracks");
    ASSERT_EQ(found.count(), tracks);
    int expected = 0;
    for (const auto &entry : found.entries()) {
        ASSERT_EQ(entry.key().toInt(), expected);
        ASSERT_EQ(entry.value().value(u"Track ID").toInteger(-1), expected);
        ASSERT_EQ(entry.value().value(u"Name").toString(), QStringLiteral("Café & Bar %1").arg(expected));
        ++expected;
    }
}

ErrorCode codeOf(const QString &path)
{
    const auto list = PropertyList::read(path);
    EXPECT_FALSE(list);
    if (list)
        return {};
    EXPECT_EQ(list.error().path, path);
    EXPECT_FALSE(list.error().reason.isEmpty());
    return list.error().code;
}

TEST(PropertyListFile, SmallAndLargeFilesReadAlike)
{
    for (const int tracks : {0, 1, 300, 9000, 60000}) {
        const QByteArray text = library(tracks);
        testSupport::writeFile(filePath(QStringLiteral("a.xml")), text);
        expectLibrary(PropertyList::read(filePath(QStringLiteral("a.xml"))), tracks);
        expectLibrary(PropertyList::parse(text), tracks);
    }
}

TEST(PropertyListFile, ErrorsCarryPathAndOffsetHoweverLargeTheFile)
{
    const QString path = filePath(QStringLiteral("a.xml"));
    for (const int tracks : {3, 30000}) {
        const QByteArray text = library(tracks);
        const qsizetype offset = text.lastIndexOf("<integer>");
        testSupport::writeFile(path, QByteArray(text).replace(offset, 9, "<integor>"));
        const auto list = PropertyList::read(path);
        ASSERT_FALSE(list);
        EXPECT_EQ(list.error().toString(), path + QStringLiteral(": byte %1: unknown element").arg(offset));
    }
}

TEST(PropertyListFile, AnErrorAtTheBeginningDoesNotWaitForTheRest)
{
    const QString path = filePath(QStringLiteral("a.xml"));
    testSupport::writeFile(path, "<wrong>" + library(60000));
    EXPECT_EQ(codeOf(path), ErrorCode::Malformed);
}

TEST(PropertyListFile, WhatIsNotThereIsNotFound)
{
    EXPECT_EQ(codeOf(filePath(QStringLiteral("none.xml"))), ErrorCode::NotFound);
    EXPECT_EQ(codeOf(QString()), ErrorCode::NotFound);
    testSupport::writeFile(filePath(QStringLiteral("a.xml")), "<true/>");
    EXPECT_EQ(codeOf(filePath(QStringLiteral("a.xml/b"))), ErrorCode::NotFound);
    EXPECT_EQ(codeOf(filePath(QStringLiteral("a.xml")) + QChar(0) + QStringLiteral("b")), ErrorCode::NotFound);
}

TEST(PropertyListFile, OnlyRegularFilesAreRead)
{
    EXPECT_EQ(codeOf(testSupport::homePath()), ErrorCode::NotARegularFile);
#ifdef Q_OS_UNIX
    const QString pipe = filePath(QStringLiteral("pipe"));
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_EQ(codeOf(pipe), ErrorCode::NotARegularFile); // and does not wait for a writer
    EXPECT_EQ(codeOf(QStringLiteral("/dev/null")), ErrorCode::NotARegularFile);

    const QByteArray socketPath = QFile::encodeName(filePath(QStringLiteral("socket")));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(size_t(socketPath.size()), sizeof(address.sun_path));
    std::memcpy(address.sun_path, socketPath.constData(), size_t(socketPath.size()));
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const auto closing = qScopeGuard([descriptor] { close(descriptor); });
    ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
    EXPECT_EQ(codeOf(filePath(QStringLiteral("socket"))), ErrorCode::NotARegularFile);
#endif
}

TEST(PropertyListFile, LinksAreFollowed)
{
    testSupport::writeFile(filePath(QStringLiteral("a.xml")), library(2));
    ASSERT_TRUE(QFile::link(filePath(QStringLiteral("a.xml")), filePath(QStringLiteral("link.xml"))));
    expectLibrary(PropertyList::read(filePath(QStringLiteral("link.xml"))), 2);
    ASSERT_TRUE(QFile::link(filePath(QStringLiteral("none")), filePath(QStringLiteral("dangling"))));
    EXPECT_EQ(codeOf(filePath(QStringLiteral("dangling"))), ErrorCode::NotFound);
}

TEST(PropertyListFile, FilesThatTheSystemWithholdsAreNotReadable)
{
#ifdef Q_OS_UNIX
    const QString path = filePath(QStringLiteral("secret.xml"));
    testSupport::writeFile(path, library(1));
    ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 0), 0);
    if (geteuid() != 0) {
        EXPECT_EQ(codeOf(path), ErrorCode::NotReadable);
        return;
    }
    // The superuser may read everything, so an unprivileged child looks.
    ASSERT_EQ(chmod(QFile::encodeName(testSupport::homePath()).constData(), 0755), 0);
    const pid_t child = fork();
    if (child == 0) {
        const bool dropped = setgid(65534) == 0 && setuid(65534) == 0;
        const auto list = PropertyList::read(path);
        _exit(!dropped ? 2 : !list && list.error().code == ErrorCode::NotReadable ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 2)
        GTEST_SKIP() << "cannot give up the superuser's rights here";
    EXPECT_EQ(WEXITSTATUS(status), 0);
#else
    GTEST_SKIP() << "needs the permissions of Unix files";
#endif
}

TEST(PropertyListFile, AFileOfMoreThanFourGibibytesIsRefusedUnread)
{
    const QString path = filePath(QStringLiteral("huge.xml"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    if (!file.resize(PropertyListTape::MaximumTextSize + 1)) // takes no room on the disk
        GTEST_SKIP() << "the file system has no sparse files";
    EXPECT_EQ(codeOf(path), ErrorCode::TooLarge);
    file.close();
    QFile::remove(path);
}

// MARK: Files that change

TEST(PropertyListFile, WhatBecomesOfTheFileAfterwardsDoesNotMatter)
{
    for (const int tracks : {10, 20000}) {
        const QString path = filePath(QStringLiteral("a.xml"));
        testSupport::writeFile(path, library(tracks));
        const auto list = PropertyList::read(path);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.write(QByteArray(1000, 'x'));
        ASSERT_TRUE(file.resize(0));
        file.close();
        expectLibrary(list, tracks);
        ASSERT_TRUE(QFile::remove(path));
        expectLibrary(list, tracks);
    }
}

// Opens a file with a loader, changes the file, and parses what the loader has got.
void parseWhileChanging(const std::function<void(QFile &)> &change,
                        const std::function<void(const testSupport::ParsedXml &)> &judge)
{
    const QString path = filePath(QStringLiteral("a.xml"));
    for (int round = 0; round < 8; ++round) {
        QFile::remove(path);
        testSupport::writeFile(path, library(12000)); // large enough for a thread
        auto loader = PropertyListTextLoader::open(path);
        ASSERT_TRUE(loader);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        change(file);
        PropertyListXmlParser parser(*loader.value(), bestInstructionSet());
        testSupport::ParsedXml parsed;
        parsed.error = parser.parse(0);
        if (!parsed.error)
            parsed.document = parser.takeDocument();
        judge(parsed);
    }
}

TEST(PropertyListFile, AFileThatShrinksWhileItIsReadIsRefusedOrReadWhole)
{
    parseWhileChanging([](QFile &file) { ASSERT_TRUE(file.resize(file.size() / 3)); },
                       [](const testSupport::ParsedXml &parsed) {
                           if (parsed.error)
                               EXPECT_EQ(parsed.error->code, ErrorCode::Malformed);
                           else
                               EXPECT_GT(parsed.document->rowCount, 36000u);
                       });
}

TEST(PropertyListFile, AFileThatGrowsOrVanishesWhileItIsReadIsReadAsItWas)
{
    const auto judge = [](const testSupport::ParsedXml &parsed) {
        ASSERT_FALSE(parsed.error) << qPrintable(parsed.error->toString());
        EXPECT_GT(parsed.document->rowCount, 36000u);
    };
    parseWhileChanging(
        [](QFile &file) {
            file.seek(file.size());
            file.write("<and><more>");
        },
        judge);
    parseWhileChanging([](QFile &file) { file.remove(); }, judge);
}

// MARK: The loader

TEST(PropertyListTextLoader, HandsOutTheTextWithPaddingOfZeros)
{
    const QByteArray text = library(20000);
    testSupport::writeFile(filePath(QStringLiteral("a.xml")), text);
    for (const qint64 threadSize : {qint64(0), std::numeric_limits<qint64>::max()}) {
        auto loader = PropertyListTextLoader::open(filePath(QStringLiteral("a.xml")), threadSize);
        ASSERT_TRUE(loader);
        EXPECT_EQ(loader.value()->expectedSize(), text.size());
        EXPECT_GE(loader.value()->waitFor(1), 1);
        EXPECT_GE(loader.value()->waitFor(text.size() / 2), text.size() / 2);
        ASSERT_EQ(loader.value()->waitForAll(), text.size());
        EXPECT_TRUE(QByteArrayView(loader.value()->text(), text.size()) == text);
        const QByteArray zeros(PropertyListTape::Padding, '\0');
        EXPECT_EQ(QByteArray(loader.value()->text() + text.size(), zeros.size()), zeros);
        EXPECT_EQ(QByteArray(loader.value()->text() - zeros.size(), zeros.size()), zeros);
        EXPECT_FALSE(loader.value()->readError());
    }
}

TEST(PropertyListTextLoader, MayBeGivenUpWhileItReads)
{
    testSupport::writeFile(filePath(QStringLiteral("a.xml")), library(50000));
    for (int round = 0; round < 10; ++round)
        ASSERT_TRUE(PropertyListTextLoader::open(filePath(QStringLiteral("a.xml"))));
}

TEST(PropertyListTextLoader, AnEmptyTextIsOne)
{
    testSupport::writeFile(filePath(QStringLiteral("a.xml")), {});
    auto loader = PropertyListTextLoader::open(filePath(QStringLiteral("a.xml")));
    ASSERT_TRUE(loader);
    EXPECT_EQ(loader.value()->waitFor(1), 0);
    EXPECT_EQ(codeOf(filePath(QStringLiteral("a.xml"))), PropertyList::parse({}).error().code);
}

} // namespace
