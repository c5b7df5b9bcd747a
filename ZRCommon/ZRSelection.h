#pragma once

#include "ZRCommon/ZRSelectionItemSet.h"
#include "ZRCommon/ZRSelectionObserver.h"
#include "ZRFoundation/ZRObserverList.h"

#include <QString>

#include <memory>
#include <vector>

class QObject;
class ZRDocument;

/// Posted to the default notification centre by a selection that changed, with the `ZRSelection *` as its object.
inline const QString ZRSelectionDidChangeNotification = QStringLiteral("ZRSelectionDidChangeNotification");
/// A name for hosts: what an inspector inspects posts it, with itself as the object, when another object is selected in
/// it. The framework posts it nowhere.
inline const QString ZRSelectionChangedNotification = QStringLiteral("ZRSelectionChangedNotification");

/// All that is selected in one window of a document: a list of item sets, one for each kind of item. A host derives a
/// class that adds its item sets:
///
///     class SlideSet : public ZRSelectionItemSet
///     {
///     public:
///         std::unique_ptr<ZRSelectionItemSet> clone() const override { return std::make_unique<SlideSet>(*this); }
///         const platform::ObjectClass *itemClass() const override { return &Slide::staticClass(); }
///         quint32 absoluteItemCount() const override { return quint32(slides().size()); }
///         quint32 absoluteIndexOfItem(const platform::ObjectPointer &item) const override
///         {
///             const qsizetype index = slides().indexOf(item); // or better, a place that the slide knows
///             return index < 0 ? NotFound : quint32(index);
///         }
///         platform::ObjectPointer itemAtAbsoluteIndex(quint32 index) const override { return slides().value(index); }
///     private:
///         QList<platform::ObjectPointer> slides() const
///         {
///             const auto *story = static_cast<const Story *>(document());
///             return story ? story->slides() : QList<platform::ObjectPointer>(); // a copy has no document
///         }
///     };
///
///     class StorySelection : public ZRSelection
///     {
///     public:
///         explicit StorySelection(Story *story)
///         {
///             selectionItemSets().push_back(std::make_unique<SlideSet>());
///             setDocument(story);
///         }
///         std::unique_ptr<ZRSelection> clone() const override { return std::make_unique<StorySelection>(*this); }
///     };
///
/// What is asked or changed about an item goes to the item set of its class. An item or a class that no item set is for
/// raises `platform::InternalInconsistency`, and so does no item at all.
///
/// **After every change of the document** the host has the item sets let go of what the document has lost; nothing else
/// does. The place for it is in a window controller:
///
///     void StoryWindowController::documentChanged()
///     {
///         ... // show the content
///         selection()->performChanges([this] {
///             for (const auto &set : selection()->selectionItemSets())
///                 set->validateItems();
///         });
///     }
///
/// **Announcements.** Each operation that changes the selection is one batch of changes; a batch within another one is
/// part of it. When the outermost closes, by an exception as well, and something in it reported a change (which item
/// sets also do where they end as they were), there is one announcement, synchronously:
/// 1. "ZRSelectionDidChangeNotification" is posted,
/// 2. the observers are told, in the order in which they were added,
/// 3. `didChangeSelection` is called.
///
/// Everybody who is told finds the selection as it will be, and may change it: that is announced in full before the
/// outer announcement goes on. They may also add and remove observers (see `ZRObserverList`), and destroy the
/// selection, which ends the announcement; observers of the notification behind one that does must not use it. Whoever
/// throws ends the announcement, too; the selection stays usable.
///
/// Main thread.
class ZRSelection
{
public:
    /// The item sets, owned.
    using ItemSets = std::vector<std::unique_ptr<ZRSelectionItemSet>>;

    /// Without item sets, observers and document.
    ZRSelection();
    /// A detached snapshot: copies of the item sets, in the same order, without observers and document. Explicit, so
    /// that no selection is cut to its base class by accident: `clone` copies a selection of any class.
    explicit ZRSelection(const ZRSelection &other);
    ZRSelection &operator=(const ZRSelection &) = delete;
    /// The observers are not told.
    virtual ~ZRSelection();

    /// A copy of the same class, made by its copy constructor. Each subclass overrides it.
    virtual std::unique_ptr<ZRSelection> clone() const;

    /// The document whose items are selected; null for a copy. Not owned: it must live as long as it is set.
    ZRDocument *document() const { return m_document; }
    /// Tells all item sets their document and that they belong to this selection. Item sets that come later need
    /// another call.
    void setDocument(ZRDocument *document);

    /// The item sets themselves, for a subclass to add its own. Their order decides which one is for a class. While an
    /// operation of the selection runs they must stay.
    ItemSets &selectionItemSets() { return m_selection_item_sets; }
    const ItemSets &selectionItemSets() const { return m_selection_item_sets; }
    /// The first item set of the class or of one of its superclasses. If there is none,
    /// `platform::InternalInconsistency` is raised with "Invalid parameter not satisfying: NO".
    ZRSelectionItemSet &selectionItemSetForClass(const platform::ObjectClass &itemClass);
    const ZRSelectionItemSet &selectionItemSetForClass(const platform::ObjectClass &itemClass) const;

