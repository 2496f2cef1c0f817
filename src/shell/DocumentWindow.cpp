#include "DocumentWindow.h"

#include "AppMenus.h"
#include "ContentView.h"
#include "DocumentManager.h"
#include "DocumentToolbar.h"
#include "FileSettingsSheet.h"
#include "Preferences.h"
#include "RewriteBar.h"
#include "StatusBarView.h"
#include "UserPrompts.h"
#include "documents/OpenDocument.h"
#include "documents/OriginalCopy.h"
#include "documents/RecoveryStore.h"
#include "documents/SafeFileName.h"
#include "documents/SermonFile.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "editing/DocumentController.h"
#include "map/MindMapCanvas.h"

#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QVBoxLayout>

#include <optional>

DocumentWindow::DocumentWindow(std::unique_ptr<OpenDocument> document, AppContext context, QWidget* parent)
    : QMainWindow(parent)
    , m_document(std::move(document))
    , m_context(context)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("documentWindow"));
    // The bar stands above the content, where it is seen before the first keystroke.
    auto* central = new QWidget(this);
    auto* column = new QVBoxLayout(central);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    m_rewriteBar = new RewriteBar(central);
    m_content = new ContentView(m_document.get(), context.preferences, central);
    column->addWidget(m_rewriteBar);
    column->addWidget(m_content, 1);
    setCentralWidget(central);
    m_rewriteBar->onSaveAsNew = [this] { saveAsNewSermon(); };
    m_rewriteBar->onRewrite = [this] { rewriteFile(); };

    m_toolbar = new DocumentToolbar(this);
    addToolBar(Qt::TopToolBarArea, m_toolbar);
    setUnifiedTitleAndToolBarOnMac(true);
    m_toolbar->onFileSettings = [this] { showFileSettings(); };
    m_toolbar->onChooseMode = [this](AppMode mode) { m_content->setMode(mode); };
    connect(m_content, &ContentView::modeChanged, m_toolbar, &DocumentToolbar::setMode);
    m_content->onOpenFileSettings = [this] { showFileSettings(); };

    if (Preferences* preferences = context.preferences) {
        m_toolbar->setAppearance(preferences->appearance());
        m_toolbar->onCycleAppearance = [preferences] {
            preferences->setAppearance(AppAppearances::next(preferences->appearance()));
        };
        connect(preferences, &Preferences::appearanceChanged, m_toolbar, &DocumentToolbar::setAppearance);
    }

    m_menus = new AppMenus(menuBar(), context, this);
    connect(m_content, &ContentView::commandsChanged, m_menus, &AppMenus::refresh);

    connect(m_document.get(), &OpenDocument::modifiedChanged, this, &DocumentWindow::updateTitle);
    connect(m_document.get(), &OpenDocument::filePathChanged, this, &DocumentWindow::updateTitle);
    connect(m_document.get(), &OpenDocument::fileStateChanged, this, [this] {
        updateTitle();
        updateNotice();
    });
    connect(m_document.get(), &OpenDocument::saved, this, [this] {
        m_autosaveError.clear();
        updateNotice();
    });
    connect(m_document.get(), &OpenDocument::autosaveFailed, this, [this](const QString& message) {
        m_autosaveError = message;
        updateNotice();
    });
    // Queued: the question waits until the autosave or watcher that noticed has returned.
    connect(m_document.get(), &OpenDocument::fileChangedOnDisk, this, &DocumentWindow::onFileChangedOnDisk,
            Qt::QueuedConnection);
    connect(m_document.get(), &OpenDocument::modifiedChanged, this, &DocumentWindow::noteEditWhileHeld);
    connect(m_document.get(), &OpenDocument::autosaveHeld, this, &DocumentWindow::noteEditWhileHeld);
    connect(m_document->undoManager(), &UndoManager::stateChanged, this, &DocumentWindow::noteEditWhileHeld);
    connect(canvas()->controller(), &DocumentController::edited, this, &DocumentWindow::noteEditWhileHeld);
    checkRewrite();
    updateTitle();
    updateNotice();
    resize(1200, 800);
}

DocumentWindow::~DocumentWindow()
{
    // The views and any open sheet point into the document: they go before it does.
    delete m_toolbar;
    delete m_content;
    qDeleteAll(findChildren<FileSettingsSheet*>());
}

SermonDocument* DocumentWindow::document() const
{
    return m_document->document();
}

MindMapCanvas* DocumentWindow::canvas() const
{
    return m_content->canvas();
}

void DocumentWindow::updateTitle()
{
    // The marker Qt puts where "[*]" stands.
    // A "[*]" in the name itself is shown, not taken for the marker.
    const QString name = QString(m_document->displayName()).replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
    const QString readOnly = m_document->isReadOnly() ? QStringLiteral(" [Read-Only]") : QString();
    setWindowTitle(name + readOnly + QStringLiteral("[*]"));
    setWindowModified(m_document->isModified());
    setWindowFilePath(m_document->filePath());
}

