#pragma once

#include <QString>
#include <QTime>

#include <optional>

// A time of day the sermon must end by, the service's slot. It belongs to one delivery: the
// view keeps it and nothing writes it to the file. The end time is what is fixed: a pause
// shortens what is left, as the slot itself does.
namespace DeliveryFinishBy {

// No finish-by sets a longer target than a duration may be: the sermon's settings accept up
// to three hours, and a page marked for more is a column of unreadable minute marks.
constexpr int maxMinutes = 180;

// "11:42" or "9:05"; nothing for anything else.
std::optional<QTime> parse(const QString& text);
// The moment, in seconds since the epoch, the local clock next shows `finish` after `from`.
double deadline(const QTime& finish, double from);

struct Target {
    int minutes = 1;
    bool capped = false; // the deadline is further away than the longest target
};
// The whole minutes of a delivery that ends by `deadline`: what was spoken before `from`, the
// last start or now, and the time from `from` to the deadline. Rounded down, so that it ends by
// the time rather than after it; at least one minute and at most maxMinutes.
Target target(double deadline, double from, double spokenBefore);

// "ends 11:42", shown beside the remaining time, with a second line when capped.
QString endsText(const QTime& finish, bool capped = false);
// What the finish-by field says of `text` typed at `now`.
QString hint(const QString& text, double now);

} // namespace DeliveryFinishBy
