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

double secondsUntil(const QTime& finish, double now)
{
    const QDateTime current = QDateTime::fromMSecsSinceEpoch(qint64(std::floor(now * 1000)));
    QDateTime end(current.date(), finish);
    if (end <= current)
        end = QDateTime(current.date().addDays(1), finish);
    return end.toMSecsSinceEpoch() / 1000.0 - now;
}

int targetMinutes(const QTime& finish, double now)
{
    return std::max(int(std::floor(secondsUntil(finish, now) / 60)), 1);
}

QString endsText(const QTime& finish)
{
    return QStringLiteral("ends ") + finish.toString(QStringLiteral("HH:mm"));
}

} // namespace DeliveryFinishBy
