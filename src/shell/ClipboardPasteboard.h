#pragma once

#include "editing/Pasteboard.h"

// The system clipboard as the map's pasteboard, so that lines copied from a sermon paste into
// any other program and the other way round.
class ClipboardPasteboard : public Pasteboard {
public:
    void setString(const QString& text) override;
    std::optional<QString> string() const override;
};
