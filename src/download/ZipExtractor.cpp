#include "download/ZipExtractor.h"

#include "frame/Failure.h"
#include "frame/Platform.h"

#include <cstring>
#include <limits>
#include <utility>

namespace {

// The one run of the program: cleared at the start of each run, readable after it.
struct RunState {
    QString lastMessage;    // what GetLastMessage answers
    QString printedText;    // the running text of the print function
    QString listing;        // the member listing; nothing returns it
    qint16 listCount = 0;
    qint16 skipPassword = 0;
};
RunState state;

constexpr int NameBytes = 256;

// Text up to the first NUL, at most `limit` bytes.
QString cString(const char* text, qsizetype limit) {
    if (!text)
        return {};
    const void* end = std::memchr(text, 0, size_t(limit));
    const qsizetype length = end ? static_cast<const char*>(end) - text : limit;
    return QString::fromLocal8Bit(text, length);
}

// Places text at a 1-based position of a row of blanks.
void place(QString& row, int position, const QString& text) {
    row.replace(position - 1, text.size(), text);
}

qint16 sixteenBits(qint32 value) {
    if (value < std::numeric_limits<qint16>::min() || value > std::numeric_limits<qint16>::max())
        throw Failure(FailureNumber::Overflow, QStringLiteral("Overflow"), ZipExtractor::FailureSource);
    return qint16(value);
}

qint32 runEngine(ZipOptionRecord options) {
    state = RunState{};
    ZipUserFunctions functions;
    functions.print = ZipCallbacks::UnzipPrint;
    functions.replace = ZipCallbacks::UnzipReplace;
    functions.password = ZipCallbacks::UnzipPassword;
    functions.message = ZipCallbacks::UnzipMessage;
    functions.service = ZipCallbacks::UnzipService;
    return SingleEntryUnzip(options, functions);
}

} // namespace

qint32 ZipExtractor::Unzip(const QString& sZipFileName, const QString& sExtractDir) {
    try {
        if (!sZipFileName.isEmpty())
            zipFileName_ = sZipFileName;
        if (!sExtractDir.isEmpty())
            extractDir_ = sExtractDir;
        ZipOptionRecord options;
        options.ExtractOnlyNewer = extractOnlyNewer_;
        options.SpaceToUnderScore = spaceToUnderScore_;
        options.PromptOverwrite = promptOverwrite_;
        options.Quiet = sixteenBits(messageLevel_);
        options.WriteToStdOut = writeToStdOut_;
        options.TestZip = testZip_;
        options.ExtractList = sixteenBits(extractList_);
        options.ExtractNewer = extractNewer_;
        options.DisplayComment = displayComment_;
        options.HonorDirectories = honorDirectories_;
        options.OverWriteFiles = overWriteFiles_;
        options.ConvertCRtoCRLF = convertCRtoCRLF_;
        options.Verbose = verbose_;
        options.CaseSensitive = caseSensitive_;
        options.Privilege = sixteenBits(privilege_);
        options.ZipFileName = zipFileName_;
        options.ExtractDir = extractDir_;
        return runEngine(std::move(options));
    } catch (const Failure& failure) {
        throw Failure(failure.Number, failure.Description, FailureSource);
    } catch (const std::exception& failure) {
        throw Failure(FailureNumber::Generic, QString::fromLocal8Bit(failure.what()), FailureSource);
    }
}

QString ZipExtractor::GetLastMessage() { return state.lastMessage; }

namespace ZipCallbacks {

int UnzipPrint(const char* buffer, unsigned long size) {
    try {
        const void* end = buffer ? std::memchr(buffer, 0, size) : nullptr;
        const qsizetype length = !buffer ? 0 : end ? static_cast<const char*>(end) - buffer : qsizetype(size);
        QString chunk = QString::fromLatin1(buffer, length);
        if (chunk.startsWith(QLatin1Char('\n')))
            chunk = QStringLiteral("\r\n");
        state.printedText += chunk;
        state.lastMessage = state.printedText;
    } catch (...) {
    }
    return 0;
}

int UnzipService(const char*, unsigned long) { return 0; }

int UnzipPassword(char* buffer, int size, const char*, const char*) {
    int answer = 1;
    try {
        if (state.skipPassword == 1)
            return answer;
        const QString password = platform().prompt(QStringLiteral("Please Enter The Password!"), {}, {});
        if (password.isEmpty()) {
            state.skipPassword = 1;
            return answer;
        }
        if (!buffer || size <= 0)
            return answer;
        std::memset(buffer, 0, size_t(size));
        const QByteArray bytes = password.toLocal8Bit().left(size - 1);
        std::memcpy(buffer, bytes.constData(), size_t(bytes.size()));
        answer = 0;
    } catch (...) {
    }
    return answer;
}

int UnzipReplace(const char* fileName) {
    int answer = ZipReplace::Overwrite;
    try {
        const QString name = cString(fileName, NameBytes);
        switch (MsgBox(QStringLiteral("Overwrite ") + name + QStringLiteral("?"), MsgIcon::Warning,
                       QStringLiteral("VBUnZip32 - File Already Exists!"), MsgButtons::YesNoCancel)) {
        case MsgAnswer::No: answer = ZipReplace::Leave; break;
        case MsgAnswer::Cancel: answer = ZipReplace::None; break;
        default: answer = ZipReplace::Overwrite; break;
        }
    } catch (...) {
    }
    return answer;
}

void UnzipMessage(unsigned long uncompressed, unsigned long, unsigned, unsigned month, unsigned day, unsigned year,
                  unsigned hour, unsigned minute, char, const char* fileName, const char*, unsigned long, char) {
    try {
        if (state.listCount == 0)
            state.listing = ListingHeader();
        state.listing += ListingRow(cString(fileName, NameBytes), uncompressed, month, day, year, hour, minute);
        ++state.listCount;
    } catch (...) {
    }
}

} // namespace ZipCallbacks

QString ListingHeader() {
    QString row(80, QLatin1Char(' '));
    place(row, 1, QStringLiteral("Filename:"));
    place(row, 53, QStringLiteral("Size"));
    place(row, 62, QStringLiteral("Date"));
    place(row, 71, QStringLiteral("Time"));
    return row + QStringLiteral("\r\n");
}

QString ListingRow(const QString& name, unsigned long size, unsigned month, unsigned day, unsigned year,
                   unsigned hour, unsigned minute) {
    QString row(80, QLatin1Char(' '));
    place(row, 1, name.left(50));
    place(row, 51, (QStringLiteral("        ") + QString::number(size)).right(7));
    place(row, 60, QStringLiteral("%1/").arg(month % 100, 2, 10, QLatin1Char('0')));
    place(row, 63, QStringLiteral("%1/").arg(day % 100, 2, 10, QLatin1Char('0')));
    place(row, 66, QStringLiteral("%1").arg(year % 100, 2, 10, QLatin1Char('0')));
    place(row, 70, QStringLiteral("%1:").arg(hour % 100, 2, 10, QLatin1Char(' ')));
    place(row, 73, QStringLiteral("%1").arg(minute % 100, 2, 10, QLatin1Char('0')));
    return row + QStringLiteral("\r\n");
}
