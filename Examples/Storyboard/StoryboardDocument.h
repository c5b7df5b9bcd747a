#pragma once

#include "ItemList.h"
#include "Slide.h"
#include "Song.h"

#include "ZRCommon/ZRDocument.h"

#include <functional>

namespace platform {
struct DocumentType;
}

/// A slide show: slides and songs, each in an order. Every operation that changes it is one batch of changes and can be
/// undone in one step.
class StoryboardDocument : public ZRDocument
{
    Q_OBJECT

public:
    using Slides = ItemList<Slide>;
    using Songs = ItemList<Song>;

    StoryboardDocument();

    /// The type for `platform::DocumentController`, and the classes for archives. To be called once, at the start.
    static platform::DocumentType type();

    const Slides &slides() const { return m_slides; }
    const Songs &songs() const { return m_songs; }
    /// Undo or redo the last action, with one announcement for all that it changes.
    void undo();
    void redo();

    /// How long all slides show, in seconds.
    double duration() const;

    /// Inserts in front of the item at the index, or behind all.
    /// @param actionName what the menu calls it when it is to be undone
    void insertSlides(const Slides::Items &slides, qsizetype index, const QString &actionName);
    void insertSongs(const Songs::Items &songs, qsizetype index, const QString &actionName);
    void removeSlides(const Slides::Items &slides, const QString &actionName);
    void removeSongs(const Songs::Items &songs, const QString &actionName);
    /// Moves items, in their order in the document, in front of the item that is at the index now.
    void moveSlides(const Slides::Items &slides, qsizetype index);
    void moveSongs(const Songs::Items &songs, qsizetype index);
    /// Changes the settings of slides. Nothing happens, and nothing is to be undone, where they stay the same.
    void changeSlides(const Slides::Items &slides, const QString &actionName,
                      const std::function<void(Slide::Settings &)> &change);

    void makeWindowControllers() override;
    void encodeWithKeyedArchiver(platform::KeyedArchiver &archiver) override;
    /// Reads all before it changes anything: what raises leaves the document as it was.
    void decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver) override;

private:
    void setSlides(const Slides::Items &slides, const QString &actionName);
    void setSongs(const Songs::Items &songs, const QString &actionName);
    void setSettings(const Slides::Items &slides, const QList<Slide::Settings> &settings, const QString &actionName);
    template <class Change>
    void perform(const QString &actionName, std::function<void()> undo, Change change);

    Slides m_slides;
    Songs m_songs;
};
