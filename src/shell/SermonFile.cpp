#include "SermonFile.h"

#include "DiskWrite.h"

#include <QFile>
#include <QFileInfo>

namespace SermonFile {

std::optional<SermonContents> read(const QString& path, QString* error)
{
    const QFileInfo info(path);
    QString why;
    if (info.isDir()) {
        why = QStringLiteral("It is a folder, not a file.");
    } else {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            why = !info.exists() ? QStringLiteral("The file doesn\u2019t exist.")
                                 : QStringLiteral("You don\u2019t have permission to view it.");
        } else {
            SermonReadError readError{};
            auto contents = readSermon(file.readAll(), &readError);
            if (contents)
                return contents;
            why = describe(readError);
        }
    }
    if (error)
        *error = openFailureMessage(path, why);
    return std::nullopt;
}

bool write(const QString& path, const QByteArray& bytes, QString* error)
{
    QString why;
    if (DiskWrite::replaceFile(path, bytes, &why))
        return true;
    if (error)
        *error = saveFailureMessage(path, why);
    return false;
}

QString openFailureMessage(const QString& path, const QString& why)
{
    return QStringLiteral("The document \u201c%1\u201d could not be opened. %2").arg(QFileInfo(path).fileName(), why);
}

QString saveFailureMessage(const QString& path, const QString& why)
{
    return QStringLiteral("The document \u201c%1\u201d could not be saved. %2").arg(QFileInfo(path).fileName(), why);
}

} // namespace SermonFile
