#include "Platform/Interface/KeyBindings.h"

#include <QKeyEvent>

#include <gtest/gtest.h>

using platform::KeyAction;

namespace {

std::optional<KeyAction> actionFor(int key, Qt::KeyboardModifiers modifiers = {})
{
    return platform::keyActionFor(QKeyEvent(QEvent::KeyPress, key, modifiers));
}

} // namespace

TEST(KeyBindings, EachKeyAsksForItsAction)
{
    EXPECT_EQ(actionFor(Qt::Key_Left), KeyAction::moveLeft);
    EXPECT_EQ(actionFor(Qt::Key_Right), KeyAction::moveRight);
    EXPECT_EQ(actionFor(Qt::Key_Up), KeyAction::moveUp);
    EXPECT_EQ(actionFor(Qt::Key_Down), KeyAction::moveDown);
    EXPECT_EQ(actionFor(Qt::Key_Home), KeyAction::scrollToBeginningOfDocument);
    EXPECT_EQ(actionFor(Qt::Key_End), KeyAction::scrollToEndOfDocument);
    EXPECT_EQ(actionFor(Qt::Key_Return), KeyAction::insertNewline);
    EXPECT_EQ(actionFor(Qt::Key_Enter, Qt::KeypadModifier), KeyAction::insertNewline);
    EXPECT_EQ(actionFor(Qt::Key_Left, Qt::KeypadModifier), KeyAction::moveLeft);
    EXPECT_EQ(actionFor(Qt::Key_Tab), KeyAction::insertTab);
    EXPECT_EQ(actionFor(Qt::Key_Backtab, Qt::ShiftModifier), KeyAction::insertBacktab);
    EXPECT_EQ(actionFor(Qt::Key_Backspace), KeyAction::deleteBackward);
    EXPECT_EQ(actionFor(Qt::Key_Delete), KeyAction::deleteForward);
    EXPECT_EQ(actionFor(Qt::Key_Escape), KeyAction::cancelOperation);
    EXPECT_EQ(actionFor(Qt::Key_A, Qt::ControlModifier), KeyAction::selectAll);
#ifdef Q_OS_MACOS
    EXPECT_EQ(actionFor(Qt::Key_PageUp), KeyAction::scrollPageUp);
    EXPECT_EQ(actionFor(Qt::Key_PageDown), KeyAction::scrollPageDown);
    EXPECT_EQ(actionFor(Qt::Key_F, Qt::MetaModifier), KeyAction::moveForward);
#else
    EXPECT_EQ(actionFor(Qt::Key_PageUp), KeyAction::pageUp);
    EXPECT_EQ(actionFor(Qt::Key_PageDown), KeyAction::pageDown);
#endif
}

TEST(KeyBindings, OtherKeysAndOtherModifiersAskForNothing)
{
    EXPECT_FALSE(actionFor(Qt::Key_A));
    EXPECT_FALSE(actionFor(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier));
    EXPECT_FALSE(actionFor(Qt::Key_Left, Qt::ControlModifier));
    EXPECT_FALSE(actionFor(Qt::Key_Left, Qt::ShiftModifier));
    EXPECT_FALSE(actionFor(Qt::Key_F5));
}
