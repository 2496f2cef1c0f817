#include "DeliveryCounterBlock.h"

#include "DeliveryAppearance.h"
#include "DeliveryLegibility.h"
#include "DeliveryText.h"

#include <QAbstractButton>
#include <QFocusEvent>
#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QTime>
#include <QTimer>
#include <QVBoxLayout>
#include <QVariantAnimation>

#include <algorithm>
#include <cmath>

using namespace DeliveryAppearance;
using namespace Look;

namespace {

// Return commits and Escape cancels here; neither may reach the view, where they would toggle
// following or stop the timer.
class DurationField : public QLineEdit {
public:
    std::function<void()> onCommit;
    std::function<void()> onCancel;
    using QLineEdit::QLineEdit;

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
            if (onCommit)
                onCommit();
            event->accept();
            return;
        }
        if (event->key() == Qt::Key_Escape) {
            if (onCancel)
                onCancel();
            event->accept();
            return;
        }
        QLineEdit::keyPressEvent(event);
    }
};

// "+5" on a capsule.
class PillButton : public QAbstractButton {
public:
    PillButton(int minutes, QWidget* parent)
        : QAbstractButton(parent)
    {
        setText(QStringLiteral("+%1").arg(minutes));
        setFont(DeliveryText::makeFont(11, QFont::Medium, false));
        setCursor(Qt::PointingHandCursor);
        setFocusPolicy(Qt::NoFocus);
        setToolTip(QStringLiteral("Add %1 minutes to target").arg(minutes));
        setAccessibleName(QStringLiteral("Add %1 minutes").arg(minutes));
    }

    QSize sizeHint() const override
    {
        const QFontMetrics metrics(font());
        return {metrics.horizontalAdvance(text()) + 16, metrics.height() + 6};
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing, true);
        const QRectF r = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        QPainterPath capsule;
        capsule.addRoundedRect(r, r.height() / 2, r.height() / 2);
        painter.fillPath(capsule, withAlpha(secondary(), isDown() ? 0.3 : 0.15));
        painter.setFont(font());
        painter.setPen(secondary());
        painter.drawText(rect(), Qt::AlignCenter, text());
    }
};

// Sizes of the figures, normal and large: the large clock is about two and a half times the size.
constexpr double remainingSize = 24, largeRemainingSize = 64;
constexpr double rowSize = 12, largeRowSize = 24;
constexpr double captionSize = 10, largeCaptionSize = 16;
constexpr int largePadding = 14;

QLabel* makeLabel(QWidget* parent, double size, QFont::Weight weight)
{
    auto* label = new QLabel(parent);
    label->setFont(DeliveryText::makeFont(size, weight, false));
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    return label;
}

void setTextColor(QWidget* widget, const QColor& color)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    palette.setColor(QPalette::Text, color);
    widget->setPalette(palette);
}

QWidget* makeRow(QWidget* parent, std::initializer_list<QWidget*> parts, int spacing = 4)
{
    auto* row = new QWidget(parent);
    auto* box = new QHBoxLayout(row);
    box->setContentsMargins(0, 0, 0, 0);
    box->setSpacing(spacing);
    for (QWidget* part : parts) {
        part->setParent(row);
        box->addWidget(part, 0, Qt::AlignBaseline);
    }
    box->addStretch(1);
    return row;
}

} // namespace

