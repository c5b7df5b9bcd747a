// Makes the sample libraries that the walk through the examples and some tests read:
//
//     make_sample_library FOLDER

#include "Libraries.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <cstdio>

int main(int argc, char **argv)
{
    // Text is drawn, which takes an application object, but never on a screen. What it and the fonts want to keep on
    // disk goes with the process.
    const QTemporaryDir scratch;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    for (const char *variable : {"XDG_RUNTIME_DIR", "XDG_CACHE_HOME"})
        qputenv(variable, QFile::encodeName(scratch.path()));
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
