#pragma once

#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <QString>

// Dates in words, as the locale writes them.
namespace DateText {

// The long style with no weekday and no time: "April 7, 2024", "7. April 2024".
QString longDate(QDate date, const QLocale& locale = QLocale());

// How far `moment` is from `now`, in the largest whole unit that isn't zero, spelt out:
// "in 3 weeks", "2 days ago", "in 5 hours".
QString relative(const QDateTime& moment, const QDateTime& now, const QLocale& locale = QLocale());

} // namespace DateText
