#pragma once

#include "core/SermonNode.h"

#include <QString>
#include <QStringList>

#include <vector>

// The plain text that lines become on the pasteboard, and the lines that pasted text becomes.
// A copied branch is Markdown of the file format, so it reads back whole.
namespace ClipboardText {

// The lines' own texts, one per line; children are not included.
QString plainText(const std::vector<SermonNodePtr>& nodes);

// Each branch as Markdown with its top as a level-1 heading, each quote as "> " lines, each
// other line as it stands.
QString branchText(const std::vector<SermonNodePtr>& nodes);

// The nodes that pasted text makes, ready to hang below a node of `baseDepth`. Headings give
// branches, lists and quotes give list items, anything else gives one line per sentence.
std::vector<SermonNodePtr> parsePasted(const QString& text, int baseDepth);

// Plain text as lines: several lines stay as they are, one line is cut at sentence ends.
QStringList splitPlainText(const QString& text);

} // namespace ClipboardText
