#pragma once
// What Adjust Security and Delete Data share about their list of securities: the listing of a
// folder's names, and the pick of an entry by a click or by a key that moves the selection.

#include <functional>

class QListWidget;
class QString;

// Empties `list` and fills it with the trimmed names of the securities of `folder`, the path as
// the folder list gives it. A folder that holds no store, or a store that fails half way, leaves
// the list as far as it came; nothing is reported.
void ListSecurityNames(QListWidget* list, const QString& folder);

// Runs `picked` when the user clicks an entry of `list` (also the one already selected) or moves
// the selection with a key. A selection the program changes picks nothing.
void OnSecurityPicked(QListWidget* list, std::function<void()> picked);
