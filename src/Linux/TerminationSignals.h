#pragma once

#include "Linux/MainLoop/ReadableNotifier.h"

#include <QObject>

namespace orvanta {

/// Turns SIGTERM, SIGINT and SIGHUP, with which a session or a person ends a program, into a Qt
/// signal on the main thread, so that the program can end in good order. One a process.
class TerminationSignals final : public QObject {
    Q_OBJECT

public:
    TerminationSignals();
    ~TerminationSignals() override;
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

Q_SIGNALS:
    void received();

private:
    ReadableNotifier notifier_;
};

} // namespace orvanta
