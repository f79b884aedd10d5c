#pragma once
// brindlemark-cli's export.

#include <QStringList>
#include <QTextStream>

// `export FOLDER DEST [--merge] [--symbols S,...] [--iso]`: the CSV files of the Convert To CSV
// File window, for every security of the folder in the store's order (or the symbols given).
// One line per security on `out`. Exit status 0 done, 1 failed (the cause on `err`).
int exportCsv(const QString& folder, const QString& destination, const QStringList& symbols, bool merge,
              bool iso, QTextStream& out, QTextStream& err);
