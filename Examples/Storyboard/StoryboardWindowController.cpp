#include "StoryboardWindowController.h"

#include "NumberBox.h"
#include "SlideGrid.h"
#include "SlidePictures.h"
#include "SongList.h"
#include "StoryboardController.h"
#include "Texts.h"

#include "Platform/Foundation/EventBoundary.h"
#include "Platform/Foundation/KeyedCoding.h"
#include "Platform/Interface/ScrollView.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <QMimeData>
#include <QMimeDatabase>
#include <QScopedValueRollback>
#include <QtWidgets>

#include <algorithm>

namespace {

Q_LOGGING_CATEGORY(windows, "storyboard.window")

/// Shows songs by their titles, which can be dragged.
class SongController : public platform::ArrayController
{
public:
    Qt::ItemFlags flags(const QModelIndex &index) const override
    {
        return ArrayController::flags(index) | Qt::ItemIsDragEnabled;
    }

protected:
    QString displayText(const platform::Object &object) const override
    {
        return static_cast<const Song &>(object).title();
    }
};

/// The field that has the keyboard, whose text the commands of the Edit menu are for then.
QLineEdit *focusedField()
{
    QWidget *const widget = QApplication::focusWidget();
    if (auto *const field = qobject_cast<QLineEdit *>(widget))
        return field;
    return qobject_cast<QAbstractSpinBox *>(widget) ? widget->findChild<QLineEdit *>() : nullptr;
}

/// "Undo Move Slides"
QString actionText(const QString &command, const QString &actionName)
{
    return actionName.isEmpty() ? command : QStringLiteral("%1 %2").arg(command, actionName);
}

QStringList localPaths(const QMimeData &data)
{
    QStringList paths;
    for (const QUrl &url : data.urls()) {
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    }
    return paths;
}

} // namespace

StoryboardWindowController::StoryboardWindowController(StoryboardDocument &document)
    : ZRWindowController(QStringLiteral("StoryboardDocument"))
    , m_storyboard(document)
    , m_songs(std::make_unique<SongController>())
{
    setSelection(std::make_unique<StoryboardSelection>(&document));
    selection()->addObserver(this);
}

// The document may be half gone by now, and the window goes after this: nothing that is told of that may ask the
// document.
StoryboardWindowController::~StoryboardWindowController()
{
    selection()->removeObserver(this);
    if (!m_grid)
        return;
    qApp->disconnect(this);
    QGuiApplication::clipboard()->disconnect(this);
    m_songsView->selectionModel()->disconnect(this);
    if (QWidget *const shown = window()) {
        for (QObject *const part : shown->findChildren<QObject *>())
            part->disconnect(this);
    }
}

StoryboardSelection &StoryboardWindowController::storyboardSelection() const
{
    return static_cast<StoryboardSelection &>(*selection());
}

QString StoryboardWindowController::statusText() const
{
    return m_status->text();
}

// The outlets are there before the document is first shown.
void StoryboardWindowController::windowDidLoad()
{
    findOutlets();
    makeMenus();
    connectForm();
    ZRWindowController::windowDidLoad();
    showSelection();
    m_grid->setFocus();
}

// Files may have come back while the person was elsewhere.
void StoryboardWindowController::windowDidBecomeKey()
{
    SlidePictures::shared().lookForMissingAgain();
    if (m_grid)
        m_grid->setNeedsDisplay();
}

