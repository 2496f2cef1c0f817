#include "DocumentWindow.h"

#include "core/SermonDocument.h"
#include "core/UndoManager.h"
#include "map/MindMapCanvas.h"

#include <QFile>
#include <QFileInfo>

DocumentWindow::DocumentWindow(std::unique_ptr<SermonDocument> document, const QString& filePath, QWidget* parent)
    : QMainWindow(parent), m_document(std::move(document)), m_undoManager(std::make_unique<UndoManager>()),
      m_filePath(filePath)
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_undoManager->setLevelsOfUndo(SermonDocument::undoLimit);
    m_canvas = new MindMapCanvas(m_document.get(), this);
    setCentralWidget(m_canvas);
    setWindowTitle(QFileInfo(filePath).fileName());
    resize(1200, 800);
    m_canvas->setFocus();
}

DocumentWindow::~DocumentWindow() = default;

DocumentWindow* DocumentWindow::open(const QString& path, QString* error)
{
    const QFileInfo info(path);
    if (info.isDir()) {
        *error = QStringLiteral("It is a folder, not a file.");
        return nullptr;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return nullptr;
    }
    SermonReadError why{};
    auto contents = readSermon(file.readAll(), &why);
    if (!contents) {
        *error = describe(why);
        return nullptr;
    }
    return new DocumentWindow(std::make_unique<SermonDocument>(std::move(*contents)), info.absoluteFilePath());
}
