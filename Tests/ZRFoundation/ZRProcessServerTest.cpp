#include "ZRFoundation/ZRProcessServer.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Support/TestSupport.h"

#include <QCoreApplication>
#include <QThread>

#include <gmock/gmock.h>

#include <future>
#include <stdexcept>

namespace {

using testSupport::waitUntil;

// What happens to the receiver, in order. All on the main thread.
struct Receiver {
    QStringList calls;
    bool onMainThread = true;

    void note(const QString &text)
    {
        calls.append(text);
        onMainThread = onMainThread && QThread::currentThread() == qApp->thread();
    }
    void fail(const QString &text)
    {
        note(text);
        throw std::runtime_error("receiver gave up");
    }
};

struct QtReceiver : QObject {
    int calls = 0;
    void note(int count) { calls += count; }
};

// A unit that does what it is told.
class ScriptedUnit : public ZRWorkUnit
{
public:
    using Script = std::function<void(ScriptedUnit &, ZRProcessServer &)>;
    explicit ScriptedUnit(Script script)
        : m_script(std::move(script))
    { }
    ~ScriptedUnit() override
    {
        if (onDestruction)
            onDestruction();
    }
    void processWithServer(ZRProcessServer &server) override { m_script(*this, server); }

    std::function<void()> onDestruction;

private:
    Script m_script;
};

class ZRProcessServerTest : public testing::Test
{
protected:
    // A server of the running test's own.
    ZRProcessServer &server(int count = 1)
    {
        const auto *test = testing::UnitTest::GetInstance()->current_test_info();
        return ZRProcessServer::processServerWithName(QString::fromUtf8(test->name()), count);
    }
    void add(ScriptedUnit::Script script) { server().addWorkUnit(std::make_shared<ScriptedUnit>(std::move(script))); }
    // Processes everything that was added before.
    void finish()
    {
        bool finished = false;
        const auto last = std::make_shared<std::function<void(int)>>([&](int) { finished = true; });
        add([&](auto &, ZRProcessServer &worker) {
            worker.performSelectorOnObject(last, &std::function<void(int)>::operator(), 0);
        });
        ASSERT_TRUE(waitUntil([&] { return finished; }));
    }

    std::shared_ptr<Receiver> receiver = std::make_shared<Receiver>();
};

TEST_F(ZRProcessServerTest, IsTheOneServerOfItsName)
{
    ZRProcessServer &one = ZRProcessServer::processServerWithName(QStringLiteral("one"), 1);
    EXPECT_EQ(&ZRProcessServer::processServerWithName(QStringLiteral("one"), 3), &one);
    EXPECT_NE(&ZRProcessServer::processServerWithName(QStringLiteral("two"), 1), &one);
    EXPECT_EQ(one.name(), QStringLiteral("one"));
    EXPECT_EQ(one.count(), 1);
}

TEST_F(ZRProcessServerTest, RefusesToBeMadeWithoutWorkers)
{
    EXPECT_THROW(ZRProcessServer::processServerWithName(QStringLiteral("none"), 0), platform::InternalInconsistency);
}

TEST_F(ZRProcessServerTest, RefusesToQueueNothingAndToTellNobody)
{
    EXPECT_THROW(server().addWorkUnit(nullptr), platform::InternalInconsistency);
    EXPECT_THROW(server().addProcessObserver(nullptr), platform::InternalInconsistency);
}

TEST_F(ZRProcessServerTest, ProcessesUnitsOnAWorkerThreadOneAfterTheOther)
{
    std::vector<int> order;
    std::set<std::thread::id> threads;
    for (int i = 0; i < 50; ++i) {
        add([&, i](auto &, auto &) {
            order.push_back(i);
            threads.insert(std::this_thread::get_id());
        });
    }
    finish();
    std::vector<int> expected(50);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order, expected);
    EXPECT_THAT(threads, testing::SizeIs(1));
    EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
}

