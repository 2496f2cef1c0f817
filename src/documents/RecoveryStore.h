#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

#include <memory>

class QLockFile;

// Copies of untitled sermons with changes, kept in the user's data folder so that a crash, a
// power cut or a signal doesn't take them. Each run keeps its copies in a folder of its own,
// locked while it runs; the copies of runs that ended without letting them go are offered back.
class RecoveryStore {
public:
    // `root`: the folder that holds every run's folder.
    explicit RecoveryStore(const QString& root);
    ~RecoveryStore();

    static QString defaultRoot();

    // A new place for an untitled document's copy, in this run's folder.
    QString newCopyPath();

    struct Copy {
        QString path;
        QString title;
        QDateTime written;
    };
    // Copies that runs now over left behind, newest first.
    QList<Copy> leftBehind() const;
    // Lets a left-behind copy go: removed once restored elsewhere, to the trash when not wanted.
    enum class Disposal { remove, toTrash };
    static void discard(const QString& path, Disposal disposal = Disposal::remove);

private:
    QString m_root;
    QString m_folder;
    std::unique_ptr<QLockFile> m_lock;
    int m_next = 0;
};