    /// Adds an observer, which is not owned: it is removed before it dies.
    void addObserver(ZRSelectionObserver *observer) { m_observer_list.addObserver(observer); }
    void removeObserver(ZRSelectionObserver *observer) { m_observer_list.removeObserver(observer); }
    /// Adds an observer for as long as the returned observation lives, which may be longer than the selection.
    [[nodiscard]] platform::Observation observe(ZRSelectionObserver *observer)
    {
        return m_observer_list.observe(observer);
    }

    /// @name Queries
    /// Each asks the item set of the item's class or of the given one.
    /// @{

    bool containsItem(const platform::ObjectPointer &item) const;
    /// The anchor; null when there is none.
    platform::ObjectPointer firstItemOfClass(const platform::ObjectClass &itemClass) const;
    platform::ObjectSet selectedItemsOfClass(const platform::ObjectClass &itemClass) const;
    quint32 selectedItemCountOfClass(const platform::ObjectClass &itemClass) const;
    platform::IndexRange selectedRangeOfClass(const platform::ObjectClass &itemClass) const;
    QList<platform::ObjectPointer> sortedItemsOfClass(const platform::ObjectClass &itemClass) const;

    /// Always true, except where an item set of a superclass stands in front of another one, whose items then count as
    /// the former's: each item set is compared with the one that *this* selection has for its class, and the argument
    /// is not looked at. Whoever wants to know whether the same is selected compares the item sets.
    bool isEqual(const ZRSelection &) const;

    /// @}
    /// @name Changes
    /// Each is one batch of changes. What `ZRSelectionItemSet` says of the operation of the same name holds.
    /// @{

    void addItem(const platform::ObjectPointer &item);
    void removeItem(const platform::ObjectPointer &item);
    void toggleSelectionOfItem(const platform::ObjectPointer &item);
    void setSingleSelectedItem(const platform::ObjectPointer &item);
    void extendSelectionToItem(const platform::ObjectPointer &item);
    /// What a click on an item does.
    void adjustItemSelection(const platform::ObjectPointer &item, bool shiftDown, bool commandDown);

    /// All items of the kind of which some are selected.
    void selectAll(QObject *sender = nullptr);
    /// Each item set in turn. Since an empty one selects its first item, and with it empties the others, a selection
    /// of several kinds ends at the first item of the last kind that has items.
    void moveForward();
    /// Each item set in turn. An empty one stays empty.
    void moveBackward();
    /// Empties the item sets whose `itemClass` is not exactly this class; all of them for null.
    void removeAllItemsExceptKind(const platform::ObjectClass *kind);
    void removeAllSelections();
    /// To be called before the selected items are deleted from the document: asks the item sets in turn, up to the
    /// first one that has found another item to select.
    void aboutToClear();
    /// Restores what was selected in the other selection: each item set takes over from that of the other selection for
    /// its class. Where the other one has none, `platform::InternalInconsistency` is raised.
    void copyFrom(const ZRSelection &other);
    /// `pasteWithPosition` at 0.
    void paste(QObject *sender = nullptr);
    /// Does nothing unless overridden: pastes in front of the item at a position that the host defines. `paste` calls
    /// it inside a batch; an override that others call, too, does its work in `performChanges`.
    virtual void pasteWithPosition(int position);
    /// Does nothing unless overridden: copies the selected items to the clipboard. No batch.
    virtual void copy(QObject *sender = nullptr);

    /// Opens a batch. The outermost forgets a change that was reported outside of any.
    void beginChanges();
    /// Closes a batch; announces when it was the outermost and a change was reported. Calls without a batch are not
    /// noticed, but put the balance out.
    void endChanges();
    /// Runs a body inside of a batch, which is closed on every path. What the body throws goes on afterwards; where
    /// the announcement throws as well, what that has thrown.
    template <class Body>
    void performChanges(Body body)
    {
        beginChanges();
        try {
            body();
        } catch (...) {
            endChanges();
            throw;
        }
        endChanges();
    }

    /// @}

    /// Internal: item sets report each change by this. Outside of a batch nothing is announced, and the next batch
    /// forgets it.
    void markChange() { m_change_flagged = true; }

protected:
    /// Called last in each announcement. Does nothing unless overridden.
    virtual void didChangeSelection();

private:
    const ZRSelectionItemSet &itemSetForClass(const platform::ObjectClass *itemClass) const;
    const ZRSelectionItemSet &itemSetForItem(const platform::ObjectPointer &item) const;
    ZRSelectionItemSet &itemSetForItem(const platform::ObjectPointer &item);
    void sendChanged();

    ZRDocument *m_document = nullptr;
    ItemSets m_selection_item_sets;
    qint32 m_change_level = 0;
    bool m_change_flagged = false;
    ZRObserverList<ZRSelectionObserver> m_observer_list;
    std::shared_ptr<const bool> m_lifetime = std::make_shared<const bool>(true); // tells an announcement of the end
};
