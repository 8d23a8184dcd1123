#pragma once

#include <QWidget>

#include "StatusItem/StatusForm.h"
#include "Windowing/ContextMenu.h"

/// A small window of the item's own at the top right of the primary screen, above all others and
/// never with the focus.
class CornerItem : public StatusForm, QWidget {
public:
    explicit CornerItem(Activate onActivate);

    void setContent(const StatusContent& content) override;
    std::optional<QRect> geometry() const override { return QWidget::geometry(); }

private:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void place();

    const Activate onActivate;
    StatusContent content;
    QImage picture;
    ContextMenu menu;
    bool isPressed = false;
};
