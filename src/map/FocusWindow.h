#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <functional>

class FocusOverlayView;
class MindMapCanvas;
class QScreen;
class SermonDocument;

// The content of the focus window: a second map of the document, with its own pan, selection and
// caches, and the statistics line over it. Escape (when no editor or field has the keyboard) and
// the focus command leave; the zoom commands act on this map.
class FocusContentView : public QWidget {
    Q_OBJECT
public:
    explicit FocusContentView(SermonDocument* document, QWidget* parent = nullptr);

    MindMapCanvas* canvas() const { return m_canvas; }
    FocusOverlayView* overlay() const { return m_overlay; }

    std::function<void()> onExit;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void exit();

    MindMapCanvas* m_canvas;
    FocusOverlayView* m_overlay;
};

// Owner of the focus-mode window: a frameless window over everything on one screen, with the
// keyboard. One belongs to each document window.
class FocusWindow : public QObject {
    Q_OBJECT
public:
    explicit FocusWindow(QObject* parent = nullptr);
    ~FocusWindow() override;

    // Opens the window full screen on `screen` and gives it the keyboard; `prepare` wires the new
    // map before it first appears. Nothing opens without a screen.
    FocusContentView* enter(SermonDocument* document, QScreen* screen, std::function<void()> onExit,
                            const std::function<void(FocusContentView&)>& prepare = {});
    // Hides the window and lets it go with its map. Safe from inside the window's own handlers.
    void leave();

    FocusContentView* window() const { return m_window; }
    bool isOpen() const { return m_window != nullptr; }

private:
    QPointer<FocusContentView> m_window;
};
