#include "UndoManager.h"

#include <utility>

UndoManager::UndoManager(QObject* parent)
    : QObject(parent)
{
}

void UndoManager::registerUndo(Handler handler)
{
    switch (m_state) {
    case State::undoing:
        m_redo.push_back(std::move(handler));
        break;
    case State::redoing:
        m_undo.push_back(std::move(handler));
        trim();
        break;
    case State::idle:
        // A new edit below the saved state can never lead back to it.
        if (m_cleanCount && *m_cleanCount > m_changeCount)
            m_cleanCount.reset();
        m_undo.push_back(std::move(handler));
        m_redo.clear();
        trim();
        ++m_changeCount;
        emit stateChanged();
        break;
    }
}

void UndoManager::undo()
{
    if (m_undo.empty() || m_state != State::idle)
        return;
    Handler handler = std::move(m_undo.back());
    m_undo.pop_back();
    m_state = State::undoing;
    handler();
    m_state = State::idle;
    --m_changeCount;
    emit stateChanged();
}

void UndoManager::redo()
{
    if (m_redo.empty() || m_state != State::idle)
        return;
    Handler handler = std::move(m_redo.back());
    m_redo.pop_back();
    m_state = State::redoing;
    handler();
    m_state = State::idle;
    ++m_changeCount;
    emit stateChanged();
}

void UndoManager::setLevelsOfUndo(int levels)
{
    m_levels = levels;
    trim();
}

void UndoManager::trim()
{
    while (m_levels > 0 && int(m_undo.size()) > m_levels)
        m_undo.pop_front();
}

void UndoManager::markClean()
{
    m_cleanCount = m_changeCount;
    emit stateChanged();
}

void UndoManager::removeAllActions()
{
    m_undo.clear();
    m_redo.clear();
    emit stateChanged();
}
