#pragma once

#include <QWidget>

class QVBoxLayout;

// A titled group of the sermon sheets: an optional headline over a softly outlined rounded box.
class SectionBlock : public QWidget {
    Q_OBJECT
public:
    explicit SectionBlock(const QString& title = {}, QWidget* parent = nullptr);

    // Where the content goes.
    QVBoxLayout* contentLayout() const { return m_content; }
    QWidget* box() const { return m_box; }
    // A thin rule between rows.
    static QWidget* divider(QWidget* parent);

private:
    QWidget* m_box;
    QVBoxLayout* m_content;
};
