#include "Platform/Interface/UndoManager.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/EventBoundary.h"

#include <QLoggingCategory>

#include <algorithm>
#include <memory>

namespace platform {

namespace {

Q_LOGGING_CATEGORY(undoLog, "platform.undo")

} // namespace

/// Keeps the stack as long as one of its operations runs, since whoever is told of it may destroy the manager. Of
/// several within one another the outermost does.
class UndoManager::StackHold
{
public:
    explicit StackHold(UndoManager &manager)
        : m_manager(manager.m_self)
        , m_isOutermost(!manager.m_hold)
    {
        if (m_isOutermost)
            manager.m_hold = this;
    }
    StackHold(const StackHold &) = delete;
    StackHold &operator=(const StackHold &) = delete;
    ~StackHold()
    {
        if (m_isOutermost && isManagerAlive())
            (*m_manager)->m_hold = nullptr;
    }

    bool isManagerAlive() const { return *m_manager; }
    /// Takes over what is left of the manager.
    void keep(std::unique_ptr<QUndoStack> stack) { m_stack = std::move(stack); }
    /// The stack itself runs this hold.
    void leaveToEventLoop()
    {
        if (m_stack)
            m_stack.release()->deleteLater();
    }

private:
    std::shared_ptr<UndoManager *> m_manager;
    std::unique_ptr<QUndoStack> m_stack; // once the manager is gone
    bool m_isOutermost;
};

/// What is undone in one step. When it has run, it holds the calls that reverse it, and so back and forth.
class UndoManager::Action : public QUndoCommand
{
public:
    Action(UndoManager &manager, const QString &name, std::vector<RegisteredCall> registered)
        : QUndoCommand(name)
        , calls(std::move(registered))
        , m_manager(manager.m_self)
    { }

    void undo() override { run(Activity::Undoing); }
    void redo() override
    {
        // A stack redoes what is pushed; the host has done it already.
        if (!std::exchange(m_isNew, false))
            run(Activity::Redoing);
    }

    std::vector<RegisteredCall> calls; // the last one is made first

private:
    void run(Activity activity)
    {
        if (*m_manager)
            (*m_manager)->run(*this, activity);
    }

