#include "Eventually.h"
#include "Linux/Presence/DayChange.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace orvanta {

namespace {

std::chrono::sys_seconds utc(const char* text) {
    const auto moment = QDateTime::fromString(QLatin1String(text), Qt::ISODate);
    EXPECT_TRUE(moment.isValid()) << text;
    return std::chrono::sys_seconds(std::chrono::seconds(moment.toSecsSinceEpoch()));
}

TEST(NextDayTest, IsTheFirstMomentOfALaterDate) {
    struct Row {
        const char* zone;
        const char* now;
        const char* next;
    };
    const std::vector<Row> rows{
        {"UTC", "2024-02-28T23:59:59Z", "2024-02-29T00:00:00Z"},
        {"UTC", "2024-02-29T00:00:00Z", "2024-03-01T00:00:00Z"},
        {"UTC", "1969-12-31T12:00:00Z", "1970-01-01T00:00:00Z"},
        {"America/Sao_Paulo", "2024-06-01T02:59:59Z", "2024-06-01T03:00:00Z"},
        {"America/Sao_Paulo", "2024-06-01T03:00:00Z", "2024-06-02T03:00:00Z"},
        // Midnight is skipped: 23:59:59 is followed by 01:00.
        {"America/Sao_Paulo", "2018-11-03T12:00:00Z", "2018-11-04T03:00:00Z"},
        {"America/Sao_Paulo", "2018-11-04T03:00:00Z", "2018-11-05T02:00:00Z"},
        // 23:59:59 is followed by 23:00 of the same day.
        {"America/Sao_Paulo", "2018-02-17T12:00:00Z", "2018-02-18T03:00:00Z"},
        {"America/Sao_Paulo", "2018-02-18T02:30:00Z", "2018-02-18T03:00:00Z"},
        // Days of 23 and 25 hours, changed in the small hours.
        {"Europe/Lisbon", "2024-03-31T00:00:00Z", "2024-03-31T23:00:00Z"},
        {"Europe/Lisbon", "2024-10-26T23:00:00Z", "2024-10-28T00:00:00Z"},
        // Midnight comes twice: the first counts, and the second begins no day.
        {"Atlantic/Azores", "2024-10-26T12:00:00Z", "2024-10-27T00:00:00Z"},
        {"Atlantic/Azores", "2024-10-27T00:30:00Z", "2024-10-28T01:00:00Z"},
        // A whole day is skipped.
        {"Pacific/Apia", "2011-12-30T09:00:00Z", "2011-12-30T10:00:00Z"},
    };
    for (const Row& row : rows) {
        const QTimeZone zone(row.zone);
        ASSERT_TRUE(zone.isValid()) << row.zone;
        EXPECT_EQ(nextDay(utc(row.now), zone), utc(row.next)) << row.zone << ' ' << row.now;
    }
}

class DayChangeTest : public testing::Test {
protected:
    void watch() {
        change = std::make_unique<DayChange>(
            DayChange::Surroundings{[this] { return zone; }, QFile::encodeName(file)});
        QObject::connect(change.get(), &DayChange::timeZoneChanged, change.get(),
                         [this](const QTimeZone& now) { log.push_back(now.id().toStdString()); });
        QObject::connect(change.get(), &DayChange::dayChanged, change.get(),
                         [this] { log.emplace_back("day"); });
        change->start();
    }
    /// As timedatectl does it.
    void link(const char* target) const {
        const QByteArray fresh = QFile::encodeName(file + QStringLiteral(".new"));
        ASSERT_EQ(::symlink(target, fresh.constData()), 0);
        ASSERT_EQ(::rename(fresh.constData(), QFile::encodeName(file).constData()), 0);
    }

    QTemporaryDir directory;
    QString file = directory.filePath(QStringLiteral("localtime"));
    QTimeZone zone = QTimeZone("Asia/Tokyo");
    std::unique_ptr<DayChange> change;
    std::vector<std::string> log;
};

TEST_F(DayChangeTest, MidnightComesByTheKernelsClock) {
    // A zone in which the day ends within two seconds.
    constexpr int aDay = 86400;
    const auto clock = [] {
        return QDateTime::currentSecsSinceEpoch();
    };
    int offset = static_cast<int>(aDay - 2 - clock() % aDay);
    if (offset > QTimeZone::MaxUtcOffsetSecs) {
        offset -= aDay;
    }
    zone = QTimeZone(offset);
    const qint64 midnight = clock() - clock() % aDay + (offset > 0 ? aDay - offset : -offset);
    watch();
    EXPECT_TRUE(log.empty());
    ASSERT_TRUE(eventually([&] { return !log.empty(); }));
    EXPECT_THAT(log, testing::ElementsAre("day"));
    EXPECT_GE(clock(), midnight);
    EXPECT_LE(clock(), midnight + 5);
}

TEST_F(DayChangeTest, ANewZoneIsToldBeforeTheDayIsAnother) {
    link("/usr/share/zoneinfo/Asia/Tokyo");
    watch();
    zone = QTimeZone("America/Sao_Paulo");
    link("/usr/share/zoneinfo/America/Sao_Paulo");
    ASSERT_TRUE(eventually([&] { return log.size() >= 2; }));
    zone = QTimeZone("Europe/Lisbon");
    QFile::remove(file);
    link("/usr/share/zoneinfo/Europe/Lisbon");
    ASSERT_TRUE(eventually([&] { return log.size() >= 4; }));
    EXPECT_THAT(log, testing::ElementsAre("America/Sao_Paulo", "day", "Europe/Lisbon", "day"));
}

TEST_F(DayChangeTest, OtherFilesThereAreNoNewsNorIsAMissingDirectory) {
    watch();
    for (int i = 0; i < 2000; ++i) { // More than one read takes.
        QFile other(directory.filePath(QStringLiteral("other%1").arg(i)));
        ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    }
    QCoreApplication::processEvents();
    EXPECT_TRUE(log.empty());
    zone = QTimeZone("Europe/Lisbon");
    link("/usr/share/zoneinfo/Europe/Lisbon");
    ASSERT_TRUE(eventually([&] { return log.size() >= 2; }));

    file = QStringLiteral("/no/such/directory/localtime");
    watch();
    QCoreApplication::processEvents();
    EXPECT_EQ(log.size(), 2U);
}

} // namespace

} // namespace orvanta
