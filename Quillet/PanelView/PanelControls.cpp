#include <QCoreApplication>

#include "PanelView/FlatButton.h"
#include "PanelView/PanelView.h"
#include "Rendering/Palette.h"

namespace {

constexpr struct {
    double x = 62;
    double midY = 86;
    double width = 30;
    double advance = 36;
    TextStyle font{10, FontWeight::heavy};
    double visibleText = 0.85;
    double hiddenText = 0.7;
    double hiddenBackground = 0.16;
} tile;

constexpr struct {
    double x = 62;
    double midY = 51;
    double gap = 14;
    TextStyle font{11, FontWeight::medium};
    Color on{0.45, 0.85, 0.55};
    double offAlpha = 0.55;
    double disabledAlpha = 0.2;
} surfaceRow;

constexpr struct {
    double midY = 17;
    double gap = 16;  // between buttons, and to the right edge
    TextStyle font{11, FontWeight::medium};
    TextStyle donateFont{11, FontWeight::semibold};
    Color color = Color::grey(0.85);
    Color donateColor{0.55, 0.7, 1.0};
} actionRow;

constexpr const char* surfaceLabels[] = {"Menu Bar", "Floating", "Touch Bar"};
static_assert(std::size(surfaceLabels) == DisplaySurface::allCases().size());

FlatButton::Look tileLook(Provider provider, bool visible) {
    const Color accent = Palette::accent(provider);
    return {Palette::initials(provider), tile.font,
            visible ? Color::black(tile.visibleText) : accent.withAlpha(tile.hiddenText),
            visible ? accent : accent.withAlpha(tile.hiddenBackground)};
}

FlatButton::Look surfaceLook(DisplaySurface surface, bool on, bool enabled) {
    const Color switched = on ? surfaceRow.on : Color::white(surfaceRow.offAlpha);
    return {(on ? "● " : "○ ") + std::string(surfaceLabels[surface]), surfaceRow.font,
            enabled ? switched : Color::white(surfaceRow.disabledAlpha)};
}

}  // namespace

PanelView::PanelView(QWidget* parent)
    : QWidget(parent),
      refreshButton(addButton("Refresh", [this] { refreshTapped(); })),
      donateButton(addButton("Donate", [this] { donateTapped(); })),
      quitButton(addButton("Quit", [this] { quitTapped(); })) {
    buildControls();
}

void PanelView::buildControls() {
    refreshButton->setLook({"Refresh", actionRow.font, actionRow.color});
    donateButton->setLook({"Donate", actionRow.donateFont, actionRow.donateColor});
    quitButton->setLook({"Quit", actionRow.font, actionRow.color});
}

FlatButton* PanelView::addButton(const std::string& accessibleName, std::function<void()> tapped) {
    auto* const button = new FlatButton(this);
    button->setAccessibleName(QString::fromStdString(accessibleName));
    connect(button, &FlatButton::clicked, this, std::move(tapped));
    return button;
}

void PanelView::rebuildProviderButtons() {
    for (const Provider provider : Provider::allCases()) {
        providerButtons[provider] = addButton("Show " + std::string(provider.rawValue()),
                                              [this, provider] { providerToggled(provider); });
        providerButtons[provider]->setCheckable(true);
    }
    for (const DisplaySurface surface : DisplaySurface::allCases()) {
        surfaceButtons[surface] =
            addButton(surfaceLabels[surface], [this, surface] { surfaceToggled(surface); });
        surfaceButtons[surface]->setCheckable(true);
    }
    // The tab order follows the layout.
    setTabOrder(surfaceButtons.rbegin()->second, donateButton);
    setTabOrder(donateButton, refreshButton);
    setTabOrder(refreshButton, quitButton);
}

void PanelView::syncControlStates() {
    for (const auto& [provider, button] : providerButtons) {
        const bool visible = showsProvider(provider);
        button->setLook(tileLook(provider, visible));
        button->setChecked(visible);
    }
    for (const auto& [surface, button] : surfaceButtons) {
        const bool on = settings.surfaces.contains(surface);
        button->setEnabled(surface != DisplaySurface::touchBar || hasTouchBar);
        button->setLook(surfaceLook(surface, on, button->isEnabled()));
        button->setChecked(on);
    }
}

void PanelView::layoutControls() {
    double x = tile.x;
    for (const auto& [provider, button] : providerButtons) {
        place(button, x, tile.midY, tile.width);
        x += tile.advance;
    }
    x = surfaceRow.x;
    for (const auto& [surface, button] : surfaceButtons) {
        const int buttonWidth = button->sizeHint().width();
        place(button, x, surfaceRow.midY, buttonWidth);
        x += buttonWidth + surfaceRow.gap;
    }
    x = width();
    for (FlatButton* button : {quitButton, refreshButton, donateButton}) {
        const int buttonWidth = button->sizeHint().width();
        x -= actionRow.gap + buttonWidth;
        place(button, x, actionRow.midY, buttonWidth);
    }
}

void PanelView::place(FlatButton* button, double x, double midY, double buttonWidth) {
    const double buttonHeight = button->sizeHint().height();
    const double top = height() - midY - buttonHeight / 2;
    button->setGeometry(QRectF(x, top, buttonWidth, buttonHeight).toRect());
}

bool PanelView::showsProvider(Provider provider) const {
    return !isProviderVisible || isProviderVisible(provider);
}

void PanelView::refreshTapped() const {
    if (onRefresh) onRefresh();
}

void PanelView::donateTapped() const {
    if (onDonate) onDonate();
}

void PanelView::quitTapped() const {
    QCoreApplication::quit();
}

void PanelView::providerToggled(Provider provider) const {
    if (onToggleProvider) onToggleProvider(provider, !showsProvider(provider));
}

void PanelView::surfaceToggled(DisplaySurface surface) const {
    if (onToggleSurface) onToggleSurface(surface, !settings.surfaces.contains(surface));
}
