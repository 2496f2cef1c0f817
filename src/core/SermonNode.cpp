#include "SermonNode.h"

#include "MarkdownCodec.h"

#include <algorithm>
#include <mutex>
#include <utility>

struct SermonNode::Index {
    std::unordered_map<NodeID, SermonNode*> nodes;
    // One id twice in a tree: lookups walk instead, so that the first in tree order still wins.
    bool hasDuplicates = false;
};

SermonNode::SermonNode(QString text, int depth)
    : SermonNode(makeNodeID(), std::move(text), depth)
{
}

SermonNode::SermonNode(const NodeID& id, QString text, int depth)
    : m_id(id)
    , m_text(std::move(text))
    , m_depth(depth)
{
}

SermonNode::~SermonNode()
{
    delete m_index.load(std::memory_order_relaxed);
    // Tear the subtree down from a work list, so that a chain thousands of levels
    // deep never unwinds through thousands of nested destructors. A child someone else
    // still holds becomes the top of its own tree.
    std::vector<SermonNodePtr> pending = std::move(m_children);
    for (const auto& child : pending)
        child->m_parent = nullptr;
    while (!pending.empty()) {
        SermonNodePtr node = std::move(pending.back());
        pending.pop_back();
        if (node && node.use_count() == 1) {
            for (auto& child : node->m_children) {
                child->m_parent = nullptr;
                pending.push_back(std::move(child));
            }
            node->m_children.clear();
        }
    }
}

SermonNodePtr SermonNode::make(QString text, int depth)
{
    return std::make_shared<SermonNode>(std::move(text), depth);
}

bool SermonNode::setText(const QString& text)
{
    if (m_text == text)
        return false;
    m_text = text;
    markChanged();
    return true;
}

bool SermonNode::setDepth(int depth)
{
    if (m_depth == depth)
        return false;
    m_depth = depth;
    markChanged();
    return true;
}

bool SermonNode::setCollapsed(bool collapsed)
{
    if (m_isCollapsed == collapsed)
        return false;
    m_isCollapsed = collapsed;
    markChanged();
    return true;
}

bool SermonNode::setQuote(bool quote)
{
    if (m_isQuote == quote)
        return false;
    m_isQuote = quote;
    markChanged();
    return true;
}

namespace {
// Pre-order walk, receiver first, children in order. `visit` returns true to stop. `Node` is
// SermonNode or const SermonNode, so that each lookup hands out what its receiver allows.
template <typename Node, typename Visit>
void walkPreOrder(Node* start, Visit visit)
{
    std::vector<Node*> stack{start};
    while (!stack.empty()) {
        Node* node = stack.back();
        stack.pop_back();
        if (visit(node))
            return;
        const auto& kids = node->children();
        for (auto it = kids.rbegin(); it != kids.rend(); ++it)
            stack.push_back(it->get());
    }
}

template <typename Node>
auto findIn(Node* start, const NodeID& id)
{
    decltype(start->shared_from_this()) hit;
    walkPreOrder(start, [&](Node* node) {
        if (node->id() != id)
            return false;
        hit = node->shared_from_this();
        return true;
    });
    return hit;
}

template <typename Node>
auto flatten(Node* start)
{
    std::vector<decltype(start->shared_from_this())> out;
    walkPreOrder(start, [&](Node* node) {
        out.push_back(node->shared_from_this());
        return false;
    });
    return out;
}
} // namespace

void SermonNode::markChanged()
{
    // A changed node's parent is changed already, so the climb stops at the first one.
    for (SermonNode* node = this; node && !node->m_changed; node = node->m_parent)
        node->m_changed = true;
}

SermonNode* SermonNode::top() const
{
    const SermonNode* node = this;
    while (node->m_parent)
        node = node->m_parent;
    // The index hands out mutable nodes to the mutable lookups; the const ones add const back.
    return const_cast<SermonNode*>(node);
}

const SermonNode::Index& SermonNode::index() const
{
    if (const Index* built = m_index.load(std::memory_order_acquire))
        return *built;
    // Two readers of one tree may both ask first; one builds, the other waits for it.
    static std::mutex building;
    const std::lock_guard lock(building);
    if (const Index* built = m_index.load(std::memory_order_acquire))
        return *built;
    auto made = std::make_unique<Index>();
    // Sized first: growing a table of a long sermon's nodes rehashes it a dozen times.
    size_t count = 0;
    walkPreOrder(const_cast<SermonNode*>(this), [&](SermonNode*) {
        ++count;
        return false;
    });
    made->nodes.reserve(count);
    walkPreOrder(const_cast<SermonNode*>(this), [&](SermonNode* node) {
        if (!made->nodes.emplace(node->m_id, node).second)
            made->hasDuplicates = true;
        node->m_indexed = true;
        return false;
    });
    m_index.store(made.get(), std::memory_order_release);
    return *made.release();
}

