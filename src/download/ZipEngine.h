#pragma once
// The extraction engine behind ZipExtractor, on libzip. It takes one option record and one record
// of user functions, does one run over one archive and answers a result number. Everything it has
// to say or ask goes through the user functions: text through print, the overwrite question
// through replace, passwords through password, listing rows through message.
//
// Safety, because the archive comes from the network:
// - a member whose name would land outside the extraction folder (an absolute path, a drive
//   letter, a ".." part, with either kind of slash) is refused, and so is a symbolic link member;
//   the others are still extracted and the run ends with a warning;
// - a folder on the way that is a link, or a file where a folder is needed, refuses the member; a
//   link in the place of the file itself is replaced, never written through;
// - a member is written to a temporary file beside its target and renamed over it only when all
//   of its bytes came out and their CRC matched;
// - before anything is written, the declared sizes of the members to write are held against the
//   free space of the folder; a member that inflates past its declared size is stopped.

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

// Result numbers, as the usual unzip tools give them.
namespace ZipResult {
inline constexpr int Ok = 0;
inline constexpr int Warning = 1;        // some members were passed over (unsafe name, link, password)
inline constexpr int ArchiveError = 2;   // a damaged member: CRC mismatch, truncated, inflated past its size
inline constexpr int SevereError = 3;    // the extraction folder cannot be made
inline constexpr int NotFound = 9;       // no archive at the path, or not an archive
inline constexpr int NoMatch = 11;       // no member matched what was asked for
inline constexpr int DiskFull = 50;      // the members do not fit, or a write failed
inline constexpr int Cancelled = 80;     // the user stopped the run
inline constexpr int BadPassword = 82;   // nothing came out because of missing or wrong passwords
}

// Answers of the replace function.
namespace ZipReplace {
inline constexpr int Leave = 100;        // leave this file
inline constexpr int All = 103;          // overwrite this one and all that follow
inline constexpr int Overwrite = 102;    // overwrite this file
inline constexpr int None = 104;         // leave this one and all that follow
}

// The option record, in its published order.
struct ZipOptionRecord {
    int32_t ExtractOnlyNewer = 0;   // only when newer than the file on disk (or no file there)
    int32_t SpaceToUnderScore = 0;
    int32_t PromptOverwrite = 0;
    int32_t Quiet = 2;              // 0 all messages, 1 warnings and errors, 2 none
    int32_t WriteToStdOut = 0;      // the members' bytes go to print, nothing is written
    int32_t TestZip = 0;
    int32_t ExtractList = 0;        // 1: list only
    int32_t ExtractNewer = 0;       // freshen: only files that exist and are older
    int32_t DisplayComment = 0;
    int32_t HonorDirectories = 1;
    int32_t OverWriteFiles = 1;
    int32_t ConvertCRtoCRLF = 0;
    int32_t Verbose = 0;
    int32_t CaseSensitive = 1;
    int32_t Privilege = 0;          // non-zero: the stored permission bits, never set-uid/set-gid/sticky
    QString ZipFileName;
    QString ExtractDir;             // empty: the current folder
};

// The user-function record, in its published order. Each may be null.
struct ZipUserFunctions {
    int (*print)(const char* buffer, unsigned long size) = nullptr;
    void (*sound)() = nullptr;
    int (*replace)(const char* fileName) = nullptr;
    // 0: a password is in buffer (NUL-ended, at most size - 1 bytes); 1: none given.
    int (*password)(char* buffer, int size, const char* prompt, const char* name) = nullptr;
    void (*message)(unsigned long uncompressed, unsigned long compressed, unsigned factor, unsigned month,
                    unsigned day, unsigned year, unsigned hour, unsigned minute, char c, const char* fileName,
                    const char* method, unsigned long crc, char encrypted) = nullptr;
    int (*service)(const char* name, unsigned long size) = nullptr;
    unsigned long totalSizeComp = 0, totalSize = 0, compFactor = 0, numMembers = 0;
    uint16_t cchComment = 0;
};

// One run over one archive.
int SingleEntryUnzip(const ZipOptionRecord& options, ZipUserFunctions& functions);

// The bytes of the first file member (folders passed over) of an archive held in memory whose
// name ends with `suffix` (any case), else of its first file member, when all of them came out
// with a matching CRC. Empty when the bytes are no archive, it holds no file, the file is a link,
// encrypted or damaged, or declares or inflates to more than `maxBytes`. Nothing is written to disk.
std::optional<QByteArray> FirstMemberBytes(const QByteArray& archive, qint64 maxBytes, const QString& suffix = {});
