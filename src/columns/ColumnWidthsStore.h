#pragma once

#include "ColumnWidthsConfig.h"

#include <QObject>
#include <QString>

#include <functional>

// Where the column widths are kept. The application hands in its preference store (read, write,
// and a call to `noteChanged` whenever the stored text changes, from any window); without one
// the widths live in memory. Either way every canvas sharing a store hears every change.
class ColumnWidthsStore : public QObject {
    Q_OBJECT
public:
    using Read = std::function<QString()>;
    using Write = std::function<void(const QString&)>;

    explicit ColumnWidthsStore(QObject* parent = nullptr);
    ColumnWidthsStore(Read read, Write write, QObject* parent = nullptr);

    // What is stored, or the default for anything that doesn't read as widths.
    ColumnWidthsConfig config() const;
    void setConfig(const ColumnWidthsConfig& config);
    void noteChanged();

signals:
    void changed();

private:
    Read m_read;
    Write m_write;
    QString m_memory;
};
