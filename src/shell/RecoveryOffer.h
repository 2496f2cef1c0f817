#pragma once

#include "documents/RecoveryStore.h"

#include <QWidget>

#include <functional>

class QVBoxLayout;

// On the welcome window: the untitled sermons an earlier run left unsaved (a crash, a power cut,
// a logout), each to restore or let go. Hidden when there are none.
class RecoveryOffer : public QWidget {
    Q_OBJECT
public:
    explicit RecoveryOffer(QWidget* parent = nullptr);

    // Shows these copies, newest first.
    void setCopies(const QList<RecoveryStore::Copy>& copies);
    const QList<RecoveryStore::Copy>& copies() const { return m_copies; }

    std::function<void(const QString& path)> onRestore;
    std::function<void(const QString& path)> onDiscard;

private:
    QList<RecoveryStore::Copy> m_copies;
    QVBoxLayout* m_rows;
};
