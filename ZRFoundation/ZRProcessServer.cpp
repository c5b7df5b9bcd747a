#include "ZRFoundation/ZRProcessServer.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/EventBoundary.h"
#include "Platform/Foundation/MainThreadQueue.h"
#include "Platform/Foundation/TypeName.h"

#include <algorithm>
#include <map>
#include <typeinfo>

Q_LOGGING_CATEGORY(processServerLog, "zr.processserver")

namespace {

struct Servers {
    std::mutex mutex;
    std::map<QString, std::unique_ptr<ZRProcessServer>> byName;
};

Servers &servers()
{
    static Servers instance;
    return instance;
}

} // namespace

ZRProcessServer &ZRProcessServer::processServerWithName(const QString &name, int count)
{
    ZR_ASSERT_PARAMETER(nullptr, count >= 1);
    [[maybe_unused]] static const bool endsWithApplication =
        (platform::MainThreadQueue::addClosingRoutine(endAll), true);

    const std::lock_guard lock(servers().mutex);
    std::unique_ptr<ZRProcessServer> &server = servers().byName[name];
    if (!server)
        server.reset(new ZRProcessServer(name, count)); // the constructor is private
    return *server;
}

ZRProcessServer::ZRProcessServer(const QString &name, int count)
    : m_name(name)
    , m_count(count)
{ }

ZRProcessServer::~ZRProcessServer()
{
    // Matters for a process that exits while its application object still exists.
    end();
}

void ZRProcessServer::addProcessObserver(const std::shared_ptr<ZRProcessObserver> &observer)
{
    ZR_ASSERT_PARAMETER(this, observer);
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_observers, [](const auto &known) { return known.expired(); });
    const auto isObserver = [&](const auto &known) {
        return !known.owner_before(observer) && !observer.owner_before(known);
    };
    if (std::none_of(m_observers.cbegin(), m_observers.cend(), isObserver))
        m_observers.push_back(observer);
}

bool ZRProcessServer::addWorkUnit(std::shared_ptr<ZRWorkUnit> unit)
{
    ZR_ASSERT_PARAMETER(this, unit);
    bool isQueued = false;
    platform::callGuarded(processServerLog(), QStringLiteral("adding to server \"%1\"").arg(m_name), [&] {
        const std::lock_guard lock(m_mutex);
        // Asked under the lock: `end` takes it after the queue has stopped being open, and so finds the unit.
        if (!platform::MainThreadQueue::isOpen())
            return;
        startWorkers();
        m_units.push_back(std::move(unit));
        m_unitsOrEnd.notify_one();
        isQueued = true;
    });
    return isQueued;
}

// With the lock held. Throws when there is no worker at all.
void ZRProcessServer::startWorkers()
{
    try {
        while (m_workers.size() < size_t(m_count))
            m_workers.emplace_back(&ZRProcessServer::work, this);
    } catch (...) {
        if (m_workers.empty())
            throw;
    }
}

void ZRProcessServer::work()
{
    while (std::shared_ptr<ZRWorkUnit> unit = takeUnit())
        process(std::move(unit));
}

// Waits for the next unit; null at the end.
std::shared_ptr<ZRWorkUnit> ZRProcessServer::takeUnit()
{
    std::unique_lock lock(m_mutex);
    m_unitsOrEnd.wait(lock, [this] { return m_ending || !m_units.empty(); });
    if (m_ending)
        return nullptr;
    std::shared_ptr<ZRWorkUnit> unit = std::move(m_units.front());
    m_units.pop_front();
    m_unitsAtWork.push_back(unit.get());
    return unit;
}

void ZRProcessServer::process(std::shared_ptr<ZRWorkUnit> unit)
{
    deliver([this, unit] { tellObservers(&ZRProcessObserver::processServerDidBeginWorkUnit, *unit); });
    const ZRWorkUnit &worked = *unit;
    const QString what =
        QStringLiteral("work unit %1 of server \"%2\"").arg(platform::typeName(typeid(worked)), m_name);
    platform::callGuarded(processServerLog(), what, [&] { unit->processWithServer(*this); });
    {
        const std::lock_guard lock(m_mutex);
        m_unitsAtWork.erase(std::find(m_unitsAtWork.cbegin(), m_unitsAtWork.cend(), unit.get()));
    }
    deliver([this, unit = std::move(unit)] { tellObservers(&ZRProcessObserver::processServerDidEndWorkUnit, *unit); });
}

template <class... Arguments>
void ZRProcessServer::tellObservers(void (ZRProcessObserver::*message)(ZRProcessServer &, Arguments &...),
                                    Arguments &...arguments)
{
    std::vector<std::weak_ptr<ZRProcessObserver>> observers;
    {
        const std::lock_guard lock(m_mutex);
        observers = m_observers;
    }
    for (const auto &observer : observers) {
        if (const auto alive = observer.lock()) {
            platform::callGuarded(processServerLog(), QStringLiteral("observer of server \"%1\"").arg(m_name),
                                  [&] { ((*alive).*message)(*this, arguments...); });
        }
    }
}

void ZRProcessServer::deliver(std::function<void()> call)
{
    platform::MainThreadQueue::post(processServerLog(), std::move(call));
}

void ZRProcessServer::endAll()
{
    std::vector<ZRProcessServer *> all;
    {
        const std::lock_guard lock(servers().mutex);
        for (const auto &[name, server] : servers().byName)
            all.push_back(server.get());
    }
    for (ZRProcessServer *server : all) {
        server->end();
        server->tellObservers(&ZRProcessObserver::processServerDidEnd);
    }
}

void ZRProcessServer::end()
{
    std::deque<std::shared_ptr<ZRWorkUnit>> unprocessed;
    std::vector<std::thread> workers;
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
        unprocessed.swap(m_units);
        workers.swap(m_workers);
        for (const auto &unit : unprocessed)
            unit->setCancelFlag(true);
        for (ZRWorkUnit *unit : m_unitsAtWork)
            unit->setCancelFlag(true);
    }
    m_unitsOrEnd.notify_all();
    for (std::thread &worker : workers)
        worker.join();
    unprocessed.clear();
    const std::lock_guard lock(m_mutex);
    m_ending = false;
}
