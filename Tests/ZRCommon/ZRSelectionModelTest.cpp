#include "ZRCommon/ZRSelection.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "SelectionTestSupport.h"
#include "Support/IndexSets.h"

#include <array>
#include <optional>
#include <random>

// Any clicks, keys, commands and changes of the document in any order, beside a slow model that says the rules again in
// the plainest way: numbers in vectors, searched from end to end.

namespace {

using testSupport::Items;
using testSupport::MovingSlide;
using testSupport::NumberedItem;
using testSupport::Slide;
using testSupport::Track;

constexpr qint64 notFound = ZRSelectionItemSet::NotFound;
constexpr int kinds = 3, numbers = 9;

using Numbers = std::vector<int>;

bool contains(const Numbers &list, int number)
{
    return std::find(list.cbegin(), list.cend(), number) != list.cend();
}

struct NoItem { };

struct ModelSelection;

struct ModelSet {
    Numbers document, selected;
    std::optional<int> anchor;

    qint64 count() const { return qint64(document.size()); }
    qint64 indexOf(int number) const
    {
        const auto found = std::find(document.cbegin(), document.cend(), number);
        return found == document.cend() ? notFound : found - document.cbegin();
    }
    std::optional<int> at(qint64 index) const
    {
        return index >= 0 && index < count() ? std::optional(document[size_t(index)]) : std::nullopt;
    }
    bool isOnly(std::optional<int> number) const { return selected.size() == 1 && number == selected[0]; }

    Numbers sorted() const
    {
        Numbers result;
        std::copy_if(document.cbegin(), document.cend(), std::back_inserter(result),
                     [&](int number) { return contains(selected, number); });
        return result;
    }
    qint64 lowest() const
    {
        qint64 lowest = count();
        for (const int number : selected)
            lowest = std::min(lowest, indexOf(number));
        return lowest == count() ? notFound : lowest;
    }
    platform::IndexRange range() const
    {
        Numbers indexes;
        for (const int number : selected)
            indexes.push_back(int(indexOf(number)));
        std::sort(indexes.begin(), indexes.end());
        const bool isContiguous = !indexes.empty() && indexes.back() - indexes.front() == int(indexes.size()) - 1;
        return isContiguous ? platform::IndexRange{indexes.front(), qint64(indexes.size())}
                            : platform::IndexRange{notFound, 0};
    }
};

struct ModelSelection {
    std::array<ModelSet, kinds> sets;
    bool isChanged = false;

