#pragma once

#include "AppContext.h"

#include <QList>
#include <QObject>
#include <QPointer>

class DocumentWindow;
class SermonDocument;
class QWidget;

#include <memory>

// Stands where a desktop's document system would: opens files into windows (raising a window
// that already shows the file), makes new sermons, keeps the recent list, and closes everything
// on quit with the questions each window asks.
class DocumentManager : public QObject {
    Q_OBJECT
public:
    // `context.documents` is filled in with this manager.
    explicit DocumentManager(AppContext context, QObject* parent = nullptr);
    ~DocumentManager() override;

    void setSupervisor(WindowSupervisor* supervisor) { m_context.supervisor = supervisor; }
    const AppContext& context() const { return m_context; }

    // Opens a file in a window and shows it, or raises the window that has it. A file that can't
    // be read is reported (over `parent`) and opens nothing.
    DocumentWindow* open(const QString& path, QWidget* parent = nullptr);
    // Asks for a file and opens it.
    DocumentWindow* openWithPanel(QWidget* parent);
    // A new, untitled sermon made from the pending creation, if any, and shown.
    DocumentWindow* newDocument();
    // The document a new window starts with: the pending title and metadata, or "New Sermon".
    static std::unique_ptr<SermonDocument> makeNewSermon();

    QList<DocumentWindow*> windows() const;
    DocumentWindow* windowFor(const QString& path) const;

    // Closes every document window, each asking about its changes; false if one refused.
    bool closeAll();
    // closeAll, then ends the application.
    void quit();

signals:
    void windowOpened(DocumentWindow* window);

private:
    DocumentWindow* adopt(DocumentWindow* window);

    AppContext m_context;
    QList<QPointer<DocumentWindow>> m_windows;
};
