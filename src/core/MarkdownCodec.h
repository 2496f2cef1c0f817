#pragma once

#include "SermonMetadata.h"
#include "SermonNode.h"

#include <QLoggingCategory>
#include <QStringList>

#include <optional>

Q_DECLARE_LOGGING_CATEGORY(lcMarkdownCodec)

// Reader and writer of the sermon file: an optional YAML block, then a Markdown body of
// headings, list items, block quotes and plain lines. Pure functions apart from two log lines.
namespace MarkdownCodec {

inline const QString collapseMarker = QStringLiteral("[//]: # (collapsed)");
// The deepest level a heading can give a line ('######'); deeper branches are written as lists.
inline constexpr int deepestHeadingDepth = 5;

struct SplitResult {
    SermonMetadata metadata;
    QStringList body;
};

QString serialize(const SermonMetadata& metadata, const SermonNode& root);
SplitResult splitFrontMatter(const QString& text);
SermonNodePtr parseBody(const QStringList& lines);

// Writes one branch with its top as a heading of level `depth` + 1 (the clipboard's form).
void branchLines(const SermonNode& node, int depth, QStringList& lines, bool isFirst);

// Helpers shared with the rest of the core: the format's notion of blanks.
bool isBlank(QChar c); // Unicode space separators and tab, never line breaks
QString trimmed(const QString& s);
int indentation(const QString& line); // space 1 column, tab 4

// The shapes of a body line, shared with the reading of pasted text.
struct Heading {
    int depth; // 0 for '#'
    QString text;
};
std::optional<Heading> parseHeading(const QString& trimmedLine);

struct ListItem {
    int columns;
    QString text;
};
std::optional<ListItem> parseListItem(const QString& line);

} // namespace MarkdownCodec
