#include <Platform/Foundation/NotificationCenter.h>
#include <ZRCommon/iTunesLibraryReader.h>
#include <QCoreApplication>
#include <QTextStream>
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const auto reader = std::make_shared<iTunesLibraryReader>(QString::fromLocal8Bit(argv[1]));
    const auto observation = platform::NotificationCenter::defaultCenter().addObserver(
        [&](const platform::Notification &) {
            QTextStream(stdout) << reader->playlistNames().join(u'\n') << Qt::endl;
            application.quit();
        }, ZRITunesLibraryChangedNotification, reader.get());
    reader->playlistNames(); // starts reading in the background; the notification tells when it is done
    return application.exec();
}
