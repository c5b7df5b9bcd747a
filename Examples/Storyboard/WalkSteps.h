#pragma once

#include "Platform/Interface/Matrix.h"

#include <QImage>
#include <QObject>
#include <QString>
#include <QWidget>

#include <functional>
#include <stdexcept>

/// What a walk through the program threw: the state that was expected.
struct WrongState : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The means of a walk through the program: doing what a person does, looking, and writing down what is seen.
class WalkSteps
{
public:
    /// @param outputFolder where the screenshots go
    explicit WalkSteps(const QString &outputFolder);

    /// Copies the files of a folder, so that nothing is written into it.
    /// @return how many there are
    static int copyFiles(const QString &fromFolder, const QString &toFolder);
    /// Raises `WrongState` unless it is so.
    static void check(bool isRight, const QString &expectation);
    static void waitFor(const std::function<bool()> &condition, const QString &expectation);

    void step(const char *what);
    void shoot(QWidget &widget, const char *name);
    void shoot(const QImage &image, const char *name);

    void click(platform::Matrix &grid, qint64 index, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void doubleClick(platform::Matrix &grid, qint64 index);
    void send(platform::Matrix &grid, QEvent::Type type, const QPointF &place, Qt::KeyboardModifiers modifiers);
    /// Triggers the window's action of that key, as the window system's shortcuts do, which take real keys; without one
    /// the key goes to the widget that has the keyboard.
    static void press(QWidget &window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    static QRectF frameOf(const platform::Matrix &grid, qint64 index);
    static void checkSelected(const platform::Matrix &grid, const QList<qint64> &expected);
    /// Until two looks at the grid are the same: pictures are read while they are drawn.
    static void waitForPictures(QWidget &grid);
    /// Puts dark colours in place of the program's.
    /// @return those before
    static QPalette darken();

private:
    QString m_output;
    int m_steps = 0;
    int m_shots = 0;
    quint64 m_time = 1000;
};
