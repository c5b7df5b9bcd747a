#pragma once

#include <QPointer>
#include <QString>
#include <QUndoStack>

#include <exception>
#include <functional>
#include <memory>
#include <vector>

namespace platform {

/// Remembers how to take back what was done. An operation that changes something registers the call that would change
/// it back; that call, made while undoing, registers its own reverse, which becomes the redo.
///
///     void Story::setTitle(const std::shared_ptr<Slide> &slide, const QString &title)
///     {
///         undoManager().registerUndo(this, [this, slide, before = slide->title()] { setTitle(slide, before); });
///         slide->setTitle(title);
///     }
///
/// The target is a QObject, here the document. A model object (`platform::Object`) is none: the call holds it by its
/// std::shared_ptr, which keeps it for as long as the action can be undone or redone.
///
/// **Actions.** What is undone in one step is an action: a single registered call, or all those that were registered
/// while a group was open, which are made in reverse order. An empty group is no action. Registering a new action
/// removes those that could be redone.
///
/// **While an action is undone or redone:**
/// - What is registered becomes its reverse, under the same name, whether in groups or not. When nothing is
///   registered, there is no way back: the action leaves the list. If it was being redone, the state in which all is
///   saved is out of reach then, and the stack is not clean.
/// - `undo` and `redo` do nothing, and neither do those of the stack.
/// - `removeAllActions` takes effect when the action has ended; what it registers is not kept.
/// - A call that throws ends the action, and the exception leaves `undo` or `redo`; when a view of the stack asked for
///   it, it is logged in "platform.undo". The action stays where it is, with the calls that were not made, the failed
///   one first; trying again goes on there. What was made up to then cannot be taken back, and the stack is not clean.
///
/// A call whose target has died is left out. An action with nothing but such calls is skipped when its turn comes.
///
/// **Qt's views.** `stack()` is for QUndoView, QUndoGroup, actions and signals: what a view undoes runs by the same
/// rules. Hosts push no commands of their own and do not clear it.
///
/// **Destroying it.** A call, and whoever is told of what a call does, may destroy the manager: the action ends behind
/// that call, no other one is made, and `undo` or `redo` returns. What the call throws after that is logged in
/// "platform.undo". The stack goes when the one who asked it is done.
///
/// Main thread.
class UndoManager
{
public:
    using Call = std::function<void()>;

    UndoManager();
    UndoManager(const UndoManager &) = delete;
    UndoManager &operator=(const UndoManager &) = delete;
    ~UndoManager();

    /// Registers a call that is made as long as the target lives. An empty call, and no target, raise
    /// `platform::InternalInconsistency`.
    void registerUndo(QObject *target, Call call);
    /// Registers a call that depends on no object's life.
    void registerUndo(Call call);

    /// Begins a group, which may be within another one: the outermost makes the action.
    void beginUndoGrouping();
    /// Ends it. Without a beginning it raises `platform::InternalInconsistency`.
    void endUndoGrouping();
    /// How many groups are open.
    int groupingLevel() const { return m_groupingLevel; }

    /// Names the action: that of the open group, otherwise the one registered last. Does nothing when there is none,
    /// and while undoing or redoing.
    void setActionName(const QString &name);

    /// Undoes the last action. Does nothing when there is none, and while a group is open.
    void undo();
    void redo();
    bool canUndo() const;
    bool canRedo() const;
    bool isUndoing() const { return m_activity == Activity::Undoing; }
    bool isRedoing() const { return m_activity == Activity::Redoing; }

    /// Forgets everything, what open groups have collected too; the groups stay open. Nothing is undone by that: a
    /// stack that was not clean is not clean afterwards.
    void removeAllActions();

    /// Whether all is as it was at the last `setClean`: as the stack has it, and without a moment's change while
    /// `removeAllActions` runs.
    bool isClean() const;
    /// Takes the present state for the one to compare with.
    void setClean();

    /// The actions, for Qt's views.
    QUndoStack &stack() { return *m_stack; }
    const QUndoStack &stack() const { return *m_stack; }

private:
    class Action;
    class StackHold;
    enum class Activity { None, Undoing, Redoing };
    struct RegisteredCall {
        QPointer<QObject> target;
        bool hasTarget = false;
        Call call;
    };

    void add(RegisteredCall call);
    void pushGroup();
    void perform(void (QUndoStack::*step)(), bool (QUndoStack::*canStep)() const);
    void run(Action &action, Activity activity);
    void makeCalls(Action &action, const StackHold &hold);
    void finish(Action &action, std::vector<RegisteredCall> reverse, Activity activity);
    int indexOf(const Action &action) const;
    std::exception_ptr settle();
    void settleAndLog();
    void tellViews();

    std::shared_ptr<UndoManager *> m_self; // null behind it once this is gone; shared with who may outlive it
    std::unique_ptr<QUndoStack> m_stack = std::make_unique<QUndoStack>();
    StackHold *m_hold = nullptr; // the outermost one
    std::vector<RegisteredCall> m_group; // what the open group has collected
    QString m_groupName;
    int m_groupingLevel = 0;
    Activity m_activity = Activity::None;
    std::vector<RegisteredCall> *m_reverse = nullptr; // what the running action registers
    bool m_hasRun = false; // any call of the action that was undone or redone last
    bool m_isCalledDirectly = false; // by undo or redo, not through the stack
    bool m_isRemovingUnsaved = false;

    // What has to wait until the stack, which must not be changed while it runs an action, is done; see settle().
    std::exception_ptr m_failure;
    int m_failedIndex = 0; // where the stack has to stand after the failure
    bool m_removesAll = false;
    bool m_viewsAreStale = false;
};

/// Keeps a group open as long as it lives, so that it is closed on every path out.
class UndoGroup
{
public:
    explicit UndoGroup(UndoManager &manager, const QString &actionName = {});
    UndoGroup(const UndoGroup &) = delete;
    UndoGroup &operator=(const UndoGroup &) = delete;
    ~UndoGroup();

private:
    UndoManager &m_manager;
};

} // namespace platform
