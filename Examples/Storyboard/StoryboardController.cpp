#include "StoryboardController.h"

#include "PhotoFolderWindow.h"
#include "StoryboardDocument.h"
#include "StoryboardWindowController.h"

#include "Platform/Interface/InterfaceFile.h"
#include "Platform/Interface/ScrollView.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <QtWidgets>

StoryboardController::StoryboardController()
{
    QDir::addSearchPath(QStringLiteral("interface"), QStringLiteral(":/Storyboard/interface"));
    platform::InterfaceFile::registerClass<platform::ScrollView>(QStringLiteral("platform::ScrollView"));
    registerType(StoryboardDocument::type());
    QApplication::setQuitOnLastWindowClosed(true);
}

StoryboardController::~StoryboardController()
{
    delete m_photoWindow;
}

StoryboardController &StoryboardController::shared()
{
    return *static_cast<StoryboardController *>(platform::DocumentController::shared());
}

PhotoFolderWindow &StoryboardController::photoWindow()
{
    if (!m_photoWindow) {
        m_photoWindow = new PhotoFolderWindow;
        connect(m_photoWindow, &PhotoFolderWindow::photosChosen, this, &StoryboardController::addToStoryboard);
    }
    return *m_photoWindow;
}

void StoryboardController::showPhotos()
{
    PhotoFolderWindow &window = photoWindow();
    window.show();
    window.raise();
    window.activateWindow();
    if (window.folderPath().isEmpty() && !window.isOpening())
        window.openLastFolder();
}

void StoryboardController::addToStoryboard(const QStringList &photoPaths)
{
    platform::Document *const document = currentDocument() ? currentDocument() : newDocument();
    if (!document || document->windowControllers().isEmpty())
        return;
    auto *const controller = static_cast<StoryboardWindowController *>(document->windowControllers().first());
    controller->window();
    controller->addFiles(photoPaths);
}

void StoryboardController::quit()
{
    if (closeAll())
        QCoreApplication::quit();
}

void StoryboardController::fillFileMenu(QMenu &menu, StoryboardDocument *document)
{
    StoryboardController &controller = shared();
    menu.addAction(ZRLocalizedString("&New Storyboard"), QKeySequence::New, &controller,
                   [&controller] { controller.newDocument(); });
    menu.addAction(ZRLocalizedString("&Open…"), QKeySequence::Open, &controller,
                   [&controller] { controller.openDocuments(); });
    QMenu *const recent = menu.addMenu(ZRLocalizedString("Open &Recent"));
    QObject::connect(recent, &QMenu::aboutToShow, recent, [recent, &controller] {
        recent->clear();
        for (const QString &path : controller.recentPaths())
            recent->addAction(QFileInfo(path).fileName(), &controller,
                              [&controller, path] { controller.openDocument(path); });
        recent->addSeparator();
        recent->addAction(ZRLocalizedString("&Clear Menu"), &controller,
                          [&controller] { controller.clearRecentPaths(); });
    });
    menu.addAction(ZRLocalizedString("&Photos"), QKeySequence(Qt::CTRL | Qt::Key_Period), &controller,
                   [&controller] { controller.showPhotos(); });
    menu.addSeparator();
    if (document) {
        menu.addAction(ZRLocalizedString("&Close"), QKeySequence::Close, document, [document] { document->close(); });
        menu.addAction(ZRLocalizedString("&Save"), QKeySequence::Save, document, [document] { document->save(); });
        menu.addAction(ZRLocalizedString("Save &As…"), QKeySequence::SaveAs, document,
                       [document] { document->saveAs(); });
        menu.addAction(ZRLocalizedString("Re&vert to Saved"), document, [document] { document->revert(); });
        menu.addSeparator();
    }
    menu.addAction(ZRLocalizedString("&Quit"), QKeySequence::Quit, &controller, [&controller] { controller.quit(); });
}
