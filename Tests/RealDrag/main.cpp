// Two ends of a drag between programs, for the test that moves a real pointer:
//   real_drag source FILE...    a photo grid with these files, at the left of the screen; all are selected
//   real_drag target            a window at the right that takes files
// Each says on standard output what happens to it, until it is killed.

#include "Platform/Interface/Application.h"
#include "Platform/Interface/ScrollView.h"
#include "ZRCommon/ZRPhotoMatrix.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>

#include <cstdio>

namespace {

void say(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
    std::fflush(stdout);
}

class Target : public QWidget
{
public:
    Target() { setAcceptDrops(true); }

protected:
    void dragEnterEvent(QDragEnterEvent *event) override
    {
        event->acceptProposedAction();
        say(QStringLiteral("entered"));
    }
    void dropEvent(QDropEvent *event) override
    {
        for (const QUrl &url : event->mimeData()->urls())
            say(url.toLocalFile());
        event->acceptProposedAction();
    }
};

} // namespace

int main(int argc, char **argv)
{
    platform::Application application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.value(1) == QLatin1String("target")) {
        Target target;
        target.setGeometry(400, 0, 300, 300);
        target.show();
        QMetaObject::invokeMethod(
            &target, [] { say(QStringLiteral("ready")); }, Qt::QueuedConnection);
        return QApplication::exec();
    }
    platform::ScrollView window;
    auto *const grid = new ZRPhotoMatrix;
    window.setDocumentView(grid);
    window.setGeometry(0, 0, 300, 300);
    window.show();
    grid->renewRows(1, 2);
    for (int i = 0; i < 2; ++i) {
        const QString file = words.value(2 + i);
        grid->cellAtIndex(i)->setRepresentedObject(std::make_shared<ZRImageThumbnail>(file, file));
    }
    grid->sizeToCells();
    grid->selectAll();
    QMetaObject::invokeMethod(
        &window, [] { say(QStringLiteral("ready")); }, Qt::QueuedConnection);
    return QApplication::exec();
}
