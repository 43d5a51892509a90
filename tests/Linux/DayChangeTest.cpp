#include "Linux/Presence/DayChange.h"

#include "Testing.h"

#include <QDateTime>

using namespace orvanta;

namespace {

std::chrono::sys_seconds utc(const QString& text) {
    const auto moment = QDateTime::fromString(text, Qt::ISODate);
    EXPECT_TRUE(moment.isValid()) << qPrintable(text);
    return std::chrono::sys_seconds(std::chrono::seconds(moment.toSecsSinceEpoch()));
}

TEST(NextDayTest, IsTheFirstMomentOfALaterDate) {
    struct Row {
        const char* zone;
        QString now;
        QString next;
    };
    for (const Row& row :
         {Row{"UTC", u"2024-02-28T23:59:59Z"_s, u"2024-02-29T00:00:00Z"_s},
          {"America/Sao_Paulo", u"2024-06-01T02:59:59Z"_s, u"2024-06-01T03:00:00Z"_s},
          {"America/Sao_Paulo", u"2024-06-01T03:00:00Z"_s, u"2024-06-02T03:00:00Z"_s},
          // Midnight is skipped: 23:59:59 is followed by 01:00.
          {"America/Sao_Paulo", u"2018-11-03T12:00:00Z"_s, u"2018-11-04T03:00:00Z"_s},
          // 23:59:59 is followed by 23:00 of the same day.
          {"America/Sao_Paulo", u"2018-02-17T12:00:00Z"_s, u"2018-02-18T03:00:00Z"_s},
          {"America/Sao_Paulo", u"2018-02-18T02:30:00Z"_s, u"2018-02-18T03:00:00Z"_s},
          // A day of 25 hours, changed in the small hours.
          {"Europe/Lisbon", u"2024-10-26T23:00:00Z"_s, u"2024-10-28T00:00:00Z"_s},
          // Midnight comes twice: the first counts, and the second begins no day.
          {"Atlantic/Azores", u"2024-10-26T12:00:00Z"_s, u"2024-10-27T00:00:00Z"_s},
          {"Atlantic/Azores", u"2024-10-27T00:30:00Z"_s, u"2024-10-28T01:00:00Z"_s},
          // A whole day is skipped.
          {"Pacific/Apia", u"2011-12-30T09:00:00Z"_s, u"2011-12-30T10:00:00Z"_s}}) {
        EXPECT_EQ(nextDay(utc(row.now), QTimeZone(row.zone)), utc(row.next))
            << row.zone << ' ' << qPrintable(row.now);
    }
}

TEST(DayChangeTest, ANewZoneIsToldBeforeTheDayIsAnother) {
    const TemporaryFolder directory;
    const QString file = directory.path(u"localtime"_s);
    QTimeZone zone("Asia/Tokyo");
    // As timedatectl does it.
    const auto link = [&](const QByteArray& name) {
        zone = QTimeZone(name);
        ASSERT_TRUE(
            QFile::link(u"/usr/share/zoneinfo/"_s + QString::fromLatin1(name), file + u"~"_s));
        ASSERT_EQ(::rename(qPrintable(file + u"~"_s), qPrintable(file)), 0);
    };
    link("Asia/Tokyo");
    DayChange change{DayChange::Surroundings{[&] { return zone; }, QFile::encodeName(file)}};
    std::vector<std::string> log;
    QObject::connect(&change, &DayChange::timeZoneChanged, &change,
                     [&](const QTimeZone& now) { log.push_back(now.id().toStdString()); });
    QObject::connect(&change, &DayChange::dayChanged, &change, [&] { log.emplace_back("day"); });
    change.start();
    link("Asia/Tokyo");
    QCoreApplication::processEvents();
    EXPECT_THAT(log, testing::IsEmpty());
    link("America/Sao_Paulo");
    ASSERT_TRUE(eventually([&] { return log.size() >= 2; }));
    QFile::remove(file);
    link("Europe/Lisbon");
    ASSERT_TRUE(eventually([&] { return log.size() >= 4; }));
    EXPECT_THAT(log, testing::ElementsAre("America/Sao_Paulo", "day", "Europe/Lisbon", "day"));
}

} // namespace
