#pragma once

#include "Platform/Foundation/ObjectSet.h"

/// Questions about the classes of a set's members. An object of a subclass counts as one of the class; a null
/// pointer is of no class. Any thread. Costs are linear in the set.
namespace Typing {

/// Whether every member is of the class. Not so for the empty set.
bool containsOnlyObjectsOfType(const platform::ObjectSet &set, const platform::ObjectClass &type);

/// Whether some member is of the class.
bool containsAtLeastOneObjectOfType(const platform::ObjectSet &set, const platform::ObjectClass &type);

/// The members that are of the class, in a set of their own.
platform::ObjectSet subsetWithObjectsOfType(const platform::ObjectSet &set, const platform::ObjectClass &type);

} // namespace Typing
