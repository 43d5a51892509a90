#include "Setup/Setup.h"

#include "Model/UserDefaults.h"
#include "Platform/AppleEvent.h"
#include "Platform/ApplicationLauncher.h"
#include "Platform/Automation.h"
#include "Platform/Bundles.h"
#include "Platform/LoginItem.h"
#include "Platform/RunningApplications.h"

#include <QPointer>

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvanta {

namespace {

const auto finishedPreference = QStringLiteral("setupDoneV1");
const auto loginID = QStringLiteral("login");

/// What browsers are asked with, too.
constexpr FourCharCode eventClass = fourCharCode("core");
constexpr FourCharCode eventID = fourCharCode("getd");

constexpr MainLoop::Duration pollInterval{1};
constexpr MainLoop::Duration pollTolerance{0.1};

Setup::State stateOf(LoginItem::Status status) {
    switch (status) {
    case LoginItem::Status::enabled:
        return Setup::State::done;
    case LoginItem::Status::requiresApproval:
        return Setup::State::needsSettings;
    case LoginItem::Status::notRegistered:
    case LoginItem::Status::notFound:
        break;
    }
    return Setup::State::pending;
}

template <typename Predicate>
std::vector<Setup::Step> filtered(const std::vector<Setup::Step>& steps, Predicate predicate) {
    std::vector<Setup::Step> result;
    std::ranges::copy_if(steps, std::back_inserter(result), predicate);
    return result;
}

bool isDone(const Setup::Step& step) {
    return step.state == Setup::State::done;
}

} // namespace

Setup::Setup(std::function<std::vector<Browser>()> browsers, UserDefaults& defaults,
             const System& system)
    : browsers_(std::move(browsers))
    , defaults_(defaults)
    , system_(system)
    , finished_(defaults.boolValue(finishedPreference)) {
    if (!finished_) {
        timer_ = system_.mainLoop.every(pollInterval, pollTolerance, [this] { refresh(); });
        refresh();
    }
}

Setup::~Setup() = default;

std::vector<Setup::Step> Setup::required() const {
    return filtered(steps_, [](const Step& step) { return !step.optional; });
}

std::vector<Setup::Step> Setup::optional() const {
    return filtered(steps_, [](const Step& step) { return step.optional; });
}

std::vector<Setup::Step> Setup::completed() const {
    return filtered(steps_, [](const Step& step) { return !step.optional && isDone(step); });
}

const Setup::Step* Setup::find(const QString& id) const {
    const auto found = std::ranges::find(steps_, id, &Step::id);
    return found != steps_.end() ? &*found : nullptr;
}

std::vector<Setup::Step> Setup::currentSteps() const {
    std::vector<Step> result{
        {loginID, QStringLiteral("Iniciar ao entrar"), stateOf(system_.loginItem.status()), false}};
    for (const Browser& browser : browsers_()) {
        std::optional<State> state = automationState(browser.id, false, system_);
        if (!state) {
            const Step* before = find(browser.id);
            state = before != nullptr ? before->state : State::pending;
        }
        result.push_back(
            {browser.id, QStringLiteral("Sites no ") + browser.name, *state, !browser.isDefault});
    }
    return result;
}

void Setup::refresh() {
    if (finished_) {
        return;
    }
    std::vector<Step> current = currentSteps();
    const bool isGranted =
        !steps_.empty() && std::ranges::any_of(current, [this](const Step& step) {
            const Step* before = find(step.id);
            return isDone(step) && (before == nullptr || !isDone(*before));
        });
    bool isChanged = current != steps_;
    if (isChanged) {
        steps_ = std::move(current);
    }
    if (std::ranges::all_of(steps_,
                            [](const Step& step) { return step.optional || isDone(step); })) {
        finished_ = true;
        isChanged = true;
        defaults_.setBool(finishedPreference, true);
        timer_.reset();
    }
    if (isChanged) {
        Q_EMIT changed();
    }
    if (isGranted && onGrant) {
        onGrant();
    }
}

void Setup::perform(const Step& step) {
    switch (step.state) {
    case State::done:
        return;
    case State::needsSettings:
        if (step.id == loginID) {
            system_.loginItem.openSystemSettingsLoginItems();
        } else {
            system_.launcher.open(automationSettings());
        }
        return;
    case State::pending:
        break;
    }
    if (step.id != loginID) {
        requestAutomation(
            step.id,
            [self = QPointer(this)] {
                if (self) {
                    self->refresh();
                }
            },
            system_);
        return;
    }
    // What went wrong shows in the status.
    system_.loginItem.registerItem();
    if (system_.loginItem.status() != LoginItem::Status::enabled) {
        system_.loginItem.openSystemSettingsLoginItems();
    }
    refresh();
}

void Setup::requestAutomation(const QString& bundleID, std::function<void()> completion,
                              const System& system) {
    const auto ask = [bundleID, completion = std::move(completion), system] {
        automationState(bundleID, true, system);
        completion();
    };
    const auto location = system.runningApplications.instances(bundleID).empty()
                              ? system.bundles.locationOfApplication(bundleID)
                              : std::nullopt;
    if (location) {
        system.launcher.openApplication(*location, {.activates = false, .hides = true}, ask);
    } else {
        ask();
    }
}

std::optional<Setup::State> Setup::automationState(const QString& bundleID, bool ask,
                                                   const System& system) {
    const auto instances = system.runningApplications.instances(bundleID);
    if (instances.empty()) {
        return std::nullopt;
    }
    const auto target = EventDescriptor::processIdentifier(
        static_cast<std::int32_t>(instances.front().processIdentifier));
    switch (system.permission.determine(target, eventClass, eventID, ask)) {
    case AutomationPermission::permitted:
        return State::done;
    case AutomationPermission::refused:
        return State::needsSettings;
    default:
        return State::pending;
    }
}

const QString& Setup::automationSettings() {
    static const QString address = QStringLiteral(
        "x-apple.systempreferences:com.apple.preference.security?Privacy_Automation");
    return address;
}

} // namespace orvanta
