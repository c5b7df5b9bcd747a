#include "Platform/Interface/WindowController.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Support/DocumentTest.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QUndoGroup>

namespace {

using documentTest::Controller;
using documentTest::TextDocument;
using platform::UserDefaults;
using platform::WindowController;

const QString key = QStringLiteral("NSWindow Frame Test");

struct WindowControllerTest : documentTest::Test {
    QStringList log;

    WindowControllerTest() { UserDefaults::standard().clear(); }

    static void setStoredFrame(const QVariant &frame) { UserDefaults::standard().set(key, frame); }
    static void setFrame(QWidget *window, const QRect &frame)
    {
        window->move(frame.topLeft());
        window->resize(frame.size());
    }
    static QRect frame(const QWidget *window) { return QRect(window->pos(), window->size()); }
    static QString storedFrame() { return UserDefaults::standard().string(key); }
};

TEST_F(WindowControllerTest, LoadsItsWindowAtTheFirstDemand)
{
    Controller controller(&log);
    EXPECT_FALSE(controller.isWindowLoaded());
    EXPECT_FALSE(controller.isWindowVisible());
    EXPECT_TRUE(controller.close()) << "there is nothing to be closed";
    EXPECT_FALSE(controller.isWindowLoaded());
    QWidget *const window = controller.window();
    ASSERT_TRUE(window);
    EXPECT_TRUE(controller.isWindowLoaded());
    EXPECT_EQ(controller.window(), window);
    EXPECT_EQ(log, QStringList{QStringLiteral("windowDidLoad")});
    EXPECT_FALSE(window->isVisible());
}

TEST_F(WindowControllerTest, IsReadyWhenItsWindowDidLoad)
{
    struct Asking : Controller {
        QString title;
        bool isLoaded = false;
        void windowDidLoad() override
        {
            title = window()->windowTitle();
            isLoaded = isWindowLoaded();
        }
    };
    TextDocument document;
    auto controller = std::make_unique<Asking>();
    Asking &asking = *controller;
    document.addWindowController(std::move(controller));
    asking.window();
    EXPECT_EQ(asking.title, QStringLiteral("Untitled[*]"));
    EXPECT_TRUE(asking.isLoaded);
}

TEST_F(WindowControllerTest, ShowsAndClosesItsWindow)
{
    Controller controller(&log);
    controller.showWindow();
    EXPECT_TRUE(controller.isWindowVisible());
    EXPECT_TRUE(testSupport::waitUntil([&] { return log.contains(QStringLiteral("windowDidBecomeKey")); }));
    controller.window()->showMinimized();
    EXPECT_TRUE(controller.isWindowVisible());
    controller.showWindow();
    EXPECT_FALSE(controller.window()->isMinimized());
    log.clear();
    controller.ownWindow()->refuses = true;
    EXPECT_FALSE(controller.close());
    EXPECT_EQ(log, QStringList()) << "it did not agree";
    controller.ownWindow()->refuses = false;
    EXPECT_TRUE(controller.close());
    EXPECT_EQ(log, QStringList{QStringLiteral("windowWillClose")}) << "while it still shows";
    EXPECT_FALSE(controller.isWindowVisible());
    controller.showWindow();
    EXPECT_TRUE(controller.isWindowVisible()) << "without a document it can be shown again";
}

TEST_F(WindowControllerTest, TheWindowGoesWithItsController)
{
    auto controller = std::make_unique<Controller>();
    const QPointer<QWidget> window = controller->window();
    window->setAttribute(Qt::WA_DeleteOnClose);
    controller.reset();
    EXPECT_FALSE(window);
    Controller other;
    delete other.window();
    EXPECT_EQ(other.window(), nullptr) << "somebody destroyed it";
    other.showWindow();
    EXPECT_TRUE(other.close());
}

TEST_F(WindowControllerTest, AWindowThatCannotBeMadeIsAFailureEachTime)
{
    Controller controller;
    controller.failsToMakeWindow = true;
    EXPECT_THROW(controller.window(), std::runtime_error);
    EXPECT_FALSE(controller.isWindowLoaded());
    controller.failsToMakeWindow = false;
    EXPECT_TRUE(controller.window()) << "tried again";

    WindowController unnamed(QStringLiteral("NoSuchFile"));
    EXPECT_EQ(unnamed.interfaceFileName(), QStringLiteral("NoSuchFile"));
    try {
        unnamed.showWindow();
        FAIL() << "no exception";
    } catch (const platform::InternalInconsistency &failure) {
        EXPECT_EQ(failure.description(), QStringLiteral("NoSuchFile: there is no interface file of that name"));
    }

    struct Nothing : Controller {
        std::unique_ptr<QWidget> makeWindow() override { return nullptr; }
    } nothing;
    EXPECT_THROW(nothing.window(), platform::InternalInconsistency);

    struct Failing : Controller {
        bool fails = true;
        void windowDidLoad() override
        {
            if (std::exchange(fails, false))
                throw std::runtime_error("not yet");
        }
    } failing;
    EXPECT_THROW(failing.window(), std::runtime_error);
    EXPECT_TRUE(failing.window());
}

TEST_F(WindowControllerTest, CatchesWhatItsMessagesThrow)
{
    Controller controller;
    controller.showWindow();
    controller.whenClosing = [] { throw std::runtime_error("not closed"); };
    testSupport::expectWarning(QStringLiteral("closing a window: std::runtime_error: not closed"));
    EXPECT_FALSE(controller.close());
    controller.whenClosing = nullptr;
    EXPECT_TRUE(controller.close());
}

TEST_F(WindowControllerTest, FindsOutletsByTheirName)
{
    struct WithOutlets : Controller {
        std::unique_ptr<QWidget> makeWindow() override
        {
            auto window = std::make_unique<QWidget>();
            window->setObjectName(QStringLiteral("window"));
            auto *const box = new QWidget(window.get());
            (new QPushButton(box))->setObjectName(QStringLiteral("button"));
            return window;
        }
    } controller;
    controller.outlet<QPushButton>(QStringLiteral("button")).setText(QStringLiteral("Go"));
    EXPECT_EQ(controller.window()->findChild<QPushButton *>()->text(), QStringLiteral("Go"));
    EXPECT_EQ(&controller.outlet<QWidget>(QStringLiteral("window")), controller.window());
    EXPECT_THROW(controller.outlet<QLabel>(QStringLiteral("button")), platform::InternalInconsistency);
    try {
        controller.outlet<QLabel>(QStringLiteral("label"));
        FAIL() << "no exception";
    } catch (const platform::InternalInconsistency &failure) {
        EXPECT_EQ(failure.description(),
                  QStringLiteral("the window has no widget \"label\" of the class that is asked for"));
    }
}

// --- the document

TEST_F(WindowControllerTest, TheTitleIsTheDocumentsNameWithQtsMark)
{
    TextDocument document;
    Controller &controller = document.addController();
    QWidget *const window = controller.window();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Untitled[*]"));
    EXPECT_FALSE(window->isWindowModified());
    document.setText(QStringLiteral("mine"));
    EXPECT_TRUE(window->isWindowModified());
    person->place = path("My [*] text.text");
    EXPECT_TRUE(document.save());
    EXPECT_FALSE(window->isWindowModified());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("My [*][*] text.text[*]")) << "a mark in the name is not Qt's";
    EXPECT_EQ(window->windowFilePath(), path("My [*] text.text"));
}

