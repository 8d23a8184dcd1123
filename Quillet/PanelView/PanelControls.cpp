#include <QCoreApplication>

#include "PanelView/FlatButton.h"
#include "PanelView/PanelView.h"
#include "Rendering/Palette.h"

namespace {

constexpr struct {
    double x = 62;
    double y = 76;
    Size size{30, 20};
    double advance = 36;
    TextStyle font{10, FontWeight::heavy};
    double visibleText = 0.85;
    double hiddenText = 0.7;
    double hiddenBackground = 0.16;
} tile;

constexpr struct {
    double x = 62;
    double y = 34;
    double bandHeight = 34;
    double gap = 14;
    TextStyle font{11, FontWeight::medium};
    Color on{0.45, 0.85, 0.55};
    double offAlpha = 0.55;
    double disabledAlpha = 0.2;
} surfaceRow;

constexpr struct {
    double bandHeight = 34;
    double gap = 16;  // between buttons, and to the right edge
    TextStyle font{11, FontWeight::medium};
    TextStyle donateFont{11, FontWeight::semibold};
    Color color = Color::grey(0.85);
    Color donateColor{0.55, 0.7, 1.0};
} actionRow;

constexpr const char* surfaceLabels[] = {"Menu Bar", "Floating", "Touch Bar"};

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

Size fittingSize(const FlatButton* button) {
    return {double(button->sizeHint().width()), double(button->sizeHint().height())};
}

}  // namespace

PanelView::PanelView(QWidget* parent)
    : QWidget(parent),
      refreshButton(new FlatButton(this)),
      donateButton(new FlatButton(this)),
      quitButton(new FlatButton(this)) {
    buildControls();
}

void PanelView::buildControls() {
    refreshButton->setAccessibleName(QStringLiteral("Refresh"));
    donateButton->setAccessibleName(QStringLiteral("Donate"));
    quitButton->setAccessibleName(QStringLiteral("Quit"));
    connect(refreshButton, &FlatButton::clicked, this, &PanelView::refreshTapped);
    connect(donateButton, &FlatButton::clicked, this, &PanelView::donateTapped);
    connect(quitButton, &FlatButton::clicked, this, &PanelView::quitTapped);
}

FlatButton* PanelView::addToggle(int tag, const char* accessibleName, Handler toggled) {
    auto* const button = new FlatButton(this);
    button->tag = tag;
    button->setCheckable(true);
    button->setAccessibleName(QString::fromUtf8(accessibleName));
    connect(button, &FlatButton::clicked, this,
            [this, button, toggled] { (this->*toggled)(button); });
    return button;
}

void PanelView::rebuildProviderButtons() {
    for (const Provider provider : Provider::allCases()) {
        FlatButton*& button = providerButtons[provider];
        const std::string name = "Show " + std::string(provider.rawValue());
        if (!button) button = addToggle(provider, name.c_str(), &PanelView::providerToggled);
    }
    for (const DisplaySurface surface : DisplaySurface::allCases()) {
        FlatButton*& button = surfaceButtons[surface];
        if (!button)
            button = addToggle(surface, surfaceLabels[surface], &PanelView::surfaceToggled);
    }
}

/// The keyboard goes through the buttons as the eye does.
void PanelView::orderFocus() {
    std::vector<FlatButton*> buttons;
    for (const auto& [provider, button] : providerButtons)
        buttons.push_back(button);
    for (const auto& [surface, button] : surfaceButtons)
        buttons.push_back(button);
    buttons.insert(buttons.end(), {donateButton, refreshButton, quitButton});
    for (std::size_t i = 1; i < buttons.size(); ++i)
        setTabOrder(buttons[i - 1], buttons[i]);
}

void PanelView::syncControlStates() {
    for (const auto& [provider, button] : providerButtons) {
        button->setLook(tileLook(provider, showsProvider(provider)));
        button->setChecked(showsProvider(provider));
    }
    for (const auto& [surface, button] : surfaceButtons) {
        const bool on = settings.surfaces.contains(surface);
        button->setEnabled(surface != DisplaySurface::touchBar || hasTouchBar);
        button->setLook(surfaceLook(surface, on, button->isEnabled()));
        button->setChecked(on);
    }
    refreshButton->setLook({"Refresh", actionRow.font, actionRow.color});
    quitButton->setLook({"Quit", actionRow.font, actionRow.color});
    donateButton->setLook({"Donate", actionRow.donateFont, actionRow.donateColor});
}

void PanelView::layoutControls() {
    double x = tile.x;
    for (const auto& [provider, button] : providerButtons) {
        place(button, {x, tile.y, tile.size.width, tile.size.height});
        x += tile.advance;
    }
    x = surfaceRow.x;
    for (const auto& [surface, button] : surfaceButtons) {
        const Size size = fittingSize(button);
        place(button, {x, surfaceRow.y + (surfaceRow.bandHeight - size.height) / 2, size.width,
                       size.height});
        x += size.width + surfaceRow.gap;
    }
    const double y = (actionRow.bandHeight - fittingSize(refreshButton).height) / 2;
    x = width();
    for (FlatButton* button : {quitButton, refreshButton, donateButton}) {
        const Size size = fittingSize(button);
        x -= actionRow.gap + size.width;
        place(button, {x, y, size.width, size.height});
    }
}

void PanelView::place(FlatButton* button, Rect frame) {
    button->setGeometry(
        QRectF(frame.x, height() - frame.maxY(), frame.width, frame.height).toRect());
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

void PanelView::providerToggled(const FlatButton* sender) const {
    const Provider provider = Provider::allCases().at(static_cast<std::size_t>(sender->tag));
    if (onToggleProvider) onToggleProvider(provider, !showsProvider(provider));
}

void PanelView::surfaceToggled(const FlatButton* sender) const {
    const DisplaySurface surface =
        DisplaySurface::allCases().at(static_cast<std::size_t>(sender->tag));
    if (onToggleSurface) onToggleSurface(surface, !settings.surfaces.contains(surface));
}
