#pragma once

#include "Fakes/FakeAutomation.h"
#include "Fakes/FakeBundles.h"
#include "Fakes/FakeLoginItem.h"
#include "Fakes/HandMainLoop.h"
#include "Model/UserDefaults.h"
#include "Setup/Setup.h"

#include <QTemporaryDir>

#include <memory>
#include <vector>

namespace orvanta {

/// A desktop on which a setup takes place.
class SetupDesk {
public:
    HandMainLoop loop;
    FakeLoginItem login;
    FakeAutomation automation;
    std::vector<Browser> browsers;

    /// One that runs, as the process `id`.
    void addBrowser(int id, const char* name, bool isDefault) {
        const QString bundleID = QString::number(id);
        browsers.push_back({bundleID, QString::fromUtf8(name), isDefault});
        automation.running[bundleID] = {{id, false}};
    }
    std::unique_ptr<Setup> setup() {
        return std::make_unique<Setup>(
            [this] { return browsers; }, defaults_,
            Setup::System{login, bundles_, automation, automation, automation, loop});
    }
    std::unique_ptr<Setup> finishedSetup() {
        login.current = LoginItem::Status::enabled;
        return setup();
    }

private:
    QTemporaryDir folder_;
    UserDefaults defaults_{folder_.path(), QStringLiteral("com.brindlework.orvanta")};
    FakeBundles bundles_;
};

} // namespace orvanta