TEST_F(ZRProcessServerTest, RunsAsManyUnitsAtOnceAsItHasWorkers)
{
    std::promise<void> first, second;
    std::atomic<int> done = 0;
    const auto meet = [&](std::promise<void> &mine, std::promise<void> &other) {
        server(2).addWorkUnit(std::make_shared<ScriptedUnit>([&](auto &, auto &) {
            mine.set_value();
            other.get_future().wait();
            ++done;
        }));
    };
    meet(first, second);
    meet(second, first);
    EXPECT_TRUE(waitUntil([&] { return done == 2; }));
}

TEST_F(ZRProcessServerTest, DeliversOnTheMainThreadInOrder)
{
    add([&](auto &, ZRProcessServer &worker) {
        for (int i = 0; i < 100; ++i)
            worker.performSelectorOnObject(receiver, &Receiver::note, QString::number(i));
    });
    ASSERT_TRUE(waitUntil([&] { return receiver->calls.size() == 100; }));
    EXPECT_TRUE(receiver->onMainThread);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(receiver->calls.at(i), QString::number(i));
}

TEST_F(ZRProcessServerTest, DeliversToSharedWeakAndQtReceivers)
{
    QtReceiver qtReceiver;
    add([&, qtPointer = QPointer(&qtReceiver)](auto &, ZRProcessServer &worker) {
        worker.performSelectorOnObject(receiver, &Receiver::note, QStringLiteral("shared"));
        worker.performSelectorOnObject(std::weak_ptr(receiver), &Receiver::note, QStringLiteral("weak"));
        worker.performSelectorOnObject(qtPointer, &QtReceiver::note, 7);
    });
    finish();
    EXPECT_EQ(receiver->calls, (QStringList{QStringLiteral("shared"), QStringLiteral("weak")}));
    EXPECT_EQ(qtReceiver.calls, 7);
}

TEST_F(ZRProcessServerTest, MayBeAskedToDeliverFromTheMainThread)
{
    server().performSelectorOnObject(receiver, &Receiver::note, QStringLiteral("later"));
    EXPECT_TRUE(receiver->calls.isEmpty());
    EXPECT_TRUE(waitUntil([&] { return !receiver->calls.isEmpty(); }));
}

TEST_F(ZRProcessServerTest, DropsDeliveriesToTheDead)
{
    auto qtReceiver = std::make_unique<QtReceiver>();
    std::promise<void> delivered;
    const auto argument = std::make_shared<int>();
    struct Taker {
        void take(const std::shared_ptr<int> &) { ADD_FAILURE() << "called after death"; }
    };
    auto taker = std::make_shared<Taker>();
    add([&, qtPointer = QPointer(qtReceiver.get()), weak = std::weak_ptr(taker)](auto &, ZRProcessServer &worker) {
        worker.performSelectorOnObject(weak, &Taker::take, argument);
        worker.performSelectorOnObject(qtPointer, &QtReceiver::note, 1);
        delivered.set_value();
    });
    delivered.get_future().wait();
    taker.reset();
    qtReceiver.reset();
    finish();
    EXPECT_EQ(argument.use_count(), 1);
}

TEST_F(ZRProcessServerTest, DoesNotKeepAReceiverAlive)
{
    std::promise<void> delivered;
    add([&](auto &, ZRProcessServer &worker) {
        worker.performSelectorOnObject(receiver, &Receiver::note, QString());
        delivered.set_value();
    });
    delivered.get_future().wait();
    EXPECT_EQ(receiver.use_count(), 1);
    finish();
}

