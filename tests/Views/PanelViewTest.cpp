#include "Views/PanelView.h"

#include "PanelStage.h"
#include "Views/Palette.h"
#include "Views/SetupView.h"
#include "Views/TextBlock.h"

#include <QContextMenuEvent>
#include <QMenu>

using namespace orvanta;
using enum Category;

namespace {

/// What is painted, in the panel's own coordinates, as long as this lives.
class PaintLog final : public QObject {
public:
    explicit PaintLog(QWidget& root)
        : root_(root) {
        qApp->installEventFilter(this);
    }
    QRegion painted;

    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* const widget = qobject_cast<QWidget*>(watched);
        if (event->type() == QEvent::Paint && widget != nullptr && widget != &root_) {
            painted += static_cast<QPaintEvent*>(event)->region().translated(
                widget->mapTo(&root_, QPoint()));
        }
        return false;
    }

private:
    QWidget& root_;
};

QRect placeOf(const QWidget& widget) {
    return {widget.mapTo(widget.window(), QPoint()), widget.size()};
}

} // namespace

TEST(PanelViewTest, SaysAllOfItToAScreenReaderAndHasItsGrid) {
    PanelStage stage({{"Editor", production, 90}, {"Jogo", consumption, 30}, {"Nota", ignored, 7}});
    stage.play({{"front Editor; open"}});
    EXPECT_EQ(
        accessibleLines(stage.root()),
        lines({"orvanta", "Text ↑ 75% PRODUÇÃO", "Text ↓ 25% CONSUMO", "Text MONITORANDO 2:00",
               "Button Histórico por dia", "Button Não monitorados", "Editor",
               "Text Editor, 1:30, Ativo", "Button Parar de monitorar Editor",
               "Button Editor: Produção = Selecionado", "Button Editor: Consumo = Não selecionado",
               "Jogo", "Text Jogo, 0:30", "Button Parar de monitorar Jogo",
               "Button Jogo: Produção = Não selecionado", "Button Jogo: Consumo = Selecionado",
               "Button Pausar", "Button Zerar tempo", "Button Sair"}));
    EXPECT_EQ(stage.root().size(), QSize(320, 352));
    for (const auto& [title, place] : std::initializer_list<std::pair<const char*, QRect>>{
             {"↑ 75% PRODUÇÃO", {0, 0, 160, 44}},
             {"↓ 25% CONSUMO", {160, 0, 160, 44}},
             {"MONITORANDO 2:00", {0, 44, 232, 44}},
             {"Histórico por dia", {232, 44, 44, 44}},
             {"Não monitorados", {276, 44, 44, 44}},
             {"Jogo, 0:30", {0, 132, 232, 44}},
             {"Jogo: Produção", {232, 132, 44, 44}},
             {"Jogo: Consumo", {276, 132, 44, 44}},
             {"Pausar", {0, 308, 44, 44}},
             {"Zerar tempo", {44, 308, 138, 44}},
             {"Sair", {182, 308, 138, 44}}}) {
        EXPECT_EQ(placeOf(named(stage.root(), title)), place) << title;
    }
    stage.play({{"click Não monitorados", "Text NÃO MONITORADOS 1; Nota; Text Nota, 0:07; !Jogo"}});
    EXPECT_EQ(placeOf(stage.button("Reativar monitoramento de Nota")), QRect(232, 88, 88, 44));
    stage.play({{"click Reativar monitoramento de Nota",
                 "Text Nenhum app ou site não monitorado.; Text NÃO MONITORADOS 0"}});
    EXPECT_EQ(stage.activity("Nota").category(), pending);
}

TEST(PanelViewTest, DividesItsLineByTheShares) {
    PanelStage stage;
    for (const double ratio : {1.0, 2.0}) {
        const QRect line(0, qRound(44 * ratio) - 1, qRound(320 * ratio), 1);
        EXPECT_EQ(count(picture(stage.open(), ratio), Palette(ColorScheme::light).rule, line),
                  line.width());
    }
    stage.add({"Editor", production, 90});
    stage.add({"Jogo", consumption, 30});
    const QImage image = picture(stage.open());
    EXPECT_EQ(count(image, Palette::green, QRect(0, 43, 240, 1)), 240);
    EXPECT_EQ(count(image, Palette::red, QRect(240, 43, 80, 1)), 80);
}

