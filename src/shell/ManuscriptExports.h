#pragma once

#include "delivery/DeliveryManuscript.h"

#include <QSizeF>
#include <QString>

class DeliveryPreferences;
class DocumentWindow;
class SermonNode;
struct AppContext;
struct SermonMetadata;

// A sermon leaving the app for paper and for other tools: the printed manuscript (on a
// printer or as PDF) and the OPML outline, from the File menu and the command line.
namespace ManuscriptExports {

// A4, or US Letter where the locale measures in inches.
QSizeF defaultPaper();
// The delivery view's settings, or their defaults without preferences.
DeliveryManuscript::Settings settingsFrom(const DeliveryPreferences* preferences);

// Writes the manuscript as a PDF file, whole or not at all; the reason in `why` on failure.
bool writePdf(const SermonNode& root, const SermonMetadata& metadata, const QString& path,
              const DeliveryManuscript::Settings& settings, QString* why);

// "Sermon.pdf" beside the sermon's file, or in the documents folder for an untitled one.
QString proposedPath(const DocumentWindow& window, const QString& suffix);

// The File menu's items. Each asks where (or which printer) first; a failure is shown.
void print(DocumentWindow* window, const AppContext& context);
void exportPdf(DocumentWindow* window, const AppContext& context);
void exportOpml(DocumentWindow* window, const AppContext& context);

} // namespace ManuscriptExports
