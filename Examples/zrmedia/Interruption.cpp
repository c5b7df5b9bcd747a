#include "Interruption.h"

#include <atomic>

namespace {

// What it points to is never destroyed: the handler may run on any thread and at any time.
std::atomic<const std::shared_ptr<ZRWorkUnit> *> unitToCancel = nullptr;
std::atomic<bool> isInterrupted = false;
static_assert(decltype(unitToCancel)::is_always_lock_free && decltype(isInterrupted)::is_always_lock_free);

} // namespace

void Interruption::cancels(const std::shared_ptr<ZRWorkUnit> &unit)
{
    unitToCancel = new std::shared_ptr<ZRWorkUnit>(unit);
}

bool Interruption::hasHappened()
{
    return isInterrupted;
}

bool Interruption::takeInSignalHandler()
{
    const std::shared_ptr<ZRWorkUnit> *const unit = unitToCancel;
    if (!unit || isInterrupted.exchange(true))
        return false;
    (*unit)->setCancelFlag(true);
    return true;
}
