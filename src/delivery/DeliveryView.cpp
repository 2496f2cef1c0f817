#include "DeliveryView.h"

#include "DeliveryAppearance.h"
#include "DeliveryCanvas.h"
#include "DeliveryCounterBlock.h"
#include "DeliveryCues.h"
#include "DeliveryFinishBy.h"
#include "DeliveryKeys.h"
#include "DeliveryNavOverlay.h"
#include "DeliveryPreferences.h"
#include "DeliveryRehearsal.h"
#include "DeliveryRunnerPlayButton.h"
#include "DeliveryRunnerStopButton.h"
#include "DeliveryRunnerStrip.h"
#include "DeliverySections.h"
#include "DeliverySwitch.h"
#include "DeliveryText.h"
#include "DeliveryTimekeeperWindow.h"
#include "DeliveryTimelineRuler.h"
#include "DeliveryTopBar.h"
#include "FollowRunnerButton.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "core/WordCount.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QSlider>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>
#include <QVariantAnimation>

#include <algorithm>
#include <cmath>

using namespace DeliveryAppearance;
using namespace Look;

namespace {

int initialMinutes(const SermonDocument* document)
{
    if (document->metadata().duration)
        return *document->metadata().duration;
    // The default pace, not the stored one: the stored pace corrects it once the view is up.
    const int words = document->root() ? WordCount::wordCount(*document->root()) : 0;
    return WordCount::estimatedMinutes(words, DeliveryPreferences::defaultWPM);
}

// Coloured by applyColours, with the rest of the row.
QLabel* settingsLabel(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setFont(DeliveryText::makeFont(11, QFont::Medium, false));
    return label;
}

QLabel* settingsValue(int width, QWidget* parent)
{
    auto* label = settingsLabel(QString(), parent);
    label->setFont(DeliveryText::makeFont(11, QFont::Normal, false));
    label->setFixedWidth(width);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

QSlider* settingsSlider(int lo, int hi, QWidget* parent)
{
    auto* slider = new QSlider(Qt::Horizontal, parent);
    slider->setRange(lo, hi);
    slider->setFixedWidth(100);
    slider->setPageStep(1);
    // The page keeps the keyboard: Space must always reach the timer.
    slider->setFocusPolicy(Qt::NoFocus);
    return slider;
}

// A plain wash over part of the view that takes no clicks: the cue's light, or the dimmed page.
class WashOverlay : public QWidget {
public:
    WashOverlay(std::function<QColor()> colour, QWidget* parent)
        : QWidget(parent)
        , m_colour(std::move(colour))
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_NoSystemBackground);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), m_colour());
    }

private:
    std::function<QColor()> m_colour;
};

QString minutesText(double seconds)
{
    const int s = int(std::lround(std::max(seconds, 0.0)));
    return QString::asprintf("%d:%02d", s / 60, s % 60);
}

} // namespace

