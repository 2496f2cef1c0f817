#pragma once

#include <QDateTime>
#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

// The welcome window's list of recent sermons: each file's title and latest occasion, read off
// the main thread. A file is read again only when its modification time has moved by a second or
// more; a file that is gone or unreadable drops out of the list.
class RecentSermonsStore : public QObject {
    Q_OBJECT
public:
    struct Entry {
        QString path;
        QString title;
        std::optional<QString> occasionLine;
        QDateTime mtime;

        bool operator==(const Entry&) const = default;
    };
    using Cache = QHash<QString, Entry>;

    // The longest list shown, whatever length the stored one has.
    static constexpr qsizetype maxEntries = 100;
    // `paths` with each repeat after its first dropped, cut at `limit`: in one pass, however
    // long the stored list is.
    static QStringList distinctPaths(const QStringList& paths, qsizetype limit = maxEntries);

    explicit RecentSermonsStore(QObject* parent = nullptr);
    ~RecentSermonsStore() override;

    const QList<Entry>& entries() const { return m_entries; }
    const Cache& cache() const { return m_cache; }

    // Reads the list in the background, in the order given, repeats dropped and cut at
    // `maxEntries`; `entriesChanged` follows.
    void refresh(const QStringList& paths);
    bool isRefreshing() const { return m_running > 0; }

    // The reading itself, for any thread: the entries for `paths` (as `refresh` takes them),
    // reusing `cache` where it holds.
    static QList<Entry> readEntries(const QStringList& paths, const Cache& cache);
    static std::optional<Entry> readEntry(const QString& path);

signals:
    void entriesChanged();

private:
    void apply(const QList<Entry>& entries);

    QList<Entry> m_entries;
    Cache m_cache;
    int m_running = 0;
    quint64 m_generation = 0;
    quint64 m_appliedGeneration = 0;
};