void StoryboardWindowController::findOutlets()
{
    auto &slidesView = outlet<platform::ScrollView>(QStringLiteral("slidesView"));
    m_grid = new SlideGrid;
    slidesView.setDocumentView(m_grid);
    slidesView.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    slidesView.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(m_grid, &SlideGrid::selectionChanged, this, &StoryboardWindowController::takeGridSelection);
    connect(m_grid, &SlideGrid::dropped, this,
            [this](const QMimeData *data, qsizetype index, bool isFromHere) { dropOnGrid(*data, index, isFromHere); });
    connect(m_grid, &SlideGrid::dragBegan, this,
            [this](std::unique_ptr<QMimeData> &data) { data = storyboardSelection().mimeData(); });

    m_songsView = &outlet<SongList>(QStringLiteral("songsView"));
    m_songsView->setModel(m_songs.get());
    connect(m_songsView, &SongList::dropped, this,
            [this](const QMimeData *data, int index, bool isFromHere) { dropOnSongs(*data, index, isFromHere); });
    connect(m_songsView, &SongList::dragBegan, this,
            [this](std::unique_ptr<QMimeData> &data) { data = storyboardSelection().mimeData(); });
    connect(m_songsView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &StoryboardWindowController::takeSongSelection);
    outlet<QGroupBox>(QStringLiteral("songsBox")).setTitle(ZRLocalizedString("Songs"));
    auto &addSongs = outlet<QPushButton>(QStringLiteral("addSongsButton"));
    addSongs.setText(ZRLocalizedString("Add Songs…"));
    connect(&addSongs, &QPushButton::clicked, this, [this] {
        chooseFiles(ZRLocalizedString("Add Songs"), ZRLocalizedString("Songs (*.mp3 *.m4a *.aac *.wav *.flac *.ogg)"));
    });

    auto &splitter = outlet<QSplitter>(QStringLiteral("splitter"));
    splitter.setStretchFactor(0, 1);
    splitter.setStretchFactor(1, 0);
    splitter.setSizes({700, 240});
    QStatusBar &bar = outlet<QStatusBar>(QStringLiteral("statusbar"));
    m_count = new QLabel;
    m_status = new ElidedLabel; // with names of files
    m_count->setContentsMargins(6, 0, 12, 0);
    bar.addWidget(m_count);
    bar.addWidget(m_status, 1);
}

void StoryboardWindowController::connectForm()
{
    m_slideBox = &outlet<QGroupBox>(QStringLiteral("slideBox"));
    m_title = &outlet<QLineEdit>(QStringLiteral("slideTitle"));
    m_seconds = &outlet<NumberBox>(QStringLiteral("slideSeconds"));
    m_transition = &outlet<QComboBox>(QStringLiteral("slideTransition"));
    m_angle = &outlet<NumberBox>(QStringLiteral("slideAngle"));
    outlet<QLabel>(QStringLiteral("titleLabel")).setText(ZRLocalizedString("&Title:"));
    outlet<QLabel>(QStringLiteral("secondsLabel")).setText(ZRLocalizedString("&Shows for:"));
    outlet<QLabel>(QStringLiteral("transitionLabel")).setText(ZRLocalizedString("T&ransition:"));
    outlet<QLabel>(QStringLiteral("angleLabel")).setText(ZRLocalizedString("&Angle:"));
    m_seconds->setSuffix(ZRLocalizedString(" s"));
    m_seconds->setNumbers(Slide::shortest, Slide::longest);
    m_angle->setNumbers(0, 359);
    m_angle->setCycle(360);
    m_transition->setPlaceholderText(ZRLocalizedString("Several"));
    m_transition->addItems({ZRLocalizedString("None"), ZRLocalizedString("Dissolve"), ZRLocalizedString("Push"),
                            ZRLocalizedString("Wipe")});

    connect(m_title, &QLineEdit::editingFinished, this, &StoryboardWindowController::commitTitle);
    connect(m_seconds, &NumberBox::numberChanged, this, [this](double seconds) {
        changeSlides(ZRLocalizedString("Change Duration"),
                     [seconds](Slide::Settings &settings) { settings.seconds = seconds; });
    });
    connect(m_transition, &QComboBox::activated, this, [this](int index) {
        changeSlides(ZRLocalizedString("Change Transition"),
                     [index](Slide::Settings &settings) { settings.transition = Slide::Transition(index); });
    });
    connect(m_angle, &NumberBox::numberChanged, this, [this](double angle) {
        changeSlides(ZRLocalizedString("Turn Slides"), [angle](Slide::Settings &settings) { settings.angle = angle; });
    });
}

void StoryboardWindowController::makeMenus()
{
    auto &menuBar = *static_cast<QMainWindow *>(window())->menuBar();
    StoryboardController::fillFileMenu(*menuBar.addMenu(ZRLocalizedString("&File")), &m_storyboard);
    makeEditMenu(*menuBar.addMenu(ZRLocalizedString("&Edit")));
    makeSlidesMenu(*menuBar.addMenu(ZRLocalizedString("&Slides")));
}

