#include "PhotoWalk.h"

#include "PhotoFolderWindow.h"
#include "PhotoWindow.h"
#include "WalkSteps.h"

#include "Platform/Interface/DragRunner.h"
#include "Platform/Interface/ScrollView.h"
#include "ZRCommon/ZRPhotoMatrix.h"

#include <QtWidgets>

#include <memory>

namespace {

/// Notes whether a widget was ever shown.
class ShowWatcher : public QObject
{
public:
    explicit ShowWatcher(QWidget *widget)
        : QObject(widget)
    {
        widget->installEventFilter(this);
    }
    bool wasShown = false;
    bool eventFilter(QObject *, QEvent *event) override
    {
        wasShown = wasShown || event->type() == QEvent::Show;
        return false;
    }
};

class PhotoWalk
{
public:
    PhotoWalk(WalkSteps &steps, const QString &photoFolder)
        : m_steps(steps)
    {
        m_folder = m_copies.filePath(QStringLiteral("Summer"));
        m_photoCount = WalkSteps::copyFiles(photoFolder, m_folder);
        WalkSteps::check(m_photoCount >= 12, QStringLiteral("12 photos or more in %1").arg(photoFolder));
        m_window = std::make_unique<PhotoFolderWindow>();
    }

    void run()
    {
        begin();
        open();
        select();
        resize();
        dragOut();
        showLarge();
        cancelAndFail();
        showDark();
        comeBack();
    }

private:
    void begin()
    {
        m_steps.step("An empty window invites to open a folder");
        m_window->resize(900, 640);
        m_window->show();
        m_window->activateWindow();
        WalkSteps::waitFor([&] { return m_window->isActiveWindow(); }, QStringLiteral("an active window"));
        WalkSteps::check(m_window->countText().isEmpty(), QStringLiteral("no count"));
        m_steps.shoot(*m_window, "empty");
    }

    void open()
    {
        m_steps.step("A folder is opened, its thumbnails are made");
        const ShowWatcher progress(m_window->findChild<QProgressBar *>());
        m_window->openFolder(m_folder);
        WalkSteps::check(m_window->isOpening(), QStringLiteral("work in the background"));
        WalkSteps::waitFor([&] { return !m_window->isOpening(); }, QStringLiteral("the end of that work"));
        WalkSteps::check(progress.wasShown, QStringLiteral("progress to be shown"));
        WalkSteps::check(m_window->folderPath() == m_folder, QStringLiteral("the folder"));
        WalkSteps::check(grid().photoCount() == m_photoCount, QStringLiteral("%1 photos").arg(m_photoCount));
        WalkSteps::check(m_window->countText() == QStringLiteral("%1 photos").arg(m_photoCount),
                         QStringLiteral("their count"));
        WalkSteps::check(m_window->windowTitle() == QStringLiteral("Summer – Storyboard"),
                         QStringLiteral("the folder's name"));
        WalkSteps::waitForPictures(grid());
        m_steps.shoot(*m_window, "folder");
    }

