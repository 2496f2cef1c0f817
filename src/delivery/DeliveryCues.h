#pragma once

#include "DeliveryTimer.h"

#include <QObject>

#include <vector>

// Cues at chosen minutes left: one each time the remaining time, running, passes a mark on its
// way down. A delivery started with less left than a mark never hears that mark.
class DeliveryCues : public QObject {
    Q_OBJECT
public:
    explicit DeliveryCues(DeliveryTimer* timer, QObject* parent = nullptr);

    bool isEnabled() const { return m_enabled; }
    bool setEnabled(bool on);
    const std::vector<int>& minutes() const { return m_minutes; }
    void setMinutes(std::vector<int> minutes);

signals:
    void cue(int minutesLeft);

private:
    void onRemainingChanged(double seconds);

    DeliveryTimer* m_timer;
    bool m_enabled = false;
    std::vector<int> m_minutes;
    double m_lastSeen = 0;
};