SermonNode* SermonNode::locate(const NodeID& id) const
{
    SermonNode* const treeTop = top();
    const Index& index = treeTop->index();
    if (index.hasDuplicates)
        return findIn(const_cast<SermonNode*>(this), id).get();
    const auto hit = index.nodes.find(id);
    if (hit == index.nodes.end())
        return nullptr;
    // The index covers the whole tree; below another receiver, only its own subtree counts.
    if (treeTop != this) {
        const SermonNode* node = hit->second;
        while (node && node != this)
            node = node->m_parent;
        if (!node)
            return nullptr;
    }
    return hit->second;
}

void SermonNode::indexAttached(SermonNode& subtree)
{
    Index* index = top()->m_index.load(std::memory_order_relaxed);
    if (!index)
        return;
    walkPreOrder(&subtree, [&](SermonNode* node) {
        if (!index->nodes.emplace(node->m_id, node).second)
            index->hasDuplicates = true;
        node->m_indexed = true;
        return false;
    });
}

void SermonNode::indexDetaching(SermonNode& subtree)
{
    SermonNode* const treeTop = top();
    Index* index = treeTop->m_index.load(std::memory_order_relaxed);
    if (!index)
        return;
    if (index->hasDuplicates) {
        // Which of two equal ids to drop is not known here: build again at the next lookup.
        delete treeTop->m_index.exchange(nullptr);
        return;
    }
    walkPreOrder(&subtree, [&](SermonNode* node) {
        index->nodes.erase(node->m_id);
        node->m_indexed = false;
        return false;
    });
}

SermonNodePtr SermonNode::find(const NodeID& id)
{
    SermonNode* node = locate(id);
    return node ? node->shared_from_this() : nullptr;
}

ConstSermonNodePtr SermonNode::find(const NodeID& id) const
{
    const SermonNode* node = locate(id);
    return node ? node->shared_from_this() : nullptr;
}

SermonNodePtr SermonNode::parent(const NodeID& id)
{
    SermonNode* node = locate(id);
    return node && node != this ? node->m_parent->shared_from_this() : nullptr;
}

ConstSermonNodePtr SermonNode::parent(const NodeID& id) const
{
    const SermonNode* node = locate(id);
    return node && node != this ? node->m_parent->shared_from_this() : nullptr;
}

SermonNodePtr SermonNode::parentNode()
{
    return m_parent ? m_parent->shared_from_this() : nullptr;
}

ConstSermonNodePtr SermonNode::parentNode() const
{
    return m_parent ? m_parent->shared_from_this() : nullptr;
}

int SermonNode::indexInParent() const
{
    if (!m_parent)
        return -1;
    const auto& kids = m_parent->m_children;
    for (size_t i = 0; i < kids.size(); ++i)
        if (kids[i].get() == this)
            return int(i);
    return -1;
}

std::vector<SermonNodePtr> SermonNode::flattened()
{
    return flatten(this);
}

std::vector<ConstSermonNodePtr> SermonNode::flattened() const
{
    return flatten(this);
}

size_t SermonNode::shownCount() const
{
    size_t count = 0;
    std::vector<const SermonNode*> walk{this};
    while (!walk.empty()) {
        const SermonNode* n = walk.back();
        walk.pop_back();
        ++count;
        if (!n->m_isCollapsed)
            for (const auto& child : n->m_children)
                walk.push_back(child.get());
    }
    return count;
}

SermonNodePtr SermonNode::deepCopy(bool freshIDs) const
{
    auto copyOne = [freshIDs](const SermonNode& from) {
        // Undo copies keep their ids; making a fresh one only to overwrite it costs the most here.
        auto to = freshIDs ? make(from.m_text, from.m_depth)
                           : std::make_shared<SermonNode>(from.m_id, from.m_text, from.m_depth);
        to->m_isCollapsed = from.m_isCollapsed;
        to->m_isQuote = from.m_isQuote;
        to->m_children.reserve(from.m_children.size());
        return to;
    };
    SermonNodePtr top = copyOne(*this);
    std::vector<std::pair<const SermonNode*, SermonNode*>> stack{{this, top.get()}};
    while (!stack.empty()) {
        auto [from, to] = stack.back();
        stack.pop_back();
        for (const auto& child : from->m_children) {
            to->m_children.push_back(copyOne(*child));
            to->m_children.back()->m_parent = to;
            stack.emplace_back(child.get(), to->m_children.back().get());
        }
    }
    return top;
}

