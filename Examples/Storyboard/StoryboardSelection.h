#pragma once

#include "StoryboardDocument.h"

#include "ZRCommon/ZRSelection.h"

#include <QByteArray>

class QMimeData;

/// What is selected in a window of a storyboard: slides or songs.
class StoryboardSelection : public ZRSelection
{
public:
    /// The form in which slides and songs are on the clipboard and in drags within the program: a keyed archive.
    static const QString &mimeType();

    explicit StoryboardSelection(StoryboardDocument *document);
    StoryboardSelection(const StoryboardSelection &) = default;
    std::unique_ptr<ZRSelection> clone() const override;

    /// The selected items in their order.
    StoryboardDocument::Slides::Items slides() const;
    StoryboardDocument::Songs::Items songs() const;
    /// How many are selected, which costs nothing.
    qsizetype slideCount() const { return selectedItemCountOfClass(Slide::staticClass()); }
    qsizetype songCount() const { return selectedItemCountOfClass(Song::staticClass()); }
    bool isEmpty() const { return slideCount() + songCount() == 0; }

    /// Selects these alone, in one change; nothing happens when they are selected already.
    void select(const QList<platform::ObjectPointer> &items);

    /// The selected items for the clipboard or a drag: for this program, and the files for others.
    std::unique_ptr<QMimeData> mimeData() const;
    /// Puts the selected items on the clipboard, if there are any.
    void copy(QObject *sender = nullptr) override;
    struct Items {
        StoryboardDocument::Slides::Items slides;
        StoryboardDocument::Songs::Items songs;
        bool isEmpty() const { return slides.isEmpty() && songs.isEmpty(); }
    };
    /// Copies of what `mimeData` gave. Raises `platform::InvalidArchive` for data that cannot be read.
    static Items itemsOf(const QMimeData &data);
    /// Inserts slides in front of the one at the index, songs behind the selected ones, and selects what is new.
    void insertItems(const Items &items, qsizetype slideIndex);
    /// The same with the songs in front of the one at the index.
    void insertItems(const Items &items, qsizetype slideIndex, qsizetype songIndex);
    /// Inserts what is on the clipboard behind the selected items, or at the end, and selects it.
    void pasteWithPosition(int position) override;
    static bool canPaste();
    /// Whether data holds slides and songs, or files.
    static bool canTake(const QMimeData &data);
    /// Where to insert slides behind the selected ones: at the end without any.
    qsizetype indexBehindSlides() const;
    qsizetype indexBehindSongs() const;
    /// Removes the selected items from the document, and selects the one behind them.
    void removeFromDocument();
};
