#pragma once

#include "Fakes/FakeAppearance.h"
#include "Fakes/World.h"
#include "Model/Activity.h"
#include "SetupDesk.h"
#include "Views/ActivityRow.h"
#include "Views/ActivityRows.h"
#include "Views/GridButton.h"
#include "Views/PanelRoot.h"
#include "WidgetReading.h"

#include <QTest>

#include <algorithm>
#include <initializer_list>
#include <memory>

namespace orvanta {

/// The panel over a tracker that a test drives.
class PanelStage {
public:
    struct Item {
        const char* name;
        Category category = Category::pending;
        double seconds = 0;
    };
    explicit PanelStage(std::initializer_list<Item> items = {}) {
        world.context();
        for (const Item& item : items) {
            add(item);
        }
        world.begin();
        setup_ = desk_.finishedSetup();
    }

    World world;
    FakeAppearance appearance;
    DesktopProblem problem;
    int settings = 0;
    int quits = 0;

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
        root_ = std::make_unique<PanelRoot>(
            *setup_, PanelSurroundings{tracker(), world.calendar, appearance, world.loop,
                                       [this] { ++settings; }, [this] { ++quits; },
                                       [this] {
                                           return problem;
                                       }});
        root_->show();
        activate(*root_);
        return *root_;
    }
    PanelRoot& root() { return *root_; }

    QStringList lines() { return accessibleLines(*root_); }
    bool shows(const char* line) { return lines().contains(QString::fromUtf8(line)); }
    GridButton& button(const char* name) { return *named<GridButton>(*root_, name); }
    void click(const char* name) { QTest::mouseClick(&button(name), Qt::LeftButton); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QWidget* target = root_->focusWidget();
        QTest::keyClick(target != nullptr ? target : root_.get(), key, modifiers);
    }
    static void enter(QWidget& widget) {
        QEnterEvent event({1, 1}, {1, 1}, {1, 1});
        QApplication::sendEvent(&widget, &event);
    }
    static void leave(QWidget& widget) {
        QEvent event(QEvent::Leave);
        QApplication::sendEvent(&widget, &event);
    }

private:
    SetupDesk desk_;
    std::unique_ptr<Setup> setup_;
    std::unique_ptr<PanelRoot> root_;
};

} // namespace orvanta
