#pragma once

#include "ZRFoundation/ZRProcessObserver.h"
#include "ZRFoundation/ZRWorkUnit.h"

#include <QPointer>
#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

/// Processes work units in the background, on worker threads of its own, and delivers their results on the
/// main thread.
///
///     class CountingUnit : public ZRWorkUnit
///     {
///         void processWithServer(ZRProcessServer &server) override
///         {
///             m_count = countSongs([this] { return cancelFlag(); });
///             server.performSelectorOnObject(m_owner, &Owner::unitDidCount, this);
///         }
///         std::weak_ptr<Owner> m_owner;
///         int m_count = 0;
///     };
///     ZRProcessServer::processServerWithName(QStringLiteral("song_counter"), 1).addWorkUnit(unit);
///
/// A server works while an application object exists. When that is destroyed, the cancel flags of all units are set,
/// the units that no worker took yet are let go unprocessed, the workers are waited for, and deliveries that are still
/// under way are dropped; observers are told of that (`processServerDidEnd`); all on the main thread. A unit that is
/// added without an application object, or while it is being destroyed, is let go at once, as `addWorkUnit` then tells.
/// A unit should therefore poll its cancel flag often, and must not wait for the main thread. A later application
/// object finds the servers working again.
///
/// Thread safety: every operation may be called on any thread.
class ZRProcessServer
{
public:
    /// The one server of the name. It is made on first use, with `count` worker threads, which are started
    /// when they are first needed; later calls answer the same server whatever the count. It lives as long as
    /// the process. Fails as an internal inconsistency when the count is below 1.
    static ZRProcessServer &processServerWithName(const QString &name, int count);

    ZRProcessServer(const ZRProcessServer &) = delete;
    ZRProcessServer &operator=(const ZRProcessServer &) = delete;
    ~ZRProcessServer();

    const QString &name() const { return m_name; }
    /// The number of worker threads.
    int count() const { return m_count; }

    /// Has an observer told of units that begin and end from now on, in the order in which observers were
    /// added. Not owned: it is told as long as it lives. Adding it again changes nothing.
    void addProcessObserver(const std::shared_ptr<ZRProcessObserver> &observer);

    /// Queues a unit. With one worker, units are processed in the order in which they were added, one after
    /// the other; with more, they are begun in that order. The server shares the unit until it is processed,
    /// and lets it go on the main thread after all that it had delivered. What the unit throws is logged.
    ///
    /// A server that cannot start all of its worker threads goes on with those that it has, and tries again with
    /// the next unit. When it has none at all, that is logged and the unit is let go.
    /// @return whether the unit was queued; if not, nothing will come of it
    bool addWorkUnit(std::shared_ptr<ZRWorkUnit> unit);

    /// Has `(receiver->*selector)(argument)` called on the main thread, from the event loop. Nothing is
    /// called when the receiver has died by then. Deliveries arrive in the order in which they were asked
    /// for. What the call throws is logged.
    ///
    /// A work unit passed as argument (`this`, in a unit) is shared until the call has returned; everything
    /// else is copied.
    /// @param receiver a weak or shared pointer, which is not kept alive, or a QPointer that was made on the
    ///        main thread; its object must be destroyed on the main thread
    template <class Receiver, class Selector, class Argument>
    void performSelectorOnObject(const Receiver &receiver, Selector selector, Argument argument)
    {
        deliver([receiver = watched(receiver), selector, argument, keptUnit = shared(argument)]() mutable {
            if (const auto alive = locked(receiver))
                std::invoke(selector, *alive, std::move(argument));
        });
    }

private:
    ZRProcessServer(const QString &name, int count);
    static void endAll();
    void end();
    void startWorkers();
    void work();
    std::shared_ptr<ZRWorkUnit> takeUnit();
    void process(std::shared_ptr<ZRWorkUnit> unit);
    template <class... Arguments>
    void tellObservers(void (ZRProcessObserver::*message)(ZRProcessServer &, Arguments &...), Arguments &...arguments);
    void deliver(std::function<void()> call);

    template <class T>
    static std::weak_ptr<T> watched(const std::weak_ptr<T> &receiver)
    {
        return receiver;
    }
    template <class T>
    static std::weak_ptr<T> watched(const std::shared_ptr<T> &receiver)
    {
        return receiver;
    }
    template <class T>
    static QPointer<T> watched(const QPointer<T> &receiver)
    {
        return receiver;
    }
    template <class T>
    static std::shared_ptr<T> locked(const std::weak_ptr<T> &receiver)
    {
        return receiver.lock();
    }
    template <class T>
    static T *locked(const QPointer<T> &receiver)
    {
        return receiver.data();
    }
    template <class Argument>
    static std::shared_ptr<const ZRWorkUnit> shared(const Argument &argument)
    {
        if constexpr (std::is_convertible_v<Argument, const ZRWorkUnit *>)
            return argument ? static_cast<const ZRWorkUnit *>(argument)->shared_from_this() : nullptr;
        else
            return nullptr;
    }

    const QString m_name;
    const int m_count;

    std::mutex m_mutex; // guards all below
    std::condition_variable m_unitsOrEnd;
    std::deque<std::shared_ptr<ZRWorkUnit>> m_units;
    std::vector<ZRWorkUnit *> m_unitsAtWork;
    std::vector<std::weak_ptr<ZRProcessObserver>> m_observers;
    std::vector<std::thread> m_workers;
    bool m_ending = false;
};
