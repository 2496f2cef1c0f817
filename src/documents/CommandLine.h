#pragma once

#include "core/SermonDocument.h"

#include <QStringList>
#include <QTextStream>

#include <functional>

// The commands that work without a display: export, import and stats. `run` returns the exit
// status (0 done, 1 unreadable file or failed write, 2 wrong usage, 3 `export --check`: saving
// would change the file); `handles` tells whether the arguments are one, or hold an option
// nobody knows.
namespace CommandLine {

// Writes the printed manuscript of a sermon to a PDF file, or says why not in `why`. Drawing
// needs fonts, which this library doesn't link, so the program hands it in.
using PdfWriter = std::function<bool(const SermonContents& contents, const QString& path, QString* why)>;

bool handles(const QStringList& arguments);
// True when the command draws (a PDF): the program makes a GUI application on the offscreen
// platform first.
bool needsFonts(const QStringList& arguments);
int run(const QStringList& arguments, QTextStream& out, QTextStream& err, const PdfWriter& writePdf = {});
QString usage();

} // namespace CommandLine
