#pragma once

#include "SermonMetadata.h"
#include "SermonNode.h"

#include <QByteArray>
#include <QObject>

#include <optional>
#include <vector>

class UndoManager;

// One undo step: the whole tree (ids kept), the metadata and the selection to restore. The tree
// is frozen, sharing its unchanged lines with the steps beside it.
struct UndoSnapshot {
    FrozenNodePtr root;
    SermonMetadata metadata;
    std::optional<NodeID> selectedNodeID;
};

// Why bytes could not be read as a sermon.
enum class SermonReadError { empty, notUtf8 };
QString describe(SermonReadError error);

struct SermonContents {
    SermonMetadata metadata;
    SermonNodePtr root;
};

// Reads a whole file's bytes. Everything that is non-empty UTF-8 reads; the rest fails.
std::optional<SermonContents> readSermon(const QByteArray& bytes, SermonReadError* error = nullptr);

// The model of one open file: metadata, tree and its own undo history of whole snapshots.
class SermonDocument : public QObject {
    Q_OBJECT
public:
    static constexpr int undoLimit = 50;

    explicit SermonDocument(SermonNodePtr root, SermonMetadata metadata = {}, QObject* parent = nullptr);
    explicit SermonDocument(SermonContents contents, QObject* parent = nullptr);

    const SermonMetadata& metadata() const { return m_metadata; }
    bool setMetadata(const SermonMetadata& metadata);
    const SermonNodePtr& root() const { return m_root; }
    bool setRoot(SermonNodePtr root);

    int undoRedoGeneration() const { return m_undoRedoGeneration; }
    std::optional<NodeID> lastRestoredNodeID() const { return m_lastRestoredNodeID; }
    std::optional<NodeID> currentSelectedNodeID() const { return m_currentSelectedNodeID; }
    void setCurrentSelectedNodeID(std::optional<NodeID> id) { m_currentSelectedNodeID = id; }

    const std::vector<UndoSnapshot>& undoStack() const { return m_undoStack; }
    const std::vector<UndoSnapshot>& redoStack() const { return m_redoStack; }

    // Called immediately before a change; the one way to record a step.
    void captureUndo(std::optional<NodeID> selection, UndoManager* manager = nullptr);
    // Puts other contents in place of these (the file read again) as one step that undo takes
    // back, with the root selected afterwards.
    void replaceContents(SermonContents contents, UndoManager* manager = nullptr);
    void undo(UndoManager* manager = nullptr);
    void redo(UndoManager* manager = nullptr);

    // The whole file as text, and as the bytes to write.
    QString snapshot() const;
    QByteArray fileContents() const;

signals:
    void metadataChanged();
    void rootChanged();
    void undoRedoGenerationChanged(int generation);

private:
    UndoSnapshot present() const;
    void restore(SermonNodePtr root, const SermonMetadata& metadata, std::optional<NodeID> selection);
    void restore(const UndoSnapshot& snapshot);
    // Tells the manager a step exists; its handler runs `step` on this document.
    void fileStep(UndoManager* manager, void (SermonDocument::*step)(UndoManager*));

    SermonMetadata m_metadata;
    SermonNodePtr m_root;
    std::vector<UndoSnapshot> m_undoStack;
    std::vector<UndoSnapshot> m_redoStack;
    int m_undoRedoGeneration = 0;
    std::optional<NodeID> m_lastRestoredNodeID;
    std::optional<NodeID> m_currentSelectedNodeID;
};
