#pragma once

#include "DeliveryCanvasState.h"
#include "DeliveryClock.h"
#include "DeliveryTimer.h"

#include "core/UndoManager.h"

#include <QPointer>
#include <QTime>
#include <QWidget>

#include <optional>

class DeliveryCanvas;
class DeliveryCues;
class DeliveryRehearsal;
class DeliveryTimekeeperWindow;
class QAction;
class QInputDialog;
class QMenu;
class QVariantAnimation;
class DeliveryCounterBlock;
class DeliveryNavOverlay;
class DeliveryPreferences;
class DeliveryRunnerPlayButton;
class DeliveryRunnerStopButton;
class DeliverySwitch;
class DeliveryRunnerStrip;
class DeliveryTopBar;
class FollowRunnerButton;
class QLabel;
class QSlider;
class QTimer;
class QToolBar;
class SermonDocument;

// Delivery mode: the timed reading view. Make one each time the mode is entered; it owns its
// timer and page state, so leaving the mode ends a running delivery.
class DeliveryView : public QWidget {
    Q_OBJECT
public:
    // `undoManager` receives the step when the duration is edited; `preferences` may be shared
    // with the rest of the application, or left out to read the application's QSettings.
    DeliveryView(SermonDocument* document, UndoManager* undoManager = nullptr,
                 DeliveryPreferences* preferences = nullptr, QWidget* parent = nullptr,
                 std::shared_ptr<DeliveryClock> clock = DeliveryClock::system());
    ~DeliveryView() override;

    DeliveryTimer* timer() const { return m_timer; }
    DeliveryCanvasState* canvasState() const { return m_canvasState; }
    DeliveryCanvas* canvas() const { return m_canvas; }
    DeliveryCounterBlock* counterBlock() const { return m_counterBlock; }
    DeliveryTopBar* topBar() const { return m_topBar; }
    DeliveryRunnerStrip* runnerStrip() const { return m_runnerStrip; }
    DeliveryNavOverlay* navOverlay() const { return m_navOverlay; }
    DeliveryPreferences* preferences() const { return m_preferences; }
    QWidget* settingsRow() const { return m_settingsRow; }

    // The document's duration, else an estimate at the stored pace.
    int effectiveMinutes() const;
    // The widest text column the window leaves room for, in steps of 50 from 400 to 1000.
    static double maxTextWidth(double availableWidth);
    double maxTextWidth() const { return maxTextWidth(m_availableWidth); }
    bool isInFullscreen() const { return m_isInFullscreen; }

    // The counter block's duration edit: written to the document as one undo step.
    void onDurationChanged(int minutes);

    // ---- At the pulpit ----
    // The time of day the delivery must end by; the target follows the clock, idle, running
    // and paused, so that it always ends by then. Kept by this view alone, never written to the
    // file.
    std::optional<QTime> finishBy() const { return m_finishBy; }
    void setFinishBy(std::optional<QTime> time);
    // Sets the target from the finish-by time, what was spoken and the clock now; run each
    // second and at each start, pause and stop.
    void followFinishBy();
    // The page dimmed by a presenter remote's B or period.
    bool isDimmed() const;
    void setDimmed(bool on);
    // The second, frameless window that shows the timer on another screen.
    DeliveryTimekeeperWindow* timekeeperWindow() const;
    void setTimekeeperShown(bool on);
    DeliveryCues* cues() const { return m_cues; }
    DeliveryRehearsal* rehearsal() const { return m_rehearsal; }
    // Sets the reading pace to what the last rehearsal measured; false without a measure.
    bool acceptMeasuredPace();
    // Large Clock, Cues Before the End, Finish By…, Show Timer on Another Screen, Rehearse.
    QList<QAction*> pulpitActions() const;

signals:
    // The document's duration was set from the counters.
    void durationChanged(int minutes);
    // A rehearsal ended and its sheet is open.
    void rehearsalSheetShown(QWidget* sheet);
    // Finish By… opened its field.
    void finishByDialogShown(QInputDialog* dialog);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    QWidget* buildSettingsRow();
    void applyPreferences();
    void placeOverlays();
    void updateNavTargets();
    void updateMinimumWidth();
    void updateTextWidthRange();
    void onTimerStateChanged(TimerState state, TimerState previous);
    void onFullscreenPreferenceChanged(bool on);
    void enterFullscreen();
    void exitFullscreen();
    void restoreToolBars();
    void applyColours();
    void watchWindow();
    void setInFullscreen(bool on);
    void buildPulpitActions();
    void applyPulpitPreferences();
    void handlePresenterKey(int action);
    void showCue();
    void askFinishBy();
    void showRehearsalSheet();

    SermonDocument* m_document;
    QPointer<UndoManager> m_undoManager;
    DeliveryPreferences* m_preferences;
    DeliveryTimer* m_timer;
    DeliveryCanvasState* m_canvasState;
    double m_availableWidth = 0;
    bool m_isInFullscreen = false;
    bool m_madeFullscreen = false;
    Qt::WindowStates m_stateBeforeFullscreen;
    QPointer<QWidget> m_window;
    QList<QPointer<QToolBar>> m_hiddenToolBars;

    DeliveryTopBar* m_topBar = nullptr;
    DeliveryRunnerStrip* m_runnerStrip = nullptr;
    DeliveryCanvas* m_canvas = nullptr;
    DeliveryCounterBlock* m_counterBlock = nullptr;
    DeliveryRunnerPlayButton* m_playButton = nullptr;
    DeliveryRunnerStopButton* m_stopButton = nullptr;
    FollowRunnerButton* m_followButton = nullptr;
    DeliveryNavOverlay* m_navOverlay = nullptr;
    QWidget* m_divider = nullptr;
    QWidget* m_settingsRow = nullptr;
    QSlider* m_fontSlider = nullptr;
    QSlider* m_spacingSlider = nullptr;
    QSlider* m_widthSlider = nullptr;
    QLabel* m_fontValue = nullptr;
    QLabel* m_spacingValue = nullptr;
    QLabel* m_widthValue = nullptr;
    DeliverySwitch* m_fullscreenSwitch = nullptr;

    std::optional<QTime> m_finishBy;
    QTimer* m_finishTimer = nullptr;
    DeliveryCues* m_cues = nullptr;
    QVariantAnimation* m_cueFlash = nullptr;
    QWidget* m_cueOverlay = nullptr;
    QWidget* m_dimOverlay = nullptr;
    QPointer<DeliveryTimekeeperWindow> m_timekeeper;
    DeliveryRehearsal* m_rehearsal = nullptr;
    QAction* m_largeClockAction = nullptr;
    QAction* m_cuesAction = nullptr;
    QAction* m_finishByAction = nullptr;
    QAction* m_timekeeperAction = nullptr;
    QAction* m_rehearseAction = nullptr;
};
