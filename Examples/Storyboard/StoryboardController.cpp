#include "StoryboardController.h"

#include "PhotoFolderWindow.h"
#include "StoryboardDocument.h"
#include "StoryboardWindowController.h"

#include "Platform/Interface/InterfaceFile.h"
#include "Platform/Interface/ScrollView.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <QtWidgets>

namespace {

/// What was typed into the fields of the windows belongs to the document.
void commitEditing(const platform::Document &document)
{
    for (platform::WindowController *const controller : document.windowControllers())
        static_cast<StoryboardWindowController *>(controller)->commitEditing();
}

} // namespace

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
    for (platform::Document *const document : documents())
        commitEditing(*document);
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
        const auto add = [&](const char *text, const QKeySequence &keys, bool (platform::Document::*does)()) {
            menu.addAction(ZRLocalizedString(text), keys, document, [document, does] {
                commitEditing(*document);
                (document->*does)();
            });
        };
        add("&Close", QKeySequence::Close, &platform::Document::close);
        add("&Save", QKeySequence::Save, &platform::Document::save);
        add("Save &As…", QKeySequence::SaveAs, &platform::Document::saveAs);
        add("Re&vert to Saved", QKeySequence(), &platform::Document::revert);
        menu.addSeparator();
    }
    menu.addAction(ZRLocalizedString("&Quit"), QKeySequence::Quit, &controller, [&controller] { controller.quit(); });
}
