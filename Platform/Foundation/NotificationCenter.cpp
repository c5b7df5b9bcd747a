#include "Platform/Foundation/NotificationCenter.h"

#include "Platform/Foundation/AssertionHandler.h"

#include <QScopeGuard>
#include <QVarLengthArray>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <iterator>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace platform {

namespace {

struct Registration {
    quint64 serial = 0; // in the order of registering
    QString name;
    NotificationObject object;
    QObject *observer = nullptr; // only compared
    NotificationCenter::Handler handler;
    std::vector<QMetaObject::Connection> deaths; // of the observer and the sender
    bool ended = false;
    std::vector<std::thread::id> callers; // threads that are calling the handler, nested calls several times

    bool isCalledBy(std::thread::id thread) const
    {
        return std::find(callers.cbegin(), callers.cend(), thread) != callers.cend();
    }
    bool isCalledByOthersThan(std::thread::id thread) const
    {
        return std::any_of(callers.cbegin(), callers.cend(), [&](auto caller) { return caller != thread; });
    }
};

using RegistrationPointer = std::shared_ptr<Registration>;

bool isEarlier(const RegistrationPointer &a, const RegistrationPointer &b)
{
    return a->serial < b->serial;
}

} // namespace

/// The registrations of one centre. A registration's fields are guarded by the mutex here; name, object,
/// observer and handler do not change before it has ended.
class NotificationCenter::Registrations : public std::enable_shared_from_this<Registrations>
{
public:
    /// A registration that ends with its sender, and with its observer when there is one. Not yet told of
    /// anything.
    RegistrationPointer make(QObject *observer, Handler handler, const QString &name, const NotificationObject &object);
    void add(const RegistrationPointer &registration);
    void end(const RegistrationPointer &registration);
    void endIf(const std::function<bool(const Registration &)> &condition);
    void post(const QString &name, const NotificationObject &object);
    bool isEmpty() const { return m_count.load(std::memory_order_acquire) == 0; }

private:
    using Recipients = QVarLengthArray<RegistrationPointer, 8>;
    void endWhenDestroyed(QObject *object, const RegistrationPointer &registration);
    Recipients recipients(const QString &name, const NotificationObject &object);
    void unlist(const RegistrationPointer &registration);
    void call(Registration &registration, const Notification &notification);

    std::atomic<qsizetype> m_count = 0; // lets a post see without the lock that there is nobody
    std::mutex m_mutex; // guards all below
    std::condition_variable m_callReturned;
    quint64 m_nextSerial = 0;
    std::map<QString, std::vector<RegistrationPointer>> m_byName; // under the empty name: those for any name
};

RegistrationPointer NotificationCenter::Registrations::make(QObject *observer, Handler handler, const QString &name,
                                                            const NotificationObject &object)
{
    ZR_ASSERT_PARAMETER(nullptr, handler);
    const auto registration = std::make_shared<Registration>();
    registration->name = name;
    registration->object = object;
    registration->observer = observer;
    registration->handler = std::move(handler);
    for (QObject *watched : {observer, object.m_qObject}) {
        if (watched)
            endWhenDestroyed(watched, registration);
    }
    return registration;
}

void NotificationCenter::Registrations::add(const RegistrationPointer &registration)
{
    const std::lock_guard lock(m_mutex);
    registration->serial = m_nextSerial++;
    m_byName[registration->name].push_back(registration);
    ++m_count;
}

void NotificationCenter::Registrations::unlist(const RegistrationPointer &registration)
{
    const auto list = m_byName.find(registration->name);
    std::erase(list->second, registration);
    if (list->second.empty())
        m_byName.erase(list);
    --m_count;
}

void NotificationCenter::Registrations::end(const RegistrationPointer &registration)
{
    Handler handler; // destroyed without the lock
    std::vector<QMetaObject::Connection> deaths;
    {
        const auto self = std::this_thread::get_id();
        std::unique_lock lock(m_mutex);
        if (!std::exchange(registration->ended, true))
            unlist(registration);
        deaths.swap(registration->deaths);
        m_callReturned.wait(lock, [&] { return !registration->isCalledByOthersThan(self); });
        if (!registration->isCalledBy(self))
            handler.swap(registration->handler);
    }
    for (const QMetaObject::Connection &death : deaths)
        QObject::disconnect(death);
}

