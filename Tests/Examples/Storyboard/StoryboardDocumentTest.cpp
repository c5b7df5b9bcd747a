#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "StoryboardDocuments.h"
#include "Support/ImageSamples.h"

#include <QClipboard>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QDropEvent>
#include <QGuiApplication>
#include <QLineEdit>
#include <QListView>
#include <QMenuBar>
#include <QMimeData>
#include <QTest>

#include <limits>

using testSupport::StoryboardDocuments;

namespace {

using Slides = testSupport::Slides;
using Songs = testSupport::Songs;
const QString type = QStringLiteral("Storyboard");

QByteArray archiveOf(StoryboardDocument &document)
{
    return document.dataRepresentationOfType(type).value();
}

} // namespace

TEST_F(StoryboardDocuments, AreArchivedAndReadBack)
{
    const Slides slides = fill(3);
    document->changeSlides({slides[1]}, {}, [](Slide::Settings &settings) {
        settings = {QStringLiteral("Über <alles> & mehr"), 12.5, Slide::Transition::Wipe, 270};
    });
    document->insertSongs({std::make_shared<Song>(in("Finale.mp3"))}, 0, {});
    StoryboardDocument other;
    ASSERT_TRUE(other.loadDataRepresentation(archiveOf(*document), type));
    ASSERT_EQ(other.slides().count(), 3);
    EXPECT_EQ(titles(other), (QStringList{"Photo 0", "Über <alles> & mehr", "Photo 2"}));
    EXPECT_EQ(other.slides().items()[1]->settings(), slides[1]->settings());
    EXPECT_EQ(other.slides().items()[2]->photoPath(), in("Photo 2.jpg"));
    ASSERT_EQ(other.songs().count(), 1);
    EXPECT_EQ(other.songs().items()[0]->title(), "Finale");
    EXPECT_EQ(other.songs().items()[0]->path(), in("Finale.mp3"));
}

TEST_F(StoryboardDocuments, AnnounceEveryChangeOnceAndTakeItBackInOneStep)
{
    const Slides slides = fill(4);
    const auto song = std::make_shared<Song>(in("a.mp3"));
    const auto secondSong = std::make_shared<Song>(in("b.mp3"));
    const struct {
        const char *name;
        std::function<void()> change;
    } changes[] = {
        {"Insert", [&] { document->insertSlides({std::make_shared<Slide>("x.jpg")}, 2, "Insert"); }},
        {"Remove",
         [&] {
             document->removeSlides({slides[0], slides[3]}, "Remove");
         }},
        {"Move Slides",
         [&] {
             document->moveSlides({slides[3], slides[1]}, 0);
         }},
        {"Turn",
         [&] { document->changeSlides(slides, "Turn", [](Slide::Settings &settings) { settings.angle = 90; }); }},
        {"Songs",
         [&] {
             document->insertSongs({song, secondSong}, 0, "Songs");
         }},
        {"Move Songs", [&] { document->moveSongs({secondSong}, 0); }},
        {"Less", [&] { document->removeSongs({song}, "Less"); }},
    };
    for (const auto &each : changes) {
        const QByteArray before = [&] {
            platform::KeyedArchiver archiver;
            document->encodeWithKeyedArchiver(archiver);
            return archiver.finishEncoding().value();
        }();
        const int actions = document->undoManager().stack().index();
        each.change();
        EXPECT_EQ(announcements.documentCount, 1) << each.name;
        EXPECT_EQ(document->undoManager().stack().index(), actions + 1) << each.name;
        EXPECT_EQ(document->undoManager().stack().undoText(), each.name);
        document->undoManager().undo();
        EXPECT_EQ(announcements.documentCount, 2) << each.name;
        platform::KeyedArchiver archiver;
        document->encodeWithKeyedArchiver(archiver);
        EXPECT_EQ(archiver.finishEncoding().value(), before) << each.name;
        document->undoManager().redo();
        EXPECT_EQ(announcements.documentCount, 3) << each.name;
        document->undoManager().undo();
        if (qstrcmp(each.name, "Songs") == 0) // which the next ones need
            document->undoManager().redo();
        announcements.take();
    }
}

