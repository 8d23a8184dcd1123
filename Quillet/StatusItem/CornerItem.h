#pragma once

#include <QWidget>

#include "StatusItem/StatusItem.h"
#include "Windowing/ContextMenu.h"

/// A small window of the item's own at the top right of the primary screen, above all others and
/// never with the focus.
class CornerItem : public StatusItem::Form, QWidget {
public:
    explicit CornerItem(StatusItem::Activate onActivate);

    void setContent(const StatusContent& content) override;
    std::optional<QRect> geometry() const override { return QWidget::geometry(); }

private:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void followPrimaryScreen();
    void place();

    const StatusItem::Activate onActivate;
    StatusContent content;
    QImage picture;
    ContextMenu menu;
    QMetaObject::Connection screenChange;
};