TEST_F(ZRProcessServerTest, LivesOnAfterADeliveryThatThrows)
{
    testSupport::expectWarning(QStringLiteral("receiver gave up"));
    add([&](auto &, ZRProcessServer &worker) {
        worker.performSelectorOnObject(receiver, &Receiver::fail, QStringLiteral("first"));
        worker.performSelectorOnObject(receiver, &Receiver::note, QStringLiteral("second"));
    });
    finish();
    EXPECT_EQ(receiver->calls, (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
}

TEST_F(ZRProcessServerTest, NamesTheUnitAndTheServerWhenAUnitThrowsAndGoesOn)
{
    testSupport::expectWarning(
        QStringLiteral("ScriptedUnit of server \"NamesTheUnitAndTheServerWhenAUnitThrowsAndGoesOn\""
                       ": std::runtime_error: no such library"));
    testSupport::expectWarning(QStringLiteral("an exception of unknown type"));
    add([](auto &, auto &) { throw std::runtime_error("no such library"); });
    add([](auto &, auto &) { throw 17; });
    finish();
}

TEST_F(ZRProcessServerTest, LetsAFinishedUnitGoOnTheMainThreadAfterItsDeliveries)
{
    std::thread::id thread;
    auto unit = std::make_shared<ScriptedUnit>([&](auto &, ZRProcessServer &worker) {
        worker.performSelectorOnObject(receiver, &Receiver::note, QStringLiteral("delivered"));
    });
    unit->onDestruction = [&] {
        thread = std::this_thread::get_id();
        receiver->note(QStringLiteral("let go"));
    };
    server().addWorkUnit(std::move(unit));
    ASSERT_TRUE(waitUntil([&] { return receiver->calls.size() == 2; }));
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_EQ(receiver->calls.last(), QStringLiteral("let go"));
}

TEST_F(ZRProcessServerTest, KeepsAUnitThatIsAnArgumentUntilTheCallHasReturned)
{
    // The nested event loop runs the entry that lets the unit go while the unit is still in use.
    struct Owner {
        bool finished = false;
        bool diedDuringCall = false;
        bool *unitIsDead = nullptr;
        void unitDidLoad(ScriptedUnit *unit)
        {
            ZRProcessServer &own = ZRProcessServer::processServerWithName(QStringLiteral("nested"), 1);
            bool nestedRan = false;
            const auto nested = std::make_shared<std::function<void(int)>>([&](int) { nestedRan = true; });
            own.performSelectorOnObject(nested, &std::function<void(int)>::operator(), 0);
            EXPECT_TRUE(waitUntil([&] { return nestedRan; }));
            diedDuringCall = *unitIsDead;
            EXPECT_FALSE(unit->cancelFlag());
            finished = true;
        }
    };
    bool unitIsDead = false;
    const auto owner = std::make_shared<Owner>();
    owner->unitIsDead = &unitIsDead;
    std::promise<void> delivered;
    auto unit = std::make_shared<ScriptedUnit>([&](ScriptedUnit &self, ZRProcessServer &worker) {
        worker.performSelectorOnObject(owner, &Owner::unitDidLoad, &self);
    });
    unit->onDestruction = [&] { unitIsDead = true; };
    server().addWorkUnit(std::move(unit));
    add([&](auto &, auto &) { delivered.set_value(); });
    delivered.get_future().wait();
    ASSERT_TRUE(waitUntil([&] { return owner->finished; }));
    EXPECT_FALSE(owner->diedDuringCall);
    EXPECT_TRUE(waitUntil([&] { return unitIsDead; }));
}

TEST_F(ZRProcessServerTest, ShowsTheWorkerACancelFlagThatIsSetLater)
{
    std::promise<void> begun;
    bool sawFlag = false;
    const auto unit = std::make_shared<ScriptedUnit>([&](ScriptedUnit &self, auto &) {
        begun.set_value();
        while (!self.cancelFlag())
            std::this_thread::yield();
        sawFlag = true;
    });
    server().addWorkUnit(unit);
    begun.get_future().wait();
    unit->setCancelFlag(true);
    finish();
    EXPECT_TRUE(sawFlag);
}

TEST_F(ZRProcessServerTest, StillProcessesAUnitThatWasCancelledInTheQueue)
{
    bool processed = false;
    const auto unit = std::make_shared<ScriptedUnit>([&](auto &, auto &) { processed = true; });
    unit->setCancelFlag(true);
    server().addWorkUnit(unit);
    finish();
    EXPECT_TRUE(processed);
}

struct Observer : ZRProcessObserver {
    explicit Observer(Receiver &log)
        : receiver(log)
    { }
    void processServerDidBeginWorkUnit(ZRProcessServer &server, ZRWorkUnit &) override
    {
        receiver.note(QStringLiteral("began"));
        serverName = server.name();
    }
    void processServerDidEndWorkUnit(ZRProcessServer &, ZRWorkUnit &) override
    {
        receiver.note(QStringLiteral("ended"));
        if (throws)
            throw std::runtime_error("observer gave up");
    }
    Receiver &receiver;
    QString serverName;
    bool throws = false;
};

TEST_F(ZRProcessServerTest, TellsItsObserversOfBeginAndEndAroundTheDeliveries)
{
    const auto observer = std::make_shared<Observer>(*receiver);
    server().addProcessObserver(observer);
    server().addProcessObserver(observer);
    add([&](auto &, ZRProcessServer &worker) {
        worker.performSelectorOnObject(receiver, &Receiver::note, QStringLiteral("delivered"));
    });
    ASSERT_TRUE(waitUntil([&] { return receiver->calls.size() == 3; }));
    EXPECT_EQ(receiver->calls.join(u' '), QStringLiteral("began delivered ended"));
    EXPECT_TRUE(receiver->onMainThread);
    EXPECT_EQ(observer->serverName, server().name());
}

TEST_F(ZRProcessServerTest, DoesNotKeepObserversAliveAndForgetsTheDead)
{
    auto observer = std::make_shared<Observer>(*receiver);
    server().addProcessObserver(observer);
    EXPECT_EQ(observer.use_count(), 1);
    observer.reset();
    add([](auto &, auto &) {});
    finish();
    EXPECT_TRUE(receiver->calls.isEmpty());
}

TEST_F(ZRProcessServerTest, TellsTheOtherObserversWhenOneThrows)
{
    testSupport::expectWarning(QStringLiteral("observer gave up"));
    const auto first = std::make_shared<Observer>(*receiver);
    const auto second = std::make_shared<Observer>(*receiver);
    first->throws = true;
    server().addProcessObserver(first);
    server().addProcessObserver(second);
    add([](auto &, auto &) {});
    ASSERT_TRUE(waitUntil([&] { return receiver->calls.size() == 4; }));
    EXPECT_EQ(receiver->calls.join(u' '), QStringLiteral("began began ended ended"));
}

TEST_F(ZRProcessServerTest, HasMessagesThatAnObserverNeedNotAnswer)
{
    const auto observer = std::make_shared<ZRProcessObserver>();
    server().addProcessObserver(observer);
    finish();
}

TEST_F(ZRProcessServerTest, DeliversInsideAnEventLoopThatRunsInsideADelivery)
{
    struct Dialog {
        bool closed = false;
        void run(int)
        {
            EXPECT_TRUE(waitUntil([this] { return closed; }));
        }
        void close(int) { closed = true; }
    };
    const auto dialog = std::make_shared<Dialog>();
    add([&](auto &, ZRProcessServer &worker) {
        worker.performSelectorOnObject(dialog, &Dialog::run, 0);
        worker.performSelectorOnObject(dialog, &Dialog::close, 0);
    });
    EXPECT_TRUE(waitUntil([&] { return dialog->closed; }));
    finish();
}

TEST_F(ZRProcessServerTest, TakesUnitsFromItsOwnWorkersAndFromOtherThreads)
{
    std::atomic<int> processed = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 50; ++j) {
                add([&](auto &, ZRProcessServer &worker) {
                    worker.addWorkUnit(std::make_shared<ScriptedUnit>([&](auto &, auto &) { ++processed; }));
                });
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_TRUE(waitUntil([&] { return processed == 200; }));
    finish();
}

} // namespace
