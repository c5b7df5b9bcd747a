#include "ZRCommon/ZRDocument.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/PropertyList/PropertyList.h"
#include "Platform/Interface/DocumentPanels.h"
#include "Support/DocumentTest.h"

#include <functional>
#include <memory>
#include <stdexcept>

namespace {

using platform::Notification;
using platform::NotificationCenter;

/// Notes when it is told, and then does what it is asked to.
struct Observer : ZRDocumentObserver {
    QStringList &log;
    QString name;
    std::function<void()> call;

    Observer(QStringList &notes, const char *text)
        : log(notes)
        , name(QString::fromLatin1(text))
    { }
    void documentDidChange(ZRDocument &) override
    {
        log.append(name);
        if (const auto copy = call) // which may replace or destroy its own
            copy();
    }
};

struct WindowController : platform::WindowController {
    QStringList &log;
    QString name;
    std::function<void()> call;

    WindowController(QStringList &notes, const char *text)
        : log(notes)
        , name(QString::fromLatin1(text))
    { }
    void documentChanged() override
    {
        log.append(name);
        if (const auto copy = call) // which may replace or destroy its own
            copy();
    }
};

/// A document with one title.
class TitleDocument : public ZRDocument
{
public:
    QString title;
    bool writes = true;
    bool fails = false;

    explicit TitleDocument(int32_t version = 3)
        : ZRDocument(QStringLiteral("Title"), version, 2, 1)
    { }
    void setTitle(const QString &next)
    {
        performChanges([&] {
            undoManager().registerUndo([this, before = title] { setTitle(before); });
            title = next;
            documentDidChange();
        });
    }
    void encodeWithKeyedArchiver(platform::KeyedArchiver &archiver) override
    {
        if (fails)
            throw std::runtime_error("no content");
        if (writes)
            archiver.encode(title, "title");
    }
    void decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver) override
    {
        const QString decoded = unarchiver.decodeString("title");
        if (fails)
            throw std::runtime_error("no content");
        title = decoded;
    }
};

struct ZRDocumentTest : documentTest::Test {
    const QString type = QStringLiteral("Title");
    QStringList log;
    std::unique_ptr<TitleDocument> owned = std::make_unique<TitleDocument>();
    TitleDocument &document = *owned;
    Observer observer{log, "observer"};
    platform::Observation observation;

    ZRDocumentTest()
    {
        document.addObserver(&observer);
        observation = NotificationCenter::defaultCenter().addObserver(
            [this](const Notification &notification) {
                EXPECT_TRUE(notification.object<ZRDocument>() || !owned);
                log.append(QStringLiteral("notification"));
            },
            ZRDocumentDidChangeNotification, &document);
    }
    WindowController &addController(const char *name)
    {
        auto controller = std::make_unique<WindowController>(log, name);
        WindowController &added = *controller;
        document.addWindowController(std::move(controller));
        return added;
    }
    void change()
    {
        document.beginChanges();
        document.documentDidChange();
        document.endChanges();
    }
    QByteArray archived() { return document.dataRepresentationOfType(type).value_or(QByteArray()); }
    QStringList takeLog() { return std::exchange(log, {}); }
};

const QStringList once = {QStringLiteral("notification"), QStringLiteral("observer")};

// --- batches

TEST_F(ZRDocumentTest, TwoChangesInABatchAreAnnouncedOnce)
{
    document.beginChanges();
    document.documentDidChange();
    document.documentDidChange();
    EXPECT_EQ(log, QStringList());
    document.endChanges();
    EXPECT_EQ(log, once);
}

TEST_F(ZRDocumentTest, ABatchWithinAnotherForgetsNoChange)
{
    document.beginChanges();
    document.documentDidChange();
    document.beginChanges();
    document.endChanges();
    document.endChanges();
    EXPECT_EQ(log, once);
}

TEST_F(ZRDocumentTest, NestedBatchesAreAnnouncedByTheOutermost)
{
    document.beginChanges();
    document.beginChanges();
    document.documentDidChange();
    document.endChanges();
    EXPECT_EQ(log, QStringList());
    document.endChanges();
    EXPECT_EQ(log, once);
}

