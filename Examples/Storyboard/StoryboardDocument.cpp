#include "StoryboardDocument.h"

#include "StoryboardWindowController.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/KeyedUnarchiver.h"
#include "Platform/Interface/DocumentController.h"
#include "ZRCommon/ZRLocalizedString.h"

#include <algorithm>
#include <numeric>

namespace {

const QString typeName = QStringLiteral("Storyboard");
constexpr int currentVersion = 1;

} // namespace

StoryboardDocument::StoryboardDocument()
    : ZRDocument(typeName, currentVersion, 1, 1)
{ }

platform::DocumentType StoryboardDocument::type()
{
    auto &classes = platform::ArchiveClasses::shared();
    classes.registerClass<Slide>(QStringLiteral("Slide"));
    classes.registerClass<Song>(QStringLiteral("Song"));
    return {typeName, QStringLiteral("storyboard"), [] { return std::make_unique<StoryboardDocument>(); }};
}

void StoryboardDocument::undo()
{
    performChanges([this] { undoManager().undo(); });
}

void StoryboardDocument::redo()
{
    performChanges([this] { undoManager().redo(); });
}

double StoryboardDocument::duration() const
{
    return std::accumulate(m_slides.items().cbegin(), m_slides.items().cend(), 0.0,
                           [](double sum, const auto &slide) { return sum + slide->settings().seconds; });
}

void StoryboardDocument::makeWindowControllers()
{
    addWindowController(std::make_unique<StoryboardWindowController>(*this));
}

template <class Change>
void StoryboardDocument::perform(const QString &actionName, std::function<void()> undo, Change change)
{
    performChanges([&] {
        const platform::UndoGroup group(undoManager(), actionName);
        undoManager().registerUndo(this, std::move(undo));
        change();
        documentDidChange();
    });
}

void StoryboardDocument::setSlides(const Slides::Items &slides, const QString &actionName)
{
    perform(
        actionName, [this, before = m_slides.items(), actionName] { setSlides(before, actionName); },
        [&] { m_slides = slides; });
}

void StoryboardDocument::setSongs(const Songs::Items &songs, const QString &actionName)
{
    perform(
        actionName, [this, before = m_songs.items(), actionName] { setSongs(before, actionName); },
        [&] { m_songs = songs; });
}

void StoryboardDocument::insertSlides(const Slides::Items &slides, qsizetype index, const QString &actionName)
{
    if (!slides.isEmpty())
        setSlides(m_slides.inserting(slides, index), actionName);
}

void StoryboardDocument::insertSongs(const Songs::Items &songs, qsizetype index, const QString &actionName)
{
    if (!songs.isEmpty())
        setSongs(m_songs.inserting(songs, index), actionName);
}

void StoryboardDocument::removeSlides(const Slides::Items &slides, const QString &actionName)
{
    const auto others = m_slides.removing(slides);
    if (others.size() < m_slides.count())
        setSlides(others, actionName);
}

void StoryboardDocument::removeSongs(const Songs::Items &songs, const QString &actionName)
{
    const auto others = m_songs.removing(songs);
    if (others.size() < m_songs.count())
        setSongs(others, actionName);
}

void StoryboardDocument::moveSlides(const Slides::Items &slides, qsizetype index)
{
    const auto moved = m_slides.moving(slides, index);
    if (moved != m_slides.items())
        setSlides(moved, ZRLocalizedString("Move Slides"));
}

void StoryboardDocument::moveSongs(const Songs::Items &songs, qsizetype index)
{
    const auto moved = m_songs.moving(songs, index);
    if (moved != m_songs.items())
        setSongs(moved, ZRLocalizedString("Move Songs"));
}

void StoryboardDocument::changeSlides(const Slides::Items &slides, const QString &actionName,
                                      const std::function<void(Slide::Settings &)> &change)
{
    Slides::Items changed;
    QList<Slide::Settings> settings;
    for (const auto &slide : slides) {
        Slide::Settings wanted = slide->settings();
        change(wanted);
        wanted = Slide::withinRanges(wanted);
        if (wanted != slide->settings()) {
            changed.append(slide);
            settings.append(wanted);
        }
    }
    if (!changed.isEmpty())
        setSettings(changed, settings, actionName);
}

void StoryboardDocument::setSettings(const Slides::Items &slides, const QList<Slide::Settings> &settings,
                                     const QString &actionName)
{
    QList<Slide::Settings> before;
    for (const auto &slide : slides)
        before.append(slide->settings());
    perform(
        actionName, [this, slides, before, actionName] { setSettings(slides, before, actionName); },
        [&] {
            for (qsizetype i = 0; i < slides.size(); ++i)
                slides[i]->setSettings(settings[i]);
        });
}

void StoryboardDocument::encodeWithKeyedArchiver(platform::KeyedArchiver &archiver)
{
    archiver.encode(m_slides.items(), "slides");
    archiver.encode(m_songs.items(), "songs");
}

void StoryboardDocument::decodeFromKeyedUnarchiver(platform::KeyedUnarchiver &unarchiver)
{
    if (unarchiver.decodeInt32("read-version") > currentVersion) {
        setFailureReason(ZRLocalizedString("It was written by a newer version of Storyboard."));
        throw platform::InvalidArchive({platform::ErrorCode::Malformed, QStringLiteral("a newer format"), -1, {}});
    }
    if (!unarchiver.containsValueForKey("slides") || !unarchiver.containsValueForKey("songs")) {
        setFailureReason(ZRLocalizedString("It is no storyboard."));
        throw platform::InvalidArchive({platform::ErrorCode::Malformed, QStringLiteral("no slides or songs"), -1, {}});
    }
    const Slides slides(Slides::distinct(unarchiver.decodeObjectsOfClass<Slide>("slides")));
    const Songs songs(Songs::distinct(unarchiver.decodeObjectsOfClass<Song>("songs")));
    m_slides = slides;
    m_songs = songs;
}
