#include "App/AppDelegate.h"
#include "Fakes/FakeDesktop.h"
#include "Fakes/QtPrinters.h"
#include "Model/FailingDisk.h"
#include "Shown.h"
#include "Told.h"
#include "Views/ActivityRow.h"
#include "Views/ActivityRows.h"
#include "Views/Confirmation.h"
#include "Views/GridButton.h"
#include "Views/HistoryGrid.h"
#include "Views/PanelGeometry.h"
#include "Views/PanelRoot.h"
#include "Views/PanelView.h"
#include "Views/SetupView.h"
#include "Views/Text/HistoryText.h"
#include "Views/Text/SettingsText.h"
#include "Views/Text/SetupText.h"
#include "Views/WidgetReading.h"

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

#include <gmock/gmock.h>

#include <array>
#include <deque>
#include <functional>
#include <random>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

/// A seeded walk over everything that a person and a desktop can do to the whole application.
///
/// Beside it a ledger is kept, of the seconds that must be in the store's day records and of those
/// that may be: a browser's count from the moment that it answered, which is none of the ledger's
/// business.
class Walk {
public:
    explicit Walk(unsigned seed)
        : random_(seed)
        , isSetUp_(seed % 3 != 0) {
        UserDefaults(folder_.path(), domain_).setBool(u"setupDoneV1"_s, isSetUp_);
        for (const QString& id : browserIDs_) {
            desktop_.installed.install(
                u"/apps/"_s + id, id.toUpper(),
                "<property code=\"acTa\"/><property code=\"URL \"/><property code=\"cTab\"/>"
                "<property code=\"pURL\"/>");
            sites_[id] = anySite();
        }
        desktop_.installed.defaultHandler = u"/apps/"_s + browserIDs_.front();
        desktop_.workspace.components = {u"part0"_s, u"part1"_s};
        launch();
    }
    ~Walk() {
        FailingDisk::repair();
        end();
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            widget->close(); // What was said at launch stands until it is read.
        }
        settle();
        EXPECT_EQ(desktop_.loop.armedCount(), 0U);
        for (const QWidget* widget : QApplication::allWidgets()) {
            EXPECT_EQ(widget->windowType(), Qt::Desktop) // Qt's own, made when first needed.
                << "left: " << widget->metaObject()->className() << ' '
                << qPrintable(widget->windowTitle() + widget->accessibleName());
        }
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    /// Does one thing, and says which.
    const char* step() {
        struct Thing {
            const char* name;
            int weight;
            void (Walk::*act)();
        };
        static constexpr Thing things[] = {
            {"click", 36, &Walk::click},
            {"resume", 3, &Walk::resume},
            {"right click", 5, &Walk::rightClick},
            {"double click", 2, &Walk::doubleClick},
            {"drag", 2, &Walk::drag},
            {"key", 24, &Walk::key},
            {"hover", 8, &Walk::hover},
            {"wheel", 4, &Walk::wheel},
            {"status item", 12, &Walk::clickStatusItem},
            {"status menu", 5, &Walk::chooseFromStatusMenu},
            {"press elsewhere", 2, &Walk::pressElsewhere},
            {"start again", 2, &Walk::startAgain},
            {"application", 7, &Walk::toApplication},
            {"part of the desktop", 2, &Walk::toPart},
            {"Orvanta in front", 4, &Walk::toOwn},
            {"nothing in front", 1, &Walk::toNothing},
            {"browser in front", 4, &Walk::toBrowser},
            {"browser", 8, &Walk::changeBrowser},
            {"stay in browser", 1, &Walk::stayInBrowser},
            {"away or back", 4, &Walk::goOrCome},
            {"clock", 1, &Walk::setClock},
            {"time zone", 1, &Walk::travel},
            {"midnight", 1, &Walk::passMidnight},
            {"seconds", 20, &Walk::passSeconds},
            {"minutes", 2, &Walk::passMinutes},
            {"stall", 2, &Walk::stall},
            {"disk", 2, &Walk::changeDisk},
            {"end and start", 1, &Walk::restart},
            {"kill and start", 1, &Walk::killAndRestart},
            {"desktop", 4, &Walk::changeDesktop},
        };
        int sum = 0;
        for (const Thing& thing : things) {
            sum += thing.weight;
        }
        int chosen = upTo(sum);
        const Thing* thing = things;
        while (chosen >= thing->weight) {
            chosen -= thing->weight;
            ++thing;
        }
        if (isDiskFailing_ && oneIn(12)) {
            repairDisk();
        }
        askedToClear_ = askedToClear_ || !shownQuestions().empty();
        (this->*thing->act)();
        settle();
        if (terminations_ > 0) {
            terminations_ = 0;
            restart();
            settle();
        }
        return thing->name;
    }

