#include "Linux/Applications/LinuxApplicationLauncher.h"

#include "Linux/Applications/ExecLine.h"
#include "Linux/Applications/KeyFile.h"
#include "Linux/Windows/X11WindowHider.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSocketNotifier>
#include <QUrl>

#include <sys/syscall.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <utility>

namespace orvanta {

namespace {

constexpr MainLoop::Duration hidingPatience{10.0};
/// A browser may open several windows; but soon they are those that the person asked for.
constexpr MainLoop::Duration furtherWindows{2.0};

const auto automationSettings =
    QStringLiteral("x-apple.systempreferences:com.apple.preference.security?Privacy_Automation");

/// The process, or nothing when the entry starts none.
std::optional<qint64> start(const DesktopEntry& entry) {
    const auto file = KeyFile::read(QFile::encodeName(entry.path));
    if (!file) {
        return std::nullopt;
    }
    const auto text = [&file](const char* key) {
        return QString::fromUtf8(file->text(G_KEY_FILE_DESKTOP_GROUP, key).get());
    };
    QStringList words = execWords(text(G_KEY_FILE_DESKTOP_KEY_EXEC),
                                  {text(G_KEY_FILE_DESKTOP_KEY_ICON), entry.name, entry.path});
    if (words.isEmpty()) {
        return std::nullopt;
    }
    const QString folder = text(G_KEY_FILE_DESKTOP_KEY_PATH);
    QProcess process;
    process.setProgram(words.takeFirst());
    process.setArguments(words);
    process.setWorkingDirectory(folder.isEmpty() ? QDir::homePath() : folder);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    qint64 number = 0;
    return process.startDetached(&number) ? std::optional(number) : std::nullopt;
}

/// One application whose windows are to be out of sight.
class HiddenLaunch final : public QObject {
public:
    HiddenLaunch(MainLoop& mainLoop, const QByteArray& display, qint64 process,
                 std::function<void()> completion, QObject* parent)
        : QObject(parent)
        , completion_(std::move(completion))
        , end_(static_cast<int>(::syscall(SYS_pidfd_open, static_cast<pid_t>(process), 0)))
        , hider_(X11WindowHider::open(display, process,
                                      [this, &mainLoop] {
                                          if (completion_) {
                                              timer_ = mainLoop.once(furtherWindows,
                                                                     [this] { finish(); });
                                          }
                                          complete();
                                      }))
        , timer_(mainLoop.once(end_ >= 0 && hider_ ? hidingPatience : MainLoop::Duration(0),
                               [this] { finish(); })) {
        if (end_ >= 0) {
            ended_ = std::make_unique<QSocketNotifier>(end_, QSocketNotifier::Read);
            connect(ended_.get(), &QSocketNotifier::activated, this, [this] { finish(); });
        }
    }
    ~HiddenLaunch() override {
        ended_.reset();
        if (end_ >= 0) {
            ::close(end_);
        }
    }
    HiddenLaunch(const HiddenLaunch&) = delete;
    HiddenLaunch& operator=(const HiddenLaunch&) = delete;

private:
    void finish() {
        if (ended_) {
            ended_->setEnabled(false);
        }
        hider_.reset();
        timer_.reset();
        deleteLater();
        complete();
    }
    void complete() {
        if (const auto completion = std::exchange(completion_, nullptr)) {
            completion();
        }
    }

    std::function<void()> completion_;
    int end_; ///< becomes readable when the process has ended
    std::unique_ptr<X11WindowHider> hider_;
    std::unique_ptr<MainLoopTimer> timer_;
    std::unique_ptr<QSocketNotifier> ended_;
};

} // namespace

LinuxApplicationLauncher::LinuxApplicationLauncher(Surroundings surroundings)
    : surroundings_(std::move(surroundings)) {}

LinuxApplicationLauncher::~LinuxApplicationLauncher() = default;

void LinuxApplicationLauncher::openApplication(const QString& location,
                                               const OpenConfiguration& configuration,
                                               std::function<void()> completion) {
    const auto entry = surroundings_.entries.at(location);
    const auto process = entry ? start(*entry) : std::nullopt;
    if (process) {
        surroundings_.started(*process, entry->id);
    }
    if (process && configuration.hides && !surroundings_.display.isEmpty()) {
        new HiddenLaunch(surroundings_.mainLoop, surroundings_.display, *process,
                         std::move(completion), &launches_);
    } else {
        completion();
    }
}

bool LinuxApplicationLauncher::open(const QString& address) {
    if (address == automationSettings) {
        surroundings_.showAutomation();
        return true;
    }
    return QDesktopServices::openUrl(QUrl(address, QUrl::StrictMode));
}

} // namespace orvanta
