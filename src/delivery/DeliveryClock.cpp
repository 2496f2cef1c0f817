#include "DeliveryClock.h"

#include <QElapsedTimer>

namespace {

class SystemDeliveryClock : public DeliveryClock {
public:
    SystemDeliveryClock() { m_timer.start(); }
    double now() const override { return double(m_timer.nsecsElapsed()) * 1e-9; }

private:
    QElapsedTimer m_timer;
};

} // namespace

std::shared_ptr<DeliveryClock> DeliveryClock::system()
{
    static const std::shared_ptr<DeliveryClock> clock = std::make_shared<SystemDeliveryClock>();
    return clock;
}
