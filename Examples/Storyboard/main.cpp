// A host of the framework with documents: slide shows, made of the photos of folders.

#include "PhotoFolderWindow.h"
#include "StoryboardController.h"
#include "Walkthrough.h"

#include "Platform/Interface/Application.h"

#include <QCommandLineParser>

#include <algorithm>

int main(int argc, char **argv)
{
    const auto isWalkthrough = [](const char *word) { return qstrncmp(word, "--walkthrough", 13) == 0; };
    if (std::any_of(argv, argv + argc, isWalkthrough))
        Walkthrough::prepare();
    platform::Application application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("ZRCommon"));
    QCoreApplication::setApplicationName(QStringLiteral("Storyboard"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Makes slide shows of photos and songs."));
    parser.addHelpOption();
    const QCommandLineOption photos(
        QStringLiteral("photos"),
        QStringLiteral("Shows the photos of this folder; otherwise of the one that was open last."),
        QStringLiteral("folder"));
    const QCommandLineOption walkthrough(
        QStringLiteral("walkthrough"),
        QStringLiteral(
            "Without a window on the screen: goes through the program's main job with a copy of the photos, "
            "checks it, and writes screenshots into this folder. Without --photos the photos are those of the "
            "sample library that the build makes."),
        QStringLiteral("folder"));
    parser.addOptions({photos, walkthrough});
    parser.addPositionalArgument(QStringLiteral("files"), QStringLiteral("Storyboards to open; a new one otherwise."),
                                 QStringLiteral("[files...]"));
    parser.process(application);

    if (parser.isSet(walkthrough))
        return Walkthrough::run(parser.value(photos), parser.value(walkthrough)) ? 0 : 1;
    StoryboardController controller;
    const QStringList files = parser.positionalArguments();
    controller.openFiles(files);
    if (parser.isSet(photos))
        controller.photoWindow().openFolder(parser.value(photos));
    if (files.isEmpty() || parser.isSet(photos))
        controller.showPhotos();
    return QApplication::exec();
}