TEST_F(StoryboardDocuments, ChangeNothingWhereNothingChanges)
{
    const Slides slides = fill(3);
    const int actions = document->undoManager().stack().count();
    document->insertSlides({}, 0, "none");
    document->removeSlides({std::make_shared<Slide>("elsewhere.jpg")}, "none");
    document->moveSlides({slides[0]}, 0);
    document->moveSlides({slides[0]}, 1);
    document->changeSlides(slides, "none", [](Slide::Settings &settings) { settings.seconds = 5; });
    EXPECT_EQ(document->undoManager().stack().count(), actions);
    EXPECT_EQ(announcements.documentCount, 0);
}

TEST_F(StoryboardDocuments, KeepSettingsWithinTheirRanges)
{
    Slide slide("a.jpg");
    slide.setSettings({"", -3, Slide::Transition(9), -90});
    EXPECT_EQ(slide.settings(), (Slide::Settings{"", Slide::shortest, Slide::Transition::Dissolve, 270}));
    slide.setSettings({"", 1e9, Slide::Transition(-1), 725});
    EXPECT_EQ(slide.settings(), (Slide::Settings{"", Slide::longest, Slide::Transition::Dissolve, 5}));
    const double no = std::numeric_limits<double>::quiet_NaN();
    slide.setSettings({"", no, Slide::Transition::Push, no});
    EXPECT_EQ(slide.settings(), (Slide::Settings{"", 5, Slide::Transition::Push, 0}));
    slide.setSettings({"", 5, Slide::Transition::Push, -1e-20});
    EXPECT_LT(slide.settings().angle, 360);
}

TEST_F(StoryboardDocuments, StayAsTheyAreWhenADamagedFileIsLoaded)
{
    fill(3);
    const QByteArray whole = archiveOf(*document);
    const auto before = document->slides().items();
    const auto stays = [&](const QByteArray &bytes) {
        bool isRead = false;
        try {
            isRead = document->loadDataRepresentation(bytes, type);
        } catch (const platform::InvalidArchive &) { }
        if (isRead) // as it may be when only an ending or a value is damaged
            return document->loadDataRepresentation(whole, type) && titles(*document).size() == 3;
        return document->slides().count() == 3;
    };
    for (qsizetype length = 0; length < whole.size(); ++length)
        ASSERT_TRUE(stays(whole.left(length))) << length;
    for (qsizetype place = 0; place < whole.size(); place += 3) {
        QByteArray flipped = whole;
        flipped[place] = char(flipped[place] ^ (1 << (place % 7)));
        ASSERT_TRUE(stays(flipped)) << place;
    }
}

TEST_F(StoryboardDocuments, OpenAndTheirFilesStayWhenRevertingFails)
{
    fill(2);
    document->setFileType(type);
    const QString path = in("Show.storyboard");
    ASSERT_EQ(document->writeToFile(path, type), std::nullopt);
    ASSERT_EQ(document->readFromFile(path, type), std::nullopt);
    fill(1);
    const auto before = document->slides().items();
    const QByteArray damaged = testSupport::readFile(path).left(700);
    testSupport::writeFile(path, damaged);
    testSupport::expectWarning(
        "loading a document: platform::InvalidArchive: byte 700: the text ends before the list does");
    EXPECT_FALSE(document->revert());
    EXPECT_TRUE(panels->error.contains("Show.storyboard")) << qPrintable(panels->error);
    EXPECT_EQ(document->slides().items(), before);
    EXPECT_TRUE(document->isEdited());
    EXPECT_EQ(testSupport::readFile(path), damaged);
}

TEST_F(StoryboardDocuments, RefuseClassesAndVersionsThatTheyDoNotKnow)
{
    fill(1);
    QByteArray bytes = archiveOf(*document);
    QByteArray unknown = bytes;
    unknown.replace("<string>Slide</string>", "<string>Slice</string>");
    ASSERT_NE(unknown, bytes);
    testSupport::writeFile(in("a.storyboard"), unknown);
    testSupport::expectWarning("loading a document: platform::InvalidArchive: object 4: unknown class: Slice");
    EXPECT_FALSE(controller.openDocument(in("a.storyboard")));
    EXPECT_TRUE(panels->error.contains("a.storyboard")) << qPrintable(panels->error);

    QByteArray newer = bytes;
    const qsizetype version = newer.indexOf("<integer>1</integer>", newer.indexOf("read-version"));
    ASSERT_GT(version, 0);
    newer.replace(version, 20, "<integer>2</integer>");
    testSupport::writeFile(in("b.storyboard"), newer);
    testSupport::expectWarning("loading a document: platform::InvalidArchive: a newer format");
    EXPECT_FALSE(controller.openDocument(in("b.storyboard")));
    EXPECT_TRUE(panels->error.contains("It was written by a newer version of Storyboard."))
        << qPrintable(panels->error);
    EXPECT_EQ(controller.documents().size(), 1);
}

