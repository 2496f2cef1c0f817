#pragma once

#include "DeliveryTimer.h"

#include <QWidget>

#include <optional>

class QLabel;
class QLineEdit;
class QTimer;
class QVariantAnimation;
class QAbstractButton;

// The counters at the page's top left: the time remaining (which, idle, can be edited as the
// sermon's duration), the +5 and +10 pills, the total time and the wall clock.
class DeliveryCounterBlock : public QWidget {
    Q_OBJECT
public:
    static constexpr int blockWidth = 100;

    explicit DeliveryCounterBlock(DeliveryTimer* timer, QWidget* parent = nullptr);

    // Whole minutes from the duration field: "45", "45:30" (46), ":30" (30). Nothing for text
    // that isn't minutes, and nothing below one minute.
    static std::optional<int> parseDuration(const QString& text);
    // Red at or below zero, orange up to five minutes, else the primary colour; dimmed in pause.
    static QColor remainingColor(double remainingSeconds, TimerState state);
    // What "+5" and "+10" have added to the planned target, in minutes.
    static int extraMinutes(const DeliveryTimer& timer);

    bool showPills() const { return m_showPills; }
    bool setShowPills(bool show);
    bool isEditingDuration() const { return m_isEditingDuration; }
    QString editText() const;

    void beginEditing();
    void commitEditing();
    void cancelEditing();
    // A tap on the time: idle, it edits the duration; otherwise it shows or hides the pills.
    void tapRemaining();
    void addMinutes(int minutes);

    // The pulpit clock: the figures at several times their size on a panel of the page's colour,
    // each in a colour that meets 4.5:1 against it, and the time of day shown before the start.
    bool isLarge() const { return m_large; }
    bool setLarge(bool large);
    // "ends 11:42" under the time; empty hides it.
    void setFinishText(const QString& text);
    // 0 to 1: how strongly a cue lights the block now.
    void setCueGlow(double strength);
    // The colour behind the figures, against which their contrast is measured.
    QColor backgroundColor() const;

    // Rows now shown, for the layout and for tests.
    bool isTotalRowVisible() const;
    bool isClockRowVisible() const;
    bool isPillsRowVisible() const;

signals:
    void durationChanged(int minutes);
    void editingEnded();
    void sizeChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void refresh();
    void updateRows();
    void onTimerStateChanged(TimerState state);
    void applySizes();
    QColor figureColor(const QColor& color) const;

    DeliveryTimer* m_timer;
    bool m_showPills = false;
    bool m_isEditingDuration = false;
    bool m_large = false;
    double m_cueGlow = 0;

    QLabel* m_remaining = nullptr;
    QLineEdit* m_field = nullptr;
    QLabel* m_extra = nullptr;
    QLabel* m_finish = nullptr;
    QWidget* m_finishRow = nullptr;
    QWidget* m_pillsRow = nullptr;
    QWidget* m_totalRow = nullptr;
    QLabel* m_total = nullptr;
    QLabel* m_totalCaption = nullptr;
    QWidget* m_clockRow = nullptr;
    QLabel* m_clock = nullptr;
    QLabel* m_clockCaption = nullptr;
    QWidget* m_rule = nullptr;
    QTimer* m_refreshTimer = nullptr;
    QVariantAnimation* m_pillsFade = nullptr;
    std::vector<QAbstractButton*> m_pills;
};
