#include "ZRCommon/ZRSelection.h"

#include "SelectionTestSupport.h"

#include <utility>

// What the host's code throws while the selection is at work: its item sets, its items, and those who are told.

namespace {

using platform::NotificationCenter;
using testSupport::HostCalls;
using testSupport::HostSelection;
using testSupport::NotingObserver;
using testSupport::Slide;
using testSupport::Track;

struct PastingSelection : HostSelection {
    void pasteWithPosition(int position) override
    {
        markChange();
        HostCalls::note();
        HostSelection::pasteWithPosition(position);
    }
};

struct ChangingOperation {
    const char *name;
    std::function<void(ZRSelection &, const testSupport::Items &slides, const ZRSelection &snapshot)> call;
};

const ChangingOperation changingOperations[] = {
    {"addItem", [](auto &selection, auto &slides, auto &) { selection.addItem(slides[6]); }},
    {"removeItem", [](auto &selection, auto &slides, auto &) { selection.removeItem(slides[3]); }},
    {"toggleSelectionOfItem",
     [](auto &selection, auto &slides, auto &) { selection.toggleSelectionOfItem(slides[6]); }},
    {"setSingleSelectedItem",
     [](auto &selection, auto &slides, auto &) { selection.setSingleSelectedItem(slides[6]); }},
    {"extendSelectionToItem",
     [](auto &selection, auto &slides, auto &) { selection.extendSelectionToItem(slides[7]); }},
    {"click", [](auto &selection, auto &slides, auto &) { selection.adjustItemSelection(slides[5], false, false); }},
    {"shiftClick",
     [](auto &selection, auto &slides, auto &) { selection.adjustItemSelection(slides[0], true, false); }},
    {"commandClick",
     [](auto &selection, auto &slides, auto &) { selection.adjustItemSelection(slides[5], false, true); }},
    {"selectAll", [](auto &selection, auto &, auto &) { selection.selectAll(); }},
    {"moveForward", [](auto &selection, auto &, auto &) { selection.moveForward(); }},
    {"moveBackward", [](auto &selection, auto &, auto &) { selection.moveBackward(); }},
    {"removeAllItemsExceptKind",
     [](auto &selection, auto &, auto &) { selection.removeAllItemsExceptKind(&Track::staticClass()); }},
    {"aboutToClear", [](auto &selection, auto &, auto &) { selection.aboutToClear(); }},
    {"copyFrom", [](auto &selection, auto &, auto &snapshot) { selection.copyFrom(snapshot); }},
    {"paste", [](auto &selection, auto &, auto &) { selection.paste(); }},
    {"pasteWithPosition",
     [](auto &selection, auto &, auto &) { selection.performChanges([&] { selection.pasteWithPosition(2); }); }},
};

class SelectionException : public testSupport::SelectionTest, public testing::WithParamInterface<ChangingOperation>
{
protected:
    SelectionException()
    {
        auto pasting = std::make_unique<PastingSelection>();
        pasting->addKind<Slide>(slides).addKind<Track>(tracks);
        selection = std::move(pasting);
        selection->addItem(b(4));
        snapshot = selection->clone();
        selection->addObserver(&observer);
        select({3, 4});
    }
    void perform() { GetParam().call(*selection, slides, *snapshot); }

    std::unique_ptr<ZRSelection> snapshot;
};

} // namespace

TEST_P(SelectionException, OfAnyCallOfTheHostClosesTheBatchAndAnnouncesWhatChangedOnce)
{
    int failures = 0;
    for (;; ++failures) {
        select({3, 4});
        const QString before = selected() + selectedTracks() + anchor();
        observer.count = 0;
        HostCalls::untilFailure = failures;
        bool hasFailed = false;
        try {
            perform();
        } catch (const HostCalls::Failure &) {
            hasFailed = true;
        }
        HostCalls::untilFailure = -1;
        EXPECT_LE(observer.count, 1);
        const bool hasChanged = selected() + selectedTracks() + anchor() != before;
        EXPECT_GE(observer.count, int(hasChanged)) << "call " << failures;
        EXPECT_TRUE(isBalanced()) << "call " << failures;
        // The anchor is a member or nothing, whatever happened.
        const auto first = slideSet().firstItem();
        EXPECT_TRUE(!first || slideSet().containsItem(first)) << "call " << failures;
        if (!hasFailed)
            break;
    }
    EXPECT_GT(failures, 0);
}

TEST_P(SelectionException, OfAnObserverEndsTheAnnouncementAndLeavesTheSelectionUsable)
{
    NotingObserver behind;
    selection->addObserver(&behind);
    observer.count = 0;
    observer.reaction = [](ZRSelection &) { throw HostCalls::Failure(); };
    EXPECT_THROW(perform(), HostCalls::Failure);
    EXPECT_EQ(observer.count, 1);
    EXPECT_EQ(behind.count, 0);
    observer.reaction = nullptr;
    EXPECT_TRUE(isBalanced());
    EXPECT_EQ(behind.count, 1);
}

TEST_P(SelectionException, OfAnObserverOfTheNotificationOrOfTheHookLeavesTheSelectionUsable)
{
    {
        const auto observation = NotificationCenter::defaultCenter().addObserver(
            [](const platform::Notification &) { throw HostCalls::Failure(); }, ZRSelectionDidChangeNotification);
        observer.count = 0;
        EXPECT_THROW(perform(), HostCalls::Failure);
        EXPECT_EQ(observer.count, 0);
    }
    EXPECT_TRUE(isBalanced());
    select({3, 4});
    selection->hook = [] { throw HostCalls::Failure(); };
    observer.count = 0;
    EXPECT_THROW(perform(), HostCalls::Failure);
    EXPECT_EQ(observer.count, 1);
    selection->hook = nullptr;
    EXPECT_TRUE(isBalanced());
}

INSTANTIATE_TEST_SUITE_P(Operations, SelectionException, testing::ValuesIn(changingOperations),
                         [](const auto &operation) { return std::string(operation.param.name); });

using SelectionExceptions = testSupport::SelectionTest;

TEST_F(SelectionExceptions, OfTheAnnouncementReplacesThatOfTheChangeItself)
{
    struct OtherFailure { };
    observer.reaction = [](ZRSelection &) { throw OtherFailure(); };
    EXPECT_THROW(selection->performChanges([&] {
        selection->addItem(a(1));
        throw HostCalls::Failure();
    }),
                 OtherFailure);
    observer.reaction = nullptr;
    EXPECT_TRUE(isBalanced());
}

TEST_F(SelectionExceptions, OfAChangeGoesOnAlsoWhenAnObserverDestroysTheSelection)
{
    observer.reaction = [&](ZRSelection &) { selection.reset(); };
    EXPECT_THROW(selection->performChanges([&] {
        selection->markChange();
        throw HostCalls::Failure();
    }),
                 HostCalls::Failure);
    EXPECT_EQ(selection, nullptr);
}