    void check() {
        checkWindows();
        delegate_->save();
        QCoreApplication::processEvents();
        if (isDiskFailing_) {
            checkComplaint();
            told_->readPreferences(folder_.path());
            return;
        }
        const Told told = read();
        checkLedger(told);
        checkSession(told);
        told_ = told;
        EXPECT_EQ(desktop_.item->title, statusTitle(told.status(), told.paused));
        EXPECT_EQ(desktop_.item->handlers.toolTip(), statusToolTip(told.status(), told.paused));
        if (auto* const panel = visible<PanelView>()) {
            checkPanel(told, *panel);
        }
        if (const auto* const view = visible<SetupView>()) {
            EXPECT_FALSE(UserDefaults(folder_.path(), domain_).boolValue(u"setupDoneV1"_s));
            EXPECT_FALSE(accessibleLines(*popover()).filter(u"Text CONFIGURAÇÃO "_s).isEmpty());
        }
        checkSettings(told);
    }

private:
    int upTo(qsizetype n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    bool oneIn(int n) { return upTo(n) == 0; }
    QString anySite() { return u"s%1.org"_s.arg(upTo(6)); }
    QString anyBrowser() { return browserIDs_[upTo(browserIDs_.size())]; }

    // Its life.

    void launch() {
        delegate_ = std::make_unique<AppDelegate>(AppDelegate::Surroundings{
            .desktop = desktop_,
            .configurationFolder = folder_.path(),
            .dataFolder = folder_.path(),
            .calendar = calendar_,
            .alert =
                [](const QString& message, const QString& informativeText) {
                    ADD_FAILURE() << qPrintable(message) << '|' << qPrintable(informativeText);
                },
            .terminate =
                [this] {
                    ++terminations_;
                }});
        ASSERT_TRUE(delegate_->applicationDidFinishLaunching());
        for (const std::size_t reason : reasons_) { // As presence tells what it finds.
            reasons()[reason].center.post(reasons()[reason].goes);
        }
        desktop_.automation->running = running_;
        desktop_.automation->decisions = decisions_;
        desktop_.automation->answer = [this](qint64 process, auto completion) {
            asked_.push_back({process, desktop_.uptime(), std::move(completion)});
            if (!answersLate_) {
                answer();
            }
        };
        desktop_.loop.advance(0);
        settle();
        lastExternal_.clear();
        noticeFront();
        told_ = read();
    }
    void end() {
        delegate_->applicationWillTerminate();
        delegate_.reset();
        asked_.clear();
        settle();
    }
    void restart() {
        repairDisk();
        end();
        const Told before = read();
        checkStore();
        launch();
        EXPECT_EQ(read().days, before.days);
    }
    void killAndRestart() {
        repairDisk();
        delegate_->save();
        constexpr double saves = 5;
        spend(upTo(120) / 10.0, saves);
        // The disk as it is now: what comes on the way out does not reach it.
        const QString store = folder_.filePath(u"com.brindlework.orvanta/"_s);
        std::map<QString, QByteArray> files;
        for (const QString& name : QDir(store).entryList(QDir::Files)) {
            QFile file(store + name);
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            files[name] = file.readAll();
        }
        end();
        for (const QString& name : QDir(store).entryList(QDir::Files)) {
            ASSERT_TRUE(QFile::remove(store + name));
        }
        for (const auto& [name, content] : files) {
            QFile file(store + name);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(content);
        }
        checkStore();
        launch();
    }
    void checkStore() {
        Database store(folder_.filePath(u"com.brindlework.orvanta/Activities.store"_s));
        EXPECT_EQ(store.text("PRAGMA integrity_check"), u"ok"_s);
    }
    Told read() {
        return {folder_.path(), [this](const QString& id) {
                    return browserIDs_.contains(id) || id == u"com.apple.finder"_s ||
                           desktop_.workspace.seenComponents.contains(id);
                }};
    }

    /// Everything that is posted to the main loop has its turn.
    static void settle() {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    // Time.

    /// A key that counts now. None for a browser: which of its sites, or none, is left open.
    struct Due {
        std::optional<QString> key;
    };
    std::optional<Due> due() const {
        if (told_->paused || !reasons_.empty() || !desktop_.workspace.front) {
            return std::nullopt;
        }
        QString id = desktop_.workspace.front->bundleIdentifier;
        if (id == desktop_.workspace.ownBundleIdentifier()) {
            id = popover() != nullptr ? lastExternal_ : QString();
        }
        if (id.isEmpty() || desktop_.workspace.components.contains(id)) {
            return std::nullopt;
        }
        if (browserIDs_.contains(id)) {
            return told_->disabledBrowsers.contains(id) ? std::nullopt : std::optional(Due{});
        }
        const QString key = u"app:"_s + id;
        // What was classified while nothing could be written is not known here.
        return !isDiskFailing_ && told_->isIgnored(key) ? std::nullopt : std::optional(Due{key});
    }
    void book(const std::optional<Due>& due, double must, double may = 0) {
        if (!due) {
            return;
        }
        if (!due->key || (isDiskFailing_ && due->key->startsWith(anySite_))) {
            may_[anySite_] += must + may;
        } else {
            must_[*due->key] += isDiskFailing_ ? 0 : must;
            may_[*due->key] += isDiskFailing_ ? must + may : may;
        }
    }
    /// Lets it pass; as much of the end of it as `lost` says may be in no record.
    void spend(double seconds, double lost = 0) {
        const auto before = due();
        const bool wasOpen = popover() != nullptr;
        desktop_.loop.advance(seconds);
        // A granted permission opens the popover somewhere on the way.
        if (wasOpen == (popover() != nullptr)) {
            book(before, std::max(0.0, seconds - lost), std::min(seconds, lost));
        } else {
            book(due(), 0, seconds);
        }
    }
    void pass(double seconds) {
        spend(seconds);
        settle();
        while (!asked_.empty() && asked_.front().at + 2 <= desktop_.uptime()) {
            answer();
        }
        settle();
    }
    void passSeconds() { pass((1 + upTo(80)) / 8.0); }
    void passMinutes() {
        for (int i = upTo(4); i >= 0; --i) {
            pass(upTo(100));
        }
    }
    void stall() {
        const auto before = due();
        const double seconds = upTo(oneIn(8) ? 40000 : 600) / 4.0;
        desktop_.stalled += seconds;
        book(before, seconds);
    }
    Date now() { return Date::from(desktop_.platform().systemTime()); }
    void passMidnight() {
        const double left = 86400 - (now() - calendar_.startOfDay(now()));
        if (left > 5) {
            const auto before = due();
            desktop_.stalled += left - 3;
            book(before, left - 3);
        }
        pass(3);
        pass(upTo(4) + 3);
        desktop_.defaultCenter.post(Notification::CalendarDayChanged);
    }
    void setClock() {
        const int seconds = oneIn(4) ? upTo(400000) - 200000 : upTo(7200) - 3600;
        desktop_.start += std::chrono::seconds(seconds);
        isSessionADay_ = false;
        desktop_.defaultCenter.post(Notification::CalendarDayChanged);
    }
    void travel() {
        const QTimeZone zone(oneIn(2) ? "Asia/Tokyo" : "America/Sao_Paulo");
        calendar_.setTimeZone(zone);
        isSessionADay_ = false;
        Q_EMIT desktop_.timeZoneChanged(zone);
        desktop_.defaultCenter.post(Notification::CalendarDayChanged);
    }

    // What is in front.

    void noticeFront() {
        const auto& front = desktop_.workspace.front;
        if (front && front->bundleIdentifier != desktop_.workspace.ownBundleIdentifier() &&
            !desktop_.workspace.components.contains(front->bundleIdentifier)) {
            lastExternal_ = front->bundleIdentifier;
        }
    }
    void bringToFront(const QString& id) {
        desktop_.front(qPrintable(id));
        noticeFront();
    }
    void toApplication() { bringToFront(u"app%1"_s.arg(upTo(14))); }
    void toPart() { bringToFront(u"part%1"_s.arg(upTo(2))); }
    void toOwn() { bringToFront(desktop_.workspace.ownBundleIdentifier()); }
    void toNothing() {
        desktop_.workspace.front.reset();
        desktop_.workspaceCenter.post(Notification::DidActivateApplication);
    }
    void toBrowser() { bringToFront(anyBrowser()); }

    void start(const QString& id) { running_[id] = {{++lastProcess_, false}}; }
    void changeBrowser() {
        const QString id = anyBrowser();
        auto& instances = running_[id];
        switch (upTo(9)) {
        case 0:
            instances.clear();
            break;
        case 1:
            if (!instances.empty()) {
                instances.front().isTerminated = true;
            }
            break;
        case 2:
        case 3:
            start(id);
            break;
        case 4:
            decisions_[lastProcess_] =
                oneIn(2) ? AutomationPermission::refused : AutomationPermission::undecided;
            break;
        case 5:
            for (const auto& [browser, each] : running_) {
                for (const RunningInstance& instance : each) {
                    decisions_[instance.processIdentifier] = AutomationPermission::permitted;
                }
            }
            break;
        case 6:
            sites_[id] = oneIn(5) ? QString() : anySite();
            break;
        case 7:
            answersLate_ = !answersLate_;
            break;
        default:
            if (!desktop_.automation->launches.empty()) {
                start(id);
                desktop_.automation->running = running_;
                desktop_.automation->launched();
            }
        }
        desktop_.automation->running = running_;
        desktop_.automation->decisions = decisions_;
    }
    /// The oldest question that a browser was asked.
    void answer() {
        const auto [process, at, completion] = std::move(asked_.front());
        asked_.pop_front();
        for (const auto& [id, instances] : running_) {
            if (!instances.empty() && instances.front().processIdentifier == process) {
                AppleEvent reply;
                reply.parameters.emplace(AppleEvent::directObject,
                                         EventDescriptor::text(u"https://"_s + sites_[id] + u'/'));
                completion(reply);
                return;
            }
        }
        completion(std::nullopt);
    }
    /// Long enough to be asked again after any failure: then its site counts, to the second.
    void stayInBrowser() {
        const QString id = anyBrowser();
        start(id);
        decisions_[lastProcess_] = AutomationPermission::permitted;
        sites_[id] = anySite();
        answersLate_ = false;
        desktop_.automation->running = running_;
        desktop_.automation->decisions = decisions_;
        bringToFront(id);
        for (int i = 0; i < 40; ++i) {
            pass(1);
        }
        const QString key = u"site:"_s + sites_[id];
        delegate_->save();
        if (!isDiskFailing_) {
            checkLedger(read());
        }
        const auto before = due();
        desktop_.loop.advance(10);
        if (before && !told_->isIgnored(key)) {
            book(Due{key}, 10);
        }
        settle();
    }

    // The person is away, or the desktop is not well.

    struct Reason {
        NotificationCenter& center;
        Notification goes;
        Notification comes;
    };
    std::array<Reason, 4> reasons() {
        NotificationCenter& center = desktop_.workspaceCenter;
        return {
            {{center, Notification::WillSleep, Notification::DidWake},
             {center, Notification::ScreensDidSleep, Notification::ScreensDidWake},
             {center, Notification::SessionDidResignActive, Notification::SessionDidBecomeActive},
             {desktop_.distributedCenter, Notification::ScreenIsLocked,
              Notification::ScreenIsUnlocked}}};
    }
    void goOrCome() {
        const auto all = reasons();
        const auto which = static_cast<std::size_t>(upTo(std::ssize(all)));
        if (reasons_.insert(which).second && oneIn(4)) {
            all[which].center.post(all[which].goes);
            return;
        }
        for (const std::size_t reason : std::exchange(reasons_, {})) {
            all[reason].center.post(all[reason].comes);
        }
    }
    void changeDisk() {
        if (isDiskFailing_) {
            repairDisk();
        } else {
            delegate_->save();
            FailingDisk::failAt(1, false);
            isDiskFailing_ = true;
            wasFailing_ = true;
        }
    }
    void repairDisk() {
        if (isDiskFailing_) {
            FailingDisk::repair();
            delegate_->save();
            isDiskFailing_ = false;
            told_ = read(); // What was classified meanwhile is known from here on.
        }
    }
    void changeDesktop() {
        switch (upTo(8)) {
        case 0:
            desktop_.looks.become(oneIn(2) ? ColorScheme::dark : ColorScheme::light);
            break;
        case 1:
            desktop_.looks.still = !desktop_.looks.still;
            break;
        case 2:
            desktop_.login.current = static_cast<LoginItem::Status>(upTo(4));
            break;
        case 3:
            desktop_.login.problem =
                oneIn(2) ? std::nullopt : std::optional(u"Não foi possível."_s);
            desktop_.login.afterRegistering = static_cast<LoginItem::Status>(upTo(4));
            break;
        case 4:
            desktop_.watching = oneIn(2) ? WindowWatching::Unsupported : WindowWatching::Watching;
            Q_EMIT desktop_.windowWatchingChanged();
            break;
        case 5:
            desktop_.screens = {{QRect(0, 0, 1280, 800), QRect(0, 28, 1280, 772)}};
            if (oneIn(2)) {
                desktop_.screens.push_back({QRect(1280, 0, 800, 600), QRect(1280, 0, 800, 600)});
            } else if (oneIn(3)) {
                desktop_.screens.clear();
            }
            break;
        case 6:
            desktop_.item->isShown = !desktop_.item->isShown;
            break;
        default:
            desktop_.tellsPresses = oneIn(4) ? !desktop_.tellsPresses : true;
        }
    }

    // What a person does to it.

    static Popover* popover() {
        const auto all = shown<Popover>();
        return all.empty() ? nullptr : all.front();
    }
    template <typename Widget>
    static Widget* visible() {
        const auto all = popover() ? popover()->findChildren<QWidget*>() : QList<QWidget*>();
        for (QWidget* widget : all) {
            if (auto* found = dynamic_cast<Widget*>(widget); found && found->isVisible()) {
                return found;
            }
        }
        return nullptr;
    }
    static std::vector<QMessageBox*> shownQuestions() {
        std::vector<QMessageBox*> questions = shown<QMessageBox>();
        std::erase_if(questions,
                      [](const auto* each) { return each->informativeText().isEmpty(); });
        return questions;
    }

    /// Somewhere in something that can be seen; in a menu or a popover if one is open.
    QWidget* anyWidget() {
        std::vector<QWidget*> all;
        const QWidget* const popup = oneIn(8) ? nullptr : QApplication::activePopupWidget();
        const auto windows = QApplication::topLevelWidgets();
        // In the order in which they were made, which is the same in every run.
        for (const QWindow* handle : QGuiApplication::topLevelWindows()) {
            const auto found = std::ranges::find(windows, handle, &QWidget::windowHandle);
            QWidget* const window = found != windows.end() ? *found : nullptr;
            if (window == nullptr || !window->isVisible() || window->isMinimized() ||
                (popup != nullptr && window != popup)) {
                continue;
            }
            all.push_back(window);
            for (auto* const widget : window->findChildren<QWidget*>()) {
                if (widget->isVisible() && widget->window() == window) {
                    all.push_back(widget);
                    // Most clicks mean a control.
                    all.insert(all.end(), qobject_cast<QAbstractButton*>(widget) ? 3 : 0, widget);
                }
            }
        }
        return all.empty() ? nullptr : all[static_cast<std::size_t>(upTo(std::ssize(all)))];
    }
    /// The window under it, and the place there; none when it is scrolled away.
    bool aim() {
        QWidget* const widget = anyWidget();
        return widget != nullptr && aimAt(*widget, {upTo(std::max(1, widget->width())),
                                                    upTo(std::max(1, widget->height()))});
    }
    bool aimAt(QWidget& widget, QPoint inside) {
        QWidget* const window = widget.window();
        place_ = widget.mapTo(window, inside);
        target_ = window->windowHandle();
        desktop_.pointer = window->mapToGlobal(place_);
        return target_ && window->rect().contains(place_);
    }
    void tellPress() { desktop_.press(desktop_.pointer); }
    void press(Qt::MouseButton button) {
        tellPress();
        if (target_ && target_->isVisible()) {
            // Qt waits for the end of some menus of its own before it goes on.
            const QObject waiting;
            QTimer::singleShot(0, &waiting, &Walk::closePopups);
            QTest::mousePress(target_.data(), button, {}, place_);
        }
    }
    void release(Qt::MouseButton button) {
        if (target_) {
            QTest::mouseRelease(target_.data(), button, {}, place_);
        }
    }
    void click() {
        if (aim()) {
            press(Qt::LeftButton);
            release(Qt::LeftButton);
        }
    }
    void rightClick() {
        if (aim()) {
            press(Qt::RightButton);
            release(Qt::RightButton);
        }
    }
    /// Who works does not stay paused for long.
    void resume() {
        if (popover() == nullptr) {
            desktop_.item->handlers.activate(std::nullopt);
        }
        const auto buttons =
            popover() != nullptr ? popover()->findChildren<GridButton*>() : QList<GridButton*>();
        for (GridButton* button : buttons) {
            if (button->accessibleName() == pauseTitle(true) &&
                aimAt(*button, button->rect().center())) {
                press(Qt::LeftButton);
                release(Qt::LeftButton);
                return;
            }
        }
    }
    void doubleClick() {
        if (aim()) {
            tellPress();
            if (target_ && target_->isVisible()) {
                QTest::mouseDClick(target_.data(), Qt::LeftButton, {}, place_);
            }
        }
    }
    /// Between the press and its release anything may happen.
    void drag() {
        if (!aim()) {
            return;
        }
        press(Qt::LeftButton);
        if (oneIn(2)) {
            pass(upTo(40) / 10.0);
        } else {
            toApplication();
        }
        if (target_) {
            place_ += QPoint(upTo(80) - 40, upTo(80) - 40);
            QTest::mouseMove(target_.data(), place_);
            release(Qt::LeftButton);
        }
    }
    void hover() {
        if (aim()) {
            QTest::mouseMove(target_.data(), place_);
            if (oneIn(2)) {
                pass(0.5);
            }
        }
    }
    void wheel() {
        if (!aim()) {
            return;
        }
        QWidget* const widget = QApplication::widgetAt(desktop_.pointer);
        if (widget != nullptr) {
            QWheelEvent event(QPointF(widget->mapFromGlobal(desktop_.pointer)),
                              QPointF(desktop_.pointer), QPoint(), QPoint(0, oneIn(2) ? 120 : -240),
                              {}, {}, Qt::NoScrollPhase, false);
            QApplication::sendEvent(widget, &event);
        }
    }
    void key() {
        static constexpr Qt::Key keys[] = {
            Qt::Key_Tab,    Qt::Key_Tab,   Qt::Key_Tab,  Qt::Key_Backtab, Qt::Key_Up,
            Qt::Key_Down,   Qt::Key_Down,  Qt::Key_Left, Qt::Key_Right,   Qt::Key_Space,
            Qt::Key_Space,  Qt::Key_Home,  Qt::Key_End,  Qt::Key_PageUp,  Qt::Key_PageDown,
            Qt::Key_A,      Qt::Key_S,     Qt::Key_1,    Qt::Key_P,       Qt::Key_Backspace,
            Qt::Key_Return, Qt::Key_Enter, Qt::Key_F4,   Qt::Key_Escape,  Qt::Key_Alt,
            Qt::Key_F10,    Qt::Key_Menu,
        };
        static constexpr Qt::Key withControl[] = {Qt::Key_W,   Qt::Key_M, Qt::Key_H, Qt::Key_A,
                                                  Qt::Key_X,   Qt::Key_C, Qt::Key_V, Qt::Key_Comma,
                                                  Qt::Key_Tab, Qt::Key_Q};
        QWidget* const popup = QApplication::activePopupWidget();
        const QPointer<QWindow> window =
            popup != nullptr ? popup->windowHandle() : QGuiApplication::focusWindow();
        if (!window) {
            return;
        }
        const bool control = oneIn(12);
        const Qt::Key key =
            control ? withControl[upTo(std::ssize(withControl))] : keys[upTo(std::ssize(keys))];
        const Qt::KeyboardModifiers modifiers = control                  ? Qt::ControlModifier
                                                : key == Qt::Key_Backtab ? Qt::ShiftModifier
                                                                         : Qt::NoModifier;
        QTest::keyPress(window.data(), key, modifiers);
        if (window) {
            QTest::keyRelease(window.data(), key, modifiers);
        }
    }
    void clickStatusItem() {
        desktop_.pointer = {1000 + upTo(280), upTo(28)};
        if (oneIn(2)) {
            desktop_.press(desktop_.pointer);
        }
        desktop_.item->handlers.activate(oneIn(2) ? std::optional(desktop_.pointer) : std::nullopt);
    }
    void chooseFromStatusMenu() {
        desktop_.item->handlers.menuWillOpen();
        EXPECT_TRUE(shown<Popover>().empty());
        const auto entries = desktop_.item->handlers.menu();
        const auto& entry = entries[static_cast<std::size_t>(upTo(std::ssize(entries)))];
        if (entry.action) {
            entry.action();
        }
    }
    void pressElsewhere() {
        desktop_.press({upTo(1280), upTo(800)});
        closePopups();
    }
    /// As the desktop has it done by a press that no window of the application sees.
    static void closePopups() {
        while (QWidget* const popup = QApplication::activePopupWidget()) {
            popup->close();
        }
    }
    void startAgain() { delegate_->applicationShouldHandleReopen(); }

    // What must hold.

    void checkWindows() {
        EXPECT_LE(shown<Popover>().size(), 1U);
        EXPECT_LE(shown<QMainWindow>().size(), 1U);
        int panels = 0;
        for (QWidget* widget : QApplication::allWidgets()) {
            panels += dynamic_cast<PanelRoot*>(widget) != nullptr ? 1 : 0;
        }
        EXPECT_EQ(panels, popover() != nullptr ? 1 : 0);
        if (popover() == nullptr) {
            EXPECT_FALSE(desktop_.pressHandler);
        }
    }
    void checkComplaint() {
        const auto* const panel = visible<PanelView>();
        if (panel == nullptr || !FailingDisk::hasFailed() || visible<Confirmation>() != nullptr) {
            return;
        }
        const QStringList lines = accessibleLines(*popover());
        if (listing() == Listing::activities) {
            EXPECT_EQ(lines.filter(u"Text Não foi possível salvar: "_s).size(), 1)
                << qPrintable(lines.join(u'\n'));
        }
    }

    /// The records hold what must be booked, and of what may be no more than there was.
    void checkLedger(const Told& told) {
        std::map<QString, double> found = told.secondsByKey();
        for (const auto& [day, seconds] : told.days) {
            for (const auto& [key, value] : seconds) {
                EXPECT_GT(value, 0) << qPrintable(day + u' ' + key);
            }
        }
        const bool isCleared = askedToClear_ && told.days.empty();
        isSessionADay_ = isSessionADay_ && !(askedToClear_ && wasFailing_);
        if (!isCleared && !(askedToClear_ && wasFailing_)) {
            constexpr double rounding = 1e-4;
            for (const auto& [key, seconds] : must_) {
                EXPECT_GE(found[key], seconds - rounding) << qPrintable(key);
            }
            double sites = 0;
            for (const auto& [key, seconds] : found) {
                const double more = seconds - must_[key];
                if (key.startsWith(u"site:"_s)) {
                    sites += more;
                } else {
                    EXPECT_LE(more, may_[key] + rounding) << qPrintable(key);
                }
            }
            EXPECT_LE(sites, may_[anySite_] + rounding);
        }
        must_ = found;
        may_.clear();
        askedToClear_ = !shownQuestions().empty();
        wasFailing_ = false;
    }

    /// While a session is a day, which it is unless somebody resets it, erases the history or moves
    /// the date, its seconds are the day's.
    void checkSession(const Told& told) {
        if (told.resetDate != resetDate_) {
            isSessionADay_ = told.resetDate == calendar_.startOfDay(now());
            resetDate_ = told.resetDate;
        }
        const auto today = told.days.find(calendar_.day(now()).text());
        isSessionADay_ = isSessionADay_ && !told.days.empty();
        for (const Told::Row& row : told.rows) {
            EXPECT_GE(row.seconds, 0) << qPrintable(row.key);
            if (isSessionADay_ && told.resetDate == calendar_.startOfDay(now())) {
                const auto found =
                    today != told.days.end() ? today->second : std::map<QString, double>();
                const auto seconds = found.find(row.key);
                EXPECT_NEAR(row.seconds, seconds != found.end() ? seconds->second : 0, 1e-4)
                    << qPrintable(row.key);
            }
        }
    }

    static Listing listing() {
        const auto isChecked = [](const QString& name) {
            for (const auto* button : popover()->findChildren<GridButton*>()) {
                if (button->accessibleName() == name && button->isVisible()) {
                    return button->isChecked();
                }
            }
            return false;
        };
        return isChecked(u"Histórico por dia"_s) ? Listing::history
               : isChecked(u"Não monitorados"_s) ? Listing::unmonitored
                                                 : Listing::activities;
    }
    void checkPanel(const Told& told, PanelView& panel) {
        const QStringList lines = accessibleLines(*popover());
        const Listing listing = Walk::listing();
        const QString title = listingTitle(listing, told.paused) + u' ';
        const auto* const grid = visible<HistoryGrid>();
        ASSERT_EQ(grid != nullptr, listing == Listing::history);
        const HistoryDay* const day = grid != nullptr ? grid->hoveredDay() : nullptr;
        const DayTotals totals = day != nullptr ? told.ofDay(day->id) : told.session();
        const double classified = totals.production + totals.consumption;
        const auto share = [&](double part) {
            return metricPercentage(classified > 0 ? std::optional(part) : std::nullopt);
        };
        if (day != nullptr) {
            EXPECT_NEAR(Told::all(day->totals), Told::all(totals), 1e-4) << qPrintable(day->id);
            expectLine(lines, u"Text "_s + dayTitle(day->date, calendar_) + u' ' +
                                  duration(Told::all(day->totals)));
        } else {
            const double ratio = totals.production / classified;
            expectLine(lines, u"Text ↑ "_s + share(ratio) + u" PRODUÇÃO"_s);
            expectLine(lines, u"Text ↓ "_s + share(1 - ratio) + u" CONSUMO"_s);
            if (grid != nullptr) {
                expectLine(lines, u"Text "_s + title + QString::number(told.daysWithTime()));
            }
        }
        expectLine(lines, u"Button "_s + pauseTitle(told.paused));
        if (grid != nullptr) {
            return;
        }
        const auto active = activeKey(panel);
        const auto rows = told.listed(listing, active, showsAll(), now());
        expectLine(lines, u"Text "_s + title +
                              (listing == Listing::activities ? duration(Told::all(totals))
                                                              : QString::number(rows.size())));
        if (rows.empty()) {
            expectLine(lines, u"Text "_s + emptyText(listing, Told::all(totals) > 0));
        }
        std::size_t count = 0;
        for (auto* const row : panel.findChildren<ActivityRow*>()) {
            if (row->isVisible() && visible<ActivityRows>()->isAncestorOf(row)) {
                const auto place = static_cast<std::size_t>(row->y() / rowHeight);
                ASSERT_LT(place, rows.size());
                EXPECT_EQ(
                    accessibleLines(*row),
                    Told::lines(rows[place], listing, rows[place].key == active && !told.paused));
                ++count;
            }
        }
        EXPECT_GE(count, std::min<std::size_t>(rows.size(), contentHeight / rowHeight));
    }
    static void expectLine(const QStringList& lines, const QString& line) {
        EXPECT_TRUE(lines.contains(line)) << qPrintable(line) << " in\n"
                                          << qPrintable(lines.join(u'\n'));
    }
    bool showsAll() {
        const auto entries = desktop_.item->handlers.menu();
        return entries.front().checked.value_or(false);
    }
    /// Of a browser it is what the panel says.
    std::optional<QString> activeKey(const PanelView& panel) {
        const auto due = this->due();
        if (!due || due->key) {
            return due ? due->key : std::nullopt;
        }
        for (const auto* const row : panel.findChildren<ActivityRow*>()) {
            if (row->isVisible() && row->y() == 0 &&
                accessibleLines(const_cast<ActivityRow&>(*row)).join(u' ').contains(u", Ativo"_s)) {
                return row->activity()->key();
            }
        }
        return std::nullopt;
    }
    void checkSettings(const Told& told) {
        for (const QMainWindow* window : shown<QMainWindow>()) {
            if (window->isMinimized()) {
                continue;
            }
            for (const auto* const label : window->findChildren<QLabel*>()) {
                if (label->isVisible() && label->alignment().testFlag(Qt::AlignRight) &&
                    label->text().contains(u" de "_s)) {
                    EXPECT_EQ(label->text(), countStartText(*told.resetDate, calendar_));
                }
            }
            for (const auto* const button : window->findChildren<QPushButton*>()) {
                if (button->isVisible() && button->text() == u"Apagar histórico…"_s) {
                    EXPECT_EQ(button->isEnabledTo(window), told.daysWithTime() > 0);
                }
            }
        }
    }

    struct Asked {
        qint64 process;
        double at;
        AppleEventTransport::Completion completion;
    };

    std::mt19937 random_;
    bool isSetUp_;
    const QString domain_ = u"com.brindlework.orvanta"_s;
    const QString anySite_ = u"site:"_s;
    const QStringList browserIDs_{u"browser0"_s, u"browser1"_s};

    QTemporaryDir folder_;
    FailingDisk disk_;
    FakeDesktop desktop_;
    Calendar calendar_{QTimeZone("America/Sao_Paulo")};
    std::unique_ptr<AppDelegate> delegate_;
    int terminations_ = 0;

    std::map<QString, std::vector<RunningInstance>> running_;
    std::map<qint64, int> decisions_;
    std::map<QString, QString> sites_; ///< that a browser shows; empty for a page of its own
    qint64 lastProcess_ = 100;
    std::deque<Asked> asked_;
    bool answersLate_ = false;
    std::set<std::size_t> reasons_; ///< why the person is away
    QString lastExternal_;
    bool isDiskFailing_ = false;

    QPointer<QWindow> target_;
    QPoint place_;

    std::optional<Told> told_; ///< as of the last step
    std::map<QString, double> must_;
    std::map<QString, double> may_;
    bool askedToClear_ = false;
    bool wasFailing_ = false;
    bool isSessionADay_ = true;
    std::optional<Date> resetDate_;
};

} // namespace

/// Walks by seeds that are fixed; with --gtest_shuffle by others at every run, and with
/// --gtest_random_seed by that one and the next.
TEST(AppWalkTest, WhateverAPersonDoesNothingBreaksAndNoSecondIsLost) {
    constexpr unsigned walks = 8;
    constexpr int steps = 1250;
    const int chosen = GTEST_FLAG_GET(shuffle) ? testing::UnitTest::GetInstance()->random_seed()
                                               : GTEST_FLAG_GET(random_seed);
    const unsigned first = chosen > 0 ? static_cast<unsigned>(chosen) : 1;
    for (unsigned seed = first; seed < first + walks; ++seed) {
        auto walk = std::make_optional<Walk>(seed);
        for (int step = 0; step < steps; ++step) {
            const char* const what = walk->step();
            walk->check();
            ASSERT_FALSE(testing::Test::HasFailure())
                << "seed " << seed << ", step " << step << ": " << what
                << "; again with --gtest_random_seed=" << seed;
        }
        walk.reset();
        ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed << ", at the end";
    }
}