DeliveryCounterBlock::DeliveryCounterBlock(DeliveryTimer* timer, QWidget* parent)
    : QWidget(parent)
    , m_timer(timer)
{
    setFixedWidth(blockWidth);

    m_remaining = makeLabel(this, 24, QFont::DemiBold);
    m_remaining->setAttribute(Qt::WA_TransparentForMouseEvents, false);
    m_remaining->setCursor(Qt::PointingHandCursor);
    m_remaining->installEventFilter(this);
    m_remaining->setAccessibleName(QStringLiteral("Time remaining"));

    auto* field = new DurationField(this);
    field->onCommit = [this] { commitEditing(); };
    field->onCancel = [this] { cancelEditing(); };
    m_field = field;
    m_field->setFont(DeliveryText::makeFont(24, QFont::DemiBold, false));
    m_field->setFixedWidth(70);
    m_field->setPlaceholderText(QStringLiteral("mm"));
    m_field->setFrame(false);
    m_field->hide();
    m_field->installEventFilter(this);

    m_extra = makeLabel(this, 10, QFont::Normal);
    QWidget* remainingRow = makeRow(this, {m_remaining, m_field, m_extra});
    m_finish = makeLabel(this, captionSize, QFont::Normal);
    m_finishRow = makeRow(this, {m_finish});
    m_finishRow->hide();

    m_pillsRow = new QWidget(this);
    auto* pills = new QHBoxLayout(m_pillsRow);
    pills->setContentsMargins(0, 0, 0, 0);
    pills->setSpacing(6);
    pills->addStretch(1);
    for (int minutes : {5, 10}) {
        auto* pill = new PillButton(minutes, m_pillsRow);
        connect(pill, &QAbstractButton::clicked, this, [this, minutes] { addMinutes(minutes); });
        pills->addWidget(pill);
        m_pills.push_back(pill);
    }
    pills->addStretch(1);
    auto* fade = new QGraphicsOpacityEffect(m_pillsRow);
    m_pillsRow->setGraphicsEffect(fade);
    m_pillsRow->hide();
    m_pillsFade = new QVariantAnimation(this);
    m_pillsFade->setDuration(150);
    m_pillsFade->setEasingCurve(QEasingCurve::InOutQuad);
    connect(m_pillsFade, &QVariantAnimation::valueChanged, this,
            [fade](const QVariant& value) { fade->setOpacity(value.toDouble()); });
    connect(m_pillsFade, &QVariantAnimation::finished, this, [this, fade] {
        if (fade->opacity() <= 0.01)
            updateRows();
    });

    m_total = makeLabel(this, 12, QFont::Normal);
    m_totalCaption = makeLabel(this, 10, QFont::Normal);
    m_totalCaption->setText(QStringLiteral("total"));
    m_totalRow = makeRow(this, {m_total, m_totalCaption});
    m_totalRow->setAccessibleName(QStringLiteral("Total elapsed"));

    m_clock = makeLabel(this, 12, QFont::Normal);
    m_clockCaption = makeLabel(this, 10, QFont::Normal);
    m_clockCaption->setText(QStringLiteral("now"));
    m_clockRow = makeRow(this, {m_clock, m_clockCaption});
    m_clockRow->setAccessibleName(QStringLiteral("Wall clock"));

    m_rule = new QWidget(this);
    m_rule->setFixedHeight(1);
    m_rule->setAutoFillBackground(true);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(6);
    column->addWidget(remainingRow);
    column->addWidget(m_finishRow);
    column->addWidget(m_pillsRow);
    column->addWidget(m_totalRow);
    column->addWidget(m_clockRow);
    column->addSpacing(2 - 6);
    column->addWidget(m_rule);

    // The wall clock and total run during pauses too, so this refreshes whatever the timer does.
    m_refreshTimer = new QTimer(this);
    m_refreshTimer->setInterval(1000);
    connect(m_refreshTimer, &QTimer::timeout, this, &DeliveryCounterBlock::refresh);
    m_refreshTimer->start();

    connect(m_timer, &DeliveryTimer::changed, this, &DeliveryCounterBlock::refresh);
    connect(m_timer, &DeliveryTimer::stateChanged, this,
            [this](TimerState state, TimerState) { onTimerStateChanged(state); });
    refresh();
    updateRows();
}

std::optional<int> DeliveryCounterBlock::parseDuration(const QString& text)
{
    const QStringList pieces = text.split(QLatin1Char(':'), Qt::SkipEmptyParts);
    bool ok = false;
    int minutes = 0;
    if (pieces.size() == 2) {
        bool secondsOk = false;
        minutes = pieces[0].toInt(&ok);
        const int seconds = pieces[1].toInt(&secondsOk);
        if (!ok || !secondsOk)
            return std::nullopt;
        if (seconds > 29)
            minutes += 1;
    } else if (pieces.size() == 1) {
        minutes = pieces[0].toInt(&ok);
        if (!ok)
            return std::nullopt;
    } else {
        return std::nullopt;
    }
    if (minutes < 1)
        return std::nullopt;
    return minutes;
}

QColor DeliveryCounterBlock::remainingColor(double remainingSeconds, TimerState state)
{
    QColor color = remainingSeconds <= 0 ? red() : remainingSeconds <= 300 ? orange() : primary();
    if (state == TimerState::paused)
        color = withAlpha(color, 0.45);
    return color;
}

int DeliveryCounterBlock::extraMinutes(const DeliveryTimer& timer)
{
    return (int(timer.targetSeconds()) - int(timer.plannedTargetSeconds())) / 60;
}

bool DeliveryCounterBlock::setShowPills(bool show)
{
    if (m_showPills == show)
        return false;
    m_showPills = show;
    updateRows();
    return true;
}