TEST_F(ZRDocumentTest, AChangeOutsideABatchIsForgottenByTheNext)
{
    document.documentDidChange();
    EXPECT_EQ(log, QStringList());
    document.beginChanges();
    document.endChanges();
    EXPECT_EQ(log, QStringList());
}

TEST_F(ZRDocumentTest, AnEndTooManyTakesTheLevelBelowZero)
{
    document.documentDidChange();
    document.endChanges();
    EXPECT_EQ(log, QStringList()) << "the level is -1";
    document.beginChanges();
    EXPECT_EQ(log, QStringList()) << "back to 0, which is no end";
    document.beginChanges();
    document.documentDidChange();
    document.endChanges();
    EXPECT_EQ(log, once);
}

TEST_F(ZRDocumentTest, AnnouncesWhenAnEndBringsTheLevelToExactlyZero)
{
    document.beginChanges();
    document.beginChanges();
    document.endChanges();
    document.documentDidChange();
    document.endChanges();
    EXPECT_EQ(takeLog(), once);
    document.endChanges();
    document.endChanges(); // -2
    document.beginChanges();
    document.documentDidChange();
    document.endChanges(); // -2 again
    EXPECT_EQ(log, QStringList());
}

TEST_F(ZRDocumentTest, AnAnnouncementDoesNotClearTheFlag)
{
    const auto archive = document.dataRepresentationOfType(document.fileType());
    ASSERT_TRUE(archive);
    document.beginChanges();
    document.documentDidChange();
    EXPECT_TRUE(document.loadDataRepresentation(*archive, document.fileType())); // which announces by itself
    EXPECT_FALSE(takeLog().isEmpty());
    document.endChanges();
    EXPECT_FALSE(takeLog().isEmpty()) << "the change is announced still";
}

TEST_F(ZRDocumentTest, ABatchWithoutAChangeIsNotAnnounced)
{
    document.beginChanges();
    document.endChanges();
    EXPECT_EQ(log, QStringList());
}

TEST_F(ZRDocumentTest, PerformedChangesAreOneBatch)
{
    document.performChanges([this] {
        change();
        document.performChanges([this] { document.documentDidChange(); });
        EXPECT_EQ(log, QStringList());
    });
    EXPECT_EQ(log, once);
}

TEST_F(ZRDocumentTest, ABodyThatThrowsClosesItsBatchAndGoesOn)
{
    const auto body = [this] {
        document.documentDidChange();
        throw std::runtime_error("half done");
    };
    EXPECT_THROW(document.performChanges(body), std::runtime_error);
    EXPECT_EQ(takeLog(), once) << "what was changed up to then is announced";
    change();
    EXPECT_EQ(log, once) << "the level is 0";
}

TEST_F(ZRDocumentTest, AnObserverOfPerformedChangesThatThrowsIsHeard)
{
    observer.call = [] { throw std::logic_error("not told"); };
    EXPECT_THROW(document.performChanges([this] { document.documentDidChange(); }), std::logic_error);
    EXPECT_THROW(document.performChanges([this] {
        document.documentDidChange();
        throw std::runtime_error("half done");
    }),
                 std::logic_error)
        << "the last that was thrown";
    takeLog();
    observer.call = nullptr;
    change();
    EXPECT_EQ(log, once) << "the level is 0";
}

TEST_F(ZRDocumentTest, TheBodyOfPerformedChangesMayDestroyTheDocument)
{
    const auto body = [this] {
        document.documentDidChange();
        owned.reset();
    };
    document.performChanges(body);
    EXPECT_EQ(log, QStringList());
    owned = std::make_unique<TitleDocument>();
    EXPECT_THROW(owned->performChanges([this] {
        owned.reset();
        throw std::runtime_error("gone");
    }),
                 std::runtime_error);
}

// --- announcements

TEST_F(ZRDocumentTest, TellsWindowControllersThenTheNotificationCentreThenObservers)
{
    addController("first controller");
    addController("second controller");
    Observer second(log, "second observer");
    document.addObserver(&second);
    change();
    EXPECT_EQ(
        log,
        (QStringList{QStringLiteral("first controller"), QStringLiteral("second controller"),
                     QStringLiteral("notification"), QStringLiteral("observer"), QStringLiteral("second observer")}));
}

