#pragma once

#include "core/SermonNode.h"

#include <QStringList>

// A compact picture of a tree for assertions: one "depth flags text" entry per node in
// pre-order, joined by " | ". Flags: q = quote, c = collapsed. Line breaks show as "/".
inline QString outline(const SermonNode& root)
{
    QStringList parts;
    for (const auto& node : root.flattened()) {
        QString flags;
        if (node->isQuote())
            flags += QLatin1Char('q');
        if (node->isCollapsed())
            flags += QLatin1Char('c');
        QString text = node->text();
        text.replace(QLatin1Char('\n'), QLatin1Char('/'));
        parts.append(QStringLiteral("%1%2 %3").arg(node->depth()).arg(flags, text));
    }
    return parts.join(QStringLiteral(" | "));
}

// Pretty-printing for GoogleTest messages.
inline void PrintTo(const QString& s, std::ostream* os)
{
    *os << '"' << s.toStdString() << '"';
}
