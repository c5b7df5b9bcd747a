#include "Support/DocumentTest.h"

#include <QDir>
#include <QElapsedTimer>

#ifdef Q_OS_UNIX

#include <chrono>
#include <csignal>
#include <poll.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using documentTest::TextDocument;

/// A process that saves the one and the other text, again and again, until it is killed.
class SavingProcess
{
public:
    SavingProcess(const QString &path, const QStringList &texts)
    {
        int ends[2];
        if (::pipe(ends) != 0)
            return;
        m_pipe = ends[0];
        m_process = ::fork();
        if (m_process == 0)
            saveForEver(path, texts, ends[1]);
        ::close(ends[1]);
    }
    SavingProcess(const SavingProcess &) = delete;
    SavingProcess &operator=(const SavingProcess &) = delete;
    ~SavingProcess()
    {
        if (m_process > 0) {
            ::kill(m_process, SIGKILL);
            ::waitpid(m_process, nullptr, 0);
        }
        ::close(m_pipe);
    }

    /// Waits until it has begun and then for so long.
    /// @return whether it still runs
    bool runFor(std::chrono::nanoseconds time)
    {
        char byte;
        if (m_process <= 0 || ::read(m_pipe, &byte, 1) != 1)
            return false;
        pollfd ended{m_pipe, POLLIN, 0};
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
        const timespec limit{seconds.count(), (time - seconds).count()};
        return ::ppoll(&ended, 1, &limit, nullptr) == 0;
    }

private:
    [[noreturn]] static void saveForEver(const QString &path, const QStringList &texts, int pipe)
    {
        TextDocument document;
        for (int i = 0;; ++i) {
            document.text = texts.at(i % 2);
            if (i == 1 && ::write(pipe, "", 1) != 1)
                ::_exit(1);
            if (document.writeToFile(path, QStringLiteral("Text")))
                ::_exit(2);
        }
    }

    pid_t m_process = -1;
    int m_pipe = -1;
};

using DocumentKillTest = documentTest::Test;

TEST_F(DocumentKillTest, AnEndAtAnyMomentOfASaveLeavesTheOldOrTheNewFileWhole)
{
    const QString text = QStringLiteral("%1 and so on.\n");
    const QStringList texts = {text.arg(u'A').repeated(30'000), text.arg(u'B').repeated(20'000)};
    const QString file = madeFile("file.text", texts.at(1).toUtf8());
    QElapsedTimer watch;
    watch.start();
    TextDocument document;
    for (int i = 0; i < 10; ++i) {
        document.text = texts.at(i % 2);
        ASSERT_FALSE(document.writeToFile(file, QStringLiteral("Text")));
    }
    std::mt19937 random(1);
    std::uniform_int_distribution<qint64> nanoseconds(0, watch.nsecsElapsed()); // about ten saves
    int ofA = 0;
    for (int i = 0; i < 100; ++i) {
        const qint64 time = nanoseconds(random);
        {
            SavingProcess process(file, texts);
            ASSERT_TRUE(process.runFor(std::chrono::nanoseconds(time))) << "saving failed";
        }
        document.text.clear();
        const auto failure = document.readFromFile(file, QStringLiteral("Text"));
        ASSERT_FALSE(failure) << qPrintable(*failure);
        ASSERT_TRUE(texts.contains(document.text)) << "after " << time << " ns: " << document.text.size();
        ofA += document.text == texts.at(0);
    }
    EXPECT_GT(ofA, 0) << "the moments differ";
    EXPECT_LT(ofA, 100);
    // What was about to be written may be left, under another name.
    for (const QString &name : QDir(folder.path()).entryList(QDir::Files | QDir::Hidden))
        EXPECT_TRUE(name == QLatin1String("file.text") || name.startsWith(QLatin1String("file.text.")))
            << qPrintable(name);
}

} // namespace

#endif
