#pragma once

#include <QString>

class QWidget;

enum class SaveChoice { save, dontSave, cancel };
// Whose version of a file another program has changed stays.
enum class DiskChoice { keepMine, reload };

// The questions the application asks a user: behind an interface so that tests can answer them
// without a modal dialog.
class UserPrompts {
public:
    virtual ~UserPrompts() = default;

    // Save / Don't Save / Cancel for a document with changes that is about to close.
    virtual SaveChoice askToSaveChanges(QWidget* parent, const QString& displayName) = 0;
    // A place to save to, starting from `proposedPath`; empty when cancelled.
    virtual QString chooseSavePath(QWidget* parent, const QString& proposedPath) = 0;
    // A sermon file to open; empty when cancelled.
    virtual QString chooseFileToOpen(QWidget* parent) = 0;
    // A place to export to, as a file of `kind` ("PDF") ending in `suffix` ("pdf"); empty when cancelled.
    virtual QString chooseExportPath(QWidget* parent, const QString& proposedPath, const QString& kind,
                                     const QString& suffix) = 0;
    // An outline to import; empty when cancelled.
    virtual QString chooseOpmlToImport(QWidget* parent) = 0;
    virtual void showError(QWidget* parent, const QString& message) = 0;
    // The file under an open sermon with changes of its own was changed by another program.
    virtual DiskChoice askAboutChangedFile(QWidget* parent, const QString& displayName) = 0;
};
