#include "PanelView/PanelView.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QTimer>
#include <ctime>

#include "PanelView/FlatButton.h"
#include "PanelView/StatusMessage.h"
#include "Tests/Support/Drawing.h"
#include "Tests/Support/Fixture.h"
#include "Tests/Support/HostileValues.h"
#include "Tests/Support/ScopedClock.h"
#include "Windowing/Popover.h"

namespace {

json components(Color color) {
    return {color.red, color.green, color.blue, color.alpha};
}

void press(QWidget* widget, Qt::Key key) {
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    }
}

/// A panel's buttons as they stand, row by row.
std::vector<FlatButton*> buttonsOf(const PanelView& panel) {
    std::vector<FlatButton*> buttons;
    for (const auto& [provider, button] : panel.providerButtons)
        buttons.push_back(button);
    for (const auto& [surface, button] : panel.surfaceButtons)
        buttons.push_back(button);
    buttons.insert(buttons.end(), {panel.donateButton, panel.refreshButton, panel.quitButton});
    return buttons;
}

}  // namespace

TEST(PanelView, DrawsARowForEachEntry) {
    setenv("TZ", "XXX-3", 1);
    tzset();
    const ScopedClock clock(1'800'011'100);
    PanelView panel;
    for (const auto& picture : pictures("panel")) {
        SCOPED_TRACE(picture["what"]);
        std::vector<PanelView::Entry> entries;
        for (const auto& row : picture["entries"])
            entries.push_back({providerOf(row), snapshotOf(row)});
        panel.update(entries);
        ASSERT_EQ(panel.size(), QSize(picture["size"][0], picture["size"][1]));
        for (auto* button : buttonsOf(panel))
            button->setVisible(button->look().background.alpha > 0);
        expectPicture(rendered(panel), picture["drawn"]);
    }
    expectHostileValuesDrawnAtOnce([&](const UsageSnapshot& snapshot) {
        panel.update({{snapshot.provider, snapshot}});
        rendered(panel);
    });
}

TEST(StatusMessage, SaysWhyThereAreNoFigures) {
    for (const auto& row : fixture("tables/status-messages")) {
        const json entry{{"provider", row[0]}, {"snapshot", row[1]}};
        const auto message = StatusMessage::of(providerOf(entry), snapshotOf(entry));
        EXPECT_EQ(json(message.text), row[2]);
        EXPECT_EQ(components(message.color), components(colorOf(row[3]))) << row;
    }
}

TEST(PanelView, ControlsShowTheSettingsAndAskForTheOpposite) {
    PanelView panel;
    for (const auto& row : fixture("tables/controls")) {
        SCOPED_TRACE(row["what"]);
        panel.hasTouchBar = row["touchBar"];
        panel.settings.surfaces.clear();
        for (const auto& text : row["settings"])
            panel.settings.surfaces.insert(*DisplaySurface::fromRawValue(text.get<std::string>()));
        if (!row["hidden"].is_null())
            panel.isProviderVisible = [&](Provider p) {
                return json(p.rawValue()) != row["hidden"];
            };
        panel.update(std::vector<PanelView::Entry>());
        panel.update({{Provider::claude, std::nullopt}});
        EXPECT_EQ(panel.findChildren<QWidget*>().size(), 10) << "made twice";

        const auto buttons = buttonsOf(panel);
        std::string asked;
        panel.onToggleProvider = [&](Provider p, bool on) {
            asked += std::string(p.rawValue()) + (on ? "+ " : "- ");
        };
        panel.onToggleSurface = [&](DisplaySurface s, bool on) {
            asked += std::string(s.rawValue()) + (on ? "+ " : "- ");
        };
        panel.onDonate = [&] { asked += "Donate "; };
        panel.onRefresh = [&] { asked += "Refresh "; };
        for (std::size_t i = 0; i < 9; ++i)
            press(buttons[i], i % 2 ? Qt::Key_Return : Qt::Key_Space);
        EXPECT_EQ(json(asked), row["asked"]);
        panel.onToggleProvider = nullptr, panel.onToggleSurface = nullptr,
        panel.onDonate = panel.onRefresh = nullptr;

        for (std::size_t i = 0; i < buttons.size();
             ++i) {  // also after the presses, which change nothing
            press(buttons[i], i < 9 ? Qt::Key_Space : Qt::Key_Shift);
            const auto& [title, font, color, background, radius] = buttons[i]->look();
            const QRect frame = buttons[i]->geometry();
            const double y = panel.height() - frame.y() - frame.height() / 2.0;
            const int gap =
                i >= 7 ? (i == 9 ? 392 : buttons[i + 1]->x()) - frame.x() - frame.width()
                       : frame.x() -
                             (i == 0 || i == 4 ? 0 : buttons[i - 1]->x() + buttons[i - 1]->width());
            const double slack = frame.width() - TextLine(title, font).width();
            EXPECT_EQ(json({buttons[i]->accessibleName().toStdString(), title, font.size,
                            font.weight, components(color), components(background),
                            buttons[i]->isEnabled(), buttons[i]->isChecked(), gap, y,
                            slack >= 0 && slack < 9 ? json() : json(frame.width())}),
                      row["buttons"][i]);
        }
    }
}

TEST(PanelView, TheKeyboardGoesThroughTheControlsInReadingOrder) {
    PanelView panel;
    Popover popover(&panel);
    panel.hasTouchBar = true;
    panel.update(std::vector<PanelView::Entry>());
    popover.show(QRect(380, 10, 40, 20));
    popover.activateWindow();
    QCoreApplication::processEvents();
    const auto buttons = buttonsOf(panel);
    press(&popover, Qt::Key_Tab);
    for (auto* button : buttons) {
        ASSERT_TRUE(button->hasFocus()) << button->look().title << " is not next";
        const QImage focused = rendered(*button);
        EXPECT_FALSE(
            QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name).isEmpty())
            << button->look().title;
        press(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_NE(rendered(*button), focused) << "the focus does not show";
    }
    QTimer::singleShot(0, panel.quitButton, &FlatButton::click);
    QTimer::singleShot(5000, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QCoreApplication::exec(), 0) << "Quit does not quit";
}
