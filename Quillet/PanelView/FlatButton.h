#pragma once

#include <QPushButton>
#include <string>

#include "Drawing/Canvas.h"

/// A push button without a frame. It shows its title and, while it has the focus, a ring.
class FlatButton : public QPushButton {
public:
    struct Look {
        std::string title;
        TextStyle font;
        Color color;
        Color background = Color::black(0);
        double cornerRadius = 6;
    };

    explicit FlatButton(QWidget* parent);

    void setLook(Look look);
    const Look& look() const { return current; }

    QSize sizeHint() const override;  ///< Fits the title.

protected:
    void paintEvent(QPaintEvent*) override;
    void keyPressEvent(QKeyEvent* event) override;  // Return presses it as the space bar does
    void nextCheckState() override {}  // a press only asks; the owner shows what came of it

private:
    Look current;
};