TEST_F(WindowControllerTest, ASubclassMakesItsOwnTitle)
{
    struct Titled : Controller {
        QString windowTitleForDocumentDisplayName(const QString &displayName) override
        {
            return displayName + QStringLiteral(" – Slides");
        }
    };
    TextDocument document;
    document.addWindowController(std::make_unique<Titled>());
    EXPECT_EQ(document.windowControllers().first()->window()->windowTitle(), QStringLiteral("Untitled – Slides[*]"));
}

TEST_F(WindowControllerTest, GivesTheUndoManagerOfTheDocument)
{
    Controller alone;
    EXPECT_EQ(alone.windowWillReturnUndoManager(), nullptr);
    TextDocument a, b;
    QUndoGroup group;
    group.addStack(&a.undoManager().stack());
    group.addStack(&b.undoManager().stack());
    Controller &first = a.addController(), &second = b.addController();
    EXPECT_EQ(first.windowWillReturnUndoManager(), &a.undoManager());
    for (Controller *const controller : {&first, &second, &first}) {
        controller->showWindow();
        QUndoStack *const stack = &controller->document()->undoManager().stack();
        EXPECT_TRUE(testSupport::waitUntil([&] { return group.activeStack() == stack; }));
    }
}

// --- frames

TEST_F(WindowControllerTest, KeepsTheFrameUnderItsName)
{
    {
        Controller controller;
        controller.setWindowFrameAutosaveName(QStringLiteral("Test"));
        EXPECT_EQ(controller.windowFrameAutosaveName(), QStringLiteral("Test"));
        controller.showWindow();
        setFrame(controller.window(), QRect(30, 40, 320, 240));
        EXPECT_TRUE(testSupport::waitUntil([] { return storedFrame() == QStringLiteral("30 40 320 240"); }))
            << qPrintable(storedFrame());
    }
    Controller later;
    later.setWindowFrameAutosaveName(QStringLiteral("Test"));
    EXPECT_EQ(frame(later.window()), QRect(30, 40, 320, 240)) << "named before it was made";
    Controller named;
    named.window();
    named.setWindowFrameAutosaveName(QStringLiteral("Test"));
    EXPECT_EQ(frame(named.window()), QRect(30, 40, 320, 240)) << "and afterwards";
}

