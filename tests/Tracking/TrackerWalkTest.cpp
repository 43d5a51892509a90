#include "Fakes/World.h"
#include "Tracking/KeyOrder.h"
#include "Tracking/TrackingPolicy.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cmath>
#include <functional>
#include <random>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

struct Record {
    QString key;
    QString name;
    QString categoryValue;
    std::optional<QString> previous;
    double seconds = 0;
    std::optional<Date> used;
    friend bool operator==(const Record&, const Record&) = default;

    Category category() const {
        return categoryFromRawValue(categoryValue).value_or(Category::pending);
    }
    bool isIgnored() const { return category() == Category::ignored; }
};

/// The engine said plainly: it keeps no cache, is told of every event, and looks through all
/// records at every question. What is booked are multiples of an eighth of a second, so sums are
/// exact.
class PlainEngine {
public:
    explicit PlainEngine(World& world)
        : world_(world) {}

    /// What does not outlive a process.
    struct Process {
        std::optional<QString> timed;
        std::optional<QString> target; ///< whose time it is, or which browser is asked
        std::optional<QString> lastOther;
        std::optional<double> nextTick;
        bool asksSites = false, isAsking = false, inspecting = false, all = false;
        int targets = 0, askedFor = 0, failures = 0, ticks = 0, keyChanges = 0, looks = 0;
        double since = 0, retryAt = 0;
        QString status;
        std::bitset<4> away;
        std::set<QString> excluded;
    };
    Process now;
    std::vector<Record> records;
    std::map<QString, double> days;
    bool paused = false;
    bool isSaved = true;
    std::set<QString> disabled;
    Date resetDate;

    void begin() {
        now = {};
        for (Record& record : records) {
            if (record.key.startsWith(u"app:"_s) &&
                world_.workspace.components.contains(record.key.sliced(4))) {
                now.excluded.insert(record.key);
            }
            const bool wasNeutral = record.categoryValue == u"neutral"_s;
            record.categoryValue = wasNeutral ? u"ignored"_s : record.categoryValue;
            if (wasNeutral || record.previous == u"neutral"_s) {
                record.previous = u"pending"_s;
            }
            if (record.seconds > 0 && !record.used) {
                record.used = world_.date();
            }
        }
        look();
    }

    void look() {
        beginDay();
        const auto front = inFront();
        const bool isBrowser = front && world_.browsers.known.contains(*front);
        const bool asksSites = isBrowser && !disabled.contains(*front);
        now.lastOther = front ? front : now.lastOther;
        const bool isNobody =
            paused || now.away.any() || !front || (!asksSites && isIgnored(u"app:"_s + *front));
        if (isNobody || (isBrowser && !asksSites)) {
            const bool saves = now.timed || !isNobody;
            aim(std::nullopt, false);
            now.status = isNobody ? QString() : u"Ative a identificação de sites nos Ajustes"_s;
            time(std::nullopt);
            saves ? save() : void();
        } else if (now.target == front) {
            time(now.timed);
        } else {
            aim(front, asksSites);
            now.failures = 0;
            now.retryAt = 0;
            now.status.clear();
            time(asksSites ? std::nullopt : std::optional(u"app:"_s + *front));
            ask();
            save();
        }
        if (paused || now.away.any() || !(now.timed || now.asksSites)) {
            now.nextTick.reset();
        } else if (!now.nextTick) {
            now.nextTick = world_.loop.now() + 1;
        }
    }
    void tick() {
        ++*now.nextTick;
        look();
        ask();
        if (++now.ticks % 5 == 0) {
            save();
        }
    }
    void stop() {
        aim(std::nullopt, false);
        time(std::nullopt);
        save();
        now.nextTick.reset();
    }
    void ask() {
        if (now.asksSites && !now.isAsking && !paused && now.away.none() &&
            world_.uptime() >= now.retryAt) {
            now.isAsking = true;
            now.askedFor = now.targets;
        }
    }
    void answered(const std::optional<QString>& site, const QString& error) {
        now.isAsking = false;
        if (now.askedFor != now.targets || paused || now.away.any() || inFront() != now.target) {
            return;
        }
        now.failures = site ? 0 : now.failures + 1;
        now.retryAt =
            site ? 0 : world_.uptime() + std::min(30.0, std::pow(2, std::min(now.failures, 9)));
        now.status = error;
        const auto key = site && !isIgnored(u"site:"_s + *site) ? std::optional(u"site:"_s + *site)
                                                                : std::nullopt;
        if (key != now.timed) {
            time(key);
            save();
        }
    }
    void classify(std::size_t row, Category category) {
        const bool wasIgnored = records[row].isIgnored();
        time(now.timed);
        if (category == Category::ignored && !wasIgnored) {
            records[row].previous = records[row].categoryValue;
        }
        records[row].categoryValue = rawValue(category);
        look();
        if (wasIgnored && category != Category::ignored) {
            ask();
        }
        save();
    }
    void resume(std::size_t row) {
        if (records[row].isIgnored()) {
            const auto before = categoryFromRawValue(records[row].previous.value_or(QString()));
            classify(row, before == Category::ignored ? Category::pending
                                                      : before.value_or(Category::pending));
        }
    }
    void inspect(bool inspecting) {
        now.inspecting = inspecting;
        look();
        inspecting ? ask() : void();
    }
    void reset() {
        now.target.reset();
        time(std::nullopt);
        for (Record& record : records) {
            record.seconds = 0;
            record.used.reset();
        }
        resetDate = world_.date();
        look();
        save();
    }
    void clearHistory() {
        time(now.timed);
        days.clear();
        save();
    }
    void save() {
        if (now.timed) {
            find(*now.timed)->used = world_.date();
        }
        isSaved = true;
    }

