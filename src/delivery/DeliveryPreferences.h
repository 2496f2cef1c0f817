#pragma once

#include <QObject>

#include <memory>
#include <vector>

class QSettings;

// The delivery view's per-user preferences. A stored value that can't be read, or lies outside
// its range, gives the default without a word.
class DeliveryPreferences : public QObject {
    Q_OBJECT
public:
    static constexpr double defaultFontSize = 15;
    static constexpr double defaultLineSpacing = 1.8;
    static constexpr double defaultTextWidth = 700;
    static constexpr int defaultWPM = 130;
    static constexpr bool defaultFullscreen = false;
    // At the pulpit; off where they would change what the view shows.
    static constexpr bool defaultLargeClock = false;
    static constexpr bool defaultEndCues = false;
    static constexpr bool defaultPresenterKeys = true;
    static std::vector<int> defaultCueMinutes() { return {5, 2, 1}; }

    // Reads and writes the application's QSettings, or `settings` when given (tests).
    explicit DeliveryPreferences(QObject* parent = nullptr);
    explicit DeliveryPreferences(std::unique_ptr<QSettings> settings, QObject* parent = nullptr);
    ~DeliveryPreferences() override;

    double fontSize() const { return m_fontSize; }
    double lineSpacing() const { return m_lineSpacing; }
    double textWidth() const { return m_textWidth; }
    int wpm() const { return m_wpm; }
    bool fullscreen() const { return m_fullscreen; }
    bool largeClock() const { return m_largeClock; }
    bool endCues() const { return m_endCues; }
    // Minutes left at which a cue is given, largest first.
    const std::vector<int>& cueMinutes() const { return m_cueMinutes; }
    bool presenterKeys() const { return m_presenterKeys; }

    bool setFontSize(double size);
    bool setLineSpacing(double spacing);
    bool setTextWidth(double width);
    bool setWPM(int wpm);
    bool setFullscreen(bool on);
    bool setLargeClock(bool on);
    bool setEndCues(bool on);
    bool setCueMinutes(std::vector<int> minutes);
    bool setPresenterKeys(bool on);

signals:
    void fontSizeChanged(double size);
    void lineSpacingChanged(double spacing);
    void textWidthChanged(double width);
    void wpmChanged(int wpm);
    void fullscreenChanged(bool on);
    void largeClockChanged(bool on);
    void endCuesChanged(bool on);
    void cueMinutesChanged();
    void presenterKeysChanged(bool on);

private:
    void load();
    bool setFlag(bool& field, bool on, const QString& key, void (DeliveryPreferences::*changed)(bool));

    std::unique_ptr<QSettings> m_settings;
    double m_fontSize = defaultFontSize;
    double m_lineSpacing = defaultLineSpacing;
    double m_textWidth = defaultTextWidth;
    int m_wpm = defaultWPM;
    bool m_fullscreen = defaultFullscreen;
    bool m_largeClock = defaultLargeClock;
    bool m_endCues = defaultEndCues;
    std::vector<int> m_cueMinutes = defaultCueMinutes();
    bool m_presenterKeys = defaultPresenterKeys;
};
