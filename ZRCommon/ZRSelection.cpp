#include "ZRCommon/ZRSelection.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/NotificationCenter.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int capacityHint = 8;

} // namespace

ZRSelection::ZRSelection()
{
    m_selection_item_sets.reserve(capacityHint);
}

ZRSelection::ZRSelection(const ZRSelection &other)
    : ZRSelection()
{
    for (const auto &set : other.m_selection_item_sets)
        m_selection_item_sets.push_back(set->clone());
}

ZRSelection::~ZRSelection() = default;

std::unique_ptr<ZRSelection> ZRSelection::clone() const
{
    return std::make_unique<ZRSelection>(*this);
}

void ZRSelection::setDocument(ZRDocument *document)
{
    m_document = document;
    for (const auto &set : m_selection_item_sets)
        set->setDocument(document, this);
}

// Which item set answers

const ZRSelectionItemSet &ZRSelection::itemSetForClass(const platform::ObjectClass *itemClass) const
{
    for (const auto &set : m_selection_item_sets) {
        const platform::ObjectClass *const ofSet = set->itemClass();
        if (itemClass && ofSet && itemClass->isSubclassOfClass(*ofSet))
            return *set;
    }
    platform::raiseInvalidParameter(ZR_FAILURE_SOURCE, this, "NO");
}

const ZRSelectionItemSet &ZRSelection::selectionItemSetForClass(const platform::ObjectClass &itemClass) const
{
    return itemSetForClass(&itemClass);
}

ZRSelectionItemSet &ZRSelection::selectionItemSetForClass(const platform::ObjectClass &itemClass)
{
    return const_cast<ZRSelectionItemSet &>(itemSetForClass(&itemClass)); // owned by this selection
}

const ZRSelectionItemSet &ZRSelection::itemSetForItem(const platform::ObjectPointer &item) const
{
    return itemSetForClass(item ? &item->objectClass() : nullptr);
}

ZRSelectionItemSet &ZRSelection::itemSetForItem(const platform::ObjectPointer &item)
{
    return const_cast<ZRSelectionItemSet &>(std::as_const(*this).itemSetForItem(item));
}

// Queries

bool ZRSelection::containsItem(const platform::ObjectPointer &item) const
{
    return itemSetForItem(item).containsItem(item);
}

platform::ObjectPointer ZRSelection::firstItemOfClass(const platform::ObjectClass &itemClass) const
{
    return selectionItemSetForClass(itemClass).firstItem();
}

platform::ObjectSet ZRSelection::selectedItemsOfClass(const platform::ObjectClass &itemClass) const
{
    return selectionItemSetForClass(itemClass).selectedItems();
}

quint32 ZRSelection::selectedItemCountOfClass(const platform::ObjectClass &itemClass) const
{
    return selectionItemSetForClass(itemClass).selectedItemCount();
}

platform::IndexRange ZRSelection::selectedRangeOfClass(const platform::ObjectClass &itemClass) const
{
    return selectionItemSetForClass(itemClass).selectedItemRange();
}

QList<platform::ObjectPointer> ZRSelection::sortedItemsOfClass(const platform::ObjectClass &itemClass) const
{
    return selectionItemSetForClass(itemClass).sortedItems();
}

bool ZRSelection::isEqual(const ZRSelection &) const
{
    return std::all_of(m_selection_item_sets.cbegin(), m_selection_item_sets.cend(),
                       [this](const auto &set) { return set->isEqual(itemSetForClass(set->itemClass())); });
}

// Changes

void ZRSelection::addItem(const platform::ObjectPointer &item)
{
    performChanges([&] { itemSetForItem(item).addItem(item); });
}

void ZRSelection::removeItem(const platform::ObjectPointer &item)
{
    performChanges([&] { itemSetForItem(item).removeItem(item); });
}

void ZRSelection::toggleSelectionOfItem(const platform::ObjectPointer &item)
{
    performChanges([&] { itemSetForItem(item).toggleSelectionOfItem(item); });
}

void ZRSelection::setSingleSelectedItem(const platform::ObjectPointer &item)
{
    performChanges([&] { itemSetForItem(item).setSingleSelectedItem(item); });
}

void ZRSelection::extendSelectionToItem(const platform::ObjectPointer &item)
{
    performChanges([&] { itemSetForItem(item).extendSelectionToItem(item); });
}

void ZRSelection::adjustItemSelection(const platform::ObjectPointer &item, bool shiftDown, bool commandDown)
{
    performChanges([&] { itemSetForItem(item).adjustSelection(item, shiftDown, commandDown); });
}

void ZRSelection::selectAll(QObject *)
{
    performChanges([&] {
        for (const auto &set : m_selection_item_sets)
            set->selectAllItems();
    });
}

void ZRSelection::moveForward()
{
    performChanges([&] {
        for (const auto &set : m_selection_item_sets)
            set->moveForward();
    });
}

void ZRSelection::moveBackward()
{
    performChanges([&] {
        for (const auto &set : m_selection_item_sets)
            set->moveBackward();
    });
}

void ZRSelection::removeAllItemsExceptKind(const platform::ObjectClass *kind)
{
    performChanges([&] {
        for (const auto &set : m_selection_item_sets) {
            const platform::ObjectClass *const ofSet = kind ? set->itemClass() : nullptr;
            if (!ofSet || !(*ofSet == *kind))
                set->removeAllItems();
        }
    });
}

void ZRSelection::removeAllSelections()
{
    removeAllItemsExceptKind(nullptr);
}

void ZRSelection::aboutToClear()
{
    performChanges([&] {
        for (const auto &set : m_selection_item_sets) {
            if (set->aboutToClear())
                break;
        }
    });
}

void ZRSelection::copyFrom(const ZRSelection &other)
{
    performChanges([&] {
        for (const auto &set : m_selection_item_sets)
            set->copyFrom(other.itemSetForClass(set->itemClass()));
    });
}

void ZRSelection::paste(QObject *)
{
    performChanges([&] { pasteWithPosition(0); });
}

void ZRSelection::pasteWithPosition(int) { }

void ZRSelection::copy(QObject *) { }

// Announcing

void ZRSelection::beginChanges()
{
    if (m_change_level == 0)
        m_change_flagged = false;
    ++m_change_level;
}

void ZRSelection::endChanges()
{
    --m_change_level;
    if (m_change_level == 0 && m_change_flagged)
        sendChanged(); // may be the end of this selection
}

void ZRSelection::sendChanged()
{
    const std::weak_ptr<const bool> lifetime = m_lifetime;
    platform::NotificationCenter::defaultCenter().postNotification(ZRSelectionDidChangeNotification, this);
    if (lifetime.expired())
        return;
    // a plain virtual call for each observer, rather than one through a pointer to the member
    m_observer_list.makeObjectsPerformSelector(
        [](ZRSelectionObserver &observer, ZRSelection &selection) { observer.selectionDidChange(selection); }, *this);
    if (lifetime.expired())
        return;
    didChangeSelection();
}

void ZRSelection::didChangeSelection() { }
