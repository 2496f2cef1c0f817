#include "SermonJson.h"

#include "FrontMatter.h"
#include "SermonDocument.h"

#include <cmath>
#include <cstring>
#include <limits>

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

namespace {

// What a container in the input stands for; everything unknown is read and skipped.
enum class Role { top, metadata, occasions, occasion, node, children, skip };

// What a key's value must be.
struct Want {
    enum Kind { any, object, array, string, integer, boolean } kind = any;
    Role role = Role::skip; // object, array
    bool nullable = false;
};

struct Scalar {
    enum Kind { string, numeric, boolean, null } kind = null;
    QString text;
    double number = 0;
    bool isTrue = false;
};

struct Frame {
    Role role;
    bool isObject;
    int count = 0;
    SermonNodePtr node; // node; children: the node they belong to
    bool hasDepth = false;
    QString place;
    std::optional<QDate> date;
};

Want want(Role parent, const QString& key)
{
    const auto is = [&](const char* name) { return key == QLatin1String(name); };
    switch (parent) {
    case Role::top:
        if (is("root"))
            return {Want::object, Role::node};
        if (is("metadata"))
            return {Want::object, Role::metadata, true};
        break;
    case Role::metadata:
        if (is("occasions"))
            return {Want::array, Role::occasions, true};
        if (is("scripture") || is("series"))
            return {Want::string, Role::skip, true};
        if (is("duration"))
            return {Want::integer, Role::skip, true};
        break;
    case Role::occasion:
        if (is("place") || is("date"))
            return {Want::string};
        break;
    case Role::node:
        if (is("children"))
            return {Want::array, Role::children};
        if (is("text"))
            return {Want::string};
        if (is("depth"))
            return {Want::integer};
        if (is("isCollapsed") || is("isQuote"))
            return {Want::boolean};
        break;
    case Role::occasions:
        return {Want::object, Role::occasion};
    case Role::children:
        return {Want::object, Role::node};
    case Role::skip:
        break;
    }
    return {};
}

QString described(const Want& w)
{
    switch (w.kind) {
    case Want::object:
        return QStringLiteral("an object");
    case Want::array:
        return QStringLiteral("an array");
    case Want::string:
        return QStringLiteral("a string");
    case Want::integer:
        return QStringLiteral("a whole number");
    case Want::boolean:
        return QStringLiteral("true or false");
    case Want::any:
        break;
    }
    return QStringLiteral("a value");
}

// Reads the JSON text in one pass with a stack of open containers: a file may nest children
// thousands of levels deep, and the tree is built as they close.
class Reader {
public:
    explicit Reader(const QByteArray& json)
        : m_begin(json.constData())
        , m_p(m_begin)
        , m_end(m_begin + json.size())
    {
    }

    std::optional<SermonContents> read(QString* error)
    {
        const bool ok = readAll();
        if (!ok) {
            if (error)
                *error = m_error;
            return std::nullopt;
        }
        if (m_root->depth() != 0 || !m_allDepthsGiven || !m_root->depthsAreConsistent())
            m_root->setDepthRecursive(0);
        return SermonContents{std::move(m_metadata), std::move(m_root)};
    }

private:
    bool readAll()
    {
        skipSpace();
        if (m_p == m_end)
            return fail(QStringLiteral("the file holds no JSON"));
        if (!value({Want::object, Role::top}, QString()))
            return false;
        while (!m_stack.empty()) {
            skipSpace();
            Frame& frame = m_stack.back();
            const char closer = frame.isObject ? '}' : ']';
            if (m_p == m_end)
                return fail(QStringLiteral("the text ends before a closing \"%1\"").arg(QLatin1Char(closer)));
            if (*m_p == closer) {
                if (!close())
                    return false;
                ++m_p;
                continue;
            }
            if (frame.count > 0) {
                if (*m_p != ',')
                    return fail(QStringLiteral("expected \",\" or \"%1\"").arg(QLatin1Char(closer)));
                ++m_p;
                skipSpace();
            }
            ++frame.count;
            if (!frame.isObject) {
                if (!value(want(frame.role, QString()), QString()))
                    return false;
                continue;
            }
            QString key;
            if (m_p == m_end || *m_p != '"')
                return fail(QStringLiteral("expected a key in double quotes"));
            if (!readString(key))
                return false;
            skipSpace();
            if (m_p == m_end || *m_p != ':')
                return fail(QStringLiteral("expected \":\" after \"%1\"").arg(key));
            ++m_p;
            if (!value(want(frame.role, key), key))
                return false;
        }
        skipSpace();
        if (m_p != m_end)
            return fail(QStringLiteral("unexpected text after the sermon"));
        if (!m_root)
            return fail(QStringLiteral("there is no \"root\" node"));
        return true;
    }

