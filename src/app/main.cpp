#include "shell/CommandLine.h"
#include "shell/DocumentWindow.h"

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>
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
        return CommandLine::run(arguments, out, err);
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Orantium"));
    QApplication::setOrganizationName(QStringLiteral("Orantium"));
    QApplication::setStyle(QStringLiteral("Fusion"));

    int opened = 0;
    for (const QString& path : arguments.mid(1)) {
        QString error;
        if (DocumentWindow* window = DocumentWindow::open(path, &error)) {
            window->show();
            ++opened;
        } else {
            QMessageBox::critical(nullptr, QStringLiteral("Orantium"),
                                  QStringLiteral("The document \u201c%1\u201d could not be opened. %2")
                                      .arg(QFileInfo(path).fileName(), error));
        }
    }
    if (opened == 0) {
        QTextStream(stderr) << CommandLine::usage();
        return 2;
    }
    return app.exec();
}
