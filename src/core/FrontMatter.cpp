#include "FrontMatter.h"

#include <QRegularExpression>

#include <yaml.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace YAMLDate {

QString format(const QDate& date)
{
    return date.toString(QStringLiteral("yyyy-MM-dd"));
}

std::optional<QDate> parse(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral("^([0-9]{4})-([0-9]{1,2})-([0-9]{1,2})$"));
    const auto match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const QDate date(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt());
    if (!date.isValid())
        return std::nullopt;
    return date;
}

} // namespace YAMLDate

bool hasImplicitNonStringType(const QString& text)
{
    // The resolver's implicit typing table, in the order it is tried.
    static const QRegularExpression rules[] = {
        QRegularExpression(
            QStringLiteral("^(?:yes|Yes|YES|no|No|NO|true|True|TRUE|false|False|FALSE|on|On|ON|off|Off|OFF)$")),
        QRegularExpression(
            QStringLiteral("^(?:[-+]?0b[0-1_]+|[-+]?0o?[0-7_]+|[-+]?(?:0|[1-9][0-9_]*)|[-+]?0x[0-9a-fA-F_]+"
                           "|[-+]?[1-9][0-9_]*(?::[0-5]?[0-9])+)$")),
        QRegularExpression(QStringLiteral(
            "^(?:[-+]?(?:[0-9][0-9_]*)(?:\\.[0-9_]*)?(?:[eE][-+]?[0-9]+)?|\\.[0-9_]+(?:[eE][-+][0-9]+)?"
            "|[-+]?[0-9][0-9_]*(?::[0-5]?[0-9])+\\.[0-9_]*|[-+]?\\.(?:inf|Inf|INF)|\\.(?:nan|NaN|NAN))$")),
        QRegularExpression(QStringLiteral("^(?:~|null|Null|NULL|)$")),
        QRegularExpression(
            QStringLiteral("^(?:[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]|[0-9][0-9][0-9][0-9]-[0-9][0-9]?-[0-9][0-9]?"
                           "(?:[Tt]|[ \\t]+)[0-9][0-9]?:[0-9][0-9]:[0-9][0-9](?:\\.[0-9]*)?"
                           "(?:[ \\t]*(?:Z|[-+][0-9][0-9]?(?::[0-9][0-9])?))?)$")),
    };
    if (text == QLatin1String("<<") || text == QLatin1String("="))
        return true;
    for (const auto& rule : rules)
        if (rule.match(text).hasMatch())
            return true;
    return false;
}

// ---------------------------------------------------------------------------------------------
// Writing

namespace {

struct Emitter {
    yaml_emitter_t emitter{};
    QByteArray output;
    bool ok = true;

    Emitter()
    {
        yaml_emitter_initialize(&emitter);
        yaml_emitter_set_output(&emitter, &Emitter::write, this);
        yaml_emitter_set_indent(&emitter, 2);
        yaml_emitter_set_width(&emitter, -1);
        yaml_emitter_set_unicode(&emitter, 0);
        yaml_emitter_set_canonical(&emitter, 0);
    }
    ~Emitter() { yaml_emitter_delete(&emitter); }
    Emitter(const Emitter&) = delete;
    Emitter& operator=(const Emitter&) = delete;

    static int write(void* data, unsigned char* buffer, size_t size)
    {
        static_cast<Emitter*>(data)->output.append(reinterpret_cast<const char*>(buffer), qsizetype(size));
        return 1;
    }

    void send(yaml_event_t& event)
    {
        if (!ok)
            yaml_event_delete(&event);
        else if (!yaml_emitter_emit(&emitter, &event))
            ok = false;
    }

    void scalar(const QByteArray& utf8, yaml_scalar_style_t style)
    {
        yaml_event_t event;
        if (!yaml_scalar_event_initialize(&event, nullptr, nullptr,
                                          reinterpret_cast<const yaml_char_t*>(utf8.constData()), int(utf8.size()), 1,
                                          1, style)) {
            ok = false;
            return;
        }
        send(event);
    }

    // Strings whose plain form would read as another type are single-quoted.
    void string(const QString& text)
    {
        scalar(text.toUtf8(), hasImplicitNonStringType(text) ? YAML_SINGLE_QUOTED_SCALAR_STYLE : YAML_ANY_SCALAR_STYLE);
    }

    void key(const char* name) { scalar(QByteArray(name), YAML_PLAIN_SCALAR_STYLE); }