void StoryboardWindowController::makeEditMenu(QMenu &menu)
{
    const auto add = [&](const QString &text, QKeySequence::StandardKey key,
                         void (StoryboardWindowController::*does)()) { return menu.addAction(text, key, this, does); };
    m_undo = add(ZRLocalizedString("&Undo"), QKeySequence::Undo, &StoryboardWindowController::undo);
    m_redo = add(ZRLocalizedString("&Redo"), QKeySequence::Redo, &StoryboardWindowController::redo);
    menu.addSeparator();
    m_selectionActions = {add(ZRLocalizedString("Cu&t"), QKeySequence::Cut, &StoryboardWindowController::cut),
                          add(ZRLocalizedString("&Copy"), QKeySequence::Copy, &StoryboardWindowController::copy)};
    m_paste = add(ZRLocalizedString("&Paste"), QKeySequence::Paste, &StoryboardWindowController::paste);
    m_selectionActions.append(
        add(ZRLocalizedString("&Delete"), QKeySequence::Delete, &StoryboardWindowController::deleteSelected));
    menu.addSeparator();
    add(ZRLocalizedString("Select &All"), QKeySequence::SelectAll, &StoryboardWindowController::selectAll);
    m_selectionActions.append(menu.addAction(ZRLocalizedString("Select &Nothing"),
                                             QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A), this,
                                             &StoryboardWindowController::selectNothing));
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &StoryboardWindowController::updateActions);
    connect(&m_storyboard.undoManager().stack(), &QUndoStack::indexChanged, this,
            &StoryboardWindowController::updateActions);
    connect(qApp, &QApplication::focusChanged, this, &StoryboardWindowController::updateActions);
}

void StoryboardWindowController::makeSlidesMenu(QMenu &menu)
{
    menu.addAction(ZRLocalizedString("Add &Photos…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P), this, [this] {
        chooseFiles(ZRLocalizedString("Add Photos"),
                    ZRLocalizedString("Photos (*.jpg *.jpeg *.png *.heic *.avif *.tif *.tiff *.gif *.webp *.bmp)"));
    });
    menu.addAction(ZRLocalizedString("Add &Songs…"), this, [this] {
        chooseFiles(ZRLocalizedString("Add Songs"), ZRLocalizedString("Songs (*.mp3 *.m4a *.aac *.wav *.flac *.ogg)"));
    });
    menu.addSeparator();
    const auto add = [&](const QString &text, const QKeySequence &keys, const std::function<void()> &does) {
        return menu.addAction(text, keys, this, does);
    };
    m_selectionActions.append(
        {add(ZRLocalizedString("Move &Earlier"), QKeySequence(Qt::CTRL | Qt::Key_Left), [this] { moveSelected(-1); }),
         add(ZRLocalizedString("Move &Later"), QKeySequence(Qt::CTRL | Qt::Key_Right), [this] { moveSelected(1); })});
    menu.addSeparator();
    const auto turn = [this](double by) {
        changeSlides(ZRLocalizedString("Turn Slides"), [by](Slide::Settings &settings) { settings.angle += by; });
    };
    m_slideActions = {
        add(ZRLocalizedString("Turn &Right"), QKeySequence(Qt::CTRL | Qt::Key_R), [turn] { turn(90); }),
        add(ZRLocalizedString("T&urn Left"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R), [turn] { turn(-90); })};
}

// Commands

void StoryboardWindowController::edit(const QString &actionName, const std::function<void()> &body)
{
    commitEditing();
    m_status->clear();
    m_storyboard.performChanges([&] {
        const platform::UndoGroup group(m_storyboard.undoManager(), actionName);
        registerSelection(selection()->clone(), nullptr);
        selection()->performChanges(body);
        registerSelection(nullptr, selection()->clone());
    });
    m_grid->revealSelection();
}

// What was selected is selected again when the items are there again: of the two calls around a change, one is made
// last when it is undone, the other one last when it is redone.
void StoryboardWindowController::registerSelection(const Snapshot &undone, const Snapshot &redone)
{
    m_storyboard.undoManager().registerUndo(this, [this, undone, redone] {
        registerSelection(redone, undone);
        if (undone)
            selection()->copyFrom(*undone);
    });
}

