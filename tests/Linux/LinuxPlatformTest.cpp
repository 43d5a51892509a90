#include "Linux/LinuxPlatform.h"

#include "Linux/SystemClock.h"
#include "Platform/Workspace.h"

#include <gmock/gmock.h>

#include <ctime>

namespace orvanta {

namespace {

TEST(LinuxPlatformTest, WithoutAnXDisplayThereIsAPlatformThatSeesNoWindows) {
    for (const char* waylandDisplay : {"", "wayland-0"}) {
        qputenv("WAYLAND_DISPLAY", waylandDisplay);
        qputenv("DISPLAY", "/no/such/display:0");
        LinuxPlatform linuxPlatform;
        const Platform platform = linuxPlatform.platform();
        EXPECT_EQ(linuxPlatform.windowWatching(), WindowWatcher::State::Unsupported);
        EXPECT_EQ(platform.workspace.frontmostApplication(), nullptr);
        EXPECT_EQ(platform.workspace.ownBundleIdentifier(),
                  QStringLiteral("com.brindlework.orvanta"));
        const auto before = std::chrono::system_clock::now();
        const auto now = platform.systemTime();
        EXPECT_GE(now, before);
        EXPECT_LE(now, std::chrono::system_clock::now());
    }
}

TEST(SystemClockTest, UptimeIsTheMonotonicClocksInSeconds) {
    const auto monotonic = [] {
        timespec now{};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    };
    const double before = monotonic();
    const double uptime = systemUptime();
    constexpr double rounding = 1e-6;
    EXPECT_GE(uptime, before - rounding);
    EXPECT_LE(uptime, monotonic() + rounding);
}

} // namespace

} // namespace orvanta
