#pragma once
// Every byte the store puts on disk goes through here. Files are grown or patched in place with
// writeParts(), replaced whole through a temporary file and an atomic rename with replaceFile(),
// and removed with removeFile(). Each of these steps counts as one write, so that tests can make
// the k-th write fail, or stop the store dead there as a crash would.

#include <QByteArray>
#include <QString>

#include <memory>
#include <utility>
#include <vector>

class QFile;

namespace StoreFiles {

// Size and modification time of a file, to tell whether it changed since it was last seen.
struct Stamp {
    qint64 size = -1;  // -1: no such file
    qint64 modified = 0;
    quint64 inode = 0;  // a file replaced through a rename is another file
    bool ownerWritable = false;
    bool exists() const { return size >= 0; }
    bool operator==(const Stamp&) const = default;
};
Stamp stamp(const QString& path);

// The names of what a folder holds other than folders (files, links to files, pipes, ...), in no
// particular order.
QStringList fileNames(const QString& folder);

// Whole file; raises Failure (FileNotFound) when it cannot be read, and Failure when it is not a
// regular file (a pipe, a device) or is longer than `maxSize`, the most its format allows.
QByteArray readAll(const QString& path, qint64 maxSize);
// A file read a piece at a time, for one too long to hold whole. Opening it checks what readAll()
// checks; it stays open, and reads the same file even when another is put in its place, until
// the object goes.
class PieceReader {
public:
    PieceReader(const QString& path, qint64 maxSize);
    ~PieceReader();
    PieceReader(const PieceReader&) = delete;
    PieceReader& operator=(const PieceReader&) = delete;
    qint64 size() const { return size_; }  // when opened
    // `length` bytes from `offset`; fewer where the file ends sooner.
    QByteArray read(qint64 offset, qint64 length) const;

private:
    QString path_;
    qint64 size_ = 0;
#ifdef Q_OS_UNIX
    int fd_ = -1;
#else
    std::unique_ptr<QFile> file_;
#endif
};

// A file whose owner may not write it (the read-only attribute on Windows). The store refuses to
// write such a file, or to replace it, even where the system would let it.
bool isReadOnly(const QString& path);
// Raises Failure naming the file when isReadOnly().
void requireWritable(const QString& path);

// Writes each part at its offset into an existing file; each part is one write. `written`, when
// given, receives the file's stamp after the writes. `knownWritable`: the caller has just seen
// that the owner may write the file (its stamp says so), and it is not asked again.
void writeParts(const QString& path, const std::vector<std::pair<qint64, QByteArray>>& parts,
                Stamp* written = nullptr, bool knownWritable = false);
// Replaces (or makes) a file through a temporary file beside it and a rename: two writes. The
// temporary file is flushed to the disk before the rename, and the folder after it.
void replaceFile(const QString& path, const QByteArray& bytes);
// Makes a new file, or overwrites `path` when it exists; one write, not flushed (see flushFiles).
void createFile(const QString& path, const QByteArray& bytes);
// Flushes files made by createFile() to the disk, and the folder that lists them.
void flushFiles(const QString& folder, const std::vector<QString>& paths);
// Removes a file; one write. A missing file is no failure.
void removeFile(const QString& path);

// The name of the temporary file that replaceFile() uses for `path`: the path and this suffix.
inline constexpr char TemporarySuffix[] = ".bmtmp";
QString temporaryName(const QString& path);

// ---- The seam for tests ----
enum class Fault {
    Fail,   // the k-th write fails with a Failure; later writes work
    Crash,  // the k-th write does not happen and neither does any later one
    Torn,   // the k-th write puts down half its bytes, then as Crash
};
// Arms the seam: the k-th write from now (1-based) meets the fault.
void armFault(int k, Fault fault);
// Disarms the seam and restarts the count.
void disarmFault();
// Writes done (or tried) since the seam was last armed or disarmed.
int writeCount();

} // namespace StoreFiles
