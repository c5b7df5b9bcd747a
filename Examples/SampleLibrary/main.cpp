// Makes the sample libraries that the walk through the examples and some tests read:
//
//     make_sample_library FOLDER

#include "Libraries.h"

#include <QDir>
#include <QGuiApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    // Text is drawn, which takes an application object, but never on a screen.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::fputs("usage: make_sample_library FOLDER\n", stderr);
        return 2;
    }
    const QString folder = QDir(QFile::decodeName(argv[1])).absolutePath();
    for (const auto &failure : {makePhotoLibrary(folder + QStringLiteral("/iPhoto Library")),
                                makeMusicLibrary(folder + QStringLiteral("/iTunes"))}) {
        if (failure) {
            std::fprintf(stderr, "make_sample_library: %s\n", qPrintable(*failure));
            return 1;
        }
    }
    return 0;
}
