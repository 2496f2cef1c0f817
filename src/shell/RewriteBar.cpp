#include "RewriteBar.h"

#include "look/Look.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

RewriteBar::RewriteBar(QWidget* parent)
    : QWidget(parent)
    , m_message(new QLabel(this))
    , m_showLines(new QPushButton(QStringLiteral("Show Lines"), this))
    , m_saveAsNew(new QPushButton(QStringLiteral("Save as a New Sermon\u2026"), this))
    , m_rewrite(new QPushButton(QStringLiteral("Rewrite This File"), this))
    , m_close(new QToolButton(this))
{
    setObjectName(QStringLiteral("rewriteBar"));
    setFocusPolicy(Qt::StrongFocus);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 6, 6, 6);
    layout->setSpacing(8);
    m_message->setTextFormat(Qt::PlainText);
    m_message->setWordWrap(true);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_message, 1);
    layout->addWidget(m_showLines);
    layout->addWidget(m_saveAsNew);
    layout->addWidget(m_rewrite);
    layout->addWidget(m_close);
    m_saveAsNew->setDefault(true);
    m_close->setAutoRaise(true);
    m_close->setText(QStringLiteral("\u2715"));
    m_close->setToolTip(QStringLiteral("Close: just read the file, and save nothing to it"));
    m_close->setAccessibleName(QStringLiteral("Close"));

    connect(m_showLines, &QPushButton::clicked, this, &RewriteBar::showLines);
    connect(m_saveAsNew, &QPushButton::clicked, this, [this] {
        if (onSaveAsNew)
            onSaveAsNew();
    });
    connect(m_rewrite, &QPushButton::clicked, this, [this] {
        if (onRewrite)
            onRewrite();
    });
    connect(m_close, &QToolButton::clicked, this, [this] {
        hide();
        if (m_isAsking && onDismiss)
            onDismiss();
    });
    hide();
}

QString RewriteBar::summary(const RewriteCheck::Result& check)
{
    const qsizetype count = check.changes.size();
    QString lines;
    if (check.isTruncated)
        lines = QStringLiteral("many lines would change");
    else if (count == 1)
        lines = QStringLiteral("1 line would change");
    else
        lines = QStringLiteral("%1 lines would change").arg(count);
    return QStringLiteral("Saving will rewrite this file in sermon form; ") + lines;
}

QString RewriteBar::linesText(const RewriteCheck::Result& check)
{
    using Kind = RewriteCheck::LineChange::Kind;
    QStringList parts;
    if (check.isTruncated)
        parts.append(QStringLiteral("Too many lines would change to list them all. The first:"));
    for (const RewriteCheck::LineChange& change : check.changes) {
        QString entry;
        switch (change.kind) {
        case Kind::added:
            entry = QStringLiteral("Before line %1\n  added:    %2").arg(change.line).arg(change.rewritten);
            break;
        case Kind::vanishes:
            entry = QStringLiteral("Line %1:  %2\n  lost").arg(change.line).arg(change.original);
            break;
        case Kind::changed:
            entry =
                QStringLiteral("Line %1:  %2\n  becomes:  %3").arg(change.line).arg(change.original, change.rewritten);
            if (!change.readsAs.isEmpty())
                entry += QStringLiteral("   (read as %1)").arg(change.readsAs);
            break;
        }
        parts.append(entry);
    }
    return parts.join(QStringLiteral("\n\n")) + QLatin1Char('\n');
}

void RewriteBar::setCheck(const RewriteCheck::Result& check)
{
    m_check = check;
    m_isAsking = true;
    m_message->setText(summary(check));
    for (QWidget* button :
         {static_cast<QWidget*>(m_showLines), static_cast<QWidget*>(m_saveAsNew), static_cast<QWidget*>(m_rewrite)})
        button->show();
    show();
}

void RewriteBar::showNotice(const QString& text)
{
    m_isAsking = false;
    m_message->setText(text);
    m_showLines->hide();
    m_saveAsNew->hide();
    m_rewrite->hide();
    show();
}

QString RewriteBar::message() const
{
    return m_message->text();
}

void RewriteBar::showLines()
{
    auto* dialog = new QDialog(window());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setObjectName(QStringLiteral("rewriteLines"));
    dialog->setWindowTitle(QStringLiteral("Lines That Would Change"));
    auto* layout = new QVBoxLayout(dialog);
    auto* lead = new QLabel(summary(m_check) + QLatin1Char('.'), dialog);
    lead->setTextFormat(Qt::PlainText);
    layout->addWidget(lead);
    auto* text = new QPlainTextEdit(dialog);
    text->setReadOnly(true);
    text->setLineWrapMode(QPlainTextEdit::NoWrap);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text->setPlainText(linesText(m_check));
    layout->addWidget(text, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, dialog);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::close);
    layout->addWidget(buttons);
    dialog->resize(720, 460);
    dialog->show();
}

void RewriteBar::paintEvent(QPaintEvent*)
{
    // A warm band, darker than the page, with a rule between it and the map.
    const bool isDark = Look::isDarkPalette(palette());
    QPainter painter(this);
    painter.fillRect(rect(), isDark ? QColor::fromRgbF(0.30f, 0.24f, 0.15f) : QColor::fromRgbF(0.99f, 0.93f, 0.78f));
    QColor rule = palette().color(QPalette::WindowText);
    rule.setAlphaF(0.15f);
    painter.fillRect(QRectF(0, height() - 1, width(), 1), rule);
}

void RewriteBar::keyPressEvent(QKeyEvent* event)
{
    // Return takes the default choice, as in a dialog.
    if (m_isAsking && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
        m_saveAsNew->click();
        return;
    }
    if (event->key() == Qt::Key_Escape) {
        m_close->click();
        return;
    }
    QWidget::keyPressEvent(event);
}