TEST_F(ZRDocumentTest, AnObserverIsToldAsLongAsItIsInTheList)
{
    document.addObserver(&observer);
    change();
    EXPECT_EQ(takeLog(), once) << "once, however often it was added";
    document.removeObserver(&observer);
    change();
    EXPECT_EQ(log, QStringList{QStringLiteral("notification")});
}

TEST_F(ZRDocumentTest, ObserversMayRemoveThemselvesAndOthersAndAddMore)
{
    Observer second(log, "second"), third(log, "third"), added(log, "added");
    document.addObserver(&second);
    document.addObserver(&third);
    observer.call = [&] {
        document.removeObserver(&observer);
        document.removeObserver(&second);
        document.addObserver(&added);
    };
    change();
    EXPECT_EQ(takeLog(),
              (QStringList{QStringLiteral("notification"), QStringLiteral("observer"), QStringLiteral("third")}));
    change();
    EXPECT_EQ(log, (QStringList{QStringLiteral("notification"), QStringLiteral("third"), QStringLiteral("added")}));
}

TEST_F(ZRDocumentTest, AnObserverThatChangesTheDocumentIsAnnouncedFirst)
{
    Observer second(log, "second");
    document.addObserver(&second);
    observer.call = [&] {
        observer.call = nullptr;
        change();
    };
    change();
    EXPECT_EQ(log,
              (QStringList{QStringLiteral("notification"), QStringLiteral("observer"), QStringLiteral("notification"),
                           QStringLiteral("observer"), QStringLiteral("second"), QStringLiteral("second")}));
}

TEST_F(ZRDocumentTest, NobodyIsToldWhenAWindowControllerDestroysTheDocument)
{
    addController("first").call = [this] { owned.reset(); };
    addController("second");
    change();
    EXPECT_EQ(log, QStringList{QStringLiteral("first")});
}

TEST_F(ZRDocumentTest, NobodyIsToldWhenANotificationsObserverDestroysTheDocument)
{
    const auto destroyer = NotificationCenter::defaultCenter().addObserver(
        [this](const Notification &) { owned.reset(); }, ZRDocumentDidChangeNotification);
    change();
    EXPECT_EQ(log, QStringList{QStringLiteral("notification")});
}

TEST_F(ZRDocumentTest, NobodyIsToldWhenAnObserverDestroysTheDocument)
{
    Observer second(log, "second");
    document.addObserver(&second);
    observer.call = [this] { owned.reset(); };
    change();
    EXPECT_EQ(log, once);
}

TEST_F(ZRDocumentTest, WindowControllersMayBeRemovedAndAddedWhileTheyAreTold)
{
    WindowController &first = addController("first");
    WindowController &second = addController("second");
    first.call = [&] {
        first.call = nullptr;
        document.removeWindowController(&second);
        addController("third");
    };
    change();
    EXPECT_EQ(takeLog(), (QStringList{QStringLiteral("first")} + once)) << "third is told of the next change";
    change();
    EXPECT_EQ(log, (QStringList{QStringLiteral("first"), QStringLiteral("third")} + once));
}

TEST_F(ZRDocumentTest, WhoeverThrowsEndsTheAnnouncementAndTheDocumentWorksOn)
{
    WindowController &controller = addController("controller");
    controller.call = [] { throw std::runtime_error("not shown"); };
    EXPECT_THROW(change(), std::runtime_error);
    EXPECT_EQ(takeLog(), QStringList{QStringLiteral("controller")});
    controller.call = nullptr;
    observer.call = [] { throw std::runtime_error("not told"); };
    EXPECT_THROW(change(), std::runtime_error);
    takeLog();
    observer.call = nullptr;
    change();
    EXPECT_EQ(log, (QStringList{QStringLiteral("controller")} + once)) << "the level is 0";
}

TEST_F(ZRDocumentTest, AnObserverOfWhatIsUndoneOrRedoneMayDestroyTheDocument)
{
    for (const bool isRedone : {false, true}) {
        auto edited = std::make_unique<TitleDocument>();
        edited->setTitle(QStringLiteral("Summer"));
        if (isRedone)
            edited->undoManager().undo();
        Observer destroyer(log, "told");
        destroyer.call = [&] { edited.reset(); };
        edited->addObserver(&destroyer);
        if (isRedone)
            edited->undoManager().redo();
        else
            edited->undoManager().undo();
        EXPECT_FALSE(edited);
        EXPECT_EQ(takeLog(), QStringList{QStringLiteral("told")});
    }
}

