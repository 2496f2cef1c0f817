#pragma once

#include <QObject>

#include <deque>
#include <functional>
#include <optional>

// The place that tells Undo and Redo that a step exists. What a step restores lives with its
// owner (the document's snapshot stacks); this only keeps the handlers and the change count.
class UndoManager : public QObject {
    Q_OBJECT
public:
    using Handler = std::function<void()>;

    explicit UndoManager(QObject* parent = nullptr);

    // Registering during undo files a redo step; during redo, an undo step; otherwise a new
    // undo step, which clears the redo steps.
    void registerUndo(Handler handler);
    void undo();
    void redo();
    bool canUndo() const { return !m_undo.empty(); }
    bool canRedo() const { return !m_redo.empty(); }
    bool isUndoing() const { return m_state == State::undoing; }
    bool isRedoing() const { return m_state == State::redoing; }

    void setLevelsOfUndo(int levels);

    // Distance from the last save: zero when the document matches its file.
    int changeCount() const { return m_changeCount; }
    bool isClean() const { return m_cleanCount && *m_cleanCount == m_changeCount; }
    void markClean();
    void removeAllActions();

signals:
    void stateChanged();

private:
    enum class State { idle, undoing, redoing };
    void trim();

    std::deque<Handler> m_undo;
    std::deque<Handler> m_redo;
    State m_state = State::idle;
    int m_levels = 50;
    int m_changeCount = 0;
    std::optional<int> m_cleanCount = 0;
};
