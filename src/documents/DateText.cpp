#include "DateText.h"

#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/reldatefmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <memory>

namespace {

icu::Locale icuLocale(const QLocale& locale)
{
    return icu::Locale(locale.name().toUtf8().constData());
}

QString fromIcu(const icu::UnicodeString& text)
{
    return QString(reinterpret_cast<const QChar*>(text.getBuffer()), text.length());
}

} // namespace

namespace DateText {

QString longDate(QDate date, const QLocale& locale)
{
    if (!date.isValid())
        return {};
    std::unique_ptr<icu::DateFormat> format(
        icu::DateFormat::createDateInstance(icu::DateFormat::kLong, icuLocale(locale)));
    if (!format)
        return locale.toString(date, QLocale::ShortFormat);
    // Noon in UTC, formatted in UTC: the day can't slip across a zone.
    format->setTimeZone(*icu::TimeZone::getGMT());
    const UDate when = double(QDateTime(date, QTime(12, 0), Qt::UTC).toMSecsSinceEpoch());
    icu::UnicodeString out;
    format->format(when, out);
    return fromIcu(out);
}

QString relative(const QDateTime& moment, const QDateTime& now, const QLocale& locale)
{
    if (!moment.isValid() || !now.isValid())
        return {};
    const bool ahead = moment >= now;
    const QDateTime from = ahead ? now : moment;
    const QDateTime to = ahead ? moment : now;

    // Whole calendar years and months first, then what is left in weeks, days and smaller.
    QDateTime cursor = from;
    auto whole = [&](auto step) {
        int n = 0;
        while (n < 100000 && step(cursor, n + 1) <= to)
            ++n;
        cursor = step(cursor, n);
        return n;
    };
    const int years = whole([](const QDateTime& d, int n) { return d.addYears(n); });
    const int months = whole([](const QDateTime& d, int n) { return d.addMonths(n); });
    const qint64 seconds = cursor.secsTo(to);

    URelativeDateTimeUnit unit = UDAT_REL_UNIT_SECOND;
    qint64 amount = seconds;
    if (years > 0) {
        unit = UDAT_REL_UNIT_YEAR;
        amount = years;
    } else if (months > 0) {
        unit = UDAT_REL_UNIT_MONTH;
        amount = months;
    } else if (seconds >= 7 * 86400) {
        unit = UDAT_REL_UNIT_WEEK;
        amount = seconds / (7 * 86400);
    } else if (seconds >= 86400) {
        unit = UDAT_REL_UNIT_DAY;
        amount = seconds / 86400;
    } else if (seconds >= 3600) {
        unit = UDAT_REL_UNIT_HOUR;
        amount = seconds / 3600;
    } else if (seconds >= 60) {
        unit = UDAT_REL_UNIT_MINUTE;
        amount = seconds / 60;
    }

    UErrorCode status = U_ZERO_ERROR;
    icu::RelativeDateTimeFormatter formatter(icuLocale(locale), nullptr, UDAT_STYLE_LONG, UDISPCTX_CAPITALIZATION_NONE,
                                             status);
    icu::UnicodeString out;
    if (U_SUCCESS(status))
        formatter.formatNumeric(ahead ? double(amount) : -double(amount), unit, out, status);
    if (U_FAILURE(status))
        return {};
    return fromIcu(out);
}

} // namespace DateText
