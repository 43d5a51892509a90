#include "Model/ActivityList.h"
#include "Model/Calendar.h"
#include "Model/Day.h"
#include "Model/DurationText.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

Date utc(const char* text, double fraction = 0) {
    const QDateTime time = QDateTime::fromString(QString::fromLatin1(text) + u"Z"_s, Qt::ISODate);
    EXPECT_TRUE(time.isValid()) << text;
    return Date::fromUnix(static_cast<double>(time.toSecsSinceEpoch())) + fraction;
}

Calendar calendarIn(const char* zone) {
    EXPECT_TRUE(QTimeZone(zone).isValid()) << zone;
    return Calendar(QTimeZone(zone));
}

} // namespace

TEST(CategoryTest, IsParsedFromExactlyItsRawValueAndLabelled) {
    QStringList texts;
    for (const Category category : allCases) {
        EXPECT_EQ(categoryFromRawValue(rawValue(category)), category);
        texts.append(rawValue(category) + u' ' + label(category));
    }
    EXPECT_EQ(texts.join(u", "_s), u"production Produção, consumption Consumo, pending Pendente, "
                                   "ignored Ignorar, neutral Não contabilizar"_s);
    EXPECT_FALSE(categoryFromRawValue(u"Production"_s) || categoryFromRawValue(QString()));
}

TEST(DurationTest, IsCutOffAndNeverNegative) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::pair<double, const char*> rows[] = {
        {-5, "0:00"},       {0, "0:00"},       {59.9, "0:59"},       {60, "1:00"},
        {3599.99, "59:59"}, {3600, "1:00:00"}, {90000, "25:00:00"},  {std::nan(""), "0:00"},
        {infinity, "0:00"}, {9.3e18, "0:00"},  {1e9, "277777:46:40"}};
    for (const auto& [seconds, text] : rows) {
        EXPECT_EQ(duration(seconds), QLatin1StringView(text)) << seconds;
    }
}

TEST(DayTest, IsReadFromExactlyItsDayString) {
    EXPECT_EQ(Day::fromText("2024-03-05"), (Day{2024, 3, 5}));
    EXPECT_EQ(Day::fromText("0999-12-31"), (Day{999, 12, 31}));
    EXPECT_EQ((Day{7, 1, 2}.text()), u"0007-01-02"_s);
    for (const char* text :
         {"", "2024-03-5", "2024-03-055", "2024/03-05", "2024-03/05", "+024-03-05", "2024-03-0x"}) {
        EXPECT_FALSE(Day::fromText(text)) << text;
    }
}

