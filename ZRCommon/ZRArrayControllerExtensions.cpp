#include "ZRCommon/ZRArrayControllerExtensions.h"

#include "Platform/Foundation/ValueObjects.h"

#include <algorithm>

using platform::ArrayController;
using platform::IndexSet;
using platform::ObjectPointer;

namespace {

/// What the selected-objects operations are handed: the index as a number, not the object.
QList<ObjectPointer> numberOf(qint64 index)
{
    return {std::make_shared<platform::Number>(index)};
}

} // namespace

bool ZRArrayControllerExtensions::selectionContainsObject(const ArrayController &controller,
                                                          const ObjectPointer &object)
{
    const qint64 index = controller.indexOfObject(object);
    return index != IndexSet::NotFound && controller.selectionIndexes().contains(index);
}

bool ZRArrayControllerExtensions::setSelectedObject(ArrayController &controller, const ObjectPointer &object)
{
    const qint64 index = controller.indexOfObject(object);
    return index != IndexSet::NotFound && controller.setSelectedObjects(numberOf(index));
}

void ZRArrayControllerExtensions::addSelectedObject(ArrayController &controller, const ObjectPointer &object)
{
    if (const qint64 index = controller.indexOfObject(object); index != IndexSet::NotFound)
        controller.addSelectedObjects(numberOf(index));
}

void ZRArrayControllerExtensions::removeSelectedObject(ArrayController &controller, const ObjectPointer &object)
{
    if (const qint64 index = controller.indexOfObject(object); index != IndexSet::NotFound)
        controller.removeSelectedObjects(numberOf(index));
}

void ZRArrayControllerExtensions::toggleSelectionOfObject(ArrayController &controller, const ObjectPointer &object)
{
    if (selectionContainsObject(controller, object))
        removeSelectedObject(controller, object);
    else
        addSelectedObject(controller, object);
}

void ZRArrayControllerExtensions::adjustSelection(ArrayController &controller, const ObjectPointer &object,
                                                  bool shiftDown, bool commandDown)
{
    const IndexSet selection = controller.selectionIndexes();
    const qint64 index = controller.indexOfObject(object);
    if (index == IndexSet::NotFound)
        return;
    if (commandDown)
        toggleSelectionOfObject(controller, object);
    else if (shiftDown && !selection.isEmpty())
        extendSelectionToObject(controller, object);
    else if (selection != IndexSet(index))
        controller.setSelectionIndex(index);
}

void ZRArrayControllerExtensions::extendSelectionToObject(ArrayController &controller, const ObjectPointer &object)
{
    const qint64 index = controller.indexOfObject(object);
    if (index == IndexSet::NotFound)
        return;
    const qint64 first = controller.selectionIndexes().firstIndex();
    controller.setSelectionIndexes(IndexSet({std::min(index, first), std::max(index, first)}));
}
