#include "Views/PanelRoot.h"

#include "Fakes/FakeAppearance.h"
#include "Fakes/World.h"
#include "PanelStage.h"
#include "SetupDesk.h"
#include "Views/Palette.h"
#include "Views/PanelView.h"
#include "Views/SetupView.h"
#include "WidgetReading.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QTest>

using namespace orvanta;

TEST(PanelRootTest, TheSetupGivesWayToThePanelAtOnce) {
    World world;
    world.begin();
    SetupDesk desk;
    const auto setup = desk.setup();
    FakeAppearance appearance;
    PanelRoot root(*setup, {*world.tracker, world.calendar, appearance, world.loop, [] {}, [] {},
                            [] {
                                return DesktopProblem();
                            }});
    root.show();
    EXPECT_EQ(root.size(), QSize(320, 352));
    ASSERT_NE(root.findChild<SetupView*>(), nullptr);
    // The click ends the setup, and with it the button's own view.
    QTest::mouseClick(named(root, "Iniciar ao entrar: Abrir o orvanta ao entrar no macOS"),
                      Qt::LeftButton);
    EXPECT_EQ(desk.login.registrations, 1);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(root.findChild<SetupView*>(), nullptr);
    ASSERT_NE(root.findChild<PanelView*>(), nullptr);
    EXPECT_TRUE(root.findChild<PanelView*>()->isVisible());
    EXPECT_EQ(root.findChild<PanelView*>()->size(), root.size());
}

TEST(PanelRootTest, FollowsTheAppearanceWhileOpen) {
    World world;
    world.begin();
    SetupDesk desk;
    const auto setup = desk.finishedSetup();
    FakeAppearance appearance;
    PanelRoot root(*setup, {*world.tracker, world.calendar, appearance, world.loop, [] {}, [] {},
                            [] {
                                return DesktopProblem();
                            }});
    root.show();
    QApplication::processEvents();
    for (const ColorScheme scheme : {ColorScheme::dark, ColorScheme::light}) {
        appearance.become(scheme);
        const QImage image = picture(root);
        const Palette palette(scheme);
        EXPECT_EQ(image.pixel(1, 1), palette.background.rgb());
        EXPECT_EQ(image.pixel(1, 87), palette.rule.rgb());
    }
}

TEST(PanelRootTest, TheMenuKeyOpensTheMenuWhateverHasTheKeyboard) {
    PanelStage stage({{"a", Category::pending, 60}});
    PanelRoot& root = stage.open();
    for (const char* name : {"", "Pausar", "a: Consumo"}) {
        if (*name != '\0') {
            stage.button(name).setFocus();
        }
        // As the desktop makes of the Menu key.
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
        QApplication::sendEvent(root.focusWidget(), &event);
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr) << name;
        EXPECT_EQ(menu->actions().first()->text(), QStringLiteral("Mostrar todos"));
        QTest::keyClick(menu, Qt::Key_Escape);
    }
}
