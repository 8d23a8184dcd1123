// On the offscreen platform's one screen of 800 by 800.
#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <thread>

#include "App/PointText.h"
#include "Windowing/ClickCatcher.h"
#include "Windowing/FloatingWindow.h"
#include "Windowing/MenuItem.h"
#include "Windowing/Popover.h"
#include "Windowing/Screens.h"

class Windows : public testing::Test {
protected:
    static void press(Popover& popover, Qt::Key key) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(popover.focusWidget(), &event);
    }

    static void mouse(QWidget& on, QEvent::Type type, QPointF at,
                      Qt::MouseButton button = Qt::LeftButton) {
        QMouseEvent event(type, on.mapFromGlobal(at), at, button, button, Qt::NoModifier);
        QApplication::sendEvent(&on, &event);
    }
};

TEST(PointText, ReadsBackWhatItWritesAndNothingElse) {
    for (const char* const text : {"{1480, -12.5}", "{0.1, 0.0000001}", "{-3000000000000000, 5}"})
        EXPECT_EQ(PointText::format(PointText::parse(text)), text);
    EXPECT_EQ(PointText::format(PointText::parse(" {1,2.50 } ")), "{1, 2.5}");
    for (const char* const text : {"", "{", "{7", "{7,", "{7, 8", "7, 8", "{7; 8}", "{x, 8}",
                                   "{7, nan}", "{1e999, 8}", "{7,5, 8}"})
        EXPECT_EQ(PointText::format(PointText::parse(text)), "{0, 0}") << text;
}

TEST(Popover, HangsAtItsAnchorWithinTheScreen) {
    const struct {
        QRect anchor;
        int height;
        QPoint expected;
    } cases[] = {{{700, 0, 40, 30}, 404, {524, 30}},     {{700, 0, 40, 34}, 404, {524, 34}},
                 {{0, 0, 20, 22}, 404, {0, 30}},         {{1580, 0, 20, 30}, 404, {1208, 30}},
                 {{700, 870, 40, 30}, 404, {524, 466}},  {{700, 870, 40, 30}, 212, {524, 658}},
                 {{700, 450, 40, 46}, 404, {524, 496}},  {{700, 450, 40, 47}, 404, {524, 46}},
                 {{700, 400, 40, 100}, 404, {524, 496}}, {{0, 100, 10, 10}, 1000, {0, 30}}};
    for (const auto& c : cases)
        EXPECT_EQ(Popover::place(c.anchor, {392, c.height}, {0, 30, 1600, 870}).topLeft(),
                  c.expected);
}

TEST(Screens, LosesToAPanelOnlyWhatItCovers) {
    const QRect left(0, 0, 1200, 900), right(1200, 100, 1000, 700);  // of a desktop of 2200 by 900
    const struct {
        const char* what;
        Screens::Strut panel;
        QRect left, right;
    } cases[] = {
        {"none", {}, left, right},
        {"above", {.top = 28, .topFrom = 0, .topTo = 1199}, {0, 28, 1200, 872}, right},
        {"above the lower screen",
         {.top = 128, .topFrom = 1200, .topTo = 2199},
         left,
         {1200, 128, 1000, 672}},
        {"above both",
         {.top = 128, .topFrom = 0, .topTo = 2199},
         {0, 128, 1200, 772},
         {1200, 128, 1000, 672}},
        {"below", {.bottom = 30, .bottomFrom = 0, .bottomTo = 1199}, {0, 0, 1200, 870}, right},
        {"left of the right one",
         {.left = 1240, .leftFrom = 100, .leftTo = 799},
         left,
         {1240, 100, 960, 700}},
        {"right of the left one",
         {.right = 1040, .rightFrom = 0, .rightTo = 899},
         {0, 0, 1160, 900},
         right},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Screens::without(c.panel, left, {2200, 900}), c.left) << c.what;
        EXPECT_EQ(Screens::without(c.panel, right, {2200, 900}), c.right) << c.what;
    }
}

