#include "Platform/Foundation/MainThreadQueue.h"

#include <QCoreApplication>

#include <memory>

#include <gtest/gtest.h>

// The queue across the life of application objects. These tests make application objects of their own.
namespace {

using platform::MainThreadQueue;

Q_LOGGING_CATEGORY(testLog, "zr.test")

struct Application {
    int argc = 1;
    char name[5] = "test";
    char *argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
};

int closings = 0;
bool wasOpenWhileClosing = true;
bool madeFromClosing = false;

void noteClosing()
{
    ++closings;
    wasOpenWhileClosing = MainThreadQueue::isOpen();
    MainThreadQueue::post(testLog(), [] { madeFromClosing = true; });
}

TEST(MainThreadQueueLifetime, IsOpenFromTheApplicationsBeginToItsEnd)
{
    EXPECT_FALSE(MainThreadQueue::isOpen());
    for (int run = 0; run < 2; ++run) {
        {
            const Application application;
            EXPECT_TRUE(MainThreadQueue::isOpen());
            bool made = false;
            MainThreadQueue::post(testLog(), [&] { made = true; });
            QCoreApplication::processEvents();
            EXPECT_TRUE(made);
        }
        EXPECT_FALSE(MainThreadQueue::isOpen());
    }
}

TEST(MainThreadQueueLifetime, DropsCallsWithoutAnApplication)
{
    const auto held = std::make_shared<int>();
    MainThreadQueue::post(testLog(), [held] { ADD_FAILURE() << "was made"; });
    EXPECT_EQ(held.use_count(), 1);
    const Application application;
    QCoreApplication::processEvents();
}

TEST(MainThreadQueueLifetime, DropsWaitingCallsAtTheEndAlsoThoseThatPostMore)
{
    // Posts one more call while it is dropped.
    struct Poster {
        ~Poster()
        {
            MainThreadQueue::post(testLog(), [] { ADD_FAILURE() << "was made"; });
        }
    };
    const auto held = std::make_shared<int>();
    {
        const Application application;
        MainThreadQueue::post(testLog(), [held, poster = std::make_shared<Poster>()] { ADD_FAILURE() << "was made"; });
    }
    EXPECT_EQ(held.use_count(), 1);
    const Application application;
    QCoreApplication::processEvents();
}

TEST(MainThreadQueueLifetime, RunsTheClosingRoutinesAtEachEnd)
{
    MainThreadQueue::addClosingRoutine(noteClosing);
    for (int run = 1; run <= 2; ++run) {
        {
            const Application application;
            EXPECT_EQ(closings, run - 1);
        }
        EXPECT_EQ(closings, run);
        EXPECT_FALSE(wasOpenWhileClosing);
    }
    EXPECT_FALSE(madeFromClosing);
}

} // namespace
