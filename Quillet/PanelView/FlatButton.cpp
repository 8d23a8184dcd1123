#include "PanelView/FlatButton.h"

#include <QKeyEvent>
#include <QPainter>
#include <cmath>

namespace {

constexpr int buttonHeight = 20;
constexpr struct {
    double width = 1.5;
    double alpha = 0.6;
} focusRing;

}  // namespace

FlatButton::FlatButton(QWidget* parent) : QPushButton(parent) {
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);  // no ring after a click
}

void FlatButton::setLook(Look look) {
    current = std::move(look);
    update();
}

QSize FlatButton::sizeHint() const {
    const TextLine title(current.title, current.font);
    return {static_cast<int>(std::ceil(title.width())), buttonHeight};
}

void FlatButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    Canvas canvas(painter, height());
    const Rect bounds{0, 0, double(width()), double(height())};
    canvas.fillRounded(bounds, current.cornerRadius, current.background);
    canvas.drawCentred(TextLine(current.title, current.font), bounds.center(), current.color);
    if (hasFocus()) {
        const Rect ring = bounds.inset(focusRing.width / 2);
        canvas.strokeRounded(ring, current.cornerRadius, Color::white(focusRing.alpha),
                             focusRing.width);
    }
}

void FlatButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return click();
    QPushButton::keyPressEvent(event);
}