void StoryboardWindowController::undo()
{
    QLineEdit *const field = focusedField();
    if (field && field->isUndoAvailable())
        return field->undo();
    selection()->performChanges([this] { m_storyboard.undo(); });
    m_grid->revealSelection();
}

void StoryboardWindowController::redo()
{
    QLineEdit *const field = focusedField();
    if (field && field->isRedoAvailable())
        return field->redo();
    selection()->performChanges([this] { m_storyboard.redo(); });
    m_grid->revealSelection();
}

void StoryboardWindowController::commitTitle()
{
    if (!m_title->isModified())
        return;
    m_title->setModified(false);
    const QString title = m_title->text();
    changeSlides(ZRLocalizedString("Change Title"), [title](Slide::Settings &settings) { settings.title = title; });
}

void StoryboardWindowController::commitEditing()
{
    if (!isWindowLoaded() || m_isShowing || !document())
        return;
    commitTitle();
    m_seconds->interpretText();
    m_angle->interpretText();
}

bool StoryboardWindowController::eventFilter(QObject *watched, QEvent *event)
{
    // Before the document is asked whether it is edited. Where that fails the window stays.
    if (event->type() == QEvent::Close
        && !platform::callGuarded(windows(), QStringLiteral("taking over what was typed"),
                                  [this] { commitEditing(); })) {
        event->ignore();
        return true;
    }
    return ZRWindowController::eventFilter(watched, event);
}

void StoryboardWindowController::changeSlides(const QString &actionName,
                                              const std::function<void(Slide::Settings &)> &change)
{
    if (m_isShowing || !document())
        return;
    commitEditing();
    m_storyboard.changeSlides(storyboardSelection().slides(), actionName, change);
}

void StoryboardWindowController::addFiles(const QStringList &paths)
{
    addFiles(paths, storyboardSelection().indexBehindSlides(), storyboardSelection().indexBehindSongs());
}

void StoryboardWindowController::addFiles(const QStringList &paths, qsizetype slideIndex, qsizetype songIndex)
{
    StoryboardDocument::Slides::Items slides;
    StoryboardDocument::Songs::Items songs;
    QStringList others;
    for (const QString &path : paths) {
        const QString kind = QMimeDatabase().mimeTypeForFile(path).name();
        if (kind.startsWith(QLatin1String("image/")))
            slides.append(std::make_shared<Slide>(path));
        else if (kind.startsWith(QLatin1String("audio/")))
            songs.append(std::make_shared<Song>(path));
        else
            others.append(QFileInfo(path).fileName());
    }
    if (!slides.isEmpty() || !songs.isEmpty()) {
        edit(slides.isEmpty() ? ZRLocalizedString("Add Songs") : ZRLocalizedString("Add Photos"), [&] {
            m_storyboard.insertSlides(slides, slideIndex, QString());
            m_storyboard.insertSongs(songs, songIndex, QString());
            if (slides.isEmpty())
                storyboardSelection().select({songs.cbegin(), songs.cend()});
            else
                storyboardSelection().select({slides.cbegin(), slides.cend()});
        });
    }
    m_status->setText(others.isEmpty()
                          ? QString()
                          : ZRLocalizedString("Neither a photo nor a song: %1").arg(others.join(QLatin1String(", "))));
}

void StoryboardWindowController::dropOnGrid(const QMimeData &data, qsizetype index, bool isFromHere)
{
    commitEditing();
    if (isFromHere)
        m_storyboard.moveSlides(storyboardSelection().slides(), index);
    else
        drop(data, index, storyboardSelection().indexBehindSongs());
}

void StoryboardWindowController::dropOnSongs(const QMimeData &data, qsizetype index, bool isFromHere)
{
    commitEditing();
    if (isFromHere)
        m_storyboard.moveSongs(storyboardSelection().songs(), index);
    else
        drop(data, storyboardSelection().indexBehindSlides(), index);
}

void StoryboardWindowController::drop(const QMimeData &data, qsizetype slideIndex, qsizetype songIndex)
{
    if (data.hasFormat(StoryboardSelection::mimeType()))
        insert(ZRLocalizedString("Add Slides"), data, slideIndex, songIndex);
    else
        addFiles(localPaths(data), slideIndex, songIndex);
}

