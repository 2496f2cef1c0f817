#pragma once

#include <QString>

// A file name made from a sermon's title: no path or shell-hostile characters, no leading dots,
// never empty ("Untitled"), and short enough that with ".md" it fits the 255 bytes a file name
// may have, cut between whole characters.
QString safeFileName(const QString& title);
