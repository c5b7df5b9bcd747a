#include "ZRCommon/ZRWindowController.h"

#include "Platform/Foundation/UserDefaults.h"
#include "Support/DocumentTest.h"
#include "ZRCommon/ZRDocument.h"
#include "ZRCommon/ZRSelection.h"

#include <memory>

namespace {

class Item : public platform::Object
{
    ZR_OBJECT(Item, platform::Object)
};

class ItemSet : public ZRSelectionItemSet
{
public:
    std::unique_ptr<ZRSelectionItemSet> clone() const override { return std::make_unique<ItemSet>(*this); }
    const platform::ObjectClass *itemClass() const override { return &Item::staticClass(); }
};

class ItemSelection : public ZRSelection
{
public:
    ItemSelection() { selectionItemSets().push_back(std::make_unique<ItemSet>()); }
    std::unique_ptr<ZRSelection> clone() const override { return std::make_unique<ItemSelection>(*this); }
};

struct Controller : ZRWindowController {
    QStringList log;

    void documentChanged() override
    {
        log.append(QStringLiteral("documentChanged: \"%1\" %2 %3")
                       .arg(windowFrameAutosaveName())
                       .arg(shouldCascadeWindows())
                       .arg(window()->windowTitle()));
    }
    std::unique_ptr<QWidget> makeWindow() override { return std::make_unique<QWidget>(); }
};

struct ZRWindowControllerTest : documentTest::Test, ZRSelectionObserver {
    ZRDocument document{QStringLiteral("Type"), 1, 1, 1};
    Controller *controller = nullptr;
    int changes = 0;
    const platform::ObjectPointer a = std::make_shared<Item>(), b = std::make_shared<Item>();

    ZRWindowControllerTest()
    {
        platform::UserDefaults::standard().clear();
        auto made = std::make_unique<Controller>();
        controller = made.get();
        document.addWindowController(std::move(made));
    }
    void selectionDidChange(ZRSelection &) override { ++changes; }

    ZRSelection &selection() { return *controller->selection(); }
    void setSelection()
    {
        auto selection = std::make_unique<ItemSelection>();
        selection->setDocument(&document);
        selection->addObserver(this);
        controller->setSelection(std::move(selection));
    }
    platform::ObjectSet selected() { return selection().selectedItemsOfClass(Item::staticClass()); }
};

TEST_F(ZRWindowControllerTest, LoadsAWindowThatSharesTheFrameAndIsNotCascadedThenShowsTheDocument)
{
    controller->window();
    EXPECT_EQ(controller->log, QStringList{QStringLiteral("documentChanged: \"Document Window\" 0 Untitled[*]")});
    controller->showWindow();
    EXPECT_EQ(controller->log.size(), 1) << "once";
}

TEST_F(ZRWindowControllerTest, IsToldOfChangesByTheDocument)
{
    document.beginChanges();
    document.documentDidChange();
    document.endChanges();
    EXPECT_EQ(controller->log.size(), 2) << "the first time it looked at its window, which loaded it";
    document.beginChanges();
    document.documentDidChange();
    document.endChanges();
    EXPECT_EQ(controller->log.size(), 3);
}

TEST_F(ZRWindowControllerTest, AllWindowsShareTheFrame)
{
    controller->showWindow();
    controller->window()->move(20, 30);
    controller->window()->resize(240, 130);
    EXPECT_TRUE(controller->close());
    Controller other;
    EXPECT_EQ(other.window()->pos(), QPoint(20, 30));
    EXPECT_EQ(other.window()->size(), QSize(240, 130));
}

TEST_F(ZRWindowControllerTest, OwnsTheSelectionThatItIsGiven)
{
    EXPECT_EQ(controller->selection(), nullptr);
    struct Watched : ItemSelection {
        QStringList &log;
        ZRWindowController &controller;
        Watched(QStringList &notes, ZRWindowController &owner)
            : log(notes)
            , controller(owner)
        { }
        ~Watched() override { log.append(controller.selection() == this ? "still set" : "replaced"); }
    };
    QStringList log;
    controller->setSelection(std::make_unique<Watched>(log, *controller));
    EXPECT_EQ(log, QStringList());
    auto next = std::make_unique<ItemSelection>();
    ZRSelection *const raw = next.get();
    controller->setSelection(std::move(next));
    EXPECT_EQ(log, QStringList{QStringLiteral("replaced")}) << "the new one is in place when the former goes";
    EXPECT_EQ(controller->selection(), raw);
    controller->setSelection(nullptr);
    EXPECT_EQ(controller->selection(), nullptr);
}

TEST_F(ZRWindowControllerTest, CopyingASelectionCanBeUndoneAndRedone)
{
    setSelection();
    selection().addItem(a);
    const platform::ObjectSet before = selected();
    ItemSelection other;
    other.addItem(b);
    other.addItem(a);
    changes = 0;
    controller->copySelectionFrom(other);
    const platform::ObjectSet after = selected();
    EXPECT_EQ(after.size(), 2u);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(selection().firstItemOfClass(Item::staticClass()), b);
    for (int round = 0; round < 3; ++round) {
        document.undoManager().undo();
        EXPECT_EQ(selected(), before);
        EXPECT_FALSE(document.undoManager().canUndo());
        document.undoManager().redo();
        EXPECT_EQ(selected(), after);
    }
    EXPECT_EQ(changes, 7) << "one announcement each";
}

TEST_F(ZRWindowControllerTest, WhoIsToldOfTheCopyFindsThatItCanBeUndone)
{
    struct Asking final : ZRSelectionObserver {
        platform::UndoManager *manager = nullptr;
        bool couldUndo = false;
        void selectionDidChange(ZRSelection &) override { couldUndo = manager->canUndo(); }
    } asking;
    asking.manager = &document.undoManager();
    setSelection();
    selection().addObserver(&asking);
    ItemSelection other;
    other.addItem(a);
    controller->copySelectionFrom(other);
    EXPECT_TRUE(asking.couldUndo);
    selection().removeObserver(&asking);
}

TEST_F(ZRWindowControllerTest, TheUndoHoldsASnapshot)
{
    setSelection();
    selection().addItem(a);
    ItemSelection other;
    controller->copySelectionFrom(other);
    selection().addItem(b);
    document.undoManager().undo();
    EXPECT_EQ(selected().size(), 1u);
    EXPECT_TRUE(selection().containsItem(a));
    document.undoManager().redo();
    EXPECT_TRUE(selection().containsItem(b)) << "as it was when it was undone";
}

TEST_F(ZRWindowControllerTest, TheUndoIsDroppedWithTheController)
{
    setSelection();
    controller->copySelectionFrom(ItemSelection());
    document.removeWindowController(controller);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    document.undoManager().undo();
    EXPECT_FALSE(document.undoManager().canRedo());
}

TEST_F(ZRWindowControllerTest, CopiesWithoutADocumentAndNothingWithoutASelection)
{
    ItemSelection other;
    other.addItem(a);
    controller->copySelectionFrom(other);
    EXPECT_FALSE(document.undoManager().canUndo());
    Controller alone;
    alone.setSelection(std::make_unique<ItemSelection>());
    alone.copySelectionFrom(other);
    EXPECT_TRUE(alone.selection()->containsItem(a));
}

TEST_F(ZRWindowControllerTest, ASelectionOfOtherKindsIsRefusedAndChangesNothing)
{
    setSelection();
    selection().addItem(a);
    EXPECT_THROW(controller->copySelectionFrom(ZRSelection()), platform::InternalInconsistency);
    EXPECT_TRUE(selection().containsItem(a));
}

} // namespace
