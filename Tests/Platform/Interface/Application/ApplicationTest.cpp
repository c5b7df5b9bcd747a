#include "Platform/Interface/Application.h"

#include "Platform/Foundation/NotificationCenter.h"
#include "Support/TestSupport.h"

#include <QDialog>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <stdexcept>

// Qt's own code is built without a way to clean up: an exception that passes through it leaves behind the event that
// QApplication makes for the receiver. The leak checker is told of these by the functions of the library that they come
// from, which it sees only when it walks the whole stack.
extern "C" const char *__asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:QSinglePointEvent::QSinglePointEvent\n";
}

namespace {

using platform::Application;
using platform::Notification;
using platform::NotificationCenter;

/// Fails once in what it is asked to fail in.
class FailingWidget : public QWidget
{
public:
    QString failsIn;
    QStringList asked;

protected:
    void fail(const QString &what)
    {
        asked.append(what);
        if (std::exchange(failsIn, failsIn == what ? QString() : failsIn) == what)
            throw std::runtime_error("no " + what.toStdString());
    }
    void mousePressEvent(QMouseEvent *) override { fail("press"); }
    void keyPressEvent(QKeyEvent *) override { fail("key"); }
    void paintEvent(QPaintEvent *) override { fail("paint"); }
    void timerEvent(QTimerEvent *) override { fail("timer"); }
};

struct ApplicationTest : testing::Test {
    int argumentCount = 1;
    char name[5] = "test";
    char *arguments[2] = {name, nullptr};
    Application application{argumentCount, arguments};
    QStringList notes; // the notification and the window's name
    QObject observer;

