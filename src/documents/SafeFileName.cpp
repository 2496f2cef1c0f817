#include "SafeFileName.h"

#include <QTextBoundaryFinder>

namespace {

// What a file name may hold in bytes, less the ".md" that follows it.
constexpr qsizetype maxNameBytes = 255 - 3;

// The longest start of `name` that fits `maxBytes` in UTF-8, ending between two graphemes, so
// that no character, surrogate pair or accent is split.
QString fitBytes(const QString& name, qsizetype maxBytes)
{
    if (name.toUtf8().size() <= maxBytes)
        return name;
    QTextBoundaryFinder graphemes(QTextBoundaryFinder::Grapheme, name);
    qsizetype kept = 0;
    qsizetype bytes = 0;
    for (qsizetype end = graphemes.toNextBoundary(); end > 0; end = graphemes.toNextBoundary()) {
        bytes += name.mid(kept, end - kept).toUtf8().size();
        if (bytes > maxBytes)
            break;
        kept = end;
    }
    return name.left(kept);
}

} // namespace

QString safeFileName(const QString& title)
{
    static const QString dropped = QStringLiteral("/\\:?<>|\"");
    QString name;
    name.reserve(title.size());
    for (QChar c : title)
        if (!dropped.contains(c))
            name.append(c);
    name = name.trimmed();
    qsizetype dots = 0;
    while (dots < name.size() && name.at(dots) == QLatin1Char('.'))
        ++dots;
    name = fitBytes(name.mid(dots).trimmed(), maxNameBytes).trimmed();
    return name.isEmpty() ? QStringLiteral("Untitled") : name;
}
