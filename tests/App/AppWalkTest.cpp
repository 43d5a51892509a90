#include "AppStage.h"
#include "Model/DurationText.h"
#include "Views/ActivityRow.h"
#include "Views/HistoryGrid.h"
#include "Views/PanelView.h"
#include "Views/Text/PanelText.h"
#include "Views/Text/StatusText.h"

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

/// What another process finds in the store and the preferences, computed plainly.
struct Told {
    struct Row {
        QString key;
        QString name;
        Category category;
        double seconds;
    };
    std::vector<Row> rows; ///< of what can be classified
    QString days;          ///< all records of the history
    double total;          ///< seconds in the history
    bool paused;
    QStringList disabledBrowsers;

    explicit Told(const QString& folder) {
        const UserDefaults defaults(folder, u"com.brindlework.orvanta"_s);
        paused = defaults.boolValue(u"paused"_s);
        disabledBrowsers = defaults.stringArray(u"disabledBrowsers"_s).value_or(QStringList());
        Database store(folder + u"/com.brindlework.orvanta/Activities.store"_s,
                       Database::Access::Read);
        Statement row(store, "SELECT ZKEY, ZNAME, ZCATEGORYVALUE, ZSECONDS FROM "
                             "ZACTIVITY WHERE ZKEY LIKE 'site:%' OR ZKEY LIKE 'app:app%'");
        while (row.step()) {
            rows.push_back(
                {row.text(0), row.text(1), categoryFromRawValue(row.text(2)).value(), row.real(3)});
        }
        days = store.text("SELECT group_concat(ZDAY || ZKEY || ZSECONDS) FROM ZDAYACTIVITY");
        total = store.text("SELECT total(ZSECONDS) FROM ZDAYACTIVITY").toDouble();
        EXPECT_EQ(store.integer("SELECT count(*) FROM ZDAYACTIVITY WHERE ZSECONDS <= 0"), 0);
    }

    bool isIgnored(const QString& key) const {
        const auto found = std::ranges::find(rows, key, &Row::key);
        return found != rows.end() && found->category == Category::ignored;
    }
    StatusTotals totals() const {
        std::map<Category, double> sum;
        for (const Row& row : rows) {
            sum[row.category] += row.seconds;
        }
        return {sum[Category::production], sum[Category::consumption], sum[Category::pending]};
    }
};

