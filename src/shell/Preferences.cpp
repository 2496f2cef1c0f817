#include "Preferences.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

#include <cmath>

Preferences::Preferences(std::unique_ptr<QSettings> settings, QObject* parent)
    : QObject(parent), m_settings(std::move(settings))
{
}

Preferences::Preferences(QObject* parent) : Preferences(std::make_unique<QSettings>(), parent) {}

Preferences::~Preferences() = default;

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
    if (!setIntValue(readingPaceKey, wpm) || !differs)
        return false;
    emit readingPaceChanged(wpm);
    return true;
}

QStringList Preferences::recentFiles() const
{
    const QVariant value = m_settings->value(QString::fromLatin1(recentFilesKey));
    if (!value.canConvert<QStringList>())
        return {};
    QStringList paths;
    for (const QString& path : value.toStringList())
        if (!path.isEmpty() && QFileInfo(path).isAbsolute() && !paths.contains(path))
            paths.append(path);
    return paths.mid(0, maxRecentFiles);
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

double Preferences::doubleValue(const char* key, double fallback) const
{
    bool ok = false;
    const double value = m_settings->value(QString::fromLatin1(key)).toDouble(&ok);
    return ok && std::isfinite(value) && value > 0 ? value : fallback;
}

bool Preferences::setDoubleValue(const char* key, double value)
{
    return std::isfinite(value) && store(key, value);
}

int Preferences::intValue(const char* key, int fallback) const
{
    bool ok = false;
    const int value = m_settings->value(QString::fromLatin1(key)).toInt(&ok);
    return ok && value > 0 ? value : fallback;
}

bool Preferences::setIntValue(const char* key, int value)
{
    return store(key, value);
}

bool Preferences::boolValue(const char* key, bool fallback) const
{
    const QVariant value = m_settings->value(QString::fromLatin1(key));
    const QString text = value.toString().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1"))
        return true;
    if (text == QLatin1String("false") || text == QLatin1String("0"))
        return false;
    return fallback;
}

bool Preferences::setBoolValue(const char* key, bool value)
{
    return store(key, value);
}
