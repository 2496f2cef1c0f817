#pragma once

#include "DeliveryCanvasState.h"
#include "DeliveryTimer.h"
#include "PulseClock.h"

#include <QPixmap>
#include <QPointer>
#include <QWidget>

class QTimer;
class SermonDocument;

// Settings the page is laid out with.
struct DeliveryPageSettings {
    double baseFontSize = 15;
    double lineSpacing = 1.8;
    double textWidth = 700;
    int wpm = 130;

    bool operator==(const DeliveryPageSettings&) const = default;
};

// The reading surface: the sermon as one serif column with the red runner in its left margin.
// The text layer is kept in an image and redrawn only when the layout, the scroll position, the
// size or the appearance change; each frame repaints only the runner's strip.
class DeliveryCanvas : public QWidget {
    Q_OBJECT
public:
    DeliveryCanvas(SermonDocument* document, DeliveryTimer* timer, DeliveryCanvasState* state,
                   QWidget* parent = nullptr);
    ~DeliveryCanvas() override;

    const DeliveryPageSettings& settings() const { return m_settings; }
    // Relays out the page when anything it depends on changed.
    bool setSettings(const DeliveryPageSettings& settings);

    void rebuildLayout();
    void scrollAnimated(double target);
    void frameTick();
    void handleScrollDelta(double delta);
    // Space, Escape and the four scroll keys; false for anything else.
    bool handleKey(int key);
    void seek(double fraction);

    // Page offset from the view's left edge.
    double left() const;
    bool isFrameTicking() const;
    bool isScrollAnimating() const;
    PulseClock* pulseClock() { return &m_pulseClock; }
    // How many times the text layer has been drawn; the frame tick must not add to it unless
    // the page follows the runner.
    int textLayerRenderCount() const { return m_textRenders; }

signals:
    // The page offset or size changed; overlays placed over the page move with it.
    void pageGeometryChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void onTimerStateChanged(TimerState state);
    void onPendingScrollTarget();
    void stepScrollAnimation();
    void cancelScrollAnimation();
    void unfollow();
    void invalidateText();
    void startFrames();
    void stopFrames();
    void updateRunner();

    SermonDocument* m_document;
    DeliveryTimer* m_timer;
    DeliveryCanvasState* m_state;
    DeliveryPageSettings m_settings;
    int m_layoutMinutes = 0;

    QTimer* m_scrollAnimTimer = nullptr;
    QTimer* m_displayLinkTimer = nullptr;
    double m_animFrom = 0;
    double m_animTo = 0;
    double m_animStart = 0;
    PulseClock m_pulseClock;

    QPixmap m_textCache;
    bool m_textDirty = true;
    int m_textRenders = 0;
};
