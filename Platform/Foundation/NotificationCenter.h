#pragma once

#include "Platform/Foundation/Observation.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace platform {

/// What a notification is about: nothing, an object by its identity, or a value such as a path. Also the
/// filter of a registration, where nothing means anything.
///
/// Two objects are the same when they are the same object in memory, whatever base class they are pointed to
/// by; except that a QObject must be pointed to as one, and an object of a class that is neither a QObject
/// nor polymorphic by the same type. Two values are the same when they are equal as QVariants. Nothing is the
/// same as nothing only.
class NotificationObject
{
public:
    /// Nothing.
    NotificationObject(std::nullptr_t = nullptr) { }
    /// The object by identity; nothing for a null pointer. Not owned. A QObject is not looked at, so that a
    /// filter can be removed after its sender has died; another object must live.
    template <class T>
    requires(std::is_class_v<T> && !std::is_const_v<T>) NotificationObject(T *object)
        : m_type(&typeid(T))
        , m_pointer(object)
    {
        if constexpr (std::is_convertible_v<T *, QObject *>)
            m_identity = m_qObject = object;
        else if constexpr (std::is_polymorphic_v<T>)
            m_identity = dynamic_cast<void *>(object);
        else
            m_identity = object;
    }
    /// The value, of any type that a QVariant can be made from.
    template <class T>
    requires(!std::is_pointer_v<std::decay_t<
                 T>> && !std::is_same_v<std::decay_t<T>, NotificationObject> && std::is_constructible_v<QVariant, T>)
        NotificationObject(T &&value)
        : m_value(std::forward<T>(value))
    { }

    bool isNothing() const { return !m_identity && !m_value.isValid(); }

    friend bool operator==(const NotificationObject &a, const NotificationObject &b)
    {
        return a.m_identity == b.m_identity && a.m_value == b.m_value;
    }

private:
    friend class Notification;
    friend class NotificationCenter;
    const std::type_info *m_type = nullptr; // of what m_pointer points to
    void *m_pointer = nullptr; // as given
    void *m_identity = nullptr; // of the whole object
    QObject *m_qObject = nullptr;
    QVariant m_value;
};

/// What an observer is handed.
class Notification
{
public:
    /// @param object must still live
    Notification(const QString &name, const NotificationObject &object)
        : m_name(name)
        , m_object(object)
        , m_qObject(object.m_qObject)
    { }

    const QString &name() const { return m_name; }

    /// The object that the notification is about. Null when it is about none or about a value, when it is of
    /// another type, or when it is a QObject that has died since the notification was posted. A QObject is
    /// found as any of its classes, another object only as the type that it was posted as.
    template <class T>
    T *object() const
    {
        if constexpr (std::is_convertible_v<T *, QObject *>) {
            return dynamic_cast<T *>(m_qObject.data());
        } else {
            const bool died = m_object.m_qObject && !m_qObject;
            return !died && m_object.m_type && *m_object.m_type == typeid(T) ? static_cast<T *>(m_object.m_pointer)
                                                                             : nullptr;
        }
    }
    /// Whether the notification is about this object or value.
    bool isAbout(const NotificationObject &object) const
    {
        return m_object == object && (!m_object.m_qObject || m_qObject);
    }
    /// The value that the notification is about; invalid when it is about nothing or an object.
    const QVariant &value() const { return m_object.m_value; }

private:
    QString m_name;
    NotificationObject m_object;
    QPointer<QObject> m_qObject;
};

/// Tells everybody who registered for it that something happened.
///
/// `postNotification` is synchronous: it calls the observers on the posting thread, in the order in which
/// they registered, and returns when all have been told. A registration may ask for one name, for one sender
/// (the notification's object), for both or for neither.
///
/// While a notification is delivered:
/// - A registration that ends is not told any more, by this notification either.
/// - A registration that is added is told of the next notification first.
/// - An observer may post: the nested notification is delivered before the outer one goes on.
/// - An observer that throws ends the delivery: the observers behind it are not told, and the exception
///   leaves `postNotification`.
/// - An observer may destroy itself, other observers, and the sender. The remaining observers that asked for
///   any sender are still told; `Notification::object` is null for them when the sender was a QObject. A
///   sender of another kind must not be used by observers behind one that destroys it.
/// - The centre itself may be destroyed; the delivery ends.
///
/// A registration ends with its observer: by itself when that is a QObject, with its `Observation`
/// otherwise. It also ends with the sender that it asks for when that is a QObject, so that another object
/// at the same address is not mistaken for it; the death of another sender cannot be seen, and its observers
/// have to end their registrations. A QObject observer that is registered through one of its member
/// functions is told only while it is still of that class, not while its base classes are being destroyed.
///
/// Thread safety: all operations may be called on any thread. An observer is called on whatever thread
/// posts, which for the default centre is by custom the main thread, and for the workspace's may be any.
/// When the end of a registration returns (also in the destruction of a QObject observer), no other thread
/// is calling it any more: the end waits for such a call to return, and so must not be asked for while
/// holding what that call waits for. An observer that is notified by other threads should end its
/// registrations first thing in its destructor.
///
/// Cost: posting a name that nobody asked for is one lock and two look-ups by name, or less while nobody is
/// registered at all.
class NotificationCenter
{
public:
    using Handler = std::function<void(const Notification &)>;

    /// The centre for what happens in the application.
    static NotificationCenter &defaultCenter();
    /// The centre for what happens outside of it, such as changes of files.
    static NotificationCenter &workspaceCenter();

    NotificationCenter();
    NotificationCenter(const NotificationCenter &) = delete;
    NotificationCenter &operator=(const NotificationCenter &) = delete;
    /// Ends all registrations.
    ~NotificationCenter();

    /// Registers a member function of a QObject. Registering the same twice means to be told twice.
    /// @param name of the notifications to be told of; any when empty
    /// @param object that the notifications must be about; anything when nothing
    template <std::derived_from<QObject> Observer, class Base>
    requires std::derived_from<Observer, Base>
    void addObserver(Observer *observer, void (Base::*selector)(const Notification &), const QString &name = {},
                     const NotificationObject &object = {})
    {
        QObject *const watched = observer;
        addObserver(
            watched,
            [watched, selector](const Notification &notification) {
                if (auto *const alive = dynamic_cast<Observer *>(watched))
                    (alive->*selector)(notification);
            },
            name, object);
    }
    /// Registers a function that is called as long as the QObject lives.
    void addObserver(QObject *observer, Handler handler, const QString &name = {},
                     const NotificationObject &object = {});
    /// Registers a function that is called as long as the returned observation lives.
    Observation addObserver(Handler handler, const QString &name = {}, const NotificationObject &object = {});

    /// Ends all registrations of the observer.
    void removeObserver(QObject *observer);
    /// Ends the observer's registrations that were made with this name (any name when empty) and this object
    /// (any when nothing).
    void removeObserver(QObject *observer, const QString &name, const NotificationObject &object = {});

    /// Tells the observers.
    void postNotification(const QString &name, const NotificationObject &object = {});

private:
    class Registrations;
    std::shared_ptr<Registrations> m_registrations; // shared by running deliveries and by observations
};

} // namespace platform