    /// An open panel waits for the moment at which something is no longer brief enough to be
    /// listed.
    std::size_t timers() const {
        return now.nextTick || (now.inspecting && !now.all &&
                                std::ranges::any_of(records, [this](const Record& record) {
                                    return isEligible(record) && !record.isIgnored() &&
                                           record.seconds > 0 && record.seconds < 60 &&
                                           isRecent(record);
                                }));
    }
    bool isEligible(const Record& record) const {
        const QString& key = record.key;
        return !key.startsWith(u"unknown:"_s) && key != u"app:browser"_s &&
               key != u"app:com.apple.finder"_s && !now.excluded.contains(key);
    }
    double total(Category category) const {
        double sum = 0;
        for (const Record& record : records) {
            sum += isEligible(record) && record.category() == category ? record.seconds : 0;
        }
        return sum;
    }
    std::vector<std::size_t> sorted() const {
        auto rows = inOrder([this](const Record& record) {
            const bool isTimed = now.timed == record.key;
            return isEligible(record) && !record.isIgnored() && (record.seconds > 0 || isTimed) &&
                   (now.all || isTimed || record.seconds >= 60 || isRecent(record));
        });
        const auto timed = std::ranges::find_if(
            rows, [this](std::size_t row) { return now.timed == records[row].key; });
        if (timed != rows.end()) {
            std::rotate(rows.begin(), timed, timed + 1);
        }
        return rows;
    }
    std::vector<std::size_t> unmonitored() const {
        return inOrder(
            [this](const Record& record) { return isEligible(record) && record.isIgnored(); });
    }
    std::map<QString, DayTotals> dayTotals() {
        std::map<QString, DayTotals> result;
        for (const auto& [id, seconds] : days) {
            const Record* record = find(id.section(u'|', 1));
            if (!record || !isEligible(*record) || record->isIgnored() ||
                record->category() == Category::neutral) {
                continue;
            }
            DayTotals& totals = result[id.section(u'|', 0, 0)];
            (record->category() == Category::production    ? totals.production
             : record->category() == Category::consumption ? totals.consumption
                                                           : totals.pending) += seconds;
        }
        return result;
    }

private:
    Record* find(const QString& key) {
        const auto found = std::ranges::find(records, key, &Record::key);
        return found == records.end() ? nullptr : &*found;
    }
    bool isIgnored(const QString& key) {
        const Record* record = find(key);
        return record && record->isIgnored();
    }
    bool isRecent(const Record& record) const {
        return record.used && world_.date() - *record.used < 300;
    }
    std::optional<QString> inFront() {
        if (!world_.workspace.front) {
            return std::nullopt;
        }
        const QString id = world_.workspace.front->bundleIdentifier;
        if (id == world_.workspace.ownBundleIdentifier()) {
            return now.inspecting ? now.lastOther : std::nullopt;
        }
        if (world_.workspace.components.contains(id)) {
            now.excluded.insert(u"app:"_s + id);
            return std::nullopt;
        }
        return id;
    }
    void aim(const std::optional<QString>& target, bool asksSites) {
        now.target = target;
        now.asksSites = asksSites;
        ++now.targets;
    }
    void beginDay() {
        const Date today = world_.calendar.startOfDay(world_.date());
        if (resetDate < today) {
            time(now.timed);
            for (Record& record : records) {
                const auto day = days.find(DayActivity::id(world_.calendar.day(today), record.key));
                record.seconds = day == days.end() ? 0 : day->second;
            }
            resetDate = today;
            save();
        }
    }
    /// Books what was timed until now, and times this from now on.
    void time(std::optional<QString> key) {
        ++now.looks;
        key = key && isIgnored(*key) ? std::nullopt : key;
        if (now.timed) {
            book(*now.timed, world_.uptime() - now.since);
        }
        if (key && !find(*key)) {
            Record& made = records.emplace_back();
            made.key = *key;
            made.name = key->section(u':', 1);
            made.categoryValue = key == u"site:youtube.com"_s ? u"consumption"_s : u"pending"_s;
        }
        if (key != now.timed) {
            for (const auto& each : {now.timed, key}) {
                if (each) {
                    find(*each)->used = world_.date();
                }
            }
            ++now.keyChanges;
        }
        now.timed = key;
        now.since = world_.uptime();
    }
    void book(const QString& key, double seconds) {
        find(key)->seconds += seconds;
        isSaved = isSaved && seconds == 0;
        for (Date end = world_.date(); seconds > 0;) {
            const Date start = world_.calendar.startOfDay(end - 0.125);
            const double portion = std::min(end - start, seconds);
            days[DayActivity::id(world_.calendar.day(start), key)] += portion;
            seconds -= portion;
            end = start;
        }
    }
    template <typename Wanted>
    std::vector<std::size_t> inOrder(const Wanted& wanted) const {
        std::vector<std::size_t> rows;
        for (std::size_t row = 0; row < records.size(); ++row) {
            if (wanted(records[row])) {
                rows.push_back(row);
            }
        }
        std::ranges::stable_sort(rows, [this](std::size_t a, std::size_t b) {
            return records[a].seconds != records[b].seconds
                       ? records[a].seconds > records[b].seconds
                       : compareKeys(records[a].key, records[b].key) < 0;
        });
        return rows;
    }

