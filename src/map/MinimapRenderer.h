#pragma once

#include "NodeLayout.h"
#include "TreeNodeSnapshot.h"

#include <QImage>
#include <QRectF>
#include <QSize>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

class SermonNode;

// Tells whether a minimap image must be rendered again. Pan and zoom are no part of it: the
// viewport rectangle is drawn live over the image.
struct MinimapCacheKey {
    uint64_t topologyHash = 0; // ids, depths, folds and child counts of the visible tree
    uint64_t textHash = 0; // texts of the visible tree
    uint64_t layoutSignature = 0; // node count and content rectangle
    int pixelWidth = 0;
    int pixelHeight = 0;
    bool isDark = false;

    bool operator==(const MinimapCacheKey&) const = default;
};

// 64-bit FNV-1a; wider values are fed a byte at a time, least significant first.
struct Fnv1a {
    uint64_t value = 0xcbf29ce484222325ULL;

    void feedByte(uint8_t byte)
    {
        value ^= byte;
        value *= 0x100000001b3ULL;
    }
    void feed(uint64_t v)
    {
        for (int i = 0; i < 8; ++i)
            feedByte(uint8_t(v >> (8 * i)));
    }
    void feedBytes(const void* data, size_t size)
    {
        const auto* bytes = static_cast<const uint8_t*>(data);
        for (size_t i = 0; i < size; ++i)
            feedByte(bytes[i]);
    }
};

// The minimap's picture of the whole tree, rendered off the main thread from values alone.
namespace MinimapRenderer {

struct Input {
    TreeSnapshot root;
    NodeLayouts layouts;
    QRectF contentBounds;
    QSize pixelSize;
    bool isDark = false;
};

// Walks the visible tree of the document (main thread; folded branches don't count).
MinimapCacheKey cacheKey(const SermonNode& root, const NodeLayouts& layouts, const QRectF& contentBounds,
                         QSize pixelSize, bool isDark);

// The image, or nothing for an empty size or when `isCancelled` said so on one of its polls:
// at each child of the line walk, every 64 nodes, and at the end.
std::optional<QImage> render(const Input& input, const std::function<bool()>& isCancelled = {});

} // namespace MinimapRenderer
