#pragma once

#include "SermonMetadata.h"

#include <optional>

// The YAML block at the head of a sermon file.
struct FrontMatterResult {
    std::optional<SermonMetadata> metadata; // absent on failure
    QString error; // why, when it failed
};

// Absent when there is nothing to write (or, never expected, the emitter fails).
std::optional<QString> encodeFrontMatter(const SermonMetadata& metadata);
FrontMatterResult decodeFrontMatter(const QString& yaml);

namespace YAMLDate {
QString format(const QDate& date); // yyyy-MM-dd
std::optional<QDate> parse(const QString& text); // yyyy-MM-dd, month and day of one or two digits
} // namespace YAMLDate

// True when the plain form of `text` would read as something other than a string.
bool hasImplicitNonStringType(const QString& text);
