#pragma once

#include <QString>

#include <optional>

// The bytes of a file that is about to be rewritten in sermon form, kept once.
namespace OriginalCopy {

// Keeps the bytes of `path` before it is first rewritten: as NAME.md~ beside it, or, when that
// can't be written or already holds something else, under the application's data. An existing
// copy of the same bytes is never written again. Returns where the copy is; empty when there was
// nothing to keep; nothing at all on failure, with the reason in `error`.
std::optional<QString> keep(const QString& path, QString* error);

} // namespace OriginalCopy
