#pragma once

#include "DeliveryCanvasState.h"
#include "DeliveryClock.h"
#include "DeliveryTimer.h"

#include "core/UndoManager.h"

#include <QPointer>
#include <QWidget>

class DeliveryCanvas;
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

signals:
    // The document's duration was set from the counters.
    void durationChanged(int minutes);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

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
};
