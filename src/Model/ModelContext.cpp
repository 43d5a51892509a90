#include "Model/ModelContext.h"

#include "Model/DayActivity.h"
#include "Model/Schema.h"
#include "Model/Sqlite.h"

#include <cmath>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

namespace orvanta {

namespace {

/// Gives out the primary keys of new rows of one table, in the transaction that inserts them.
class PrimaryKeys {
public:
    PrimaryKeys(Statement& read, Statement& write, int entity)
        : read_(read)
        , write_(write)
        , entity_(entity) {}

    /// Looks up the last one given out, which the rows themselves may be the only ones to know.
    void read() {
        read_.bind(1, qint64{entity_});
        last_ = read_.step() ? read_.integer(0) : 0;
        read_.reset();
    }

    qint64 next() {
        if (last_ == 0) {
            read();
        }
        return ++last_;
    }

    void write() {
        if (last_ != 0) {
            write_.bind(1, last_).bind(2, qint64{entity_}).run();
        }
    }

private:
    Statement& read_;
    Statement& write_;
    int entity_;
    qint64 last_ = 0;
};

/// What a foreign store holds for a date need not be one.
std::optional<Date> finiteDate(double sinceReference) {
    return std::isfinite(sinceReference) ? std::optional(Date{sinceReference}) : std::nullopt;
}

const int activityEntity = 1;
const int dayActivityEntity = 2;

} // namespace

struct ModelContext::Statements {
    explicit Statements(Database& database)
        : transaction(database)
        , insertActivity(database,
                         "INSERT INTO ZACTIVITY (Z_PK, Z_ENT, Z_OPT, ZLASTUSEDAT, ZSECONDS, "
                         "ZCATEGORYVALUE, ZPREVIOUSCATEGORYVALUE, ZKEY, ZNAME) "
                         "VALUES (?5, 1, 1, ?1, ?2, ?3, ?4, ?6, ?7)")
        , updateActivity(database,
                         "UPDATE ZACTIVITY SET Z_OPT = IFNULL(Z_OPT, 0) + 1, ZLASTUSEDAT = ?1, "
                         "ZSECONDS = ?2, ZCATEGORYVALUE = ?3, ZPREVIOUSCATEGORYVALUE = ?4 "
                         "WHERE Z_PK = ?5")
        , insertDayActivity(database, "INSERT INTO ZDAYACTIVITY (Z_PK, Z_ENT, Z_OPT, ZSECONDS, "
                                      "ZID, ZDAY, ZKEY) VALUES (?3, 2, 1, ?1, ?2, ?4, ?5)")
        , updateDayActivity(database, "UPDATE ZDAYACTIVITY SET Z_OPT = IFNULL(Z_OPT, 0) + 1, "
                                      "ZSECONDS = ?1 WHERE Z_PK = ?2")
        , findDayActivity(database, "SELECT Z_PK, ZSECONDS FROM ZDAYACTIVITY WHERE ZID = ?1")
        , deleteDayActivities(database, "DELETE FROM ZDAYACTIVITY")
        // The highest key ever given out; a table that is ahead of its counter is believed.
        , lastActivityKey(database,
                          "SELECT MAX(IFNULL((SELECT Z_MAX FROM Z_PRIMARYKEY WHERE Z_ENT = ?1), 0),"
                          " IFNULL((SELECT MAX(Z_PK) FROM ZACTIVITY), 0))")
        , lastDayActivityKey(
              database, "SELECT MAX(IFNULL((SELECT Z_MAX FROM Z_PRIMARYKEY WHERE Z_ENT = ?1), 0),"
                        " IFNULL((SELECT MAX(Z_PK) FROM ZDAYACTIVITY), 0))")
        , writeLastKey(database, "UPDATE Z_PRIMARYKEY SET Z_MAX = ?1 WHERE Z_ENT = ?2") {}

