#include "Preferences.h"

#include "documents/RecentSermonsStore.h"

#include "delivery/DeliveryPreferences.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <limits>

Preferences::Preferences(std::unique_ptr<QSettings> settings, QObject* parent)
    : QObject(parent)
    , m_settings(std::move(settings))
{
}

namespace {

// The user's settings file, unless it is a link or not a plain file: saving through a link would
// write wherever it leads (another file, a device), and reading a device or a pipe may never end.
// Such a file is left alone; the settings then live in a private file for this run, starting
// from what a link to a plain file held.
std::unique_ptr<QSettings> userStore(std::unique_ptr<QTemporaryDir>* privateFolder)
{
    const QString path = Preferences::userStorePath();
    const QFileInfo info(path);
    if (!info.isSymLink() && (!info.exists() || info.isFile()))
        return std::make_unique<QSettings>(path, QSettings::IniFormat);
    qWarning("Settings are not saved this time: %s is a link or not a plain file", qPrintable(path));
    *privateFolder = std::make_unique<QTemporaryDir>();
    const QString copy = (*privateFolder)->filePath(QStringLiteral("settings.conf"));
    const QFileInfo target(info.canonicalFilePath());
    if (info.isSymLink() && target.isFile() && target.size() < (1 << 20))
        QFile::copy(target.filePath(), copy);
    return std::make_unique<QSettings>(copy, QSettings::IniFormat);
}

} // namespace

QString Preferences::userStorePath()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QDir(folder).filePath(QCoreApplication::organizationName() + QLatin1Char('/')
                                 + QCoreApplication::applicationName() + QStringLiteral(".conf"));
}

Preferences::Preferences(QObject* parent)
    : QObject(parent)
    , m_settings(userStore(&m_privateFolder))
{
}

Preferences::~Preferences() = default;

DeliveryPreferences* Preferences::delivery()
{
    if (!m_delivery)
        m_delivery =
            new DeliveryPreferences(std::make_unique<QSettings>(m_settings->fileName(), m_settings->format()), this);
    return m_delivery;
}

bool Preferences::store(const char* key, const QVariant& value)
{
    const QString name = QString::fromLatin1(key);
    if (m_settings->contains(name) && m_settings->value(name) == value)
        return false;
    m_settings->setValue(name, value);
    emit changed(name);
    return true;
}

AppAppearance Preferences::appearance() const
{
    return AppAppearances::fromText(m_settings->value(QString::fromLatin1(appearanceKey)).toString());
}

bool Preferences::setAppearance(AppAppearance appearance)
{
    const bool differs = appearance != this->appearance();
    if (!store(appearanceKey, AppAppearances::text(appearance)) || !differs)
        return false;
    emit appearanceChanged(appearance);
    return true;
}

int Preferences::readingPaceWPM() const
{
    return intValue(readingPaceKey, 120);
}

bool Preferences::setReadingPaceWPM(int wpm)
{
    if (wpm <= 0)
        return false;
    const bool differs = wpm != readingPaceWPM();
    if (!store(readingPaceKey, wpm) || !differs)
        return false;
    emit readingPaceChanged(wpm);
    return true;
}

QString Preferences::columnWidthsText() const
{
    return m_settings->value(QString::fromLatin1(columnWidthsKey)).toString();
}

bool Preferences::setColumnWidthsText(const QString& text)
{
    return store(columnWidthsKey, text);
}

QStringList Preferences::recentFiles() const
{
    const QVariant value = m_settings->value(QString::fromLatin1(recentFilesKey));
    if (!value.canConvert<QStringList>())
        return {};
    QStringList paths;
    for (const QString& path : value.toStringList())
        if (!path.isEmpty() && QDir::isAbsolutePath(path))
            paths.append(path);
    return RecentSermonsStore::distinctPaths(paths, maxRecentFiles);
}

bool Preferences::setRecentFiles(const QStringList& paths)
{
    if (paths == recentFiles() && m_settings->contains(QString::fromLatin1(recentFilesKey)))
        return false;
    store(recentFilesKey, paths.mid(0, maxRecentFiles));
    emit recentFilesChanged();
    return true;
}

void Preferences::noteRecentFile(const QString& path)
{
    const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    QStringList paths = recentFiles();
    paths.removeAll(absolute);
    paths.prepend(absolute);
    setRecentFiles(paths);
}

void Preferences::forgetRecentFile(const QString& path)
{
    QStringList paths = recentFiles();
    if (paths.removeAll(path) > 0)
        setRecentFiles(paths);
}

int Preferences::intValue(const char* key, int fallback) const
{
    // Read wide: a number too big for an int must not wrap round into a positive one.
    bool ok = false;
    const qlonglong value = m_settings->value(QString::fromLatin1(key)).toLongLong(&ok);
    return ok && value > 0 && value <= std::numeric_limits<int>::max() ? static_cast<int>(value) : fallback;
}
