#pragma once

#include "ZRCommon/ZRImageCatalogFolder.h"

#include <QMainWindow>
#include <QPointer>

class PhotoFolderLoader;
class PhotoWindow;
class QAction;
class QLabel;
class QProgressBar;
class QSlider;
class QStackedWidget;
class QToolButton;
class ZRPhotoMatrix;
namespace platform {
class ScrollView;
}

/// The photos of a folder in a grid: they are selected, opened large, and dragged out to other programs as files. The
/// window's place, the size of the photos and the folder are remembered from one run to the next.
///
/// While a folder is opened, its photos show as their thumbnails are made; the folder before stays until the first of
/// them is there. When opening is cancelled or fails, what shows stays.
class PhotoFolderWindow : public QMainWindow
{
    Q_OBJECT

public:
    PhotoFolderWindow();
    ~PhotoFolderWindow() override;

    /// Opens a folder in the background.
    void openFolder(const QString &path);
    /// Opens the folder that was open when the program ended last, if there was one.
    void openLastFolder();
    void cancelOpening();
    bool isOpening() const;
    /// Empty while none is open.
    const QString &folderPath() const { return m_folderPath; }

    /// For the program to add its own commands.
    QMenu &fileMenu() const { return *m_fileMenu; }
    ZRPhotoMatrix &grid() const { return *m_grid; }
    QSlider &sizeSlider() const { return *m_sizeSlider; }
    /// What is said below the photos: how many there are, how many are selected, what was or was not done.
    QString countText() const;
    QString selectionText() const;
    QString statusText() const;
    /// Null while no photo is shown large.
    PhotoWindow *photoWindow() const;

Q_SIGNALS:
    /// Photos are to become slides.
    void photosChosen(const QStringList &paths);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void makeInvitation();
    void makeMenus();
    void makeStatusBar();
    void connectLoader();
    void chooseFolder();
    void beginFolder(const QString &path);
    void addPhotos(const QString &path, const ZRImageCatalogFolder::ThumbnailList &photos);
    void fillGrid();
    void selectAll();
    void showPhotos(const QString &path, const ZRImageCatalogFolder::ThumbnailList &photos, qsizetype refused);
    void invite(const QString &text, const QString &name, const QString &reason = {});
    void selectPaths(const QStringList &paths);
    void showProgress(qsizetype done, qsizetype total);
    void endProgress(const QString &status);
    void updateTexts();
    void setPhotoSize(int width);
    void openPhoto();

    QStackedWidget *m_pages = nullptr;
    QLabel *m_invitation = nullptr;
    platform::ScrollView *m_scrollView = nullptr;
    ZRPhotoMatrix *m_grid = nullptr;
    QLabel *m_count = nullptr;
    QLabel *m_selection = nullptr;
    QLabel *m_status = nullptr;
    QProgressBar *m_progress = nullptr;
    QToolButton *m_cancel = nullptr;
    QSlider *m_sizeSlider = nullptr;
    QMenu *m_fileMenu = nullptr;
    QAction *m_reload = nullptr;
    QAction *m_openPhoto = nullptr;
    QAction *m_addPhotos = nullptr;
    PhotoFolderLoader *m_loader = nullptr;
    QPointer<PhotoWindow> m_photoWindow;
    QString m_folderPath;
    bool m_isFilling = false; // with photos of a folder that is still being opened
    ZRImageCatalogFolder::ThumbnailList m_photos;
};
