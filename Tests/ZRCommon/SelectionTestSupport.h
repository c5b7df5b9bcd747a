#pragma once

#include "Platform/Foundation/NotificationCenter.h"
#include "ZRCommon/ZRSelection.h"

#include <QStringList>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace testSupport {

/// What a host's code does wrong, on demand: each call of an override or of an item's equality may raise.
struct HostCalls {
    struct Failure : std::runtime_error {
        Failure()
            : runtime_error("from the host")
        { }
    };
    /// So many calls go well, and the one after them raises; never when negative.
    inline static int untilFailure = -1;
    static void note()
    {
        if (untilFailure >= 0 && untilFailure-- == 0)
            throw Failure();
    }
};

/// An item with a name such as A3. Equal to another of its class with that number.
class NumberedItem : public platform::Object
{
    ZR_OBJECT(NumberedItem, platform::Object)
public:
    NumberedItem(char letter, int number)
        : m_letter(letter)
        , m_number(number)
    { }
    int number() const { return m_number; }
    QString name() const { return QLatin1Char(m_letter) + QString::number(m_number); }
    bool isEqual(const Object &other) const override
    {
        HostCalls::note();
        return objectClass() == other.objectClass() && static_cast<const NumberedItem &>(other).m_number == m_number;
    }
    size_t hash() const override
    {
        HostCalls::note();
        return size_t(m_number);
    }

private:
    char m_letter;
    int m_number;
};

class Slide : public NumberedItem
{
    ZR_OBJECT(Slide, NumberedItem)
public:
    explicit Slide(int number, char letter = 'A')
        : NumberedItem(letter, number)
    { }
};

class MovingSlide : public Slide
{
    ZR_OBJECT(MovingSlide, Slide)
public:
    explicit MovingSlide(int number)
        : Slide(number, 'M')
    { }
};

class Track : public NumberedItem
{
    ZR_OBJECT(Track, NumberedItem)
public:
    explicit Track(int number)
        : NumberedItem('B', number)
    { }
};

using Items = std::vector<platform::ObjectPointer>;

template <class Item>
Items makeItems(int count)
{
    Items items;
    for (int i = 0; i < count; ++i)
        items.push_back(std::make_shared<Item>(i));
    return items;
}

inline QString nameOf(const platform::ObjectPointer &item)
{
    return item ? static_cast<const NumberedItem &>(*item).name() : QString();
}

template <class List>
QStringList namesOf(const List &items)
{
    QStringList names;
    for (const auto &item : items)
        names.append(nameOf(item));
    return names;
}

/// "A3 A5"
inline QString sortedNames(const platform::ObjectSet &items)
{
    QStringList names = namesOf(items);
    names.sort();
    return names.join(u' ');
}

/// The item set of a host that keeps the items of a kind in a list.
template <class Item>
class ListedItemSet : public ZRSelectionItemSet
{
public:
    explicit ListedItemSet(const Items &items)
        : m_items(&items)
    { }
    std::unique_ptr<ZRSelectionItemSet> clone() const override { return std::make_unique<ListedItemSet>(*this); }
    const platform::ObjectClass *itemClass() const override
    {
        HostCalls::note();
        return &Item::staticClass();
    }
    quint32 absoluteItemCount() const override
    {
        HostCalls::note();
        return quint32(m_items->size());
    }
    quint32 absoluteIndexOfItem(const platform::ObjectPointer &item) const override
    {
        HostCalls::note();
        const auto found = std::find_if(m_items->cbegin(), m_items->cend(), [&](const platform::ObjectPointer &other) {
            return platform::areEqual(item.get(), other.get());
        });
        return found == m_items->cend() ? NotFound : quint32(found - m_items->cbegin());
    }
    platform::ObjectPointer itemAtAbsoluteIndex(quint32 index) const override
    {
        HostCalls::note();
        return index < m_items->size() ? (*m_items)[index] : nullptr;
    }

private:
    const Items *m_items;
};

/// A selection of a host, whose hook does what it is told.
class HostSelection : public ZRSelection
{
public:
    /// Adds an item set for a list.
    template <class Item>
    HostSelection &addKind(const Items &items)
    {
        selectionItemSets().push_back(std::make_unique<ListedItemSet<Item>>(items));
        setDocument(document());
        return *this;
    }
    std::unique_ptr<ZRSelection> clone() const override { return std::make_unique<HostSelection>(*this); }

    std::function<void()> hook;

protected:
    void didChangeSelection() override
    {
        if (hook)
            hook();
    }
};

/// Counts, notes its name in a list, if it has one, and then does what it is told.
class NotingObserver : public ZRSelectionObserver
{
public:
    explicit NotingObserver(QStringList *calls = nullptr, const QString &name = {})
        : m_calls(calls)
        , m_name(name)
    { }
    void selectionDidChange(ZRSelection &selection) override
    {
        ++count;
        told = &selection;
        if (m_calls)
            m_calls->append(m_name);
        if (reaction)
            reaction(selection);
    }

    int count = 0;
    const ZRSelection *told = nullptr;
    std::function<void(ZRSelection &)> reaction;

private:
    QStringList *m_calls;
    QString m_name;
};

/// Slides A0 to A9 and tracks B0 to B9, and a selection of both that is observed.
class SelectionTest : public testing::Test
{
protected:
    SelectionTest()
    {
        selection->addKind<Slide>(slides).addKind<Track>(tracks);
        selection->addObserver(&observer);
    }
    ~SelectionTest() override { HostCalls::untilFailure = -1; }

    const platform::ObjectPointer &a(int number) const { return slides.at(size_t(number)); }
    const platform::ObjectPointer &b(int number) const { return tracks.at(size_t(number)); }
    ZRSelectionItemSet &slideSet() { return selection->selectionItemSetForClass(Slide::staticClass()); }
    ZRSelectionItemSet &trackSet() { return selection->selectionItemSetForClass(Track::staticClass()); }

    void select(std::initializer_list<int> numbers)
    {
        selection->removeAllSelections();
        for (const int number : numbers)
            selection->addItem(a(number));
    }
    void click(int number) { selection->adjustItemSelection(a(number), false, false); }
    void shiftClick(int number) { selection->adjustItemSelection(a(number), true, false); }
    void commandClick(int number) { selection->adjustItemSelection(a(number), false, true); }
    void takeFromDocument(int number) { slides.erase(slides.cbegin() + number); }

    /// How often the observer is told of what a call changes.
    int announcementsOf(const std::function<void()> &call)
    {
        const int before = observer.count;
        call();
        return observer.count - before;
    }
    QString selected() { return sortedNames(slideSet().selectedItems()); }
    QString selectedTracks() { return sortedNames(trackSet().selectedItems()); }
    QString anchor() { return nameOf(slideSet().firstItem()); }
    /// Whether no batch is left open: one batch with a change is announced once.
    bool isBalanced()
    {
        return announcementsOf([&] { selection->performChanges([&] { selection->markChange(); }); }) == 1;
    }

    Items slides = makeItems<Slide>(10);
    Items tracks = makeItems<Track>(10);
    std::unique_ptr<HostSelection> selection = std::make_unique<HostSelection>();
    NotingObserver observer;
};

} // namespace testSupport