TEST(CalendarTest, EveryDayBeginsWhereTheZoneLetsIt) {
    const struct {
        const char* zone;
        const char* start;
        double hours;
        Day day;
    } rows[] = {
        {"America/Sao_Paulo", "2018-11-04T03:00:00", 23, {2018, 11, 4}}, // No midnight.
        {"America/Sao_Paulo", "2018-02-17T02:00:00", 25, {2018, 2, 17}}, // 23:00 comes twice.
        {"Europe/Berlin", "2024-03-30T23:00:00", 23, {2024, 3, 31}},
        {"Europe/Berlin", "2024-10-26T22:00:00", 25, {2024, 10, 27}},
        {"Europe/Berlin", "2060-03-27T23:00:00", 23, {2060, 3, 28}},    // By the rule.
        {"Atlantic/Azores", "2018-10-28T00:00:00", 25, {2018, 10, 28}}, // Midnight comes twice.
        {"Africa/Cairo", "2024-04-25T22:00:00", 23, {2024, 4, 26}},     // No midnight.
        {"Asia/Kathmandu", "2024-03-04T18:15:00", 24, {2024, 3, 5}},
        {"UTC", "1969-12-31T00:00:00", 24, {1969, 12, 31}},
        {"UTC", "0999-06-15T00:00:00", 24, {999, 6, 15}}};
    for (const auto& [zone, text, hours, day] : rows) {
        SCOPED_TRACE(testing::Message() << zone << " " << text);
        const Date start = utc(text);
        const Date next = start + hours * 3600;
        // Each by a calendar that has no bounds yet, and all by one that has some.
        const Calendar calendar = calendarIn(zone);
        for (const Date date :
             {start, start + 0.25, start + 1800, start + 5400, next - 5400, next - 0.25}) {
            EXPECT_EQ(calendarIn(zone).startOfDay(date) - start, 0);
            EXPECT_EQ(calendar.startOfDay(date) - start, 0);
            EXPECT_TRUE(calendar.isSameDay(date, start));
            EXPECT_EQ(calendarIn(zone).day(date), day);
        }
        EXPECT_EQ(calendar.startOfDay(next), next);
        EXPECT_FALSE(calendar.isSameDay(start - 0.25, start));
        EXPECT_EQ(calendar.addingDays(next, -1), start);
    }
    // The local time stays, or is the next there is.
    const Calendar berlin = calendarIn("Europe/Berlin");
    EXPECT_EQ(berlin.addingDays(utc("2024-03-30T11:00:00"), 1), utc("2024-03-31T10:00:00"));
    EXPECT_EQ(berlin.addingDays(utc("2024-03-30T01:30:00"), 1), utc("2024-03-31T01:00:00"));
    EXPECT_EQ(berlin.addingDays(utc("2024-10-28T01:30:00"), -1), utc("2024-10-27T00:30:00"));
    EXPECT_EQ(berlin.addingDays(Date{-0.75}, 1), Date{86399.25});
    // A day that Samoa never had.
    EXPECT_FALSE(calendarIn("Pacific/Apia").addingDays(utc("2011-12-30T10:00:00"), -1));
}

TEST(CalendarTest, SettingTheZoneMovesTheDayAtOnce) {
    Calendar calendar = calendarIn("America/Sao_Paulo");
    const Date date = utc("2024-03-05T01:00:00"); // A Tuesday in UTC.
    EXPECT_EQ(calendar.day(date), (Day{2024, 3, 4}));
    EXPECT_EQ(calendar.weekday(date), 2);
    calendar.setTimeZone(QTimeZone("Asia/Kathmandu"));
    EXPECT_EQ(calendar.startOfDay(date), utc("2024-03-04T18:15:00"));
    calendar.setTimeZone(QTimeZone("No/Where"));
    EXPECT_EQ(calendar.startOfDay(date), utc("2024-03-05T00:00:00"));
    for (int i = 0; i < 7; ++i) { // The third was a Sunday.
        EXPECT_EQ(calendar.weekday(utc("2024-03-03T23:59:59", 0.5) + i * 86400.0), i + 1);
    }
    // Every double is on some day.
    EXPECT_GT(calendar.day(Date{1e300}), calendar.day(Date{1e11}));
    EXPECT_LT(calendar.day(Date{-1e300}), calendar.day(Date{-5e10}));
    EXPECT_FALSE(calendar.addingDays(Date{0}, std::numeric_limits<int>::max()) == Date{0});
}

TEST(ActivityListTest, RecordsAndTheirKeysStayWhereTheyAre) {
    KeyTable keys;
    ActivityList list(keys);
    const Activity& first = list.append(u"app:A"_s, u"A"_s, Category::pending, 1);
    const QString& key = first.key();
    keys.intern(u"site:not.an.activity"_s);
    for (int i = 0; i < 5000; ++i) {
        list.append(u"app:%1"_s.arg(i % 4000), u"?"_s, Category::pending, i);
    }
    EXPECT_EQ(key, u"app:A"_s);
    EXPECT_EQ(list.find(u"app:A"_s), &first);
    EXPECT_EQ(list.find(u"app:999"_s)->seconds(), 999);
    EXPECT_FALSE(list.find(u"app:a"_s) || list.find(u"site:not.an.activity"_s));
}
