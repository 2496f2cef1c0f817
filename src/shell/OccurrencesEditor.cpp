#include "OccurrencesEditor.h"

#include "CalendarGrid.h"
#include "SectionBlock.h"
#include "SheetLayout.h"
#include "Symbols.h"
#include "documents/DateText.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimeZone>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdlib>

QDateTime comingSunday(const QDateTime& moment)
{
    const QDate day = moment.date();
    if (!day.isValid())
        return moment;
    const int ahead = (7 - day.dayOfWeek()) % 7; // Qt counts Monday 1 .. Sunday 7
    return QDateTime(day.addDays(ahead), QTime(0, 0), moment.timeZone());
}

namespace {

QColor secondary(const QWidget* widget, double alpha = 0.6)
{
    QColor color = widget->palette().color(QPalette::WindowText);
    color.setAlphaF(float(alpha));
    return color;
}

void tint(QWidget* widget, const QColor& color)
{
    QPalette p = widget->palette();
    p.setColor(QPalette::WindowText, color);
    widget->setPalette(p);
}

// A row at rest: pressing it anywhere but its delete button opens it for editing.
class ClickableRow : public QWidget {
public:
    std::function<void()> onClick;
    using QWidget::QWidget;

protected:
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()) && onClick)
            onClick();
    }
};

} // namespace

OccurrencesEditor::OccurrencesEditor(QWidget* parent)
    : QWidget(parent)
    , m_block(new SectionBlock({}, this))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(6);
    auto* header = new QHBoxLayout;
    auto* title = new QLabel(QStringLiteral("Occurrences"), this);
    QFont headline = title->font();
    headline.setBold(true);
    title->setFont(headline);
    auto* addButton = new QToolButton(this);
    addButton->setObjectName(QStringLiteral("addOccurrence"));
    addButton->setText(QStringLiteral("Add occurrence"));
    addButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    addButton->setAutoRaise(true);
    addButton->setIcon(Symbols::icon(QStringLiteral("plus"), palette().color(QPalette::Highlight), 12));
    connect(addButton, &QToolButton::clicked, this, [this] { add(); });
    header->addWidget(title);
    header->addStretch(1);
    header->addWidget(addButton);
    column->addLayout(header);
    column->addWidget(m_block);
    rebuild();
}

void OccurrencesEditor::setOccasions(const QList<SermonOccasion>& occasions)
{
    if (occasions == m_occasions)
        return;
    m_occasions = occasions;
    if (m_editingID && std::none_of(m_occasions.cbegin(), m_occasions.cend(), [this](const SermonOccasion& o) {
            return o.id == *m_editingID;
        }))
        m_editingID.reset();
    rebuild();
}

void OccurrencesEditor::setEditDate(QDate date)
{
    if (date == m_editDate)
        return;
    m_editDate = date;
    rebuild();
}

void OccurrencesEditor::setEditPlace(const QString& place)
{
    m_editPlace = place;
    if (m_placeField && m_placeField->text() != place)
        m_placeField->setText(place);
}

void OccurrencesEditor::changed()
{
    rebuild();
    if (onChanged)
        onChanged(m_occasions);
}

void OccurrencesEditor::add(const QDateTime& now)
{
    commit();
    SermonOccasion occasion;
    occasion.date = comingSunday(now).date();
    m_occasions.append(occasion);
    m_editingID = occasion.id;
    m_editDate = occasion.date;
    m_editPlace.clear();
    changed();
    QTimer::singleShot(0, this, [this] {
        if (m_placeField)
            m_placeField->setFocus();
    });
}

void OccurrencesEditor::beginEditing(const QUuid& id)
{
    commit();
    const auto it =
        std::find_if(m_occasions.cbegin(), m_occasions.cend(), [&](const SermonOccasion& o) { return o.id == id; });
    if (it == m_occasions.cend())
        return;
    m_editingID = id;
    m_editDate = it->date;
    m_editPlace = it->place;
    rebuild();
    QTimer::singleShot(0, this, [this] {
        if (m_placeField)
            m_placeField->setFocus();
    });
}

void OccurrencesEditor::commit()
{
    if (!m_editingID)
        return;
    const QUuid id = *m_editingID;
    m_editingID.reset();
    const auto it =
        std::find_if(m_occasions.begin(), m_occasions.end(), [&](const SermonOccasion& o) { return o.id == id; });
    if (it == m_occasions.end()) {
        rebuild();
        return;
    }
    if (it->date != m_editDate || it->place != m_editPlace) {
        it->date = m_editDate;
        it->place = m_editPlace;
        changed();
    } else {
        rebuild();
    }
}

void OccurrencesEditor::remove(const QUuid& id)
{
    if (m_editingID == id)
        m_editingID.reset();
    const auto removed = m_occasions.removeIf([&](const SermonOccasion& o) { return o.id == id; });
    if (removed > 0)
        changed();
    else
        rebuild();
}

