#include "DurationChooser.h"

#include "SheetLayout.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

namespace DurationRules {

bool isPreset(int minutes)
{
    return std::find(presets.begin(), presets.end(), minutes) != presets.end();
}

int selected(std::optional<int> duration)
{
    return duration.value_or(shownWhenAbsent);
}

std::optional<int> parseCustom(const QString& draft)
{
    qsizetype start = 0;
    qsizetype end = draft.size();
    auto blank = [](QChar c) { return c == QLatin1Char(' ') || c == QLatin1Char('\t'); };
    while (start < end && blank(draft.at(start)))
        ++start;
    while (end > start && blank(draft.at(end - 1)))
        --end;
    const QString text = draft.mid(start, end - start);
    qsizetype digits = 0;
    if (!text.isEmpty() && (text.front() == QLatin1Char('+') || text.front() == QLatin1Char('-')))
        digits = 1;
    if (digits == text.size())
        return std::nullopt;
    for (qsizetype i = digits; i < text.size(); ++i)
        if (text.at(i) < QLatin1Char('0') || text.at(i) > QLatin1Char('9'))
            return std::nullopt;
    bool ok = false;
    const long long value = text.toLongLong(&ok);
    if (!ok || value < 1 || value > 180)
        return std::nullopt;
    return int(value);
}

QString draftReset(std::optional<int> duration)
{
    const int value = selected(duration);
    return isPreset(value) ? QString() : QString::number(value);
}

} // namespace DurationRules

DurationChooser::DurationChooser(QWidget* parent)
    : QWidget(parent)
    , m_custom(new QLineEdit(this))
    , m_unit(new QLabel(QStringLiteral("min"), this))
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    for (size_t i = 0; i < DurationRules::presets.size(); ++i) {
        const int minutes = DurationRules::presets[i];
        auto* button = new QPushButton(QString::number(minutes), this);
        button->setObjectName(QStringLiteral("preset%1").arg(minutes));
        button->setFocusPolicy(Qt::TabFocus);
        button->setCursor(Qt::PointingHandCursor);
        connect(button, &QPushButton::clicked, this, [this, minutes] {
            setCustomFocused(false);
            if (m_custom->hasFocus())
                m_custom->clearFocus();
            if (onChoosePreset)
                onChoosePreset(minutes);
        });
        m_presets[i] = button;
        row->addWidget(button);
    }
    m_custom->setObjectName(QStringLiteral("customDuration"));
    m_custom->setAlignment(Qt::AlignCenter);
    m_custom->setFixedWidth(36 + 12);
    m_custom->setFrame(false);
    m_custom->setPlaceholderText(QStringLiteral("\u2026"));
    m_custom->installEventFilter(this);
    SheetLayout::keepReturn(m_custom);
    connect(m_custom, &QLineEdit::returnPressed, this, [this] {
        if (onCommitCustom)
            onCommitCustom();
        setCustomFocused(false);
        m_custom->clearFocus();
    });
    row->addWidget(m_custom);
    row->addSpacing(2);
    row->addWidget(m_unit);
    row->addStretch(1);
    restyle();
}

QPushButton* DurationChooser::presetButton(int minutes) const
{
    for (size_t i = 0; i < DurationRules::presets.size(); ++i)
        if (DurationRules::presets[i] == minutes)
            return m_presets[i];
    return nullptr;
}

void DurationChooser::setDuration(std::optional<int> duration)
{
    if (duration == m_duration)
        return;
    m_duration = duration;
    restyle();
}

QString DurationChooser::customDraft() const
{
    return m_custom->text();
}

void DurationChooser::setCustomDraft(const QString& draft)
{
    if (draft != m_custom->text())
        m_custom->setText(draft);
}

bool DurationChooser::isCustom() const
{
    return !DurationRules::isPreset(DurationRules::selected(m_duration)) || m_customFocused;
}

void DurationChooser::setCustomFocused(bool focused)
{
    if (focused == m_customFocused)
        return;
    m_customFocused = focused;
    m_custom->setPlaceholderText(focused ? QString() : QStringLiteral("\u2026"));
    restyle();
}

bool DurationChooser::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_custom && event->type() == QEvent::FocusIn)
        setCustomFocused(true);
    return QWidget::eventFilter(watched, event);
}

void DurationChooser::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        restyle();
}

void DurationChooser::restyle()
{
    const QPalette p = palette();
    const QColor accent = p.color(QPalette::Highlight);
    QColor soft = p.color(QPalette::WindowText);
    soft.setAlphaF(0.08f);
    const QString label = p.color(QPalette::WindowText).name(QColor::HexArgb);
    const QString softFill =
        QStringLiteral("rgba(%1,%2,%3,%4)").arg(soft.red()).arg(soft.green()).arg(soft.blue()).arg(soft.alphaF());
    const int selected = DurationRules::selected(m_duration);
    const bool custom = isCustom();
    for (size_t i = 0; i < DurationRules::presets.size(); ++i) {
        const bool on = DurationRules::presets[i] == selected && !custom;
        m_presets[i]->setStyleSheet(QStringLiteral("QPushButton { border: none; border-radius: 10px; padding: 3px 9px;"
                                                   " background: %1; color: %2; }")
                                        .arg(on ? accent.name() : softFill, on ? QStringLiteral("white") : label));
    }
    const QString selection = custom
        ? QStringLiteral("rgba(0,0,0,0.35)")
        : QStringLiteral("rgba(%1,%2,%3,0.35)").arg(accent.red()).arg(accent.green()).arg(accent.blue());
    m_custom->setStyleSheet(
        QStringLiteral("QLineEdit { border: none; border-radius: 10px; padding: 3px 6px; background: %1;"
                       " color: %2; selection-background-color: %3; }")
            .arg(custom ? accent.name() : softFill, custom ? QStringLiteral("white") : label, selection));
    QPalette unit = m_unit->palette();
    QColor secondary = p.color(QPalette::WindowText);
    secondary.setAlphaF(0.6f);
    unit.setColor(QPalette::WindowText, secondary);
    m_unit->setPalette(unit);
}