void StoryboardWindowController::insert(const QString &actionName, const QMimeData &data, qsizetype slideIndex,
                                        qsizetype songIndex)
{
    StoryboardSelection::Items items;
    try {
        items = StoryboardSelection::itemsOf(data);
    } catch (const platform::InvalidArchive &) {
        m_status->setText(ZRLocalizedString("The slides cannot be read."));
    }
    if (!items.isEmpty())
        edit(actionName, [&] { storyboardSelection().insertItems(items, slideIndex, songIndex); });
}

void StoryboardWindowController::chooseFiles(const QString &title, const QString &filter)
{
    const QStringList paths = QFileDialog::getOpenFileNames(window(), title, QString(), filter);
    if (!paths.isEmpty())
        addFiles(paths);
}

void StoryboardWindowController::cut()
{
    if (QLineEdit *const field = focusedField())
        return field->cut();
    if (storyboardSelection().isEmpty())
        return;
    storyboardSelection().copy();
    edit(ZRLocalizedString("Cut"), [this] { storyboardSelection().removeFromDocument(); });
}

void StoryboardWindowController::copy()
{
    if (QLineEdit *const field = focusedField())
        return field->copy();
    storyboardSelection().copy();
}

void StoryboardWindowController::paste()
{
    if (QLineEdit *const field = focusedField())
        return field->paste();
    if (StoryboardSelection::canPaste())
        insert(ZRLocalizedString("Paste"), *QGuiApplication::clipboard()->mimeData(),
               storyboardSelection().indexBehindSlides(), storyboardSelection().indexBehindSongs());
}

void StoryboardWindowController::deleteSelected()
{
    if (QLineEdit *const field = focusedField())
        return field->del();
    if (!storyboardSelection().isEmpty())
        edit(ZRLocalizedString("Delete"), [this] { storyboardSelection().removeFromDocument(); });
}

void StoryboardWindowController::selectAll()
{
    if (QLineEdit *const field = focusedField())
        return field->selectAll();
    // The selection knows which kind is meant only when something is selected.
    const auto &slides = m_storyboard.slides().items();
    const auto &songs = m_storyboard.songs().items();
    if (!storyboardSelection().isEmpty())
        selection()->selectAll(this);
    else if (m_songsView->hasFocus() && !songs.isEmpty())
        storyboardSelection().select({songs.cbegin(), songs.cend()});
    else
        storyboardSelection().select({slides.cbegin(), slides.cend()});
}

void StoryboardWindowController::selectNothing()
{
    commitEditing();
    selection()->removeAllSelections();
}

void StoryboardWindowController::moveSelected(int by)
{
    commitEditing();
    const auto place = [by](const auto &list, const auto &items) {
        return by < 0 ? list.indexOf(items.first().get()) - 1 : list.indexOf(items.last().get()) + 2;
    };
    const auto slides = storyboardSelection().slides();
    const auto songs = storyboardSelection().songs();
    if (!slides.isEmpty())
        m_storyboard.moveSlides(slides, place(m_storyboard.slides(), slides));
    else if (!songs.isEmpty())
        m_storyboard.moveSongs(songs, place(m_storyboard.songs(), songs));
    m_grid->revealSelection();
}

// What shows

void StoryboardWindowController::documentChanged()
{
    if (!m_grid)
        return; // the window was never shown
    {
        const QScopedValueRollback showing(m_isShowing, true);
        m_grid->setSlides(m_storyboard.slides().items());
        const auto &songs = m_storyboard.songs().items();
        m_songs->setContent({songs.cbegin(), songs.cend()});
    }
    selection()->performChanges([this] {
        for (const auto &set : selection()->selectionItemSets())
            set->validateItems();
    });
    showSelection();
}

void StoryboardWindowController::takeGridSelection()
{
    if (m_isShowing || !document())
        return;
    QList<platform::ObjectPointer> items;
    for (const platform::Cell *const cell : m_grid->selectedCells()) {
        if (cell->representedObject())
            items.append(cell->representedObject());
    }
    // Nothing selected here may mean that songs are.
    if (!items.isEmpty() || storyboardSelection().songCount() == 0)
        storyboardSelection().select(items);
}

