#include "TreeOutline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <thread>
#include <unordered_set>
#include <vector>

namespace {

// root "R" with a [a1, a2], b (leaf), c [c1]
struct Tree {
    SermonNodePtr root = SermonNode::make(QStringLiteral("R"), 0);
    SermonNodePtr a = root->addChild(QStringLiteral("a"));
    SermonNodePtr a1 = a->addChild(QStringLiteral("a1"));
    SermonNodePtr a2 = a->addChild(QStringLiteral("a2"));
    SermonNodePtr b = root->addChild(QStringLiteral("b"));
    SermonNodePtr c = root->addChild(QStringLiteral("c"));
    SermonNodePtr c1 = c->addChild(QStringLiteral("c1"));
};

TEST(SermonNode, LookupsTreatTheRootAsTheirOwnStart)
{
    Tree t;
    EXPECT_EQ(t.root->find(t.root->id()), t.root);
    EXPECT_EQ(t.root->parent(t.root->id()), nullptr);
    EXPECT_EQ(t.root->parent(t.a2->id()), t.a);
    EXPECT_EQ(t.root->parent(t.c->id()), t.root);
    EXPECT_EQ(t.root->find(makeNodeID()), nullptr);
    EXPECT_FALSE(t.root->removeNode(t.root->id()));
    EXPECT_FALSE(t.root->removeNode(makeNodeID()));
    EXPECT_EQ(t.root->parentIndex().count(t.root->id()), 0u);
    EXPECT_EQ(t.root->parentIndex().at(t.c1->id()), t.c);
    EXPECT_EQ(t.root->nodeIndex().size(), 7u);
}

// Checks every lookup of `top`'s tree against a plain walk: the first node in tree order with
// an id is the one found, from the top and from every node above it, and nowhere else.
void expectLookupsMatchAWalk(const SermonNodePtr& top, const std::vector<NodeID>& gone, const char* what)
{
    struct Seen {
        SermonNodePtr node, parent;
        int position;
    };
    std::vector<Seen> walk;
    std::vector<std::pair<SermonNodePtr, SermonNodePtr>> stack{{top, nullptr}};
    while (!stack.empty()) {
        auto [node, parent] = stack.back();
        stack.pop_back();
        const int position = parent
            ? int(std::find(parent->children().begin(), parent->children().end(), node) - parent->children().begin())
            : -1;
        walk.push_back({node, parent, position});
        for (auto it = node->children().rbegin(); it != node->children().rend(); ++it)
            stack.emplace_back(*it, node);
    }
    auto first = [&](const NodeID& id) {
        return std::find_if(walk.begin(), walk.end(), [&](const Seen& s) { return s.node->id() == id; });
    };
    for (const Seen& seen : walk) {
        const auto hit = first(seen.node->id());
        EXPECT_EQ(top->find(seen.node->id()), hit->node) << what;
        EXPECT_EQ(top->parent(seen.node->id()), hit->parent) << what;
        EXPECT_EQ(seen.node->parentNode(), seen.parent) << what;
        EXPECT_EQ(seen.node->indexInParent(), seen.position) << what;
        // From a node above, only its own subtree is searched.
        for (const Seen& receiver : walk) {
            const auto below = receiver.node->flattened();
            const auto inside = std::find_if(below.begin(), below.end(),
                                             [&](const SermonNodePtr& n) { return n->id() == seen.node->id(); });
            EXPECT_EQ(receiver.node->find(seen.node->id()), inside == below.end() ? nullptr : *inside) << what;
        }
    }
    for (const NodeID& id : gone) {
        if (first(id) != walk.end())
            continue;
        EXPECT_EQ(top->find(id), nullptr) << what;
        EXPECT_EQ(top->parent(id), nullptr) << what;
    }
}

TEST(SermonNode, LookupsAgreeWithAWalkAfterEveryStructuralEdit)
{
    struct Row {
        const char* edit;
        // Returns a branch it took out of the tree, if any.
        std::function<SermonNodePtr(Tree&)> apply;
    };
    const std::vector<Row> rows{
        {"a child inserted",
         [](Tree& t) { return t.a->insertChild(1, SermonNode::make(QStringLiteral("n"))), nullptr; }},
        {"a branch attached keeping levels",
         [](Tree& t) {
             auto branch = SermonNode::make(QStringLiteral("n"), 5);
             branch->addChild(QStringLiteral("n1"));
             branch->find(makeNodeID()); // the branch indexed itself while on its own
             t.c1->insertChildKeepingDepths(0, branch);
             return nullptr;
         }},
        {"a child removed", [](Tree& t) { return t.root->removeChild(0); }},
        {"a leaf removed by id", [](Tree& t) { return t.root->removeNode(t.a2->id()), t.a2; }},
        {"a branch removed by id", [](Tree& t) { return t.root->removeNode(t.c->id()), t.c; }},
        {"children reordered", [](Tree& t) { return t.root->moveChild(0, 2), nullptr; }},
        {"a branch moved under a leaf", [](Tree& t) { return t.root->moveNode(t.c->id(), t.a1->id(), 0), nullptr; }},
        {"a branch moved up",
         [](Tree& t) {
             SermonNodePtr a = t.root->removeChild(0);
             t.c1->insertChild(0, a->removeChild(1));
             t.root->insertChild(3, a);
             return nullptr;
         }},
        {"siblings inserted",
         [](Tree& t) {
             t.root->insertSiblingAfter(t.a1->id(), QStringLiteral("after"));
             t.root->insertSiblingBefore(t.c->id(), QStringLiteral("before"));
             return nullptr;
         }},
        {"a copy with fresh ids",
         [](Tree& t) { return t.root->insertChildKeepingDepths(1, t.a->deepCopy(true)), nullptr; }},
        {"a copy with the same ids after the original",
         [](Tree& t) { return t.root->insertChildKeepingDepths(3, t.a->deepCopy(false)), nullptr; }},
        {"a copy with the same ids before the original, then the original removed",
         [](Tree& t) {
             t.root->insertChildKeepingDepths(0, t.c->deepCopy(false));
             return t.root->removeChild(3);
         }},
        {"the top thawed from its frozen form",
         [](Tree& t) {
             SermonNodePtr old = t.root;
             t.root = SermonNode::thaw(old->freeze());
             return old;
         }},
    };
    for (const Row& row : rows) {
        for (bool indexedFirst : {false, true}) {
            Tree t;
            std::vector<NodeID> before;
            for (const auto& node : t.root->flattened())
                before.push_back(node->id());
            if (indexedFirst)
                t.root->find(t.c1->id());
            const SermonNodePtr out = row.apply(t);
            expectLookupsMatchAWalk(t.root, before, row.edit);
            if (out)
                expectLookupsMatchAWalk(out, {}, row.edit); // a branch taken out is a tree of its own
        }
    }
}

TEST(SermonNode, FlattenedIsPreOrderWithCollapsedSubtrees)
{
    Tree t;
    t.a->setCollapsed(true);
    EXPECT_EQ(outline(*t.root), "0 R | 1c a | 2 a1 | 2 a2 | 1 b | 1 c | 2 c1");
}

TEST(SermonNode, SettersReportOnlyRealChanges)
{
    auto node = SermonNode::make(QStringLiteral("x"), 1);
    EXPECT_FALSE(node->setText(QStringLiteral("x")));
    EXPECT_TRUE(node->setText(QStringLiteral("y")));
    EXPECT_FALSE(node->setDepth(1));
    EXPECT_TRUE(node->setQuote(true));
    EXPECT_FALSE(node->setQuote(true));
    EXPECT_TRUE(node->setCollapsed(true));
    EXPECT_FALSE(node->setCollapsed(true));
}

TEST(SermonNode, AddChildOnAQuoteLeavesTheNodeUnattached)
{
    auto quote = SermonNode::make(QStringLiteral("q"), 1);
    quote->setQuote(true);
    auto child = quote->addChild(QStringLiteral("x"));
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->depth(), 2);
    EXPECT_TRUE(quote->children().empty());
}

