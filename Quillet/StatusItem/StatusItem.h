#pragma once

#include <QAbstractNativeEventFilter>
#include <QTimer>
#include <memory>

#include "StatusItem/NotifierHost.h"
#include "StatusItem/StatusForm.h"

/// The application's place in the desktop's tray, in the form that the desktop has a host for: a
/// StatusNotifier item, Qt's tray icon where hosts only embed X windows, or a small window at the
/// screen's top right while no host takes it. Hosts may come late, restart and go.
class StatusItem : private QAbstractNativeEventFilter {
public:
    /// `mayTrayBeLate`: whether to wait for a tray some seconds, as at the start of a session.
    StatusItem(StatusForm::Activate onActivate, bool mayTrayBeLate);
    ~StatusItem() override;

    void setContent(StatusContent content);

    std::function<void()> onPlaceChange;  ///< The item stands somewhere else now, or nowhere.

    /// On the screen, in device-independent pixels; absent when the host doesn't tell.
    std::optional<QRect> geometry() const;

private:
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
    void follow(const std::optional<NotifierHost::Host>& current);
    void lookForEmbedding();
    void standInCorner();
    void leaveCorner();
    void placeChanged() const;
    template <typename Form, typename... Arguments>
    std::unique_ptr<StatusForm> make(Arguments&&... arguments);

    const StatusForm::Activate onActivate;
    std::optional<StatusContent> content;
    std::unique_ptr<StatusForm> form;     ///< In the desktop's tray.
    std::unique_ptr<StatusForm> standIn;  ///< While no tray has taken the item.
    bool hasNotifierHost = true;          ///< Also until the first answer.
    int cornerDelay;                      ///< Milliseconds without any tray.
    QTimer embedding;
    QTimer corner;
    NotifierHost host;
};