TEST_F(Windows, PopoverFollowsItsViewAndLetsTheKeyboardIn) {
    QWidget view;
    view.resize(392, 212);
    QPushButton first(&view), second(&view);
    Popover popover(&view);
    popover.show(QRect(380, 780, 40, 20));
    view.resize(392, 404);
    EXPECT_EQ(popover.geometry(), QRect(204, 376, 392, 404)) << "still at its anchor";

    EXPECT_EQ(popover.focusWidget(), &popover) << "no button looks chosen";
    for (const QWidget* const expected : {&first, &second, &first}) {
        press(popover, Qt::Key_Tab);
        EXPECT_EQ(popover.focusWidget(), expected);
    }
    press(popover, Qt::Key_Escape);
    EXPECT_FALSE(popover.isShown() || popover.justClosed());
    popover.show(QRect());
    static_cast<QWidget&>(popover).close();  // as Qt does at a click outside
    EXPECT_TRUE(popover.justClosed());
    std::this_thread::sleep_for(std::chrono::milliseconds(410));
    EXPECT_FALSE(popover.justClosed());
}

TEST_F(Windows, ARightClickThatClosesAPopupReachesTheWindowBeneathButNoCover) {
    QWidget popup(nullptr, Qt::Popup), content;
    content.resize(200, 40);
    FloatingWindow bar(&content);
    int menus = 0;
    bar.onMenu = [&](QPoint) { ++menus; };
    bar.show();
    ClickCatcher cover(&popup);
    cover.cover([](auto) {});
    const QPointF at = bar.geometry().center();
    mouse(cover, QEvent::MouseButtonPress, at, Qt::RightButton);
    EXPECT_EQ(menus, 0) << "the popup is still to come";
    popup.show();
    mouse(cover, QEvent::MouseButtonPress, at, Qt::LeftButton);
    EXPECT_EQ(menus, 0);
    popup.show();
    mouse(cover, QEvent::MouseButtonPress, at, Qt::RightButton);
    EXPECT_EQ(menus, 1);
    EXPECT_FALSE(popup.isVisible());
}

TEST_F(Windows, AnOpenMenusRowsAnswerToTheirKeys) {
    int chosen = 0;
    QMenu menu;
    fillMenu(menu,
             {{"Refresh", 'r', {}, [&] { ++chosen; }}, {"Donate", {}, {}, [&] { chosen += 10; }}});
    menu.popup({});
    for (const auto modifier : {Qt::NoModifier, Qt::ControlModifier}) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_R, modifier);
        QApplication::sendEvent(&menu, &event);
    }
    QApplication::processEvents();
    EXPECT_EQ(chosen, 1);
    EXPECT_FALSE(menu.isVisible());
}

TEST_F(Windows, BarIsDraggedWithoutJumpsAndToldOfOnceAtTheEnd) {
    QWidget content, strip(&content);
    content.resize(256, 38);
    FloatingWindow bar(&content);
    int told = 0;
    bar.onMoved = [&] { ++told; };
    bar.show();
    bar.setOrigin({500, 700});
    bar.resizeKeepingOrigin({300, 50});
    EXPECT_EQ(bar.geometry(), QRect(500, 50, 300, 50));
    mouse(strip, QEvent::MouseButtonPress, {510, 60});
    mouse(strip, QEvent::MouseButtonRelease, {510, 60});
    EXPECT_EQ(told, 0) << "a click is no drag";
    mouse(strip, QEvent::MouseButtonPress, {510, 60});
    for (const QPointF at : {QPointF(511, 61), QPointF(0, 300), QPointF(210.4, 310.4)})
        mouse(strip, QEvent::MouseMove, at);
    mouse(strip, QEvent::MouseButtonRelease, {210.4, 310.4});
    EXPECT_EQ(told, 1);
    EXPECT_EQ(PointText::format(bar.origin()), "{200, 450}");
    EXPECT_EQ(content.geometry(), QRect(0, 0, 300, 50));
    bar.resize(300, 60);  // as sway does, whose minimum is 50
    EXPECT_EQ(bar.frame().size(), QSize(300, 50))
        << "it would be taken for a change of the bar's own size";
    EXPECT_TRUE(Screens::contain({0, 0}) && Screens::contain({799, 799.5}));
    EXPECT_FALSE(Screens::contain({800, 10}) || Screens::contain({10, 800}) ||
                 Screens::contain({-1, 10}));
}
