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
    // Ctrl+C asks a download to stop after the security or day in hand; any other command it ends
    // at once, as the store's writes are whole or not there.
    if (arguments.value(0) == QLatin1String("download"))
        std::signal(SIGINT, [](int) { requestStop(); });
    const bool terminal = isatty(STDOUT_FILENO) && isatty(STDERR_FILENO);
    int status = runCli(arguments, out, err, terminal);
    out.flush();
    if (out.status() != QTextStream::Ok || std::fflush(stdout) != 0 || std::ferror(stdout)) {
        // A full disk or a closed pipe: what was asked for did not all arrive.
        err << "brindlemark-cli: the output could not be written whole\n";
        status = status == 0 ? 1 : status;
    }
    err.flush();
    return status;
}
