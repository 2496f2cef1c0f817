#include "SermonJson.h"

#include "FrontMatter.h"

namespace SermonJson {

namespace {

void appendString(QByteArray& out, const QString& text)
{
    out += '"';
    for (char c : text.toUtf8()) {
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (uchar(c) < 0x20)
                out += "\\u00" + QByteArray::number(uchar(c), 16).rightJustified(2, '0');
            else
                out += c;
        }
    }
    out += '"';
}

const char* boolean(bool value)
{
    return value ? "true" : "false";
}

void appendNodeHead(QByteArray& out, const SermonNode& node)
{
    out += "{\"text\":";
    appendString(out, node.text());
    out += ",\"depth\":" + QByteArray::number(node.depth());
    out += ",\"isCollapsed\":";
    out += boolean(node.isCollapsed());
    out += ",\"isQuote\":";
    out += boolean(node.isQuote());
    out += ",\"children\":[";
}

} // namespace

QByteArray toJson(const SermonMetadata& metadata, const SermonNode& root)
{
    QByteArray out = "{\"metadata\":{\"occasions\":[";
    for (qsizetype i = 0; i < metadata.occasions.size(); ++i) {
        if (i > 0)
            out += ',';
        out += "{\"place\":";
        appendString(out, metadata.occasions[i].place);
        out += ",\"date\":";
        appendString(out, YAMLDate::format(metadata.occasions[i].date));
        out += '}';
    }
    out += "],\"scripture\":";
    appendString(out, metadata.scripture);
    out += ",\"series\":";
    appendString(out, metadata.series);
    out += ",\"duration\":";
    out += metadata.duration ? QByteArray::number(*metadata.duration) : QByteArray("null");
    out += "},\"root\":";

    // Iterative: a list can nest thousands of levels deep.
    std::vector<std::pair<const SermonNode*, size_t>> stack{{&root, 0}};
    appendNodeHead(out, root);
    while (!stack.empty()) {
        auto& [node, next] = stack.back();
        if (next >= node->children().size()) {
            out += "]}";
            stack.pop_back();
            continue;
        }
        if (next > 0)
            out += ',';
        const SermonNode* child = node->children()[next++].get();
        appendNodeHead(out, *child);
        stack.emplace_back(child, 0);
    }
    out += '}';
    return out;
}

} // namespace SermonJson
