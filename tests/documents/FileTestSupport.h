#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

// The bytes of a file; empty when it can't be read.
inline QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Writes a file whole; false when it couldn't be.
inline bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}
