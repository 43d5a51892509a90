#include "Linux/Wayland/SwayShell.h"

#include "Linux/Windows/SwayConnection.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace orvanta {

namespace {

constexpr std::chrono::milliseconds patience{100};

/// A window that has been shown is known to sway with its first picture.
constexpr MainLoop::Duration interval{0.01};
constexpr int attempts = 200;

QJsonArray array(const std::optional<QByteArray>& text) {
    return QJsonDocument::fromJson(text.value_or(QByteArray())).array();
}

QRect rectangle(const QJsonObject& of) {
    const QJsonObject rect = of.value(QLatin1String("rect")).toObject();
    return {rect.value(QLatin1String("x")).toInt(), rect.value(QLatin1String("y")).toInt(),
            rect.value(QLatin1String("width")).toInt(),
            rect.value(QLatin1String("height")).toInt()};
}

} // namespace

SwayShell::SwayShell(QByteArray socket, MainLoop& mainLoop)
    : socket_(std::move(socket))
    , mainLoop_(mainLoop) {}

SwayShell::~SwayShell() = default;

std::vector<ScreenArea> SwayShell::screenAreas() const {
    SwayConnection connection(socket_);
    const QDeadlineTimer deadline(patience);
    const QJsonArray outputs = array(connection.ask(SwayConnection::GetOutputs, deadline));
    const QJsonArray workspaces = array(connection.ask(SwayConnection::GetWorkspaces, deadline));
    std::vector<ScreenArea> areas;
    for (const auto& each : outputs) {
        const QJsonObject output = each.toObject();
        const QRect geometry = rectangle(output);
        if (!output.value(QLatin1String("active")).toBool() || geometry.isEmpty()) {
            continue;
        }
        const auto shown = std::ranges::find_if(workspaces, [&output](const auto& workspace) {
            return workspace[QLatin1String("visible")].toBool() &&
                   workspace[QLatin1String("output")] == output.value(QLatin1String("name"));
        });
        const QRect left =
            shown != workspaces.end() ? rectangle(shown->toObject()) & geometry : QRect();
        const auto place =
            output.value(QLatin1String("focused")).toBool() ? areas.begin() : areas.end();
        areas.insert(place, {geometry, left.isEmpty() ? geometry : left});
    }
    return areas;
}

void SwayShell::place(const QString& title, QPoint place) {
    timer_.reset();
    connection_ = std::make_unique<SwayConnection>(socket_);
    QObject::connect(connection_.get(), &SwayConnection::received, connection_.get(),
                     [this](std::uint32_t, const QByteArray& answer) { receive(answer); });
    command_ = QStringLiteral("[pid=%1 title=\"^%2$\"] floating enable, "
                              "move absolute position %3 px %4 px")
                   .arg(QCoreApplication::applicationPid())
                   .arg(QRegularExpression::escape(title))
                   .arg(place.x())
                   .arg(place.y())
                   .toUtf8();
    attemptsLeft_ = attempts;
    send();
}

void SwayShell::send() {
    --attemptsLeft_;
    connection_->send(SwayConnection::RunCommand, command_);
}

void SwayShell::receive(const QByteArray& answer) {
    const QJsonArray results = array(answer);
    const bool isDone = !results.isEmpty() && std::ranges::all_of(results, [](const auto& result) {
        return result[QLatin1String("success")].toBool();
    });
    if (!isDone && attemptsLeft_ > 0) {
        timer_ = mainLoop_.once(interval, [this] { send(); });
    } else { // The connection is what has just told.
        timer_ = mainLoop_.once(MainLoop::Duration::zero(), [this] { connection_.reset(); });
    }
}

} // namespace orvanta
