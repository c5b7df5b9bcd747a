#include "Platform/Interface/Document.h"

#include "Support/DocumentTest.h"

#include <QDir>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

using documentTest::Controller;
using documentTest::TextDocument;
using platform::DocumentPanels;

struct DocumentTest : documentTest::Test {
    TextDocument document;
    QList<bool> edits;
    int closings = 0;

    DocumentTest()
    {
        QObject::connect(&document, &platform::Document::editedChanged, &document,
                         [this](bool isEdited) { edits.append(isEdited); });
        QObject::connect(&document, &platform::Document::closed, &document, [this] { ++closings; });
    }

    /// Makes the document one of a file.
    void openFile(const QByteArray &bytes = "old")
    {
        const auto failure = document.readFromFile(madeFile("file.text", bytes), QStringLiteral("Text"));
        EXPECT_FALSE(failure) << qPrintable(failure.value_or(QString()));
    }
    QByteArray fileContent() const { return testSupport::readFile(path("file.text")); }
    QStringList filesInFolder() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
};

// --- names

TEST_F(DocumentTest, UntitledDocumentsHaveTheLowestFreeNumber)
{
    EXPECT_EQ(document.displayName(), QStringLiteral("Untitled"));
    auto second = std::make_unique<TextDocument>();
    TextDocument third;
    EXPECT_EQ(second->displayName(), QStringLiteral("Untitled 2"));
    EXPECT_EQ(third.displayName(), QStringLiteral("Untitled 3"));
    EXPECT_EQ(second->displayName(), QStringLiteral("Untitled 2")) << "it stays";
    second.reset();
    TextDocument next;
    EXPECT_EQ(next.displayName(), QStringLiteral("Untitled 2"));
    platform::setLocalizedStringLanguages({QStringLiteral("de")});
    EXPECT_EQ(document.displayName(), QStringLiteral("Ohne Titel"));
    EXPECT_EQ(next.displayName(), QStringLiteral("Ohne Titel 2"));
}

TEST_F(DocumentTest, ASavedOrClosedDocumentFreesItsNumber)
{
    EXPECT_EQ(document.displayName(), QStringLiteral("Untitled"));
    person->place = path("named.text");
    EXPECT_TRUE(document.saveAs());
    EXPECT_EQ(document.displayName(), QStringLiteral("named.text"));
    TextDocument other, third;
    EXPECT_EQ(other.displayName(), QStringLiteral("Untitled"));
    other.closeWithoutAsking();
    EXPECT_EQ(third.displayName(), QStringLiteral("Untitled"));
}

TEST_F(DocumentTest, TellsOfItsNameThenOfItsPath)
{
    QStringList told;
    QObject::connect(&document, &platform::Document::displayNameChanged, &document,
                     [&] { told.append(document.displayName()); });
    QObject::connect(&document, &platform::Document::pathChanged, &document,
                     [&](const QString &path) { told.append(path); });
    person->place = path("a.text");
    EXPECT_TRUE(document.saveAs());
    EXPECT_EQ(told, (QStringList{QStringLiteral("a.text"), path("a.text")}));
    EXPECT_TRUE(document.save());
    EXPECT_EQ(told.size(), 2);
}

// --- edited

TEST_F(DocumentTest, IsEditedAsLongAsUndoHasNotGoneBackToTheLastSave)
{
    EXPECT_FALSE(document.isEdited());
    document.setText(QStringLiteral("one"));
    EXPECT_TRUE(document.isEdited());
    document.undoManager().undo();
    EXPECT_FALSE(document.isEdited());
    document.undoManager().redo();
    person->place = path("a.text");
    EXPECT_TRUE(document.save());
    EXPECT_FALSE(document.isEdited());
    document.undoManager().undo();
    EXPECT_TRUE(document.isEdited()) << "it differs from the file";
    document.undoManager().redo();
    EXPECT_FALSE(document.isEdited());
    EXPECT_EQ(edits, (QList<bool>{true, false, true, false, true, false}));
}