TEST(PanelViewTest, DoesWhatThePointerAndTheKeyboardSay) {
    PanelStage stage({{"Editor", production, 90}, {"Jogo", consumption, 80}});
    stage.problem.text = QStringLiteral("Nada é contado.");
    stage.play({
        {"open; over Histórico por dia", "Text HISTÓRICO 1; Text ↑ 53% PRODUÇÃO"},
        {"off Histórico por dia; pass 0.3; over content; pass 5", "Text HISTÓRICO 1"},
        {"off content; pass 0.2; off content; pass 0.34", "Text HISTÓRICO 1"},
        {"pass 0.01", "Text MONITORANDO 2:50"},
        {"over Histórico por dia; off Histórico por dia; over Não monitorados; pass 10",
         "Text NÃO MONITORADOS 0"},
        {"off Não monitorados; pass 0.4", "Text MONITORANDO 2:50"},
        {"over Histórico por dia; off Histórico por dia; open; pass 1", "Text MONITORANDO 2:50"},
        // A click pins, another one lets go, and what was under way is over then.
        {"click Histórico por dia; over Não monitorados", "Text HISTÓRICO 1"},
        {"click Não monitorados; off Não monitorados; pass 10", "Text NÃO MONITORADOS 0"},
        {"click Não monitorados", "Text MONITORANDO 2:50"},
        {"over Histórico por dia; off Histórico por dia; click Histórico por dia; pass 10",
         "Text HISTÓRICO 1"},
        {"click Histórico por dia; over Histórico por dia; off Histórico por dia; pass 1",
         "Text MONITORANDO 2:50"},
        // A preview may replace the row that has the keyboard.
        {"focus Jogo: Consumo; over Histórico por dia", "@Histórico por dia"},
        {"click Histórico por dia; off Histórico por dia; pass 5", "Text HISTÓRICO 1"},
        {"click Histórico por dia", "Text MONITORANDO 2:50; Text Nada é contado."},
        {"click Histórico por dia", "Text HISTÓRICO 1; !Text Nada é contado."},
        // What is shown anew rests at the activities, whatever was pinned.
        {"open", "Text MONITORANDO 2:50"},
        // A question keeps the keyboard in it.
        {"focus Parar de monitorar Editor; keys Return", "@Cancelar; Parar de monitorar Editor?"},
        {"keys Tab", "@Parar; !Text Nada é contado."},
        {"keys Tab", "@Cancelar"},
        {"keys Esc", "@Parar de monitorar Editor; Text Nada é contado.; !Button Parar"},
        {"keys Tab", "@Editor: Produção; Button Editor: Produção = Selecionado"},
        {"click Pausar", "Text PAUSADO 2:50; Button Retomar"},
        {"click Zerar tempo", "Text O tempo acumulado será apagado. Suas classificações serão "
                              "preservadas.; Text Zerar o tempo acumulado?"},
        {"keys Space", "Text PAUSADO 2:50; !Button Zerar"},
        // What comes to the place of what goes gets the keyboard.
        {"focus Parar de monitorar Editor; keys Space Tab Space", "@Parar de monitorar Jogo"},
        {"open", "Text PAUSADO 1:20; !Editor"},
        {"click Zerar tempo; click Zerar", "Text PAUSADO 0:00"},
        {"click Sair; click Retomar", "Text MONITORANDO 0:00"},
    });
    EXPECT_EQ(stage.quits, 1);
    EXPECT_EQ(stage.activity("Jogo").seconds(), 0);
    EXPECT_EQ(stage.activity("Editor").category(), ignored);
    EXPECT_EQ(stage.button("Sair").toolTip(), QStringLiteral("Sair · clique direito para Ajustes"));
}