TEST(SermonNode, AddChildExpandsButMoveNodeDoesNot)
{
    Tree t;
    t.c->setCollapsed(true);
    t.c->addChild(QStringLiteral("c2"));
    EXPECT_FALSE(t.c->isCollapsed());

    t.a->setCollapsed(true);
    ASSERT_TRUE(t.root->moveNode(t.b->id(), t.a->id(), 0));
    EXPECT_TRUE(t.a->isCollapsed());
    EXPECT_EQ(t.a->children().front(), t.b);
}

TEST(SermonNode, MoveNodeRefusalsLeaveTheTreeUntouched)
{
    Tree t;
    t.b->setQuote(true);
    const QString before = outline(*t.root);
    struct Case {
        const char* what;
        NodeID node;
        NodeID target;
    } cases[] = {
        {"the root itself", t.root->id(), t.a->id()}, {"into its own child", t.a->id(), t.a1->id()},
        {"into itself", t.a->id(), t.a->id()},        {"onto a quote", t.c1->id(), t.b->id()},
        {"an unknown node", makeNodeID(), t.a->id()}, {"to an unknown parent", t.a1->id(), makeNodeID()},
    };
    for (const auto& c : cases) {
        EXPECT_FALSE(t.root->moveNode(c.node, c.target, 0)) << c.what;
        EXPECT_EQ(outline(*t.root), before) << c.what;
    }
}

