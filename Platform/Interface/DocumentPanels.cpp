#include "Platform/Interface/DocumentPanels.h"

#include "Platform/Foundation/LocalizedString.h"
#include "Platform/Interface/Document.h"
#include "Platform/Interface/WindowController.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

#include <utility>

namespace platform {

namespace {

std::unique_ptr<DocumentPanels> &replacement()
{
    static std::unique_ptr<DocumentPanels> panels;
    return panels;
}

/// The window that a panel for the document belongs to; null for none.
QWidget *windowOfDocument(const Document *document)
{
    if (!document)
        return nullptr;
    for (WindowController *const controller : document->windowControllers()) {
        if (controller->isWindowLoaded() && controller->window() && controller->window()->isVisible())
            return controller->window();
    }
    return nullptr;
}

/// A message box that may lose its parent while it is open.
class Message
{
public:
    Message(QMessageBox::Icon icon, const Document *document, const QString &message, const QString &explanation)
        : m_box(new QMessageBox(icon, {}, message, QMessageBox::NoButton, windowOfDocument(document)))
    {
        m_box->setInformativeText(explanation);
        m_box->setTextFormat(Qt::PlainText); // names of files may look like markup
    }
    Message(const Message &) = delete;
    Message &operator=(const Message &) = delete;
    ~Message() { delete m_box; }

    QPushButton *addButton(const QString &text, QMessageBox::ButtonRole role) { return m_box->addButton(text, role); }
    void setDefaultButton(QPushButton *button) { m_box->setDefaultButton(button); }
    void setEscapeButton(QPushButton *button) { m_box->setEscapeButton(button); }

    /// @return the button; null when the box was closed otherwise
    QAbstractButton *run()
    {
        m_box->exec();
        return m_box ? m_box->clickedButton() : nullptr;
    }

private:
    QPointer<QMessageBox> m_box;
};

} // namespace

DocumentPanels &DocumentPanels::current()
{
    static DocumentPanels ofQt;
    return replacement() ? *replacement() : ofQt;
}

std::unique_ptr<DocumentPanels> DocumentPanels::setCurrent(std::unique_ptr<DocumentPanels> panels)
{
    return std::exchange(replacement(), std::move(panels));
}

QStringList DocumentPanels::chooseFilesToOpen(const QStringList &nameFilters)
{
    return QFileDialog::getOpenFileNames(nullptr, localizedString("Open"), {}, nameFilters.join(QLatin1String(";;")));
}

QString DocumentPanels::chooseFileToSave(Document &document, const QString &suggestedPath, const QString &nameFilter,
                                         const QString &fileExtension)
{
    const QPointer<QFileDialog> dialog = new QFileDialog(windowOfDocument(&document), localizedString("Save As"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    if (!nameFilter.isEmpty())
        dialog->setNameFilter(nameFilter);
    dialog->setDefaultSuffix(fileExtension);
    dialog->selectFile(suggestedPath);
    const bool isAccepted = dialog->exec() == QDialog::Accepted;
    if (!dialog)
        return {};
    const QString path = isAccepted ? dialog->selectedFiles().value(0) : QString();
    delete dialog;
    return path;
}

DocumentPanels::SaveAnswer DocumentPanels::askWhetherToSave(Document &document)
{
    Message message(QMessageBox::Warning, &document,
                    localizedString("Do you want to save the changes to “%1”?").arg(document.displayName()),
                    localizedString("Your changes will be lost if you do not save them."));
    QAbstractButton *const save = message.addButton(localizedString("Save"), QMessageBox::AcceptRole);
    QAbstractButton *const discard = message.addButton(localizedString("Discard"), QMessageBox::DestructiveRole);
    QPushButton *const cancel = message.addButton(localizedString("Cancel"), QMessageBox::RejectRole);
    message.setDefaultButton(static_cast<QPushButton *>(save));
    message.setEscapeButton(cancel);
    const QAbstractButton *const answer = message.run();
    if (!answer)
        return SaveAnswer::Cancel;
    return answer == save ? SaveAnswer::Save : answer == discard ? SaveAnswer::Discard : SaveAnswer::Cancel;
}

bool DocumentPanels::confirm(Document &document, const QString &message, const QString &explanation,
                             const QString &button)
{
    Message box(QMessageBox::Warning, &document, message, explanation);
    const QAbstractButton *const confirming = box.addButton(button, QMessageBox::DestructiveRole);
    QPushButton *const cancel = box.addButton(localizedString("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(cancel);
    box.setEscapeButton(cancel);
    const QAbstractButton *const answer = box.run();
    return answer && answer == confirming;
}

void DocumentPanels::presentError(Document *document, const QString &message, const QString &explanation)
{
    Message box(QMessageBox::Critical, document, message, explanation);
    QPushButton *const close = box.addButton(localizedString("OK"), QMessageBox::AcceptRole);
    box.setDefaultButton(close);
    box.setEscapeButton(close);
    box.run();
}

} // namespace platform
