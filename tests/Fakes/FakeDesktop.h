#pragma once

#include "Fakes/FakeAppearance.h"
#include "Fakes/FakeAutomation.h"
#include "Fakes/FakeBundles.h"
#include "Fakes/FakeLoginItem.h"
#include "Fakes/FakeWorkspace.h"
#include "Fakes/HandMainLoop.h"
#include "Platform/Desktop.h"
#include "Platform/NotificationCenter.h"

#include <QStringList>
#include <QWindow>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orvanta {

/// A whole desktop in the hand. What an application asks of it is in `log`, in order.
class FakeDesktop final : public Desktop {
public:
    QStringList log;

    HandMainLoop loop;
    FakeWorkspace workspace;
    NotificationCenter workspaceCenter;
    NotificationCenter defaultCenter;
    NotificationCenter distributedCenter;
    FakeBundles installed;
    FakeLoginItem login;
    FakeAppearance looks;
    std::chrono::system_clock::time_point start{std::chrono::hours(24 * 365 * 54)};
    /// Seconds for which the process was held up: they passed on both clocks, and no timer fired.
    double stalled = 0;
    WindowWatching watching = WindowWatching::Watching;
    std::function<std::optional<QString>()> allow = [] {
        return std::nullopt;
    };
    std::vector<ScreenArea> screens{{QRect(0, 0, 1280, 800), QRect(0, 28, 1280, 772)}};
    QPoint pointer{640, 400};
    bool tellsPresses = true;
    bool arePopupsPlaced = true;

    /// Lives as long as whoever asked for it lets it.
    FakeAutomation* automation = nullptr;
    AutomationDecisions decisions;
    struct Item {
        StatusItem::Handlers handlers;
        StatusTitle title;
        int titles = 0;
        int toolTips = 0; ///< how often the words were said to have changed
        bool isShown = true;
    };
    std::unique_ptr<Item> item; ///< null until it is made
    std::function<void(QPoint)> pressHandler;
    /// What has happened on the desktop and was not told yet.
    std::function<void()> untold;

    /// A press of the mouse in some other application.
    void press(QPoint place) {
        pointer = place;
        if (const auto handler = pressHandler) {
            handler(place);
        }
    }
    void front(const char* id) {
        workspace.front = RunningApplication{QString::fromLatin1(id), {}, {}, {}};
        workspaceCenter.post(Notification::DidActivateApplication);
    }

    Platform platform() override {
        return {workspace, workspaceCenter, defaultCenter, distributedCenter, loop, [this] {
                    return start + std::chrono::duration_cast<std::chrono::system_clock::duration>(
                                       std::chrono::duration<double>(uptime()));
                }};
    }
    double uptime() const override { return loop.now() + stalled; }
    const Bundles& bundles() const override { return installed; }
    LoginItem& loginItem() override { return login; }
    std::unique_ptr<Automation> makeAutomation(AutomationDecisions kept) override {
        log.append(QStringLiteral("automation"));
        decisions = std::move(kept);
        auto made = std::make_unique<FakeAutomation>();
        automation = made.get();
        return made;
    }
    std::unique_ptr<StatusItem> makeStatusItem(StatusItem::Handlers handlers) override {
        log.append(QStringLiteral("status item"));
        item = std::make_unique<Item>();
        item->handlers = std::move(handlers);
        return std::make_unique<FakeStatusItem>(*item);
    }
    void startPresence() override { log.append(QStringLiteral("presence")); }
    WindowWatching windowWatching() const override { return watching; }
    std::optional<QString> allowWindowWatching() override { return allow(); }
    const Appearance& appearance() const override { return looks; }
    std::vector<ScreenArea> screenAreas() const override { return screens; }
    std::optional<QPoint> pointerPosition() const override {
        return arePopupsPlaced ? std::optional(pointer) : std::nullopt;
    }
    std::unique_ptr<EventMonitor>
    addGlobalMonitorForMouseDowns(std::function<void(QPoint)> handler) override {
        if (!tellsPresses) {
            return nullptr;
        }
        pressHandler = std::move(handler);
        return std::make_unique<PressMonitor>(*this);
    }
    void updateFrontmost() override {
        if (untold) {
            untold();
        }
    }
    bool placesPopups() const override { return arePopupsPlaced; }
    void place(QWindow& window, QPoint place) override {
        log.append(
            QStringLiteral("place %1 %2 %3").arg(window.title()).arg(place.x()).arg(place.y()));
    }
    void keepInactive(QWindow& /*window*/) override {}
    void activate(QWindow& window) override {
        log.append(QStringLiteral("activate ") + window.title());
    }

private:
    struct FakeStatusItem final : StatusItem {
        explicit FakeStatusItem(Item& shown)
            : item(shown) {}
        bool isShown() const override { return item.isShown; }
        void setTitle(const StatusTitle& title) override {
            item.title = title;
            ++item.titles;
        }
        void toolTipChanged() override { ++item.toolTips; }
        Item& item;
    };
    struct PressMonitor final : EventMonitor {
        explicit PressMonitor(FakeDesktop& watched)
            : desktop(watched) {}
        ~PressMonitor() override { desktop.pressHandler = nullptr; }
        FakeDesktop& desktop;
    };
};

} // namespace orvanta
