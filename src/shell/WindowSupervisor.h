#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <functional>

class DocumentManager;
class NewSermonSheet;
class Preferences;
class RecoveryOffer;
class WelcomeView;

// Keeps the rule that the application never shows an empty screen: the welcome window stands in
// while no document (or new-sermon) window is visible, closing it alone quits, and closing the
// last document brings it back. Owns the welcome, new-sermon and about windows.
class WindowSupervisor : public QObject {
    Q_OBJECT
public:
    WindowSupervisor(DocumentManager* documents, Preferences* preferences, QObject* parent = nullptr);
    ~WindowSupervisor() override;

    QWidget* welcomeWindow() const { return m_welcome; }
    QWidget* newSermonWindow() const { return m_newSermon; }
    QWidget* aboutWindow() const { return m_about; }
    WelcomeView* welcomeView() const { return m_welcomeView; }
    RecoveryOffer* recoveryOffer() const { return m_recoveryOffer; }
    NewSermonSheet* newSermonSheet() const { return m_newSermonSheet; }

    bool isLaunching() const { return m_isLaunching; }
    // Start-up is over (command-line files are open): from now on the welcome window may show.
    void finishLaunching();

    void showWelcome();
    void showNewSermon();
    void showAbout();

    // Visible document and new-sermon windows, other than `excluding`.
    int visibleWindowCount(const QWidget* excluding = nullptr) const;
    // Welcome out if something counts, else welcome in; nothing while launching.
    void update();

    // Ends the application; tests replace it.
    std::function<void()> onQuit;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void windowClosed(const QPointer<QWidget>& window, const QString& identifier);
    static void present(QWidget* window);
    void refreshRecoveryOffer();

    DocumentManager* m_documents;
    Preferences* m_preferences;
    QPointer<QWidget> m_welcome;
    QPointer<QWidget> m_newSermon;
    QPointer<QWidget> m_about;
    // The window that had the keyboard when welcome was asked for over it.
    QPointer<QWidget> m_returnKeyboardTo;
    WelcomeView* m_welcomeView = nullptr;
    RecoveryOffer* m_recoveryOffer = nullptr;
    NewSermonSheet* m_newSermonSheet = nullptr;
    bool m_isLaunching = true;
};
