#pragma once

#include <functional>
#include <utility>

namespace platform {

/// A registration that ends by itself: as long as the observation lives, the observer is told. Made by the
/// registering operations of observer lists and notification centres. May outlive what it was made by.
///
/// Not thread-safe itself: it is moved and destroyed by one thread at a time.
class [[nodiscard]] Observation
{
public:
    /// Observes nothing.
    Observation() = default;
    /// @param end ends the registration; called once
    explicit Observation(std::function<void()> end)
        : m_end(std::move(end))
    { }
    Observation(Observation &&other) noexcept
        : m_end(std::exchange(other.m_end, nullptr))
    { }
    Observation &operator=(Observation &&other) noexcept
    {
        Observation previous(std::exchange(m_end, std::exchange(other.m_end, nullptr)));
        return *this;
    }
    ~Observation() { end(); }

    /// Ends the registration now. Doing so again does nothing.
    void end()
    {
        if (const auto end = std::exchange(m_end, nullptr))
            end();
    }

private:
    std::function<void()> m_end;
};

} // namespace platform
