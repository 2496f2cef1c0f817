#include "DeliveryFinishBy.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace DeliveryFinishBy {

std::optional<QTime> parse(const QString& text)
{
    const QString trimmed = text.trimmed();
    for (const QString& format : {QStringLiteral("H:mm"), QStringLiteral("HH:mm")}) {
        const QTime time = QTime::fromString(trimmed, format);
        if (time.isValid())
            return time;
    }
    return std::nullopt;
}

double deadline(const QTime& finish, double from)
{
    const QDateTime current = QDateTime::fromMSecsSinceEpoch(qint64(std::floor(from * 1000)));
    QDateTime end(current.date(), finish);
    if (end <= current)
        end = QDateTime(current.date().addDays(1), finish);
    return end.toMSecsSinceEpoch() / 1000.0;
}

Target target(double deadline, double from, double spokenBefore)
{
    const double minutes = std::floor((spokenBefore + deadline - from) / 60);
    return {int(std::clamp(minutes, 1.0, double(maxMinutes))), minutes > maxMinutes};
}

QString endsText(const QTime& finish, bool capped)
{
    QString text = QStringLiteral("ends ") + finish.toString(QStringLiteral("HH:mm"));
    if (capped)
        text += QStringLiteral("\n%1 min at most").arg(maxMinutes);
    return text;
}

QString hint(const QString& text, double now)
{
    if (text.trimmed().isEmpty())
        return QStringLiteral("Empty: the sermon's own duration.");
    const auto finish = parse(text);
    if (!finish)
        return QStringLiteral("A time of day, such as 11:42.");
    const Target t = target(deadline(*finish, now), now, 0);
    if (t.capped)
        return QStringLiteral("More than %1 min away: the target stops at %1 min, the longest duration.")
            .arg(maxMinutes);
    return QStringLiteral("Starting now: %1 min.").arg(t.minutes);
}

} // namespace DeliveryFinishBy
