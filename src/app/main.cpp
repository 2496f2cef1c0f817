#include "documents/CommandLine.h"
#include "shell/AppIcon.h"
#include "shell/ManuscriptExports.h"
#include "shell/OrantiumApp.h"

#include "delivery/DeliveryPreferences.h"

#include <QApplication>
#include <QTextStream>

int main(int argc, char* argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));

    // The commands run without a display.
    if (CommandLine::handles(arguments)) {
        QTextStream out(stdout);
        QTextStream err(stderr);
        if (!CommandLine::needsFonts(arguments))
            return CommandLine::run(arguments, out, err);
        // Drawing a PDF needs fonts, never a screen.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QGuiApplication app(argc, argv);
        QGuiApplication::setApplicationName(QStringLiteral("Orantium"));
        QGuiApplication::setOrganizationName(QStringLiteral("Orantium"));
        const DeliveryPreferences preferences;
        const auto writePdf = [&](const SermonContents& contents, const QString& path, QString* why) {
            return ManuscriptExports::writePdf(*contents.root, contents.metadata, path,
                                               ManuscriptExports::settingsFrom(&preferences), why);
        };
        return CommandLine::run(arguments, out, err, writePdf);
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orantium"));
    QApplication::setOrganizationName(QStringLiteral("Orantium"));
    QApplication::setDesktopFileName(QStringLiteral("app.orantium.Orantium"));
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setWindowIcon(AppIcon::make());

    // Qt has taken its own options (-platform, -style, ...) out: what is left names files.
    OrantiumApp orantium(QCoreApplication::arguments());
    if (!orantium.start())
        return 1;
    return app.exec();
}
