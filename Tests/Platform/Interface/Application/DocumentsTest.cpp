// Documents under an application object that follows the main window.

#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Interface/Application.h"
#include "Platform/Interface/DocumentController.h"
#include "Support/DocumentTest.h"

#include <QTest>

namespace {

using documentTest::TextDocument;
using platform::Application;
using platform::Document;
using platform::DocumentController;
using platform::NotificationCenter;

struct DocumentsTest : documentTest::Test {
    int argumentCount = 1;
    char name[5] = "test";
    char *arguments[2] = {name, nullptr};
    Application application{argumentCount, arguments};
    DocumentController controller;

    DocumentsTest()
    {
        controller.registerType(
            {QStringLiteral("Text"), QStringLiteral("text"), [] { return std::make_unique<TextDocument>(); }});
    }
    static QWidget *windowOf(Document *document) { return document->windowControllers().first()->window(); }
    static void activate(QWidget *window)
    {
        window->show();
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    }
};

TEST_F(DocumentsTest, TheCurrentDocumentFollowsTheMainWindow)
{
    Document *const a = controller.newDocument(), *const b = controller.newDocument();
    activate(windowOf(a));
    EXPECT_EQ(controller.currentDocument(), a);
    activate(windowOf(b));
    EXPECT_EQ(controller.currentDocument(), b);
    QWidget panel(windowOf(a), Qt::Tool);
    activate(&panel);
    EXPECT_EQ(controller.currentDocument(), b);
    QWidget other;
    activate(&other);
    EXPECT_EQ(application.mainWindow(), &other);
    EXPECT_EQ(controller.currentDocument(), b) << "the last one while a panel is main";
    activate(windowOf(a));
    EXPECT_EQ(controller.currentDocument(), a);
}

TEST_F(DocumentsTest, EachClosedWindowIsToldOnceWhileItShows)
{
    QStringList log;
    const auto observation = NotificationCenter::defaultCenter().addObserver(
        [&](const platform::Notification &note) {
            const auto *const window = note.object<QWidget>();
            log.append(window && window->isVisible() ? QStringLiteral("closes") : QStringLiteral("closes, hidden"));
        },
        platform::NSWindowWillCloseNotification);
    QPointer<Document> document = controller.newDocument();
    activate(windowOf(document));
    static_cast<TextDocument &>(*document).setText(QStringLiteral("mine"));
    EXPECT_FALSE(windowOf(document)->close()) << "cancelled";
    EXPECT_EQ(log, QStringList());
    person->saveAnswer = platform::DocumentPanels::SaveAnswer::Discard;
    EXPECT_TRUE(windowOf(document)->close());
    EXPECT_EQ(log, QStringList{QStringLiteral("closes")});
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(document);
    EXPECT_EQ(application.mainWindow(), nullptr);
}

TEST_F(DocumentsTest, QuittingAsksEachDocumentThroughItsWindow)
{
    QPointer<Document> a = controller.newDocument(), b = controller.newDocument();
    activate(windowOf(a));
    static_cast<TextDocument &>(*a).setText(QStringLiteral("mine"));
    Application::closeAllWindows();
    EXPECT_EQ(asked.size(), 1);
    EXPECT_TRUE(a && !a->isClosed()) << "cancelled";
    person->saveAnswer = platform::DocumentPanels::SaveAnswer::Discard;
    Application::closeAllWindows();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(a || b);
    EXPECT_EQ(controller.documents().size(), 0);
}

} // namespace
