#pragma once

#include "Pasteboard.h"

// A pasteboard that lives in memory, for tests and for windows without a system clipboard.
class MemoryPasteboard final : public Pasteboard {
public:
    void setString(const QString& text) override { m_text = text; }
    std::optional<QString> string() const override { return m_text; }
    void clear() { m_text.reset(); }

private:
    std::optional<QString> m_text;
};