void OccurrencesEditor::rebuild()
{
    // Deleted later: a row's own button may be what asked for the rebuild.
    QLayout* layout = m_block->contentLayout();
    while (QLayoutItem* item = layout->takeAt(0)) {
        if (QWidget* widget = item->widget()) {
            widget->hide();
            widget->deleteLater();
        }
        delete item;
    }
    m_placeField = nullptr;
    if (m_occasions.isEmpty()) {
        auto* none = new QLabel(QStringLiteral("No occurrences yet."), m_block->box());
        none->setContentsMargins(10, 10, 10, 10);
        tint(none, secondary(this));
        layout->addWidget(none);
        return;
    }
    QList<SermonOccasion> shown = m_occasions;
    std::stable_sort(shown.begin(), shown.end(),
                     [](const SermonOccasion& a, const SermonOccasion& b) { return a.date > b.date; });
    for (qsizetype i = 0; i < shown.size(); ++i) {
        if (i > 0)
            layout->addWidget(SectionBlock::divider(m_block->box()));
        layout->addWidget(m_editingID == shown[i].id ? editingRow() : restingRow(shown[i]));
    }
}

QWidget* OccurrencesEditor::restingRow(const SermonOccasion& occasion)
{
    auto* row = new ClickableRow(m_block->box());
    row->setCursor(Qt::PointingHandCursor);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(12, 8, 12, 8);
    layout->setSpacing(24);
    auto* dates = new QVBoxLayout;
    dates->setSpacing(0);
    auto* date = new QLabel(DateText::longDate(occasion.date), row);
    auto* distance =
        new QLabel(DateText::relative(QDateTime(occasion.date, QTime(0, 0)), QDateTime::currentDateTime()), row);
    QFont caption = distance->font();
    caption.setPointSizeF(caption.pointSizeF() * 0.85);
    distance->setFont(caption);
    tint(distance, secondary(this));
    dates->addWidget(date);
    dates->addWidget(distance);
    layout->addLayout(dates);
    auto* place = new QLabel(occasion.place.isEmpty() ? QStringLiteral("\u2014") : occasion.place, row);
    place->setTextFormat(Qt::PlainText);
    if (occasion.place.isEmpty())
        tint(place, secondary(this));
    layout->addWidget(place, 1);
    auto* remove = new QToolButton(row);
    remove->setAutoRaise(true);
    remove->setToolTip(QStringLiteral("Delete"));
    remove->setIcon(Symbols::icon(QStringLiteral("xmark.circle.fill"), secondary(this, 0.5), 16));
    const QUuid id = occasion.id;
    connect(remove, &QToolButton::clicked, this, [this, id] { this->remove(id); });
    layout->addWidget(remove);
    row->onClick = [this, id] { beginEditing(id); };
    return row;
}

QWidget* OccurrencesEditor::editingRow()
{
    auto* row = new QWidget(m_block->box());
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(12, 6, 12, 6);
    layout->setSpacing(12);
    auto* dateButton = new QToolButton(row);
    dateButton->setObjectName(QStringLiteral("occasionDate"));
    dateButton->setText(DateText::longDate(m_editDate));
    dateButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    dateButton->setLayoutDirection(Qt::RightToLeft);
    dateButton->setIcon(Symbols::icon(QStringLiteral("chevron.down"), palette().color(QPalette::WindowText), 10));
    connect(dateButton, &QToolButton::clicked, this, [this, dateButton] { openCalendar(dateButton); });
    layout->addWidget(dateButton);
    auto* place = new QLineEdit(m_editPlace, row);
    place->setObjectName(QStringLiteral("occasionPlace"));
    place->setPlaceholderText(QStringLiteral("Place"));
    connect(place, &QLineEdit::textEdited, this, [this](const QString& text) { m_editPlace = text; });
    SheetLayout::keepReturn(place);
    connect(place, &QLineEdit::returnPressed, this, [this] { commit(); });
    connect(place, &QLineEdit::editingFinished, this, [this, place] {
        // Losing the focus commits, unless it went to the calendar.
        if (!place->hasFocus() && !m_isCalendarOpen && m_placeField == place)
            QTimer::singleShot(0, this, [this] { commit(); });
    });
    layout->addWidget(place, 1);
    m_placeField = place;
    return row;
}

void OccurrencesEditor::openCalendar(QWidget* anchor)
{
    auto* popup = new QWidget(this, Qt::Popup);
    popup->setAttribute(Qt::WA_DeleteOnClose);
    auto* layout = new QVBoxLayout(popup);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* grid = new CalendarGrid(m_editDate, popup);
    layout->addWidget(grid);
    m_isCalendarOpen = true;
    grid->onSelect = [this, popup](QDate day) {
        m_editDate = day;
        popup->close();
    };
    connect(popup, &QObject::destroyed, this, [this] {
        m_isCalendarOpen = false;
        rebuild();
        QTimer::singleShot(0, this, [this] {
            if (m_placeField)
                m_placeField->setFocus();
        });
    });
    popup->move(anchor->mapToGlobal(QPoint(0, anchor->height() + 4)));
    popup->show();
}
