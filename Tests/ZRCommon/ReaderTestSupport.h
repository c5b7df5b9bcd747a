#pragma once

#include "Platform/Foundation/NotificationCenter.h"
#include "Support/TestSupport.h"
#include "ZRCommon/AlbumReaderWorkUnit_p.h"
#include "ZRCommon/iPhotoAlbumReader.h"
#include "ZRCommon/iTunesLibraryReader.h"
#include "ZRCommon/LibraryReaderWorkUnit_p.h"
#include "ZRFoundation/ZRProcessServer.h"

#include <future>

/// What the tests of the two readers of media databases share.
namespace testSupport {

/// The rules that both readers have in common are tested with each of these.
struct AlbumReading {
    using Reader = iPhotoAlbumReader;
    using WorkUnit = AlbumReaderWorkUnit;
    static constexpr bool keepsWorkUnit = false;
    static QString serverName() { return QStringLiteral("album_reader_server"); }
    static QString notificationName() { return QStringLiteral("ZRIPhotoAlbumChangedNotification"); }
    static QString fileName() { return QStringLiteral("AlbumData.xml"); }
    static QStringList names(Reader &reader) { return reader.albumNames(); }
    static QByteArray emptyDatabase()
    {
        return "<dict><key>List of Albums</key><array/><key>Master Image List</key><dict/></dict>";
    }
    static QString mismatch() { return QStringLiteral(": it holds neither albums nor photos"); }
};

struct LibraryReading {
    using Reader = iTunesLibraryReader;
    using WorkUnit = LibraryReaderWorkUnit;
    static constexpr bool keepsWorkUnit = true;
    static QString serverName() { return QStringLiteral("library_reader_server"); }
    static QString notificationName() { return QStringLiteral("ZRITunesLibraryChangedNotification"); }
    static QString fileName() { return QStringLiteral("iTunes Music Library.xml"); }
    static QStringList names(Reader &reader) { return reader.playlistNames(); }
    static QByteArray emptyDatabase() { return "<dict><key>Playlists</key><array/><key>Tracks</key><dict/></dict>"; }
    static QString mismatch() { return QStringLiteral(": it holds neither playlists nor tracks"); }
};

/// Looks at the readers' work units while a server tells of them.
template <class WorkUnit>
class WorkUnitWatcher : public ZRProcessObserver
{
public:
    void processServerDidEndWorkUnit(ZRProcessServer &, ZRWorkUnit &unit) override
    {
        if (auto *const read = dynamic_cast<WorkUnit *>(&unit)) {
            ++ended;
            last = read->weak_from_this();
            lastWasCancelled = read->cancelFlag();
            lastHadDictionary = read->dictionary() != nullptr;
        }
    }
    int ended = 0;
    std::weak_ptr<ZRWorkUnit> last;
    bool lastWasCancelled = false;
    bool lastHadDictionary = false;
};

/// Keeps the worker of a server busy until it is released, so that a test can look at what happens meanwhile.
class BlockingUnit : public ZRWorkUnit
{
public:
    void processWithServer(ZRProcessServer &) override
    {
        m_started.set_value();
        m_released.get_future().wait();
    }
    static std::shared_ptr<BlockingUnit> start(ZRProcessServer &server)
    {
        auto unit = std::make_shared<BlockingUnit>();
        server.addWorkUnit(unit);
        unit->m_started.get_future().wait();
        return unit;
    }
    void release() { m_released.set_value(); }

private:
    std::promise<void> m_started, m_released;
};

/// The server that the readers of a kind read on, idle, with nothing under way that an earlier test began. A reader was
/// the first to ask for it, so that the server has the number of workers that a reader wants and not the one that is
/// said here.
template <class Reading>
ZRProcessServer &readingServer()
{
    static const auto serverOfAReader = []() -> ZRProcessServer & {
        Reading::names(*std::make_shared<typename Reading::Reader>(QStringLiteral("/nowhere")));
        ZRProcessServer &server = ZRProcessServer::processServerWithName(Reading::serverName(), 9);
        const auto watcher = std::make_shared<WorkUnitWatcher<typename Reading::WorkUnit>>();
        server.addProcessObserver(watcher);
        // The unit of a reader before may end at the same time.
        EXPECT_TRUE(waitUntil([&] { return watcher->ended >= 1; })) << "readers read on another server";
        return server;
    };
    static ZRProcessServer &server = serverOfAReader();
    // The server lets a unit go after all that it and those before it had delivered.
    const auto last = BlockingUnit::start(server);
    last->release();
    EXPECT_TRUE(waitUntil([&] { return last.use_count() == 1; }));
    return server;
}

/// Counts the notifications that readers of a kind post, and looks at the reader that posts one.
template <class Reading>
class NotificationCounter
{
public:
    int count() const { return m_count; }
    /// The reader that posted the last one, which may have died since.
    const typename Reading::Reader *lastSender() const { return m_lastSender; }
    /// Whether that was still reading when it did.
    bool lastSenderWasReading() const { return m_lastSenderWasReading; }

private:
    void count(const platform::Notification &notification)
    {
        ++m_count;
        m_lastSender = notification.object<typename Reading::Reader>();
        m_lastSenderWasReading = m_lastSender && m_lastSender->isReading();
    }

    int m_count = 0;
    const typename Reading::Reader *m_lastSender = nullptr;
    bool m_lastSenderWasReading = false;
    platform::Observation m_observation = platform::NotificationCenter::defaultCenter().addObserver(
        [this](const platform::Notification &notification) { count(notification); }, Reading::notificationName());
};

/// What the tests of one reader stand on: a path for its file, and readers that have read it.
template <class Reading>
class ReaderTest : public testing::Test
{
protected:
    using ReaderPointer = std::shared_ptr<typename Reading::Reader>;

    explicit ReaderTest(const QString &folder)
        : m_folder(folder)
    { }

    /// Has a reader read its file.
    ReaderPointer read(ReaderPointer reader)
    {
        const int before = m_notifications.count();
        EXPECT_TRUE(Reading::names(*reader).isEmpty());
        EXPECT_TRUE(reader->isReading());
        EXPECT_TRUE(waitForNotification(before + 1));
        EXPECT_EQ(m_notifications.lastSender(), reader.get());
        EXPECT_FALSE(m_notifications.lastSenderWasReading());
        EXPECT_FALSE(reader->isReading());
        return reader;
    }
    /// A reader that has read the file.
    ReaderPointer readerOf(const QString &path) { return read(std::make_shared<typename Reading::Reader>(path)); }
    ReaderPointer readerOf(const QByteArray &bytes)
    {
        writeFile(m_path, bytes);
        return readerOf(m_path);
    }
    /// Waits until at least so many notifications were posted.
    [[nodiscard]] bool waitForNotification(int wanted)
    {
        return waitUntil([&] { return m_notifications.count() >= wanted; });
    }

    const QString m_folder;
    const QString m_path = m_folder + QLatin1Char('/') + Reading::fileName();
    NotificationCounter<Reading> m_notifications;
};

} // namespace testSupport