QString DeliveryCounterBlock::editText() const
{
    return m_field->text();
}

bool DeliveryCounterBlock::isTotalRowVisible() const
{
    return !m_totalRow->isHidden();
}

bool DeliveryCounterBlock::isClockRowVisible() const
{
    return !m_clockRow->isHidden();
}

bool DeliveryCounterBlock::setLarge(bool large)
{
    if (m_large == large)
        return false;
    m_large = large;
    applySizes();
    refresh();
    adjustSize();
    emit sizeChanged();
    return true;
}

void DeliveryCounterBlock::applySizes()
{
    const double time = m_large ? largeRemainingSize : remainingSize;
    m_remaining->setFont(DeliveryText::makeFont(time, QFont::DemiBold, false));
    m_field->setFont(DeliveryText::makeFont(time, QFont::DemiBold, false));
    const QFontMetricsF big(m_remaining->font());
    m_field->setFixedWidth(m_large ? int(std::ceil(big.horizontalAdvance(QStringLiteral("888")))) : 70);
    for (QLabel* label : {m_total, m_clock})
        label->setFont(DeliveryText::makeFont(m_large ? largeRowSize : rowSize, QFont::Normal, false));
    for (QLabel* label : {m_totalCaption, m_clockCaption, m_extra, m_finish})
        label->setFont(DeliveryText::makeFont(m_large ? largeCaptionSize : captionSize, QFont::Normal, false));
    if (m_large) {
        // Room for the longest time an evening allows, "−188:88", and the panel's padding.
        const int inner = int(std::ceil(big.horizontalAdvance(QStringLiteral("−188:88"))));
        setFixedWidth(inner + 2 * largePadding);
        layout()->setContentsMargins(largePadding, largePadding - 4, largePadding, largePadding);
    } else {
        setFixedWidth(blockWidth);
        layout()->setContentsMargins(0, 0, 0, 0);
    }
}

void DeliveryCounterBlock::setFinishText(const QString& text)
{
    if (m_finish->text() == text && m_finishRow->isHidden() == text.isEmpty())
        return;
    m_finish->setText(text);
    m_finishRow->setVisible(!text.isEmpty());
    adjustSize();
    emit sizeChanged();
}

void DeliveryCounterBlock::setCueGlow(double strength)
{
    strength = std::clamp(strength, 0.0, 1.0);
    if (m_cueGlow == strength)
        return;
    m_cueGlow = strength;
    update();
}

QColor DeliveryCounterBlock::backgroundColor() const
{
    return palette().color(QPalette::Base);
}

QColor DeliveryCounterBlock::figureColor(const QColor& color) const
{
    return m_large ? DeliveryLegibility::legible(color, backgroundColor()) : color;
}

void DeliveryCounterBlock::paintEvent(QPaintEvent*)
{
    if (!m_large && m_cueGlow <= 0)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing, true);
    const QRectF r = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    if (m_large) {
        // Opaque, so the page scrolling beneath never lowers the contrast.
        QPainterPath panel;
        panel.addRoundedRect(r, 12, 12);
        painter.fillPath(panel, backgroundColor());
        painter.setPen(QPen(withAlpha(primary(), 0.15), 1));
        painter.drawPath(panel);
    }
    if (m_cueGlow > 0) {
        QPainterPath glow;
        glow.addRoundedRect(r, 8, 8);
        painter.fillPath(glow, withAlpha(accent(), 0.28 * m_cueGlow));
    }
}

bool DeliveryCounterBlock::isPillsRowVisible() const
{
    return m_showPills && m_timer->state() != TimerState::idle;
}

void DeliveryCounterBlock::beginEditing()
{
    m_field->setText(QString::number(int(m_timer->remainingSeconds()) / 60));
    m_isEditingDuration = true;
    refresh();
    QPointer<QLineEdit> field(m_field);
    QTimer::singleShot(0, this, [field] {
        if (field && field->isVisible()) {
            field->setFocus(Qt::OtherFocusReason);
            field->selectAll();
        }
    });
}

void DeliveryCounterBlock::commitEditing()
{
    if (!m_isEditingDuration)
        return;
    m_isEditingDuration = false;
    m_field->clearFocus();
    refresh();
    if (const std::optional<int> minutes = parseDuration(m_field->text())) {
        m_timer->setTargetMinutes(*minutes);
        emit durationChanged(*minutes);
    }
    emit editingEnded();
}

