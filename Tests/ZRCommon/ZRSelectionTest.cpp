#include "ZRCommon/ZRSelection.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "SelectionTestSupport.h"
#include "Support/IndexSets.h"

#include <optional>

#include <gmock/gmock.h>

namespace {

using platform::IndexRange;
using platform::InternalInconsistency;
using platform::NotificationCenter;
using platform::ObjectPointer;
using testing::ElementsAre;
using testing::IsEmpty;
using testSupport::HostSelection;
using testSupport::MovingSlide;
using testSupport::namesOf;
using testSupport::NotingObserver;
using testSupport::Slide;
using testSupport::sortedNames;
using testSupport::Track;

constexpr quint32 notFound = ZRSelectionItemSet::NotFound;

class Selection : public testSupport::SelectionTest
{
protected:
    static std::optional<InternalInconsistency> failureOf(const std::function<void()> &call)
    {
        try {
            call();
        } catch (const InternalInconsistency &failure) {
            return failure;
        }
        return {};
    }
};

// Batches

TEST_F(Selection, AUserActionOfSeveralChangesIsAnnouncedOnce)
{
    select({1, 2, 3});
    EXPECT_EQ(announcementsOf([&] { click(2); }), 1);
    EXPECT_EQ(announcementsOf([&] { shiftClick(8); }), 1);
    EXPECT_EQ(announcementsOf([&] { selection->selectAll(); }), 1);
}

TEST_F(Selection, NestedBatchesAreAnnouncedWhenTheOutermostCloses)
{
    selection->beginChanges();
    selection->beginChanges();
    selection->addItem(a(1));
    selection->endChanges();
    EXPECT_EQ(observer.count, 0);
    selection->endChanges();
    EXPECT_EQ(observer.count, 1);
}

TEST_F(Selection, ABatchWithoutAChangeIsNotAnnounced)
{
    EXPECT_EQ(announcementsOf([&] { selection->performChanges([] {}); }), 0);
}

TEST_F(Selection, AChangeOutsideOfABatchIsForgottenByTheNextOne)
{
    selection->markChange();
    EXPECT_EQ(observer.count, 0);
    EXPECT_EQ(announcementsOf([&] { selection->performChanges([] {}); }), 0);
}

TEST_F(Selection, ClosingMoreThanWasOpenedAnnouncesNothingUntilTheLevelIsBack)
{
    selection->endChanges();
    EXPECT_FALSE(isBalanced()); // its batch closes below the outermost level
    selection->beginChanges();
    EXPECT_TRUE(isBalanced());
}

TEST_F(Selection, AnItemOfAnotherKindReplacesThoseSelectedWithOneAnnouncement)
{
    select({1, 2});
    EXPECT_EQ(announcementsOf([&] { selection->addItem(b(5)); }), 1);
    EXPECT_EQ(selected(), "");
    EXPECT_EQ(selectedTracks(), "B5");
}

// Announcing

TEST_F(Selection, AnnouncesToTheNotificationCentreThenToObserversInOrderThenToItsHook)
{
    QStringList calls;
    NotingObserver second(&calls, "second"), first(&calls, "first");
    selection->addObserver(&first);
    selection->addObserver(&second);
    selection->hook = [&] { calls.append("hook"); };
    const auto observation = NotificationCenter::defaultCenter().addObserver(
        [&](const platform::Notification &notification) {
            EXPECT_EQ(notification.object<ZRSelection>(), selection.get());
            EXPECT_FALSE(notification.value().isValid());
            EXPECT_EQ(selected(), "A3");
            calls.append(notification.name());
        },
        "ZRSelectionDidChangeNotification", static_cast<ZRSelection *>(selection.get()));

    selection->addItem(a(3));
    EXPECT_THAT(calls, ElementsAre("ZRSelectionDidChangeNotification", "first", "second", "hook"));
    EXPECT_EQ(first.told, selection.get());
}

TEST_F(Selection, TheTwoNotificationNamesAreDistinctAndTheSecondIsNeverPosted)
{
    EXPECT_EQ(ZRSelectionDidChangeNotification, "ZRSelectionDidChangeNotification");
    EXPECT_EQ(ZRSelectionChangedNotification, "ZRSelectionChangedNotification");
    QStringList posted;
    const auto observation = NotificationCenter::defaultCenter().addObserver(
        [&](const platform::Notification &notification) { posted.append(notification.name()); });
    click(1);
    EXPECT_THAT(posted, ElementsAre("ZRSelectionDidChangeNotification"));
}

TEST_F(Selection, ARemovedObserverIsNotToldAndAnObservationMayOutliveTheSelection)
{
    selection->removeObserver(&observer);
    click(1);
    EXPECT_EQ(observer.count, 0);
    {
        const auto observation = selection->observe(&observer);
        click(2);
        EXPECT_EQ(observer.count, 1);
    }
    click(3);
    EXPECT_EQ(observer.count, 1);
    const auto longer = selection->observe(&observer);
    selection.reset();
}

TEST_F(Selection, DoesNotTellItsObserversOfItsEnd)
{
    click(1);
    observer.count = 0;
    selection.reset();
    EXPECT_EQ(observer.count, 0);
}

// Observers that act while they are told

TEST_F(Selection, AnObserverMayRemoveItselfAndOthersWhileItIsTold)
{
    QStringList calls;
    NotingObserver first(&calls, "first"), second(&calls, "second"), third(&calls, "third");
    for (NotingObserver *each : {&first, &second, &third})
        selection->addObserver(each);
    first.reaction = [&](ZRSelection &told) {
        told.removeObserver(&first);
        told.removeObserver(&second);
    };
    click(1);
    click(2);
    EXPECT_THAT(calls, ElementsAre("first", "third", "third"));
}

TEST_F(Selection, AnObserverThatIsAddedWhileOthersAreToldIsToldOfTheNextChangeFirst)
{
    NotingObserver late;
    observer.reaction = [&](ZRSelection &told) { told.addObserver(&late); };
    click(1);
    EXPECT_EQ(late.count, 0);
    click(2);
    EXPECT_EQ(late.count, 1);
}

TEST_F(Selection, AnObserverMayChangeTheSelectionWhichIsAnnouncedInFullFirst)
{
    QStringList calls;
    NotingObserver second(&calls, "second");
    selection->addObserver(&second);
    second.reaction = [&](ZRSelection &) { calls.append(selected()); };
    observer.reaction = [&](ZRSelection &told) {
        if (observer.count == 1)
            told.addItem(a(9));
    };
    click(1);
    EXPECT_THAT(calls, ElementsAre("second", "A1 A9", "second", "A1 A9"));
    EXPECT_EQ(observer.count, 2);
    EXPECT_TRUE(isBalanced());
}

TEST_F(Selection, AnObserverMayDestroyTheSelectionWhileItIsTold)
{
    NotingObserver behind;
    selection->addObserver(&behind);
    bool isHookCalled = false;
    selection->hook = [&] { isHookCalled = true; };
    observer.reaction = [&](ZRSelection &) { selection.reset(); };
    click(1);
    EXPECT_EQ(selection, nullptr);
    EXPECT_EQ(behind.count, 0);
    EXPECT_FALSE(isHookCalled);
}

TEST_F(Selection, AnObserverOfTheNotificationMayDestroyTheSelection)
{
    const auto observation = NotificationCenter::defaultCenter().addObserver(
        [&](const platform::Notification &) { selection.reset(); }, ZRSelectionDidChangeNotification);
    click(1);
    EXPECT_EQ(selection, nullptr);
    EXPECT_EQ(observer.count, 0);
}

TEST_F(Selection, ItsHookMayDestroyIt)
{
    selection->hook = [&] { delete selection.release(); };
    click(1);
    EXPECT_EQ(selection, nullptr);
}

TEST_F(Selection, MayBeDestroyedByAnObserverOfAChangeThatAnObserverMade)
{
    observer.reaction = [&](ZRSelection &told) {
        if (observer.count == 1)
            told.addItem(a(9));
        else
            selection.reset();
    };
    click(1);
    EXPECT_EQ(selection, nullptr);
    EXPECT_EQ(observer.count, 2);
}

// Finding the item set

TEST_F(Selection, ItemSetsMoveInTheirOrder)
{
    static QStringList asked;
    class AskedSet : public ZRSelectionItemSet
    {
    public:
        explicit AskedSet(const char *name)
            : m_name(name)
        { }
        std::unique_ptr<ZRSelectionItemSet> clone() const override { return std::make_unique<AskedSet>(*this); }
        quint32 absoluteItemCount() const override
        {
            asked.append(m_name);
            return 0;
        }

    private:
        const char *m_name;
    };
    ZRSelection both;
    both.selectionItemSets().push_back(std::make_unique<AskedSet>("first"));
    both.selectionItemSets().push_back(std::make_unique<AskedSet>("second"));
    const auto askedBy = [&](void (ZRSelection::*operation)()) {
        asked.clear();
        (both.*operation)();
        asked.removeDuplicates();
        return asked;
    };
    EXPECT_EQ(askedBy(&ZRSelection::moveBackward), (QStringList{"first", "second"}));
    EXPECT_EQ(askedBy(&ZRSelection::moveForward), (QStringList{"first", "second"}));
}

TEST_F(Selection, AskingForAClassWithoutAnItemSetIsRefused)
{
    const auto failure = failureOf([&] { selection->selectionItemSetForClass(platform::Object::staticClass()); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->description(), "Invalid parameter not satisfying: NO");
    EXPECT_TRUE(failure->object().contains("HostSelection")) << failure->what();
    EXPECT_TRUE(failureOf([&] { std::as_const(*selection).selectedItemsOfClass(platform::Object::staticClass()); }));
}

TEST_F(Selection, EveryOperationOnAnItemWithoutAnItemSetIsRefused)
{
    for (const ObjectPointer &stranger :
         {ObjectPointer(std::make_shared<testSupport::NumberedItem>('X', 1)), ObjectPointer()}) {
        const std::function<void()> operations[] = {
            [&] { selection->containsItem(stranger); },
            [&] { selection->addItem(stranger); },
            [&] { selection->removeItem(stranger); },
            [&] { selection->toggleSelectionOfItem(stranger); },
            [&] { selection->setSingleSelectedItem(stranger); },
            [&] { selection->extendSelectionToItem(stranger); },
            [&] { selection->adjustItemSelection(stranger, false, false); },
        };
        select({2});
        for (const auto &operation : operations) {
            const auto failure = failureOf(operation);
            ASSERT_TRUE(failure);
            EXPECT_EQ(failure->description(), "Invalid parameter not satisfying: NO");
            EXPECT_EQ(selected(), "A2");
            EXPECT_TRUE(isBalanced());
        }
    }
}

TEST_F(Selection, OfNoItemSetsHasNoneForAnyClass)
{
    ZRSelection bare;
    EXPECT_TRUE(bare.selectionItemSets().empty());
    EXPECT_THROW(bare.addItem(a(1)), InternalInconsistency);
    bare.selectionItemSets().push_back(std::make_unique<ZRSelectionItemSet>()); // of no class
    EXPECT_THROW(bare.addItem(a(1)), InternalInconsistency);
    EXPECT_THROW(bare.isEqual(bare), InternalInconsistency);
}

TEST_F(Selection, ItemsOfASubclassGoToTheItemSetOfTheBaseClassWhenThatComesFirst)
{
    const testSupport::Items moving = testSupport::makeItems<MovingSlide>(3);
    selection->addKind<MovingSlide>(moving);
    EXPECT_EQ(&selection->selectionItemSetForClass(MovingSlide::staticClass()), &slideSet());
    selection->addItem(moving[1]);
    EXPECT_EQ(selected(), "M1");
    EXPECT_EQ(selection->selectionItemSets()[2]->selectedItemCount(), 0u);
}

TEST_F(Selection, ItemsOfASubclassGoToTheirOwnItemSetWhenThatComesFirst)
{
    const testSupport::Items moving = testSupport::makeItems<MovingSlide>(3);
    HostSelection other;
    other.addKind<MovingSlide>(moving).addKind<Slide>(slides);
    other.addItem(moving[1]);
    EXPECT_EQ(other.selectedItemCountOfClass(MovingSlide::staticClass()), 1u);
    EXPECT_EQ(other.selectedItemCountOfClass(Slide::staticClass()), 0u);
    other.addItem(a(1)); // a kind of its own, though of a superclass
    EXPECT_EQ(other.selectedItemCountOfClass(MovingSlide::staticClass()), 0u);
    EXPECT_EQ(other.selectedItemCountOfClass(Slide::staticClass()), 1u);
}

// Queries

TEST_F(Selection, AnswersForEachClass)
{
    select({4, 2, 3});
    const platform::ObjectClass &slideClass = Slide::staticClass(), &trackClass = Track::staticClass();
    observer.count = 0;
    EXPECT_TRUE(selection->containsItem(a(4)));
    EXPECT_FALSE(selection->containsItem(b(4)));
    EXPECT_EQ(selection->firstItemOfClass(slideClass), a(4));
    EXPECT_EQ(selection->firstItemOfClass(trackClass), nullptr);
    EXPECT_EQ(sortedNames(selection->selectedItemsOfClass(slideClass)), "A2 A3 A4");
    EXPECT_EQ(selection->selectedItemCountOfClass(slideClass), 3u);
    EXPECT_EQ(selection->selectedItemCountOfClass(trackClass), 0u);
    EXPECT_EQ(selection->selectedRangeOfClass(slideClass), (IndexRange{2, 3}));
    EXPECT_EQ(selection->selectedRangeOfClass(trackClass), (IndexRange{notFound, 0}));
    EXPECT_THAT(namesOf(selection->sortedItemsOfClass(slideClass)), ElementsAre("A2", "A3", "A4"));
    EXPECT_THAT(selection->sortedItemsOfClass(trackClass), IsEmpty());
    EXPECT_EQ(observer.count, 0);
}

TEST_F(Selection, IsEqualToEveryOther)
{
    const auto before = selection->clone();
    select({1, 2});
    EXPECT_TRUE(selection->isEqual(*before));
    EXPECT_TRUE(selection->isEqual(ZRSelection()));
}

TEST_F(Selection, IsUnequalToItselfWhenAKindStandsBehindThatOfItsSuperclass)
{
    const testSupport::Items moving = testSupport::makeItems<MovingSlide>(3);
    selection->addKind<MovingSlide>(moving);
    EXPECT_TRUE(selection->isEqual(*selection)); // both are empty
    select({1});
    EXPECT_FALSE(selection->isEqual(*selection));
}

// Changes of all kinds

TEST_F(Selection, RemovingAllIsAnnouncedAlsoWhenNothingIsSelected)
{
    EXPECT_EQ(announcementsOf([&] { selection->removeAllSelections(); }), 1);
    select({1, 2});
    EXPECT_EQ(announcementsOf([&] { selection->removeAllSelections(); }), 1);
    EXPECT_EQ(selected(), "");
    EXPECT_EQ(anchor(), "");
}

TEST_F(Selection, RemovingAllButAKindLeavesExactlyThatClass)
{
    select({1});
    EXPECT_EQ(announcementsOf([&] { selection->removeAllItemsExceptKind(&Slide::staticClass()); }), 1);
    EXPECT_EQ(selected(), "A1");
    selection->removeAllItemsExceptKind(&MovingSlide::staticClass()); // a subclass is another kind
    EXPECT_EQ(selected(), "");
    select({1});
    selection->removeAllItemsExceptKind(&platform::Object::staticClass());
    EXPECT_EQ(selected(), "");
    select({1});
    selection->removeAllItemsExceptKind(nullptr);
    EXPECT_EQ(selected(), "");
}

TEST_F(Selection, SelectAllActsOnTheKindOfWhichSomeAreSelected)
{
    EXPECT_EQ(announcementsOf([&] { selection->selectAll(); }), 0);
    EXPECT_EQ(selected() + selectedTracks(), "");
    selection->addItem(b(3));
    EXPECT_EQ(announcementsOf([&] { selection->selectAll(); }), 1);
    EXPECT_EQ(selected(), "");
    EXPECT_EQ(trackSet().selectedItemCount(), 10u);
}

TEST_F(Selection, MovesTheOnlyKindThatHasItems)
{
    slides.clear();
    selection->addItem(b(3));
    EXPECT_EQ(announcementsOf([&] { selection->moveForward(); }), 1);
    EXPECT_EQ(selectedTracks(), "B4");
    EXPECT_EQ(announcementsOf([&] { selection->moveBackward(); }), 1);
    EXPECT_EQ(selectedTracks(), "B3");
}

TEST_F(Selection, MovingForwardWithSeveralKindsEndsAtTheFirstItemOfTheLastOne)
{
    select({3});
    EXPECT_EQ(announcementsOf([&] { selection->moveForward(); }), 1);
    EXPECT_EQ(selected(), "");
    EXPECT_EQ(selectedTracks(), "B0");
}

TEST_F(Selection, MovingBackwardLeavesTheEmptyKindsEmpty)
{
    select({3});
    EXPECT_EQ(announcementsOf([&] { selection->moveBackward(); }), 1);
    EXPECT_EQ(selected(), "A2");
    EXPECT_EQ(selectedTracks(), "");
}

TEST_F(Selection, BeforeDeletingTheKindsBehindTheOneThatFoundAnItemAreNotAsked)
{
    // Items of two kinds are selected only where a copy that was changed by hand is taken over.
    const auto snapshot = selection->clone();
    snapshot->selectionItemSets()[0]->addItem(a(2));
    snapshot->selectionItemSets()[1]->addItem(b(2));
    selection->copyFrom(*snapshot);
    testSupport::HostCalls::untilFailure = 1000;
    slideSet().aboutToClear();
    const int callsOfOne = 1000 - testSupport::HostCalls::untilFailure;

    selection->copyFrom(*snapshot);
    testSupport::HostCalls::untilFailure = 1000;
    EXPECT_EQ(announcementsOf([&] { selection->aboutToClear(); }), 1);
    EXPECT_LE(1000 - testSupport::HostCalls::untilFailure, callsOfOne);
    EXPECT_EQ(selected(), "A3");
}

TEST_F(Selection, BeforeDeletingEachKindIsAskedUntilOneFindsAnItem)
{
    selection->addItem(b(2));
    EXPECT_EQ(announcementsOf([&] { selection->aboutToClear(); }), 1);
    EXPECT_EQ(selectedTracks(), "B3");
    selection->removeAllSelections();
    EXPECT_EQ(announcementsOf([&] { selection->aboutToClear(); }), 0);
}

// Pasting and copying

struct PastingSelection : HostSelection {
    void pasteWithPosition(int position) override
    {
        positions.push_back(position);
        if (paste)
            paste();
    }
    std::vector<int> positions;
    std::function<void()> paste;
};

TEST_F(Selection, PastesNothingByItself)
{
    EXPECT_EQ(announcementsOf([&] {
                  selection->paste();
                  selection->pasteWithPosition(3);
                  selection->copy();
              }),
              0);
    EXPECT_TRUE(isBalanced());
}

TEST_F(Selection, PastesAtPositionZeroInABatch)
{
    PastingSelection pasting;
    pasting.addKind<Slide>(slides);
    pasting.addObserver(&observer);
    pasting.paste = [&] {
        pasting.addItem(a(1));
        pasting.addItem(a(2));
        EXPECT_EQ(observer.count, 0);
    };
    pasting.ZRSelection::paste();
    EXPECT_EQ(observer.count, 1);
    EXPECT_THAT(pasting.positions, ElementsAre(0));
}

// Copies

TEST_F(Selection, ACopyIsADetachedSnapshotOfItsOwnClass)
{
    char place = 0;
    const auto document = reinterpret_cast<ZRDocument *>(&place); // is only kept
    selection->setDocument(document);
    EXPECT_EQ(selection->document(), document);
    EXPECT_EQ(slideSet().document(), document);
    EXPECT_EQ(trackSet().document(), document);
    select({3, 5});

    const auto copy = selection->clone();
    ASSERT_NE(dynamic_cast<HostSelection *>(copy.get()), nullptr);
    EXPECT_EQ(copy->document(), nullptr);
    ASSERT_EQ(copy->selectionItemSets().size(), 2u);
    EXPECT_EQ(copy->selectionItemSets()[0]->itemClass(), &Slide::staticClass());
    EXPECT_EQ(copy->selectionItemSets()[1]->itemClass(), &Track::staticClass());
    EXPECT_EQ(copy->selectionItemSets()[0]->document(), nullptr);
    EXPECT_EQ(sortedNames(copy->selectedItemsOfClass(Slide::staticClass())), "A3 A5");
    EXPECT_EQ(copy->firstItemOfClass(Slide::staticClass()), a(3));
    select({7});
    EXPECT_EQ(sortedNames(copy->selectedItemsOfClass(Slide::staticClass())), "A3 A5");
    observer.count = 0;
    copy->removeAllSelections();
    EXPECT_EQ(observer.count, 0); // observers are not copied
}

TEST_F(Selection, ACopyReportsNoChangesUntilItHasADocument)
{
    const auto copy = selection->clone();
    copy->addObserver(&observer);
    EXPECT_EQ(announcementsOf([&] { copy->addItem(a(3)); }), 0);
    copy->setDocument(nullptr);
    EXPECT_EQ(announcementsOf([&] { copy->addItem(a(4)); }), 1);
}

TEST_F(Selection, TakingOverASnapshotIsAnnouncedOnce)
{
    select({3, 5});
    const auto before = selection->clone();
    selection->addItem(b(1));
    EXPECT_EQ(announcementsOf([&] { selection->copyFrom(*before); }), 1);
    EXPECT_EQ(selected(), "A3 A5");
    EXPECT_EQ(anchor(), "A3");
    EXPECT_EQ(selectedTracks(), "");
    EXPECT_EQ(announcementsOf([&] { selection->copyFrom(*selection); }), 1);
    EXPECT_EQ(selected(), "A3 A5");
}

TEST_F(Selection, TakingOverFromASelectionThatLacksAKindIsRefused)
{
    HostSelection other;
    other.addKind<Slide>(slides);
    other.addItem(a(6));
    int announcements = 0;
    const auto failure = failureOf([&] { announcements = announcementsOf([&] { selection->copyFrom(other); }); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->description(), "Invalid parameter not satisfying: NO");
    EXPECT_EQ(selected(), "A6"); // of the kinds in front of it
    EXPECT_EQ(observer.count, 1);
    EXPECT_TRUE(isBalanced());
    other.copyFrom(*selection); // the other way it has all that is asked for
}

} // namespace
