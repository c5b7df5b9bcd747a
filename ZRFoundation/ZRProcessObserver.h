#pragma once

class ZRProcessServer;
class ZRWorkUnit;

/// Follows the work of a `ZRProcessServer`. All messages are optional and arrive on the main thread; those about a
/// unit in order with what the unit itself had delivered: first that it began, then its deliveries, then that it ended.
/// They tell what has happened: when one arrives, the worker may be further on.
class ZRProcessObserver
{
public:
    virtual ~ZRProcessObserver() = default;

    /// A worker took the unit from the queue.
    virtual void processServerDidBeginWorkUnit(ZRProcessServer &, ZRWorkUnit &) { }
    /// The unit's `processWithServer` returned or threw. The server lets the unit go after this.
    virtual void processServerDidEndWorkUnit(ZRProcessServer &, ZRWorkUnit &) { }
    /// The application object is being destroyed. The server's workers have ended, and nothing that was still under way
    /// will arrive: neither what units had delivered nor any message about them.
    virtual void processServerDidEnd(ZRProcessServer &) { }
};