void DeliveryCounterBlock::cancelEditing()
{
    if (!m_isEditingDuration)
        return;
    m_isEditingDuration = false;
    m_field->clearFocus();
    refresh();
    emit editingEnded();
}

void DeliveryCounterBlock::tapRemaining()
{
    if (m_timer->state() == TimerState::idle)
        beginEditing();
    else
        setShowPills(!m_showPills);
}

void DeliveryCounterBlock::addMinutes(int minutes)
{
    m_timer->addMinutes(minutes);
    setShowPills(false);
}

void DeliveryCounterBlock::onTimerStateChanged(TimerState state)
{
    if (state == TimerState::idle)
        setShowPills(false);
    else if (m_isEditingDuration)
        cancelEditing();
    updateRows();
}

void DeliveryCounterBlock::refresh()
{
    const QColor timeColor = figureColor(remainingColor(m_timer->remainingSeconds(), m_timer->state()));
    m_remaining->setText(m_timer->remainingText());
    setTextColor(m_remaining, timeColor);
    setTextColor(m_field, timeColor);
    m_remaining->setAccessibleDescription(m_timer->remainingText());
    m_remaining->setVisible(!m_isEditingDuration);
    m_field->setVisible(m_isEditingDuration);

    const int extra = extraMinutes(*m_timer);
    m_extra->setText(QStringLiteral("(+%1)").arg(extra));
    m_extra->setVisible(extra >= 1);
    setTextColor(m_extra, figureColor(tertiary()));
    setTextColor(m_finish, figureColor(secondary()));

    m_total->setText(m_timer->totalElapsedText());
    m_totalRow->setAccessibleDescription(m_timer->totalElapsedText());
    m_clock->setText(QTime::currentTime().toString(QStringLiteral("HH:mm:ss")));
    setTextColor(m_total, figureColor(secondary()));
    setTextColor(m_totalCaption, figureColor(tertiary()));
    setTextColor(m_clock, figureColor(tertiary()));
    setTextColor(m_clockCaption, figureColor(tertiary()));
    QPalette rulePalette = m_rule->palette();
    rulePalette.setColor(QPalette::Window, withAlpha(primary(), 0.15));
    m_rule->setPalette(rulePalette);

    const bool started = m_timer->firstStartedAt().has_value();
    // Large, the time of day shows before the start too: the preacher waits on the service.
    const bool clock = started || m_large;
    if (m_totalRow->isHidden() == started || m_clockRow->isHidden() == clock) {
        m_totalRow->setVisible(started);
        m_clockRow->setVisible(clock);
        adjustSize();
        emit sizeChanged();
    }
}

void DeliveryCounterBlock::updateRows()
{
    const bool show = isPillsRowVisible();
    auto* fade = static_cast<QGraphicsOpacityEffect*>(m_pillsRow->graphicsEffect());
    if (show && m_pillsRow->isHidden()) {
        m_pillsRow->show();
        m_pillsFade->stop();
        m_pillsFade->setStartValue(fade->opacity() > 0.99 ? 0.0 : fade->opacity());
        m_pillsFade->setEndValue(1.0);
        m_pillsFade->start();
    } else if (!show && !m_pillsRow->isHidden()) {
        if (m_pillsFade->state() == QAbstractAnimation::Running && m_pillsFade->endValue().toDouble() == 0.0)
            return;
        if (fade->opacity() <= 0.01 || !isVisible()) {
            m_pillsRow->hide();
        } else {
            m_pillsFade->stop();
            m_pillsFade->setStartValue(fade->opacity());
            m_pillsFade->setEndValue(0.0);
            m_pillsFade->start();
            return;
        }
    }
    adjustSize();
    emit sizeChanged();
}

bool DeliveryCounterBlock::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_remaining
        && (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease)) {
        // A tap is a left click let go over the time, as with a button.
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() != Qt::LeftButton)
            return false;
        if (event->type() == QEvent::MouseButtonRelease && m_remaining->rect().contains(mouse->position().toPoint()))
            tapRemaining();
        return true;
    }
    // Another window taking the keyboard is no end of the edit; a click elsewhere here is.
    if (watched == m_field && event->type() == QEvent::FocusOut && m_isEditingDuration) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            QTimer::singleShot(0, this, &DeliveryCounterBlock::commitEditing);
    }
    return QWidget::eventFilter(watched, event);
}

void DeliveryCounterBlock::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange)
        QTimer::singleShot(0, this, &DeliveryCounterBlock::refresh);
    QWidget::changeEvent(event);
}
