#pragma once

#include <atomic>
#include <memory>

class ZRProcessServer;

/// The base class of everything that a `ZRProcessServer` processes in the background.
///
/// Shared by its owner and the server; the server lets a finished unit go on the main thread.
class ZRWorkUnit : public std::enable_shared_from_this<ZRWorkUnit>
{
public:
    ZRWorkUnit() = default;
    ZRWorkUnit(const ZRWorkUnit &) = delete;
    ZRWorkUnit &operator=(const ZRWorkUnit &) = delete;
    virtual ~ZRWorkUnit() = default;

    /// Whether the unit's result is no longer wanted. Polled by the worker. Any thread.
    bool cancelFlag() const { return m_cancelFlag.load(std::memory_order_relaxed); }
    /// Asks the worker to stop at its next poll. Nothing else happens: a queued unit is still processed and
    /// should then return at once. Any thread.
    void setCancelFlag(bool cancel) { m_cancelFlag.store(cancel, std::memory_order_relaxed); }

    /// Does the work, on one of the server's worker threads. What it throws is logged by the server and goes
    /// no further.
    virtual void processWithServer(ZRProcessServer &server) = 0;

private:
    std::atomic<bool> m_cancelFlag = false;
};
