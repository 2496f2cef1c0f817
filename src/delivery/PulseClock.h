#pragma once

#include <QObject>

#include <cstdint>

// Counts frames; every drawing that reads `tick` is redrawn when it moves.
class PulseClock : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    std::uint64_t tick() const { return m_tick; }
    void advance()
    {
        ++m_tick;
        emit ticked(m_tick);
    }

signals:
    void ticked(std::uint64_t tick);

private:
    std::uint64_t m_tick = 0;
};
