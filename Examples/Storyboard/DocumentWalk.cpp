#include "DocumentWalk.h"

#include "PhotoFolderWindow.h"
#include "SlideGrid.h"
#include "SlidePictures.h"
#include "SongList.h"
#include "StoryboardController.h"
#include "StoryboardWindowController.h"
#include "WalkSteps.h"

#include "Platform/Interface/DocumentPanels.h"
#include "ZRCommon/ZRPhotoMatrix.h"

#include <QLoggingCategory>
#include <QtWidgets>

#include <memory>

namespace {

/// Answers in the person's place.
class Answers : public platform::DocumentPanels
{
public:
    QString pathToSave;
    SaveAnswer saveAnswer = SaveAnswer::Cancel;
    QString error;
    int questions = 0;

    QString chooseFileToSave(platform::Document &, const QString &, const QString &, const QString &) override
    {
        return pathToSave;
    }
    SaveAnswer askWhetherToSave(platform::Document &) override
    {
        ++questions;
        return saveAnswer;
    }
    void presentError(platform::Document *, const QString &message, const QString &explanation) override
    {
        error = message + QLatin1Char(' ') + explanation;
    }
};

/// Counts the announcements of a document.
class Announcements final : public ZRDocumentObserver
{
public:
    explicit Announcements(StoryboardDocument &document)
        : m_document(document)
    {
        document.addObserver(this);
    }
    ~Announcements() { m_document.removeObserver(this); }
    /// How many there were since the last question.
    int take() { return std::exchange(m_count, 0); }

private:
    void documentDidChange(ZRDocument &) override { ++m_count; }

    StoryboardDocument &m_document;
    int m_count = 0;
};

class DocumentWalk
{
public:
    DocumentWalk(WalkSteps &steps, const QString &photoFolder)
        : m_steps(steps)
        , m_photoFolder(m_folder.filePath(QStringLiteral("Summer")))
    {
        WalkSteps::copyFiles(photoFolder, m_photoFolder);
        auto answers = std::make_unique<Answers>();
        m_answers = answers.get();
        platform::DocumentPanels::setCurrent(std::move(answers));
    }
    ~DocumentWalk() { platform::DocumentPanels::setCurrent(nullptr); }

    void run()
    {
        begin();
        addPhotos();
        change();
        moveAndPaste();
        addSongs();
        saveAndOpen();
        failToOpen();
        showDark();
        end();
    }

private:
    void begin()
    {
        m_steps.step("A new storyboard invites to drop photos");
        use(m_controller.newDocument());
        WalkSteps::check(m_document->displayName() == QStringLiteral("Untitled"), QStringLiteral("an untitled one"));
        window().resize(940, 600);
        WalkSteps::waitFor([&] { return window().isActiveWindow(); }, QStringLiteral("an active window"));
        m_steps.shoot(window(), "storyboard-empty");
    }

    void addPhotos()
    {
        m_steps.step("Photos become slides");
        PhotoFolderWindow &photos = m_controller.photoWindow();
        photos.openFolder(m_photoFolder);
        m_controller.showPhotos();
        WalkSteps::waitFor([&] { return !photos.isOpening(); }, QStringLiteral("the photos"));
        m_steps.click(photos.grid(), 0);
        m_steps.click(photos.grid(), 7, Qt::ShiftModifier);
        Announcements announcements(*m_document);
        WalkSteps::press(photos, Qt::Key_Return, Qt::ControlModifier);
        WalkSteps::check(m_document->slides().count() == 8, QStringLiteral("eight slides"));
        WalkSteps::check(announcements.take() == 1, QStringLiteral("one announcement"));
        WalkSteps::check(m_document->isEdited(), QStringLiteral("an edited document"));
        WalkSteps::check(selection().slides().size() == 8, QStringLiteral("what is new selected"));
        photos.close();
        window().activateWindow();
        waitForPictures();
        m_steps.shoot(window(), "storyboard-slides");
    }