// --- files

TEST_F(ZRDocumentTest, SavesNothingUnderAnotherType)
{
    EXPECT_EQ(document.fileType(), type);
    document.undoManager().registerUndo([] {});
    for (const char *other : {"title", "TITLE", "Title ", ""})
        EXPECT_EQ(document.dataRepresentationOfType(QString::fromLatin1(other)), std::nullopt) << other;
    EXPECT_TRUE(document.undoManager().canUndo()) << "nothing was saved";
    EXPECT_TRUE(document.dataRepresentationOfType(type));
}

TEST_F(ZRDocumentTest, LoadsNothingUnderAnotherType)
{
    const QByteArray archive = archived();
    document.undoManager().registerUndo([] {});
    EXPECT_FALSE(document.loadDataRepresentation(archive, QStringLiteral("title")));
    EXPECT_TRUE(document.undoManager().canUndo());
    EXPECT_EQ(log, QStringList());
}

TEST_F(ZRDocumentTest, TheFileIsAnXmlArchiveWithThreeVersions)
{
    document.title = QStringLiteral("Summer");
    const QByteArray archive = archived();
    EXPECT_TRUE(archive.startsWith("<?xml"));
    platform::KeyedUnarchiver unarchiver(archive);
    EXPECT_EQ(unarchiver.decodeInt32("current-version"), 3);
    EXPECT_EQ(unarchiver.decodeInt32("read-version"), 2);
    EXPECT_EQ(unarchiver.decodeInt32("write-version"), 1);
    EXPECT_EQ(unarchiver.decodeString("title"), QStringLiteral("Summer"));
}

TEST_F(ZRDocumentTest, ASaveEmptiesTheUndoManagerEvenIfNothingIsWritten)
{
    document.writes = false;
    document.undoManager().registerUndo([] {});
    document.undoManager().registerUndo([] {});
    document.undoManager().undo();
    EXPECT_FALSE(archived().isEmpty());
    EXPECT_FALSE(document.undoManager().canUndo());
    EXPECT_FALSE(document.undoManager().canRedo());
}

TEST_F(ZRDocumentTest, TheUndoManagerIsEmptyBeforeTheContentIsAskedFor)
{
    document.undoManager().registerUndo([] {});
    document.fails = true;
    EXPECT_THROW(document.dataRepresentationOfType(type), std::runtime_error);
    EXPECT_FALSE(document.undoManager().canUndo());
}

TEST_F(ZRDocumentTest, SavedAndLoadedItIsTheSame)
{
    document.title = QStringLiteral("Summer");
    const QByteArray archive = archived();
    TitleDocument other;
    EXPECT_TRUE(other.loadDataRepresentation(archive, type));
    EXPECT_EQ(other.title, QStringLiteral("Summer"));
}

TEST_F(ZRDocumentTest, LoadingEmptiesTheUndoManagerThenAnnouncesOnce)
{
    const QByteArray archive = archived();
    document.undoManager().registerUndo([] {});
    bool couldUndo = true;
    observer.call = [&] { couldUndo = document.undoManager().canUndo(); };
    EXPECT_TRUE(document.loadDataRepresentation(archive, type));
    EXPECT_EQ(takeLog(), once);
    EXPECT_FALSE(couldUndo);
    document.beginChanges();
    EXPECT_TRUE(document.loadDataRepresentation(archive, type));
    EXPECT_EQ(takeLog(), once) << "whatever the level";
    document.endChanges();
    EXPECT_EQ(log, QStringList()) << "loading is no change that was reported";
}

TEST_F(ZRDocumentTest, LoadsAFileOfANewerVersion)
{
    TitleDocument newer(99);
    newer.title = QStringLiteral("from the future");
    EXPECT_TRUE(document.loadDataRepresentation(*newer.dataRepresentationOfType(type), type));
    EXPECT_EQ(document.title, QStringLiteral("from the future"));
}