TEST(PanelViewTest, ItsButtonsShowTheirStates) {
    PanelStage stage({{"Editor", production, 90}});
    stage.open();
    const auto ink = [&](const char* title) {
        return stage.button(title).label().ink;
    };
    stage.play({{"click Histórico por dia"}});
    EXPECT_EQ(ink("Histórico por dia"), GridButton::Ink::green);
    EXPECT_EQ(ink("Não monitorados"), GridButton::Ink::foreground);
    stage.play({{"click Não monitorados"}});
    EXPECT_EQ(ink("Histórico por dia"), GridButton::Ink::foreground);
    EXPECT_EQ(stage.button("Pausar").label().symbol, Symbol::pause);
    stage.play({{"click Pausar; click Não monitorados"}});
    GridButton& pause = stage.button("Retomar");
    EXPECT_EQ(pause.label().symbol, Symbol::play);
    EXPECT_EQ(stage.button("Zerar tempo").label().text, QStringLiteral("ZERAR"));
    EXPECT_EQ(stage.button("Sair").label().text, QStringLiteral("SAIR"));
    // The pointer, the press and the keyboard are a tint over the background.
    for (const ColorScheme scheme : {ColorScheme::dark, ColorScheme::light}) {
        stage.appearance.become(scheme);
        const int plain = Palette(scheme).background.red();
        const auto expectTint = [&](double opacity) {
            const int full = scheme == ColorScheme::dark ? 255 : 0;
            EXPECT_NEAR(qRed(picture(stage.root()).pixel(5, 315)), plain + opacity * (full - plain),
                        1);
        };
        EXPECT_EQ(picture(stage.root()).pixel(1, 1), Palette(scheme).background.rgb());
        EXPECT_EQ(picture(stage.root()).pixel(1, 87), Palette(scheme).rule.rgb());
        expectTint(0);
        pause.setAttribute(Qt::WA_UnderMouse);
        expectTint(0.06);
        QTest::mousePress(&pause, Qt::LeftButton);
        expectTint(0.14);
        pause.setDown(false);
        pause.setAttribute(Qt::WA_UnderMouse, false);
        expectTint(0);
        pause.setFocus(Qt::TabFocusReason);
        expectTint(0.06);
        // The pointer does not take the keyboard away, nor does a window that comes.
        stage.play({{"click Não monitorados; click Não monitorados", "@Retomar"}});
        pause.clearFocus();
        pause.setFocus(Qt::ActiveWindowFocusReason);
        expectTint(0);
        pause.clearFocus();
    }
    GridButton& stop = stage.button("Parar de monitorar Editor");
    const auto isSeen = [&] {
        return count(picture(stage.root()), Palette(ColorScheme::light).muted, placeOf(stop)) > 0;
    };
    EXPECT_FALSE(isSeen());
    stage.play({{"over Editor"}});
    EXPECT_TRUE(isSeen());
    stage.play({{"off Editor"}});
    EXPECT_FALSE(isSeen());
}

TEST(PanelViewTest, AnArrowClassifiesAndColoursItsSquare) {
    PanelStage stage({{"Editor", pending, 90}});
    QImage sample(1, 1, QImage::Format_RGB32);
    sample.fill(Palette(ColorScheme::light).background);
    QColor veil = Palette::green;
    veil.setAlphaF(0.2F);
    QPainter(&sample).fillRect(sample.rect(), veil);
    for (const bool still : {true, false}) {
        stage.appearance.still = still;
        stage.tracker().classify(stage.activity("Editor"), pending);
        stage.open();
        const GridButton& up = stage.button("Editor: Produção");
        EXPECT_EQ(up.toolTip(), QStringLiteral("Marcar Editor como Produção"));
        const auto isFilled = [&] {
            const QRect corner(placeOf(up).topLeft() + QPoint(3, 3), QSize(1, 1));
            return count(picture(stage.root()), sample.pixelColor(0, 0), corner) == 1;
        };
        EXPECT_FALSE(isFilled());
        stage.play({{"click Editor: Produção; off Editor: Produção",
                     "Button Editor: Produção = Selecionado"}});
        EXPECT_EQ(up.toolTip(), QStringLiteral("Produção selecionada"));
        EXPECT_EQ(isFilled(), still); // Otherwise it has only begun.
        EXPECT_TRUE(QTest::qWaitFor(isFilled));
    }
}

