#include "CalendarGrid.h"

#include "Symbols.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// One day: a 34 point circle with its number.
class DayButton : public QAbstractButton {
public:
    DayButton(QDate day, bool inMonth, bool selected, QWidget* parent)
        : QAbstractButton(parent)
        , m_day(day)
        , m_inMonth(inMonth)
        , m_selected(selected)
    {
        setFixedSize(34, 34);
        setCursor(Qt::PointingHandCursor);
        setText(QString::number(day.day()));
        setAccessibleName(QLocale().toString(day, QLocale::LongFormat));
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF circle = QRectF(rect()).adjusted(1, 1, -1, -1);
        const QColor accent = palette().color(QPalette::Highlight);
        const bool sunday = m_day.dayOfWeek() == Qt::Sunday;
        QColor text;
        if (m_selected) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(accent);
            painter.drawEllipse(circle);
            text = Qt::white;
        } else {
            if (m_day == QDate::currentDate()) {
                painter.setPen(QPen(accent, 1));
                painter.setBrush(Qt::NoBrush);
                painter.drawEllipse(circle.adjusted(0.5, 0.5, -0.5, -0.5));
            }
            if (sunday) {
                text = QColor(Qt::red);
                text.setAlphaF(m_inMonth ? 0.85f : 0.3f);
            } else {
                text = palette().color(QPalette::WindowText);
                if (!m_inMonth)
                    text.setAlphaF(0.6f * 0.45f);
            }
        }
        painter.setPen(text);
        painter.drawText(rect(), Qt::AlignCenter, text_());
    }

private:
    QString text_() const { return QAbstractButton::text(); }

    QDate m_day;
    bool m_inMonth;
    bool m_selected;
};

QToolButton* menuButton(QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setLayoutDirection(Qt::RightToLeft); // the chevron after the text
    button->setAutoRaise(true);
    button->setStyleSheet(QStringLiteral("QToolButton::menu-indicator { image: none; width: 0; }"));
    button->setMenu(new QMenu(button));
    return button;
}

} // namespace

CalendarGrid::CalendarGrid(QDate date, QWidget* parent)
    : QWidget(parent)
    , m_date(date)
    , m_anchor(QDate(date.year(), date.month(), 1))
    , m_month(menuButton(this))
    , m_year(menuButton(this))
    , m_grid(new QGridLayout)
{
    setFixedWidth(320);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(14, 14, 14, 14);
    column->setSpacing(10);
    auto* top = new QHBoxLayout;
    top->addWidget(m_month);
    top->addWidget(m_year);
    top->addStretch(1);
    const QColor ink = palette().color(QPalette::WindowText);
    for (int step : {-1, 1}) {
        auto* arrow = new QToolButton(this);
        arrow->setAutoRaise(true);
        arrow->setFixedSize(24, 24);
        arrow->setIcon(
            Symbols::icon(step < 0 ? QStringLiteral("chevron.left") : QStringLiteral("chevron.right"), ink, 14));
        arrow->setToolTip(step < 0 ? QStringLiteral("Previous month") : QStringLiteral("Next month"));
        connect(arrow, &QToolButton::clicked, this, [this, step] { setAnchor(m_anchor.addMonths(step)); });
        top->addWidget(arrow);
    }
    column->addLayout(top);
    m_grid->setSpacing(2);
    column->addLayout(m_grid);

    const QLocale locale;
    for (int month = 1; month <= 12; ++month) {
        QAction* action = m_month->menu()->addAction(locale.standaloneMonthName(month));
        connect(action, &QAction::triggered, this, [this, month] { setAnchor(QDate(m_anchor.year(), month, 1)); });
    }
    const int thisYear = QDate::currentDate().year();
    for (int year = thisYear - 10; year <= thisYear + 20; ++year) {
        QAction* action = m_year->menu()->addAction(QString::number(year));
        connect(action, &QAction::triggered, this, [this, year] { setAnchor(QDate(year, m_anchor.month(), 1)); });
    }
    const QIcon chevron = Symbols::icon(QStringLiteral("chevron.down"), ink, 10);
    m_month->setIcon(chevron);
    m_year->setIcon(chevron);
    rebuild();
}

void CalendarGrid::setDate(QDate date)
{
    if (date == m_date)
        return;
    m_date = date;
    if (date.year() != m_anchor.year() || date.month() != m_anchor.month())
        m_anchor = QDate(date.year(), date.month(), 1);
    rebuild();
}

void CalendarGrid::setAnchor(QDate anchor)
{
    const QDate first(anchor.year(), anchor.month(), 1);
    if (first == m_anchor || !first.isValid())
        return;
    m_anchor = first;
    rebuild();
}

std::vector<QDate> CalendarGrid::visibleDays(QDate anchor, Qt::DayOfWeek firstWeekday)
{
    const QDate first(anchor.year(), anchor.month(), 1);
    const QDate last = first.addDays(first.daysInMonth() - 1);
    const int lead = (first.dayOfWeek() - int(firstWeekday) + 7) % 7;
    const int lastWeekday = (int(firstWeekday) + 5) % 7 + 1;
    const int trail = (lastWeekday - last.dayOfWeek() + 7) % 7;
    std::vector<QDate> days;
    for (QDate day = first.addDays(-lead); day <= last.addDays(trail); day = day.addDays(1))
        days.push_back(day);
    return days;
}

void CalendarGrid::rebuild()
{
    // Later, since a day's own click may be what rebuilds the grid.
    while (QLayoutItem* item = m_grid->takeAt(0)) {
        if (QWidget* widget = item->widget()) {
            widget->hide();
            widget->deleteLater();
        }
        delete item;
    }
    const QLocale locale;
    m_month->setText(locale.standaloneMonthName(m_anchor.month()));
    m_year->setText(QString::number(m_anchor.year()));
    const Qt::DayOfWeek firstWeekday = locale.firstDayOfWeek();
    for (int column = 0; column < 7; ++column) {
        const int weekday = (int(firstWeekday) - 1 + column) % 7 + 1;
        auto* letter = new QLabel(locale.standaloneDayName(weekday, QLocale::NarrowFormat), this);
        letter->setAlignment(Qt::AlignCenter);
        QFont caption = letter->font();
        caption.setPointSizeF(caption.pointSizeF() * 0.85);
        letter->setFont(caption);
        QPalette p = letter->palette();
        QColor color = weekday == Qt::Sunday ? QColor(Qt::red) : p.color(QPalette::WindowText);
        color.setAlphaF(weekday == Qt::Sunday ? 0.75f : 0.6f);
        p.setColor(QPalette::WindowText, color);
        letter->setPalette(p);
        m_grid->addWidget(letter, 0, column);
    }
    const std::vector<QDate> days = visibleDays(m_anchor, firstWeekday);
    for (size_t i = 0; i < days.size(); ++i) {
        const QDate day = days[i];
        auto* button = new DayButton(day, day.month() == m_anchor.month(), day == m_date, this);
        connect(button, &QAbstractButton::clicked, this, [this, day] {
            setDate(day);
            if (onSelect)
                onSelect(day);
        });
        m_grid->addWidget(button, int(i / 7) + 1, int(i % 7), Qt::AlignCenter);
    }
}