TEST_F(StoryboardDocuments, SelectSlidesOrSongs)
{
    const Slides slides = fill(3);
    const auto song = std::make_shared<Song>(in("a.mp3"));
    document->insertSongs({song}, 0, {});
    select({slides[0], slides[2]});
    EXPECT_EQ(shown(), (QList<int>{0, 2}));
    QListView &list = window->songsView();
    list.selectionModel()->select(list.model()->index(0, 0), QItemSelectionModel::ClearAndSelect);
    EXPECT_EQ(selection().songs(), Songs{song});
    EXPECT_EQ(shown(), QList<int>());
    window->grid().matrixSelectCellAtRow(0, 1);
    EXPECT_EQ(selection().slides(), Slides{slides[1]});
    EXPECT_FALSE(list.selectionModel()->hasSelection());
}

TEST_F(StoryboardDocuments, TellOfASelectionOnce)
{
    fill(3);
    announcements.take();
    window->grid().matrixSelectCellAtRow(0, 1);
    EXPECT_EQ(announcements.take(), qMakePair(0, 1));
    window->grid().matrixSelectCellAtRow(0, 1);
    EXPECT_EQ(announcements.take(), qMakePair(0, 0)); // the same one
}

TEST_F(StoryboardDocuments, DeleteAndTakeBackWithTheSelection)
{
    const Slides slides = fill(4);
    select({slides[1], slides[2]});
    announcements.take();
    action(QKeySequence::Delete).trigger();
    EXPECT_EQ(document->slides().items(), (Slides{slides[0], slides[3]}));
    EXPECT_EQ(selection().slides(), Slides{slides[3]});
    EXPECT_EQ(announcements.documentCount, 1);
    action(QKeySequence::Undo).trigger();
    EXPECT_EQ(document->slides().items(), slides);
    EXPECT_EQ(selection().slides(), (Slides{slides[1], slides[2]}));
    EXPECT_EQ(shown(), (QList<int>{1, 2}));
    action(QKeySequence::Redo).trigger();
    EXPECT_EQ(document->slides().count(), 2);
    EXPECT_EQ(selection().slides(), Slides{slides[3]});
}

TEST_F(StoryboardDocuments, CutCopyAndPaste)
{
    const Slides slides = fill(3);
    document->changeSlides({slides[0]}, {}, [](Slide::Settings &settings) { settings.seconds = 9; });
    select({slides[0], slides[1]});
    action(QKeySequence::Copy).trigger();
    const QMimeData *const data = QGuiApplication::clipboard()->mimeData();
    EXPECT_TRUE(data->hasFormat(StoryboardSelection::mimeType()));
    EXPECT_EQ(data->urls(),
              (QList<QUrl>{QUrl::fromLocalFile(in("Photo 0.jpg")), QUrl::fromLocalFile(in("Photo 1.jpg"))}));
    action(QKeySequence::Paste).trigger();
    EXPECT_EQ(titles(*document), (QStringList{"Photo 0", "Photo 1", "Photo 0", "Photo 1", "Photo 2"}));
    EXPECT_EQ(document->slides().items()[2]->settings().seconds, 9);
    EXPECT_NE(document->slides().items()[2], slides[0]);
    EXPECT_EQ(shown(), (QList<int>{2, 3}));
    action(QKeySequence::Cut).trigger();
    EXPECT_EQ(document->slides().items(), slides);
    EXPECT_EQ(shown(), QList<int>{2});

    auto *const second = static_cast<StoryboardDocument *>(controller.newDocument());
    auto *const secondWindow = static_cast<StoryboardWindowController *>(second->windowControllers().first());
    secondWindow->selection()->paste();
    EXPECT_EQ(titles(*second), (QStringList{"Photo 0", "Photo 1"}));
    second->closeWithoutAsking();
}