    World& world_;
};

/// A seeded walk over everything that a person and a desktop can do.
class Walk {
public:
    explicit Walk(unsigned seed)
        : random_(seed)
        , isSound_(seed % 3 != 0)
        , world_("2024-03-29T22:00:00") {
        world_.calendar = Calendar(QTimeZone("America/Sao_Paulo"), seed % 2 == 0 ? 1 : 2);
        world_.browsers.known = {u"browser"_s};
        // A record that names no activity.
        Database(world_.storePath())
            .execute("INSERT INTO ZDAYACTIVITY VALUES (99, 2, 1, 50, '2024-03-02', 'x', 'x')");
        world_.begin();
        QStringList keys{u"app:a"_s,     u"site:x.org"_s, u"unknown:?"_s, u"app:browser"_s,
                         u"app:part0"_s, u"app:part1"_s,  u"app:old"_s};
        for (int i = 0; i < 60; ++i) {
            keys.append(u"site:%1.org"_s.arg(i));
        }
        if (!isSound_) { // Keys twice, as in a damaged store, which then can never be saved.
            keys += {u"site:x.org"_s, u"app:part0"_s};
        }
        for (const QString& key : keys) {
            const QString category = upTo(3) == 0 ? u"?"_s : rawValue(anyCategory());
            const KeyId id = world_.add(key, category, static_cast<double>(upTo(130)) / 2).keyId();
            for (int i = 1; i < 4; ++i) {
                const auto month = static_cast<std::uint8_t>(1 + upTo(2));
                const auto dayOfMonth = static_cast<std::uint8_t>(1 + upTo(28));
                world_.context().dayActivities().add({2024, month, dayOfMonth}, id, i * 7.125);
            }
        }
        engine_.days = world_.days();
        for (const Activity& activity : world_.tracker->activities()) {
            engine_.records.push_back(recordOf(activity));
        }
        engine_.resetDate = world_.tracker->resetDate();
        engine_.isSaved = false;
        watch();
    }

