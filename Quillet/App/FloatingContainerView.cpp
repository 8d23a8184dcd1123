#include "App/FloatingContainerView.h"

#include <QPainter>

#include "Drawing/Canvas.h"

namespace {

constexpr struct {
    Color fill = Color::grey(0.02, 0.94);
    Color edge = Color::white(0.08);
    double edgeWidth = 1;
} background;

}  // namespace

FloatingContainerView::FloatingContainerView(QWidget* shown) : strip(shown) {
    strip->setParent(this);
    strip->show();
}

FloatingContainerView::~FloatingContainerView() {
    strip->setParent(nullptr);
}

void FloatingContainerView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    Canvas canvas(painter, height());
    const Rect bounds{0, 0, double(width()), double(height())};
    canvas.fillRounded(bounds, cornerRadius, background.fill);
    canvas.strokeRounded(bounds, cornerRadius, background.edge, background.edgeWidth);
}
