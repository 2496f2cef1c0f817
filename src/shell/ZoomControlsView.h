#pragma once

#include <QWidget>

#include <functional>

class QToolButton;

// Minus, the percentage (which resets to 100%) and plus, at the right of the status bar.
class ZoomControlsView : public QWidget {
    Q_OBJECT
public:
    explicit ZoomControlsView(QWidget* parent = nullptr);

    double scale() const { return m_scale; }
    void setScale(double scale);
    // "100%"
    static QString percentText(double scale);

    std::function<void()> onZoomIn;
    std::function<void()> onZoomOut;
    std::function<void()> onReset;

    QToolButton* zoomOutButton() const { return m_out; }
    QToolButton* percentButton() const { return m_percent; }
    QToolButton* zoomInButton() const { return m_in; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void restyle();

    double m_scale = 1.0;
    QToolButton* m_out;
    QToolButton* m_percent;
    QToolButton* m_in;
};