TEST_F(DocumentTest, IsEditedOnDemandUntilItIsSaved)
{
    document.setEdited(true);
    document.setText(QStringLiteral("one"));
    document.undoManager().undo();
    EXPECT_TRUE(document.isEdited());
    document.setEdited(false);
    EXPECT_FALSE(document.isEdited());
    document.setText(QStringLiteral("two"));
    document.setEdited(false);
    EXPECT_FALSE(document.isEdited()) << "from here on";
    document.undoManager().undo();
    EXPECT_TRUE(document.isEdited());
    document.setEdited(true);
    openFile();
    EXPECT_FALSE(document.isEdited());
}

TEST_F(DocumentTest, EmptyingTheUndoManagerSavesNothing)
{
    document.setText(QStringLiteral("one"));
    document.undoManager().removeAllActions();
    EXPECT_TRUE(document.isEdited());
    EXPECT_EQ(edits, QList<bool>{true});
}

TEST_F(DocumentTest, TellsNothingWhileItIsDestroyed)
{
    auto dying = std::make_unique<TextDocument>();
    dying->setText(QStringLiteral("one"));
    int told = 0;
    QObject observer;
    QObject::connect(dying.get(), &platform::Document::editedChanged, &observer, [&] { ++told; });
    dying.reset();
    EXPECT_EQ(told, 0);
}

// --- saving

TEST_F(DocumentTest, SavesToItsFileWithoutAsking)
{
    openFile();
    document.setText(QStringLiteral("new"));
    EXPECT_TRUE(document.save());
    EXPECT_EQ(fileContent(), "new");
    EXPECT_EQ(asked, QStringList());
    EXPECT_FALSE(document.isEdited());
    EXPECT_TRUE(document.undoManager().canUndo()) << "the history is the document's own business";
    document.setText(QStringLiteral("newer"));
    EXPECT_TRUE(document.save()) << "what it wrote itself is no change of others";
    EXPECT_EQ(asked, QStringList());
}

TEST_F(DocumentTest, AsksWhereToSaveADocumentWithoutAFile)
{
    document.setText(QStringLiteral("new"));
    EXPECT_FALSE(document.save()) << "cancelled";
    EXPECT_EQ(takeAsked(), QStringList{QStringLiteral("where? Untitled |  | ")});
    EXPECT_TRUE(document.isEdited());
    EXPECT_EQ(document.path(), QString());
    person->place = path("file.text");
    EXPECT_TRUE(document.save());
    EXPECT_EQ(fileContent(), "new");
    EXPECT_EQ(document.path(), path("file.text"));
    EXPECT_FALSE(document.isEdited());
    asked.clear();
    person->place = path("other.text");
    EXPECT_TRUE(document.saveAs());
    EXPECT_EQ(takeAsked(), QStringList{QStringLiteral("where? %1 |  | ").arg(path("file.text"))});
    EXPECT_EQ(document.path(), path("other.text"));
    EXPECT_EQ(testSupport::readFile(path("other.text")), "new");
}

TEST_F(DocumentTest, SavesACopyWithoutLeavingItsFile)
{
    openFile();
    document.setText(QStringLiteral("new"));
    EXPECT_FALSE(document.saveTo()) << "cancelled";
    person->place = path("copy.text");
    EXPECT_TRUE(document.saveTo());
    EXPECT_EQ(testSupport::readFile(path("copy.text")), "new");
    EXPECT_EQ(fileContent(), "old");
    EXPECT_EQ(document.path(), path("file.text"));
    EXPECT_TRUE(document.isEdited());
}

TEST_F(DocumentTest, ACopyOverItsOwnFileIsASave)
{
    openFile();
    document.setText(QStringLiteral("new"));
    QDir(folder.path()).mkdir(QStringLiteral("sub"));
    person->place = path("sub/../file.text");
    EXPECT_TRUE(document.saveTo());
    EXPECT_FALSE(document.isEdited());
    takeAsked();
    EXPECT_TRUE(document.save());
    EXPECT_EQ(asked, QStringList());
}

