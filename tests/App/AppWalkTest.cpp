#include "AppStage.h"
#include "Views/ActivityRow.h"
#include "Views/ActivityRows.h"
#include "Views/HistoryGrid.h"
#include "Views/PanelGeometry.h"
#include "Views/PanelView.h"
#include "Views/Text/HistoryText.h"
#include "Views/Text/SettingsText.h"
#include "Views/Text/StatusText.h"

#include <QLabel>
#include <QPointer>
#include <QTimer>

#include <random>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

constexpr std::pair<Notification, Notification> absences[] = {
    {Notification::WillSleep, Notification::DidWake},
    {Notification::ScreensDidSleep, Notification::ScreensDidWake},
    {Notification::SessionDidResignActive, Notification::SessionDidBecomeActive},
    {Notification::ScreenIsLocked, Notification::ScreenIsUnlocked}};

/// A seeded walk over everything that a person and a desktop can do to the whole application.
///
/// Beside it two bounds are kept of the seconds in the store's day records: of what must be in
/// them, and of what may be: the time in a browser, of which a site counts or none.
class Walk : private AppStage {
public:
    explicit Walk(unsigned seed)
        : random_(seed) {
        defaults().setBool(u"setupDoneV1"_s, seed % 3 != 0);
        install(u"browser0"_s);
        install(u"browser1"_s);
        desktop.installed.defaultHandler = u"/apps/browser0"_s;
        desktop.workspace.components = {u"part0"_s, u"part1"_s};
        begin();
    }
    ~Walk() {
        end();
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            widget->close(); // What was said at launch stands until it is read.
        }
        settle();
        EXPECT_EQ(desktop.loop.armedCount(), 0U);
        EXPECT_EQ(alerts, QStringList());
        for (const QWidget* widget : QApplication::allWidgets()) {
            EXPECT_EQ(widget->windowType(), Qt::Desktop) // Qt's own, made when first needed.
                << "left: " << widget->metaObject()->className() << ' '
                << qPrintable(widget->windowTitle() + widget->accessibleName());
        }
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    /// Does one thing, and says which.
    int step() {
        auto& running = desktop.automation->running;
        auto& decisions = desktop.automation->decisions;
        const std::function<void()> often[] = {
            [&] { press(Qt::LeftButton); },
            [&] { press(Qt::LeftButton); },
            [&] { key(); },
            [&] { key(); },
            [&] { pass((1 + upTo(80)) / 8.0); },
            [&] { clickStatusItem(); },
            [&] { press(Qt::NoButton); },
            [&] { toFront(u"app%1"_s.arg(upTo(14))); },
        };
        const std::function<void()> seldom[] = {
            [&] { press(Qt::RightButton); },
            [&] { drag(); },
            [&] { chooseFromStatusMenu(); },
            [&] { chooseFromStatusMenu(); },
            [&] {
                desktop.press({upTo(1280), upTo(800)}), closePopups();
            },
            [&] { delegate->applicationShouldHandleReopen(); },
            [&] { toFront(u"part%1"_s.arg(upTo(2))); },
            [&] { toFront(desktop.workspace.ownBundleIdentifier()); },
            [&] { toFront({}); },
            [&] { toFront(anyBrowser()); },
            [&] { toFront(anyBrowser()); },
            [&] {
                running[anyBrowser()] = {{++process_, oneIn(8)}};
            },
            [&] { running[anyBrowser()].clear(); },
            [&] { decisions[1 + upTo(process_)] = AutomationPermission::refused; },
            [&] { decisions[1 + upTo(process_)] = AutomationPermission::permitted; },
            [&] { decisions[process_] = AutomationPermission::permitted; },
            [&] { launches() ? desktop.automation->launched() : void(); },
            [&] { goOrCome(); },
            [&] { goOrCome(); },
            [&] { setClock(oneIn(4) ? 100000 : 3600); },
            [&] { travel(oneIn(2) ? "Asia/Tokyo" : "America/Sao_Paulo"); },
            [&] { pass(upTo(400)); },
            [&] { spend(upTo(oneIn(8) ? 40000 : 600) / 4.0, true); },
            [&] { restart(); },
            [&] { desktop.looks.become(oneIn(2) ? ColorScheme::dark : ColorScheme::light); },
            [&] { desktop.looks.still = oneIn(2); },
            [&] { desktop.login.current = anyStatus(); },
            [&] { desktop.login.afterRegistering = anyStatus(); },
            [&] { desktop.login.problem.swap(problem_); },
            [&] { tellOfWindows(oneIn(2) ? Windows::Unsupported : Windows::Watching); },
            [&] {
                desktop.screens.resize(upTo(3), {{1280, 0, 800, 600}, {1280, 0, 800, 600}});
            },
            [&] { desktop.item->isShown = oneIn(2); },
            [&] { desktop.tellsPresses = !oneIn(4); },
        };
        const bool isSeldom = oneIn(4);
        const int what = upTo(isSeldom ? std::ssize(seldom) : std::ssize(often));
        wasAsked_ = isAsked();
        (isSeldom ? seldom : often)[what]();
        settle();
        if (std::exchange(terminations, 0) > 0) {
            restart();
        }
        return isSeldom ? what + 100 : what;
    }

