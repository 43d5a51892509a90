#include "Linux/BrowserBridge/BrowserTransport.h"

#include "Linux/BrowserBridge/BrowserBridge.h"
#include "Platform/Workspace.h"

#include <algorithm>
#include <utility>

namespace orvanta {

namespace {

/// Seconds after which a browser that has nothing to tell is asked for a sign of life.
constexpr double longestSilence = 60;

/// The desktop and the browser tell of one change of focus each in its own time, and so do two
/// profiles; and on the way from site to site a tab is nowhere. After these seconds of no address
/// there is none.
constexpr double settlingTime = 0.5;

/// Apple's `errAEEventNotHandled`.
constexpr std::int32_t eventNotHandled = -1708;

AppleEvent replyWith(const std::optional<QString>& origin) {
    AppleEvent reply;
    if (origin) {
        reply.parameters.insert({AppleEvent::directObject, EventDescriptor::text(*origin)});
    }
    return reply;
}

} // namespace

BrowserTransport::BrowserTransport(BrowserBridge& bridge, Surroundings surroundings)
    : bridge_(bridge)
    , surroundings_(std::move(surroundings))
    , observer_(surroundings_.workspaceNotifications.addObserver(
          Notification::DidActivateApplication, [this] { frontmostChanged(); })) {
    frontmostChanged();
    connect(&bridge, &BrowserBridge::saidSomething, this, &BrowserTransport::tryAgain);
    connect(&bridge, &BrowserBridge::connected, this, &BrowserTransport::tryAgain);
    connect(&bridge, &BrowserBridge::disconnected, this, &BrowserTransport::tryAgain);
}

BrowserTransport::~BrowserTransport() {
    surroundings_.workspaceNotifications.removeObserver(observer_);
}

void BrowserTransport::send(const AppleEvent& event, std::uint32_t /*options*/, Duration timeout,
                            Completion completion) {
    if (event.eventClass != fourCharCode("core") || event.eventID != fourCharCode("getd") ||
        !event.parameter(AppleEvent::directObject)) {
        completion(AppleEvent{
            .parameters = {{AppleEvent::errorNumber, EventDescriptor::int32(eventNotHandled)}}});
        return;
    }
    const auto request = requests_.emplace(requests_.end());
    request->process = event.target.int32Value().value_or(0);
    request->completion = std::move(completion);
    request->timeout =
        surroundings_.mainLoop.once(timeout, [this, request] { finish(request, std::nullopt); });
    attempt(request);
}

void BrowserTransport::frontmostChanged() {
    const RunningApplication* front = surroundings_.workspace.frontmostApplication();
    if (front && front->bundleIdentifier == surroundings_.workspace.ownBundleIdentifier()) {
        return; // The application behind it counts on.
    }
    frontmostProcess_ = front ? front->processIdentifier.value_or(0) : 0;
    frontmostSince_ = surroundings_.now();
}

void BrowserTransport::tryAgain(qint64 process) {
    for (auto request = requests_.begin(); request != requests_.end();) {
        const auto current = request++;
        if (current->process == process) {
            attempt(current);
        }
    }
}

const BrowserConnection::State*
BrowserTransport::freshState(const BrowserConnection& connection) const {
    const auto& state = connection.state();
    return state && surroundings_.now() - state->saidAt < longestSilence &&
                   (connection.browserProcess() != frontmostProcess_ ||
                    state->saidAt >= frontmostSince_)
               ? &*state
               : nullptr;
}

void BrowserTransport::attempt(Requests::iterator request) {
    auto connections = bridge_.connections(request->process);
    if (connections.empty()) {
        finish(request, std::nullopt);
        return;
    }
    const auto byLastFocus = [](const BrowserConnection::State* a,
                                const BrowserConnection::State* b) {
        return a->lastFocusedAt < b->lastFocusedAt;
    };
    // Chromium does not always tell a profile that another one's window took the focus: one that
    // had it before that one is asked whether it has it again.
    std::optional<double> lastFocusedAt;
    for (const BrowserConnection* connection : connections) {
        if (const auto& state = connection->state()) {
            lastFocusedAt = std::max(lastFocusedAt, state->lastFocusedAt);
        }
    }
    std::vector<const BrowserConnection::State*> states;
    const BrowserConnection::State* focused = nullptr;
    std::vector<BrowserConnection*> silent;
    for (BrowserConnection* connection : connections) {
        const auto* const state = freshState(*connection);
        if (state && (!state->focused || state->lastFocusedAt == lastFocusedAt)) {
            states.push_back(state);
            if (state->focused) {
                focused = state;
            }
        } else {
            silent.push_back(connection);
        }
    }
    if (focused != nullptr) {
        if (focused->origin) {
            finish(request, replyWith(focused->origin));
        } else {
            settle(request, focused->changedAt);
        }
        return;
    }

    for (BrowserConnection* connection : silent) {
        if (std::ranges::find(request->asked, connection) == request->asked.end()) {
            request->asked.push_back(connection);
            connection->ask();
        }
    }
    if (!silent.empty()) {
        return;
    }

    if (surroundings_.isOwnWindowOpen()) {
        const auto* const last = *std::ranges::max_element(states, byLastFocus);
        const bool wasInFront = last->lastFocusedAt > noWindowAt_;
        finish(request, replyWith(wasInFront ? last->origin : std::nullopt));
        return;
    }
    double changedAt = request->process == frontmostProcess_ ? frontmostSince_ : 0;
    for (const auto* const state : states) {
        changedAt = std::max(changedAt, state->changedAt);
    }
    if (hasSettled(changedAt)) {
        noWindowAt_ = surroundings_.now();
    }
    settle(request, changedAt);
}

bool BrowserTransport::hasSettled(double changedAt) const {
    return changedAt + settlingTime <= surroundings_.now();
}

void BrowserTransport::settle(Requests::iterator request, double changedAt) {
    if (hasSettled(changedAt)) {
        finish(request, replyWith(std::nullopt));
        return;
    }
    const Duration left(changedAt + settlingTime - surroundings_.now());
    request->settling = surroundings_.mainLoop.once(left, [this, request] { attempt(request); });
}

void BrowserTransport::finish(Requests::iterator request, const std::optional<AppleEvent>& reply) {
    // The completion may send anew, and a timer that fires is destroyed only after it has.
    Requests finished;
    finished.splice(finished.begin(), requests_, request);
    const Completion completion = std::move(finished.front().completion);
    completion(reply);
}

} // namespace orvanta