DeliveryView::DeliveryView(SermonDocument* document, UndoManager* undoManager, DeliveryPreferences* preferences,
                           QWidget* parent, std::shared_ptr<DeliveryClock> clock)
    : QWidget(parent)
    , m_document(document)
    , m_undoManager(undoManager)
    , m_preferences(preferences ? preferences : new DeliveryPreferences(this))
    , m_timer(new DeliveryTimer(initialMinutes(document), std::move(clock), this))
    , m_canvasState(new DeliveryCanvasState(this))
{
    setFocusPolicy(Qt::NoFocus);

    m_topBar = new DeliveryTopBar(m_timer, m_canvasState, this);
    m_canvas = new DeliveryCanvas(m_document, m_timer, m_canvasState, this);
    m_canvas->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);

    // Overlays over the page, back to front.
    m_followButton = new FollowRunnerButton(m_canvasState, m_canvas);
    m_navOverlay = new DeliveryNavOverlay(m_canvas);
    m_counterBlock = new DeliveryCounterBlock(m_timer, m_canvas);
    m_playButton = new DeliveryRunnerPlayButton(m_timer, m_canvas);
    m_stopButton = new DeliveryRunnerStopButton(m_timer, m_canvas);

    m_divider = new QWidget(this);
    m_divider->setFixedHeight(1);
    m_divider->setAutoFillBackground(true);
    m_settingsRow = buildSettingsRow();
    applyColours();

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_topBar);
    column->addWidget(m_canvas, 1);
    column->addWidget(m_divider);
    column->addWidget(m_settingsRow);

    connect(m_topBar, &DeliveryTopBar::seekRequested, m_canvas, &DeliveryCanvas::seek);
    // The wheel scrolls the page wherever the pointer is; the sliders must not take it.
    for (QWidget* part : {static_cast<QWidget*>(m_topBar), m_settingsRow}) {
        part->installEventFilter(this);
        for (QWidget* child : part->findChildren<QWidget*>())
            child->installEventFilter(this);
    }
    // Made last so that it lies over the page, where its dot overhangs.
    m_runnerStrip = new DeliveryRunnerStrip(m_timer, m_topBar->ruler(), this);
    connect(m_topBar->ruler(), &DeliveryTimelineRuler::frameTicked, m_runnerStrip, &DeliveryRunnerStrip::moveDot);
    connect(m_navOverlay, &DeliveryNavOverlay::navigateRequested, m_canvasState, &DeliveryCanvasState::navigate);
    connect(m_counterBlock, &DeliveryCounterBlock::durationChanged, this, &DeliveryView::onDurationChanged);
    connect(m_counterBlock, &DeliveryCounterBlock::editingEnded, m_canvasState,
            &DeliveryCanvasState::requestCanvasFocus);
    connect(m_counterBlock, &DeliveryCounterBlock::sizeChanged, this, &DeliveryView::placeOverlays);
    connect(m_navOverlay, &DeliveryNavOverlay::sizeChanged, this, &DeliveryView::placeOverlays);
    connect(m_canvas, &DeliveryCanvas::pageGeometryChanged, this, &DeliveryView::placeOverlays);
    connect(m_canvasState, &DeliveryCanvasState::scrollYChanged, this, &DeliveryView::updateNavTargets);
    connect(m_canvasState, &DeliveryCanvasState::viewportHeightChanged, this, &DeliveryView::updateNavTargets);
    connect(m_canvasState, &DeliveryCanvasState::layoutChanged, this, &DeliveryView::updateNavTargets);
    connect(m_timer, &DeliveryTimer::stateChanged, this, &DeliveryView::onTimerStateChanged);

    connect(m_preferences, &DeliveryPreferences::fontSizeChanged, this, &DeliveryView::applyPreferences);
    connect(m_preferences, &DeliveryPreferences::lineSpacingChanged, this, &DeliveryView::applyPreferences);
    connect(m_preferences, &DeliveryPreferences::textWidthChanged, this, &DeliveryView::applyPreferences);
    connect(m_preferences, &DeliveryPreferences::wpmChanged, this, [this] {
        if (!m_document->metadata().duration && !m_finishBy && m_timer->state() == TimerState::idle)
            m_timer->setTargetMinutes(effectiveMinutes());
        applyPreferences();
    });
    connect(m_preferences, &DeliveryPreferences::fullscreenChanged, this, &DeliveryView::onFullscreenPreferenceChanged);

    // The page follows the document: an undone or redone duration shows as the target at once.
    // Other metadata changes leave the target, and any minutes added to it, alone.
    connect(m_document, &SermonDocument::metadataChanged, this, [this] {
        if (m_finishBy)
            return; // the finish-by time sets the target until it is cleared
        const int minutes = effectiveMinutes();
        if (m_timer->plannedTargetSeconds() != minutes * 60.0)
            m_timer->setTargetMinutes(minutes);
    });

    // The estimate above used the default pace; the stored one decides.
    if (!m_document->metadata().duration)
        m_timer->setTargetMinutes(effectiveMinutes());
    applyPreferences();

    m_cues = new DeliveryCues(m_timer, this);
    connect(m_cues, &DeliveryCues::cue, this, &DeliveryView::showCue);
    m_rehearsal = new DeliveryRehearsal(m_timer, m_canvasState, this);
    connect(m_canvas->pulseClock(), &PulseClock::ticked, m_rehearsal, &DeliveryRehearsal::observe);
    connect(m_rehearsal, &DeliveryRehearsal::finished, this, &DeliveryView::showRehearsalSheet);
    m_finishTimer = new QTimer(this);
    m_finishTimer->setInterval(1000);
    connect(m_finishTimer, &QTimer::timeout, this, &DeliveryView::followFinishBy);
    connect(m_timer, &DeliveryTimer::stateChanged, this, &DeliveryView::followFinishBy);
    // A duration typed in the counters replaces the finish-by time.
    connect(m_counterBlock, &DeliveryCounterBlock::durationChanged, this, [this] { setFinishBy(std::nullopt); });
    buildPulpitActions();
    for (auto changed : {&DeliveryPreferences::largeClockChanged, &DeliveryPreferences::endCuesChanged})
        connect(m_preferences, changed, this, &DeliveryView::applyPulpitPreferences);
    connect(m_preferences, &DeliveryPreferences::cueMinutesChanged, this, &DeliveryView::applyPulpitPreferences);
    applyPulpitPreferences();
}

