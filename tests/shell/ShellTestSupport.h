#pragma once

#include "shell/AppContext.h"
#include "shell/DocumentManager.h"
#include "shell/DocumentWindow.h"
#include "shell/Preferences.h"
#include "shell/UserPrompts.h"

#include "documents/FileTestSupport.h"

#include <QApplication>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>
#include <QTemporaryDir>

#include <deque>
#include <memory>

// Widgets need an application; one is made on first use and lives for the program. Documents
// and settings go to test locations, never the user's own.
inline void ensureApplication()
{
    if (QCoreApplication::instance())
        return;
    QStandardPaths::setTestModeEnabled(true);
    static int argc = 1;
    static char name[] = "shell-tests";
    static char* argv[] = {name, nullptr};
    static QApplication* app = new QApplication(argc, argv);
    (void)app;
}

// Preferences on a file in a temporary folder.
inline std::unique_ptr<Preferences> temporaryPreferences(const QTemporaryDir& dir)
{
    return std::make_unique<Preferences>(
        std::make_unique<QSettings>(dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat));
}

// Answers the application's questions from a script, and records what was asked.
class ScriptedPrompts : public UserPrompts {
public:
    std::deque<SaveChoice> saveChoices;
    std::deque<QString> savePaths;
    std::deque<QString> openPaths;
    std::deque<DiskChoice> diskChoices;
    QStringList diskQuestions;
    QStringList questions;
    QStringList proposedPaths;
    QStringList errors;
    // Runs events while asking, as a modal dialog does.
    bool spinsEventLoop = false;

    void spin()
    {
        for (int i = 0; spinsEventLoop && i < 3; ++i)
            QCoreApplication::processEvents();
    }
    SaveChoice askToSaveChanges(QWidget*, const QString& displayName) override
    {
        spin();
        questions.append(displayName);
        if (saveChoices.empty())
            return SaveChoice::cancel;
        const SaveChoice choice = saveChoices.front();
        saveChoices.pop_front();
        return choice;
    }
    QString chooseSavePath(QWidget*, const QString& proposedPath) override
    {
        proposedPaths.append(proposedPath);
        if (savePaths.empty())
            return {};
        const QString path = savePaths.front();
        savePaths.pop_front();
        return path;
    }
    QString chooseFileToOpen(QWidget*) override
    {
        if (openPaths.empty())
            return {};
        const QString path = openPaths.front();
        openPaths.pop_front();
        return path;
    }
    QString chooseExportPath(QWidget*, const QString& proposedPath, const QString&, const QString&) override
    {
        return chooseSavePath(nullptr, proposedPath);
    }
    QString chooseOpmlToImport(QWidget* parent) override { return chooseFileToOpen(parent); }
    void showError(QWidget*, const QString& message) override
    {
        spin();
        errors.append(message);
    }
    DiskChoice askAboutChangedFile(QWidget*, const QString& displayName) override
    {
        diskQuestions.append(displayName);
        if (diskChoices.empty())
            return DiskChoice::keepMine;
        const DiskChoice choice = diskChoices.front();
        diskChoices.pop_front();
        return choice;
    }
};

// What a shell test stands in: its own folder and preferences, questions answered from a
// script, and a document manager over them. Fixtures call startShell() in SetUp and
// closeAllWindows() in TearDown.
struct ShellHarness {
    QTemporaryDir dir;
    std::unique_ptr<Preferences> preferences;
    ScriptedPrompts prompts;
    AppContext context;
    std::unique_ptr<DocumentManager> manager;

    void startShell()
    {
        ensureApplication();
        preferences = temporaryPreferences(dir);
        context.preferences = preferences.get();
        context.prompts = &prompts;
        manager = std::make_unique<DocumentManager>(context);
    }
    void closeAllWindows()
    {
        for (DocumentWindow* window : manager->windows())
            delete window;
    }
};
