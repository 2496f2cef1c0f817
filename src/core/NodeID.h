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
// per id. Documents are read off the main thread too, hence one generator per thread.
inline NodeID makeNodeID()
{
    thread_local QRandomGenerator64 generator = [] {
        std::array<quint32, 8> seed{};
        QRandomGenerator::system()->fillRange(seed.data(), seed.size());
        return QRandomGenerator64(seed.data(), qsizetype(seed.size()));
    }();
    const quint64 high = generator.generate64();
    const quint64 low = generator.generate64();
    const auto byte = [low](int i) { return uchar(low >> (8 * i)); };
    return QUuid(uint(high >> 32), ushort(high >> 16), ushort((high & 0x0fff) | 0x4000), // version 4
                 uchar((byte(7) & 0x3f) | 0x80), // RFC 4122 variant
                 byte(6), byte(5), byte(4), byte(3), byte(2), byte(1), byte(0));
}

template <>
struct std::hash<QUuid> {
    size_t operator()(const QUuid& id) const noexcept { return qHash(id); }
};