    /// Does one thing, and says which.
    int step() {
        Tracker& tracker = *world_.tracker;
        const bool seldom = upTo(8) == 0;
        const bool often = upTo(3) > 0;
        const auto row = anyRow();
        const Activity& activity = tracker.activities()[row];
        const Category category = anyCategory();
        const bool isSelectable =
            category != engine_.records[row].category() && category <= Category::consumption;
        const std::function<void()> events[] = {
            [&] {
                const bool toggles = engine_.paused || seldom;
                engine_.paused = engine_.paused != toggles;
                toggles ? tracker.togglePause() : tracker.refreshFocus();
            },
            [&] {
                world_.stall(static_cast<double>(upTo(seldom ? 400000 : 3200)) / 8);
                tracker.refreshFocus();
            },
            [&] { leaveOrReturn(upTo(4), seldom); },
            [&] { leaveOrReturn(upTo(4), false); },
            [&] {
                world_.wallShift += seldom ? static_cast<int>(upTo(200000)) - 60000 : 0;
                world_.defaultCenter.post(Notification::CalendarDayChanged);
            },
            [&] { world_.travel(seldom ? "Asia/Tokyo" : "Europe/Berlin"); },
            [&] { world_.front(qPrintable(anyPart())); },
            [&] { world_.front("com.brindlework.orvanta"); },
            [&] { world_.nothingInFront(); },
            [&] { world_.front(qPrintable(u"new%1"_s.arg(upTo(30)))); },
            [&] { world_.front(often ? "a" : "old"); },
            [&] { world_.front("browser"); },
            [&] { world_.front("browser"); },
            [&] {
                engine_.disabled = often ? std::set<QString>() : std::set{u"browser"_s};
                tracker.setSitesEnabled(u"browser"_s, often);
            },
            [&] {
                tracker.stop();
                engine_.stop();
                world_.front("a");
                world_.pass(3);
                tracker.start();
            },
        };
        const std::function<void()> things[] = {
            [&] { (tracker.classify(activity, category), engine_.classify(row, category)); },
            [&] {
                tracker.selectClassification(activity, category);
                isSelectable ? engine_.classify(row, category) : void();
            },
            [&] { (tracker.resumeMonitoring(activity), engine_.resume(row)); },
            [&] { (tracker.resumeMonitoring(activity), engine_.resume(row)); },
            [&] { tracker.setShowAllActivities(engine_.now.all = often); },
            [&] { (tracker.setInspecting(often), engine_.inspect(often)); },
            [&] { (tracker.save(), engine_.save()); },
            [&] { often ? tracker.start() : (tracker.reset(), engine_.reset()); },
            [&] { seldom ? (tracker.clearHistory(), engine_.clearHistory()) : void(); },
            [&] { seldom&& isSound_ ? restart() : tracker.completeHistory(); },
            [&] { pass(spans[upTo(spans.size())]); },
            [&] { pass(static_cast<int>(upTo(90))); },
            // A part of the desktop comes to the front, and nobody is told.
            [&] {
                world_.workspace.front = RunningApplication{anyPart(), {}, {}, {}};
            },
            [&] { answer(); },
            [&] { answer(); },
            [&] { answer(); },
            [&] { fail(upTo(8)); },
        };
        const auto what = upTo(std::size(events) + std::size(things));
        if (what < std::size(events)) {
            events[what]();
            engine_.look();
        } else {
            things[what - std::size(events)]();
        }
        return static_cast<int>(what);
    }

    void check() {
        const Tracker& tracker = *world_.tracker;
        const PlainEngine::Process& now = engine_.now;
        EXPECT_EQ(tracker.activeKey(), now.timed);
        EXPECT_EQ(tracker.paused(), engine_.paused);
        EXPECT_EQ(tracker.browserStatus(), now.status);
        EXPECT_EQ(tracker.resetDate(), engine_.resetDate);
        EXPECT_EQ(world_.defaults->date(u"resetDate"_s), engine_.resetDate);
        EXPECT_EQ(world_.browsers.reads.size(), now.isAsking ? 1U : 0U);
        EXPECT_EQ(world_.loop.armedCount(), engine_.timers());
        EXPECT_EQ(keyChanges_, now.keyChanges);
        EXPECT_GE(tracker.revision(), static_cast<quint64>(now.looks));
        EXPECT_EQ(world_.context().hasChanges(), !engine_.isSaved || !isSound_);
        EXPECT_EQ(world_.days(), engine_.days);
        ASSERT_EQ(tracker.activities().size(), engine_.records.size());
        std::vector<std::size_t> eligible;
        for (const Activity& activity : tracker.activities()) {
            const Record& record = engine_.records[activity.row()];
            EXPECT_EQ(recordOf(activity), record) << qPrintable(record.key);
            if (engine_.isEligible(record)) {
                eligible.push_back(activity.row());
            }
        }
        for (const Category category : allCases) {
            EXPECT_EQ(tracker.total(category), engine_.total(category));
        }
        EXPECT_EQ(rowsOf(tracker.sorted()), engine_.sorted());
        EXPECT_EQ(rowsOf(tracker.classifiableActivities()), eligible);
        EXPECT_EQ(rowsOf(tracker.unmonitored()), engine_.unmonitored());
        auto expected = engine_.dayTotals();
        EXPECT_EQ(tracker.historyDayCount(), std::ssize(expected));
        for (const auto& [day, totals] : tracker.dayTotals()) {
            EXPECT_EQ(totals, expected[day.text()]);
        }
        for (const auto& week : tracker.historyWeeks(13)) {
            for (const HistoryDay& day : week) {
                EXPECT_EQ(day.totals, expected[day.id]);
            }
        }
    }

private:
    static constexpr std::array spans{0, 1, 2, 3, 5, 30, 60, 299, 300};

