#include "SheetLayout.h"

#include "DurationChooser.h"
#include "SectionBlock.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace SheetLayout {

Frame build(QWidget* sheet, const QString& title, const QString& confirmText)
{
    Frame frame;
    frame.column = new QVBoxLayout(sheet);
    frame.column->setContentsMargins(20, 20, 20, 20);
    frame.column->setSpacing(20);
    auto* header = new QHBoxLayout;
    auto* heading = new QLabel(title, sheet);
    QFont font = heading->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    font.setBold(true);
    heading->setFont(font);
    header->addWidget(heading);
    header->addStretch(1);
    frame.cancel = new QPushButton(QStringLiteral("Cancel"), sheet);
    frame.confirm = new QPushButton(confirmText, sheet);
    frame.confirm->setDefault(true);
    frame.cancel->setShortcut(QKeySequence(Qt::Key_Escape));
    header->addWidget(frame.cancel);
    header->addWidget(frame.confirm);
    frame.column->addLayout(header);
    frame.rows = new SectionBlock({}, sheet);
    frame.column->addWidget(frame.rows);
    return frame;
}

namespace {

class ReturnKeeper : public QObject {
public:
    explicit ReturnKeeper(QLineEdit* field)
        : QObject(field)
        , m_field(field)
    {
        field->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched != m_field || event->type() != QEvent::KeyPress)
            return false;
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key != Qt::Key_Return && key != Qt::Key_Enter)
            return false;
        emit m_field->returnPressed();
        return true;
    }

private:
    QLineEdit* m_field;
};

} // namespace

void keepReturn(QLineEdit* field)
{
    new ReturnKeeper(field);
}

void addRow(SectionBlock* block, const QString& label, QWidget* control, bool first)
{
    if (!first)
        block->contentLayout()->addWidget(SectionBlock::divider(block->box()));
    auto* row = new QWidget(block->box());
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(12, 8, 12, 8);
    layout->setSpacing(24);
    auto* name = new QLabel(label, row);
    name->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    name->setFixedWidth(name->fontMetrics().horizontalAdvance(QStringLiteral("Scripture")) + 4);
    QPalette p = name->palette();
    QColor secondary = p.color(QPalette::WindowText);
    secondary.setAlphaF(0.6f);
    p.setColor(QPalette::WindowText, secondary);
    name->setPalette(p);
    layout->addWidget(name);
    control->setParent(row);
    layout->addWidget(control, 1);
    block->contentLayout()->addWidget(row);
}

void addSermonRows(const Frame& frame, QLineEdit* title, QLineEdit* scripture, QLineEdit* series,
                   DurationChooser* duration, QWidget* occurrences)
{
    addRow(frame.rows, QStringLiteral("Title"), title, true);
    addRow(frame.rows, QStringLiteral("Scripture"), scripture, false);
    addRow(frame.rows, QStringLiteral("Series"), series, false);
    addRow(frame.rows, QStringLiteral("Duration"), duration, false);
    frame.column->addWidget(occurrences);
    frame.column->addStretch(1);
}

} // namespace SheetLayout
