#pragma once

#include "NodeLayout.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringView>
#include <QWidget>

#include <functional>
#include <unordered_map>

class QPlainTextEdit;

// The editor that stands in place of a node on the map while its text is open: a frameless,
// transparent multi-line field laid exactly over the node's text, at the node's font and the
// map's zoom, growing as one types, with the focus ring around it. Geometry is worked out in
// canvas points and carried into the view by the map's scale and pan.
class NodeEditorOverlay : public QWidget {
    Q_OBJECT
public:
    // Where the field's first glyph lands, right of its left edge: the text field has no margins.
    static constexpr double textInset = 0;

    // The field's size in canvas points for a text in the model's form (soft breaks as U+2028).
    static QSizeF editorSize(const QString& modelText, int depth);
    // The field in canvas points: its glyphs fall on the node's text column.
    static QRectF fieldRect(const NodeLayout& layout, QSizeF editorSize);
    // The ring around the text, in canvas points.
    static QRectF ringRect(const NodeLayout& layout, QSizeF editorSize);

    explicit NodeEditorOverlay(QWidget* parent = nullptr);

    // Shows the editor for a node, with a text in the model's form, and takes the keyboard.
    void open(const QString& modelText, const NodeLayout& layout);
    void close();
    bool isOpen() const { return m_isOpen; }

    // The text in the model's form.
    const QString& text() const { return m_modelText; }
    // Replaces the text unless it already reads the same, so the cursor stays while typing.
    void setText(const QString& modelText);
    const NodeLayout& nodeLayout() const { return m_layout; }
    void setNodeLayout(const NodeLayout& layout);
    // The map's zoom and pan: view point = canvas point × scale + pan.
    void setViewTransform(double scale, QPointF pan);

    QPlainTextEdit* field() const { return m_field; }
    QSizeF currentEditorSize() const { return m_editorSize; }
    void focusField();

    std::function<void(const QString&)> onTextChanged; // model form
    std::function<void()> onCommit;
    std::function<void()> onTab;
    std::function<void()> onShiftTab;
    std::function<void()> onEnter;
    std::function<void()> onCommandEnter;
    std::function<void(int)> onOptionEnter; // cursor position in the editor's text
    std::function<void()> onCancel;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void place();
    void fieldTextChanged();
    // editorSize as the text grows key by key: a very long line's unchanged pieces keep their widths.
    QSizeF grownEditorSize(const QString& modelText);
    bool handleKey(int key, Qt::KeyboardModifiers modifiers);

    QPlainTextEdit* m_field;
    NodeLayout m_layout;
    QSizeF m_editorSize;
    double m_scale = 1.0;
    QPointF m_pan;
    bool m_isOpen = false;
    bool m_isSettingText = false;
    QString m_modelText; // the field's text in the model's form
    // Widths of the pieces of very long lines, by their text; a view finds one without a copy.
    struct PieceHash {
        using is_transparent = void;
        size_t operator()(QStringView piece) const noexcept { return qHash(piece); }
    };
    struct PieceEqual {
        using is_transparent = void;
        bool operator()(QStringView a, QStringView b) const noexcept { return a == b; }
    };
    struct PieceWidth {
        double width;
        quint64 round; // the last measuring that used it
    };
    std::unordered_map<QString, PieceWidth, PieceHash, PieceEqual> m_pieceWidths;
    quint64 m_measureRound = 0;
    int m_pieceDepth = -1;
};
