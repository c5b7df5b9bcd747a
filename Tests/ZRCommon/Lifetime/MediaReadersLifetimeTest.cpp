#include "Support/ThreadShortage.h"
#include "ZRCommon/ReaderTestSupport.h"

#include <QCoreApplication>

#include <thread>

// The readers across the life of application objects. These tests make application objects of their own.
namespace {

/// Keeps the worker of a server busy until the application ends.
struct UnitUntilTheEnd : ZRWorkUnit {
    void processWithServer(ZRProcessServer &) override
    {
        while (!cancelFlag())
            std::this_thread::yield();
    }
};

struct Application {
    int argc = 1;
    char name[5] = "test";
    char *argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
};

template <class Reading>
struct MediaReadersLifetime : testing::Test {
    void readOnTheNextQuestion()
    {
        EXPECT_FALSE(reader->isReading());
        EXPECT_FALSE(reader->readError());
        EXPECT_TRUE(Reading::names(*reader).isEmpty());
        EXPECT_TRUE(reader->isReading());
        EXPECT_TRUE(testSupport::waitUntil([&] { return notifications.count() == 1; }));
        EXPECT_FALSE(reader->isReading());
        EXPECT_TRUE(reader->readError());
    }

    static ZRProcessServer &server() { return ZRProcessServer::processServerWithName(Reading::serverName(), 1); }

    const std::shared_ptr<typename Reading::Reader> reader =
        std::make_shared<typename Reading::Reader>(QStringLiteral("/nowhere"));
    testSupport::NotificationCounter<Reading> notifications;
};

using Readings = testing::Types<testSupport::AlbumReading, testSupport::LibraryReading>;
TYPED_TEST_SUITE(MediaReadersLifetime, Readings);

TYPED_TEST(MediaReadersLifetime, ReadOnlyWhenTheyAreAskedUnderAnApplication)
{
    EXPECT_TRUE(TypeParam::names(*this->reader).isEmpty());
    EXPECT_FALSE(this->reader->isReading());
    const Application application;
    this->readOnTheNextQuestion();
}

TYPED_TEST(MediaReadersLifetime, ReadAnewWhenTheApplicationEndedBeforeTheyWereRead)
{
    {
        const Application application;
        this->server().addWorkUnit(std::make_shared<UnitUntilTheEnd>());
        EXPECT_TRUE(TypeParam::names(*this->reader).isEmpty());
        EXPECT_TRUE(this->reader->isReading());
    }
    EXPECT_FALSE(this->reader->isReading());
    EXPECT_TRUE(TypeParam::names(*this->reader).isEmpty()) << "a question without an application";
    const Application application;
    this->readOnTheNextQuestion();
}

TYPED_TEST(MediaReadersLifetime, ReadAnewWhenTheApplicationEndedBeforeTheyTookTheResult)
{
    {
        const Application application;
        EXPECT_TRUE(TypeParam::names(*this->reader).isEmpty());
        testSupport::BlockingUnit::start(this->server())->release(); // the one worker has read
        EXPECT_TRUE(this->reader->isReading());
    }
    const Application application;
    this->readOnTheNextQuestion();
}

TYPED_TEST(MediaReadersLifetime, KeepWhatTheyHaveReadBeyondTheApplication)
{
    {
        const Application application;
        this->readOnTheNextQuestion();
    }
    EXPECT_TRUE(this->reader->readError());
    const Application application;
    EXPECT_TRUE(TypeParam::names(*this->reader).isEmpty());
    EXPECT_FALSE(this->reader->isReading());
    QCoreApplication::processEvents();
    EXPECT_EQ(this->notifications.count(), 1);
}

TYPED_TEST(MediaReadersLifetime, ReadOnALaterQuestionWhenThereWasNoThreadForIt)
{
    const Application application;
    {
        const testSupport::ThreadShortage shortage;
        testSupport::expectWarning(TypeParam::serverName());
        EXPECT_TRUE(TypeParam::names(*this->reader).isEmpty());
        EXPECT_FALSE(this->reader->isReading());
    }
    this->readOnTheNextQuestion();
}

} // namespace
