#pragma once

#include <QWidget>

/// The floating bar's background around its strip.
class FloatingContainerView : public QWidget {
public:
    static constexpr double cornerRadius = 10;  ///< Points.

    explicit FloatingContainerView(QWidget* strip);  ///< The strip must outlive it.
    ~FloatingContainerView() override;

protected:
    void paintEvent(QPaintEvent*) override;

private:
    QWidget* const strip;
};
