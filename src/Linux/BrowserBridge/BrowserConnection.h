#pragma once

#include "Linux/BrowserBridge/FrameReader.h"
#include "Linux/BrowserBridge/Message.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace orvanta {

class ReadableNotifier;

/// The line to one profile of a browser, through the host that the browser started for it.
class BrowserConnection final : public QObject {
    Q_OBJECT

public:
    /// What the profile said last.
    struct State {
        std::optional<QString> origin; ///< "http://" or "https://" and a host name
        bool focused = false;          ///< whether one of its windows has the focus
        double saidAt = 0;
        double changedAt = 0;                ///< since when the two above are what they are
        std::optional<double> lastFocusedAt; ///< when it said so last; absent when it never did
    };
    /// Seconds, as `saidAt` counts them.
    using Clock = std::function<double()>;

    /// Takes the socket over. `browserProcess` is the process that started the host.
    BrowserConnection(int socket, qint64 browserProcess, Clock now);
    ~BrowserConnection() override;
    BrowserConnection(const BrowserConnection&) = delete;
    BrowserConnection& operator=(const BrowserConnection&) = delete;

    qint64 browserProcess() const { return browserProcess_; }
    const std::optional<State>& state() const { return state_; }

    /// Whether the profile may say anything. What it says nevertheless is dropped unread.
    bool isHeard() const { return isHeard_ == true; }
    /// Tells the profile so, which speaks up at once if it may. It is silent until then.
    void setHeard(bool heard);

    /// Asks for the state, which is said like any other. Ends the connection, but not within the
    /// call, when nobody takes the question.
    void ask();

Q_SIGNALS:
    void saidSomething();
    /// Comes once, when nothing more can be said or heard: in English, for a log.
    void ended(const QString& reason);

private:
    void send(const QByteArray& frame);
    void receive();
    void hear(std::string_view text);
    void end(const QString& reason);

    int socket_;
    qint64 browserProcess_;
    Clock now_;
    std::unique_ptr<ReadableNotifier> notifier_;
    FrameReader frames_;
    std::optional<bool> isHeard_; ///< absent until the profile is told
    std::optional<State> state_;
    int question_ = 0;
    // Of the messages in this second.
    double second_ = 0;
    int heard_ = 0;
};

} // namespace orvanta