    void mappingStart()
    {
        yaml_event_t event;
        yaml_mapping_start_event_initialize(&event, nullptr, nullptr, 1, YAML_BLOCK_MAPPING_STYLE);
        send(event);
    }
    void mappingEnd()
    {
        yaml_event_t event;
        yaml_mapping_end_event_initialize(&event);
        send(event);
    }
    void sequenceStart()
    {
        yaml_event_t event;
        yaml_sequence_start_event_initialize(&event, nullptr, nullptr, 1, YAML_BLOCK_SEQUENCE_STYLE);
        send(event);
    }
    void sequenceEnd()
    {
        yaml_event_t event;
        yaml_sequence_end_event_initialize(&event);
        send(event);
    }
};

} // namespace

std::optional<QString> encodeFrontMatter(const SermonMetadata& metadata)
{
    if (metadata.occasions.isEmpty() && metadata.scripture.isEmpty() && metadata.series.isEmpty() && !metadata.duration)
        return std::nullopt;

    Emitter e;
    yaml_event_t event;
    yaml_stream_start_event_initialize(&event, YAML_UTF8_ENCODING);
    e.send(event);
    yaml_document_start_event_initialize(&event, nullptr, nullptr, nullptr, 1);
    e.send(event);
    e.mappingStart();

    if (!metadata.occasions.isEmpty()) {
        // Latest first in the file; the stored order stays as it is.
        QList<SermonOccasion> sorted = metadata.occasions;
        std::stable_sort(sorted.begin(), sorted.end(),
                         [](const SermonOccasion& a, const SermonOccasion& b) { return a.date > b.date; });
        e.key("occasions");
        e.sequenceStart();
        for (const auto& occasion : sorted) {
            e.mappingStart();
            e.key("place");
            e.string(occasion.place);
            e.key("date");
            e.string(YAMLDate::format(occasion.date));
            e.mappingEnd();
        }
        e.sequenceEnd();
    }
    if (!metadata.scripture.isEmpty()) {
        e.key("scripture");
        e.string(metadata.scripture);
    }
    if (!metadata.series.isEmpty()) {
        e.key("series");
        e.string(metadata.series);
    }
    if (metadata.duration) {
        e.key("duration");
        e.scalar(QByteArray::number(*metadata.duration), YAML_PLAIN_SCALAR_STYLE);
    }

    e.mappingEnd();
    yaml_document_end_event_initialize(&event, 1);
    e.send(event);
    yaml_stream_end_event_initialize(&event);
    e.send(event);
    if (!e.ok || !yaml_emitter_flush(&e.emitter))
        return std::nullopt;
    return QString::fromUtf8(e.output);
}

// ---------------------------------------------------------------------------------------------
// Reading

namespace {

struct Document {
    yaml_document_t doc{};
    bool loaded = false;
    ~Document()
    {
        if (loaded)
            yaml_document_delete(&doc);
    }
};

struct Parser {
    yaml_parser_t parser{};
    Parser() { yaml_parser_initialize(&parser); }
    ~Parser() { yaml_parser_delete(&parser); }
};

QString scalarText(const yaml_node_t* node)
{
    return QString::fromUtf8(reinterpret_cast<const char*>(node->data.scalar.value),
                             qsizetype(node->data.scalar.length));
}

// The UTF-8 of a scalar, which libyaml has checked; it lives as long as the document.
std::string_view scalarBytes(const yaml_node_t* node)
{
    return {reinterpret_cast<const char*>(node->data.scalar.value), node->data.scalar.length};
}

bool isMergeKey(const yaml_node_t* key)
{
    return key && key->type == YAML_SCALAR_NODE && key->data.scalar.style == YAML_PLAIN_SCALAR_STYLE
        && scalarBytes(key) == "<<";
}

// Resolving merges revisits shared nodes: ten anchors that each merge the one before fifty
// times make 50^9 visits from a 2 KB block. All the mappings read from one block share this
// allowance of visits; a block that spends it is broken.
class WorkBudget {
public:
    bool spend()
    {
        if (m_left == 0)
            m_isExhausted = true;
        else
            --m_left;
        return !m_isExhausted;
    }
    bool isExhausted() const { return m_isExhausted; }

private:
    int m_left = 100'000;
    bool m_isExhausted = false;
};

// The pairs of a mapping by key text, with `<<` merges resolved: explicit keys win, then the
// merged mappings in order. Merges nest only so deep, which keeps alias loops finite.
class Mapping {
public:
    Mapping(yaml_document_t* doc, const yaml_node_t* node, WorkBudget& budget)
        : m_doc(doc)
        , m_budget(budget)
    {
        collect(node, 0);
    }

