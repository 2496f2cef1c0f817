#pragma once

#include <QString>
#include <QTextEdit>

#include <functional>

// The in-place editor of a cell: plain text at the cell's font on the cell's 28-point rows,
// wrapping at exactly the cell's breaks. It has no undo of its own (the document's steps are the
// only ones) and turns the keys that matter into callbacks. Texts cross it in the model's form,
// where a soft line break is U+2028; inside, that is an ordinary newline.
class ColumnEditorOverlay : public QTextEdit {
    Q_OBJECT
public:
    // Qt stands the baseline of a fixed-height line at four fifths of it, in whole 1/64 points.
    static constexpr double baselineInRow = double(28 * 64 * 4 / 5) / 64;
    // Where the editor's top goes below the top of its cell, so that its baselines fall on the
    // cell's: the cell draws each line's top 6 points into its row.
    static double offsetFromCellTop(bool isRoot);

    explicit ColumnEditorOverlay(QWidget* parent = nullptr);

    // Re-targets to a node: its text, with the cursor at the end.
    void open(const QString& modelText, double columnWidth, bool isRoot);
    // A text from outside: taken only when it differs, keeping the cursor where it was.
    void setModelText(const QString& modelText);
    QString modelText() const;
    void setColumnWidth(double columnWidth);
    void setRoot(bool isRoot);
    // The width the text wraps in: the cell's, less its insets.
    double wrapWidth() const { return m_wrapWidth; }
    void applyAppearance(bool isDark);

    std::function<void(const QString&)> onTextChanged; // model form
    std::function<void()> onTab;
    std::function<void()> onShiftTab;
    std::function<void()> onEnter;
    std::function<void()> onCommandEnter;
    std::function<void(int)> onOptionEnter; // the cursor, in UTF-16 units of the editor's text
    std::function<void()> onCancel;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void insertFromMimeData(const QMimeData* source) override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QString editorText() const;
    void applyFormat();
    void fieldChanged();

    double m_wrapWidth = 1;
    bool m_isRoot = false;
    bool m_isSettingText = false;
};