DeliveryView::~DeliveryView()
{
    if (m_window)
        m_window->removeEventFilter(this);
    // Leaving the view ends a running delivery, and with it the full screen it asked for.
    if (m_madeFullscreen)
        exitFullscreen();
}

int DeliveryView::effectiveMinutes() const
{
    if (m_document->metadata().duration)
        return *m_document->metadata().duration;
    const int words = m_document->root() ? WordCount::wordCount(*m_document->root()) : 0;
    return WordCount::estimatedMinutes(words, m_preferences->wpm());
}

double DeliveryView::maxTextWidth(double availableWidth)
{
    if (!(availableWidth > 0))
        return 1000;
    const double a = availableWidth - 150;
    if (a >= 1000)
        return 1000;
    return std::floor(std::max(a, 400.0) / 50) * 50;
}

void DeliveryView::onDurationChanged(int minutes)
{
    if (m_document->metadata().duration == minutes)
        return;
    m_document->captureUndo(m_document->currentSelectedNodeID(), m_undoManager.data());
    SermonMetadata metadata = m_document->metadata();
    metadata.duration = minutes;
    m_document->setMetadata(metadata);
    emit durationChanged(minutes);
}

QWidget* DeliveryView::buildSettingsRow()
{
    auto* row = new QWidget(this);
    auto* box = new QHBoxLayout(row);
    box->setContentsMargins(20, 8, 20, 8);
    box->setSpacing(0);
    auto group = [&](QLabel* label, QWidget* control, QLabel* value) {
        auto* g = new QHBoxLayout;
        g->setSpacing(6);
        g->addWidget(label);
        g->addWidget(control);
        if (value)
            g->addWidget(value);
        if (box->count() > 0)
            box->addSpacing(24);
        box->addLayout(g);
    };

    m_fontSlider = settingsSlider(12, 24, row);
    m_fontValue = settingsValue(24, row);
    group(settingsLabel(QStringLiteral("Aa"), row), m_fontSlider, m_fontValue);
    m_spacingSlider = settingsSlider(10, 30, row);
    m_spacingValue = settingsValue(24, row);
    group(settingsLabel(QStringLiteral("↕"), row), m_spacingSlider, m_spacingValue);
    m_widthSlider = settingsSlider(8, 20, row);
    m_widthValue = settingsValue(32, row);
    group(settingsLabel(QStringLiteral("↔"), row), m_widthSlider, m_widthValue);
    m_fullscreenSwitch = new DeliverySwitch(row);
    m_fullscreenSwitch->setToolTip(QStringLiteral("Enter fullscreen when timer is running"));
    m_fullscreenSwitch->setAccessibleName(QStringLiteral("Fullscreen"));
    group(settingsLabel(QStringLiteral("Fullscreen"), row), m_fullscreenSwitch, nullptr);
    box->addStretch(1);

    connect(m_fontSlider, &QSlider::valueChanged, this, [this](int v) { m_preferences->setFontSize(v); });
    connect(m_spacingSlider, &QSlider::valueChanged, this,
            [this](int v) { m_preferences->setLineSpacing(std::round(v) / 10.0); });
    connect(m_widthSlider, &QSlider::valueChanged, this, [this](int v) { m_preferences->setTextWidth(v * 50.0); });
    connect(m_fullscreenSwitch, &QAbstractButton::toggled, this, [this](bool on) { m_preferences->setFullscreen(on); });
    return row;
}