TEST_F(WindowControllerTest, StoresTheFrameWhenTheWindowGoes)
{
    auto controller = std::make_unique<Controller>();
    controller->setWindowFrameAutosaveName(QStringLiteral("Test"));
    controller->showWindow();
    setFrame(controller->window(), QRect(30, 40, 320, 240));
    EXPECT_TRUE(controller->close());
    EXPECT_EQ(storedFrame(), QStringLiteral("30 40 320 240"));
    controller->showWindow();
    setFrame(controller->window(), QRect(31, 41, 321, 241));
    controller->window()->hide();
    EXPECT_EQ(storedFrame(), QStringLiteral("31 41 321 241"));
    controller->showWindow();
    setFrame(controller->window(), QRect(32, 42, 322, 242));
    controller.reset();
    EXPECT_EQ(storedFrame(), QStringLiteral("32 42 322 242"));
}

TEST_F(WindowControllerTest, AWindowThatWasNeverShownStoresNothing)
{
    {
        Controller controller;
        controller.setWindowFrameAutosaveName(QStringLiteral("Test"));
        setFrame(controller.window(), QRect(30, 40, 320, 240));
    }
    EXPECT_EQ(storedFrame(), QString());
    Controller unnamed;
    unnamed.showWindow();
    unnamed.window()->resize(300, 300);
    EXPECT_TRUE(unnamed.close());
    EXPECT_FALSE(UserDefaults::standard().object(QStringLiteral("NSWindow Frame ")).isValid());
}

TEST_F(WindowControllerTest, SeveralWindowsShareAName)
{
    Controller first, second;
    for (Controller *const controller : {&first, &second}) {
        controller->setWindowFrameAutosaveName(QStringLiteral("Test"));
        controller->showWindow();
    }
    setFrame(first.window(), QRect(10, 10, 200, 200));
    setFrame(second.window(), QRect(50, 50, 250, 250));
    EXPECT_TRUE(second.close());
    EXPECT_TRUE(first.close());
    EXPECT_EQ(storedFrame(), QStringLiteral("10 10 200 200")) << "the one that was left last";
    Controller third;
    third.setWindowFrameAutosaveName(QStringLiteral("Test"));
    third.showWindow();
    EXPECT_EQ(frame(third.window()), QRect(10, 10, 200, 200));
}

