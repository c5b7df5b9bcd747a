#pragma once

#include "Platform/Foundation/IndexSet.h"
#include "Platform/Foundation/ObjectSet.h"

#include <QList>

#include <memory>

class ZRDocument;
class ZRSelection;

/// The selected items of one kind, such as the selected slides of a story: a set in no order and an **anchor**, the
/// item that was selected first, from which a shift-click extends. A `ZRSelection` owns one item set for each kind.
///
/// A host derives a class for each kind of its items, which knows their order: `clone`, `itemClass` and the three
/// operations on absolute indexes are all that it overrides. (`ZRSelection.h` shows one.) The absolute index of an item
/// is its place in the document's whole list of items of this kind. Items are looked for by what they stand for
/// (`platform::Object::isEqual`); of two equal ones the set holds the one that was added first.
///
/// **Kinds exclude each other.** Adding an item empties the other item sets of the selection; what makes an item the
/// only one empties all of them. An item set without a selection is the only kind there is.
///
/// **Changes** are reported to the selection, which announces them when its batch of changes closes. The operations of
/// `ZRSelection` open one around those of the same name here, and hosts call these. Where an operation is called on the
/// item set itself, it should be inside of `ZRSelection::performChanges`: outside of a batch the change is not
/// announced, except that emptying the other kinds is a batch of its own, whose announcement comes in the midst of the
/// operation; the selection must not be destroyed then.
///
/// What an override of the host throws leaves the operation. The items that were added or removed until then remain so.
///
/// **Cost.** The operations are linear in the items of this kind in calls of the absolute operations and in hashing and
/// comparing items, or better where it is said, provided that items have good hashes. Main thread.
class ZRSelectionItemSet
{
public:
    /// The absolute index of what is not there.
    static constexpr quint32 NotFound = 0x7fffffff;

    /// Empty, of no document and no selection.
    ZRSelectionItemSet();
    /// The same items (not copies of them) with the same anchor, of no document and no selection. Explicit, so that no
    /// item set is cut to its base class by accident: `clone` copies an item set of any class.
    explicit ZRSelectionItemSet(const ZRSelectionItemSet &other);
    ZRSelectionItemSet &operator=(const ZRSelectionItemSet &) = delete;
    virtual ~ZRSelectionItemSet();

    /// @name For each kind to override
    /// The answers here are those for no items at all. A copy belongs to no document: where `document()` is null,
    /// overrides answer so, too. They change no selection.
    /// @{

    /// A copy of the same class, made by its copy constructor.
    virtual std::unique_ptr<ZRSelectionItemSet> clone() const;
    /// The class of the items; null for none. Items of its subclasses are of this kind, too.
    virtual const platform::ObjectClass *itemClass() const { return nullptr; }
    /// How many items of this kind the document has.
    virtual quint32 absoluteItemCount() const { return 0; }
    /// The place of an item in the document; `NotFound` when the document does not have it (any more).
    virtual quint32 absoluteIndexOfItem(const platform::ObjectPointer &) const { return NotFound; }
    /// The item at a place; null when there is none.
    virtual platform::ObjectPointer itemAtAbsoluteIndex(quint32) const { return nullptr; }

    /// @}

    /// The document whose items these are, and the selection that changes are reported to, are set by
    /// `ZRSelection::setDocument`. Neither is owned.
    ZRDocument *document() const { return m_document; }
    void setDocument(ZRDocument *document, ZRSelection *selection);

    /// Whether the item is selected. Constant time.
    bool containsItem(const platform::ObjectPointer &item) const { return m_selected_items.count(item) > 0; }
    /// The anchor: the item that made the set go from none to one. Null when the set is empty, and when that item was
    /// removed while others stayed. Constant time.
    platform::ObjectPointer firstItem() const { return m_first_item.lock(); }
    /// A copy of the set as it is now. Linear in the selected items, without hashing.
    platform::ObjectSet selectedItems() const { return m_selected_items; }
    /// Constant time.
    quint32 selectedItemCount() const { return quint32(m_selected_items.size()); }
    /// The one selected item; null when there are none or several. Constant time.
    platform::ObjectPointer singleSelectedItem() const;

