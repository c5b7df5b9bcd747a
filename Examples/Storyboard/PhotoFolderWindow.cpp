#include "PhotoFolderWindow.h"

#include "PhotoFolderLoader.h"
#include "PhotoWindow.h"
#include "Texts.h"

#include "Platform/Foundation/UserDefaults.h"
#include "Platform/Interface/ScrollView.h"
#include "ZRCommon/ZRLocalizedString.h"
#include "ZRCommon/ZRPhotoMatrix.h"

#include <QtWidgets>

#include <algorithm>

namespace {

const QString frameKey = QStringLiteral("StoryboardWindowFrame");
const QString folderKey = QStringLiteral("StoryboardLastFolder");
const QString photoSizeKey = QStringLiteral("StoryboardPhotoSize");
constexpr int smallestPhoto = 88, largestPhoto = 240, firstPhotoSize = 114;

platform::UserDefaults &defaults()
{
    return platform::UserDefaults::standard();
}

/// The photos as they are, but the ones that show already, whose pictures are read.
ZRImageCatalogFolder::ThumbnailList inOrderOf(const ZRImageCatalogFolder::ThumbnailList &photos,
                                              const ZRImageCatalogFolder::ThumbnailList &shown)
{
    QHash<QString, std::shared_ptr<ZRImageThumbnail>> known;
    for (const auto &photo : shown)
        known.insert(photo->imagePath(), photo);
    ZRImageCatalogFolder::ThumbnailList result;
    for (const auto &photo : photos)
        result.append(known.value(photo->imagePath(), photo));
    return result;
}

} // namespace

PhotoFolderWindow::PhotoFolderWindow()
    : m_pages(new QStackedWidget(this))
    , m_invitation(new QLabel)
    , m_scrollView(new platform::ScrollView(m_pages))
    , m_grid(new ZRPhotoMatrix)
    , m_loader(new PhotoFolderLoader(this))
{
    defaults().registerDefaults({{photoSizeKey, firstPhotoSize}});
    setWindowTitle(QStringLiteral("Storyboard"));
    m_grid->setAccessibleName(ZRLocalizedString("Photos"));
    m_scrollView->setDocumentView(m_grid);
    m_scrollView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_scrollView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scrollView->viewport()->setBackgroundRole(QPalette::Base);
    makeInvitation();
    m_pages->addWidget(m_scrollView);
    setCentralWidget(m_pages);
    makeMenus();
    makeStatusBar();
    connectLoader();
    connect(m_grid, &ZRPhotoMatrix::selectionChanged, this, &PhotoFolderWindow::updateTexts);
    connect(m_grid, &ZRPhotoMatrix::doubleAction, this, &PhotoFolderWindow::openPhoto);
    resize(900, 640);
    restoreGeometry(defaults().data(frameKey));
    m_sizeSlider->setValue(int(defaults().integer(photoSizeKey)));
    setPhotoSize(m_sizeSlider->value());
    updateTexts();
}

PhotoFolderWindow::~PhotoFolderWindow()
{
    delete m_photoWindow;
}

void PhotoFolderWindow::makeInvitation()
{
    auto *const page = new QWidget;
    auto *const layout = new QVBoxLayout(page);
    m_invitation->setTextFormat(Qt::PlainText); // of folders of any name
    m_invitation->setAlignment(Qt::AlignCenter);
    m_invitation->setWordWrap(true);
    m_invitation->setText(ZRLocalizedString("Open a folder of photos to begin."));
    QFont font = m_invitation->font();
    if (font.pixelSize() > 0)
        font.setPixelSize(font.pixelSize() * 3 / 2);
    else
        font.setPointSizeF(font.pointSizeF() * 1.5);
    m_invitation->setFont(font);
    auto *const button = new QPushButton(ZRLocalizedString("Open Photo Folder…"));
    connect(button, &QPushButton::clicked, this, &PhotoFolderWindow::chooseFolder);
    layout->addStretch();
    layout->addWidget(m_invitation);
    layout->addSpacing(font.pixelSize() > 0 ? font.pixelSize() : 16);
    layout->addWidget(button, 0, Qt::AlignCenter);
    layout->addStretch();
    m_pages->addWidget(page);
}

