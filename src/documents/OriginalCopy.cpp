#include "OriginalCopy.h"

#include "DiskWrite.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace OriginalCopy {

namespace {

// Claims the name first, so that nothing already there is written over, then fills it with every
// write checked.
bool writeNewFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return false;
    file.close();
    if (DiskWrite::replaceFile(path, bytes, nullptr))
        return true;
    file.remove();
    return false;
}

} // namespace

std::optional<QString> keep(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.exists())
        return QString();
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return std::nullopt;
    }
    const QByteArray bytes = file.readAll();
    const QString name = QFileInfo(path).fileName() + QLatin1Char('~');
    auto keptIn = [&bytes](const QString& target) -> std::optional<QString> {
        QFile existing(target);
        if (existing.exists()) {
            if (existing.open(QIODevice::ReadOnly) && existing.readAll() == bytes)
                return target;
            return std::nullopt;
        }
        return writeNewFile(target, bytes) ? std::optional<QString>(target) : std::nullopt;
    };
    if (auto beside = keptIn(path + QLatin1Char('~')))
        return beside;
    // One folder per original folder, so that two READMEs don't share a copy.
    const QByteArray folderKey =
        QCryptographicHash::hash(QFileInfo(path).absolutePath().toUtf8(), QCryptographicHash::Sha1);
    const QString folder = QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation))
                               .filePath(QStringLiteral("backups/") + QString::fromLatin1(folderKey.toHex().left(12)));
    if (QDir().mkpath(folder))
        if (auto elsewhere = keptIn(QDir(folder).filePath(name)))
            return elsewhere;
    *error = QStringLiteral("A copy of the original could not be kept beside it or in %1.").arg(folder);
    return std::nullopt;
}

} // namespace OriginalCopy
