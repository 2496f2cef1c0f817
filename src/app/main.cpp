#include "shell/CommandLine.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

int main(int argc, char* argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));

    QTextStream out(stdout);
    QTextStream err(stderr);
    if (CommandLine::handles(arguments))
        return CommandLine::run(arguments, out, err);

    // The windows come with the application shell; until then only the commands run.
    QCoreApplication app(argc, argv);
    err << "orantium: the application window is not available yet\n" << CommandLine::usage();
    return 2;
}
