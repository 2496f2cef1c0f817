#pragma once

#include <QString>

// What a document window shows. No control offers columns.
enum class AppMode { tree, columns, delivery };

namespace AppModes {
inline QString label(AppMode mode)
{
    switch (mode) {
    case AppMode::columns:
        return QStringLiteral("Columns");
    case AppMode::delivery:
        return QStringLiteral("Delivery");
    case AppMode::tree:
        break;
    }
    return QStringLiteral("Mind Map");
}
} // namespace AppModes