TEST_F(DocumentTest, KeepsThePermissionsOfTheFile)
{
    openFile();
    const auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup;
    ASSERT_TRUE(QFile::setPermissions(path("file.text"), permissions));
    const auto before = QFile::permissions(path("file.text"));
    EXPECT_TRUE(document.save());
    EXPECT_EQ(QFile::permissions(path("file.text")), before);
}

TEST_F(DocumentTest, FollowsSymbolicLinks)
{
    QDir(folder.path()).mkdir(QStringLiteral("real"));
    madeFile("real/target.text", "old");
    ASSERT_TRUE(QFile::link(QStringLiteral("real/target.text"), path("first.text")));
    ASSERT_TRUE(QFile::link(QStringLiteral("first.text"), path("link.text")));
    EXPECT_FALSE(document.readFromFile(path("link.text"), QStringLiteral("Text")));
    document.setText(QStringLiteral("new"));
    EXPECT_TRUE(document.save());
    EXPECT_TRUE(QFileInfo(path("link.text")).isSymLink());
    EXPECT_TRUE(QFileInfo(path("first.text")).isSymLink());
    EXPECT_FALSE(QFileInfo(path("real/target.text")).isSymLink());
    EXPECT_EQ(testSupport::readFile(path("real/target.text")), "new");
    EXPECT_EQ(document.displayName(), QStringLiteral("link.text"));
}

TEST_F(DocumentTest, FollowsALinkWhoseTargetIsGone)
{
    ASSERT_TRUE(QFile::link(path("target.text"), path("link.text")));
    EXPECT_FALSE(document.writeToFile(path("link.text"), QStringLiteral("Text")));
    EXPECT_TRUE(QFileInfo(path("link.text")).isSymLink());
    EXPECT_TRUE(QFileInfo::exists(path("target.text")));
}

TEST_F(DocumentTest, LeavesNothingBesideTheFile)
{
    openFile();
    EXPECT_TRUE(document.save());
    EXPECT_EQ(filesInFolder(), QStringList{QStringLiteral("file.text")});
    document.fails = true;
    EXPECT_FALSE(document.save());
    EXPECT_EQ(filesInFolder(), QStringList{QStringLiteral("file.text")});
}

TEST_F(DocumentTest, AFailedSaveLeavesFileAndDocumentAsTheyWere)
{
    openFile();
    document.setText(QStringLiteral("new"));
    document.fails = true;
    EXPECT_FALSE(document.save());
    EXPECT_EQ(takeAsked(),
              QStringList{QStringLiteral("error: The document “file.text” could not be saved. | Its content cannot be "
                                         "written in the form of this file.")});
    EXPECT_EQ(fileContent(), "old");
    EXPECT_TRUE(document.isEdited());
    EXPECT_EQ(document.text, QStringLiteral("new"));
    EXPECT_TRUE(document.undoManager().canUndo());

    person->place = path("no such folder/file.text");
    document.fails = false;
    EXPECT_FALSE(document.saveAs());
    EXPECT_EQ(takeAsked().last(),
              QStringLiteral("error: The document “file.text” could not be saved. | The folder “%1” does not exist.")
                  .arg(path("no such folder")));
    EXPECT_EQ(document.path(), path("file.text"));
    EXPECT_TRUE(document.isEdited());
    EXPECT_FALSE(document.saveTo());
    EXPECT_EQ(takeAsked().size(), 2);
}

TEST_F(DocumentTest, SaysWhatTheHookSaid)
{
    openFile();
    document.fails = true;
    document.reason = QStringLiteral("A slide has no photo.");
    EXPECT_FALSE(document.save());
    EXPECT_EQ(
        takeAsked(),
        QStringList{QStringLiteral("error: The document “file.text” could not be saved. | A slide has no photo.")});
    document.reason.clear();
    EXPECT_FALSE(document.save());
    EXPECT_FALSE(takeAsked().first().contains(QStringLiteral("slide"))) << "that was the last time";
}

