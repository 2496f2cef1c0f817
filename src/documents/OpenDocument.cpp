#include "OpenDocument.h"

#include "DiskWrite.h"
#include "SafeFileName.h"
#include "SermonFile.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QTimer>

#include <optional>

namespace {

// The bytes of a file, or nothing if it can't be read (or is no regular file, or too large).
std::optional<QByteArray> readBytes(const QString& path)
{
    return SermonFile::readBytes(path, nullptr);
}

} // namespace

OpenDocument::OpenDocument(std::unique_ptr<SermonDocument> document, const QString& filePath,
                           const QString& displayName, QObject* parent)
    : QObject(parent)
    , m_document(std::move(document))
    , m_undoManager(std::make_unique<UndoManager>())
    , m_filePath(filePath.isEmpty() ? QString() : QFileInfo(filePath).absoluteFilePath())
    , m_untitledName(displayName)
    , m_autosaveTimer(new QTimer(this))
    , m_watcher(new QFileSystemWatcher(this))
    , m_diskSettle(new QTimer(this))
    , m_clock([] {
        static QElapsedTimer monotonic = [] {
            QElapsedTimer started;
            started.start();
            return started;
        }();
        return monotonic.elapsed();
    })
{
    m_undoManager->setLevelsOfUndo(SermonDocument::undoLimit);
    // Another program's save comes in several notices, and may be half written at the first.
    m_diskSettle->setSingleShot(true);
    m_diskSettle->setInterval(300);
    connect(m_watcher, &QFileSystemWatcher::fileChanged, m_diskSettle, qOverload<>(&QTimer::start));
    connect(m_diskSettle, &QTimer::timeout, this, &OpenDocument::diskNoticed);
    // A folder is watched while its file is gone, to see it come back.
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, m_diskSettle, qOverload<>(&QTimer::start));
    if (!m_filePath.isEmpty()) {
        m_savedBytes = m_document->fileContents();
        rememberDisk(readBytes(m_filePath).value_or(QByteArray()));
        updateFileState();
    }
    m_autosaveTimer->setSingleShot(true);
    m_autosaveTimer->setInterval(defaultAutosaveDelayMs);
    connect(m_autosaveTimer, &QTimer::timeout, this, &OpenDocument::autosave);
    connect(m_undoManager.get(), &UndoManager::stateChanged, this, &OpenDocument::changed);
    connect(m_document.get(), &SermonDocument::rootChanged, this, &OpenDocument::changed);
    connect(m_document.get(), &SermonDocument::metadataChanged, this, &OpenDocument::changed);
    connect(m_document.get(), &SermonDocument::undoRedoGenerationChanged, this, [this] {
        // Undo and redo put back a whole tree, text typed without a step of its own included:
        // whether that differs from the file is the undo manager's to say again.
        m_changedOutsideUndo = false;
        changed();
    });
}

OpenDocument::~OpenDocument() = default;

QString OpenDocument::displayName() const
{
    if (!m_filePath.isEmpty())
        return QFileInfo(m_filePath).fileName();
    return m_untitledName.isEmpty() ? safeFileName(m_document->root()->text()) : m_untitledName;
}

bool OpenDocument::hasUnsavedBytes() const
{
    return m_filePath.isEmpty() ? m_isModified : m_document->fileContents() != m_savedBytes;
}

void OpenDocument::noteChange()
{
    m_changedOutsideUndo = true;
    changed();
}

void OpenDocument::markClean()
{
    if (!m_undoManager->isClean()) {
        // Marking clean is no edit: it mustn't start another autosave.
        m_isMarkingClean = true;
        m_undoManager->markClean();
        m_isMarkingClean = false;
    }
    updateModified();
}

void OpenDocument::changed()
{
    if (m_isMarkingClean)
        return;
    updateModified();
    if (m_filePath.isEmpty() && m_recoveryPath.isEmpty())
        return;
    // Each change puts the save off a little, but steady work doesn't put it off for ever.
    const qint64 now = m_clock();
    if (!m_autosaveTimer->isActive())
        m_pendingSince = now;
    if (now - m_pendingSince < 4 * qint64(m_autosaveTimer->interval()))
        m_autosaveTimer->start();
    else
        QMetaObject::invokeMethod(this, &OpenDocument::autosave, Qt::QueuedConnection);
}

void OpenDocument::updateModified()
{
    const bool modified = !m_undoManager->isClean() || m_changedOutsideUndo;
    if (modified == m_isModified)
        return;
    m_isModified = modified;
    emit modifiedChanged(modified);
}

void OpenDocument::setClock(std::function<qint64()> milliseconds)
{
    m_clock = std::move(milliseconds);
}

void OpenDocument::setAutosaveDelay(int milliseconds)
{
    m_autosaveTimer->setInterval(milliseconds);
}

bool OpenDocument::isAutosavePending() const
{
    return m_autosaveTimer->isActive();
}

void OpenDocument::autosave()
{
    if (m_filePath.isEmpty()) {
        writeRecovery();
        return;
    }
    updateFileState();
    if (m_isFileGone || m_isReadOnly)
        return;
    if (m_isRewriteHeld) {
        emit autosaveHeld();
        return;
    }
    if (hasUnsavedBytes() && changedOnDisk()) {
        emit fileChangedOnDisk();
        return;
    }
    if (saveIfNeeded()) {
        m_autosaveFailureReported = false;
        return;
    }
    if (!m_autosaveFailureReported && !m_lastError.isEmpty()) {
        m_autosaveFailureReported = true;
        emit autosaveFailed(m_lastError);
    }
}