void PhotoFolderWindow::makeMenus()
{
    m_fileMenu = menuBar()->addMenu(ZRLocalizedString("&File"));
    QMenu &file = *m_fileMenu;
    file.addAction(ZRLocalizedString("Open Photo &Folder…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O), this,
                   &PhotoFolderWindow::chooseFolder);
    m_reload =
        file.addAction(ZRLocalizedString("&Reload"), QKeySequence::Refresh, this, [this] { openFolder(m_folderPath); });
    m_openPhoto = file.addAction(ZRLocalizedString("Show &Photo"), this, &PhotoFolderWindow::openPhoto);
    file.addAction(ZRLocalizedString("&Close"), QKeySequence::Close, this, &QWidget::close);
    file.addSeparator();

    QMenu &edit = *menuBar()->addMenu(ZRLocalizedString("&Edit"));
    edit.addAction(ZRLocalizedString("Select &All"), QKeySequence::SelectAll, this, &PhotoFolderWindow::selectAll);
    edit.addAction(ZRLocalizedString("Select &Nothing"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A), m_grid,
                   &ZRPhotoMatrix::matrixDeselectAllCells);
    edit.addSeparator();
    m_addPhotos = edit.addAction(ZRLocalizedString("Add to &Storyboard"), QKeySequence(Qt::CTRL | Qt::Key_Return), this,
                                 [this] { Q_EMIT photosChosen(m_grid->pathsForSelectedImages()); });

    constexpr int step = 19;
    QMenu &view = *menuBar()->addMenu(ZRLocalizedString("&View"));
    view.addAction(ZRLocalizedString("&Larger Photos"), QKeySequence::ZoomIn, this,
                   [this] { m_sizeSlider->setValue(m_sizeSlider->value() + step); });
    view.addAction(ZRLocalizedString("&Smaller Photos"), QKeySequence::ZoomOut, this,
                   [this] { m_sizeSlider->setValue(m_sizeSlider->value() - step); });
}

void PhotoFolderWindow::makeStatusBar()
{
    m_count = new QLabel;
    m_selection = new QLabel;
    m_status = new ElidedLabel;
    m_progress = new QProgressBar;
    m_progress->setFixedWidth(180);
    m_progress->setAccessibleName(ZRLocalizedString("Making thumbnails"));
    m_cancel = new QToolButton;
    m_cancel->setText(ZRLocalizedString("Cancel"));
    m_sizeSlider = new QSlider(Qt::Horizontal);
    m_sizeSlider->setRange(smallestPhoto, largestPhoto);
    m_sizeSlider->setFixedWidth(140);
    m_sizeSlider->setAccessibleName(ZRLocalizedString("Size of the photos"));
    m_sizeSlider->setToolTip(m_sizeSlider->accessibleName());
    QStatusBar &bar = *statusBar();
    for (QLabel *const label : {m_count, m_selection})
        label->setContentsMargins(6, 0, 6, 0);
    bar.addWidget(m_count);
    bar.addWidget(m_selection);
    bar.addWidget(m_status, 1);
    bar.addPermanentWidget(m_progress);
    bar.addPermanentWidget(m_cancel);
    bar.addPermanentWidget(m_sizeSlider);
    m_progress->hide();
    m_cancel->hide();
    connect(m_cancel, &QToolButton::clicked, this, &PhotoFolderWindow::cancelOpening);
    connect(m_sizeSlider, &QSlider::valueChanged, this, &PhotoFolderWindow::setPhotoSize);
}

void PhotoFolderWindow::connectLoader()
{
    connect(m_loader, &PhotoFolderLoader::didProgress, this, &PhotoFolderWindow::showProgress);
    connect(m_loader, &PhotoFolderLoader::didFind, this, &PhotoFolderWindow::addPhotos);
    connect(m_loader, &PhotoFolderLoader::didLoad, this, &PhotoFolderWindow::showPhotos);
    connect(m_loader, &PhotoFolderLoader::didCancel, this, [this](const QString &path, qsizetype made) {
        endProgress(ZRLocalizedString("Opening “%1” was cancelled. Thumbnails made and kept: %2")
                        .arg(nameOfPath(path))
                        .arg(made));
    });
    connect(m_loader, &PhotoFolderLoader::didFail, this, [this](const QString &path, const QString &reason) {
        const QString failure = ZRLocalizedString("“%1” could not be opened. %2").arg(path, reason);
        endProgress(failure);
        if (m_folderPath.isEmpty())
            invite(ZRLocalizedString("“%1” could not be opened. %2"), path, reason);
    });
}

void PhotoFolderWindow::chooseFolder()
{
    const QString path = QFileDialog::getExistingDirectory(this, ZRLocalizedString("Open Photo Folder"), m_folderPath);
    if (!path.isEmpty())
        openFolder(path);
}

void PhotoFolderWindow::openFolder(const QString &path)
{
    if (path.isEmpty())
        return;
    m_isFilling = false;
    const QString cleanPath = QDir::cleanPath(QDir().absoluteFilePath(path));
    m_status->setText(ZRLocalizedString("Opening “%1”…").arg(nameOfPath(cleanPath)));
    m_cancel->show();
    m_loader->load(cleanPath);
}

void PhotoFolderWindow::openLastFolder()
{
    openFolder(defaults().string(folderKey));
}

void PhotoFolderWindow::cancelOpening()
{
    m_loader->cancel();
}

bool PhotoFolderWindow::isOpening() const
{
    return m_loader->isLoading();
}

void PhotoFolderWindow::showProgress(qsizetype done, qsizetype total)
{
    m_progress->setRange(0, int(total));
    m_progress->setValue(int(done));
    m_progress->setFormat(ZRLocalizedString("%v of %m"));
    m_progress->show();
}

void PhotoFolderWindow::endProgress(const QString &status)
{
    m_progress->hide();
    m_cancel->hide();
    m_status->setText(status);
    updateTexts();
}

void PhotoFolderWindow::beginFolder(const QString &path)
{
    m_folderPath = path;
    m_photos.clear();
    defaults().set(folderKey, path);
    m_grid->deselectAllCells();
    m_scrollView->scrollToPoint(QPointF());
    invite(ZRLocalizedString("There are no photos in “%1”."), nameOfPath(path));
    setWindowTitle(QStringLiteral("%1 – Storyboard").arg(nameOfPath(path)));
    m_grid->setFocus();
}

// A name without a place to break a line at would make the window as wide as it is.
void PhotoFolderWindow::invite(const QString &text, const QString &name, const QString &reason)
{
    constexpr int width = 480;
    const QString shown = m_invitation->fontMetrics().elidedText(name, Qt::ElideMiddle, width);
    m_invitation->setText(reason.isEmpty() ? text.arg(shown) : text.arg(shown, reason));
}

void PhotoFolderWindow::fillGrid()
{
    const auto needed = m_grid->getRowsNeeded(m_photos.size());
    m_grid->renewRows(needed.rows, needed.columns);
    for (qint64 i = 0; i < m_grid->numberOfCells(); ++i)
        m_grid->cellAtIndex(i)->setRepresentedObject(i < m_photos.size() ? m_photos[i] : nullptr);
    m_grid->sizeToCells();
    m_pages->setCurrentIndex(m_photos.isEmpty() ? 0 : m_pages->indexOf(m_scrollView));
}

void PhotoFolderWindow::addPhotos(const QString &path, const ZRImageCatalogFolder::ThumbnailList &photos)
{
    if (!m_isFilling) {
        if (path == m_folderPath)
            return; // read again: its photos show already
        m_isFilling = true;
        beginFolder(path);
    }
    const platform::IndexSet selected = m_grid->selectedIndexes();
    m_photos += photos;
    fillGrid();
    m_grid->setSelectedIndexes(selected);
    updateTexts();
}

void PhotoFolderWindow::showPhotos(const QString &path, const ZRImageCatalogFolder::ThumbnailList &photos,
                                   qsizetype refused)
{
    const QStringList selected = path == m_folderPath ? m_grid->pathsForSelectedImages() : QStringList();
    if (path != m_folderPath)
        beginFolder(path);
    m_photos = m_isFilling ? inOrderOf(photos, m_photos) : photos;
    fillGrid();
    selectPaths(selected);
    endProgress(refused > 0 ? ZRLocalizedString("%n files could not be read as photos.", int(refused)) : QString());
}

void PhotoFolderWindow::selectPaths(const QStringList &paths)
{
    const QSet<QString> wanted(paths.cbegin(), paths.cend());
    platform::IndexSet indexes;
    for (qsizetype i = 0; i < m_photos.size() && !wanted.isEmpty(); ++i) {
        if (wanted.contains(m_photos[i]->imagePath()))
            indexes.addIndex(i);
    }
    m_grid->setSelectedIndexes(indexes);
}

// The blanks at the end are cells, too, but a person means photos.
void PhotoFolderWindow::selectAll()
{
    m_grid->setSelectedIndexes(platform::IndexSet({0, qint64(m_grid->photoCount())}));
}

void PhotoFolderWindow::updateTexts()
{
    const auto photos = m_grid->photoCount();
    qint64 selected = 0; // blanks at the end of the grid do not count
    for (const platform::IndexRange &range : m_grid->selectedIndexes().ranges())
        selected += std::max<qint64>(0, std::min<qint64>(range.end(), photos) - range.location);
    m_count->setText(m_folderPath.isEmpty() ? QString() : ZRLocalizedString("%n photos", int(photos)));
    m_selection->setText(selected ? ZRLocalizedString("%n selected", int(selected)) : QString());
    m_reload->setEnabled(!m_folderPath.isEmpty());
    m_openPhoto->setEnabled(selected > 0);
    m_addPhotos->setEnabled(selected > 0);
}

void PhotoFolderWindow::setPhotoSize(int width)
{
    m_grid->setCellSizeForImageSize(QSizeF(width, width * 3.0 / 4));
    defaults().set(photoSizeKey, width);
}

void PhotoFolderWindow::openPhoto()
{
    const auto selected = m_grid->selectedImageThumbnails();
    if (selected.isEmpty())
        return;
    delete m_photoWindow;
    m_photoWindow = new PhotoWindow(m_photos, m_photos.indexOf(selected.first()));
    m_photoWindow->setAttribute(Qt::WA_DeleteOnClose);
    m_photoWindow->show();
    m_photoWindow->activateWindow();
}

void PhotoFolderWindow::closeEvent(QCloseEvent *event)
{
    defaults().set(frameKey, saveGeometry());
    m_loader->cancel();
    delete m_photoWindow;
    QMainWindow::closeEvent(event);
}

QString PhotoFolderWindow::countText() const
{
    return m_count->text();
}

QString PhotoFolderWindow::selectionText() const
{
    return m_selection->text();
}

QString PhotoFolderWindow::statusText() const
{
    return m_status->text();
}

PhotoWindow *PhotoFolderWindow::photoWindow() const
{
    return m_photoWindow;
}
