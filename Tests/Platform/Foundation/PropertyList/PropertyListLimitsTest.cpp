#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Foundation/PropertyList/PropertyListReaders_p.h"
#include "Support/TestSupport.h"

#include <QFile>
#include <QtEndian>

#include <cstdlib>
#include <gmock/gmock.h>

#ifdef Q_OS_LINUX
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

// The sanitizers need more memory than they would be left here.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZR_HAS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZR_HAS_SANITIZER
#endif
#endif

#if defined(Q_OS_LINUX) && !defined(ZR_HAS_SANITIZER)
#define ZR_REQUIRE_MEASURED_MEMORY()
#else
#define ZR_REQUIRE_MEASURED_MEMORY() GTEST_SKIP() << "needs Linux, and memory that no sanitizer uses"
#endif

using namespace platform;

namespace {

constexpr qint64 MiB = 1024 * 1024;

// What became of a list in a process of its own.
enum Outcome { Read, NotEnoughMemory, Refused, Thrown, UsedTooMuch, Crashed };

#ifdef Q_OS_LINUX

Outcome outcomeOf(const std::function<Result<PropertyListValue>()> &read)
{
    try {
        const auto list = read();
        if (list)
            return Read;
        const bool isMemory = list.error().code == ErrorCode::TooLarge
            && list.error().reason.startsWith(QLatin1String("not enough memory"));
        return isMemory ? NotEnoughMemory : Refused;
    } catch (...) {
        return Thrown;
    }
}

Outcome inChild(const std::function<Outcome()> &task)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(task());
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return Crashed;
    return Outcome(WEXITSTATUS(status));
}

bool setMemoryLimit(qint64 bytes)
{
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = rlim_t(bytes);
    return setrlimit(RLIMIT_AS, &limit) == 0;
}

// Leaves this process so many bytes of further memory, and nothing large of what it freed before.
void limitMemory(qint64 more)
{
    QFile statistics(QStringLiteral("/proc/self/statm"));
    const bool isOpen = statistics.open(QIODevice::ReadOnly);
    const qint64 used = statistics.readAll().split(' ').constFirst().toLongLong() * sysconf(_SC_PAGESIZE);
    if (!isOpen || used == 0 || !setMemoryLimit(used))
        _exit(Crashed);
    while (void *memory = std::malloc(32 * 1024))
        static_cast<char volatile *>(memory)[0] = 0;
    setMemoryLimit(used + more);
}

Outcome withMemory(qint64 bytes, const std::function<Result<PropertyListValue>()> &read)
{
    return inChild([&] {
        limitMemory(bytes);
        return outcomeOf(read);
    });
}

qint64 peakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return qint64(usage.ru_maxrss) * 1024;
}

// Reads a file in a process of its own, which must not touch more memory than that.
Outcome touching(qint64 atMost, const QString &path)
{
    return inChild([&] {
        const qint64 before = peakMemory();
        const Outcome outcome = outcomeOf([&path] { return PropertyList::read(path); });
        return peakMemory() - before > atMost ? UsedTooMuch : outcome;
    });
}

#else

Outcome withMemory(qint64, const std::function<Result<PropertyListValue>()> &)
{
    return Crashed;
}

Outcome touching(qint64, const QString &)
{
    return Crashed;
}

#endif

// A file that begins with the bytes and goes on with zeros, which take no room on the disk.
QString sparseFile(const QByteArray &head, qint64 size)
{
    const QString path = testSupport::homePath() + QStringLiteral("/sparse");
    testSupport::writeFile(path, head);
    return QFile::resize(path, size) ? path : QString();
}

TEST(PropertyListLimits, WhatCanBeginNoFormIsRefusedAsTheTextReaderRefusesIt)
{
    for (const char first : QByteArrayView("=)}];,>*&!\x01\x7F\x89\xC3\xFF")) {
        for (const QByteArray &space : QList<QByteArray>{"", " \t\r\n\v\f"}) {
            const QByteArray text = space + first + "abcdef";
            const auto list = PropertyList::parse(text);
            ASSERT_FALSE(list) << int(first);
            EXPECT_EQ(list.error().toString(), parseTextPropertyList(text).error().toString());
            EXPECT_EQ(list.error().byteOffset, space.size());
            EXPECT_EQ(list.error().reason, QStringLiteral("this is no property list"));
            const auto marked = PropertyList::parse(QByteArray("\xEF\xBB\xBF" + text));
            ASSERT_FALSE(marked);
            EXPECT_EQ(marked.error().byteOffset, 3 + space.size());
        }
    }
    EXPECT_EQ(PropertyList::parse(QByteArray(10, '\0')).error().toString(),
              QStringLiteral("byte 0: this is no property list"));
    for (const char *text : {"{}", "()", "<00>", "[]", "\"a\"", "'a'", "// c\n{}", "/* c */ a", "a", "\xC3\xA9", " $a"})
        EXPECT_TRUE(PropertyList::parse(text)) << text;
}

TEST(PropertyListLimits, JsonIsReadWhereverItBegins)
{
    for (const char *text : {"{\"a\": [1, true]}", " \n[1]", "\xEF\xBB\xBF[{}]"})
        EXPECT_TRUE(PropertyList::parse(text)) << text;
    EXPECT_FALSE(PropertyList::parse("[1"));
}

TEST(PropertyListLimits, AHugeFileThatIsNoListIsNotReadToItsEnd)
{
    ZR_REQUIRE_MEASURED_MEMORY();
    const QString path = sparseFile({}, 3072 * MiB);
    if (path.isEmpty())
        GTEST_SKIP() << "the file system has no sparse files";
    EXPECT_EQ(touching(200 * MiB, path), Refused);
    QFile::remove(path);
}

