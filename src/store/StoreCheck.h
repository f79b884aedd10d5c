#pragma once
// A look over a whole data folder for anything that does not fit: index files that cannot be
// read, securities whose data file is missing or broken, records out of order, doubled dates or
// dates that name no day. Findings that lose nothing and that a cut-short write may leave behind
// (a lagging EMASTER or index date, bytes past a file's count, a file no index lists, a leftover
// temporary file) are notes, not problems.

#include <QString>

#include <vector>

namespace StoreCheck {

struct Finding {
    bool problem = true;  // false for a note
    QString text;
};

std::vector<Finding> checkFolder(const QString& folderPath);

} // namespace StoreCheck
