#include "Opml.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <vector>

namespace Opml {

namespace {

constexpr QChar softBreak(0x2028);
const QString quotePrefix = QStringLiteral("> ");

// XML 1.0 has no place for most control characters; a line that holds one loses it.
QString xmlSafe(QString text)
{
    text.removeIf([](QChar c) {
        const char16_t u = c.unicode();
        return (u < 0x20 && u != '\t' && u != '\n' && u != '\r') || u == 0xFFFE || u == 0xFFFF;
    });
    return text;
}

QString outlineText(const SermonNode& node)
{
    QString text = node.text();
    text.replace(softBreak, QLatin1Char('\n'));
    if (node.isQuote())
        text = quotePrefix + text.replace(QLatin1Char('\n'), QLatin1Char('\n') + quotePrefix);
    return xmlSafe(text);
}

// Whitespace between elements, as auto-formatting would write it; capped, so that a deep
// outline doesn't grow with the square of its depth.
void breakLine(QXmlStreamWriter& xml, size_t level)
{
    xml.writeCharacters(QLatin1Char('\n') + QString(int(std::min<size_t>(level, 40) * 2), QLatin1Char(' ')));
}

} // namespace

QByteArray write(const SermonNode& root)
{
    QByteArray out;
    QXmlStreamWriter xml(&out);
    xml.writeStartDocument();
    breakLine(xml, 0);
    xml.writeStartElement(QStringLiteral("opml"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("2.0"));
    breakLine(xml, 1);
    xml.writeStartElement(QStringLiteral("head"));
    breakLine(xml, 2);
    xml.writeTextElement(QStringLiteral("title"), xmlSafe(root.text()));
    breakLine(xml, 1);
    xml.writeEndElement();
    breakLine(xml, 1);
    xml.writeStartElement(QStringLiteral("body"));

    // Iterative: a list can nest thousands of levels deep.
    std::vector<std::pair<const SermonNode*, size_t>> stack{{&root, 0}};
    while (!stack.empty()) {
        auto& [node, next] = stack.back();
        if (next >= node->children().size()) {
            const bool hadChildren = node->hasChildren();
            stack.pop_back();
            if (hadChildren)
                breakLine(xml, stack.size() + 1);
            if (!stack.empty())
                xml.writeEndElement();
            continue;
        }
        const SermonNode* child = node->children()[next++].get();
        breakLine(xml, stack.size() + 1);
        xml.writeStartElement(QStringLiteral("outline"));
        xml.writeAttribute(QStringLiteral("text"), outlineText(*child));
        stack.emplace_back(child, 0);
    }
    xml.writeEndElement(); // body
    breakLine(xml, 0);
    xml.writeEndElement(); // opml
    xml.writeEndDocument();
    return out;
}

namespace {

struct Open {
    enum Kind { opml, head, body, outline, other };
    Open(Kind k, SermonNode* n = nullptr, QString t = {})
        : kind(k)
        , node(n)
        , text(std::move(t))
    {
    }
    Kind kind;
    SermonNode* node; // body: the root; outline: its line
    QString text; // outline: its text as written
};

// "> a\n> b" as the quote's lines; anything else stays a line with soft breaks.
void setOutlineText(SermonNode& node, const QString& text)
{
    if (!node.hasChildren() && text.startsWith(QLatin1Char('>'))) {
        QStringList lines = text.split(QLatin1Char('\n'));
        for (QString& line : lines)
            line = line.startsWith(quotePrefix) ? line.mid(2) : line.startsWith(QLatin1Char('>')) ? line.mid(1) : line;
        node.setText(lines.join(QLatin1Char('\n')));
        node.setQuote(true);
        return;
    }
    QString line = text;
    line.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(QLatin1Char('\n'), softBreak);
    node.setText(line);
}

} // namespace

std::optional<SermonContents> read(const QByteArray& bytes, QString* error)
{
    const auto fail = [&](const QString& why) -> std::optional<SermonContents> {
        if (error)
            *error = why;
        return std::nullopt;
    };
    QXmlStreamReader xml(bytes);
    auto root = SermonNode::make(QString(), 0);
    QString title;
    bool sawOpml = false;
    bool sawBody = false;
    std::vector<Open> stack;
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::DTD:
        case QXmlStreamReader::EntityReference:
            return fail(QStringLiteral("It declares a document type or entities, which an outline never needs, "
                                       "so it was not read."));
        case QXmlStreamReader::StartElement: {
            const QStringView name = xml.name();
            if (stack.empty()) {
                if (name != QLatin1String("opml") || sawOpml)
                    return fail(QStringLiteral("It is XML but not an OPML outline: its top element is <%1>, not "
                                               "<opml>.")
                                    .arg(name));
                sawOpml = true;
                stack.emplace_back(Open::opml);
                break;
            }
            const Open& parent = stack.back();
            if (parent.kind == Open::opml && name == QLatin1String("head")) {
                stack.emplace_back(Open::head);
            } else if (parent.kind == Open::opml && name == QLatin1String("body") && !sawBody) {
                sawBody = true;
                stack.emplace_back(Open::body, root.get());
            } else if (parent.kind == Open::head && name == QLatin1String("title")) {
                title = xml.readElementText(QXmlStreamReader::SkipChildElements);
            } else if ((parent.kind == Open::body || parent.kind == Open::outline)
                       && name == QLatin1String("outline")) {
                const QXmlStreamAttributes attributes = xml.attributes();
                auto line = SermonNode::make();
                parent.node->appendChild(line);
                const QString note = attributes.value(QLatin1String("_note")).toString();
                if (!note.isEmpty())
                    setOutlineText(*line->addChild(QString()), note);
                stack.emplace_back(Open::outline, line.get(), attributes.value(QLatin1String("text")).toString());
            } else {
                stack.emplace_back(Open::other);
            }
            break;
        }
        case QXmlStreamReader::EndElement:
            if (!stack.empty()) {
                // Known only now: a line with lines under it is never a quote.
                if (stack.back().kind == Open::outline)
                    setOutlineText(*stack.back().node, stack.back().text);
                stack.pop_back();
            }
            break;
        default:
            break;
        }
    }
    if (xml.hasError()) {
        if (!sawOpml && xml.error() == QXmlStreamReader::PrematureEndOfDocumentError)
            return fail(QStringLiteral("It holds no XML."));
        return fail(QStringLiteral("It isn\u2019t well-formed XML: %1 (line %2, column %3).")
                        .arg(xml.errorString())
                        .arg(xml.lineNumber())
                        .arg(xml.columnNumber()));
    }
    if (!sawOpml)
        return fail(QStringLiteral("It holds no XML."));
    if (!sawBody)
        return fail(QStringLiteral("It is OPML but has no <body> with an outline."));
    title = title.simplified();
    root->setText(title.isEmpty() ? QStringLiteral("Untitled") : title);
    return SermonContents{{}, std::move(root)};
}

} // namespace Opml
