#pragma once

#include "Platform/Interface/DocumentController.h"

#include <QPointer>
#include <QStringList>

class PhotoFolderWindow;
class QMenu;
class StoryboardDocument;

/// The documents of the program, and the window of photos that they are made from. One for the program.
class StoryboardController : public platform::DocumentController
{
    Q_OBJECT

public:
    StoryboardController();
    ~StoryboardController() override;
    static StoryboardController &shared();

    /// The window of photos, which is made when it is first asked for.
    PhotoFolderWindow &photoWindow();
    void showPhotos();
    /// Adds photos to the current storyboard, or to a new one.
    void addToStoryboard(const QStringList &photoPaths);
    /// Opens storyboards; a new one when none could be opened.
    void openFiles(const QStringList &paths);
    /// Asks whether to save what is edited, and quits.
    void quit();

    /// Fills the File menu of a window, behind what is in it.
    /// @param document that the window shows; null for the window of photos
    static void fillFileMenu(QMenu &menu, StoryboardDocument *document);

private:
    QPointer<PhotoFolderWindow> m_photoWindow;
};