/// A seeded walk over everything that a person and a desktop can do to the whole application.
///
/// Beside it two bounds are kept of the seconds in the store's day records: of what must be in
/// them, and of what may be: the time in a browser, of which a site counts or none.
class Walk : private AppStage {
public:
    explicit Walk(unsigned seed)
        : random_(seed) {
        defaults().setBool(u"setupDoneV1"_s, seed % 3 != 0);
        install(u"browser0"_s, u"A"_s);
        install(u"browser1"_s, u"B"_s);
        desktop.installed.defaultHandler = u"/apps/browser0"_s;
        desktop.workspace.components = {u"part"_s};
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
                << "left: " << widget->metaObject()->className();
        }
    }

    void step() {
        auto& running = desktop.automation->running;
        auto& decisions = desktop.automation->decisions;
        auto& launches = desktop.automation->launches;
        using enum WindowWatching;
        const std::function<void()> often[] = {
            [&] { press(Qt::LeftButton); },
            [&] { key(); },
            [&] { press(Qt::LeftButton); },
            [&] { key(); },
            [&] { pass((1 + upTo(80)) / 8.0); },
            [&] {
                desktop.press({1000 + upTo(280), upTo(28)});
                desktop.item->handlers.activate(desktop.pointer);
            },
            [&] { press(Qt::NoButton); },
            [&] { toFront(u"app%1"_s.arg(upTo(14))); },
        };
        const std::function<void()> seldom[] = {
            [&] { press(Qt::RightButton); },
            [&] { desktop.item->handlers.activate(std::nullopt); },
            [&] {
                desktop.item->handlers.menuWillOpen();
                EXPECT_EQ(popover(), nullptr);
                entry(2 * upTo(3)).action();
            },
            [&] { closePopups(); },
            [&] { delegate->applicationShouldHandleReopen(); },
            [&] { toFront(oneIn(2) ? u"part"_s : QString()); },
            [&] { toFront(desktop.workspace.ownBundleIdentifier()); },
            [&] { toFront(anyBrowser()); },
            [&] { toFront(anyBrowser()); },
            [&] {
                running[anyBrowser()].assign(upTo(2), {++process_, oneIn(8)});
            },
            [&] { decisions[1 + upTo(process_)] = AutomationPermission::refused; },
            [&] { decisions[process_] = AutomationPermission::permitted; },
            [&] { launches.empty() ? void() : desktop.automation->launched(); },
            [&] { goOrCome(); },
            [&] { goOrCome(); },
            [&] { desktop.start += std::chrono::seconds(upTo(200000) - 100000); },
            [&] { desktop.defaultCenter.post(Notification::CalendarDayChanged); },
            [&] { Q_EMIT desktop.timeZoneChanged(QTimeZone(oneIn(2) ? "Asia/Tokyo" : "UTC")); },
            [&] { pass(upTo(400)); },
            [&] { spend(upTo(oneIn(8) ? 40000 : 600) / 4.0, true); },
            [&] { restart(); },
            [&] { desktop.looks.become(oneIn(2) ? ColorScheme::dark : ColorScheme::light); },
            [&] { desktop.login.current = static_cast<LoginItem::Status>(upTo(4)); },
            [&] { tellOfWindows(oneIn(2) ? Unsupported : Watching); },
            [&] { desktop.screens.resize(upTo(2)); },
            [&] { desktop.item->isShown = oneIn(2); },
            [&] { desktop.tellsPresses = !oneIn(4); },
        };
        oneIn(4) ? seldom[upTo(std::ssize(seldom))]() : often[upTo(std::ssize(often))]();
        settle();
        if (std::exchange(terminations, 0) > 0) {
            restart();
        }
    }

    void check() {
        settle(); // What a window's coming or going has closed goes as well.
        for (const QWidget* each : QApplication::allWidgets()) { // One panel, in the popover.
            EXPECT_TRUE(dynamic_cast<const PanelRoot*>(each) == nullptr ||
                        each->parentWidget() == popover());
        }
        EXPECT_FALSE(popover() == nullptr && desktop.pressHandler);
        delegate->save();
        QCoreApplication::processEvents();
        const Told& told = told_.emplace(folder.path());
        constexpr double rounding = 1e-4;
        if (told.total > 0) { // Else a person may have erased it.
            EXPECT_GE(told.total, least_ - rounding);
            EXPECT_LE(told.total, most_ + rounding);
        }
        least_ = most_ = told.total;
        EXPECT_EQ(desktop.item->title, statusTitle(told.totals(), told.paused));
        EXPECT_EQ(desktop.item->handlers.toolTip(), statusToolTip(told.totals(), told.paused));
        if (const auto* const panel = firstShown<PanelView>(popover())) {
            checkPanel(told, *panel);
        } else if (popover() != nullptr) {
            EXPECT_FALSE(defaults().boolValue(u"setupDoneV1"_s));
        }
    }