TEST(PanelViewTest, ASecondPaintsOnlyWhatItChanges) {
    PanelStage stage({{"Editor", production, 5000}, {"Jogo", consumption, 3000}});
    stage.play({{"front Editor; open; pass 1"}});
    PaintLog log(stage.root());
    stage.play({{"pass 1"}});
    EXPECT_FALSE(log.painted.isEmpty());
    // The share moves by less than the line shows; it may be painted all the same.
    log.painted -= QRect(0, 43, 320, 1);
    log.painted -= QRect(100, 44, 132, 44);
    EXPECT_TRUE((log.painted - QRect(150, 88, 82, 44)).isEmpty());
    // A second in which nothing counts paints nothing.
    stage.play({{"click Pausar"}});
    log.painted = {};
    stage.play({{"pass 3"}});
    EXPECT_TRUE(log.painted.isEmpty());
}

TEST(PanelViewTest, TheMenuShowsAllAndLeadsToTheSettings) {
    PanelStage stage;
    stage.world.front("Editor");
    stage.world.pass(30);
    stage.world.nothingInFront();
    stage.world.pass(400);
    PanelRoot& root = stage.open();
    root.setWindowFlags(Qt::Popup); // Where not every Qt tells of context menus.
    root.show();
    const auto menu = [] {
        return qobject_cast<QMenu*>(QApplication::activePopupWidget());
    };
    const char* const hidden = "Text Itens breves ocultos · clique direito para mostrar todos.";
    for (const auto& [index, then] : {std::pair(0, "Editor"), {0, hidden}, {2, hidden}}) {
        QTest::mouseClick(root.windowHandle(), Qt::RightButton, {}, {10, 200});
        ASSERT_NE(menu(), nullptr);
        QTest::mouseClick(menu(), Qt::LeftButton, {},
                          menu()->actionGeometry(menu()->actions().at(index)).center());
        EXPECT_EQ(QApplication::activePopupWidget(), &root);
        stage.play({{"pass 0", then}});
    }
    EXPECT_EQ(stage.settings, 1);
    // The Menu key opens it, whatever has the keyboard, as the desktop makes of it.
    for (const char* act : {"open", "focus Pausar"}) {
        stage.play({{act}});
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
        QApplication::sendEvent(stage.root().focusWidget(), &event);
        ASSERT_NE(menu(), nullptr) << act;
        EXPECT_EQ(menu()->actions().first()->text(), QStringLiteral("Mostrar todos"));
        QTest::keyClick(menu(), Qt::Key_Escape);
    }
}

TEST(PanelViewTest, NamesTheGravestProblem) {
    PanelStage stage;
    const auto expectBanner = [&](const QString& text, int bottom = 219) {
        auto blocks = shown<TextBlock>(&stage.root());
        std::erase_if(blocks, [](auto* block) { return block->y() == 0; }); // The empty listing's.
        EXPECT_EQ(blocks.empty() ? QString() : blocks[0]->accessibleName(), text);
        EXPECT_EQ(blocks.empty() ? 219 : blocks[0]->geometry().bottom(), bottom);
        EXPECT_EQ(find(stage.root(), QStringLiteral("Permitir")) != nullptr, bottom != 219);
    };
    stage.world.browsers.known.insert(QStringLiteral("browser"));
    stage.play({{"front browser; open"}});
    expectBanner({});
    stage.world.browsers.fail(QStringLiteral("-600"));
    EXPECT_FALSE(stage.tracker().browserStatus().isEmpty());
    expectBanner(stage.tracker().browserStatus());
    stage.problem.text = QStringLiteral("Nada é contado.");
    stage.play({{"pass 1"}});
    expectBanner(stage.problem.text);
    int solved = 0;
    stage.problem.solve = [&solved] {
        ++solved;
    };
    stage.play({{"pass 1"}});
    expectBanner(stage.problem.text, 175);
    stage.play({{"click Permitir"}});
    EXPECT_EQ(solved, 1);
    Database other(stage.world.storePath());
    other.execute("BEGIN IMMEDIATE");
    stage.play({{"front Editor; pass 6"}});
    expectBanner(stage.tracker().storageError().value());
}
