#pragma once

#include "Fakes/FakeBundles.h"
#include "Fakes/HandMainLoop.h"
#include "Model/UserDefaults.h"
#include "Platform/ApplicationLauncher.h"
#include "Platform/Automation.h"
#include "Platform/LoginItem.h"
#include "Platform/RunningApplications.h"
#include "Setup/Setup.h"

#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

namespace orvanta {

/// A desktop on which a setup takes place: what is allowed is a field, what is asked of it a line.
class SetupDesk final : LoginItem, RunningApplications, AutomationPermission, ApplicationLauncher {
public:
    HandMainLoop loop;
    Status login = Status::notRegistered;
    std::vector<Browser> browsers;    ///< all of them run
    std::map<QString, int> decisions; ///< by bundle identifier
    QStringList asked;

    std::unique_ptr<Setup> setup() {
        return std::make_unique<Setup>([this] { return browsers; }, defaults_,
                                       Setup::System{*this, bundles_, *this, *this, *this, loop});
    }
    std::unique_ptr<Setup> finishedSetup() {
        login = Status::enabled;
        return setup();
    }

private:
    Status status() const override { return login; }
    std::optional<QString> registerItem() override {
        asked += QStringLiteral("register");
        login = Status::enabled;
        return std::nullopt;
    }
    std::optional<QString> unregisterItem() override { return std::nullopt; }
    void openSystemSettingsLoginItems() override { asked += QStringLiteral("login settings"); }

    std::vector<RunningInstance> instances(const QString& id) const override {
        const auto found = std::ranges::find(browsers, id, &Browser::id);
        return {{found - browsers.begin() + 1, false}};
    }

    int determine(const EventDescriptor& target, FourCharCode /*eventClass*/,
                  FourCharCode /*eventID*/, bool askUser) override {
        std::int32_t process = 0;
        const auto found = std::ranges::find_if(browsers, [&](const Browser& /*browser*/) {
            return target == EventDescriptor::processIdentifier(++process);
        });
        if (askUser) {
            asked += QStringLiteral("permission ") + found->id;
        }
        const auto decision = decisions.find(found->id);
        return decision != decisions.end() ? decision->second : undecided;
    }

    void openApplication(const QString& /*location*/, const OpenConfiguration& /*configuration*/,
                         std::function<void()> completion) override {
        completion();
    }
    bool open(const QString& address) override {
        asked += QStringLiteral("open ") + address;
        return true;
    }

    QTemporaryDir folder_;
    UserDefaults defaults_{folder_.path(), QStringLiteral("com.brindlework.orvanta")};
    FakeBundles bundles_;
};

} // namespace orvanta
