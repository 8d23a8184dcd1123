#include "StatusItem/StatusItem.h"

#include <QApplication>

#include "StatusItem/CornerItem.h"
#include "StatusItem/NotifierItem.h"
#include "StatusItem/TrayIcon.h"
#include "Windowing/WindowSystem.h"
#include "Windowing/X11.h"

namespace {

constexpr int embeddingDelay = 500;  // milliseconds; panels that do both embed first
constexpr int restartDelay = 3000;   // milliseconds; a panel that restarts is back by then
constexpr int hostTimeout = 5000;    // milliseconds for a host to answer and take the item

}  // namespace

StatusItem::StatusItem(StatusForm::Activate activate, bool mayTrayBeLate)
    : onActivate(std::move(activate)),
      cornerDelay(mayTrayBeLate ? restartDelay : 0),
      host([this](const auto& current) { follow(current); }) {
    for (QTimer* timer : {&embedding, &corner})
        timer->setSingleShot(true);
    embedding.setInterval(embeddingDelay);
    embedding.callOnTimeout([this] { lookForEmbedding(); });
    corner.callOnTimeout([this] { standInCorner(); });
    corner.start(hostTimeout);
    qApp->installNativeEventFilter(this);
}

StatusItem::~StatusItem() {
    qApp->removeNativeEventFilter(this);
}

void StatusItem::setContent(StatusContent newContent) {
    content = std::move(newContent);
    for (const auto* shown : {&form, &standIn})
        if (*shown) (*shown)->setContent(*content);
}

std::optional<QRect> StatusItem::geometry() const {
    if (standIn) return standIn->geometry();
    return form ? form->geometry() : std::nullopt;
}

template <typename Form, typename... Arguments>
std::unique_ptr<StatusForm> StatusItem::make(Arguments&&... arguments) {
    auto made = std::make_unique<Form>(std::forward<Arguments>(arguments)..., onActivate);
    if (content) made->setContent(*content);
    return made;
}

void StatusItem::follow(const std::optional<NotifierHost::Host>& current) {
    hasNotifierHost = current.has_value();
    if (!current) return lookForEmbedding();
    embedding.stop();
    if (!standIn) corner.start(hostTimeout);
    form.reset();  // never two items at once
    form = make<NotifierItem>(host.connection(), *current, [this] { leaveCorner(); });
    placeChanged();
}

/// Only while there is no StatusNotifier host: Qt decides at the first question, for the life of
/// the process, whether its icon is embedded.
void StatusItem::lookForEmbedding() {
    if (TrayIcon::hasHost()) {
        leaveCorner();
        if (dynamic_cast<TrayIcon*>(form.get())) return placeChanged();  // it is embedded by now
        form.reset();
        form = make<TrayIcon>();
        embedding.start();  // the tray may have gone before its end was watched
    } else {
        if (!standIn) corner.start(std::exchange(cornerDelay, restartDelay));
        if (!std::exchange(form, nullptr)) return;
    }
    placeChanged();
}

void StatusItem::standInCorner() {
    standIn = make<CornerItem>();
    placeChanged();
}

void StatusItem::leaveCorner() {
    corner.stop();
    if (std::exchange(standIn, nullptr)) placeChanged();
}

void StatusItem::placeChanged() const {
    if (onPlaceChange) onPlaceChange();
}

bool StatusItem::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
    const bool looks = !hasNotifierHost && !embedding.isActive() && WindowSystem::isX11();
    if (looks && X11::isTrayChange(message)) embedding.start();
    return false;
}