    // Opens a container, or reads a scalar into the frame that holds it.
    bool value(const Want& w, const QString& key)
    {
        skipSpace();
        if (m_p == m_end)
            return fail(QStringLiteral("expected a value"));
        const auto mismatch = [&] {
            return key.isEmpty() ? fail(QStringLiteral("expected %1").arg(described(w)))
                                 : fail(QStringLiteral("expected %1 for \"%2\"").arg(described(w), key));
        };
        if (*m_p == '{' || *m_p == '[') {
            const bool isObject = *m_p == '{';
            Role role = Role::skip;
            if (w.kind == Want::object && isObject)
                role = w.role;
            else if (w.kind == Want::array && !isObject)
                role = w.role;
            else if (w.kind != Want::any)
                return mismatch();
            Frame frame{role, isObject, 0, {}, false, {}, {}};
            if (role == Role::node)
                frame.node = SermonNode::make();
            else if (role == Role::children)
                frame.node = m_stack.back().node;
            ++m_p;
            m_stack.push_back(std::move(frame));
            return true;
        }
        if ((w.kind == Want::object || w.kind == Want::array) && !(w.nullable && *m_p == 'n'))
            return mismatch();
        const char* start = m_p;
        Scalar scalar;
        if (!readScalar(scalar))
            return false;
        if (w.kind == Want::any || (scalar.kind == Scalar::null && w.nullable))
            return true;
        const bool fits = (w.kind == Want::string && scalar.kind == Scalar::string)
            || (w.kind == Want::boolean && scalar.kind == Scalar::boolean)
            || (w.kind == Want::integer && scalar.kind == Scalar::numeric && std::trunc(scalar.number) == scalar.number
                && std::abs(scalar.number) <= std::numeric_limits<int>::max());
        if (!fits) {
            m_p = start;
            return mismatch();
        }
        Frame& frame = m_stack.back();
        const auto is = [&](const char* name) { return key == QLatin1String(name); };
        switch (frame.role) {
        case Role::metadata:
            if (is("scripture"))
                m_metadata.scripture = scalar.text;
            else if (is("series"))
                m_metadata.series = scalar.text;
            else
                m_metadata.duration = int(scalar.number);
            break;
        case Role::occasion:
            if (is("place")) {
                frame.place = scalar.text;
            } else {
                frame.date = YAMLDate::parse(scalar.text);
                if (!frame.date) {
                    m_p = start;
                    return fail(QStringLiteral("expected a date as yyyy-MM-dd for \"date\""));
                }
            }
            break;
        case Role::node:
            if (is("text")) {
                frame.node->setText(scalar.text);
            } else if (is("depth")) {
                frame.node->setDepth(int(scalar.number));
                frame.hasDepth = true;
            } else if (is("isCollapsed")) {
                frame.node->setCollapsed(scalar.isTrue);
            } else {
                frame.node->setQuote(scalar.isTrue);
            }
            break;
        default:
            break;
        }
        return true;
    }

    bool close()
    {
        Frame frame = std::move(m_stack.back());
        m_stack.pop_back();
        if (frame.role == Role::occasion) {
            if (!frame.date)
                return fail(QStringLiteral("an occasion needs a \"date\""));
            SermonOccasion occasion;
            occasion.place = frame.place;
            occasion.date = *frame.date;
            m_metadata.occasions.append(occasion);
        } else if (frame.role == Role::node) {
            m_allDepthsGiven = m_allDepthsGiven && frame.hasDepth;
            Frame& holder = m_stack.back();
            if (holder.role == Role::children)
                holder.node->insertChildKeepingDepths(int(holder.node->children().size()), std::move(frame.node));
            else
                m_root = std::move(frame.node);
        }
        return true;
    }

    void skipSpace()
    {
        while (m_p != m_end && (*m_p == ' ' || *m_p == '\t' || *m_p == '\n' || *m_p == '\r'))
            ++m_p;
    }

