#pragma once

#include <memory>

// Seconds for the timer, the scroll animation and the pulses. Behind an interface so that tests
// can move time by hand instead of waiting for it.
class DeliveryClock {
public:
    virtual ~DeliveryClock() = default;
    virtual double now() const = 0;

    // The wall clock, in seconds since the epoch.
    static std::shared_ptr<DeliveryClock> system();
};

// A clock that only moves when told to; for tests and benchmarks.
class ManualDeliveryClock : public DeliveryClock {
public:
    double now() const override { return m_now; }
    void advance(double seconds) { m_now += seconds; }
    void set(double seconds) { m_now = seconds; }

private:
    double m_now = 1000.0;
};