TEST_F(StoryboardDocuments, StayUneditedWhenTheClipboardCannotBeReadOrIsEmpty)
{
    platform::KeyedArchiver archiver;
    for (const QByteArray &bytes : {QByteArray("nonsense"), archiver.finishEncoding().value()}) {
        auto data = std::make_unique<QMimeData>();
        data->setData(StoryboardSelection::mimeType(), bytes);
        QGuiApplication::clipboard()->setMimeData(data.release());
        action(QKeySequence::Paste).trigger();
        EXPECT_EQ(document->slides().count(), 0);
        EXPECT_FALSE(document->undoManager().canUndo());
        EXPECT_FALSE(document->isEdited());
        EXPECT_EQ(window->statusText(), "The slides cannot be read.");
    }
    QGuiApplication::clipboard()->clear();
    EXPECT_FALSE(action(QKeySequence::Paste).isEnabled());
}

TEST_F(StoryboardDocuments, SelectWhatComesAgainWhenItIsDoneAgain)
{
    const Slides slides = fill(2);
    select({slides[0]});
    action(QKeySequence::Copy).trigger();
    action(QKeySequence::Paste).trigger();
    ASSERT_EQ(shown(), QList<int>{1});
    for (int i = 0; i < 2; ++i) {
        action(QKeySequence::Undo).trigger();
        EXPECT_EQ(shown(), QList<int>{0});
        EXPECT_EQ(document->slides().items(), slides);
        action(QKeySequence::Redo).trigger();
        EXPECT_EQ(shown(), QList<int>{1});
        EXPECT_EQ(document->slides().count(), 3);
    }
}

TEST_F(StoryboardDocuments, AnnounceOnceWhatIsUndoneInOneStep)
{
    testSupport::writeFile(in("photo.png"), testSupport::encoded(QImage(4, 3, QImage::Format_RGB32), "png"));
    window->addFiles({in("photo.png"), in("song.mp3")});
    EXPECT_EQ(announcements.take(), qMakePair(1, 1));
    action(QKeySequence::Undo).trigger();
    EXPECT_EQ(document->slides().count() + document->songs().count(), 0);
    EXPECT_EQ(announcements.take(), qMakePair(1, 1));
    action(QKeySequence::Redo).trigger();
    EXPECT_EQ(announcements.take(), qMakePair(1, 1));
    EXPECT_EQ(action(QKeySequence::Undo).text(), "&Undo Add Photos");
}

TEST_F(StoryboardDocuments, TakeOverWhatWasTypedBeforeTheyAreSavedOrClosed)
{
    const Slides slides = fill(2);
    select({slides[0]});
    QLineEdit &title = widget<QLineEdit>("slideTitle");
    title.clear();
    QTest::keyClicks(&title, "Beach");
    ASSERT_EQ(document->writeToFile(in("a.storyboard"), type), std::nullopt);
    ASSERT_EQ(document->readFromFile(in("a.storyboard"), type), std::nullopt);
    selection().select({document->slides().items()[0]});
    title.clear();
    QTest::keyClicks(&title, "Beach");
    EXPECT_FALSE(document->isEdited());
    action(QKeySequence::Save).trigger();
    EXPECT_EQ(titles(*document)[0], "Beach");
    EXPECT_TRUE(testSupport::readFile(in("a.storyboard")).contains("Beach"));

    selection().select({document->slides().items()[1]});
    title.clear();
    QTest::keyClicks(&title, "Sea");
    QWidget *const shownWindow = window->window();
    shownWindow->close(); // after the question, which is answered by Discard
    EXPECT_EQ(panels->questions, 1);
    document = static_cast<StoryboardDocument *>(controller.newDocument());
    window = static_cast<StoryboardWindowController *>(document->windowControllers().first());
}

TEST_F(StoryboardDocuments, KeepWhatWasTypedWhenAnotherCommandComes)
{
    const Slides slides = fill(2);
    select({slides[0]});
    QLineEdit &title = widget<QLineEdit>("slideTitle");
    title.clear();
    QTest::keyClicks(&title, "Beach");
    action(QKeySequence(Qt::CTRL | Qt::Key_R)).trigger();
    EXPECT_EQ(slides[0]->settings().title, "Beach");
    EXPECT_EQ(slides[0]->settings().angle, 90);
}

TEST_F(StoryboardDocuments, LiveOnWhenAnObserverRaises)
{
    struct Raising final : ZRDocumentObserver {
        void documentDidChange(ZRDocument &) override { throw std::runtime_error("no"); }
    } raising;
    document->addObserver(&raising);
    EXPECT_THROW(fill(1), std::runtime_error);
    EXPECT_THROW(document->undo(), std::runtime_error);
    document->removeObserver(&raising);
    EXPECT_EQ(document->slides().count(), 0);
    fill(2);
    EXPECT_EQ(document->slides().count(), 2);
}

