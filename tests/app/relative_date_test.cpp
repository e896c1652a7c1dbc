#include <gtest/gtest.h>

#include "app/relative_date.hpp"

namespace tidewell {
namespace {

// Local times, as the person reads them.
QDateTime at(int year, int month, int day, int hour = 12, int minute = 0, int second = 0) {
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second));
}

TEST(RelativeDateTest, NothingBeforeNowIsNotAScan) {
    const QDateTime now = at(2026, 5, 20, 15, 30);
    EXPECT_EQ(relativeDateStringForDate(now, now), "Not scan yet");
    EXPECT_EQ(relativeDateStringForDate(now.addSecs(1), now), "Not scan yet");
    EXPECT_EQ(relativeDateStringForDate(QDateTime(), now), "Not scan yet");
}

TEST(RelativeDateTest, TheLargestPartNamesTheDifference) {
    const QDateTime now = at(2026, 5, 20, 15, 30);
    const struct {
        QDateTime date;
        const char* text;
    } table[] = {
        {now.addYears(-1).addMonths(-3), "1 year ago"},
        {now.addYears(-2), "2 years ago"},
        {now.addMonths(-1), "1 month ago"},
        {now.addMonths(-5).addDays(-3), "5 months ago"},
        {now.addDays(-13), "1 week ago"}, // weeks come first; the 6 days left are not told
        {now.addDays(-14), "2 weeks ago"},
        {now.addDays(-6), "6 days ago"},
        {now.addSecs(-49 * 3600), "2 days ago"},
        {now.addSecs(-30 * 3600), "Yesterday"},
        {now.addSecs(-24 * 3600), "Yesterday"},
        {now.addSecs(-48 * 3600 + 1), "Yesterday"},
        {now.addSecs(-23 * 3600 - 59 * 60), "23 hours ago"},
        {now.addSecs(-3600), "1 hour ago"},
        {now.addSecs(-2 * 3600 - 5), "2 hours ago"},
        {now.addSecs(-90), "1 minute ago"},
        {now.addSecs(-59), "59 seconds ago"},
        {now.addSecs(-1), "1 second ago"},
        {now.addMSecs(-500), "In few seconds"},
    };
    for (const auto& row : table) {
        EXPECT_EQ(relativeDateStringForDate(row.date, now), row.text) << row.date.toString(Qt::ISODate).toStdString();
    }
}

TEST(RelativeDateTest, MonthsAreCalendarMonths) {
    // From the last day of a short month a whole month has passed by the same day of the next.
    EXPECT_EQ(relativeDateStringForDate(at(2026, 2, 28), at(2026, 3, 31)), "1 month ago");
    // A 30-day March is four weeks and two days, not a month.
    EXPECT_EQ(relativeDateStringForDate(at(2026, 3, 1), at(2026, 3, 31)), "4 weeks ago");
    // Adding a month to the 31st lands on the month's last day, so that counts as a month too.
    EXPECT_EQ(relativeDateStringForDate(at(2026, 1, 31), at(2026, 2, 28)), "1 month ago");
    // Not a whole year until the same date and time come round.
    EXPECT_EQ(relativeDateStringForDate(at(2025, 5, 20, 15, 31), at(2026, 5, 20, 15, 30)), "11 months ago");
    EXPECT_EQ(relativeDateStringForDate(at(2024, 2, 29), at(2025, 2, 28)), "1 year ago");
}

} // namespace
} // namespace tidewell
