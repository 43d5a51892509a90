#include "Linux/MainLoop/QtMainLoop.h"

#include <QBasicTimer>
#include <QObject>

#include <algorithm>
#include <limits>
#include <utility>

namespace orvanta {

namespace {

/// A duration in milliseconds, rounded up, and within what a timer of Qt can be asked for in steps.
qint64 milliseconds(MainLoop::Duration duration) {
    constexpr MainLoop::Duration centuries{1e10};
    return std::chrono::ceil<std::chrono::milliseconds>(std::min(duration, centuries)).count();
}

/// Takes the event itself: a QTimer would make a signal of it, every second.
class QtTimer final : public QObject, public MainLoopTimer {
public:
    QtTimer(qint64 delay, bool repeats, Qt::TimerType type, MainLoop::Action action)
        : delay_(delay)
        , repeats_(repeats)
        , type_(type)
        , rest_(delay)
        , action_(std::make_shared<MainLoop::Action>(std::move(action))) {
        step();
    }

private:
    static constexpr qint64 longestStep = std::numeric_limits<int>::max();

    void step() {
        const qint64 next = std::min(rest_, longestStep);
        rest_ -= next;
        timer_.start(static_cast<int>(next), type_, this); // Repeats until it is stopped.
    }

    void timerEvent(QTimerEvent* /*event*/) override {
        if (rest_ > 0) {
            step();
            return;
        }
        if (!repeats_) {
            timer_.stop();
        } else if (delay_ > longestStep) {
            rest_ = delay_;
            step();
        }
        const auto action = action_; // The action may destroy this timer.
        (*action)();
    }

    qint64 delay_;
    bool repeats_;
    Qt::TimerType type_;
    qint64 rest_;
    std::shared_ptr<MainLoop::Action> action_;
    QBasicTimer timer_;
};

} // namespace

std::unique_ptr<MainLoopTimer> QtMainLoop::every(Duration interval, Duration tolerance,
                                                 Action action) {
    constexpr double coarseness = 0.05; // what Qt documents for Qt::CoarseTimer
    const auto type = tolerance >= interval * coarseness ? Qt::CoarseTimer : Qt::PreciseTimer;
    return std::make_unique<QtTimer>(std::max<qint64>(1, milliseconds(interval)), true, type,
                                     std::move(action));
}

std::unique_ptr<MainLoopTimer> QtMainLoop::once(Duration delay, Action action) {
    return std::make_unique<QtTimer>(std::max<qint64>(0, milliseconds(delay)), false,
                                     Qt::PreciseTimer, std::move(action));
}

} // namespace orvanta
