#pragma once

#include <QString>

#include <optional>

// The place copied text goes to and comes from: plain text only. The shell backs it with the
// system clipboard; tests use MemoryPasteboard.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    // Replaces whatever the pasteboard held with this text.
    virtual void setString(const QString& text) = 0;
    // The text held, or nothing when the pasteboard holds no text.
    virtual std::optional<QString> string() const = 0;
};
