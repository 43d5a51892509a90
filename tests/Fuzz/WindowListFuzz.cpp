// What a compositor tells of its windows, in any order and with any names.

#include "Fuzz.h"
#include "Linux/Windows/ListedWindowWatcher.h"
#include "TaskBar.h"

#include <fuzzer/FuzzedDataProvider.h>

using namespace orvanta;

int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    static int argc = 0;
    static const QCoreApplication application(argc, nullptr);
    FuzzedDataProvider bytes(reinterpret_cast<const std::uint8_t*>(data), size);

    Compositor compositor;
    TaskBar bar(compositor);
    ListedWindowWatcher watcher(compositor.name());
    require(eventually([&] { return bar.isBound(); }));
    std::vector<wl_resource*> windows;
    while (bytes.remaining_bytes() > 0) {
        QCoreApplication::processEvents(); // What nobody reads fills the socket.
        const auto operation = bytes.ConsumeIntegralInRange(0, 3);
        if (operation == 0 || windows.empty()) {
            windows.push_back(bar.add(bytes.ConsumeRandomLengthString(64).c_str()));
            continue;
        }
        const auto which = bytes.ConsumeIntegralInRange<std::size_t>(0, windows.size() - 1);
        if (operation == 3) {
            bar.close(windows[which]);
            windows.erase(windows.begin() + std::ptrdiff_t(which));
        } else {
            bar.setActive(windows[which], operation == 1);
        }
    }
    bar.add("the last", true);
    require(eventually([&] {
        const auto& active = watcher.activeWindow();
        return active && active->wmClass == QStringLiteral("the last");
    }));
    return 0;
}
