#include "Platform/Interface/DocumentPanels.h"

#include "Support/DocumentTest.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>

namespace {

using documentTest::TextDocument;
using platform::DocumentPanels;
using SaveAnswer = platform::DocumentPanels::SaveAnswer;

/// The panels of Qt, answered through their buttons.
struct DocumentPanelsTest : testing::Test {
    TextDocument document;
    QStringList texts; // of the message: text, explanation, buttons

    DocumentPanelsTest() { platform::setLocalizedStringLanguages({QStringLiteral("en")}); }
    ~DocumentPanelsTest() override { platform::setLocalizedStringLanguages({}); }

    /// Calls with the dialog that is going to be open.
    template <class Dialog>
    void whenOpen(std::function<void(Dialog &)> call)
    {
        auto *const timer = new QTimer(&document);
        QObject::connect(timer, &QTimer::timeout, timer, [timer, call] {
            if (auto *const dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget())) {
                delete timer;
                call(*dialog);
            }
        });
        timer->start(0);
    }
    void click(const char *buttonText)
    {
        whenOpen<QMessageBox>([this, buttonText](QMessageBox &box) {
            texts = QStringList{box.text(), box.informativeText()};
            QAbstractButton *clicked = nullptr;
            for (QAbstractButton *const button : box.buttons()) {
                texts.append(button->text());
                if (button->text() == QString::fromUtf8(buttonText))
                    clicked = button;
            }
            if (clicked)
                clicked->click();
            else
                box.reject();
        });
    }
};

TEST_F(DocumentPanelsTest, AsksWhetherToSave)
{
    const std::pair<const char *, SaveAnswer> rows[] = {{"Save", SaveAnswer::Save},
                                                        {"Discard", SaveAnswer::Discard},
                                                        {"Cancel", SaveAnswer::Cancel},
                                                        {"the escape key", SaveAnswer::Cancel}};
    for (const auto &[button, answer] : rows) {
        click(button);
        EXPECT_EQ(DocumentPanels::current().askWhetherToSave(document), answer) << button;
        EXPECT_EQ(texts.mid(0, 2),
                  (QStringList{QStringLiteral("Do you want to save the changes to “Untitled”?"),
                               QStringLiteral("Your changes will be lost if you do not save them.")}));
        texts.sort();
        for (const char *text : {"Cancel", "Discard", "Save"})
            EXPECT_TRUE(texts.contains(QString::fromLatin1(text)));
    }
}

TEST_F(DocumentPanelsTest, AsksInGerman)
{
    platform::setLocalizedStringLanguages({QStringLiteral("de")});
    click("Verwerfen");
    EXPECT_EQ(DocumentPanels::current().askWhetherToSave(document), SaveAnswer::Discard);
    EXPECT_EQ(texts.first(), QStringLiteral("Möchten Sie die Änderungen an „Ohne Titel“ sichern?"));
    EXPECT_TRUE(texts.contains(QStringLiteral("Sichern")));
    EXPECT_TRUE(texts.contains(QStringLiteral("Abbrechen")));
}

TEST_F(DocumentPanelsTest, Confirms)
{
    const auto confirm = [this] {
        return DocumentPanels::current().confirm(document, QStringLiteral("Really?"),
                                                 QStringLiteral("<b>It is gone.</b>"), QStringLiteral("Do It"));
    };
    click("Do It");
    EXPECT_TRUE(confirm());
    EXPECT_EQ(texts.first(), QStringLiteral("Really?"));
    click("Cancel");
    EXPECT_FALSE(confirm());
    click("the escape key");
    EXPECT_FALSE(confirm());
}

TEST_F(DocumentPanelsTest, PresentsErrors)
{
    click("OK");
    DocumentPanels::current().presentError(nullptr, QStringLiteral("It failed."), QStringLiteral("So it is."));
    EXPECT_EQ(texts, (QStringList{QStringLiteral("It failed."), QStringLiteral("So it is."), QStringLiteral("OK")}));
    click("the escape key");
    DocumentPanels::current().presentError(&document, QStringLiteral("It failed."), QString());
}

TEST_F(DocumentPanelsTest, APanelMayLoseItsWindow)
{
    documentTest::Controller &controller = document.addController();
    controller.showWindow();
    whenOpen<QMessageBox>([&](QMessageBox &box) {
        EXPECT_EQ(box.parentWidget(), controller.window());
        delete controller.window();
    });
    EXPECT_EQ(DocumentPanels::current().askWhetherToSave(document), SaveAnswer::Cancel);
}

TEST_F(DocumentPanelsTest, ChoosesAFileToSave)
{
    const QTemporaryDir folder;
    whenOpen<QFileDialog>([](QFileDialog &dialog) {
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptSave);
        EXPECT_EQ(dialog.nameFilters(), QStringList{QStringLiteral("Text (*.text)")});
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    const auto choose = [&](const char *name) {
        return DocumentPanels::current().chooseFileToSave(document, folder.filePath(QString::fromLatin1(name)),
                                                          QStringLiteral("Text (*.text)"), QStringLiteral("text"));
    };
    EXPECT_EQ(choose("chosen"), folder.filePath(QStringLiteral("chosen.text")));
    whenOpen<QFileDialog>([](QFileDialog &dialog) { dialog.reject(); });
    EXPECT_EQ(choose("chosen"), QString());
    whenOpen<QFileDialog>([](QFileDialog &dialog) { delete &dialog; });
    EXPECT_EQ(choose("chosen"), QString());
}

TEST_F(DocumentPanelsTest, ChoosesFilesToOpen)
{
    const QTemporaryDir folder;
    testSupport::writeFile(folder.filePath(QStringLiteral("a.text")), "a");
    whenOpen<QFileDialog>([&](QFileDialog &dialog) {
        EXPECT_EQ(dialog.nameFilters(),
                  (QStringList{QStringLiteral("Text (*.text)"), QStringLiteral("Song (*.song)")}));
        dialog.setDirectory(folder.path());
        dialog.findChild<QLineEdit *>()->setText(QStringLiteral("a.text"));
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    EXPECT_EQ(
        DocumentPanels::current().chooseFilesToOpen({QStringLiteral("Text (*.text)"), QStringLiteral("Song (*.song)")}),
        QStringList{folder.filePath(QStringLiteral("a.text"))});
}

TEST_F(DocumentPanelsTest, AreReplacedAndPutBack)
{
    DocumentPanels &ofQt = DocumentPanels::current();
    QStringList log;
    auto person = std::make_unique<documentTest::Person>(log);
    DocumentPanels *const raw = person.get();
    EXPECT_EQ(DocumentPanels::setCurrent(std::move(person)), nullptr);
    EXPECT_EQ(&DocumentPanels::current(), raw);
    EXPECT_EQ(DocumentPanels::setCurrent(nullptr).get(), raw);
    EXPECT_EQ(&DocumentPanels::current(), &ofQt);
}

} // namespace
