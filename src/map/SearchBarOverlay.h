#pragma once

#include <QString>
#include <QWidget>

#include <functional>

class QLabel;
class QLineEdit;
class QToolButton;

// The find bar over the map: a field, the result count and buttons for the previous match, the
// next match and closing. It shows what it is given and reports what the user does; the search
// itself lies with the document controller.
class SearchBarOverlay : public QWidget {
    Q_OBJECT
public:
    explicit SearchBarOverlay(QWidget* parent = nullptr);

    // "0 results" below one match, else "2 of 5".
    static QString resultText(int matchCount, int currentMatchIndex);

    QString query() const;
    // Replaces the field's text unless it already reads the same, so the cursor stays.
    void setQuery(const QString& query);
    void setMatches(int matchCount, int currentMatchIndex);
    void focusField();

    QLineEdit* field() const { return m_field; }
    QLabel* resultLabel() const { return m_result; }
    QLabel* magnifyingGlass() const { return m_glass; }
    QToolButton* previousButton() const { return m_previous; }
    QToolButton* nextButton() const { return m_next; }
    QToolButton* closeButton() const { return m_close; }

    std::function<void(const QString&)> onQueryChanged;
    std::function<void()> onNext;
    std::function<void()> onPrevious;
    std::function<void()> onDismiss;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void paintSymbols();

    QLabel* m_glass;
    QLineEdit* m_field;
    QLabel* m_result;
    QToolButton* m_previous = nullptr;
    QToolButton* m_next = nullptr;
    QToolButton* m_close = nullptr;
    bool m_isSettingQuery = false;
};
