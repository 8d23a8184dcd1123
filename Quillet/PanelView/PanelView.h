#pragma once

#include <QWidget>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Drawing/Canvas.h"
#include "Model/DisplaySettings.h"
#include "Model/UsageSnapshot.h"

class FlatButton;

/// The popover's content: a row per provider, and the controls below. It changes no choice itself:
/// a press only calls back, and the next `update` shows what came of it.
class PanelView : public QWidget {
public:
    struct Entry {
        Provider provider;
        std::optional<UsageSnapshot> snapshot;  ///< Absent until the provider has reported.
    };

    explicit PanelView(QWidget* parent = nullptr);

    /// Shows `entries` from now on, in their order, and takes the size that they need.
    void update(std::vector<Entry> entries);
    using QWidget::update;

    bool hasTouchBar = false;  ///< Whether this machine has one; without, its button is disabled.
    DisplaySettings settings{{DisplaySurface::menuBar}};

    std::function<void()> onRefresh;
    std::function<void()> onDonate;
    std::function<void(DisplaySurface, bool)> onToggleSurface;  ///< With the requested new state.
    std::function<void(Provider, bool)> onToggleProvider;  ///< With the requested new visibility.
    std::function<bool(Provider)> isProviderVisible;  ///< Without it every provider is visible.

    std::map<Provider, FlatButton*> providerButtons;  ///< Made at the first update.
    std::map<DisplaySurface, FlatButton*> surfaceButtons;
    FlatButton* const refreshButton;
    FlatButton* const donateButton;
    FlatButton* const quitButton;

protected:
    void paintEvent(QPaintEvent*) override;

private:
    FlatButton* addButton(const std::string& accessibleName, std::function<void()> tapped);
    void buildControls();
    void rebuildProviderButtons();
    void syncControlStates();
    void layoutControls();
    void place(FlatButton* button, double x, double midY, double buttonWidth);
    bool showsProvider(Provider provider) const;

    void refreshTapped() const;
    void donateTapped() const;
    void quitTapped() const;
    void providerToggled(Provider provider) const;
    void surfaceToggled(DisplaySurface surface) const;

    std::vector<Entry> entries;
};