TEST_F(DocumentTest, CatchesWhatTheHooksThrow)
{
    openFile();
    document.setText(QStringLiteral("new"));
    document.throws = QStringLiteral("a secret of the program");
    testSupport::expectWarning(QStringLiteral("saving a document: std::runtime_error: a secret of the program"));
    EXPECT_FALSE(document.save());
    EXPECT_EQ(takeAsked().size(), 1);
    EXPECT_EQ(fileContent(), "old");
    EXPECT_TRUE(document.isEdited());
    testSupport::expectWarning(QStringLiteral("loading a document: std::runtime_error: a secret of the program"));
    person->confirms = true;
    EXPECT_FALSE(document.revert());
    EXPECT_FALSE(takeAsked().last().contains(QStringLiteral("secret")));
    EXPECT_EQ(document.text, QStringLiteral("new"));
    EXPECT_TRUE(document.isEdited());
}

TEST_F(DocumentTest, TellsInWordsWhyAFileCannotBeWritten)
{
    const QString type = QStringLiteral("Text");
    QDir(folder.path()).mkdir(QStringLiteral("folder.text"));
    EXPECT_EQ(document.writeToFile(path("folder.text"), type), QStringLiteral("There is a folder of that name."));
    EXPECT_EQ(document.writeToFile(path("none/file.text"), type),
              QStringLiteral("The folder “%1” does not exist.").arg(path("none")));
    EXPECT_EQ(document.writeToFile(path("file.text"), QStringLiteral("Other")),
              QStringLiteral("Its content cannot be written in the form of this file."));
    const auto unnamed = document.writeToFile(folder.filePath(QString(300, u'x')), type);
    ASSERT_TRUE(unnamed);
    EXPECT_TRUE(unnamed->startsWith(QStringLiteral("The system reports: "))) << qPrintable(*unnamed);
}

#ifdef Q_OS_UNIX
TEST_F(DocumentTest, TellsInWordsWhatMayNotBeReadOrWritten)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "needs a user who is not allowed everything";
    const QString type = QStringLiteral("Text");
    openFile();
    QFile::setPermissions(path("file.text"), QFile::ReadOwner);
    EXPECT_EQ(document.writeToFile(path("file.text"), type),
              QStringLiteral("You do not have permission to change the file."));
    QFile::setPermissions(path("file.text"), QFile::WriteOwner);
    EXPECT_EQ(document.readFromFile(path("file.text"), type),
              QStringLiteral("You do not have permission to read the file."));
    QDir(folder.path()).mkdir(QStringLiteral("locked"));
    QFile::setPermissions(path("locked"), QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_EQ(document.writeToFile(path("locked/file.text"), type),
              QStringLiteral("You do not have permission to write into the folder “%1”.").arg(path("locked")));
}

TEST_F(DocumentTest, DoesNotReplaceOrReadWhatIsNoFile)
{
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe.text")).constData(), 0600), 0);
    const QString sentence = QStringLiteral("This is not a file that can hold a document.");
    EXPECT_EQ(document.writeToFile(path("pipe.text"), QStringLiteral("Text")), sentence);
    EXPECT_EQ(document.readFromFile(path("pipe.text"), QStringLiteral("Text")), sentence);
    EXPECT_TRUE(QFileInfo::exists(path("pipe.text")));
    EXPECT_FALSE(QFileInfo(path("pipe.text")).isFile());
}

