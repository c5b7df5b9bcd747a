#include "Platform/Foundation/NotificationCenter.h"

#include "Platform/Foundation/AssertionHandler.h"

#include <QThread>

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <new>
#include <stdexcept>
#include <thread>

namespace {

using platform::Notification;
using platform::NotificationCenter;
using platform::NotificationObject;
using platform::Observation;

const QString didChange = QStringLiteral("DidChangeNotification");
const QString willClose = QStringLiteral("WillCloseNotification");

struct Sender : QObject { };
struct PlainSender {
    int value = 0;
};

// Base classes at different addresses within one object.
struct Left {
    virtual ~Left() = default;
    int left = 0;
};
struct Right {
    virtual ~Right() = default;
    int right = 0;
};
struct Both : Left, Right { };

struct Observer : QObject {
    int told = 0;
    QString lastName;
    void changed(const Notification &notification)
    {
        ++told;
        lastName = notification.name();
    }
};

class NotificationCenterTest : public testing::Test
{
protected:
    // A handler that notes the text.
    NotificationCenter::Handler noting(const QString &text)
    {
        return [this, text](const Notification &) { calls.append(text); };
    }

    std::unique_ptr<NotificationCenter> ownCenter = std::make_unique<NotificationCenter>();
    NotificationCenter &center = *ownCenter;
    QStringList calls;
};

TEST_F(NotificationCenterTest, HasADefaultAndAWorkspaceInstanceThatShareNothing)
{
    const Observation observation = NotificationCenter::defaultCenter().addObserver(noting(QStringLiteral("default")));
    NotificationCenter::workspaceCenter().postNotification(didChange);
    EXPECT_TRUE(calls.isEmpty());
    NotificationCenter::defaultCenter().postNotification(didChange);
    EXPECT_EQ(calls.size(), 1);
}

TEST_F(NotificationCenterTest, TakesAPostThatNobodyListensTo)
{
    center.postNotification(didChange);
    const Observation observation = center.addObserver(noting({}), willClose);
    center.postNotification(didChange);
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(NotificationCenterTest, FiltersByNameAndSender)
{
    Sender mine, other;
    const Observation byName = center.addObserver(noting(QStringLiteral("name")), didChange);
    const Observation bySender = center.addObserver(noting(QStringLiteral("sender")), {}, &mine);
    const Observation byBoth = center.addObserver(noting(QStringLiteral("both")), didChange, &mine);
    const Observation byNone = center.addObserver(noting(QStringLiteral("none")));
    const auto postedTo = [&](const QString &name, const NotificationObject &object) {
        calls.clear();
        center.postNotification(name, object);
        return calls.join(u' ');
    };
    EXPECT_EQ(postedTo(didChange, &mine), QStringLiteral("name sender both none"));
    EXPECT_EQ(postedTo(didChange, &other), QStringLiteral("name none"));
    EXPECT_EQ(postedTo(didChange, {}), QStringLiteral("name none"));
    EXPECT_EQ(postedTo(willClose, &mine), QStringLiteral("sender none"));
    EXPECT_EQ(postedTo(willClose, &other), QStringLiteral("none"));
    EXPECT_EQ(postedTo({}, {}), QStringLiteral("none"));
}

TEST_F(NotificationCenterTest, TellsInTheOrderOfRegisteringWhateverTheFilters)
{
    std::vector<Observation> observations;
    for (int i = 0; i < 20; ++i)
        observations.push_back(center.addObserver(noting(QString::number(i)), i % 3 ? didChange : QString()));
    center.postNotification(didChange);
    ASSERT_EQ(calls.size(), 20);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(calls.at(i), QString::number(i));
}

TEST_F(NotificationCenterTest, FiltersByAValueThatIsEqual)
{
    const Observation observation =
        center.addObserver(noting(QStringLiteral("told")), didChange, QStringLiteral("/Music"));
    center.postNotification(didChange, QStringLiteral("/Mus") + QStringLiteral("ic"));
    EXPECT_EQ(calls.size(), 1);
    center.postNotification(didChange, QStringLiteral("/Photos"));
    center.postNotification(didChange);
    EXPECT_EQ(calls.size(), 1);
}

TEST_F(NotificationCenterTest, CarriesItsNameAndAnObjectOrAValue)
{
    Sender sender;
    PlainSender plain;
    Sender *expectedSender = nullptr;
    PlainSender *expectedPlain = nullptr;
    QVariant expectedValue;
    const Observation observation = center.addObserver([&](const Notification &notification) {
        calls.append(notification.name());
        EXPECT_EQ(notification.object<Sender>(), expectedSender);
        EXPECT_EQ(notification.object<QObject>(), expectedSender);
        EXPECT_EQ(notification.object<QThread>(), nullptr);
        EXPECT_EQ(notification.object<PlainSender>(), expectedPlain);
        EXPECT_EQ(notification.isAbout(&sender), expectedSender != nullptr);
        EXPECT_EQ(notification.isAbout(&plain), expectedPlain != nullptr);
        EXPECT_EQ(notification.value(), expectedValue);
    });
    expectedSender = &sender;
    center.postNotification(didChange, &sender);
    expectedSender = nullptr;
    expectedPlain = &plain;
    center.postNotification(willClose, &plain);
    expectedPlain = nullptr;
    expectedValue = QStringLiteral("/path");
    center.postNotification(willClose, QStringLiteral("/path"));
    EXPECT_EQ(calls, (QStringList{didChange, willClose, willClose}));
}

TEST_F(NotificationCenterTest, KnowsAnObjectByWhateverBaseClassItIsPointedTo)
{
    Both both;
    ASSERT_NE(static_cast<void *>(static_cast<Left *>(&both)), static_cast<void *>(static_cast<Right *>(&both)));
    const Observation observation = center.addObserver(
        [&](const Notification &notification) {
            EXPECT_EQ(notification.object<Right>(), &both);
            EXPECT_EQ(notification.object<Left>(), nullptr) << "posted as another type";
            calls.append(notification.name());
        },
        didChange, static_cast<Left *>(&both));
    center.postNotification(didChange, static_cast<Right *>(&both));
    EXPECT_EQ(calls.size(), 1);
}

TEST_F(NotificationCenterTest, TakesANullObjectAsNothing)
{
    const Sender *const none = nullptr;
    EXPECT_TRUE(NotificationObject(const_cast<Sender *>(none)).isNothing());
    EXPECT_TRUE(NotificationObject().isNothing());
    EXPECT_FALSE(NotificationObject(QStringLiteral("/path")).isNothing());
    EXPECT_FALSE(NotificationObject(0) == NotificationObject());
}

TEST_F(NotificationCenterTest, RefusesToRegisterNothing)
{
    EXPECT_THROW(center.addObserver(static_cast<QObject *>(nullptr), noting({})), platform::InternalInconsistency);
    EXPECT_THROW((void)center.addObserver(nullptr), platform::InternalInconsistency);
}

TEST_F(NotificationCenterTest, CallsAMemberFunctionOfAQObject)
{
    Observer observer;
    center.addObserver(&observer, &Observer::changed, didChange);
    center.postNotification(didChange);
    center.postNotification(willClose);
    EXPECT_EQ(observer.told, 1);
    EXPECT_EQ(observer.lastName, didChange);
}

TEST_F(NotificationCenterTest, TellsTwiceWhoRegisteredTwice)
{
    Observer observer;
    center.addObserver(&observer, &Observer::changed, didChange);
    center.addObserver(&observer, &Observer::changed, didChange);
    center.postNotification(didChange);
    EXPECT_EQ(observer.told, 2);
}

TEST_F(NotificationCenterTest, EndsARegistrationWithItsQObject)
{
    {
        Observer observer;
        center.addObserver(&observer, noting(QStringLiteral("told")));
        center.postNotification(didChange);
    }
    center.postNotification(didChange);
    EXPECT_EQ(calls.size(), 1);
}

TEST_F(NotificationCenterTest, DoesNotCallAMemberFunctionOfAnObjectThatIsHalfDestroyed)
{
    struct Poster : QObject {
        explicit Poster(NotificationCenter &used)
            : center(used)
        { }
        ~Poster() override { center.postNotification(didChange); }
        NotificationCenter &center;
    };
    struct Derived : Poster {
        Derived(NotificationCenter &used, int &count)
            : Poster(used)
            , told(count)
        { }
        void changed(const Notification &) { ++told; }
        int &told;
    };
    int told = 0;
    {
        Derived derived(center, told);
        center.addObserver(&derived, &Derived::changed);
        center.postNotification(didChange);
        EXPECT_EQ(told, 1);
    }
    EXPECT_EQ(told, 1);
}

TEST_F(NotificationCenterTest, EndsARegistrationWithItsObservation)
{
    Observation outer;
    {
        Observation observation = center.addObserver(noting(QStringLiteral("told")));
        center.postNotification(didChange);
        outer = std::move(observation);
    }
    center.postNotification(didChange);
    EXPECT_EQ(calls.size(), 2);
    outer.end();
    outer.end();
    center.postNotification(didChange);
    EXPECT_EQ(calls.size(), 2);
}

TEST_F(NotificationCenterTest, EndsTheOldRegistrationWhenAnObservationIsReplaced)
{
    Observation observation = center.addObserver(noting(QStringLiteral("old")));
    observation = center.addObserver(noting(QStringLiteral("new")));
    center.postNotification(didChange);
    EXPECT_EQ(calls, QStringList(QStringLiteral("new")));
}

TEST_F(NotificationCenterTest, MayDieBeforeItsObserversAndObservations)
{
    Observer observer;
    center.addObserver(&observer, &Observer::changed);
    const auto kept = std::make_shared<int>();
    const Observation observation = center.addObserver([kept](const Notification &) {});
    ownCenter.reset();
    EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(NotificationCenterTest, RemovesAllRegistrationsOfAnObserver)
{
    Observer observer, other;
    Sender sender;
    center.addObserver(&observer, &Observer::changed);
    center.addObserver(&observer, &Observer::changed, didChange, &sender);
    center.addObserver(&other, &Observer::changed);
    center.removeObserver(&observer);
    center.removeObserver(&observer);
    center.postNotification(didChange, &sender);
    EXPECT_EQ(observer.told, 0);
    EXPECT_EQ(other.told, 1);
}

TEST_F(NotificationCenterTest, RemovesTheRegistrationsOfAnObserverThatMatch)
{
    Observer observer;
    Sender one, two;
    for (Sender *sender : {&one, &two}) {
        center.addObserver(&observer, &Observer::changed, didChange, sender);
        center.addObserver(&observer, &Observer::changed, willClose, sender);
    }
    const auto toldOf = [&](const QString &name, Sender *sender) {
        observer.told = 0;
        center.postNotification(name, sender);
        return observer.told == 1;
    };
    center.removeObserver(&observer, didChange, &one);
    EXPECT_FALSE(toldOf(didChange, &one));
    EXPECT_TRUE(toldOf(didChange, &two));
    center.removeObserver(&observer, willClose);
    EXPECT_FALSE(toldOf(willClose, &one));
    EXPECT_FALSE(toldOf(willClose, &two));
    EXPECT_TRUE(toldOf(didChange, &two));
    center.removeObserver(&observer, {}, &two);
    EXPECT_FALSE(toldOf(didChange, &two));
}

TEST_F(NotificationCenterTest, ForgetsWhatAHandlerHoldsWhenTheRegistrationEnds)
{
    const auto held = std::make_shared<int>();
    Observation observation = center.addObserver([held](const Notification &) {});
    EXPECT_EQ(held.use_count(), 2);
    observation.end();
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(NotificationCenterTest, KeepsWhatAHandlerHoldsUntilTheHandlerThatEndedItsRegistrationReturns)
{
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> watched = held;
    Observation observation;
    bool wasThereAfterTheEnd = false;
    observation = center.addObserver(
        [held = std::move(held), &observation, &watched, &wasThereAfterTheEnd](const Notification &) {
            const auto &stillWatched = watched; // what is captured may be gone behind the next line, were it forgotten
            auto &wasThere = wasThereAfterTheEnd;
            observation.end();
            wasThere = !stillWatched.expired();
        });
    center.postNotification(didChange);
    EXPECT_TRUE(wasThereAfterTheEnd);
}

TEST_F(NotificationCenterTest, DoesNotTakeAnotherQObjectAtTheSameAddressForADeadSender)
{
    alignas(Sender) std::byte memory[sizeof(Sender)];
    auto *sender = new (memory) Sender;
    Observer observer;
    center.addObserver(&observer, &Observer::changed, didChange, sender);
    center.postNotification(didChange, sender);
    sender->~Sender();
    sender = new (memory) Sender;
    center.postNotification(didChange, sender);
    EXPECT_EQ(observer.told, 1);
    sender->~Sender();
}

// Changes during delivery

TEST_F(NotificationCenterTest, DoesNotTellWhoWasRemovedDuringTheDelivery)
{
    Observation second;
    Observation first = center.addObserver([&](const Notification &) {
        calls.append(QStringLiteral("first"));
        first.end();
        second.end();
    });
    second = center.addObserver(noting(QStringLiteral("second")));
    const Observation third = center.addObserver(noting(QStringLiteral("third")));
    center.postNotification(didChange);
    center.postNotification(didChange);
    EXPECT_EQ(calls.join(u' '), QStringLiteral("first third third"));
}

TEST_F(NotificationCenterTest, TellsWhoWasAddedDuringTheDeliveryOfTheNextOne)
{
    std::vector<Observation> added;
    const Observation first = center.addObserver([&](const Notification &) {
        if (added.empty())
            added.push_back(center.addObserver(noting(QStringLiteral("added"))));
    });
    center.postNotification(didChange);
    EXPECT_TRUE(calls.isEmpty());
    center.postNotification(didChange);
    EXPECT_EQ(calls.size(), 1);
}

TEST_F(NotificationCenterTest, DeliversANestedNotificationBeforeTheOuterGoesOn)
{
    const Observation first =
        center.addObserver([&](const Notification &) { center.postNotification(willClose); }, didChange);
    const Observation second =
        center.addObserver([&](const Notification &notification) { calls.append(notification.name()); });
    center.postNotification(didChange);
    EXPECT_EQ(calls, (QStringList{willClose, didChange}));
}

TEST_F(NotificationCenterTest, PassesAnExceptionOnToThePosterAndStaysUsable)
{
    bool throws = true;
    const Observation first = center.addObserver([&](const Notification &) {
        if (throws)
            throw std::runtime_error("observer gave up");
    });
    const Observation second = center.addObserver(noting(QStringLiteral("second")));
    EXPECT_THROW(center.postNotification(didChange), std::runtime_error);
    EXPECT_TRUE(calls.isEmpty());
    throws = false;
    center.postNotification(didChange);
    EXPECT_EQ(calls.size(), 1);
}

TEST_F(NotificationCenterTest, SurvivesObserversThatDestroyThemselvesAndOthers)
{
    auto other = std::make_unique<Observer>();
    auto *suicide = new QObject;
    center.addObserver(suicide, [&, suicide](const Notification &) {
        calls.append(QStringLiteral("suicide"));
        delete suicide;
        other.reset();
    });
    center.addObserver(other.get(), noting(QStringLiteral("other")));
    const Observation last = center.addObserver(noting(QStringLiteral("last")));
    center.postNotification(didChange);
    center.postNotification(didChange);
    EXPECT_EQ(calls.join(u' '), QStringLiteral("suicide last last"));
}

TEST_F(NotificationCenterTest, ShowsNoSenderThatDiedDuringTheDelivery)
{
    auto sender = std::make_unique<Sender>();
    Sender *const address = sender.get();
    const Observation first = center.addObserver([&](const Notification &) { sender.reset(); });
    const Observation filtered = center.addObserver(noting(QStringLiteral("filtered")), didChange, address);
    const Observation last = center.addObserver([&](const Notification &notification) {
        calls.append(QStringLiteral("last"));
        EXPECT_EQ(notification.object<Sender>(), nullptr);
        EXPECT_EQ(notification.object<QObject>(), nullptr);
        EXPECT_FALSE(notification.isAbout(address));
    });
    center.postNotification(didChange, address);
    EXPECT_EQ(calls, QStringList(QStringLiteral("last")));
}

TEST_F(NotificationCenterTest, MayBeDestroyedDuringADelivery)
{
    const Observation first = center.addObserver([&](const Notification &) { ownCenter.reset(); });
    const Observation second = center.addObserver(noting(QStringLiteral("second")));
    center.postNotification(didChange);
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(NotificationCenterTest, MayBeDestroyedDuringADeliveryThatNothingElseRefersTo)
{
    // Without an observation, which would keep some of the centre's memory.
    QObject observer;
    center.addObserver(&observer, [&](const Notification &) { ownCenter.reset(); });
    center.addObserver(&observer, noting(QStringLiteral("second")));
    center.postNotification(didChange);
    EXPECT_TRUE(calls.isEmpty());
}

// Threads

TEST_F(NotificationCenterTest, CallsObserversOnThePostingThread)
{
    std::thread::id thread;
    const Observation observation = center.addObserver(
        [&](const Notification &) { thread = std::this_thread::get_id(); }, didChange, QStringLiteral("/path"));
    std::thread poster([&] { center.postNotification(didChange, QStringLiteral("/path")); });
    const auto posterId = poster.get_id();
    poster.join();
    EXPECT_EQ(thread, posterId);
}

TEST_F(NotificationCenterTest, EndsARegistrationOnlyWhenNoOtherThreadIsCallingIt)
{
    std::promise<void> called, mayReturn;
    std::atomic<bool> returned = false;
    Observation observation = center.addObserver([&](const Notification &) {
        called.set_value();
        mayReturn.get_future().wait();
        returned = true;
    });
    std::thread poster([&] { center.postNotification(didChange); });
    called.get_future().wait();
    std::thread releaser([&] { mayReturn.set_value(); });
    observation.end();
    EXPECT_TRUE(returned);
    poster.join();
    releaser.join();
}

TEST_F(NotificationCenterTest, MayBeUsedByManyThreadsAtOnce)
{
    std::atomic<bool> finished = false;
    std::atomic<int> told = 0;
    std::vector<std::thread> posters;
    for (int i = 0; i < 3; ++i) {
        posters.emplace_back([&] {
            while (!finished)
                center.postNotification(didChange, QStringLiteral("/path"));
        });
    }
    for (int i = 0; i < 300 || told == 0; ++i) {
        bool alive = true; // not atomic: nobody may call once the registration has ended
        const Observation any = center.addObserver([&](const Notification &) { ++told; });
        Observation observation = center.addObserver(
            [&](const Notification &) {
                EXPECT_TRUE(alive);
                ++told;
            },
            didChange, QStringLiteral("/path"));
        observation.end();
        alive = false;
    }
    finished = true;
    for (std::thread &poster : posters)
        poster.join();
}

} // namespace