void DeliveryView::applyPreferences()
{
    const DeliveryPreferences& p = *m_preferences;
    m_canvas->setSettings({p.fontSize(), p.lineSpacing(), p.textWidth(), p.wpm()});

    const QSignalBlocker fontBlock(m_fontSlider);
    const QSignalBlocker spacingBlock(m_spacingSlider);
    const QSignalBlocker switchBlock(m_fullscreenSwitch);
    m_fontSlider->setValue(int(std::lround(p.fontSize())));
    m_fontValue->setText(QString::number(int(std::lround(p.fontSize()))));
    m_spacingSlider->setValue(int(std::lround(p.lineSpacing() * 10)));
    m_spacingValue->setText(QString::asprintf("%.1f", p.lineSpacing()));
    m_fullscreenSwitch->setChecked(p.fullscreen());
    updateTextWidthRange();
    updateMinimumWidth();
    placeOverlays();
    updateNavTargets();
}

void DeliveryView::updateTextWidthRange()
{
    // A stored width beyond what the window allows stays as it is; the slider just shows its end.
    const QSignalBlocker block(m_widthSlider);
    m_widthSlider->setRange(8, int(maxTextWidth() / 50));
    m_widthSlider->setValue(int(std::lround(m_preferences->textWidth() / 50)));
    m_widthValue->setText(QString::number(int(std::lround(m_preferences->textWidth()))));
}

void DeliveryView::updateMinimumWidth()
{
    // The window stays wide enough for the column and its margin; the shell's layout passes
    // this on to the window, and it goes when the view does.
    const int m = int(std::ceil(std::max(m_preferences->textWidth() + 150, 800.0)));
    if (minimumWidth() != m)
        setMinimumWidth(m);
}

void DeliveryView::placeOverlays()
{
    const double left = m_canvas->left();
    const int x = int(std::round(left));
    m_counterBlock->adjustSize();
    // The large clock stands at the page's top right, clear of the runner's head.
    if (m_counterBlock->isLarge())
        m_counterBlock->move(m_canvas->width() - 20 - m_counterBlock->width(), 12);
    else
        m_counterBlock->move(x + 8, 12);
    m_playButton->move(x + 129 - DeliveryRunnerPlayButton::symbolSize / 2,
                       26 - DeliveryRunnerPlayButton::symbolSize / 2);
    m_stopButton->move(x + 129 - DeliveryRunnerStopButton::symbolSize / 2,
                       26 + 38 - DeliveryRunnerStopButton::symbolSize / 2);
    m_followButton->move(x + 129 - FollowRunnerButton::diameter / 2,
                         m_canvas->height() - 32 - FollowRunnerButton::diameter / 2);
    const int margin = DeliveryNavOverlay::panelMargin;
    m_navOverlay->move(m_canvas->width() - 20 + margin - m_navOverlay->width(),
                       m_canvas->height() - 16 + margin - m_navOverlay->height());
}

void DeliveryView::updateNavTargets()
{
    const auto [nextL1, nextL2] = m_canvasState->nextHeadings();
    m_navOverlay->setTargets(nextL1, nextL2, m_preferences->fontSize());
}