    const yaml_node_t* value(const char* key) const
    {
        const auto found = m_index.find(key);
        return found == m_index.end() ? nullptr : found->second;
    }

private:
    void collect(const yaml_node_t* node, int level)
    {
        if (!node || node->type != YAML_MAPPING_NODE || level > 8 || !m_budget.spend())
            return;
        std::vector<const yaml_node_t*> merges;
        for (auto* pair = node->data.mapping.pairs.start; pair < node->data.mapping.pairs.top; ++pair) {
            if (!m_budget.spend())
                return;
            const yaml_node_t* key = yaml_document_get_node(m_doc, pair->key);
            const yaml_node_t* value = yaml_document_get_node(m_doc, pair->value);
            if (isMergeKey(key))
                merges.push_back(value);
            else if (key && key->type == YAML_SCALAR_NODE)
                m_index.try_emplace(scalarBytes(key), value); // the first one wins
        }
        for (const yaml_node_t* merged : merges) {
            if (merged && merged->type == YAML_SEQUENCE_NODE) {
                for (auto* item = merged->data.sequence.items.start; item < merged->data.sequence.items.top; ++item)
                    collect(yaml_document_get_node(m_doc, *item), level + 1);
            } else {
                collect(merged, level + 1);
            }
        }
    }

    yaml_document_t* m_doc;
    WorkBudget& m_budget;
    std::unordered_map<std::string_view, const yaml_node_t*> m_index;
};

QString stringField(const yaml_node_t* node)
{
    return node && node->type == YAML_SCALAR_NODE ? scalarText(node) : QString();
}

std::optional<int> integerField(const yaml_node_t* node)
{
    if (!node || node->type != YAML_SCALAR_NODE)
        return std::nullopt;
    static const QRegularExpression pattern(QStringLiteral("^[-+]?[0-9]+$"));
    const QString text = scalarText(node);
    if (!pattern.match(text).hasMatch())
        return std::nullopt;
    bool ok = false;
    const int value = text.toInt(&ok);
    return ok ? std::optional<int>(value) : std::nullopt;
}

std::optional<SermonOccasion> occasionField(yaml_document_t* doc, const yaml_node_t* node, WorkBudget& budget)
{
    if (!node || node->type != YAML_MAPPING_NODE)
        return std::nullopt;
    const Mapping fields(doc, node, budget);
    const yaml_node_t* date = fields.value("date");
    if (!date || date->type != YAML_SCALAR_NODE)
        return std::nullopt;
    auto day = YAMLDate::parse(scalarText(date));
    if (!day)
        return std::nullopt;
    SermonOccasion occasion;
    occasion.place = stringField(fields.value("place"));
    occasion.date = *day;
    return occasion;
}

// A mapping anywhere in the block that repeats a key makes the block unreadable.
bool hasDuplicatedKey(yaml_document_t* doc)
{
    for (yaml_node_t* node = doc->nodes.start; node < doc->nodes.top; ++node) {
        if (node->type != YAML_MAPPING_NODE)
            continue;
        std::unordered_set<std::string_view> seen;
        for (auto* pair = node->data.mapping.pairs.start; pair < node->data.mapping.pairs.top; ++pair) {
            const yaml_node_t* key = yaml_document_get_node(doc, pair->key);
            if (key && key->type == YAML_SCALAR_NODE && !seen.insert(scalarBytes(key)).second)
                return true;
        }
    }
    return false;
}

constexpr int maxFlowNesting = 256;
constexpr qsizetype maxFrontMatterLength = 256 * 1024;

// How deep brackets nest, not counting those inside quoted scalars or comments: a scripture
// written "Luke 1 [RSV" is text, not a collection. A quote counts only where a quoted scalar
// can begin, so that an apostrophe in plain text can't hide the brackets after it.
int flowNesting(const QString& yaml)
{
    int depth = 0;
    int deepest = 0;
    QChar quote;
    bool inComment = false;
    QChar previous = QLatin1Char('\n');
    QChar lastOnLine; // the last character on this line that isn't a space
    auto startsScalar = [&] {
        if (previous == QLatin1Char('[') || previous == QLatin1Char('{') || previous == QLatin1Char(','))
            return true;
        return previous.isSpace() && (lastOnLine.isNull() || QStringView(u":-?,[{").contains(lastOnLine));
    };
    for (qsizetype i = 0; i < yaml.size(); ++i) {
        const QChar c = yaml[i];
        if (inComment) {
            inComment = c != QLatin1Char('\n');
        } else if (!quote.isNull()) {
            if (quote == QLatin1Char('"') && c == QLatin1Char('\\'))
                ++i; // an escaped character, perhaps a quote
            else if (c == quote)
                quote = QChar();
        } else if ((c == QLatin1Char('"') || c == QLatin1Char('\'')) && startsScalar()) {
            quote = c;
        } else if (c == QLatin1Char('#') && previous.isSpace()) {
            inComment = true;
        } else if (c == QLatin1Char('[') || c == QLatin1Char('{')) {
            deepest = std::max(deepest, ++depth);
        } else if ((c == QLatin1Char(']') || c == QLatin1Char('}')) && depth > 0) {
            --depth;
        }
        if (c == QLatin1Char('\n'))
            lastOnLine = QChar();
        else if (!c.isSpace())
            lastOnLine = c;
        previous = c;
    }
    return deepest;
}

// libyaml looks each anchor and each alias up among all the anchors before it, so a block of
// thousands of them takes minutes to load. No real block has any: past this many lookups the
// block is refused unread.
constexpr qint64 maxAnchorLookups = 1'000'000;

bool hasTooManyAnchors(const QByteArray& utf8)
{
    if (!utf8.contains('&'))
        return false;
    Parser parser;
    yaml_parser_set_input_string(&parser.parser, reinterpret_cast<const unsigned char*>(utf8.constData()),
                                 size_t(utf8.size()));
    qint64 anchors = 0;
    qint64 lookups = 0;
    while (lookups <= maxAnchorLookups) {
        yaml_event_t event;
        if (!yaml_parser_parse(&parser.parser, &event))
            return false; // the loader reports what is wrong
        const yaml_char_t* anchor = nullptr;
        if (event.type == YAML_SCALAR_EVENT)
            anchor = event.data.scalar.anchor;
        else if (event.type == YAML_SEQUENCE_START_EVENT)
            anchor = event.data.sequence_start.anchor;
        else if (event.type == YAML_MAPPING_START_EVENT)
            anchor = event.data.mapping_start.anchor;
        if (anchor || event.type == YAML_ALIAS_EVENT)
            lookups += anchors;
        if (anchor)
            ++anchors;
        const bool done = event.type == YAML_STREAM_END_EVENT;
        yaml_event_delete(&event);
        if (done)
            return false;
    }
    return true;
}

QString parserProblem(const yaml_parser_t& parser)
{
    QString problem = QString::fromUtf8(parser.problem ? parser.problem : "invalid YAML");
    if (parser.context)
        problem = QString::fromUtf8(parser.context) + QLatin1Char(' ') + problem;
    return QStringLiteral("%1 at line %2, column %3")
        .arg(problem)
        .arg(parser.problem_mark.line + 1)
        .arg(parser.problem_mark.column + 1);
}

} // namespace

