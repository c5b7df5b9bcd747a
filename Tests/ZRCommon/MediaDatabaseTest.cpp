#include "ZRCommon/MediaDatabase_p.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "ReaderTestSupport.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <system_error>
#include <type_traits>

namespace {

/// Allocations of at least so many bytes fail, on every thread.
std::atomic<size_t> failingSize = SIZE_MAX;

/// Ranking the items of the large database allocates more than this at once, reading it does not.
constexpr size_t rankingSize = 300'000;

/// Cancelled by the next allocation of at least that size.
std::atomic<ZRWorkUnit *> unitToCancel = nullptr;

} // namespace

// Not inlined, or the compiler takes malloc and free for a pair that does not match.
[[gnu::noinline]] void *operator new(size_t size)
{
    void *const memory = size < failingSize ? std::malloc(size ? size : 1) : nullptr;
    if (!memory)
        throw std::bad_alloc();
    if (ZRWorkUnit *const unit = size < rankingSize ? nullptr : unitToCancel.exchange(nullptr))
        unit->setCancelFlag(true);
    return memory;
}

[[gnu::noinline]] void *operator new(size_t size, const std::nothrow_t &) noexcept
{
    return size < failingSize ? std::malloc(size ? size : 1) : nullptr;
}

[[gnu::noinline]] void operator delete(void *memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void *memory, size_t) noexcept
{
    std::free(memory);
}

