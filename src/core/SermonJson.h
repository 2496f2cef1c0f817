#pragma once

#include "SermonMetadata.h"
#include "SermonNode.h"

#include <QByteArray>
#include <QString>

#include <optional>

struct SermonContents;

// The document as one line of JSON: metadata in stored order, then the tree, without ids.
namespace SermonJson {
QByteArray toJson(const SermonMetadata& metadata, const SermonNode& root);

// Reads what toJson writes, so that scripts can make sermons. Only "root" is required; a node
// needs nothing but may have "text", "depth", "isCollapsed", "isQuote" and "children"; unknown
// keys are skipped. Depths that don't fit the tree are renumbered from it. On failure, nothing
// and a message for a person in `error` ("line 3, column 9: expected a string for \"text\"").
std::optional<SermonContents> fromJson(const QByteArray& json, QString* error = nullptr);
} // namespace SermonJson
