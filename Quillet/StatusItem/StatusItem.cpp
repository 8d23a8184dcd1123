#include "StatusItem/StatusItem.h"

#include <xcb/xcb.h>

#include <QApplication>

#include "StatusItem/CornerItem.h"
#include "StatusItem/NotifierItem.h"
#include "StatusItem/TrayIcon.h"

namespace {

constexpr int embeddingDelay = 500;  // milliseconds; panels that do both embed first
constexpr int cornerDelay = 3000;    // milliseconds; a panel that restarts is back by then
constexpr int hostTimeout = 5000;    // milliseconds for a host to answer and take the item

}  // namespace

StatusItem::StatusItem(StatusForm::Activate activate)
    : onActivate(std::move(activate)), host([this](const auto& current) { follow(current); }) {
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
    isNotified = current.has_value();
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
        if (dynamic_cast<TrayIcon*>(form.get())) return;
        form.reset();
        form = make<TrayIcon>();
        embedding.start();  // the tray may have gone before its end was watched
    } else {
        if (!standIn) corner.start(cornerDelay);
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

/// A tray that embeds windows announces itself by a client message, and goes with its window.
bool StatusItem::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
    if (isNotified || embedding.isActive() || type != "xcb_generic_event_t") return false;
    const auto event = static_cast<xcb_generic_event_t*>(message)->response_type & 0x7f;
    if (event == XCB_CLIENT_MESSAGE || event == XCB_DESTROY_NOTIFY) embedding.start();
    return false;
}