namespace {

using platform::PropertyListView;
using testSupport::AlbumReading;
using testSupport::LibraryReading;

QString pathFor(const QString &name)
{
    return testSupport::homePath() + QLatin1Char('/') + name;
}

/// An album database and a music library at once: one list, called A, and many items.
QByteArray largeDatabase()
{
    QByteArray items;
    for (int i = 0; i < 20'000; ++i)
        items += "<key>" + QByteArray::number(i) + "</key><dict/>";
    return "<dict><key>List of Albums</key><array><dict><key>AlbumName</key><string>A</string></dict></array>"
           "<key>Playlists</key><array><dict><key>Name</key><string>A</string></dict></array>"
           "<key>Master Image List</key><dict>"
        + items + "</dict><key>Tracks</key><dict>" + items + "</dict></dict>";
}

constexpr MediaDatabase::Kind kind{QLatin1String("L"), QLatin1String("T"), QLatin1String("neither L nor T")};

TEST(MediaDatabase, IsEmptyWithAnErrorWhenTheListIsOfAnotherKind)
{
    const QString path = pathFor(QStringLiteral("list.xml"));
    const auto errorOf = [&](const QByteArray &list) {
        testSupport::writeFile(path, list);
        const auto database = MediaDatabase::read(path, kind);
        EXPECT_EQ(database->dictionary.isNull(), database->error.has_value());
        EXPECT_TRUE(!database->error || database->error->code == platform::ErrorCode::Malformed);
        return database->error ? database->error->toString() : QString();
    };
    const QString neither = path + QStringLiteral(": neither L nor T");
    EXPECT_EQ(errorOf("<dict><key>X</key><array/></dict>"), neither);
    EXPECT_EQ(errorOf("<dict><key>L</key><dict/><key>T</key><array/></dict>"), neither);
    EXPECT_EQ(errorOf("<dict><key>L</key><array/><key>T</key><array/></dict>"), QString());
    EXPECT_EQ(errorOf("<dict><key>L</key><dict/><key>T</key><dict/></dict>"), QString());
    EXPECT_EQ(errorOf("<dict/>"), QString()) << "an empty database";
    EXPECT_EQ(errorOf("<array><dict/></array>"), path + QStringLiteral(": the property list is no dictionary"));
    EXPECT_EQ(errorOf("<plist/>"), path + QStringLiteral(": the property list is no dictionary"));
}

TEST(MediaDatabase, FindsTheItemsThatAreAccepted)
{
    const QString path = pathFor(QStringLiteral("list.xml"));
    testSupport::writeFile(path, "<dict><key>T</key><dict><key>1</key><true/><key>2</key><dict/></dict></dict>");
    const auto all = MediaDatabase::read(path, kind);
    EXPECT_FALSE(all->items.value(1).isNull());
    EXPECT_FALSE(all->items.value(2).isNull());
    const auto some = MediaDatabase::read(path, kind, [](const PropertyListView &item) { return item.isDictionary(); });
    EXPECT_TRUE(some->items.value(1).isNull());
    EXPECT_FALSE(some->items.value(2).isNull());
}

TEST(MediaDatabase, IsEmptyWithAnErrorWhateverIsThrownWhileItIsRead)
{
    const QString path = pathFor(QStringLiteral("list.xml"));
    testSupport::writeFile(path, "<dict><key>T</key><dict><key>1</key><dict/></dict></dict>");
    const auto textAfter = [&](const std::function<void()> &fail) {
        const auto database = MediaDatabase::guarded(path, [&] {
            return MediaDatabase::read(path, kind, [&](const PropertyListView &) {
                fail();
                return true;
            });
        });
        EXPECT_TRUE(database->dictionary.isNull());
        EXPECT_TRUE(database->items.value(1).isNull());
        EXPECT_TRUE(database->error && database->error->code == platform::ErrorCode::NotReadable);
        return database->error ? database->error->toString() : QString();
    };
    EXPECT_EQ(textAfter([] { throw std::bad_alloc(); }), path + u": there is not enough memory to read it");
    EXPECT_EQ(textAfter([] { throw std::system_error(EIO, std::generic_category()); }),
              path + u": reading it was broken off");
    EXPECT_EQ(textAfter([] { throw 17; }), path + u": reading it was broken off");
    EXPECT_FALSE(MediaDatabase::guarded(path, [&] { return MediaDatabase::read(path, kind); })->error);
}

template <class Reading>
struct MediaReaders : testSupport::ReaderTest<Reading> {
    MediaReaders()
        : testSupport::ReaderTest<Reading>(testSupport::homePath())
    { }
    std::shared_ptr<typename Reading::Reader> newReader() const
    {
        return std::make_shared<typename Reading::Reader>(this->m_path);
    }

    ZRProcessServer &server = testSupport::readingServer<Reading>();
};

using Readings = testing::Types<AlbumReading, LibraryReading>;
TYPED_TEST_SUITE(MediaReaders, Readings);

TYPED_TEST(MediaReaders, ReadOnTheOneWorkerOfTheirServer)
{
    EXPECT_EQ(this->server.count(), 1);
    const auto block = testSupport::BlockingUnit::start(this->server);
    const auto reader = this->newReader();
    TypeParam::names(*reader);
    block->release();
    const auto watcher = std::make_shared<testSupport::WorkUnitWatcher<typename TypeParam::WorkUnit>>();
    this->server.addProcessObserver(watcher);
    EXPECT_TRUE(testSupport::waitUntil([&] { return watcher->ended == 1; }));
}

TYPED_TEST(MediaReaders, SayThatTheDatabaseOfTheOtherIsNoneOfTheirs)
{
    using Other = std::conditional_t<std::is_same_v<TypeParam, AlbumReading>, LibraryReading, AlbumReading>;
    testSupport::writeFile(this->m_path, Other::emptyDatabase());
    const auto reader = this->newReader();
    TypeParam::names(*reader);
    ASSERT_TRUE(this->waitForNotification(1));
    EXPECT_TRUE(TypeParam::names(*reader).isEmpty());
    ASSERT_TRUE(reader->readError());
    EXPECT_EQ(reader->readError()->toString(), this->m_path + TypeParam::mismatch());

    testSupport::writeFile(this->m_path, TypeParam::emptyDatabase());
    const auto right = this->newReader();
    TypeParam::names(*right);
    ASSERT_TRUE(this->waitForNotification(2));
    EXPECT_TRUE(TypeParam::names(*right).isEmpty());
    EXPECT_FALSE(right->readError()) << "an empty database is no error";
}

TYPED_TEST(MediaReaders, RefuseToReadWhenNoSharedPointerHoldsThem)
{
    typename TypeParam::Reader reader(this->m_path);
    for (int question = 0; question < 2; ++question) {
        try {
            TypeParam::names(reader);
            FAIL();
        } catch (const platform::InternalInconsistency &failure) {
            EXPECT_EQ(failure.description(), u"make readers with std::make_shared");
        }
        EXPECT_FALSE(reader.isReading());
    }
}

TYPED_TEST(MediaReaders, ObserveTheirServer)
{
    struct ObservingReader : TypeParam::Reader {
        using TypeParam::Reader::Reader;
        void processServerDidEndWorkUnit(ZRProcessServer &, ZRWorkUnit &) override { ++ended; }
        int ended = 0;
    };
    const auto reader = std::make_shared<ObservingReader>(this->m_path);
    TypeParam::names(*reader);
    EXPECT_TRUE(testSupport::waitUntil([&] { return reader->ended == 1; }));
}

TYPED_TEST(MediaReaders, CancelTheirReadingWhenTheyDieBeforeItsEnd)
{
    testSupport::writeFile(this->m_path, "<dict/>");
    const auto watcher = std::make_shared<testSupport::WorkUnitWatcher<typename TypeParam::WorkUnit>>();
    this->server.addProcessObserver(watcher);
    const auto block = testSupport::BlockingUnit::start(this->server);
    TypeParam::names(*this->newReader());
    block->release();
    ASSERT_TRUE(testSupport::waitUntil([&] { return watcher->ended == 1; }));
    EXPECT_TRUE(watcher->lastWasCancelled);
    EXPECT_FALSE(watcher->lastHadDictionary) << "a cancelled unit reads nothing";
}

TYPED_TEST(MediaReaders, ReadNothingOnceCancelledAndTellNobody)
{
    testSupport::writeFile(this->m_path, "<dict/>");
    const auto reader = this->newReader();
    const auto unit = std::make_shared<typename TypeParam::WorkUnit>(std::weak_ptr(reader), this->m_path);
    unit->setCancelFlag(true);
    unit->processWithServer(this->server);
    EXPECT_FALSE(unit->dictionary());
    TypeParam::names(*reader);
    ASSERT_TRUE(this->waitForNotification(1));
    EXPECT_EQ(this->m_notifications.count(), 1);
    unit->setCancelFlag(false);
    unit->processWithServer(this->server);
    EXPECT_TRUE(unit->dictionary());
    EXPECT_TRUE(this->waitForNotification(2));
}

TYPED_TEST(MediaReaders, KeepTheirWorkUnitForTheirLifeOrLetItGoWhenItIsDone)
{
    testSupport::writeFile(this->m_path, "<dict/>");
    const auto watcher = std::make_shared<testSupport::WorkUnitWatcher<typename TypeParam::WorkUnit>>();
    this->server.addProcessObserver(watcher);
    auto reader = this->newReader();
    TypeParam::names(*reader);
    ASSERT_TRUE(testSupport::waitUntil([&] { return watcher->ended == 1; }));
    const std::weak_ptr<ZRWorkUnit> unit = watcher->last;
    // The server lets a unit go before it tells of the next.
    const auto next = this->newReader();
    TypeParam::names(*next);
    ASSERT_TRUE(testSupport::waitUntil([&] { return watcher->ended == 2; }));
    EXPECT_EQ(unit.use_count(), TypeParam::keepsWorkUnit ? 1 : 0);
    reader.reset();
    EXPECT_TRUE(unit.expired());
}

TYPED_TEST(MediaReaders, AreEmptyWithAnErrorWhenTheMemoryDoesNotSuffice)
{
    testSupport::writeFile(this->m_path, largeDatabase());
    const auto reader = this->newReader();
    failingSize = 100'000;
    TypeParam::names(*reader);
    const bool isTold = this->waitForNotification(1);
    failingSize = SIZE_MAX;
    ASSERT_TRUE(isTold);
    EXPECT_FALSE(reader->isReading());
    EXPECT_TRUE(TypeParam::names(*reader).isEmpty());
    ASSERT_TRUE(reader->readError());
    EXPECT_EQ(reader->readError()->toString(), this->m_path + u": there is not enough memory to read it");

    const auto next = this->newReader();
    TypeParam::names(*next);
    ASSERT_TRUE(this->waitForNotification(2));
    EXPECT_EQ(TypeParam::names(*next), QStringList(QStringLiteral("A")));
}

struct SongRanking : MediaReaders<LibraryReading> {
    SongRanking() { testSupport::writeFile(m_path, largeDatabase()); }
};

TEST_F(SongRanking, FollowsTheHandingOverSoThatALibraryComesEvenIfItFails)
{
    testSupport::expectWarning(QStringLiteral("std::bad_alloc"));
    const auto reader = newReader();
    failingSize = rankingSize;
    LibraryReading::names(*reader);
    const bool isTold = waitForNotification(1);
    testSupport::BlockingUnit::start(server)->release(); // the one worker has ended what it had begun
    failingSize = SIZE_MAX;
    ASSERT_TRUE(isTold);
    EXPECT_FALSE(reader->readError());
    EXPECT_EQ(reader->playlistNames(), QStringList(QStringLiteral("A")));
    const auto list = platform::PropertyList::parse(
        "<array><dict><key>Name</key><string>b</string></dict><dict><key>Name</key><string>A</string></dict></array>");
    const SongList songs{list.value().at(0), list.value().at(1)};
    const SongList sorted = reader->songsSorted(songs, iTunesSortingForZR::Column::Song, Qt::AscendingOrder);
    EXPECT_EQ(sorted, SongList({songs[1], songs[0]}));
}

TEST_F(SongRanking, StopsBeforeTheNextColumnWhenItIsCancelled)
{
    const auto unit = std::make_shared<LibraryReaderWorkUnit>(std::weak_ptr<iTunesLibraryReader>(), m_path);
    unitToCancel = unit.get();
    unit->processWithServer(server);
    EXPECT_EQ(unitToCancel.exchange(nullptr), nullptr);
    EXPECT_TRUE(unit->dictionary());
    EXPECT_FALSE(unit->dictionary()->error);
    EXPECT_FALSE(unit->songRanks());
    unit->setCancelFlag(false);
    unit->processWithServer(server);
    EXPECT_TRUE(unit->songRanks());
}

} // namespace