TEST_F(StoryboardDocuments, RefuseOtherArchives)
{
    platform::KeyedArchiver archiver;
    archiver.encode(QStringLiteral("something else"), "root");
    testSupport::writeFile(in("other.storyboard"), archiver.finishEncoding().value());
    testSupport::expectWarning("loading a document: platform::InvalidArchive: no slides or songs");
    EXPECT_FALSE(controller.openDocument(in("other.storyboard")));
    EXPECT_TRUE(panels->error.contains("It is no storyboard.")) << qPrintable(panels->error);
}

TEST_F(StoryboardDocuments, MakeTwoSlidesOfOneThatAFileNamesTwice)
{
    platform::KeyedArchiver archiver;
    const auto slide = std::make_shared<Slide>(in("a.jpg"));
    archiver.encode(Slides{slide, slide}, "slides");
    archiver.encode(Songs{}, "songs");
    StoryboardDocument other;
    ASSERT_TRUE(other.loadDataRepresentation(archiver.finishEncoding().value(), type));
    ASSERT_EQ(other.slides().count(), 2);
    EXPECT_NE(other.slides().items()[0], other.slides().items()[1]);
    EXPECT_EQ(other.slides().items()[1]->photoPath(), in("a.jpg"));
}

TEST_F(StoryboardDocuments, HoldFilesOfAnyName)
{
    const QString odd = in("a\x01\u00e9%20#?.jpg");
    document->insertSlides({std::make_shared<Slide>(odd)}, 0, {});
    document->changeSlides(document->slides().items(), {},
                           [](Slide::Settings &settings) { settings.title = QStringLiteral("a\x02") + QChar(0xD800); });
    StoryboardDocument other;
    ASSERT_TRUE(other.loadDataRepresentation(archiveOf(*document), type));
    EXPECT_EQ(other.slides().items()[0]->photoPath(), odd);
    EXPECT_EQ(other.slides().items()[0]->settings().title, document->slides().items()[0]->settings().title);
}

TEST_F(StoryboardDocuments, TakeFilesAndSayWhichAreNeitherPhotosNorSongs)
{
    testSupport::writeFile(in("photo.png"), testSupport::encoded(QImage(4, 3, QImage::Format_RGB32), "png"));
    window->addFiles({in("photo.png"), in("song.mp3"), in("notes.txt")});
    EXPECT_EQ(titles(*document), QStringList{"photo"});
    EXPECT_EQ(document->songs().count(), 1);
    EXPECT_EQ(window->statusText(), "Neither a photo nor a song: notes.txt");
    EXPECT_EQ(document->undoManager().stack().count(), 1);
    EXPECT_EQ(announcements.documentCount, 1);
    document->undoManager().undo();
    EXPECT_EQ(document->slides().count() + document->songs().count(), 0);
    window->addFiles({in("notes.txt")});
    EXPECT_FALSE(document->undoManager().canUndo());
}

TEST_F(StoryboardDocuments, TakeWhatIsDroppedBetweenTheSlides)
{
    const Slides slides = fill(3);
    SlideGrid &grid = window->grid();
    const auto drop = [&](const QMimeData &data, const QPointF &place) {
        QDragEnterEvent enter(grid.toWidget(place).toPoint(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&grid, &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent event(grid.toWidget(place), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&grid, &event);
        return event.isAccepted();
    };
    const QRectF second = grid.cellFrameAtRow(0, 1);
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(in("new.png"))});
    EXPECT_TRUE(drop(files, second.center() - QPointF(20, 0)));
    EXPECT_EQ(titles(*document), (QStringList{"Photo 0", "new", "Photo 1", "Photo 2"}));
    select({slides[2]});
    const auto carried = selection().mimeData();
    EXPECT_TRUE(drop(*carried, QPointF(1, 1)));
    EXPECT_EQ(titles(*document), (QStringList{"Photo 2", "Photo 0", "new", "Photo 1", "Photo 2"}));
    QMimeData text;
    text.setText("words");
    EXPECT_FALSE(drop(text, second.center()));
    EXPECT_EQ(document->slides().count(), 5);
}