    void removeAll(int kind)
    {
        sets[size_t(kind)].selected.clear();
        sets[size_t(kind)].anchor.reset();
        isChanged = true;
    }
    void removeAllExcept(int kind)
    {
        for (int other = 0; other < kinds; ++other) {
            if (other != kind)
                removeAll(other);
        }
    }
    void add(int kind, std::optional<int> number)
    {
        if (!number)
            throw NoItem();
        removeAllExcept(kind);
        ModelSet &set = sets[size_t(kind)];
        if (!contains(set.selected, *number))
            set.selected.push_back(*number);
        if (set.selected.size() == 1)
            set.anchor = number;
        isChanged = true;
    }
    void remove(int kind, int number)
    {
        ModelSet &set = sets[size_t(kind)];
        std::erase(set.selected, number);
        if (set.anchor == number)
            set.anchor.reset();
        isChanged = true;
    }
    void toggle(int kind, int number)
    {
        if (contains(sets[size_t(kind)].selected, number))
            remove(kind, number);
        else
            add(kind, number);
    }
    void setSingle(int kind, std::optional<int> number)
    {
        if (sets[size_t(kind)].isOnly(number))
            return;
        removeAllExcept(-1);
        if (number)
            add(kind, number);
    }
    void extend(int kind, int number)
    {
        const ModelSet &set = sets[size_t(kind)];
        const qint64 from = set.indexOf(set.anchor.value_or(number)), to = set.indexOf(number);
        removeAllExcept(-1);
        if (from >= to) {
            for (qint64 i = from; i >= to; --i)
                add(kind, set.at(i));
        } else {
            for (qint64 i = from; i <= to; ++i)
                add(kind, set.at(i));
        }
    }
    void click(int kind, int number, bool shift, bool command)
    {
        const ModelSet &set = sets[size_t(kind)];
        removeAllExcept(kind);
        if (command && set.anchor != number) {
            toggle(kind, number);
        } else if (shift && !set.selected.empty()) {
            extend(kind, number);
        } else {
            if (!set.isOnly(number)) {
                removeAllExcept(-1);
                add(kind, number);
            }
            if (set.isOnly(number))
                isChanged = true;
        }
    }
    void selectAll(int kind)
    {
        ModelSet &set = sets[size_t(kind)];
        if (set.selected.empty())
            return;
        set.selected.clear();
        for (const int number : set.document)
            add(kind, number);
        if (set.selected.empty())
            set.anchor.reset();
        isChanged = true;
    }
    void moveForward(int kind)
    {
        const ModelSet &set = sets[size_t(kind)];
        qint64 highest = -1;
        for (const int number : set.selected)
            highest = std::max(highest, set.indexOf(number));
        if (highest + 1 < set.count())
            setSingle(kind, set.at(highest + 1));
    }
    void moveBackward(int kind)
    {
        const ModelSet &set = sets[size_t(kind)];
        if (const qint64 lowest = set.lowest(); lowest != 0 && lowest != notFound)
            setSingle(kind, set.at(lowest - 1));
    }
    bool aboutToClear(int kind)
    {
        const ModelSet &set = sets[size_t(kind)];
        const qint64 lowest = set.lowest();
        if (set.selected.empty() || lowest == notFound)
            return false;
        for (qint64 i = lowest; i < set.count(); ++i) {
            if (const int number = *set.at(i); !contains(set.selected, number)) {
                removeAll(kind);
                setSingle(kind, number);
                return true;
            }
        }
        return false;
    }
    void validate(int kind)
    {
        for (const int number : Numbers(sets[size_t(kind)].selected)) {
            if (sets[size_t(kind)].indexOf(number) == notFound)
                remove(kind, number);
        }
    }
    void takeOver(const ModelSelection &other)
    {
        for (size_t kind = 0; kind < kinds; ++kind) {
            sets[kind].selected = other.sets[kind].selected;
            sets[kind].anchor = other.sets[kind].anchor;
        }
        isChanged = true;
    }
};

struct Step {
    const char *name;
    std::function<void()> ours, models;
};

/// Does the same to a selection and to the model of it.
class ModelTest : public testing::Test
{
protected:
    ModelTest()
    {
        selection.addKind<MovingSlide>(documents[0]).addKind<Slide>(documents[1]).addKind<Track>(documents[2]);
        selection.addObserver(&observer);
        for (int kind = 0; kind < kinds; ++kind) {
            for (int number = 0; number < numbers; ++number)
                insert(kind, number, number);
        }
        keep();
    }
    int any(int limit) { return int(random() % unsigned(limit)); }
    /// An item that nothing else has, equal to the others of its kind and number.
    static platform::ObjectPointer item(int kind, int number)
    {
        if (kind == 0)
            return std::make_shared<MovingSlide>(number);
        if (kind == 1)
            return std::make_shared<Slide>(number);
        return std::make_shared<Track>(number);
    }
    void insert(int kind, int number, int place)
    {
        Items &items = documents[size_t(kind)];
        items.insert(items.cbegin() + place, item(kind, number));
        Numbers &list = model.sets[size_t(kind)].document;
        list.insert(list.cbegin() + place, number);
    }
    /// What an undo would restore.
    void keep()
    {
        kept = selection.clone();
        keptModel = model;
    }
    void changeDocument(int kind, int number)
    {
        ModelSet &set = model.sets[size_t(kind)];
        Items &items = documents[size_t(kind)];
        if (const qint64 place = set.indexOf(number); place != notFound) {
            set.document.erase(set.document.cbegin() + place);
            items.erase(items.cbegin() + place);
        } else {
            insert(kind, number, any(int(items.size()) + 1));
        }
    }
    Step anyClick(int kind, int number);
    Step anyChange(int kind, int number);
    Step anyStep();
    void compare(size_t kind);