TEST(SermonNode, MoveNodeClampsItsIndexAndRenumbersTheSubtree)
{
    Tree t;
    ASSERT_TRUE(t.root->moveNode(t.c->id(), t.a2->id(), 99));
    EXPECT_EQ(outline(*t.root), "0 R | 1 a | 2 a1 | 2 a2 | 3 c | 4 c1 | 1 b");
    // Within one parent the index counts the list without the moved node.
    ASSERT_TRUE(t.root->moveNode(t.a1->id(), t.a->id(), 1));
    EXPECT_EQ(outline(*t.root), "0 R | 1 a | 2 a2 | 3 c | 4 c1 | 2 a1 | 1 b");
}

TEST(SermonNode, DeepCopyKeepsOrRenewsIds)
{
    Tree t;
    t.a2->setQuote(true);
    auto same = t.root->deepCopy(false);
    EXPECT_EQ(outline(*same), outline(*t.root));
    EXPECT_NE(same->find(t.a2->id()), nullptr);
    EXPECT_NE(same->find(t.a2->id()), t.a2);

    auto fresh = t.root->deepCopy(true);
    EXPECT_EQ(outline(*fresh), outline(*t.root));
    for (const auto& node : fresh->flattened())
        EXPECT_EQ(t.root->find(node->id()), nullptr);
}

// Ids come from a fast generator per thread rather than the system source; they must still be
// well-formed random UUIDs and never repeat, even when two threads read documents at once.
TEST(SermonNode, IdsAreVersionFourUuidsUniqueAcrossThreads)
{
    std::vector<NodeID> first(50'000), second(50'000);
    auto fill = [](std::vector<NodeID>& ids) {
        for (auto& id : ids)
            id = makeNodeID();
    };
    std::thread other(fill, std::ref(second));
    fill(first);
    other.join();

    std::unordered_set<NodeID> seen;
    for (const auto* ids : {&first, &second}) {
        for (const NodeID& id : *ids) {
            ASSERT_EQ(id.version(), QUuid::Random) << id.toString().toStdString();
            ASSERT_EQ(id.variant(), QUuid::DCE) << id.toString().toStdString();
            seen.insert(id);
        }
    }
    EXPECT_EQ(seen.size(), first.size() + second.size());
}

TEST(SermonNode, HasOnlyLeafChildren)
{
    Tree t;
    EXPECT_FALSE(t.b->hasOnlyLeafChildren());
    EXPECT_TRUE(t.a->hasOnlyLeafChildren());
    EXPECT_FALSE(t.root->hasOnlyLeafChildren());
    t.a1->addChild(QStringLiteral("deeper"));
    EXPECT_FALSE(t.a->hasOnlyLeafChildren());
}