void NotificationCenter::Registrations::endIf(const std::function<bool(const Registration &)> &condition)
{
    std::vector<RegistrationPointer> ending;
    {
        const std::lock_guard lock(m_mutex);
        for (const auto &[name, list] : m_byName)
            std::copy_if(list.cbegin(), list.cend(), std::back_inserter(ending),
                         [&](const RegistrationPointer &registration) { return condition(*registration); });
    }
    for (const RegistrationPointer &registration : ending)
        end(registration);
}

void NotificationCenter::Registrations::endWhenDestroyed(QObject *object, const RegistrationPointer &registration)
{
    const auto death =
        QObject::connect(object, &QObject::destroyed, [all = weak_from_this(), dying = std::weak_ptr(registration)] {
            const auto registrations = all.lock();
            const RegistrationPointer known = dying.lock();
            if (registrations && known)
                registrations->end(known);
        });
    registration->deaths.push_back(death);
}

NotificationCenter::Registrations::Recipients
NotificationCenter::Registrations::recipients(const QString &name, const NotificationObject &object)
{
    Recipients result;
    const auto appendFrom = [&](const QString &listName) {
        const auto list = m_byName.find(listName);
        if (list == m_byName.cend())
            return;
        for (const RegistrationPointer &registration : list->second) {
            if (registration->object.isNothing() || registration->object == object)
                result.append(registration);
        }
    };
    const std::lock_guard lock(m_mutex);
    appendFrom(name);
    const qsizetype named = result.size();
    if (!name.isEmpty())
        appendFrom(QString());
    std::inplace_merge(result.begin(), result.begin() + named, result.end(), isEarlier);
    return result;
}

void NotificationCenter::Registrations::post(const QString &name, const NotificationObject &object)
{
    const Recipients all = recipients(name, object);
    if (all.isEmpty())
        return;
    const Notification notification(name, object);
    for (const RegistrationPointer &registration : all)
        call(*registration, notification);
}

void NotificationCenter::Registrations::call(Registration &registration, const Notification &notification)
{
    {
        const std::lock_guard lock(m_mutex);
        if (registration.ended)
            return;
        registration.callers.push_back(std::this_thread::get_id());
    }
    const auto returned = qScopeGuard([&] {
        const std::lock_guard lock(m_mutex);
        const auto self = std::this_thread::get_id();
        registration.callers.erase(std::find(registration.callers.cbegin(), registration.callers.cend(), self));
        m_callReturned.notify_all();
    });
    registration.handler(notification);
}

NotificationCenter &NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

NotificationCenter &NotificationCenter::workspaceCenter()
{
    static NotificationCenter center;
    return center;
}

NotificationCenter::NotificationCenter()
    : m_registrations(std::make_shared<Registrations>())
{ }

NotificationCenter::~NotificationCenter()
{
    m_registrations->endIf([](const Registration &) { return true; });
}

void NotificationCenter::addObserver(QObject *observer, Handler handler, const QString &name,
                                     const NotificationObject &object)
{
    ZR_ASSERT_PARAMETER(this, observer);
    m_registrations->add(m_registrations->make(observer, std::move(handler), name, object));
}

Observation NotificationCenter::addObserver(Handler handler, const QString &name, const NotificationObject &object)
{
    const RegistrationPointer registration = m_registrations->make(nullptr, std::move(handler), name, object);
    m_registrations->add(registration);
    return Observation([all = std::weak_ptr(m_registrations), registration] {
        if (const auto registrations = all.lock())
            registrations->end(registration);
    });
}

void NotificationCenter::removeObserver(QObject *observer)
{
    removeObserver(observer, {});
}

void NotificationCenter::removeObserver(QObject *observer, const QString &name, const NotificationObject &object)
{
    m_registrations->endIf([&](const Registration &registration) {
        return registration.observer == observer && (name.isEmpty() || registration.name == name)
            && (object.isNothing() || registration.object == object);
    });
}

void NotificationCenter::postNotification(const QString &name, const NotificationObject &object)
{
    if (m_registrations->isEmpty())
        return;
    const auto registrations = m_registrations; // an observer may destroy the centre
    registrations->post(name, object);
}

} // namespace platform
