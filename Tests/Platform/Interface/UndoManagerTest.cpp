#include "Platform/Interface/UndoManager.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Support/TestSupport.h"

#include <QAction>
#include <QUndoGroup>
#include <QUndoView>

#include <memory>
#include <stdexcept>

namespace {

using platform::UndoGroup;
using platform::UndoManager;

/// A number that can be undone, and a log of what was called.
struct UndoManagerTest : testing::Test {
    UndoManager manager;
    int number = 0;
    QStringList log;

    void set(int next)
    {
        manager.registerUndo([this, before = number] { set(before); });
        number = next;
    }
    /// An action without a way back.
    void note(const QString &text)
    {
        manager.registerUndo([this, text] { log.append(text); });
    }
    QStringList texts()
    {
        QStringList result;
        for (int i = 0; i < manager.stack().count(); ++i)
            result.append(manager.stack().text(i));
        return result;
    }
};

TEST_F(UndoManagerTest, MayBeDestroyedWhileItUndoesAndRedoes)
{
    for (const bool isRedone : {false, true}) {
        auto owned = std::make_unique<UndoManager>();
        const auto destroy = [&] {
            owned.reset();
            log.append(QStringLiteral("destroyed"));
        };
        owned->beginUndoGrouping();
        owned->registerUndo([this] { log.append(QStringLiteral("never")); });
        if (isRedone)
            owned->registerUndo([&] { owned->registerUndo(destroy); });
        else
            owned->registerUndo(destroy);
        if (isRedone)
            owned->registerUndo([&] { owned->registerUndo([this] { log.append(QStringLiteral("never")); }); });
        owned->endUndoGrouping();
        if (isRedone) {
            owned->undo();
            log.clear();
            owned->redo();
        } else {
            owned->undo();
        }
        EXPECT_FALSE(owned);
        EXPECT_EQ(log, QStringList{QStringLiteral("destroyed")});
        log.clear();
    }
}

TEST_F(UndoManagerTest, WhatIsThrownBehindItsEndIsLogged)
{
    auto owned = std::make_unique<UndoManager>();
    owned->registerUndo([&] {
        owned.reset();
        throw std::runtime_error("too late");
    });
    testSupport::expectWarning(QStringLiteral("undoing: std::runtime_error: too late"));
    owned->undo();
    EXPECT_FALSE(owned);
}

TEST_F(UndoManagerTest, AViewMayUndoWhatDestroysTheManager)
{
    auto owned = std::make_unique<UndoManager>();
    for (int i = 0; i < 3; ++i)
        owned->registerUndo([this] { log.append(QStringLiteral("never")); });
    owned->registerUndo([&] { owned.reset(); });
    const QPointer<QUndoStack> stack = &owned->stack();
    stack->setIndex(0); // through all actions
    EXPECT_FALSE(owned);
    EXPECT_EQ(log, QStringList());
    QCoreApplication::sendPostedEvents(stack, QEvent::DeferredDelete);
    EXPECT_FALSE(stack);
}

TEST_F(UndoManagerTest, WhoIsToldThatAllActionsAreGoneMayDestroyIt)
{
    auto owned = std::make_unique<UndoManager>();
    owned->registerUndo([] {});
    QObject::connect(&owned->stack(), &QUndoStack::canUndoChanged, [&] { owned.reset(); });
    owned->removeAllActions();
    EXPECT_FALSE(owned);
}

TEST_F(UndoManagerTest, UndoesAndRedoesBackAndForth)
{
    EXPECT_FALSE(manager.canUndo());
    EXPECT_FALSE(manager.canRedo());
    set(1);
    set(2);
    EXPECT_TRUE(manager.canUndo());
    for (int round = 0; round < 3; ++round) {
        manager.undo();
        EXPECT_EQ(number, 1);
        manager.undo();
        EXPECT_EQ(number, 0);
        EXPECT_FALSE(manager.canUndo());
        manager.undo();
        EXPECT_EQ(number, 0) << "nothing is left to be undone";
        manager.redo();
        EXPECT_EQ(number, 1);
        manager.redo();
        EXPECT_EQ(number, 2);
        EXPECT_FALSE(manager.canRedo());
        manager.redo();
        EXPECT_EQ(number, 2);
    }
}

TEST_F(UndoManagerTest, ANewActionRemovesThoseThatCouldBeRedone)
{
    set(1);
    set(2);
    manager.undo();
    set(7);
    EXPECT_FALSE(manager.canRedo());
    manager.undo();
    EXPECT_EQ(number, 1);
    EXPECT_EQ(manager.stack().count(), 2);
}

TEST_F(UndoManagerTest, AGroupIsOneActionThatIsUndoneInReverseOrder)
{
    {
        const UndoGroup group(manager, QStringLiteral("Count"));
        EXPECT_EQ(manager.groupingLevel(), 1);
        set(1);
        {
            const UndoGroup inner(manager);
            set(2);
            set(3);
        }
        EXPECT_EQ(manager.stack().count(), 0) << "the outermost group makes the action";
        note(QStringLiteral("first to be called"));
    }
    EXPECT_EQ(manager.stack().count(), 1);
    EXPECT_EQ(manager.stack().undoText(), QStringLiteral("Count"));
    manager.undo();
    EXPECT_EQ(log, QStringList{QStringLiteral("first to be called")});
    EXPECT_EQ(number, 0);
    EXPECT_EQ(manager.stack().redoText(), QStringLiteral("Count"));
    manager.redo();
    EXPECT_EQ(number, 3);
    manager.undo();
    EXPECT_EQ(number, 0);
}

TEST_F(UndoManagerTest, AnEmptyGroupIsNoAction)
{
    set(1);
    manager.undo();
    manager.beginUndoGrouping();
    manager.endUndoGrouping();
    EXPECT_TRUE(manager.canRedo()) << "and removes nothing";
    EXPECT_EQ(manager.stack().count(), 1);
}

TEST_F(UndoManagerTest, AGroupIsClosedByAnExceptionAndCanBeUndone)
{
    try {
        const UndoGroup group(manager);
        set(5);
        throw std::runtime_error("in the middle");
    } catch (const std::runtime_error &) { }
    EXPECT_EQ(manager.groupingLevel(), 0);
    manager.undo();
    EXPECT_EQ(number, 0);
}

TEST_F(UndoManagerTest, DoesNotUndoWhileAGroupIsOpen)
{
    set(1);
    manager.beginUndoGrouping();
    manager.undo();
    EXPECT_EQ(number, 1);
    manager.endUndoGrouping();
    manager.undo();
    EXPECT_EQ(number, 0);
}

TEST_F(UndoManagerTest, RefusesWrongCalls)
{
    EXPECT_THROW(manager.endUndoGrouping(), platform::InternalInconsistency);
    EXPECT_THROW(manager.registerUndo(UndoManager::Call()), platform::InternalInconsistency);
    EXPECT_THROW(manager.registerUndo(nullptr, [] {}), platform::InternalInconsistency);
    QObject target;
    EXPECT_THROW(manager.registerUndo(&target, UndoManager::Call()), platform::InternalInconsistency);
    EXPECT_FALSE(manager.canUndo());
}

TEST_F(UndoManagerTest, NamesTheActionRegisteredLastOrTheOpenGroup)
{
    manager.setActionName(QStringLiteral("nothing there"));
    set(1);
    EXPECT_EQ(manager.stack().undoText(), QString());
    QStringList told;
    const QObject listener;
    QObject::connect(&manager.stack(), &QUndoStack::undoTextChanged, &listener,
                     [&](const QString &text) { told.append(text); });
    manager.setActionName(QStringLiteral("One"));
    EXPECT_EQ(told, QStringList{QStringLiteral("One")});
    manager.beginUndoGrouping();
    manager.setActionName(QStringLiteral("Two"));
    set(2);
    manager.endUndoGrouping();
    EXPECT_EQ(texts(), (QStringList{QStringLiteral("One"), QStringLiteral("Two")}));
    manager.undo();
    manager.registerUndo([&] {
        manager.setActionName(QStringLiteral("while undoing"));
        set(0);
    });
    manager.undo();
    EXPECT_EQ(texts(), (QStringList{QStringLiteral("One"), QString()}));
}

TEST_F(UndoManagerTest, TheNameOfAnEmptyGroupIsForgotten)
{
    manager.beginUndoGrouping();
    manager.setActionName(QStringLiteral("Empty"));
    manager.endUndoGrouping();
    set(1);
    EXPECT_EQ(manager.stack().undoText(), QString());
}

TEST_F(UndoManagerTest, TellsWhetherItUndoesOrRedoes)
{
    QStringList states;
    std::function<void()> call = [&] {
        states.append(QStringLiteral("%1%2").arg(manager.isUndoing()).arg(manager.isRedoing()));
        manager.registerUndo(call);
    };
    manager.registerUndo(call);
    manager.undo();
    manager.redo();
    EXPECT_EQ(states, (QStringList{QStringLiteral("10"), QStringLiteral("01")}));
    EXPECT_FALSE(manager.isUndoing());
    EXPECT_FALSE(manager.isRedoing());
}

TEST_F(UndoManagerTest, AnActionThatRegistersNothingWhileUndoneHasNoRedo)
{
    set(1);
    note(QStringLiteral("undone"));
    manager.undo();
    EXPECT_EQ(log, QStringList{QStringLiteral("undone")});
    EXPECT_FALSE(manager.canRedo());
    EXPECT_EQ(manager.stack().count(), 1);
    manager.undo();
    EXPECT_EQ(number, 0) << "the action before it is still there";
}

TEST_F(UndoManagerTest, AnActionThatRegistersNothingWhileRedoneHasNoUndo)
{
    set(1);
    manager.registerUndo([this] { note(QStringLiteral("redone")); });
    manager.undo();
    manager.setClean();
    bool canRedo = true;
    const QObject listener;
    QObject::connect(&manager.stack(), &QUndoStack::canRedoChanged, &listener, [&](bool can) { canRedo = can; });
    manager.redo();
    EXPECT_EQ(log, QStringList{QStringLiteral("redone")});
    EXPECT_FALSE(canRedo) << "views are told";
    EXPECT_FALSE(manager.canRedo());
    EXPECT_EQ(manager.stack().count(), 1);
    EXPECT_FALSE(manager.isClean()) << "it is not as it was saved, and there is no way back to that";
    manager.undo();
    EXPECT_EQ(number, 0);
}

TEST_F(UndoManagerTest, UndoWhileUndoingDoesNothing)
{
    set(1);
    manager.registerUndo([this] {
        manager.undo();
        manager.redo();
        manager.stack().undo();
        manager.stack().redo();
        manager.stack().setIndex(0);
        set(2);
    });
    manager.undo();
    EXPECT_EQ(number, 2);
    EXPECT_TRUE(manager.canRedo());
    EXPECT_EQ(manager.stack().index(), 1);
    manager.redo();
    EXPECT_EQ(number, 1);
    manager.undo();
    manager.undo();
    EXPECT_EQ(number, 0);
}

TEST_F(UndoManagerTest, GroupsOpenedWhileUndoingBelongToTheReverse)
{
    manager.registerUndo([this] {
        const UndoGroup group(manager, QStringLiteral("inner"));
        set(1);
        set(2);
    });
    manager.setActionName(QStringLiteral("outer"));
    manager.undo();
    EXPECT_EQ(number, 2);
    EXPECT_EQ(manager.groupingLevel(), 0);
    EXPECT_EQ(texts(), QStringList{QStringLiteral("outer")});
    manager.redo();
    EXPECT_EQ(number, 0);
}

TEST_F(UndoManagerTest, ForgetsEverythingOnDemand)
{
    set(1);
    set(2);
    manager.undo();
    manager.removeAllActions();
    EXPECT_FALSE(manager.canUndo());
    EXPECT_FALSE(manager.canRedo());
    manager.beginUndoGrouping();
    set(3);
    manager.removeAllActions();
    set(4);
    manager.endUndoGrouping();
    EXPECT_EQ(manager.stack().count(), 1);
    manager.undo();
    EXPECT_EQ(number, 3);
}

TEST_F(UndoManagerTest, ForgettingEverythingIsNoSaving)
{
    set(1);
    QList<bool> told;
    const QObject listener;
    QObject::connect(&manager.stack(), &QUndoStack::cleanChanged, &listener, [&] { told.append(manager.isClean()); });
    manager.removeAllActions();
    EXPECT_FALSE(manager.isClean());
    EXPECT_FALSE(told.contains(true)) << "not even for a moment";
    manager.setClean();
    EXPECT_TRUE(manager.isClean());
    manager.removeAllActions();
    EXPECT_TRUE(manager.isClean());
    manager.beginUndoGrouping();
    set(2);
    manager.removeAllActions();
    manager.endUndoGrouping();
    EXPECT_FALSE(manager.isClean()) << "what the group had collected was done";
}

TEST_F(UndoManagerTest, EmptiedWhileUndoingKeepsNothing)
{
    set(1);
    manager.registerUndo([this] {
        set(2);
        manager.removeAllActions();
        EXPECT_FALSE(manager.canUndo()) << "at once";
        EXPECT_FALSE(manager.canRedo());
        set(3);
    });
    manager.undo();
    EXPECT_EQ(number, 3);
    EXPECT_EQ(manager.stack().count(), 0);
    set(4);
    manager.undo();
    EXPECT_EQ(number, 3) << "it works on";
}

TEST_F(UndoManagerTest, EmptiedWhileRedoingKeepsNothing)
{
    bool empties = false;
    std::function<void()> call = [&] {
        manager.registerUndo(call);
        if (empties)
            manager.removeAllActions();
    };
    manager.registerUndo(call);
    manager.undo();
    empties = true;
    manager.redo();
    EXPECT_EQ(manager.stack().count(), 0);
}

TEST_F(UndoManagerTest, ACallThatThrowsLeavesTheRestOfTheActionToBeUndone)
{
    bool fails = true;
    {
        const UndoGroup group(manager, QStringLiteral("Three"));
        note(QStringLiteral("last"));
        manager.registerUndo([&] {
            if (fails)
                throw std::runtime_error("no");
            log.append(QStringLiteral("middle"));
        });
        set(1);
    }
    manager.setClean();
    EXPECT_THROW(manager.undo(), std::runtime_error);
    EXPECT_EQ(number, 0) << "the call that came first was made";
    EXPECT_EQ(log, QStringList());
    EXPECT_FALSE(manager.isUndoing());
    EXPECT_TRUE(manager.canUndo());
    EXPECT_FALSE(manager.canRedo());
    EXPECT_FALSE(manager.isClean());
    EXPECT_EQ(manager.stack().undoText(), QStringLiteral("Three"));
    fails = false;
    number = 9;
    manager.undo();
    EXPECT_EQ(log, (QStringList{QStringLiteral("middle"), QStringLiteral("last")}));
    EXPECT_EQ(number, 9) << "what was undone is not undone again";
}

TEST_F(UndoManagerTest, ARedoThatThrowsStaysToBeRedone)
{
    set(1);
    bool fails = true;
    manager.registerUndo([&] {
        manager.registerUndo([&] {
            if (fails)
                throw std::runtime_error("no");
            log.append(QStringLiteral("redone"));
        });
    });
    manager.undo();
    EXPECT_THROW(manager.redo(), std::runtime_error);
    EXPECT_TRUE(manager.canRedo());
    EXPECT_TRUE(manager.canUndo());
    EXPECT_EQ(manager.stack().index(), 1);
    fails = false;
    manager.redo();
    EXPECT_EQ(log, QStringList{QStringLiteral("redone")});
}

TEST_F(UndoManagerTest, ACallThatEmptiesAndThrowsDoesBoth)
{
    set(1);
    manager.registerUndo([this] {
        manager.removeAllActions();
        throw std::runtime_error("no");
    });
    EXPECT_THROW(manager.undo(), std::runtime_error);
    EXPECT_EQ(manager.stack().count(), 0);
    EXPECT_FALSE(manager.isClean());
}

TEST_F(UndoManagerTest, CallsOfADeadTargetAreLeftOut)
{
    auto target = std::make_unique<QObject>();
    {
        const UndoGroup group(manager);
        set(1);
        manager.registerUndo(target.get(), [this] { log.append(QStringLiteral("dead")); });
    }
    target.reset();
    manager.undo();
    EXPECT_EQ(number, 0);
    EXPECT_EQ(log, QStringList());
}

TEST_F(UndoManagerTest, AnActionOfDeadTargetsIsSkipped)
{
    set(1);
    auto target = std::make_unique<QObject>();
    for (int i = 0; i < 3; ++i)
        manager.registerUndo(target.get(), [this] { log.append(QStringLiteral("dead")); });
    target.reset();
    manager.undo();
    EXPECT_EQ(number, 0) << "one step for the person";
    EXPECT_EQ(log, QStringList());
    EXPECT_EQ(manager.stack().count(), 1);

    // The same on the way forward.
    auto other = std::make_unique<QObject>();
    manager.redo();
    manager.registerUndo(other.get(), [&] { manager.registerUndo(other.get(), [] {}); });
    set(2);
    manager.undo();
    manager.undo();
    other.reset();
    manager.redo();
    EXPECT_EQ(number, 2);
}

TEST_F(UndoManagerTest, RedoingWhatIsDeadChangesNothing)
{
    auto target = std::make_unique<QObject>();
    manager.registerUndo(target.get(), [this, dying = target.get()] { manager.registerUndo(dying, [] {}); });
    manager.undo();
    manager.setClean();
    target.reset();
    manager.redo();
    EXPECT_TRUE(manager.isClean());
    EXPECT_FALSE(manager.canRedo());
}

TEST_F(UndoManagerTest, TellsViewsOfAllThatANewNameMayChange)
{
    note("a");
    QStringList told;
    const QUndoStack &stack = manager.stack();
    const QObject view; // with which the connections end
    QObject::connect(&stack, &QUndoStack::indexChanged, &view, [&] { told.append("index"); });
    QObject::connect(&stack, &QUndoStack::canUndoChanged, &view, [&] { told.append("canUndo"); });
    QObject::connect(&stack, &QUndoStack::undoTextChanged, &view, [&] { told.append("undoText"); });
    QObject::connect(&stack, &QUndoStack::canRedoChanged, &view, [&] { told.append("canRedo"); });
    QObject::connect(&stack, &QUndoStack::redoTextChanged, &view, [&] { told.append("redoText"); });
    manager.setActionName("Turn");
    EXPECT_EQ(told, (QStringList{"index", "canUndo", "undoText", "canRedo", "redoText"}));
}

TEST_F(UndoManagerTest, AGroupEndsWithoutAnException)
{
    QObject::connect(&manager.stack(), &QUndoStack::indexChanged, [] { throw std::runtime_error("told of it"); });
    testSupport::expectWarning("ending a group: std::runtime_error: told of it");
    {
        const UndoGroup group(manager, "Turn");
        note("a");
    }
    EXPECT_TRUE(manager.canUndo());
    manager.stack().disconnect();
}

TEST_F(UndoManagerTest, AFailureIsSettledBeforeItIsClean)
{
    manager.registerUndo([] { throw std::runtime_error("not undone"); });
    testSupport::expectWarning("undoing: std::runtime_error: not undone");
    manager.stack().undo(); // as a view does
    manager.setClean();
    EXPECT_TRUE(manager.isClean());
    EXPECT_TRUE(manager.canUndo());
    QCoreApplication::processEvents();
    EXPECT_TRUE(manager.isClean());
}

TEST_F(UndoManagerTest, TheCleanStateFollowsUndo)
{
    EXPECT_TRUE(manager.isClean());
    set(1);
    EXPECT_FALSE(manager.isClean());
    manager.setClean();
    set(2);
    manager.undo();
    EXPECT_TRUE(manager.isClean());
    manager.undo();
    EXPECT_FALSE(manager.isClean());
    manager.redo();
    EXPECT_TRUE(manager.isClean());
    manager.undo();
    set(3);
    manager.undo();
    EXPECT_FALSE(manager.isClean()) << "what was saved cannot be reached any more";
}

// --- Qt's views

TEST_F(UndoManagerTest, AViewGoesThroughSeveralActionsAtOnce)
{
    for (int i = 1; i <= 5; ++i)
        set(i);
    QUndoView view(&manager.stack());
    view.setCurrentIndex(view.model()->index(2, 0));
    EXPECT_EQ(number, 2);
    view.setCurrentIndex(view.model()->index(5, 0));
    EXPECT_EQ(number, 5);
    EXPECT_TRUE(manager.canUndo());
    EXPECT_FALSE(manager.canRedo());
}

TEST_F(UndoManagerTest, ActionsAndGroupsOfQtWork)
{
    QUndoGroup group;
    group.addStack(&manager.stack());
    manager.stack().setActive();
    const std::unique_ptr<QAction> undo(group.createUndoAction(nullptr)), redo(group.createRedoAction(nullptr));
    EXPECT_FALSE(undo->isEnabled());
    set(1);
    manager.setActionName(QStringLiteral("Count"));
    EXPECT_TRUE(undo->isEnabled());
    EXPECT_EQ(undo->text(), QStringLiteral("Undo Count"));
    undo->trigger();
    EXPECT_EQ(number, 0);
    EXPECT_TRUE(redo->isEnabled());
    redo->trigger();
    EXPECT_EQ(number, 1);
}

TEST_F(UndoManagerTest, AnExceptionIsLoggedWhenAViewAskedForIt)
{
    set(1);
    manager.registerUndo([] { throw std::runtime_error("not undone"); });
    set(2);
    set(3);
    testSupport::expectWarning(QStringLiteral("not undone"));
    manager.stack().setIndex(0);
    EXPECT_TRUE(testSupport::waitUntil([this] { return manager.stack().index() == 2; }))
        << "the failed action is the next one to be undone";
    EXPECT_EQ(number, 1);
    EXPECT_FALSE(manager.isClean());
    manager.redo();
    manager.redo();
    EXPECT_EQ(number, 3) << "those behind it are whole";
}

TEST_F(UndoManagerTest, AFailureThroughAViewIsSettledBeforeTheNextCall)
{
    manager.registerUndo([] { throw std::runtime_error("not undone"); });
    testSupport::expectWarning(QStringLiteral("not undone"));
    manager.stack().undo();
    set(1);
    EXPECT_EQ(manager.stack().count(), 2);
    manager.undo();
    EXPECT_EQ(number, 0);
}

TEST_F(UndoManagerTest, EmptiedThroughAViewIsEmptyAtOnceForTheManager)
{
    set(1);
    manager.registerUndo([this] { manager.removeAllActions(); });
    set(2);
    manager.stack().setIndex(0);
    EXPECT_EQ(number, 1) << "the actions behind the one that emptied it are gone";
    EXPECT_FALSE(manager.canUndo());
    EXPECT_FALSE(manager.canRedo());
    set(5);
    EXPECT_EQ(manager.stack().count(), 1) << "what comes afterwards stays";
    EXPECT_TRUE(manager.canUndo());
}

TEST_F(UndoManagerTest, EmptiedThroughAViewIsEmptyForViewsWhenTheEventLoopTurns)
{
    manager.registerUndo([this] { manager.removeAllActions(); });
    set(1);
    manager.stack().undo();
    manager.stack().undo();
    EXPECT_TRUE(testSupport::waitUntil([this] { return manager.stack().count() == 0; }));
}

TEST_F(UndoManagerTest, WhatLosesItsUndoThroughAViewIsShownAsGone)
{
    manager.registerUndo([this] { note(QStringLiteral("redone")); });
    manager.undo();
    QUndoView view(&manager.stack());
    EXPECT_EQ(view.model()->rowCount(), 2);
    bool canRedo = true;
    const QObject listener;
    QObject::connect(&manager.stack(), &QUndoStack::canRedoChanged, &listener, [&](bool can) { canRedo = can; });
    manager.stack().redo();
    EXPECT_TRUE(testSupport::waitUntil([&] { return !canRedo; }));
    EXPECT_EQ(view.model()->rowCount(), 1);
}

TEST_F(UndoManagerTest, KnowsAnUndoLimit)
{
    manager.stack().setUndoLimit(2);
    for (int i = 1; i <= 4; ++i)
        set(i);
    while (manager.canUndo())
        manager.undo();
    EXPECT_EQ(number, 2);
}

TEST_F(UndoManagerTest, WhatActionsHoldIsLetGoWithThem)
{
    const auto held = std::make_shared<int>(1);
    manager.registerUndo([held] {});
    manager.beginUndoGrouping();
    manager.registerUndo([held] {});
    EXPECT_EQ(held.use_count(), 3);
    manager.removeAllActions();
    EXPECT_EQ(held.use_count(), 1);
    manager.endUndoGrouping();
    manager.registerUndo([held] {});
    manager.undo();
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
