#pragma once

#include <QString>
#include <QStringList>

#include <memory>

namespace platform {

class Document;

/// What documents ask and tell the person at the screen. This class asks with the windows of Qt; a host that wants
/// other ones, and a test that answers by itself, overrides what it needs and puts its object in place.
///
/// All texts are in the user's language. A question may run an event loop, in which documents may be closed and
/// destroyed; whoever asks looks afterwards. Main thread.
class DocumentPanels
{
public:
    /// The answer to "Do you want to save?".
    enum class SaveAnswer { Save, Discard, Cancel };

    DocumentPanels() = default;
    DocumentPanels(const DocumentPanels &) = delete;
    DocumentPanels &operator=(const DocumentPanels &) = delete;
    virtual ~DocumentPanels() = default;

    /// The panels in use.
    static DocumentPanels &current();
    /// Puts other panels in place; null puts those of Qt back.
    /// @return those before; null for those of Qt
    static std::unique_ptr<DocumentPanels> setCurrent(std::unique_ptr<DocumentPanels> panels);

    /// Which files to open.
    /// @param nameFilters as QFileDialog has them: "Storyboard (*.storyboard)"
    /// @return empty when the person cancels
    virtual QStringList chooseFilesToOpen(const QStringList &nameFilters);
    /// Where to save. The panel asks by itself before it answers a file that exists.
    /// @param suggestedPath a path, or only a file name
    /// @param nameFilter empty when any file will do
    /// @param fileExtension added to a name without one; empty for none
    /// @return empty when the person cancels
    virtual QString chooseFileToSave(Document &document, const QString &suggestedPath, const QString &nameFilter,
                                     const QString &fileExtension);
    /// Whether to save a document with changes that is about to be closed.
    virtual SaveAnswer askWhetherToSave(Document &document);
    /// Whether to do something that cannot be taken back.
    /// @param button what doing it is called, such as "Revert"
    virtual bool confirm(Document &document, const QString &message, const QString &explanation, const QString &button);
    /// Tells that something failed.
    /// @param document null when there is none (yet)
    virtual void presentError(Document *document, const QString &message, const QString &explanation);
};

} // namespace platform
