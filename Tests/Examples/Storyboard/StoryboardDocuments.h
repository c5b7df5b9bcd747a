#pragma once

#include "Storyboard/SlideGrid.h"
#include "Storyboard/SongList.h"
#include "Storyboard/StoryboardController.h"
#include "Storyboard/StoryboardWindowController.h"

#include "Platform/Interface/DocumentPanels.h"
#include "Support/FolderTest.h"

#include <QAction>
#include <QMainWindow>

#include <stdexcept>

namespace testSupport {

using Slides = StoryboardDocument::Slides::Items;
using Songs = StoryboardDocument::Songs::Items;

/// Answers in the person's place.
class StoryboardPanels : public platform::DocumentPanels
{
public:
    QString error;
    void presentError(platform::Document *, const QString &message, const QString &explanation) override
    {
        error = message + QLatin1Char('|') + explanation;
    }
    bool confirm(platform::Document &, const QString &, const QString &, const QString &) override { return true; }
    int questions = 0;
    SaveAnswer saveAnswer = SaveAnswer::Discard;
    SaveAnswer askWhetherToSave(platform::Document &) override
    {
        ++questions;
        return saveAnswer;
    }
};

/// Counts what a document and a selection announce.
struct StoryboardAnnouncements final : ZRDocumentObserver, ZRSelectionObserver {
    int documentCount = 0;
    int selectionCount = 0;
    void documentDidChange(ZRDocument &) override { ++documentCount; }
    void selectionDidChange(ZRSelection &) override { ++selectionCount; }
    QPair<int, int> take() { return {std::exchange(documentCount, 0), std::exchange(selectionCount, 0)}; }
};

/// A new storyboard with its window, which is not shown.
struct StoryboardDocuments : FolderTest {
    StoryboardDocuments()
    {
        QCoreApplication::setOrganizationName("Tests");
        QCoreApplication::setApplicationName("Storyboard");
        auto made = std::make_unique<StoryboardPanels>();
        panels = made.get();
        platform::DocumentPanels::setCurrent(std::move(made));
        document = static_cast<StoryboardDocument *>(controller.newDocument());
        window = static_cast<StoryboardWindowController *>(document->windowControllers().first());
        document->addObserver(&announcements);
        selection().addObserver(&announcements);
    }
    ~StoryboardDocuments() override
    {
        document->removeObserver(&announcements);
        selection().removeObserver(&announcements);
        document->closeWithoutAsking();
        platform::DocumentPanels::setCurrent(nullptr);
    }
    StoryboardSelection &selection() const { return window->storyboardSelection(); }
    template <class Widget>
    Widget &widget(const char *name) const
    {
        return *window->window()->findChild<Widget *>(QString::fromLatin1(name));
    }
    QAction &action(const QKeySequence &keys) const
    {
        for (QAction *const each : window->window()->findChildren<QAction *>()) {
            if (each->shortcuts().contains(keys))
                return *each;
        }
        throw std::runtime_error("no such action");
    }
    Slides fill(int count)
    {
        Slides slides;
        for (int i = 0; i < count; ++i)
            slides.append(std::make_shared<Slide>(in("Photo %1.jpg").arg(i)));
        document->insertSlides(slides, document->slides().count(), QStringLiteral("Add"));
        announcements.take();
        return slides;
    }
    void select(const Slides &slides) { selection().select({slides.cbegin(), slides.cend()}); }
    static QStringList titles(const StoryboardDocument &document)
    {
        QStringList titles;
        for (const auto &slide : document.slides().items())
            titles.append(slide->settings().title);
        return titles;
    }
    QList<int> shown() const
    {
        QList<int> indexes;
        for (const platform::Cell *const cell : window->grid().selectedCells())
            indexes.append(int(cell->index()));
        return indexes;
    }

    StoryboardController controller;
    StoryboardPanels *panels = nullptr;
    StoryboardDocument *document = nullptr;
    StoryboardWindowController *window = nullptr;
    StoryboardAnnouncements announcements;
};

} // namespace testSupport
