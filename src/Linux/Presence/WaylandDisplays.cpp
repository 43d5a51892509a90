#include "Linux/Presence/WaylandDisplays.h"

#include "dpms.h"
#include "wlr-output-power-management-unstable-v1.h"

#include <wayland-client.h>

#include <algorithm>
#include <functional>
#include <utility>

namespace orvanta {

/// What tells of one output.
struct WaylandDisplays::Output {
    explicit Output(wl_output* itsProxy)
        : proxy(itsProxy) {}
    virtual ~Output() { wl_output_destroy(proxy); }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    uint32_t name = 0; ///< of the global
    wl_output* proxy;
    bool isOff = false;
};

class WaylandDisplays::Manager {
public:
    Manager() = default;
    virtual ~Manager() = default;
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    virtual std::unique_ptr<Output> follow(wl_output* output) = 0;
};

class WaylandDisplays::WlrManager final : public Manager {
public:
    explicit WlrManager(zwlr_output_power_manager_v1* proxy)
        : proxy_(proxy) {}
    ~WlrManager() override { zwlr_output_power_manager_v1_destroy(proxy_); }
    WlrManager(const WlrManager&) = delete;
    WlrManager& operator=(const WlrManager&) = delete;

    std::unique_ptr<Output> follow(wl_output* output) override {
        static constexpr zwlr_output_power_v1_listener listener{
            .mode =
                [](void* self, zwlr_output_power_v1*, uint32_t mode) {
                    static_cast<Power*>(self)->isOff = mode == ZWLR_OUTPUT_POWER_V1_MODE_OFF;
                },
            .failed =
                [](void* self, zwlr_output_power_v1*) {
                    static_cast<Power*>(self)->isOff = false;
                }};
        auto followed = std::make_unique<Power>(
            output, zwlr_output_power_manager_v1_get_output_power(proxy_, output));
        zwlr_output_power_v1_add_listener(followed->power, &listener, followed.get());
        return followed;
    }

private:
    struct Power final : Output {
        Power(wl_output* output, zwlr_output_power_v1* itsPower)
            : Output(output)
            , power(itsPower) {}
        ~Power() override { zwlr_output_power_v1_destroy(power); }
        Power(const Power&) = delete;
        Power& operator=(const Power&) = delete;

        zwlr_output_power_v1* power;
    };

    zwlr_output_power_manager_v1* proxy_;
};

class WaylandDisplays::KWinManager final : public Manager {
public:
    explicit KWinManager(org_kde_kwin_dpms_manager* proxy)
        : proxy_(proxy) {}
    ~KWinManager() override { org_kde_kwin_dpms_manager_destroy(proxy_); }
    KWinManager(const KWinManager&) = delete;
    KWinManager& operator=(const KWinManager&) = delete;

    std::unique_ptr<Output> follow(wl_output* output) override {
        static constexpr org_kde_kwin_dpms_listener listener{
            .supported = [](void*, org_kde_kwin_dpms*, uint32_t) {},
            .mode =
                [](void* self, org_kde_kwin_dpms*, uint32_t mode) {
                    static_cast<Dpms*>(self)->isOff = mode != ORG_KDE_KWIN_DPMS_MODE_ON;
                },
            .done =
                [](void*, org_kde_kwin_dpms*) {
                }};
        auto followed =
            std::make_unique<Dpms>(output, org_kde_kwin_dpms_manager_get(proxy_, output));
        org_kde_kwin_dpms_add_listener(followed->dpms, &listener, followed.get());
        return followed;
    }

private:
    struct Dpms final : Output {
        Dpms(wl_output* output, org_kde_kwin_dpms* itsDpms)
            : Output(output)
            , dpms(itsDpms) {}
        ~Dpms() override { org_kde_kwin_dpms_release(dpms); }
        Dpms(const Dpms&) = delete;
        Dpms& operator=(const Dpms&) = delete;

        org_kde_kwin_dpms* dpms;
    };

    org_kde_kwin_dpms_manager* proxy_;
};

WaylandDisplays::WaylandDisplays(const QByteArray& display)
    : connection_(std::make_unique<WaylandConnection>(display)) {
    if (!connection_->isOpen()) {
        connection_.reset();
        return;
    }
    connect(connection_.get(), &WaylandConnection::ready, this, &WaylandDisplays::start);
    connect(connection_.get(), &WaylandConnection::dispatched, this, &WaylandDisplays::settle);
    connect(connection_.get(), &WaylandConnection::ended, this, [this] {
        outputs_.clear();
        settle();
    });
}

WaylandDisplays::~WaylandDisplays() = default;

void WaylandDisplays::start() {
    if (auto* wlr = connection_->bind<zwlr_output_power_manager_v1>(
            zwlr_output_power_manager_v1_interface, 1, 1)) {
        manager_ = std::make_unique<WlrManager>(wlr);
    } else if (auto* kwin = connection_->bind<org_kde_kwin_dpms_manager>(
                   org_kde_kwin_dpms_manager_interface, 1, 1)) {
        manager_ = std::make_unique<KWinManager>(kwin);
    } else {
        // Not within its own signal.
        connection_->disconnect(this);
        connection_.release()->deleteLater();
        return;
    }
    connect(connection_.get(), &WaylandConnection::globalsChanged, this,
            &WaylandDisplays::matchOutputs);
    matchOutputs();
}

/// Follows the outputs that have come, and no more those that have gone.
void WaylandDisplays::matchOutputs() {
    const std::vector<uint32_t> names = connection_->globals(wl_output_interface);
    std::erase_if(outputs_, [&](const auto& output) {
        return std::ranges::find(names, output->name) == names.end();
    });
    for (const uint32_t name : names) {
        if (std::ranges::find(outputs_, name, [](const auto& output) { return output->name; }) ==
            outputs_.end()) {
            outputs_.push_back(
                manager_->follow(connection_->bindGlobal<wl_output>(name, wl_output_interface, 1)));
            outputs_.back()->name = name;
        }
    }
}

void WaylandDisplays::settle() {
    const bool off = !outputs_.empty() &&
                     std::ranges::all_of(outputs_, [](const auto& each) { return each->isOff; });
    if (std::exchange(areOff_, off) != off) {
        Q_EMIT changed();
    }
}

} // namespace orvanta
