#include "ZRFoundation/ZRObserverList.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {

struct Observer {
    virtual ~Observer() = default;
    virtual void didChange(int value) = 0;
    virtual void didSwap(const QString &, const QString &) { }
};

// Notes its name and the value, then does what it is told.
struct NotingObserver : Observer {
    NotingObserver(QStringList &callList, const QString &ownName)
        : calls(callList)
        , name(ownName)
    { }
    void didChange(int value) override
    {
        calls.append(name + QString::number(value));
        if (reaction)
            reaction();
    }
    void didSwap(const QString &one, const QString &other) override { calls.append(one + other); }

    QStringList &calls;
    QString name;
    std::function<void()> reaction;
};

class ZRObserverListTest : public testing::Test
{
protected:
    void SetUp() override
    {
        for (NotingObserver *observer : {&a, &b, &c})
            list->addObserver(observer);
    }
    QString broadcast(int value)
    {
        list->makeObjectsPerformSelector(&Observer::didChange, value);
        return calls.join(u' ');
    }

    QStringList calls;
    std::optional<ZRObserverList<Observer>> list{std::in_place};
    NotingObserver a{calls, QStringLiteral("a")};
    NotingObserver b{calls, QStringLiteral("b")};
    NotingObserver c{calls, QStringLiteral("c")};
};

TEST_F(ZRObserverListTest, TellsAllInTheOrderInWhichTheyWereAdded)
{
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 b1 c1"));
}