    std::mt19937 random{20060215};
    std::array<Items, kinds> documents;
    testSupport::HostSelection selection;
    testSupport::NotingObserver observer;
    ModelSelection model;
    std::unique_ptr<ZRSelection> kept;
    ModelSelection keptModel;
};

Step ModelTest::anyClick(int kind, int number)
{
    const bool shift = any(2), command = any(3) == 0;
    return {command     ? (shift ? "click with both keys" : "click with the command key")
                : shift ? "shift-click"
                        : "click",
            [=, this] { selection.adjustItemSelection(item(kind, number), shift, command); },
            [=, this] { model.click(kind, number, shift, command); }};
}

Step ModelTest::anyChange(int kind, int number)
{
    switch (any(7)) {
    case 0:
        return {"addItem", [=, this] { selection.addItem(item(kind, number)); },
                [=, this] { model.add(kind, number); }};
    case 1:
        return {"removeItem", [=, this] { selection.removeItem(item(kind, number)); },
                [=, this] { model.remove(kind, number); }};
    case 2:
        return {"toggleSelectionOfItem", [=, this] { selection.toggleSelectionOfItem(item(kind, number)); },
                [=, this] { model.toggle(kind, number); }};
    case 3:
        return {"setSingleSelectedItem", [=, this] { selection.setSingleSelectedItem(item(kind, number)); },
                [=, this] { model.setSingle(kind, number); }};
    case 4:
        return {"extendSelectionToItem", [=, this] { selection.extendSelectionToItem(item(kind, number)); },
                [=, this] { model.extend(kind, number); }};
    case 5:
        return {"removeAllItemsExceptKind",
                [=, this] { selection.removeAllItemsExceptKind(&item(kind, number)->objectClass()); },
                [=, this] { model.removeAllExcept(kind); }};
    default:
        return {"removeAllSelections", [this] { selection.removeAllSelections(); },
                [this] { model.removeAllExcept(-1); }};
    }
}

Step ModelTest::anyStep()
{
    const int kind = any(kinds), number = any(numbers);
    const auto ofEachKind = [this](void (ModelSelection::*operation)(int)) {
        return [this, operation] {
            for (int each = 0; each < kinds; ++each)
                (model.*operation)(each);
        };
    };
    switch (any(16)) {
    case 0:
        return {"selectAll", [this] { selection.selectAll(); }, ofEachKind(&ModelSelection::selectAll)};
    case 1:
        return {"moveForward", [this] { selection.moveForward(); }, ofEachKind(&ModelSelection::moveForward)};
    case 2:
        return {"moveBackward", [this] { selection.moveBackward(); }, ofEachKind(&ModelSelection::moveBackward)};
    case 3:
        return {"aboutToClear", [this] { selection.aboutToClear(); },
                [this] { static_cast<void>(model.aboutToClear(0) || model.aboutToClear(1) || model.aboutToClear(2)); }};
    case 4:
        return {"validateItems",
                [this] {
                    selection.performChanges([this] {
                        for (const auto &set : selection.selectionItemSets())
                            set->validateItems();
                    });
                },
                ofEachKind(&ModelSelection::validate)};
    case 5:
        return {"a change of the document", [=, this] { changeDocument(kind, number); }, [] {}};
    case 6:
        return {"an undo", [this] { selection.copyFrom(*kept); }, [this] { model.takeOver(keptModel); }};
    case 7:
        return {"keeping", [this] { keep(); }, [] {}};
    case 8:
    case 9:
    case 10:
        return anyChange(kind, number);
    default:
        return anyClick(kind, number);
    }
}

Numbers numbersOf(const auto &items)
{
    Numbers result;
    for (const auto &item : items)
        result.push_back(static_cast<const NumberedItem &>(*item).number());
    return result;
}

void ModelTest::compare(size_t kind)
{
    const ZRSelectionItemSet &ours = *selection.selectionItemSets()[kind];
    const ModelSet &models = model.sets[kind];
    Numbers selected = numbersOf(ours.selectedItems()), expected = models.selected;
    std::sort(selected.begin(), selected.end());
    std::sort(expected.begin(), expected.end());
    ASSERT_EQ(selected, expected);
    const auto first = ours.firstItem();
    ASSERT_EQ(first ? std::optional(static_cast<const NumberedItem &>(*first).number()) : std::nullopt, models.anchor);
    ASSERT_TRUE(!first || ours.selectedItems().count(first));
    ASSERT_EQ(numbersOf(ours.sortedItems()), models.sorted());
    ASSERT_EQ(qint64(ours.lowestItemIndex()), models.lowest());
    ASSERT_EQ(ours.selectedItemRange(), models.range());
}

template <class Failure>
bool isFailing(const std::function<void()> &call)
{
    try {
        call();
    } catch (const Failure &) {
        return true;
    }
    return false;
}

TEST_F(ModelTest, AnyOperationsInAnyOrderDoWhatTheRulesSay)
{
    int failures = 0, announcements = 0;
    for (int step = 0; step < 100'000; ++step) {
        const Step next = anyStep();
        model.isChanged = false;
        const bool isModelFailing = isFailing<NoItem>(next.models);
        const bool isExpectedToAnnounce = model.isChanged;
        observer.count = 0;
        const bool isOursFailing = isFailing<platform::InternalInconsistency>(next.ours);
        SCOPED_TRACE(testing::Message() << "step " << step << ", " << next.name);
        ASSERT_EQ(isOursFailing, isModelFailing);
        ASSERT_EQ(observer.count, int(isExpectedToAnnounce));
        for (size_t kind = 0; kind < kinds; ++kind)
            ASSERT_NO_FATAL_FAILURE(compare(kind));
        failures += isOursFailing;
        announcements += observer.count;
    }
    // The steps are worth something only while much happens and little fails.
    EXPECT_GT(announcements, 50'000);
    EXPECT_GT(failures, 100);
    EXPECT_LT(failures, 20'000);
}

} // namespace
