#include "Support/TestSupport.h"

#include <QtCore>

#ifdef ZR_TEST_WIDGETS
#include <QApplication>
using TestApplication = QApplication;
#elif defined(ZR_TEST_GUI)
#include <QGuiApplication>
using TestApplication = QGuiApplication;
#elif defined(ZR_TEST_NONE)
struct TestApplication {
    TestApplication(int &, char **) { }
};
#else
using TestApplication = QCoreApplication;
#endif

#include <gmock/gmock.h>

#include <mutex>

namespace {

std::mutex messagesMutex;
QStringList expectedWarnings;
QStringList seenWarnings;
QtMessageHandler previousHandler = nullptr;

void collectMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    // What the platform without a screen has no means for.
    if (message.startsWith(QLatin1String("This plugin does not support ")))
        return;
    if (type == QtWarningMsg || type == QtCriticalMsg) {
        const std::lock_guard lock(messagesMutex);
        seenWarnings.append(message);
    } else {
        previousHandler(type, context, message);
    }
}

QTemporaryDir *home = nullptr;

// Judges the warnings of each test and empties the home folder before it.
class Listener : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo &) override
    {
        QDir(home->path()).removeRecursively();
        QDir().mkpath(home->path());
        const std::lock_guard lock(messagesMutex);
        expectedWarnings.clear();
        seenWarnings.clear();
    }
    void OnTestEnd(const testing::TestInfo &) override
    {
        const std::lock_guard lock(messagesMutex);
        for (const QString &seen : std::as_const(seenWarnings)) {
            const auto matches = [&](const QString &expected) { return seen.contains(expected); };
            const auto found = std::find_if(expectedWarnings.cbegin(), expectedWarnings.cend(), matches);
            if (found == expectedWarnings.cend())
                ADD_FAILURE() << "unexpected warning: " << qPrintable(seen);
            else
                expectedWarnings.erase(found);
        }
        for (const QString &missing : std::as_const(expectedWarnings))
            ADD_FAILURE() << "expected warning did not come: " << qPrintable(missing);
        seenWarnings.clear();
        expectedWarnings.clear();
    }
};

} // namespace

void testSupport::expectWarning(const QString &text)
{
    const std::lock_guard lock(messagesMutex);
    expectedWarnings.append(text);
}

bool testSupport::waitUntil(const std::function<bool()> &condition)
{
    // Only a test that fails waits so long; under a sanitizer on a busy machine, work takes many times as long.
    const QDeadlineTimer deadline(60'000);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    }
    return true;
}

QString testSupport::sampleFile(const QString &relativePath)
{
    const QString path = QStringLiteral(ZR_SAMPLE_DATA "/") + relativePath;
    return QFileInfo::exists(path) ? path : QString();
}

void testSupport::writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QByteArray testSupport::readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        ADD_FAILURE() << "cannot read " << qPrintable(path);
        return {};
    }
    return file.readAll();
}

QString testSupport::homePath()
{
    return home->path();
}

// Every test program has an application object unless its tests make their own, an isolated home folder, and fails the
// running test on any message of warning level or above that the test did not announce.
int main(int argc, char **argv)
{
    testing::InitGoogleMock(&argc, argv);
    QTemporaryDir homeFolder;
    home = &homeFolder;
    qputenv("HOME", homeFolder.path().toUtf8());
    for (const char *variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        qunsetenv(variable);
    const QTemporaryDir runtimeFolder; // which nobody else may enter
    qputenv("XDG_RUNTIME_DIR", runtimeFolder.path().toUtf8());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    TestApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("ZRCommonTests"));
    QCoreApplication::setApplicationName(QStringLiteral("ZRCommonTests"));
    previousHandler = qInstallMessageHandler(collectMessage);
    testing::UnitTest::GetInstance()->listeners().Append(new Listener);
    const int result = RUN_ALL_TESTS();
    qInstallMessageHandler(previousHandler);
    return result;
}