FrozenNode::FrozenNode(const NodeID& id, QString text, int depth, bool isCollapsed, bool isQuote,
                       std::vector<FrozenNodePtr> children)
    : m_id(id)
    , m_text(std::move(text))
    , m_depth(depth)
    , m_isCollapsed(isCollapsed)
    , m_isQuote(isQuote)
    , m_children(std::move(children))
{
}

FrozenNode::~FrozenNode()
{
    // As for live nodes: a deep chain is let go from a work list, never by nested destructors.
    std::vector<FrozenNodePtr> pending = std::move(m_children);
    while (!pending.empty()) {
        FrozenNodePtr node = std::move(pending.back());
        pending.pop_back();
        if (node && node.use_count() == 1) {
            // The last owner: nobody else can see the node while its children move out.
            auto& children = const_cast<FrozenNode&>(*node).m_children;
            for (auto& child : children)
                pending.push_back(std::move(child));
            children.clear();
        }
    }
}

FrozenNodePtr SermonNode::freeze() const
{
    if (!m_changed)
        return m_frozen;
    // Post-order, so that every child is frozen before its parent compares against it. Only
    // changed nodes are visited: an unchanged one's frozen form is its whole subtree already.
    std::vector<std::pair<const SermonNode*, bool>> stack{{this, false}};
    while (!stack.empty()) {
        auto& [node, childrenDone] = stack.back();
        if (!childrenDone) {
            childrenDone = true;
            const SermonNode* parent = node;
            for (auto it = parent->m_children.rbegin(); it != parent->m_children.rend(); ++it)
                if ((*it)->m_changed)
                    stack.emplace_back(it->get(), false);
            continue;
        }
        const SermonNode& n = *node;
        stack.pop_back();
        n.m_changed = false;
        const FrozenNode* f = n.m_frozen.get();
        bool unchanged = f && f->m_depth == n.m_depth && f->m_isCollapsed == n.m_isCollapsed
            && f->m_isQuote == n.m_isQuote && f->m_id == n.m_id && f->m_children.size() == n.m_children.size()
            && (f->m_text.constData() == n.m_text.constData() || f->m_text == n.m_text);
        for (size_t i = 0; unchanged && i < n.m_children.size(); ++i)
            unchanged = f->m_children[i] == n.m_children[i]->m_frozen;
        if (unchanged)
            continue;
        std::vector<FrozenNodePtr> children;
        children.reserve(n.m_children.size());
        for (const auto& child : n.m_children)
            children.push_back(child->m_frozen);
        n.m_frozen = std::make_shared<const FrozenNode>(n.m_id, n.m_text, n.m_depth, n.m_isCollapsed, n.m_isQuote,
                                                        std::move(children));
    }
    return m_frozen;
}

SermonNodePtr SermonNode::thawOne(const FrozenNodePtr& from)
{
    auto to = std::make_shared<SermonNode>(from->m_id, from->m_text, from->m_depth);
    to->m_isCollapsed = from->m_isCollapsed;
    to->m_isQuote = from->m_isQuote;
    to->m_children.reserve(from->m_children.size());
    to->m_frozen = from;
    to->m_changed = false;
    return to;
}

SermonNodePtr SermonNode::thaw(const FrozenNodePtr& frozen)
{
    SermonNodePtr top = thawOne(frozen);
    std::vector<std::pair<const FrozenNode*, SermonNode*>> stack{{frozen.get(), top.get()}};
    while (!stack.empty()) {
        auto [from, to] = stack.back();
        stack.pop_back();
        for (const auto& child : from->m_children) {
            to->m_children.push_back(thawOne(child));
            to->m_children.back()->m_parent = to;
            stack.emplace_back(child.get(), to->m_children.back().get());
        }
    }
    return top;
}

