#include "SermonNode.h"

#include "MarkdownCodec.h"

#include <algorithm>
#include <utility>

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
    // Tear the subtree down from a work list, so that a chain thousands of levels
    // deep never unwinds through thousands of nested destructors.
    std::vector<SermonNodePtr> pending = std::move(m_children);
    while (!pending.empty()) {
        SermonNodePtr node = std::move(pending.back());
        pending.pop_back();
        if (node && node.use_count() == 1) {
            for (auto& child : node->m_children)
                pending.push_back(std::move(child));
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
    return true;
}

bool SermonNode::setDepth(int depth)
{
    if (m_depth == depth)
        return false;
    m_depth = depth;
    return true;
}

bool SermonNode::setCollapsed(bool collapsed)
{
    if (m_isCollapsed == collapsed)
        return false;
    m_isCollapsed = collapsed;
    return true;
}

bool SermonNode::setQuote(bool quote)
{
    if (m_isQuote == quote)
        return false;
    m_isQuote = quote;
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
auto parentIn(Node* start, const NodeID& id)
{
    decltype(start->shared_from_this()) hit;
    walkPreOrder(start, [&](Node* node) {
        for (const auto& child : node->children()) {
            if (child->id() == id) {
                hit = node->shared_from_this();
                return true;
            }
        }
        return false;
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

SermonNodePtr SermonNode::find(const NodeID& id)
{
    return findIn(this, id);
}

ConstSermonNodePtr SermonNode::find(const NodeID& id) const
{
    return findIn(this, id);
}

SermonNodePtr SermonNode::parent(const NodeID& id)
{
    return parentIn(this, id);
}

ConstSermonNodePtr SermonNode::parent(const NodeID& id) const
{
    return parentIn(this, id);
}

std::vector<SermonNodePtr> SermonNode::flattened()
{
    return flatten(this);
}

std::vector<ConstSermonNodePtr> SermonNode::flattened() const
{
    return flatten(this);
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
    // Post-order, so that every child is frozen before its parent compares against it.
    std::vector<std::pair<const SermonNode*, bool>> stack{{this, false}};
    while (!stack.empty()) {
        auto& [node, childrenDone] = stack.back();
        if (!childrenDone) {
            childrenDone = true;
            const SermonNode* parent = node;
            for (auto it = parent->m_children.rbegin(); it != parent->m_children.rend(); ++it)
                stack.emplace_back(it->get(), false);
            continue;
        }
        const SermonNode& n = *node;
        stack.pop_back();
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
        n.m_frozen =
            std::make_shared<const FrozenNode>(n.m_id, n.m_text, n.m_depth, n.m_isCollapsed, n.m_isQuote, children);
    }
    return m_frozen;
}

SermonNodePtr SermonNode::thaw(const FrozenNodePtr& frozen)
{
    auto thawOne = [](const FrozenNodePtr& from) {
        auto to = std::make_shared<SermonNode>(from->m_id, from->m_text, from->m_depth);
        to->m_isCollapsed = from->m_isCollapsed;
        to->m_isQuote = from->m_isQuote;
        to->m_children.reserve(from->m_children.size());
        to->m_frozen = from;
        return to;
    };
    SermonNodePtr top = thawOne(frozen);
    std::vector<std::pair<const FrozenNode*, SermonNode*>> stack{{frozen.get(), top.get()}};
    while (!stack.empty()) {
        auto [from, to] = stack.back();
        stack.pop_back();
        for (const auto& child : from->m_children) {
            to->m_children.push_back(thawOne(child));
            stack.emplace_back(child.get(), to->m_children.back().get());
        }
    }
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
    SermonNodePtr owner = parent(id);
    if (!owner)
        return false;
    auto& kids = owner->m_children;
    kids.erase(std::remove_if(kids.begin(), kids.end(), [&](const SermonNodePtr& c) { return c->m_id == id; }),
               kids.end());
    return true;
}

SermonNodePtr SermonNode::insertSibling(const NodeID& sibling, const QString& text, int offset)
{
    SermonNodePtr owner = parent(sibling);
    if (!owner)
        return {};
    auto node = make(text, owner->m_depth + 1);
    owner->insertChild(owner->indexOfChild(sibling) + offset, node);
    return node;
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
    Q_ASSERT(node && node.get() != this);
    index = std::clamp(index, 0, int(m_children.size()));
    m_children.insert(m_children.begin() + index, std::move(node));
}

SermonNodePtr SermonNode::removeChild(int index)
{
    if (index < 0 || index >= int(m_children.size()))
        return {};
    SermonNodePtr child = std::move(m_children[size_t(index)]);
    m_children.erase(m_children.begin() + index);
    return child;
}

void SermonNode::moveChild(int from, int to)
{
    if (SermonNodePtr child = removeChild(from))
        insertChildKeepingDepths(to, std::move(child));
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
