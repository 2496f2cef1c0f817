#pragma once

#include <QHash>
#include <QRandomGenerator>
#include <QUuid>

#include <array>
#include <functional>

// The identity of a line within one open document. Random, never written to a file.
using NodeID = QUuid;

// Ids need only be unique within the process, not unguessable, so a version-4 UUID drawn from a
// generator seeded once per thread replaces the system entropy source, which costs a system call
// per id. Documents are read off the main thread too, hence one generator per thread. The
// generator is xoshiro256**: a file of many lines makes an id per line, and Qt's generator
// costs several times as much for each through its out-of-line calls.
class NodeIDGenerator {
public:
    NodeIDGenerator()
    {
        QRandomGenerator::system()->fillRange(m_state.data(), m_state.size());
        if (m_state == std::array<quint64, 4>{})
            m_state[0] = 1; // the one state the generator can't leave
    }

    quint64 next()
    {
        const quint64 result = rotate(m_state[1] * 5, 7) * 9;
        const quint64 t = m_state[1] << 17;
        m_state[2] ^= m_state[0];
        m_state[3] ^= m_state[1];
        m_state[1] ^= m_state[2];
        m_state[0] ^= m_state[3];
        m_state[2] ^= t;
        m_state[3] = rotate(m_state[3], 45);
        return result;
    }

private:
    static quint64 rotate(quint64 x, int k) { return (x << k) | (x >> (64 - k)); }

    std::array<quint64, 4> m_state{};
};

inline NodeID makeNodeID()
{
    thread_local NodeIDGenerator generator;
    const quint64 high = generator.next();
    const quint64 low = generator.next();
    const auto byte = [low](int i) { return uchar(low >> (8 * i)); };
    return QUuid(uint(high >> 32), ushort(high >> 16), ushort((high & 0x0fff) | 0x4000), // version 4
                 uchar((byte(7) & 0x3f) | 0x80), // RFC 4122 variant
                 byte(6), byte(5), byte(4), byte(3), byte(2), byte(1), byte(0));
}

template <>
struct std::hash<QUuid> {
    size_t operator()(const QUuid& id) const noexcept { return qHash(id); }
};
