#pragma once

#include "StoryboardSelection.h"

#include "Platform/Interface/ArrayController.h"
#include "ZRCommon/ZRSelectionObserver.h"
#include "ZRCommon/ZRWindowController.h"

#include <QPointer>

#include <functional>

class NumberBox;
class QAction;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QMainWindow;
class QMenu;
class QMimeData;
class SlideGrid;
class SongList;

/// The window of a storyboard: its slides in a grid, what is set of the selected ones, and its songs.
class StoryboardWindowController : public ZRWindowController, private ZRSelectionObserver
{
    Q_OBJECT

public:
    explicit StoryboardWindowController(StoryboardDocument &document);
    ~StoryboardWindowController() override;

    /// Inserts photos as slides in front of the slide at the index, and songs likewise, and selects what is new. Files
    /// that are neither are named in the status bar.
    void addFiles(const QStringList &paths, qsizetype slideIndex, qsizetype songIndex);
    /// Behind the selected slides and songs, or at the end.
    void addFiles(const QStringList &paths);

    SlideGrid &grid() const { return *m_grid; }
    SongList &songsView() const { return *m_songsView; }
    StoryboardSelection &storyboardSelection() const;
    QString statusText() const;

    /// Takes over what was typed into the fields.
    void commitEditing();
    void documentChanged() override;

protected:
    void windowDidLoad() override;
    void windowDidBecomeKey() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void selectionDidChange(ZRSelection &selection) override;

    void findOutlets();
    void makeMenus();
    void makeEditMenu(QMenu &menu);
    void makeSlidesMenu(QMenu &menu);
    void connectForm();

    /// Does something that can be undone in one step, together with what it does to the selection, and that is
    /// announced once.
    void edit(const QString &actionName, const std::function<void()> &body);
    using Snapshot = std::shared_ptr<const ZRSelection>;
    /// Registers a call that selects one snapshot when it is undone and the other when it is redone; null for nothing.
    void registerSelection(const Snapshot &undone, const Snapshot &redone);
    void commitTitle();
    void undo();
    void redo();
    void changeSlides(const QString &actionName, const std::function<void(Slide::Settings &)> &change);
    void dropOnGrid(const QMimeData &data, qsizetype index, bool isFromHere);
    void dropOnSongs(const QMimeData &data, qsizetype index, bool isFromHere);
    void drop(const QMimeData &data, qsizetype slideIndex, qsizetype songIndex);
    void insert(const QString &actionName, const QMimeData &data, qsizetype slideIndex, qsizetype songIndex);
    void chooseFiles(const QString &title, const QString &filter);
    void cut();
    void copy();
    void paste();
    void deleteSelected();
    void selectAll();
    void selectNothing();
    void moveSelected(int by);
    void takeGridSelection();
    void takeSongSelection();
    void showSelection();
    void showForm(const StoryboardDocument::Slides::Items &slides);
    void updateActions();
    void updateTexts();

    StoryboardDocument &m_storyboard;
    SlideGrid *m_grid = nullptr;
    SongList *m_songsView = nullptr;
    QGroupBox *m_slideBox = nullptr;
    QLineEdit *m_title = nullptr;
    NumberBox *m_seconds = nullptr;
    QComboBox *m_transition = nullptr;
    NumberBox *m_angle = nullptr;
    QLabel *m_count = nullptr;
    QLabel *m_status = nullptr;
    QList<QAction *> m_selectionActions; // that need something selected
    QList<QAction *> m_slideActions; // that need selected slides
    QAction *m_undo = nullptr;
    QAction *m_redo = nullptr;
    QAction *m_paste = nullptr;
    std::unique_ptr<platform::ArrayController> m_songs;
    bool m_isShowing = false; // what the views tell is no person's doing
};
