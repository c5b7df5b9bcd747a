#include "Platform/Foundation/MainThreadQueue.h"

#include "Platform/Foundation/EventBoundary.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace platform {

namespace {

struct Call {
    const QLoggingCategory *category = nullptr;
    std::function<void()> function;
};

// Lives on the main thread. Each posted event makes one call, so that an event loop inside a call finds the
// events of the calls behind it.
class Waker : public QObject
{
public:
    bool event(QEvent *event) override;
};

enum class State { Closed, Open, Closing };

struct Queue {
    // With the lock held.
    void wake() { QCoreApplication::postEvent(waker.get(), new QEvent(QEvent::User)); }

    std::mutex mutex; // guards all below
    State state = State::Closed;
    std::deque<Call> calls;
    std::unique_ptr<Waker> waker;
    std::vector<void (*)()> closingRoutines;
};

Queue &queue()
{
    static Queue instance;
    return instance;
}

bool Waker::event(QEvent *event)
{
    Call call;
    {
        // The event itself was made under the lock by another thread: it is not looked at before.
        const std::lock_guard lock(queue().mutex);
        if (event->type() != QEvent::User || queue().calls.empty())
            return true;
        call = std::move(queue().calls.front());
        queue().calls.pop_front();
        if (!queue().calls.empty())
            queue().wake();
    }
    callGuarded(*call.category, QStringLiteral("exception in a call on the main thread"), call.function);
    return true;
}

void close()
{
    std::vector<void (*)()> routines;
    {
        const std::lock_guard lock(queue().mutex);
        queue().state = State::Closing;
        routines = queue().closingRoutines;
    }
    for (const auto routine : routines)
        routine();

    std::deque<Call> dropped;
    std::unique_ptr<Waker> waker;
    {
        const std::lock_guard lock(queue().mutex);
        queue().state = State::Closed;
        dropped.swap(queue().calls);
        waker.swap(queue().waker);
    }
    // Both are destroyed without the lock: what a call captured may post while it dies.
}

void open()
{
    {
        const std::lock_guard lock(queue().mutex);
        queue().state = State::Open;
        queue().waker = std::make_unique<Waker>();
    }
    qAddPostRoutine(close);
}

} // namespace

bool MainThreadQueue::isOpen()
{
    const std::lock_guard lock(queue().mutex);
    return queue().state == State::Open;
}

void MainThreadQueue::post(const QLoggingCategory &category, std::function<void()> call)
{
    const std::lock_guard lock(queue().mutex);
    if (queue().state == State::Closed)
        return;
    queue().calls.push_back({&category, std::move(call)});
    if (queue().calls.size() == 1)
        queue().wake();
}

void MainThreadQueue::addClosingRoutine(void (*routine)())
{
    const std::lock_guard lock(queue().mutex);
    queue().closingRoutines.push_back(routine);
}

} // namespace platform

static void openMainThreadQueue()
{
    platform::open();
}
Q_COREAPP_STARTUP_FUNCTION(openMainThreadQueue)