    bool readScalar(Scalar& out)
    {
        const auto literal = [&](const char* word) {
            const qsizetype n = qsizetype(strlen(word));
            if (m_end - m_p < n || memcmp(m_p, word, size_t(n)) != 0)
                return false;
            m_p += n;
            return true;
        };
        if (*m_p == '"') {
            out.kind = Scalar::string;
            return readString(out.text);
        }
        if (literal("true")) {
            out.kind = Scalar::boolean;
            out.isTrue = true;
            return true;
        }
        if (literal("false")) {
            out.kind = Scalar::boolean;
            return true;
        }
        if (literal("null")) {
            out.kind = Scalar::null;
            return true;
        }
        const char* start = m_p;
        const auto digits = [&] {
            const char* from = m_p;
            while (m_p != m_end && *m_p >= '0' && *m_p <= '9')
                ++m_p;
            return m_p != from;
        };
        if (m_p != m_end && *m_p == '-')
            ++m_p;
        bool ok = digits();
        if (ok && m_p != m_end && *m_p == '.') {
            ++m_p;
            ok = digits();
        }
        if (ok && m_p != m_end && (*m_p == 'e' || *m_p == 'E')) {
            ++m_p;
            if (m_p != m_end && (*m_p == '+' || *m_p == '-'))
                ++m_p;
            ok = digits();
        }
        if (!ok) {
            m_p = start;
            return fail(QStringLiteral("expected a value"));
        }
        out.kind = Scalar::numeric;
        out.number = QByteArray(start, m_p - start).toDouble();
        return true;
    }

    // At the opening quote; leaves the reader after the closing one.
    bool readString(QString& out)
    {
        ++m_p;
        QByteArray utf8;
        while (m_p != m_end && *m_p != '"') {
            const char c = *m_p;
            if (uchar(c) < 0x20)
                return fail(QStringLiteral("a line break or control character inside a string"));
            if (c != '\\') {
                utf8 += c;
                ++m_p;
                continue;
            }
            if (m_end - m_p < 2) {
                m_p = m_end;
                break;
            }
            const char e = m_p[1];
            m_p += 2;
            switch (e) {
            case '"':
            case '\\':
            case '/':
                utf8 += e;
                break;
            case 'b':
                utf8 += '\b';
                break;
            case 'f':
                utf8 += '\f';
                break;
            case 'n':
                utf8 += '\n';
                break;
            case 'r':
                utf8 += '\r';
                break;
            case 't':
                utf8 += '\t';
                break;
            case 'u': {
                char16_t unit = 0;
                if (!readHex(unit))
                    return false;
                QString units(QChar{unit});
                if (QChar::isHighSurrogate(unit) && m_end - m_p >= 6 && m_p[0] == '\\' && m_p[1] == 'u') {
                    const char* back = m_p;
                    m_p += 2;
                    char16_t low = 0;
                    if (!readHex(low))
                        return false;
                    if (QChar::isLowSurrogate(low))
                        units += QChar{low};
                    else
                        m_p = back;
                }
                utf8 += units.toUtf8(); // a lone surrogate becomes U+FFFD
                break;
            }
            default:
                m_p -= 2;
                return fail(QStringLiteral("an unknown escape \"\\%1\" in a string").arg(QLatin1Char(e)));
            }
        }
        if (m_p == m_end)
            return fail(QStringLiteral("the text ends inside a string"));
        ++m_p;
        out = QString::fromUtf8(utf8);
        return true;
    }

    bool readHex(char16_t& unit)
    {
        if (m_end - m_p < 4)
            return fail(QStringLiteral("expected four hex digits after \"\\u\""));
        bool ok = false;
        unit = char16_t(QByteArray(m_p, 4).toUShort(&ok, 16));
        if (!ok)
            return fail(QStringLiteral("expected four hex digits after \"\\u\""));
        m_p += 4;
        return true;
    }

    bool fail(const QString& message)
    {
        int line = 1;
        const char* lineStart = m_begin;
        for (const char* q = m_begin; q < m_p; ++q) {
            if (*q == '\n') {
                ++line;
                lineStart = q + 1;
            }
        }
        const int column = QString::fromUtf8(lineStart, m_p - lineStart).size() + 1;
        m_error = QStringLiteral("line %1, column %2: %3").arg(line).arg(column).arg(message);
        return false;
    }

    const char* m_begin;
    const char* m_p;
    const char* m_end;
    std::vector<Frame> m_stack;
    QString m_error;
    SermonMetadata m_metadata;
    SermonNodePtr m_root;
    bool m_allDepthsGiven = true;
};

} // namespace

std::optional<SermonContents> fromJson(const QByteArray& json, QString* error)
{
    return Reader(json).read(error);
}

} // namespace SermonJson
