#pragma once

#include "Linux/Presence/BusService.h"
#include "Linux/Windows/GnomeExtension.h"
#include "Linux/Windows/WindowWatcher.h"

namespace orvanta {

/// The focused window of GNOME Shell, as our extension tells it from within the shell on the
/// session bus: `com.brindlework.orvanta.Shell`, described in gnome/focus.js. Only what the owner
/// of the shell's own name says is heard.
class GnomeWindowWatcher final : public WindowWatcher {
    Q_OBJECT

public:
    /// Waiting until a shell is there and has answered. Where one runs without the extension, what
    /// is missing; Unsupported if it is a shell that has no use for it.
    GnomeWindowWatcher(const QDBusConnection& sessionBus, MainLoop& mainLoop,
                       GnomeExtension extension);

    std::optional<QString> allow() override;

private:
    void greet();
    void ask();
    /// False when it is none.
    bool note(const QDBusMessage& focus);
    void askExtension();
    /// Why nothing is told, by what the shell says of the extension.
    State reason(const QDBusMessage& information) const;
    void leave();

    BusService service_;
    GnomeExtension extension_;
    QString shellVersion_;
};

} // namespace orvanta