SermonNodePtr SermonNode::thaw(const FrozenNodePtr& frozen, SermonNode& present)
{
    Q_ASSERT(!present.m_parent);
    // The index says where each line of `present` is; with one id twice it cannot say.
    if (present.index().hasDuplicates)
        return thaw(frozen);
    std::unique_ptr<Index> index(present.m_index.exchange(nullptr));

    auto oldNode = [&index](const NodeID& id) {
        const auto hit = index->nodes.find(id);
        return hit == index->nodes.end() ? nullptr : hit->second;
    };
    // Unchanged and frozen as exactly this: the subtree is this frozen form already. It must
    // still hang in `present` (every node there is indexed, no new node is yet); the top of
    // `present` stays where it is.
    auto takes = [](const SermonNode* old, const FrozenNodePtr& form) {
        return old && !old->m_changed && old->m_frozen == form && old->m_parent && old->m_parent->m_indexed;
    };
    SermonNodePtr top = thawOne(frozen);
    std::vector<SermonNode*> made{top.get()};
    // Old nodes that gave up a child; the child's slot is closed after the walk.
    std::vector<SermonNode*> vacated;
    // Each new node with the old node of its id, whose children are the first guess for its own.
    struct Pending {
        const FrozenNode* from;
        SermonNode* to;
        const SermonNode* was;
    };
    std::vector<Pending> stack{{frozen.get(), top.get(), &present}};
    while (!stack.empty()) {
        const Pending at = stack.back();
        stack.pop_back();
        const auto& kids = at.from->m_children;
        for (size_t i = 0; i < kids.size(); ++i) {
            const FrozenNodePtr& child = kids[i];
            // Most lines keep their place: the old one there is tried before the index.
            SermonNode* old = at.was && i < at.was->m_children.size() ? at.was->m_children[i].get() : nullptr;
            if (!takes(old, child))
                old = oldNode(child->m_id);
            if (takes(old, child)) {
                if (vacated.empty() || vacated.back() != old->m_parent)
                    vacated.push_back(old->m_parent);
                at.to->m_children.push_back(old->shared_from_this());
                old->m_parent = at.to;
                continue;
            }
            at.to->m_children.push_back(thawOne(child));
            at.to->m_children.back()->m_parent = at.to;
            made.push_back(at.to->m_children.back().get());
            stack.push_back({child.get(), made.back(), old && old->m_id == child->m_id ? old : nullptr});
        }
    }

    // Close the slots of the subtrees taken, so that what is left of `present` is a tree again.
    std::sort(vacated.begin(), vacated.end());
    vacated.erase(std::unique(vacated.begin(), vacated.end()), vacated.end());
    for (SermonNode* parent : vacated)
        std::erase_if(parent->m_children, [parent](const SermonNodePtr& c) { return c->m_parent != parent; });
    // What is left leaves the index, unless a new node took its id, and no longer matches the
    // frozen forms it remembers.
    walkPreOrder(&present, [&](SermonNode* node) {
        if (const auto hit = index->nodes.find(node->m_id); hit != index->nodes.end() && hit->second == node)
            index->nodes.erase(hit);
        node->m_indexed = false;
        node->m_changed = true;
        return false;
    });
    // Every id still there is in a subtree taken, so a new node finding its id there is a second.
    for (SermonNode* node : made) {
        if (!index->nodes.emplace(node->m_id, node).second)
            index->hasDuplicates = true;
        node->m_indexed = true;
    }
    if (index->hasDuplicates)
        index.reset(); // built again, in tree order, at the next lookup
    top->m_index.store(index.release(), std::memory_order_release);
    return top;
}

void SermonNode::setDepthRecursive(int depth)
{
    std::vector<std::pair<SermonNode*, int>> stack{{this, depth}};
    while (!stack.empty()) {
        auto [node, d] = stack.back();
        stack.pop_back();
        node->setDepth(d);
        for (auto& child : node->m_children)
            stack.emplace_back(child.get(), d + 1);
    }
}

void SermonNode::setChildrenDepth(int depth)
{
    for (auto& child : m_children)
        child->setDepthRecursive(depth);
}

bool SermonNode::removeNode(const NodeID& id)
{
    SermonNode* node = locate(id);
    if (!node || node == this)
        return false;
    node->m_parent->removeChild(node->indexInParent());
    return true;
}

SermonNodePtr SermonNode::insertSibling(const NodeID& sibling, const QString& text, int offset)
{
    SermonNode* node = locate(sibling);
    if (!node || node == this)
        return {};
    SermonNode* owner = node->m_parent;
    auto made = make(text, owner->m_depth + 1);
    owner->insertChild(node->indexInParent() + offset, made);
    return made;
}

