#include "OpenDocument.h"

#include "SafeFileName.h"
#include "SermonFile.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"

#include <QFileInfo>
#include <QTimer>

OpenDocument::OpenDocument(std::unique_ptr<SermonDocument> document, const QString& filePath,
                           const QString& displayName, QObject* parent)
    : QObject(parent), m_document(std::move(document)), m_undoManager(std::make_unique<UndoManager>()),
      m_filePath(filePath.isEmpty() ? QString() : QFileInfo(filePath).absoluteFilePath()),
      m_untitledName(displayName), m_autosaveTimer(new QTimer(this))
{
    m_undoManager->setLevelsOfUndo(SermonDocument::undoLimit);
    if (!m_filePath.isEmpty())
        m_savedBytes = m_document->fileContents();
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
    if (!m_filePath.isEmpty())
        m_autosaveTimer->start();
}

void OpenDocument::updateModified()
{
    const bool modified = !m_undoManager->isClean() || m_changedOutsideUndo;
    if (modified == m_isModified)
        return;
    m_isModified = modified;
    emit modifiedChanged(modified);
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
    if (m_filePath.isEmpty())
        return;
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
    return !m_filePath.isEmpty() && writeTo(m_filePath);
}

bool OpenDocument::saveAs(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (!writeTo(absolute))
        return false;
    if (absolute != m_filePath) {
        m_filePath = absolute;
        emit filePathChanged(m_filePath);
    }
    return true;
}

bool OpenDocument::writeTo(const QString& path)
{
    m_autosaveTimer->stop();
    const QByteArray bytes = m_document->fileContents();
    QString error;
    if (!SermonFile::write(path, bytes, &error)) {
        m_lastError = error;
        return false;
    }
    m_lastError.clear();
    m_savedBytes = bytes;
    m_changedOutsideUndo = false;
    markClean();
    m_autosaveFailureReported = false;
    emit saved();
    return true;
}
