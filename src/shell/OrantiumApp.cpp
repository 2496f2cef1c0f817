#include "OrantiumApp.h"

#include "AppAppearance.h"
#include "ContentView.h"
#include "DialogPrompts.h"
#include "DocumentManager.h"
#include "DocumentWindow.h"
#include "Preferences.h"
#include "UpdateService.h"
#include "WindowSupervisor.h"
#include "documents/RecoveryStore.h"
#include "documents/SermonFile.h"
#include "documents/TerminationSignals.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QSettings>
#include <QStandardPaths>
#include <QTextStream>
#include <QTimer>

#include <cstdio>

#ifndef ORANTIUM_UPDATE_FEED
#define ORANTIUM_UPDATE_FEED ""
#endif

const char* const OrantiumApp::uiTestFixtureText = "---\n"
                                                   "title: Test Sermon\n"
                                                   "scripture: Romans 1:1\n"
                                                   "---\n"
                                                   "\n"
                                                   "# Test Sermon\n"
                                                   "\n"
                                                   "## First Point\n"
                                                   "\n"
                                                   "The quick brown fox jumps over the lazy dog.\n"
                                                   "Second sentence here.\n"
                                                   "Short line.\n"
                                                   "This is a much longer sentence that spans many more words to "
                                                   "create varying widths for testing.\n"
                                                   "Final leaf.\n"
                                                   "\n"
                                                   "## Second Point\n"
                                                   "\n"
                                                   "Another sentence for testing.\n";

QString OrantiumApp::uiTestFixturePath()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation))
        .filePath(QStringLiteral("orantium-ui-test.md"));
}

OrantiumApp::OrantiumApp(const QStringList& arguments)
{
    for (const QString& argument : arguments.mid(1)) {
        if (argument == QLatin1String("--ui-test-fixture"))
            m_isUITestFixture = true;
        else if (argument == QLatin1String("--columns"))
            m_opensInColumns = true;
        else if (!argument.startsWith(QLatin1String("-")))
            m_files.append(argument);
    }
    m_isTestHost = qEnvironmentVariableIsSet("XCTestConfigurationFilePath");
}

OrantiumApp::~OrantiumApp()
{
    // Windows go before the services they point at.
    m_supervisor.reset();
    if (m_documents) {
        // Only windows of their own: a sheet or a menu goes with the window it belongs to.
        QList<QPointer<QWidget>> windows;
        for (QWidget* window : QApplication::topLevelWidgets())
            if (!window->parentWidget())
                windows.append(window);
        for (const QPointer<QWidget>& window : std::as_const(windows))
            delete window.data();
    }
}

void OrantiumApp::seedRecentFiles()
{
    // On the very first run the welcome window offers a sample sermon to look at. The user gets
    // a copy of their own: the original may be read-only, and is not theirs to change.
    if (m_preferences->settings().contains(QString::fromLatin1(Preferences::recentFilesKey)))
        return;
    m_preferences->setRecentFiles({});
    const QString name = QStringLiteral("the-god-who-stays.md");
    const QDir binary(QCoreApplication::applicationDirPath());
    for (const QString& candidate : {QDir::current().filePath(QStringLiteral("examples/") + name),
                                     binary.filePath(QStringLiteral("../../../examples/") + name),
                                     binary.filePath(QStringLiteral("../share/orantium/examples/") + name)}) {
        if (!QFileInfo(candidate).isFile())
            continue;
        const QDir documents(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
        const QString copy = documents.filePath(name);
        if (documents.mkpath(QStringLiteral(".")) && (QFileInfo::exists(copy) || QFile::copy(candidate, copy))) {
            QFile::setPermissions(copy, QFile::permissions(copy) | QFileDevice::WriteOwner);
            m_preferences->noteRecentFile(copy);
        }
        return;
    }
}

bool OrantiumApp::start()
{
    if (m_isTestHost)
        return true; // a test host: no windows at all

    m_preferences = std::make_unique<Preferences>();
    AppAppearances::rememberSystemPalette(QApplication::palette());
    AppAppearances::apply(m_preferences->appearance());
    QObject::connect(m_preferences.get(), &Preferences::appearanceChanged, m_preferences.get(),
                     [](AppAppearance appearance) { AppAppearances::apply(appearance); });

    seedRecentFiles();
    m_prompts = std::make_unique<DialogPrompts>();
    m_updates = std::make_unique<UpdateService>(QStringLiteral(ORANTIUM_UPDATE_FEED), !m_isUITestFixture);
    m_context.preferences = m_preferences.get();
    m_context.prompts = m_prompts.get();
    m_context.updates = m_updates.get();
    m_documents = std::make_unique<DocumentManager>(m_context);
    // Ended by the session (logout, shutdown) or a terminal: nothing typed is lost, and no
    // question holds the ending up.
    m_signals = std::make_unique<TerminationSignals>();
    QObject::connect(m_signals.get(), &TerminationSignals::received, m_signals.get(), [this] {
        m_documents->keepEverythingForExit();
        QApplication::exit(0);
    });

    if (m_isUITestFixture) {
        const QString path = uiTestFixturePath();
        QDir().mkpath(QFileInfo(path).absolutePath());
        QString error;
        if (!SermonFile::write(path, QByteArray(uiTestFixtureText), &error)) {
            QTextStream(stderr) << error << '\n';
            return false;
        }
        m_documents->open(path);
        QApplication::setQuitOnLastWindowClosed(true);
        return true;
    }

    // The supervisor decides when the application ends.
    QApplication::setQuitOnLastWindowClosed(false);
    m_recovery = std::make_unique<RecoveryStore>(RecoveryStore::defaultRoot());
    m_documents->setRecoveryStore(m_recovery.get());
    m_supervisor = std::make_unique<WindowSupervisor>(m_documents.get(), m_preferences.get());
    m_context = m_documents->context();
    for (const QString& file : m_files) {
        DocumentWindow* window = m_documents->open(file);
        if (window && m_opensInColumns)
            window->contentView()->setMode(AppMode::columns);
    }
    // Once the files of the command line are open, the welcome window may stand in.
    QTimer::singleShot(0, m_supervisor.get(), [supervisor = m_supervisor.get()] { supervisor->finishLaunching(); });
    return true;
}
