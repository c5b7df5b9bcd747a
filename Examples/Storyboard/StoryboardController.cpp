#include "StoryboardController.h"

#include "NumberBox.h"
#include "PhotoFolderWindow.h"
#include "SongList.h"
#include "StoryboardDocument.h"
#include "StoryboardWindowController.h"

#include "Platform/Interface/InterfaceFile.h"
#include "Platform/Interface/ScrollView.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <QtWidgets>

#include <algorithm>

namespace {

/// What was typed into the fields of the windows belongs to the document.
void commitEditing(const platform::Document &document)
{
    for (platform::WindowController *const controller : document.windowControllers())
        static_cast<StoryboardWindowController *>(controller)->commitEditing();
}

/// The name of a file, and its folder where another one of the files is called the same.
QString recentText(const QString &path, const QStringList &all)
{
    const QString name = QFileInfo(path).fileName();
    const auto isCalledSo = [&](const QString &other) { return QFileInfo(other).fileName() == name; };
    const bool isOnlyOne = std::count_if(all.cbegin(), all.cend(), isCalledSo) == 1;
    const QString text =
        isOnlyOne ? name : QStringLiteral("%1 – %2").arg(name, QDir::toNativeSeparators(QFileInfo(path).path()));
    return QString(text).replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

StoryboardController::StoryboardController()
{
    QDir::addSearchPath(QStringLiteral("interface"), QStringLiteral(":/Storyboard/interface"));
    platform::InterfaceFile::registerClass<platform::ScrollView>(QStringLiteral("platform::ScrollView"));
    platform::InterfaceFile::registerClass<NumberBox>(QStringLiteral("NumberBox"));
    platform::InterfaceFile::registerClass<SongList>(QStringLiteral("SongList"));
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
        fillFileMenu(m_photoWindow->fileMenu(), nullptr);
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

void StoryboardController::openFiles(const QStringList &paths)
{
    for (const QString &path : paths)
        openDocument(QFileInfo(path).absoluteFilePath());
    if (documents().isEmpty())
        newDocument();
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
        const QStringList paths = controller.recentPaths();
        for (const QString &path : paths)
            recent->addAction(recentText(path, paths), &controller,
                              [&controller, path] { controller.openDocument(path); });
        recent->addSeparator();
        recent->addAction(ZRLocalizedString("&Clear Menu"), &controller,
                          [&controller] { controller.clearRecentPaths(); });
    });
    if (document) {
        menu.addAction(ZRLocalizedString("&Photos"), QKeySequence(Qt::CTRL | Qt::Key_Period), &controller,
                       [&controller] { controller.showPhotos(); });
        menu.addSeparator();
        const auto add = [&](const QString &text, const QKeySequence &keys, bool (platform::Document::*does)()) {
            menu.addAction(text, keys, document, [document, does] {
                commitEditing(*document);
                (document->*does)();
            });
        };
        add(ZRLocalizedString("&Close"), QKeySequence::Close, &platform::Document::close);
        add(ZRLocalizedString("&Save"), QKeySequence::Save, &platform::Document::save);
        add(ZRLocalizedString("Save &As…"), QKeySequence::SaveAs, &platform::Document::saveAs);
        add(ZRLocalizedString("Re&vert to Saved"), QKeySequence(), &platform::Document::revert);
    }
    menu.addSeparator();
    menu.addAction(ZRLocalizedString("&Quit"), QKeySequence::Quit, &controller, [&controller] { controller.quit(); });
}
