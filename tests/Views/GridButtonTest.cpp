#include "Views/GridButton.h"

#include "Fakes/FakeAppearance.h"
#include "WidgetReading.h"

#include <QTest>
#include <QVBoxLayout>

using namespace orvanta;

namespace {

/// What lies over the background in the corner of a button, from 0 to 1.
double tintOf(QWidget& button, Qt::GlobalColor background) {
    QImage image(button.size(), QImage::Format_RGB32);
    image.fill(background);
    button.render(&image, {}, {}, QWidget::RenderFlags());
    return std::abs(qGray(image.pixel(5, 5)) - qGray(QColor(background).rgb())) / 255.0;
}

struct Buttons {
    FakeAppearance appearance;
    QWidget window;
    GridButton* first = new GridButton(appearance, QSize(88, 44), {}, &window);
    GridButton* second = new GridButton(appearance, QSize(88, 44), {}, &window);
    int clicks = 0;

    Buttons() {
        second->move(0, 44);
        window.setFocusPolicy(Qt::NoFocus);
        window.setGeometry(200, 200, 100, 100); // Away from the pointer.
        window.show();
        activate(window);
        window.setFocus();
        QObject::connect(first, &GridButton::clicked, [this] { ++clicks; });
    }
};

} // namespace

TEST(GridButtonTest, ShowsThePointerAndThePressAsATint) {
    Buttons buttons;
    constexpr double exact = 0.5 / 255;
    for (const auto& [scheme, background] :
         {std::pair(ColorScheme::light, Qt::white), {ColorScheme::dark, Qt::black}}) {
        buttons.appearance.become(scheme);
        EXPECT_EQ(tintOf(*buttons.first, background), 0);
        buttons.first->setAttribute(Qt::WA_UnderMouse);
        EXPECT_NEAR(tintOf(*buttons.first, background), 0.06, exact);
        QTest::mousePress(buttons.first, Qt::LeftButton);
        EXPECT_NEAR(tintOf(*buttons.first, background), 0.14, exact);
        QTest::mouseRelease(buttons.first, Qt::LeftButton);
        buttons.first->setAttribute(Qt::WA_UnderMouse, false);
        EXPECT_EQ(tintOf(*buttons.first, background), 0);
    }
    EXPECT_EQ(buttons.clicks, 2);
}

TEST(GridButtonTest, IsReachedByTabAndPressedByKeys) {
    Buttons buttons;
    EXPECT_FALSE(buttons.first->hasFocus());
    QTest::keyClick(&buttons.window, Qt::Key_Tab);
    ASSERT_TRUE(buttons.first->hasFocus());
    EXPECT_GT(tintOf(*buttons.first, Qt::white), 0);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        QTest::keyClick(buttons.first, key);
    }
    EXPECT_EQ(buttons.clicks, 3);
    QTest::keyClick(buttons.first, Qt::Key_Tab);
    EXPECT_EQ(tintOf(*buttons.first, Qt::white), 0);
    ASSERT_TRUE(buttons.second->hasFocus());
    // The pointer does not take the keyboard away.
    QTest::mouseClick(buttons.first, Qt::LeftButton);
    EXPECT_TRUE(buttons.second->hasFocus());
}
