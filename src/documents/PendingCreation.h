#pragma once

#include "core/SermonMetadata.h"

#include <QString>

#include <mutex>
#include <optional>

// Carries a new sermon's title and metadata from the new-sermon sheet to the making of the
// document. One for the process; each access holds the lock, since the maker may run elsewhere.
class PendingCreation {
public:
    struct Pending {
        QString title;
        SermonMetadata metadata;
    };

    static PendingCreation& shared();

    // Replaces any record left from before.
    void store(Pending pending);
    // Takes the record and clears it in one step.
    std::optional<Pending> take();
    void clear();

private:
    std::optional<Pending> m_pending;
    std::mutex m_lock;
};
