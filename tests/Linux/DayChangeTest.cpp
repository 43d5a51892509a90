#include "Linux/Presence/DayChange.h"

#include "Eventually.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <unistd.h>

#include <string>
#include <vector>

using namespace orvanta;
using namespace Qt::StringLiterals;

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
    for (const Row& row : {
             Row{"UTC", u"2024-02-28T23:59:59Z"_s, u"2024-02-29T00:00:00Z"_s},
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
             {"Pacific/Apia", u"2011-12-30T09:00:00Z"_s, u"2011-12-30T10:00:00Z"_s},
         }) {
        EXPECT_EQ(nextDay(utc(row.now), QTimeZone(row.zone)), utc(row.next))
            << row.zone << ' ' << qPrintable(row.now);
    }
}

class DayChangeTest : public testing::Test {
protected:
    void watch() {
        QObject::connect(&change, &DayChange::timeZoneChanged, &change,
                         [this](const QTimeZone& now) { log.push_back(now.id().toStdString()); });
        QObject::connect(&change, &DayChange::dayChanged, &change,
                         [this] { log.emplace_back("day"); });
        change.start();
    }
    /// As timedatectl does it.
    void link(const QString& target) const {
        ASSERT_TRUE(QFile::link(target, file + u".new"_s));
        ASSERT_EQ(::rename(qPrintable(file + u".new"_s), qPrintable(file)), 0);
    }

    QTemporaryDir directory;
    QString file = directory.filePath(u"localtime"_s);
    QTimeZone zone = QTimeZone("Asia/Tokyo");
    DayChange change{DayChange::Surroundings{[this] { return zone; }, QFile::encodeName(file)}};
    std::vector<std::string> log;
};

TEST_F(DayChangeTest, MidnightComesByTheKernelsClock) {
    constexpr qint64 aDay = 86400;
    const qint64 midnight = QDateTime::currentSecsSinceEpoch() + 2;
    // A zone in which it is midnight then, east of Greenwich or west.
    const qint64 east = aDay - midnight % aDay;
    zone = QTimeZone(static_cast<int>(east > QTimeZone::MaxUtcOffsetSecs ? east - aDay : east));
    DayChange dayChange{DayChange::Surroundings{[this] { return zone; }, {}}};
    bool changed = false;
    QObject::connect(&dayChange, &DayChange::dayChanged, &dayChange, [&] { changed = true; });
    dayChange.start();
    ASSERT_TRUE(eventually([&] { return changed; }));
    EXPECT_GE(QDateTime::currentSecsSinceEpoch(), midnight);
    EXPECT_LE(QDateTime::currentSecsSinceEpoch(), midnight + 5);
}

TEST_F(DayChangeTest, ANewZoneIsToldBeforeTheDayIsAnother) {
    link(u"/usr/share/zoneinfo/Asia/Tokyo"_s);
    watch();
    link(u"/usr/share/zoneinfo/Japan"_s); // The same zone.
    zone = QTimeZone("America/Sao_Paulo");
    link(u"/usr/share/zoneinfo/America/Sao_Paulo"_s);
    ASSERT_TRUE(eventually([&] { return log.size() >= 2; }));
    zone = QTimeZone("Europe/Lisbon");
    QFile::remove(file);
    link(u"/usr/share/zoneinfo/Europe/Lisbon"_s);
    ASSERT_TRUE(eventually([&] { return log.size() >= 4; }));
    EXPECT_THAT(log, testing::ElementsAre("America/Sao_Paulo", "day", "Europe/Lisbon", "day"));
}

} // namespace
