#include "Linux/LinuxPlatform.h"

#include "Platform/Workspace.h"
#include "Testing.h"

using namespace orvanta;

TEST(LinuxPlatformTest, WithoutAnXDisplayThereIsAPlatformThatSeesNoWindows) {
    const std::pair<const char*, const char*> displays[] = {
        {"", ""}, {"nonsense", ""}, {"/no/such/display:0", ""}, {":0", "wayland-0"}};
    for (const auto& [x, wayland] : displays) {
        qputenv("WAYLAND_DISPLAY", wayland);
        qputenv("DISPLAY", x);
        LinuxPlatform linuxPlatform;
        EXPECT_EQ(linuxPlatform.windowWatching(), WindowWatcher::State::Unsupported) << x;
        EXPECT_EQ(linuxPlatform.platform().workspace.frontmostApplication(), nullptr);
    }
}
