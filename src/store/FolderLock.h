#pragma once
// One writing program at a time per data folder. A run that writes a folder (the writer between
// OpenFolder and CloseFolder, a download over its whole walk) holds the folder's lock; a second
// program that wants to write the same folder meanwhile is refused with a message that says who
// holds it. Within one program the lock is shared: the screens and runs of one user's session
// write one after the other, as ever.
//
// The lock is the system's advisory lock on the file "brindlemark.lck" in the folder, which stays
// there between runs. The system drops the lock when its holder ends in whatever way (a crash,
// kill -9), so there is never a stale lock to clean up. A folder where no file can be made (a
// read-only medium) is not locked: nothing can be written there anyway.

#include <QString>

class FolderLock {
public:
    // Takes the lock of `folder`, or raises a Failure (source "<className>::<operation>") naming
    // the program that holds it.
    FolderLock(const QString& folder, const char* className, const char* operation);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    static inline const QString FileName = QStringLiteral("brindlemark.lck");

private:
    QString key_;
};
