#include "UpdateService.h"

#include <QDesktopServices>
#include <QUrl>

void UpdateService::checkForUpdates() const
{
    if (canCheckForUpdates())
        QDesktopServices::openUrl(QUrl(m_feedURL));
}