TEST_F(WindowControllerTest, AFrameBeyondTheScreensIsBroughtOntoOne)
{
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    for (const char *frame : {"20000 20000 300 200", "-20000 0 300 200", "100 100 16000000 16000000"}) {
        setStoredFrame(QString::fromLatin1(frame));
        Controller controller;
        controller.setWindowFrameAutosaveName(QStringLiteral("Test"));
        EXPECT_TRUE(screen.contains(controller.window()->geometry())) << frame;
    }
}

TEST_F(WindowControllerTest, GarbageInTheDefaultsIsIgnored)
{
    for (const QVariant &garbage :
         {QVariant(), QVariant(5), QVariant(QStringLiteral("nonsense")), QVariant(QStringLiteral("1 2 -3 4")),
          QVariant(QByteArray(100, '\xff')), QVariant(QVariantList{1, 2, 3, 4})}) {
        setStoredFrame(garbage);
        Controller controller;
        controller.setWindowFrameAutosaveName(QStringLiteral("Test"));
        EXPECT_EQ(controller.window()->size(), QSize(200, 100)) << qPrintable(garbage.toString());
    }
}

TEST_F(WindowControllerTest, KeepsWhetherTheWindowIsMaximised)
{
    {
        Controller controller;
        controller.setWindowFrameAutosaveName(QStringLiteral("Test"));
        controller.showWindow();
        setFrame(controller.window(), QRect(30, 40, 320, 240));
        EXPECT_TRUE(testSupport::waitUntil([] { return storedFrame() == QStringLiteral("30 40 320 240"); }));
        controller.window()->showMaximized();
        QCoreApplication::processEvents();
        EXPECT_TRUE(controller.close());
    }
    EXPECT_EQ(storedFrame(), QStringLiteral("30 40 320 240 maximized"));
    {
        Controller controller; // again and again, without a drift
        controller.setWindowFrameAutosaveName(QStringLiteral("Test"));
        controller.showWindow();
        EXPECT_TRUE(controller.window()->isMaximized());
        controller.window()->showMinimized();
        controller.showWindow();
        EXPECT_TRUE(controller.close());
        EXPECT_EQ(storedFrame(), QStringLiteral("30 40 320 240 maximized"));
    }
    Controller controller;
    controller.setWindowFrameAutosaveName(QStringLiteral("Test"));
    controller.showWindow();
    controller.window()->showNormal();
    QCoreApplication::processEvents();
    EXPECT_EQ(controller.window()->size(), QSize(320, 240));
}

TEST_F(WindowControllerTest, AnotherNameIsAnotherFrame)
{
    UserDefaults::standard().set(QStringLiteral("NSWindow Frame Other"), QStringLiteral("5 6 210 220"));
    Controller controller;
    controller.setWindowFrameAutosaveName(QStringLiteral("Test"));
    controller.showWindow();
    setFrame(controller.window(), QRect(30, 40, 320, 240));
    controller.setWindowFrameAutosaveName(QStringLiteral("Other"));
    EXPECT_EQ(storedFrame(), QStringLiteral("30 40 320 240"));
    EXPECT_EQ(frame(controller.window()), QRect(5, 6, 210, 220));
    controller.setWindowFrameAutosaveName(QString());
    setFrame(controller.window(), QRect(30, 40, 320, 240));
    EXPECT_TRUE(controller.close());
    EXPECT_EQ(UserDefaults::standard().string(QStringLiteral("NSWindow Frame Other")), QStringLiteral("5 6 210 220"));
}

TEST_F(WindowControllerTest, CascadesWindowsWithoutAStoredFrame)
{
    Controller first, second, third, fourth, fifth;
    EXPECT_TRUE(first.shouldCascadeWindows());
    first.window()->move(100, 100);
    first.showWindow();
    second.showWindow();
    EXPECT_EQ(second.window()->pos(), first.window()->pos() + QPoint(24, 24));
    third.setShouldCascadeWindows(false);
    third.window()->move(7, 8);
    third.showWindow();
    EXPECT_EQ(third.window()->pos(), QPoint(7, 8));
    setStoredFrame(QStringLiteral("30 40 320 240"));
    fourth.setWindowFrameAutosaveName(QStringLiteral("Test"));
    fourth.showWindow();
    EXPECT_EQ(fourth.window()->pos(), QPoint(30, 40));
    const QRect screen = fourth.window()->screen()->availableGeometry();
    fourth.window()->move(screen.bottomRight() - QPoint(50, 50));
    fifth.showWindow();
    EXPECT_EQ(fifth.window()->pos(), screen.topLeft()) << "begins anew at the edge of the screen";
}

