#include "app/relative_date.hpp"

namespace tidewell {

namespace {

struct CalendarDifference {
    qint64 years = 0;
    qint64 months = 0;
    qint64 weeks = 0;
    qint64 days = 0;
    qint64 hours = 0;
    qint64 minutes = 0;
    qint64 seconds = 0;
};

// The largest count whose step from `from` does not pass `to`. The guess from the calendar fields can be one too
// many (the day of the month or the time of day not reached yet), never too few.
template <typename Step> qint64 wholeSteps(const QDateTime& from, const QDateTime& to, qint64 guess, Step step) {
    while (guess > 0 && step(from, guess) > to) {
        --guess;
    }
    return guess;
}

// Calendar arithmetic in local time, as a person counts: adding a month keeps the day of the month (clamped to the
// month's end), adding a day keeps the time of day across a change of clock.
CalendarDifference differenceBetween(const QDateTime& from, const QDateTime& to) {
    CalendarDifference difference;
    QDateTime cursor = from;

    difference.years = wholeSteps(cursor, to, to.date().year() - cursor.date().year(),
                                  [](const QDateTime& d, qint64 n) { return d.addYears(static_cast<int>(n)); });
    cursor = cursor.addYears(static_cast<int>(difference.years));

    const qint64 monthGuess =
        (to.date().year() - cursor.date().year()) * 12 + to.date().month() - cursor.date().month();
    difference.months = wholeSteps(cursor, to, monthGuess,
                                   [](const QDateTime& d, qint64 n) { return d.addMonths(static_cast<int>(n)); });
    cursor = cursor.addMonths(static_cast<int>(difference.months));

    const qint64 totalDays =
        wholeSteps(cursor, to, cursor.daysTo(to), [](const QDateTime& d, qint64 n) { return d.addDays(n); });
    difference.weeks = totalDays / 7;
    difference.days = totalDays % 7;
    cursor = cursor.addDays(totalDays);

    const qint64 secondsLeft = cursor.msecsTo(to) / 1000;
    difference.hours = secondsLeft / 3600;
    difference.minutes = secondsLeft % 3600 / 60;
    difference.seconds = secondsLeft % 60;
    return difference;
}

QString agoText(qint64 count, const char* unit) {
    return QStringLiteral("%1 %2%3 ago")
        .arg(count)
        .arg(QLatin1String(unit))
        .arg(count == 1 ? QString() : QStringLiteral("s"));
}

} // namespace

QString relativeDateStringForDate(const QDateTime& date, const QDateTime& now) {
    if (!date.isValid() || !now.isValid() || !(now > date)) {
        return QStringLiteral("Not scan yet");
    }
    const CalendarDifference difference = differenceBetween(date.toLocalTime(), now.toLocalTime());
    if (difference.years >= 1) {
        return agoText(difference.years, "year");
    }
    if (difference.months >= 1) {
        return agoText(difference.months, "month");
    }
    if (difference.weeks >= 1) {
        return agoText(difference.weeks, "week");
    }
    if (difference.days >= 2) {
        return agoText(difference.days, "day");
    }
    if (difference.days == 1) {
        return QStringLiteral("Yesterday");
    }
    if (difference.hours >= 1) {
        return agoText(difference.hours, "hour");
    }
    if (difference.minutes >= 1) {
        return agoText(difference.minutes, "minute");
    }
    if (difference.seconds >= 1) {
        return agoText(difference.seconds, "second");
    }
    return QStringLiteral("In few seconds");
}

} // namespace tidewell
