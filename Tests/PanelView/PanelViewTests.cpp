#include "PanelView/PanelView.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QTimer>

#include "PanelView/FlatButton.h"
#include "Windowing/Popover.h"

namespace {

void press(QWidget* widget, Qt::Key key) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

}  // namespace

/// In the keyboard's order, with a star where a setting is on and what a press asks for.
TEST(PanelView, ControlsShowTheSettingsAndAskForTheOpposite) {
    using enum DisplaySurface::Case;
    const std::tuple<std::set<DisplaySurface>, bool, Provider, std::string> cases[] = {
        {{menuBar, touchBar},
         false,
         Provider::gemini,
         "Show Claude* (Claude off) Show Codex* (Codex off) Show Gemini (Gemini on) "
         "Show OpenCode* (OpenCode off) Menu Bar* (menuBar off) Floating (floatingBar on) "
         "Donate (donate) Refresh (refresh) Quit "},
        {{floatingBar, touchBar},
         true,
         Provider::claude,
         "Show Claude (Claude on) Show Codex* (Codex off) Show Gemini* (Gemini off) "
         "Show OpenCode* (OpenCode off) Menu Bar (menuBar on) Floating* (floatingBar off) "
         "Touch Bar* (touchBar off) Donate (donate) Refresh (refresh) Quit "}};
    for (const auto& [surfaces, hasTouchBar, hidden, expected] : cases) {
        PanelView panel;
        Popover popover(&panel);
        std::string found;
        const auto asked = [&found](auto choice, bool on) {
            found += "(" + std::string(choice.rawValue()) + (on ? " on) " : " off) ");
        };
        panel.hasTouchBar = hasTouchBar;
        panel.settings.surfaces = surfaces;
        panel.isProviderVisible = [&, &hidden = hidden](Provider p) { return p != hidden; };
        panel.onToggleProvider = asked;
        panel.onToggleSurface = asked;
        panel.onDonate = [&] { found += "(donate) "; };
        panel.onRefresh = [&] { found += "(refresh) "; };
        panel.update(std::vector<PanelView::Entry>());
        panel.update(std::vector<PanelView::Entry>());
        popover.show(QRect(380, 10, 40, 20));
        popover.activateWindow();
        QCoreApplication::processEvents();
        for (QWidget* at = &popover; at != panel.quitButton && found.size() < 999;) {
            press(at, Qt::Key_Tab);
            at = QApplication::focusWidget();
            const auto* button = qobject_cast<QPushButton*>(at);
            ASSERT_TRUE(button);
            found += at->accessibleName().toStdString() + (button->isChecked() ? "* " : " ");
            if (at != panel.quitButton) press(at, Qt::Key_Return);
        }
        EXPECT_EQ(found, expected);
        QTimer::singleShot(0, [&] { press(panel.quitButton, Qt::Key_Return); });
        QTimer::singleShot(5000, [] { QCoreApplication::exit(1); });
        EXPECT_EQ(QCoreApplication::exec(), 0) << "Quit does not quit";
    }
}
