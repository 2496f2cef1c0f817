#pragma once

#include <QStringList>
#include <QTextStream>

// The commands that work without a display: export and stats. `run` returns the exit status
// (0 done, 1 unreadable file, 2 wrong usage, 3 `export --check`: saving would change the file);
// `handles` tells whether the arguments are one, or hold an option nobody knows.
namespace CommandLine {

bool handles(const QStringList& arguments);
int run(const QStringList& arguments, QTextStream& out, QTextStream& err);
QString usage();

} // namespace CommandLine