void DeliveryView::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        if (m_timer->state() != TimerState::idle) {
            m_timer->stop();
            event->accept();
            return;
        }
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!qobject_cast<QLineEdit*>(QApplication::focusWidget())) {
            if (m_canvasState->stopScrollDeceleration)
                m_canvasState->stopScrollDeceleration();
            m_canvasState->setFollowRunner(!m_canvasState->followRunner());
            event->accept();
            return;
        }
        break;
    default:
        break;
    }
    // What presenter remotes send: the page passes these on to here.
    if (!(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))) {
        const auto action = DeliveryKeys::resolve(event->key(), m_preferences->presenterKeys());
        if (action
            && (*action == DeliveryKeys::Action::nextSection || *action == DeliveryKeys::Action::previousSection
                || *action == DeliveryKeys::Action::toggleDim || *action == DeliveryKeys::Action::start)) {
            handlePresenterKey(int(*action));
            event->accept();
            return;
        }
    }
    QWidget::keyPressEvent(event);
}

void DeliveryView::handlePresenterKey(int key)
{
    const auto action = DeliveryKeys::Action(key);
    const auto reader = DeliverySections::reader(*m_canvasState, *m_timer);
    switch (action) {
    case DeliveryKeys::Action::nextSection:
        if (const auto next = reader ? DeliverySections::after(*m_canvasState->layout(), reader->y) : std::nullopt) {
            if (reader->byScroll)
                m_canvasState->navigate(next->id);
            else
                m_canvasState->setChosenSection(next->id);
        }
        break;
    case DeliveryKeys::Action::previousSection:
        if (const auto previous =
                reader ? DeliverySections::before(*m_canvasState->layout(), reader->y) : std::nullopt) {
            if (reader->byScroll)
                m_canvasState->navigate(previous->id);
            else
                m_canvasState->setChosenSection(previous->id);
        } else if (reader && !reader->byScroll) {
            // The page cannot move: the reader is now above the first section.
            m_canvasState->setChosenSection(NodeID());
        } else {
            // Before the first section, back is the top of the page.
            if (m_canvasState->stopScrollDeceleration)
                m_canvasState->stopScrollDeceleration();
            m_canvasState->setFollowRunner(false);
            m_canvas->scrollAnimated(0);
        }
        break;
    case DeliveryKeys::Action::toggleDim:
        setDimmed(!isDimmed());
        break;
    case DeliveryKeys::Action::start:
        m_timer->start();
        break;
    default:
        break;
    }
}

bool DeliveryView::isDimmed() const
{
    return m_dimOverlay && m_dimOverlay->isVisible();
}

void DeliveryView::setDimmed(bool on)
{
    if (isDimmed() == on)
        return;
    if (!m_dimOverlay)
        m_dimOverlay = new WashOverlay([] { return QColor(0, 0, 0, 235); }, this);
    m_dimOverlay->setGeometry(rect());
    m_dimOverlay->setVisible(on);
    m_dimOverlay->raise();
}

void DeliveryView::buildPulpitActions()
{
    auto checkable = [this](const QString& text, bool checked) {
        auto* action = new QAction(text, this);
        action->setCheckable(true);
        action->setChecked(checked);
        return action;
    };
    m_largeClockAction = checkable(QStringLiteral("Large Clock"), m_preferences->largeClock());
    connect(m_largeClockAction, &QAction::toggled, m_preferences, &DeliveryPreferences::setLargeClock);
    m_cuesAction = checkable(QStringLiteral("Cues Before the End"), m_preferences->endCues());
    connect(m_cuesAction, &QAction::toggled, m_preferences, &DeliveryPreferences::setEndCues);
    m_finishByAction = new QAction(QStringLiteral("Finish By\u2026"), this);
    connect(m_finishByAction, &QAction::triggered, this, &DeliveryView::askFinishBy);
    m_timekeeperAction = checkable(QStringLiteral("Show Timer on Another Screen"), false);
    connect(m_timekeeperAction, &QAction::toggled, this, &DeliveryView::setTimekeeperShown);
    m_rehearseAction = checkable(QStringLiteral("Rehearse"), false);
    connect(m_rehearseAction, &QAction::toggled, m_rehearsal, &DeliveryRehearsal::setRecording);
}

