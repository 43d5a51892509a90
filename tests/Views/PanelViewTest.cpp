#include "Views/PanelView.h"

#include "PanelStage.h"
#include "Views/Palette.h"
#include "Views/TextBlock.h"

#include <QContextMenuEvent>
#include <QMenu>

using namespace orvanta;
using namespace Qt::StringLiterals;
using enum Category;

namespace {

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
    for (const auto& [title, place] : std::initializer_list<std::pair<const char*, QRect>>{
             {"MONITORANDO 2:00", {0, 44, 232, 44}},
             {"Jogo, 0:30", {0, 132, 232, 44}},
             {"Jogo: Consumo", {276, 132, 44, 44}},
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
    const QColor rule = Palette(ColorScheme::light).rule;
    EXPECT_EQ(count(picture(stage.open(), 2), rule, QRect(0, 87, 640, 1)), 640);
    stage.add({"Editor", production, 90});
    stage.add({"Jogo", consumption, 30});
    const QImage image = picture(stage.open());
    EXPECT_EQ(count(image, Palette::green, QRect(0, 43, 240, 1)), 240);
    EXPECT_EQ(count(image, Palette::red, QRect(240, 43, 80, 1)), 80);
}

TEST(PanelViewTest, DoesWhatThePointerAndTheKeyboardSay) {
    PanelStage stage({{"Editor", production, 90}, {"Jogo", consumption, 80}});
    stage.problem.text = u"Nada é contado."_s;
    stage.play({
        {"open; over Histórico por dia", "Text HISTÓRICO 1; Text ↑ 53% PRODUÇÃO"},
        {"off Histórico por dia; pass 0.3; over content; pass 5", "Text HISTÓRICO 1"},
        {"off content; pass 0.2; off content; pass 0.34", "Text HISTÓRICO 1"},
        {"pass 0.01", "Text MONITORANDO 2:50"},
        {"over Histórico por dia; off Histórico por dia; over Não monitorados; pass 10",
         "Text NÃO MONITORADOS 0"},
        {"off Não monitorados; pass 0.4", "Text MONITORANDO 2:50"},
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
        {"click Histórico por dia", "Text HISTÓRICO 1; !Text Nada é contado."},
        // What is shown anew rests at the activities, whatever was pinned.
        {"open", "Text MONITORANDO 2:50"},
        // A question keeps the keyboard in it.
        {"focus Parar de monitorar Editor; keys Return", "@Cancelar; Parar de monitorar Editor?"},
        {"keys Tab", "@Parar; !Text Nada é contado."},
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
    EXPECT_EQ(stage.button("Sair").toolTip(), u"Sair · clique direito para Ajustes"_s);
}

TEST(PanelViewTest, ItsButtonsShowTheirStates) {
    PanelStage stage({{"Editor", production, 90}});
    stage.play({{"open; click Pausar; click Histórico por dia"}});
    EXPECT_EQ(stage.button("Histórico por dia").label().ink, GridButton::Ink::green);
    EXPECT_EQ(stage.button("Não monitorados").label().ink, GridButton::Ink::foreground);
    GridButton& pause = stage.button("Retomar");
    EXPECT_EQ(pause.label().symbol, Symbol::play);
    EXPECT_EQ(stage.button("Zerar tempo").label().text, u"ZERAR"_s);
    // The pointer, the press and the keyboard are a tint over the background.
    for (const ColorScheme scheme : {ColorScheme::dark, ColorScheme::light}) {
        stage.appearance.become(scheme);
        const int plain = Palette(scheme).background.red();
        const auto expectTint = [&](double opacity) {
            const int full = scheme == ColorScheme::dark ? 255 : 0;
            EXPECT_NEAR(qRed(picture(stage.root()).pixel(5, 315)), plain + opacity * (full - plain),
                        1);
        };
        EXPECT_EQ(picture(stage.root()).pixel(1, 87), Palette(scheme).rule.rgb());
        expectTint(0);
        QTest::mousePress(&pause, Qt::LeftButton);
        expectTint(0.14);
        pause.setDown(false);
        stage.play({{"focus Retomar; click Não monitorados; click Histórico por dia", "@Retomar"}});
        expectTint(0.06);
        pause.clearFocus();
        pause.setFocus(Qt::ActiveWindowFocusReason); // A window that comes is not worth showing.
        expectTint(0);
        pause.clearFocus();
    }
    stage.play({{"click Histórico por dia"}});
    const QRect stop = placeOf(stage.button("Parar de monitorar Editor"));
    for (const char* act : {"off Editor", "over Editor", "off Editor"}) {
        stage.play({{act}});
        const int seen = count(picture(stage.root()), Palette(ColorScheme::light).muted, stop);
        EXPECT_EQ(seen > 0, act == std::string_view("over Editor")) << act;
    }
}

TEST(PanelViewTest, AnArrowClassifiesAndColoursItsSquare) {
    PanelStage stage({{"Editor", pending, 90}, {"Jogo", pending, 80}});
    for (const bool still : {true, false}) {
        stage.appearance.still = still;
        const QString name = still ? u"Editor"_s : u"Jogo"_s;
        const GridButton& up = named<GridButton>(stage.open(), qPrintable(name + u": Produção"_s));
        const auto filling = [&] {
            return picture(stage.root()).pixel(placeOf(up).topLeft() + QPoint(3, 3));
        };
        EXPECT_EQ(up.toolTip(), u"Marcar %1 como Produção"_s.arg(name));
        EXPECT_EQ(filling(), Palette(ColorScheme::light).background.rgb());
        stage.play({{qPrintable(u"click %1; off %1"_s.arg(titleOf(&up)))}});
        EXPECT_EQ(up.toolTip(), u"Produção selecionada"_s);
        const auto isGreen = [&] {
            return qGreen(filling()) - qRed(filling()) > 20;
        };
        EXPECT_TRUE(isGreen() || !still); // Where it moves it has only begun.
        EXPECT_TRUE(QTest::qWaitFor(isGreen));
    }
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
    // The Menu key opens it, as the desktop makes of it.
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(&root, &event);
    EXPECT_NE(menu(), nullptr);
}

TEST(PanelViewTest, NamesTheGravestProblem) {
    PanelStage stage;
    const auto expectBanner = [&](const QString& text, int bottom) {
        const TextBlock& banner = named<TextBlock>(stage.root(), qPrintable(text));
        EXPECT_EQ(banner.geometry().bottom(), bottom);
        EXPECT_EQ(find(stage.root(), u"Permitir"_s) != nullptr, bottom != 219);
    };
    stage.world.browsers.known.insert(u"browser"_s);
    stage.play({{"front browser; open"}});
    EXPECT_EQ(shown<TextBlock>(&stage.root()).size(), 1U) << "the empty listing's";
    stage.world.browsers.fail(u"-600"_s);
    expectBanner(stage.tracker().browserStatus(), 219);
    stage.problem = {u"Nada é contado."_s, [&] {
                         ++stage.settings;
                     }};
    stage.play({{"pass 1"}});
    expectBanner(stage.problem.text, 175);
    stage.play({{"click Permitir"}});
    EXPECT_EQ(stage.settings, 1);
    Database other(stage.world.storePath());
    other.execute("BEGIN IMMEDIATE");
    stage.play({{"front Editor; pass 6"}});
    expectBanner(stage.tracker().storageError().value(), 219);
}
