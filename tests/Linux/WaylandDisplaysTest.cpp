#include "Linux/Presence/WaylandDisplays.h"

#include "Compositor.h"
#include "Testing.h"

#include <dpms-server.h>
#include <wlr-output-power-management-unstable-v1-server.h>

using namespace orvanta;

namespace {

/// Outputs, and by one protocol or the other which of them are on.
class Outputs {
public:
    explicit Outputs(Compositor& compositor)
        : compositor_(compositor) {}

    /// In both protocols a manager's first request is to follow an output.
    template <const wl_interface* manager, const wl_interface* power>
    void offer() {
        wl_global_create(compositor_.display(), manager, 1, this,
                         [](wl_client* client, void* self, uint32_t, uint32_t id) {
                             static constexpr std::array requests{&follow<power>};
                             wl_resource* resource = wl_resource_create(client, manager, 1, id);
                             wl_resource_set_implementation(resource, requests.data(), self,
                                                            nullptr);
                         });
    }
    wl_global* plug() {
        wl_global* output =
            wl_global_create(compositor_.display(), &wl_output_interface, 1, nullptr,
                             [](wl_client* client, void*, uint32_t, uint32_t id) {
                                 wl_resource_create(client, &wl_output_interface, 1, id);
                             });
        compositor_.flush();
        return output;
    }

    /// In the order in which they were asked for; those of outputs that went, too.
    std::vector<wl_resource*> powers;

private:
    template <const wl_interface* interface>
    static void follow(wl_client* client, wl_resource* manager, uint32_t id, wl_resource*) {
        // To set it, as nobody does here, comes before to destroy it in both protocols.
        static constexpr std::array<void (*)(wl_client*, wl_resource*), 2> requests{
            nullptr, [](wl_client*, wl_resource* power) {
                wl_resource_destroy(power);
            }};
        wl_resource* power = wl_resource_create(client, interface, 1, id);
        wl_resource_set_implementation(power, requests.data(), nullptr, nullptr);
        static_cast<Outputs*>(wl_resource_get_user_data(manager))->powers.push_back(power);
    }

    Compositor& compositor_;
};

class WaylandDisplaysTest : public testing::Test {
protected:
    bool follows(size_t count) {
        return eventually([&] { return outputs.powers.size() == count; });
    }
    bool becomes(const WaylandDisplays& displays, bool off) {
        compositor.flush();
        return eventually([&] { return displays.areOff() == off; });
    }

    Compositor compositor;
    Outputs outputs{compositor};
};

TEST_F(WaylandDisplaysTest, TheyAreOffWhenEveryOutputIs) {
    outputs.offer<&zwlr_output_power_manager_v1_interface, &zwlr_output_power_v1_interface>();
    outputs.plug();
    wl_global* second = outputs.plug();
    WaylandDisplays displays(compositor.name());
    int changes = 0;
    QObject::connect(&displays, &WaylandDisplays::changed, [&] { ++changes; });
    ASSERT_TRUE(follows(2));
    const auto set = [&](size_t output, bool on) {
        zwlr_output_power_v1_send_mode(outputs.powers[output], on ? 1 : 0);
    };
    set(0, false);
    set(1, false);
    EXPECT_TRUE(becomes(displays, true));
    set(1, true);
    EXPECT_TRUE(becomes(displays, false));
    wl_global_destroy(second); // The one that was on is unplugged.
    EXPECT_TRUE(becomes(displays, true));
    outputs.plug(); // Nothing is known of another yet.
    EXPECT_TRUE(becomes(displays, false));
    ASSERT_TRUE(follows(3));
    set(2, false);
    EXPECT_TRUE(becomes(displays, true));
    zwlr_output_power_v1_send_failed(outputs.powers[0]);
    EXPECT_TRUE(becomes(displays, false));
    set(0, false);
    EXPECT_TRUE(becomes(displays, true));
    compositor.dropClients();
    EXPECT_TRUE(becomes(displays, false));
    EXPECT_EQ(changes, 8);
}

TEST_F(WaylandDisplaysTest, KWinSaysItInItsOwnWay) {
    outputs.offer<&org_kde_kwin_dpms_manager_interface, &org_kde_kwin_dpms_interface>();
    outputs.plug();
    const WaylandDisplays displays(compositor.name());
    ASSERT_TRUE(follows(1));
    org_kde_kwin_dpms_send_supported(outputs.powers[0], 1);
    org_kde_kwin_dpms_send_mode(outputs.powers[0], ORG_KDE_KWIN_DPMS_MODE_STANDBY);
    EXPECT_TRUE(becomes(displays, true));
    org_kde_kwin_dpms_send_mode(outputs.powers[0], ORG_KDE_KWIN_DPMS_MODE_ON);
    EXPECT_TRUE(becomes(displays, false));
}

} // namespace
