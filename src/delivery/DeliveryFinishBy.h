#pragma once

#include <QString>
#include <QTime>

#include <optional>

// A time of day the sermon must end by, the service's slot. It belongs to one delivery: the
// view keeps it and nothing writes it to the file.
namespace DeliveryFinishBy {

// "11:42" or "9:05"; nothing for anything else.
std::optional<QTime> parse(const QString& text);
// Seconds from `now` (seconds since the epoch) until the local clock next shows `finish`.
double secondsUntil(const QTime& finish, double now);
// The whole minutes a delivery starting at `now` may take, at least one: rounded down, so that
// it ends by the time rather than after it.
int targetMinutes(const QTime& finish, double now);
// "ends 11:42", shown beside the remaining time.
QString endsText(const QTime& finish);

} // namespace DeliveryFinishBy