    void change()
    {
        m_steps.step("Slides are changed together, and changed back");
        m_steps.click(grid(), 1);
        m_steps.click(grid(), 3, Qt::ControlModifier);
        WalkSteps::check(selection().slides().size() == 2, QStringLiteral("two slides selected"));
        Announcements announcements(*m_document);
        window().findChild<QDoubleSpinBox *>(QStringLiteral("slideAngle"))->setValue(90);
        window().findChild<QDoubleSpinBox *>(QStringLiteral("slideSeconds"))->setValue(7.5);
        WalkSteps::check(announcements.take() == 2, QStringLiteral("an announcement for each change"));
        WalkSteps::check(settings(1).angle == 90 && settings(3).seconds == 7.5 && settings(2).angle == 0,
                         QStringLiteral("the two slides changed, and no others"));
        waitForPictures();
        m_steps.shoot(window(), "storyboard-turned");
        WalkSteps::press(window(), Qt::Key_Z, Qt::ControlModifier);
        WalkSteps::press(window(), Qt::Key_Z, Qt::ControlModifier);
        WalkSteps::check(announcements.take() == 2, QStringLiteral("an announcement for each way back"));
        WalkSteps::check(settings(1).angle == 0 && settings(3).seconds == 5, QStringLiteral("all as before"));
        m_document->undoManager().redo();
        WalkSteps::check(settings(1).angle == 90 && settings(3).seconds == 5, QStringLiteral("the first change again"));
    }

    void moveAndPaste()
    {
        m_steps.step("Slides are moved, cut and pasted, and that is undone");
        const auto before = m_document->slides().items();
        m_steps.click(grid(), 0);
        WalkSteps::press(window(), Qt::Key_Right, Qt::ControlModifier);
        WalkSteps::check(m_document->slides().indexOf(before[0].get()) == 1, QStringLiteral("the slide one later"));
        WalkSteps::check(selection().slides() == QList{before[0]}, QStringLiteral("it selected still"));
        Announcements announcements(*m_document);
        WalkSteps::press(window(), Qt::Key_X, Qt::ControlModifier);
        WalkSteps::check(m_document->slides().count() == 7, QStringLiteral("one slide less"));
        WalkSteps::check(selection().slides() == QList{before[2]}, QStringLiteral("the slide behind it selected"));
        WalkSteps::press(window(), Qt::Key_V, Qt::ControlModifier);
        WalkSteps::press(window(), Qt::Key_V, Qt::ControlModifier);
        WalkSteps::check(announcements.take() == 3, QStringLiteral("one announcement for each"));
        WalkSteps::check(m_document->slides().count() == 9, QStringLiteral("two pasted slides"));
        WalkSteps::check(settings(2).title == before[0]->settings().title, QStringLiteral("copies of the slide"));
        for (int i = 0; i < 4; ++i)
            WalkSteps::press(window(), Qt::Key_Z, Qt::ControlModifier);
        WalkSteps::check(m_document->slides().items() == before, QStringLiteral("the slides of before"));
        WalkSteps::check(selection().slides() == QList{before[0]}, QStringLiteral("what was selected before"));
    }

    void addSongs()
    {
        m_steps.step("Songs are added; slides and songs are not selected together");
        QStringList songs;
        for (const char *const name : {"Opening", "Intermezzo", "Finale"}) {
            songs.append(m_folder.filePath(QStringLiteral("%1.wav").arg(QLatin1String(name))));
            QFile file(songs.last());
            WalkSteps::check(file.open(QIODevice::WriteOnly), QStringLiteral("a song"));
            file.write("RIFF\x24\0\0\0WAVEfmt ", 16);
        }
        controller().addFiles(songs + QStringList{QStringLiteral("Notes.txt")});
        WalkSteps::check(m_document->songs().count() == 3, QStringLiteral("three songs"));
        WalkSteps::check(selection().songs().size() == 3 && selection().slides().isEmpty(),
                         QStringLiteral("the songs selected, and no slide"));
        WalkSteps::checkSelected(grid(), {});
        WalkSteps::check(controller().statusText().contains(QStringLiteral("Notes.txt")),
                         QStringLiteral("a word on the file that is neither"));
        m_steps.shoot(window(), "storyboard-songs");
        m_steps.click(grid(), 4);
        WalkSteps::check(selection().songs().isEmpty(), QStringLiteral("no song selected"));
        WalkSteps::check(!controller().songsView().selectionModel()->hasSelection(),
                         QStringLiteral("no song shown as selected"));
    }

