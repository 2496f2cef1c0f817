#pragma once

#include "IdleFade.h"

#include <QWidget>

#include <functional>

class SermonDocument;

// The one line of statistics in focus mode, bottom left: words and minutes of the whole sermon.
// It fades away after three seconds of a still pointer and comes back when the pointer moves or
// clicks anywhere in the application.
class FocusOverlayView : public QWidget {
    Q_OBJECT
public:
    static constexpr double idleSeconds = 3.0;
    static constexpr int edgeMargin = 16;

    FocusOverlayView(SermonDocument* document, QWidget* parent);
    ~FocusOverlayView() override;

    // Words a minute, asked at each refresh; 120 without a source.
    void setReadingPaceSource(std::function<int()> source);
    // Reads the tree again, after it changed.
    void refresh();
    QString text() const { return m_text; }
    // Keeps the line in the window's lower left corner.
    void place(QSize windowSize);

    IdleFade& fade() { return m_fade; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QFont labelFont() const;

    SermonDocument* m_document;
    std::function<int()> m_readingPace;
    QString m_text;
    QSize m_windowSize;
    IdleFade m_fade;
    bool m_isWatching = false;
};