void DocumentWindow::updateNotice()
{
    StatusBarView* status = m_content->statusBar();
    const StatusBarView::NoticeAction saveElsewhere{QStringLiteral("Save As…"), [this] { saveAs(); }};
    if (m_document->isFileGone()) {
        status->setNotice(
            QStringLiteral("“%1” was moved or deleted. Changes are not being saved.").arg(m_document->displayName()),
            {saveElsewhere, {QStringLiteral("Save Here Again"), [this] { saveHereAgain(); }}});
    } else if (m_document->isReadOnly()) {
        status->setNotice(QStringLiteral("Read-only. Changes can be kept with Save As."), {saveElsewhere});
    } else {
        status->setNotice(m_autosaveError);
    }
}

bool DocumentWindow::saveHereAgain()
{
    m_content->commitPendingEdit(true);
    if (m_document->saveHereAgain())
        return true;
    showError(m_document->lastError());
    return false;
}

void DocumentWindow::showError(const QString& message)
{
    if (m_context.prompts)
        m_context.prompts->showError(this, message);
}

bool DocumentWindow::save()
{
    m_content->commitPendingEdit(true);
    m_document->updateFileState();
    // No file to write to in place: the user says where.
    if (m_document->isUntitled() || m_document->isFileGone() || m_document->isReadOnly())
        return saveAs();
    // A plain save never rewrites a file written elsewhere behind the user's back.
    if (m_document->isRewriteHeld())
        return saveAsNewSermon();
    if (m_document->changedOnDisk())
        return resolveDiskChange();
    if (m_document->save())
        return true;
    showError(m_document->lastError());
    return false;
}

bool DocumentWindow::saveAs()
{
    m_content->commitPendingEdit(true);
    if (m_document->isRewriteHeld())
        return saveAsNewSermon();
    QString proposed = m_document->filePath();
    if (proposed.isEmpty()) {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        proposed = QDir(folder).filePath(m_document->displayName() + QStringLiteral(".md"));
    }
    return saveAsFrom(proposed);
}

bool DocumentWindow::saveAsNewSermon()
{
    m_content->commitPendingEdit(true);
    // Beside the original, named after the sermon's title, never proposing the original itself.
    const QFileInfo original(m_document->filePath());
    QString proposed = original.dir().filePath(safeFileName(document()->root()->text()) + QStringLiteral(".md"));
    if (QFileInfo::exists(proposed))
        proposed = original.dir().filePath(original.completeBaseName() + QStringLiteral(" sermon.md"));
    return saveAsFrom(proposed);
}

bool DocumentWindow::rewriteFile()
{
    m_content->commitPendingEdit(true);
    QString error;
    const std::optional<QString> kept = OriginalCopy::keep(m_document->filePath(), &error);
    if (!kept) {
        showError(SermonFile::saveFailureMessage(m_document->filePath(), error));
        return false;
    }
    m_document->setRewriteHeld(false);
    if (!save()) {
        m_document->setRewriteHeld(true);
        return false;
    }
    if (kept->isEmpty()) {
        m_rewriteBar->hide();
        return true;
    }
    const bool isBeside = QFileInfo(*kept).absolutePath() == QFileInfo(m_document->filePath()).absolutePath();
    const QString where = isBeside ? QStringLiteral("beside it as %1").arg(QFileInfo(*kept).fileName())
                                   : QStringLiteral("in %1").arg(*kept);
    m_rewriteBar->showNotice(QStringLiteral("Rewritten in sermon form. The original is kept %1.").arg(where));
    return true;
}

bool DocumentWindow::saveAsFrom(const QString& proposed)
{
    if (!m_context.prompts)
        return false;
    m_content->commitPendingEdit(true);
    const QString path = m_context.prompts->chooseSavePath(this, proposed);
    if (path.isEmpty())
        return false;
    // Choosing the very file that saving would rewrite is choosing to rewrite it, original kept.
    if (m_document->isRewriteHeld()
        && SermonFile::canonicalPath(path) == SermonFile::canonicalPath(m_document->filePath()))
        return rewriteFile();
    if (m_context.documents) {
        if (DocumentWindow* other = m_context.documents->windowFor(path); other && other != this) {
            showError(QStringLiteral("The document \u201c%1\u201d is open in another window. Close it first.")
                          .arg(QFileInfo(path).fileName()));
            return false;
        }
    }
    if (!m_document->saveAs(path)) {
        showError(m_document->lastError());
        return false;
    }
    if (m_context.preferences)
        m_context.preferences->noteRecentFile(m_document->filePath());
    if (m_document->isRewriteHeld()) {
        // The sermon lives in its new file now; the original was never written.
        m_document->setRewriteHeld(false);
        m_rewriteBar->hide();
    }
    return true;
}

