#include "StatusItem/StatusItem.h"

#include <xcb/xcb.h>

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QTimer>

#include "Drawing/TextLine.h"
#include "StatusItem/CornerItem.h"
#include "StatusItem/NotifierHost.h"
#include "StatusItem/NotifierItem.h"
#include "StatusItem/TrayIcon.h"

namespace {

constexpr int embeddingDelay =
    500;  // milliseconds; a panel that does both embeds before it can be notified
constexpr int cornerDelay = 3000;  // milliseconds; a panel that restarts is back by then
constexpr int hostTimeout =
    5000;  // milliseconds until a host must have answered and taken the item

}  // namespace

QString StatusContent::markup() const {
    QStringList lines = QString::fromStdString(toolTip).split(u'\n');
    for (QString& line : lines)
        line = line.left(TextLine::longest).toHtmlEscaped();
    return lines.join(u'\n');
}

QString StatusContent::toolkitMarkup() const {
    return QStringLiteral("<span style=\"white-space: pre\">%1</span>").arg(markup());
}

struct StatusItem::State : QAbstractNativeEventFilter {
    explicit State(Activate activate);
    ~State() override { qApp->removeNativeEventFilter(this); }

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override;
    void follow(std::optional<NotifierHost::Host> current);
    void lookForEmbedding();
    void standInCorner();
    void leaveCorner();
    void tell() const;
    template <typename NewForm, typename... Arguments>
    void take(Arguments&&... arguments);

    const Activate onActivate;
    std::function<void()> onPlaceChange;
    std::optional<StatusContent> content;
    std::unique_ptr<Form> form;           ///< In the desktop's tray.
    std::unique_ptr<CornerItem> standIn;  ///< While no tray has taken the item.
    bool notified = true;                 ///< Also until the first answer.
    QTimer embedding;
    QTimer corner;
    NotifierHost host;
};

StatusItem::State::State(Activate activate)
    : onActivate(std::move(activate)), host([this](auto current) { follow(std::move(current)); }) {
    for (QTimer* timer : {&embedding, &corner})
        timer->setSingleShot(true);
    embedding.setInterval(embeddingDelay);
    embedding.callOnTimeout([this] { lookForEmbedding(); });
    corner.callOnTimeout([this] { standInCorner(); });
    corner.start(hostTimeout);
    qApp->installNativeEventFilter(this);
}

template <typename NewForm, typename... Arguments>
void StatusItem::State::take(Arguments&&... arguments) {
    form.reset();  // never two items at once
    form = std::make_unique<NewForm>(std::forward<Arguments>(arguments)..., onActivate);
    if (content) form->setContent(*content);
    tell();
}

void StatusItem::State::standInCorner() {
    standIn = std::make_unique<CornerItem>(onActivate);
    if (content) standIn->setContent(*content);
    tell();
}

void StatusItem::State::leaveCorner() {
    corner.stop();
    if (!standIn) return;
    standIn.reset();
    tell();
}

void StatusItem::State::tell() const {
    if (onPlaceChange) onPlaceChange();
}

void StatusItem::State::follow(std::optional<NotifierHost::Host> current) {
    notified = current.has_value();
    if (!current) return lookForEmbedding();
    embedding.stop();
    if (!standIn) corner.start(hostTimeout);
    take<NotifierItem>(host.connection(), *current, [this] { leaveCorner(); });
}

/// Asks only while no host can be notified, since the first question settles for the whole process
/// whether Qt's icon embeds itself.
void StatusItem::State::lookForEmbedding() {
    if (TrayIcon::hasHost()) {
        leaveCorner();
        if (dynamic_cast<TrayIcon*>(form.get())) return;
        take<TrayIcon>();
        // A panel that goes takes its tray with it a moment later, perhaps before that is watched.
        embedding.start();
    } else {
        if (std::exchange(form, nullptr)) tell();
        if (!standIn) corner.start(cornerDelay);
    }
}

/// A tray that embeds windows announces itself by a client message, and goes with its window.
bool StatusItem::State::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
    if (notified || embedding.isActive() || type != "xcb_generic_event_t") return false;
    const auto event = static_cast<xcb_generic_event_t*>(message)->response_type & 0x7f;
    if (event == XCB_CLIENT_MESSAGE || event == XCB_DESTROY_NOTIFY) embedding.start();
    return false;
}

StatusItem::StatusItem(Activate onActivate)
    : state(std::make_unique<State>(std::move(onActivate))) {}

StatusItem::~StatusItem() = default;

void StatusItem::setContent(StatusContent content) {
    state->content = std::move(content);
    if (state->form) state->form->setContent(*state->content);
    if (state->standIn) state->standIn->setContent(*state->content);
}

void StatusItem::setOnPlaceChange(std::function<void()> onPlaceChange) {
    state->onPlaceChange = std::move(onPlaceChange);
}

std::optional<QRect> StatusItem::geometry() const {
    if (state->standIn) return state->standIn->geometry();
    return state->form ? state->form->geometry() : std::nullopt;
}
