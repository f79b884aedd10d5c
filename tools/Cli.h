#pragma once
// The commands of brindlemark-cli. runCli() takes the arguments after the program's name, writes
// results to `out` and failures to `err`, and returns the exit status: 0 done, 1 failed (or, for
// `check`, something found), 2 bad usage, 130 stopped. `progressOnTerminal` lets long runs show a
// progress line on `err`.

#include <QStringList>
#include <QTextStream>

int runCli(const QStringList& arguments, QTextStream& out, QTextStream& err, bool progressOnTerminal = false);

// The text of `--help`.
QString cliUsage();

// The shortest decimal text that reads back to the same float.
QString shortestFloatText(float value);