    std::shared_ptr<UndoManager *> m_manager;
    bool m_isNew = true;
};

UndoManager::UndoManager()
    : m_self(std::make_shared<UndoManager *>(this))
{ }

UndoManager::~UndoManager()
{
    *m_self = nullptr;
    if (m_hold)
        m_hold->keep(std::move(m_stack));
}

void UndoManager::registerUndo(QObject *target, Call call)
{
    ZR_ASSERT_PARAMETER(this, target && call);
    add({target, true, std::move(call)});
}

void UndoManager::registerUndo(Call call)
{
    ZR_ASSERT_PARAMETER(this, call);
    add({nullptr, false, std::move(call)});
}

void UndoManager::add(RegisteredCall call)
{
    if (m_reverse) {
        m_reverse->push_back(std::move(call));
        return;
    }
    const StackHold hold(*this);
    settleAndLog();
    if (!hold.isManagerAlive())
        return;
    m_group.push_back(std::move(call));
    if (m_groupingLevel == 0)
        pushGroup();
}

void UndoManager::pushGroup()
{
    const QString name = std::exchange(m_groupName, {});
    if (m_group.empty())
        return;
    const StackHold hold(*this);
    // The stack owns it.
    m_stack->push(std::make_unique<Action>(*this, name, std::exchange(m_group, {})).release());
}

void UndoManager::beginUndoGrouping()
{
    ++m_groupingLevel;
}

void UndoManager::endUndoGrouping()
{
    ZR_ASSERT_PARAMETER(this, m_groupingLevel > 0);
    if (--m_groupingLevel == 0)
        pushGroup();
}

void UndoManager::setActionName(const QString &name)
{
    if (m_activity != Activity::None)
        return;
    if (m_groupingLevel > 0) {
        m_groupName = name;
    } else if (canUndo()) {
        // The stack hands its commands out as constant; this one is ours.
        const_cast<QUndoCommand *>(m_stack->command(m_stack->index() - 1))->setText(name);
        tellViews();
    }
}

void UndoManager::undo()
{
    perform(&QUndoStack::undo, &QUndoStack::canUndo);
}

void UndoManager::redo()
{
    perform(&QUndoStack::redo, &QUndoStack::canRedo);
}

void UndoManager::perform(void (QUndoStack::*step)(), bool (QUndoStack::*canStep)() const)
{
    if (m_activity != Activity::None || m_groupingLevel > 0)
        return;
    const StackHold hold(*this);
    settleAndLog();
    if (!hold.isManagerAlive())
        return;
    m_isCalledDirectly = true;
    m_hasRun = false;
    while (hold.isManagerAlive() && !m_hasRun
           && (m_stack.get()->*canStep)()) // past the actions whose targets have died
        (m_stack.get()->*step)();
    if (!hold.isManagerAlive())
        return;
    m_isCalledDirectly = false;
    if (const std::exception_ptr failure = settle())
        std::rethrow_exception(failure);
}

void UndoManager::run(Action &action, Activity activity)
{
    // An action that a running one asks for; one that was removed, or comes behind a failed one, while a view goes
    // through several; the way back after a failure.
    if (m_activity != Activity::None || m_removesAll || m_failure)
        return;
    StackHold hold(*this);
    std::vector<RegisteredCall> reverse;
    m_activity = activity;
    m_reverse = &reverse;
    makeCalls(action, hold);
    if (!hold.isManagerAlive()) {
        hold.leaveToEventLoop(); // a view's stack goes on with it
        return;
    }
    m_activity = Activity::None;
    m_reverse = nullptr;

    if (m_failure)
        m_failedIndex = indexOf(action) + (activity == Activity::Undoing ? 1 : 0);
    else
        finish(action, m_removesAll ? std::vector<RegisteredCall>() : std::move(reverse), activity);
    if (!hold.isManagerAlive()) {
        hold.leaveToEventLoop();
        return;
    }
    const auto settleIfAlive = [self = m_self] {
        if (*self)
            (*self)->settleAndLog();
    };
    if (!m_isCalledDirectly && (m_removesAll || m_failure || m_viewsAreStale))
        QMetaObject::invokeMethod(m_stack.get(), settleIfAlive, Qt::QueuedConnection);
}

/// No exception goes through the stack, which may be about to run further actions.
void UndoManager::makeCalls(Action &action, const StackHold &hold)
{
    const auto isDead = [](const RegisteredCall &call) { return call.hasTarget && !call.target; };
    m_hasRun = !std::all_of(action.calls.cbegin(), action.calls.cend(), isDead);
    try {
        while (hold.isManagerAlive() && !action.calls.empty()) {
            if (!isDead(action.calls.back()))
                action.calls.back().call();
            action.calls.pop_back();
        }
    } catch (...) {
        if (hold.isManagerAlive())
            m_failure = std::current_exception();
        else
            logCurrentException(undoLog(), QStringLiteral("undoing"));
    }
}

void UndoManager::finish(Action &action, std::vector<RegisteredCall> reverse, Activity activity)
{
    action.calls = std::move(reverse);
    if (!action.calls.empty())
        return;
    action.setObsolete(true); // the stack takes it out
    if (activity == Activity::Redoing) {
        // The stack's index stays where it is, so that it neither tells its views nor sees that all is different now.
        m_viewsAreStale = true;
        if (m_hasRun)
            m_stack->resetClean();
    }
}

int UndoManager::indexOf(const Action &action) const
{
    int index = 0;
    while (index < m_stack->count() && m_stack->command(index) != &action)
        ++index;
    return index;
}

std::exception_ptr UndoManager::settle()
{
    if (m_activity != Activity::None)
        return nullptr;
    const std::exception_ptr failure = m_failure;
    const StackHold hold(*this);
    if (failure) {
        m_stack->setIndex(m_failedIndex); // runs nothing as long as the failure stands
        if (hold.isManagerAlive())
            m_stack->resetClean();
        if (hold.isManagerAlive())
            m_failure = nullptr;
    }
    if (hold.isManagerAlive() && std::exchange(m_removesAll, false))
        removeAllActions();
    if (hold.isManagerAlive() && std::exchange(m_viewsAreStale, false))
        tellViews();
    return failure;
}

void UndoManager::settleAndLog()
{
    if (const std::exception_ptr failure = settle())
        callGuarded(undoLog(), QStringLiteral("undoing"), [&] { std::rethrow_exception(failure); });
}

bool UndoManager::canUndo() const
{
    return !m_removesAll && m_stack->canUndo();
}

bool UndoManager::canRedo() const
{
    return !m_removesAll && m_stack->canRedo();
}

bool UndoManager::isClean() const
{
    return !m_isRemovingUnsaved && m_stack->isClean();
}

void UndoManager::setClean()
{
    const StackHold hold(*this);
    settleAndLog();
    if (hold.isManagerAlive())
        m_stack->setClean();
}

void UndoManager::removeAllActions()
{
    if (m_activity != Activity::None) {
        m_removesAll = true;
        return;
    }
    const StackHold hold(*this);
    settleAndLog();
    if (!hold.isManagerAlive())
        return;
    const bool wasClean = isClean() && m_group.empty();
    m_group.clear();
    // A stack counts as clean when it has been cleared.
    const bool wasRemovingUnsaved = std::exchange(m_isRemovingUnsaved, !wasClean);
    m_stack->clear();
    if (!wasClean && hold.isManagerAlive())
        m_stack->resetClean();
    if (hold.isManagerAlive())
        m_isRemovingUnsaved = wasRemovingUnsaved;
}

void UndoManager::tellViews()
{
    const StackHold hold(*this);
    QUndoStack &stack = *m_stack;
    Q_EMIT stack.indexChanged(stack.index());
    Q_EMIT stack.canUndoChanged(stack.canUndo());
    Q_EMIT stack.undoTextChanged(stack.undoText());
    Q_EMIT stack.canRedoChanged(stack.canRedo());
    Q_EMIT stack.redoTextChanged(stack.redoText());
}

UndoGroup::UndoGroup(UndoManager &manager, const QString &actionName)
    : m_manager(manager)
{
    m_manager.beginUndoGrouping();
    if (!actionName.isEmpty())
        m_manager.setActionName(actionName);
}

UndoGroup::~UndoGroup()
{
    // Whoever is told of the new action may throw, which a destructor must not.
    callGuarded(undoLog(), QStringLiteral("ending a group"), [this] { m_manager.endUndoGrouping(); });
}

} // namespace platform
