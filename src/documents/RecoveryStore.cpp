#include "RecoveryStore.h"

#include "SermonFile.h"

#include "core/SermonNode.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QStandardPaths>
#include <QUuid>

#include <algorithm>

namespace {
const QString lockSuffix = QStringLiteral(".lock");
}

RecoveryStore::RecoveryStore(const QString& root)
    : m_root(root)
{
    const QString name = QString::number(QCoreApplication::applicationPid()) + QLatin1Char('-')
        + QUuid::createUuid().toString(QUuid::WithoutBraces).left(8);
    m_folder = QDir(root).filePath(name);
    QDir().mkpath(m_folder);
    m_lock = std::make_unique<QLockFile>(m_folder + lockSuffix);
    m_lock->setStaleLockTime(0);
    m_lock->tryLock(0);
}

RecoveryStore::~RecoveryStore()
{
    // Nothing left to keep: the run ended tidily.
    QDir folder(m_folder);
    if (folder.isEmpty()) {
        folder.removeRecursively();
        m_lock->unlock();
    }
}

QString RecoveryStore::defaultRoot()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)).filePath(QStringLiteral("recovery"));
}

QString RecoveryStore::newCopyPath()
{
    QDir().mkpath(m_folder);
    return QDir(m_folder).filePath(QStringLiteral("untitled-%1.md").arg(++m_next));
}

QList<RecoveryStore::Copy> RecoveryStore::leftBehind() const
{
    QList<Copy> copies;
    const QFileInfoList folders = QDir(m_root).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QFileInfo& folder : folders) {
        if (folder.absoluteFilePath() == QFileInfo(m_folder).absoluteFilePath())
            continue;
        // A run still going holds its lock; one that ended has left it stale or none.
        QLockFile lock(folder.absoluteFilePath() + lockSuffix);
        lock.setStaleLockTime(0);
        if (!lock.tryLock(0))
            continue;
        const QFileInfoList files =
            QDir(folder.absoluteFilePath()).entryInfoList({QStringLiteral("*.md")}, QDir::Files);
        if (files.isEmpty()) {
            QDir(folder.absoluteFilePath()).removeRecursively();
            lock.unlock();
            QFile::remove(folder.absoluteFilePath() + lockSuffix);
            continue;
        }
        for (const QFileInfo& file : files) {
            auto contents = SermonFile::read(file.absoluteFilePath(), nullptr);
            if (!contents)
                continue;
            copies.append({file.absoluteFilePath(), contents->root->text(), file.lastModified()});
        }
    }
    std::sort(copies.begin(), copies.end(), [](const Copy& a, const Copy& b) { return a.written > b.written; });
    return copies;
}

void RecoveryStore::discard(const QString& path, Disposal disposal)
{
    // A user who lets a sermon go may still want it back from the trash.
    if (disposal == Disposal::remove || !QFile::moveToTrash(path))
        QFile::remove(path);
    const QFileInfo folder(QFileInfo(path).absolutePath());
    if (QDir(folder.absoluteFilePath()).isEmpty()) {
        QDir(folder.absoluteFilePath()).removeRecursively();
        QFile::remove(folder.absoluteFilePath() + lockSuffix);
    }
}
