#include "Linux/BrowserBridge/LinuxAutomationPermission.h"

#include "Linux/BrowserBridge/BrowserBridge.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvanta {

namespace {

using Decision = LinuxAutomationPermission::Decision;

struct Kept {
    Decision decision;
    QString key;
};

const std::array<Kept, 3>& kept() {
    static const std::array<Kept, 3> all{{{Decision::Allowed, QStringLiteral("allowed")},
                                          {Decision::Agreed, QStringLiteral("agreed")},
                                          {Decision::Refused, QStringLiteral("refused")}}};
    return all;
}

} // namespace

LinuxAutomationPermission::LinuxAutomationPermission(BrowserBridge& bridge,
                                                     Surroundings surroundings)
    : bridge_(bridge)
    , surroundings_(std::move(surroundings)) {
    connect(&bridge, &BrowserBridge::connected, this, &LinuxAutomationPermission::connected);
}

int LinuxAutomationPermission::determine(const EventDescriptor& target, FourCharCode /*eventClass*/,
                                         FourCharCode /*eventID*/, bool askUser) {
    const QString identifier = surroundings_.bundleIdentifier(target.int32Value().value_or(0));
    switch (decision(identifier)) {
    case Decision::Allowed:
        return permitted;
    case Decision::Refused:
        return refused;
    case Decision::Agreed:
    case Decision::Undecided:
        if (askUser) {
            surroundings_.ask(identifier);
        }
        break;
    }
    return undecided;
}

Decision LinuxAutomationPermission::decision(const QString& bundleIdentifier) const {
    for (const auto& [decision, key] : kept()) {
        if (surroundings_.load(key).contains(bundleIdentifier)) {
            return decision;
        }
    }
    return Decision::Undecided;
}

bool LinuxAutomationPermission::isConnected(const QString& bundleIdentifier) const {
    return std::ranges::any_of(bridge_.browserProcesses(), [&](qint64 process) {
        return surroundings_.bundleIdentifier(process) == bundleIdentifier;
    });
}

void LinuxAutomationPermission::agree(const QString& bundleIdentifier) {
    const bool isAllowed =
        decision(bundleIdentifier) == Decision::Allowed || isConnected(bundleIdentifier);
    decide(bundleIdentifier, isAllowed ? Decision::Allowed : Decision::Agreed);
}

void LinuxAutomationPermission::refuse(const QString& bundleIdentifier) {
    decide(bundleIdentifier, Decision::Refused);
}

void LinuxAutomationPermission::connected(qint64 process) {
    const QString identifier = surroundings_.bundleIdentifier(process);
    if (decision(identifier) == Decision::Agreed) {
        decide(identifier, Decision::Allowed);
    }
}

void LinuxAutomationPermission::decide(const QString& bundleIdentifier, Decision decision) {
    for (const auto& [each, key] : kept()) {
        QStringList identifiers = surroundings_.load(key);
        const bool isThere = identifiers.contains(bundleIdentifier);
        if (isThere == (each == decision)) {
            continue;
        }
        if (isThere) {
            identifiers.removeAll(bundleIdentifier);
        } else {
            identifiers.append(bundleIdentifier);
            identifiers.sort();
        }
        surroundings_.store(key, identifiers);
    }
    Q_EMIT changed(bundleIdentifier);
}

} // namespace orvanta
