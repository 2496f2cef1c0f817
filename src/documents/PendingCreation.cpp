#include "PendingCreation.h"

PendingCreation& PendingCreation::shared()
{
    static PendingCreation instance;
    return instance;
}

void PendingCreation::store(Pending pending)
{
    std::lock_guard guard(m_lock);
    m_pending = std::move(pending);
}

std::optional<PendingCreation::Pending> PendingCreation::take()
{
    std::lock_guard guard(m_lock);
    std::optional<Pending> pending = std::move(m_pending);
    m_pending.reset();
    return pending;
}

void PendingCreation::clear()
{
    std::lock_guard guard(m_lock);
    m_pending.reset();
}
