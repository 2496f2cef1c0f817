#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include <memory>

class QFileSystemWatcher;
class QTimer;
class SermonDocument;
class UndoManager;

// One open sermon and its file: the document, its undo manager, where it lives, whether it
// differs from what is on disk, and the autosave that keeps the two together. Untitled until its
// first save; an untitled document is never written behind the user's back.
class OpenDocument : public QObject {
    Q_OBJECT
public:
    static constexpr int defaultAutosaveDelayMs = 1500;

    // `filePath` empty: untitled, named `displayName` until saved.
    OpenDocument(std::unique_ptr<SermonDocument> document, const QString& filePath, const QString& displayName = {},
                 QObject* parent = nullptr);
    ~OpenDocument() override;

    SermonDocument* document() const { return m_document.get(); }
    UndoManager* undoManager() const { return m_undoManager.get(); }

    const QString& filePath() const { return m_filePath; }
    bool isUntitled() const { return m_filePath.isEmpty(); }
    // The file's name, or the proposed one for an untitled sermon ("Title.md").
    QString displayName() const;

    // Edits not yet on disk; cleared by saving, and by undoing back to the saved state.
    bool isModified() const { return m_isModified; }
    // The bytes a save would write differ from the file's (or, untitled, from nothing).
    bool hasUnsavedBytes() const;

    // Writes atomically to the present file; false for an untitled document or on failure.
    bool save();
    // Writes to a new place, which becomes the document's file.
    bool saveAs(const QString& path);
    // Saves a titled document if what it holds differs from its file.
    bool saveIfNeeded();

    // Another program has written the file since it was last read or written here. Saves and
    // autosaves refuse to write over such a change; the window decides whose version stays.
    bool changedOnDisk();
    // Writes this version over the other program's.
    bool overwrite();
    // Takes the file's version in place of this one, as one step that undo takes back.
    bool reloadFromDisk();
    // Why the last save failed.
    const QString& lastError() const { return m_lastError; }

    // Tells about a change the undo manager doesn't see (a text edit finishing in place).
    void noteChange();
    void setAutosaveDelay(int milliseconds);
    bool isAutosavePending() const;

    // Held while saving would rewrite a file written elsewhere and the user hasn't chosen how:
    // autosave, save and overwrite leave the file alone (Save As elsewhere still works).
    void setRewriteHeld(bool held) { m_isRewriteHeld = held; }
    bool isRewriteHeld() const { return m_isRewriteHeld; }
    // What the file held when this document last read or wrote it.
    const QByteArray& diskBytes() const { return m_diskBytes; }

signals:
    void modifiedChanged(bool modified);
    void filePathChanged(const QString& path);
    void saved();
    // An autosave failed; the document stays modified. Reported once until a save succeeds.
    void autosaveFailed(const QString& message);
    // The file changed under the document (seen by the watcher, or by an autosave that then
    // held back).
    void fileChangedOnDisk();
    // An autosave came due while the rewrite is held, and wrote nothing.
    void autosaveHeld();

private:
    void changed();
    void updateModified();
    void markClean();
    void autosave();
    // True, with the reason in lastError, while the rewrite is held.
    bool refuseHeldRewrite();
    bool writeTo(const QString& path, bool overwriteChanges = false);
    // What the file now holds is what this document last read or wrote there.
    void rememberDisk(const QByteArray& bytes);
    void diskNoticed();

    std::unique_ptr<SermonDocument> m_document;
    std::unique_ptr<UndoManager> m_undoManager;
    QString m_filePath;
    QString m_untitledName;
    QByteArray m_savedBytes;
    bool m_isModified = false;
    bool m_changedOutsideUndo = false;
    bool m_autosaveFailureReported = false;
    bool m_isMarkingClean = false;
    bool m_isRewriteHeld = false;
    QString m_lastError;
    QTimer* m_autosaveTimer;
    QElapsedTimer m_pendingSince;
    QByteArray m_diskBytes;
    QDateTime m_diskModified;
    qint64 m_diskSize = -1;
    QFileSystemWatcher* m_watcher;
    QTimer* m_diskSettle;
};
