#pragma once

#include "core/SermonDocument.h"

#include <QByteArray>
#include <QString>

#include <optional>

// Reading and writing a sermon's file. Writes are atomic: the old file stays whole until the new
// one is complete, so a full disk or a crash never leaves half a sermon behind.
namespace SermonFile {

// Larger than any sermon; a bigger file is refused rather than read.
constexpr qint64 maxBytes = 64 * 1024 * 1024;

// The bytes of a regular file of at most `maxBytes`, or nothing with the reason in `why`
// ("It is a folder, not a file."). Every reading of a sermon's file goes through here.
std::optional<QByteArray> readBytes(const QString& path, QString* why);

// The contents, or nothing with the message a user should read in `error`.
std::optional<SermonContents> read(const QString& path, QString* error);
bool write(const QString& path, const QByteArray& bytes, QString* error);

// The one path a file goes by, links and ".." resolved, so that two names of one file compare equal.
QString canonicalPath(const QString& path);

// "The document “x.md” could not be opened. <why>"
QString openFailureMessage(const QString& path, const QString& why);
QString saveFailureMessage(const QString& path, const QString& why);

} // namespace SermonFile