bool OpenDocument::saveIfNeeded()
{
    if (m_filePath.isEmpty())
        return false;
    if (!hasUnsavedBytes() && QFileInfo::exists(m_filePath)) {
        // Undo may have come back to the file's text by another road.
        m_changedOutsideUndo = false;
        markClean();
        updateModified();
        m_lastError.clear();
        return true;
    }
    return save();
}

bool OpenDocument::save()
{
    return !m_filePath.isEmpty() && !refuseHeldRewrite() && writeTo(m_filePath);
}

bool OpenDocument::refuseHeldRewrite()
{
    if (!m_isRewriteHeld)
        return false;
    m_lastError = SermonFile::saveFailureMessage(
        m_filePath, QStringLiteral("Saving would rewrite it in sermon form; choose how in the bar above the map."));
    return true;
}

bool OpenDocument::saveAs(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    // Save As names its place itself, and has asked before replacing what is there.
    if (!writeTo(absolute, true))
        return false;
    if (absolute != m_filePath) {
        if (!m_filePath.isEmpty())
            m_watcher->removePath(m_filePath);
        m_filePath = absolute;
        rememberDisk(m_savedBytes);
        emit filePathChanged(m_filePath);
    }
    discardRecovery();
    m_recoveryPath.clear();
    updateFileState();
    return true;
}

bool OpenDocument::overwrite()
{
    return !m_filePath.isEmpty() && !refuseHeldRewrite() && writeTo(m_filePath, true);
}

bool OpenDocument::saveHereAgain()
{
    if (m_filePath.isEmpty() || !writeTo(m_filePath, true))
        return false;
    updateFileState();
    return true;
}

void OpenDocument::setRecoveryPath(const QString& path)
{
    m_recoveryPath = path;
}

bool OpenDocument::writeRecovery()
{
    if (m_recoveryPath.isEmpty())
        return false;
    if (!m_isModified) {
        discardRecovery();
        return true;
    }
    QString error;
    return SermonFile::write(m_recoveryPath, m_document->fileContents(), &error);
}

void OpenDocument::discardRecovery()
{
    if (!m_recoveryPath.isEmpty())
        QFile::remove(m_recoveryPath);
}

void OpenDocument::updateFileState()
{
    if (m_filePath.isEmpty())
        return;
    const QFileInfo info(m_filePath);
    const bool exists = info.exists();
    // Gone only once it has been there: a name chosen for a file not yet written isn't gone.
    const bool gone = !exists && (m_isFileGone || m_diskSize >= 0);
    const bool readOnly = exists && !DiskWrite::isWritable(m_filePath);
    if (gone == m_isFileGone && readOnly == m_isReadOnly)
        return;
    m_isFileGone = gone;
    m_isReadOnly = readOnly;
    const QString folder = info.absolutePath();
    if (gone) {
        m_autosaveTimer->stop();
        m_watcher->addPath(folder);
    } else {
        m_watcher->removePath(folder);
    }
    emit fileStateChanged();
}

bool OpenDocument::changedOnDisk()
{
    if (m_filePath.isEmpty())
        return false;
    const QFileInfo info(m_filePath);
    // A file that went away has not been changed; isFileGone tells of it.
    if (!info.exists())
        return false;
    if (info.lastModified() == m_diskModified && info.size() == m_diskSize)
        return false;
    const std::optional<QByteArray> bytes = readBytes(m_filePath);
    if (!bytes)
        return false;
    if (*bytes != m_diskBytes)
        return true;
    // Touched, not changed.
    rememberDisk(*bytes);
    return false;
}

bool OpenDocument::reloadFromDisk()
{
    QString error;
    std::optional<SermonContents> contents = SermonFile::read(m_filePath, &error);
    const std::optional<QByteArray> bytes = readBytes(m_filePath);
    if (!contents || !bytes) {
        m_lastError = error;
        return false;
    }
    m_document->replaceContents(std::move(*contents), m_undoManager.get());
    m_savedBytes = m_document->fileContents();
    m_changedOutsideUndo = false;
    markClean();
    // The replacement's own step started an autosave; what is on disk is what is shown.
    m_autosaveTimer->stop();
    rememberDisk(*bytes);
    m_lastError.clear();
    return true;
}

void OpenDocument::rememberDisk(const QByteArray& bytes)
{
    m_diskBytes = bytes;
    const QFileInfo info(m_filePath);
    m_diskModified = info.lastModified();
    m_diskSize = info.exists() ? info.size() : -1;
    // A save replaces the file, and the watch goes with the old one.
    if (info.exists() && !m_watcher->files().contains(m_filePath))
        m_watcher->addPath(m_filePath);
}

void OpenDocument::diskNoticed()
{
    if (m_filePath.isEmpty())
        return;
    updateFileState();
    if (QFileInfo::exists(m_filePath) && !m_watcher->files().contains(m_filePath))
        m_watcher->addPath(m_filePath);
    if (changedOnDisk())
        emit fileChangedOnDisk();
}

bool OpenDocument::writeTo(const QString& path, bool overwriteChanges)
{
    m_autosaveTimer->stop();
    if (!overwriteChanges && path == m_filePath) {
        updateFileState();
        QString why;
        if (m_isFileGone)
            why = QStringLiteral("The file has been moved or deleted.");
        else if (changedOnDisk())
            why = QStringLiteral("The file has been changed by another application.");
        if (!why.isEmpty()) {
            m_lastError = SermonFile::saveFailureMessage(path, why);
            return false;
        }
    }
    const QByteArray bytes = m_document->fileContents();
    QString error;
    if (!SermonFile::write(path, bytes, &error)) {
        m_lastError = error;
        return false;
    }
    m_lastError.clear();
    m_savedBytes = bytes;
    if (path == m_filePath)
        rememberDisk(bytes);
    m_changedOutsideUndo = false;
    markClean();
    m_autosaveFailureReported = false;
    emit saved();
    return true;
}
