#include "AppIcon.h"

#include <QDir>

namespace AppIcon {

QIcon make()
{
    QIcon icon;
    const QDir sizes(QStringLiteral(":/icons"));
    for (const QString& size : sizes.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        icon.addFile(sizes.filePath(size + QStringLiteral("/app.orantium.Orantium.png")));
    return icon;
}

} // namespace AppIcon