void StoryboardWindowController::takeSongSelection()
{
    if (m_isShowing || !document())
        return;
    QList<platform::ObjectPointer> items;
    for (const QModelIndex &index : m_songsView->selectionModel()->selectedRows())
        items.append(m_storyboard.songs().items().at(index.row()));
    if (!items.isEmpty() || storyboardSelection().slideCount() == 0)
        storyboardSelection().select(items);
}

void StoryboardWindowController::selectionDidChange(ZRSelection &)
{
    if (isWindowLoaded() && document())
        showSelection();
}

void StoryboardWindowController::showSelection()
{
    const QScopedValueRollback showing(m_isShowing, true);
    platform::IndexSet indexes;
    const auto slides = storyboardSelection().slides();
    for (const auto &slide : slides)
        indexes.addIndex(m_storyboard.slides().indexOf(slide.get()));
    m_grid->setSelectedIndexes(indexes);
    QItemSelection rows;
    for (const auto &song : storyboardSelection().songs()) {
        const QModelIndex row = m_songs->index(int(m_storyboard.songs().indexOf(song.get())));
        rows.select(row, row);
    }
    m_songsView->selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect);
    showForm(slides);
    updateActions();
    updateTexts();
}

void StoryboardWindowController::showForm(const StoryboardDocument::Slides::Items &slides)
{
    m_slideBox->setEnabled(!slides.isEmpty());
    m_slideBox->setTitle(slides.size() > 1 ? ZRLocalizedString("%n Slides", int(slides.size()))
                                           : ZRLocalizedString("Slide"));
    const Slide::Settings settings = slides.isEmpty() ? Slide::Settings() : slides.first()->settings();
    const auto haveOne = [&](auto Slide::Settings::*setting) {
        return std::all_of(slides.cbegin(), slides.cend(),
                           [&](const auto &slide) { return slide->settings().*setting == settings.*setting; });
    };
    const bool haveOneTitle = haveOne(&Slide::Settings::title);
    m_title->setText(haveOneTitle ? settings.title : QString());
    m_title->setPlaceholderText(haveOneTitle ? QString() : ZRLocalizedString("Several titles"));
    const auto show = [](NumberBox &box, bool isOne, double number) {
        isOne ? box.showNumber(number) : box.showSeveral(number);
    };
    show(*m_seconds, haveOne(&Slide::Settings::seconds), settings.seconds);
    show(*m_angle, haveOne(&Slide::Settings::angle), settings.angle);
    m_transition->setCurrentIndex(haveOne(&Slide::Settings::transition) ? int(settings.transition) : -1);
}

void StoryboardWindowController::updateActions()
{
    if (!isWindowLoaded() || !document()) // which may be going
        return;
    for (QAction *const action : std::as_const(m_selectionActions))
        action->setEnabled(!storyboardSelection().isEmpty() || focusedField());
    for (QAction *const action : std::as_const(m_slideActions))
        action->setEnabled(storyboardSelection().slideCount() > 0);
    m_paste->setEnabled(StoryboardSelection::canPaste() || focusedField());
    const QUndoStack &stack = m_storyboard.undoManager().stack();
    m_undo->setText(actionText(ZRLocalizedString("&Undo"), stack.undoText()));
    m_undo->setEnabled(stack.canUndo() || focusedField());
    m_redo->setText(actionText(ZRLocalizedString("&Redo"), stack.redoText()));
    m_redo->setEnabled(stack.canRedo() || focusedField());
}

void StoryboardWindowController::updateTexts()
{
    const qsizetype selected = storyboardSelection().slideCount() + storyboardSelection().songCount();
    QString text =
        QStringLiteral("%1, %2, %3")
            .arg(ZRLocalizedString("%n slides", int(m_storyboard.slides().count())),
                 ZRLocalizedString("%n songs", int(m_storyboard.songs().count())), timeText(m_storyboard.duration()));
    if (selected > 0)
        text += QStringLiteral(" – ") + ZRLocalizedString("%n selected", int(selected));
    m_count->setText(text);
}
