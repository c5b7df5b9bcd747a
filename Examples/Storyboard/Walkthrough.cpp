#include "Walkthrough.h"

#include "PhotoFolderWindow.h"
#include "PhotoWindow.h"

#include "Platform/Interface/DragRunner.h"
#include "Platform/Interface/ScrollView.h"
#include "ZRCommon/ZRPhotoMatrix.h"

#include <QtWidgets>

#include <cstdio>
#include <functional>
#include <memory>
#include <stdexcept>

namespace {

constexpr int patience = 60'000; // milliseconds

struct WrongState : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void check(bool isRight, const QString &expectation)
{
    if (!isRight)
        throw WrongState(QStringLiteral("expected: %1").arg(expectation).toStdString());
}

void waitFor(const std::function<bool()> &condition, const QString &expectation)
{
    QElapsedTimer waited;
    waited.start();
    while (!condition() && !waited.hasExpired(patience))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    check(condition(), expectation);
}

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

QPalette darkPalette()
{
    QPalette dark(QColor(0x35, 0x35, 0x35), QColor(0x2b, 0x2b, 0x2b));
    dark.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x1e));
    dark.setColor(QPalette::Highlight, QColor(0x2a, 0x82, 0xda));
    return dark;
}

class Walk
{
public:
    Walk(const QString &photoFolder, const QString &outputFolder)
        : m_output(outputFolder)
    {
        check(QDir().mkpath(outputFolder), QStringLiteral("a folder %1 to write to").arg(outputFolder));
        m_folder = m_copies.filePath(QStringLiteral("Summer"));
        QDir().mkpath(m_folder);
        for (const QFileInfo &file : QDir(photoFolder).entryInfoList(QDir::Files, QDir::Name)) {
            check(QFile::copy(file.filePath(), m_folder + QLatin1Char('/') + file.fileName()),
                  QStringLiteral("a copy of %1").arg(file.filePath()));
            ++m_photoCount;
        }
        check(m_photoCount >= 12, QStringLiteral("12 photos or more in %1").arg(photoFolder));
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
        step("An empty window invites to open a folder");
        m_window->resize(900, 640);
        m_window->show();
        m_window->activateWindow();
        waitFor([&] { return m_window->isActiveWindow(); }, QStringLiteral("an active window"));
        check(m_window->countText().isEmpty(), QStringLiteral("no count"));
        shoot(*m_window, "empty");
    }

    void open()
    {
        step("A folder is opened, its thumbnails are made");
        const ShowWatcher progress(m_window->findChild<QProgressBar *>());
        m_window->openFolder(m_folder);
        check(m_window->isOpening(), QStringLiteral("work in the background"));
        waitFor([&] { return !m_window->isOpening(); }, QStringLiteral("the end of that work"));
        check(progress.wasShown, QStringLiteral("progress to be shown"));
        check(m_window->folderPath() == m_folder, QStringLiteral("the folder"));
        check(grid().photoCount() == m_photoCount, QStringLiteral("%1 photos").arg(m_photoCount));
        check(m_window->countText() == QStringLiteral("%1 Photos").arg(m_photoCount), QStringLiteral("their count"));
        check(m_window->windowTitle() == QStringLiteral("Summer – Storyboard"), QStringLiteral("the folder's name"));
        waitForPictures();
        shoot(*m_window, "folder");
    }