    void select()
    {
        m_steps.step("Photos are selected by clicks and keys");
        m_steps.click(grid(), 1);
        WalkSteps::checkSelected(grid(), {1});
        m_steps.click(grid(), 4, Qt::ShiftModifier);
        WalkSteps::checkSelected(grid(), {1, 2, 3, 4});
        m_steps.click(grid(), 7, Qt::ControlModifier);
        WalkSteps::checkSelected(grid(), {1, 2, 3, 4, 7});
        WalkSteps::check(m_window->selectionText() == QStringLiteral("5 selected"),
                         QStringLiteral("the number of selected ones"));
        m_steps.shoot(*m_window, "selection");
        WalkSteps::press(*m_window, Qt::Key_Right);
        WalkSteps::checkSelected(grid(), {qint64(grid().numberOfColumns()) + 5}); // right of the box around all
        WalkSteps::press(*m_window, Qt::Key_Left);
        WalkSteps::press(*m_window, Qt::Key_Up);
        WalkSteps::checkSelected(grid(), {4});
        WalkSteps::press(*m_window, Qt::Key_A, Qt::ControlModifier);
        WalkSteps::check(m_window->selectionText() == QStringLiteral("%1 selected").arg(m_photoCount),
                         QStringLiteral("all"));
        WalkSteps::press(*m_window, Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
        WalkSteps::checkSelected(grid(), {});
    }

    void resize()
    {
        m_steps.step("The photos flow with the window and grow with the slider, and stay selected");
        m_steps.click(grid(), 2, Qt::NoModifier);
        m_steps.click(grid(), 5, Qt::ControlModifier);
        const int columns = grid().numberOfColumns();
        m_window->resize(520, 640);
        WalkSteps::waitFor([&] { return grid().numberOfColumns() < columns; }, QStringLiteral("fewer columns"));
        WalkSteps::checkSelected(grid(), {2, 5});
        WalkSteps::waitForPictures(grid());
        m_steps.shoot(*m_window, "narrow");
        m_window->resize(900, 640);
        WalkSteps::waitFor([&] { return grid().numberOfColumns() == columns; },
                           QStringLiteral("as many columns as before"));
        m_window->sizeSlider().setValue(m_window->sizeSlider().maximum());
        WalkSteps::check(grid().cellSize() == QSizeF(246, 196), QStringLiteral("the largest cells"));
        WalkSteps::checkSelected(grid(), {2, 5});
        WalkSteps::waitForPictures(grid());
        m_steps.shoot(*m_window, "large");
    }

    void dragOut()
    {
        m_steps.step("Photos are dragged out as files");
        QList<QUrl> urls;
        QImage image;
        const auto former = platform::setDragRunner([&](platform::Drag &drag) {
            urls = drag.data->urls();
            image = drag.image;
            return Qt::CopyAction;
        });
        const QPointF from = grid().toWidget(WalkSteps::frameOf(grid(), 2).center());
        m_steps.send(grid(), QEvent::MouseButtonPress, from, Qt::NoModifier);
        m_steps.send(grid(), QEvent::MouseMove, from + QPointF(8, 0), Qt::NoModifier);
        WalkSteps::check(urls.isEmpty(), QStringLiteral("no drag within 10 points"));
        m_steps.send(grid(), QEvent::MouseMove, from + QPointF(12, 0), Qt::NoModifier);
        m_steps.send(grid(), QEvent::MouseButtonRelease, from, Qt::ControlModifier);
        platform::setDragRunner(former);
        WalkSteps::check(urls.size() == 2, QStringLiteral("two files"));
        for (const QUrl &url : urls)
            WalkSteps::check(QFileInfo(url.toLocalFile()).dir() == QDir(m_folder),
                             QStringLiteral("files of the folder"));
        m_steps.shoot(image, "drag");
    }

    void showLarge()
    {
        m_steps.step("A photo is opened large, and the next one");
        m_steps.click(grid(), 2, Qt::NoModifier);
        m_steps.doubleClick(grid(), 2);
        WalkSteps::check(m_window->photoWindow(), QStringLiteral("a window with the photo"));
        const QPointer<PhotoWindow> photo = m_window->photoWindow();
        WalkSteps::waitFor([&] { return photo->isActiveWindow() && photo->isComplete(); },
                           QStringLiteral("the whole photo"));
        WalkSteps::check(photo->index() == 2, QStringLiteral("the photo that was clicked"));
        m_steps.shoot(*photo, "photo");
        WalkSteps::press(*photo, Qt::Key_Right);
        WalkSteps::check(photo->index() == 3, QStringLiteral("the next photo"));
        WalkSteps::press(*photo, Qt::Key_Escape);
        WalkSteps::waitFor([&] { return !photo; }, QStringLiteral("the photo closed"));
        m_window->activateWindow();
        WalkSteps::waitFor([&] { return m_window->isActiveWindow(); }, QStringLiteral("the grid again"));
    }

    void cancelAndFail()
    {
        m_steps.step("Opening is cancelled, and fails, without a loss");
        const QString other = m_copies.filePath(QStringLiteral("Other"));
        WalkSteps::copyFiles(m_folder, other);
        m_window->openFolder(other);
        m_window->cancelOpening();
        WalkSteps::waitFor([&] { return !m_window->isOpening(); }, QStringLiteral("the end of opening"));
        WalkSteps::check(m_window->statusText().contains(QStringLiteral("cancelled")),
                         QStringLiteral("a word on that"));
        WalkSteps::check(m_window->folderPath() == m_folder && grid().photoCount() == m_photoCount,
                         QStringLiteral("the former photos"));
        m_window->openFolder(m_copies.filePath(QStringLiteral("nowhere")));
        WalkSteps::waitFor([&] { return !m_window->isOpening(); }, QStringLiteral("the end of opening"));
        WalkSteps::check(m_window->statusText().contains(QStringLiteral("could not be opened")),
                         QStringLiteral("the reason"));
        WalkSteps::check(grid().photoCount() == m_photoCount, QStringLiteral("the former photos"));
    }

    void showDark()
    {
        m_steps.step("The window in dark colours");
        const QPalette light = WalkSteps::darken();
        m_window->sizeSlider().setValue(114);
        m_window->openFolder(m_folder); // with nothing left to make, and the words on the failure gone
        WalkSteps::waitFor([&] { return !m_window->isOpening(); }, QStringLiteral("the photos"));
        m_steps.click(grid(), 3, Qt::NoModifier);
        WalkSteps::waitForPictures(grid());
        m_steps.shoot(*m_window, "dark");
        QApplication::setPalette(light);
    }

    void comeBack()
    {
        m_steps.step("Another run begins where this one ended");
        m_window->sizeSlider().setValue(160);
        m_window->resize(700, 500);
        m_window->close();
        m_window = std::make_unique<PhotoFolderWindow>();
        m_window->show();
        m_window->openLastFolder();
        WalkSteps::waitFor([&] { return m_window->folderPath() == m_folder; }, QStringLiteral("the last folder"));
        WalkSteps::check(m_window->size() == QSize(700, 500), QStringLiteral("the window's last size"));
        WalkSteps::check(m_window->sizeSlider().value() == 160, QStringLiteral("the photos' last size"));
        WalkSteps::waitForPictures(grid());
        m_steps.shoot(*m_window, "again");
    }

    ZRPhotoMatrix &grid() const { return m_window->grid(); }

    WalkSteps &m_steps;
    QTemporaryDir m_copies;
    QString m_folder;
    int m_photoCount = 0;
    std::unique_ptr<PhotoFolderWindow> m_window;
};

} // namespace

void walkThroughPhotos(WalkSteps &steps, const QString &photoFolder)
{
    PhotoWalk(steps, photoFolder).run();
}