    Transaction::Statements transaction;
    Statement insertActivity;
    Statement updateActivity;
    Statement insertDayActivity;
    Statement updateDayActivity;
    Statement findDayActivity;
    Statement deleteDayActivities;
    Statement lastActivityKey;
    Statement lastDayActivityKey;
    Statement writeLastKey;
};

ModelContext::ModelContext(Database& database)
    : database_(database)
    , activities_(keys_) {}

ModelContext::~ModelContext() = default;

void ModelContext::fetchActivities() {
    areActivitiesUnread_ = true;
    std::vector<ActivityList::Stored> records;
    Statement rows(database_, "SELECT Z_PK, ZKEY, ZNAME, ZCATEGORYVALUE, ZSECONDS, ZLASTUSEDAT, "
                              "ZPREVIOUSCATEGORYVALUE FROM ZACTIVITY ORDER BY Z_PK");
    while (rows.step()) {
        records.push_back(
            {.primaryKey = rows.integer(0),
             .key = rows.text(1),
             .name = rows.text(2),
             .categoryValue = rows.text(3),
             .seconds = rows.real(4),
             .lastUsedAt = rows.isNumber(5) ? finiteDate(rows.real(5)) : std::nullopt,
             .previousCategoryValue = rows.isNull(6) ? std::nullopt : std::optional(rows.text(6))});
    }
    for (const ActivityList::Stored& record : records) {
        activities_.append(record);
    }
    areActivitiesUnread_ = false;
}

void ModelContext::fetchDayActivities(Day since) {
    // The unique index on ZID, which begins with the day, finds them; the + keeps SQLite from going
    // through the whole table instead because that is in order.
    auto recent = readDayActivities("SELECT ZDAY, ZKEY, ZSECONDS FROM ZDAYACTIVITY "
                                    "WHERE ZID >= ?1 ORDER BY +Z_PK",
                                    since);
    dayActivities_.loadRecent(std::move(recent), since,
                              [this, since] { return readOlderDayActivities(since); });
}

std::vector<DayActivityList::Stored> ModelContext::readOlderDayActivities(Day since) {
    try {
        // The + keeps SQLite from the index, through which it would fetch row by row what it finds
        // faster in the order of the table.
        return readDayActivities("SELECT ZDAY, ZKEY, ZSECONDS FROM ZDAYACTIVITY "
                                 "WHERE +ZID < ?1 OR ZID IS NULL ORDER BY Z_PK",
                                 since);
    } catch (const ModelError& error) {
        historyError_ = error;
        return {};
    }
}

std::vector<DayActivityList::Stored> ModelContext::readDayActivities(const char* sql, Day since) {
    std::vector<DayActivityList::Stored> records;
    // Each day and key is read once, not for each of the many records that name it.
    std::string dayText;
    std::optional<Day> day;
    std::unordered_map<std::string, KeyId> seen;
    std::string key;

    Statement rows(database_, sql);
    rows.bind(1, since.text());
    while (rows.step()) {
        if (const QByteArrayView text = rows.utf8(0); text != QByteArrayView(dayText)) {
            dayText.assign(text.begin(), text.end());
            day = Day::fromText(text);
        }
        if (!day) {
            continue; // It can stand in no history; the store keeps it as it is.
        }
        const QByteArrayView utf8 = rows.utf8(1);
        key.assign(utf8.begin(), utf8.end());
        auto found = seen.find(key);
        if (found == seen.end()) {
            found = seen.emplace(key, keys_.intern(QString::fromUtf8(utf8))).first;
        }
        records.push_back({*day, found->second, rows.real(2)});
    }
    return records;
}

void ModelContext::save() {
    if (!hasChanges()) {
        return;
    }
    if (areActivitiesUnread_) {
        fetchActivities();
    }
    if (!statements_) {
        statements_ = std::make_unique<Statements>(database_);
    }
    Statements& s = *statements_;
    PrimaryKeys activityKeys(s.lastActivityKey, s.writeLastKey, activityEntity);
    PrimaryKeys dayActivityKeys(s.lastDayActivityKey, s.writeLastKey, dayActivityEntity);
    std::vector<std::pair<qint64*, qint64>> given;
    struct GivenDay {
        DayActivityList::Place place;
        qint64 primaryKey;
        double seconds;
    };
    std::vector<GivenDay> givenDays;

    Transaction transaction(s.transaction);
    for (const auto& [activity, primaryKey] : activities_.pending()) {
        const auto bindChangeable = [&saved = activity](Statement& statement) -> Statement& {
            statement.bind(1, saved.lastUsedAt())
                .bind(2, saved.seconds())
                .bind(3, saved.categoryValue());
            return saved.previousCategoryValue() ? statement.bind(4, *saved.previousCategoryValue())
                                                 : statement.bindNull(4);
        };
        if (primaryKey != 0) {
            bindChangeable(s.updateActivity).bind(5, primaryKey).run();
        }
        // A row that another program removed is written anew.
        if (primaryKey == 0 || database_.changes() == 0) {
            const qint64 key = activityKeys.next();
            bindChangeable(s.insertActivity)
                .bind(5, key)
                .bind(6, activity.key())
                .bind(7, activity.name())
                .run();
            given.emplace_back(&primaryKey, key);
        }
    }
    if (dayActivities_.isCleared()) {
        dayActivityKeys.read();
        s.deleteDayActivities.run();
        dayActivityRows_.clear();
    }
    const auto updateDay = [&](qint64 primaryKey, double seconds) {
        s.updateDayActivity.bind(1, seconds).bind(2, primaryKey).run();
        return database_.changes() > 0; // Another program may have removed the row.
    };
    for (const DayActivityList::Place place : dayActivities_.pending()) {
        double seconds = dayActivities_.seconds(place.day, place.key).value_or(0);
        const auto row = dayActivityRows_.find(place);
        if (row != dayActivityRows_.end() && updateDay(row->second, seconds)) {
            continue;
        }
        const QString& key = keys_.text(place.key);
        const QString id = DayActivity::id(place.day, key);
        s.findDayActivity.bind(1, id);
        const bool exists = s.findDayActivity.step();
        const qint64 primaryKey = exists ? s.findDayActivity.integer(0) : dayActivityKeys.next();
        if (exists && dayActivities_.isNew(place)) {
            seconds += s.findDayActivity.real(1);
        }
        s.findDayActivity.reset();
        if (exists) {
            updateDay(primaryKey, seconds);
        } else {
            s.insertDayActivity.bind(1, seconds)
                .bind(2, id)
                .bind(3, primaryKey)
                .bind(4, place.day.text())
                .bind(5, key)
                .run();
        }
        givenDays.push_back({place, primaryKey, seconds});
    }
    activityKeys.write();
    dayActivityKeys.write();
    transaction.commit();

    for (const auto& [primaryKey, value] : given) {
        *primaryKey = value;
    }
    for (const auto& [place, primaryKey, seconds] : givenDays) {
        dayActivityRows_[place] = primaryKey;
        dayActivities_.setSeconds(place.day, place.key, seconds);
    }
    activities_.settle();
    dayActivities_.settle();
}

} // namespace orvanta
