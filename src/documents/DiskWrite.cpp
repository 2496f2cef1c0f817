#include "DiskWrite.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace DiskWrite {

namespace {

Calls calls;

ssize_t callWrite(int fd, const void* data, size_t size)
{
    return calls.write ? calls.write(fd, data, size) : ::write(fd, data, size);
}

int makeTemporary(char* pattern, int flags)
{
    return calls.makeTemporary ? calls.makeTemporary(pattern, flags) : ::mkostemp(pattern, flags);
}

// All of `bytes` at the descriptor's position, or the errno that stopped it. A write that
// reports no progress is a full disk: the system would say so at the next call.
int writeAll(int fd, const QByteArray& bytes)
{
    const char* data = bytes.constData();
    size_t left = static_cast<size_t>(bytes.size());
    while (left > 0) {
        const ssize_t written = callWrite(fd, data, left);
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        if (written == 0)
            return ENOSPC;
        data += written;
        left -= static_cast<size_t>(written);
    }
    return 0;
}

int closeChecked(int fd)
{
    // After close() fails the descriptor is gone either way; the error is what matters.
    return ::close(fd) == 0 || errno == EINTR ? 0 : errno;
}

mode_t newFileMode()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

void syncFolder(const QByteArray& folder)
{
    const int fd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

// Writes a temporary file beside `target` and renames it over; `*madeNoFile` tells that the
// folder refused the temporary file itself.
int replaceByRename(const QByteArray& target, const QByteArray& bytes, mode_t mode, bool* madeNoFile)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(QFile::decodeName(target)).absolutePath());
    QByteArray temporary =
        folder + "/." + QFile::encodeName(QFileInfo(QFile::decodeName(target)).fileName()) + ".XXXXXX";
    const int fd = makeTemporary(temporary.data(), O_CLOEXEC);
    if (fd < 0) {
        *madeNoFile = true;
        return errno;
    }
    int error = ::fchmod(fd, mode) == 0 ? 0 : errno;
    if (!error)
        error = writeAll(fd, bytes);
    if (!error && ::fsync(fd) != 0)
        error = errno;
    const int closeError = closeChecked(fd);
    if (!error)
        error = closeError;
    if (!error && ::rename(temporary.constData(), target.constData()) != 0)
        error = errno;
    if (error) {
        ::unlink(temporary.constData());
        return error;
    }
    syncFolder(folder);
    return 0;
}

// Reads what the descriptor holds, from the start.
bool readAllFrom(int fd, QByteArray* out)
{
    out->clear();
    char buffer[65536];
    off_t offset = 0;
    for (;;) {
        const ssize_t got = ::pread(fd, buffer, sizeof buffer, offset);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)
            return true;
        out->append(buffer, got);
        offset += got;
    }
}

int rewriteAt(int fd, const QByteArray& bytes)
{
    if (::lseek(fd, 0, SEEK_SET) != 0)
        return errno;
    if (const int error = writeAll(fd, bytes))
        return error;
    if (::ftruncate(fd, bytes.size()) != 0)
        return errno;
    return ::fsync(fd) == 0 ? 0 : errno;
}

// For a file whose folder allows no new file: writes over it, checks what it then holds, and
// puts the old bytes back on any failure.
int replaceInPlace(const QByteArray& target, const QByteArray& bytes)
{
    const int fd = ::open(target.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0)
        return errno;
    QByteArray old;
    if (!readAllFrom(fd, &old)) {
        const int error = errno;
        ::close(fd);
        return error;
    }
    int error = rewriteAt(fd, bytes);
    QByteArray check;
    if (!error && (!readAllFrom(fd, &check) || check != bytes))
        error = EIO;
    if (error)
        rewriteAt(fd, old);
    const int closeError = closeChecked(fd);
    return error ? error : closeError;
}

} // namespace

void setCalls(const Calls& replacement)
{
    calls = replacement;
}

bool isWritable(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat info {};
    if (::stat(name.constData(), &info) != 0)
        return false;
    if (::geteuid() == 0)
        return (info.st_mode & 0222) != 0;
    return ::access(name.constData(), W_OK) == 0;
}

