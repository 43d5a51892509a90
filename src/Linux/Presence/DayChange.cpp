#include "Linux/Presence/DayChange.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QTimeZone>

#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <utility>

namespace orvanta {

namespace {

QDateTime atUtc(std::chrono::sys_seconds moment) {
    return QDateTime::fromSecsSinceEpoch(moment.time_since_epoch().count(), QTimeZone::utc());
}

} // namespace

std::chrono::sys_seconds nextDay(std::chrono::sys_seconds now, const QTimeZone& zone) {
    using std::chrono::days;
    using std::chrono::seconds;
    const auto offset = [&](std::chrono::sys_seconds moment) {
        return seconds(zone.offsetFromUtc(atUtc(moment)));
    };
    // As clocks show it; not QDateTime's local midnight, which is invalid where it is skipped.
    const auto midnight = std::chrono::floor<days>(now + offset(now)) + days(1);
    // From one change of the offset to the next; more than a few do not fit before midnight.
    constexpr int enough = 8;
    auto moment = now;
    for (int i = 0; i < enough; ++i) {
        const auto due = midnight - offset(moment);
        if (due <= moment) {
            return moment; // The change has gone past midnight.
        }
        const QTimeZone::OffsetData change = zone.nextTransition(atUtc(moment));
        if (!change.atUtc.isValid()) {
            return due;
        }
        const std::chrono::sys_seconds changed(seconds(change.atUtc.toSecsSinceEpoch()));
        if (due < changed) {
            return due;
        }
        moment = changed;
    }
    return now + days(1);
}

DayChange::DayChange(Surroundings surroundings)
    : surroundings_(std::move(surroundings))
    , zone_(surroundings_.zone()) {}

DayChange::~DayChange() {
    for (const int descriptor : {timer_, watch_}) {
        if (descriptor >= 0) {
            ::close(descriptor);
        }
    }
}

/// What the kernel refuses (it has no descriptor left) is done without: the tracker compares the
/// date at each tick, too.
void DayChange::start() {
    timer_ = ::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC);
    if (timer_ >= 0) {
        timerReadable_ = std::make_unique<ReadableNotifier>(timer_);
        connect(timerReadable_.get(), &ReadableNotifier::activated, this, &DayChange::clockMoved);
        arm();
    }
    watch_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (watch_ < 0) {
        return;
    }
    const QByteArray directory =
        QFile::encodeName(QFileInfo(QFile::decodeName(surroundings_.zoneFile)).path());
    // Its directory: the file itself is usually a link that is replaced.
    if (::inotify_add_watch(watch_, directory.constData(),
                            IN_CREATE | IN_MOVED_TO | IN_CLOSE_WRITE | IN_DELETE | IN_ONLYDIR) >=
        0) {
        watchReadable_ = std::make_unique<ReadableNotifier>(watch_);
        connect(watchReadable_.get(), &ReadableNotifier::activated, this,
                &DayChange::zoneFileMoved);
    }
}

void DayChange::arm() {
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    itimerspec deadline{};
    deadline.it_value.tv_sec = nextDay(now, zone_).time_since_epoch().count();
    ::timerfd_settime(timer_, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &deadline, nullptr);
}

void DayChange::clockMoved() {
    std::uint64_t expirations = 0;
    if (::read(timer_, &expirations, sizeof expirations) < 0 && errno != ECANCELED) {
        return;
    }
    arm();
    Q_EMIT dayChanged();
}

/// Any entry may have been the one: which files a zone is read from differs between systems, and
/// reading it again costs little.
void DayChange::zoneFileMoved() {
    constexpr size_t room = 4096; // At least one event with the longest name.
    alignas(inotify_event) std::array<char, room> events;
    while (::read(watch_, events.data(), events.size()) > 0) {
    }
    QTimeZone zone = surroundings_.zone();
    if (zone == zone_) {
        return;
    }
    zone_ = std::move(zone);
    if (timer_ >= 0) {
        arm();
    }
    Q_EMIT timeZoneChanged(zone_);
    Q_EMIT dayChanged();
}

} // namespace orvanta
