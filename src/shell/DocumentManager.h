#pragma once

#include "AppContext.h"

#include <QList>
#include <QObject>
#include <QPointer>

class DocumentWindow;
class OpenDocument;
class RecoveryStore;
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
    // A new untitled sermon made from an OPML outline (opening a ".opml" file does the same);
    // an outline that can't be read is reported and opens nothing.
    DocumentWindow* importOpml(const QString& path, QWidget* parent = nullptr);
    DocumentWindow* importOpmlWithPanel(QWidget* parent);
    // A new, untitled sermon made from the pending creation, if any, and shown.
    DocumentWindow* newDocument();
    // The document a new window starts with: the pending title and metadata, or "New Sermon".
    static std::unique_ptr<SermonDocument> makeNewSermon();

    QList<DocumentWindow*> windows() const;
    DocumentWindow* windowFor(const QString& path) const;

    // Where untitled sermons keep copies of their changes; none by default.
    void setRecoveryStore(RecoveryStore* store) { m_recovery = store; }
    RecoveryStore* recoveryStore() const { return m_recovery; }
    // A copy an earlier run left behind, opened as an untitled sermon with its changes; the copy
    // is let go once the new window keeps its own.
    DocumentWindow* restoreCopy(const QString& path, QWidget* parent = nullptr);

    // Closes every document window. Each is asked about its changes first, and only when none
    // refused do they close: a Cancel leaves every window open.
    bool closeAll();
    // closeAll, then ends the application.
    void quit();
    // The application must end now, with no one to ask (a signal from the session): named
    // sermons with changes are saved and untitled ones keep their copies. True if nothing was
    // left unkept.
    bool keepEverythingForExit();

signals:
    void windowOpened(DocumentWindow* window);

private:
    DocumentWindow* adopt(DocumentWindow* window);
    // The sermon in a file, or nothing once the reason has been shown over `parent`.
    std::unique_ptr<SermonDocument> read(const QString& path, QWidget* parent) const;
    // A document with no file yet, named after its title, keeping a recovery copy.
    std::unique_ptr<OpenDocument> untitled(std::unique_ptr<SermonDocument> document) const;

    AppContext m_context;
    QList<QPointer<DocumentWindow>> m_windows;
    RecoveryStore* m_recovery = nullptr;
};
