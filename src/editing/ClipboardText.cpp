#include "ClipboardText.h"

#include "core/MarkdownCodec.h"

namespace ClipboardText {

namespace {
const QString kNewline = QStringLiteral("\n");
const QString kUntitled = QStringLiteral("Untitled");

QString quoted(const QString& text)
{
    QStringList lines = text.split(kNewline);
    for (QString& line : lines)
        line.prepend(QLatin1String("> "));
    return lines.join(kNewline);
}

// Cuts one line after '.', '!' or '?' followed by whitespace. No capitalisation test: "e.g. x"
// is cut too, which is what the preacher expects from plain pasted prose more often than not.
QStringList cutAtSentenceEnds(const QString& line)
{
    QStringList pieces;
    qsizetype start = 0;
    for (qsizetype i = 0; i + 1 < line.size(); ++i) {
        const QChar c = line[i];
        if ((c == QLatin1Char('.') || c == QLatin1Char('!') || c == QLatin1Char('?')) && line[i + 1].isSpace()) {
            const QString piece = line.mid(start, i + 1 - start).trimmed();
            if (!piece.isEmpty())
                pieces.append(piece);
            start = i + 1;
        }
    }
    const QString rest = line.mid(start).trimmed();
    if (!rest.isEmpty())
        pieces.append(rest);
    if (pieces.isEmpty())
        pieces.append(line);
    return pieces;
}
} // namespace

QString plainText(const std::vector<SermonNodePtr>& nodes)
{
    QStringList texts;
    for (const auto& node : nodes)
        texts.append(node->text());
    return texts.join(kNewline);
}

QString branchText(const std::vector<SermonNodePtr>& nodes)
{
    QStringList pieces;
    for (const auto& node : nodes) {
        if (node->hasChildren()) {
            QStringList lines;
            MarkdownCodec::branchLines(*node, 0, lines, true);
            pieces.append(lines.join(kNewline));
        } else if (node->isQuote()) {
            pieces.append(quoted(node->text()));
        } else {
            pieces.append(node->text());
        }
    }
    return pieces.join(kNewline);
}

std::vector<SermonNodePtr> parsePasted(const QString& text, int baseDepth)
{
    // Text from other systems may end its lines with CR LF; the CR would stay in the lines.
    QString normalized = text;
    normalized.replace(QLatin1String("\r\n"), kNewline);
    const QStringList lines = normalized.split(kNewline);

    bool hasHeading = false;
    bool hasList = false;
    for (const QString& line : lines) {
        const QString t = MarkdownCodec::trimmed(line);
        if (MarkdownCodec::parseHeading(t)) {
            hasHeading = true;
            break;
        }
        if (!hasList && (MarkdownCodec::parseListItem(line) || t.startsWith(QLatin1Char('>'))))
            hasList = true;
    }

    std::vector<SermonNodePtr> nodes;
    if (hasHeading || hasList) {
        SermonNodePtr root = MarkdownCodec::parseBody(lines);
        const bool untitled = root->text() == kUntitled;
        if (hasHeading && !(untitled && root->hasChildren())) {
            // One titled branch: the root itself arrives, its levels closed up below it.
            root->setDepth(baseDepth + 1);
            root->setChildrenDepth(baseDepth + 2);
            nodes.push_back(root);
            return nodes;
        }
        if (untitled)
            nodes = root->children();
        else
            nodes.push_back(root);
        for (const auto& node : nodes)
            node->setDepthRecursive(baseDepth + 1);
        return nodes;
    }

    for (const QString& piece : splitPlainText(normalized))
        nodes.push_back(SermonNode::make(piece, baseDepth + 1));
    return nodes;
}

QStringList splitPlainText(const QString& text)
{
    QStringList lines;
    for (const QString& line : text.split(kNewline)) {
        const QString t = line.trimmed();
        if (!t.isEmpty())
            lines.append(t);
    }
    if (lines.size() > 1)
        return lines;
    const QString single = lines.isEmpty() ? text.trimmed() : lines.first();
    if (single.isEmpty())
        return {};
    return cutAtSentenceEnds(single);
}

} // namespace ClipboardText
