#pragma once

#include "Fakes/FakeBrowsers.h"
#include "Fakes/FakeWorkspace.h"
#include "Fakes/HandMainLoop.h"
#include "Model/ActivityList.h"
#include "Model/ActivityStore.h"
#include "Model/Calendar.h"
#include "Model/UserDefaults.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Platform.h"
#include "Tracking/FrontmostProbe.h"
#include "Tracking/Tracker.h"

#include <QTemporaryDir>

#include <chrono>
#include <functional>
#include <memory>

namespace orvanta {

/// A tracker over a real store, with "org.example.Application0" in front.
class Machine {
public:
    /// `fill` puts records into a store before the tracker sees them.
    explicit Machine(const QTemporaryDir& folder,
                     const std::function<void(ModelContext&)>& fill = {})
        : container_(ActivityStore::open(folder.path()))
        , defaults_(folder.path(), QStringLiteral("com.brindlework.orvanta")) {
        if (fill) {
            fill(container_->mainContext());
        }
        workspace_.front = RunningApplication{
            QStringLiteral("org.example.Application0"), QStringLiteral("Aplicativo 0"), {}, {}};
        const Platform platform{workspace_, center_, center_, center_, loop_, [] {
                                    return std::chrono::system_clock::now();
                                }};
        tracker_ = std::make_unique<Tracker>(
            container_->mainContext(), browsers_, defaults_,
            [this](const QString& id) { return browsers_.dialect(id); },
            [this] { return loop_.now() + seconds_; },
            [this] { return Date::from(std::chrono::system_clock::now()) + seconds_ * 1e-3; },
            calendar_, [this] { return frontmostFocus(workspace_); }, platform);
        tracker_->start();
    }

    Tracker& tracker() { return *tracker_; }

    /// A second passes and is booked.
    void book() {
        seconds_ += 1;
        tracker_->refreshFocus();
    }
    /// A second passes on the main loop: a tick, and at every fifth a save.
    void tick() { loop_.advance(1); }

private:
    HandMainLoop loop_;
    double seconds_ = 0;
    FakeWorkspace workspace_;
    FakeBrowsers browsers_;
    NotificationCenter center_;
    Calendar calendar_{QTimeZone("America/Sao_Paulo")};
    std::unique_ptr<ModelContainer> container_;
    UserDefaults defaults_;
    std::unique_ptr<Tracker> tracker_;
};

} // namespace orvanta
