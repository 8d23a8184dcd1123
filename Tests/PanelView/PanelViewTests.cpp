#include "PanelView/PanelView.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QTimer>

#include "PanelView/FlatButton.h"
#include "Windowing/Popover.h"

/// In the keyboard's order, with what a press asks for and a star if the button is checked then.
TEST(PanelView, ControlsShowTheSettingsAndAskForTheOpposite) {
    const auto press = [](QWidget* widget, Qt::Key key) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    };
    std::string found;
    const auto asked = [&found](auto choice, bool on) {
        found += "(" + std::string(choice.rawValue()) + (on ? " on) " : " off) ");
    };
    PanelView panel;
    Popover popover(&panel);
    panel.settings.surfaces = {DisplaySurface::menuBar, DisplaySurface::touchBar};
    panel.isProviderVisible = [](Provider p) { return p != Provider::gemini; };
    panel.onToggleProvider = asked;
    panel.onToggleSurface = asked;
    panel.onDonate = [&] { found += "(donate) "; };
    panel.onRefresh = [&] { found += "(refresh) "; };
    panel.hasTouchBar = true;
    panel.update(std::vector<PanelView::Entry>());
    popover.show(QRect());
    QCoreApplication::processEvents();
    for (int i = 0; i < 10; ++i) {
        press(&popover, Qt::Key_Tab);
        auto* const button = qobject_cast<QPushButton*>(QApplication::focusWidget());
        ASSERT_TRUE(button);
        found += button->accessibleName().toStdString() + " ";
        press(button, Qt::Key_Return);
        if (button->isChecked()) found += "* ";
    }
    EXPECT_EQ(found,
              "Show Claude (Claude off) * Show Codex (Codex off) * Show Gemini (Gemini on) "
              "Show OpenCode (OpenCode off) * Menu Bar (menuBar off) * Floating (floatingBar on) "
              "Touch Bar (touchBar off) * Donate (donate) Refresh (refresh) Quit ");
    QTimer::singleShot(0, [&] { press(panel.quitButton, Qt::Key_Return); });
    EXPECT_EQ(QCoreApplication::exec(), 0) << "never ends without Quit";
}