    /// The selected items in the order of the document. One that the document does not have is left out. Linear in the
    /// document's items.
    QList<platform::ObjectPointer> sortedItems() const;
    /// The absolute indexes of the selected items when they are side by side; {`NotFound`, 0} when there is a gap, or
    /// an item that the document does not have beside others, or nothing. (A single item that the document does not
    /// have is at {`NotFound`, 1}.) Linear in the selected items.
    platform::IndexRange selectedItemRange() const;

    /// Makes the item the only one that is selected, of any kind, and the anchor; null leaves nothing selected. Does
    /// and reports nothing when it is the only one of its kind already.
    void setSingleSelectedItem(const platform::ObjectPointer &item);
    /// What a click on an item does. In this order:
    /// 1. The other kinds are emptied.
    /// 2. With the command key, on any item but the anchor: `toggleSelectionOfItem`.
    /// 3. With the shift key, when something of this kind is selected: `extendSelectionToItem`.
    /// 4. Otherwise the item becomes the only one, and the anchor. When it is so already, nothing changes, but a change
    ///    is reported nevertheless.
    ///
    /// A click with the command key on the anchor goes on at 3.
    void adjustSelection(const platform::ObjectPointer &item, bool shiftDown, bool commandDown);
    /// Selects the items from the anchor to this one, both included, and nothing else of any kind; this one alone when
    /// there is no anchor. The anchor stays, so that a further call extends from it again. The document must have both:
    /// where it answers no item, `platform::InternalInconsistency` is raised. Linear in the items of that run.
    void extendSelectionToItem(const platform::ObjectPointer &item);
    /// Removes the item when it is selected, and adds it otherwise. Constant time in the items.
    void toggleSelectionOfItem(const platform::ObjectPointer &item);

    /// @name Internal: for ZRSelection and the selections of hosts
    /// @{

    /// Reports a change to the selection, if there is one.
    void markChange();
    /// Empties the other kinds and adds the item. The first one becomes the anchor, and so does the only one when it is
    /// added again. No item raises `platform::InternalInconsistency`. Constant time in the items.
    void addItem(const platform::ObjectPointer &item);
    /// Reports a change also when the item was not selected; not for null. Constant time.
    void removeItem(const platform::ObjectPointer &item);
    /// Reports a change also when nothing was selected.
    void removeAllItems();
    /// Selects all items of the document if some are selected, so that "select all" means the kind of what is selected;
    /// the document's first becomes the anchor. Nothing otherwise. Linear in the document's items.
    void selectAllItems();
    /// Takes over the items and the anchor of the other set. The other kinds are not emptied.
    void copyFrom(const ZRSelectionItemSet &other);
    /// Whether equal items are selected, whatever the anchors.
    bool isEqual(const ZRSelectionItemSet &other) const
    {
        return platform::areEqual(m_selected_items, other.m_selected_items);
    }
    /// The least absolute index of the selected items; `NotFound` when the document has none of them. Linear in the
    /// selected items.
    quint32 lowestItemIndex() const;
    /// Selects the item behind the last selected one alone; the document's first one when none is selected. Nothing
    /// changes at the end of the list, nor when an item is selected that the document does not have. Linear in the
    /// selected items.
    void moveForward();
    /// Selects the item in front of the first selected one alone. Nothing changes at the start of the list, nor when
    /// nothing is selected. Linear in the selected items.
    void moveBackward();
    /// To be called before the selected items are deleted from the document: selects the nearest item behind the first
    /// selected one that is not selected itself. Items in front of it are never chosen. Linear in the items that are
    /// looked at.
    /// @return false, with nothing changed, when there is none.
    bool aboutToClear();
    /// Removes the items that the document does not have any more. To be called after the document has changed. Linear
    /// in the selected items.
    void validateItems();

    /// @}

private:
    void clearOtherKinds();
    void clearAllKinds();
    bool isSingleSelectedItem(const platform::ObjectPointer &item) const;

    platform::ObjectSet m_selected_items;
    std::weak_ptr<platform::Object> m_first_item; // a member of the set
    ZRDocument *m_document = nullptr;
    ZRSelection *m_selection = nullptr;
};