TEST(SermonNode, DepthRenumberingClosesGaps)
{
    auto heading = SermonNode::make(QStringLiteral("h"), 1);
    auto skipped = SermonNode::make(QStringLiteral("deep"), 4);
    skipped->insertChildKeepingDepths(0, SermonNode::make(QStringLiteral("deeper"), 7));
    heading->insertChildKeepingDepths(0, skipped);
    heading->setDepthRecursive(2);
    EXPECT_EQ(outline(*heading), "2 h | 3 deep | 4 deeper");
    heading->setChildrenDepth(1);
    EXPECT_EQ(outline(*heading), "2 h | 1 deep | 2 deeper");
}

TEST(SermonNode, AttachingRenumbersUnlessToldToKeepLevels)
{
    Tree t;
    auto branch = SermonNode::make(QStringLiteral("n"), 7);
    branch->insertChildKeepingDepths(0, SermonNode::make(QStringLiteral("n1"), 9));
    t.a->insertChild(99, branch);
    t.a->insertChild(-5, SermonNode::make(QStringLiteral("first"), 0));
    EXPECT_EQ(outline(*t.a), "1 a | 2 first | 2 a1 | 2 a2 | 2 n | 3 n1");
    t.c->insertChildKeepingDepths(1, SermonNode::make(QStringLiteral("kept"), 4));
    EXPECT_EQ(outline(*t.c), "1 c | 2 c1 | 4 kept");
}

TEST(SermonNode, RemovingAndReorderingChildrenLeavesDepths)
{
    Tree t;
    EXPECT_EQ(t.root->removeChild(3), nullptr);
    EXPECT_EQ(t.root->removeChild(-1), nullptr);
    EXPECT_EQ(t.root->removeChild(0), t.a);
    EXPECT_EQ(outline(*t.a), "1 a | 2 a1 | 2 a2"); // handed back whole
    EXPECT_EQ(outline(*t.root), "0 R | 1 b | 1 c | 2 c1");
    // The target counts the list without the moved child.
    t.root->moveChild(0, 1);
    EXPECT_EQ(outline(*t.root), "0 R | 1 c | 2 c1 | 1 b");
    t.root->moveChild(1, 0);
    EXPECT_EQ(outline(*t.root), "0 R | 1 b | 1 c | 2 c1");
}

TEST(SermonNode, DepthsAreConsistentAllowsOnlyAHeadingsSkippedLevels)
{
    struct Case {
        int heading; // under the root at depth 0
        int child; // under the heading
        bool consistent;
    } cases[] = {
        {1, 2, true},  {3, 4, true}, // a file's heading may skip levels
        {5, 6, true}, // down to the deepest heading level
        {6, 7, false}, // but no heading stands that deep
        {1, 7, false}, {1, 1, false}, // never level with its parent
        {2, 1, false}, // nor above it
    };
    for (const Case& c : cases) {
        auto root = SermonNode::make(QStringLiteral("R"), 0);
        auto heading = SermonNode::make(QStringLiteral("h"), c.heading);
        heading->insertChildKeepingDepths(0, SermonNode::make(QStringLiteral("x"), c.child));
        root->insertChildKeepingDepths(0, heading);
        EXPECT_EQ(root->depthsAreConsistent(), c.consistent) << c.heading << " " << c.child;
    }
}

TEST(SermonNode, SiblingInsertionAndRemoval)
{
    Tree t;
    auto after = t.root->insertSiblingAfter(t.a1->id(), QStringLiteral("after"));
    auto before = t.root->insertSiblingBefore(t.a1->id(), QStringLiteral("before"));
    ASSERT_TRUE(after && before);
    EXPECT_EQ(t.root->insertSiblingAfter(t.root->id(), QStringLiteral("x")), nullptr);
    EXPECT_EQ(outline(*t.a), "1 a | 2 before | 2 a1 | 2 after | 2 a2");
    EXPECT_TRUE(t.root->removeNode(t.a1->id()));
    EXPECT_EQ(outline(*t.a), "1 a | 2 before | 2 after | 2 a2");
    EXPECT_EQ(t.a1->text(), "a1"); // the removed subtree is left as it was
}

} // namespace