TEST_F(DocumentTest, AWriteThatEndsInTheMiddleLeavesTheFile)
{
    openFile();
    document.setText(QString(1'000'000, u'x'));
    // As on a full disk: the system takes no byte beyond the tenth kilobyte.
    const auto before = ::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small{10'000, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool isSaved = document.save();
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    ::signal(SIGXFSZ, before);
    EXPECT_FALSE(isSaved);
    EXPECT_TRUE(takeAsked().last().startsWith(
        QStringLiteral("error: The document “file.text” could not be saved. | The system reports: ")));
    EXPECT_EQ(fileContent(), "old");
    EXPECT_EQ(filesInFolder(), QStringList{QStringLiteral("file.text")});
    EXPECT_TRUE(document.isEdited());
    EXPECT_TRUE(document.save()) << "when there is room again";
}
#endif

// --- the file behind the document's back

TEST_F(DocumentTest, AsksBeforeItOverwritesWhatOthersWrote)
{
    openFile();
    document.setText(QStringLiteral("mine"));
    madeFile("file.text", "theirs, longer");
    EXPECT_FALSE(document.save());
    EXPECT_EQ(takeAsked(),
              QStringList{QStringLiteral("confirm: The file “file.text” was changed by another program. | If you save, "
                                         "those changes will be lost. | Save Anyway")});
    EXPECT_EQ(fileContent(), "theirs, longer");
    EXPECT_TRUE(document.isEdited());
    person->confirms = true;
    EXPECT_TRUE(document.save());
    EXPECT_EQ(fileContent(), "mine");
    takeAsked();
    EXPECT_TRUE(document.save());
    EXPECT_EQ(asked, QStringList()) << "only once";
}

TEST_F(DocumentTest, SeesAChangeThatKeepsTheSize)
{
    openFile();
    QFile file(path("file.text"));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_EQ(file.write("own"), 3);
    file.flush();
    ASSERT_TRUE(file.setFileTime(QDateTime::currentDateTime().addSecs(5), QFileDevice::FileModificationTime));
    file.close();
    EXPECT_FALSE(document.save());
    EXPECT_EQ(asked.size(), 1);
}

TEST_F(DocumentTest, AsksBeforeItWritesAFileThatIsGone)
{
    openFile();
    QFile::remove(path("file.text"));
    EXPECT_FALSE(document.save());
    EXPECT_EQ(
        takeAsked(),
        QStringList{QStringLiteral("confirm: The file “file.text” is not where it was. | It was moved, renamed or "
                                   "deleted. If you save, it will be written to its old place again. | Save "
                                   "Anyway")});
    EXPECT_EQ(filesInFolder(), QStringList());
    person->confirms = true;
    EXPECT_TRUE(document.save());
    EXPECT_EQ(fileContent(), "old");
}

TEST_F(DocumentTest, ReadingAgainEndsTheSuspicion)
{
    openFile();
    madeFile("file.text", "theirs, longer");
    EXPECT_TRUE(document.revert()) << "nothing is lost by that, so nothing is asked";
    EXPECT_EQ(document.text, QStringLiteral("theirs, longer"));
    EXPECT_TRUE(document.save());
    EXPECT_EQ(asked, QStringList());
}

// --- loading and reverting

TEST_F(DocumentTest, AFileThatCannotBeReadLeavesTheDocument)
{
    openFile();
    document.setText(QStringLiteral("mine"));
    const QString type = QStringLiteral("Text");
    EXPECT_EQ(document.readFromFile(path("none.text"), type), QStringLiteral("There is no such file any more."));
    EXPECT_EQ(document.readFromFile(folder.path(), type),
              QStringLiteral("This is not a file that can hold a document."));
    const QString damaged = madeFile("damaged.text", "damaged");
    const QString sentence =
        QStringLiteral("The file is damaged, or was made by another program or by a newer version of this one.");
    EXPECT_EQ(document.readFromFile(damaged, type), sentence);
    EXPECT_EQ(document.readFromFile(path("file.text"), QStringLiteral("Other")), sentence);
    EXPECT_EQ(document.path(), path("file.text"));
    EXPECT_EQ(document.text, QStringLiteral("mine"));
    EXPECT_TRUE(document.isEdited());
    EXPECT_TRUE(document.undoManager().canUndo());
    EXPECT_TRUE(document.save()) << "it still knows its file";
    EXPECT_EQ(asked, QStringList());
}

TEST_F(DocumentTest, LoadingEmptiesTheUndoManager)
{
    document.setText(QStringLiteral("mine"));
    openFile();
    EXPECT_FALSE(document.undoManager().canUndo());
    EXPECT_FALSE(document.isEdited());
    EXPECT_EQ(document.text, QStringLiteral("old"));
    EXPECT_EQ(document.fileType(), QStringLiteral("Text"));
    EXPECT_EQ(document.path(), path("file.text"));
}

TEST_F(DocumentTest, AnEmptyFileIsContentToo)
{
    openFile(QByteArray());
    EXPECT_EQ(document.text, QString());
    EXPECT_TRUE(document.save());
    EXPECT_EQ(fileContent(), "");
}

TEST_F(DocumentTest, RevertsAfterAQuestion)
{
    EXPECT_FALSE(document.revert()) << "there is no file";
    openFile();
    document.setText(QStringLiteral("mine"));
    EXPECT_FALSE(document.revert());
    EXPECT_EQ(takeAsked(),
              QStringList{QStringLiteral(
                  "confirm: Do you want to go back to the last saved version of “file.text”? | The changes "
                  "that you made since will be lost. | Revert")});
    EXPECT_EQ(document.text, QStringLiteral("mine"));
    person->confirms = true;
    EXPECT_TRUE(document.revert());
    EXPECT_EQ(document.text, QStringLiteral("old"));
    EXPECT_FALSE(document.isEdited());
    takeAsked();
    EXPECT_TRUE(document.revert());
    EXPECT_EQ(asked, QStringList()) << "without changes there is no question";
}

TEST_F(DocumentTest, AFailedRevertLeavesTheDocument)
{
    openFile();
    document.setText(QStringLiteral("mine"));
    QFile::remove(path("file.text"));
    person->confirms = true;
    EXPECT_FALSE(document.revert());
    EXPECT_EQ(takeAsked().last(),
              QStringLiteral("error: The document “file.text” could not be read again. | There is "
                             "no such file any more."));
    EXPECT_EQ(document.text, QStringLiteral("mine"));
    EXPECT_TRUE(document.isEdited());
    document.undoManager().undo();
    EXPECT_EQ(document.text, QStringLiteral("old"));
}

// --- closing

TEST_F(DocumentTest, ClosesWithoutAQuestionWhenNothingIsLost)
{
    EXPECT_TRUE(document.close());
    EXPECT_EQ(asked, QStringList());
    EXPECT_EQ(closings, 1);
    EXPECT_TRUE(document.isClosed());
    document.closeWithoutAsking();
    EXPECT_EQ(closings, 1) << "once";
}

TEST_F(DocumentTest, CancelKeepsItOpen)
{
    document.setText(QStringLiteral("mine"));
    EXPECT_FALSE(document.close());
    EXPECT_EQ(takeAsked(), QStringList{QStringLiteral("save? Untitled")});
    EXPECT_EQ(closings, 0);
}

TEST_F(DocumentTest, DiscardClosesIt)
{
    openFile();
    document.setText(QStringLiteral("mine"));
    person->saveAnswer = DocumentPanels::SaveAnswer::Discard;
    EXPECT_TRUE(document.close());
    EXPECT_EQ(fileContent(), "old");
    EXPECT_EQ(closings, 1);
}

TEST_F(DocumentTest, SaveSavesAndClosesItUnlessThatFails)
{
    document.setText(QStringLiteral("mine"));
    person->saveAnswer = DocumentPanels::SaveAnswer::Save;
    EXPECT_FALSE(document.close()) << "no place was chosen";
    EXPECT_EQ(closings, 0);
    person->place = path("file.text");
    document.fails = true;
    EXPECT_FALSE(document.close());
    EXPECT_EQ(closings, 0);
    document.fails = false;
    EXPECT_TRUE(document.close());
    EXPECT_EQ(fileContent(), "mine");
    EXPECT_EQ(closings, 1);
}

TEST_F(DocumentTest, DoesNotAskTwiceAtTheSameTime)
{
    document.setText(QStringLiteral("mine"));
    bool closedMeanwhile = true;
    person->meanwhile = [&] { closedMeanwhile = document.close(); };
    EXPECT_FALSE(document.close());
    EXPECT_FALSE(closedMeanwhile);
    EXPECT_EQ(asked.size(), 1);
    EXPECT_FALSE(document.close());
    EXPECT_EQ(asked.size(), 2) << "but again later";
}

TEST_F(DocumentTest, ADocumentThatDiesDuringAQuestionIsNotTouched)
{
    const auto withDying = [this](bool (platform::Document::*operation)(), bool confirms) {
        auto dying = std::make_unique<TextDocument>();
        EXPECT_FALSE(dying->readFromFile(madeFile("dying.text", "old"), QStringLiteral("Text")));
        dying->setText(QStringLiteral("mine"));
        QFile::remove(path("dying.text"));
        person->confirms = confirms;
        person->place = path("dying.text");
        person->saveAnswer = DocumentPanels::SaveAnswer::Save;
        person->meanwhile = [&] { dying.reset(); };
        EXPECT_FALSE((dying.get()->*operation)());
        EXPECT_FALSE(dying);
    };
    withDying(&platform::Document::save, true);
    withDying(&platform::Document::saveAs, true);
    withDying(&platform::Document::saveTo, true);
    withDying(&platform::Document::revert, true);
    withDying(&platform::Document::close, true);
}

TEST_F(DocumentTest, ADocumentMayBeDestroyedByWhoeverIsToldOfASave)
{
    auto dying = std::make_unique<TextDocument>();
    dying->setText(QStringLiteral("mine"));
    QObject observer;
    QObject::connect(dying.get(), &platform::Document::displayNameChanged, &observer, [&] { dying.reset(); });
    TextDocument *const raw = dying.get();
    person->place = path("file.text");
    EXPECT_TRUE(raw->saveAs());
    EXPECT_EQ(fileContent(), "mine");
}

// --- windows

TEST_F(DocumentTest, KeepsItsWindowControllersInOrder)
{
    Controller &first = document.addController(), &second = document.addController(), &third = document.addController();
    EXPECT_EQ(document.windowControllers(), (QList<platform::WindowController *>{&first, &second, &third}));
    EXPECT_EQ(first.document(), &document);
    QPointer<Controller> removed = &second;
    document.removeWindowController(&second);
    EXPECT_EQ(document.windowControllers(), (QList<platform::WindowController *>{&first, &third}));
    EXPECT_EQ(removed->document(), nullptr);
    document.removeWindowController(nullptr);
    Controller stranger;
    document.removeWindowController(&stranger);
    EXPECT_EQ(document.windowControllers().size(), 2);
    EXPECT_TRUE(removed);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(removed);
    EXPECT_FALSE(document.isClosed());
}

TEST_F(DocumentTest, ShowsAllWindowsTheFirstInFront)
{
    Controller &first = document.addController(), &second = document.addController();
    document.showWindows();
    EXPECT_TRUE(first.isWindowVisible());
    EXPECT_TRUE(second.isWindowVisible());
    EXPECT_TRUE(testSupport::waitUntil([&] { return first.window()->isActiveWindow(); }));
}

TEST_F(DocumentTest, ClosesWithItsLastWindow)
{
    QPointer<Controller> first = &document.addController(), second = &document.addController();
    document.addController(); // never shown
    first->showWindow();
    second->showWindow();
    document.setText(QStringLiteral("mine"));
    EXPECT_TRUE(first->close());
    EXPECT_EQ(asked, QStringList()) << "another window is left";
    EXPECT_FALSE(document.isClosed());
    EXPECT_EQ(document.windowControllers().size(), 2);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(first);
    EXPECT_FALSE(second->close()) << "cancelled";
    EXPECT_TRUE(second->isWindowVisible());
    EXPECT_FALSE(document.isClosed());
    person->saveAnswer = DocumentPanels::SaveAnswer::Discard;
    EXPECT_TRUE(second->close());
    EXPECT_TRUE(document.isClosed());
    EXPECT_EQ(closings, 1);
    EXPECT_EQ(document.windowControllers().size(), 0);
    EXPECT_EQ(asked.size(), 2);
}

TEST_F(DocumentTest, AWindowThatRefusesKeepsTheDocumentOpen)
{
    Controller &controller = document.addController();
    controller.showWindow();
    controller.ownWindow()->refuses = true;
    EXPECT_FALSE(controller.close());
    EXPECT_FALSE(document.isClosed());
    EXPECT_TRUE(document.close()) << "whoever closes the document does not ask its windows";
    EXPECT_FALSE(controller.isWindowVisible());
}

TEST_F(DocumentTest, ClosingTheDocumentClosesAllWindowsAndAsksOnce)
{
    QStringList log;
    document.addController(&log);
    document.addController(&log);
    document.showWindows();
    document.setText(QStringLiteral("mine"));
    person->saveAnswer = DocumentPanels::SaveAnswer::Discard;
    log.clear();
    EXPECT_TRUE(document.close());
    log.removeAll(QStringLiteral("windowDidBecomeKey"));
    EXPECT_EQ(log, (QStringList{QStringLiteral("windowWillClose"), QStringLiteral("windowWillClose")}));
    EXPECT_EQ(asked.size(), 1);
    EXPECT_EQ(closings, 1);
}

TEST_F(DocumentTest, AWindowThatIsClosedWhileTheQuestionIsOpenStays)
{
    Controller &controller = document.addController();
    controller.showWindow();
    document.setText(QStringLiteral("mine"));
    person->meanwhile = [&] { EXPECT_FALSE(controller.close()); };
    EXPECT_FALSE(controller.close());
    EXPECT_EQ(asked.size(), 1);
    EXPECT_TRUE(controller.isWindowVisible());
}

TEST_F(DocumentTest, AWindowOpenedDuringTheQuestionKeepsTheDocumentOpen)
{
    Controller &controller = document.addController();
    controller.showWindow();
    document.setText(QStringLiteral("mine"));
    person->saveAnswer = DocumentPanels::SaveAnswer::Discard;
    person->meanwhile = [&] { document.addController().showWindow(); };
    EXPECT_TRUE(controller.close());
    EXPECT_FALSE(document.isClosed());
    EXPECT_EQ(document.windowControllers().size(), 1);
}

TEST_F(DocumentTest, DestroysItsWindows)
{
    auto dying = std::make_unique<TextDocument>();
    QPointer<QWidget> window = dying->addController().window();
    dying->showWindows();
    dying.reset();
    EXPECT_FALSE(window);
}

TEST_F(DocumentTest, WhoIsToldThatItIsUneditedMayDestroyIt)
{
    auto edited = std::make_unique<TextDocument>();
    edited->setText(QStringLiteral("mine"));
    QObject::connect(edited.get(), &platform::Document::editedChanged, [&] { edited.reset(); });
    edited->setEdited(false);
    EXPECT_FALSE(edited);
}

TEST_F(DocumentTest, WhoIsToldOfASaveMayDestroyIt)
{
    auto edited = std::make_unique<TextDocument>();
    const QString file = madeFile("a.text", "theirs");
    ASSERT_EQ(edited->readFromFile(file, QStringLiteral("Text")), std::nullopt);
    edited->setText(QStringLiteral("mine"));
    QObject::connect(edited.get(), &platform::Document::editedChanged, [&] { edited.reset(); });
    EXPECT_TRUE(edited->save());
    EXPECT_FALSE(edited);
    EXPECT_EQ(testSupport::readFile(file), "mine");
}

} // namespace
