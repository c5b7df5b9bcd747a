// A host of the framework with a window: the photos of a folder.

#include "StoryboardWindow.h"
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
    parser.setApplicationDescription(QStringLiteral("Shows the photos of a folder."));
    parser.addHelpOption();
    const QCommandLineOption photos(QStringLiteral("photos"),
                                    QStringLiteral("Opens this folder; otherwise the one that was open last."),
                                    QStringLiteral("folder"));
    const QCommandLineOption walkthrough(
        QStringLiteral("walkthrough"),
        QStringLiteral("Without a window on the screen: goes through the program's main job with a copy of the photos, "
                       "checks it, and writes screenshots into this folder."),
        QStringLiteral("folder"));
    parser.addOptions({photos, walkthrough});
    parser.process(application);

    if (parser.isSet(walkthrough))
        return Walkthrough::run(parser.value(photos), parser.value(walkthrough)) ? 0 : 1;
    StoryboardWindow window;
    window.show();
    if (parser.isSet(photos))
        window.openFolder(parser.value(photos));
    else
        window.openLastFolder();
    return QApplication::exec();
}
