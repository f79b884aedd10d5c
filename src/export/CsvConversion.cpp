#include "export/CsvConversion.h"

#include "export/CsvText.h"
#include "frame/Failure.h"
#include "store/ReadProgress.h"
#include "store/SecurityReader.h"

#include <QDir>
#include <QFile>

#include <array>
#include <optional>

const QString CsvConversion::MergedFileName = QStringLiteral("data.csv");
const QString CsvConversion::MergedHeader = QStringLiteral("Symbol,Date,Open,High,Low,Close,Volume");
const QString CsvConversion::SeparateHeader = QStringLiteral("Date,Open,High,Low,Close,Volume");

namespace {

const QString ConvertingMessage = QStringLiteral("Converting Security");
const QString Source = QStringLiteral("CsvConversion::convert");
constexpr qsizetype BufferSize = 64 * 1024;

[[noreturn]] void fileFailure(const QString& cause, const QString& path) {
    throw Failure(FailureNumber::PathFileAccess,
                  QStringLiteral("%1\nFile: %2").arg(cause, QDir::toNativeSeparators(path)),
                  Source);
}

// One output file, written through a buffer of its own; an existing file is replaced.
class CsvFile {
public:
    explicit CsvFile(const QString& path) : file_(path) {
        if (!file_.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
            fileFailure(QStringLiteral("The file could not be created: %1.").arg(file_.errorString()), path);
        buffer_.reserve(BufferSize + 256);
    }
    ~CsvFile() {
        // Left by a failure: what is in the buffer goes out too, as far as it can.
        if (file_.isOpen()) {
            file_.write(buffer_);
            file_.close();
        }
    }
    CsvFile(const CsvFile&) = delete;
    CsvFile& operator=(const CsvFile&) = delete;

    QByteArray& buffer() { return buffer_; }
    QString path() const { return file_.fileName(); }
    // Writes the buffer out once it is full.
    void lineDone() {
        if (buffer_.size() >= BufferSize)
            flush();
    }
    void close() {
        flush();
        file_.close();
    }

private:
    void flush() {
        if (buffer_.isEmpty())
            return;
        const qint64 written = file_.write(buffer_);
        if (written != buffer_.size()) {
            const QString why = file_.error() != QFileDevice::NoError ? file_.errorString()
                                                                       : QStringLiteral("the disk is full");
            buffer_.truncate(0);   // what could not be written is not tried again on closing
            file_.close();
            fileFailure(QStringLiteral("The file could not be written: %1.").arg(why), file_.fileName());
        }
        buffer_.truncate(0);   // the buffer keeps its room for the next lines
    }

    QFile file_;
    QByteArray buffer_;
};

// The character of `symbol` that a file name cannot hold here, if any.
std::optional<QChar> refusedCharacter(const QString& symbol) {
#ifdef Q_OS_WIN
    static const QString refused = QStringLiteral("\\/:*?\"<>|");
#else
    static const QString refused = QStringLiteral("/");
#endif
    for (QChar c : symbol)
        if (refused.contains(c) || c.unicode() == 0 || (c.unicode() < 32 && refused.size() > 1))
            return c;
    return std::nullopt;
}

} // namespace

CsvConversion::CsvConversion() = default;
CsvConversion::~CsvConversion() = default;

SecurityReader& CsvConversion::reader() {
    if (!reader_)
        reader_ = std::make_unique<SecurityReader>();
    return *reader_;
}

ReadProgress& CsvConversion::progress() {
    if (!progress_) {
        progress_ = ReadProgress::create();
        progress_->OfferCancel(false);   // a conversion runs to its end
    }
    return *progress_;
}

namespace {
QString inFolder(const QString& folder, const QString& name) {
    if (folder.endsWith(u'/') || folder.endsWith(u'\\'))
        return folder + name;
    return folder + u'/' + name;
}
} // namespace

QString CsvConversion::separateFile(const QString& destination, const QString& symbol) {
    return inFolder(destination.trimmed(), symbol + QStringLiteral(".csv"));
}

void CsvConversion::convert(const QString& dataFolder, const QString& destination, const QStringList& symbols,
                            bool merge, CsvConversionListener* listener) {
    const QString folder = dataFolder.trimmed();
    const QString target = destination.trimmed();
    const CsvText text(isoForm ? CsvText::Style::Iso : CsvText::Style::Regional);

    std::optional<CsvFile> merged;
    if (merge)
        merged.emplace(inFolder(target, MergedFileName));

    // The folder is opened at the first security and stays open for the run: opening a folder
    // reads its whole index, which for a folder of thousands of securities costs far more than
    // the records of one of them.
    SecurityReader& store = reader();
    bool folderOpen = false;
    for (const QString& symbol : symbols) {
        std::optional<CsvFile> own;
        CsvFile* out = merged ? &*merged : nullptr;
        try {
            if (!folderOpen) {
                store.OpenFolder(folder);
                folderOpen = true;
            }
            progress().Show();
            progress().SetMessage(ConvertingMessage);
            store.OpenSecurity(symbol);
            const qint32 count = store.GetRecordCount();
            progress().SetRange(0, count);

            QByteArray prefix;
            if (merge) {
                text.codePage().append(MergedHeader, out->buffer());
                prefix = text.codePage().encode(symbol);
                prefix.append(',');
            } else {
                if (const auto bad = refusedCharacter(symbol))
                    fileFailure(QStringLiteral("The symbol \"%1\" holds \"%2\", which a file name cannot hold.")
                                    .arg(symbol, *bad),
                                separateFile(target, symbol));
                own.emplace(separateFile(target, symbol));
                out = &*own;
                text.codePage().append(SeparateHeader, out->buffer());
            }
            out->buffer().append("\r\n", 2);

            qint32 written = 0;
            std::array<double, 5> values;
            while (store.GetRecordsRemaining() >= 1) {
                store.NextRecord();
                const qint32 date = store.GetDate();
                values[0] = store.GetOpen();
                values[1] = store.GetHigh();
                values[2] = store.GetLow();
                values[3] = store.GetClose();
                values[4] = store.GetVolume();
                text.appendRecord(prefix, date, values, out->buffer());
                out->lineDone();
                progress().StepIt();
                ++written;
            }
            if (own)
                own->close();
            store.CloseSecurity();
            progress().Hide();
            if (listener)
                listener->securityConverted(symbol, out->path(), written);
        } catch (Failure& failure) {
            const QString path = out ? out->path() : separateFile(target, symbol);
            own.reset();   // closes the security's own file with what it holds
            store.CloseSecurity();
            progress().Hide();
            store.CloseFolder();
            if (failure.Source == Source)
                throw;   // names its file already
            throw Failure(failure.Number,
                          QStringLiteral("%1\nSecurity: %2\nFile: %3")
                              .arg(failure.Description, symbol, QDir::toNativeSeparators(path)),
                          failure.Source);
        }
    }
    store.CloseFolder();
    if (merged)
        merged->close();
}