    std::size_t upTo(std::size_t n) { return random_() % n; }
    Category anyCategory() { return allCases[upTo(allCases.size())]; }
    /// Often what is timed or was last.
    std::size_t anyRow() {
        const auto last = std::ranges::max_element(engine_.records, {}, &Record::used);
        return upTo(2) == 0 ? upTo(engine_.records.size())
                            : static_cast<std::size_t>(last - engine_.records.begin());
    }
    QString anyPart() {
        return *world_.workspace.components.insert(u"part%1"_s.arg(upTo(3))).first;
    }
    static Record recordOf(const Activity& activity) {
        return {activity.key(),           activity.name(),
                activity.categoryValue(), activity.previousCategoryValue(),
                activity.seconds(),       activity.lastUsedAt()};
    }
    static std::vector<std::size_t> rowsOf(const std::vector<const Activity*>& activities) {
        std::vector<std::size_t> rows(activities.size());
        std::ranges::transform(activities, rows.begin(), &Activity::row);
        return rows;
    }

    void pass(int seconds) {
        const double end = world_.loop.now() + seconds;
        while (engine_.now.nextTick && *engine_.now.nextTick <= end) {
            world_.pass(*engine_.now.nextTick - world_.loop.now());
            engine_.tick();
        }
        world_.pass(end - world_.loop.now());
    }
    void leaveOrReturn(std::size_t reason, bool leaves) {
        using enum Notification;
        constexpr std::pair<Notification, Notification> ends[] = {
            {WillSleep, DidWake},
            {ScreensDidSleep, ScreensDidWake},
            {SessionDidResignActive, SessionDidBecomeActive},
            {ScreenIsLocked, ScreenIsUnlocked}};
        engine_.now.away[reason] = leaves;
        (reason < 3 ? world_.workspaceCenter : world_.distributedCenter)
            .post(leaves ? ends[reason].first : ends[reason].second);
    }
    void answer() {
        const QString sites[] = {u"x.org"_s, u"\u00e9.org"_s, u"youtube.com"_s};
        const QString& site = sites[upTo(3)];
        if (!world_.browsers.reads.empty()) {
            world_.browsers.answer(site);
            engine_.answered(site, {});
        }
    }
    /// Each time it waits longer before it asks again.
    void fail(std::size_t times) {
        for (; times > 0 && !world_.browsers.reads.empty(); --times) {
            world_.browsers.fail(u"Fora"_s);
            engine_.answered({}, u"Fora"_s);
            for (int i = 0; i < 32 && !engine_.now.isAsking; ++i) {
                pass(1);
                EXPECT_EQ(world_.browsers.reads.size(), engine_.now.isAsking ? 1U : 0U);
            }
        }
    }
    void restart() {
        const bool isKilled = upTo(2) == 0; // What was saved is there all the same.
        isKilled ? world_.tracker->save() : world_.tracker->stop();
        isKilled ? engine_.save() : engine_.stop();
        world_.tracker.reset();
        if (!world_.browsers.reads.empty()) { // Nobody is there to take it.
            world_.browsers.answer(u"late.org"_s);
        }
        world_.restart();
        engine_.begin();
        keyChanges_ = engine_.now.keyChanges;
        watch();
    }

    /// As a view does, which looks while the tracker is still at work.
    void watch() {
        const Tracker* tracker = world_.tracker.get();
        for (const auto signal :
             {&Tracker::revisionChanged, &Tracker::activeKeyChanged, &Tracker::activitiesChanged}) {
            QObject::connect(tracker, signal, tracker, [tracker] {
                tracker->total(Category::pending);
                tracker->sorted();
                tracker->dayTotals();
            });
        }
        QObject::connect(tracker, &Tracker::activeKeyChanged, tracker, [this] { ++keyChanges_; });
    }

    std::mt19937 random_;
    bool isSound_;
    int keyChanges_ = 0;
    World world_;
    PlainEngine engine_{world_};
};

} // namespace

/// Whatever happens in whatever order, the engine does what a plain one does, to the last bit.
TEST(TrackerWalkTest, DoesWhatAPlainEngineDoes) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        Walk walk(seed);
        for (int step = 0; step < 300; ++step) {
            const int what = walk.step();
            walk.check();
            ASSERT_FALSE(testing::Test::HasFailure())
                << "seed " << seed << ", step " << step << ", which was " << what;
        }
    }
}
