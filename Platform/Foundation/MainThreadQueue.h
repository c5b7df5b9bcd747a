#pragma once

#include <QLoggingCategory>

#include <functional>

namespace platform {

/// Calls that other threads hand to the main thread, which is the one that made the application object.
///
/// Each call is made from the event loop, in the order in which the calls were posted; an event loop that
/// runs inside a call makes the calls behind it. What is handed over crosses threads under a mutex of this
/// class, so that everything the poster did happens before the call. What a call throws is logged and goes no
/// further. A call and all that it captured is destroyed on the main thread, right after it was made.
///
/// The queue opens with the application object and closes with it. Closing first runs the closing routines,
/// then drops, unmade, what is still waiting. A later application object opens it again.
class MainThreadQueue
{
public:
    /// Whether an application object exists and is not being destroyed. Any thread.
    static bool isOpen();

    /// Queues a call. Any thread, the main thread included. While there is no application the call is dropped
    /// on the calling thread; closing routines, and threads that they wait for, may still post.
    /// @param category where an exception is logged
    static void post(const QLoggingCategory &category, std::function<void()> call);

    /// Has a function called on the main thread each time the queue closes, when `isOpen` is already false.
    /// For ending threads that post. It is kept for the life of the process. Any thread.
    static void addClosingRoutine(void (*routine)());
};

} // namespace platform
