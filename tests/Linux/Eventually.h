#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

namespace orvanta {

/// Runs the main loop until the condition holds; false if it does not within twenty seconds.
template <typename Condition>
bool eventually(Condition condition) {
    constexpr qint64 patience = 20'000; // ms
    QTimer look;                        // for conditions that no event of ours announces
    look.start(10);
    QElapsedTimer elapsed;
    elapsed.start();
    while (!condition()) {
        if (elapsed.hasExpired(patience)) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace orvanta
