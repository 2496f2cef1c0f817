#pragma once

#include <QByteArray>
#include <QString>

#include <sys/types.h>

// Putting bytes into a file so that the file holds either its old bytes or all of the new ones,
// never a part. Every write, the flush to disk and the final rename are checked; a short write is
// carried on, and a failure says why in words.
namespace DiskWrite {

// Replaces the file at `path` (the file a link leads to, for a link) with `bytes`: written to a
// temporary file beside it, flushed to disk, then renamed over it. In a folder where no file can
// be made, a file that may be written is rewritten in place instead, with its old bytes put back
// if that fails. False with the reason in `why` when the file keeps its old bytes.
bool replaceFile(const QString& path, const QByteArray& bytes, QString* why);

// Deletes the temporary files that saves of `path` killed halfway left beside it, if they are
// plain files of this user untouched for `olderThanSeconds`. The first successful save of each
// file in a run does this on its own.
constexpr qint64 leftoverAgeSeconds = 60;
void removeLeftoverTemporaries(const QString& path, qint64 olderThanSeconds = leftoverAgeSeconds);

// The reason a call failed with `error` (an errno value), as a user reads it: "The disk is full."
QString describe(int error);

// Whether a save may write the file: its permissions allow it. The superuser, whom permissions
// don't stop, still leaves alone a file that has no write permission at all.
bool isWritable(const QString& path);

// The calls a save goes through; tests put in their place ones that fail as a full disk or a
// locked folder does. A null member is the system's own.
struct Calls {
    ssize_t (*write)(int fd, const void* data, size_t size) = nullptr;
    int (*makeTemporary)(char* pattern, int flags) = nullptr; // as mkostemp
};
void setCalls(const Calls& calls);

} // namespace DiskWrite
