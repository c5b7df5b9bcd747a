#include "Platform/Interface/UndoManager.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/EventBoundary.h"

#include <QLoggingCategory>
#include <QScopedValueRollback>

#include <algorithm>
#include <memory>

namespace platform {

namespace {

Q_LOGGING_CATEGORY(undoLog, "platform.undo")

} // namespace

/// What is undone in one step. When it has run, it holds the calls that reverse it, and so back and forth.
class UndoManager::Action : public QUndoCommand
{
public:
    Action(UndoManager &manager, const QString &name, std::vector<RegisteredCall> registered)
        : QUndoCommand(name)
        , calls(std::move(registered))
        , m_manager(manager)
    { }

    void undo() override { m_manager.run(*this, Activity::Undoing); }
    void redo() override
    {
        // A stack redoes what is pushed; the host has done it already.
        if (!std::exchange(m_isNew, false))
            m_manager.run(*this, Activity::Redoing);
    }

    std::vector<RegisteredCall> calls; // the last one is made first

private:
    UndoManager &m_manager;
    bool m_isNew = true;
};

UndoManager::~UndoManager() = default;

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
    settleAndLog();
    m_group.push_back(std::move(call));
    if (m_groupingLevel == 0)
        pushGroup();
}

void UndoManager::pushGroup()
{
    const QString name = std::exchange(m_groupName, {});
    if (m_group.empty())
        return;
    // The stack owns it.
    m_stack.push(std::make_unique<Action>(*this, name, std::exchange(m_group, {})).release());
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
        const_cast<QUndoCommand *>(m_stack.command(m_stack.index() - 1))->setText(name);
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
    settleAndLog();
    {
        const QScopedValueRollback direct(m_isCalledDirectly, true);
        m_hasRun = false;
        while (!m_hasRun && (m_stack.*canStep)()) // past the actions whose targets have died
            (m_stack.*step)();
    }
    if (const std::exception_ptr failure = settle())
        std::rethrow_exception(failure);
}

void UndoManager::run(Action &action, Activity activity)
{
    // An action that a running one asks for; one that was removed, or comes behind a failed one, while a view goes
    // through several; the way back after a failure.
    if (m_activity != Activity::None || m_removesAll || m_failure)
        return;
    const auto isDead = [](const RegisteredCall &call) { return call.hasTarget && !call.target; };
    m_hasRun = !std::all_of(action.calls.cbegin(), action.calls.cend(), isDead);

    std::vector<RegisteredCall> reverse;
    m_activity = activity;
    m_reverse = &reverse;
    // No exception goes through the stack, which may be about to run further actions.
    try {
        while (!action.calls.empty()) {
            if (!isDead(action.calls.back()))
                action.calls.back().call();
            action.calls.pop_back();
        }
    } catch (...) {
        m_failure = std::current_exception();
        m_failedIndex = indexOf(action) + (activity == Activity::Undoing ? 1 : 0);
    }
    m_activity = Activity::None;
    m_reverse = nullptr;

    if (!m_failure)
        finish(action, m_removesAll ? std::vector<RegisteredCall>() : std::move(reverse), activity);
    if (!m_isCalledDirectly && (m_removesAll || m_failure || m_viewsAreStale))
        QMetaObject::invokeMethod(
            &m_stack, [this] { settleAndLog(); }, Qt::QueuedConnection);
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
            m_stack.resetClean();
    }
}

int UndoManager::indexOf(const Action &action) const
{
    int index = 0;
    while (index < m_stack.count() && m_stack.command(index) != &action)
        ++index;
    return index;
}

std::exception_ptr UndoManager::settle()
{
    if (m_activity != Activity::None)
        return nullptr;
    const std::exception_ptr failure = m_failure;
    if (failure) {
        m_stack.setIndex(m_failedIndex); // runs nothing as long as the failure stands
        m_stack.resetClean();
        m_failure = nullptr;
    }
    if (std::exchange(m_removesAll, false))
        removeAllActions();
    if (std::exchange(m_viewsAreStale, false))
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
    return !m_removesAll && m_stack.canUndo();
}

bool UndoManager::canRedo() const
{
    return !m_removesAll && m_stack.canRedo();
}

bool UndoManager::isClean() const
{
    return !m_isRemovingUnsaved && m_stack.isClean();
}

void UndoManager::setClean()
{
    settleAndLog();
    m_stack.setClean();
}

void UndoManager::removeAllActions()
{
    if (m_activity != Activity::None) {
        m_removesAll = true;
        return;
    }
    settleAndLog();
    const bool wasClean = isClean() && m_group.empty();
    m_group.clear();
    // A stack counts as clean when it has been cleared.
    const QScopedValueRollback removing(m_isRemovingUnsaved, !wasClean);
    m_stack.clear();
    if (!wasClean)
        m_stack.resetClean();
}

void UndoManager::tellViews()
{
    Q_EMIT m_stack.indexChanged(m_stack.index());
    Q_EMIT m_stack.canUndoChanged(m_stack.canUndo());
    Q_EMIT m_stack.undoTextChanged(m_stack.undoText());
    Q_EMIT m_stack.canRedoChanged(m_stack.canRedo());
    Q_EMIT m_stack.redoTextChanged(m_stack.redoText());
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