QList<QAction*> DeliveryView::pulpitActions() const
{
    return {m_largeClockAction, m_cuesAction, m_finishByAction, m_timekeeperAction, m_rehearseAction};
}

void DeliveryView::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    menu.addActions(pulpitActions());
    menu.exec(event->globalPos());
}

void DeliveryView::applyPulpitPreferences()
{
    const bool large = m_preferences->largeClock();
    m_counterBlock->setLarge(large);
    m_topBar->ruler()->setLegibleFigures(large);
    m_cues->setMinutes(m_preferences->cueMinutes());
    m_cues->setEnabled(m_preferences->endCues());
    for (auto [action, on] :
         {std::pair{m_largeClockAction, large}, std::pair{m_cuesAction, m_preferences->endCues()}}) {
        const QSignalBlocker block(action);
        action->setChecked(on);
    }
    placeOverlays();
}

void DeliveryView::showCue()
{
    // A brief, calm light over the top bar and the time; never a sound.
    if (!m_cueOverlay) {
        m_cueOverlay = new WashOverlay(
            [this] { return Look::withAlpha(accent(), 0.22 * m_cueFlash->currentValue().toDouble()); }, this);
        m_cueFlash = new QVariantAnimation(this);
        m_cueFlash->setDuration(1600);
        m_cueFlash->setStartValue(0.0);
        m_cueFlash->setKeyValueAt(0.3, 1.0);
        m_cueFlash->setEndValue(0.0);
        connect(m_cueFlash, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
            m_cueOverlay->update();
            m_counterBlock->setCueGlow(value.toDouble());
        });
        connect(m_cueFlash, &QVariantAnimation::finished, this, [this] {
            m_cueOverlay->hide();
            m_counterBlock->setCueGlow(0);
        });
    }
    m_cueOverlay->setGeometry(m_topBar->geometry());
    m_cueOverlay->show();
    m_cueOverlay->raise();
    m_cueFlash->stop();
    m_cueFlash->start();
}

void DeliveryView::setFinishBy(std::optional<QTime> time)
{
    if (m_finishBy == time)
        return;
    m_finishBy = time;
    if (time) {
        followFinishBy();
        m_finishTimer->start();
    } else {
        m_finishTimer->stop();
        m_counterBlock->setFinishText(QString());
        // Back to what the sermon itself says.
        if (m_timer->state() == TimerState::idle)
            m_timer->setTargetMinutes(effectiveMinutes());
    }
}

void DeliveryView::followFinishBy()
{
    if (!m_finishBy)
        return;
    // Once started, the end is the one the first start was aiming at, even when it has passed.
    // Idle is read from the state alone: a stop announces it before it clears the rest.
    const double now = m_timer->clock()->now();
    const bool idle = m_timer->state() == TimerState::idle;
    const double end = DeliveryFinishBy::deadline(*m_finishBy, idle ? now : m_timer->firstStartedAt().value_or(now));
    const auto target = DeliveryFinishBy::target(end, idle ? now : m_timer->startedAt().value_or(now),
                                                 idle ? 0.0 : m_timer->elapsedBeforePause());
    m_counterBlock->setFinishText(DeliveryFinishBy::endsText(*m_finishBy, target.capped));
    if (m_timer->plannedTargetSeconds() == target.minutes * 60.0)
        return;
    // Minutes added with the pills stay added; and adding, even nothing, shows the new remaining
    // time at once, paused too.
    const int extra = int(std::lround((m_timer->targetSeconds() - m_timer->plannedTargetSeconds()) / 60));
    m_timer->setTargetMinutes(target.minutes);
    if (extra != 0 || m_timer->state() != TimerState::idle)
        m_timer->addMinutes(extra);
}

