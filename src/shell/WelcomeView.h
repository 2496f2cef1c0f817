#pragma once

#include "documents/RecentSermonsStore.h"

#include <QWidget>

#include <functional>

class Preferences;
class QPushButton;
class QVBoxLayout;
class QLabel;
class QScrollArea;

// What the welcome window shows: the name, "New Sermon", an open button and the recent sermons.
class WelcomeView : public QWidget {
    Q_OBJECT
public:
    explicit WelcomeView(Preferences* preferences, QWidget* parent = nullptr);

    RecentSermonsStore* recents() const { return m_recents; }
    QPushButton* newSermonButton() const { return m_newSermon; }
    QPushButton* openButton() const { return m_open; }
    // The rows of the recent list, in order.
    QList<QPushButton*> recentButtons() const;

    // Reads the recent list from the preferences again.
    void refreshRecents();

    std::function<void()> onNewSermon;
    std::function<void()> onOpenFile;
    std::function<void(const QString& path)> onOpenRecent;

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void rebuildRecentRows();
    void remakeRecentRows();
    void restyle();

    Preferences* m_preferences;
    RecentSermonsStore* m_recents;
    QLabel* m_name;
    QLabel* m_tagline;
    QPushButton* m_newSermon;
    QPushButton* m_open;
    QWidget* m_recentSection;
    QLabel* m_recentHeader;
    QVBoxLayout* m_recentRows;
    QScrollArea* m_recentScroll;
    QList<RecentSermonsStore::Entry> m_shownEntries;
};
