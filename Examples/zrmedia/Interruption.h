#pragma once

#include "ZRFoundation/ZRWorkUnit.h"

#include <memory>

/// Ctrl-C, for work that should end in good order. While nothing is to be cancelled, an interrupt ends the program
/// where it is.
namespace Interruption {

/// From now on the first interrupt sets the cancel flag of the unit, which is kept to the end of the program, and only
/// one more ends the program. Once for a program, on the main thread.
void cancels(const std::shared_ptr<ZRWorkUnit> &unit);
/// Whether an interrupt came and the program was not ended.
bool hasHappened();
/// Cancels what is to be cancelled. For the signal handler.
/// @return false when the program should be ended
bool takeInSignalHandler();

} // namespace Interruption