void DeliveryView::askFinishBy()
{
    auto* dialog = new QInputDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(QStringLiteral("Finish By"));
    dialog->setInputMode(QInputDialog::TextInput);
    dialog->setTextValue(m_finishBy ? m_finishBy->toString(QStringLiteral("HH:mm")) : QString());
    // The field says at once what the typed time will set, and when it is more than a duration may be.
    const auto describe = [this, dialog](const QString& text) {
        dialog->setLabelText(QStringLiteral("End the sermon by (HH:mm); empty to use its duration.\n")
                             + DeliveryFinishBy::hint(text, m_timer->clock()->now()));
    };
    describe(dialog->textValue());
    connect(dialog, &QInputDialog::textValueChanged, dialog, describe);
    connect(dialog, &QInputDialog::textValueSelected, this, [this](const QString& text) {
        if (text.trimmed().isEmpty())
            setFinishBy(std::nullopt);
        else if (const auto time = DeliveryFinishBy::parse(text))
            setFinishBy(time);
    });
    dialog->open();
    emit finishByDialogShown(dialog);
}

DeliveryTimekeeperWindow* DeliveryView::timekeeperWindow() const
{
    return m_timekeeper.data();
}

void DeliveryView::setTimekeeperShown(bool on)
{
    if (on && !m_timekeeper) {
        m_timekeeper = new DeliveryTimekeeperWindow(m_timer, m_canvasState, this);
        m_timekeeper->setAttribute(Qt::WA_DeleteOnClose);
        connect(m_timekeeper, &DeliveryTimekeeperWindow::closed, this, [this] {
            const QSignalBlocker block(m_timekeeperAction);
            m_timekeeperAction->setChecked(false);
        });
        m_timekeeper->showBeside(window());
    } else if (!on && m_timekeeper) {
        m_timekeeper->close();
    }
    const QSignalBlocker block(m_timekeeperAction);
    m_timekeeperAction->setChecked(on);
}

bool DeliveryView::acceptMeasuredPace()
{
    if (!m_document->root())
        return false;
    const int wpm = DeliveryRehearsal::measuredWPM(m_rehearsal->results(*m_document->root(), m_preferences->wpm()));
    if (wpm <= 0)
        return false;
    m_preferences->setWPM(wpm);
    return true;
}

void DeliveryView::showRehearsalSheet()
{
    if (!m_document->root())
        return;
    const auto results = m_rehearsal->results(*m_document->root(), m_preferences->wpm());
    const int wpm = DeliveryRehearsal::measuredWPM(results);
    auto* sheet = new QDialog(this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->setWindowTitle(QStringLiteral("Rehearsal"));
    auto* grid = new QGridLayout;
    auto cell = [&](const QString& text, int row, int column, bool bold = false) {
        // Section names come from the file: plain text.
        auto* label = new QLabel(text, sheet);
        label->setTextFormat(Qt::PlainText);
        if (bold) {
            QFont font = label->font();
            font.setBold(true);
            label->setFont(font);
        }
        grid->addWidget(label, row, column, column == 0 ? Qt::AlignLeft : Qt::AlignRight);
    };
    cell(QStringLiteral("Section"), 0, 0, true);
    cell(QStringLiteral("Spoken"), 0, 1, true);
    cell(QStringLiteral("Estimate"), 0, 2, true);
    int row = 1;
    for (const auto& result : results) {
        cell(result.text.isEmpty() ? QStringLiteral("Before the first section") : result.text, row, 0);
        cell(minutesText(result.realSeconds), row, 1);
        cell(minutesText(result.estimatedSeconds), row, 2);
        ++row;
    }
    auto* column = new QVBoxLayout(sheet);
    column->addLayout(grid);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, sheet);
    if (wpm > 0) {
        auto* summary = new QLabel(
            QStringLiteral("You spoke %1 words a minute; the reading pace is %2.").arg(wpm).arg(m_preferences->wpm()),
            sheet);
        summary->setTextFormat(Qt::PlainText);
        column->addWidget(summary);
        QPushButton* use = buttons->addButton(QStringLiteral("Use %1 wpm").arg(wpm), QDialogButtonBox::AcceptRole);
        use->setObjectName(QStringLiteral("useMeasuredPace"));
    }
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, sheet, [this, sheet] {
        acceptMeasuredPace();
        sheet->accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, sheet, &QDialog::reject);
    sheet->open();
    emit rehearsalSheetShown(sheet);
}

