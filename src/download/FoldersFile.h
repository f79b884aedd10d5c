#pragma once
// folders.txt, the data folders the Downloader remembers: one path per line, CR LF after each.

#include <QByteArray>
#include <QStringList>

namespace FoldersFile {

// Reads the file as delimited fields: a field ends at a comma or a line end, leading blanks are
// dropped, and a field that starts with a double quote runs to the closing quote. A path with a
// comma therefore comes back as two fields. A missing or unreadable file gives what was read.
QStringList read();
// Writes the paths, each trimmed, one per line; an empty list gives an empty file. Returns
// false when the file could not be written.
bool write(const QStringList& folders);
// Where write() puts the file.
QString writtenPath();

// The field reading on its own.
QStringList delimitedFields(const QByteArray& bytes);

} // namespace FoldersFile
