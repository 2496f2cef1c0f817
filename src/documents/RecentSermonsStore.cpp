#include "RecentSermonsStore.h"

#include "DateText.h"
#include "SermonFile.h"

#include "core/SermonDocument.h"

#include <QFile>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QLocale>
#include <QSet>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <cmath>

RecentSermonsStore::RecentSermonsStore(QObject* parent)
    : QObject(parent)
{
}

RecentSermonsStore::~RecentSermonsStore() = default;

std::optional<RecentSermonsStore::Entry> RecentSermonsStore::readEntry(const QString& path)
{
    const QFileInfo info(path);
    // The same guarded read as opening: no pipe, no device, nothing too large.
    const std::optional<QByteArray> read = SermonFile::readBytes(path, nullptr);
    if (!read)
        return std::nullopt;
    const QByteArray& bytes = *read;
    auto contents = readSermon(bytes);
    if (!contents)
        return std::nullopt;

    Entry entry;
    entry.path = path;
    entry.mtime = info.lastModified();
    // A file without a "# " line has no title of its own: its name stands in.
    const QString text = QString::fromUtf8(bytes);
    const QStringList lines = text.split(QLatin1Char('\n'));
    const bool hasTitleLine = std::any_of(lines.cbegin(), lines.cend(),
                                          [](const QString& line) { return line.startsWith(QLatin1String("# ")); });
    entry.title = hasTitleLine ? contents->root->text() : info.completeBaseName();

    QList<SermonOccasion> occasions = contents->metadata.occasions;
    std::stable_sort(occasions.begin(), occasions.end(),
                     [](const SermonOccasion& a, const SermonOccasion& b) { return a.date > b.date; });
    if (!occasions.isEmpty()) {
        const SermonOccasion& latest = occasions.first();
        const QString date = DateText::longDate(latest.date);
        entry.occasionLine = latest.place.isEmpty() ? date : latest.place + QStringLiteral(" \u00b7 ") + date;
    }
    return entry;
}

QStringList RecentSermonsStore::distinctPaths(const QStringList& paths, qsizetype limit)
{
    QStringList result;
    QSet<QString> seen;
    for (const QString& path : paths) {
        if (result.size() >= limit)
            break;
        if (!seen.contains(path)) {
            seen.insert(path);
            result.append(path);
        }
    }
    return result;
}

QList<RecentSermonsStore::Entry> RecentSermonsStore::readEntries(const QStringList& paths, const Cache& cache)
{
    QList<Entry> result;
    for (const QString& path : distinctPaths(paths)) {
        const QFileInfo info(path);
        if (!info.exists())
            continue;
        const QDateTime mtime = info.lastModified();
        if (!mtime.isValid())
            continue;
        const auto cached = cache.constFind(path);
        if (cached != cache.constEnd() && cached->mtime.isValid() && std::abs(cached->mtime.msecsTo(mtime)) < 1000) {
            result.append(*cached);
            continue;
        }
        if (auto entry = readEntry(path))
            result.append(*entry);
    }
    return result;
}

void RecentSermonsStore::refresh(const QStringList& paths)
{
    const Cache cache = m_cache;
    const QStringList wanted = distinctPaths(paths);
    ++m_running;
    const quint64 generation = ++m_generation;
    auto* watcher = new QFutureWatcher<QList<Entry>>(this);
    connect(watcher, &QFutureWatcher<QList<Entry>>::finished, this, [this, watcher, generation] {
        --m_running;
        // A refresh asked for later may have finished first: an older list never replaces it.
        if (generation > m_appliedGeneration) {
            m_appliedGeneration = generation;
            apply(watcher->result());
        }
        watcher->deleteLater();
    });
    watcher->setFuture(QtConcurrent::run([wanted, cache] { return readEntries(wanted, cache); }));
}

void RecentSermonsStore::apply(const QList<Entry>& entries)
{
    for (const Entry& entry : entries)
        m_cache.insert(entry.path, entry);
    m_entries = entries;
    emit entriesChanged();
}
