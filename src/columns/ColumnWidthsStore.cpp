#include "ColumnWidthsStore.h"

ColumnWidthsStore::ColumnWidthsStore(QObject* parent)
    : QObject(parent)
{
}

ColumnWidthsStore::ColumnWidthsStore(Read read, Write write, QObject* parent)
    : QObject(parent)
    , m_read(std::move(read))
    , m_write(std::move(write))
{
}

ColumnWidthsConfig ColumnWidthsStore::config() const
{
    return ColumnWidthsConfig::fromRawValueOrDefault(m_read ? m_read() : m_memory);
}

void ColumnWidthsStore::setConfig(const ColumnWidthsConfig& config)
{
    const QString text = config.rawValue();
    if (m_write) {
        // The store tells of the change itself, through noteChanged.
        m_write(text);
        return;
    }
    if (text == m_memory)
        return;
    m_memory = text;
    emit changed();
}

void ColumnWidthsStore::noteChanged()
{
    emit changed();
}
