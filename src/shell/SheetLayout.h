#pragma once

#include <QString>

class DurationChooser;
class QLayout;
class QLineEdit;
class QPushButton;
class QVBoxLayout;
class QWidget;
class SectionBlock;

// The frame both sermon sheets share: a header with the title and two buttons, then the block of
// labelled rows.
namespace SheetLayout {

struct Frame {
    QVBoxLayout* column = nullptr;
    QPushButton* cancel = nullptr;
    QPushButton* confirm = nullptr;
    SectionBlock* rows = nullptr;
};

Frame build(QWidget* sheet, const QString& title, const QString& confirmText);
// A row: the label in the secondary colour, right-aligned in a column all labels share, and
// the control taking the rest.
void addRow(SectionBlock* block, const QString& label, QWidget* control, bool first);
// Return in `field` does what the field does with it and stops there, instead of going on to
// press the sheet's default button (a custom duration, a place being typed).
void keepReturn(QLineEdit* field);
// The four rows both sheets show, in their order, then the occurrences under the block.
void addSermonRows(const Frame& frame, QLineEdit* title, QLineEdit* scripture, QLineEdit* series,
                   DurationChooser* duration, QWidget* occurrences);

} // namespace SheetLayout
