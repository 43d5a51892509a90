#pragma once

#include "Linux/MainLoop/ReadableNotifier.h"

#include <QByteArray>
#include <QObject>
#include <QTimeZone>

#include <chrono>
#include <functional>
#include <memory>

namespace orvanta {

/// The first moment after `now` at which clocks in this zone show a later date: midnight, or the
/// moment that skips it.
std::chrono::sys_seconds nextDay(std::chrono::sys_seconds now, const QTimeZone& zone);

/// Notices that the local date may have become another: at midnight, when the clock is set, and
/// when the time zone changes. Sleeps in between: the kernel's own clock wakes it
/// (timerfd_create(2), TFD_TIMER_CANCEL_ON_SET), also when midnight passed while the machine was
/// suspended.
class DayChange final : public QObject {
    Q_OBJECT

public:
    struct Surroundings {
        /// The time zone as it is now set; asked anew each time.
        std::function<QTimeZone()> zone;
        /// The file whose directory changes when the zone does, usually /etc/localtime.
        QByteArray zoneFile;
    };

    explicit DayChange(Surroundings surroundings);
    ~DayChange() override;
    DayChange(const DayChange&) = delete;
    DayChange& operator=(const DayChange&) = delete;

    void start();

Q_SIGNALS:
    /// Comes before the `dayChanged` that follows from it.
    void timeZoneChanged(const QTimeZone& zone);
    void dayChanged();

private:
    void arm();
    void clockMoved();
    void zoneFileMoved();

    Surroundings surroundings_;
    QTimeZone zone_;
    int timer_ = -1;
    int watch_ = -1;
    std::unique_ptr<ReadableNotifier> timerReadable_;
    std::unique_ptr<ReadableNotifier> watchReadable_;
};

} // namespace orvanta