QString describe(int error)
{
    switch (error) {
    case ENOSPC:
        return QStringLiteral("The disk is full.");
    case EDQUOT:
        return QStringLiteral("Your disk quota is used up.");
    case EACCES:
    case EPERM:
        return QStringLiteral("Permission denied.");
    case EROFS:
        return QStringLiteral("The disk is read-only.");
    case ENOENT:
    case ENOTDIR:
        return QStringLiteral("The folder doesn\u2019t exist.");
    case ENAMETOOLONG:
        return QStringLiteral("The file name is too long.");
    case EISDIR:
        return QStringLiteral("It is a folder, not a file.");
    case ELOOP:
        return QStringLiteral("It is a link that leads back to itself.");
    case EIO:
        return QStringLiteral("The disk reported an error while writing.");
    default:
        return QString::fromLocal8Bit(std::strerror(error)) + QLatin1Char('.');
    }
}

void removeLeftoverTemporaries(const QString& path, qint64 olderThanSeconds)
{
    const QFileInfo target(path);
    const QString prefix = QLatin1Char('.') + target.fileName() + QLatin1Char('.');
    const QDir folder = target.absoluteDir();
    const time_t now = ::time(nullptr);
    for (const QString& name : folder.entryList(QDir::Files | QDir::Hidden | QDir::System)) {
        // Exactly the names replaceByRename makes: the prefix and six letters or digits.
        if (name.size() != prefix.size() + 6 || !name.startsWith(prefix))
            continue;
        const QStringView suffix = QStringView(name).right(6);
        if (!std::all_of(suffix.begin(), suffix.end(),
                         [](QChar c) { return c.isLetterOrNumber() && c.unicode() < 128; }))
            continue;
        const QByteArray leftover = QFile::encodeName(folder.absoluteFilePath(name));
        struct stat info {};
        // Only our own plain files, and only ones no save in progress could still be writing.
        if (::lstat(leftover.constData(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_uid != ::geteuid()
            || now - info.st_mtime < olderThanSeconds)
            continue;
        ::unlink(leftover.constData());
    }
}

bool replaceFile(const QString& path, const QByteArray& bytes, QString* why)
{
    // A link stays a link: the file it leads to gets the new bytes.
    const QFileInfo info(path);
    QString targetPath = info.absoluteFilePath();
    if (info.isSymLink()) {
        targetPath = info.canonicalFilePath();
        if (targetPath.isEmpty())
            targetPath = QDir(info.absolutePath()).absoluteFilePath(info.symLinkTarget());
    }
    const QByteArray target = QFile::encodeName(targetPath);

    struct stat existing {};
    const bool exists = ::stat(target.constData(), &existing) == 0;
    int error = 0;
    if (exists && S_ISREG(existing.st_mode) && !isWritable(targetPath)) {
        if (why)
            *why = describe(EACCES);
        return false;
    }
    if (exists && !S_ISREG(existing.st_mode)) {
        error = S_ISDIR(existing.st_mode) ? EISDIR : EINVAL;
        if (why)
            *why = error == EISDIR ? describe(error) : QStringLiteral("It is not a regular file.");
        return false;
    }
    // The new file keeps the old one's permissions.
    const mode_t mode = exists ? (existing.st_mode & 07777) : newFileMode();
    bool madeNoFile = false;
    error = replaceByRename(target, bytes, mode, &madeNoFile);
    if (error && madeNoFile && exists && (error == EACCES || error == EPERM || error == EROFS))
        error = replaceInPlace(target, bytes);
    if (error && why)
        *why = describe(error);
    if (!error) {
        // A save killed halfway leaves its temporary file; the first save after it tidies up.
        static QSet<QString> tidied;
        if (!tidied.contains(targetPath)) {
            tidied.insert(targetPath);
            removeLeftoverTemporaries(targetPath, leftoverAgeSeconds);
        }
    }
    return error == 0;
}

} // namespace DiskWrite
