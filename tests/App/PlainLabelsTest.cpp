#include "App/AppDelegate.h"
#include "App/SettingsWindow.h"
#include "Fakes/FakeDesktop.h"
#include "Linux/BrowserBridge/AutomationWindow.h"
#include "Linux/BrowserBridge/PermissionPrompt.h"
#include "Views/PanelRoot.h"
#include "Views/WidgetReading.h"

#include <QLabel>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QToolTip>

#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

/// Looks at each label of a window, and at each tooltip as it comes up; how many have the name.
int expectPlain(QWidget& window, const QString& name) {
    int said = 0;
    QList<QWidget*> widgets = window.findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        if (const auto* label = qobject_cast<QLabel*>(widget)) {
            EXPECT_EQ(label->textFormat(), Qt::PlainText) << qPrintable(label->text());
            said += label->text().contains(name);
        }
        if (widget->toolTip().contains(name)) {
            QHelpEvent hover(QEvent::ToolTip, {1, 1}, widget->mapToGlobal(QPoint(1, 1)));
            QApplication::sendEvent(widget, &hover);
            const auto tips = shown<QLabel>();
            if (tips.size() != 1) {
                ADD_FAILURE() << tips.size() << " tooltips";
                continue;
            }
            EXPECT_EQ(tips.front()->text(), widget->toolTip());
            EXPECT_EQ(tips.front()->textFormat(), Qt::PlainText);
            tips.front()->hide();
            ++said;
        }
    }
    return said;
}

TEST(PlainLabels, ANameFullOfMarkupIsShownAsItIsWhereverItAppears) {
    const QTemporaryDir folder;
    // Who opens it to read waits for ever.
    const QString pipe = folder.filePath(u"pipe"_s);
    ASSERT_EQ(::mkfifo(qPrintable(pipe), 0600), 0);
    const QString name =
        u"<b>R&D</b> &lt;&amp; <img src='file://%1'><img src=\"%1\">_x_"_s.arg(pipe);
    FakeDesktop desktop;
    desktop.installed.install(u"/browser"_s, name,
                              "<property code=\"cTab\"/><property code=\"pURL\"/>");
    for (const bool isSetUp : {false, true}) {
        UserDefaults(folder.path(), u"com.brindlework.orvanta"_s)
            .setBool(u"setupDoneV1"_s, isSetUp);
        AppDelegate delegate({.desktop = desktop,
                              .configurationFolder = folder.path(),
                              .dataFolder = folder.path(),
                              .calendar = Calendar(QTimeZone::utc()),
                              .alert = [](const QString&, const QString&) {},
                              .terminate =
                                  [] {
                                  }});
        ASSERT_TRUE(delegate.applicationDidFinishLaunching());
        desktop.workspace.front = RunningApplication{u"editor"_s, name, {}, {}};
        desktop.workspaceCenter.post(Notification::DidActivateApplication);
        desktop.loop.advance(10);
        if (isSetUp) {
            delegate.togglePopover(QPoint(1200, 14));
        }
        ASSERT_EQ(shown<Popover>().size(), 1U);
        EXPECT_EQ(expectPlain(*shown<Popover>().front(), name) > 0, isSetUp);
        delegate.showSettings();
        desktop.loop.advance(1);
        ASSERT_EQ(shown<QMainWindow>().size(), 1U);
        EXPECT_GT(expectPlain(*shown<QMainWindow>().front(), name), 0);

        if (isSetUp) {
            PermissionPrompt::Actions answers{
                .agree = [] { return PermissionPrompt::Preparation(); },
                .refuse =
                    [] {
                    }};
            auto* const prompt = new PermissionPrompt(name, std::move(answers));
            prompt->show();
            EXPECT_GT(expectPlain(*prompt, name), 0);
            prompt->close();
            AutomationWindow::Actions actions{
                .rows =
                    [&name] {
                        return std::vector<AutomationWindow::Row>{
                            {.identifier = u"browser"_s, .name = name}};
                    },
                .allow = {},
                .refuse = {}};
            auto* const automation = new AutomationWindow(std::move(actions));
            automation->show();
            EXPECT_GT(expectPlain(*automation, name), 0);
            automation->close();
            QMessageBox message(QMessageBox::Information, name, name);
            message.setInformativeText(name);
            message.show();
            EXPECT_GT(expectPlain(message, name), 0);
        }
    }
}

} // namespace
