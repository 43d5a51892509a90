#include "PanelStage.h"
#include "Views/Confirmation.h"
#include "Views/Palette.h"
#include "Views/TextBlock.h"

#include <QMenu>
#include <QScrollBar>

using namespace orvanta;

namespace {

constexpr Category production = Category::production;
constexpr Category consumption = Category::consumption;
constexpr Category pending = Category::pending;
constexpr Category ignored = Category::ignored;

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

TEST(PanelViewTest, SaysAllOfItToAScreenReader) {
    PanelStage stage({{"Editor", production, 90}, {"Jogo", consumption, 30}, {"Nota", ignored, 7}});
    stage.world.front("Editor");
    stage.open();
    const QStringList bands = lines({"orvanta", "Text ↑ 75% PRODUÇÃO", "Text ↓ 25% CONSUMO"});
    const QStringList buttons = lines({"Button Histórico por dia", "Button Não monitorados"});
    const QStringList footer = lines({"Button Pausar", "Button Zerar tempo", "Button Sair"});
    EXPECT_EQ(
        stage.lines(),
        bands + lines({"Text MONITORANDO 2:00"}) + buttons +
            lines({"Editor", "Text Editor, 1:30, Ativo", "Button Parar de monitorar Editor",
                   "Button Editor: Produção = Selecionado",
                   "Button Editor: Consumo = Não selecionado", "Jogo", "Text Jogo, 0:30",
                   "Button Parar de monitorar Jogo", "Button Jogo: Produção = Não selecionado",
                   "Button Jogo: Consumo = Selecionado"}) +
            footer);

    stage.click("Não monitorados");
    EXPECT_EQ(stage.lines(),
              bands + lines({"Text NÃO MONITORADOS 1"}) + buttons +
                  lines({"Nota", "Text Nota, 0:07", "Button Reativar monitoramento de Nota"}) +
                  footer);
    EXPECT_EQ(stage.button("Não monitorados").label().ink, GridButton::Ink::green);

    stage.click("Reativar monitoramento de Nota");
    EXPECT_TRUE(stage.shows("Text Nenhum app ou site não monitorado."));
    EXPECT_TRUE(stage.shows("Text NÃO MONITORADOS 0"));
    EXPECT_EQ(stage.activity("Nota").category(), pending);
}

TEST(PanelViewTest, DividesItsLineByTheShares) {
    PanelStage stage;
    for (const double ratio : {1.0, 2.0}) {
        const auto line = [&] {
            return picture(stage.open(), ratio)
                .copy(0, qRound(44 * ratio) - 1, qRound(320 * ratio), 1);
        };
        EXPECT_EQ(count(line(), Palette(ColorScheme::light).rule), 320 * ratio);
        EXPECT_TRUE(stage.shows("Text ↑ — PRODUÇÃO"));
    }
    stage.add({"Editor", production, 90});
    stage.add({"Jogo", consumption, 30});
    const QImage image = picture(stage.open());
    EXPECT_EQ(count(image, Palette::green, QRect(0, 43, 240, 1)), 240);
    EXPECT_EQ(count(image, Palette::red, QRect(240, 43, 80, 1)), 80);
}

TEST(PanelViewTest, TheContentFollowsThePointerAndAClickHoldsIt) {
    PanelStage stage({{"Editor", production, 90}});
    stage.open();
    GridButton& history = stage.button("Histórico por dia");
    QWidget& content = *stage.root().findChild<ActivityRows*>()->parentWidget();
    stage.enter(history);
    EXPECT_TRUE(stage.shows("Text HISTÓRICO 1"));
    stage.leave(history);
    stage.world.pass(0.3);
    stage.enter(content);
    stage.world.pass(5);
    EXPECT_TRUE(stage.shows("Text HISTÓRICO 1"));
    stage.leave(content);
    stage.world.pass(0.35);
    EXPECT_TRUE(stage.shows("Text MONITORANDO 1:30"));

    stage.click("Histórico por dia");
    stage.leave(history);
    stage.world.pass(5);
    EXPECT_EQ(history.label().ink, GridButton::Ink::green);
    stage.click("Histórico por dia");
    EXPECT_EQ(history.label().ink, GridButton::Ink::foreground);
    // What is shown anew rests at the activities, whatever was pinned.
    stage.click("Histórico por dia");
    stage.open();
    EXPECT_TRUE(stage.shows("Text MONITORANDO 1:30"));
}

TEST(PanelViewTest, APreviewMayReplaceTheRowThatHasTheKeyboard) {
    PanelStage stage({{"Editor", production, 90}, {"Jogo", consumption, 80}});
    stage.open();
    stage.button("Jogo: Consumo").setFocus(Qt::TabFocusReason);
    stage.enter(stage.button("Histórico por dia"));
    EXPECT_TRUE(stage.shows("Text HISTÓRICO 1"));
    EXPECT_EQ(stage.root().focusWidget()->accessibleName(), QStringLiteral("Histórico por dia"));
}

TEST(PanelViewTest, AnArrowClassifiesAndColoursItsSquare) {
    PanelStage stage({{"Editor", pending, 90}});
    QImage sample(1, 1, QImage::Format_RGB32);
    sample.fill(Palette(ColorScheme::light).background);
    QColor veil = Palette::green;
    veil.setAlphaF(0.2F);
    QPainter(&sample).fillRect(sample.rect(), veil);
    const QColor filled = sample.pixelColor(0, 0);
    for (const bool still : {true, false}) {
        stage.appearance.still = still;
        stage.tracker().classify(stage.activity("Editor"), pending);
        stage.open();
        GridButton& up = stage.button("Editor: Produção");
        EXPECT_EQ(up.toolTip(), QStringLiteral("Marcar Editor como Produção"));
        const auto isFilled = [&] {
            const QRect corner(up.mapTo(&stage.root(), QPoint(3, 3)), QSize(1, 1));
            return count(picture(stage.root()), filled, corner) == 1;
        };
        EXPECT_FALSE(isFilled());
        stage.click("Editor: Produção");
        stage.leave(up);
        EXPECT_EQ(stage.activity("Editor").category(), production);
        EXPECT_EQ(up.toolTip(), QStringLiteral("Produção selecionada"));
        EXPECT_EQ(isFilled(), still); // Otherwise it has only begun.
        EXPECT_TRUE(QTest::qWaitFor(isFilled));
    }
}

TEST(PanelViewTest, ASecondPaintsOnlyWhatItChanges) {
    PanelStage stage({{"Editor", production, 5000}, {"Jogo", consumption, 3000}});
    stage.world.front("Editor");
    stage.open();
    stage.world.pass(1);
    QApplication::processEvents();
    PaintLog log(stage.root());
    stage.world.pass(1);
    QApplication::processEvents();
    const QRect row =
        placeOf(*stage.root().findChild<ActivityRows*>()->rowOf(stage.activity("Editor")));
    const QRegion times = QRegion(100, 44, 132, 44) + QRegion(150, row.y(), 82, 44);
    // The share moves by less than the line shows; it may be painted all the same.
    EXPECT_FALSE(log.painted.isEmpty());
    EXPECT_TRUE((log.painted - times - QRect(0, 43, 320, 1)).isEmpty())
        << (log.painted - times).boundingRect().y();

    // A second in which nothing counts paints nothing.
    stage.tracker().togglePause();
    QApplication::processEvents();
    log.painted = {};
    stage.world.pass(3);
    QApplication::processEvents();
    EXPECT_TRUE(log.painted.isEmpty());
}

TEST(PanelViewTest, StoppingIsAskedInsideThePanel) {
    PanelStage stage({{"Editor", production, 90}, {"Jogo", consumption, 80}});
    stage.problem.text = QStringLiteral("Nada é contado.");
    stage.open();
    EXPECT_TRUE(stage.shows("Text Nada é contado."));
    GridButton& stop = stage.button("Parar de monitorar Editor");
    const QRect place = placeOf(stop);
    const QColor muted = Palette(ColorScheme::light).muted;
    EXPECT_EQ(count(picture(stage.root()), muted, place), 0);
    ActivityRow& row = *stage.root().findChild<ActivityRows*>()->rowOf(stage.activity("Editor"));
    stage.enter(row);
    EXPECT_GT(count(picture(stage.root()), muted, place), 0);
    stage.leave(row);

    stop.setFocus(Qt::TabFocusReason);
    stage.press(Qt::Key_Return);
    EXPECT_TRUE(stage.shows("Parar de monitorar Editor?"));
    EXPECT_FALSE(stage.shows("Text Nada é contado."));
    // The keyboard stays in it.
    for (const char* name : {"Cancelar", "Parar", "Cancelar"}) {
        EXPECT_EQ(stage.root().focusWidget()->accessibleName(), QString::fromUtf8(name));
        stage.press(Qt::Key_Tab);
    }
    stage.press(Qt::Key_Escape);
    EXPECT_FALSE(stage.shows("Parar de monitorar Editor?"));
    EXPECT_TRUE(stage.shows("Text Nada é contado."));
    EXPECT_TRUE(stop.hasFocus());
    EXPECT_EQ(stage.activity("Editor").category(), production);

    stage.press(Qt::Key_Space);
    stage.press(Qt::Key_Tab);
    stage.press(Qt::Key_Space);
    EXPECT_EQ(stage.activity("Editor").category(), ignored);
    EXPECT_FALSE(stage.shows("Editor"));
    // What comes to its place gets the keyboard.
    EXPECT_EQ(stage.root().focusWidget()->accessibleName(),
              QStringLiteral("Parar de monitorar Jogo"));
}

TEST(PanelViewTest, TheFooterPausesResetsAndQuits) {
    PanelStage stage({{"Editor", production, 90}});
    stage.open();
    stage.click("Pausar");
    EXPECT_TRUE(stage.tracker().paused());
    EXPECT_TRUE(stage.shows("Text PAUSADO 1:30"));
    EXPECT_EQ(stage.button("Retomar").label().symbol, Symbol::play);

    stage.click("Zerar tempo");
    stage.click("Cancelar");
    EXPECT_EQ(stage.activity("Editor").seconds(), 90);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    stage.click("Zerar tempo");
    EXPECT_TRUE(
        stage.shows("Text O tempo acumulado será apagado. Suas classificações serão preservadas."));
    stage.click("Zerar");
    EXPECT_EQ(stage.activity("Editor").seconds(), 0);
    EXPECT_TRUE(stage.shows("Text PAUSADO 0:00"));

    EXPECT_EQ(stage.button("Sair").toolTip(), QStringLiteral("Sair · clique direito para Ajustes"));
    stage.click("Sair");
    EXPECT_EQ(stage.quits, 1);
}

TEST(PanelViewTest, TheMenuShowsAllAndLeadsToTheSettings) {
    PanelStage stage;
    stage.world.begin();
    stage.world.front("Editor");
    stage.world.pass(30);
    stage.world.nothingInFront();
    stage.world.pass(400);
    stage.open();
    EXPECT_TRUE(stage.shows("Text Itens breves ocultos · clique direito para mostrar todos."));
    stage.root().setWindowFlags(Qt::Popup); // Where not every Qt tells of context menus.
    stage.root().show();
    const auto choose = [&](int index) {
        QTest::mouseClick(stage.root().windowHandle(), Qt::RightButton, {}, {10, 200});
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        QTest::mouseClick(menu, Qt::LeftButton, {},
                          menu->actionGeometry(menu->actions().at(index)).center());
        EXPECT_EQ(QApplication::activePopupWidget(), &stage.root());
    };
    choose(0);
    EXPECT_TRUE(stage.tracker().showAllActivities());
    EXPECT_TRUE(stage.shows("Editor"));
    choose(0);
    EXPECT_FALSE(stage.tracker().showAllActivities());
    choose(2);
    EXPECT_EQ(stage.settings, 1);
}

TEST(PanelViewTest, NamesTheGravestProblem) {
    PanelStage stage;
    const auto banner = [&] {
        const auto blocks = stage.root().findChildren<TextBlock*>();
        const auto found = std::ranges::find_if(blocks, [](const TextBlock* block) {
            return block->isVisible() && block->y() > 0; // The empty listing's is at the top.
        });
        return found != blocks.end() ? (*found)->accessibleName() : QString();
    };
    stage.world.browsers.known.insert(QStringLiteral("browser"));
    stage.world.front("browser");
    stage.open();
    EXPECT_EQ(banner(), QString());
    stage.world.browsers.fail(QStringLiteral("-600"));
    EXPECT_EQ(banner(), stage.tracker().browserStatus());
    EXPECT_NE(banner(), QString());

    stage.problem.text = QStringLiteral("Nada é contado.");
    stage.world.pass(1);
    EXPECT_EQ(banner(), stage.problem.text);
    EXPECT_FALSE(stage.shows("Button Permitir"));
    int solved = 0;
    stage.problem.solve = [&solved] {
        ++solved;
    };
    stage.world.pass(1);
    EXPECT_EQ(banner(), stage.problem.text);
    stage.click("Permitir");
    EXPECT_EQ(solved, 1);

    Database other(stage.world.storePath());
    other.execute("BEGIN IMMEDIATE");
    stage.world.front("Editor");
    stage.world.pass(6);
    ASSERT_TRUE(stage.tracker().storageError());
    EXPECT_EQ(banner(), *stage.tracker().storageError());
    EXPECT_FALSE(stage.shows("Button Permitir"));
    stage.click("Histórico por dia");
    EXPECT_EQ(banner(), QString());
}
