#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Interface/DragRunner.h"
#include "Platform/Interface/ScrollView.h"
#include "StoryboardDocuments.h"
#include "Support/ImageSamples.h"
#include "Support/TestSupport.h"

#include "Storyboard/PhotoFolderWindow.h"
#include "Storyboard/SlidePictures.h"
#include "Storyboard/Texts.h"

#include <QtTest/QTest>
#include <QtWidgets>

using testSupport::StoryboardDocuments;

namespace {

QMimeData *filesOf(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    auto *const data = new QMimeData;
    data->setUrls(urls);
    return data;
}

struct StoryboardWindows : StoryboardDocuments {
    QString countText() const { return window->window()->findChild<QStatusBar *>()->findChild<QLabel *>()->text(); }
    SongList &songs() const { return window->songsView(); }
    QStringList songTitles() const
    {
        QStringList result;
        for (const auto &song : document->songs().items())
            result.append(song->title());
        return result;
    }
    void addSongs(const QStringList &names)
    {
        testSupport::Songs added;
        for (const QString &name : names)
            added.append(std::make_shared<Song>(in(qPrintable(name))));
        document->insertSongs(added, document->songs().count(), QStringLiteral("Add"));
    }
    bool dropOnSongs(const QMimeData &data, const QPoint &point)
    {
        QDragEnterEvent enter(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(songs().viewport(), &enter);
        QDragMoveEvent move(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(songs().viewport(), &move);
        QDropEvent drop(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(songs().viewport(), &drop);
        return enter.isAccepted() && move.isAccepted() && drop.isAccepted();
    }
    QPoint songPlace(int row, int dy) const
    {
        return songs().visualRect(songs().model()->index(row, 0)).center() + QPoint(0, dy);
    }
};

} // namespace

TEST_F(StoryboardWindows, CountInWords)
{
    EXPECT_EQ(countText(), "0 slides, 0 songs, 0:00");
    fill(1);
    addSongs({"a.mp3"});
    EXPECT_EQ(countText(), "1 slide, 1 song, 0:05");
    select(document->slides().items());
    EXPECT_EQ(countText(), "1 slide, 1 song, 0:05 – 1 selected");
}

TEST(StoryboardTexts, TimesHaveHoursWhereTheyAreLong)
{
    EXPECT_EQ(timeText(0), "0:00");
    EXPECT_EQ(timeText(59.4), "0:59");
    EXPECT_EQ(timeText(59.6), "1:00");
    EXPECT_EQ(timeText(3599), "59:59");
    EXPECT_EQ(timeText(3725), "1:02:05");
    EXPECT_EQ(timeText(500'000), "138:53:20");
    EXPECT_EQ(timeText(1e300), timeText(1e12));
}

TEST(StoryboardTexts, LabelsShortenTextsAndNeedNoRoom)
{
    ElidedLabel label;
    const QString path = QStringLiteral("/home/somebody/%1").arg(QString(500, QLatin1Char('x')));
    label.setText(path);
    EXPECT_EQ(label.minimumSizeHint().width(), 0);
    label.resize(200, 20);
    QHelpEvent help(QEvent::ToolTip, QPoint(), QPoint());
    QCoreApplication::sendEvent(&label, &help);
    EXPECT_EQ(label.toolTip(), path);
    label.setText("short");
    QCoreApplication::sendEvent(&label, &help);
    EXPECT_EQ(label.toolTip(), QString());
}

TEST_F(StoryboardWindows, TitlesOfAnyDirectionLeaveTheSecondsInTheirPlace)
{
    const auto slides = fill(1);
    document->changeSlides(slides, {}, [](Slide::Settings &settings) { settings.title = QString(QChar(0x202e)); });
    const auto &cell = static_cast<const ZRPhotoCell &>(*window->grid().cellAtIndex(0));
    EXPECT_EQ(cell.photoTitle(), QString(QChar(0x2068)) + QChar(0x202e) + QChar(0x2069) + QStringLiteral(" – 5 s"));
}

TEST_F(StoryboardWindows, TheSlidesHaveTheKeyboardAtFirst)
{
    fill(2);
    window->window()->show();
    window->window()->activateWindow();
    EXPECT_TRUE(testSupport::waitUntil([&] { return window->grid().hasFocus(); }));
    action(QKeySequence::SelectAll).trigger();
    EXPECT_EQ(selection().slideCount(), 2);
}

TEST_F(StoryboardWindows, SelectAllTakesTheSlidesWhereThereAreNoSongs)
{
    fill(2);
    window->window()->show();
    songs().setFocus();
    action(QKeySequence::SelectAll).trigger();
    EXPECT_EQ(selection().slideCount(), 2);
}

TEST_F(StoryboardWindows, CommandsThatSelectOrMoveTakeOverWhatWasTyped)
{
    const auto slides = fill(3);
    auto &title = widget<QLineEdit>("slideTitle");
    const auto type = [&](const char *text) {
        select({slides[1]});
        title.setText(QString::fromUtf8(text));
        title.setModified(true);
    };
    type("nothing");
    action(Qt::CTRL | Qt::SHIFT | Qt::Key_A).trigger();
    EXPECT_EQ(slides[1]->settings().title, "nothing");
    type("moved");
    action(Qt::CTRL | Qt::Key_Left).trigger();
    EXPECT_EQ(slides[1]->settings().title, "moved");
    type("dropped");
    const auto carried = selection().mimeData();
    Q_EMIT window->grid().dropped(carried.get(), 3, true);
    EXPECT_EQ(slides[1]->settings().title, "dropped");
    EXPECT_EQ(document->slides().indexOf(slides[1].get()), 2);
}

TEST_F(StoryboardWindows, TheFormSaysWhereSlidesDiffer)
{
    const auto slides = fill(2);
    auto &seconds = widget<QDoubleSpinBox>("slideSeconds");
    auto &angle = widget<QDoubleSpinBox>("slideAngle");
    auto &transition = widget<QComboBox>("slideTransition");
    document->changeSlides({slides[1]}, {}, [](Slide::Settings &settings) {
        settings = {QStringLiteral("b"), 8, Slide::Transition::Wipe, 90};
    });
    select(slides);
    EXPECT_EQ(seconds.text(), "Several");
    EXPECT_EQ(angle.text(), "Several");
    EXPECT_EQ(transition.currentIndex(), -1);
    EXPECT_EQ(transition.placeholderText(), "Several");
    EXPECT_EQ(widget<QLineEdit>("slideTitle").placeholderText(), "Several titles");
    EXPECT_EQ(slides[1]->settings().seconds, 8);

    seconds.setValue(5); // what the first one has already
    EXPECT_EQ(slides[1]->settings().seconds, 5);
    EXPECT_EQ(seconds.text(), "5.0 s");
    EXPECT_EQ(seconds.minimum(), Slide::shortest);
    angle.stepUp(); // from the first one's
    EXPECT_EQ(slides[0]->settings().angle, 90);
    EXPECT_EQ(slides[1]->settings().angle, 90);
    Q_EMIT transition.activated(2);
    EXPECT_EQ(slides[1]->settings().transition, Slide::Transition::Push);
    select({slides[0]});
    EXPECT_EQ(seconds.text(), "5.0 s");
}

TEST_F(StoryboardWindows, TheArrowsTurnRoundAndStepFromTheFirst)
{
    const auto slides = fill(2);
    select({slides[0]});
    auto &angle = widget<QDoubleSpinBox>("slideAngle");
    QList<double> angles;
    const auto step = [&](int steps) {
        angle.stepBy(steps);
        angles.append(slides[0]->settings().angle);
    };
    for (int i = 0; i < 5; ++i)
        step(1);
    for (int i = 0; i < 3; ++i)
        step(-1);
    EXPECT_EQ(angles, (QList<double>{90, 180, 270, 0, 90, 0, 270, 180}));

    document->changeSlides({slides[1]}, {}, [](Slide::Settings &settings) { settings.seconds = 8; });
    select(slides);
    auto &seconds = widget<QDoubleSpinBox>("slideSeconds");
    EXPECT_EQ(seconds.text(), "Several");
    seconds.stepBy(1);
    EXPECT_EQ(slides[0]->settings().seconds, 6);
    EXPECT_EQ(slides[1]->settings().seconds, 6);
    seconds.stepBy(-100);
    EXPECT_EQ(slides[0]->settings().seconds, Slide::shortest);
}

TEST_F(StoryboardWindows, ShowingSettingsIsNoChange)
{
    const auto slides = fill(3);
    document->changeSlides({slides[1]}, "Change", [](Slide::Settings &settings) {
        settings = {QStringLiteral("b"), 8, Slide::Transition::Wipe, 90};
    });
    const int actions = document->undoManager().stack().count();
    announcements.take();
    for (const auto &some : {testSupport::Slides{slides[0]}, slides, testSupport::Slides{slides[1]}})
        select(some);
    EXPECT_EQ(document->undoManager().stack().count(), actions);
    EXPECT_EQ(announcements.documentCount, 0);
}

TEST_F(StoryboardWindows, NumbersBelowTheLeastOneAreNotTaken)
{
    const auto slides = fill(2);
    document->changeSlides({slides[1]}, {}, [](Slide::Settings &settings) { settings.seconds = 8; });
    select(slides);
    auto &seconds = widget<QDoubleSpinBox>("slideSeconds");
    seconds.setValue(-0.4);
    EXPECT_EQ(seconds.text(), "Several");
    EXPECT_EQ(slides[0]->settings().seconds, 5);
    EXPECT_EQ(slides[1]->settings().seconds, 8);
}

TEST_F(StoryboardWindows, AGoodPasteTakesTheWordsOnABadOneAway)
{
    fill(1);
    auto *const bad = new QMimeData;
    bad->setData(StoryboardSelection::mimeType(), "nonsense");
    QGuiApplication::clipboard()->setMimeData(bad);
    action(QKeySequence::Paste).trigger();
    EXPECT_EQ(window->statusText(), "The slides cannot be read.");
    select(document->slides().items());
    action(QKeySequence::Copy).trigger();
    action(QKeySequence::Paste).trigger();
    EXPECT_EQ(document->slides().count(), 2);
    EXPECT_EQ(window->statusText(), QString());
}

TEST_F(StoryboardWindows, ScrollToWhatIsNew)
{
    const auto slides = fill(200);
    window->window()->show();
    select({slides[199]});
    action(QKeySequence::Copy).trigger();
    EXPECT_FALSE(window->grid().visibleRect().intersects(window->grid().cellFrameAtRow(30, 0)));
    action(QKeySequence::Paste).trigger();
    const auto isShown = [&](qint64 index) {
        const int columns = window->grid().numberOfColumns();
        return window->grid().visibleRect().contains(
            window->grid().cellFrameAtRow(int(index / columns), int(index % columns)).center());
    };
    EXPECT_TRUE(isShown(200));
    select({slides[0]});
    action(QKeySequence::Delete).trigger();
    EXPECT_TRUE(isShown(0));
    widget<platform::ScrollView>("slidesView").scrollToPoint(QPointF(0, 2000));
    action(QKeySequence::Undo).trigger();
    EXPECT_TRUE(isShown(0));
}

TEST_F(StoryboardWindows, SlidesWithoutAPhotoSaySo)
{
    testSupport::writeFile(in("there.png"), testSupport::encoded(QImage(40, 30, QImage::Format_RGB32), "png"));
    const auto there = std::make_shared<Slide>(in("there.png")), gone = std::make_shared<Slide>(in("gone.png"));
    document->insertSlides({there, gone}, 0, {});
    const SlideGrid &grid = window->grid();
    const auto &first = static_cast<const SlideCell &>(*grid.cellAtIndex(0));
    const auto &second = static_cast<const SlideCell &>(*grid.cellAtIndex(1));
    EXPECT_TRUE(first.pictureToDraw(grid).isNull());
    EXPECT_TRUE(second.pictureToDraw(grid).isNull());
    EXPECT_TRUE(testSupport::waitUntil([] { return !SlidePictures::shared().isBusy(); }));
    EXPECT_EQ(first.pictureToDraw(grid).size(), QSize(40, 30));
    EXPECT_EQ(second.pictureToDraw(grid), SlidePictures::missingPicture());
    EXPECT_TRUE(second.accessibleName().endsWith(", the photo is missing")) << qPrintable(second.accessibleName());
    EXPECT_EQ(first.accessibleName(), first.photoTitle());

    testSupport::writeFile(in("gone.png"), testSupport::encoded(QImage(30, 40, QImage::Format_RGB32), "png"));
    EXPECT_EQ(second.pictureToDraw(grid), SlidePictures::missingPicture());
    EXPECT_FALSE(SlidePictures::shared().isBusy());
    QEvent activation(QEvent::WindowActivate);
    QCoreApplication::sendEvent(window->window(), &activation);
    EXPECT_EQ(second.pictureToDraw(grid), SlidePictures::missingPicture()) << "until it is there";
    EXPECT_TRUE(testSupport::waitUntil([] { return !SlidePictures::shared().isBusy(); }));
    EXPECT_EQ(second.pictureToDraw(grid).size(), QSize(30, 40));
}

TEST_F(StoryboardWindows, SongsAreDroppedAndDraggedToOtherPlaces)
{
    addSongs({"a.mp3", "b.mp3", "c.mp3"});
    window->window()->show();
    testSupport::writeFile(in("new.wav"), QByteArray("RIFF\x24\0\0\0WAVEfmt ", 16));
    const std::unique_ptr<QMimeData> file(filesOf({in("new.wav")}));
    EXPECT_TRUE(dropOnSongs(*file, songPlace(1, -2)));
    EXPECT_EQ(songTitles(), (QStringList{"a", "new", "b", "c"}));
    EXPECT_EQ(selection().songCount(), 1);
    EXPECT_TRUE(dropOnSongs(*file, QPoint(20, songs().viewport()->height() - 4)));
    EXPECT_EQ(songTitles(), (QStringList{"a", "new", "b", "c", "new"}));

    // A drag begins with what is selected, as a copy: to move files is for nobody.
    selection().select({document->songs().items()[0]});
    QStringList carried;
    Qt::DropActions actions;
    const auto former = platform::setDragRunner([&](platform::Drag &drag) {
        for (const QUrl &url : drag.data->urls())
            carried.append(url.fileName());
        actions = drag.supportedActions;
        return Qt::CopyAction;
    });
    QTest::mousePress(songs().viewport(), Qt::LeftButton, {}, songPlace(0, 0));
    QTest::mouseMove(songs().viewport(), songPlace(0, 0) + QPoint(0, 4));
    QTest::mouseMove(songs().viewport(), songPlace(0, 0) + QPoint(0, 40));
    QTest::mouseRelease(songs().viewport(), Qt::LeftButton, {}, songPlace(0, 0));
    platform::setDragRunner(former);
    EXPECT_EQ(carried, QStringList("a.mp3"));
    EXPECT_EQ(actions, Qt::CopyAction);
    Q_EMIT songs().dropped(file.get(), 3, true);
    EXPECT_EQ(songTitles(), (QStringList{"new", "b", "a", "c", "new"}));
}

TEST_F(StoryboardWindows, SongsAreMovedDeletedCopiedAndPastedBehindTheSelected)
{
    addSongs({"a.mp3", "b.mp3", "c.mp3"});
    selection().select({document->songs().items()[0]});
    action(Qt::CTRL | Qt::Key_Right).trigger();
    EXPECT_EQ(songTitles(), (QStringList{"b", "a", "c"}));
    action(QKeySequence::Copy).trigger();
    const QMimeData *const copied = QGuiApplication::clipboard()->mimeData();
    EXPECT_EQ(copied->urls(), QList<QUrl>{QUrl::fromLocalFile(in("a.mp3"))});
    action(QKeySequence::Paste).trigger();
    EXPECT_EQ(songTitles(), (QStringList{"b", "a", "a", "c"}));
    EXPECT_EQ(selection().songs(), testSupport::Songs{document->songs().items()[2]});
    action(QKeySequence::Delete).trigger();
    EXPECT_EQ(songTitles(), (QStringList{"b", "a", "c"}));
    EXPECT_EQ(selection().songs(), testSupport::Songs{document->songs().items()[2]}) << "the one behind it";
}

TEST_F(StoryboardWindows, SongsThatAreNamedTwiceAreTwo)
{
    platform::KeyedArchiver archiver;
    const auto song = std::make_shared<Song>(in("a.mp3"));
    archiver.encode(testSupport::Slides{}, "slides");
    archiver.encode(testSupport::Songs{song, song}, "songs");
    const QByteArray bytes = archiver.finishEncoding().value();
    StoryboardDocument other;
    ASSERT_TRUE(other.loadDataRepresentation(bytes, other.fileType()));
    ASSERT_EQ(other.songs().count(), 2);
    EXPECT_NE(other.songs().items()[0], other.songs().items()[1]);
    auto data = std::make_unique<QMimeData>();
    data->setData(StoryboardSelection::mimeType(), bytes);
    QGuiApplication::clipboard()->setMimeData(data.release());
    action(QKeySequence::Paste).trigger();
    ASSERT_EQ(document->songs().count(), 2);
    EXPECT_NE(document->songs().items()[0], document->songs().items()[1]);
}

TEST_F(StoryboardWindows, SlidesAndSongsTakeTheSelectionFromEachOther)
{
    const auto slides = fill(3);
    addSongs({"a.mp3", "b.mp3"});
    auto &songSelection = *songs().selectionModel();
    window->grid().matrixSelectCellAtRow(0, 1);
    EXPECT_EQ(selection().slides(), testSupport::Slides{slides[1]});
    songSelection.select(songs().model()->index(1, 0), QItemSelectionModel::ClearAndSelect);
    EXPECT_EQ(selection().songs(), testSupport::Songs{document->songs().items()[1]});
    EXPECT_EQ(shown(), QList<int>{});
    window->grid().matrixDeselectAllCells();
    EXPECT_EQ(selection().songCount(), 1) << "no slide is selected already";
    window->grid().matrixSelectCellAtRow(0, 2);
    EXPECT_FALSE(songSelection.hasSelection());
    EXPECT_EQ(selection().slides(), testSupport::Slides{slides[2]});
    songSelection.clearSelection();
    EXPECT_EQ(selection().slideCount(), 1);
    window->grid().matrixDeselectAllCells();
    EXPECT_TRUE(selection().isEmpty());
}

TEST_F(StoryboardWindows, AFileWithoutSongsIsNoStoryboard)
{
    platform::KeyedArchiver archiver;
    archiver.encode(testSupport::Slides{}, "slides");
    StoryboardDocument other;
    EXPECT_THROW(other.loadDataRepresentation(archiver.finishEncoding().value(), other.fileType()),
                 platform::InvalidArchive);
}

TEST_F(StoryboardWindows, QuittingTakesOverWhatWasTyped)
{
    const auto slides = fill(1);
    select(slides);
    widget<QLineEdit>("slideTitle").setText("typed");
    widget<QLineEdit>("slideTitle").setModified(true);
    panels->saveAnswer = platform::DocumentPanels::SaveAnswer::Cancel;
    controller.quit();
    EXPECT_EQ(slides[0]->settings().title, "typed");
    EXPECT_EQ(panels->questions, 1);
}

TEST_F(StoryboardWindows, WhatHasGoneIsNotSelected)
{
    const auto slides = fill(3);
    select({slides[0], slides[1]});
    document->removeSlides({slides[0]}, "Remove");
    EXPECT_EQ(selection().slideCount(), 1);
    EXPECT_EQ(shown(), QList<int>{0});
}

TEST_F(StoryboardWindows, SelectAllWithTheSongsFocusedTakesTheSongs)
{
    fill(2);
    addSongs({"a.mp3", "b.mp3"});
    window->window()->show();
    window->window()->activateWindow();
    songs().setFocus();
    ASSERT_TRUE(testSupport::waitUntil([&] { return songs().hasFocus(); }));
    action(QKeySequence::SelectAll).trigger();
    EXPECT_EQ(selection().songCount(), 2);
}

TEST_F(StoryboardWindows, UndoOfATextThatWasTypedIsThatOfTheField)
{
    const auto slides = fill(2);
    select({slides[0]});
    window->window()->show();
    window->window()->activateWindow();
    auto &title = widget<QLineEdit>("slideTitle");
    title.setFocus();
    ASSERT_TRUE(testSupport::waitUntil([&] { return title.hasFocus(); }));
    EXPECT_TRUE(action(QKeySequence::Paste).isEnabled()) << "texts can be pasted in the field";
    QTest::keyClicks(&title, "x");
    action(QKeySequence::Undo).trigger();
    EXPECT_EQ(title.text(), "Photo 0");
    EXPECT_EQ(document->slides().count(), 2);
    action(QKeySequence::Redo).trigger();
    EXPECT_EQ(title.text(), "Photo 0x");
}

TEST_F(StoryboardWindows, WordsOnFilesGoWithTheNextOnes)
{
    testSupport::writeFile(in("photo.png"), testSupport::encoded(QImage(4, 3, QImage::Format_RGB32), "png"));
    window->addFiles({in("Notes.txt")});
    EXPECT_TRUE(window->statusText().contains("Notes.txt"));
    window->addFiles({in("photo.png")});
    EXPECT_EQ(window->statusText(), QString());
}

TEST_F(StoryboardWindows, AMarkShowsWhereSlidesAreDropped)
{
    fill(3);
    window->window()->show();
    SlideGrid &grid = window->grid();
    const std::unique_ptr<QMimeData> file(filesOf({in("new.png")}));
    const QImage before = grid.grab().toImage();
    const QPoint place = grid.toWidget(grid.cellFrameAtRow(0, 1)).topLeft().toPoint() + QPoint(10, 40);
    QDragEnterEvent enter(place, Qt::CopyAction, file.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&grid, &enter);
    QDragMoveEvent move(place, Qt::CopyAction, file.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&grid, &move);
    const QImage marked = grid.grab().toImage();
    EXPECT_EQ(marked.pixelColor(place - QPoint(12, 0)), grid.palette().color(QPalette::Highlight));
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(&grid, &leave);
    EXPECT_EQ(grid.grab().toImage(), before);
}

TEST_F(StoryboardWindows, APictureShowsOnceItIsThere)
{
    QImage blue(40, 30, QImage::Format_RGB32);
    blue.fill(Qt::blue);
    testSupport::writeFile(in("blue.png"), testSupport::encoded(blue, "png"));
    document->insertSlides({std::make_shared<Slide>(in("blue.png"))}, 0, {});
    window->window()->show();
    const QPoint middle(73, 50);
    const auto isBlue = [&] {
        const QWidget &shown = *window->window();
        const QImage screen = shown.screen()->grabWindow(shown.winId()).toImage();
        const QPoint place = window->grid().mapTo(&shown, middle);
        return screen.rect().contains(place) && screen.pixelColor(place).blue() > 200
            && screen.pixelColor(place).red() < 60;
    };
    EXPECT_TRUE(testSupport::waitUntil(isBlue));
}

TEST_F(StoryboardWindows, SettingsThatComeToTheSameAreNoChange)
{
    const auto slides = fill(1);
    const int actions = document->undoManager().stack().count();
    document->changeSlides(slides, "Turn", [](Slide::Settings &settings) { settings.angle = 360; });
    EXPECT_EQ(document->undoManager().stack().count(), actions);
}

TEST_F(StoryboardWindows, AnIndexBeyondTheSlidesIsTheEnd)
{
    const auto slides = fill(2);
    document->insertSlides({std::make_shared<Slide>("end.jpg")}, 99, {});
    document->insertSlides({std::make_shared<Slide>("start.jpg")}, -5, {});
    EXPECT_EQ(titles(*document), (QStringList{"start", "Photo 0", "Photo 1", "end"}));
}

TEST_F(StoryboardWindows, RecentFilesOfOneNameAreToldApart)
{
    const auto save = [&](const QString &place) {
        QDir(in("")).mkpath(place);
        const QString path = in(qPrintable(place)) + QStringLiteral("/A & B.storyboard");
        testSupport::writeFile(path, document->dataRepresentationOfType(document->fileType()).value());
        controller.noteRecentPath(path);
    };
    controller.clearRecentPaths();
    const auto texts = [&] {
        QMenu menu;
        StoryboardController::fillFileMenu(menu, document);
        QMenu *const recent = menu.findChild<QMenu *>();
        Q_EMIT recent->aboutToShow();
        QStringList result;
        for (const QAction *const each : recent->actions())
            result.append(each->text());
        return result;
    };
    save("one");
    EXPECT_EQ(texts().first(), "A && B.storyboard");
    save("two");
    EXPECT_EQ(texts().first(), QStringLiteral("A && B.storyboard – %1").arg(in("two")));
    controller.clearRecentPaths();
}

TEST_F(StoryboardWindows, SlidesDroppedOnTheSongsAreSlides)
{
    const auto slides = fill(2);
    select({slides[0]});
    const auto carried = selection().mimeData();
    EXPECT_TRUE(dropOnSongs(*carried, QPoint(10, 10)));
    EXPECT_EQ(titles(*document), (QStringList{"Photo 0", "Photo 0", "Photo 1"}));
    QMimeData text;
    text.setText("neither");
    EXPECT_FALSE(dropOnSongs(text, QPoint(10, 10)));
}

TEST_F(StoryboardWindows, TheMarkOfADropShowsBetweenTheSongs)
{
    addSongs({"a.mp3", "b.mp3"});
    window->window()->show();
    const std::unique_ptr<QMimeData> file(filesOf({in("new.wav")}));
    const QImage before = songs().grab().toImage();
    QDragEnterEvent enter(songPlace(1, -2), Qt::CopyAction, file.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(songs().viewport(), &enter);
    QDragMoveEvent move(songPlace(1, -2), Qt::CopyAction, file.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(songs().viewport(), &move);
    const QImage marked = songs().grab().toImage();
    const QPoint place =
        songs().viewport()->mapTo(&songs(), QPoint(100, songs().visualRect(songs().model()->index(1, 0)).top()));
    EXPECT_NE(before.pixelColor(place), marked.pixelColor(place));
    EXPECT_EQ(marked.pixelColor(place), songs().palette().color(QPalette::Highlight));
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(songs().viewport(), &leave);
    EXPECT_EQ(songs().grab().toImage(), before);
}

TEST_F(StoryboardWindows, StayWhereWhatWasTypedCannotBeTakenOver)
{
    struct Raising final : ZRDocumentObserver {
        void documentDidChange(ZRDocument &) override { throw std::runtime_error("from an observer"); }
    } raising;
    const auto slides = fill(1);
    select(slides);
    window->window()->show();
    auto &title = widget<QLineEdit>("slideTitle");
    title.setText("typed");
    title.setModified(true);
    document->addObserver(&raising);
    testSupport::expectWarning("from an observer");
    EXPECT_FALSE(window->window()->close());
    EXPECT_TRUE(window->window()->isVisible());
    document->removeObserver(&raising);
    EXPECT_EQ(panels->questions, 0);
}

TEST(StoryboardDocumentWithoutAWindow, Changes)
{
    const StoryboardController controller;
    StoryboardDocument document;
    document.makeWindowControllers();
    document.insertSlides({std::make_shared<Slide>("a.jpg")}, 0, {});
    EXPECT_EQ(document.slides().count(), 1);
    EXPECT_FALSE(document.windowControllers().first()->isWindowLoaded());
}

TEST_F(StoryboardWindows, AFileThatCannotBeOpenedLeavesANewOne)
{
    document->closeWithoutAsking();
    StoryboardController::shared().openFiles({in("nowhere.storyboard")});
    EXPECT_TRUE(panels->error.contains("nowhere.storyboard")) << qPrintable(panels->error);
    ASSERT_EQ(controller.documents().size(), 1);
    controller.documents().first()->closeWithoutAsking();
    document = static_cast<StoryboardDocument *>(controller.newDocument());
    window = static_cast<StoryboardWindowController *>(document->windowControllers().first());
}

TEST_F(StoryboardWindows, ThePhotosHaveTheCommandsOfTheProgram)
{
    QStringList texts;
    for (const QAction *const each : controller.photoWindow().fileMenu().actions())
        texts.append(each->text());
    for (const char *const wanted : {"&New Storyboard", "&Open…", "Open &Recent", "&Quit", "Open Photo &Folder…"})
        EXPECT_TRUE(texts.contains(QString::fromUtf8(wanted))) << wanted;
    EXPECT_FALSE(texts.contains("&Save"));
}
