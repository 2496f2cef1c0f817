#pragma once

#include "AppContext.h"

#include "core/RewriteCheck.h"

#include <QMainWindow>

#include <memory>

class AppMenus;
class ContentView;
class DocumentToolbar;
class MindMapCanvas;
class OpenDocument;
class RewriteBar;
class SermonDocument;

// One open sermon in its own window: toolbar, content, menu bar, and the questions asked when it
// is saved or closed.
class DocumentWindow : public QMainWindow {
    Q_OBJECT
public:
    DocumentWindow(std::unique_ptr<OpenDocument> document, AppContext context, QWidget* parent = nullptr);
    ~DocumentWindow() override;

    OpenDocument* openDocument() const { return m_document.get(); }
    SermonDocument* document() const;
    ContentView* contentView() const { return m_content; }
    MindMapCanvas* canvas() const;
    DocumentToolbar* toolbar() const { return m_toolbar; }
    AppMenus* menus() const { return m_menus; }
    RewriteBar* rewriteBar() const { return m_rewriteBar; }
    const AppContext& context() const { return m_context; }

    // Save: to the file, or through Save As for an untitled sermon. False when cancelled or failed
    // (the failure has been shown; the document stays open and modified). While saving would
    // rewrite a file written elsewhere, Save asks for a new file, as "Save as a New Sermon…".
    bool save();
    bool saveAs();
    // Writes the file again where it was, after it was moved or deleted.
    bool saveHereAgain();
    // The two answers to a file that saving would rewrite: a new sermon file beside it, the
    // original untouched; or this file in sermon form, after a copy of the original is kept.
    bool saveAsNewSermon();
    bool rewriteFile();
    // Whether the window may go: saves a titled document, asks about an untitled one with changes.
    bool prepareToClose();
    // The application ends with no one to ask: saves the sermon if it can be saved in place, else
    // keeps a copy to offer at the next start. False if its changes could be kept nowhere.
    bool keepForExit();
    // Closes once prepareToClose has said yes, without asking again.
    void closeWithoutAsking();

    void showFileSettings();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void updateTitle();
    // The status bar's notice: a file gone or read-only, or an autosave that failed.
    void updateNotice();
    void showError(const QString& message);
    void onFileChangedOnDisk();
    // Asks whose version of a file changed by another program stays, and makes it so; false
    // when that failed (and was shown).
    bool resolveDiskChange();
    bool saveAsFrom(const QString& proposed);
    // Compares the file with what saving would write, and holds the autosave if words would change.
    void checkRewrite();
    // An edit while the rewrite is held brings a closed bar back.
    void noteEditWhileHeld();

    std::unique_ptr<OpenDocument> m_document;
    AppContext m_context;
    ContentView* m_content;
    DocumentToolbar* m_toolbar;
    AppMenus* m_menus;
    QString m_autosaveError;
    RewriteBar* m_rewriteBar;
    RewriteCheck::Result m_rewriteCheck;
    bool m_isClosing = false;
    bool m_isAskingAboutDisk = false;
};
