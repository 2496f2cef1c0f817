#include "StatusBarView.h"

#include "Symbols.h"
#include "ZoomControlsView.h"

#include "core/ReadingPace.h"
#include "core/SermonDocument.h"
#include "core/WordCount.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QToolButton>

StatusBarView::StatusBarView(SermonDocument* document, QWidget* parent)
    : QWidget(parent)
    , m_document(document)
    , m_pace(new QToolButton(this))
    , m_notice(new QLabel(this))
    , m_zoom(new ZoomControlsView(this))
{
    setObjectName(QStringLiteral("statusBar"));
    setFixedHeight(height);
    // Notices may name a file.
    m_notice->setTextFormat(Qt::PlainText);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 1, 12, 0);
    layout->setSpacing(8);
    m_pace->setAutoRaise(true);
    m_pace->setPopupMode(QToolButton::InstantPopup);
    m_pace->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_pace->setFocusPolicy(Qt::NoFocus);
    m_pace->setStyleSheet(QStringLiteral("QToolButton::menu-indicator { image: none; width: 0; }"));
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 11.0 / 13.0);
    m_pace->setFont(small);
    m_notice->setFont(small);
    m_pace->setMenu(new QMenu(m_pace));
    connect(m_pace->menu(), &QMenu::aboutToShow, this, &StatusBarView::rebuildMenu);
    layout->addWidget(m_pace);
    layout->addWidget(m_notice);
    layout->addStretch(1);
    layout->addWidget(m_zoom);
    restyle();
    refresh();
}

QString StatusBarView::statusText() const
{
    return WordCount::statusText(*m_document->root(), m_wpm);
}

void StatusBarView::refresh()
{
    m_pace->setText(statusText());
}

void StatusBarView::setReadingPaceWPM(int wpm)
{
    if (wpm == m_wpm || wpm <= 0)
        return;
    m_wpm = wpm;
    refresh();
}

void StatusBarView::setScale(double scale)
{
    m_zoom->setScale(scale);
}

void StatusBarView::setNotice(const QString& text, const QList<NoticeAction>& actions)
{
    m_notice->setText(text);
    m_notice->setVisible(!text.isEmpty());
    qDeleteAll(m_noticeButtons);
    m_noticeButtons.clear();
    auto* row = static_cast<QHBoxLayout*>(layout());
    int at = row->indexOf(m_notice) + 1;
    for (const NoticeAction& action : actions) {
        auto* button = new QToolButton(this);
        button->setText(action.label);
        button->setFont(m_notice->font());
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::NoFocus);
        connect(button, &QToolButton::clicked, this, action.run);
        row->insertWidget(at++, button);
        m_noticeButtons.append(button);
    }
}

void StatusBarView::rebuildMenu()
{
    QMenu* menu = m_pace->menu();
    menu->clear();
    const QColor ink = palette().color(QPalette::WindowText);
    for (ReadingPace pace : ReadingPaces::allCases) {
        const int wpm = ReadingPaces::wordsPerMinute(pace);
        QAction* action = menu->addAction(ReadingPaces::label(pace));
        if (wpm == m_wpm)
            action->setIcon(Symbols::icon(QStringLiteral("checkmark"), ink, 14));
        connect(action, &QAction::triggered, this, [this, wpm] {
            if (onChooseReadingPace)
                onChooseReadingPace(wpm);
        });
    }
}

void StatusBarView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QColor rule = palette().color(QPalette::WindowText);
    rule.setAlphaF(0.1f);
    painter.fillRect(QRectF(0, 0, width(), 1), rule);
}

void StatusBarView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        restyle();
}

void StatusBarView::restyle()
{
    QColor secondary = palette().color(QPalette::WindowText);
    secondary.setAlphaF(0.6f);
    for (QWidget* w : {static_cast<QWidget*>(m_pace), static_cast<QWidget*>(m_notice)}) {
        QPalette p = w->palette();
        p.setColor(QPalette::ButtonText, secondary);
        p.setColor(QPalette::WindowText, secondary);
        w->setPalette(p);
    }
}
