#include "DeliveryClock.h"

#include <chrono>

namespace {

// The wall clock, as the timer's dates are: setting the system clock moves a running delivery.
class SystemDeliveryClock : public DeliveryClock {
public:
    double now() const override
    {
        const auto since = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration<double>(since).count();
    }
};

} // namespace

std::shared_ptr<DeliveryClock> DeliveryClock::system()
{
    static const std::shared_ptr<DeliveryClock> clock = std::make_shared<SystemDeliveryClock>();
    return clock;
}
