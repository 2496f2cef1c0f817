#pragma once

#include "AppAppearance.h"

#include <QObject>
#include <QStringList>

#include <memory>

class QSettings;
class QTemporaryDir;

// The per-user settings, typed, each with its default. A stored value that doesn't read as its
// type (or lies outside its range) gives the default, silently. Passed to whoever needs it.
class DeliveryPreferences;

class Preferences : public QObject {
    Q_OBJECT
public:
    // Keys as they are stored.
    static constexpr const char* appearanceKey = "appearance";
    static constexpr const char* readingPaceKey = "readingPaceWPM";
    static constexpr const char* recentFilesKey = "recentFiles";
    static constexpr const char* columnWidthsKey = "columnWidths";
    static constexpr int maxRecentFiles = 10;

    // Uses the given store (tests pass one on a temporary file); takes ownership.
    explicit Preferences(std::unique_ptr<QSettings> settings, QObject* parent = nullptr);
    // The user's own store, at userStorePath() unless that is a link or not a plain file.
    explicit Preferences(QObject* parent = nullptr);
    static QString userStorePath();
    ~Preferences() override;

    AppAppearance appearance() const;
    bool setAppearance(AppAppearance appearance);

    int readingPaceWPM() const;
    bool setReadingPaceWPM(int wpm);

    // The columns' widths as stored (JSON text); the columns view reads it, and falls back itself.
    QString columnWidthsText() const;
    bool setColumnWidthsText(const QString& text);

    // Most recent first; absolute paths.
    QStringList recentFiles() const;
    bool setRecentFiles(const QStringList& paths);
    // Puts a file at the front, dropping any older mention and the overflow.
    void noteRecentFile(const QString& path);
    void forgetRecentFile(const QString& path);

    QSettings& settings() { return *m_settings; }
    // The delivery view's settings, on the same store and one for the whole application, so
    // that a slider moved in one window moves in every other.
    DeliveryPreferences* delivery();

signals:
    void changed(const QString& key);
    void appearanceChanged(AppAppearance appearance);
    void readingPaceChanged(int wpm);
    void recentFilesChanged();

private:
    // A positive integer, else the fallback.
    int intValue(const char* key, int fallback) const;
    bool store(const char* key, const QVariant& value);

    std::unique_ptr<QTemporaryDir> m_privateFolder;
    std::unique_ptr<QSettings> m_settings;
    DeliveryPreferences* m_delivery = nullptr;
};