void DeliveryView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (m_dimOverlay)
        m_dimOverlay->setGeometry(rect());
    if (m_availableWidth != width()) {
        m_availableWidth = width();
        updateTextWidthRange();
    }
    placeOverlays();
}

void DeliveryView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    // The view may not be in its window while it is being made: look a turn later.
    QPointer<DeliveryView> self(this);
    QTimer::singleShot(0, this, [self] {
        if (self)
            self->watchWindow();
    });
}

void DeliveryView::watchWindow()
{
    QWidget* current = window();
    if (m_window == current)
        return;
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = current;
    if (m_window) {
        m_window->installEventFilter(this);
        setInFullscreen(m_window->isFullScreen());
    }
}

void DeliveryView::applyColours()
{
    QPalette dividerPalette = m_divider->palette();
    dividerPalette.setColor(QPalette::Window, withAlpha(primary(), 0.15));
    m_divider->setPalette(dividerPalette);
    for (QLabel* label : m_settingsRow->findChildren<QLabel*>()) {
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, secondary());
        label->setPalette(palette);
    }
}

void DeliveryView::changeEvent(QEvent* event)
{
    // Our own setPalette calls send PaletteChange to the children only, never back here.
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange)
        applyColours();
    QWidget::changeEvent(event);
}

bool DeliveryView::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Wheel && watched != m_window) {
        QApplication::sendEvent(m_canvas, event);
        return true;
    }
    if (watched == m_window && event->type() == QEvent::WindowStateChange)
        setInFullscreen(m_window->isFullScreen());
    return QWidget::eventFilter(watched, event);
}

void DeliveryView::setInFullscreen(bool on)
{
    if (m_isInFullscreen == on)
        return;
    m_isInFullscreen = on;
    // Full screen is for reading: the settings row goes away, whoever caused it.
    m_divider->setVisible(!on);
    m_settingsRow->setVisible(!on);
    // Left some other way (the window manager's key, say): the toolbars come back all the same.
    if (!on)
        restoreToolBars();
}

void DeliveryView::onTimerStateChanged(TimerState state, TimerState previous)
{
    // A stopped delivery forgets where the reader said they were; the next starts at the top.
    if (state == TimerState::idle)
        m_canvasState->setChosenSection(std::nullopt);
    if (m_preferences->fullscreen() && previous == TimerState::idle && state == TimerState::running)
        enterFullscreen();
    else if (state == TimerState::idle && previous != TimerState::idle)
        exitFullscreen();
}

void DeliveryView::onFullscreenPreferenceChanged(bool on)
{
    {
        const QSignalBlocker block(m_fullscreenSwitch);
        m_fullscreenSwitch->setChecked(on);
    }
    if (!on)
        exitFullscreen();
    else if (m_timer->state() != TimerState::idle)
        enterFullscreen();
}

void DeliveryView::enterFullscreen()
{
    QWidget* w = window();
    if (!w || w->isFullScreen())
        return;
    m_stateBeforeFullscreen = w->windowState();
    m_madeFullscreen = true;
    // Only the page and its clock: the window's toolbars go until the full screen ends.
    m_hiddenToolBars.clear();
    for (QToolBar* bar : w->findChildren<QToolBar*>()) {
        if (bar->isVisible() && bar->window() == w) {
            bar->hide();
            m_hiddenToolBars.append(bar);
        }
    }
    w->showFullScreen();
}

void DeliveryView::exitFullscreen()
{
    QWidget* w = window();
    if (!w || !w->isFullScreen())
        return;
    // Back to how the window was (maximised, say), if this view made it full screen.
    if (m_madeFullscreen)
        w->setWindowState(m_stateBeforeFullscreen & ~Qt::WindowFullScreen);
    else
        w->showNormal();
    restoreToolBars();
}

void DeliveryView::restoreToolBars()
{
    m_madeFullscreen = false;
    for (const QPointer<QToolBar>& bar : std::as_const(m_hiddenToolBars)) {
        if (bar)
            bar->show();
    }
    m_hiddenToolBars.clear();
}