    void saveAndOpen()
    {
        m_steps.step("The storyboard is saved, closed and opened again");
        m_answers->pathToSave = m_folder.filePath(QStringLiteral("Holidays.storyboard"));
        WalkSteps::press(window(), Qt::Key_S, Qt::ControlModifier);
        WalkSteps::check(!m_document->isEdited(), QStringLiteral("nothing left to save"));
        WalkSteps::check(!m_document->undoManager().canUndo(), QStringLiteral("nothing left to undo"));
        QStringList titles;
        for (const auto &slide : m_document->slides().items())
            titles.append(slide->settings().title);
        const QPointer<StoryboardDocument> closed = m_document;
        window().close();
        WalkSteps::waitFor([&] { return !closed; }, QStringLiteral("the document closed"));
        WalkSteps::check(m_answers->questions == 0, QStringLiteral("no question"));
        use(m_controller.openDocument(m_answers->pathToSave));
        WalkSteps::check(m_answers->error.isEmpty(), QStringLiteral("no failure: %1").arg(m_answers->error));
        QStringList titlesAgain;
        for (const auto &slide : m_document->slides().items())
            titlesAgain.append(slide->settings().title);
        WalkSteps::check(titles == titlesAgain && m_document->songs().count() == 3, QStringLiteral("what was saved"));
        WalkSteps::check(settings(1).angle == 90, QStringLiteral("the turned slide"));
        WalkSteps::waitFor([&] { return window().isActiveWindow(); }, QStringLiteral("an active window"));
        WalkSteps::check(window().size() == QSize(940, 600), QStringLiteral("the window's size of before"));
        m_steps.click(grid(), 1);
        waitForPictures();
        m_steps.shoot(window(), "storyboard-again");
    }

    void failToOpen()
    {
        m_steps.step("A damaged file is refused in words, and nothing is lost");
        QFile whole(m_answers->pathToSave);
        WalkSteps::check(whole.open(QIODevice::ReadOnly), QStringLiteral("the file"));
        const QByteArray bytes = whole.readAll();
        const QString damaged = m_folder.filePath(QStringLiteral("Damaged.storyboard"));
        QFile half(damaged);
        WalkSteps::check(half.open(QIODevice::WriteOnly), QStringLiteral("another file"));
        half.write(bytes.left(bytes.size() / 2));
        half.close();
        QLoggingCategory::setFilterRules(QStringLiteral("platform.document=false")); // what is told need not be logged
        WalkSteps::check(!m_controller.openDocument(damaged), QStringLiteral("no document"));
        QLoggingCategory::setFilterRules({});
        WalkSteps::check(m_answers->error.contains(QStringLiteral("Damaged.storyboard")),
                         QStringLiteral("a word on it"));
        WalkSteps::check(m_controller.documents() == QList<platform::Document *>{m_document},
                         QStringLiteral("the open document alone"));
        WalkSteps::check(m_document->slides().count() == 8 && !m_document->isEdited(), QStringLiteral("it untouched"));
    }

    void showDark()
    {
        m_steps.step("The storyboard in dark colours");
        const QPalette light = WalkSteps::darken();
        waitForPictures();
        m_steps.shoot(window(), "storyboard-dark");
        QApplication::setPalette(light);
    }

    void end()
    {
        m_steps.step("Changes are asked for before they are lost");
        WalkSteps::press(window(), Qt::Key_Delete);
        WalkSteps::check(m_document->isEdited(), QStringLiteral("an edited document"));
        WalkSteps::check(!m_controller.closeAll() && m_answers->questions == 1, QStringLiteral("the document open"));
        m_answers->saveAnswer = platform::DocumentPanels::SaveAnswer::Discard;
        WalkSteps::check(m_controller.closeAll() && m_answers->questions == 2, QStringLiteral("the document closed"));
    }

    void use(platform::Document *document)
    {
        m_document = qobject_cast<StoryboardDocument *>(document);
        WalkSteps::check(m_document, QStringLiteral("a document: %1").arg(m_answers->error));
    }
    StoryboardWindowController &controller() const
    {
        return static_cast<StoryboardWindowController &>(*m_document->windowControllers().first());
    }
    QWidget &window() const { return *controller().window(); }
    SlideGrid &grid() const { return controller().grid(); }
    StoryboardSelection &selection() const { return controller().storyboardSelection(); }
    const Slide::Settings &settings(qsizetype slide) const { return m_document->slides().items()[slide]->settings(); }
    void waitForPictures() const
    {
        grid().grab(); // asks for them
        WalkSteps::waitFor([] { return !SlidePictures::shared().isBusy(); }, QStringLiteral("the slides' pictures"));
        WalkSteps::waitForPictures(grid());
    }

    WalkSteps &m_steps;
    QTemporaryDir m_folder;
    QString m_photoFolder;
    StoryboardController m_controller;
    Answers *m_answers = nullptr;
    QPointer<StoryboardDocument> m_document;
};

} // namespace

void walkThroughDocument(WalkSteps &steps, const QString &photoFolder)
{
    DocumentWalk(steps, photoFolder).run();
}
