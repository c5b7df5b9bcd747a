#pragma once

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/Observation.h"

#include <QScopeGuard>

#include <algorithm>
#include <concepts>
#include <functional>
#include <memory>
#include <vector>

/// An ordered list of observers, to each of which one message at a time is sent. `Observer` is the class
/// that declares the messages.
///
///     ZRObserverList<DocumentObserver> m_observer_list;
///     ...
///     m_observer_list.makeObjectsPerformSelector(&DocumentObserver::documentDidChange, this);
///
/// Observers are not owned. One that dies has to be removed before: by `removeObserver`, or by the end of
/// the `platform::Observation` that `observe` returns.
///
/// While a message is being delivered:
/// - An observer that is removed is not told any more, whoever removed it; it may be destroyed at once.
/// - An observer that is added is told of the next message first, and so is one that is removed and added
///   again.
/// - An observer may have another message delivered. That one reaches all observers that are in the list by
///   then, before the outer delivery goes on.
/// - An observer that throws ends the delivery: the observers behind it are not told, and the exception
///   leaves `makeObjectsPerformSelector`. The list stays usable.
/// - The list itself may be destroyed. The delivery ends; nobody else is told.
///
/// Cost: a delivery is one walk over an array of pointers; adding and removing are linear in the number of
/// observers. Thread safety: a list belongs to one thread.
template <class Observer>
class ZRObserverList
{
public:
    ZRObserverList() = default;
    ZRObserverList(const ZRObserverList &) = delete;
    ZRObserverList &operator=(const ZRObserverList &) = delete;
    ~ZRObserverList() { m_state->clear(); }

    /// Adds an observer behind the others. One that is in the list already stays where it is, and is told
    /// once.
    void addObserver(Observer *observer)
    {
        ZR_ASSERT_PARAMETER(this, observer);
        m_state->add(observer);
    }
    /// Takes an observer out of the list. One that is not in it is left alone.
    void removeObserver(Observer *observer) { m_state->remove(observer); }

    /// Adds an observer for as long as the returned observation lives, which may be longer than the list. For
    /// one that is in the list already the observation is empty: it stays in the list as it was added first.
    platform::Observation observe(Observer *observer)
    {
        ZR_ASSERT_PARAMETER(this, observer);
        if (!m_state->add(observer))
            return {};
        return platform::Observation([state = std::weak_ptr(m_state), observer] {
            if (const auto alive = state.lock())
                alive->remove(observer);
        });
    }

    /// Calls `(observer->*selector)(arguments...)` for each observer in order. The arguments are handed on as
    /// lvalues, since each observer gets the same ones.
    template <class Selector, class... Arguments>
    requires std::invocable<Selector, Observer &, Arguments &...>
    void makeObjectsPerformSelector(Selector selector, Arguments &&...arguments)
    {
        const std::shared_ptr<State> state = m_state; // outlives the list if that is destroyed meanwhile
        ++state->deliveries;
        const auto delivered = qScopeGuard([&] { state->endDelivery(); });
        const size_t count = state->observers.size();
        for (size_t i = 0; i < count; ++i) {
            if (Observer *observer = state->observers[i])
                std::invoke(selector, *observer, arguments...);
        }
    }

private:
    struct State {
        bool add(Observer *observer)
        {
            if (std::find(observers.cbegin(), observers.cend(), observer) != observers.cend())
                return false;
            observers.push_back(observer);
            return true;
        }
        void remove(Observer *observer)
        {
            const auto found = std::find(observers.begin(), observers.end(), observer);
            if (found == observers.end())
                return;
            if (deliveries == 0)
                observers.erase(found);
            else
                *found = nullptr;
        }
        void clear() { std::fill(observers.begin(), observers.end(), nullptr); }
        void endDelivery()
        {
            if (--deliveries == 0)
                std::erase(observers, nullptr);
        }

        std::vector<Observer *> observers; // null: removed during a delivery; taken out when the outermost one ends
        int deliveries = 0; // within one another
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};