    void select()
    {
        step("Photos are selected by clicks and keys");
        click(1, Qt::NoModifier);
        checkSelected({1});
        click(4, Qt::ShiftModifier);
        checkSelected({1, 2, 3, 4});
        click(7, Qt::ControlModifier);
        checkSelected({1, 2, 3, 4, 7});
        check(m_window->selectionText() == QStringLiteral("5 selected"), QStringLiteral("the number of selected ones"));
        shoot(*m_window, "selection");
        press(Qt::Key_Right);
        checkSelected({qint64(grid().numberOfColumns()) + 5}); // right of the box around all
        press(Qt::Key_Left);
        press(Qt::Key_Up);
        checkSelected({4});
        press(Qt::Key_A, Qt::ControlModifier);
        check(m_window->selectionText() == QStringLiteral("%1 selected").arg(m_photoCount), QStringLiteral("all"));
        press(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
        checkSelected({});
    }

    void resize()
    {
        step("The photos flow with the window and grow with the slider, and stay selected");
        click(2, Qt::NoModifier);
        click(5, Qt::ControlModifier);
        const int columns = grid().numberOfColumns();
        m_window->resize(520, 640);
        waitFor([&] { return grid().numberOfColumns() < columns; }, QStringLiteral("fewer columns"));
        checkSelected({2, 5});
        waitForPictures();
        shoot(*m_window, "narrow");
        m_window->resize(900, 640);
        waitFor([&] { return grid().numberOfColumns() == columns; }, QStringLiteral("as many columns as before"));
        m_window->sizeSlider().setValue(m_window->sizeSlider().maximum());
        check(grid().cellSize() == QSizeF(246, 196), QStringLiteral("the largest cells"));
        checkSelected({2, 5});
        waitForPictures();
        shoot(*m_window, "large");
    }

    void dragOut()
    {
        step("Photos are dragged out as files");
        QList<QUrl> urls;
        QImage image;
        const auto former = platform::setDragRunner([&](platform::Drag &drag) {
            urls = drag.data->urls();
            image = drag.image;
            return Qt::CopyAction;
        });
        const QPointF from = grid().toWidget(frameOf(2).center());
        send(QEvent::MouseButtonPress, from, Qt::NoModifier);
        send(QEvent::MouseMove, from + QPointF(8, 0), Qt::NoModifier);
        check(urls.isEmpty(), QStringLiteral("no drag within 10 points"));
        send(QEvent::MouseMove, from + QPointF(12, 0), Qt::NoModifier);
        send(QEvent::MouseButtonRelease, from, Qt::ControlModifier);
        platform::setDragRunner(former);
        check(urls.size() == 2, QStringLiteral("two files"));
        for (const QUrl &url : urls)
            check(QFileInfo(url.toLocalFile()).dir() == QDir(m_folder), QStringLiteral("files of the folder"));
        shoot(image, "drag");
    }

    void showLarge()
    {
        step("A photo is opened large, and the next one");
        click(2, Qt::NoModifier);
        doubleClick(2);
        check(m_window->photoWindow(), QStringLiteral("a window with the photo"));
        const QPointer<PhotoWindow> photo = m_window->photoWindow();
        waitFor([&] { return photo->isActiveWindow() && photo->isComplete(); }, QStringLiteral("the whole photo"));
        check(photo->index() == 2, QStringLiteral("the photo that was clicked"));
        shoot(*photo, "photo");
        press(*photo, Qt::Key_Right);
        check(photo->index() == 3, QStringLiteral("the next photo"));
        press(*photo, Qt::Key_Escape);
        waitFor([&] { return !photo; }, QStringLiteral("the photo closed"));
        m_window->activateWindow();
        waitFor([&] { return m_window->isActiveWindow(); }, QStringLiteral("the grid again"));
    }

    void cancelAndFail()
    {
        step("Opening is cancelled, and fails, without a loss");
        const QString other = m_copies.filePath(QStringLiteral("Other"));
        QDir().mkpath(other);
        for (const QFileInfo &file : QDir(m_folder).entryInfoList(QDir::Files))
            QFile::copy(file.filePath(), other + QLatin1Char('/') + file.fileName());
        m_window->openFolder(other);
        m_window->cancelOpening();
        waitFor([&] { return !m_window->isOpening(); }, QStringLiteral("the end of opening"));
        check(m_window->statusText().contains(QStringLiteral("cancelled")), QStringLiteral("a word on that"));
        check(m_window->folderPath() == m_folder && grid().photoCount() == m_photoCount,
              QStringLiteral("the former photos"));
        m_window->openFolder(m_copies.filePath(QStringLiteral("nowhere")));
        waitFor([&] { return !m_window->isOpening(); }, QStringLiteral("the end of opening"));
        check(m_window->statusText().contains(QStringLiteral("could not be opened")), QStringLiteral("the reason"));
        check(grid().photoCount() == m_photoCount, QStringLiteral("the former photos"));
    }

    void showDark()
    {
        step("The window in dark colours");
        const QPalette light = QApplication::palette();
        QApplication::setPalette(darkPalette());
        m_window->sizeSlider().setValue(114);
        m_window->openFolder(m_folder); // with nothing left to make, and the words on the failure gone
        waitFor([&] { return !m_window->isOpening(); }, QStringLiteral("the photos"));
        click(3, Qt::NoModifier);
        waitForPictures();
        shoot(*m_window, "dark");
        QApplication::setPalette(light);
    }

    void comeBack()
    {
        step("Another run begins where this one ended");
        m_window->sizeSlider().setValue(160);
        m_window->resize(700, 500);
        m_window->close();
        m_window = std::make_unique<PhotoFolderWindow>();
        m_window->show();
        m_window->openLastFolder();
        waitFor([&] { return m_window->folderPath() == m_folder; }, QStringLiteral("the last folder"));
        check(m_window->size() == QSize(700, 500), QStringLiteral("the window's last size"));
        check(m_window->sizeSlider().value() == 160, QStringLiteral("the photos' last size"));
        waitForPictures();
        shoot(*m_window, "again");
    }

    // What a person does

    void send(QEvent::Type type, const QPointF &place, Qt::KeyboardModifiers modifiers)
    {
        const auto buttons = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, place, grid().mapToGlobal(place),
                          type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons, modifiers);
        event.setTimestamp(m_time);
        QCoreApplication::sendEvent(&grid(), &event);
    }
    void click(qint64 index, Qt::KeyboardModifiers modifiers)
    {
        m_time += 5000;
        const QPointF place = grid().toWidget(frameOf(index).center());
        send(QEvent::MouseButtonPress, place, modifiers);
        send(QEvent::MouseButtonRelease, place, modifiers);
    }
    void doubleClick(qint64 index)
    {
        m_time += 100;
        const QPointF place = grid().toWidget(frameOf(index).center());
        send(QEvent::MouseButtonDblClick, place, Qt::NoModifier);
        send(QEvent::MouseButtonRelease, place, Qt::NoModifier);
    }
    static void press(QWidget &window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QWidget *const focus = window.focusWidget() ? window.focusWidget() : &window;
        QKeyEvent shortcut(QEvent::ShortcutOverride, key, modifiers);
        QCoreApplication::sendEvent(focus, &shortcut);
        QKeyEvent down(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(focus, &down);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        const QKeySequence sequence(int(modifiers) | int(key));
        for (QAction *const action : m_window->findChildren<QAction *>()) {
            if (action->shortcuts().contains(sequence))
                return action->trigger(); // as the window system's shortcuts do, which take real keys
        }
        press(*m_window, key, modifiers);
    }

    // What is seen

    ZRPhotoMatrix &grid() const { return m_window->grid(); }
    QRectF frameOf(qint64 index) const
    {
        const int columns = grid().numberOfColumns();
        return grid().cellFrameAtRow(int(index / columns), int(index % columns));
    }
    void checkSelected(const QList<qint64> &expected) const
    {
        QStringList selected, wanted;
        for (const platform::Cell *const cell : grid().selectedCells())
            selected.append(QString::number(cell->index()));
        for (const qint64 index : expected)
            wanted.append(QString::number(index));
        check(selected == wanted,
              QStringLiteral("photos %1 selected, not %2")
                  .arg(wanted.join(QStringLiteral(", ")), selected.join(QStringLiteral(", "))));
    }
    /// Until two looks at the grid are the same: pictures are read while they are drawn.
    void waitForPictures()
    {
        QImage seen;
        waitFor(
            [&] {
                const QImage before = std::exchange(seen, grid().grab().toImage());
                return before == seen;
            },
            QStringLiteral("all pictures"));
    }
    void step(const char *what)
    {
        std::printf("%d. %s\n", ++m_steps, what);
        std::fflush(stdout);
    }
    void shoot(const QImage &image, const char *name)
    {
        const QString file = QStringLiteral("%1/%2-%3.png")
                                 .arg(m_output)
                                 .arg(++m_shots, 2, 10, QLatin1Char('0'))
                                 .arg(QLatin1String(name));
        check(image.save(file), QStringLiteral("to write %1").arg(file));
    }
    void shoot(QWidget &widget, const char *name)
    {
        QCoreApplication::processEvents(); // texts that changed are laid out
        shoot(widget.grab().toImage(), name);
    }

    QString m_output;
    QTemporaryDir m_copies;
    QString m_folder;
    int m_photoCount = 0;
    int m_steps = 0;
    int m_shots = 0;
    quint64 m_time = 1000;
    std::unique_ptr<PhotoFolderWindow> m_window;
};

} // namespace

void Walkthrough::prepare()
{
    static const QTemporaryDir home;
    for (const char *const variable : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        qputenv(variable, QFile::encodeName(home.path()));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    // The platform without a screen says what it has no means for, again and again.
    static const QtMessageHandler usual = qInstallMessageHandler(nullptr);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &message) {
        if (!message.startsWith(QLatin1String("This plugin does not support ")))
            usual(type, context, message);
    });
    QApplication::setDesktopSettingsAware(false);
}

bool Walkthrough::run(const QString &photoFolder, const QString &outputFolder)
{
    QApplication::setStyle(QStringLiteral("Fusion"));
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(13);
    QApplication::setFont(font);
    try {
        Walk(photoFolder, outputFolder).run();
    } catch (const WrongState &state) {
        std::fprintf(stderr, "storyboard: %s\n", state.what());
        return false;
    }
    std::printf("Everything is as it should be. The screenshots are in %s.\n", qPrintable(outputFolder));
    return true;
}
