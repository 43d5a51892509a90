#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>

#include <cstdint>
#include <memory>
#include <optional>

namespace orvanta {

class ReadableNotifier;

/// The line to sway's interface for other programs: messages of JSON text, each after a header of
/// "i3-ipc", its length and its type (sway-ipc(7)).
class SwayConnection final : public QObject {
    Q_OBJECT

public:
    enum Type : std::uint32_t { RunCommand = 0, GetWorkspaces = 1, GetOutputs = 3, GetTree = 4 };

    /// `path` as in $SWAYSOCK.
    explicit SwayConnection(const QByteArray& path);
    ~SwayConnection() override;
    SwayConnection(const SwayConnection&) = delete;
    SwayConnection& operator=(const SwayConnection&) = delete;

    /// False when nobody listens there, and from `ended` on.
    bool isOpen() const { return socket_ >= 0; }

    /// Ends the connection, but not within the call, when it is not taken.
    void send(Type type, const QByteArray& text = {});
    /// Sends, and waits for the answer until the deadline at most. What else comes meanwhile is
    /// `received` as ever.
    std::optional<QByteArray> ask(Type type, QDeadlineTimer deadline);

Q_SIGNALS:
    /// An answer. Not within `send`.
    void received(std::uint32_t type, const QByteArray& text);
    /// Comes once: sway has gone, or sends what is none of its messages.
    void ended();

private:
    void receive();
    bool cut();
    void end();

    int socket_ = -1;
    std::unique_ptr<ReadableNotifier> readable_;
    QByteArray bytes_; ///< that have come and make no message yet
};

} // namespace orvanta
