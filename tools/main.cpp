// brindlemark-cli: the command-line companion of Brindlemark v6.
#include "Cli.h"
#include "DownloadCommands.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>

#if __has_include(<unistd.h>)
#include <unistd.h>
#else
#define isatty(fd) 0
#define STDOUT_FILENO 1
#define STDERR_FILENO 2
#endif

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    // Ctrl+C asks a run to stop after the security in hand.
    std::signal(SIGINT, [](int) { requestStop(); });
    const bool terminal = isatty(STDOUT_FILENO) && isatty(STDERR_FILENO);
    const int status = runCli(arguments, out, err, terminal);
    out.flush();
    err.flush();
    return status;
}
