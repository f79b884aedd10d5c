#pragma once
// Unpacks a ZIP archive into a folder: one set of extraction options and one operation, Unzip.
// Make the object, set what differs from the defaults, call Unzip, then read GetLastMessage if
// wanted. With the defaults an extraction is silent, recreates stored folders, overwrites whatever
// is there and never asks.
//
// Every Boolean option is kept as a 16-bit number, 1 for true and 0 for false, and reads back as
// true exactly when it is 1. The three whole-number options are kept as 32-bit numbers and handed
// to the engine as 16-bit ones: a value that does not fit fails Unzip with an overflow, and nothing
// is extracted.
//
// The state of a run (the printed text, the listing, the password refusal) belongs to the program,
// not to an object: it is cleared when a run starts and stays readable after it, so GetLastMessage
// answers for the last run on any object. Only one extraction runs at a time.
//
// The engine's result numbers are in ZipEngine.h (ZipResult): 0 success, 1 warning, 2 a damaged
// member, 9 no archive, 50 disk full, 82 no member for want of a password, and so on.

#include "download/ZipEngine.h"

#include <QString>

class ZipExtractor {
public:
    // A failure of Unzip names this source.
    static inline const QString FailureSource = QStringLiteral("ZipExtractor::Unzip");

    bool ExtractNewer() const { return extractNewer_ == 1; }
    void setExtractNewer(bool bExtractNewer) { extractNewer_ = bExtractNewer ? 1 : 0; }
    bool SpaceToUnderScore() const { return spaceToUnderScore_ == 1; }
    void setSpaceToUnderScore(bool bConvert) { spaceToUnderScore_ = bConvert ? 1 : 0; }
    bool PromptOverwrite() const { return promptOverwrite_ == 1; }
    void setPromptOverwrite(bool bPrompt) { promptOverwrite_ = bPrompt ? 1 : 0; }
    qint32 MessageLevel() const { return messageLevel_; }
    void setMessageLevel(qint32 iLevel) { messageLevel_ = iLevel; }
    bool WriteToStdOut() const { return writeToStdOut_ == 1; }
    void setWriteToStdOut(bool bWrite) { writeToStdOut_ = bWrite ? 1 : 0; }
    bool TestZip() const { return testZip_ == 1; }
    void setTestZip(bool bTest) { testZip_ = bTest ? 1 : 0; }
    qint32 ExtractList() const { return extractList_; }
    void setExtractList(qint32 zExType) { extractList_ = zExType; }
    bool ExtractOnlyNewer() const { return extractOnlyNewer_ == 1; }
    void setExtractOnlyNewer(bool bOnlyNewer) { extractOnlyNewer_ = bOnlyNewer ? 1 : 0; }
    bool DisplayComment() const { return displayComment_ == 1; }
    void setDisplayComment(bool bDisplay) { displayComment_ = bDisplay ? 1 : 0; }
    bool HonorDirectories() const { return honorDirectories_ == 1; }
    void setHonorDirectories(bool bHonor) { honorDirectories_ = bHonor ? 1 : 0; }
    bool OverWriteFiles() const { return overWriteFiles_ == 1; }
    void setOverWriteFiles(bool bOverWrite) { overWriteFiles_ = bOverWrite ? 1 : 0; }
    bool ConvertCRtoCRLF() const { return convertCRtoCRLF_ == 1; }
    void setConvertCRtoCRLF(bool bConvert) { convertCRtoCRLF_ = bConvert ? 1 : 0; }
    bool Verbose() const { return verbose_ == 1; }
    void setVerbose(bool bVerbose) { verbose_ = bVerbose ? 1 : 0; }
    bool CaseSensitive() const { return caseSensitive_ == 1; }
    void setCaseSensitive(bool bCaseSensitive) { caseSensitive_ = bCaseSensitive ? 1 : 0; }
    qint32 Privilege() const { return privilege_; }
    void setPrivilege(qint32 zPriv) { privilege_ = zPriv; }
    QString ZipFileName() const { return zipFileName_; }
    void setZipFileName(const QString& sZipFileName) { zipFileName_ = sZipFileName; }
    QString ExtractDir() const { return extractDir_; }
    void setExtractDir(const QString& sExtractDir) { extractDir_ = sExtractDir; }

    // Extracts ZipFileName into ExtractDir with the options set. A non-empty argument replaces the
    // stored value first and stays for later calls. Returns the engine's result, 0 for success;
    // raises a Failure (source FailureSource) when the run could not be made at all.
    qint32 Unzip(const QString& sZipFileName = {}, const QString& sExtractDir = {});

    // All text the engine printed in the last run; empty before the first.
    static QString GetLastMessage();

private:
    // In the order of the engine's option record.
    qint16 extractOnlyNewer_ = 0;
    qint16 spaceToUnderScore_ = 0;
    qint16 promptOverwrite_ = 0;
    qint32 messageLevel_ = 2;
    qint16 writeToStdOut_ = 0;
    qint16 testZip_ = 0;
    qint32 extractList_ = 0;
    qint16 extractNewer_ = 0;
    qint16 displayComment_ = 0;
    qint16 honorDirectories_ = 1;
    qint16 overWriteFiles_ = 1;
    qint16 convertCRtoCRLF_ = 0;
    qint16 verbose_ = 0;
    qint16 caseSensitive_ = 1;
    qint32 privilege_ = 0;
    QString zipFileName_;
    QString extractDir_;
};

// The answers the program gives to the engine during a run. None lets a failure out.
namespace ZipCallbacks {
// Takes the bytes up to the length or the first NUL, one character each. A chunk that begins with
// a line feed adds only a carriage return and a line feed. Always 0.
int UnzipPrint(const char* buffer, unsigned long size);
// Always 0: the run goes on.
int UnzipService(const char* name, unsigned long size);
// Asks "Please Enter The Password!" once per run: after an empty answer it answers 1 at once.
// 0 with the password in buffer (at most size - 1 bytes, NUL-ended), or 1 for none.
int UnzipPassword(char* buffer, int size, const char* prompt, const char* name);
// The overwrite box: 100 on No (leave this file), 104 on Cancel (leave all), 102 otherwise.
int UnzipReplace(const char* fileName);
// Adds one row to the run's listing.
void UnzipMessage(unsigned long uncompressed, unsigned long compressed, unsigned factor, unsigned month,
                  unsigned day, unsigned year, unsigned hour, unsigned minute, char c, const char* fileName,
                  const char* method, unsigned long crc, char encrypted);
} // namespace ZipCallbacks

// The rows of the listing, 80 characters wide and ended by a carriage return and line feed: the
// header ("Filename:", "Size", "Date", "Time"), and a member's row (name cut to 50, size in the 7
// places from 51, mm/dd/yy from 60, hour and minute from 70).
QString ListingHeader();
QString ListingRow(const QString& name, unsigned long size, unsigned month, unsigned day, unsigned year,
                   unsigned hour, unsigned minute);
