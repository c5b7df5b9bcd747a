#include "ZRFoundation/ZRProcessServer.h"

#include "Support/TestSupport.h"
#include "Support/ThreadShortage.h"

#include <QCoreApplication>

#include <future>
#include <stdexcept>

// The servers across the life of application objects. These tests make application objects of their own.
namespace {

struct Application {
    int argc = 1;
    char name[5] = "test";
    char *argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
};

ZRProcessServer &server()
{
    return ZRProcessServer::processServerWithName(QStringLiteral("lifetime"), 1);
}

struct Counter {
    std::atomic<int> processed = 0;
    int delivered = 0;
    int letGo = 0;
    bool letGoOnMainThread = true;
    const std::thread::id mainThread = std::this_thread::get_id();
    void count(int) { ++delivered; }
};

class CountingUnit : public ZRWorkUnit
{
public:
    explicit CountingUnit(std::shared_ptr<Counter> counter)
        : m_counter(std::move(counter))
    { }
    ~CountingUnit() override
    {
        ++m_counter->letGo;
        m_counter->letGoOnMainThread =
            m_counter->letGoOnMainThread && std::this_thread::get_id() == m_counter->mainThread;
    }
    void processWithServer(ZRProcessServer &server) override
    {
        ++m_counter->processed;
        if (m_begun)
            m_begun->set_value();
        while (m_begun && !cancelFlag())
            std::this_thread::yield();
        server.performSelectorOnObject(m_counter, &Counter::count, 0);
    }
    /// Has the unit work until it is cancelled.
    std::future<void> workUntilCancelled()
    {
        m_begun.emplace();
        return m_begun->get_future();
    }

private:
    std::shared_ptr<Counter> m_counter;
    std::optional<std::promise<void>> m_begun;
};

TEST(ZRProcessServerLifetime, EndsWithTheApplicationAndWorksAgainWithTheNext)
{
    for (int run = 0; run < 3; ++run) {
        const auto counter = std::make_shared<Counter>();
        {
            const Application application;
            EXPECT_TRUE(server().addWorkUnit(std::make_shared<CountingUnit>(counter)));
            ASSERT_TRUE(testSupport::waitUntil([&] { return counter->letGo == 1; }));
            EXPECT_EQ(counter->delivered, 1);
        }
        EXPECT_FALSE(server().addWorkUnit(std::make_shared<CountingUnit>(counter)));
        EXPECT_EQ(counter->processed, 1);
        EXPECT_EQ(counter->letGo, 2);
    }
}

TEST(ZRProcessServerLifetime, CancelsRunningUnitsAndDropsQueuedOnesAndDeliveriesAtTheEnd)
{
    const auto counter = std::make_shared<Counter>();
    std::vector<std::shared_ptr<CountingUnit>> kept;
    {
        const Application application;
        auto running = std::make_shared<CountingUnit>(counter);
        std::future<void> begun = running->workUntilCancelled();
        server().addWorkUnit(std::move(running));
        for (int i = 0; i < 10; ++i)
            server().addWorkUnit(std::make_shared<CountingUnit>(counter));
        kept.push_back(std::make_shared<CountingUnit>(counter));
        server().addWorkUnit(kept.back());
        begun.wait();
    }
    EXPECT_EQ(counter->processed, 1);
    EXPECT_EQ(counter->delivered, 0);
    EXPECT_EQ(counter->letGo, 11);
    EXPECT_TRUE(counter->letGoOnMainThread);
    EXPECT_TRUE(kept.back()->cancelFlag());
    EXPECT_EQ(kept.back().use_count(), 1);
}

TEST(ZRProcessServerLifetime, TellsItsObserversOnceItHasEndedAndNothingElseAfterThat)
{
    struct Observer : ZRProcessObserver {
        void processServerDidBeginWorkUnit(ZRProcessServer &, ZRWorkUnit &) override { ++units; }
        void processServerDidEndWorkUnit(ZRProcessServer &, ZRWorkUnit &) override { ++units; }
        void processServerDidEnd(ZRProcessServer &ended) override
        {
            ++ends;
            EXPECT_EQ(&ended, &server());
            EXPECT_EQ(unit.use_count(), 1) << "the worker and the queue have let it go";
            EXPECT_FALSE(ended.addWorkUnit(unit));
            throw std::runtime_error("seen");
        }
        std::shared_ptr<CountingUnit> unit = std::make_shared<CountingUnit>(std::make_shared<Counter>());
        int units = 0, ends = 0;
    };
    const auto first = std::make_shared<Observer>(), second = std::make_shared<Observer>();
    server().addProcessObserver(first);
    server().addProcessObserver(second);
    for (int run = 1; run <= 2; ++run) {
        {
            const Application application;
            QCoreApplication::processEvents();
            auto running = std::make_shared<CountingUnit>(std::make_shared<Counter>());
            std::future<void> begun = running->workUntilCancelled();
            server().addWorkUnit(std::move(running));
            server().addWorkUnit(first->unit);
            server().addWorkUnit(second->unit);
            begun.wait();
            for (int i = 0; i < 2; ++i)
                testSupport::expectWarning(QStringLiteral("seen"));
        }
        EXPECT_EQ(first->ends, run);
        EXPECT_EQ(second->ends, run) << "what another observer throws keeps nobody from being told";
    }
    EXPECT_EQ(first->units, 0) << "the next application finds nothing of what was under way";
}

TEST(ZRProcessServerLifetime, LetsGoOfAUnitThatIsAddedWhileTheApplicationEnds)
{
    // A queued unit that is dropped at the end adds another one.
    struct AddingUnit : CountingUnit {
        using CountingUnit::CountingUnit;
        ~AddingUnit() override { server().addWorkUnit(std::move(next)); }
        std::shared_ptr<ZRWorkUnit> next;
    };
    const auto counter = std::make_shared<Counter>();
    {
        const Application application;
        auto running = std::make_shared<CountingUnit>(counter);
        std::future<void> begun = running->workUntilCancelled();
        server().addWorkUnit(std::move(running));
        auto adding = std::make_shared<AddingUnit>(counter);
        adding->next = std::make_shared<CountingUnit>(counter);
        server().addWorkUnit(std::move(adding));
        begun.wait();
    }
    EXPECT_EQ(counter->processed, 1);
    EXPECT_EQ(counter->letGo, 3);
}

TEST(ZRProcessServerLifetime, LetsAUnitGoWhenThereIsNoThreadToBeHadAndWorksOnceThereIs)
{
    const Application application;
    const auto counter = std::make_shared<Counter>();
    {
        const testSupport::ThreadShortage shortage;
        testSupport::expectWarning(QStringLiteral("adding to server \"lifetime\": std::system_error: "));
        EXPECT_FALSE(server().addWorkUnit(std::make_shared<CountingUnit>(counter)));
        EXPECT_EQ(counter->letGo, 1);
    }
    EXPECT_TRUE(server().addWorkUnit(std::make_shared<CountingUnit>(counter)));
    EXPECT_TRUE(testSupport::waitUntil([&] { return counter->letGo == 2; }));
    EXPECT_EQ(counter->processed, 1);
}

TEST(ZRProcessServerLifetime, GoesOnWithTheWorkersThatItHas)
{
    const Application application;
    ZRProcessServer &two = ZRProcessServer::processServerWithName(QStringLiteral("two workers"), 2);
    const auto counter = std::make_shared<Counter>();
    const testSupport::ThreadShortage shortage(1);
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(two.addWorkUnit(std::make_shared<CountingUnit>(counter)));
    EXPECT_TRUE(testSupport::waitUntil([&] { return counter->letGo == 2; }));
    EXPECT_EQ(counter->processed, 2);
}

TEST(ZRProcessServerLifetime, DropsADeliveryThatIsAskedForWithoutAnApplication)
{
    const auto counter = std::make_shared<Counter>();
    server().performSelectorOnObject(counter, &Counter::count, 0);
    const Application application;
    QCoreApplication::processEvents();
    EXPECT_EQ(counter->delivered, 0);
    EXPECT_EQ(counter.use_count(), 1);
}

} // namespace
