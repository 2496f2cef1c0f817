#include "SafeFileName.h"

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
    name = name.mid(dots).trimmed();
    return name.isEmpty() ? QStringLiteral("Untitled") : name;
}