TEST(PropertyListLimits, TextThatIsCopiedMayBe256MebibytesLong)
{
    for (const QByteArray &head : QList<QByteArray>{"{", "(", "\"", "// comment", "<0f>", "[", QByteArray("<\0p\0", 4),
                                                    "\xFF\xFE", "<?xml version='1.0' encoding='latin1'?>"}) {
        const QString path = sparseFile(head, 256 * MiB + 1);
        if (path.isEmpty())
            GTEST_SKIP() << "the file system has no sparse files";
        const auto list = PropertyList::read(path);
        ASSERT_FALSE(list);
        EXPECT_EQ(list.error().code, ErrorCode::TooLarge) << head.constData();
        EXPECT_EQ(list.error().path, path);
#if defined(Q_OS_LINUX) && !defined(ZR_HAS_SANITIZER)
        EXPECT_EQ(touching(200 * MiB, path), Refused) << head.constData();
#endif
    }
    for (const QByteArray &head : QList<QByteArray>{"bplist00", "<plist>x"}) {
        const auto list = PropertyList::read(sparseFile(head, 256 * MiB + 1));
        ASSERT_FALSE(list);
        EXPECT_EQ(list.error().code, ErrorCode::Malformed) << head.constData();
    }
    QFile::remove(sparseFile({}, 0));
}

// A binary list that is one object of data.
QByteArray binaryData(qint64 size)
{
    QByteArray bytes = "bplist00\x4F\x12" + QByteArray(4, '\0') + QByteArray(size, 'x');
    qToBigEndian(quint32(size), bytes.data() + 10);
    QByteArray trailer(4 + 32, '\0');
    trailer[3] = 8; // where the object stands
    trailer[4 + 6] = 4;
    trailer[4 + 7] = 1;
    trailer[4 + 15] = 1;
    qToBigEndian(quint64(bytes.size()), trailer.data() + 4 + 24);
    return bytes + trailer;
}

TEST(PropertyListLimits, ABinaryListIsHeldOnce)
{
    ZR_REQUIRE_MEASURED_MEMORY();
    const QString path = testSupport::homePath() + QStringLiteral("/data");
    testSupport::writeFile(path, binaryData(64 * MiB));
    EXPECT_EQ(PropertyList::read(path).value().toData().size(), 64 * MiB);
    // Besides the text there is one bit for each of its bytes.
    EXPECT_EQ(touching(96 * MiB, path), Read);
}

// MARK: Too little memory

TEST(PropertyListLimits, TooLittleMemoryIsAnError)
{
    ZR_REQUIRE_MEASURED_MEMORY();
    QByteArray words = "(";
    QByteArray escaped = "(";
    QByteArray entries = "{";
    QByteArray json = "[";
    QByteArray xml = "<dict>";
    for (int i = 0; i < 100'000; ++i) {
        const QByteArray number = QByteArray::number(i);
        words += number + ",";
        escaped += "\"\\n" + QByteArray(20, 'x') + "\",";
        entries += "k" + number + "=v;";
        json += (i > 0 ? ",{\"k\":" : "{\"k\":") + number + "}";
        xml += "<key>k" + number + "</key><true/>";
    }
    const QByteArray wide =
        "\xFF\xFE" + QByteArray("(\0", 2) + QByteArray("a\0,\0", 4).repeated(500'000) + QByteArray(")\0", 2);
    for (const QByteArray &text : QList<QByteArray>{words + ")", escaped + ")", entries + "}", json + "]",
                                                    xml + "</dict>", wide, binaryData(4 * MiB)}) {
        SCOPED_TRACE(text.left(20).constData());
        const auto parse = [&text] { return PropertyList::parse(text); };
        EXPECT_EQ(withMemory(0, parse), NotEnoughMemory);
        for (qint64 memory = MiB / 2; memory < 64 * MiB; memory += memory / 3)
            EXPECT_THAT(int(withMemory(memory, parse)), testing::AnyOf(int(NotEnoughMemory), int(Read))) << memory;
        EXPECT_EQ(withMemory(512 * MiB, parse), Read);
    }
}

TEST(PropertyListLimits, AFileThatMemoryIsTooSmallForIsAnError)
{
    ZR_REQUIRE_MEASURED_MEMORY();
    const QString path = testSupport::homePath() + QStringLiteral("/data");
    testSupport::writeFile(path, binaryData(8 * MiB));
    const auto read = [&path] { return PropertyList::read(path); };
    EXPECT_EQ(withMemory(4 * MiB, read), NotEnoughMemory);
    EXPECT_EQ(withMemory(64 * MiB, read), Read);
}

TEST(PropertyListLimits, WithoutAThreadFilesAreReadAllTheSame)
{
#ifdef __GLIBC__
    ZR_REQUIRE_MEASURED_MEMORY();
    const QString path = testSupport::homePath() + QStringLiteral("/data");
    testSupport::writeFile(path, binaryData(4 * MiB));
    const Outcome outcome = inChild([&path] {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, size_t(1024 * MiB));
        pthread_setattr_default_np(&attributes);
        limitMemory(256 * MiB); // enough for the file, but for no stack
        return outcomeOf([&path] { return PropertyList::read(path); });
    });
    EXPECT_EQ(outcome, Read);
#else
    GTEST_SKIP() << "threads cannot be made impossible here";
#endif
}

} // namespace
