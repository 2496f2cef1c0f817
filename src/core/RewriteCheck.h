#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// What saving would do to a file that was written elsewhere. The codec writes every file in its
// own form; for a sermon that only tidies layout, for other Markdown (code, tables, HTML, keys of
// its own in the front matter) it loses or moves words. This compares the file's bytes with the
// bytes a save would write, line by line, and lists the lines whose words, place or Markdown
// reading would change. Pure; QtCore only.
//
// Layout that may change without counting: blank lines (outside code), trailing blanks, the list
// markers `*` and `+` written as `-`, the indentation of list items and of the lines inside
// them, up to three leading spaces, a byte order mark, and the final line end. In the front
// matter also the order of its keys, quotes around a value and the indentation of its lines;
// any other rewriting of a value counts.
namespace RewriteCheck {

struct LineChange {
    enum class Kind { changed, vanishes, added };
    Kind kind = Kind::changed;
    // 1-based line of the original; an added line would stand just before this one.
    int line = 0;
    QString original; // empty for an added line
    QString rewritten; // empty for a line that vanishes
    // Set when a line keeps its words but would read as other Markdown ("a table row").
    QString readsAs;

    bool operator==(const LineChange&) const = default;
};

struct Result {
    // In line order. When there are too many to list, only the first is here.
    QList<LineChange> changes;
    bool isTruncated = false;

    bool isClean() const { return changes.isEmpty(); }
};

// Beyond this many inserted and removed lines the comparison stops and says "many".
inline constexpr int maxEdits = 2000;

Result compare(const QByteArray& original, const QByteArray& rewritten);

// One plain line: `"```python" would be rewritten as "…"`, `"x" would be lost`, ...
QString describe(const LineChange& change);

} // namespace RewriteCheck
