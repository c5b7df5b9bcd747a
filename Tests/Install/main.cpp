#include <Platform/Foundation/NotificationCenter.h>
#include <ZRCommon/iTunesLibraryReader.h>
#include <QCoreApplication>
#include <QTextStream>
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2)
        return 2;
    const auto reader = std::make_shared<iTunesLibraryReader>(application.arguments().at(1));
    const auto observation = platform::NotificationCenter::defaultCenter().addObserver(
        [&](const auto &) { application.quit(); }, ZRITunesLibraryChangedNotification, reader.get());
    reader->playlistNames(); // starts reading in the background; the notification tells when it is done
    application.exec();
    const auto error = reader->readError();
    const QString text = error ? error->toString() : reader->playlistNames().join(u'\n');
    QTextStream(error ? stderr : stdout) << text << Qt::endl;
    return error ? 1 : 0;
}
