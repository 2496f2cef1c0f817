#pragma once

#include <QObject>

#include <functional>

class QTimer;

// Shown on a poke and hidden once a hold of quiet has passed, fading either way over 0.3 s with
// ease-in-out. Runs on a monotonic clock that tests replace, so no test has to wait it out.
class IdleFade : public QObject {
    Q_OBJECT
public:
    static constexpr double fadeDuration = 0.3;

    IdleFade(double holdSeconds, bool initiallyVisible, QObject* parent = nullptr);

    void setClock(std::function<double()> clock);
    double now() const { return m_clock(); }

    // Visible now, and the hold starts again.
    void poke();
    // Hides once the hold has passed since the last poke; the timer calls it when it should.
    void check();
    // Hidden at once, with no timer left running.
    void stop();

    bool isVisible() const { return m_isVisible; }
    // From 0 to 1, following the fade at the clock's present time.
    double opacity() const;
    bool isFading() const;

signals:
    void visibleChanged(bool visible);
    // A step of the fade, or a change: whoever draws with the opacity repaints.
    void frame();

private:
    void setVisible(bool visible);

    double m_hold;
    bool m_isVisible;
    double m_lastPoke = 0;
    double m_fadeStart = -1e9;
    double m_fadeFrom = 0;
    std::function<double()> m_clock;
    QTimer* m_hideTimer;
    QTimer* m_frameTimer;
};
