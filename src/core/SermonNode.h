#pragma once

#include "NodeID.h"

#include <QString>

#include <atomic>
#include <memory>
#include <unordered_map>
#include <vector>

class SermonNode;
using SermonNodePtr = std::shared_ptr<SermonNode>;
using ConstSermonNodePtr = std::shared_ptr<const SermonNode>;
class FrozenNode;
using FrozenNodePtr = std::shared_ptr<const FrozenNode>;

// A line as it stood when an undo step was taken. Never changed once made, so the steps of a
// history share every line that did not change between them, and a step costs the lines
// that changed and the path above them, not the whole tree.
class FrozenNode {
public:
    FrozenNode(const NodeID& id, QString text, int depth, bool isCollapsed, bool isQuote,
               std::vector<FrozenNodePtr> children);
    ~FrozenNode();
    FrozenNode(const FrozenNode&) = delete;
    FrozenNode& operator=(const FrozenNode&) = delete;

    const NodeID& id() const { return m_id; }
    const QString& text() const { return m_text; }
    int depth() const { return m_depth; }
    bool isCollapsed() const { return m_isCollapsed; }
    bool isQuote() const { return m_isQuote; }
    const std::vector<FrozenNodePtr>& children() const { return m_children; }

private:
    friend class SermonNode;
    NodeID m_id;
    QString m_text;
    int m_depth;
    bool m_isCollapsed;
    bool m_isQuote;
    std::vector<FrozenNodePtr> m_children;
};

// One line of the sermon tree. Parents own their children; undo snapshots own copies.
// Every walk here is iterative: a file can nest lists thousands of levels deep.
//
// Children change only through the operations below, each of which keeps depths right, so
// that every view edits the tree by the same rules. A const node never hands itself out as
// mutable; its children it hands out as they are shared, so constness stops at the receiver.
//
// Each node knows its parent, and the top of a tree keeps an id index, built at the first
// lookup and kept up to date by every attach and detach, so that a lookup costs the depth of
// the line, not the size of the file. Lookups may run on several threads at once over a tree
// that nobody changes; every other method, freeze included, wants the tree to itself.
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
    bool hasChildren() const { return !m_children.empty(); }
    // The node this one hangs under, null at the top of a tree.
    SermonNodePtr parentNode();
    ConstSermonNodePtr parentNode() const;
    // Position among the parent's children, or -1 at the top.
    int indexInParent() const;

    // Setters compare first and report whether anything changed.
    bool setText(const QString& text);
    bool setDepth(int depth);
    bool setCollapsed(bool collapsed);
    bool setQuote(bool quote);

    SermonNodePtr find(const NodeID& id);
    ConstSermonNodePtr find(const NodeID& id) const;
    SermonNodePtr parent(const NodeID& id);
    ConstSermonNodePtr parent(const NodeID& id) const;
    std::vector<SermonNodePtr> flattened();
    std::vector<ConstSermonNodePtr> flattened() const;
    // This node and what shows below it: nothing under a fold. What a view's table holds.
    size_t shownCount() const;
    SermonNodePtr deepCopy(bool freshIDs) const;

    // The subtree as it stands now, frozen. What is unchanged since the last freeze is shared
    // with it: a node remembers its frozen form and makes a new one only when it or something
    // below it differs.
    FrozenNodePtr freeze() const;
    // A live tree made from a frozen one, ids kept; its nodes remember where they came from.
    static SermonNodePtr thaw(const FrozenNodePtr& frozen);
    // The same, taking from `present`, the top of a live tree, every subtree that is unchanged
    // and whose frozen form is the very one wanted at its place, so that undo costs what differs
    // between the two trees, not the size of the file. The index moves to the new top. What is
    // left under `present` is the lines that leave and the path to the lines taken.
    static SermonNodePtr thaw(const FrozenNodePtr& frozen, SermonNode& present);

    void setDepthRecursive(int depth);
    void setChildrenDepth(int depth);

    bool removeNode(const NodeID& id);
    SermonNodePtr insertSiblingAfter(const NodeID& sibling, const QString& text);
    SermonNodePtr insertSiblingBefore(const NodeID& sibling, const QString& text);
    // On a quote the new node is made but left unattached.
    SermonNodePtr addChild(const QString& text);
    bool moveNode(const NodeID& id, const NodeID& newParentID, int index);

    // The node's own children. `node` must be in no parent; an index is clamped to the ends.
    // These two attach `node` and renumber its subtree one level below this node.
    void insertChild(int index, SermonNodePtr node);
    void appendChild(SermonNodePtr node) { insertChild(int(m_children.size()), std::move(node)); }
    // Attaches `node` at `index` with the levels it has: for the reader, whose headings keep
    // the levels the file gives them, and for a copy or a piece of a line put beside it.
    void insertChildKeepingDepths(int index, SermonNodePtr node);
    // Detaches the child at `index` and hands it back, its subtree untouched; null if none.
    SermonNodePtr removeChild(int index);
    // Moves the child at `from` to `to`, counted in the list without it. Depths stay.
    void moveChild(int from, int to);

    // True when every node below this one is deeper than its parent, and one level deeper
    // unless it stands at a heading's level: the reader keeps a file's skipped heading levels.
    // Every edit renumbers what it moves, so edits keep this true.
    bool depthsAreConsistent() const;

    bool hasOnlyLeafChildren() const;
    // Whole-tree maps, made anew at each call: for a single line, find or parent costs less.
    std::unordered_map<NodeID, SermonNodePtr> nodeIndex();
    std::unordered_map<NodeID, SermonNodePtr> parentIndex();

    // Position of a child with the given id, or -1.
    int indexOfChild(const NodeID& id) const;

private:
    struct Index;

    SermonNodePtr insertSibling(const NodeID& sibling, const QString& text, int offset);
    static SermonNodePtr thawOne(const FrozenNodePtr& from);
    // The node with `id` in this subtree, through the top's index.
    SermonNode* locate(const NodeID& id) const;
    const Index& index() const;
    SermonNode* top() const;
    // This node or something below it differs from the remembered frozen form.
    void markChanged();
    // Keeps the top's index in step with a subtree that was just attached or is being detached.
    void indexAttached(SermonNode& subtree);
    void indexDetaching(SermonNode& subtree);

    NodeID m_id;
    QString m_text;
    int m_depth = 0;
    std::vector<SermonNodePtr> m_children;
    bool m_isCollapsed = false;
    bool m_isQuote = false;
    // Set by every change here or below, cleared by freeze: a clean node's frozen form is its
    // subtree as it stands. A changed node's parent is always changed too.
    mutable bool m_changed = true;
    // Set while the node is in the index of its tree's top (and perhaps left set after).
    mutable bool m_indexed = false;
    SermonNode* m_parent = nullptr;
    // The last frozen form, reused by the next freeze if nothing changed.
    mutable FrozenNodePtr m_frozen;
    // Only on a top, once something looked up by id; published once built, whole.
    mutable std::atomic<Index*> m_index{nullptr};
};
