// Incremental search. It opens folded branches that hide a match and folds them back at the
// end, keeping its own record of what it opened: it never goes through undo.

#include "DocumentController.h"

#include "core/SermonDocument.h"

#include <algorithm>

namespace {
bool matches(const QString& text, const QString& query)
{
    return !query.isEmpty() && text.contains(query, Qt::CaseInsensitive);
}
} // namespace

void DocumentController::beginSearch()
{
    if (m_isSearching)
        return;
    m_isSearching = true;
    emit searchChanged();
}

void DocumentController::setSearchQuery(const QString& query)
{
    if (m_searchQuery == query)
        return;
    m_searchQuery = query;
    updateSearch();
}

void DocumentController::updateSearch()
{
    const std::vector<NodeID> old = std::move(m_searchMatches);
    m_searchMatches.clear();
    m_searchMatchSet.clear();
    // Pre-order from the root, folded branches included.
    for (const auto& node : root()->flattened()) {
        if (matches(node->text(), m_searchQuery)) {
            m_searchMatches.push_back(node->id());
            m_searchMatchSet.insert(node->id());
        }
    }

    if (m_searchMatches.empty()) {
        m_currentMatchIndex = 0;
        restoreCollapsedState();
        emit searchChanged();
        return;
    }
    // The current match survives further typing as long as it still matches.
    int index = 0;
    if (m_currentMatchIndex >= 0 && m_currentMatchIndex < int(old.size())) {
        const auto hit = std::find(m_searchMatches.begin(), m_searchMatches.end(), old[m_currentMatchIndex]);
        if (hit != m_searchMatches.end())
            index = int(hit - m_searchMatches.begin());
    }
    m_currentMatchIndex = index;
    expandForMatches();
    treeMutated(false); // search unfolds for a while and folds back: no edit
    requestVisible(m_searchMatches[m_currentMatchIndex]);
    emit searchChanged();
}

void DocumentController::expandForMatches()
{
    // Walk with the path of ancestors. From each match, climb the path and note the folded
    // ancestors, stopping at one already climbed through: everything above it is noted.
    QSet<NodeID> folded;
    QSet<const SermonNode*> climbed;
    std::vector<const SermonNode*> path;
    std::vector<std::pair<const SermonNode*, size_t>> stack{{root().get(), 0}};
    std::vector<SermonNodePtr> toOpen;
    while (!stack.empty()) {
        auto [node, level] = stack.back();
        stack.pop_back();
        path.resize(level);
        if (m_searchMatchSet.contains(node->id())) {
            for (auto it = path.rbegin(); it != path.rend() && !climbed.contains(*it); ++it) {
                climbed.insert(*it);
                if ((*it)->isCollapsed())
                    folded.insert((*it)->id());
            }
        }
        path.push_back(node);
        const auto& kids = node->children();
        for (auto it = kids.rbegin(); it != kids.rend(); ++it)
            stack.emplace_back(it->get(), level + 1);
    }
    if (folded.isEmpty())
        return;
    for (const auto& node : root()->flattened()) {
        if (!folded.contains(node->id()))
            continue;
        if (!m_savedCollapsedState.contains(node->id()))
            m_savedCollapsedState.insert(node->id(), true);
        node->setCollapsed(false);
        m_autoExpandedNodeIDs.insert(node->id());
    }
}

void DocumentController::restoreCollapsedState()
{
    if (!m_savedCollapsedState.isEmpty()) {
        for (auto it = m_savedCollapsedState.cbegin(); it != m_savedCollapsedState.cend(); ++it)
            if (const SermonNodePtr node = it.value() ? root()->find(it.key()) : nullptr)
                node->setCollapsed(true);
    }
    m_savedCollapsedState.clear();
    m_autoExpandedNodeIDs.clear();
    treeMutated(false);
}

void DocumentController::stepMatch(bool forward)
{
    const int count = int(m_searchMatches.size());
    if (count == 0)
        return;
    m_currentMatchIndex = forward ? (m_currentMatchIndex + 1) % count : (m_currentMatchIndex - 1 + count) % count;
    requestVisible(m_searchMatches[m_currentMatchIndex]);
    emit searchChanged();
}

void DocumentController::endSearch()
{
    m_isSearching = false;
    m_searchQuery.clear();
    m_searchMatches.clear();
    m_searchMatchSet.clear();
    m_currentMatchIndex = 0;
    restoreCollapsedState();
    emit searchChanged();
    requestCanvasFocus();
}

std::optional<SearchHighlight> DocumentController::highlight(const NodeID& id) const
{
    if (!m_isSearching || m_searchQuery.isEmpty() || !m_searchMatchSet.contains(id))
        return std::nullopt;
    const SermonNodePtr node = root()->find(id);
    return node ? highlight(*node) : std::nullopt;
}

std::optional<SearchHighlight> DocumentController::highlight(const SermonNode& node) const
{
    const NodeID& id = node.id();
    if (!m_isSearching || m_searchQuery.isEmpty() || !m_searchMatchSet.contains(id))
        return std::nullopt;
    SearchHighlight result;
    // Folded per character, so the ranges are offsets in the text as it stands: lower-casing
    // first would shift them behind a letter like "İ" that lower-cases to two.
    const QString& text = node.text();
    for (qsizetype at = text.indexOf(m_searchQuery, 0, Qt::CaseInsensitive); at >= 0;
         at = text.indexOf(m_searchQuery, at + m_searchQuery.size(), Qt::CaseInsensitive))
        result.ranges.emplace_back(int(at), int(at + m_searchQuery.size()));
    result.isCurrent = m_currentMatchIndex >= 0 && m_currentMatchIndex < int(m_searchMatches.size())
        && m_searchMatches[m_currentMatchIndex] == id;
    return result;
}
