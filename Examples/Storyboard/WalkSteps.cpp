#include "WalkSteps.h"

#include <QtWidgets>

#include <cstdio>
#include <utility>

WalkSteps::WalkSteps(const QString &outputFolder)
    : m_output(outputFolder)
{
    check(QDir().mkpath(outputFolder), QStringLiteral("a folder %1 to write to").arg(outputFolder));
}

int WalkSteps::copyFiles(const QString &fromFolder, const QString &toFolder)
{
    QDir().mkpath(toFolder);
    const QFileInfoList files = QDir(fromFolder).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo &file : files) {
        check(QFile::copy(file.filePath(), toFolder + QLatin1Char('/') + file.fileName()),
              QStringLiteral("a copy of %1").arg(file.filePath()));
    }
    return int(files.size());
}

void WalkSteps::check(bool isRight, const QString &expectation)
{
    if (!isRight)
        throw WrongState(QStringLiteral("expected: %1").arg(expectation).toStdString());
}

void WalkSteps::waitFor(const std::function<bool()> &condition, const QString &expectation)
{
    constexpr int patience = 60'000; // milliseconds
    QElapsedTimer waited;
    waited.start();
    while (!condition() && !waited.hasExpired(patience))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    check(condition(), expectation);
}

void WalkSteps::step(const char *what)
{
    std::printf("%d. %s\n", ++m_steps, what);
    std::fflush(stdout);
}

void WalkSteps::shoot(const QImage &image, const char *name)
{
    const QString file =
        QStringLiteral("%1/%2-%3.png").arg(m_output).arg(++m_shots, 2, 10, QLatin1Char('0')).arg(QLatin1String(name));
    check(image.save(file), QStringLiteral("to write %1").arg(file));
}

void WalkSteps::shoot(QWidget &widget, const char *name)
{
    QCoreApplication::processEvents(); // texts that changed are laid out
    shoot(widget.grab().toImage(), name);
}

void WalkSteps::send(platform::Matrix &grid, QEvent::Type type, const QPointF &place, Qt::KeyboardModifiers modifiers)
{
    const auto buttons = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, place, grid.mapToGlobal(place), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                      buttons, modifiers);
    event.setTimestamp(m_time);
    QCoreApplication::sendEvent(&grid, &event);
}

void WalkSteps::click(platform::Matrix &grid, qint64 index, Qt::KeyboardModifiers modifiers)
{
    m_time += 5000;
    const QPointF place = grid.toWidget(frameOf(grid, index).center());
    send(grid, QEvent::MouseButtonPress, place, modifiers);
    send(grid, QEvent::MouseButtonRelease, place, modifiers);
}

void WalkSteps::doubleClick(platform::Matrix &grid, qint64 index)
{
    m_time += 100;
    const QPointF place = grid.toWidget(frameOf(grid, index).center());
    send(grid, QEvent::MouseButtonDblClick, place, Qt::NoModifier);
    send(grid, QEvent::MouseButtonRelease, place, Qt::NoModifier);
}

void WalkSteps::press(QWidget &window, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    const QKeySequence sequence(int(modifiers) | int(key));
    for (QAction *const action : window.findChildren<QAction *>()) {
        if (action->shortcuts().contains(sequence))
            return action->trigger();
    }
    QWidget *const focus = window.focusWidget() ? window.focusWidget() : &window;
    QKeyEvent shortcut(QEvent::ShortcutOverride, key, modifiers);
    QCoreApplication::sendEvent(focus, &shortcut);
    QKeyEvent down(QEvent::KeyPress, key, modifiers);
    QCoreApplication::sendEvent(focus, &down);
}

QRectF WalkSteps::frameOf(const platform::Matrix &grid, qint64 index)
{
    const int columns = grid.numberOfColumns();
    return grid.cellFrameAtRow(int(index / columns), int(index % columns));
}

void WalkSteps::checkSelected(const platform::Matrix &grid, const QList<qint64> &expected)
{
    QStringList selected, wanted;
    for (const platform::Cell *const cell : grid.selectedCells())
        selected.append(QString::number(cell->index()));
    for (const qint64 index : expected)
        wanted.append(QString::number(index));
    check(selected == wanted,
          QStringLiteral("cells %1 selected, not %2")
              .arg(wanted.join(QStringLiteral(", ")), selected.join(QStringLiteral(", "))));
}

void WalkSteps::waitForPictures(QWidget &grid)
{
    QImage seen;
    waitFor(
        [&] {
            const QImage before = std::exchange(seen, grid.grab().toImage());
            return before == seen;
        },
        QStringLiteral("all pictures"));
}

QPalette WalkSteps::darken()
{
    const QPalette light = QApplication::palette();
    QPalette dark(QColor(0x35, 0x35, 0x35), QColor(0x2b, 0x2b, 0x2b));
    dark.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x1e));
    dark.setColor(QPalette::Highlight, QColor(0x2a, 0x82, 0xda));
    QApplication::setPalette(dark);
    return light;
}