FrontMatterResult decodeFrontMatter(const QString& yaml)
{
    // A real block is a few lines; one past this size is no sermon's, and would take seconds.
    if (yaml.size() > maxFrontMatterLength)
        return {std::nullopt, QStringLiteral("The front matter is too long to be read")};
    // The parser slows down with the square of the bracket nesting; no real block nests at all.
    if (flowNesting(yaml) > maxFlowNesting)
        return {std::nullopt, QStringLiteral("The front matter nests brackets too deeply")};
    const QByteArray utf8 = yaml.toUtf8();
    if (hasTooManyAnchors(utf8))
        return {std::nullopt, QStringLiteral("The front matter holds too many anchors and aliases to be read")};
    Parser parser;
    yaml_parser_set_input_string(&parser.parser, reinterpret_cast<const unsigned char*>(utf8.constData()),
                                 size_t(utf8.size()));
    Document document;
    if (!yaml_parser_load(&parser.parser, &document.doc))
        return {std::nullopt, parserProblem(parser.parser)};
    document.loaded = true;

    const yaml_node_t* top = yaml_document_get_root_node(&document.doc);
    if (!top || top->type != YAML_MAPPING_NODE)
        return {std::nullopt, QStringLiteral("The front matter is not a mapping")};
    if (hasDuplicatedKey(&document.doc))
        return {std::nullopt, QStringLiteral("The front matter repeats a key")};

    Document next;
    if (!yaml_parser_load(&parser.parser, &next.doc))
        return {std::nullopt, parserProblem(parser.parser)};
    next.loaded = true;
    if (yaml_document_get_root_node(&next.doc))
        return {std::nullopt, QStringLiteral("The front matter holds more than one document")};

    WorkBudget budget;
    const Mapping fields(&document.doc, top, budget);
    SermonMetadata metadata;
    if (const yaml_node_t* list = fields.value("occasions"); list && list->type == YAML_SEQUENCE_NODE) {
        for (auto* item = list->data.sequence.items.start; item < list->data.sequence.items.top; ++item)
            if (auto occasion = occasionField(&document.doc, yaml_document_get_node(&document.doc, *item), budget))
                metadata.occasions.append(*occasion);
    }
    if (budget.isExhausted())
        return {std::nullopt,
                QStringLiteral("The front matter holds too much, or merges and repeats itself too much, to be read")};
    metadata.scripture = stringField(fields.value("scripture"));
    metadata.series = stringField(fields.value("series"));
    metadata.duration = integerField(fields.value("duration"));
    return {metadata, {}};
}
