// Selections of 100,000 items and of 1,000 observers, beside plain virtual calls, a plain set, and QItemSelectionModel.

#include "BenchmarkSupport.h"
#include "ZRCommon/ZRSelection.h"

#include <QItemSelectionModel>
#include <QStringListModel>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <numeric>
#include <random>

using benchmarkSupport::require;
using benchmarkSupport::Stopwatch;

namespace {

constexpr int observerCount = 1'000, itemCount = 100'000, rounds = 1'000;

/// An item that knows its place.
class Item : public platform::Object
{
    ZR_OBJECT(Item, platform::Object)
public:
    explicit Item(quint32 place)
        : m_place(place)
    { }
    quint32 place() const { return m_place; }

private:
    quint32 m_place;
};

class OtherItem : public Item
{
    ZR_OBJECT(OtherItem, Item)
public:
    using Item::Item;
};

using Items = std::vector<platform::ObjectPointer>;

template <class Kind>
Items makeItems(int count)
{
    Items items;
    for (int i = 0; i < count; ++i)
        items.push_back(std::make_shared<Kind>(quint32(i)));
    return items;
}

template <class Kind>
class PlacedItemSet : public ZRSelectionItemSet
{
public:
    explicit PlacedItemSet(const Items &items)
        : m_items(items)
    { }
    std::unique_ptr<ZRSelectionItemSet> clone() const override { return std::make_unique<PlacedItemSet>(*this); }
    const platform::ObjectClass *itemClass() const override { return &Kind::staticClass(); }
    quint32 absoluteItemCount() const override { return quint32(m_items.size()); }
    quint32 absoluteIndexOfItem(const platform::ObjectPointer &item) const override
    {
        return static_cast<const Item &>(*item).place();
    }
    platform::ObjectPointer itemAtAbsoluteIndex(quint32 index) const override
    {
        return index < m_items.size() ? m_items[index] : nullptr;
    }

private:
    const Items &m_items;
};

struct CountingObserver : ZRSelectionObserver {
    qint64 count = 0;
};
/// Two classes, so that the compiler cannot guess which one a virtual call will reach.
template <int Step>
struct SteppingObserver : CountingObserver {
    qint64 steps = 0;
    void selectionDidChange(ZRSelection &) override
    {
        ++count;
        steps += Step;
    }
};

/// A selection of two kinds.
struct Selected {
    explicit Selected(int count = itemCount)
        : items(makeItems<Item>(count))
        , others(makeItems<OtherItem>(count))
    {
        selection.selectionItemSets().push_back(std::make_unique<PlacedItemSet<OtherItem>>(others));
        selection.selectionItemSets().push_back(std::make_unique<PlacedItemSet<Item>>(items));
        selection.setDocument(nullptr);
    }
    quint32 selectedCount() const { return selection.selectedItemCountOfClass(Item::staticClass()); }

