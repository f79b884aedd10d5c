// brindlemark-cli: the command-line companion of Brindlemark v6.
#include "Cli.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    const int status = runCli(arguments, out, err);
    out.flush();
    err.flush();
    return status;
}