    void check() {
        const auto widgets = QApplication::allWidgets();
        EXPECT_EQ(std::ranges::count_if(widgets, isPanel), popover() != nullptr ? 1 : 0);
        EXPECT_FALSE(popover() == nullptr && desktop.pressHandler);
        delegate->save();
        QCoreApplication::processEvents();
        const Told& told = told_.emplace(read());
        for (const auto& [day, seconds] : told.days) {
            EXPECT_FALSE(std::ranges::any_of(seconds, [](auto& each) { return each.second <= 0; }));
        }
        constexpr double rounding = 1e-4;
        if (!(told.days.empty() && (wasAsked_ || isAsked()))) {
            EXPECT_GE(told.total, least_ - rounding);
            EXPECT_LE(told.total, most_ + rounding);
        }
        least_ = most_ = told.total;
        const auto [production, consumption, pending] = told.totals();
        const StatusTotals status{production, consumption, pending};
        EXPECT_EQ(desktop.item->title, statusTitle(status, told.paused));
        EXPECT_EQ(desktop.item->handlers.toolTip(), statusToolTip(status, told.paused));
        if (const auto* const panel = firstShown<PanelView>(popover())) {
            checkPanel(told, *panel);
        } else if (popover() != nullptr) {
            EXPECT_FALSE(defaults().boolValue(u"setupDoneV1"_s));
        }
        if (const QMainWindow* const window = settings(); window && !window->isMinimized()) {
            checkSettings(told, *window);
        }
    }

private:
    using Windows = WindowWatching;