SermonNodePtr SermonNode::insertSiblingAfter(const NodeID& sibling, const QString& text)
{
    return insertSibling(sibling, text, 1);
}

SermonNodePtr SermonNode::insertSiblingBefore(const NodeID& sibling, const QString& text)
{
    return insertSibling(sibling, text, 0);
}

SermonNodePtr SermonNode::addChild(const QString& text)
{
    auto node = make(text, m_depth + 1);
    if (m_isQuote)
        return node;
    appendChild(node);
    setCollapsed(false);
    return node;
}

bool SermonNode::moveNode(const NodeID& id, const NodeID& newParentID, int index)
{
    if (id == m_id)
        return false;
    SermonNodePtr node = find(id);
    if (!node || node->find(newParentID))
        return false;
    SermonNodePtr target = find(newParentID);
    if (!target || target->m_isQuote)
        return false;
    SermonNodePtr oldParent = parent(id);
    if (!oldParent)
        return false;
    oldParent->removeChild(oldParent->indexOfChild(id));
    target->insertChild(index, node);
    return true;
}

void SermonNode::insertChild(int index, SermonNodePtr node)
{
    node->setDepthRecursive(m_depth + 1);
    insertChildKeepingDepths(index, std::move(node));
}

void SermonNode::insertChildKeepingDepths(int index, SermonNodePtr node)
{
    Q_ASSERT(node && node.get() != this && !node->m_parent);
    SermonNode& child = *node;
    child.m_parent = this;
    // No longer a top: the tree it joins indexes it, if that tree has an index.
    delete child.m_index.exchange(nullptr);
    index = std::clamp(index, 0, int(m_children.size()));
    m_children.insert(m_children.begin() + index, std::move(node));
    markChanged();
    if (m_indexed)
        indexAttached(child);
}

SermonNodePtr SermonNode::removeChild(int index)
{
    if (index < 0 || index >= int(m_children.size()))
        return {};
    SermonNodePtr child = std::move(m_children[size_t(index)]);
    m_children.erase(m_children.begin() + index);
    if (child->m_indexed)
        indexDetaching(*child);
    child->m_parent = nullptr;
    markChanged();
    return child;
}

void SermonNode::moveChild(int from, int to)
{
    // Within one parent nothing enters or leaves the tree, so the index stands as it is.
    if (from < 0 || from >= int(m_children.size()))
        return;
    SermonNodePtr child = std::move(m_children[size_t(from)]);
    m_children.erase(m_children.begin() + from);
    to = std::clamp(to, 0, int(m_children.size()));
    m_children.insert(m_children.begin() + to, std::move(child));
    markChanged();
}

bool SermonNode::depthsAreConsistent() const
{
    bool consistent = true;
    walkPreOrder(this, [&](const SermonNode* node) {
        for (const auto& child : node->m_children) {
            const int step = child->m_depth - node->m_depth;
            if (step < 1 || (step > 1 && child->m_depth > MarkdownCodec::deepestHeadingDepth)) {
                consistent = false;
                return true;
            }
        }
        return false;
    });
    return consistent;
}

bool SermonNode::hasOnlyLeafChildren() const
{
    if (m_children.empty())
        return false;
    return std::none_of(m_children.begin(), m_children.end(), [](const SermonNodePtr& c) { return c->hasChildren(); });
}

std::unordered_map<NodeID, SermonNodePtr> SermonNode::nodeIndex()
{
    std::unordered_map<NodeID, SermonNodePtr> index;
    walkPreOrder(this, [&](SermonNode* node) {
        index.emplace(node->m_id, node->shared_from_this());
        return false;
    });
    return index;
}

std::unordered_map<NodeID, SermonNodePtr> SermonNode::parentIndex()
{
    std::unordered_map<NodeID, SermonNodePtr> index;
    walkPreOrder(this, [&](SermonNode* node) {
        SermonNodePtr self = node->shared_from_this();
        for (const auto& child : node->m_children)
            index.emplace(child->m_id, self);
        return false;
    });
    return index;
}

int SermonNode::indexOfChild(const NodeID& id) const
{
    for (size_t i = 0; i < m_children.size(); ++i)
        if (m_children[i]->m_id == id)
            return int(i);
    return -1;
}
