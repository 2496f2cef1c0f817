#include "DocumentManager.h"

#include "DocumentWindow.h"
#include "Preferences.h"
#include "UserPrompts.h"
#include "documents/OpenDocument.h"
#include "documents/Opml.h"
#include "documents/PendingCreation.h"
#include "documents/RecoveryStore.h"
#include "documents/SafeFileName.h"
#include "documents/SermonFile.h"

#include "core/SermonDocument.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>

DocumentManager::DocumentManager(AppContext context, QObject* parent)
    : QObject(parent)
    , m_context(context)
{
    m_context.documents = this;
}

DocumentManager::~DocumentManager() = default;

QList<DocumentWindow*> DocumentManager::windows() const
{
    QList<DocumentWindow*> result;
    for (const QPointer<DocumentWindow>& window : m_windows)
        if (window)
            result.append(window);
    return result;
}

DocumentWindow* DocumentManager::windowFor(const QString& path) const
{
    const QString wanted = SermonFile::canonicalPath(path);
    for (DocumentWindow* window : windows())
        if (!window->openDocument()->isUntitled()
            && SermonFile::canonicalPath(window->openDocument()->filePath()) == wanted)
            return window;
    return nullptr;
}

DocumentWindow* DocumentManager::adopt(DocumentWindow* window)
{
    m_windows.removeAll(nullptr);
    m_windows.append(window);
    window->show();
    window->raise();
    window->activateWindow();
    emit windowOpened(window);
    return window;
}

DocumentWindow* DocumentManager::open(const QString& path, QWidget* parent)
{
    if (path.endsWith(QLatin1String(".opml"), Qt::CaseInsensitive))
        return importOpml(path, parent);
    if (DocumentWindow* window = windowFor(path)) {
        if (m_context.preferences)
            m_context.preferences->noteRecentFile(window->openDocument()->filePath());
        window->show();
        window->raise();
        window->activateWindow();
        return window;
    }
    auto document = read(path, parent);
    if (!document)
        return nullptr;
    auto open = std::make_unique<OpenDocument>(std::move(document), path);
    if (m_context.preferences)
        m_context.preferences->noteRecentFile(open->filePath());
    return adopt(new DocumentWindow(std::move(open), m_context));
}

DocumentWindow* DocumentManager::openWithPanel(QWidget* parent)
{
    if (!m_context.prompts)
        return nullptr;
    const QString path = m_context.prompts->chooseFileToOpen(parent);
    return path.isEmpty() ? nullptr : open(path, parent);
}

DocumentWindow* DocumentManager::importOpml(const QString& path, QWidget* parent)
{
    QString why;
    std::optional<SermonContents> contents;
    if (const auto bytes = SermonFile::readBytes(path, &why))
        contents = Opml::read(*bytes, &why);
    if (!contents) {
        if (m_context.prompts)
            m_context.prompts->showError(parent, SermonFile::openFailureMessage(path, why));
        return nullptr;
    }
    auto open = untitled(std::make_unique<SermonDocument>(std::move(*contents)));
    // Never saved as a sermon: closing it asks first.
    open->noteChange();
    return adopt(new DocumentWindow(std::move(open), m_context));
}

DocumentWindow* DocumentManager::importOpmlWithPanel(QWidget* parent)
{
    if (!m_context.prompts)
        return nullptr;
    const QString path = m_context.prompts->chooseOpmlToImport(parent);
    return path.isEmpty() ? nullptr : importOpml(path, parent);
}

std::unique_ptr<SermonDocument> DocumentManager::makeNewSermon()
{
    if (auto pending = PendingCreation::shared().take())
        return std::make_unique<SermonDocument>(SermonNode::make(pending->title, 0), pending->metadata);
    return std::make_unique<SermonDocument>(SermonNode::make(QStringLiteral("New Sermon"), 0));
}

std::unique_ptr<SermonDocument> DocumentManager::read(const QString& path, QWidget* parent) const
{
    QString error;
    auto contents = SermonFile::read(path, &error);
    if (!contents) {
        if (m_context.prompts)
            m_context.prompts->showError(parent, error);
        return nullptr;
    }
    return std::make_unique<SermonDocument>(std::move(*contents));
}

std::unique_ptr<OpenDocument> DocumentManager::untitled(std::unique_ptr<SermonDocument> document) const
{
    const QString name = safeFileName(document->root()->text());
    auto open = std::make_unique<OpenDocument>(std::move(document), QString(), name);
    if (m_recovery)
        open->setRecoveryPath(m_recovery->newCopyPath());
    return open;
}

DocumentWindow* DocumentManager::newDocument()
{
    return adopt(new DocumentWindow(untitled(makeNewSermon()), m_context));
}

DocumentWindow* DocumentManager::restoreCopy(const QString& path, QWidget* parent)
{
    auto document = read(path, parent);
    if (!document)
        return nullptr;
    auto open = untitled(std::move(document));
    // Never saved anywhere: its changes are all still to keep.
    open->noteChange();
    // The old copy goes only once the new one is on disk.
    if (open->writeRecovery())
        RecoveryStore::discard(path);
    return adopt(new DocumentWindow(std::move(open), m_context));
}

bool DocumentManager::closeAll()
{
    const QList<DocumentWindow*> all = windows();
    for (DocumentWindow* window : all)
        if (window->isVisible() && !window->prepareToClose())
            return false;
    for (DocumentWindow* window : all)
        window->closeWithoutAsking();
    return true;
}

bool DocumentManager::keepEverythingForExit()
{
    bool allKept = true;
    for (DocumentWindow* window : windows())
        allKept = window->keepForExit() && allKept;
    return allKept;
}

void DocumentManager::quit()
{
    if (closeAll())
        QApplication::quit();
}
