#pragma once

#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "editing/DocumentController.h"
#include "editing/MemoryPasteboard.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <vector>

inline void PrintTo(const QString& s, std::ostream* os)
{
    *os << '"' << s.toStdString() << '"';
}

// Builds a tree from an indented outline: two spaces per level, "> " marks a quote and "+ " a
// folded line. The first line is the title.
inline SermonNodePtr buildTree(const QString& outline)
{
    std::vector<SermonNodePtr> path;
    for (const QString& raw : outline.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        int spaces = 0;
        while (spaces < raw.size() && raw[spaces] == QLatin1Char(' '))
            ++spaces;
        QString text = raw.mid(spaces);
        bool quote = false;
        bool folded = false;
        if (text.startsWith(QLatin1String("> "))) {
            quote = true;
            text.remove(0, 2);
        }
        if (text.startsWith(QLatin1String("+ "))) {
            folded = true;
            text.remove(0, 2);
        }
        const int depth = spaces / 2;
        auto node = SermonNode::make(text, depth);
        node->setQuote(quote);
        node->setCollapsed(folded);
        path.resize(depth);
        if (depth > 0)
            path.back()->appendChild(node);
        path.push_back(node);
    }
    return path.front();
}

// The tree as one line: children in parentheses, ">" before a quote, "+" after a folded line,
// soft line breaks as "/". Depths are checked by the controller after each of its edits.
inline QString shape(const SermonNode& node)
{
    QString text = node.text();
    text.replace(QChar(0x2028), QLatin1Char('/'));
    QString out = (node.isQuote() ? QStringLiteral(">") : QString()) + text
        + (node.isCollapsed() ? QStringLiteral("+") : QString());
    if (!node.hasChildren())
        return out;
    QStringList kids;
    for (const auto& child : node.children())
        kids.append(shape(*child));
    return out + QLatin1Char('(') + kids.join(QStringLiteral(", ")) + QLatin1Char(')');
}

// A document with its controller, undo manager and pasteboard, and counters for the callbacks.
class Editing : public ::testing::Test {
protected:
    void load(const QString& outline)
    {
        controller.reset();
        lookedUp.clear();
        document = std::make_unique<SermonDocument>(buildTree(outline));
        controller = std::make_unique<DocumentController>(document.get(), &undoManager);
        controller->setPasteboard(&pasteboard);
        controller->onTreeMutated = [this] {
            ++mutations;
            expectLookupsMatchTheTree();
        };
        controller->onSelectionRequestVisible = [this](const NodeID& id) { shown.push_back(id); };
        controller->onRequestCanvasFocus = [this] { ++canvasFocusRequests; };
    }

    SermonNodePtr root() const { return document->root(); }
    QString tree() const { return shape(*document->root()); }
    int steps() const { return int(document->undoStack().size()); }

    SermonNodePtr node(const QString& text) const
    {
        for (const auto& n : document->root()->flattened())
            if (n->text() == text)
                return n;
        ADD_FAILURE() << "no line " << text.toStdString();
        return document->root();
    }
    NodeID id(const QString& text) const { return node(text)->id(); }

    // A fresh plain selection of one line, whatever was selected before.
    void select(const QString& text)
    {
        controller->deselectAll();
        controller->setSelectedNodeID(id(text));
    }
    void select(const QStringList& texts)
    {
        QSet<NodeID> ids;
        for (const QString& t : texts)
            ids.insert(id(t));
        controller->setSelectedNodeID(id(texts.first()));
        controller->setSelectedNodeIDs(ids);
    }
    QString selected() const
    {
        const auto sel = controller->selectedNodeID();
        if (!sel)
            return QStringLiteral("<none>");
        const auto n = document->root()->find(*sel);
        return n ? n->text() : QStringLiteral("<gone>");
    }
    QStringList selectedTexts() const
    {
        QStringList texts;
        for (const auto& n : controller->selectedNodes())
            texts.append(n->text());
        return texts;
    }

    // After every edit, undo and redo: each line is found by id where a walk finds it, under
    // the parent the walk says, and a line that has left the tree is found nowhere.
    void expectLookupsMatchTheTree()
    {
        QSet<NodeID> present;
        std::vector<std::pair<SermonNodePtr, SermonNodePtr>> stack{{root(), nullptr}};
        while (!stack.empty()) {
            auto [node, parent] = stack.back();
            stack.pop_back();
            present.insert(node->id());
            EXPECT_EQ(root()->find(node->id()), node) << node->text().toStdString();
            EXPECT_EQ(root()->parent(node->id()), parent) << node->text().toStdString();
            EXPECT_EQ(node->parentNode(), parent) << node->text().toStdString();
            for (const auto& child : node->children())
                stack.emplace_back(child, node);
        }
        for (const NodeID& id : std::as_const(lookedUp)) {
            EXPECT_TRUE(present.contains(id) || !root()->find(id));
        }
        lookedUp.unite(present);
    }

    UndoManager undoManager;
    MemoryPasteboard pasteboard;
    QSet<NodeID> lookedUp; // every id the lookups were checked for
    std::unique_ptr<SermonDocument> document;
    std::unique_ptr<DocumentController> controller;
    int mutations = 0;
    int canvasFocusRequests = 0;
    std::vector<NodeID> shown;
};