    ApplicationTest()
    {
        using namespace platform;
        for (const auto &[notification, shortName] : {std::pair(NSWindowDidBecomeMainNotification, "became"),
                                                      std::pair(NSWindowDidResignMainNotification, "resigned"),
                                                      std::pair(NSWindowWillCloseNotification, "closes")}) {
            NotificationCenter::defaultCenter().addObserver(
                &observer,
                [this, shortName = QString::fromLatin1(shortName)](const Notification &note) {
                    const auto *const window = note.object<QWidget>();
                    notes.append(shortName + QLatin1Char(' ') + (window ? window->objectName() : QString()));
                },
                notification);
        }
    }
    void show(QWidget &window, const char *windowName)
    {
        window.setObjectName(QString::fromLatin1(windowName));
        window.resize(100, 100);
        window.show();
        activate(window);
    }
    void activate(QWidget &window)
    {
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    QStringList takeNotes() { return std::exchange(notes, {}); }
};

} // namespace

TEST_F(ApplicationTest, IsTheSharedOne)
{
    EXPECT_EQ(Application::shared(), &application);
    EXPECT_EQ(application.mainWindow(), nullptr);
    EXPECT_EQ(application.currentEvent(), nullptr);
}

TEST_F(ApplicationTest, FollowsTheMainWindow)
{
    QWidget first, second;
    show(first, "first");
    EXPECT_EQ(takeNotes(), QStringList{"became first"});
    EXPECT_EQ(application.mainWindow(), &first);
    show(second, "second");
    EXPECT_EQ(takeNotes(), (QStringList{"resigned first", "became second"}));
    EXPECT_EQ(application.mainWindow(), &second);
    activate(first);
    EXPECT_EQ(takeNotes(), (QStringList{"resigned second", "became first"}));
    first.hide();
    EXPECT_TRUE(testSupport::waitUntil([&] { return !notes.isEmpty(); }));
    EXPECT_EQ(notes.first(), "resigned first");
    EXPECT_NE(application.mainWindow(), &first);
}

TEST_F(ApplicationTest, KeepsTheMainWindowWhileADialogOrAToolWindowIsActive)
{
    QWidget window;
    show(window, "window");
    notes.clear();
    const auto isActive = [](const QWidget &shown) {
        return testSupport::waitUntil([&] { return QApplication::activeWindow() == &shown; });
    };
    QDialog dialog(&window);
    show(dialog, "dialog");
    EXPECT_TRUE(isActive(dialog));
    EXPECT_EQ(application.mainWindow(), &window);
    QWidget tool(&window, Qt::Tool);
    show(tool, "tool");
    EXPECT_TRUE(isActive(tool));
    QWidget popup(&window, Qt::Popup);
    popup.show();
    EXPECT_EQ(application.mainWindow(), &window);
    popup.hide();
    activate(window);
    EXPECT_TRUE(isActive(window));
    EXPECT_EQ(takeNotes(), QStringList());
}

TEST_F(ApplicationTest, TellsBeforeAWindowClosesUnlessItRefuses)
{
    struct Refusing : QWidget {
        bool refuses = true;
        void closeEvent(QCloseEvent *event) override { event->setAccepted(!refuses); }
    } window;
    show(window, "window");
    notes.clear();
    EXPECT_FALSE(window.close());
    EXPECT_EQ(takeNotes(), QStringList());
    EXPECT_EQ(application.mainWindow(), &window);
    window.refuses = false;
    EXPECT_TRUE(window.close());
    EXPECT_EQ(takeNotes(), (QStringList{"closes window", "resigned window"}));
    EXPECT_EQ(application.mainWindow(), nullptr);
}

TEST_F(ApplicationTest, HasNoMainWindowWhileItIsNotActive)
{
    QWidget window;
    show(window, "window");
    notes.clear();
    QApplication::setActiveWindow(nullptr);
    EXPECT_EQ(takeNotes(), QStringList{"resigned window"});
    EXPECT_EQ(application.mainWindow(), nullptr);
}

TEST_F(ApplicationTest, AMainWindowThatIsDestroyedResigns)
{
    auto window = std::make_unique<QWidget>();
    show(*window, "window");
    notes.clear();
    window.reset();
    EXPECT_EQ(notes.size(), 1);
    EXPECT_TRUE(notes.value(0).startsWith("resigned"));
    EXPECT_EQ(application.mainWindow(), nullptr);
}

TEST_F(ApplicationTest, AnObserverMayHideTheNextMainWindow)
{
    QWidget first, second;
    show(first, "first");
    second.setObjectName("second");
    NotificationCenter::defaultCenter().addObserver(
        &observer, [&](const Notification &) { second.hide(); }, platform::NSWindowDidResignMainNotification);
    second.show();
    second.activateWindow();
    EXPECT_TRUE(testSupport::waitUntil([&] { return !second.isVisible(); }));
    EXPECT_FALSE(notes.contains("became second"));
    EXPECT_NE(application.mainWindow(), &second);
}

TEST_F(ApplicationTest, KnowsTheEventThatIsHandled)
{
    struct Asking : QWidget {
        QList<QEvent::Type> types;
        Qt::KeyboardModifiers modifiers;
        void mousePressEvent(QMouseEvent *) override
        {
            const QInputEvent *const event = Application::shared()->currentEvent();
            types.append(event ? event->type() : QEvent::None);
            modifiers = event ? event->modifiers() : Qt::NoModifier;
            QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
            QCoreApplication::sendEvent(this, &key);
            types.append(Application::shared()->currentEvent()->type());
        }
        void keyPressEvent(QKeyEvent *) override { types.append(Application::shared()->currentEvent()->type()); }
    } window;
    show(window, "window");
    QTest::mousePress(&window, Qt::LeftButton, Qt::ControlModifier);
    EXPECT_EQ(window.types,
              (QList<QEvent::Type>{QEvent::MouseButtonPress, QEvent::KeyPress, QEvent::MouseButtonPress}));
    EXPECT_EQ(window.modifiers, Qt::ControlModifier);
    EXPECT_EQ(application.currentEvent(), nullptr);
}

TEST_F(ApplicationTest, LivesOnWhenAHandlerRaises)
{
    FailingWidget window;
    show(window, "window");
    for (const QString what : {"press", "key", "paint", "timer"}) {
        testSupport::expectWarning(QStringLiteral("no ") + what);
        window.asked.clear();
        window.failsIn = what;
        QTest::mousePress(&window, Qt::LeftButton);
        QTest::keyClick(&window, Qt::Key_A);
        window.repaint();
        const int timer = window.startTimer(0);
        EXPECT_TRUE(testSupport::waitUntil([&] { return window.asked.contains("timer"); }));
        window.killTimer(timer);
        for (const char *const each : {"press", "key", "paint", "timer"})
            EXPECT_TRUE(window.asked.contains(each)) << qPrintable(what) << " " << each;
    }
}

TEST_F(ApplicationTest, LivesOnWhenAQueuedCallASlotOrAnObserverRaises)
{
    testSupport::expectWarning(QStringLiteral("no queued call"));
    QObject context;
    QMetaObject::invokeMethod(
        &context, [] { throw std::runtime_error("no queued call"); }, Qt::QueuedConnection);
    QCoreApplication::processEvents();

    testSupport::expectWarning(QStringLiteral("no slot"));
    QPushButton button;
    QObject::connect(&button, &QPushButton::clicked, [] { throw std::runtime_error("no slot"); });
    show(button, "button");
    QTest::mouseClick(&button, Qt::LeftButton);

    testSupport::expectWarning(QStringLiteral("no observer"));
    NotificationCenter::defaultCenter().addObserver(
        &observer, [](const Notification &) { throw std::runtime_error("no observer"); },
        platform::NSWindowWillCloseNotification);
    EXPECT_TRUE(button.close());
}