private:
    int upTo(qint64 n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    bool oneIn(int n) { return upTo(n) == 0; }
    QString anyBrowser() { return u"browser%1"_s.arg(upTo(2)); }

    // Its life.

    void begin() {
        ASSERT_TRUE(launch());
        comes_.reset();
        desktop.automation->answer = [this](qint64, const auto& completion) {
            const auto site = showing(u"https://s%1.org/"_s.arg(upTo(6)));
            completion(oneIn(8) ? std::nullopt : std::optional(site));
        };
        settle();
        external_.clear();
        toFront(front_);
        told_.emplace(folder.path());
    }
    void restart() {
        const auto running = desktop.automation->running;
        end();
        const Told before(folder.path());
        begin();
        desktop.automation->running = running;
        EXPECT_EQ(told_->days, before.days);
    }

    // Time.

    /// The key that counts now; empty for a browser.
    std::optional<QString> due() const {
        const bool isOwn = front_ == desktop.workspace.ownBundleIdentifier();
        const QString id = !isOwn ? front_ : popover() != nullptr ? external_ : QString();
        if (told_->paused || comes_ || id.isEmpty() || desktop.workspace.components.contains(id) ||
            told_->disabledBrowsers.contains(id) || told_->isIgnored(u"app:"_s + id)) {
            return std::nullopt;
        }
        return id.startsWith(u"browser"_s) ? QString() : u"app:"_s + id;
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

    // The desktop.

    void toFront(const QString& id) {
        front_ = id;
        if (id.startsWith(u"app"_s) || id.startsWith(u"browser"_s)) {
            external_ = id;
        }
        AppStage::toFront(id);
    }
    void goOrCome() {
        if (comes_) {
            post(*std::exchange(comes_, {}));
        } else if (oneIn(4)) {
            const auto& [goes, comes] = absences[upTo(4)];
            comes_ = comes;
            post(goes);
        }
    }

    // What a person does to it.

    /// Presses and releases a button, or none, at a place in something that can be seen, in a menu
    /// or a popover if one is open. Between a press and its release anything may happen.
    void press(Qt::MouseButton button) {
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
        if (button == Qt::LeftButton && oneIn(16)) {
            oneIn(2) ? pass(upTo(40) / 10.0) : toFront(u"app%1"_s.arg(upTo(14)));
        }
        if (window) {
            QTest::mouseRelease(window.data(), button, {}, place);
        }
    }
    void key() {
        static const QStringList keys =
            u"Tab Tab Tab Backtab Up Down Down Left Right Space Space Home End PgUp PgDown A S 1 "
            "P Backspace Return Enter F4 Esc Alt F10 Menu Ctrl+W Ctrl+M Ctrl+H Ctrl+A Ctrl+X "
            "Ctrl+C Ctrl+V Ctrl+, Ctrl+Tab Ctrl+Q"_s.split(u' ');
        const QWidget* const popup = QApplication::activePopupWidget();
        QWindow* const window =
            popup != nullptr ? popup->windowHandle() : QGuiApplication::focusWindow();
        const QKeyCombination chosen = QKeySequence(keys[upTo(oneIn(6) ? keys.size() : 27)])[0];
        if (window != nullptr) {
            QTest::keyClick(window, chosen.key(), chosen.keyboardModifiers());
        }
    }
    /// As the desktop has it done by a press that no window of the application sees.
    static void closePopups() {
        while (QWidget* const popup = QApplication::activePopupWidget()) {
            popup->close();
        }
    }

    // What must be said.

    void checkPanel(const Told& told, const PanelView& panel) {
        const bool isHistory = named<GridButton>(panel, "Histórico por dia").isChecked();
        const bool isOfIgnored = named<GridButton>(panel, "Não monitorados").isChecked();
        EXPECT_EQ(firstShown<HistoryGrid>(&panel) != nullptr, isHistory);
        const QString said = accessibleLines(*popover()).join(u'\n');
        EXPECT_TRUE(said.contains(u"\nButton "_s + pauseTitle(told.paused)));
        if (!isHistory && !isOfIgnored) {
            const auto [production, consumption, pending] = told.totals();
            const QString title = listingTitle(Listing::activities, told.paused) + u' ' +
                                  duration(production + consumption + pending);
            EXPECT_TRUE(said.contains(title)) << qPrintable(title + u" in\n"_s + said);
        }
        for (ActivityRow* row : shown<ActivityRow>(&panel)) {
            const QString key = row->activity()->key();
            const auto found = std::ranges::find(told.rows, key, &Told::Row::key);
            EXPECT_EQ(isOfIgnored, found->category == Category::ignored) << qPrintable(key);
            QString line = accessibleLines(*row).filter(u"Text "_s).value(0);
            // In a browser a site may be what counts.
            EXPECT_TRUE(due() == QString() || line.endsWith(u", Ativo"_s) == (due() == key));
            EXPECT_EQ(line.remove(u", Ativo"_s),
                      u"Text "_s + found->name + u", "_s + duration(found->seconds));
        }
    }

    std::mt19937 random_;
    qint64 process_ = 1;                ///< that a browser was started as last
    std::optional<Notification> comes_; ///< what will be told when a person who is away comes back
    QString front_;
    QString external_;         ///< what was last in front that was not Orvanta
    std::optional<Told> told_; ///< as of the last step
    double least_ = 0;
    double most_ = 0;
};

} // namespace

/// Walks by seeds that are fixed; with --gtest_shuffle by others at every run, and with
/// --gtest_random_seed by that one and the next.
TEST(AppWalkTest, WhateverAPersonDoesNothingBreaksAndNoSecondIsLost) {
    const int chosen = GTEST_FLAG_GET(shuffle) ? testing::UnitTest::GetInstance()->random_seed()
                                               : GTEST_FLAG_GET(random_seed);
    const unsigned first = chosen > 0 ? static_cast<unsigned>(chosen) : 1;
    for (unsigned seed = first; seed < first + 8; ++seed) {
        Walk walk(seed);
        for (int step = 0; step < 1250; ++step) {
            walk.step();
            walk.check();
            ASSERT_FALSE(testing::Test::HasFailure())
                << "step " << step << "; again with --gtest_random_seed=" << seed;
        }
    }
}
