#include "ManuscriptExports.h"

#include "AppContext.h"
#include "ContentView.h"
#include "DocumentWindow.h"
#include "Preferences.h"
#include "UserPrompts.h"

#include "delivery/DeliveryPreferences.h"
#include "documents/OpenDocument.h"
#include "documents/Opml.h"
#include "documents/SermonFile.h"

#include "core/SermonDocument.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QPageSize>
#include <QPrintDialog>
#include <QPrinter>
#include <QSaveFile>
#include <QStandardPaths>

namespace ManuscriptExports {

namespace {

const SermonDocument& sermonOf(DocumentWindow* window)
{
    // What is being typed belongs on paper too.
    if (window->contentView())
        window->contentView()->commitPendingEdit(true);
    return *window->openDocument()->document();
}

DeliveryManuscript::Settings settingsOf(const AppContext& context)
{
    return settingsFrom(context.preferences ? context.preferences->delivery() : nullptr);
}

void showError(DocumentWindow* window, const AppContext& context, const QString& message)
{
    if (context.prompts)
        context.prompts->showError(window, message);
}

QString exportFailure(const QString& path, const QString& why)
{
    return QStringLiteral("\u201c%1\u201d could not be written. %2").arg(QFileInfo(path).fileName(), why);
}

} // namespace

QSizeF defaultPaper()
{
    const bool inches = QLocale().measurementSystem() == QLocale::ImperialUSSystem;
    return QPageSize(inches ? QPageSize::Letter : QPageSize::A4).size(QPageSize::Point);
}

DeliveryManuscript::Settings settingsFrom(const DeliveryPreferences* preferences)
{
    if (!preferences)
        return {};
    return {preferences->fontSize(), preferences->lineSpacing(), preferences->textWidth(), preferences->wpm()};
}

bool writePdf(const SermonNode& root, const SermonMetadata& metadata, const QString& path,
              const DeliveryManuscript::Settings& settings, QString* why)
{
    const auto manuscript = DeliveryManuscript::prepare(root, metadata, settings, defaultPaper(), QDate::currentDate());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *why = file.errorString();
        return false;
    }
    if (!DeliveryManuscript::writePdf(file, manuscript)) {
        file.cancelWriting();
        *why = QStringLiteral("The manuscript could not be drawn.");
        return false;
    }
    if (!file.commit()) {
        *why = file.errorString();
        return false;
    }
    return true;
}

QString proposedPath(const DocumentWindow& window, const QString& suffix)
{
    const OpenDocument& document = *window.openDocument();
    const QString folder = document.isUntitled() ? QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)
                                                 : QFileInfo(document.filePath()).absolutePath();
    return QDir(folder).filePath(QFileInfo(document.displayName()).completeBaseName() + QLatin1Char('.') + suffix);
}

void print(DocumentWindow* window, const AppContext& context)
{
    const SermonDocument& sermon = sermonOf(window);
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(sermon.root()->text());
    printer.setPageSize(QPageSize(defaultPaper(), QPageSize::Point));
    printer.setFullPage(true);
    QPrintDialog dialog(&printer, window);
    if (dialog.exec() != QDialog::Accepted)
        return;
    // The manuscript is cut for the paper chosen in the dialog.
    printer.setFullPage(true);
    printer.setPageMargins(QMarginsF(0, 0, 0, 0));
    const QSizeF paper = printer.pageLayout().fullRectPoints().size();
    const auto manuscript = DeliveryManuscript::prepare(*sermon.root(), sermon.metadata(), settingsOf(context), paper,
                                                        QDate::currentDate());
    if (!DeliveryManuscript::paint(printer, manuscript))
        showError(window, context, QStringLiteral("The manuscript could not be printed."));
}

void exportPdf(DocumentWindow* window, const AppContext& context)
{
    if (!context.prompts)
        return;
    const SermonDocument& sermon = sermonOf(window);
    const QString path = context.prompts->chooseExportPath(window, proposedPath(*window, QStringLiteral("pdf")),
                                                           QStringLiteral("PDF"), QStringLiteral("pdf"));
    if (path.isEmpty())
        return;
    QString why;
    if (!writePdf(*sermon.root(), sermon.metadata(), path, settingsOf(context), &why))
        showError(window, context, exportFailure(path, why));
}

void exportOpml(DocumentWindow* window, const AppContext& context)
{
    if (!context.prompts)
        return;
    const SermonDocument& sermon = sermonOf(window);
    const QString path = context.prompts->chooseExportPath(window, proposedPath(*window, QStringLiteral("opml")),
                                                           QStringLiteral("OPML outlines"), QStringLiteral("opml"));
    if (path.isEmpty())
        return;
    QString why;
    if (!SermonFile::write(path, Opml::write(*sermon.root()), &why))
        showError(window, context, why);
}

} // namespace ManuscriptExports
