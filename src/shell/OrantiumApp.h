#pragma once

#include "AppContext.h"

#include <QString>
#include <QStringList>

#include <memory>

class DialogPrompts;
class DocumentManager;
class Preferences;
class RecoveryStore;
class TerminationSignals;
class UpdateService;
class WindowSupervisor;

// The application's start-up and the services its windows share. One per process.
class OrantiumApp {
public:
    // The fixture a UI test run opens, written to the user's documents folder.
    static const char* const uiTestFixtureText;
    static QString uiTestFixturePath();

    // Reads the switches and the environment; makes nothing yet.
    explicit OrantiumApp(const QStringList& arguments);
    ~OrantiumApp();

    bool isUITestFixture() const { return m_isUITestFixture; }
    bool isTestHost() const { return m_isTestHost; }

    // Everything before the event loop: appearance, supervisor, files from the command line.
    // Returns false when the program must stop (a fixture that can't be written).
    bool start();

    const AppContext& context() const { return m_context; }
    DocumentManager* documents() const { return m_documents.get(); }
    WindowSupervisor* supervisor() const { return m_supervisor.get(); }

private:
    void seedRecentFiles();

    QStringList m_files;
    bool m_opensInColumns = false;
    bool m_isUITestFixture = false;
    bool m_isTestHost = false;
    std::unique_ptr<Preferences> m_preferences;
    std::unique_ptr<DialogPrompts> m_prompts;
    std::unique_ptr<UpdateService> m_updates;
    std::unique_ptr<RecoveryStore> m_recovery;
    std::unique_ptr<TerminationSignals> m_signals;
    std::unique_ptr<DocumentManager> m_documents;
    std::unique_ptr<WindowSupervisor> m_supervisor;
    AppContext m_context;
};
