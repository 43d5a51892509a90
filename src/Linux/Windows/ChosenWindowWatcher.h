#pragma once

#include "Linux/Windows/WindowWatcher.h"
#include "Platform/MainLoop.h"

#include <functional>
#include <memory>
#include <vector>

namespace orvanta {

/// Whichever of several watchers really answers on this desktop. A worse one is asked when no
/// better one has answered.
class ChosenWindowWatcher final : public WindowWatcher {
    Q_OBJECT

public:
    using Candidate = std::function<std::unique_ptr<WindowWatcher>()>;

    /// For how long a better candidate that does not answer is waited for.
    static constexpr MainLoop::Duration patience{2.0};
    /// After the chosen one has ended; what comes back is not there at once.
    static constexpr MainLoop::Duration returning{1.0};

    /// The best candidate first. `mainLoop` outlives the watcher.
    ChosenWindowWatcher(std::vector<Candidate> candidates, MainLoop& mainLoop);

    void update() override;
    void chooseAgain() override;
    std::optional<QString> allow() override;

private:
    void consider();
    void ask(const Candidate& candidate);
    void choose(std::unique_ptr<WindowWatcher> watcher);
    void chosenChanged();

    std::vector<Candidate> candidates_;
    MainLoop& mainLoop_;
    /// While none is chosen: those that were asked.
    std::vector<std::unique_ptr<WindowWatcher>> asked_;
    std::unique_ptr<WindowWatcher> chosen_;
    State otherwise_ = State::Unsupported; ///< what it comes to when none answers
    std::unique_ptr<MainLoopTimer> timer_; ///< of one of the durations above
    bool isPatient_ = true;
};

} // namespace orvanta