TEST_F(ZRDocumentTest, WhatIsNoArchiveRaisesAndChangesNothing)
{
    document.title = QStringLiteral("mine");
    document.undoManager().registerUndo([] {});
    for (const QByteArray &bytes : {QByteArray(), QByteArray("nonsense"), QByteArray("<plist><dict/></plist>")})
        EXPECT_THROW(document.loadDataRepresentation(bytes, type), platform::InvalidArchive);
    document.fails = true;
    TitleDocument other;
    EXPECT_THROW(document.loadDataRepresentation(*other.dataRepresentationOfType(type), type), std::runtime_error);
    EXPECT_TRUE(document.undoManager().canUndo());
    EXPECT_EQ(document.title, QStringLiteral("mine"));
    EXPECT_EQ(log, QStringList());
}

TEST_F(ZRDocumentTest, ContentThatNoArchiveCanHoldIsNotSaved)
{
    document.title = QString(QChar(1));
    testSupport::expectWarning(QStringLiteral("archiving a document"));
    EXPECT_EQ(document.dataRepresentationOfType(type), std::nullopt);
}

TEST_F(ZRDocumentTest, WhoIsToldThatNothingCanBeUndoneMayDestroyTheDocument)
{
    const QByteArray archive = archived();
    for (const bool isLoaded : {false, true}) {
        auto edited = std::make_unique<TitleDocument>();
        edited->setTitle(QStringLiteral("Summer"));
        QObject::connect(&edited->undoManager().stack(), &QUndoStack::canUndoChanged, [&] { edited.reset(); });
        if (isLoaded)
            edited->loadDataRepresentation(archive, type);
        else
            EXPECT_EQ(edited->dataRepresentationOfType(type), std::nullopt);
        EXPECT_FALSE(edited);
    }
}

// --- with files and windows

TEST_F(ZRDocumentTest, AnObserverThatThrowsDoesNotMakeAFileDamaged)
{
    document.title = QStringLiteral("Summer");
    const QString file = madeFile("a.title", archived());
    document.setTitle(QStringLiteral("Winter"));
    takeLog();
    observer.call = [] { throw std::runtime_error("not told"); };
    testSupport::expectWarning(QStringLiteral("announcing a document that was read: std::runtime_error: not told"));
    EXPECT_EQ(document.readFromFile(file, type), std::nullopt);
    EXPECT_EQ(takeLog(), once);
    EXPECT_EQ(document.title, QStringLiteral("Summer"));
    EXPECT_FALSE(document.isEdited());
    EXPECT_EQ(document.path(), file);
}

TEST_F(ZRDocumentTest, ASavedDocumentIsUneditedAndCannotBeUndone)
{
    document.title = QStringLiteral("Summer");
    document.undoManager().registerUndo([] {});
    person->place = path("a.title");
    EXPECT_TRUE(document.save());
    EXPECT_FALSE(document.isEdited());
    EXPECT_FALSE(document.undoManager().canUndo());
}

TEST_F(ZRDocumentTest, AFailedSaveLeavesItEdited)
{
    document.undoManager().registerUndo([] {});
    person->place = path("none/a.title");
    EXPECT_FALSE(document.save());
    EXPECT_TRUE(document.isEdited()) << "although its undo manager is empty by now";
    EXPECT_EQ(asked.size(), 2);
}

TEST_F(ZRDocumentTest, AFileTruncatedAnywhereLeavesDocumentAndFile)
{
    document.title = QStringLiteral("Summer");
    const QByteArray archive = archived();
    document.title = QStringLiteral("mine");
    document.undoManager().registerUndo([] {});
    const QString file = path("cut.title");
    // What stands behind the root's end tag may be missing.
    const qsizetype needed = archive.lastIndexOf("</dict>") + qsizetype(qstrlen("</dict>"));
    for (qsizetype length = 0; length < needed; ++length) {
        const QByteArray cut = archive.left(length);
        madeFile("cut.title", cut);
        testSupport::expectWarning(QStringLiteral("loading a document: "));
        const auto failure = document.readFromFile(file, type);
        ASSERT_TRUE(failure) << length;
        EXPECT_FALSE(failure->isEmpty());
        ASSERT_EQ(document.title, QStringLiteral("mine"));
        ASSERT_EQ(testSupport::readFile(file), cut);
    }
    EXPECT_TRUE(document.undoManager().canUndo());
    EXPECT_TRUE(document.isEdited());
    EXPECT_EQ(document.path(), QString());
    EXPECT_EQ(log, QStringList());
}

} // namespace