    int upTo(qint64 n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    bool oneIn(int n) { return upTo(n) == 0; }
    QString anyBrowser() { return u"browser%1"_s.arg(upTo(2)); }
    LoginItem::Status anyStatus() { return static_cast<LoginItem::Status>(upTo(4)); }
    bool launches() const { return !desktop.automation->launches.empty(); }
    static bool isPanel(const QWidget* widget) {
        return dynamic_cast<const PanelRoot*>(widget) != nullptr;
    }

    // Its life.

    void begin() {
        ASSERT_TRUE(launch());
        for (const auto& absence : away_) { // As presence tells what it finds.
            post(absence.first);
        }
        desktop.automation->answer = [this](qint64, const auto& completion) {
            const auto site = showing(u"https://s%1.org/"_s.arg(upTo(6)));
            completion(oneIn(8) ? std::nullopt : std::optional(site));
        };
        settle();
        external_.clear();
        noticeFront();
        told_.emplace(read());
    }
    void restart() {
        const auto running = desktop.automation->running;
        end();
        const auto before = read().days;
        begin();
        desktop.automation->running = running;
        EXPECT_EQ(told_->days, before);
    }
    Told read() {
        return {folder.path(), [this](const QString& id) {
                    return id.startsWith(u"browser"_s) || id == u"com.apple.finder"_s ||
                           desktop.workspace.seenComponents.contains(id);
                }};
    }

    // Time.

    /// The key that counts now; empty for a browser.
    std::optional<QString> due() const {
        if (told_->paused || !away_.empty() || !desktop.workspace.front) {
            return std::nullopt;
        }
        QString id = desktop.workspace.front->bundleIdentifier;
        if (id == desktop.workspace.ownBundleIdentifier()) {
            id = popover() != nullptr ? external_ : QString();
        }
        const QString key = u"app:"_s + id;
        if (id.isEmpty() || desktop.workspace.components.contains(id) ||
            told_->disabledBrowsers.contains(id) || told_->categoryOf(key) == Category::ignored) {
            return std::nullopt;
        }
        return id.startsWith(u"browser"_s) ? QString() : key;
    }
    void spend(double seconds, bool isHeldUp) {
        const auto before = due();
        isHeldUp ? void(desktop.stalled += seconds) : desktop.loop.advance(seconds);
        // A granted permission opens the popover somewhere on the way.
        const bool isSure = before && before == due() && !before->isEmpty();
        least_ += isSure ? seconds : 0;
        most_ += before || due() ? seconds : 0;
    }
    void pass(double seconds) {
        spend(seconds, false);
        settle();
    }
    void setClock(int most) {
        desktop.start += std::chrono::seconds(upTo(2 * most) - most);
        desktop.defaultCenter.post(Notification::CalendarDayChanged);
    }
    void travel(const char* zone) {
        calendar.setTimeZone(QTimeZone(zone));
        Q_EMIT desktop.timeZoneChanged(QTimeZone(zone));
        desktop.defaultCenter.post(Notification::CalendarDayChanged);
    }

    // The desktop.

    void toFront(const QString& id) {
        AppStage::toFront(id);
        noticeFront();
    }
    void noticeFront() {
        const QString id =
            desktop.workspace.front ? desktop.workspace.front->bundleIdentifier : QString();
        if (!id.startsWith(u"com."_s) && !id.startsWith(u"part"_s) && !id.isEmpty()) {
            external_ = id;
        }
    }
    void goOrCome() {
        const auto& absence = absences[upTo(4)];
        if (oneIn(4) && away_.insert(absence).second) {
            post(absence.first);
        } else {
            for (const auto& each : std::exchange(away_, {})) {
                post(each.second);
            }
        }
    }

    // What a person does to it.

    static bool isAsked() {
        return std::ranges::any_of(shown<QMessageBox>(), [](const QMessageBox* box) {
            return !box->informativeText().isEmpty();
        });
    }
    /// Presses and releases a button, or none, at a place in something that can be seen, in a menu
    /// or a popover if one is open.
    void press(
        Qt::MouseButton button, const std::function<void()>& meanwhile = [] {}) {
        std::vector<QWidget*> all;
        const QWidget* const popup = oneIn(8) ? nullptr : QApplication::activePopupWidget();
        // In the order in which they were made, which is the same in every run.
        for (QWindow* handle : QGuiApplication::topLevelWindows()) {
            QWidget* const window = QWidget::find(handle->winId());
            if (window != nullptr && window->isVisible() && !window->isMinimized() &&
                (popup == nullptr || window == popup)) {
                all.push_back(window);
                for (QWidget* widget : shown(window)) {
                    // Most clicks mean a control.
                    all.insert(all.end(), qobject_cast<QAbstractButton*>(widget) ? 4 : 1, widget);
                }
            }
        }
        if (all.empty()) {
            return;
        }
        QWidget& widget = *all[static_cast<std::size_t>(upTo(std::ssize(all)))];
        const QPoint inside(upTo(widget.width() + 1), upTo(widget.height() + 1));
        const QPoint place = widget.mapTo(widget.window(), inside);
        const QPointer<QWindow> window = widget.window()->windowHandle();
        if (!window || !widget.window()->rect().contains(place)) {
            return; // It is scrolled away.
        }
        desktop.pointer = widget.window()->mapToGlobal(place);
        QTest::mouseMove(window.data(), place);
        if (button == Qt::NoButton) {
            return pass(oneIn(2) ? 0.5 : 0);
        }
        desktop.press(desktop.pointer);
        if (window && window->isVisible()) {
            // Qt waits for the end of some menus of its own before it goes on.
            const QObject waiting;
            QTimer::singleShot(0, &waiting, &Walk::closePopups);
            QTest::mousePress(window.data(), button, {}, place);
        }
        meanwhile();
        if (window) {
            QTest::mouseRelease(window.data(), button, {}, place);
        }
    }
    /// Between a press and its release anything may happen.
    void drag() {
        press(Qt::LeftButton,
              [this] { oneIn(2) ? pass(upTo(40) / 10.0) : toFront(u"app%1"_s.arg(upTo(14))); });
    }
    void key() {
        static const QStringList keys =
            u"Tab Tab Tab Backtab Up Down Down Left Right Space Space Home End PgUp PgDown A S 1 "
            "P Backspace Return Enter F4 Esc Alt F10 Menu Ctrl+W Ctrl+M Ctrl+H Ctrl+A Ctrl+X "
            "Ctrl+C Ctrl+V Ctrl+, Ctrl+Tab Ctrl+Q"_s.split(u' ');
        const QWidget* const popup = QApplication::activePopupWidget();
        const QPointer<QWindow> window =
            popup != nullptr ? popup->windowHandle() : QGuiApplication::focusWindow();
        const QKeyCombination chosen = QKeySequence(keys[upTo(oneIn(6) ? keys.size() : 27)])[0];
        for (const auto action : {QTest::Press, QTest::Release}) {
            if (window) {
                QTest::sendKeyEvent(action, window.data(), chosen.key(), QString(),
                                    chosen.keyboardModifiers());
            }
        }
    }
    void clickStatusItem() {
        desktop.pointer = {1000 + upTo(280), upTo(28)};
        if (oneIn(2)) {
            desktop.press(desktop.pointer);
        }
        desktop.item->handlers.activate(oneIn(2) ? std::optional(desktop.pointer) : std::nullopt);
    }
    void chooseFromStatusMenu() {
        desktop.item->handlers.menuWillOpen();
        EXPECT_EQ(popover(), nullptr);
        entry(oneIn(4) ? 4 : oneIn(2) ? 2 : 0).action();
    }
    /// As the desktop has it done by a press that no window of the application sees.
    static void closePopups() {
        while (QWidget* const popup = QApplication::activePopupWidget()) {
            popup->close();
        }
    }

    // What must be said.

    void checkPanel(const Told& told, const PanelView& panel) {
        const QStringList lines = accessibleLines(*popover());
        const auto expectLine = [&lines](const QString& line) {
            EXPECT_TRUE(lines.contains(line)) << qPrintable(line + u" in\n"_s + lines.join(u'\n'));
        };
        const auto isPinned = [&panel](const char* title) {
            return named<GridButton>(panel, title).isChecked();
        };
        const Listing listing = isPinned("Histórico por dia") ? Listing::history
                                : isPinned("Não monitorados") ? Listing::unmonitored
                                                              : Listing::activities;
        expectLine(u"Button "_s + pauseTitle(told.paused));
        const auto* const grid = firstShown<HistoryGrid>(&panel);
        ASSERT_EQ(grid != nullptr, listing == Listing::history);
        if (const HistoryDay* const day = grid != nullptr ? grid->hoveredDay() : nullptr) {
            const double all = Told::all(day->totals);
            EXPECT_NEAR(all, Told::all(told.totals(day->id)), 1e-4) << qPrintable(day->id);
            return expectLine(u"Text "_s + dayTitle(day->date, calendar) + u' ' + duration(all));
        }
        const DayTotals totals = told.totals();
        const double classified = totals.production + totals.consumption;
        const double ratio = totals.production / classified;
        const auto share = [&](double part) {
            return metricPercentage(classified > 0 ? std::optional(part) : std::nullopt);
        };
        expectLine(u"Text ↑ "_s + share(ratio) + u" PRODUÇÃO"_s);
        expectLine(u"Text ↓ "_s + share(1 - ratio) + u" CONSUMO"_s);
        const auto active = activeKey(panel);
        const auto rows = told.listed(listing, active, entry(0).checked.value_or(false),
                                      Date::from(desktop.platform().systemTime()));
        expectLine(u"Text "_s + listingTitle(listing, told.paused) + u' ' +
                   (listing == Listing::activities
                        ? duration(Told::all(totals))
                        : QString::number(grid != nullptr ? told.daysWithTime() : rows.size())));
        if (grid == nullptr && rows.empty()) {
            expectLine(u"Text "_s + emptyText(listing, Told::all(totals) > 0));
        }
        const auto found = shown<ActivityRow>(&panel);
        for (ActivityRow* row : found) {
            const auto place = static_cast<std::size_t>(row->y() / rowHeight);
            EXPECT_EQ(
                accessibleLines(*row),
                Told::lines(rows.at(place), listing, rows[place].key == active && !told.paused));
        }
        EXPECT_GE(found.size(), grid != nullptr ? 0 : std::min<std::size_t>(rows.size(), 5));
    }
    /// Of a browser it is what the panel says.
    std::optional<QString> activeKey(const PanelView& panel) const {
        const auto key = due();
        if (!key || !key->isEmpty()) {
            return key;
        }
        for (ActivityRow* row : shown<ActivityRow>(&panel)) {
            if (row->y() == 0 && accessibleLines(*row).join(u' ').contains(u", Ativo"_s)) {
                return row->activity()->key();
            }
        }
        return std::nullopt;
    }
    void checkSettings(const Told& told, const QMainWindow& window) const {
        for (const QLabel* label : shown<QLabel>(&window)) {
            if (label->alignment().testFlag(Qt::AlignRight) && label->text().contains(u" de "_s)) {
                EXPECT_EQ(label->text(), countStartText(told.resetDate, calendar));
            }
        }
        if (const auto* const clear = find(window, u"Apagar histórico…"_s)) {
            EXPECT_EQ(clear->isEnabledTo(&window), told.daysWithTime() > 0);
        }
    }

    std::mt19937 random_;
    qint64 process_ = 1; ///< that a browser was started as last
    std::optional<QString> problem_ = u"Não foi possível."_s;
    std::set<std::pair<Notification, Notification>> away_; ///< why the person is away
    QString external_;         ///< what was last in front that was not Orvanta
    std::optional<Told> told_; ///< as of the last step
    double least_ = 0;
    double most_ = 0;
    bool wasAsked_ = false;
};

} // namespace

/// Walks by seeds that are fixed; with --gtest_shuffle by others at every run, and with
/// --gtest_random_seed by that one and the next.
TEST(AppWalkTest, WhateverAPersonDoesNothingBreaksAndNoSecondIsLost) {
    const int chosen = GTEST_FLAG_GET(shuffle) ? testing::UnitTest::GetInstance()->random_seed()
                                               : GTEST_FLAG_GET(random_seed);
    const unsigned first = chosen > 0 ? static_cast<unsigned>(chosen) : 1;
    for (unsigned seed = first; seed < first + 8; ++seed) {
        auto walk = std::make_optional<Walk>(seed);
        for (int step = 0; step < 1250; ++step) {
            const int what = walk->step();
            walk->check();
            ASSERT_FALSE(testing::Test::HasFailure())
                << "seed " << seed << ", step " << step << ", which was " << what
                << "; again with --gtest_random_seed=" << seed;
        }
        walk.reset();
        ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed << ", at the end";
    }
}
