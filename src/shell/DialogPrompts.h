#pragma once

#include "UserPrompts.h"

// The real questions: message boxes and file dialogs.
class DialogPrompts : public UserPrompts {
public:
    SaveChoice askToSaveChanges(QWidget* parent, const QString& displayName) override;
    QString chooseSavePath(QWidget* parent, const QString& proposedPath) override;
    QString chooseFileToOpen(QWidget* parent) override;
    QString chooseExportPath(QWidget* parent, const QString& proposedPath, const QString& kind,
                             const QString& suffix) override;
    QString chooseOpmlToImport(QWidget* parent) override;
    void showError(QWidget* parent, const QString& message) override;
    DiskChoice askAboutChangedFile(QWidget* parent, const QString& displayName) override;
};
