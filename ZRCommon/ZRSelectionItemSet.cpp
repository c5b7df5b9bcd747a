#include "ZRCommon/ZRSelectionItemSet.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "ZRCommon/ZRSelection.h"

#include <QScopeGuard>

#include <algorithm>
#include <limits>
#include <vector>

namespace {

constexpr int capacityHint = 50;

} // namespace

ZRSelectionItemSet::ZRSelectionItemSet()
{
    m_selected_items.reserve(capacityHint);
}

ZRSelectionItemSet::ZRSelectionItemSet(const ZRSelectionItemSet &other)
    : m_selected_items(other.m_selected_items)
    , m_first_item(other.m_first_item)
{ }

ZRSelectionItemSet::~ZRSelectionItemSet() = default;

std::unique_ptr<ZRSelectionItemSet> ZRSelectionItemSet::clone() const
{
    return std::make_unique<ZRSelectionItemSet>(*this);
}

void ZRSelectionItemSet::setDocument(ZRDocument *document, ZRSelection *selection)
{
    m_document = document;
    m_selection = selection;
}

bool ZRSelectionItemSet::isSingleSelectedItem(const platform::ObjectPointer &item) const
{
    return m_selected_items.size() == 1 && platform::areEqual(m_selected_items.begin()->get(), item.get());
}

platform::ObjectPointer ZRSelectionItemSet::singleSelectedItem() const
{
    return m_selected_items.size() == 1 ? *m_selected_items.begin() : nullptr;
}

// Questions about places

QList<platform::ObjectPointer> ZRSelectionItemSet::sortedItems() const
{
    QList<platform::ObjectPointer> items;
    items.reserve(qsizetype(m_selected_items.size()));
    const quint32 count = absoluteItemCount();
    for (quint32 i = 0; i < count; ++i) {
        if (const auto item = itemAtAbsoluteIndex(i); containsItem(item))
            items.append(item);
    }
    return items;
}

platform::IndexRange ZRSelectionItemSet::selectedItemRange() const
{
    qint64 lowest = std::numeric_limits<qint64>::max(), highest = -1;
    for (const auto &item : m_selected_items) {
        const qint64 index = absoluteIndexOfItem(item);
        lowest = std::min(lowest, index);
        highest = std::max(highest, index); // beyond all others where the document does not have the item
    }
    const qint64 count = selectedItemCount();
    return count > 0 && highest - lowest + 1 == count ? platform::IndexRange{lowest, count}
                                                      : platform::IndexRange{NotFound, 0};
}

quint32 ZRSelectionItemSet::lowestItemIndex() const
{
    const quint32 count = absoluteItemCount();
    quint32 lowest = count;
    for (const auto &item : m_selected_items)
        lowest = std::min(lowest, absoluteIndexOfItem(item));
    return lowest == count ? NotFound : lowest;
}

// Adding and removing

void ZRSelectionItemSet::markChange()
{
    if (m_selection)
        m_selection->markChange();
}

void ZRSelectionItemSet::clearOtherKinds()
{
    if (m_selection)
        m_selection->removeAllItemsExceptKind(itemClass());
}

void ZRSelectionItemSet::clearAllKinds()
{
    if (m_selection)
        m_selection->removeAllItemsExceptKind(nullptr);
    else
        removeAllItems();
}

void ZRSelectionItemSet::addItem(const platform::ObjectPointer &item)
{
    ZR_ASSERT_PARAMETER(this, item);
    clearOtherKinds();
    m_selected_items.insert(item);
    if (m_selected_items.size() == 1)
        m_first_item = *m_selected_items.begin(); // the member: the item may be another one that is equal to it
    markChange();
}

void ZRSelectionItemSet::removeItem(const platform::ObjectPointer &item)
{
    if (!item)
        return;
    const bool isAnchor = platform::areEqual(firstItem().get(), item.get());
    m_selected_items.erase(item);
    if (isAnchor)
        m_first_item.reset();
    markChange();
}