TEST_F(StoryboardDocuments, InsertWhereItIsShown)
{
    fill(10);
    SlideGrid &grid = window->grid();
    const int columns = grid.numberOfColumns();
    ASSERT_GE(columns, 2);
    EXPECT_EQ(grid.insertionIndexAt(QPointF(-5, -5)), 0);
    EXPECT_EQ(grid.insertionIndexAt(grid.cellFrameAtRow(0, 1).center() + QPointF(10, 0)), 2);
    EXPECT_EQ(grid.insertionIndexAt(QPointF(grid.viewBounds().right(), 5)), columns);
    EXPECT_EQ(grid.insertionIndexAt(QPointF(5, 1e6)), 10);
}

TEST_F(StoryboardDocuments, ChangeTheSelectedSlidesFromTheForm)
{
    const Slides slides = fill(3);
    select({slides[0], slides[2]});
    EXPECT_EQ(widget<QLineEdit>("slideTitle").text(), QString());
    EXPECT_EQ(widget<QLineEdit>("slideTitle").placeholderText(), "Several titles");
    QTest::keyClicks(&widget<QLineEdit>("slideTitle"), "Both");
    QTest::keyClick(&widget<QLineEdit>("slideTitle"), Qt::Key_Return);
    EXPECT_EQ(titles(*document), (QStringList{"Both", "Photo 1", "Both"}));
    widget<QDoubleSpinBox>("slideSeconds").setValue(2.5);
    EXPECT_EQ(slides[2]->settings().seconds, 2.5);
    EXPECT_EQ(slides[1]->settings().seconds, 5);
    QTest::keyClick(&widget<QComboBox>("slideTransition"), Qt::Key_End);
    EXPECT_EQ(slides[0]->settings().transition, Slide::Transition::Wipe);
    action(QKeySequence(Qt::CTRL | Qt::Key_R)).trigger();
    EXPECT_EQ(slides[0]->settings().angle, 90);
    EXPECT_EQ(widget<QDoubleSpinBox>("slideAngle").value(), 90);
    action(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R)).trigger();
    EXPECT_EQ(slides[0]->settings().angle, 0);
    EXPECT_EQ(selection().slides().size(), 2); // still
    const int actions = document->undoManager().stack().count();
    select({slides[1]});
    EXPECT_EQ(document->undoManager().stack().count(), actions) << "showing is no change";
}

TEST_F(StoryboardDocuments, SelectAllTakesTheKindThatIsSelected)
{
    const Slides slides = fill(3);
    document->insertSongs({std::make_shared<Song>("a.mp3"), std::make_shared<Song>("b.mp3")}, 0, {});
    action(QKeySequence::SelectAll).trigger();
    EXPECT_EQ(selection().slides().size(), 3);
    selection().select({document->songs().items()[1]});
    action(QKeySequence::SelectAll).trigger();
    EXPECT_EQ(selection().songs().size(), 2);
    action(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A)).trigger();
    EXPECT_TRUE(selection().isEmpty());
}

TEST_F(StoryboardDocuments, MoveWhatIsSelectedAndKeepItSelected)
{
    const Slides slides = fill(4);
    select({slides[1], slides[2]});
    action(QKeySequence(Qt::CTRL | Qt::Key_Right)).trigger();
    EXPECT_EQ(document->slides().items(), (Slides{slides[0], slides[3], slides[1], slides[2]}));
    EXPECT_EQ(shown(), (QList<int>{2, 3}));
    action(QKeySequence(Qt::CTRL | Qt::Key_Left)).trigger();
    action(QKeySequence(Qt::CTRL | Qt::Key_Left)).trigger();
    action(QKeySequence(Qt::CTRL | Qt::Key_Left)).trigger();
    EXPECT_EQ(document->slides().items(), (Slides{slides[1], slides[2], slides[0], slides[3]}));
}

TEST_F(StoryboardDocuments, TheEditMenuIsForATextThatHasTheKeyboard)
{
    const Slides slides = fill(2);
    select({slides[0]});
    window->window()->activateWindow();
    ASSERT_TRUE(testSupport::waitUntil([&] { return window->window()->isActiveWindow(); }));
    QLineEdit &title = widget<QLineEdit>("slideTitle");
    title.setFocus();
    title.selectAll();
    action(QKeySequence::Cut).trigger();
    EXPECT_EQ(title.text(), QString());
    EXPECT_EQ(document->slides().count(), 2);
    action(QKeySequence::Paste).trigger();
    EXPECT_EQ(title.text(), "Photo 0");
}
