#include "StoryboardSelection.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>

#include <algorithm>

namespace {

StoryboardDocument *storyboardOf(ZRDocument *document)
{
    return static_cast<StoryboardDocument *>(document);
}

/// The items of one kind, in the order in which the document has them.
template <class Item, const ItemList<Item> &(StoryboardDocument::*list)() const>
class ItemSet : public ZRSelectionItemSet
{
public:
    std::unique_ptr<ZRSelectionItemSet> clone() const override { return std::make_unique<ItemSet>(*this); }
    const platform::ObjectClass *itemClass() const override { return &Item::staticClass(); }
    quint32 absoluteItemCount() const override { return document() ? quint32(items().count()) : 0; }
    quint32 absoluteIndexOfItem(const platform::ObjectPointer &item) const override
    {
        const qsizetype index = document() ? items().indexOf(item.get()) : -1;
        return index < 0 ? NotFound : quint32(index);
    }
    platform::ObjectPointer itemAtAbsoluteIndex(quint32 index) const override
    {
        return document() ? items().items().value(index) : nullptr;
    }

private:
    const ItemList<Item> &items() const { return (storyboardOf(document())->*list)(); }
};

using SlideSet = ItemSet<Slide, &StoryboardDocument::slides>;
using SongSet = ItemSet<Song, &StoryboardDocument::songs>;

template <class Item>
QList<std::shared_ptr<Item>> sorted(const ZRSelection &selection)
{
    QList<std::shared_ptr<Item>> items;
    for (const platform::ObjectPointer &item : selection.sortedItemsOfClass(Item::staticClass()))
        items.append(std::static_pointer_cast<Item>(item));
    return items;
}

/// Where to insert behind the selected ones: at the end without any.
template <class Item>
qsizetype placeBehind(const QList<std::shared_ptr<Item>> &selected, const ItemList<Item> &all)
{
    return selected.isEmpty() ? all.count() : all.indexOf(selected.last().get()) + 1;
}

} // namespace

const QString &StoryboardSelection::mimeType()
{
    static const QString type = QStringLiteral("application/x-zrcommon-storyboard-items");
    return type;
}

StoryboardSelection::StoryboardSelection(StoryboardDocument *document)
{
    selectionItemSets().push_back(std::make_unique<SlideSet>());
    selectionItemSets().push_back(std::make_unique<SongSet>());
    setDocument(document);
}

std::unique_ptr<ZRSelection> StoryboardSelection::clone() const
{
    return std::make_unique<StoryboardSelection>(*this);
}

StoryboardDocument::Slides::Items StoryboardSelection::slides() const
{
    return sorted<Slide>(*this);
}

StoryboardDocument::Songs::Items StoryboardSelection::songs() const
{
    return sorted<Song>(*this);
}

void StoryboardSelection::select(const QList<platform::ObjectPointer> &items)
{
    const auto isSelected = [this](const platform::ObjectPointer &item) { return containsItem(item); };
    if (slideCount() + songCount() == items.size() && std::all_of(items.cbegin(), items.cend(), isSelected))
        return;
    performChanges([&] {
        removeAllSelections();
        for (const platform::ObjectPointer &item : items)
            addItem(item);
    });
}

std::unique_ptr<QMimeData> StoryboardSelection::mimeData() const
{
    const auto selectedSlides = slides();
    const auto selectedSongs = songs();
    platform::KeyedArchiver archiver;
    archiver.encode(selectedSlides, "slides");
    archiver.encode(selectedSongs, "songs");
    const auto archive = archiver.finishEncoding();
    if (!archive)
        return nullptr; // a title that no file can hold
    QList<QUrl> files;
    for (const auto &slide : selectedSlides)
        files.append(QUrl::fromLocalFile(slide->photoPath()));
    for (const auto &song : selectedSongs)
        files.append(QUrl::fromLocalFile(song->path()));
    auto data = std::make_unique<QMimeData>();
    data->setData(mimeType(), archive.value());
    data->setUrls(files);
    return data;
}

void StoryboardSelection::copy(QObject *)
{
    if (isEmpty())
        return;
    if (auto data = mimeData())
        QGuiApplication::clipboard()->setMimeData(data.release());
}

bool StoryboardSelection::canPaste()
{
    const QMimeData *const data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasFormat(mimeType());
}

qsizetype StoryboardSelection::indexBehindSlides() const
{
    return placeBehind(slides(), storyboardOf(document())->slides());
}

qsizetype StoryboardSelection::indexBehindSongs() const
{
    return placeBehind(songs(), storyboardOf(document())->songs());
}

StoryboardSelection::Items StoryboardSelection::itemsOf(const QMimeData &data)
{
    platform::KeyedUnarchiver unarchiver(data.data(mimeType()));
    return {StoryboardDocument::Slides::distinct(unarchiver.decodeObjectsOfClass<Slide>("slides")),
            StoryboardDocument::Songs::distinct(unarchiver.decodeObjectsOfClass<Song>("songs"))};
}

bool StoryboardSelection::canTake(const QMimeData &data)
{
    return data.hasFormat(mimeType()) || data.hasUrls();
}

void StoryboardSelection::insertItems(const Items &items, qsizetype slideIndex)
{
    insertItems(items, slideIndex, indexBehindSongs());
}

void StoryboardSelection::insertItems(const Items &items, qsizetype slideIndex, qsizetype songIndex)
{
    if (items.isEmpty())
        return;
    StoryboardDocument &storyboard = *storyboardOf(document());
    performChanges([&] {
        storyboard.insertSlides(items.slides, slideIndex, QString());
        storyboard.insertSongs(items.songs, songIndex, QString());
        if (items.slides.isEmpty())
            select({items.songs.cbegin(), items.songs.cend()});
        else
            select({items.slides.cbegin(), items.slides.cend()});
    });
}

void StoryboardSelection::pasteWithPosition(int)
{
    const QMimeData *const data = QGuiApplication::clipboard()->mimeData();
    if (data && document())
        insertItems(itemsOf(*data), indexBehindSlides());
}

void StoryboardSelection::removeFromDocument()
{
    StoryboardDocument *const storyboard = storyboardOf(document());
    if (!storyboard)
        return;
    performChanges([&] {
        const auto removedSlides = slides();
        const auto removedSongs = songs();
        aboutToClear();
        storyboard->removeSlides(removedSlides, QString());
        storyboard->removeSongs(removedSongs, QString());
    });
}