bool DocumentWindow::prepareToClose()
{
    m_content->commitPendingEdit();
    m_document->updateFileState();
    // Gone, read-only, or only being read: never written back behind the user's back, and
    // unsaved edits are asked about as for any document.
    const bool cannotSaveInPlace = m_document->isFileGone() || m_document->isReadOnly() || m_document->isRewriteHeld();
    if (cannotSaveInPlace) {
        if (!m_document->hasUnsavedBytes())
            return true;
    } else if (!m_document->isUntitled()) {
        if (m_document->hasUnsavedBytes() && m_document->changedOnDisk())
            return resolveDiskChange();
        if (m_document->saveIfNeeded())
            return true;
        // The file can't be written (deleted folder, read-only, full disk): say so, then ask.
        showError(m_document->lastError());
    } else if (!m_document->isModified()) {
        return true;
    }
    if (!m_context.prompts)
        return false;
    switch (m_context.prompts->askToSaveChanges(this, m_document->displayName())) {
    case SaveChoice::save:
        return saveAs();
    case SaveChoice::dontSave:
        return true;
    case SaveChoice::cancel:
        break;
    }
    return false;
}

void DocumentWindow::onFileChangedOnDisk()
{
    if (m_isAskingAboutDisk || !m_document->changedOnDisk())
        return;
    // Nothing of ours is waiting to be written: the other program's version simply shows.
    const bool isEditing = canvas()->controller()->editingNodeID().has_value();
    if (!m_document->isModified() && !isEditing) {
        // A file caught half written (or emptied) is left alone: the next notice tries again,
        // and a save would still ask first.
        if (m_document->reloadFromDisk())
            checkRewrite();
        return;
    }
    resolveDiskChange();
}

bool DocumentWindow::resolveDiskChange()
{
    if (!m_context.prompts)
        return false;
    m_isAskingAboutDisk = true;
    const DiskChoice choice = m_context.prompts->askAboutChangedFile(this, m_document->displayName());
    m_isAskingAboutDisk = false;
    bool done = false;
    if (choice == DiskChoice::reload) {
        // The line being typed goes into the version that undo brings back.
        m_content->commitPendingEdit();
        done = m_document->reloadFromDisk();
        if (done)
            checkRewrite();
    } else if (m_document->isRewriteHeld()) {
        // Mine stays in the window; the file, only being read, isn't written.
        return true;
    } else {
        done = m_document->overwrite();
    }
    if (!done)
        showError(m_document->lastError());
    return done;
}

bool DocumentWindow::keepForExit()
{
    m_content->commitPendingEdit();
    if (!m_document->isUntitled()) {
        m_document->updateFileState();
        if (!m_document->hasUnsavedBytes())
            return true;
        const bool inPlace = !m_document->isFileGone() && !m_document->isReadOnly() && !m_document->isRewriteHeld()
            && !m_document->changedOnDisk();
        if (inPlace && m_document->save())
            return true;
        // Not to be written where it was: kept beside the untitled ones instead.
        RecoveryStore* store = m_context.documents ? m_context.documents->recoveryStore() : nullptr;
        if (!store)
            return false;
        if (m_document->recoveryPath().isEmpty())
            m_document->setRecoveryPath(store->newCopyPath());
    }
    return m_document->writeRecovery() || !m_document->isModified();
}

void DocumentWindow::closeWithoutAsking()
{
    m_isClosing = true;
    close();
}

void DocumentWindow::closeEvent(QCloseEvent* event)
{
    if (m_isClosing || prepareToClose()) {
        m_isClosing = true;
        // The user has let its changes go, or they are saved.
        m_document->discardRecovery();
        event->accept();
    } else {
        event->ignore();
    }
}

void DocumentWindow::showFileSettings()
{
    if (findChild<FileSettingsSheet*>())
        return;
    m_content->commitPendingEdit();
    auto* sheet = new FileSettingsSheet(document(), m_document->undoManager(), this);
    sheet->onTitleChanged = [this] {
        m_content->treeMutated();
        updateTitle();
    };
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowModality(Qt::WindowModal);
    sheet->show();
}

void DocumentWindow::checkRewrite()
{
    if (m_document->isUntitled())
        return;
    m_rewriteCheck = RewriteCheck::compare(m_document->diskBytes(), document()->fileContents());
    m_document->setRewriteHeld(!m_rewriteCheck.isClean());
    if (m_rewriteCheck.isClean())
        m_rewriteBar->hide();
    else
        m_rewriteBar->setCheck(m_rewriteCheck);
}

void DocumentWindow::noteEditWhileHeld()
{
    if (m_document->isRewriteHeld() && m_document->isModified() && m_rewriteBar->isHidden())
        m_rewriteBar->setCheck(m_rewriteCheck);
}
