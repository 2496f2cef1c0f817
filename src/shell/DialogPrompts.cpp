#include "DialogPrompts.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

namespace {
const QString sermonFilter = QStringLiteral("Sermons (*.md *.markdown);;OPML outlines (*.opml);;All files (*)");
const QString opmlFilter = QStringLiteral("OPML outlines (*.opml);;All files (*)");

QString documentsFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

// Gives the keyboard back to the window a dialog came from, so that its shortcuts work at once
// even where no window manager hands the activation back.
void reactivate(QWidget* parent)
{
    if (parent && parent->window()->isVisible())
        parent->window()->activateWindow();
}
} // namespace

SaveChoice DialogPrompts::askToSaveChanges(QWidget* parent, const QString& displayName)
{
    QMessageBox box(parent);
    box.setIcon(QMessageBox::Warning);
    box.setTextFormat(Qt::PlainText); // file names are shown as they stand, never as markup
    box.setWindowTitle(QStringLiteral("Orantium"));
    box.setText(
        QStringLiteral("Do you want to save the changes made to the document \u201c%1\u201d?").arg(displayName));
    box.setInformativeText(QStringLiteral("Your changes will be lost if you don\u2019t save them."));
    QPushButton* save = box.addButton(QStringLiteral("Save\u2026"), QMessageBox::AcceptRole);
    QPushButton* dontSave = box.addButton(QStringLiteral("Don\u2019t Save"), QMessageBox::DestructiveRole);
    box.addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(save);
    box.exec();
    reactivate(parent);
    if (box.clickedButton() == save)
        return SaveChoice::save;
    if (box.clickedButton() == dontSave)
        return SaveChoice::dontSave;
    return SaveChoice::cancel;
}

QString DialogPrompts::chooseSavePath(QWidget* parent, const QString& proposedPath)
{
    // The dialog adds ".md" itself, so that its question about replacing a file asks about the
    // name that will really be written.
    QFileDialog dialog(parent, QStringLiteral("Save"), proposedPath, sermonFilter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setDefaultSuffix(QStringLiteral("md"));
    const bool chosen = dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty();
    reactivate(parent);
    return chosen ? dialog.selectedFiles().constFirst() : QString();
}

QString DialogPrompts::chooseFileToOpen(QWidget* parent)
{
    const QString path = QFileDialog::getOpenFileName(parent, QStringLiteral("Open"), documentsFolder(), sermonFilter);
    reactivate(parent);
    return path;
}

QString DialogPrompts::chooseExportPath(QWidget* parent, const QString& proposedPath, const QString& kind,
                                        const QString& suffix)
{
    QFileDialog dialog(parent, QStringLiteral("Export"), proposedPath,
                       QStringLiteral("%1 (*.%2);;All files (*)").arg(kind, suffix));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setDefaultSuffix(suffix);
    const bool chosen = dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty();
    reactivate(parent);
    return chosen ? dialog.selectedFiles().constFirst() : QString();
}

QString DialogPrompts::chooseOpmlToImport(QWidget* parent)
{
    const QString path =
        QFileDialog::getOpenFileName(parent, QStringLiteral("Import OPML"), documentsFolder(), opmlFilter);
    reactivate(parent);
    return path;
}

void DialogPrompts::showError(QWidget* parent, const QString& message)
{
    QMessageBox box(parent);
    box.setIcon(QMessageBox::Warning);
    box.setTextFormat(Qt::PlainText);
    box.setWindowTitle(QStringLiteral("Orantium"));
    box.setText(message);
    box.exec();
    reactivate(parent);
}

DiskChoice DialogPrompts::askAboutChangedFile(QWidget* parent, const QString& displayName)
{
    QMessageBox box(parent);
    box.setIcon(QMessageBox::Warning);
    box.setTextFormat(Qt::PlainText);
    box.setWindowTitle(QStringLiteral("Orantium"));
    box.setText(QStringLiteral("The file \u201c%1\u201d has been changed by another application.").arg(displayName));
    box.setInformativeText(QStringLiteral("Keep your version to write it over the other one, or reload the file. "
                                          "Reloading can be undone."));
    QPushButton* keep = box.addButton(QStringLiteral("Keep My Version"), QMessageBox::AcceptRole);
    QPushButton* reload = box.addButton(QStringLiteral("Reload"), QMessageBox::DestructiveRole);
    box.setDefaultButton(keep);
    box.setEscapeButton(keep);
    box.exec();
    reactivate(parent);
    return box.clickedButton() == reload ? DiskChoice::reload : DiskChoice::keepMine;
}
