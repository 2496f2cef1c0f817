#pragma once

#include <QList>
#include <QWidget>

#include <functional>

class QLabel;
class QToolButton;
class SermonDocument;
class ZoomControlsView;

// The row under the map: the word count with its pace menu on the left, the zoom on the right.
class StatusBarView : public QWidget {
    Q_OBJECT
public:
    static constexpr int height = 28;

    explicit StatusBarView(SermonDocument* document, QWidget* parent = nullptr);

    // Recounts the words; call after any change to the tree.
    void refresh();
    int readingPaceWPM() const { return m_wpm; }
    void setReadingPaceWPM(int wpm);
    void setScale(double scale);
    // A short notice shown beside the count (an autosave that failed, a file gone), with buttons
    // for what the user may do about it; empty clears it.
    struct NoticeAction {
        QString label;
        std::function<void()> run;
    };
    void setNotice(const QString& text, const QList<NoticeAction>& actions = {});
    QList<QToolButton*> noticeButtons() const { return m_noticeButtons; }

    QString statusText() const;
    QToolButton* paceButton() const { return m_pace; }
    QLabel* noticeLabel() const { return m_notice; }
    ZoomControlsView* zoomControls() const { return m_zoom; }

    // Choosing a pace in the menu; the owner stores it.
    std::function<void(int wpm)> onChooseReadingPace;

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void rebuildMenu();
    void restyle();

    SermonDocument* m_document;
    int m_wpm = 120;
    QToolButton* m_pace;
    QLabel* m_notice;
    QList<QToolButton*> m_noticeButtons;
    ZoomControlsView* m_zoom;
};
