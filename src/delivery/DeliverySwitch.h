#pragma once

#include <QAbstractButton>

// A small on/off switch.
class DeliverySwitch : public QAbstractButton {
    Q_OBJECT
public:
    explicit DeliverySwitch(QWidget* parent = nullptr);
    QSize sizeHint() const override { return {26, 15}; }

protected:
    void paintEvent(QPaintEvent* event) override;
};
