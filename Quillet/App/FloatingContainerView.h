#pragma once

#include <QPointer>
#include <QWidget>

/// The floating bar's background around its strip.
class FloatingContainerView : public QWidget {
public:
    static constexpr double cornerRadius = 10;  ///< Points.

    explicit FloatingContainerView(QWidget* strip);  ///< The strip keeps its owner.
    ~FloatingContainerView() override;

protected:
    void paintEvent(QPaintEvent*) override;

private:
    const QPointer<QWidget> strip;
};