TEST_F(WindowControllerTest, AShownWindowStaysWhereItIs)
{
    Controller first, second;
    first.showWindow();
    second.showWindow();
    second.window()->move(300, 200);
    second.showWindow();
    EXPECT_EQ(second.window()->pos(), QPoint(300, 200));
}

TEST_F(WindowControllerTest, AWindowWhoseNewNameHasNoFrameIsCascaded)
{
    setStoredFrame(QStringLiteral("30 40 320 240"));
    Controller first, second;
    first.window()->move(100, 100);
    first.showWindow();
    second.setWindowFrameAutosaveName(QStringLiteral("Test"));
    second.window();
    second.setWindowFrameAutosaveName(QStringLiteral("Test without a frame"));
    second.showWindow();
    EXPECT_EQ(second.window()->pos(), first.window()->pos() + QPoint(24, 24));
}

TEST_F(WindowControllerTest, AFullScreenIsNoFrame)
{
    Controller controller;
    controller.setWindowFrameAutosaveName(QStringLiteral("Test"));
    controller.showWindow();
    setFrame(controller.window(), QRect(30, 40, 320, 240));
    EXPECT_TRUE(testSupport::waitUntil([] { return storedFrame() == QStringLiteral("30 40 320 240"); }));
    controller.window()->showFullScreen();
    QCoreApplication::processEvents();
    EXPECT_TRUE(controller.close());
    EXPECT_EQ(storedFrame(), QStringLiteral("30 40 320 240"));
}

TEST_F(WindowControllerTest, TheFrameIsStoredBeforeItIsToldThatTheWindowCloses)
{
    Controller controller;
    controller.setWindowFrameAutosaveName(QStringLiteral("Test"));
    controller.showWindow();
    setFrame(controller.window(), QRect(30, 40, 320, 240));
    QString stored;
    controller.whenClosing = [&] { stored = storedFrame(); };
    EXPECT_TRUE(controller.close());
    EXPECT_EQ(stored, QStringLiteral("30 40 320 240"));
}

TEST_F(WindowControllerTest, AWindowThatWouldDestroyItselfStaysWithItsController)
{
    struct Deleting : Controller {
        std::unique_ptr<QWidget> makeWindow() override
        {
            auto window = std::make_unique<QWidget>();
            window->setAttribute(Qt::WA_DeleteOnClose);
            return window;
        }
        void windowWillClose() override { }
    } controller;
    controller.showWindow();
    const QPointer<QWidget> window = controller.window();
    EXPECT_TRUE(controller.close());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(window);
}

TEST_F(WindowControllerTest, AWindowThatDestroysItselfWhenItClosesHasNoFrame)
{
    struct Vanishing : QWidget {
        void closeEvent(QCloseEvent *) override { delete this; }
    };
    struct Owner : WindowController {
        std::unique_ptr<QWidget> makeWindow() override { return std::make_unique<Vanishing>(); }
    };
    Owner controller;
    controller.setWindowFrameAutosaveName(QStringLiteral("Test"));
    controller.showWindow();
    controller.window()->resize(210, 110); // its frame is to be stored soon
    QCloseEvent event; // sent, since a widget does not survive its own close()
    QCoreApplication::sendEvent(controller.window(), &event);
    EXPECT_EQ(controller.window(), nullptr);
}

TEST_F(WindowControllerTest, ADestroyedControllerLeavesItsDocument)
{
    TextDocument document;
    Controller &first = document.addController();
    Controller &second = document.addController();
    delete &first;
    EXPECT_EQ(document.windowControllers(), QList<WindowController *>{&second});
    document.showWindows();
}

} // namespace
