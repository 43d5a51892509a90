#pragma once

#include "Linux/Windows/ListedWindowWatcher.h"

#include <cstdint>

struct org_kde_plasma_window;
struct org_kde_plasma_window_management;

namespace orvanta {

/// The active window of KWin (plasma-wayland-protocols, "plasma-window-management"). KWin offers
/// the list to a program whose installed desktop entry names the program's path in `Exec` and the
/// interface in `X-KDE-Wayland-Interfaces`.
class KWinWindowWatcher final : public ListedWindowWatcher {
    Q_OBJECT

public:
    explicit KWinWindowWatcher(const QByteArray& display);
    ~KWinWindowWatcher() override;
    KWinWindowWatcher(const KWinWindowWatcher&) = delete;
    KWinWindowWatcher& operator=(const KWinWindowWatcher&) = delete;

private:
    struct PlasmaWindow;

    void start() override;
    void add(org_kde_plasma_window* handle);

    org_kde_plasma_window_management* manager_ = nullptr;
};

} // namespace orvanta