TEST_F(ZRObserverListTest, TellsNobodyWhenItIsEmpty)
{
    ZRObserverList<Observer> empty;
    empty.makeObjectsPerformSelector(&Observer::didChange, 1);
    empty.removeObserver(&a);
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(ZRObserverListTest, HandsTheSameArgumentsToEach)
{
    list->makeObjectsPerformSelector(&Observer::didSwap, QStringLiteral("x"), QStringLiteral("y"));
    EXPECT_EQ(calls.join(u' '), QStringLiteral("xy xy xy"));
}

TEST_F(ZRObserverListTest, KeepsAnObserverThatIsAddedTwiceOnceAndInItsPlace)
{
    list->addObserver(&a);
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 b1 c1"));
    calls.clear();
    list->removeObserver(&a);
    EXPECT_EQ(broadcast(2), QStringLiteral("b2 c2"));
}

TEST_F(ZRObserverListTest, RemovesAnObserverAndIgnoresOneThatItDoesNotHold)
{
    list->removeObserver(&b);
    list->removeObserver(&b);
    list->removeObserver(nullptr);
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 c1"));
}

TEST_F(ZRObserverListTest, RefusesToAddNothing)
{
    EXPECT_THROW(list->addObserver(nullptr), platform::InternalInconsistency);
    EXPECT_THROW((void)list->observe(nullptr), platform::InternalInconsistency);
}

// Changes during delivery

TEST_F(ZRObserverListTest, LetsAnObserverRemoveItself)
{
    a.reaction = [this] { list->removeObserver(&a); };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 b1 c1"));
    EXPECT_EQ(broadcast(2), QStringLiteral("a1 b1 c1 b2 c2"));
}

TEST_F(ZRObserverListTest, DoesNotTellAnObserverThatAnotherRemoved)
{
    a.reaction = [this] { list->removeObserver(&b); };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 c1"));
    EXPECT_EQ(broadcast(2), QStringLiteral("a1 c1 a2 c2"));
}

TEST_F(ZRObserverListTest, SurvivesAnObserverThatDestroysAnother)
{
    auto doomed = std::make_unique<NotingObserver>(calls, QStringLiteral("doomed"));
    list->addObserver(doomed.get());
    c.reaction = [&] {
        list->removeObserver(doomed.get());
        doomed.reset();
    };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 b1 c1"));
}

TEST_F(ZRObserverListTest, TellsAllOthersWhenOneThatWasToldIsRemoved)
{
    b.reaction = [this] { list->removeObserver(&a); };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 b1 c1"));
    EXPECT_EQ(broadcast(2), QStringLiteral("a1 b1 c1 b2 c2"));
}

TEST_F(ZRObserverListTest, TellsAnObserverThatWasAddedMeanwhileOfTheNextMessage)
{
    NotingObserver late(calls, QStringLiteral("late"));
    a.reaction = [&] { list->addObserver(&late); };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 b1 c1"));
    calls.clear();
    EXPECT_EQ(broadcast(2), QStringLiteral("a2 b2 c2 late2"));
}

TEST_F(ZRObserverListTest, TellsAnObserverThatWasRemovedAndAddedAgainOfTheNextMessage)
{
    a.reaction = [this] {
        list->removeObserver(&b);
        list->addObserver(&b);
        a.reaction = nullptr;
    };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 c1"));
    calls.clear();
    EXPECT_EQ(broadcast(2), QStringLiteral("a2 c2 b2"));
}

TEST_F(ZRObserverListTest, GrowsDuringADeliveryWithoutLosingItsPlace)
{
    std::vector<std::unique_ptr<NotingObserver>> many;
    a.reaction = [&] {
        for (int i = 0; i < 1000; ++i) {
            many.push_back(std::make_unique<NotingObserver>(calls, QStringLiteral("x")));
            list->addObserver(many.back().get());
        }
        a.reaction = nullptr;
    };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 b1 c1"));
    broadcast(2);
    EXPECT_EQ(calls.size(), 3 + 3 + 1000);
}

TEST_F(ZRObserverListTest, DeliversANestedMessageToAllBeforeTheOuterGoesOn)
{
    a.reaction = [this] {
        a.reaction = nullptr;
        broadcast(2);
    };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 a2 b2 c2 b1 c1"));
}

TEST_F(ZRObserverListTest, RemembersRemovalsOfANestedDeliveryInTheOuter)
{
    a.reaction = [this] {
        a.reaction = nullptr;
        broadcast(2);
    };
    b.reaction = [this] { list->removeObserver(&b); };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 a2 b2 c2 c1"));
    calls.clear();
    EXPECT_EQ(broadcast(3), QStringLiteral("a3 c3"));
}

TEST_F(ZRObserverListTest, TellsAnObserverAddedInTheOuterDeliveryOfTheNestedMessage)
{
    NotingObserver late(calls, QStringLiteral("late"));
    a.reaction = [&] {
        a.reaction = nullptr;
        list->addObserver(&late);
        broadcast(2);
    };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 a2 b2 c2 late2 b1 c1"));
}

TEST_F(ZRObserverListTest, MayBeDestroyedDuringADelivery)
{
    a.reaction = [this] { list.reset(); };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1"));
}

TEST_F(ZRObserverListTest, MayBeDestroyedDuringANestedDelivery)
{
    a.reaction = [this] {
        a.reaction = [this] { list.reset(); };
        broadcast(2);
    };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 a2"));
}

TEST_F(ZRObserverListTest, EndsTheDeliveryWithTheExceptionOfAnObserverAndStaysUsable)
{
    b.reaction = [this] {
        list->removeObserver(&a);
        throw std::runtime_error("observer gave up");
    };
    EXPECT_THROW(broadcast(1), std::runtime_error);
    EXPECT_EQ(calls.join(u' '), QStringLiteral("a1 b1"));
    b.reaction = nullptr;
    calls.clear();
    EXPECT_EQ(broadcast(2), QStringLiteral("b2 c2"));
}

// Observations

TEST_F(ZRObserverListTest, TellsAnObserverAsLongAsItsObservationLives)
{
    NotingObserver watched(calls, QStringLiteral("w"));
    {
        const platform::Observation observation = list->observe(&watched);
        EXPECT_EQ(broadcast(1), QStringLiteral("a1 b1 c1 w1"));
    }
    calls.clear();
    EXPECT_EQ(broadcast(2), QStringLiteral("a2 b2 c2"));
}

TEST_F(ZRObserverListTest, LeavesAnObserverThatWasThereBeforeTheObservation)
{
    list->observe(&a).end();
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 b1 c1"));
}

TEST_F(ZRObserverListTest, MayDieBeforeItsObservations)
{
    NotingObserver watched(calls, QStringLiteral("w"));
    platform::Observation observation = list->observe(&watched);
    list.reset();
    observation.end();
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(ZRObserverListTest, EndsAnObservationDuringADelivery)
{
    NotingObserver watched(calls, QStringLiteral("w"));
    platform::Observation observation = list->observe(&watched);
    a.reaction = [&] { observation.end(); };
    EXPECT_EQ(broadcast(1), QStringLiteral("a1 b1 c1"));
}

} // namespace
