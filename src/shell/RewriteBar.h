#pragma once

#include "core/RewriteCheck.h"

#include <QWidget>

#include <functional>

class QLabel;
class QPushButton;
class QToolButton;

// The band above the map for a file that saving would rewrite in sermon form: it says how many
// lines would change, shows them on request, and offers the two ways on. Until one is taken the
// window writes nothing to the file. Afterwards it can carry one line of news (where the
// original was kept) until closed.
class RewriteBar : public QWidget {
    Q_OBJECT
public:
    explicit RewriteBar(QWidget* parent = nullptr);

    // Asks about a file with these changes.
    void setCheck(const RewriteCheck::Result& check);
    // One line of information in place of the question, with only the close button.
    void showNotice(const QString& text);
    bool isAsking() const { return m_isAsking; }

    QString message() const;
    // "Saving will rewrite this file in sermon form; 12 lines would change".
    static QString summary(const RewriteCheck::Result& check);
    // The plain text of the lines view: each line's number, what it says, what it becomes.
    static QString linesText(const RewriteCheck::Result& check);

    std::function<void()> onSaveAsNew;
    std::function<void()> onRewrite;
    // Closed without a choice: the file is only being read.
    std::function<void()> onDismiss;

    QPushButton* showLinesButton() const { return m_showLines; }
    QPushButton* saveAsNewButton() const { return m_saveAsNew; }
    QPushButton* rewriteButton() const { return m_rewrite; }
    QToolButton* closeButton() const { return m_close; }
    // Opens the read-only list of changed lines.
    void showLines();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    RewriteCheck::Result m_check;
    bool m_isAsking = false;
    QLabel* m_message;
    QPushButton* m_showLines;
    QPushButton* m_saveAsNew;
    QPushButton* m_rewrite;
    QToolButton* m_close;
};
