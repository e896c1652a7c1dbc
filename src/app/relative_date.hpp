#pragma once

#include <QDateTime>
#include <QString>

namespace tidewell {

/// How long ago date was, in words, for telling when the last scan ran. Unless now is strictly later than date
/// (or when date is invalid) the answer is "Not scan yet". Otherwise the difference is taken in the local calendar
/// as years, then months, weeks, days, hours, minutes and seconds, each the remainder after the larger ones, and
/// the first that applies names it: "%ld year%@ ago", "%ld month%@ ago", "%ld week%@ ago", "%ld day%@ ago" from two
/// days, "Yesterday" for one whole day (24 hours up to just under 48), then hours, minutes and seconds, and "In few
/// seconds" below one second. The suffix is "s" for every count but 1. So 13 days is "1 week ago": weeks come first
/// and the 6 days left over are not told. Fixed English, never translated.
QString relativeDateStringForDate(const QDateTime& date, const QDateTime& now = QDateTime::currentDateTime());

} // namespace tidewell
