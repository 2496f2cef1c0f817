#include "SermonFile.h"

#include "DiskWrite.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SermonFile {

namespace {

// Why a path that can't be looked at can't be read, in plain words.
QString statFailure(const QByteArray& name, int error)
{
    switch (error) {
    case ELOOP:
        return QStringLiteral("It is a link that leads back to itself.");
    case ENOENT:
    case ENOTDIR: {
        struct stat link {};
        if (::lstat(name.constData(), &link) == 0 && S_ISLNK(link.st_mode))
            return QStringLiteral("It is a link to a file that doesn\u2019t exist.");
        return QStringLiteral("The file doesn\u2019t exist.");
    }
    case EACCES:
    case EPERM:
        return QStringLiteral("You don\u2019t have permission to view it.");
    default:
        return QString::fromLocal8Bit(std::strerror(error)) + QLatin1Char('.');
    }
}

// Only a regular file holds a sermon: a pipe or a device could block or never end.
QString notRegular(mode_t mode)
{
    if (S_ISDIR(mode))
        return QStringLiteral("It is a folder, not a file.");
    if (S_ISFIFO(mode))
        return QStringLiteral("It is a pipe, not a file.");
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return QStringLiteral("It is a device, not a file.");
    if (S_ISSOCK(mode))
        return QStringLiteral("It is a socket, not a file.");
    return S_ISREG(mode) ? QString() : QStringLiteral("It is not an ordinary file.");
}

QString tooLarge()
{
    return QStringLiteral("It is over %1 MB, too large to be a sermon.").arg(maxBytes / (1024 * 1024));
}

struct Descriptor {
    int fd = -1;
    ~Descriptor()
    {
        if (fd >= 0)
            ::close(fd);
    }
};

} // namespace

std::optional<QByteArray> readBytes(const QString& path, QString* why)
{
    auto fail = [why](const QString& reason) {
        if (why)
            *why = reason;
        return std::nullopt;
    };
    const QByteArray name = QFile::encodeName(path);
    struct stat info {};
    if (::stat(name.constData(), &info) != 0)
        return fail(statFailure(name, errno));
    if (QString reason = notRegular(info.st_mode); !reason.isEmpty())
        return fail(reason);
    if (info.st_size > maxBytes)
        return fail(tooLarge());

    // Non-blocking, so that a pipe put in the file's place since the look above can't hang us.
    Descriptor file;
    do
        file.fd = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    while (file.fd < 0 && errno == EINTR);
    if (file.fd < 0)
        return fail(statFailure(name, errno));
    if (::fstat(file.fd, &info) != 0)
        return fail(statFailure(name, errno));
    if (QString reason = notRegular(info.st_mode); !reason.isEmpty())
        return fail(reason);

    // A file that grows while it is read stops at the limit all the same.
    QByteArray bytes;
    bytes.resize(qsizetype(std::min<qint64>(info.st_size, maxBytes)) + 1);
    qsizetype filled = 0;
    while (true) {
        if (filled == bytes.size()) {
            if (filled > maxBytes)
                return fail(tooLarge());
            bytes.resize(std::min<qsizetype>(filled * 2 + 4096, maxBytes + 1));
        }
        const ssize_t got = ::read(file.fd, bytes.data() + filled, size_t(bytes.size() - filled));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return fail(QString::fromLocal8Bit(std::strerror(errno)) + QLatin1Char('.'));
        if (got == 0)
            break;
        filled += got;
    }
    bytes.truncate(filled);
    return bytes;
}

std::optional<SermonContents> read(const QString& path, QString* error)
{
    QString why;
    if (const std::optional<QByteArray> bytes = readBytes(path, &why)) {
        SermonReadError readError{};
        if (auto contents = readSermon(*bytes, &readError))
            return contents;
        why = describe(readError);
    }
    if (error)
        *error = openFailureMessage(path, why);
    return std::nullopt;
}

bool write(const QString& path, const QByteArray& bytes, QString* error)
{
    QString why;
    if (DiskWrite::replaceFile(path, bytes, &why))
        return true;
    if (error)
        *error = saveFailureMessage(path, why);
    return false;
}

QString canonicalPath(const QString& path)
{
    const QFileInfo info(path);
    const QString resolved = info.canonicalFilePath();
    return resolved.isEmpty() ? QDir::cleanPath(info.absoluteFilePath()) : resolved;
}

QString openFailureMessage(const QString& path, const QString& why)
{
    return QStringLiteral("The document \u201c%1\u201d could not be opened. %2").arg(QFileInfo(path).fileName(), why);
}

QString saveFailureMessage(const QString& path, const QString& why)
{
    return QStringLiteral("The document \u201c%1\u201d could not be saved. %2").arg(QFileInfo(path).fileName(), why);
}

} // namespace SermonFile
