#include "Platform/Foundation/MainThreadQueue.h"

#include "Support/TestSupport.h"

#include <QCoreApplication>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

namespace {

using platform::MainThreadQueue;
using testSupport::waitUntil;

Q_LOGGING_CATEGORY(testLog, "zr.test")

void post(std::function<void()> call)
{
    MainThreadQueue::post(testLog(), std::move(call));
}

TEST(MainThreadQueue, IsOpenWhileAnApplicationExists)
{
    EXPECT_TRUE(MainThreadQueue::isOpen());
}

TEST(MainThreadQueue, MakesCallsFromTheEventLoopInTheirOrder)
{
    std::vector<int> made;
    for (int i = 0; i < 100; ++i)
        post([&, i] { made.push_back(i); });
    EXPECT_TRUE(made.empty());
    ASSERT_TRUE(waitUntil([&] { return made.size() == 100; }));
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(made[size_t(i)], i);
}

TEST(MainThreadQueue, MakesCallsOfOtherThreadsOnTheMainThread)
{
    constexpr int threadCount = 4, callCount = 200;
    int made = 0; // not atomic: only the main thread counts
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < callCount; ++j)
                post([&] { ++made; });
        });
    }
    EXPECT_TRUE(waitUntil([&] { return made == threadCount * callCount; }));
    for (std::thread &thread : threads)
        thread.join();
}

TEST(MainThreadQueue, DestroysACallOnTheMainThreadRightAfterItWasMade)
{
    const auto held = std::make_shared<int>();
    long usersInCall = 0, usersInNext = 0;
    std::thread([&] {
        post([&, held] { usersInCall = held.use_count(); });
        post([&] { usersInNext = held.use_count(); });
    }).join();
    ASSERT_TRUE(waitUntil([&] { return usersInNext > 0; }));
    EXPECT_EQ(usersInCall, 2);
    EXPECT_EQ(usersInNext, 1);
}

TEST(MainThreadQueue, MakesWaitingCallsInAnEventLoopInsideACall)
{
    // Both calls wait before the loop begins, and nothing else wakes it.
    bool innerMade = false, outerReturned = false;
    post([&] {
        EXPECT_TRUE(waitUntil([&] { return innerMade; }));
        outerReturned = true;
    });
    post([&] {
        EXPECT_FALSE(outerReturned);
        innerMade = true;
    });
    EXPECT_TRUE(waitUntil([&] { return outerReturned; }));
}

TEST(MainThreadQueue, LogsWhatACallThrowsAndGoesOn)
{
    testSupport::expectWarning(QStringLiteral("call on the main thread: std::runtime_error: gave up"));
    bool made = false;
    post([] { throw std::runtime_error("gave up"); });
    post([&] { made = true; });
    EXPECT_TRUE(waitUntil([&] { return made; }));
}

} // namespace
