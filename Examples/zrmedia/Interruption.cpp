#include "Interruption.h"

#include <atomic>

namespace {

std::atomic<ZRWorkUnit *> unitToCancel = nullptr;
std::atomic<bool> isInterrupted = false;
static_assert(decltype(unitToCancel)::is_always_lock_free && decltype(isInterrupted)::is_always_lock_free);

} // namespace

void Interruption::cancels(const std::shared_ptr<ZRWorkUnit> &unit)
{
    // Never destroyed: the handler may run on any thread and at any time.
    [[maybe_unused]] static const auto *const kept = new std::shared_ptr<ZRWorkUnit>(unit);
    unitToCancel = unit.get();
}

bool Interruption::hasHappened()
{
    return isInterrupted;
}

bool Interruption::takeInSignalHandler()
{
    ZRWorkUnit *const unit = unitToCancel.exchange(nullptr);
    if (!unit)
        return false;
    isInterrupted = true;
    unit->setCancelFlag(true);
    return true;
}
