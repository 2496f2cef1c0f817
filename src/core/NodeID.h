#pragma once

#include <QHash>
#include <QUuid>

#include <functional>

// The identity of a line within one open document. Random, never written to a file.
using NodeID = QUuid;

inline NodeID makeNodeID()
{
    return QUuid::createUuid();
}

template <>
struct std::hash<QUuid> {
    size_t operator()(const QUuid& id) const noexcept { return qHash(id); }
};
