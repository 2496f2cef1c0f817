#pragma once

#include <QDate>
#include <QWidget>

#include <functional>
#include <vector>

class QGridLayout;
class QToolButton;

// A month of days to pick one from, with menus for the month and the year and arrows to step.
class CalendarGrid : public QWidget {
    Q_OBJECT
public:
    explicit CalendarGrid(QDate date, QWidget* parent = nullptr);

    QDate date() const { return m_date; }
    // Moves the month on show along when the date is in another month.
    void setDate(QDate date);
    QDate anchor() const { return m_anchor; }
    void setAnchor(QDate anchor);

    // The days the grid shows for the month of `anchor`: whole weeks from the week holding the
    // first of the month to the week holding its last day, weeks starting on `firstWeekday`.
    static std::vector<QDate> visibleDays(QDate anchor, Qt::DayOfWeek firstWeekday);

    // A day pressed (after `date` is set).
    std::function<void(QDate)> onSelect;

private:
    void rebuild();

    QDate m_date;
    QDate m_anchor;
    QToolButton* m_month;
    QToolButton* m_year;
    QGridLayout* m_grid;
};
