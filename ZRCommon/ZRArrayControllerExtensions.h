#pragma once

#include "Platform/Interface/ArrayController.h"

/// Selecting objects of a list controller by clicks, in the words of `ZRSelectionItemSet`, for lists that a host keeps
/// in such a controller.
///
/// Each operation looks for the object's index in the controller's *content*; where there is no equal object it does
/// nothing. Linear in the content. Main thread.
///
/// Mind two peculiarities, both deliberate:
/// - `setSelectedObject`, `addSelectedObject`, `removeSelectedObject` and `toggleSelectionOfObject` hand the controller
///   the object's *index* as a `platform::Number`, not the object. They change the selection only where the
///   controller's objects are such numbers. So does a click with the command key.
/// - `extendSelectionToObject` takes the larger index as the length of the range.
namespace ZRArrayControllerExtensions {

/// Whether the object's index is selected.
bool selectionContainsObject(const platform::ArrayController &controller, const platform::ObjectPointer &object);

/// Selects the number of the object's index alone.
/// @return whether the selection changed: what `ArrayController::setSelectedObjects` answers. False when there is no
/// such object.
bool setSelectedObject(platform::ArrayController &controller, const platform::ObjectPointer &object);
/// Selects the number of the object's index in addition.
void addSelectedObject(platform::ArrayController &controller, const platform::ObjectPointer &object);
/// Deselects the number of the object's index.
void removeSelectedObject(platform::ArrayController &controller, const platform::ObjectPointer &object);
/// `removeSelectedObject` when the object's index is selected, otherwise `addSelectedObject`.
void toggleSelectionOfObject(platform::ArrayController &controller, const platform::ObjectPointer &object);

/// What a click on an object does: with the command key `toggleSelectionOfObject`; else with the shift key, when
/// something is selected, `extendSelectionToObject`; else the object's index is selected alone.
void adjustSelection(platform::ArrayController &controller, const platform::ObjectPointer &object, bool shiftDown,
                     bool commandDown);
/// Selects, in place of all others, the indexes from the lesser of the object's index and the first selected one on, as
/// many as the larger of both says: with 2 selected and the object at 5 these are 2 to 6, with 0 selected 0 to 4, and
/// with 0 selected and the object at 0 none. With nothing selected the first selected index counts as
/// `IndexSet::NotFound`. The range may reach beyond the objects.
void extendSelectionToObject(platform::ArrayController &controller, const platform::ObjectPointer &object);

} // namespace ZRArrayControllerExtensions
