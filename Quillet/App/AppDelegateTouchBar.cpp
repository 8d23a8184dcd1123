// The control strip's button and the strip that it expands to.
#include "App/AppDelegate.h"
#include "App/ControlStrip.h"
#include "Rendering/StatusSummary.h"

namespace {

constexpr double glyphScale = 2;  // every Touch Bar's pixels per point

}  // namespace

void AppDelegate::installTrayItem() {
    if (!ControlStrip::isAvailable() || trayInstalled) return;
    TouchBarButton button{StatusSummary::controlStripGlyph(snapshots, glyphScale),
                          [this] { controlStripTapped(); }};
    trayItem = TouchBarItem{trayIdentifier, std::move(button)};
    ControlStrip::add(*trayItem);
    trayInstalled = true;
}

void AppDelegate::removeTrayItem() {
    if (!trayInstalled) return;
    if (modalTouchBar) ControlStrip::dismissModal(*modalTouchBar);
    ControlStrip::remove(*trayItem);
    trayInstalled = false;
    presentedInitialModal = false;
}

void AppDelegate::updateTrayGlyph() {
    if (!trayInstalled) return;
    trayItem->button->image = StatusSummary::controlStripGlyph(snapshots, glyphScale);
}

void AppDelegate::presentModalStrip() {
    if (!trayInstalled) return;
    if (!modalTouchBar) {
        modalTouchBar = TouchBar{{stripIdentifier}, [this](const std::string& identifier) {
                                     return makeItem(identifier);
                                 }};
    }
    ControlStrip::presentModal(*modalTouchBar, trayIdentifier);
}

std::optional<TouchBarItem> AppDelegate::makeItem(const std::string& identifier) {
    if (identifier != stripIdentifier) return std::nullopt;
    return TouchBarItem{stripIdentifier, std::nullopt, &touchStrip};
}
