#pragma once

#include "Platform/ApplicationLauncher.h"
#include "Platform/Automation.h"
#include "Platform/RunningApplications.h"

#include <QStringList>

#include <map>
#include <set>
#include <utility>
#include <vector>

namespace orvanta {

/// Applications that run, and that are asked, as a test says.
class FakeAutomation final : public Automation,
                             public RunningApplications,
                             public AppleEventTransport,
                             public AutomationPermission,
                             public ApplicationLauncher {
public:
    /// Processes by bundle identifier.
    std::map<QString, std::vector<RunningInstance>> running;
    /// What was decided, by process.
    std::map<qint64, int> decisions;
    /// What was asked for, in order: "ask 7", "launch /a (hidden)", "open address".
    QStringList log;
    /// Launches that are under way.
    std::vector<std::function<void()>> launches;
    int renewals = 0;
    /// How a process answers; without it, none can be asked.
    std::function<void(qint64 process, Completion completion)> answer;

    const RunningApplications& runningApplications() const override { return *this; }
    AppleEventTransport& transport() override { return *this; }
    AutomationPermission& permission() override { return *this; }
    ApplicationLauncher& launcher() override { return *this; }
    void renewPreparations() override { ++renewals; }
    void setSilenced(std::set<QString> /*bundleIdentifiers*/) override {}

    std::vector<RunningInstance> instances(const QString& bundleIdentifier) const override {
        const auto found = running.find(bundleIdentifier);
        return found == running.end() ? std::vector<RunningInstance>() : found->second;
    }
    void send(const AppleEvent& event, std::uint32_t /*options*/, Duration /*timeout*/,
              Completion completion) override {
        if (answer) {
            answer(event.target.int32Value().value_or(0), std::move(completion));
        } else {
            completion(std::nullopt);
        }
    }
    int determine(const EventDescriptor& target, FourCharCode eventClass, FourCharCode eventID,
                  bool askUser) override {
        if (eventClass != fourCharCode("core") || eventID != fourCharCode("getd") ||
            target.type() != fourCharCode("kpid")) {
            return -50; // paramErr
        }
        const qint64 process = target.int32Value().value_or(0);
        if (askUser) {
            log.append(QStringLiteral("ask %1").arg(process));
        }
        const auto found = decisions.find(process);
        return found == decisions.end() ? undecided : found->second;
    }
    void openApplication(const QString& location, const OpenConfiguration& configuration,
                         std::function<void()> completion) override {
        log.append(QStringLiteral("launch ") + location +
                   (configuration.activates ? QString() : QStringLiteral(" (inactive)")) +
                   (configuration.hides ? QStringLiteral(" (hidden)") : QString()));
        launches.push_back(std::move(completion));
    }
    bool open(const QString& address) override {
        log.append(QStringLiteral("open ") + address);
        return true;
    }
    /// The oldest launch is over.
    void launched() {
        const auto completion = std::move(launches.front());
        launches.erase(launches.begin());
        completion();
    }
};

} // namespace orvanta
