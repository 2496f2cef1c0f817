#pragma once

#include "NodeID.h"

#include <QString>

#include <memory>
#include <unordered_map>
#include <vector>

class SermonNode;
using SermonNodePtr = std::shared_ptr<SermonNode>;

// One line of the sermon tree. Parents own their children; undo snapshots own copies.
// Every walk here is iterative: a file can nest lists thousands of levels deep.
class SermonNode : public std::enable_shared_from_this<SermonNode> {
public:
    SermonNode(QString text, int depth);
    SermonNode(const NodeID& id, QString text, int depth);
    ~SermonNode();
    SermonNode(const SermonNode&) = delete;
    SermonNode& operator=(const SermonNode&) = delete;

    static SermonNodePtr make(QString text = {}, int depth = 0);

    const NodeID& id() const { return m_id; }
    const QString& text() const { return m_text; }
    int depth() const { return m_depth; }
    bool isCollapsed() const { return m_isCollapsed; }
    bool isQuote() const { return m_isQuote; }
    const std::vector<SermonNodePtr>& children() const { return m_children; }
    std::vector<SermonNodePtr>& children() { return m_children; }
    bool hasChildren() const { return !m_children.empty(); }

    // Setters compare first and report whether anything changed.
    bool setText(const QString& text);
    bool setDepth(int depth);
    bool setCollapsed(bool collapsed);
    bool setQuote(bool quote);

    SermonNodePtr find(const NodeID& id) const;
    SermonNodePtr parent(const NodeID& id) const;
    std::vector<SermonNodePtr> flattened() const;
    SermonNodePtr deepCopy(bool freshIDs) const;

    void setDepthRecursive(int depth);
    void setChildrenDepth(int depth);

    bool removeNode(const NodeID& id);
    SermonNodePtr insertSiblingAfter(const NodeID& sibling, const QString& text);
    SermonNodePtr insertSiblingBefore(const NodeID& sibling, const QString& text);
    // On a quote the new node is made but left unattached.
    SermonNodePtr addChild(const QString& text);
    bool moveNode(const NodeID& id, const NodeID& newParentID, int index);

    bool hasOnlyLeafChildren() const;
    std::unordered_map<NodeID, SermonNodePtr> nodeIndex() const;
    std::unordered_map<NodeID, SermonNodePtr> parentIndex() const;

    // Position of a child with the given id, or -1.
    int indexOfChild(const NodeID& id) const;

private:
    SermonNodePtr insertSibling(const NodeID& sibling, const QString& text, int offset);

    NodeID m_id;
    QString m_text;
    int m_depth = 0;
    std::vector<SermonNodePtr> m_children;
    bool m_isCollapsed = false;
    bool m_isQuote = false;
};
