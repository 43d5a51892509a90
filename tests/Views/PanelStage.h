#pragma once

#include "Fakes/FakeAppearance.h"
#include "Fakes/FakeAutomation.h"
#include "Fakes/FakeBundles.h"
#include "Fakes/FakeLoginItem.h"
#include "Fakes/World.h"
#include "Model/Activity.h"
#include "Setup/Setup.h"
#include "Views/GridButton.h"
#include "Views/PanelRoot.h"
#include "WidgetReading.h"

namespace orvanta {

/// The panel over a tracker and a desktop that a test drives.
class PanelStage {
public:
    struct Item {
        const char* name;
        Category category = Category::pending;
        double seconds = 0;
    };
    explicit PanelStage(std::initializer_list<Item> items = {}) {
        for (const Item& item : items) {
            add(item);
        }
        world.begin();
    }

    World world;
    FakeAppearance appearance;
    FakeBundles bundles;
    FakeLoginItem login;
    FakeAutomation automation;
    std::vector<Browser> browsers; ///< for the setup
    bool isSetUp = true;
    DesktopProblem problem;
    int settings = 0;
    int quits = 0;

    Setup::System system() {
        return {login, bundles, automation, automation, automation, world.loop};
    }
    void add(const Item& item) {
        const QString name = QString::fromUtf8(item.name);
        world.context().activities().append(QStringLiteral("app:") + name, name, item.category,
                                            item.seconds);
    }
    Activity& activity(const char* name) {
        return world.activity((std::string("app:") + name).c_str());
    }
    Tracker& tracker() { return *world.tracker; }

    /// Opens the panel, or opens it anew.
    PanelRoot& open() {
        root_.reset();
        world.defaults->setBool(QStringLiteral("setupDoneV1"), isSetUp);
        setup_ = std::make_unique<Setup>([this] { return browsers; }, *world.defaults, system());
        root_ = std::make_unique<PanelRoot>(
            *setup_, PanelSurroundings{tracker(), world.calendar, appearance, world.loop,
                                       [this] { ++settings; }, [this] { ++quits; },
                                       [this] {
                                           return problem;
                                       }});
        activate(*root_);
        return *root_;
    }
    PanelRoot& root() { return *root_; }
    GridButton& button(const char* name) { return named<GridButton>(*root_, name); }

    struct Row {
        const char* acts;
        const char* then = "";
    };
    /// Does what each row says, as "click Pausar; pass 1", and looks whether a screen reader finds
    /// then what it says, as "Text PAUSADO 0:00; !Button Pausar; @Sair": with a "!" what it does
    /// not find, with an "@" what has the keyboard.
    void play(std::initializer_list<Row> rows) {
        for (const auto& [acts, then] : rows) {
            for (const QString& act : QString::fromUtf8(acts).split(QStringLiteral("; "))) {
                play(act.section(u' ', 0, 0), act.section(u' ', 1));
            }
            QApplication::processEvents();
            const QStringList found = accessibleLines(*root_);
            for (const QString& line : QString::fromUtf8(then).split(QStringLiteral("; "))) {
                const QString rest = line.mid(1);
                EXPECT_TRUE(line.isEmpty()          ? true
                            : line.startsWith(u'@') ? titleOf(root_->focusWidget()) == rest
                            : line.startsWith(u'!') ? !found.contains(rest)
                                                    : found.contains(line))
                    << acts << ": " << qPrintable(line + u'\n' + found.join(u'\n'));
            }
        }
    }

private:
    void play(const QString& verb, const QString& what) {
        const auto widget = [&]() -> QWidget& {
            QWidget* area = root_->childAt(1, 100);
            while (area->parentWidget()->parentWidget() != root_.get()) {
                area = area->parentWidget();
            }
            return what == QStringLiteral("content") ? *area : named(*root_, qPrintable(what));
        };
        QEnterEvent enter({1, 1}, {1, 1}, {1, 1});
        QEvent leave(QEvent::Leave);
        verb == QStringLiteral("keys")    ? void(type(*root_, qPrintable(what)))
        : verb == QStringLiteral("pass")  ? world.pass(what.toDouble())
        : verb == QStringLiteral("front") ? world.front(qPrintable(what))
        : verb == QStringLiteral("open")  ? void(open())
        : verb == QStringLiteral("focus") ? widget().setFocus(Qt::TabFocusReason)
        : verb == QStringLiteral("over")  ? void(QApplication::sendEvent(&widget(), &enter))
        : verb == QStringLiteral("off")   ? void(QApplication::sendEvent(&widget(), &leave))
                                          : click(widget());
    }

    std::unique_ptr<Setup> setup_;
    std::unique_ptr<PanelRoot> root_;
};

} // namespace orvanta
