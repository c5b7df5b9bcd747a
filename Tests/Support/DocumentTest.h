#pragma once

#include "Platform/Foundation/LocalizedString.h"
#include "Platform/Interface/Document.h"
#include "Platform/Interface/DocumentPanels.h"
#include "Platform/Interface/WindowController.h"
#include "Support/TestSupport.h"

#include <QCloseEvent>
#include <QTemporaryDir>

#include <deque>
#include <functional>
#include <memory>
#include <stdexcept>

/// What tests of documents share: a person who answers all questions, and a document whose content is one text.
namespace documentTest {

/// Answers as it is told to, and notes what was asked: "save? NAME", "confirm: MESSAGE | EXPLANATION | BUTTON",
/// "error: MESSAGE | EXPLANATION", "where? SUGGESTION | FILTER | EXTENSION", "what? FILTERS".
class Person : public platform::DocumentPanels
{
public:
    QStringList &asked;
    SaveAnswer saveAnswer = SaveAnswer::Cancel;
    std::deque<SaveAnswer> saveAnswers; // before that one
    bool confirms = false;
    QString place; // where to save
    QStringList files; // to open
    std::function<void()> meanwhile; // called once, while a question is open

    explicit Person(QStringList &log)
        : asked(log)
    { }

    QStringList chooseFilesToOpen(const QStringList &nameFilters) override
    {
        ask(QStringLiteral("what? ") + nameFilters.join(QStringLiteral("; ")));
        return files;
    }
    QString chooseFileToSave(platform::Document &, const QString &suggestedPath, const QString &nameFilter,
                             const QString &fileExtension) override
    {
        ask(QStringLiteral("where? %1 | %2 | %3").arg(suggestedPath, nameFilter, fileExtension));
        return place;
    }
    SaveAnswer askWhetherToSave(platform::Document &document) override
    {
        ask(QStringLiteral("save? ") + document.displayName());
        if (saveAnswers.empty())
            return saveAnswer;
        const SaveAnswer answer = saveAnswers.front();
        saveAnswers.pop_front();
        return answer;
    }
    bool confirm(platform::Document &, const QString &message, const QString &explanation,
                 const QString &button) override
    {
        ask(QStringLiteral("confirm: %1 | %2 | %3").arg(message, explanation, button));
        return confirms;
    }
    void presentError(platform::Document *, const QString &message, const QString &explanation) override
    {
        ask(QStringLiteral("error: %1 | %2").arg(message, explanation));
    }

private:
    void ask(const QString &question)
    {
        asked.append(question);
        if (const auto call = std::exchange(meanwhile, nullptr))
            call();
    }
};

/// A window that can refuse to be closed.
class Window : public QWidget
{
public:
    bool refuses = false;

protected:
    void closeEvent(QCloseEvent *event) override { event->setAccepted(!refuses); }
};

/// Notes what it is told, in `log`.
class Controller : public platform::WindowController
{
public:
    explicit Controller(QStringList *log = nullptr)
        : m_log(log)
    { }

    Window *ownWindow() { return static_cast<Window *>(window()); }
    void documentChanged() override { note("documentChanged"); }

    std::function<void()> whenClosing;
    bool failsToMakeWindow = false;

protected:
    std::unique_ptr<QWidget> makeWindow() override
    {
        if (failsToMakeWindow)
            throw std::runtime_error("no window today");
        auto window = std::make_unique<Window>();
        window->resize(200, 100);
        return window;
    }
    void windowDidLoad() override { note("windowDidLoad"); }
    void windowDidBecomeKey() override { note("windowDidBecomeKey"); }
    void windowWillClose() override
    {
        note(ownWindow()->isVisible() ? "windowWillClose" : "windowWillClose, hidden");
        if (whenClosing)
            whenClosing();
    }

private:
    void note(const char *text)
    {
        if (m_log)
            m_log->append(QString::fromLatin1(text));
    }

    QStringList *m_log;
};

/// One text; its type is "Text".
class TextDocument : public platform::Document
{
public:
    QString text;
    QString throws; // what the hooks throw, if anything
    QString reason; // what the hooks say before they fail
    bool fails = false;
    bool makesController = true;

    TextDocument() { setFileType(QStringLiteral("Text")); }

    void setText(const QString &next)
    {
        undoManager().registerUndo(this, [this, before = text] { setText(before); });
        text = next;
    }
    Controller &addController(QStringList *log = nullptr)
    {
        auto controller = std::make_unique<Controller>(log);
        Controller &added = *controller;
        addWindowController(std::move(controller));
        return added;
    }
    void makeWindowControllers() override
    {
        if (makesController)
            addController();
    }

    std::optional<QByteArray> dataRepresentationOfType(const QString &type) override
    {
        if (hookFails() || type != QLatin1String("Text"))
            return std::nullopt;
        return text.toUtf8();
    }
    bool loadDataRepresentation(const QByteArray &data, const QString &ofType) override
    {
        if (hookFails() || ofType != QLatin1String("Text") || data.startsWith("damaged"))
            return false;
        text = QString::fromUtf8(data);
        return true;
    }

private:
    bool hookFails()
    {
        if (!throws.isEmpty())
            throw std::runtime_error(throws.toStdString());
        setFailureReason(reason);
        return fails;
    }
};

/// English texts, a person, and a folder.
struct Test : testing::Test {
    QStringList asked;
    Person *person = nullptr;
    QTemporaryDir folder;

    Test()
    {
        platform::setLocalizedStringLanguages({QStringLiteral("en")});
        auto panels = std::make_unique<Person>(asked);
        person = panels.get();
        platform::DocumentPanels::setCurrent(std::move(panels));
    }
    ~Test() override
    {
        platform::DocumentPanels::setCurrent(nullptr);
        platform::setLocalizedStringLanguages({});
    }

    QString path(const char *name) const { return folder.filePath(QString::fromUtf8(name)); }
    QString madeFile(const char *name, const QByteArray &bytes) const
    {
        testSupport::writeFile(path(name), bytes);
        return path(name);
    }
    QStringList takeAsked() { return std::exchange(asked, {}); }
};

} // namespace documentTest
