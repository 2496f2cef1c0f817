#pragma once

#include "SermonMetadata.h"
#include "SermonNode.h"

#include <QByteArray>

// The document as one line of JSON: metadata in stored order, then the tree, without ids.
namespace SermonJson {
QByteArray toJson(const SermonMetadata& metadata, const SermonNode& root);
}
