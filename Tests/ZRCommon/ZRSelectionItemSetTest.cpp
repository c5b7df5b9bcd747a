#include "ZRCommon/ZRSelectionItemSet.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "SelectionTestSupport.h"
#include "Support/IndexSets.h"

#include <gmock/gmock.h>

namespace {

using platform::IndexRange;
using platform::InternalInconsistency;
using platform::ObjectPointer;
using testing::ElementsAre;
using testSupport::ListedItemSet;
using testSupport::namesOf;
using testSupport::Slide;
using testSupport::sortedNames;
using testSupport::Track;

constexpr quint32 notFound = ZRSelectionItemSet::NotFound;

class SelectionItemSet : public testSupport::SelectionTest
{ };

// Clicks

TEST_F(SelectionItemSet, APlainClickSelectsTheItemAloneAndMakesItTheAnchor)
{
    EXPECT_EQ(announcementsOf([&] { click(3); }), 1);
    EXPECT_EQ(selected(), "A3");
    EXPECT_EQ(anchor(), "A3");
    EXPECT_EQ(announcementsOf([&] { click(5); }), 1);
    EXPECT_EQ(selected(), "A5");
    EXPECT_EQ(anchor(), "A5");
}

TEST_F(SelectionItemSet, APlainClickOnTheSoleSelectedItemIsReportedNevertheless)
{
    click(3);
    EXPECT_EQ(announcementsOf([&] { click(3); }), 1);
    EXPECT_EQ(selected(), "A3");
}

TEST_F(SelectionItemSet, APlainClickOnOneOfSeveralSelectsItAlone)
{
    select({3, 5, 7});
    click(5);
    EXPECT_EQ(selected(), "A5");
    EXPECT_EQ(anchor(), "A5");
}

TEST_F(SelectionItemSet, EveryShiftClickExtendsFromTheSameAnchor)
{
    click(3);
    EXPECT_EQ(announcementsOf([&] { shiftClick(6); }), 1);
    EXPECT_EQ(selected(), "A3 A4 A5 A6");
    EXPECT_EQ(anchor(), "A3");
    EXPECT_EQ(announcementsOf([&] { shiftClick(1); }), 1);
    EXPECT_EQ(selected(), "A1 A2 A3");
    EXPECT_EQ(anchor(), "A3");
}

TEST_F(SelectionItemSet, AShiftClickOnTheAnchorSelectsItAlone)
{
    click(3);
    shiftClick(6);
    shiftClick(3);
    EXPECT_EQ(selected(), "A3");
    EXPECT_EQ(anchor(), "A3");
}

TEST_F(SelectionItemSet, AShiftClickOnAnEmptySelectionIsAPlainClick)
{
    EXPECT_EQ(announcementsOf([&] { shiftClick(5); }), 1);
    EXPECT_EQ(selected(), "A5");
    EXPECT_EQ(anchor(), "A5");
}

TEST_F(SelectionItemSet, ACommandClickAddsAndRemovesAnyItemButTheAnchor)
{
    click(3);
    commandClick(5);
    EXPECT_EQ(selected(), "A3 A5");
    commandClick(5);
    EXPECT_EQ(selected(), "A3");
    EXPECT_EQ(announcementsOf([&] { commandClick(3); }), 1); // unchanged, but reported
    EXPECT_EQ(selected(), "A3");
    EXPECT_EQ(anchor(), "A3");
}

TEST_F(SelectionItemSet, ACommandClickOnTheAnchorOfSeveralCollapsesTheSelectionToIt)
{
    click(3);
    commandClick(5);
    EXPECT_EQ(announcementsOf([&] { commandClick(3); }), 1);
    EXPECT_EQ(selected(), "A3");
    EXPECT_EQ(anchor(), "A3");
}

TEST_F(SelectionItemSet, ACommandClickOnAnEmptySelectionSelectsTheItem)
{
    commandClick(4);
    EXPECT_EQ(selected(), "A4");
    EXPECT_EQ(anchor(), "A4");
}

TEST_F(SelectionItemSet, AClickWithBothKeysTogglesAnyItemButTheAnchorAndExtendsToThatAlone)
{
    click(3);
    selection->adjustItemSelection(a(5), true, true);
    EXPECT_EQ(selected(), "A3 A5");
    selection->adjustItemSelection(a(3), true, true); // falls through to the shift key
    EXPECT_EQ(selected(), "A3");
    EXPECT_EQ(anchor(), "A3");
}

TEST_F(SelectionItemSet, AClickWithTheCommandKeyEmptiesTheOtherKindsFirst)
{
    selection->addItem(b(2));
    EXPECT_EQ(announcementsOf([&] { commandClick(4); }), 1);
    EXPECT_EQ(selected(), "A4");
    EXPECT_EQ(selectedTracks(), "");
}

TEST_F(SelectionItemSet, AShiftClickAfterTheAnchorWasRemovedStartsAtTheClickedItem)
{
    click(3);
    commandClick(5);
    selection->removeItem(a(3));
    EXPECT_EQ(selected(), "A5");
    EXPECT_EQ(anchor(), "");
    shiftClick(8);
    EXPECT_EQ(selected(), "A8");
    EXPECT_EQ(anchor(), "A8");
}

TEST_F(SelectionItemSet, ACommandClickWithoutAnAnchorMakesNone)
{
    click(3);
    commandClick(5);
    selection->removeItem(a(3));
    commandClick(7);
    EXPECT_EQ(selected(), "A5 A7");
    EXPECT_EQ(anchor(), "");
}

// Adding and removing

TEST_F(SelectionItemSet, TheFirstItemBecomesTheAnchorAndLaterOnesDoNot)
{
    selection->addItem(a(4));
    selection->addItem(a(2));
    EXPECT_EQ(selected(), "A2 A4");
    EXPECT_EQ(anchor(), "A4");
    EXPECT_TRUE(selection->containsItem(a(2)));
    EXPECT_FALSE(selection->containsItem(a(3)));
}

TEST_F(SelectionItemSet, TheOnlyItemBecomesTheAnchorWhenItIsAddedAgain)
{
    select({3, 5});
    selection->removeItem(a(3));
    EXPECT_EQ(anchor(), "");
    EXPECT_EQ(announcementsOf([&] { selection->addItem(a(5)); }), 1);
    EXPECT_EQ(selected(), "A5");
    EXPECT_EQ(anchor(), "A5");
}

TEST_F(SelectionItemSet, RemovingWhatIsNotSelectedIsReported)
{
    select({3});
    EXPECT_EQ(announcementsOf([&] { selection->removeItem(a(4)); }), 1);
    EXPECT_EQ(selected(), "A3");
    EXPECT_EQ(anchor(), "A3");
}

TEST_F(SelectionItemSet, RemovingNoItemDoesNothingAndAddingNoneIsRefused)
{
    select({3});
    EXPECT_EQ(announcementsOf([&] { selection->performChanges([&] { slideSet().removeItem(nullptr); }); }), 0);
    EXPECT_THROW(slideSet().addItem(nullptr), InternalInconsistency);
    EXPECT_EQ(selected(), "A3");
}

TEST_F(SelectionItemSet, TogglingAddsWhatIsAbsentAndRemovesWhatIsThere)
{
    selection->toggleSelectionOfItem(a(1));
    selection->toggleSelectionOfItem(a(2));
    EXPECT_EQ(selected(), "A1 A2");
    selection->toggleSelectionOfItem(a(1));
    EXPECT_EQ(selected(), "A2");
    EXPECT_EQ(anchor(), "");
}

TEST_F(SelectionItemSet, MakingTheSoleSelectedItemTheOnlyOneReportsNothing)
{
    select({3});
    EXPECT_EQ(announcementsOf([&] { selection->setSingleSelectedItem(a(3)); }), 0);
    EXPECT_EQ(announcementsOf([&] { selection->setSingleSelectedItem(a(4)); }), 1);
    EXPECT_EQ(selected(), "A4");
    EXPECT_EQ(anchor(), "A4");
}

TEST_F(SelectionItemSet, MakingOneOfSeveralTheOnlyOneMakesItTheAnchor)
{
    select({3, 4});
    selection->setSingleSelectedItem(a(4));
    EXPECT_EQ(selected(), "A4");
    EXPECT_EQ(anchor(), "A4");
}

TEST_F(SelectionItemSet, NoSingleSelectedItemLeavesNothingSelectedOfAnyKind)
{
    select({3, 4});
    EXPECT_EQ(announcementsOf([&] { selection->performChanges([&] { slideSet().setSingleSelectedItem(nullptr); }); }),
              1);
    EXPECT_EQ(selected(), "");
    selection->addItem(b(1));
    selection->performChanges([&] { slideSet().setSingleSelectedItem(nullptr); });
    EXPECT_EQ(selectedTracks(), "");
}

TEST_F(SelectionItemSet, TheSingleSelectedItemIsTheOneOfASetOfOne)
{
    EXPECT_EQ(slideSet().singleSelectedItem(), nullptr);
    select({3});
    EXPECT_EQ(slideSet().singleSelectedItem(), a(3));
    select({3, 4});
    EXPECT_EQ(slideSet().singleSelectedItem(), nullptr);
}

TEST_F(SelectionItemSet, TheSelectedItemsAreASnapshot)
{
    select({3});
    const platform::ObjectSet before = slideSet().selectedItems();
    select({4, 5});
    EXPECT_EQ(sortedNames(before), "A3");
    EXPECT_EQ(slideSet().selectedItemCount(), 2u);
}

// Selecting of this kind empties the others

TEST_F(SelectionItemSet, SelectingAnItemEmptiesEveryOtherKind)
{
    const std::pair<const char *, std::function<void()>> ways[] = {
        {"addItem", [&] { selection->addItem(a(3)); }},
        {"toggleSelectionOfItem", [&] { selection->toggleSelectionOfItem(a(3)); }},
        {"setSingleSelectedItem", [&] { selection->setSingleSelectedItem(a(3)); }},
        {"extendSelectionToItem", [&] { selection->extendSelectionToItem(a(3)); }},
        {"adjustItemSelection", [&] { click(3); }},
    };
    for (const auto &[name, way] : ways) {
        selection->removeAllSelections();
        selection->addItem(b(1));
        selection->addItem(b(2));
        EXPECT_EQ(announcementsOf(way), 1) << name;
        EXPECT_EQ(selected(), "A3") << name;
        EXPECT_EQ(selectedTracks(), "") << name;
        EXPECT_EQ(trackSet().firstItem(), nullptr) << name;
    }
}

// Extending

TEST_F(SelectionItemSet, ExtendingSelectsTheRunFromTheAnchorInBothDirections)
{
    select({4});
    selection->extendSelectionToItem(a(9));
    EXPECT_EQ(selected(), "A4 A5 A6 A7 A8 A9");
    selection->extendSelectionToItem(a(0));
    EXPECT_EQ(selected(), "A0 A1 A2 A3 A4");
    EXPECT_EQ(anchor(), "A4");
}

TEST_F(SelectionItemSet, ExtendingWithoutAnAnchorSelectsTheItemAlone)
{
    EXPECT_EQ(announcementsOf([&] { selection->extendSelectionToItem(a(6)); }), 1);
    EXPECT_EQ(selected(), "A6");
    EXPECT_EQ(anchor(), "A6");
}

TEST_F(SelectionItemSet, ExtendingToOrFromWhatTheDocumentDoesNotHaveIsRefused)
{
    const ObjectPointer stranger = std::make_shared<Slide>(77);
    select({8});
    EXPECT_THROW(selection->extendSelectionToItem(stranger), InternalInconsistency);
    EXPECT_EQ(selected(), "A8 A9"); // as far as there were items
    EXPECT_TRUE(isBalanced());

    selection->setSingleSelectedItem(stranger);
    EXPECT_THROW(selection->extendSelectionToItem(a(4)), InternalInconsistency);
    EXPECT_EQ(selected(), "");

    EXPECT_THROW(selection->extendSelectionToItem(stranger), InternalInconsistency);
    EXPECT_EQ(selected(), "");
    EXPECT_TRUE(isBalanced());
}

// All

TEST_F(SelectionItemSet, SelectAllDoesNothingToAnEmptySet)
{
    EXPECT_EQ(announcementsOf([&] { selection->selectAll(); }), 0);
    EXPECT_EQ(selected(), "");
}

TEST_F(SelectionItemSet, SelectAllSelectsAllOfAKindOfWhichSomeAreSelected)
{
    select({4});
    EXPECT_EQ(announcementsOf([&] { selection->selectAll(); }), 1);
    EXPECT_EQ(selected(), "A0 A1 A2 A3 A4 A5 A6 A7 A8 A9");
    EXPECT_EQ(anchor(), "A0");
}

TEST_F(SelectionItemSet, SelectAllDropsWhatTheDocumentDoesNotHave)
{
    select({4, 5});
    takeFromDocument(5);
    takeFromDocument(4);
    selection->selectAll();
    EXPECT_EQ(selected(), "A0 A1 A2 A3 A6 A7 A8 A9");
}

TEST_F(SelectionItemSet, SelectAllOfAnEmptyDocumentLeavesNothingAndNoAnchor)
{
    const ObjectPointer kept = a(4);
    select({4, 5});
    slides.clear();
    EXPECT_EQ(announcementsOf([&] { selection->selectAll(); }), 1);
    EXPECT_EQ(selected(), "");
    EXPECT_EQ(anchor(), "");
}

// Moving

TEST_F(SelectionItemSet, MovingForwardSelectsTheItemBehindTheLastSelectedOne)
{
    select({9});
    EXPECT_EQ(announcementsOf([&] { slideSet().moveForward(); }), 0);
    EXPECT_EQ(selected(), "A9");
    select({2, 7});
    selection->performChanges([&] { slideSet().moveForward(); });
    EXPECT_EQ(selected(), "A8");
    EXPECT_EQ(anchor(), "A8");
}

TEST_F(SelectionItemSet, MovingForwardFromNothingSelectsTheFirstItem)
{
    slideSet().moveForward();
    EXPECT_EQ(selected(), "A0");
    select({});
    slides.clear();
    slideSet().moveForward();
    EXPECT_EQ(selected(), "");
}

TEST_F(SelectionItemSet, MovingForwardChangesNothingWhereAnItemHasLeftTheDocument)
{
    select({2, 7});
    takeFromDocument(2);
    slideSet().moveForward();
    EXPECT_EQ(selected(), "A2 A7");
}

TEST_F(SelectionItemSet, MovingBackwardSelectsTheItemInFrontOfTheFirstSelectedOne)
{
    select({0});
    EXPECT_EQ(announcementsOf([&] { selection->moveBackward(); }), 0);
    EXPECT_EQ(selected(), "A0");
    select({2, 7});
    EXPECT_EQ(announcementsOf([&] { selection->moveBackward(); }), 1);
    EXPECT_EQ(selected(), "A1");
    EXPECT_EQ(anchor(), "A1");
}

TEST_F(SelectionItemSet, MovingBackwardFromNothingSelectsNothing)
{
    EXPECT_EQ(announcementsOf([&] { selection->moveBackward(); }), 0);
    EXPECT_EQ(selected(), "");
}

// Deleting

struct Clearing {
    std::vector<int> selected;
    const char *expected;
    bool hasFound;
};

TEST_F(SelectionItemSet, BeforeDeletingTheNearestUnselectedItemBehindTheFirstSelectedOneIsSelected)
{
    const Clearing clearings[] = {
        {{2, 3}, "A4", true}, {{8, 9}, "A8 A9", false}, // nothing in front is ever chosen
        {{0, 9}, "A1", true}, {{}, "", false},
        {{9}, "A9", false},   {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, "A0 A1 A2 A3 A4 A5 A6 A7 A8 A9", false},
    };
    for (const Clearing &clearing : clearings) {
        selection->removeAllSelections();
        for (const int number : clearing.selected)
            selection->addItem(a(number));
        EXPECT_EQ(announcementsOf([&] {
                      selection->performChanges(
                          [&] { EXPECT_EQ(slideSet().aboutToClear(), clearing.hasFound) << clearing.expected; });
                  }),
                  clearing.hasFound);
        EXPECT_EQ(selected(), clearing.expected);
    }
    select({2, 3});
    slideSet().aboutToClear();
    EXPECT_EQ(anchor(), "A4");
}

TEST_F(SelectionItemSet, BeforeDeletingNothingIsFoundForItemsThatTheDocumentDoesNotHave)
{
    select({2});
    takeFromDocument(2);
    EXPECT_FALSE(slideSet().aboutToClear());
    EXPECT_EQ(selected(), "A2");
}

// Places

TEST_F(SelectionItemSet, TheLowestIndexIsThatOfTheFirstSelectedItem)
{
    EXPECT_EQ(slideSet().lowestItemIndex(), notFound);
    select({7, 4, 9});
    EXPECT_EQ(slideSet().lowestItemIndex(), 4u);
    EXPECT_EQ(notFound, 0x7fffffffu);
}

TEST_F(SelectionItemSet, ItemsThatAllLeftTheDocumentHaveNoLowestIndexAndAreDroppedWhenTheyAreValidated)
{
    select({0, 1});
    slides.erase(slides.cbegin(), slides.cbegin() + 2);
    EXPECT_EQ(slideSet().lowestItemIndex(), notFound);
    EXPECT_EQ(announcementsOf([&] { selection->performChanges([&] { slideSet().validateItems(); }); }), 1);
    EXPECT_EQ(selected(), "");
    EXPECT_EQ(anchor(), "");
}

TEST_F(SelectionItemSet, ValidatingKeepsWhatTheDocumentHas)
{
    select({3, 4, 5});
    EXPECT_EQ(announcementsOf([&] { selection->performChanges([&] { slideSet().validateItems(); }); }), 0);
    takeFromDocument(3);
    slideSet().validateItems();
    EXPECT_EQ(selected(), "A4 A5");
    EXPECT_EQ(anchor(), ""); // it was A3
}

TEST_F(SelectionItemSet, SortedItemsComeInTheOrderOfTheDocument)
{
    select({7, 2, 5});
    EXPECT_THAT(namesOf(slideSet().sortedItems()), ElementsAre("A2", "A5", "A7"));
    std::reverse(slides.begin(), slides.end());
    EXPECT_THAT(namesOf(slideSet().sortedItems()), ElementsAre("A7", "A5", "A2"));
    takeFromDocument(4);
    EXPECT_THAT(namesOf(slideSet().sortedItems()), ElementsAre("A7", "A2"));
}

TEST_F(SelectionItemSet, TheSelectedRangeIsThatOfItemsSideBySide)
{
    EXPECT_EQ(slideSet().selectedItemRange(), (IndexRange{notFound, 0}));
    select({4, 2, 3});
    EXPECT_EQ(slideSet().selectedItemRange(), (IndexRange{2, 3}));
    select({2, 4});
    EXPECT_EQ(slideSet().selectedItemRange(), (IndexRange{notFound, 0}));
    select({9});
    EXPECT_EQ(slideSet().selectedItemRange(), (IndexRange{9, 1}));
}

TEST_F(SelectionItemSet, AnItemThatLeftTheDocumentBreaksTheSelectedRange)
{
    select({2, 3, 4});
    takeFromDocument(3);
    EXPECT_EQ(slideSet().selectedItemRange(), (IndexRange{notFound, 0})); // though A2 and A4 are side by side now
    const ObjectPointer gone = std::make_shared<Slide>(77);
    for (const auto &order : {std::vector{a(1), a(3), gone}, {gone, a(3), a(1)}}) {
        selection->removeAllSelections();
        for (const auto &item : order)
            selection->addItem(item);
        EXPECT_EQ(slideSet().selectedItemRange(), (IndexRange{notFound, 0}));
    }
    const ObjectPointer last = slides.back();
    selection->setSingleSelectedItem(last);
    slides.pop_back();
    EXPECT_EQ(slideSet().selectedItemRange(), (IndexRange{notFound, 1}));
}

// Items that are equal, and items that die

TEST_F(SelectionItemSet, EqualItemsCountAsTheSame)
{
    const ObjectPointer likeThree = std::make_shared<Slide>(3);
    select({3});
    selection->addItem(likeThree);
    EXPECT_EQ(slideSet().selectedItemCount(), 1u);
    EXPECT_EQ(slideSet().firstItem(), a(3)); // the member that was there
    EXPECT_TRUE(selection->containsItem(likeThree));
    EXPECT_EQ(announcementsOf([&] { selection->setSingleSelectedItem(likeThree); }), 0);
    commandClick(5);
    selection->adjustItemSelection(likeThree, false, true); // the anchor
    EXPECT_EQ(selected(), "A3");
    commandClick(5);
    selection->removeItem(likeThree);
    EXPECT_EQ(selected(), "A5");
    EXPECT_EQ(anchor(), "");
}

TEST_F(SelectionItemSet, AnEqualItemOfWhichNothingElseIsKeptStaysTheAnchor)
{
    select({3});
    selection->addItem(std::make_shared<Slide>(3));
    EXPECT_EQ(anchor(), "A3");
    shiftClick(5);
    EXPECT_EQ(selected(), "A3 A4 A5");
}

TEST_F(SelectionItemSet, ASelectedItemLivesUntilItIsDeselected)
{
    select({3, 4});
    const std::weak_ptr<platform::Object> item = a(3);
    slides.clear();
    EXPECT_EQ(anchor(), "A3");
    EXPECT_FALSE(item.expired());
    selection->performChanges([&] { slideSet().validateItems(); });
    EXPECT_TRUE(item.expired());
    EXPECT_EQ(anchor(), "");
}

// Copies

TEST_F(SelectionItemSet, ACopyHoldsTheSameItemsWithTheSameAnchorAndBelongsToNobody)
{
    char place = 0;
    const auto document = reinterpret_cast<ZRDocument *>(&place); // is only kept
    slideSet().setDocument(document, selection.get());
    EXPECT_EQ(slideSet().document(), document);
    select({3, 5});

    const auto copy = slideSet().clone();
    EXPECT_EQ(sortedNames(copy->selectedItems()), "A3 A5");
    EXPECT_EQ(copy->firstItem(), a(3));
    EXPECT_EQ(copy->document(), nullptr);
    EXPECT_NE(dynamic_cast<ListedItemSet<Slide> *>(copy.get()), nullptr);
    EXPECT_EQ(announcementsOf([&] { selection->performChanges([&] { copy->addItem(a(7)); }); }), 0);
    EXPECT_EQ(selected(), "A3 A5");
}

TEST_F(SelectionItemSet, TakingOverReplacesTheItemsAndTheAnchorAndIsReported)
{
    select({3, 5});
    const auto copy = slideSet().clone();
    select({8});
    EXPECT_EQ(announcementsOf([&] { selection->performChanges([&] { slideSet().copyFrom(*copy); }); }), 1);
    EXPECT_EQ(selected(), "A3 A5");
    EXPECT_EQ(anchor(), "A3");
    copy->removeItem(a(3));
    slideSet().copyFrom(*copy);
    EXPECT_EQ(selected(), "A5");
    EXPECT_EQ(anchor(), "");
    slideSet().copyFrom(slideSet());
    EXPECT_EQ(selected(), "A5");
}

TEST_F(SelectionItemSet, EqualSetsHoldEqualItemsWhateverTheirAnchors)
{
    select({3, 5});
    const auto copy = slideSet().clone();
    select({5, 3});
    EXPECT_NE(copy->firstItem(), slideSet().firstItem());
    EXPECT_TRUE(slideSet().isEqual(*copy));
    copy->removeItem(a(5));
    copy->addItem(std::make_shared<Slide>(5)); // another object
    EXPECT_TRUE(slideSet().isEqual(*copy));
    copy->removeItem(a(5));
    copy->addItem(a(6));
    EXPECT_FALSE(slideSet().isEqual(*copy)); // as many, but others
    copy->removeItem(a(6));
    EXPECT_FALSE(slideSet().isEqual(*copy));
    EXPECT_FALSE(copy->isEqual(slideSet()));
    EXPECT_FALSE(slideSet().isEqual(ZRSelectionItemSet()));
}

TEST_F(SelectionItemSet, AnItemIsAddedOnceTheOtherKindsAreEmpty)
{
    testSupport::HostSelection alone;
    alone.selectionItemSets().push_back(std::make_unique<ZRSelectionItemSet>());
    alone.setDocument(nullptr);
    ZRSelectionItemSet &bare = *alone.selectionItemSets()[0];
    bare.addItem(a(1));
    bare.addItem(a(2)); // of no class: every kind is another one, this one too
    EXPECT_EQ(sortedNames(bare.selectedItems()), "A2");
}

TEST_F(SelectionItemSet, AClickThatOnlyRemovesEmptiesTheOtherKindsToo)
{
    ZRSelectionItemSet other;
    other.addItem(std::make_shared<Track>(1));
    select({3, 5});
    ZRSelectionItemSet &trackSet = *selection->selectionItemSets()[1];
    trackSet.copyFrom(other); // which leaves the slides
    ASSERT_EQ(selected(), "A3 A5");
    selection->adjustItemSelection(a(5), false, true);
    EXPECT_EQ(selected(), "A3");
    EXPECT_EQ(trackSet.selectedItemCount(), 0U);
}

// Alone

TEST_F(SelectionItemSet, WithoutASelectionItIsTheOnlyKindThereIs)
{
    ListedItemSet<Slide> set(slides);
    set.adjustSelection(a(3), false, false);
    set.adjustSelection(a(5), false, false);
    EXPECT_EQ(sortedNames(set.selectedItems()), "A5");
    set.extendSelectionToItem(a(7));
    EXPECT_EQ(sortedNames(set.selectedItems()), "A5 A6 A7");
    set.setSingleSelectedItem(a(2));
    EXPECT_EQ(sortedNames(set.selectedItems()), "A2");
    set.markChange();
}

TEST_F(SelectionItemSet, OfNoSubclassActsAsIfTheDocumentHadNoItems)
{
    ZRSelectionItemSet set;
    EXPECT_EQ(set.itemClass(), nullptr);
    EXPECT_EQ(set.absoluteItemCount(), 0u);
    EXPECT_EQ(set.absoluteIndexOfItem(a(3)), notFound);
    EXPECT_EQ(set.itemAtAbsoluteIndex(0), nullptr);
    EXPECT_EQ(set.document(), nullptr);
    EXPECT_EQ(set.firstItem(), nullptr);

    set.moveForward();
    EXPECT_EQ(set.selectedItemCount(), 0u);
    set.addItem(a(3));
    EXPECT_TRUE(set.sortedItems().isEmpty());
    EXPECT_EQ(set.lowestItemIndex(), notFound);
    EXPECT_FALSE(set.aboutToClear());
    EXPECT_EQ(set.clone()->singleSelectedItem(), a(3));
    set.validateItems();
    EXPECT_EQ(set.selectedItemCount(), 0u);
}

TEST_F(SelectionItemSet, ChangedOutsideOfABatchIsNotAnnouncedAndForgottenByTheNext)
{
    selection = std::make_unique<testSupport::HostSelection>();
    selection->addKind<Slide>(slides);
    selection->addObserver(&observer);
    EXPECT_EQ(announcementsOf([&] { slideSet().addItem(a(3)); }), 0);
    EXPECT_EQ(announcementsOf([&] { selection->performChanges([] {}); }), 0);
    EXPECT_EQ(selected(), "A3");
}

} // namespace
