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

    // Rows now shown, for the layout and for tests.
    bool isTotalRowVisible() const;
    bool isPillsRowVisible() const;

signals:
    void durationChanged(int minutes);
    void editingEnded();
    void sizeChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void refresh();
    void updateRows();
    void onTimerStateChanged(TimerState state);

    DeliveryTimer* m_timer;
    bool m_showPills = false;
    bool m_isEditingDuration = false;

    QLabel* m_remaining = nullptr;
    QLineEdit* m_field = nullptr;
    QLabel* m_extra = nullptr;
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
