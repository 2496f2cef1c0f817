#pragma once

#include <QString>

// Whether a check for updates is possible and how to start one. A build without an update feed
// (every distribution package) can't check, and the menu item stays off.
class UpdateService {
public:
    // `feedURL` empty: no feed. `started` false in test runs, which never check.
    UpdateService(QString feedURL, bool started)
        : m_feedURL(std::move(feedURL))
        , m_started(started)
    {
    }

    bool canCheckForUpdates() const { return m_started && !m_feedURL.isEmpty(); }
    // Opens the feed's page; there is no updater of our own.
    void checkForUpdates() const;

private:
    QString m_feedURL;
    bool m_started;
};
