#pragma once

#include "Browsers/Browser.h"
#include "Platform/MainLoop.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvanta {

class ApplicationLauncher;
class AutomationPermission;
class Bundles;
class LoginItem;
class RunningApplications;
class UserDefaults;

/// What the person has to allow before Orvanta can do its whole job: starting at login, and reading
/// the sites of the browsers.
///
/// Until every required step is done, the desktop is asked once a second. Then that is remembered,
/// and nothing is asked any more, in later sessions neither.
class Setup final : public QObject {
    Q_OBJECT

public:
    enum class State {
        pending,       ///< neither granted nor refused, or not known
        done,          ///< granted
        needsSettings, ///< refused: to be changed in the desktop's settings only
    };

    struct Step {
        QString id; ///< "login", or a browser's bundle identifier
        QString name;
        State state = State::pending;
        bool optional = false; ///< whether Orvanta does its job without it

        friend bool operator==(const Step&, const Step&) = default;
    };

    /// What it asks of the desktop. All of it outlives whoever holds this.
    struct System {
        LoginItem& loginItem;
        const Bundles& bundles;
        const RunningApplications& runningApplications;
        AutomationPermission& permission;
        ApplicationLauncher& launcher;
        MainLoop& mainLoop;
    };

    /// `browsers` gives those to offer, the default one first. `defaults` outlives the setup.
    Setup(std::function<std::vector<Browser>()> browsers, UserDefaults& defaults,
          const System& system);
    ~Setup() override;

    /// Looks at the desktop anew; nothing when finished.
    void refresh();
    /// Does what the step's state calls for: registers or asks, or leads to the settings.
    void perform(const Step& step);

    /// The login item first, then a step for each browser.
    const std::vector<Step>& steps() const { return steps_; }
    std::vector<Step> required() const;
    std::vector<Step> optional() const;
    std::vector<Step> completed() const; ///< of the required ones
    std::size_t done() const { return completed().size(); }

    /// Whether every required step was done once.
    bool finished() const { return finished_; }
    bool isReady() const { return finished_; }

    /// Called when a step has just become done.
    std::function<void()> onGrant;

    /// Sees to it that the browser runs and asks the person about it, then calls `completion`,
    /// perhaps at once. Nobody waits for the person's answer.
    static void requestAutomation(const QString& bundleID, std::function<void()> completion,
                                  const System& system);
    /// What the person decided about a browser that runs; absent for one that does not. Only with
    /// `ask` the person is asked who has not decided.
    static std::optional<State> automationState(const QString& bundleID, bool ask,
                                                const System& system);

    /// Where the permissions of browsers are managed, as an address for `ApplicationLauncher`.
    static const QString& automationSettings();

Q_SIGNALS:
    /// Steps, or whether they are finished.
    void changed();

private:
    std::vector<Step> currentSteps() const;
    const Step* find(const QString& id) const;

    std::function<std::vector<Browser>()> browsers_;
    UserDefaults& defaults_;
    System system_;
    std::vector<Step> steps_;
    bool finished_;
    std::unique_ptr<MainLoopTimer> timer_; ///< while not finished
};

} // namespace orvanta
