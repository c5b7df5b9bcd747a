#include "Platform/Interface/DocumentController.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/UserDefaults.h"
#include "Platform/Interface/Application.h"
#include "Support/DocumentTest.h"

#include <QDir>
#include <QFileInfo>

namespace {

using documentTest::Controller;
using documentTest::TextDocument;
using platform::Document;
using platform::DocumentController;
using platform::DocumentPanels;
using platform::UserDefaults;
using SaveAnswer = platform::DocumentPanels::SaveAnswer;

struct DocumentControllerTest : documentTest::Test {
    std::unique_ptr<DocumentController> owned = std::make_unique<DocumentController>();
    DocumentController &controller = *owned;
    QList<Document *> currents;
    int changes = 0;

    DocumentControllerTest()
    {
        UserDefaults::standard().clear();
        controller.registerType(
            {QStringLiteral("Text"), QStringLiteral("text"), [] { return std::make_unique<TextDocument>(); }});
        QObject::connect(&controller, &DocumentController::currentDocumentChanged, &controller,
                         [this](Document *document) { currents.append(document); });
        QObject::connect(&controller, &DocumentController::documentsChanged, &controller, [this] { ++changes; });
    }

    TextDocument *opened(const char *name, const QByteArray &bytes = "content")
    {
        return static_cast<TextDocument *>(controller.openDocument(madeFile(name, bytes)));
    }
    TextDocument *edited(const char *name)
    {
        TextDocument *const document = opened(name);
        document->setText(QStringLiteral("mine"));
        return document;
    }
};

TEST_F(DocumentControllerTest, TheFirstOneIsShared)
{
    EXPECT_EQ(DocumentController::shared(), &controller);
    {
        const DocumentController second;
        EXPECT_EQ(DocumentController::shared(), &controller);
    }
    EXPECT_EQ(DocumentController::shared(), &controller);
    owned.reset();
    EXPECT_EQ(DocumentController::shared(), nullptr);
}

TEST_F(DocumentControllerTest, FindsTypesByNameAndByExtension)
{
    controller.registerType({QStringLiteral("Tape"), QStringLiteral("tar.tape"), [] { return nullptr; }});
    EXPECT_EQ(controller.typeWithName(QStringLiteral("Text"))->fileExtension, QStringLiteral("text"));
    EXPECT_EQ(controller.typeWithName(QStringLiteral("text")), nullptr);
    EXPECT_EQ(controller.typeOfPath(QStringLiteral("/a/b.TEXT"))->name, QStringLiteral("Text"));
    EXPECT_EQ(controller.typeOfPath(QStringLiteral("a.tar.tape"))->name, QStringLiteral("Tape"));
    EXPECT_EQ(controller.typeOfPath(QStringLiteral("a.texts")), nullptr);
    EXPECT_EQ(controller.typeOfPath(QStringLiteral("/folder.text/a")), nullptr);
    EXPECT_EQ(controller.typeWithName(QStringLiteral("Text"))->nameFilter(), QStringLiteral("Text (*.text)"));
    controller.registerType({QStringLiteral("Text"), QStringLiteral("txt"), [] { return nullptr; }});
    EXPECT_EQ(controller.types().size(), 2) << "replaced";
    EXPECT_EQ(controller.typeOfPath(QStringLiteral("b.text")), nullptr);
    EXPECT_THROW(controller.registerType({}), platform::InternalInconsistency);
}

TEST_F(DocumentControllerTest, MakesANewDocumentWithItsWindows)
{
    Document *const document = controller.newDocument();
    ASSERT_TRUE(document);
    EXPECT_EQ(controller.documents(), QList<Document *>{document});
    EXPECT_EQ(controller.currentDocument(), document);
    EXPECT_EQ(document->fileType(), QStringLiteral("Text"));
    EXPECT_EQ(document->windowControllers().size(), 1);
    EXPECT_TRUE(document->windowControllers().first()->isWindowVisible());
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(currents, QList<Document *>{document});
    EXPECT_THROW(controller.newDocument(QStringLiteral("Unknown")), platform::InternalInconsistency);
}

TEST_F(DocumentControllerTest, OpensAFileOnce)
{
    TextDocument *const document = opened("a.text");
    ASSERT_TRUE(document);
    EXPECT_EQ(document->text, QStringLiteral("content"));
    TextDocument *const other = opened("b.text");
    EXPECT_EQ(controller.currentDocument(), other);
    ASSERT_TRUE(QFile::link(path("a.text"), path("link.text")));
    for (const QString &way :
         {path("a.text"),
          folder.filePath(QStringLiteral("./../") + QDir(folder.path()).dirName() + QStringLiteral("/a.text")),
          path("link.text")}) {
        document->windowControllers().first()->window()->hide();
        controller.currentDocument();
        EXPECT_EQ(controller.openDocument(way), document) << qPrintable(way);
        EXPECT_TRUE(document->windowControllers().first()->isWindowVisible());
        EXPECT_EQ(controller.currentDocument(), document);
        EXPECT_EQ(controller.documentForPath(way), document);
    }
    EXPECT_EQ(controller.documents().size(), 2);
    EXPECT_EQ(controller.documentForPath(path("c.text")), nullptr);
    EXPECT_EQ(controller.documentForPath(QString()), nullptr);
    EXPECT_EQ(asked, QStringList());
}

TEST_F(DocumentControllerTest, TellsInWordsWhatCannotBeOpened)
{
    EXPECT_EQ(controller.openDocument(path("none.text")), nullptr);
    EXPECT_EQ(takeAsked(),
              QStringList{QStringLiteral(
                  "error: The file “none.text” could not be opened. | There is no such file any more.")});
    EXPECT_EQ(controller.openDocument(madeFile("picture.png", "x")), nullptr);
    EXPECT_EQ(takeAsked(),
              QStringList{QStringLiteral(
                  "error: The file “picture.png” could not be opened. | Files of this kind cannot be opened here.")});
    EXPECT_EQ(opened("damaged.text", "damaged"), nullptr);
    EXPECT_EQ(
        takeAsked(),
        QStringList{QStringLiteral("error: The file “damaged.text” could not be opened. | The file is damaged, or "
                                   "was made by another program or by a newer version of this one.")});
    EXPECT_EQ(controller.documents().size(), 0);
    EXPECT_EQ(controller.recentPaths(), QStringList());
}

TEST_F(DocumentControllerTest, TellsInWordsWhatCannotBeMade)
{
    controller.registerType({QStringLiteral("None"), QStringLiteral("none"), [] { return nullptr; }});
    EXPECT_EQ(controller.newDocument(QStringLiteral("None")), nullptr);
    EXPECT_EQ(
        takeAsked(),
        QStringList{QStringLiteral("error: A new document could not be made. | There was an error in the program.")});
    controller.registerType({QStringLiteral("None"), QStringLiteral("none"),
                             []() -> std::unique_ptr<Document> { throw std::runtime_error("no document today"); }});
    testSupport::expectWarning(QStringLiteral("no document today"));
    EXPECT_EQ(controller.openDocument(madeFile("a.none", "x")), nullptr);
    EXPECT_EQ(takeAsked().size(), 1);

    struct Windowless : TextDocument {
        void makeWindowControllers() override { addController().failsToMakeWindow = true; }
    };
    controller.registerType(
        {QStringLiteral("None"), QStringLiteral("none"), [] { return std::make_unique<Windowless>(); }});
    testSupport::expectWarning(QStringLiteral("no window today"));
    EXPECT_EQ(controller.newDocument(QStringLiteral("None")), nullptr);
    EXPECT_EQ(takeAsked(),
              QStringList{QStringLiteral("error: A new document could not be made. | Its window could not be made.")});
    EXPECT_EQ(controller.documents().size(), 0);
}

TEST_F(DocumentControllerTest, AsksWhichFilesToOpen)
{
    person->files = {madeFile("a.text", "a"), path("none.text"), madeFile("b.text", "b")};
    controller.openDocuments();
    EXPECT_EQ(asked.first(), QStringLiteral("what? Text (*.text)"));
    EXPECT_EQ(asked.size(), 2) << "one cannot be opened";
    EXPECT_EQ(controller.documents().size(), 2);
}

TEST_F(DocumentControllerTest, SuggestsTheExtensionOfTheTypeAndDoesNotReplaceAnOpenFile)
{
    Document *const document = controller.newDocument();
    opened("open.text");
    person->place = path("open.text");
    EXPECT_FALSE(document->save());
    EXPECT_EQ(takeAsked(),
              (QStringList{QStringLiteral("where? Untitled.text | Text (*.text) | text"),
                           QStringLiteral("error: The document “Untitled” could not be saved. | The file "
                                          "“open.text” is open at the moment.")}));
    EXPECT_EQ(testSupport::readFile(path("open.text")), "content");
}

// --- the current document

TEST_F(DocumentControllerTest, AClosedDocumentLeavesAndTheOneBeforeItIsCurrent)
{
    QPointer<Document> a = opened("a.text"), b = opened("b.text"), c = opened("c.text");
    controller.openDocument(a->path());
    currents.clear();
    changes = 0;
    EXPECT_TRUE(a->close());
    EXPECT_EQ(controller.documents(), (QList<Document *>{b, c}));
    EXPECT_EQ(controller.currentDocument(), c) << "the one that was current before";
    EXPECT_EQ(currents, QList<Document *>{c});
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(a) << "until the event loop turns";
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(a);
    EXPECT_EQ(changes, 1);
    b->windowControllers().first()->close();
    EXPECT_EQ(controller.documents(), QList<Document *>{c});
    EXPECT_EQ(controller.currentDocument(), c);
    delete c;
    EXPECT_TRUE(controller.documents().isEmpty());
    EXPECT_EQ(controller.currentDocument(), nullptr);
    EXPECT_EQ(currents.last(), nullptr);
}

TEST_F(DocumentControllerTest, TheDocumentOfTheMainWindowIsCurrentAndStaysWhileAPanelIsMain)
{
    const auto becomeMain = [](QWidget *window) {
        platform::NotificationCenter::defaultCenter().postNotification(platform::NSWindowDidBecomeMainNotification,
                                                                       window);
    };
    Document *const a = opened("a.text"), *const b = opened("b.text");
    QWidget *const window = a->windowControllers().first()->window();
    EXPECT_EQ(controller.documentForWindow(window), a);
    EXPECT_EQ(controller.documentForWindow(nullptr), nullptr);
    becomeMain(window);
    EXPECT_EQ(controller.currentDocument(), a);
    QWidget panel;
    EXPECT_EQ(controller.documentForWindow(&panel), nullptr);
    becomeMain(&panel);
    EXPECT_EQ(controller.currentDocument(), a);
    becomeMain(b->windowControllers().first()->window());
    EXPECT_EQ(controller.currentDocument(), b);
}

TEST_F(DocumentControllerTest, TakesOverDocumentsAndDestroysThemWithItself)
{
    QPointer<Document> document = controller.addDocument(std::make_unique<TextDocument>());
    EXPECT_EQ(document->windowControllers().size(), 0);
    EXPECT_EQ(controller.currentDocument(), document);
    EXPECT_THROW(controller.addDocument(nullptr), platform::InternalInconsistency);
    currents.clear();
    owned.reset();
    EXPECT_FALSE(document);
    EXPECT_EQ(currents.size(), 0);
}

// --- all documents

TEST_F(DocumentControllerTest, ADocumentMayBeSavedUnderTheNameThatItHas)
{
    TextDocument *const document = edited("a.text");
    person->place = path("a.text");
    EXPECT_TRUE(document->saveAs());
    EXPECT_EQ(testSupport::readFile(path("a.text")), "mine");
}

TEST_F(DocumentControllerTest, TellsOfTheCurrentDocumentWhenItIsAnother)
{
    TextDocument *const first = opened("a.text"), *const second = opened("b.text");
    ASSERT_EQ(currents, (QList<Document *>{first, second}));
    EXPECT_EQ(controller.openDocument(path("b.text")), second);
    first->closeWithoutAsking();
    EXPECT_EQ(currents.size(), 2) << "the second is current as before";
}

TEST_F(DocumentControllerTest, ShowsTheDocumentThatItAsksAbout)
{
    TextDocument *const document = edited("a.text");
    QWidget *const window = document->windowControllers().first()->window();
    window->hide();
    person->saveAnswer = SaveAnswer::Cancel;
    bool wasVisible = false;
    person->meanwhile = [&] { wasVisible = window->isVisible(); };
    EXPECT_FALSE(controller.closeAll());
    EXPECT_TRUE(wasVisible);
}

TEST_F(DocumentControllerTest, StoresTenAbsolutePaths)
{
    for (int i = 0; i < 12; ++i)
        controller.noteRecentPath(madeFile(qPrintable(QStringLiteral("%1.text").arg(i)), "a"));
    controller.noteRecentPath(QDir::current().relativeFilePath(path("3.text")));
    const QVariantList stored = UserDefaults::standard().array("NSRecentDocuments");
    EXPECT_EQ(stored.size(), 10);
    EXPECT_EQ(stored.value(0).toString(), path("3.text"));
    EXPECT_EQ(controller.recentPaths().value(1), path("11.text"));
}

TEST_F(DocumentControllerTest, SavesAllThatAreEdited)
{
    edited("a.text");
    opened("b.text");
    Document *const c = edited("c.text");
    EXPECT_TRUE(controller.hasEditedDocuments());
    EXPECT_TRUE(controller.saveAll());
    EXPECT_FALSE(controller.hasEditedDocuments());
    EXPECT_EQ(testSupport::readFile(path("a.text")), "mine");
    EXPECT_EQ(testSupport::readFile(path("b.text")), "content");
    static_cast<TextDocument *>(c)->setText(QStringLiteral("other"));
    static_cast<TextDocument *>(c)->fails = true;
    EXPECT_FALSE(controller.saveAll());
    EXPECT_TRUE(controller.hasEditedDocuments());
}

TEST_F(DocumentControllerTest, ClosesAllWithoutAQuestionWhenNothingIsLost)
{
    opened("a.text");
    opened("b.text");
    EXPECT_TRUE(controller.closeAll());
    EXPECT_EQ(controller.documents().size(), 0);
    EXPECT_EQ(asked, QStringList());
    EXPECT_TRUE(controller.closeAll());
}

TEST_F(DocumentControllerTest, ReviewsTheEditedOnesBeforeItClosesAny)
{
    // Every pair of answers for two edited documents, the current one asked first.
    struct Row {
        SaveAnswer second, first;
        bool isClosed;
        const char *contentOfSecond, *contentOfFirst;
        int questions;
    };
    const Row rows[] = {
        {SaveAnswer::Save, SaveAnswer::Save, true, "mine", "mine", 2},
        {SaveAnswer::Save, SaveAnswer::Discard, true, "mine", "content", 2},
        {SaveAnswer::Save, SaveAnswer::Cancel, false, "mine", "content", 2},
        {SaveAnswer::Discard, SaveAnswer::Save, true, "content", "mine", 2},
        {SaveAnswer::Discard, SaveAnswer::Discard, true, "content", "content", 2},
        {SaveAnswer::Discard, SaveAnswer::Cancel, false, "content", "content", 2},
        {SaveAnswer::Cancel, SaveAnswer::Save, false, "content", "content", 1},
    };
    for (const Row &row : rows) {
        edited("first.text");
        opened("unedited.text");
        edited("second.text");
        person->saveAnswers = {row.second, row.first};
        EXPECT_EQ(controller.closeAll(), row.isClosed);
        EXPECT_EQ(controller.documents().size(), row.isClosed ? 0 : 3);
        EXPECT_EQ(testSupport::readFile(path("second.text")), row.contentOfSecond);
        EXPECT_EQ(testSupport::readFile(path("first.text")), row.contentOfFirst);
        const QStringList questions = takeAsked();
        EXPECT_EQ(questions.size(), row.questions);
        EXPECT_EQ(questions.first(), QStringLiteral("save? second.text"));
        for (Document *const document : QList<Document *>(controller.documents()))
            document->closeWithoutAsking();
    }
}

TEST_F(DocumentControllerTest, ASaveThatFailsKeepsAllOpen)
{
    opened("a.text");
    TextDocument *const document = edited("b.text");
    document->fails = true;
    person->saveAnswer = SaveAnswer::Save;
    EXPECT_FALSE(controller.closeAll());
    EXPECT_EQ(controller.documents().size(), 2);
}

TEST_F(DocumentControllerTest, ADocumentOpenedDuringTheReviewStaysOpen)
{
    edited("a.text");
    person->saveAnswer = SaveAnswer::Discard;
    person->meanwhile = [this] { controller.newDocument(); };
    EXPECT_FALSE(controller.closeAll());
    EXPECT_EQ(controller.documents().size(), 1);
}

// --- recent files

TEST_F(DocumentControllerTest, RemembersTheFilesOpenedOrSavedLast)
{
    int told = 0;
    QObject::connect(&controller, &DocumentController::recentPathsChanged, &controller, [&] { ++told; });
    EXPECT_EQ(controller.recentPaths(), QStringList());
    Document *const a = opened("a.text");
    opened("b.text");
    EXPECT_EQ(controller.recentPaths(), (QStringList{path("b.text"), path("a.text")}));
    controller.openDocument(path("a.text"));
    EXPECT_EQ(controller.recentPaths(), (QStringList{path("a.text"), path("b.text")}));
    person->place = path("c.text");
    EXPECT_TRUE(a->saveAs());
    EXPECT_EQ(controller.recentPaths(), (QStringList{path("c.text"), path("a.text"), path("b.text")}));
    EXPECT_EQ(told, 4);
    QFile::remove(path("a.text"));
    EXPECT_EQ(controller.recentPaths(), (QStringList{path("c.text"), path("b.text")}));
    madeFile("a.text", "again");
    EXPECT_EQ(controller.recentPaths().size(), 3) << "such as on a disk that comes and goes";
    EXPECT_EQ(DocumentController().recentPaths().size(), 3) << "kept in the defaults";
    controller.clearRecentPaths();
    EXPECT_EQ(controller.recentPaths(), QStringList());
    EXPECT_EQ(told, 5);
}

TEST_F(DocumentControllerTest, RemembersTen)
{
    for (int i = 0; i < 12; ++i)
        controller.noteRecentPath(madeFile(qPrintable(QStringLiteral("%1.text").arg(i)), "x"));
    const QStringList paths = controller.recentPaths();
    EXPECT_EQ(paths.size(), 10);
    EXPECT_EQ(paths.first(), path("11.text"));
    EXPECT_EQ(paths.last(), path("2.text"));
    controller.noteRecentPath(QString());
    EXPECT_EQ(controller.recentPaths(), paths);
}

TEST_F(DocumentControllerTest, MakesTheBestOfRecentFilesThatSomebodyEdited)
{
    const QString file = madeFile("a.text", "x");
    const QString key = QStringLiteral("NSRecentDocuments");
    for (const QVariant &garbage : {QVariant(), QVariant(7), QVariant(QStringLiteral("nonsense")),
                                    QVariant(QVariantList{7, QVariantMap(), QString(), QStringLiteral("a.text")}),
                                    QVariant(QStringList{folder.path()})}) {
        UserDefaults::standard().set(key, garbage);
        EXPECT_EQ(controller.recentPaths(), QStringList());
    }
    UserDefaults::standard().set(key, QVariantList{file, 3, file});
    EXPECT_EQ(controller.recentPaths(), QStringList{file});
    UserDefaults::standard().set(key, file);
    EXPECT_EQ(controller.recentPaths(), QStringList{file}) << "the settings write one alone in this way";
}

TEST_F(DocumentControllerTest, ADocumentMayBeDestroyedByWhoIsToldOfIt)
{
    QObject context;
    QObject::connect(&controller, &DocumentController::documentsChanged, &context, [this] {
        if (!controller.documents().isEmpty())
            delete controller.documents().first();
    });
    EXPECT_EQ(controller.newDocument(), nullptr);
    EXPECT_TRUE(controller.documents().isEmpty());
    EXPECT_EQ(takeAsked(), QStringList()) << "nothing failed";
}

TEST_F(DocumentControllerTest, ADocumentMayBeDestroyedByItsWindowsMaking)
{
    struct Fleeting : TextDocument {
        void makeWindowControllers() override { delete this; }
    };
    controller.registerType(
        {QStringLiteral("Fleeting"), QStringLiteral("fleeting"), [] { return std::make_unique<Fleeting>(); }});
    EXPECT_EQ(controller.newDocument(QStringLiteral("Fleeting")), nullptr);
    EXPECT_EQ(takeAsked(), QStringList()) << "nothing failed";
}

TEST_F(DocumentControllerTest, AnOpenDocumentMayBeDestroyedWhenItIsShownAgain)
{
    TextDocument *const first = opened("a.text");
    ASSERT_TRUE(first);
    ASSERT_TRUE(opened("b.text"));
    QObject context;
    QObject::connect(&controller, &DocumentController::currentDocumentChanged, &context, [&](Document *current) {
        if (current == first)
            delete current;
    });
    EXPECT_EQ(controller.openDocument(path("a.text")), nullptr);
    EXPECT_EQ(controller.documents().size(), 1);
}

TEST_F(DocumentControllerTest, LooksAtNoMoreThanAHundredStoredPaths)
{
    QStringList stored;
    for (int i = 0; i < 99; ++i)
        stored.append(path("none") + QString::number(i));
    stored.append(madeFile("last.text", ""));
    stored.append(madeFile("behind.text", ""));
    for (int i = 0; i < 1000; ++i)
        stored.append(path("garbage") + QString::number(i));
    UserDefaults::standard().set(QStringLiteral("NSRecentDocuments"), stored);
    EXPECT_EQ(controller.recentPaths(), QStringList{path("last.text")});
}

} // namespace
