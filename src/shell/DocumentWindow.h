#pragma once

#include <QMainWindow>

#include <memory>

class MindMapCanvas;
class SermonDocument;
class UndoManager;

// One open sermon in its own window, shown as the mind map.
class DocumentWindow : public QMainWindow {
    Q_OBJECT
public:
    DocumentWindow(std::unique_ptr<SermonDocument> document, const QString& filePath, QWidget* parent = nullptr);
    ~DocumentWindow() override;

    // Reads a file into a new window; on failure gives nothing and says why in `error`.
    static DocumentWindow* open(const QString& path, QString* error);

    SermonDocument* document() const { return m_document.get(); }
    MindMapCanvas* canvas() const { return m_canvas; }
    const QString& filePath() const { return m_filePath; }

private:
    std::unique_ptr<SermonDocument> m_document;
    std::unique_ptr<UndoManager> m_undoManager;
    QString m_filePath;
    MindMapCanvas* m_canvas = nullptr;
};
