#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>

#include <functional>
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

    // The file was deleted or moved away while open. Nothing is written to its old place until
    // the user says so (saveHereAgain, or Save As); a file that comes back ends this.
    bool isFileGone() const { return m_isFileGone; }
    bool saveHereAgain();
    // The file may be read but not written: edits stay here until saved elsewhere.
    bool isReadOnly() const { return m_isReadOnly; }
    // Looks again at whether the file is there and may be written (the watcher tells of it a
    // moment later).
    void updateFileState();

    // Where an untitled document keeps a copy of its changes, at the autosave pace, so that a
    // crash or a signal doesn't take them (a named one only when it can't be saved at exit);
    // empty for none. The copy goes once the document is
    // saved or its changes are let go (discardRecovery).
    void setRecoveryPath(const QString& path);
    const QString& recoveryPath() const { return m_recoveryPath; }
    // Writes the copy now if there are changes; true when nothing is left unkept.
    bool writeRecovery();
    void discardRecovery();

    // Tells about a change the undo manager doesn't see (a text edit finishing in place).
    void noteChange();
    void setAutosaveDelay(int milliseconds);
    // Milliseconds on a steady clock; tests put their own in its place.
    void setClock(std::function<qint64()> milliseconds);
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
    // isFileGone or isReadOnly changed.
    void fileStateChanged();
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
    qint64 m_pendingSince = 0;
    QByteArray m_diskBytes;
    QDateTime m_diskModified;
    qint64 m_diskSize = -1;
    QFileSystemWatcher* m_watcher;
    QTimer* m_diskSettle;
    std::function<qint64()> m_clock;
    bool m_isFileGone = false;
    bool m_isReadOnly = false;
    QString m_recoveryPath;
};