    Items items, others;
    ZRSelection selection;
};

std::vector<std::unique_ptr<CountingObserver>> makeObservers()
{
    std::vector<std::unique_ptr<CountingObserver>> observers;
    for (int i = 0; i < observerCount; i += 2) {
        observers.push_back(std::make_unique<SteppingObserver<1>>());
        observers.push_back(std::make_unique<SteppingObserver<2>>());
    }
    return observers;
}

void requireCounts(const std::vector<std::unique_ptr<CountingObserver>> &observers, qint64 expected)
{
    require(std::all_of(observers.cbegin(), observers.cend(),
                        [&](const auto &observer) { return observer->count == expected; }),
            "an observer was told too often or too seldom");
}

// A thousand times each: what is told to all observers.

void broadcast(benchmark::State &state)
{
    const auto observers = makeObservers();
    ZRSelection selection;
    for (const auto &observer : observers)
        selection.addObserver(observer.get());
    for (auto _ : state) {
        const Stopwatch watch;
        for (int i = 0; i < rounds; ++i) {
            selection.beginChanges();
            selection.markChange();
            selection.endChanges();
        }
        state.SetIterationTime(watch.seconds());
    }
    requireCounts(observers, qint64(state.iterations()) * rounds);
}

void virtualCalls(benchmark::State &state)
{
    const auto observers = makeObservers();
    std::vector<ZRSelectionObserver *> list;
    for (const auto &observer : observers)
        list.push_back(observer.get());
    ZRSelection selection;
    for (auto _ : state) {
        const Stopwatch watch;
        for (int i = 0; i < rounds; ++i) {
            for (ZRSelectionObserver *observer : list)
                observer->selectionDidChange(selection);
        }
        state.SetIterationTime(watch.seconds());
    }
    requireCounts(observers, qint64(state.iterations()) * rounds);
}

// A thousand clicks on one item after the other, each told to all observers.

void click(benchmark::State &state)
{
    Selected selected;
    const auto observers = makeObservers();
    for (const auto &observer : observers)
        selected.selection.addObserver(observer.get());
    for (auto _ : state) {
        const Stopwatch watch;
        for (int i = 0; i < rounds; ++i)
            selected.selection.adjustItemSelection(selected.items[size_t(i * 97)], false, false);
        state.SetIterationTime(watch.seconds());
    }
    require(selected.selectedCount() == 1, "another selection");
    requireCounts(observers, qint64(state.iterations()) * rounds);
}

/// A list of the same length with Qt's selection model.
struct PeerSelected {
    PeerSelected()
    {
        QStringList texts;
        texts.resize(itemCount);
        list.setStringList(texts);
    }
    QStringListModel list;
    QItemSelectionModel selection{&list};
};

void peerClick(benchmark::State &state)
{
    PeerSelected selected;
    const auto observers = makeObservers();
    for (const auto &observer : observers) {
        QObject::connect(&selected.selection, &QItemSelectionModel::selectionChanged,
                         [told = observer.get()] { ++told->count; });
    }
    for (auto _ : state) {
        selected.selection.clearSelection();
        for (const auto &observer : observers)
            observer->count = 0;
        const Stopwatch watch;
        for (int i = 0; i < rounds; ++i)
            selected.selection.select(selected.list.index(i * 97), QItemSelectionModel::ClearAndSelect);
        state.SetIterationTime(watch.seconds());
        requireCounts(observers, rounds);
    }
}

// Scattered items, one after the other, without observers.

std::vector<int> scatteredPlaces()
{
    std::vector<int> places(itemCount);
    std::iota(places.begin(), places.end(), 0);
    std::shuffle(places.begin(), places.end(), std::mt19937(3));
    places.resize(2'000);
    return places;
}

void addScattered(benchmark::State &state)
{
    Selected selected;
    const std::vector<int> places = scatteredPlaces();
    for (auto _ : state) {
        selected.selection.removeAllSelections();
        const Stopwatch watch;
        for (const int place : places)
            selected.selection.addItem(selected.items[size_t(place)]);
        state.SetIterationTime(watch.seconds());
        require(selected.selectedCount() == places.size(), "another selection");
    }
}

void peerAddScattered(benchmark::State &state)
{
    PeerSelected selected;
    const std::vector<int> places = scatteredPlaces();
    for (auto _ : state) {
        selected.selection.clearSelection();
        const Stopwatch watch;
        for (const int place : places)
            selected.selection.select(selected.list.index(place), QItemSelectionModel::Select);
        state.SetIterationTime(watch.seconds());
        require(selected.selection.selectedIndexes().size() == qsizetype(places.size()), "another selection");
    }
}

// All items

void selectAll(benchmark::State &state)
{
    const int count = int(state.range(0));
    Selected selected(count);
    // The other kind has held as many, which must not be felt.
    selected.selection.addItem(selected.others.front());
    selected.selection.selectAll();
    for (auto _ : state) {
        selected.selection.setSingleSelectedItem(selected.items.front());
        const Stopwatch watch;
        selected.selection.selectAll();
        state.SetIterationTime(watch.seconds());
        require(selected.selectedCount() == quint32(count), "another selection");
    }
}

/// The least that this can cost: the items inserted in a set that has room for them.
void peerSelectAll(benchmark::State &state)
{
    const Items items = makeItems<Item>(itemCount);
    platform::ObjectSet set;
    for (auto _ : state) {
        set.clear();
        const Stopwatch watch;
        for (const auto &item : items)
            set.insert(item);
        state.SetIterationTime(watch.seconds());
        require(set.size() == items.size(), "another set");
    }
}

benchmark::internal::Benchmark *add(const char *name, void (*figure)(benchmark::State &))
{
    return benchmark::RegisterBenchmark(name, figure)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(9);
}

} // namespace

int main(int argc, char **argv)
{
    add("Broadcast", broadcast);
    add("PeerBroadcast", virtualCalls);
    add("Click", click);
    add("PeerClick", peerClick);
    add("AddScattered", addScattered);
    add("PeerAddScattered", peerAddScattered);
    add("SelectAll", selectAll)->Arg(1'000)->Arg(itemCount);
    add("PeerSelectAll", peerSelectAll);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
