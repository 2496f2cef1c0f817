#pragma once

#include <QString>

// A file name made from a sermon's title: no path or shell-hostile characters, no leading dots,
// never empty ("Untitled").
QString safeFileName(const QString& title);
