#include "Walkthrough.h"

#include "DocumentWalk.h"
#include "PhotoWalk.h"
#include "WalkSteps.h"

#include <QtWidgets>

#include <cstdio>

namespace {

/// Those that the build makes, beside the folder of the programs.
QString samplePhotos()
{
    const QDir folder(QCoreApplication::applicationDirPath()
                      + QStringLiteral("/../sample-library/iPhoto Library/Originals/2006/Summer"));
    WalkSteps::check(folder.exists(), QStringLiteral("a folder of photos, named with --photos"));
    return folder.canonicalPath();
}

} // namespace

void Walkthrough::prepare()
{
    static const QTemporaryDir home;
    for (const char *const variable : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        qputenv(variable, QFile::encodeName(home.path()));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    // The platform without a screen says what it has no means for, again and again.
    static const QtMessageHandler usual = qInstallMessageHandler(nullptr);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &message) {
        if (!message.startsWith(QLatin1String("This plugin does not support ")))
            usual(type, context, message);
    });
    QApplication::setDesktopSettingsAware(false);
}

bool Walkthrough::run(const QString &photoFolder, const QString &outputFolder)
{
    QApplication::setStyle(QStringLiteral("Fusion"));
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(13);
    QApplication::setFont(font);
    try {
        const QString photos = photoFolder.isEmpty() ? samplePhotos() : photoFolder;
        WalkSteps steps(outputFolder);
        walkThroughPhotos(steps, photos);
        walkThroughDocument(steps, photos);
    } catch (const WrongState &state) {
        std::fprintf(stderr, "storyboard: %s\n", state.what());
        return false;
    }
    std::printf("Everything is as it should be. The screenshots are in %s.\n", qPrintable(outputFolder));
    return true;
}
