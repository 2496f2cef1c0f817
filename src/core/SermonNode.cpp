#include "SermonNode.h"

#include <algorithm>
#include <utility>

SermonNode::SermonNode(QString text, int depth)
    : SermonNode(makeNodeID(), std::move(text), depth) {}

SermonNode::SermonNode(const NodeID& id, QString text, int depth)
    : m_id(id), m_text(std::move(text)), m_depth(depth) {}

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
// Pre-order walk, receiver first, children in order. `visit` returns true to stop.
template <typename Visit>
void walkPreOrder(const SermonNode* start, Visit visit)
{
    std::vector<const SermonNode*> stack{start};
    while (!stack.empty()) {
        const SermonNode* node = stack.back();
        stack.pop_back();
        if (visit(node))
            return;
        const auto& kids = node->children();
        for (auto it = kids.rbegin(); it != kids.rend(); ++it)
            stack.push_back(it->get());
    }
}
} // namespace

SermonNodePtr SermonNode::find(const NodeID& id) const
{
    SermonNodePtr hit;
    walkPreOrder(this, [&](const SermonNode* node) {
        if (node->m_id != id)
            return false;
        hit = std::const_pointer_cast<SermonNode>(node->shared_from_this());
        return true;
    });
    return hit;
}

SermonNodePtr SermonNode::parent(const NodeID& id) const
{
    SermonNodePtr hit;
    walkPreOrder(this, [&](const SermonNode* node) {
        for (const auto& child : node->m_children) {
            if (child->m_id == id) {
                hit = std::const_pointer_cast<SermonNode>(node->shared_from_this());
                return true;
            }
        }
        return false;
    });
    return hit;
}

std::vector<SermonNodePtr> SermonNode::flattened() const
{
    std::vector<SermonNodePtr> out;
    walkPreOrder(this, [&](const SermonNode* node) {
        out.push_back(std::const_pointer_cast<SermonNode>(node->shared_from_this()));
        return false;
    });
    return out;
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
    kids.erase(std::remove_if(kids.begin(), kids.end(),
                              [&](const SermonNodePtr& c) { return c->m_id == id; }),
               kids.end());
    return true;
}

SermonNodePtr SermonNode::insertSibling(const NodeID& sibling, const QString& text, int offset)
{
    SermonNodePtr owner = parent(sibling);
    if (!owner)
        return {};
    auto node = make(text, owner->m_depth + 1);
    const int at = owner->indexOfChild(sibling);
    owner->m_children.insert(owner->m_children.begin() + at + offset, node);
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
    m_children.push_back(node);
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
    auto& from = oldParent->m_children;
    from.erase(from.begin() + oldParent->indexOfChild(id));
    const auto position = std::clamp<qsizetype>(index, 0, qsizetype(target->m_children.size()));
    target->m_children.insert(target->m_children.begin() + position, node);
    node->setDepthRecursive(target->m_depth + 1);
    return true;
}

bool SermonNode::hasOnlyLeafChildren() const
{
    if (m_children.empty())
        return false;
    return std::none_of(m_children.begin(), m_children.end(),
                        [](const SermonNodePtr& c) { return c->hasChildren(); });
}

std::unordered_map<NodeID, SermonNodePtr> SermonNode::nodeIndex() const
{
    std::unordered_map<NodeID, SermonNodePtr> index;
    walkPreOrder(this, [&](const SermonNode* node) {
        index.emplace(node->m_id, std::const_pointer_cast<SermonNode>(node->shared_from_this()));
        return false;
    });
    return index;
}

std::unordered_map<NodeID, SermonNodePtr> SermonNode::parentIndex() const
{
    std::unordered_map<NodeID, SermonNodePtr> index;
    walkPreOrder(this, [&](const SermonNode* node) {
        auto self = std::const_pointer_cast<SermonNode>(node->shared_from_this());
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