void ZRSelectionItemSet::removeAllItems()
{
    // Emptying costs as much as the set once held, also when it is empty; each item that is added to another kind asks
    // for it.
    if (!m_selected_items.empty())
        m_selected_items.clear();
    m_first_item.reset();
    markChange();
}

void ZRSelectionItemSet::copyFrom(const ZRSelectionItemSet &other)
{
    m_selected_items = other.m_selected_items;
    m_first_item = other.m_first_item;
    markChange();
}

void ZRSelectionItemSet::validateItems()
{
    const std::vector<platform::ObjectPointer> items(m_selected_items.begin(), m_selected_items.end());
    for (const auto &item : items) {
        if (absoluteIndexOfItem(item) == NotFound)
            removeItem(item);
    }
}

// Selecting as a person does

void ZRSelectionItemSet::setSingleSelectedItem(const platform::ObjectPointer &item)
{
    if (isSingleSelectedItem(item))
        return;
    clearAllKinds();
    if (item)
        addItem(item);
}

void ZRSelectionItemSet::toggleSelectionOfItem(const platform::ObjectPointer &item)
{
    if (containsItem(item))
        removeItem(item);
    else
        addItem(item);
}

void ZRSelectionItemSet::adjustSelection(const platform::ObjectPointer &item, bool shiftDown, bool commandDown)
{
    clearOtherKinds();
    if (commandDown && !platform::areEqual(item.get(), firstItem().get())) {
        toggleSelectionOfItem(item);
        return;
    }
    if (shiftDown && !m_selected_items.empty()) {
        extendSelectionToItem(item);
        return;
    }
    if (!isSingleSelectedItem(item)) {
        clearAllKinds();
        addItem(item);
    }
    if (isSingleSelectedItem(item))
        markChange(); // a click on the sole selected item is announced, too
}

void ZRSelectionItemSet::extendSelectionToItem(const platform::ObjectPointer &item)
{
    const platform::ObjectPointer anchor = firstItem();
    const qint64 from = qint32(absoluteIndexOfItem(anchor ? anchor : item));
    const qint64 to = qint32(absoluteIndexOfItem(item));
    clearAllKinds();
    const qint64 step = from >= to ? -1 : 1;
    for (qint64 i = from; i != to + step; i += step)
        addItem(itemAtAbsoluteIndex(quint32(i))); // the first one becomes the anchor again
}

void ZRSelectionItemSet::selectAllItems()
{
    if (m_selected_items.empty())
        return;
    m_selected_items.clear();
    // The anchor stays until the first item takes its place. Where none does, or the host throws, it goes.
    const auto done = qScopeGuard([this] {
        if (m_selected_items.empty())
            m_first_item.reset();
        markChange();
    });
    const quint32 count = absoluteItemCount();
    for (quint32 i = 0; i < count; ++i)
        addItem(itemAtAbsoluteIndex(i));
}

void ZRSelectionItemSet::moveForward()
{
    qint64 highest = -1;
    for (const auto &item : m_selected_items)
        highest = std::max(highest, qint64(qint32(absoluteIndexOfItem(item))));
    const qint64 next = highest + 1;
    if (next < qint32(absoluteItemCount()))
        setSingleSelectedItem(itemAtAbsoluteIndex(quint32(next)));
}

void ZRSelectionItemSet::moveBackward()
{
    const quint32 lowest = lowestItemIndex();
    if (lowest != 0 && lowest != NotFound)
        setSingleSelectedItem(itemAtAbsoluteIndex(lowest - 1));
}

bool ZRSelectionItemSet::aboutToClear()
{
    if (m_selected_items.empty())
        return false;
    const quint32 lowest = lowestItemIndex();
    const quint32 count = absoluteItemCount();
    if (lowest == NotFound)
        return false;
    for (quint32 i = lowest; i < count; ++i) {
        if (const auto item = itemAtAbsoluteIndex(i); !containsItem(item)) {
            removeAllItems();
            setSingleSelectedItem(item);
            return true;
        }
    }
    return false;
}
